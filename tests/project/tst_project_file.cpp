#include "QAPropertyGroup.h"
#include "QAPropertyMapGroup.h"
#include "QAStConfiguration.h"
#include "QAStDataUndoActionManager.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeJavaTesting.h"
#include "QAStNodeJavaTestingScript.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeLink.h"
#include "QAStNodeObjectTesting.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeSystemTestingScript.h"
#include "QAStNodeTestScript.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStNodeUser.h"
#include "QAStNodeVirtualTester.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

// Every item below root, depth first, as "Class:name" lines indented by
// depth.
QStringList outline(const QAStData* root, int depth = 0)
{
    QStringList lines;
    for (const QAStData* c = root->child(); c; c = c->next()) {
        lines << QString(depth * 2, QLatin1Char(' ')) + QLatin1String(c->metaObject()->className())
                     + QLatin1Char(':') + c->name();
        if (!qobject_cast<const QAStSubProject*>(c))
            lines << outline(c, depth + 1);
    }
    return lines;
}

// One node of every kind, with fields of their own, and two
// configurations: the tree a project file must keep.
void buildEveryKind(QAStProject& p)
{
    p.addConfiguration(QStringLiteral("Debug"))->setProperty(QStringLiteral("cflags"), "-g -O0");
    p.addConfiguration(QStringLiteral("Release"))->setProperty(QStringLiteral("cflags"), "-O2");
    p.setCurrentConfigurationName(QStringLiteral("Release"));
    p.setSortMethod(2);

    auto* group = new QAStNodeGroup(QStringLiteral("Build, all"), QPixmap(), &p, p.last());
    auto* app = new QAStNodeApplication(QStringLiteral("calc"), QPixmap(), group, nullptr);
    app->addConfiguration(QStringLiteral("Debug"))->setProperty(QStringLiteral("ldflags"), "-g");
    app->setPerlScriptBeforeChild(QStringLiteral("print \"<start>\\n\";"));
    auto* main = new QAStNodeSource(QStringLiteral("main.c"), QPixmap(), app, nullptr);
    main->setFileKey(QStringLiteral("src/main.c"));
    main->setIntegratedSource(true);
    auto* lib = new QAStNodeLibrary(QStringLiteral("libcalc"), QPixmap(), app, main);
    auto* calc = new QAStNodeSource(QStringLiteral("calc.c"), QPixmap(), lib, nullptr);
    calc->setFileKey(QStringLiteral("src/calc.c"));
    auto* smoke = new QAStNodeTestScript(QStringLiteral("smoke"), QPixmap(), app, lib);
    smoke->setFileKey(QStringLiteral("tests/smoke.ptu"));
    smoke->setTestCases({QStringLiteral("add"), QStringLiteral("div")});
    smoke->setSelectedTestCases({QStringLiteral("div")});
    auto* link = new QAStNodeLink(QStringLiteral("to calc"), QPixmap(), group, app);
    link->setLinkedNode(app);

    auto* unit = new QAStNodeUnitTesting(QStringLiteral("Unit"), QPixmap(), &p, group);
    unit->setState(QAStNode::UnSelectedReported);
    auto* ptu = new QAStNodeUnitTestingScript(QStringLiteral("calc.ptu"), QPixmap(), unit, nullptr);
    ptu->setFileKey(QStringLiteral("tests/calc.ptu"));
    ptu->setFamilies({QStringLiteral("nominal"), QStringLiteral("robustness")});

    auto* object = new QAStNodeObjectTesting(QStringLiteral("Object"), QPixmap(), &p, unit);
    new QAStNodeTestScript(QStringLiteral("object.otc"), QPixmap(), object, nullptr);

    auto* system = new QAStNodeSystemTesting(QStringLiteral("System"), QPixmap(), &p, object);
    QAStNodeSystemTesting::Deployment deployment;
    deployment.vtNodeName = QStringLiteral("Tester");
    deployment.instance = QStringLiteral("A");
    deployment.hostIp = QStringLiteral("127.0.0.1");
    system->setDeployments({deployment});
    system->setRendezvous({{QStringLiteral("start"), 2}});
    system->setMachines({QStringLiteral("localhost")});
    auto* pts = new QAStNodeSystemTestingScript(QStringLiteral("load.pts"), QPixmap(), system, nullptr);
    pts->setFileKey(QStringLiteral("tests/load.pts"));
    auto* tester = new QAStNodeVirtualTester(QStringLiteral("Tester"), QPixmap(), pts, nullptr);
    new QAStNodeSource(QStringLiteral("stub.c"), QPixmap(), tester, nullptr);

    auto* java = new QAStNodeJavaTesting(QStringLiteral("Java"), QPixmap(), &p, system);
    new QAStNodeJavaTestingScript(QStringLiteral("CalcTest.java"), QPixmap(), java, nullptr);

    auto* user = new QAStNodeUser(QStringLiteral("clean <all> & more"), QPixmap(), &p, java);
    user->setRedirectStdout(true);
    new QAStNodeUser(QStringLiteral("inner"), QPixmap(), user, nullptr);
}

