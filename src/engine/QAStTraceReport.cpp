#include "QAStTraceReport.h"

#include <climits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// The first '"', backslash or line end of [p, end), or end: 16 bytes at a
// time, a name being about that long.
static inline const char* nameEnd(const char* p, const char* end)
{
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i newline = _mm_set1_epi8('\n');
    for (; end - p >= 16; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i stops = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)),
                                           _mm_cmpeq_epi8(bytes, newline));
        if (const unsigned mask = unsigned(_mm_movemask_epi8(stops)))
            return p + __builtin_ctz(mask);
    }
#endif
    while (p < end && *p != '"' && *p != '\\' && *p != '\n')
        ++p;
    return p;
}

// Digits up to a blank, a line end or the end; p moves past them. False
// when there are none or too many.
static inline bool digits(const char*& p, const char* end, qint64* value)
{
    const char* start = p;
    qint64 n = 0;
    while (p < end && unsigned(*p - '0') <= 9 && p - start < 18)
        n = n * 10 + (*p++ - '0');
    *value = n;
    return p > start && (p == end || *p == ' ' || *p == '\n');
}

QAStTraceReport::QAStTraceReport()
    : m_nameSlots(64)
{
}

void QAStTraceReport::clear()
{
    QAStRecordReader::clear();
    m_calls.clear();
    m_totals.clear();
    m_nameSlots.assign(64, NameSlot());
    m_names.clear();
    m_threads.clear();
    m_stacks.clear();
    m_programThreads.clear();
    m_lastThread = -1;
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
    for (const std::vector<Open>& stack : m_stacks)
        open += qint64(stack.size());
    return open;
}

void QAStTraceReport::growNameSlots()
{
    // Four times the names or more, so that probes stay short; a power of
    // two, the hash being masked.
    size_t size = 64;
    while (size < size_t(m_names.size()) * 4 + 64)
        size *= 2;
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

qint32 QAStTraceReport::functionIndex(std::string_view name)
{
    const quint64 hash = hashOf(name);
    const size_t mask = m_nameSlots.size() - 1;
    size_t at = hash & mask;
    for (; m_nameSlots[at].index >= 0; at = (at + 1) & mask) {
        const NameSlot& slot = m_nameSlots[at];
        if (slot.hash == hash && slot.size == name.size() && std::memcmp(slot.bytes, name.data(), name.size()) == 0)
            return slot.index;
    }
    // A name's bytes stay where they are while the list grows.
    m_names.append(QByteArray(name.data(), qsizetype(name.size())));
    m_totals.emplace_back();
    const qint32 index = qint32(m_names.size() - 1);
    m_nameSlots[at] = {hash, m_names.last().constData(), name.size(), index};
    if (m_nameSlots.size() < size_t(m_names.size()) * 2)
        growNameSlots();
    return index;
}

qint32 QAStTraceReport::threadIndex(qint64 tid)
{
    // Calls come in runs of one thread; a program has few threads, looked
    // for one by one.
    if (m_lastThread >= 0 && tid == m_lastTid)
        return m_lastThread;
    m_lastTid = tid;
    for (const auto& [known, index] : m_programThreads) {
        if (known == tid)
            return m_lastThread = index;
    }
    m_threads.append({m_pid, tid});
    m_stacks.emplace_back();
    m_programThreads.emplace_back(tid, qint32(m_threads.size() - 1));
    return m_lastThread = m_programThreads.back().second;
}

void QAStTraceReport::close(const Open& open, qint64 time, bool complete)
{
    const qint64 duration = std::max<qint64>(0, time - open.start);
    FunctionTotals& totals = m_totals[size_t(open.function)];
    totals.total += duration;
    totals.longest = std::max(totals.longest, duration);
    if (open.call >= 0) {
        Call& call = m_calls[size_t(open.call)];
        call.duration = duration;
        call.complete = complete;
    }
}

void QAStTraceReport::unwind(std::vector<Open>& stack, qint32 depth, qint64 time)
{
    while (!stack.empty() && stack.back().depth > depth) {
        close(stack.back(), time, false);
        stack.pop_back();
    }
}

void QAStTraceReport::readLines(const char* data, const char* end)
{
    if (m_keepCalls && m_calls.empty())
        m_calls.reserve(size_t((end - data) / 80)); // a call is two lines of about 40 bytes
    const char* p = data;
    while (p < end) {
        if (const char* next = readCall(p, end)) {
            p = next;
            continue;
        }
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)));
        const char* lineEnd = newline ? newline : end;
        readLine(p, lineEnd);
        p = lineEnd + 1;
    }
}

const char* QAStTraceReport::readCall(const char* begin, const char* end)
{
    // The line is parsed as it is scanned: no pass of its own for its end.
    if (end - begin < 10 || begin[0] != 'M' || (begin[1] != 'E' && begin[1] != 'R') || begin[2] != ' ')
        return nullptr;
    const char* p = begin + 3;
    qint64 depth = 0;
    if (!digits(p, end, &depth) || end - p < 4 || p[0] != ' ' || p[1] != '"')
        return nullptr;
    p += 2;
    const char* name = p;
    p = nameEnd(p, end);
    if (end - p < 3 || *p != '"' || p[1] != ' ')
        return nullptr;
    const std::string_view function(name, size_t(p - name));
    p += 2;
    qint64 time = 0;
    qint64 tid = 0;
    if (!digits(p, end, &time))
        return nullptr;
    if (p < end && *p == ' ' && (++p, !digits(p, end, &tid)))
        return nullptr;
    if (p < end && *p != '\n')
        return nullptr;
    countLine();
    if (begin[1] == 'E')
        enter(depth, time, tid, function);
    else if (!leave(depth, time, tid))
        skip("a return without its entry");
    return p + 1;
}

void QAStTraceReport::enter(qint64 depth, qint64 time, qint64 tid, std::string_view name)
{
    const qint32 thread = threadIndex(tid);
    std::vector<Open>& stack = m_stacks[size_t(thread)];
    m_lastTime = std::max(m_lastTime, time);
    unwind(stack, qint32(depth) - 1, time);
    const qint32 function = functionIndex(name);
    ++m_totals[size_t(function)].calls;
    Open open{time, function, qint32(depth), -1};
    if (m_keepCalls) {
        open.call = qint64(m_calls.size());
        Call call;
        call.start = time;
        call.function = function;
        call.depth = qint32(depth);
        call.thread = thread;
        m_calls.push_back(call);
    }
    stack.push_back(open);
    ++m_entries;
    m_maxDepth = std::max(m_maxDepth, int(depth));
}

bool QAStTraceReport::leave(qint64 depth, qint64 time, qint64 tid)
{
    const qint32 thread = threadIndex(tid);
    std::vector<Open>& stack = m_stacks[size_t(thread)];
    m_lastTime = std::max(m_lastTime, time);
    unwind(stack, qint32(depth), time);
    if (stack.empty() || stack.back().depth != depth)
        return false;
    close(stack.back(), time, true);
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
        for (std::vector<Open>& stack : m_stacks)
            unwind(stack, -1, m_lastTime);
        if (!r.number(1, &m_pid))
            m_pid = 0;
        m_programs.append({m_pid, QString::fromUtf8(r.text(0))});
        m_programThreads.clear();
        m_lastThread = -1;
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
