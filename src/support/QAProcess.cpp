#include "QAProcess.h"

#include "QALogging.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QPointer>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>

#include <iterator>
#include <utility>

namespace {

// Started and not yet ended processes, oldest first.
QList<QAProcess*>& runningProcesses()
{
    static QList<QAProcess*> list;
    return list;
}

void warnNotStarted(const QString& program)
{
    qCWarning(lcSupport, "%s: unable to start the command\n", qPrintable(program));
}

// The next line of bytes, without its "\n", taken off pending; at the end of
// the stream a last line without "\n" too. Nothing when no line is complete.
std::optional<QByteArray> takeLine(QByteArray& pending, bool atEnd)
{
    const qsizetype newline = pending.indexOf('\n');
    if (newline < 0) {
        if (!atEnd || pending.isEmpty())
            return std::nullopt;
        return std::exchange(pending, QByteArray());
    }
    QByteArray line = pending.left(newline);
    pending.remove(0, newline + 1);
    return line;
}

}

QAProcess::QAProcess(QObject* parent, const char* name)
    : QObject(parent)
{
    if (name)
        setObjectName(QString::fromLatin1(name));
}

QAProcess::~QAProcess()
{
    runningProcesses().removeAll(this);
    if (!m_process)
        return;
    // Quietly: none of the child's signals reaches this object any more.
    m_process->disconnect(this);
    if (m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished(5000);
    }
    // Destroyed by a receiver: the QProcess may be emitting the signal that
    // led here, and outlives it.
    if (m_emitDepth > 0) {
        m_process->setParent(nullptr);
        m_process->deleteLater();
    } else {
        delete m_process;
    }
}

bool QAProcess::start(const QStringList& args, const QDir& workingDir, bool& normalExit,
                      int& exitStatus, QStringList* environment, bool asynchronous)
{
    const QString program = args.value(0);
    if (program.isEmpty() || m_process) {
        warnNotStarted(program);
        return false;
    }

    auto* process = new QProcess(this);
    process->setProgram(program);
    process->setArguments(args.mid(1));
    process->setWorkingDirectory(workingDir.absolutePath());
    if (environment)
        process->setEnvironment(*environment);
    process->start();
    // The signals are connected only once the child runs, so that a failed
    // start never reaches processFinished (no exited() for it).
    if (!process->waitForStarted(-1)) {
        delete process;
        warnNotStarted(program);
        return false;
    }
    process->closeWriteChannel();

    m_process = process;
    m_pid = process->processId();
    m_asynchronous = asynchronous;
    connect(process, &QProcess::readyReadStandardOutput, this, [this] { readChannel(Out, false); });
    connect(process, &QProcess::readyReadStandardError, this, [this] { readChannel(Err, false); });
    connect(process, &QProcess::finished, this, &QAProcess::processFinished);
    runningProcesses().append(this);

    if (asynchronous)
        return true;

    // Wait for the end with the event loop turning: a local loop that
    // sleeps until something happens, left when the child ends and at least
    // every 100 ms so that the state is checked again whatever a receiver
    // did meanwhile (nested loops, quit of an outer loop, deletion).
    const QPointer<QAProcess> self(this);
    if (QCoreApplication::instance() && thread() == QThread::currentThread()) {
        QEventLoop loop;
        QTimer slice;
        slice.setInterval(100);
        connect(&slice, &QTimer::timeout, &loop, &QEventLoop::quit);
        connect(this, &QAProcess::exited, &loop, &QEventLoop::quit);
        slice.start();
        while (self && !self->m_finished)
            loop.exec();
    } else {
        // No event loop to turn: QProcess delivers its signals itself.
        while (self && !self->m_finished && self->m_process->waitForFinished(-1)) {
        }
    }
    if (!self || !m_finished) {
        normalExit = false;
        exitStatus = -1;
        return true;
    }
    normalExit = m_normalExit;
    exitStatus = m_exitStatus;
    return true;
}

bool QAProcess::start(const QString& commandLine, const QDir& workingDir, bool& normalExit,
                      int& exitStatus, QStringList* environment, bool asynchronous)
{
    QStringList args;
    commandLineToArgs(commandLine, args);
    if (!args.isEmpty() && args.last().contains(QLatin1Char('&'))) {
        args.removeLast();
        asynchronous = true;
    }
    return start(args, workingDir, normalExit, exitStatus, environment, asynchronous);
}

