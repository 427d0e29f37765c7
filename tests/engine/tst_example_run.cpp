// The example project built, executed and cleaned for real: the
// installation's interpreter and drivers, gcc and g++, through the walk.
#include "QAProcess.h"
#include "QAStConfiguration.h"
#include "QAStNode.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestWalk.h"
#include "TestPaths.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestExampleRun : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("gcc")).isEmpty() ||
            QStandardPaths::findExecutable(QStringLiteral("perl")).isEmpty())
            QSKIP("gcc or perl is not installed");
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        m_dir = std::make_unique<QTemporaryDir>();
        TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"),
                            m_dir->path());
        m_project = std::make_unique<QAStProject>(QStringLiteral("calculator"), QPixmap());
        QVERIFY(m_project->open(path(QStringLiteral("calculator.rtp"))));
    }

    void cleanupTestCase()
    {
        m_project.reset();
        QAStProject::setModeBatch(false);
    }

    // Libraries, program and unit test are made in order, the sub-project's
    // library first; the compiler's command lines reach the console.
    void buildsEveryNode()
    {
        QVERIFY2(walk(m_project.get(), &QAStNode::build),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        for (const char* made : {"sub/printer/build/libprinter.a", "build/libcalc.a", "build/calc",
                                 "build/Unit tests"})
            QVERIFY2(QFileInfo::exists(path(QLatin1String(made))), made);
        const QString console = m_studio->consoleText(QAStData::OutputConsole);
        QVERIFY(console.contains(QLatin1String("-c ")));
        QVERIFY(console.indexOf(QLatin1String("libprinter.a")) <
                console.indexOf(QLatin1String("libcalc.a")));
        // A build leaves the execution stages alone.
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("build/calc.spt"))));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
    }

    // The test nodes run their programs and write their results.
    void executesTheTests()
    {
        QVERIFY2(walk(m_project.get(), &QAStNode::execute),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        const QString console = m_studio->consoleText(QAStData::OutputConsole);
        QVERIFY(console.contains(QLatin1String("16 checks, 0 failed")));
        QVERIFY(console.contains(QLatin1String("system test: 0 failed")));
        for (const char* results : {"build/calc.spt", "build/Unit tests.spt", "build/System tests.spt"})
            QVERIFY2(QFileInfo(path(QLatin1String(results))).size() > 0, results);
    }

    // A compile error stops the walk at its node and above, with the
    // compiler's file:line message on the console.
    void aFaultStopsTheWalk()
    {
        QFile source(path(QStringLiteral("src/calc.c")));
        QVERIFY(source.open(QIODevice::Append));
        source.write("\nint broken(void) { return }\n");
        source.close();
        auto* library = qobject_cast<QAStNode*>(m_project->findNode(QStringLiteral("libcalc")));
        QVERIFY(library);
        QVERIFY(!walk(library, &QAStNode::build));
        const QString console = m_studio->consoleText(QAStData::OutputConsole);
        QVERIFY2(console.contains(QRegularExpression(QStringLiteral("calc\\.c:\\d+:"))),
                 qPrintable(console));
        QVERIFY(console.contains(QLatin1String("calc.c: failed")));
        QVERIFY(console.contains(QLatin1String("libcalc: stopped")));
    }

    void cleanRemovesWhatTheBuildMade()
    {
        auto* application = qobject_cast<QAStNode*>(m_project->findNode(QStringLiteral("calc")));
        QVERIFY(walk(application, &QAStNode::clean));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("build/calc"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("build/main.o"))));
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole).contains(QLatin1String("calc: Cleaning...")));
    }
};

QTEST_GUILESS_MAIN(TestExampleRun)
#include "tst_example_run.moc"
