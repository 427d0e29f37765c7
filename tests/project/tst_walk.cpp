// The build, execution and clean walk of project nodes, run through the
// installation's interpreter on stand-in drivers: each driver run appends
// "<Driver> <NAME> <STAGE> <EXECMODE> <kind>" to the file named by
// $WALK_LOG and fails for a node whose name holds "fail".
#include "QAProcess.h"
#include "QAStConfiguration.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeSource.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStNodeUser.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const char* const driverText = R"(my $env = $ARGV[0];
do $env or die "cannot load $env: $@$!\n";
open(my $log, '>>', $ENV{WALK_LOG}) or die "cannot open the log: $!\n";
print $log "@DRIVER@ $NAME $STAGE $EXECMODE $ARGV[1]\n";
close $log;
exit($NAME =~ /fail/ ? 1 : 0);
)";

// The user node's after-children text: logs the script it was given.
const char* const userText = R"(do $ARGV[0] or die "cannot load $ARGV[0]\n";
open(my $log, '>>', $ENV{WALK_LOG}) or die;
print $log "User $NAME $STAGE $EXECMODE $ARGV[0]\n";
close $log;
)";

const QString flagKey = u"executionFlag"_s;

// An installation with the interpreter, the settings descriptor, the
// target packages and the stand-in drivers; without the interpreter when
// withInterpreter is false.
void makeInstallation(const QString& dir, bool withInterpreter)
{
    const QString source = TestPaths::installTree();
    if (withInterpreter) {
        const QString perl = dir + u"/bin/intel/linux/Korvilperl"_s;
        QDir().mkpath(QFileInfo(perl).absolutePath());
        QVERIFY(QFile::copy(source + u"/bin/intel/linux/Korvilperl"_s, perl));
        QVERIFY(QFile::setPermissions(perl, QFile::permissions(perl) | QFileDevice::ExeOwner |
                                                QFileDevice::ExeGroup | QFileDevice::ExeOther));
    }
    QVERIFY(QFile::copy(source + "/korvilprojectsettings.properties",
                        dir + "/korvilprojectsettings.properties"));
    TestFiles::copyTree(source + "/targets", dir + "/targets");
    for (const char* driver : {"Build", "Execute", "Clean"})
        TestFiles::writeFile(dir + "/scripts/" + driver + ".pl",
                             QByteArray(driverText).replace("@DRIVER@", driver));
}

void configure(QAStNode* node)
{
    node->addConfiguration("Debug");
    node->setCurrentConfigurationName("Debug");
}

template <class Kind>
Kind* add(const QString& name, QAStData* parent, QAStData* after = nullptr)
{
    auto* node = new Kind(name, QPixmap(), parent, after ? after : parent->last());
    configure(node);
    if constexpr (std::is_base_of_v<QAStNodeFileRef, Kind>)
        node->setFileKey("src/" + name);
    return node;
}

} // namespace

class TestWalk : public QObject {
    Q_OBJECT

    QAStNode* node(const QString& name) const { return qobject_cast<QAStNode*>(m_project->findNode(name)); }
    QAStConfiguration* config(const QString& name) const { return node(name)->configuration("Debug"); }

    // Runs a command on n and waits until the whole tree is at rest;
    // returns how many times n said its walk was over.
    int walk(QAStNode* n, void (QAStNode::*command)())
    {
        QSignalSpy finished(n, &QAStNode::buildExecuteFinished);
        (n->*command)();
        if (finished.isEmpty())
            finished.wait(60000);
        if (!QTest::qWaitFor([this] { return atRest(); }, 60000))
            return -1;
        QCoreApplication::processEvents();
        return int(finished.size());
    }
    bool atRest() const
    {
        const QList<QAStData*> nodes = m_project->childrenOfClass("QAStNode", true) << m_project.get();
        return QAProcess::listOfProcess().isEmpty() && std::none_of(nodes.begin(), nodes.end(),
                            [](QAStData* n) { return static_cast<QAStNode*>(n)->isWalking(); });
    }

    QStringList log() const
    {
        return QString::fromUtf8(TestFiles::readFile(m_log)).split('\n', Qt::SkipEmptyParts);
    }
    QString console() const { return m_studio->consoleText(QAStData::OutputConsole); }
    QStringList consoleLines() const { return m_studio->messages(QAStData::OutputConsole); }
    QString userLine(const QString& stage) const
    {
        return "User usr1 " + stage + " NORMAL " + node("usr1")->environmentFileName();
    }

