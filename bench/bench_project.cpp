#include "BigProject.h"
#include "Harness.h"

#include "QAStProject.h"

#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <memory>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

// The bare parse of both files, the least a load must do.
void parseBoth(const QString& project, const QString& information)
{
    for (const QString& path : {project, information}) {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        QDomDocument document;
        document.setContent(&file);
        Bench::keep(&document);
    }
}

void load(const QString& path)
{
    QAStProject project(QStringLiteral("big"), QPixmap());
    project.open(path);
    Bench::keep(&project);
}

// The memory a loaded project holds and the most its save adds, in KiB,
// measured in a forked child that hands its free heap back first, its
// peak resident size (VmHWM) reset through clear_refs before the save.
struct SaveMemory {
    long held = -1;
    long added = -1;
};

SaveMemory saveMemory(const QString& path)
{
    int channel[2];
    if (::pipe(channel) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(channel[0]);
        ::malloc_trim(0);
        SaveMemory figures;
        const long before = Bench::statusKiB("VmRSS:");
        QAStProject project(QStringLiteral("big"), QPixmap());
        project.open(path);
        ::malloc_trim(0);
        const long loaded = Bench::statusKiB("VmRSS:");
        figures.held = loaded - before;
        QFile clear(QStringLiteral("/proc/self/clear_refs"));
        if (clear.open(QIODevice::WriteOnly))
            clear.write("5");
        clear.close();
        const long base = Bench::statusKiB("VmRSS:");
        project.save();
        figures.added = Bench::statusKiB("VmHWM:") - base;
        ::write(channel[1], &figures, sizeof figures);
        ::_exit(0);
    }
    ::close(channel[1]);
    SaveMemory figures;
    if (::read(channel[0], &figures, sizeof figures) != sizeof figures)
        figures = {};
    ::close(channel[0]);
    ::waitpid(child, nullptr, 0);
    return figures;
}

// The two sides of the load, each run alone in a fresh process for its
// peak memory.
const Bench::StepRegistrar domStep("dom", [](const QStringList& files) {
    parseBoth(files.value(0), files.value(1));
});
const Bench::StepRegistrar loadStep("load", [](const QStringList& files) { load(files.value(0)); });

void printFigures(const GeneratedProject& project)
{
    QAStProject loaded(QStringLiteral("big"), QPixmap());
    loaded.open(project.path);
    const long projectKiB = readAll(project.path).size() / 1024;
    const long informationKiB = readAll(project.information).size() / 1024;
    const long dom = Bench::peakOfStepKiB(QStringLiteral("dom"), {project.path, project.information});
    const long items = Bench::peakOfStepKiB(QStringLiteral("load"), {project.path});
    std::printf("  %lld nodes, %lld files; project file %ld KiB, object information file %ld KiB\n"
                "  peak memory added: load %ld KiB, DOM alone %ld KiB (%.2fx, goal 1.3x)\n",
                static_cast<long long>(loaded.childrenOfClass("QAStNode", true).size()),
                static_cast<long long>(loaded.files().size()), projectKiB, informationKiB, items,
                dom, dom > 0 ? double(items) / double(dom) : 0.0);
    std::fflush(stdout);
}

}

SDK110_BENCHMARK(projectLoad, "project: load 10,000 nodes and 50,000 files against the DOM parse (goal 1.3x, memory 1.3x)")
{
    const std::shared_ptr<GeneratedProject> project = bigProject();
    printFigures(*project);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStProject::open, batch mode (project and object information files)");
    m.baseline = QStringLiteral("QDomDocument::setContent of the same two files");
    m.runSubject = [project] { load(project->path); };
    m.runBaseline = [project] { parseBoth(project->path, project->information); };
    m.target = 1.3;
    m.repetitions = 5;
    return m;
}

SDK110_BENCHMARK(projectSave, "project: save 10,000 nodes and 50,000 files against their load (goal 1x; peak memory 1.1x the loaded project)")
{
    const std::shared_ptr<GeneratedProject> project = bigProject();
    const SaveMemory memory = saveMemory(project->path);
    std::printf("  the loaded project holds %ld KiB; its save adds at most %ld KiB: peak %.2fx"
                " the loaded project (goal 1.1x)\n",
                memory.held, memory.added,
                memory.held > 0 ? double(memory.held + memory.added) / double(memory.held) : 0.0);
    std::fflush(stdout);
    auto loaded = std::make_shared<QAStProject>(QStringLiteral("big"), QPixmap());
    loaded->open(project->path);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStProject::save (project and object information files)");
    m.baseline = QStringLiteral("QAStProject::open of the same project");
    m.runSubject = [loaded] { loaded->save(); };
    m.runBaseline = [project] { load(project->path); };
    m.target = 1.0;
    m.repetitions = 5;
    return m;
}

namespace {

// A copy of the project file alone, in a directory of its own: its load
// finds no object information file and rebuilds the file tree from the
// nodes' sources.
struct WithoutInformation {
    QTemporaryDir dir;
    QString path;
};

std::shared_ptr<WithoutInformation> withoutInformation(const GeneratedProject& project)
{
    auto copy = std::make_shared<WithoutInformation>();
    copy->path = copy->dir.filePath(QStringLiteral("big.rtp"));
    QFile::copy(project.path, copy->path);
    return copy;
}

void loadRebuilding(const WithoutInformation& copy)
{
    QFile::remove(copy.dir.filePath(QStringLiteral("big.inf")));
    load(copy.path);
}

}

SDK110_BENCHMARK(projectRebuild, "project: load rebuilding the file tree, 10,000 against 1,000 nodes (goal: linear)")
{
    const auto big = withoutInformation(*bigProject());
    const auto small = withoutInformation(*generatedProject(36));

    Bench::Measure m;
    m.subject = QStringLiteral("QAStProject::open of 9,996 nodes without the object information file");
    m.baseline = QStringLiteral("the same of 1,008 nodes");
    m.runSubject = [big] { loadRebuilding(*big); };
    m.runBaseline = [small] { loadRebuilding(*small); };
    m.target = 11; // linear: ten times the nodes, ten times the time
    m.repetitions = 5;
    return m;
}
