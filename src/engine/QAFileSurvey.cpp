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

QAFileSurvey::QAFileSurvey(const QString& file, int delay, bool fromStart, QObject* parent,
                           const char* name)
    : QObject(parent),
      m_fileName(file),
      m_delay(delay),
      m_timer(new QTimer(this)),
      m_modificationTimer(new QTimer(this))
{
    if (name)
        setObjectName(QString::fromUtf8(name));
    m_timer->setObjectName(QStringLiteral("f-survey"));
    m_timer->setInterval(delay);
    connect(m_timer, &QTimer::timeout, this, &QAFileSurvey::survey);
    m_modificationTimer->setSingleShot(true);
    connect(m_modificationTimer, &QTimer::timeout, this, &QAFileSurvey::modificationSettled);
    m_block.resize(BlockSize + 1);
    reset(fromStart);
}

QAFileSurvey::~QAFileSurvey() = default;

void QAFileSurvey::start()
{
    ++m_controlCalls;
    if (!m_timer->isActive())
        m_timer->start(m_delay);
}

void QAFileSurvey::stop()
{
    ++m_controlCalls;
    m_timer->stop();
}

void QAFileSurvey::restart(bool fromStart)
{
    reset(fromStart);
    ++m_controlCalls;
    m_timer->start(m_delay);
}

void QAFileSurvey::reset(bool fromStart)
{
    if (m_inTick) {
        m_pendingReset = fromStart ? 1 : 0;
        return;
    }
    QFile file(m_fileName);
    if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        resetTo(fromStart, &file, snapshotOf(file));
    else
        resetTo(fromStart, nullptr, Snapshot());
}

bool QAFileSurvey::isActive() const
{
    return m_timer->isActive();
}

void QAFileSurvey::setDelay(int delay)
{
    m_delay = delay;
    m_timer->setInterval(delay);
}

void QAFileSurvey::setModificationDelay(int delay)
{
    m_modificationDelay = delay;
}

void QAFileSurvey::survey()
{
    if (m_inTick)
        return;
    m_inTick = true;
    m_perLine = isSignalConnected(QMetaMethod::fromSignal(&QAFileSurvey::hasNewLine));
    readOnce();
    endTick();
}

void QAFileSurvey::finish()
{
    if (m_inTick)
        return;
    stop();
    m_inTick = true;
    m_perLine = isSignalConnected(QMetaMethod::fromSignal(&QAFileSurvey::hasNewLine));
    readOnce();
    if (m_pendingReset < 0)
        deliverPartial();
    endTick();
}

void QAFileSurvey::endTick()
{
    m_inTick = false;
    if (m_pendingReset >= 0) {
        const bool fromStart = m_pendingReset == 1;
        m_pendingReset = -1;
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
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (m_present)
            fileEnded(&QAFileSurvey::fileDisappear, m_disappearPolicy, nullptr, Snapshot());
        return;
    }
    const Snapshot now = snapshotOf(file);
    if (!checkFile(file, now))
        return;
    if (now.size > m_offset) {
        emit fileGrow();
        if (m_pendingReset < 0)
            readNewBytes(file, now.size);
    }
}

bool QAFileSurvey::checkFile(QFile& file, const Snapshot& now)
{
    const QDateTime before = m_modificationTime;
    if (now.modified != before) {
        m_modificationTime = now.modified;
        m_modificationTimer->start(m_modificationDelay);
    }
    const bool timeWentBack = before.isValid() && now.modified < before;
    if (m_present && (!(now.identity == m_identity) || timeWentBack)) {
        // Another file: the old one disappeared, this one appears.
        const bool goOn = fileEnded(&QAFileSurvey::fileDisappear, m_disappearPolicy, &file, now);
        m_present = false;
        if (!goOn)
            return false;
    }
    if (!m_present) {
        m_present = true;
        m_identity = now.identity;
        emit fileAppear();
    }
    if (m_pendingReset >= 0)
        return false;
    const bool changed = now.modified != before || now.size != m_offset;
    if (now.size < m_offset || (changed && wasRewritten(file, now)))
        return fileEnded(&QAFileSurvey::fileShrink, m_shrinkPolicy, &file, now)
            && m_pendingReset < 0;
    return true;
}

