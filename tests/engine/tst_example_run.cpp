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

#include <QDirIterator>
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
    // library first, into the including project's build directory (the
    // sub-project inherits its relative settings); each node's objects in
    // its own directory; the compiler's command lines reach the console.
    void buildsEveryNode()
    {
        m_before = files();
        QVERIFY2(walk(m_project.get(), &QAStNode::build),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        for (const char* made : {"build/libprinter.a", "build/libcalc.a", "build/calc", "build/Unit tests",
                                 "build/libcalc.objects/src/calc.c.o", "build/Unit tests.objects/src/calc.c.o",
                                 "build/libprinter.objects/src/printer.c.o"})
            QVERIFY2(QFileInfo::exists(path(QLatin1String(made))), made);
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("sub/printer/build"))));
        const QString console = m_studio->consoleText(QAStData::OutputConsole);
        QVERIFY(console.contains(QLatin1String("-c ")));
        QVERIFY(!console.contains(QLatin1String("sub/printer/sub/printer")));
        QVERIFY(console.indexOf(QLatin1String("libprinter.a")) <
                console.indexOf(QLatin1String("libcalc.a")));
        // A build leaves the execution stages alone.
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("build/calc.spt"))));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
    }

    // A second build runs no compiler and says so; a header touched
    // recompiles exactly the sources that include it, in every node that
    // compiles them; a node built alone links what the others made.
    void buildsWhatChanged()
    {
        m_studio->reset();
        QVERIFY(walk(m_project.get(), &QAStNode::build));
        QString console = m_studio->consoleText(QAStData::OutputConsole);
        QVERIFY2(!console.contains(QLatin1String(" -c ")), qPrintable(console));
        for (const char* node : {"libprinter", "libcalc", "calc", "Unit tests"})
            QVERIFY2(console.contains(QLatin1String(node) + QLatin1String(": is up-to-date\n")), node);

        QTest::qSleep(10);
        QFile header(path(QStringLiteral("include/calc.h")));
        QVERIFY(header.open(QIODevice::Append));
        header.write("\n");
        header.close();
        m_studio->reset();
        QVERIFY(walk(m_project.get(), &QAStNode::build));
        console = m_studio->consoleText(QAStData::OutputConsole);
        QStringList compiled;
        for (const QString& line : console.split(u'\n')) {
            const qsizetype at = line.indexOf(QLatin1String(" -c "));
            if (at >= 0)
                compiled << QFileInfo(line.mid(at + 4).section(u' ', 0, 0)).fileName();
        }
        compiled.sort();
        QCOMPARE(compiled, (QStringList{"calc.c", "calc.c", "main.cpp", "test_calc.c"}));

        auto* application = qobject_cast<QAStNode*>(m_project->findNode(QStringLiteral("calc")));
        QVERIFY(QFile::remove(path(QStringLiteral("build/calc"))));
        m_studio->reset();
        QVERIFY2(walk(application, &QAStNode::build), qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        QVERIFY(QFileInfo::exists(path(QStringLiteral("build/calc"))));
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
        const QByteArray original = TestFiles::readFile(path(QStringLiteral("src/calc.c")));
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
        QVERIFY(console.contains(QLatin1String("libcalc: failed")));
        QVERIFY(console.contains(QLatin1String("libcalc: stopped")));
        TestFiles::writeFile(path(QStringLiteral("src/calc.c")), original);
    }

    // The clean of the project leaves the tree as it was before the build.
    void cleanRemovesWhatTheBuildMade()
    {
        QVERIFY(walk(m_project.get(), &QAStNode::clean));
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole).contains(QLatin1String("calc: Cleaning...")));
        QCOMPARE(files(), m_before);
    }

private:
    // Every file and directory of the project's copy.
    QStringList files() const
    {
        QStringList found;
        QDirIterator it(m_dir->path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            found << QDir(m_dir->path()).relativeFilePath(it.next());
        found.sort();
        return found;
    }

    QStringList m_before;
};

QTEST_GUILESS_MAIN(TestExampleRun)
#include "tst_example_run.moc"
