// The report command: what the last run of test nodes left in their result
// files, read back and printed (results, profile, memory, trace), and the
// JUnit file of an execution.
#include "CommandLineStudio.h"
#include "Commands.h"

#include "QASTSplitSurvey.h"
#include "QAStChromeTrace.h"
#include "QAStJUnitWriter.h"
#include "QAStMemoryReport.h"
#include "QAStNodeTest.h"
#include "QAStProfileReport.h"
#include "QAStProject.h"
#include "QAStTestResults.h"
#include "QAStTraceReport.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>

namespace Commands {
namespace {

const QCommandLineOption reportConfigOption({QStringLiteral("c"), QStringLiteral("config")},
                                            QStringLiteral("Use the configuration NAME."), QStringLiteral("NAME"));
const QCommandLineOption chromeOption(QStringLiteral("chrome"),
                                      QStringLiteral("trace: write the calls as a trace-event JSON file FILE."),
                                      QStringLiteral("FILE"));
const QCommandLineOption topOption(QStringLiteral("top"),
                                   QStringLiteral("profile, memory, trace: list N rows at most (all by default)."),
                                   QStringLiteral("N"));

// The test nodes at node and below whose runs leave result files.
QList<QAStNodeTest*> testNodes(QAStNode* node)
{
    QList<QAStNodeTest*> tests;
    QList<QAStData*> items{node};
    items += node->childrenOfClass("QAStNode", true);
    for (QAStData* item : items) {
        auto* test = qobject_cast<QAStNodeTest*>(item);
        if (test && !test->runtimeResultFiles().isEmpty())
            tests.append(test);
    }
    return tests;
}

// A result file of test, relative to the test's directory for printing.
QString shown(const QAStNodeTest* test, const QString& file)
{
    return QDir::cleanPath(QDir(test->directory()).relativeFilePath(file));
}

// Reads the result file of index into reader; false, told on standard
// error, when the run left none. Skipped lines are told and the rest used.
bool readResult(const QAStNodeTest* test, int index, QAStRecordReader& reader,
                const std::function<bool(const QString&)>& read = {})
{
    const QString file = test->runtimeResultFiles().at(index);
    if (!QFileInfo::exists(file)) {
        err(QStringLiteral("%1: no results of \"%2\": %3 not found (execute the node first)")
                .arg(test->project() ? test->project()->path() : test->name(), test->name(), shown(test, file)));
        return false;
    }
    if (!(read ? read(file) : reader.readFile(file))) {
        err(reader.errorString());
        return false;
    }
    if (reader.skippedLines() > 0)
        err(reader.skippedText());
    return true;
}

// The test results with the end-of-test line.
bool readResults(const QAStNodeTest* test, QAStTestResults& results)
{
    const QString end = test->runtimeResultFiles().at(QASTSplitSurvey::EndOfTest);
    return readResult(test, QASTSplitSurvey::Results, results,
                      [&](const QString& file) { return results.readFiles(file, end); });
}

// Whether the run recorded anything in a result file read; when it did
// not (its configuration did not ask for the analysis), says so.
bool recorded(const QAStNodeTest* test, const QAStRecordReader& reader, const char* what, const char* setting)
{
    if (reader.lineCount() > 0)
        return true;
    const QString text = QLatin1String(what);
    out(QStringLiteral("%1 of \"%2\": none recorded: the run measured no %3 (set %4 to true, then build and "
                       "execute the node again)\n")
            .arg(text.left(1).toUpper() + text.mid(1), test->name(), text, QLatin1String(setting)));
    return false;
}

// Makes the directory of an output file, so that --junit and --chrome may
// name a new one.
void makeDirectoryOf(const QString& file)
{
    QDir().mkpath(QFileInfo(file).absolutePath());
}

QString microseconds(qint64 us)
{
    if (us >= 10000000)
        return QStringLiteral("%1 s").arg(double(us) / 1e6, 0, 'f', 2);
    if (us >= 10000)
        return QStringLiteral("%1 ms").arg(double(us) / 1e3, 0, 'f', 1);
    return QStringLiteral("%1 us").arg(us);
}

int rowLimit(const QCommandLineParser& parser)
{
    bool ok = false;
    const int top = parser.value(topOption).toInt(&ok);
    return parser.isSet(topOption) && ok && top > 0 ? top : INT_MAX;
}

// --- the reports, one per WHAT

struct Totals {
    int nodes = 0;
    int failedNodes = 0;
    int checks = 0;
    int failedChecks = 0;
    int faults = 0;
};

// One node's results: its line, then each failed check and test.
void printResults(const QAStNodeTest* test, const QAStTestResults& results, Totals& totals)
{
    const bool passed = !results.tests().isEmpty() && results.failedTests() == 0;
    const QString state = results.tests().isEmpty() ? QStringLiteral("not run")
                          : passed                  ? QStringLiteral("passed")
                                                    : QStringLiteral("FAILED");
    const int checks = results.checkCount();
    const int failed = results.failedChecks();
    QString line = QStringLiteral("%1: %2, %3 test(s)").arg(test->name(), state).arg(results.tests().size());
    if (checks > 0)
        line += QStringLiteral(", %1 check(s): %2 passed, %3 failed").arg(checks).arg(checks - failed).arg(failed);
    out(line + u'\n');
    for (const QAStTestResults::Test& t : results.tests()) {
        if (t.name != test->name() || results.tests().size() > 1 || !t.passed())
            out(QStringLiteral("  %1: %2\n")
                    .arg(t.name, !t.ended              ? QStringLiteral("did not end")
                                 : t.passed()          ? QStringLiteral("passed")
                                 : t.status != 0       ? QStringLiteral("FAILED, status %1").arg(t.status)
                                                       : QStringLiteral("FAILED")));
        for (const QAStTestResults::Check& c : t.checks) {
            if (c.passed)
                continue;
            const QString where = c.file.isEmpty() ? QString() : QStringLiteral("%1:%2: ").arg(c.file).arg(c.line);
            out(QStringLiteral("    failed: %1%2\n").arg(where, c.name));
            if (c.message != c.name)
                out(QStringLiteral("      %1\n").arg(c.message));
        }
    }
    ++totals.nodes;
    totals.failedNodes += !passed;
    totals.checks += checks;
    totals.failedChecks += failed;
}

int reportResults(const QList<QAStNodeTest*>& tests, const QCommandLineParser&)
{
    Totals totals;
    for (const QAStNodeTest* test : tests) {
        QAStTestResults results;
        if (!readResults(test, results)) {
            ++totals.faults;
            continue;
        }
        printResults(test, results, totals);
    }
    out(QStringLiteral("Total: %1 test node(s), %2 passed, %3 failed; %4 check(s), %5 failed\n")
            .arg(totals.nodes)
            .arg(totals.nodes - totals.failedNodes)
            .arg(totals.failedNodes)
            .arg(totals.checks)
            .arg(totals.failedChecks));
    return totals.faults == 0 && totals.failedNodes == 0 ? Success : Failure;
}

int reportProfile(const QList<QAStNodeTest*>& tests, const QCommandLineParser& parser)
{
    int faults = 0;
    for (const QAStNodeTest* test : tests) {
        QAStProfileReport profile;
        if (!readResult(test, QASTSplitSurvey::PerformanceProfile, profile)) {
            ++faults;
            continue;
        }
        if (!recorded(test, profile, "performance profile", "performanceProfiling"))
            continue;
        out(QStringLiteral("Performance profile of \"%1\": %2 function(s)%3\n")
                .arg(test->name())
                .arg(profile.functions().size())
                .arg(profile.runTime() >= 0 ? QStringLiteral(", run %1").arg(microseconds(profile.runTime()))
                                            : QStringLiteral(", the run did not end")));
        if (profile.functions().isEmpty())
            continue;
        out(QStringLiteral("  %1 %2 %3 %4 %5  %6\n")
                .arg(QStringLiteral("own time"), 12)
                .arg(QStringLiteral("own %"), 6)
                .arg(QStringLiteral("total"), 12)
                .arg(QStringLiteral("calls"), 10)
                .arg(QStringLiteral("longest"), 12)
                .arg(QStringLiteral("function")));
        const qint64 all = std::max<qint64>(1, profile.totalSelf());
        const int limit = rowLimit(parser);
        int row = 0;
        for (const QAStProfileReport::Function& f : profile.functions()) {
            if (row++ >= limit)
                break;
            out(QStringLiteral("  %1 %2 %3 %4 %5  %6\n")
                    .arg(microseconds(f.self), 12)
                    .arg(QString::number(100.0 * double(f.self) / double(all), 'f', 1), 6)
                    .arg(microseconds(f.total), 12)
                    .arg(f.calls, 10)
                    .arg(microseconds(f.longest), 12)
                    .arg(f.name));
        }
    }
    return faults == 0 ? Success : Failure;
}

int reportMemory(const QList<QAStNodeTest*>& tests, const QCommandLineParser& parser)
{
    int faults = 0;
    for (const QAStNodeTest* test : tests) {
        QAStMemoryReport memory;
        if (!readResult(test, QASTSplitSurvey::MemoryProfile, memory)) {
            ++faults;
            continue;
        }
        if (!recorded(test, memory, "memory profile", "memoryProfiling"))
            continue;
        const QList<QAStMemoryReport::Block> left = memory.blocksLeft();
        out(QStringLiteral("Memory profile of \"%1\"%2: %3 allocation(s), %4 free(s), %5 byte(s) allocated, "
                           "peak %6 byte(s); %7 block(s) not freed, %8 byte(s)\n")
                .arg(test->name(), memory.ended() ? QString() : QStringLiteral(" (the run did not end)"))
                .arg(memory.allocations())
                .arg(memory.frees())
                .arg(memory.bytesAllocated())
                .arg(memory.peakBytes())
                .arg(left.size())
                .arg(memory.bytesLeft()));
        if (memory.unknownFrees() > 0)
            out(QStringLiteral("  %1 free(s) of blocks not seen allocated\n").arg(memory.unknownFrees()));
        const int limit = rowLimit(parser);
        int row = 0;
        for (const QAStMemoryReport::Site& site : memory.sites()) {
            if (row++ >= limit)
                break;
            out(QStringLiteral("  not freed: %1 byte(s) in %2 block(s) allocated by %3\n")
                    .arg(site.bytes)
                    .arg(site.blocks)
                    .arg(site.function));
        }
    }
    return faults == 0 ? Success : Failure;
}

// The functions of a trace, the most time spent in their calls first.
void printTraceTotals(const QAStTraceReport& trace, const QCommandLineParser& parser)
{
    const std::vector<QAStTraceReport::FunctionTotals>& totals = trace.functionTotals();
    std::vector<qsizetype> order(totals.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](qsizetype a, qsizetype b) { return totals[size_t(a)].total > totals[size_t(b)].total; });
    const qsizetype shown = std::min<qsizetype>(qsizetype(order.size()), rowLimit(parser));
    if (shown == 0)
        return;
    out(QStringLiteral("  %1 %2 %3  function\n")
            .arg(QStringLiteral("calls"), 10)
            .arg(QStringLiteral("time"), 12)
            .arg(QStringLiteral("longest"), 12));
    for (qsizetype i = 0; i < shown; ++i) {
        const QAStTraceReport::FunctionTotals& t = totals[size_t(order[size_t(i)])];
        out(QStringLiteral("  %1 %2 %3  %4\n")
                .arg(t.calls, 10)
                .arg(microseconds(t.total), 12)
                .arg(microseconds(t.longest), 12)
                .arg(QString::fromUtf8(trace.functionNames().at(order[size_t(i)]))));
    }
}

int reportTrace(const QList<QAStNodeTest*>& tests, const QCommandLineParser& parser)
{
    if (parser.isSet(chromeOption) && tests.size() != 1) {
        err(QStringLiteral("report trace: --chrome takes the trace of one test node; %1 are named (name one NODE)")
                .arg(tests.size()));
        return Usage;
    }
    int faults = 0;
    for (const QAStNodeTest* test : tests) {
        QAStTraceReport trace;
        // Each call is kept only for the trace-event file.
        trace.setKeepCalls(parser.isSet(chromeOption));
        if (!readResult(test, QASTSplitSurvey::Trace, trace)) {
            ++faults;
            continue;
        }
        if (!recorded(test, trace, "runtime trace", "runtimeTracing"))
            continue;
        out(QStringLiteral("Trace of \"%1\": %2 call(s) of %3 function(s) on %4 thread(s), depth %5, "
                           "%6 not returned\n")
                .arg(test->name())
                .arg(trace.entries())
                .arg(trace.functionNames().size())
                .arg(trace.threads().size())
                .arg(trace.maximumDepth())
                .arg(trace.openCalls()));
        printTraceTotals(trace, parser);
        if (!parser.isSet(chromeOption))
            continue;
        QString error;
        const QString file = parser.value(chromeOption);
        makeDirectoryOf(file);
        if (!QAStChromeTrace::writeFile(file, trace, &error)) {
            err(error);
            ++faults;
            continue;
        }
        out(QStringLiteral("  written to %1\n").arg(file));
    }
    return faults == 0 ? Success : Failure;
}

// The reports, by the WHAT of "korvil report WHAT".
struct Report {
    const char* what;
    const char* summary;
    std::function<int(const QList<QAStNodeTest*>&, const QCommandLineParser&)> run;
};

const QList<Report>& reports()
{
    static const QList<Report> list = {
        {"coverage", "the lines, branches and functions each source file and function ran,\n"
                     "hit/total with percentages, then the totals; --lcov FILE writes an lcov\n"
                     "tracefile, --cobertura FILE a Cobertura XML report (of one test node)",
         reportCoverage},
        {"results", "each test node's tests and checks, the failures with file:line, the\n"
                    "totals; exit status 1 when a test node failed",
         reportResults},
        {"profile", "the time spent per function, the most own time first", reportProfile},
        {"memory", "the allocation counts, the peak, and the blocks not freed by the\n"
                   "function that allocated them",
         reportMemory},
        {"trace", "the calls traced, by function, the most time first; --chrome FILE writes\n"
                  "every call for a trace viewer",
         reportTrace},
    };
    return list;
}

} // namespace