QStringList configurationValues(const QAStNode* node)
{
    QStringList values;
    for (const QAStConfiguration* c : node->configurationList())
        values << c->name() + QLatin1Char('=') + c->localProperty(QStringLiteral("cflags")).toString();
    return values;
}

// The settings of the descriptor, depth first.
void collectSettings(const QAPropertyGroup* group, QList<QAProperty*>& found)
{
    for (QAProperty* child : group->children()) {
        if (child->isGroup())
            collectSettings(static_cast<const QAPropertyGroup*>(child), found);
        else
            found << child;
    }
}

// Checks written XML against the installation's DTD with xmllint.
void validate(const QString& file)
{
    QProcess xmllint;
    xmllint.start(QStringLiteral("xmllint"), {QStringLiteral("--noout"), QStringLiteral("--valid"), file});
    QVERIFY(xmllint.waitForFinished());
    QVERIFY2(xmllint.exitCode() == 0, xmllint.readAllStandardError().constData());
}

}

class TestProjectFile : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void writtenLayout();
    void everyKindReadsBack();
    void loadSaveIsStable();
    void failedSaveKeepsTheOldFile_data();
    void failedSaveKeepsTheOldFile();
    void readOnlyProjectIsNotWritten();
    void saveAsAsksTheHost();
    void templates();

    void subProjects();
    void unloadedAndSelfIncludingSubProjects();
    void addProjectsThroughTheHost();

    void olderProjectFile();
    void olderWorkspaceFile();
    void faultsOfOlderFiles();

    void dtdValidatesWrittenFiles();
    void dtdDeclaresEverySetting();

private:
    QString copyFixture(const QString& name);

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestProjectFile::initTestCase()
{
    QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
}

void TestProjectFile::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QAStProject::setModeBatch(false);
}

void TestProjectFile::cleanup()
{
    QAStProject::setModeBatch(false);
    m_studio.reset();
}

QString TestProjectFile::copyFixture(const QString& name)
{
    const QString target = m_dir->filePath(QFileInfo(name).fileName());
    QFile::copy(TestPaths::data(QStringLiteral("projects/") + name), target);
    QFile(target).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return target;
}

void TestProjectFile::writtenLayout()
{
    QAStProject p(QStringLiteral("calc"), QPixmap());
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    QVERIFY(p.create(file));
    p.addConfiguration(QStringLiteral("Debug"));
    new QAStNodeGroup(QStringLiteral("g"), QPixmap(), &p, nullptr);
    QVERIFY(p.save());

    const QStringList lines = QString::fromUtf8(readFile(file)).split(QLatin1Char('\n'));
    QCOMPARE(lines.value(0), QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>"));
    QCOMPARE(lines.value(1), QStringLiteral("<!DOCTYPE project SYSTEM \"%1/lib/project.dtd\">")
                                 .arg(QAStData::installDir()));
    QCOMPARE(lines.value(2), QStringLiteral("<project>"));
    QCOMPARE(lines.value(3), QStringLiteral("  <group>"));
    QCOMPARE(lines.value(4), QStringLiteral("    <node>"));
    const int tail = lines.indexOf(QStringLiteral("  </group>"));
    QCOMPARE(lines.mid(tail), (QStringList{
        QStringLiteral("  </group>"),
        QStringLiteral("  <object_file>calc.inf</object_file>"),
        QStringLiteral("  <sort_method>0</sort_method>"),
        QStringLiteral("  <root_configuration_list>"),
        QStringLiteral("    <configuration>"),
        QStringLiteral("      <name>Debug</name>"),
        QStringLiteral("    </configuration>"),
        QStringLiteral("  </root_configuration_list>"),
        QStringLiteral("  <version_file>1</version_file>"),
        QStringLiteral("</project>"),
        QString()}));
    // The project's own node block keeps its configuration list empty.
    const int list = lines.indexOf(QStringLiteral("      <configuration_list>"));
    QVERIFY(list > 0 && list < tail);
    QCOMPARE(lines.value(list + 1), QStringLiteral("      </configuration_list>"));
    QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("calc.inf"))));
}

