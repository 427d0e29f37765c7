#pragma once

#include "QAStRecordReader.h"
#include "sdk110_export.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <string_view>
#include <utility>
#include <vector>

// The calls of a traced run, read from its .tdf file (TS ME MR TM,
// docs/formats/reports.md): each call with its function, depth, thread,
// start and length, in microseconds, in the order the calls began.
//
// An entry (ME) opens a call on its thread, its return (MR) at the same
// depth closes it. The runtime writes the thread after the time; records
// of the older form have none and are taken as one thread per program.
// A call left open when a deeper return or an entry at its depth comes
// (a jump out of it) ends there, incomplete; a call still open at the end
// of the file lasts until the last time read, incomplete. Each TS starts
// the calls of another program (its own process id, its times from 0). A
// return without its entry, unknown records and records with fields
// missing are skipped and counted.
class SDK110_EXPORT QAStTraceReport : public QAStRecordReader {
public:
    struct Call {
        qint64 start = 0;
        qint64 duration = -1; // -1 while open
        qint32 function = 0;  // index in functionNames()
        qint32 depth = 0;
        qint32 thread = 0;    // index in threads()
        bool complete = false;
    };
    struct Thread {
        qint64 pid = 0; // of the program (TS)
        qint64 tid = 0; // as the records give it; 0 in the older form
    };

    // Per function: its calls, the time spent in them (callees included)
    // and the longest; a call cut short by a jump out of it counts until
    // then, one still open at the end of the file adds no time.
    struct FunctionTotals {
        qint64 calls = 0;
        qint64 total = 0;
        qint64 longest = 0;
    };

    QAStTraceReport();
    void clear() override;

    // Whether each call is kept (calls()), true by default; without them
    // only the totals are, and a trace of any size reads in the memory of
    // its functions.
    void setKeepCalls(bool keep) { m_keepCalls = keep; }
    const std::vector<Call>& calls() const { return m_calls; }
    // By function, as functionNames().
    const std::vector<FunctionTotals>& functionTotals() const { return m_totals; }
    // A call's length: an open call lasts until the last time read.
    qint64 durationOf(const Call& call) const
    {
        return call.duration >= 0 ? call.duration : std::max<qint64>(0, m_lastTime - call.start);
    }
    const QList<QByteArray>& functionNames() const { return m_names; }
    QString functionName(const Call& call) const { return QString::fromUtf8(m_names.at(call.function)); }
    const QList<Thread>& threads() const { return m_threads; }
    struct Program {
        qint64 pid = 0;
        QString path;
    };
    // The programs traced, one per TS, in their order.
    const QList<Program>& programs() const { return m_programs; }
    qint64 entries() const { return m_entries; }
    qint64 returns() const { return m_returns; }
    qint64 openCalls() const;
    // The run's own count of entries and returns (TM); -1 when it did not
    // end.
    qint64 reportedEntries() const { return m_reportedEntries; }
    qint64 reportedReturns() const { return m_reportedReturns; }
    int maximumDepth() const { return m_maxDepth; }

protected:
    // ME and MR lines of the runtime's plain form are read here at once;
    // any other line goes through readRecord.
    void readLines(const char* data, const char* end) override;
    void readRecord(const QAStRecordFields& record) override;

private:
    // A plain ME or MR line at begin (a name without escapes): where the
    // next line begins; null to leave the line to readRecord.
    const char* readCall(const char* begin, const char* end);
    void enter(qint64 depth, qint64 time, qint64 tid, std::string_view name);
    bool leave(qint64 depth, qint64 time, qint64 tid);
    qint32 functionIndex(std::string_view name);
    void growNameSlots();
    qint32 threadIndex(qint64 tid);
    // A call open on its thread's stack: its start, function, depth and
    // index in m_calls (-1 when calls are not kept).
    struct Open {
        qint64 start;
        qint32 function;
        qint32 depth;
        qint64 call;
    };
    void close(const Open& open, qint64 time, bool complete);
    // Ends the open calls of stack above depth at time, incomplete.
    void unwind(std::vector<Open>& stack, qint32 depth, qint64 time);

    std::vector<Call> m_calls;
    QList<QByteArray> m_names;
    // The names by hash, open addressing: the hash, the name's bytes (those
    // of m_names) and its index there, -1 for a free slot.
    struct NameSlot {
        quint64 hash = 0;
        const char* bytes = nullptr;
        size_t size = 0;
        qint32 index = -1;
    };
    std::vector<NameSlot> m_nameSlots;
    QList<Thread> m_threads;
    std::vector<std::vector<Open>> m_stacks; // per thread, the open calls
    std::vector<FunctionTotals> m_totals;
    bool m_keepCalls = true;
    // The threads of the current program: tid and index in m_threads.
    std::vector<std::pair<qint64, qint32>> m_programThreads;
    // The thread of the last call read, -1 when none.
    qint64 m_lastTid = 0;
    qint32 m_lastThread = -1;
    qint64 m_pid = 0;
    QList<Program> m_programs;
    qint64 m_entries = 0;
    qint64 m_returns = 0;
    qint64 m_reportedEntries = -1;
    qint64 m_reportedReturns = -1;
    qint64 m_lastTime = 0;
    int m_maxDepth = 0;
};
