#include "QAFileSurvey.h"

#include <QFile>
#include <QMetaMethod>
#include <QTimer>

#include <cstring>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

// Bytes kept from the end of what was read, to tell a file written again.
constexpr qsizetype TailSize = 64;

// The last "\n" of [begin, end), or null. Scans backwards: in a block of
// whole lines it is found within the last line.
char* lastNewline(char* begin, char* end)
{
    for (char* p = end; p != begin;)
        if (*--p == '\n')
            return p;
    return nullptr;
}

}

bool QAFileSurvey::Identity::operator==(const Identity& other) const
{
    if (device != other.device || inode != other.inode)
        return false;
    return !birth.isValid() || !other.birth.isValid() || birth == other.birth;
}

struct QAFileSurvey::Private {
    QString m_fileName;
    int m_delay = 0;
    int m_modificationDelay = 500;
    Policy m_shrinkPolicy = FromStart;
    Policy m_disappearPolicy = FromStart;
    QTimer* m_timer = nullptr;             // "f-survey", owned
    QTimer* m_modificationTimer = nullptr; // single-shot, owned
    bool m_present = false;
    qint64 m_offset = 0;
    QDateTime m_modificationTime;
    Identity m_identity;
    QByteArray m_partial; // the line being assembled
    QByteArray m_tail;    // the last bytes read, to tell a rewritten file
    QByteArray m_block;   // read buffer, one byte longer than BlockSize
    bool m_inTick = false;
    bool m_perLine = false;   // hasNewLine has receivers (looked at per tick)
    int m_pendingReset = -1;  // a reset asked for during a tick: its fromStart
    int m_controlCalls = 0;   // start, stop and restart calls, to tell that a
                              // receiver took control of the timer
};

QAFileSurvey::QAFileSurvey(const QString& file, int delay, bool fromStart, QObject* parent,
                           const char* name)
    : QObject(parent), d(std::make_unique<Private>())
{
    d->m_fileName = file;
    d->m_delay = delay;
    d->m_timer = new QTimer(this);
    d->m_modificationTimer = new QTimer(this);
    if (name)
        setObjectName(QString::fromUtf8(name));
    d->m_timer->setObjectName(QStringLiteral("f-survey"));
    d->m_timer->setInterval(delay);
    connect(d->m_timer, &QTimer::timeout, this, &QAFileSurvey::survey);
    d->m_modificationTimer->setSingleShot(true);
    connect(d->m_modificationTimer, &QTimer::timeout, this, &QAFileSurvey::modificationSettled);
    d->m_block.resize(BlockSize + 1);
    reset(fromStart);
}

QAFileSurvey::~QAFileSurvey() = default;

void QAFileSurvey::start()
{
    ++d->m_controlCalls;
    if (!d->m_timer->isActive())
        d->m_timer->start(d->m_delay);
}

void QAFileSurvey::stop()
{
    ++d->m_controlCalls;
    d->m_timer->stop();
}

void QAFileSurvey::restart(bool fromStart)
{
    reset(fromStart);
    ++d->m_controlCalls;
    d->m_timer->start(d->m_delay);
}

void QAFileSurvey::reset(bool fromStart)
{
    if (d->m_inTick) {
        d->m_pendingReset = fromStart ? 1 : 0;
        return;
    }
    QFile file(d->m_fileName);
    if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        resetTo(fromStart, &file, snapshotOf(file));
    else
        resetTo(fromStart, nullptr, Snapshot());
}

bool QAFileSurvey::isActive() const
{
    return d->m_timer->isActive();
}

void QAFileSurvey::setDelay(int delay)
{
    d->m_delay = delay;
    d->m_timer->setInterval(delay);
}

void QAFileSurvey::setModificationDelay(int delay)
{
    d->m_modificationDelay = delay;
}

void QAFileSurvey::survey()
{
    if (d->m_inTick)
        return;
    d->m_inTick = true;
    d->m_perLine = isSignalConnected(QMetaMethod::fromSignal(&QAFileSurvey::hasNewLine));
    readOnce();
    endTick();
}

void QAFileSurvey::finish()
{
    if (d->m_inTick)
        return;
    stop();
    d->m_inTick = true;
    d->m_perLine = isSignalConnected(QMetaMethod::fromSignal(&QAFileSurvey::hasNewLine));
    readOnce();
    if (d->m_pendingReset < 0)
        deliverPartial();
    endTick();
}