void TestProjectFile::everyKindReadsBack()
{
    const QString file = m_dir->filePath(QStringLiteral("every.rtp"));
    QAStProject written(QStringLiteral("every"), QPixmap());
    QVERIFY(written.create(file));
    buildEveryKind(written);
    QVERIFY(written.save());

    QAStProject read(QStringLiteral("other"), QPixmap());
    QSignalSpy loaded(&read, &QAStProject::loaded);
    QVERIFY(read.open(file));
    QCOMPARE(QAStData::loadReport(), QString());
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(read.name(), QStringLiteral("every"));
    QCOMPARE(outline(&read), outline(&written));
    QCOMPARE(read.configurations(), (QStringList{QStringLiteral("Debug"), QStringLiteral("Release")}));
    QCOMPARE(configurationValues(&read), configurationValues(&written));
    QVERIFY(read.initialConfiguration(QStringLiteral("Release")));
    QCOMPARE(read.currentConfigurationName(), QStringLiteral("Release"));
    QCOMPARE(read.sortMethod(), 2);
    const auto* app = qobject_cast<QAStNode*>(read.findNode(QStringLiteral("calc")));
    QVERIFY(app);
    QCOMPARE(app->configuration(QStringLiteral("Debug"))->localProperty(QStringLiteral("ldflags")),
             QVariant(QStringLiteral("-g")));

    QDomDocument document;
    QVERIFY(document.setContent(readFile(file)));
    QCOMPARE(document.documentElement().firstChildElement(QStringLiteral("version_file")).text(),
             QStringLiteral("1"));
}

void TestProjectFile::loadSaveIsStable()
{
    const QString file = m_dir->filePath(QStringLiteral("stable.rtp"));
    {
        QAStProject p(QStringLiteral("stable"), QPixmap());
        QVERIFY(p.create(file));
        buildEveryKind(p);
        p.setPluginList({QStringLiteral("coverage")});
        p.addFiles({m_dir->filePath(QStringLiteral("src/main.c")), m_dir->filePath(QStringLiteral("src/calc.c"))});
        QVERIFY(p.save());
    }
    QByteArray project;
    QByteArray information;
    for (int round = 0; round < 2; ++round) {
        QAStProject p(QStringLiteral("x"), QPixmap());
        QVERIFY(p.open(file));
        QVERIFY(p.save());
        if (round == 0) {
            project = readFile(file);
            information = readFile(m_dir->filePath(QStringLiteral("stable.inf")));
            QVERIFY(project.contains("<plugin_list>coverage</plugin_list>"));
        }
    }
    QCOMPARE(readFile(file), project);
    QCOMPARE(readFile(m_dir->filePath(QStringLiteral("stable.inf"))), information);
}

void TestProjectFile::failedSaveKeepsTheOldFile_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("batch");
    for (const char* fault : {"read-only directory", "file size limit"}) {
        QTest::addRow("%s, box", fault) << QString::fromLatin1(fault) << false;
        QTest::addRow("%s, batch", fault) << QString::fromLatin1(fault) << true;
    }
    QTest::addRow("parent is a file") << QStringLiteral("parent is a file") << false;
}