const QCommandLineOption& junitOption()
{
    static const QCommandLineOption option(
        QStringLiteral("junit"), QStringLiteral("Write the results of the executed test nodes to FILE as JUnit XML."),
        QStringLiteral("FILE"));
    return option;
}

bool writeJUnit(const QList<QAStNodeTest*>& tests, const QString& file)
{
    std::vector<std::unique_ptr<QAStTestResults>> results;
    QList<QAStJUnitWriter::Suite> suites;
    for (const QAStNodeTest* test : tests) {
        auto read = std::make_unique<QAStTestResults>();
        if (test->runtimeResultFiles().isEmpty() || !readResults(test, *read))
            continue;
        suites.append({test->name(), read.get()});
        results.push_back(std::move(read));
    }
    QString error;
    makeDirectoryOf(file);
    if (!QAStJUnitWriter::writeFile(file, suites, &error)) {
        err(error);
        return false;
    }
    return true;
}

const char* reportDetails()
{
    static QByteArray details;
    if (!details.isEmpty())
        return details.constData();
    QString text = QStringLiteral("WHAT is one of:\n");
    for (const Report& r : reports())
        text += QStringLiteral("  %1  %2\n")
                    .arg(QLatin1String(r.what), -8)
                    .arg(QString::fromLatin1(r.summary).replace(u'\n', QStringLiteral("\n            ")));
    text += QStringLiteral("The files are those the last execution of each test node at NODE and below\n"
                           "left (its current configuration's); nothing is run.\n");
    details = text.toUtf8();
    return details.constData();
}