void QAFileSurvey::endTick()
{
    d->m_inTick = false;
    if (d->m_pendingReset >= 0) {
        const bool fromStart = d->m_pendingReset == 1;
        d->m_pendingReset = -1;
        reset(fromStart);
    }
    emit surveyDone();
}

QAFileSurvey::Snapshot QAFileSurvey::snapshotOf(QFile& file)
{
    Snapshot snapshot;
    snapshot.present = true;
    snapshot.size = file.size();
    snapshot.modified = file.fileTime(QFileDevice::FileModificationTime);
    snapshot.identity.birth = file.fileTime(QFileDevice::FileBirthTime);
#ifdef Q_OS_UNIX
    struct stat status {};
    if (fstat(file.handle(), &status) == 0) {
        snapshot.identity.device = qint64(status.st_dev);
        snapshot.identity.inode = qint64(status.st_ino);
    }
#endif
    return snapshot;
}

void QAFileSurvey::readOnce()
{
    QFile file(d->m_fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (d->m_present)
            fileEnded(&QAFileSurvey::fileDisappear, d->m_disappearPolicy, nullptr, Snapshot());
        return;
    }
    const Snapshot now = snapshotOf(file);
    if (!checkFile(file, now))
        return;
    if (now.size > d->m_offset) {
        emit fileGrow();
        if (d->m_pendingReset < 0)
            readNewBytes(file, now.size);
    }
}

bool QAFileSurvey::checkFile(QFile& file, const Snapshot& now)
{
    const QDateTime before = d->m_modificationTime;
    if (now.modified != before) {
        d->m_modificationTime = now.modified;
        d->m_modificationTimer->start(d->m_modificationDelay);
    }
    const bool timeWentBack = before.isValid() && now.modified < before;
    if (d->m_present && (!(now.identity == d->m_identity) || timeWentBack)) {
        // Another file: the old one disappeared, this one appears.
        const bool goOn = fileEnded(&QAFileSurvey::fileDisappear, d->m_disappearPolicy, &file, now);
        d->m_present = false;
        if (!goOn)
            return false;
    }
    if (!d->m_present) {
        d->m_present = true;
        d->m_identity = now.identity;
        emit fileAppear();
    }
    if (d->m_pendingReset >= 0)
        return false;
    const bool changed = now.modified != before || now.size != d->m_offset;
    if (now.size < d->m_offset || (changed && wasRewritten(file, now)))
        return fileEnded(&QAFileSurvey::fileShrink, d->m_shrinkPolicy, &file, now)
            && d->m_pendingReset < 0;
    return true;
}

bool QAFileSurvey::wasRewritten(QFile& file, const Snapshot& now) const
{
    if (d->m_tail.isEmpty() || now.size < d->m_offset)
        return false;
    if (!file.seek(d->m_offset - d->m_tail.size()))
        return true;
    return file.read(d->m_tail.size()) != d->m_tail;
}

bool QAFileSurvey::fileEnded(void (QAFileSurvey::*signal)(), Policy policy, QFile* file,
                             const Snapshot& now)
{
    deliverPartial();
    const bool wasActive = d->m_timer->isActive();
    d->m_timer->stop();
    const int controlCalls = d->m_controlCalls;
    emit(this->*signal)();
    resetTo(policy != FromEnd, policy == Stop ? nullptr : file, now);
    if (policy == Stop)
        return false;
    if (wasActive && controlCalls == d->m_controlCalls)
        d->m_timer->start(d->m_delay);
    return true;
}

void QAFileSurvey::resetTo(bool fromStart, QFile* file, const Snapshot& now)
{
    d->m_partial.clear();
    d->m_tail.clear();
    d->m_present = now.present;
    d->m_identity = now.identity;
    d->m_modificationTime = now.modified;
    d->m_offset = 0;
    if (file && now.present && !fromStart) {
        d->m_offset = endOfLastLine(*file, now.size);
        readTail(*file);
    }
}

qint64 QAFileSurvey::endOfLastLine(QFile& file, qint64 size) const
{
    constexpr qint64 chunk = 64 * 1024;
    QByteArray bytes;
    for (qint64 end = size; end > 0 && size - end < MaxLineLength; end -= chunk) {
        const qint64 begin = qMax<qint64>(0, end - chunk);
        if (!file.seek(begin))
            return size;
        bytes = file.read(end - begin);
        const qsizetype newline = bytes.lastIndexOf('\n');
        if (newline >= 0)
            return begin + newline + 1;
    }
    return size > MaxLineLength ? size : 0;
}

