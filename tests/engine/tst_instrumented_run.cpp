// The example's unit test built with the instrumentation runtime and
// executed for real through the walk: its runtime output is split into the
// seven result files while it runs.
#include "QAFileSurvey.h"
#include "QASTSplitSurvey.h"
#include "QAStConfiguration.h"
#include "QAStNodeUnitTesting.h"
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
        *fault = QStringLiteral("a last line without its newline");
        return false;
    }
    qsizetype start = 0;
    while (start < content.size()) {
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

class TestInstrumentedRun : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }
    QByteArray result(int index) const { return TestFiles::readFile(m_unit->runtimeResultFiles().at(index)); }
    QString console() const { return m_studio->consoleText(QAStData::OutputConsole); }
    void setSetting(const char* key, const QVariant& value)
    {
        m_unit->currentConfiguration()->setProperty(QLatin1String(key), value);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;
    QAStNodeUnitTesting* m_unit = nullptr;

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
        m_unit = qobject_cast<QAStNodeUnitTesting*>(m_project->findNode(QStringLiteral("Unit tests")));
        QVERIFY(m_unit);
    }

    void cleanupTestCase()
    {
        m_project.reset();
        QAStProject::setModeBatch(false);
    }

    // The files are the environment script's, in the split's order.
    void resultFilesOfTheConfiguration()
    {
        QCOMPARE(m_unit->runtimeOutputFile(), path(QStringLiteral("build/Unit tests.spt")));
        QCOMPARE(m_unit->runtimeResultFiles(),
                 (QStringList{path("build/results/Unit tests.rio"), path("build/results/Unit tests.tpf"),
                              path("build/results/Unit tests.tqf"), path("build/results/Unit tests.tio"),
                              path("build/results/Unit tests.tdf"), path("build/Unit tests.end"),
                              path("build/Unit tests.rej")}));
        QAStNodeUnitTesting detached(QStringLiteral("alone"), QPixmap());
        QVERIFY(detached.runtimeResultFiles().isEmpty());
        QVERIFY(detached.runtimeOutputFile().isEmpty());
    }

    // The instrumented sources, the runtime and the wrapped allocation
    // functions make the program.
    void buildsWithTheRuntime()
    {
        QVERIFY2(walk(m_unit, &QAStNode::build), qPrintable(console()));
        const QString text = console();
        QVERIFY2(text.contains(QLatin1String("-finstrument-functions")), qPrintable(text));
        QVERIFY(text.contains(QLatin1String("-DKRT_COVERAGE=1 -DKRT_MEMORY=1 -DKRT_PERFORMANCE=1 -DKRT_TRACE=1")));
        QVERIFY(text.contains(QLatin1String("-Wl,--wrap=malloc,--wrap=free,--wrap=calloc,--wrap=realloc")));
        QVERIFY(QFileInfo::exists(path(QStringLiteral("build/Unit tests.objects/korvilrt-cpqt.o"))));
    }

    // The split follows the run: results are in their files while the test
    // program still runs (it waits for the gate file, made once they are),
    // and every kind of record is in its file, whole, when it has ended.
    void splitsWhileTheTestRuns()
    {
        const QString gate = path(QStringLiteral("gate"));
        setSetting("arguments", QStringLiteral("--rounds 2 --wait-for '%1'").arg(gate));
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
            QVERIFY2(wholeLinesOf(result(index), index, &fault),
                     qPrintable(QStringLiteral("file %1: %2").arg(index).arg(fault)));
        }
        QCOMPARE(result(Output::Rejected), QByteArray());

        const QStringList results = codesOf(result(Output::Results));
        QCOMPARE(results.first(), QStringLiteral("BT"));
        QCOMPARE(results.count(QStringLiteral("RL")), 2);
        QCOMPARE(results.last(), QStringLiteral("SM"));
        QVERIFY(result(Output::EndOfTest).startsWith("td \"Unit tests\" 0 1 0\n"));

        const QByteArray coverage = result(Output::Coverage);
        QVERIFY(coverage.startsWith("NT \""));
        QVERIFY(!coverage.contains("DT \"0\"")); // stamped on its way
        QVERIFY(coverage.contains("FT \"calc_evaluate\" 0x"));
        QVERIFY(coverage.contains("CO \"check_evaluate\" 32\n"));
        QVERIFY(codesOf(coverage).endsWith(QStringLiteral("TE")));

        const QStringList trace = codesOf(result(Output::Trace));
        QCOMPARE(trace.first(), QStringLiteral("TS"));
        QCOMPARE(trace.count(QStringLiteral("ME")), trace.count(QStringLiteral("MR")));
        QVERIFY(result(Output::Trace).contains("ME 0 \"main\" "));
        QCOMPARE(trace.last(), QStringLiteral("TM"));

        const QByteArray memory = result(Output::MemoryProfile);
        QVERIFY(memory.contains("\nPT \"\" \""));
        QCOMPARE(codesOf(memory).count(QStringLiteral("PB")), 32);
        QCOMPARE(codesOf(memory).count(QStringLiteral("PF")), 32);
        QVERIFY(memory.contains("PB 6 0x"));
        QVERIFY(memory.contains("\"check_evaluate\"\n"));
        QVERIFY(memory.endsWith(" 0 0\n")); // PS: nothing left allocated

        const QByteArray performance = result(Output::PerformanceProfile);
        QVERIFY(performance.startsWith("QU \""));
        QVERIFY(performance.contains("\nQD \""));
        QVERIFY(!performance.contains("\nQD\n"));
        QVERIFY(performance.contains("QF \"calc_evaluate\" 32 "));
        QVERIFY(codesOf(performance).endsWith(QStringLiteral("QT")));
    }

    // A second run, split once at its end (no on-the-fly setting), leaves
    // its own results only.
    void aSecondRunReplacesTheFirst()
    {
        setSetting("arguments", QStringLiteral("--rounds 1"));
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
        QCOMPARE(results.count(QStringLiteral("BT")), 1);
        QCOMPARE(results.count(QStringLiteral("RL")), 1);
        QCOMPARE(codesOf(result(Output::Coverage)).count(QStringLiteral("NT")), 1);
        QVERIFY(result(Output::Coverage).contains("CO \"check_evaluate\" 16\n"));
        QCOMPARE(codesOf(result(Output::Trace)).count(QStringLiteral("TS")), 1);
        QCOMPARE(codesOf(result(Output::MemoryProfile)).count(QStringLiteral("PB")), 16);
        QCOMPARE(codesOf(result(Output::EndOfTest)).size(), 1);
    }

    // A result file that cannot be written is told, and the other files
    // are written as usual.
    void anUnwritableResultFileIsTold()
    {
        const QString trace = m_unit->runtimeResultFiles().at(Output::Trace);
        QVERIFY(QFile::remove(trace));
        QVERIFY(QDir().mkpath(trace));
        setSetting("arguments", QStringLiteral("--rounds 1"));
        const bool ran = walk(m_unit, &QAStNode::execute);
        QDir(trace).removeRecursively();
        QVERIFY2(ran, qPrintable(console()));
        QVERIFY2(console().contains(QStringLiteral("Unit tests: cannot empty the result file %1: ").arg(trace)),
                 qPrintable(console()));
        QCOMPARE(codesOf(result(Output::Coverage)).count(QStringLiteral("NT")), 1);
        QVERIFY(result(Output::Results).contains("RL \"16 checks, 0 failed\""));
    }

    // Stopping the run stops the split: its final pass keeps what the
    // program wrote, whole, and the split goes.
    void stopEndsTheSplit()
    {
        const QString gate = path(QStringLiteral("never"));
        setSetting("arguments", QStringLiteral("--rounds 2 --wait-for '%1'").arg(gate));
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
        QVERIFY(codesOf(result(Output::Trace)).contains(QStringLiteral("ME")));
    }
};

QTEST_GUILESS_MAIN(TestInstrumentedRun)
#include "tst_instrumented_run.moc"
