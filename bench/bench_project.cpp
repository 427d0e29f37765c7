#include "Harness.h"

#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeSource.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"

#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>
#include <functional>
#include <memory>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Each group: three applications of seven sources each, and a unit-testing
// node with its script and the source under test: 28 nodes.
constexpr int Groups = 357;
constexpr int SourcesPerApplication = 7;
// 10 folders of 10 folders of 500 files.
constexpr int TopFolders = 10;
constexpr int SubFolders = 10;
constexpr int FilesPerFolder = 500;

void addSource(QAStData* parent, const QString& file)
{
    auto* source = new QAStNodeSource(file.section(QLatin1Char('/'), -1), QPixmap(), parent, parent->last());
    source->setFileKey(file);
    source->setCurrentConfigurationName(QStringLiteral("Debug"));
}

void addGroup(QAStProject& project, int g)
{
    const QString n = QString::number(g);
    auto* group = new QAStNodeGroup(QStringLiteral("Group ") + n, QPixmap(), &project, project.last());
    for (int a = 0; a < 3; ++a) {
        const QString app = QStringLiteral("app%1_%2").arg(n).arg(a);
        auto* application = new QAStNodeApplication(app, QPixmap(), group, group->last());
        application->addConfiguration(QStringLiteral("Debug"))
            ->setProperty(QStringLiteral("ldflags"), QStringLiteral("-g -L/opt/") + app);
        application->addConfiguration(QStringLiteral("Release"))
            ->setProperty(QStringLiteral("ldflags"), QStringLiteral("-s"));
        application->setCurrentConfigurationName(QStringLiteral("Debug"));
        for (int s = 0; s < SourcesPerApplication; ++s)
            addSource(application, QStringLiteral("src/%1/file%2.c").arg(app).arg(s));
    }
    auto* unit = new QAStNodeUnitTesting(QStringLiteral("Unit ") + n, QPixmap(), group, group->last());
    auto* script = new QAStNodeUnitTestingScript(QStringLiteral("test") + n, QPixmap(), unit, nullptr);
    script->setFileKey(QStringLiteral("tests/test%1.ptu").arg(n));
    addSource(unit, QStringLiteral("src/app%1_0/file0.c").arg(n));
}

void addFiles(QAStProject& project)
{
    QAStRootFolder* root = project.rootFolder();
    for (int t = 0; t < TopFolders; ++t) {
        auto* top = new QAStFolder(QStringLiteral("part%1").arg(t), QPixmap(), root, root->last());
        for (int s = 0; s < SubFolders; ++s) {
            const QString dir = QStringLiteral("part%1/module%2").arg(t).arg(s);
            auto* folder = new QAStFolder(QStringLiteral("module%1").arg(s), QPixmap(), top, top->last());
            folder->setFilters(QStringLiteral("*.c;*.h"));
            for (int f = 0; f < FilesPerFolder; ++f) {
                const QString file = project.directory() + QStringLiteral("/%1/unit%2.c").arg(dir).arg(f);
                new QAStFile(file, folder, folder->last());
            }
        }
    }
}

// Writes the generated project into dir; returns its path.
QString generateProject(const QTemporaryDir& dir)
{
    const QString path = dir.filePath(QStringLiteral("big.rtp"));
    QAStProject project(QStringLiteral("big"), QPixmap());
    project.create(path);
    for (const char* name : {"Debug", "Release"}) {
        QAStConfiguration* c = project.addConfiguration(QLatin1String(name));
        c->setProperty(QStringLiteral("cflags"), QStringLiteral("-O2 -Wall"));
        c->setProperty(QStringLiteral("ge_incdir"), QStringList{QStringLiteral("include"), QStringLiteral("/usr/include")});
    }
    project.setCurrentConfigurationName(QStringLiteral("Debug"));
    for (int g = 0; g < Groups; ++g)
        addGroup(project, g);
    addFiles(project);
    project.save();
    return path;
}

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

long statusKiB(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').first().toLong();
    }
    return -1;
}

// The peak memory that work adds to the process, in KiB: the work runs in
// a forked child, which first hands the heap it does not use back to the
// system (so the work cannot hide in memory freed before), and whose peak
// resident size (VmHWM, reset to the current size through clear_refs) is
// then compared with its size before the work.
long peakGrowthKiB(const std::function<void()>& work)
{
    int channel[2];
    if (::pipe(channel) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(channel[0]);
        ::malloc_trim(0);
        QFile clear(QStringLiteral("/proc/self/clear_refs"));
        if (clear.open(QIODevice::WriteOnly))
            clear.write("5");
        clear.close();
        const long before = statusKiB("VmRSS:");
        work();
        const long growth = statusKiB("VmHWM:") - before;
        ::write(channel[1], &growth, sizeof growth);
        ::_exit(0);
    }
    ::close(channel[1]);
    long growth = -1;
    if (::read(channel[0], &growth, sizeof growth) != sizeof growth)
        growth = -1;
    ::close(channel[0]);
    ::waitpid(child, nullptr, 0);
    return growth;
}

struct GeneratedProject {
    QTemporaryDir dir;
    QString path;
    QString information;
};

std::shared_ptr<GeneratedProject> generated()
{
    static std::shared_ptr<GeneratedProject> shared;
    if (shared)
        return shared;
    // The settings descriptor of the source tree, unless one is given.
    if (qEnvironmentVariableIsEmpty("ZELTAHOME"))
        qputenv("ZELTAHOME", SDK110_INSTALL_TREE);
    QAStProject::setModeBatch(true);
    auto project = std::make_shared<GeneratedProject>();
    project->path = generateProject(project->dir);
    project->information = project->dir.filePath(QStringLiteral("big.inf"));
    shared = project;
    return project;
}

void printFigures(const GeneratedProject& project)
{
    QAStProject loaded(QStringLiteral("big"), QPixmap());
    loaded.open(project.path);
    const long projectKiB = readAll(project.path).size() / 1024;
    const long informationKiB = readAll(project.information).size() / 1024;
    const long dom = peakGrowthKiB([&] { parseBoth(project.path, project.information); });
    const long items = peakGrowthKiB([&] { load(project.path); });
    std::printf("  %lld nodes, %lld files; project file %ld KiB, object information file %ld KiB\n"
                "  peak memory added: load %ld KiB, DOM alone %ld KiB (%.2fx)\n",
                static_cast<long long>(loaded.childrenOfClass("QAStNode", true).size()),
                static_cast<long long>(loaded.files().size()), projectKiB, informationKiB, items,
                dom, dom > 0 ? double(items) / double(dom) : 0.0);
    std::fflush(stdout);
}

}

SDK110_BENCHMARK(projectLoad, "project: load 10,000 nodes and 50,000 files")
{
    const std::shared_ptr<GeneratedProject> project = generated();
    printFigures(*project);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStProject::open, batch mode (project and object information files)");
    m.baseline = QStringLiteral("QDomDocument::setContent of the same two files");
    m.runSubject = [project] { load(project->path); };
    m.runBaseline = [project] { parseBoth(project->path, project->information); };
    m.target = 1.5;
    m.repetitions = 5;
    return m;
}

SDK110_BENCHMARK(projectSave, "project: save 10,000 nodes and 50,000 files")
{
    const std::shared_ptr<GeneratedProject> project = generated();
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