    // The driver runs of the whole tree of init(), in walk order: the
    // sources of a node that links are compiled by its own run.
    static QStringList runs(const QString& driver, const QString& stage)
    {
        static const char* const driven[][2] = {
            {"lib1", "library"}, {"app1", "application"}, {"ut1", "unit_testing"}};
        QStringList lines;
        for (const auto& [name, kind] : driven)
            lines << QStringList{driver, name, stage, "NORMAL", kind}.join(' ');
        return lines;
    }
    QStringList buildSequence() const { return runs("Build", "cptl") << userLine("cptl"); }

    std::unique_ptr<QTemporaryDir> m_install;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;
    QString m_log;

private slots:
    void initTestCase()
    {
        SKIP_WITHOUT("perl");
        m_install = std::make_unique<QTemporaryDir>();
        makeInstallation(m_install->path(), true);
        qputenv("ZELTAHOME", QFile::encodeName(m_install->path()));
        m_log = m_install->filePath(u"walk.log"_s);
        qputenv("WALK_LOG", QFile::encodeName(m_log));
        m_studio = std::make_unique<RecordingStudio>();
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
    }

    // walk
    //   libs > lib1 > l1.c, l2.c, l3_off.c (unselected)
    //   apps > app1 > a1.c, a2.c
    //   ut1 > u1.c, t1.ptu (a script: no driver)
    //   usr1 (user node, with its after-children text)
    //   usr_off (user node, unselected)
    //   app_off (application, unselected) > o1.c
    void init()
    {
        QAStProject::setModeBatch(true);
        QFile::remove(m_log);
        m_dir = std::make_unique<QTemporaryDir>();
        m_project = std::make_unique<QAStProject>("walk", QPixmap());
        QVERIFY(m_project->create(m_dir->filePath("walk.rtp")));
        configure(m_project.get());
        QAStNode* p = m_project.get();
        auto* lib1 = add<QAStNodeLibrary>("lib1", add<QAStNodeGroup>("libs", p));
        for (const char* name : {"l1.c", "l2.c", "l3_off.c"})
            add<QAStNodeSource>(name, lib1);
        node("l3_off.c")->setState(QAStNode::UnSelected);
        auto* app1 = add<QAStNodeApplication>("app1", add<QAStNodeGroup>("apps", p));
        for (const char* name : {"a1.c", "a2.c"})
            add<QAStNodeSource>(name, app1);
        auto* ut1 = add<QAStNodeUnitTesting>("ut1", p);
        add<QAStNodeSource>("u1.c", ut1);
        add<QAStNodeUnitTestingScript>("t1.ptu", ut1);
        for (const char* name : {"usr1", "usr_off"})
            add<QAStNodeUser>(name, p)->setPerlScriptAfterChild(QString::fromLatin1(userText));
        node("usr_off")->setState(QAStNode::UnSelected);
        add<QAStNodeSource>("o1.c", add<QAStNodeApplication>("app_off", p));
        node("app_off")->setState(QAStNode::UnSelected);
        m_studio->reset();
    }

    void cleanup()
    {
        QVERIFY(QTest::qWaitFor([this] { return atRest(); }, 60000));
        m_project.reset();
        m_dir.reset();
        QAStProject::setModeBatch(true);
        qputenv("ZELTAHOME", QFile::encodeName(m_install->path()));
    }

    void cleanupTestCase() { QAStProject::setModeBatch(false); }

    // Children before their parent, one at a time, in tree order; nodes
    // without a driver run none; unselected nodes are left out, a user
    // node saying so.
    void buildRunsTheDriversInTreeOrder()
    {
        const QString current = QDir::currentPath();
        QSignalSpy started(m_project.get(), &QAStNode::buildExecuteStarted);
        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QVERIFY2(m_project->walkSucceeded(), qPrintable(console()));
        QCOMPARE(log(), buildSequence());
        QCOMPARE(started.size(), 1);
        QVERIFY(consoleLines().contains("usr_off: is up-to-date\n"));
        QVERIFY(!console().contains("stopped"));
        QCOMPARE(QDir::currentPath(), current);
        for (const char* name : {"libs", "lib1", "l1.c", "app1", "t1.ptu", "usr1"})
            QVERIFY2(node(name)->walkSucceeded(), name);
    }

