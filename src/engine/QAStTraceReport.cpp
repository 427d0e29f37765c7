#include "QAStTraceReport.h"

#include <climits>

namespace {

constexpr int TS = QAStRecordFields::codeOf('T', 'S');
constexpr int ME = QAStRecordFields::codeOf('M', 'E');
constexpr int MR = QAStRecordFields::codeOf('M', 'R');
constexpr int TM = QAStRecordFields::codeOf('T', 'M');

}

// A hash of the name, eight bytes at a time.
static quint64 hashOf(std::string_view text)
{
    quint64 hash = 0x9E3779B97F4A7C15ull ^ text.size();
    const char* p = text.data();
    size_t left = text.size();
    for (; left >= 8; p += 8, left -= 8) {
        quint64 word;
        std::memcpy(&word, p, 8);
        hash = (hash ^ word) * 0xFF51AFD7ED558CCDull;
        hash ^= hash >> 32;
    }
    quint64 tail = 0;
    std::memcpy(&tail, p, left);
    hash = (hash ^ tail) * 0xC4CEB9FE1A85EC53ull;
    return hash ^ (hash >> 29);
}

// Digits up to a blank or the end; p moves past them. False when there
// are none or too many.
static bool digits(const char*& p, const char* end, qint64* value)
{
    const char* start = p;
    qint64 n = 0;
    while (p < end && *p >= '0' && *p <= '9' && p - start < 18)
        n = n * 10 + (*p++ - '0');
    *value = n;
    return p > start && (p == end || *p == ' ');
}

QAStTraceReport::QAStTraceReport() = default;

void QAStTraceReport::clear()
{
    QAStRecordReader::clear();
    m_calls.clear();
    m_nameSlots.clear();
    m_names.clear();
    m_threads.clear();
    m_stacks.clear();
    m_programThreads.clear();
    m_pid = 0;
    m_programs.clear();
    m_entries = m_returns = 0;
    m_reportedEntries = m_reportedReturns = -1;
    m_lastTime = 0;
    m_maxDepth = 0;
}

qint64 QAStTraceReport::openCalls() const
{
    qint64 open = 0;
    for (const std::vector<qint32>& stack : m_stacks)
        open += qint64(stack.size());
    return open;
}

qint32 QAStTraceReport::functionIndex(std::string_view name)
{
    if (m_nameSlots.size() < size_t(m_names.size()) * 2 + 16) {
        // Grown to four times the names or more, so that probes stay short.
        size_t size = 64;
        while (size < size_t(m_names.size()) * 4 + 64)
            size *= 2; // a power of two: the hash is masked
        std::vector<NameSlot> table(size);
        for (const NameSlot& slot : m_nameSlots) {
            if (slot.index < 0)
                continue;
            size_t at = slot.hash & (table.size() - 1);
            while (table[at].index >= 0)
                at = (at + 1) & (table.size() - 1);
            table[at] = slot;
        }
        m_nameSlots.swap(table);
    }
    const quint64 hash = hashOf(name);
    const size_t mask = m_nameSlots.size() - 1;
    size_t at = hash & mask;
    for (; m_nameSlots[at].index >= 0; at = (at + 1) & mask) {
        if (m_nameSlots[at].hash != hash)
            continue;
        const QByteArray& known = m_names.at(m_nameSlots[at].index);
        if (size_t(known.size()) == name.size() && std::memcmp(known.constData(), name.data(), name.size()) == 0)
            return m_nameSlots[at].index;
    }
    m_names.append(QByteArray(name.data(), qsizetype(name.size())));
    m_nameSlots[at] = {hash, qint32(m_names.size() - 1)};
    return m_nameSlots[at].index;
}

qint32 QAStTraceReport::threadIndex(qint64 tid)
{
    // A program has few threads: they are looked for one by one.
    for (const auto& [known, index] : m_programThreads) {
        if (known == tid)
            return index;
    }
    m_threads.append({m_pid, tid});
    m_stacks.emplace_back();
    m_programThreads.emplace_back(tid, qint32(m_threads.size() - 1));
    return m_programThreads.back().second;
}

void QAStTraceReport::unwind(std::vector<qint32>& stack, qint32 depth, qint64 time)
{
    while (!stack.empty() && m_calls[size_t(stack.back())].depth > depth) {
        Call& call = m_calls[size_t(stack.back())];
        call.duration = std::max<qint64>(0, time - call.start);
        stack.pop_back();
    }
}

