#include "BigProject.h"

#include "QAStConfiguration.h"
#include "QAStProject.h"

#include <QProcess>

#include <cstdio>
#include <cstdlib>
#include <map>

namespace {

constexpr int BigGroups = 357;
constexpr int FilesPerFolder = 500;

// The project is written by bench/generate_project.pl straight from the
// file formats: the load is not measured on what the library's own save
// wrote.
void generateProject(const QTemporaryDir& dir, int groups)
{
    const QString script = QStringLiteral(SDK110_BENCH_SOURCES "/generate_project.pl");
    const QString dtd = qEnvironmentVariable("ZELTAHOME") + QStringLiteral("/lib/project.dtd");
    QProcess perl;
    perl.setProcessChannelMode(QProcess::ForwardedChannels);
    perl.start(QStringLiteral("perl"), {script, dir.path(), QString::number(groups),
                                        QString::number(FilesPerFolder * groups / BigGroups), dtd});
    if (!perl.waitForFinished(-1) || perl.exitStatus() != QProcess::NormalExit || perl.exitCode() != 0) {
        std::fprintf(stderr, "%s failed: the benchmarks have no project to load\n", qPrintable(script));
        std::exit(1);
    }
}

}

std::shared_ptr<GeneratedProject> generatedProject(int groups)
{
    static std::map<int, std::shared_ptr<GeneratedProject>> made;
    if (const auto known = made.find(groups); known != made.end())
        return known->second;
    // The installation of the source tree, unless one is given.
    if (qEnvironmentVariableIsEmpty("ZELTAHOME"))
        qputenv("ZELTAHOME", SDK110_INSTALL_TREE);
    QAStProject::setModeBatch(true);
    QAStConfiguration::initialize(nullptr, nullptr);
    auto project = std::make_shared<GeneratedProject>();
    generateProject(project->dir, groups);
    project->path = project->dir.filePath(QStringLiteral("big.rtp"));
    project->information = project->dir.filePath(QStringLiteral("big.inf"));
    // Kept for a profiler's run of one step (korvil info big.rtp, ...).
    if (qEnvironmentVariableIsSet("SDK110_BENCH_KEEP")) {
        project->dir.setAutoRemove(false);
        std::fprintf(stderr, "the generated project is kept in %s\n", qPrintable(project->dir.path()));
    }
    made[groups] = project;
    return project;
}

std::shared_ptr<GeneratedProject> bigProject()
{
    return generatedProject(BigGroups);
}