void TestProjectFile::failedSaveKeepsTheOldFile()
{
    QFETCH(QString, fault);
    QFETCH(bool, batch);
    const bool root = ::geteuid() == 0;
    if (root && fault == QLatin1String("read-only directory"))
        QSKIP("root writes into read-only directories");

    const QString folder = m_dir->filePath(QStringLiteral("project"));
    QVERIFY(QDir().mkpath(folder));
    QString file = folder + QStringLiteral("/calc.rtp");
    QAStProject p(QStringLiteral("calc"), QPixmap());
    QVERIFY(p.create(file));
    buildEveryKind(p);
    QVERIFY(p.save());
    const QByteArray before = readFile(file);
    new QAStNodeGroup(QStringLiteral("added since"), QPixmap(), &p, p.last());
    QAStProject::setModeBatch(batch);

    bool saved = true;
    if (fault == QLatin1String("read-only directory")) {
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        saved = p.save();
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    } else if (fault == QLatin1String("file size limit")) {
        // Every write beyond a few bytes fails, as on a full disk.
        struct rlimit former {};
        ::getrlimit(RLIMIT_FSIZE, &former);
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit limit = former;
        limit.rlim_cur = 64;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        saved = p.save();
        ::setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, previousHandler);
    } else {
        writeFile(m_dir->filePath(QStringLiteral("plain")), "not a directory");
        file = m_dir->filePath(QStringLiteral("plain/calc.rtp"));
        m_studio->answerPath(file);
        saved = p.saveAs();
        QCOMPARE(p.path(), folder + QStringLiteral("/calc.rtp"));
    }

    QVERIFY(!saved);
    QCOMPARE(readFile(folder + QStringLiteral("/calc.rtp")), before);
    const QString prefix = file + QStringLiteral("\n\nUnable to save the project.\n");
    const QStringList told = batch ? m_studio->messages(QAStData::MessageConsole)
                                   : m_studio->requestTexts(RecordingStudio::Request::Warning);
    QCOMPARE(told.size(), 1);
    QVERIFY2(told.first().startsWith(prefix) && told.first().size() > prefix.size(),
             qPrintable(told.first()));
    if (batch)
        QVERIFY(m_studio->requestTexts(RecordingStudio::Request::Warning).isEmpty());
}

void TestProjectFile::readOnlyProjectIsNotWritten()
{
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    QAStProject p(QStringLiteral("calc"), QPixmap());
    QVERIFY(p.create(file));
    const QByteArray before = readFile(file);
    p.setReadOnly(true);
    new QAStNodeGroup(QStringLiteral("g"), QPixmap(), &p, nullptr);
    QVERIFY(!p.save());
    QCOMPARE(readFile(file), before);
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
             QStringList{file + QStringLiteral("\n\nUnable to save the project.\nThe project is read only.")});

    // A project whose file may not be written opens read only.
    if (::geteuid() != 0) {
        QFile::setPermissions(file, QFileDevice::ReadOwner);
        QAStProject reopened(QStringLiteral("x"), QPixmap());
        QVERIFY(reopened.open(file));
        QVERIFY(reopened.isReadOnly());
    }
}

void TestProjectFile::saveAsAsksTheHost()
{
    QAStProject p(QStringLiteral("calc"), QPixmap());
    QVERIFY(p.create(m_dir->filePath(QStringLiteral("calc.rtp"))));
    QDir(m_dir->path()).mkdir(QStringLiteral("moved"));
    const QString moved = m_dir->filePath(QStringLiteral("moved/renamed"));
    m_studio->answerPath(moved);
    QVERIFY(p.saveAs());
    QCOMPARE(p.path(), moved + QStringLiteral(".rtp"));
    QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("moved/renamed.inf"))));
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::SaveFile), QStringList{m_dir->path()});
    QVERIFY(readFile(p.path()).contains("<object_file>renamed.inf</object_file>"));

    // No host chooser in batch mode: nothing is asked nor written.
    QAStProject::setModeBatch(true);
    m_studio->answerPath(m_dir->filePath(QStringLiteral("never.rtp")));
    QVERIFY(!p.saveAs());
    QVERIFY(!QFile::exists(m_dir->filePath(QStringLiteral("never.rtp"))));
}

void TestProjectFile::templates()
{
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    QAStProject p(QStringLiteral("calc"), QPixmap());
    QVERIFY(p.create(file));
    buildEveryKind(p);
    QVERIFY(p.save());
    const QByteArray information = readFile(m_dir->filePath(QStringLiteral("calc.inf")));
    new QAStFolder(QStringLiteral("only in the template"), QPixmap(), p.rootFolder(), nullptr);

    // A template beside the project, of the same stem, keeps its own tree.
    m_studio->answerPath(m_dir->filePath(QStringLiteral("calc")));
    QVERIFY(p.saveAsTemplate());
    QCOMPARE(p.path(), file);
    QVERIFY(!p.isTemplate());
    QCOMPARE(readFile(m_dir->filePath(QStringLiteral("calc.inf"))), information);
    QVERIFY(readFile(m_dir->filePath(QStringLiteral("calc.rtt.inf"))).contains("only in the template"));

    QAStProject fromTemplate(QStringLiteral("x"), QPixmap());
    QVERIFY(fromTemplate.open(m_dir->filePath(QStringLiteral("calc.rtt"))));
    QVERIFY(fromTemplate.isTemplate());
    QCOMPARE(outline(&fromTemplate), outline(&p));
    QCOMPARE(fromTemplate.rootFolder()->childCount(), 1);
}