void QAStTraceReport::readLines(const char* data, const char* end)
{
    if (m_calls.empty())
        m_calls.reserve(size_t((end - data) / 80)); // a call is two lines of about 40 bytes
    const char* p = data;
    while (p < end) {
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)));
        const char* lineEnd = newline ? newline : end;
        if (!readCall(p, lineEnd))
            readLine(p, lineEnd);
        p = lineEnd + 1;
    }
}

bool QAStTraceReport::readCall(const char* begin, const char* end)
{
    if (end - begin < 10 || begin[0] != 'M' || (begin[1] != 'E' && begin[1] != 'R') || begin[2] != ' ')
        return false;
    const char* p = begin + 3;
    qint64 depth = 0;
    if (!digits(p, end, &depth) || end - p < 4 || p[1] != '"')
        return false;
    p += 2;
    const char* name = p;
    while (p < end && *p != '"' && *p != '\\')
        ++p;
    if (p == end || *p != '"' || end - p < 3 || p[1] != ' ')
        return false;
    const std::string_view function(name, size_t(p - name));
    p += 2;
    qint64 time = 0;
    qint64 tid = 0;
    if (!digits(p, end, &time) || (p < end && (++p, !digits(p, end, &tid) || p != end)))
        return false;
    countLine();
    if (begin[1] == 'E')
        enter(depth, time, tid, function);
    else if (!leave(depth, time, tid))
        skip("a return without its entry");
    return true;
}

void QAStTraceReport::enter(qint64 depth, qint64 time, qint64 tid, std::string_view name)
{
    const qint32 thread = threadIndex(tid);
    std::vector<qint32>& stack = m_stacks[size_t(thread)];
    m_lastTime = std::max(m_lastTime, time);
    unwind(stack, qint32(depth) - 1, time);
    Call call;
    call.start = time;
    call.function = functionIndex(name);
    call.depth = qint32(depth);
    call.thread = thread;
    stack.push_back(qint32(m_calls.size()));
    m_calls.push_back(call);
    ++m_entries;
    m_maxDepth = std::max(m_maxDepth, int(depth));
}

bool QAStTraceReport::leave(qint64 depth, qint64 time, qint64 tid)
{
    const qint32 thread = threadIndex(tid);
    std::vector<qint32>& stack = m_stacks[size_t(thread)];
    m_lastTime = std::max(m_lastTime, time);
    unwind(stack, qint32(depth), time);
    if (stack.empty() || m_calls[size_t(stack.back())].depth != depth)
        return false;
    Call& call = m_calls[size_t(stack.back())];
    call.duration = std::max<qint64>(0, time - call.start);
    call.complete = true;
    stack.pop_back();
    ++m_returns;
    return true;
}

void QAStTraceReport::readRecord(const QAStRecordFields& r)
{
    const int code = r.code();
    if (code == ME || code == MR) {
        qint64 depth = 0;
        qint64 time = 0;
        qint64 tid = 0;
        if (r.count() < 3 || !r.number(0, &depth) || !r.isQuoted(1) || !r.number(2, &time) ||
            (r.count() > 3 && !r.number(3, &tid)) || depth > INT_MAX) {
            skip("a call record with fields missing");
            return;
        }
        if (code == ME) {
            const QByteArray name = r.text(1);
            enter(depth, time, tid, std::string_view(name.constData(), size_t(name.size())));
        } else if (!leave(depth, time, tid)) {
            skip("a return without its entry");
        }
        return;
    }
    if (code == TS) {
        // Another program: the calls it left open end where it stopped.
        for (std::vector<qint32>& stack : m_stacks)
            unwind(stack, -1, m_lastTime);
        if (!r.number(1, &m_pid))
            m_pid = 0;
        m_programs.append({m_pid, QString::fromUtf8(r.text(0))});
        m_programThreads.clear();
        m_lastTime = 0;
        return;
    }
    if (code == TM) {
        if (!r.number(0, &m_reportedEntries) || !r.number(1, &m_reportedReturns)) {
            m_reportedEntries = m_reportedReturns = -1;
            skip("a trace end with fields missing");
        }
        return;
    }
    skip("not a trace record");
}