void QAProcess::commandLineToArgs(const QString& line, QStringList& args)
{
    // The quoted forms read a backslash before the quote or a backslash as
    // an escape (tried first, so that an escaped quote stays inside), and
    // fall back on the first quote when the escape-aware form finds no
    // closing quote. Their contents are otherwise any character, the
    // newline included. The escape-aware form has one way only to read a
    // text, so that it runs in linear time.
    static const QRegularExpression forms[] = {
        QRegularExpression(QStringLiteral(
            R"([_A-Za-z0-9/\\:\.\+\~\#\{\}\[\]\|\@\$\%\,\;\?\!\-\*\&\=\<\>\)\(]+)")),
        QRegularExpression(QStringLiteral(R"re("(?:[^"\\]|\\["\\]|\\(?!["\\]))*+"|"[^"]*+")re")),
        QRegularExpression(QStringLiteral(R"re('(?:[^'\\]|\\['\\]|\\(?!['\\]))*+'|'[^']*+')re")),
        QRegularExpression(QStringLiteral(R"([\&])")),
    };

    // Every match runs on the same text from another offset: its UTF-16 is
    // checked once here (a lone surrogate becomes a replacement character),
    // not by each match over the whole line, which made a long line
    // quadratic.
    QString text = line;
    const bool valid = line.isValidUtf16();
    for (qsizetype i = 0; !valid && i < text.size(); ++i) {
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    args.clear();
    qsizetype pos = 0;
    while (pos < text.size()) {
        if (text.at(pos).isSpace()) {
            ++pos;
            continue;
        }
        bool matched = false;
        for (qsizetype form = 0; form < qsizetype(std::size(forms)); ++form) {
            const QRegularExpressionMatch match =
                forms[form].match(text, pos, QRegularExpression::NormalMatch,
                                  QRegularExpression::AnchorAtOffsetMatchOption
                                      | QRegularExpression::DontCheckSubjectStringMatchOption);
            if (!match.hasMatch())
                continue;
            const QString token = match.captured(0);
            const bool quoted = form == 1 || form == 2;
            args << (quoted ? token.mid(1, token.size() - 2) : token);
            pos += token.size();
            matched = true;
            break;
        }
        // No form starts here: the character is dropped.
        if (!matched)
            ++pos;
    }
}

bool QAProcess::isRunning() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

void QAProcess::tryTerminate()
{
    if (m_process)
        m_process->terminate();
}

void QAProcess::kill()
{
    if (m_process)
        m_process->kill();
}

void QAProcess::killAll()
{
    const QList<QAProcess*> processes = std::exchange(runningProcesses(), QList<QAProcess*>());
    for (QAProcess* process : processes)
        process->kill();
}

QList<QAProcess*> QAProcess::listOfProcess()
{
    return runningProcesses();
}

void QAProcess::setLinePerLine(bool linePerLine)
{
    m_linePerLine = linePerLine;
}

bool QAProcess::isLinePerLine() const
{
    return m_linePerLine;
}

void QAProcess::setTextCodec(QStringConverter::Encoding encoding)
{
    // Stateless: each line is a whole text, and a sequence cut at the end of
    // the output becomes a replacement character rather than vanishing.
    for (Stream& stream : m_streams)
        stream.decoder.emplace(encoding, QStringConverter::Flag::Stateless);
}

void QAProcess::resetTextCodec()
{
    for (Stream& stream : m_streams)
        stream.decoder.reset();
}

bool QAProcess::isFinished() const
{
    return m_finished;
}

bool QAProcess::normalExit() const
{
    return m_normalExit;
}

int QAProcess::exitStatus() const
{
    return m_exitStatus;
}

bool QAProcess::isAsynchronous() const
{
    return m_asynchronous;
}

qint64 QAProcess::pid() const
{
    return m_pid;
}

QString QAProcess::decode(Channel channel, const QByteArray& bytes)
{
    std::optional<QStringDecoder>& decoder = m_streams[channel].decoder;
    return decoder ? decoder->decode(bytes) : QString::fromLatin1(bytes);
}

// Emits the complete lines the child has written on a channel, and at its
// end the last partial line. A receiver may turn the event loop: a frame
// entered for a stream already being emitted returns at once, and the
// frame below takes the new bytes up before it returns, so that lines keep
// their order and none is emitted twice. The child's end is held back
// (m_endPending) until no frame is left.
void QAProcess::readChannel(Channel channel, bool atEnd)
{
    Stream& stream = m_streams[channel];
    if (!m_process || stream.reading)
        return;
    stream.reading = true;
    ++m_emitDepth;
    const QPointer<QAProcess> self(this);
    for (;;) {
        stream.pending += channel == Out ? m_process->readAllStandardOutput()
                                         : m_process->readAllStandardError();
        QString text;
        if (m_linePerLine) {
            const std::optional<QByteArray> line = takeLine(stream.pending, atEnd);
            if (!line)
                break;
            text = decode(channel, *line);
        } else {
            bool any = false;
            while (const std::optional<QByteArray> line = takeLine(stream.pending, atEnd)) {
                text += decode(channel, *line) + QLatin1Char('\n');
                any = true;
            }
            if (!any)
                break;
        }
        if (channel == Out)
            emit stdoutReceived(text);
        else
            emit stderrReceived(text);
        if (!self)
            return;
    }
    stream.reading = false;
    --m_emitDepth;
    if (m_emitDepth == 0 && m_endPending) {
        m_endPending = false;
        finish();
    }
}

void QAProcess::processFinished(int exitCode, QProcess::ExitStatus status)
{
    if (m_finished || m_ending)
        return;
    m_normalExit = status == QProcess::NormalExit;
    m_exitStatus = exitCode & 0xFF;
    if (m_emitDepth > 0)
        m_endPending = true;
    else
        finish();
}

void QAProcess::finish()
{
    m_ending = true;
    const QPointer<QAProcess> self(this);
    readChannel(Out, true);
    if (!self)
        return;
    readChannel(Err, true);
    if (!self)
        return;
    qCWarning(lcSupport, "Terminated process pid = %ld", long(m_pid));
    m_finished = true;
    runningProcesses().removeAll(this);
    ++m_emitDepth;
    emit exited(m_normalExit, m_exitStatus);
    if (self)
        --m_emitDepth;
}
