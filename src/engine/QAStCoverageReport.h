#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <climits>
#include <vector>

class QIODevice;

// The coverage file of a test run (index 3 of the split,
// docs/formats/runtime-output.md): the line, branch and function coverage
// of the compiler's counters (DC, TP, TA, TB, EI), and the runtime's
// function coverage (NT, DT, FT, CO, TE).
//
//   QAStCoverageReport report;
//   report.read(node->runtimeResultFiles().at(QASTSplitSurvey::Coverage));
//   for (const QAStCoverageReport::File& file : report.files())
//       print(file.path, file.counts.lines, file.counts.linesHit);
//
// The records of one run are read: the first NT names it, and the lines
// after an NT of another program or process, up to an NT of the first run
// again, are skipped. So are unknown and malformed records and a last line
// without its newline (a file cut short): skippedLines() counts them and
// faults() tells the first of them, "<file>:<line>: <what>". Bad input
// never stops the reading: what could be read is kept.
class SDK110_EXPORT QAStCoverageReport {
public:
    // What is covered and what of it ran.
    struct Counts {
        qint64 lines = 0;
        qint64 linesHit = 0;
        qint64 branches = 0;
        qint64 branchesHit = 0;
        qint64 functions = 0;
        qint64 functionsHit = 0;
        void add(const Counts& other);
        bool operator==(const Counts& other) const;
    };
    struct Line {
        int number;
        qint64 count;
    };
    struct Branch {
        int line;
        int branch;
        qint64 taken; // -1: its line never ran
    };
    // A function of a file; its counts are those of the lines and branches
    // from its first to its last line, and itself.
    struct Function {
        QByteArray name;
        int startLine = 0;
        int endLine = 0;
        qint64 calls = 0;
        Counts counts;
    };
    struct File {
        QString path; // absolute
        std::vector<Function> functions; // by first line
        std::vector<Line> lines;         // by number, each once
        std::vector<Branch> branches;    // by line, then branch
        Counts counts;
        // The count of a line; -1 when the line holds no code.
        qint64 lineCount(int number) const;
    };
    // A function the runtime saw entered (FT), with its calls (CO; 0 when
    // the run ended without them).
    struct RuntimeFunction {
        QByteArray name;
        qint64 calls = 0;
    };

    // Reads a coverage file, replacing what was read before; false, with
    // error() naming the file, when it cannot be read.
    bool read(const QString& path);
    // Reads the records of data, as read() would a file named name.
    void readData(const QByteArray& data, const QString& name = QString());

    const std::vector<File>& files() const { return m_files; }
    // The file of that absolute path; null when none.
    const File* file(const QString& path) const;
    Counts totals() const { return m_totals; }
    // The runtime's functions, in the order they were first entered.
    const std::vector<RuntimeFunction>& runtimeFunctions() const { return m_runtime; }
    // Whether the file holds the compiler's coverage (DC, TA, TB, TP).
    bool hasLineCoverage() const { return m_hasLineCoverage; }
    // Whether the records of the compiler's coverage ended (EI) with the
    // totals they hold, or the runtime's function coverage ended (TE).
    bool isComplete() const { return m_complete; }
    // The program and process of the run; empty and 0 without NT.
    QByteArray program() const { return m_program; }
    qint64 pid() const { return m_pid; }

    qint64 skippedLines() const { return m_skipped; }
    // The first faults, each "<file>:<line>: <what>"; at most MaxFaults.
    QStringList faults() const { return m_faults; }
    static constexpr int MaxFaults = 20;
    QString error() const { return m_error; }

    // The lcov tracefile of the run: TN, then per file SF, FN, FNDA, FNF,
    // FNH, BRDA, BRF, BRH, DA, LF, LH, end_of_record. A file without the
    // compiler's coverage gives the runtime's functions under the
    // program's name.
    bool writeLcov(QIODevice* device, const QString& testName) const;
    // A Cobertura report: one package per directory, one class per file,
    // its methods and lines; file names relative to sourceRoot.
    bool writeCobertura(QIODevice* device, const QString& sourceRoot) const;

    // "12.5" for 1 of 8; "-" for nothing to cover.
    static QString percent(qint64 hit, qint64 total);

private:
    class Reader;
    void clear();
    // The records of [begin, begin + size).
    void read(const char* begin, qsizetype size, const QString& name);
    // What the reading counted of the current file while its lines and
    // branches came in order.
    struct Tally {
        bool ordered = true;
        int lastLine = INT_MIN;
        int lastBranchLine = INT_MIN;
        int lastBranch = INT_MIN;
        Counts counts;
        // The functions' own counts were made on the way.
        bool functionsCounted = true;
        size_t lineFunction = 0;
        size_t branchFunction = 0;
    };
    static void finishFile(File& file, const Tally* tally);
    void finish();

    std::vector<File> m_files;
    std::vector<RuntimeFunction> m_runtime;
    Counts m_totals;
    QByteArray m_program;
    qint64 m_pid = 0;
    bool m_hasLineCoverage = false;
    bool m_complete = false;
    qint64 m_skipped = 0;
    QStringList m_faults;
    QString m_error;
};