void TestProjectFile::subProjects()
{
    const QString subFile = m_dir->filePath(QStringLiteral("parts/printer/printer.rtp"));
    QDir().mkpath(QFileInfo(subFile).absolutePath());
    {
        QAStProject sub(QStringLiteral("printer"), QPixmap());
        QVERIFY(sub.create(subFile));
        sub.addConfiguration(QStringLiteral("Debug"));
        sub.addConfiguration(QStringLiteral("Release"));
        sub.setCurrentConfigurationName(QStringLiteral("Debug"));
        new QAStNodeLibrary(QStringLiteral("libprinter"), QPixmap(), &sub, nullptr);
        QVERIFY(sub.save());
    }
    const QString file = m_dir->filePath(QStringLiteral("main.rtp"));
    {
        QAStProject p(QStringLiteral("main"), QPixmap());
        QVERIFY(p.create(file));
        p.addConfiguration(QStringLiteral("Release"));
        p.setCurrentConfigurationName(QStringLiteral("Release"));
        QAStSubProject* sub = p.addSubProject(QStringLiteral("parts/printer/printer.rtp"));
        QVERIFY(sub && sub->isOpen());
        QCOMPARE(sub->currentConfigurationName(), QStringLiteral("Release"));
        QCOMPARE(sub->directory(), QFileInfo(subFile).absolutePath());
        sub->addChild(new QAStNodeGroup(QStringLiteral("added in the sub-project"), QPixmap()), sub->last());
        QVERIFY(p.save());
    }
    QVERIFY(readFile(file).contains("<project_file>parts/printer/printer.rtp</project_file>"));
    QVERIFY(readFile(subFile).contains("added in the sub-project"));

    QAStProject p(QStringLiteral("x"), QPixmap());
    QVERIFY(p.open(file));
    auto* sub = qobject_cast<QAStSubProject*>(p.child());
    QVERIFY(sub && sub->isOpen());
    QCOMPARE(sub->path(), subFile);
    QCOMPARE(outline(sub), (QStringList{QStringLiteral("QAStNodeLibrary:libprinter"),
                                        QStringLiteral("QAStNodeGroup:added in the sub-project")}));
    QCOMPARE(sub->currentConfigurationName(), QStringLiteral("Release"));
}

void TestProjectFile::unloadedAndSelfIncludingSubProjects()
{
    const QString file = m_dir->filePath(QStringLiteral("loop.rtp"));
    QAStProject p(QStringLiteral("loop"), QPixmap());
    QVERIFY(p.create(file));
    auto* self = new QAStSubProject(file, &p, nullptr);
    auto* missing = new QAStSubProject(m_dir->filePath(QStringLiteral("gone.rtp")), &p, self);
    missing->setUnloaded(true);
    QVERIFY(p.save());
    m_studio->reset();

    QAStProject reopened(QStringLiteral("x"), QPixmap());
    QVERIFY(reopened.open(file));
    const QList<QAStData*> subs = reopened.childrenOfClass("QAStSubProject");
    QCOMPARE(subs.size(), 2);
    QVERIFY(!static_cast<QAStProject*>(subs.at(0))->isOpen());
    QVERIFY(!static_cast<QAStProject*>(subs.at(1))->isOpen());
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
             QStringList{file + QStringLiteral("\n\nThe project includes itself: it is left closed.")});
}

