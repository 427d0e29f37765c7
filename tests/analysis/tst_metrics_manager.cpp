// Computing metrics: the metrics driver run by the real interpreter over
// sources, one after another, with the progress and abort of the host.

#include "QAStMetricManager.h"
#include "QAStProject.h"
#include "QMetElement.h"
#include "QMetQuery.h"
#include "QMetReader.h"
#include "Recorders.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QPointer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestMetricsManager : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"perl"_s).isEmpty())
            QSKIP("perl is not installed");
    }

    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(false);
        // Blanks and quotes in every path the script receives.
        m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/metrics 'run'-XXXXXX");
        QVERIFY(m_dir->isValid());
        m_metdir = m_dir->filePath(u"met's"_s);
        TestFiles::copyTree(TestPaths::data(u"metrics"_s), m_dir->path());
        QVERIFY(QFile::copy(source("calc.c"), source("it's.c")));
    }

    void assignmentsAreEscaped()
    {
        QCOMPARE(QAStMetricManager::assignments("/m/it's", "/s/a.c", "/l/log"),
                 u"$METDIR='/m/it\\'s';\n$FILENAME='/s/a.c';\n$LOGFILENAME2='/l/log';\n"_s);
        QCOMPARE(QAStMetricManager::scriptFileName("/s/x/../a.c"), u"/s/a.c"_s);
        QCOMPARE(QAStMetricManager::assignments("/m", QStringList{"/s/a.c", "/s/it's.c"}, "/l/log"),
                 QStringLiteral("$METDIR='/m';\n$FILENAME='/s/a.c';\n$LOGFILENAME2='/l/log';\n"
                                "@FILENAMES=('/s/a.c', '/s/it\\'s.c');\n"));
        // Two sources of one name get two files.
        QVERIFY(QAStMetricManager::metricFileName("/m", "/a/util.c") !=
                QAStMetricManager::metricFileName("/m", "/b/util.c"));
        QVERIFY(QFileInfo(QAStMetricManager::metricFileName("/m", "/a/util.c")).fileName()
                    .startsWith(u"util.c."_s));
    }

    void filesRunOneAfterAnother_data()
    {
        QTest::addColumn<int>("batchSize");
        QTest::addColumn<int>("runs");
        QTest::newRow("one run for the batch") << QAStMetricManager::DefaultBatchSize << 1;
        QTest::newRow("a run for each file") << 1 << 2;
    }
    void filesRunOneAfterAnother()
    {
        QFETCH(int, batchSize);
        QAStMetricManager manager(m_metdir);
        manager.setBatchSize(batchSize);
        manager.setFileList({source("it's.c"), source("stack.cpp")});
        EndedRuns runs;
        const QStringList events = run(&manager);
        runs.stop();
        QTEST(runs.count(), "runs");
        QCOMPARE(events, QStringList({"started", "second start refused", "start it's.c",
                                      "end it's.c 1", "start stack.cpp", "end stack.cpp 1",
                                      "terminated canceled=0 state=1"}));
        QVERIFY(!manager.inProgress());
        QCOMPARE(m_studio->progressLabels(), QStringList({"Computing Metric in progress",
                              "Compute Metric for File:" + source("it's.c"),
                              "Compute Metric for File:" + source("stack.cpp")}));
        QCOMPARE(m_studio->progressCancelText(), u"Abort"_s);
        QCOMPARE(m_studio->progressMaximum(), 2);
        QCOMPARE(m_studio->progressValue(), 2);
        QVERIFY(!m_studio->progressRunning());

        // Each file began after the previous one had ended.
        const QStringList log = QString::fromUtf8(TestFiles::readFile(manager.logFileName()))
                                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(log.size(), 4);
        QVERIFY(log.at(0).startsWith("Metrics.pl: begin " + source("it's.c")));
        QVERIFY(log.at(1).startsWith("Metrics.pl: end " + source("it's.c")));
        QVERIFY(log.at(2).startsWith("Metrics.pl: begin " + source("stack.cpp")));

        // The script read the quoted paths back exactly.
        QCOMPARE(manager.metricFiles(),
                 QStringList({QAStMetricManager::metricFileName(m_metdir, source("it's.c")),
                              QAStMetricManager::metricFileName(m_metdir, source("stack.cpp"))}));
        QMetQuery query(manager.metricFiles());
        query.init();
        QCOMPARE(query.fileMetric(source("it's.c"), "VG"), 13.0f);
        QCOMPARE(query.fileElement(source("stack.cpp"))->children().size(), 5);
        QVERIFY(query.reader()->errors().isEmpty());
        // No assignment file is left behind.
        QCOMPARE(QDir(m_metdir).entryList({"*.pl"}, QDir::Files), QStringList());
    }

    void abortStopsTheRun_data()
    {
        QTest::addColumn<bool>("cancelEnabled");
        QTest::addColumn<int>("abortAt"); // files done when the user aborts
        QTest::addColumn<QStringList>("computed");
        QTest::newRow("abort after one file") << true << 1 << QStringList{"calc.c"};
        QTest::newRow("abort at once") << true << 0 << QStringList();
        QTest::newRow("abort disabled") << false << 1 << QStringList{"calc.c", "stack.h", "stack.cpp"};
    }
    void abortStopsTheRun()
    {
        QFETCH(bool, cancelEnabled);
        QFETCH(int, abortAt);
        QFETCH(QStringList, computed);
        m_studio->cancelProgressAt(abortAt);
        QPointer<QAStMetricManager> manager = new QAStMetricManager(m_metdir);
        manager->setCancelEnabled(cancelEnabled);
        manager->setAutoDeleteEnabled(true);
        manager->setFileList({source("calc.c"), source("stack.h"), source("stack.cpp")});
        // The files done keep their metrics; the run may have gone further
        // than the abort before it was killed, but tells of nothing more.
        QStringList metricFiles;
        connect(manager, &QAStMetricManager::computeMetricTerminated, this,
                [&] { metricFiles = manager->metricFiles(); });
        const QStringList events = run(manager);
        QCOMPARE(events.filter(QRegularExpression("^start ")).size(), computed.size());
        QCOMPARE(events.last(), u"terminated canceled=%1 state=%2"_s.arg(cancelEnabled).arg(!cancelEnabled));
        QCOMPARE(m_studio->progressCancelText(), cancelEnabled ? u"Abort"_s : QString());
        QVERIFY(!m_studio->progressRunning());
        QStringList measured;
        for (const QString& file : metricFiles) {
            QVERIFY(QFileInfo::exists(file));
            measured << QFileInfo(file).fileName().section(u'.', 0, -3);
        }
        QCOMPARE(measured, computed);
        QTRY_VERIFY(manager.isNull()); // deleted once the run ended
    }

    void stopKillsTheRunningScript()
    {
        // A source long enough for the script to be still running when stopped.
        const QByteArray unit = TestFiles::readFile(source("calc.c"));
        TestFiles::writeFile(source("long.c"), unit.repeated(2000));
        QAStMetricManager manager(m_metdir);
        manager.setFileList({source("long.c"), source("calc.c")});
        connect(&manager, &QAStMetricManager::computeFileStarted, &manager,
                &QAStMetricManager::stop, Qt::QueuedConnection);
        const QStringList events = run(&manager);
        QCOMPARE(events, QStringList({"started", "second start refused", "start long.c", "end long.c 0",
                                      "terminated canceled=0 state=0"}));
        QCOMPARE(manager.failedFiles(), QStringList{source("long.c")});
        QVERIFY(QDir(m_metdir).entryList({"*.met*"}, QDir::Files).isEmpty());
    }

    void failedFileDoesNotStopTheRun()
    {
        QAStMetricManager manager(m_metdir);
        manager.setFileList({source("missing.c"), source("calc.c")});
        const QStringList events = run(&manager);
        QCOMPARE(events.filter(u"end "_s), QStringList({"end missing.c 0", "end calc.c 1"}));
        QCOMPARE(events.last(), u"terminated canceled=0 state=0"_s);
        QCOMPARE(manager.failedFiles(), QStringList{source("missing.c")});
        QCOMPARE(manager.metricFiles().size(), 1);
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole)
                    .contains("Metrics.pl: cannot read " + source("missing.c")));
    }

    void withoutHostTheRunGoesToItsEnd()
    {
        m_studio.reset();
        QAStData::initialize(nullptr);
        QAStMetricManager manager(m_metdir);
        manager.setFileList({source("calc.c"), source("stack.h")});
        const QStringList events = run(&manager);
        QCOMPARE(events.last(), u"terminated canceled=0 state=1"_s);
        QCOMPARE(manager.metricFiles().size(), 2);
    }

