// The example project built, executed and cleaned for real: the
// installation's interpreter and drivers, gcc and g++, through the walk.
// Its unit test, built with the instrumentation runtime, has its runtime
// output split into the seven result files while it runs; the lines of a
// failed build's console open the files they name.
#include "QAFileSurvey.h"
#include "QAProcess.h"
#include "QASTSplitSurvey.h"
#include "QAStConfiguration.h"
#include "QAStNodeUnitTesting.h"
#include "QAStOutputWidget.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"
#include "TestWalk.h"

#include <QDirIterator>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

using Output = QASTSplitSurvey::Output;

// The record codes of the lines of a file.
QStringList codesOf(const QByteArray& content)
{
    QStringList codes;
    for (const QByteArray& line : content.split('\n'))
        if (!line.isEmpty())
            codes << QString::fromLatin1(line.left(2));
    return codes;
}

// Every line of content is whole and belongs to the file of index.
bool wholeLinesOf(const QByteArray& content, int index, QString* fault)
{
    if (!content.isEmpty() && !content.endsWith('\n')) {
        *fault = u"a last line without its newline"_s;
        return false;
    }
    for (qsizetype start = 0; start < content.size();) {
        const qsizetype end = content.indexOf('\n', start);
        const QByteArray line = content.mid(start, end - start);
        const bool recordShape = line.size() >= 2 && (line.size() == 2 || line.at(2) == ' ');
        if (!recordShape || QASTSplitSurvey::recordIndex(line.constData(), line.size()) != index) {
            *fault = QString::fromLatin1(line);
            return false;
        }
        start = end + 1;
    }
    return true;
}

} // namespace