void TestProjectFile::addProjectsThroughTheHost()
{
    QAStProject p(QStringLiteral("main"), QPixmap());
    QVERIFY(p.create(m_dir->filePath(QStringLiteral("main.rtp"))));
    p.addConfiguration(QStringLiteral("Debug"));
    p.setCurrentConfigurationName(QStringLiteral("Debug"));
    QAStData::undoManager()->clear();

    m_studio->answerPath(m_dir->filePath(QStringLiteral("fresh")));
    QAStSubProject* fresh = p.addNewProject();
    QVERIFY(fresh);
    QCOMPARE(fresh->parent(), &p);
    QCOMPARE(fresh->configurations(), QStringList{QStringLiteral("Debug")});
    QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("fresh.rtp"))));
    QVERIFY(QAStData::isUndoAvailable());

    m_studio->answerPath(m_dir->filePath(QStringLiteral("fresh.rtp")));
    QAStSubProject* existing = p.addExistingProject();
    QVERIFY(existing && existing->isOpen());
    QCOMPARE(existing->currentConfigurationName(), QStringLiteral("Debug"));

    QVERIFY(!p.addExistingProject()); // nothing chosen
    QCOMPARE(p.childCount(), 2);
}

void TestProjectFile::olderProjectFile()
{
    const QString file = copyFixture(QStringLiteral("older/calc.rtp"));
    QAStProject p(QStringLiteral("x"), QPixmap());
    QVERIFY(p.open(file));
    QCOMPARE(p.name(), QStringLiteral("Calculator"));
    QCOMPARE(outline(&p), (QStringList{
        QStringLiteral("QAStNodeGroup:Build"),
        QStringLiteral("  QAStNodeLibrary:libcalc"),
        QStringLiteral("    QAStNodeSource:calc.c"),
        QStringLiteral("  QAStNodeApplication:calc"),
        QStringLiteral("    QAStNodeSource:main.c"),
        QStringLiteral("QAStNodeUnitTesting:Unit"),
        QStringLiteral("  QAStNodeUnitTestingScript:calc.ptu")}));
    QCOMPARE(configurationValues(&p),
             (QStringList{QStringLiteral("Debug=-g -O0"), QStringLiteral("Release=-O2")}));
    QCOMPARE(p.configuration(QStringLiteral("Debug"))->localProperty(QStringLiteral("ge_incdir")),
             QVariant(QStringList{QStringLiteral("include"), QStringLiteral("/usr/include")}));
    QCOMPARE(p.currentConfigurationName(), QStringLiteral("Release"));
    QCOMPARE(p.sortMethod(), 1);
    const auto* app = qobject_cast<QAStNode*>(p.findNode(QStringLiteral("calc")));
    QCOMPARE(app->configuration(QStringLiteral("Release"))->localProperty(QStringLiteral("ldflags")),
             QVariant(QStringLiteral("-s")));
    QCOMPARE(app->currentConfigurationName(), QStringLiteral("Release"));

    // No object information file yet: the tree is made from the nodes.
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Question).size(), 1);
    QStringList keys;
    for (const QAStFile* f : p.files())
        keys << QDir(m_dir->path()).relativeFilePath(f->filePath());
    keys.sort();
    QCOMPARE(keys, (QStringList{QStringLiteral("src/calc.c"), QStringLiteral("src/main.c"),
                                QStringLiteral("tests/calc.ptu")}));

    // Saved, it becomes an XML project file with the same content.
    QVERIFY(p.save());
    QCOMPARE(QAStProject::fileKind(file), QAStProject::XmlProject);
    QAStProject reread(QStringLiteral("y"), QPixmap());
    QVERIFY(reread.open(file));
    QCOMPARE(outline(&reread), outline(&p));
    QCOMPARE(reread.files().size(), 3);
}

void TestProjectFile::olderWorkspaceFile()
{
    copyFixture(QStringLiteral("older/calc.rtp"));
    const QString file = copyFixture(QStringLiteral("older/all.rtw"));
    QAStProject::setModeBatch(true);
    QAStProject workspace(QStringLiteral("x"), QPixmap());
    QVERIFY(workspace.open(file));
    QCOMPARE(QAStProject::fileKind(file), QAStProject::ResourceWorkspace);
    QCOMPARE(workspace.name(), QStringLiteral("All projects"));
    QCOMPARE(workspace.childCount(), 2);
    auto* calc = qobject_cast<QAStSubProject*>(workspace.child());
    QVERIFY(calc && calc->isOpen());
    QCOMPARE(calc->name(), QStringLiteral("Calculator"));
    QCOMPARE(calc->childCount(), 2);
    // The listed project that does not exist stays closed, and said so.
    auto* missing = qobject_cast<QAStSubProject*>(calc->next());
    QVERIFY(missing && !missing->isOpen());
    QVERIFY(m_studio->messages(QAStData::MessageConsole)
                .contains(m_dir->filePath(QStringLiteral("missing.rtp"))
                          + QStringLiteral("\n\nThe project file don't exist.")));
    QVERIFY(m_studio->requests().isEmpty());
    // One report for the whole load: the workspace's lines and its projects'.
    const QString report = QAStData::loadReport();
    QVERIFY2(report.contains(QStringLiteral("all.rtw.inf")) && report.contains(QStringLiteral("calc.inf")),
             qPrintable(report));
}