void QAFileSurvey::readTail(QFile& file)
{
    const qint64 begin = qMax<qint64>(0, d->m_offset - TailSize);
    if (d->m_offset > 0 && file.seek(begin))
        d->m_tail = file.read(d->m_offset - begin);
}

void QAFileSurvey::readNewBytes(QFile& file, qint64 size)
{
    if (!file.seek(d->m_offset))
        return;
    char* block = d->m_block.data();
    while (d->m_offset < size && d->m_pendingReset < 0) {
        const qint64 read = file.read(block, qMin<qint64>(BlockSize, size - d->m_offset));
        if (read <= 0)
            return;
        d->m_offset += read;
        keepTail(block, read);
        consume(block, read);
    }
}

void QAFileSurvey::keepTail(const char* data, qsizetype size)
{
    if (size >= TailSize) {
        d->m_tail = QByteArray(data + size - TailSize, TailSize);
        return;
    }
    d->m_tail.append(data, size);
    if (d->m_tail.size() > TailSize)
        d->m_tail.remove(0, d->m_tail.size() - TailSize);
}

void QAFileSurvey::consume(char* data, qsizetype size)
{
    char* p = data;
    char* const end = data + size;
    while (p < end && d->m_pendingReset < 0) {
        if (!d->m_partial.isEmpty()) {
            char* newline = static_cast<char*>(std::memchr(p, '\n', size_t(end - p)));
            if (!newline) {
                appendToPartial(p, end - p);
                return;
            }
            appendToPartial(p, newline - p);
            d->m_partial.append('\n');
            emitPartial();
            p = newline + 1;
            continue;
        }
        char* last = lastNewline(p, end);
        if (!last) {
            appendToPartial(p, end - p);
            return;
        }
        deliver(p, last + 1 - p);
        p = last + 1;
    }
}

void QAFileSurvey::appendToPartial(const char* data, qsizetype size)
{
    while (d->m_partial.size() + size > MaxLineLength && d->m_pendingReset < 0) {
        const qsizetype take = MaxLineLength - d->m_partial.size();
        d->m_partial.append(data, take);
        d->m_partial.append('\n');
        data += take;
        size -= take;
        emitPartial();
    }
    d->m_partial.append(data, size);
}

void QAFileSurvey::deliver(char* lines, qsizetype size)
{
    if (d->m_perLine) {
        // Each line is ended by a NUL put after its "\n" for the emission.
        char* const end = lines + size;
        for (char* p = lines; p < end;) {
            char* next = static_cast<char*>(std::memchr(p, '\n', size_t(end - p))) + 1;
            const char saved = *next;
            *next = '\0';
            emit hasNewLine(p);
            *next = saved;
            if (d->m_pendingReset >= 0)
                return;
            p = next;
        }
    }
    emit newLines(QByteArray::fromRawData(lines, size));
}

void QAFileSurvey::deliverPartial()
{
    if (d->m_partial.isEmpty())
        return;
    d->m_partial.append('\n');
    emitPartial();
}

void QAFileSurvey::emitPartial()
{
    QByteArray line;
    line.swap(d->m_partial);
    if (d->m_perLine)
        emit hasNewLine(line.constData());
    if (d->m_pendingReset < 0)
        emit newLines(line);
}

void QAFileSurvey::modificationSettled()
{
    emit fileModified();
    emit modified(d->m_fileName);
}

QString QAFileSurvey::fileName() const
{
    return d->m_fileName;
}

int QAFileSurvey::delay() const
{
    return d->m_delay;
}

int QAFileSurvey::modificationDelay() const
{
    return d->m_modificationDelay;
}

QDateTime QAFileSurvey::modificationTime() const
{
    return d->m_modificationTime;
}

qint64 QAFileSurvey::offset() const
{
    return d->m_offset;
}

void QAFileSurvey::setShrinkPolicy(Policy policy)
{
    d->m_shrinkPolicy = policy;
}

QAFileSurvey::Policy QAFileSurvey::shrinkPolicy() const
{
    return d->m_shrinkPolicy;
}

void QAFileSurvey::setDisappearPolicy(Policy policy)
{
    d->m_disappearPolicy = policy;
}

QAFileSurvey::Policy QAFileSurvey::disappearPolicy() const
{
    return d->m_disappearPolicy;
}