class TestExampleRun : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }
    QString console() const { return m_studio->consoleText(QAStData::OutputConsole); }
    QByteArray result(int index) const { return TestFiles::readFile(m_unit->runtimeResultFiles().at(index)); }
    void setSetting(const char* key, const QVariant& value)
    {
        m_unit->currentConfiguration()->setProperty(QLatin1String(key), value);
    }
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

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;
    QAStNodeUnitTesting* m_unit = nullptr;
    QStringList m_before;
    QTemporaryDir m_gates; // the files a waiting test program looks for

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"gcc"_s).isEmpty() || QStandardPaths::findExecutable(u"perl"_s).isEmpty())
            QSKIP("gcc or perl is not installed");
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        m_dir = std::make_unique<QTemporaryDir>();
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir->path());
        m_project = std::make_unique<QAStProject>(u"calculator"_s, QPixmap());
        QVERIFY(m_project->open(path(u"calculator.rtp"_s)));
        m_unit = qobject_cast<QAStNodeUnitTesting*>(m_project->findNode(u"Unit tests"_s));
        QVERIFY(m_unit);
    }

    void cleanupTestCase()
    {
        m_project.reset();
        QAStProject::setModeBatch(false);
    }

    // The result files are the environment script's, in the split's order.
    void resultFilesOfTheConfiguration()
    {
        QCOMPARE(m_unit->runtimeOutputFile(), path(u"build/Unit tests.spt"_s));
        QCOMPARE(m_unit->runtimeResultFiles(),
                 QStringList({path("build/results/Unit tests.rio"), path("build/results/Unit tests.tpf"),
                              path("build/results/Unit tests.tqf"), path("build/results/Unit tests.tio"),
                              path("build/results/Unit tests.tdf"), path("build/Unit tests.end"),
                              path("build/Unit tests.rej")}));
        QAStNodeUnitTesting detached(u"alone"_s, QPixmap());
        QVERIFY(detached.runtimeResultFiles().isEmpty());
        QVERIFY(detached.runtimeOutputFile().isEmpty());
    }

    // Libraries, program and unit test are made in order, the sub-project's
    // library first, into the including project's build directory (the
    // sub-project inherits its relative settings); each node's objects in
    // its own directory; the compiler's command lines reach the console.
    void buildsEveryNode()
    {
        m_before = files();
        QVERIFY2(walk(m_project.get(), &QAStNode::build), qPrintable(console()));
        for (const char* made : {"build/libprinter.a", "build/libcalc.a", "build/calc", "build/Unit tests",
                                 "build/libcalc.objects/src/calc.c.o", "build/Unit tests.objects/src/calc.c.o",
                                 "build/libprinter.objects/src/printer.c.o"})
            QVERIFY2(QFileInfo::exists(path(QLatin1String(made))), made);
        QVERIFY(!QFileInfo::exists(path(u"sub/printer/build"_s)));
        QVERIFY(console().contains(QLatin1String("-c ")));
        QVERIFY(!console().contains(QLatin1String("sub/printer/sub/printer")));
        QVERIFY(console().indexOf(QLatin1String("libprinter.a")) < console().indexOf(QLatin1String("libcalc.a")));
        // A build leaves the execution stages alone.
        QVERIFY(!QFileInfo::exists(path(u"build/calc.spt"_s)));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
    }

    // A second build runs no compiler and says so; a header touched
    // recompiles exactly the sources that include it, in every node that
    // compiles them; a node built alone links what the others made.
    void buildsWhatChanged()
    {
        m_studio->reset();
        QVERIFY(walk(m_project.get(), &QAStNode::build));
        QVERIFY2(!console().contains(QLatin1String(" -c ")), qPrintable(console()));
        for (const char* node : {"libprinter", "libcalc", "calc", "Unit tests"})
            QVERIFY2(console().contains(QLatin1String(node) + QLatin1String(": is up-to-date\n")), node);
        QTest::qSleep(10);
        QFile header(path(u"include/calc.h"_s));
        QVERIFY(header.open(QIODevice::Append));
        header.write("\n");
        header.close();
        m_studio->reset();
        QVERIFY(walk(m_project.get(), &QAStNode::build));
        QStringList compiled;
        for (const QString& line : console().split(u'\n')) {
            const qsizetype at = line.indexOf(QLatin1String(" -c "));
            if (at >= 0)
                compiled << QFileInfo(line.mid(at + 4).section(u' ', 0, 0)).fileName();
        }
        compiled.sort();
        QCOMPARE(compiled, QStringList({"calc.c", "calc.c", "main.cpp", "test_calc.c"}));
        auto* application = qobject_cast<QAStNode*>(m_project->findNode(u"calc"_s));
        QVERIFY(QFile::remove(path(u"build/calc"_s)));
        m_studio->reset();
        QVERIFY2(walk(application, &QAStNode::build), qPrintable(console()));
        QVERIFY(QFileInfo::exists(path(u"build/calc"_s)));
    }

    // The test nodes run their programs and write their results.
    void executesTheTests()
    {
        QVERIFY2(walk(m_project.get(), &QAStNode::execute), qPrintable(console()));
        QVERIFY(console().contains(QLatin1String("16 checks, 0 failed")));
        QVERIFY(console().contains(QLatin1String("system test: 0 failed")));
        for (const char* results : {"build/calc.spt", "build/Unit tests.spt", "build/System tests.spt"})
            QVERIFY2(QFileInfo(path(QLatin1String(results))).size() > 0, results);
    }

    // A compile error stops the walk at its node and above, with the
    // compiler's file:line message on the console.
    void aFaultStopsTheWalk()
    {
        const QByteArray original = TestFiles::readFile(path(u"src/calc.c"_s));
        QFile source(path(u"src/calc.c"_s));
        QVERIFY(source.open(QIODevice::Append));
        source.write("\nint broken(void) { return }\n");
        source.close();
        auto* library = qobject_cast<QAStNode*>(m_project->findNode(u"libcalc"_s));
        QVERIFY(library);
        QVERIFY(!walk(library, &QAStNode::build));
        QVERIFY2(console().contains(QRegularExpression(u"calc\\.c:\\d+:"_s)), qPrintable(console()));
        QVERIFY(console().contains(QLatin1String("libcalc: failed")));
        QVERIFY(console().contains(QLatin1String("libcalc: stopped")));
        TestFiles::writeFile(path(u"src/calc.c"_s), original);
    }

    // The clean of the project leaves the tree as it was before the build.
    void cleanRemovesWhatTheBuildMade()
    {
        QVERIFY(walk(m_project.get(), &QAStNode::clean));
        QVERIFY(console().contains(QLatin1String("calc: Cleaning...")));
        QCOMPARE(files(), m_before);
    }

    // gcc's messages about a broken source and header, built with the real
    // drivers in a project directory with a blank in its name, shown in the
    // output window and double-clicked, open the files they name.
    void gccMessagesOpenTheirFiles()
    {
        m_studio->reset();
        QTemporaryDir temporary;
        const QString dir = temporary.filePath(u"my project"_s);
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, dir);
        QFile header(dir + u"/include/calc.h"_s);
        QVERIFY(header.open(QIODevice::Append));
        header.write("\nint broken(void) { return }\n");
        header.close();
        const int brokenLine = int(TestFiles::readFile(header.fileName()).count('\n'));
        QAStProject project(u"calculator"_s, QPixmap());
        QVERIFY(project.open(dir + u"/calculator.rtp"_s));
        auto* library = qobject_cast<QAStNode*>(project.findNode(u"libcalc"_s));
        QVERIFY(library);
        QSignalSpy finished(library, &QAStNode::buildExecuteFinished);
        library->build();
        QVERIFY(finished.wait(120000));
        QVERIFY(!library->walkSucceeded());
        QAStOutputWidget window(nullptr, "output");
        window.resize(900, 400);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.setBaseDirectory(library->directory());
        window.connectToEditor();
        for (const QString& chunk : m_studio->messages(QAStData::OutputConsole))
            window.Append(chunk);
        // The line of gcc's error and the line that says where the header
        // was included.
        const QStringList lines = window.toPlainText().split(u'\n');
        const auto lineOf = [&](const QString& pattern) {
            const QRegularExpression re(pattern);
            for (int n = 0; n < lines.size(); ++n)
                if (re.match(lines.at(n)).hasMatch())
                    return n;
            return -1;
        };
        const int error = lineOf(u"calc\\.h:%1:\\d+: error:"_s.arg(brokenLine));
        const int included = lineOf(u"^In file included from .*calc\\.c:\\d+:$"_s);
        QVERIFY2(error >= 0 && included >= 0, qPrintable(window.toPlainText()));
        const int includeLine = lines.at(included).section(u':', -2, -2).toInt();
        for (int n : {error, included}) {
            const QTextCursor at(window.document()->findBlockByNumber(n));
            QTest::mouseDClick(window.viewport(), Qt::LeftButton, {}, window.cursorRect(at).center() + QPoint(4, 0));
        }
        const QString calcH = QFileInfo(dir + u"/include/calc.h"_s).absoluteFilePath();
        const QString calcC = QFileInfo(dir + u"/src/calc.c"_s).absoluteFilePath();
        QCOMPARE(m_studio->editedFiles(), QStringList({calcH + u':' + QString::number(brokenLine),
                                                       calcC + u':' + QString::number(includeLine)}));
    }
    // Built alone after the clean, the unit test is made of the
    // instrumented sources, the runtime and the wrapped allocation functions.
    void buildsWithTheRuntime()
    {
        m_studio->reset();
        QVERIFY2(walk(m_unit, &QAStNode::build), qPrintable(console()));
        QVERIFY2(console().contains(QLatin1String("-finstrument-functions")), qPrintable(console()));
        QVERIFY(console().contains(QLatin1String("-DKRT_COVERAGE=1 -DKRT_MEMORY=1 -DKRT_PERFORMANCE=1 -DKRT_TRACE=1")));
        QVERIFY(console().contains(QLatin1String("-Wl,--wrap=malloc,--wrap=free,--wrap=calloc,--wrap=realloc")));
        QVERIFY(QFileInfo::exists(path(u"build/Unit tests.objects/korvilrt-cpqt.o"_s)));
    }

    // The split follows the run: results are in their files while the test
    // program still runs (it waits for the gate file, made once they are),
    // and every kind of record is in its file, whole, when it has ended.
    void splitsWhileTheTestRuns()
    {
        const QString gate = m_gates.filePath(u"gate"_s);
        setSetting("arguments", u"--rounds 2 --wait-for '%1'"_s.arg(gate));
        // A stale line of an earlier run.
        TestFiles::writeFile(m_unit->runtimeResultFiles().at(Output::Rejected), "stale\n");
        QByteArray seenResults, seenTrace;
        bool stillRunning = false;
        QList<QASTSplitSurvey*> splits;
        connect(m_unit, &QAStData::perlScriptStarted, this, [&] {
            QASTSplitSurvey* split = m_unit->runtimeSplit();
            QVERIFY(split);
            splits << split;
            QVERIFY(split->survey()->isActive());
            connect(split->survey(), &QAFileSurvey::surveyDone, this, [&] {
                if (!seenResults.isEmpty())
                    return;
                const QByteArray results = result(Output::Results);
                const QByteArray trace = result(Output::Trace);
                if (!results.contains("RL \"16 checks, 0 failed\"") || !trace.contains("ME "))
                    return;
                seenResults = results;
                seenTrace = trace;
                stillRunning = m_unit->isRunning();
                TestFiles::writeFile(gate, "go\n");
            });
        });
        const bool ran = walk(m_unit, &QAStNode::execute);
        disconnect(m_unit, &QAStData::perlScriptStarted, this, nullptr);
        QVERIFY2(ran, qPrintable(console()));
        QCOMPARE(splits.size(), 1);
        QVERIFY(!m_unit->runtimeSplit());
        QVERIFY2(!seenResults.isEmpty(), "no result reached its file during the run");
        QVERIFY(stillRunning);
        QVERIFY(!result(Output::Results).contains("FAILED"));
        QString fault;
        QVERIFY2(wholeLinesOf(seenResults, Output::Results, &fault), qPrintable(fault));
        QVERIFY2(wholeLinesOf(seenTrace, Output::Trace, &fault), qPrintable(fault));
        for (int index = 0; index < QASTSplitSurvey::OutputCount; ++index) {
            QVERIFY2(QFileInfo::exists(m_unit->runtimeResultFiles().at(index)), qPrintable(QString::number(index)));
            QVERIFY2(wholeLinesOf(result(index), index, &fault), qPrintable(u"file %1: %2"_s.arg(index).arg(fault)));
        }
        QCOMPARE(result(Output::Rejected), QByteArray());
        const QStringList results = codesOf(result(Output::Results));
        QCOMPARE(results.first(), u"BT"_s);
        QCOMPARE(results.count(u"RL"_s), 2);
        QCOMPARE(results.last(), u"SM"_s);
        QVERIFY(result(Output::EndOfTest).startsWith("td \"Unit tests\" 0 1 0\n"));
        const QByteArray coverage = result(Output::Coverage);
        QVERIFY(coverage.startsWith("NT \""));
        QVERIFY(!coverage.contains("DT \"0\"")); // stamped on its way
        QVERIFY(coverage.contains("FT \"calc_evaluate\" 0x"));
        QVERIFY(coverage.contains("CO \"check_evaluate\" 32\n"));
        QVERIFY(codesOf(coverage).endsWith(u"TE"_s));
        const QStringList trace = codesOf(result(Output::Trace));
        QCOMPARE(trace.first(), u"TS"_s);
        QCOMPARE(trace.count(u"ME"_s), trace.count(u"MR"_s));
        QVERIFY(result(Output::Trace).contains("ME 0 \"main\" "));
        QCOMPARE(trace.last(), u"TM"_s);
        const QByteArray memory = result(Output::MemoryProfile);
        QVERIFY(memory.contains("\nPT \"\" \""));
        QCOMPARE(codesOf(memory).count(u"PB"_s), 32);
        QCOMPARE(codesOf(memory).count(u"PF"_s), 32);
        QVERIFY(memory.contains("PB 6 0x"));
        QVERIFY(memory.contains("\"check_evaluate\"\n"));
        QVERIFY(memory.endsWith(" 0 0\n")); // PS: nothing left allocated
        const QByteArray performance = result(Output::PerformanceProfile);
        QVERIFY(performance.startsWith("QU \""));
        QVERIFY(performance.contains("\nQD \""));
        QVERIFY(!performance.contains("\nQD\n"));
        QVERIFY(performance.contains("QF \"calc_evaluate\" 32 "));
        QVERIFY(codesOf(performance).endsWith(u"QT"_s));
    }

    // A second run, split once at its end (no on-the-fly setting), leaves
    // its own results only.
    void aSecondRunReplacesTheFirst()
    {
        setSetting("arguments", u"--rounds 1"_s);
        setSetting("atc_onthefly", false);
        setSetting("att_on_fly", false);
        bool followed = true;
        connect(m_unit, &QAStData::perlScriptStarted, this,
                [&] { followed = m_unit->runtimeSplit()->survey()->isActive(); });
        const bool ran = walk(m_unit, &QAStNode::execute);
        disconnect(m_unit, &QAStData::perlScriptStarted, this, nullptr);
        QVERIFY2(ran, qPrintable(console()));
        QVERIFY(!followed);
        const QStringList results = codesOf(result(Output::Results));
        QCOMPARE(results.count(u"BT"_s), 1);
        QCOMPARE(results.count(u"RL"_s), 1);
        QCOMPARE(codesOf(result(Output::Coverage)).count(u"NT"_s), 1);
        QVERIFY(result(Output::Coverage).contains("CO \"check_evaluate\" 16\n"));
        QCOMPARE(codesOf(result(Output::Trace)).count(u"TS"_s), 1);
        QCOMPARE(codesOf(result(Output::MemoryProfile)).count(u"PB"_s), 16);
        QCOMPARE(codesOf(result(Output::EndOfTest)).size(), 1);
    }

    // A result file that cannot be written is told, and the other files
    // are written as usual.
    void anUnwritableResultFileIsTold()
    {
        const QString trace = m_unit->runtimeResultFiles().at(Output::Trace);
        QVERIFY(QFile::remove(trace));
        QVERIFY(QDir().mkpath(trace));
        setSetting("arguments", u"--rounds 1"_s);
        const bool ran = walk(m_unit, &QAStNode::execute);
        QDir(trace).removeRecursively();
        QVERIFY2(ran, qPrintable(console()));
        QVERIFY2(console().contains(u"Unit tests: cannot empty the result file %1: "_s.arg(trace)), qPrintable(console()));
        QCOMPARE(codesOf(result(Output::Coverage)).count(u"NT"_s), 1);
        QVERIFY(result(Output::Results).contains("RL \"16 checks, 0 failed\""));
    }

    // Stopping the run stops the split: its final pass keeps what the
    // program wrote, whole, and the split goes.
    void stopEndsTheSplit()
    {
        const QString gate = m_gates.filePath(u"never"_s);
        setSetting("arguments", u"--rounds 2 --wait-for '%1'"_s.arg(gate));
        setSetting("att_on_fly", true);
        bool stopped = false;
        connect(m_unit, &QAStData::perlScriptStarted, this, [&] {
            connect(m_unit->runtimeSplit()->survey(), &QAFileSurvey::surveyDone, this, [&] {
                if (!stopped && result(Output::Results).contains("RL \"16 checks")) {
                    stopped = true;
                    m_unit->stop();
                    QVERIFY(!m_unit->runtimeSplit()->survey()->isActive());
                }
            });
        });
        const bool ran = walk(m_unit, &QAStNode::execute);
        disconnect(m_unit, &QAStData::perlScriptStarted, this, nullptr);
        // The program outlives its killed driver: the gate lets it end.
        TestFiles::writeFile(gate, "go\n");
        QVERIFY(stopped);
        QVERIFY(!ran);
        QVERIFY(!m_unit->runtimeSplit());
        QString fault;
        for (int index = 0; index < QASTSplitSurvey::OutputCount; ++index)
            QVERIFY2(wholeLinesOf(result(index), index, &fault), qPrintable(fault));
        QVERIFY(codesOf(result(Output::Trace)).contains(u"ME"_s));
    }
};

QTEST_MAIN(TestExampleRun)
#include "tst_example_run.moc"