void TestProjectFile::faultsOfOlderFiles()
{
    const QString file = copyFixture(QStringLiteral("older/faults.rtp"));
    QAStProject p(QStringLiteral("x"), QPixmap());
    QVERIFY(p.open(file));
    // The faulty entries are left out, the others read.
    QCOMPARE(outline(&p), (QStringList{QStringLiteral("QAStNodeGroup:kept"),
                                       QStringLiteral("  QAStNodeUser:kept too")}));
    QCOMPARE(p.configurations(), QStringList{QStringLiteral("Debug")});
    const QString report = QAStData::loadReport();
    for (const QString& line : {QStringLiteral("%1:6: CONFIGURATION without a name\n"),
                                QStringLiteral("%1:11: unknown kind \"WIDGET\"\n"),
                                QStringLiteral("%1:12: SOURCE bad place\n"),
                                QStringLiteral("%1:13: a child is not a group\n")})
        QVERIFY2(report.contains(line.arg(file)), qPrintable(report));

    const QString bad = m_dir->filePath(QStringLiteral("bad.rtp"));
    writeFile(bad, "PROJECT = ( 1, 2 )\n");
    QVERIFY(!p.open(bad));
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
             QStringList{bad + QStringLiteral("\n\nIt is a bad project file\n%1:1: PROJECT is not a group\n").arg(bad)});
}

void TestProjectFile::dtdValidatesWrittenFiles()
{
    if (QStandardPaths::findExecutable(QStringLiteral("xmllint")).isEmpty())
        QSKIP("xmllint (Debian package libxml2-utils) is not installed");
    const QString file = m_dir->filePath(QStringLiteral("every.rtp"));
    QAStProject p(QStringLiteral("every"), QPixmap());
    QVERIFY(p.create(file));
    buildEveryKind(p);
    auto* sub = new QAStSubProject(m_dir->filePath(QStringLiteral("sub.rtp")), &p, p.last());
    sub->setUnloaded(true);
    p.setPluginList({QStringLiteral("a"), QStringLiteral("b")});
    p.configuration(QStringLiteral("Debug"))->setProperty(QStringLiteral("ge_incdir"),
                                                        QStringList{QStringLiteral("a,b"), QStringLiteral("<c>")});
    auto* folder = new QAStFolder(QStringLiteral("Sources"), QPixmap(), p.rootFolder(), nullptr);
    folder->setFilters(QStringLiteral("*.c;*.h"));
    p.addFiles({m_dir->filePath(QStringLiteral("src/main.c")), m_dir->filePath(QStringLiteral("doc/notes.txt"))});
    QVERIFY(p.save());
    validate(file);
    validate(m_dir->filePath(QStringLiteral("every.inf")));
}

void TestProjectFile::dtdDeclaresEverySetting()
{
    const QString dtd = QString::fromUtf8(readFile(QAStData::installDir() + QStringLiteral("/lib/project.dtd")));
    const QRegularExpression entity(QStringLiteral("<!ENTITY % settings\\s+\"([^\"]*)\">"));
    const QRegularExpressionMatch match = entity.match(dtd);
    QVERIFY(match.hasMatch());
    QSet<QString> inEntity;
    for (const QString& name : match.captured(1).split(QLatin1Char('|')))
        inEntity.insert(name.trimmed());

    QList<QAProperty*> settings;
    collectSettings(QAStConfiguration::propertyDescriptor(), settings);
    QSet<QString> described;
    for (const QAProperty* setting : settings) {
        described.insert(setting->tag());
        QVERIFY2(dtd.contains(QStringLiteral("<!ELEMENT %1 (#PCDATA)>").arg(setting->tag())),
                 qPrintable(setting->tag()));
    }
    QCOMPARE(inEntity, described);
}

QTEST_MAIN(TestProjectFile)
#include "tst_project_file.moc"
