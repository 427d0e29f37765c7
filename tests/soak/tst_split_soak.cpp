// Soak test of the split on the fly: a writer process (split_writer.pl)
// appends numbered records in pieces of random size over several runs,
// truncating, replacing or removing the file between runs, while the
// split follows it with its survey on the normal event loop. Afterwards
// each output holds its records exactly once and in order.
//
// The amount of work is SDK110_SOAK_RECORDS records (a million by default)
// in SDK110_SOAK_RUNS runs (10); SDK110_SOAK_SEED picks the writer's pieces.
#include "QAFileSurvey.h"
#include "QASTSplitSurvey.h"
#include "TestPaths.h"

#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

int setting(const char* name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok && value > 0 ? value : fallback;
}

// The code of each output, as the writer cycles through them.
const char* const codes[] = {"xx", "PU", "QU", "NT", "SF", "tb"};
const QASTSplitSurvey::Output outputs[] = {
    QASTSplitSurvey::Results, QASTSplitSurvey::MemoryProfile, QASTSplitSurvey::PerformanceProfile,
    QASTSplitSurvey::Coverage, QASTSplitSurvey::Trace,        QASTSplitSurvey::EndOfTest};

}

class TestSplitSoak : public QObject {
    Q_OBJECT
private slots:
    void everyRecordOnceAndInOrder()
    {
        const int records = setting("SDK110_SOAK_RECORDS", 1000000);
        const int runs = setting("SDK110_SOAK_RUNS", 10);
        const int seed = setting("SDK110_SOAK_SEED", 1);
        QTemporaryDir dir;
        const QString input = dir.filePath(u"atlout.spt"_s);

        QASTSplitSurvey split(input, QString(), QString(), QString(), QString(), 5);
        split.splitExistingLines();
        split.survey()->start();

        QProcess writer;
        writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // The writer waits at each "sync" until a whole tick has looked at the
        // file after it: what it wrote before is then split, and the change it
        // makes next is seen on its own.
        bool syncAsked = false;
        int syncs = 0;
        connect(&writer, &QProcess::readyReadStandardOutput, this, [&] {
            while (writer.canReadLine())
                if (writer.readLine() == "sync\n")
                    syncAsked = true;
        });
        connect(split.survey(), &QAFileSurvey::surveyDone, this, [&] {
            if (!syncAsked)
                return;
            syncAsked = false;
            ++syncs;
            writer.write("go\n");
        });
        QEventLoop loop;
        connect(&writer, &QProcess::finished, &loop, &QEventLoop::quit);
        writer.start(u"perl"_s, {TestPaths::sourceDir() + u"/tests/soak/split_writer.pl"_s, input,
                      QString::number(records), QString::number(runs), QString::number(seed)});
        QVERIFY2(writer.waitForStarted(), qPrintable(writer.errorString()));
        loop.exec();
        QCOMPARE(writer.exitStatus(), QProcess::NormalExit);
        QCOMPARE(writer.exitCode(), 0);
        QCOMPARE(syncs, 2 * runs - 1);
        split.survey()->finish();

        std::vector<bool> seen(size_t(records), false);
        qint64 total = 0;
        for (int i = 0; i < 6; ++i) {
            QFile file(split.outputFile(outputs[i]));
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
            const QByteArray prefix = QByteArray(codes[i]) + ' ';
            qint64 previous = -1;
            while (!file.atEnd()) {
                const QByteArray line = file.readLine();
                QVERIFY2(line.startsWith(prefix) && line.endsWith('\n'), line.constData());
                const qsizetype blank = line.indexOf(' ', 3);
                bool ok = false;
                const qint64 number = line.mid(3, blank - 3).toLongLong(&ok);
                QVERIFY2(ok && number >= 0 && number < records, line.constData());
                QVERIFY2(number % 6 == i, line.constData());
                QVERIFY2(number > previous, qPrintable(u"%1: %2 after %3"_s
                                                            .arg(file.fileName()).arg(number).arg(previous)));
                QVERIFY2(!seen[size_t(number)], line.constData());
                seen[size_t(number)] = true;
                previous = number;
                ++total;
            }
        }
        QCOMPARE(total, qint64(records));
        QVERIFY(!QFile::exists(split.outputFile(QASTSplitSurvey::Rejected)));
    }
};

QTEST_MAIN(TestSplitSoak)
#include "tst_split_soak.moc"