void reportOptions(QCommandLineParser& parser)
{
    parser.addOption(reportConfigOption);
    parser.addOption(chromeOption);
    parser.addOption(topOption);
    coverageReportOptions(parser);
}

int report(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const auto r = std::find_if(reports().cbegin(), reports().cend(),
                                [&](const Report& r) { return args.value(0) == QLatin1String(r.what); });
    if (r == reports().cend()) {
        QStringList whats;
        for (const Report& known : reports())
            whats.append(QLatin1String(known.what));
        err(QStringLiteral("report: unknown report \"%1\" (one of: %2)").arg(args.value(0), whats.join(u", ")));
        return Usage;
    }
    const std::unique_ptr<QAStProject> project = load(args.value(1));
    if (!project)
        return Failure;
    if (!useConfiguration(*project, parser.value(reportConfigOption)))
        return Usage;
    QAStNode* node = findNode(*project, args.value(2));
    if (!node) {
        err(QStringLiteral("%1: no node named \"%2\"").arg(args.value(1), args.value(2)));
        return Usage;
    }
    const QList<QAStNodeTest*> tests = testNodes(node);
    if (tests.isEmpty()) {
        err(QStringLiteral("%1: no test node at \"%2\" runs a program whose results could be reported")
                .arg(args.value(1), node->name()));
        return Failure;
    }
    return r->run(tests, parser);
}

}
