// The coverage report: the coverage file of each test node read and
// printed per file and function, with the project's totals; optionally
// written as an lcov tracefile and a Cobertura report.
#include "CommandLineStudio.h"
#include "Commands.h"

#include "QAStCoverageReport.h"
#include "QAStNodeTest.h"
#include "QAStProject.h"
#include "QASTSplitSurvey.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <functional>
#include <memory>

namespace Commands {
namespace {

const QCommandLineOption lcovOption(QStringLiteral("lcov"), QStringLiteral("coverage: write an lcov tracefile to FILE."),
                                    QStringLiteral("FILE"));
const QCommandLineOption coberturaOption(QStringLiteral("cobertura"),
                                         QStringLiteral("coverage: write a Cobertura XML report to FILE."),
                                         QStringLiteral("FILE"));

struct NodeCoverage {
    QString node;
    QString file;
    QAStCoverageReport report;
};

// "hit/total  pct %", aligned.
QString ratio(qint64 hit, qint64 total)
{
    const QString part = total > 0 ? QStringLiteral("%1/%2").arg(hit).arg(total) : QStringLiteral("-");
    const QString pct = total > 0 ? QAStCoverageReport::percent(hit, total) + QStringLiteral(" %") : QString();
    return part.rightJustified(13) + pct.rightJustified(9);
}

QString row(const QString& name, const QAStCoverageReport::Counts& c, int width)
{
    return name.leftJustified(width) + ratio(c.linesHit, c.lines) + ratio(c.branchesHit, c.branches) +
           ratio(c.functionsHit, c.functions) + u'\n';
}

void print(const NodeCoverage& coverage, const QDir& base)
{
    const QAStCoverageReport& report = coverage.report;
    out(QStringLiteral("Coverage of \"%1\": %2%3\n")
            .arg(coverage.node, QDir::cleanPath(base.relativeFilePath(coverage.file)),
                 report.isComplete() ? QString() : QStringLiteral(" (incomplete)")));
    if (!report.hasLineCoverage()) {
        if (report.runtimeFunctions().empty()) {
            out(QStringLiteral("  no coverage records\n"));
            return;
        }
        out(QStringLiteral("  functions reached (no line coverage: blocks and conditions are not covered)\n"));
        for (const QAStCoverageReport::RuntimeFunction& f : report.runtimeFunctions())
            out(QStringLiteral("    %1  %2 call(s)\n").arg(QString::fromUtf8(f.name)).arg(f.calls));
        out(QStringLiteral("  Total: %1 function(s) reached\n").arg(report.runtimeFunctions().size()));
        return;
    }
    QStringList names;
    int width = 24;
    for (const QAStCoverageReport::File& file : report.files()) {
        names << QDir::cleanPath(base.relativeFilePath(file.path));
        width = std::max(width, int(names.last().size()) + 4);
        for (const QAStCoverageReport::Function& f : file.functions)
            width = std::max(width, int(f.name.size()) + 6);
    }
    width = std::min(width, 60);
    out(QString().leftJustified(width) + QStringLiteral("Lines").rightJustified(22) +
        QStringLiteral("Branches").rightJustified(22) + QStringLiteral("Functions").rightJustified(22) + u'\n');
    for (size_t i = 0; i < report.files().size(); ++i) {
        const QAStCoverageReport::File& file = report.files()[i];
        out(row(QStringLiteral("  ") + names.at(int(i)), file.counts, width));
        for (const QAStCoverageReport::Function& f : file.functions)
            out(row(QStringLiteral("    ") + QString::fromUtf8(f.name), f.counts, width));
    }
    out(row(QStringLiteral("  Total"), report.totals(), width));
}

template <typename Write>
bool writeFile(const QString& path, Write write)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !write(&file) || !file.commit()) {
        err(QStringLiteral("%1: cannot write: %2").arg(path, file.errorString()));
        return false;
    }
    return true;
}

} // namespace

void coverageReportOptions(QCommandLineParser& parser)
{
    parser.addOption(lcovOption);
    parser.addOption(coberturaOption);
}

int reportCoverage(const QList<QAStNodeTest*>& tests, const QCommandLineParser& parser)
{
    const QString projectDirectory = tests.first()->project()->directory();
    std::vector<std::unique_ptr<NodeCoverage>> reports;
    bool failed = false;
    for (QAStNodeTest* test : tests) {
        const QString file = test->runtimeResultFiles().value(QASTSplitSurvey::Coverage);
        // A node whose run measured no coverage leaves its file empty.
        if (file.isEmpty() || QFileInfo(file).size() == 0)
            continue;
        auto coverage = std::make_unique<NodeCoverage>();
        coverage->node = test->name();
        coverage->file = file;
        if (!coverage->report.read(file)) {
            err(coverage->report.error());
            failed = true;
            continue;
        }
        for (const QString& fault : coverage->report.faults())
            err(fault);
        if (coverage->report.skippedLines() > 0)
            err(QStringLiteral("%1: %2 line(s) skipped").arg(file).arg(coverage->report.skippedLines()));
        reports.push_back(std::move(coverage));
    }
    if (reports.empty()) {
        if (!failed)
            err(QStringLiteral("no coverage file: execute a test node whose configuration measures "
                               "code coverage first"));
        return Failure;
    }
    const QDir base(projectDirectory);
    for (const auto& coverage : reports)
        print(*coverage, base);
    if (parser.isSet(lcovOption) &&
        !writeFile(parser.value(lcovOption), [&](QIODevice* device) {
            return std::all_of(reports.cbegin(), reports.cend(),
                               [&](const auto& c) { return c->report.writeLcov(device, c->node); });
        }))
        failed = true;
    if (parser.isSet(coberturaOption)) {
        if (reports.size() > 1) {
            err(QStringLiteral("--cobertura writes the coverage of one test node: name one (%1 have coverage)")
                    .arg(reports.size()));
            return Usage;
        }
        if (!writeFile(parser.value(coberturaOption), [&](QIODevice* device) {
                return reports.front()->report.writeCobertura(device, projectDirectory);
            }))
            failed = true;
    }
    return failed ? Failure : Success;
}

}