    // An unselected node asked directly ends at once, well, saying it is
    // up-to-date; below a walked parent it is left out.
    void unselectedTopNodeEndsAtOnce()
    {
        QAStNode* lib1 = node("lib1");
        lib1->setState(QAStNode::UnSelected);
        QSignalSpy finished(lib1, &QAStNode::buildExecuteFinished);
        lib1->build();
        QCOMPARE(finished.size(), 1);
        QVERIFY(lib1->walkSucceeded());
        QVERIFY(!lib1->isWalking());
        QCOMPARE(consoleLines(), QStringList{"lib1: is up-to-date\n"});
        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QVERIFY(m_project->walkSucceeded());
        QCOMPARE(log(), buildSequence().mid(1));
    }

    // A release build logs a broken invariant and takes the safe way out:
    // an end reported by a node that is not the walked child is ignored and
    // the walk goes on.
    void strayEndReportIsLoggedAndIgnored()
    {
#ifndef NDEBUG
        QSKIP("a debug build stops at a broken invariant");
#endif
        QAStNode stranger(u"stranger"_s, QPixmap());
        QVERIFY(QObject::connect(&stranger, SIGNAL(buildExecuteFinished()), m_project.get(),
                                 SLOT(buildNextChild())));
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(u"broken invariant"_s));
        m_project->build();
        emit stranger.buildExecuteFinished();
        QVERIFY(QTest::qWaitFor([this] { return !m_project->isWalking(); }, 60000));
        QVERIFY2(m_project->walkSucceeded(), qPrintable(console()));
        QCOMPARE(log(), buildSequence());
    }

    // A failing driver stops the walk: nothing after it runs, and its node
    // and every node above it end without success.
    void aFailureAbortsTheWalk_data()
    {
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("behind");
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("above");
        const QStringList lib = runs("Build", "cptl").mid(0, 1);
        QTest::newRow("source of no linker") << "libs" << "lib1" << "l_fail.c"
                                           << lib + QStringList{"Build l_fail.c cptl NORMAL source"}
                                           << QStringList{"libs", "walk"};
        QTest::newRow("library's own step") << "libs" << "lib1" << "lib_fail"
            << lib + QStringList{"Build lib_fail cptl NORMAL library"}
            << QStringList{"libs", "walk"};
        QTest::newRow("application's own step") << "apps" << "app1" << "app_fail"
            << lib + QStringList{"Build app1 cptl NORMAL application", "Build app_fail cptl NORMAL application"}
            << QStringList{"apps", "walk"};
    }
    void aFailureAbortsTheWalk()
    {
        QFETCH(QString, parent);
        QFETCH(QString, behind);
        QFETCH(QString, failing);
        QFETCH(QStringList, expected);
        QFETCH(QStringList, above);
        QAStData* after = behind.isEmpty() ? nullptr : node(behind);
        QAStNode* failingNode = nullptr;
        if (failing.endsWith(".c"))
            failingNode = new QAStNodeSource(failing, QPixmap(), node(parent), after);
        else if (failing.startsWith("lib"))
            failingNode = new QAStNodeLibrary(failing, QPixmap(), node(parent), after);
        else
            failingNode = new QAStNodeApplication(failing, QPixmap(), node(parent), after);
        configure(failingNode);
        if (!qobject_cast<QAStNodeSource*>(failingNode))
            add<QAStNodeSource>("lf.c", failingNode);
        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QCOMPARE(log(), expected);
        QVERIFY(!failingNode->walkSucceeded());
        for (const QString& name : above)
            QVERIFY2(!node(name)->walkSucceeded(), qPrintable(name));
        QVERIFY2(consoleLines().contains(failing + ": failed\n"), qPrintable(console()));
    }

    // A build clears the execute and report stages for its run only: a
    // configuration's own value is kept, an inherited one stays inherited.
    void buildClearsTheExecutionStages_data()
    {
        QTest::addColumn<QString>("holder");
        QTest::addColumn<int>("flag");
        QTest::addColumn<QString>("stage");
        QTest::newRow("own, every stage") << "lib1" << 0x3F << "cptl";
        QTest::newRow("own, some stages") << "lib1" << 0x33 << "cp";
        QTest::newRow("inherited from the project") << "walk" << 0x1D << "ctl";
        QTest::newRow("inherited from the descriptor") << "" << 0 << "cptl";
    }
    void buildClearsTheExecutionStages()
    {
        QFETCH(QString, holder);
        QFETCH(int, flag);
        QFETCH(QString, stage);
        if (!holder.isEmpty())
            config(holder)->setProperty(flagKey, flag);
        QCOMPARE(walk(node("lib1"), &QAStNode::build), 1);
        QVERIFY(node("lib1")->walkSucceeded());
        QCOMPARE(log(), runs("Build", stage).mid(0, 1));
        for (const char* name : {"walk", "libs", "lib1", "l1.c", "l2.c"}) {
            QAStConfiguration* c = config(name);
            QCOMPARE(c->hasProperty(flagKey), holder == QLatin1String(name));
            if (c->hasProperty(flagKey))
                QCOMPARE(c->localProperty(flagKey).toInt(), flag);
        }
    }

    // Only the test kinds run Execute.pl; a debug run keeps the stages and
    // adds the debug mode, for the run only.
    void executeRunsTheTestKinds_data()
    {
        QTest::addColumn<bool>("debug");
        QTest::newRow("execute") << false;
        QTest::newRow("debug") << true;
    }
    void executeRunsTheTestKinds()
    {
        QFETCH(bool, debug);
        node("usr1")->setState(QAStNode::UnSelected);
        QCOMPARE(walk(m_project.get(), debug ? &QAStNode::debug : &QAStNode::execute), 1);
        QVERIFY2(m_project->walkSucceeded(), qPrintable(console()));
        const QString mode = debug ? "DEBUG" : "NORMAL";
        QCOMPARE(log(), (QStringList{"Execute app1 cptler " + mode + " application",
                                     "Execute ut1 cptler " + mode + " unit_testing"}));
        for (const char* name : {"walk", "app1", "ut1", "a1.c"})
            QVERIFY2(!config(name)->hasProperty(flagKey), name);
    }

    // Without the execute and report stages, the first node that finds
    // it so says it and the walk fails.
    void executeWithoutExecutionStages_data()
    {
        QTest::addColumn<QString>("holder");
        QTest::addColumn<QStringList>("runs");
        QTest::newRow("top node") << "walk" << QStringList();
        QTest::newRow("inner node") << "app1" << QStringList();
        QTest::newRow("later node") << "ut1" << QStringList{"Execute app1 cptler NORMAL application"};
    }
    void executeWithoutExecutionStages()
    {
        QFETCH(QString, holder);
        QFETCH(QStringList, runs);
        config(holder)->setProperty(flagKey, 0x0F);
        QCOMPARE(walk(m_project.get(), &QAStNode::execute), 1);
        QVERIFY(!m_project->walkSucceeded());
        QVERIFY(!node(holder)->walkSucceeded());
        QVERIFY2(consoleLines().contains(holder + ": no execution step is selected\n"),
                 qPrintable(console()));
        QCOMPARE(log(), runs);
    }

    // Every walked node says it cleans; Clean.pl runs for the kinds with a
    // driver, children first.
    void cleanRunsChildrenFirst()
    {
        QCOMPARE(walk(m_project.get(), &QAStNode::clean), 1);
        QVERIFY2(m_project->walkSucceeded(), qPrintable(console()));
        QCOMPARE(log(), runs("Clean", "cptler"));
        QStringList cleaning;
        for (const QString& line : consoleLines()) {
            if (line.endsWith(": Cleaning...\n"))
                cleaning << line.chopped(14);
        }
        QCOMPARE(cleaning, (QStringList{"walk", "libs", "lib1", "l1.c", "l2.c", "apps", "app1", "a1.c",
                                        "a2.c", "ut1", "u1.c", "t1.ptu", "usr1"}));
    }

    // A node that links compiles its selected sources in its own run, each
    // with the environment script of its own node; a source built alone
    // runs its own driver. A clean takes every environment script away.
    void sourcesCompileInTheRunOfTheirLinker()
    {
        QCOMPARE(walk(node("lib1"), &QAStNode::build), 1);
        QCOMPARE(log(), QStringList{"Build lib1 cptl NORMAL library"});
        const QString libraryScript = QString::fromUtf8(TestFiles::readFile(node("lib1")->environmentFileName()));
        const QString l1 = node("l1.c")->environmentFileName();
        const QString l2 = node("l2.c")->environmentFileName();
        QVERIFY2(libraryScript.contains(u"@SOURCE_ENVIRONMENTS=('%1', '%2');"_s.arg(l1, l2)),
                 qPrintable(libraryScript));
        QVERIFY(libraryScript.contains("$OBJECT_DIR='lib1.objects';"));
        QVERIFY(!QFileInfo::exists(node("l3_off.c")->environmentFileName()));
        const QByteArray sourceScript = TestFiles::readFile(l1);
        QVERIFY2(sourceScript.contains("$OBJECT_FILE='lib1.objects/src/l1.c.o';"), sourceScript.constData());
        QVERIFY(sourceScript.endsWith("\n1;\n"));

        QFile::remove(m_log);
        QCOMPARE(walk(node("l1.c"), &QAStNode::build), 1);
        QCOMPARE(log(), QStringList{"Build l1.c cptl NORMAL source"});

        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QVERIFY(QFileInfo::exists(m_dir->filePath(".korvil")));
        QCOMPARE(walk(m_project.get(), &QAStNode::clean), 1);
        QVERIFY2(!QFileInfo::exists(m_dir->filePath(".korvil")),
                 qPrintable(QDir(m_dir->filePath(".korvil")).entryList(QDir::Files).join(' ')));
    }

    // Executing a node with nothing to execute says so and ends well.
    void nothingToExecute()
    {
        QCOMPARE(walk(node("lib1"), &QAStNode::execute), 1);
        QVERIFY(node("lib1")->walkSucceeded());
        QCOMPARE(consoleLines(), QStringList{"lib1: nothing to execute\n"});
        QCOMPARE(log(), QStringList());
    }

    void rebuildCleansThenBuildsAndEndsOnce()
    {
        QCOMPARE(walk(m_project.get(), &QAStNode::rebuild), 1);
        QVERIFY2(m_project->walkSucceeded(), qPrintable(console()));
        QCOMPARE(log(), runs("Clean", "cptler") + buildSequence());
    }

    // The after-children text runs with the environment script as its
    // argument; without a text the user node's walk aborts (observed and
    // kept: the base rule), and the abort reaches the nodes above.
    void userNodeRunsItsText_data()
    {
        QTest::addColumn<bool>("withText");
        QTest::newRow("text") << true;
        QTest::newRow("no text") << false;
    }
    void userNodeRunsItsText()
    {
        QFETCH(bool, withText);
        QAStNode* user = node("usr1");
        if (!withText)
            user->setPerlScriptAfterChild(QString());
        QCOMPARE(walk(user, &QAStNode::build), 1);
        QCOMPARE(user->walkSucceeded(), withText);
        QCOMPARE(log(), withText ? QStringList{userLine("cptl")} : QStringList());
        if (withText)
            return;
        QVERIFY(consoleLines().contains("usr1: stopped\n"));
        QFile::remove(m_log);
        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QVERIFY(!m_project->walkSucceeded());
        QCOMPARE(log(), runs("Build", "cptl"));
    }

    // A user node's execution takes the same course whether or not it
    // holds a child node.
    void userNodeExecutionDoesNotDependOnChildren()
    {
        QAStNode* user = node("usr1");
        QCOMPARE(walk(user, &QAStNode::execute), 1);
        const QString alone = QString::number(user->walkSucceeded()) + log().join(',');
        QFile::remove(m_log);
        add<QAStNodeSource>("gen.c", user);
        QCOMPARE(walk(user, &QAStNode::execute), 1);
        const QString withChild = QString::number(user->walkSucceeded()) + log().join(',');
        QCOMPARE(withChild, alone);
    }

    // Outside batch mode, executing a node never built asks the host: Yes
    // builds, then executes when the build went well; Cancel runs nothing.
    void executeAsksToRebuild_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("failingSource");
        QTest::addColumn<QStringList>("runs");
        const QStringList built = runs("Build", "cptl").mid(1, 1);
        QTest::newRow("yes") << int(QMessageBox::Yes) << false
                             << built + QStringList{"Execute app1 cptler NORMAL application"};
        QTest::newRow("yes, the build fails")
            << int(QMessageBox::Yes) << true << QStringList{"Build z_fail cptl NORMAL library"};
        QTest::newRow("cancel") << int(QMessageBox::Cancel) << false << QStringList();
    }
    void executeAsksToRebuild()
    {
        QFETCH(int, answer);
        QFETCH(bool, failingSource);
        QFETCH(QStringList, runs);
        QAStProject::setModeBatch(false);
        QAStNode* app1 = node("app1");
        if (failingSource)
            add<QAStNodeSource>("z.c", add<QAStNodeLibrary>("z_fail", app1));
        m_studio->answer(QMessageBox::StandardButton(answer));
        QCOMPARE(walk(app1, &QAStNode::execute), 1);
        QCOMPARE(m_studio->requests().size(), 1);
        const RecordingStudio::Request& asked = m_studio->requests().constFirst();
        QCOMPARE(asked.kind, RecordingStudio::Request::Question);
        QCOMPARE(asked.caption, u"app1 execution"_s);
        const bool executed = answer == QMessageBox::Yes && !failingSource;
        QCOMPARE(app1->walkSucceeded(), executed);
        QCOMPARE(log(), runs);
        if (!executed)
            return;
        // Built since: executing again, or debugging, runs without asking.
        QFile::remove(m_log);
        QCOMPARE(walk(app1, &QAStNode::execute), 1);
        QCOMPARE(walk(app1, &QAStNode::debug), 1);
        QCOMPARE(m_studio->requests().size(), 1);
        QCOMPARE(log(), (QStringList{"Execute app1 cptler NORMAL application",
                                     "Execute app1 cptler DEBUG application"}));
        // Nor after a debug run, which changes no setting for good.
        QCOMPARE(walk(app1, &QAStNode::execute), 1);
        QCOMPARE(m_studio->requests().size(), 1);
    }

    // A good build of a container is recorded too, beside its products, so
    // that executing right after it, or in a later run of the program,
    // asks nothing; a source touched or a setting of the chain changed
    // since asks once; a clean forgets the build.
    void executeAfterABuildAsksNothing()
    {
        QAStProject::setModeBatch(false);
        QCOMPARE(walk(m_project.get(), &QAStNode::build), 1);
        QVERIFY(m_project->walkSucceeded());
        QCOMPARE(walk(m_project.get(), &QAStNode::execute), 1);
        QVERIFY(m_studio->requests().isEmpty());
        QVERIFY(m_project->save());
        {
            QAStProject later(u"walk"_s, QPixmap());
            QVERIFY(later.open(m_dir->filePath("walk.rtp")));
            QCOMPARE(walk(&later, &QAStNode::execute), 1);
            QVERIFY(later.walkSucceeded());
            QVERIFY(m_studio->requests().isEmpty());
        }

        const auto asksOnce = [this](const std::function<void()>& change) {
            change();
            m_studio->reset();
            m_studio->answer(QMessageBox::Yes);
            walk(m_project.get(), &QAStNode::execute);
            QCOMPARE(m_studio->requests().size(), 1);
            QCOMPARE(walk(m_project.get(), &QAStNode::execute), 1);
            QCOMPARE(m_studio->requests().size(), 1);
        };
        asksOnce([this] {
            QTest::qSleep(10);
            TestFiles::writeFile(m_dir->filePath("src/a1.c"), "int a1;\n");
        });
        asksOnce([this] { config("l1.c")->setProperty(u"cflags"_s, "-O3"); });
        asksOnce([this] { config("walk")->setProperty(u"ldflags"_s, "-s"); });

        QCOMPARE(walk(m_project.get(), &QAStNode::clean), 1);
        m_studio->reset();
        m_studio->answer(QMessageBox::Cancel);
        QCOMPARE(walk(m_project.get(), &QAStNode::execute), 1);
        QCOMPARE(m_studio->requests().size(), 1);
    }

    // An interpreter that cannot start fails the walk at its first run.
    void interpreterThatCannotStart_data()
    {
        QTest::addColumn<QString>("top");
        QTest::newRow("source") << "l1.c";
        QTest::newRow("project") << "walk";
        QTest::newRow("library") << "lib1";
    }
    void interpreterThatCannotStart()
    {
        QFETCH(QString, top);
        QTemporaryDir broken;
        makeInstallation(broken.path(), false);
        qputenv("ZELTAHOME", QFile::encodeName(broken.path()));
        QCOMPARE(walk(node(top), &QAStNode::build), 1);
        qputenv("ZELTAHOME", QFile::encodeName(m_install->path()));
        QVERIFY(!node(top)->walkSucceeded());
        QVERIFY(!node("lib1")->walkSucceeded() || top == "l1.c");
        const QString interpreter = broken.path() + "/bin/intel/linux/Korvilperl";
        QVERIFY2(consoleLines().contains(interpreter + ": unable to start the command\n"),
                 qPrintable(console()));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
        QVERIFY(log().isEmpty());
        QVERIFY(!config("l1.c")->hasProperty(flagKey));
    }
};

QTEST_GUILESS_MAIN(TestWalk)
#include "tst_walk.moc"