private:
    // Runs the manager to its end; the events it signalled, in order, and
    // at its end whether it was canceled and its state.
    QStringList run(QAStMetricManager* manager)
    {
        QStringList events;
        connect(manager, &QAStMetricManager::computeMetricStarted, this, [&] { events << u"started"_s; });
        connect(manager, &QAStMetricManager::computeFileStarted, this,
                [&](const QString& f) { events << "start " + QFileInfo(f).fileName(); });
        connect(manager, &QAStMetricManager::computeFileTerminated, this, [&](const QString& f, bool ok) {
                    events << u"end %1 %2"_s.arg(QFileInfo(f).fileName()).arg(ok);
                });
        connect(manager, &QAStMetricManager::computeMetricTerminated, this, [&, manager] {
            events << u"terminated canceled=%1 state=%2"_s.arg(manager->wasCanceled()).arg(manager->state());
        });
        QSignalSpy terminated(manager, &QAStMetricManager::computeMetricTerminated);
        const QPointer<QAStMetricManager> guard(manager);
        if (!manager->start())
            return {u"refused"_s};
        if (!manager->start())
            events << u"second start refused"_s;
        if (!terminated.wait(60000))
            events << u"no end"_s;
        if (guard)
            disconnect(manager, nullptr, this, nullptr);
        return events;
    }
    QString source(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_metdir;
};

QTEST_MAIN(TestMetricsManager)
#include "tst_metrics_manager.moc"
