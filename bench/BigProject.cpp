#include "BigProject.h"

#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
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

#include <cstdio>
#include <map>

namespace {

constexpr int BigGroups = 357;
constexpr int SourcesPerApplication = 7;
constexpr int TopFolders = 10;
constexpr int SubFolders = 10;
constexpr int FilesPerFolder = 500;

// Every node owns both configurations, empty (inheriting everything), as
// nodes added in the studio do.
void configure(QAStNode* node)
{
    node->addConfiguration(QStringLiteral("Debug"));
    node->addConfiguration(QStringLiteral("Release"));
    node->setCurrentConfigurationName(QStringLiteral("Debug"));
}

void addSource(QAStData* parent, const QString& file)
{
    auto* source = new QAStNodeSource(file.section(QLatin1Char('/'), -1), QPixmap(), parent, parent->last());
    source->setFileKey(file);
    configure(source);
}

void addGroup(QAStProject& project, int g)
{
    const QString n = QString::number(g);
    auto* group = new QAStNodeGroup(QStringLiteral("Group ") + n, QPixmap(), &project, project.last());
    configure(group);
    for (int a = 0; a < 3; ++a) {
        const QString app = QStringLiteral("app%1_%2").arg(n).arg(a);
        auto* application = new QAStNodeApplication(app, QPixmap(), group, group->last());
        configure(application);
        application->configuration(QStringLiteral("Debug"))
            ->setProperty(QStringLiteral("ldflags"), QStringLiteral("-g -L/opt/") + app);
        application->configuration(QStringLiteral("Release"))
            ->setProperty(QStringLiteral("ldflags"), QStringLiteral("-s"));
        for (int s = 0; s < SourcesPerApplication; ++s)
            addSource(application, QStringLiteral("src/%1/file%2.c").arg(app).arg(s));
    }
    auto* unit = new QAStNodeUnitTesting(QStringLiteral("Unit ") + n, QPixmap(), group, group->last());
    configure(unit);
    auto* script = new QAStNodeUnitTestingScript(QStringLiteral("test") + n, QPixmap(), unit, nullptr);
    script->setFileKey(QStringLiteral("tests/test%1.ptu").arg(n));
    configure(script);
    addSource(unit, QStringLiteral("src/app%1_0/file0.c").arg(n));
}

// Two tags per file, as its analysis would leave them: a class and its
// method.
void addTags(QAStFile* file, int f)
{
    const QString name = QStringLiteral("Unit%1").arg(f);
    auto* c = new QAStAClassTag(name, file->filePath(), 10, file);
    c->setQualifier(QAStATag::Public);
    auto* method = new QAStAMethodTag(QStringLiteral("run"), file->filePath(), 12, c);
    method->setCompleteName(name + QStringLiteral("::run"));
    method->setQualifier(QAStATag::Public | QAStATag::Virtual);
    method->setSignature(QStringLiteral("(int count, const char* label)"));
}

void addFiles(QAStProject& project, int filesPerFolder)
{
    QAStRootFolder* root = project.rootFolder();
    for (int t = 0; t < TopFolders; ++t) {
        auto* top = new QAStFolder(QStringLiteral("part%1").arg(t), QPixmap(), root, root->last());
        for (int s = 0; s < SubFolders; ++s) {
            const QString dir = QStringLiteral("part%1/module%2").arg(t).arg(s);
            auto* folder = new QAStFolder(QStringLiteral("module%1").arg(s), QPixmap(), top, top->last());
            folder->setFilters(QStringLiteral("*.c;*.h"));
            for (int f = 0; f < filesPerFolder; ++f) {
                const QString file = project.directory() + QStringLiteral("/%1/unit%2.c").arg(dir).arg(f);
                addTags(new QAStFile(file, folder, folder->last()), f);
            }
        }
    }
}

QString generateProject(const QTemporaryDir& dir, int groups)
{
    const QString path = dir.filePath(QStringLiteral("big.rtp"));
    QAStProject project(QStringLiteral("big"), QPixmap());
    project.create(path);
    for (const char* name : {"Debug", "Release"}) {
        QAStConfiguration* c = project.addConfiguration(QLatin1String(name));
        c->setProperty(QStringLiteral("targetPath"), QStringLiteral("${ZELTAHOME}/targets/gcc-c"));
        c->setProperty(QStringLiteral("cflags"), QStringLiteral("-O2 -Wall"));
        c->setProperty(QStringLiteral("ge_incdir"), QStringList{QStringLiteral("include"), QStringLiteral("/usr/include")});
    }
    project.setCurrentConfigurationName(QStringLiteral("Debug"));
    for (int g = 0; g < groups; ++g)
        addGroup(project, g);
    addFiles(project, FilesPerFolder * groups / BigGroups);
    project.save();
    return path;
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
    project->path = generateProject(project->dir, groups);
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