bool QAFileSurvey::wasRewritten(QFile& file, const Snapshot& now) const
{
    if (m_tail.isEmpty() || now.size < m_offset)
        return false;
    if (!file.seek(m_offset - m_tail.size()))
        return true;
    return file.read(m_tail.size()) != m_tail;
}

bool QAFileSurvey::fileEnded(void (QAFileSurvey::*signal)(), Policy policy, QFile* file,
                             const Snapshot& now)
{
    deliverPartial();
    const bool wasActive = m_timer->isActive();
    m_timer->stop();
    const int controlCalls = m_controlCalls;
    emit(this->*signal)();
    resetTo(policy != FromEnd, policy == Stop ? nullptr : file, now);
    if (policy == Stop)
        return false;
    if (wasActive && controlCalls == m_controlCalls)
        m_timer->start(m_delay);
    return true;
}

void QAFileSurvey::resetTo(bool fromStart, QFile* file, const Snapshot& now)
{
    m_partial.clear();
    m_tail.clear();
    m_present = now.present;
    m_identity = now.identity;
    m_modificationTime = now.modified;
    m_offset = 0;
    if (file && now.present && !fromStart) {
        m_offset = endOfLastLine(*file, now.size);
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
    const qint64 begin = qMax<qint64>(0, m_offset - TailSize);
    if (m_offset > 0 && file.seek(begin))
        m_tail = file.read(m_offset - begin);
}

void QAFileSurvey::readNewBytes(QFile& file, qint64 size)
{
    if (!file.seek(m_offset))
        return;
    char* block = m_block.data();
    while (m_offset < size && m_pendingReset < 0) {
        const qint64 read = file.read(block, qMin<qint64>(BlockSize, size - m_offset));
        if (read <= 0)
            return;
        m_offset += read;
        keepTail(block, read);
        consume(block, read);
    }
}

void QAFileSurvey::keepTail(const char* data, qsizetype size)
{
    if (size >= TailSize) {
        m_tail = QByteArray(data + size - TailSize, TailSize);
        return;
    }
    m_tail.append(data, size);
    if (m_tail.size() > TailSize)
        m_tail.remove(0, m_tail.size() - TailSize);
}

void QAFileSurvey::consume(char* data, qsizetype size)
{
    char* p = data;
    char* const end = data + size;
    while (p < end && m_pendingReset < 0) {
        if (!m_partial.isEmpty()) {
            char* newline = static_cast<char*>(std::memchr(p, '\n', size_t(end - p)));
            if (!newline) {
                appendToPartial(p, end - p);
                return;
            }
            appendToPartial(p, newline - p);
            m_partial.append('\n');
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
    while (m_partial.size() + size > MaxLineLength && m_pendingReset < 0) {
        const qsizetype take = MaxLineLength - m_partial.size();
        m_partial.append(data, take);
        m_partial.append('\n');
        data += take;
        size -= take;
        emitPartial();
    }
    m_partial.append(data, size);
}

void QAFileSurvey::deliver(char* lines, qsizetype size)
{
    if (m_perLine) {
        // Each line is ended by a NUL put after its "\n" for the emission.
        char* const end = lines + size;
        for (char* p = lines; p < end;) {
            char* next = static_cast<char*>(std::memchr(p, '\n', size_t(end - p))) + 1;
            const char saved = *next;
            *next = '\0';
            emit hasNewLine(p);
            *next = saved;
            if (m_pendingReset >= 0)
                return;
            p = next;
        }
    }
    emit newLines(QByteArray::fromRawData(lines, size));
}

void QAFileSurvey::deliverPartial()
{
    if (m_partial.isEmpty())
        return;
    m_partial.append('\n');
    emitPartial();
}

void QAFileSurvey::emitPartial()
{
    QByteArray line;
    line.swap(m_partial);
    if (m_perLine)
        emit hasNewLine(line.constData());
    if (m_pendingReset < 0)
        emit newLines(line);
}

void QAFileSurvey::modificationSettled()
{
    emit fileModified();
    emit modified(m_fileName);
}
