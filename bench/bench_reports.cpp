#include "Harness.h"

#include "QAStChromeTrace.h"
#include "QAStJUnitWriter.h"
#include "QAStTestResults.h"
#include "QAStTraceReport.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr qint64 TraceSize = qint64(100) << 20; // 100 MiB

// A trace of a long run of a program with two threads: calls nested up to
// eight deep among 200 functions, the records in the runtime's form.
struct GeneratedTrace {
    QTemporaryDir dir;
    QString file;
    qint64 lines = 0;
};

std::shared_ptr<GeneratedTrace> generatedTrace()
{
    static std::shared_ptr<GeneratedTrace> generated;
    if (generated)
        return generated;
    generated = std::make_shared<GeneratedTrace>();
    generated->file = generated->dir.filePath(QStringLiteral("trace.tdf"));
    QFile out(generated->file);
    if (!out.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(generated->file));
    QByteArray block = "TS \"/home/u/build/test_program\" 4242\n";
    quint32 seed = 110;
    qint64 time = 0;
    int depth[2] = {0, 0};
    int stack[2][8];
    qint64 written = 0;
    while (written < TraceSize) {
        seed = seed * 1664525u + 1013904223u;
        const int thread = (seed >> 28) & 1;
        const bool enter = depth[thread] == 0 || (depth[thread] < 8 && ((seed >> 8) & 3) != 0 && ((seed >> 12) & 1));
        time += (seed >> 20) & 7;
        char line[128];
        int size;
        if (enter) {
            const int function = int((seed >> 4) % 200);
            stack[thread][depth[thread]] = function;
            size = std::snprintf(line, sizeof line, "ME %d \"module_%d::function_%d\" %lld %d\n", depth[thread],
                                 function % 17, function, static_cast<long long>(time), 4242 + thread);
            ++depth[thread];
        } else {
            --depth[thread];
            size = std::snprintf(line, sizeof line, "MR %d \"module_%d::function_%d\" %lld %d\n", depth[thread],
                                 stack[thread][depth[thread]] % 17, stack[thread][depth[thread]],
                                 static_cast<long long>(time), 4242 + thread);
        }
        block.append(line, size);
        ++generated->lines;
        if (block.size() >= (1 << 20)) {
            out.write(block);
            written += block.size();
            block.clear();
        }
    }
    out.write(block);
    std::printf("  input: %.0f MiB, %lld lines\n", double(out.size()) / (1 << 20),
                static_cast<long long>(generated->lines));
    std::fflush(stdout);
    return generated;
}

// The baseline: the file read in blocks and split into its lines, each
// line's first byte looked at.
void readAndSplit(const QString& file)
{
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file));
    QByteArray block(1 << 20, Qt::Uninitialized);
    qint64 lines = 0;
    qint64 codes = 0;
    qint64 got;
    while ((got = in.read(block.data(), block.size())) > 0) {
        const char* p = block.constData();
        const char* end = p + got;
        while (p < end) {
            const char* newline = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)));
            codes += *p;
            ++lines;
            if (!newline)
                break;
            p = newline + 1;
        }
    }
    Bench::keep(&lines);
    Bench::keep(&codes);
}

// A test node's results of n checks, half of them failed, with output.
QByteArray resultsOf(int checks)
{
    QByteArray rio = "BT \"Unit tests\" \"2026-01-02 03:04:05\" \"/t/test\"\n";
    for (int i = 0; i < checks; ++i) {
        rio += "RL \"check " + QByteArray::number(i) + " runs\"\n";
        rio += (i % 2 ? "FL \"tests/unit/test_" : "PL \"tests/unit/test_") + QByteArray::number(i % 40) + ".c:" +
               QByteArray::number(i) + ":check_" + QByteArray::number(i) + (i % 2 ? ":FAIL: bad\"\n" : ":PASS\"\n");
    }
    return rio + "SM \"Unit tests\" 1 " + QByteArray::number(2 * checks) + " 0 0\n";
}

void writeJUnit(const QAStTestResults& results)
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    QAStJUnitWriter::write(&out, {{QStringLiteral("Unit tests"), &results}});
    Bench::keep(out.data().constData());
}

}

SDK110_BENCHMARK(traceReport, "reports: trace report of 100 MiB against splitting its lines (goal 3x)")
{
    const auto trace = generatedTrace();
    Bench::Measure m;
    m.subject = QStringLiteral("QAStTraceReport::readFile, the totals of korvil report trace");
    m.baseline = QStringLiteral("reading the file and splitting its lines");
    m.runSubject = [trace] {
        QAStTraceReport report;
        report.setKeepCalls(false);
        report.readFile(trace->file);
        if (report.skippedLines() != 0 || report.entries() == 0)
            qFatal("the trace was not read: %s", qPrintable(report.skippedText()));
        Bench::keep(report.functionTotals().data());
    };
    m.runBaseline = [trace] { readAndSplit(trace->file); };
    m.target = 3;
    m.repetitions = 5;
    return m;
}

SDK110_BENCHMARK(chromeTrace, "reports: trace report and trace-event file of 100 MiB against splitting its lines (no goal)")
{
    const auto trace = generatedTrace();
    Bench::Measure m;
    m.subject = QStringLiteral("QAStTraceReport::readFile keeping every call, then QAStChromeTrace::writeFile");
    m.baseline = QStringLiteral("reading the file and splitting its lines");
    m.runSubject = [trace] {
        QAStTraceReport report;
        report.readFile(trace->file);
        QString error;
        if (!QAStChromeTrace::writeFile(trace->dir.filePath(QStringLiteral("trace.json")), report, &error))
            qFatal("%s", qPrintable(error));
    };
    m.runBaseline = [trace] { readAndSplit(trace->file); };
    m.repetitions = 3;
    return m;
}

SDK110_BENCHMARK(junitLinear, "reports: JUnit writing of 200,000 checks against 20,000 (goal: linear)")
{
    auto small = std::make_shared<QAStTestResults>();
    auto large = std::make_shared<QAStTestResults>();
    small->addLines(resultsOf(20000));
    large->addLines(resultsOf(200000));
    Bench::Measure m;
    m.subject = QStringLiteral("QAStJUnitWriter::write of 200,000 checks");
    m.baseline = QStringLiteral("the same of 20,000 checks");
    m.runSubject = [large] { writeJUnit(*large); };
    m.runBaseline = [small] { writeJUnit(*small); };
    m.target = 12;
    m.repetitions = 5;
    return m;
}
