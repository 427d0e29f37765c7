// Sorting the runtime's result stream into the result files: the routing
// table and its odd rules, the output names, the time stamps, the rejected
// lines, what the files hold at every tick while a perl writer appends,
// the existing lines, the whole-file split and bad input; the Java
// profiler's variant.
#include "QAFileSurvey.h"
#include "QASTSplitJavaPSurvey.h"
#include "QASTSplitSurvey.h"
#include "QAStData.h"
#include "RecordingStudio.h"
#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using TestFiles::readFile;

namespace {

const char* const names[] = {"atlout.rio",    "mendralt.tpf", "tallivexlt.tqf", "zeltacov.tio",
                             "tracer.tdf",    "atlendtest.txt", "atlout.rej"};

void append(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    QCOMPARE(file.write(bytes), bytes.size());
}

// The seven files of a directory, by index.
QList<QByteArray> outputsIn(const QString& dir)
{
    QList<QByteArray> outputs;
    for (const char* name : names)
        outputs << readFile(QDir(dir).filePath(QLatin1String(name)));
    return outputs;
}

// ctime()'s form, without its "\n".
const QString timePattern = QStringLiteral(
    "(Mon|Tue|Wed|Thu|Fri|Sat|Sun) (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ 123]\\d "
    "[012]\\d:[0-5]\\d:[0-6]\\d \\d{4}");

// Appends records whose code tells the file they belong in, in chunks cut
// at random bytes, for a few thousand records.
const char* const writerScript = R"perl(
use strict; use warnings; use Time::HiRes qw(usleep);
my ($file, $records, $seed) = @ARGV;
srand($seed);
my @codes = ('SF', 'CO', 'PU', 'QT', 'tb', 'ZZ', 'Ok', 'te', 'CI', 'NT');
open(my $out, '>>', $file) or die; binmode $out;
my $text = '';
$text .= $codes[rand @codes] . " record $_ " . ('.' x int(rand(70))) . "\n" for 1 .. $records;
my $pos = 0;
while ($pos < length $text) {
    my $n = 1 + int(rand(rand() < 0.1 ? 3000 : 60));
    syswrite($out, substr($text, $pos, $n));
    $pos += $n;
    usleep(int(rand(2000))) if rand() < 0.3;
}
)perl";

// The file of a writer record, by its code: an oracle apart from the table.
int expectedIndex(const QByteArray& line)
{
    static const QHash<QByteArray, int> byCode = {{"SF", 4}, {"CI", 4}, {"CO", 3}, {"NT", 3},
                                                  {"PU", 1}, {"QT", 2}, {"tb", 5}};
    return byCode.value(line.left(2), 0);
}

}

class TestSplitSurvey : public QObject {
    Q_OBJECT
private slots:
    void routing_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("index");
        const char* const tables[] = {
            "PU PT PS PY PE PB PF PO PX", "QU QT QD QS QF", "NT DT CO FT DC TP TA TB TE EI",
            "SF CS CI LK ST NO NI DI ME MR MC SY SA AC LS LE TM TS TU OT US IN MS TX SO SI HS TI "
            "ID DB ED BA EA GL"};
        for (int index = 1; index <= 4; ++index)
            for (const QByteArray& code : QByteArray(tables[index - 1]).split(' '))
                QTest::newRow(code.constData()) << code + "-record 1 2\n" << index;
        QTest::newRow("pair outside the table") << QByteArray("ZZ top\n") << 0;
        QTest::newRow("upper-case and digit") << QByteArray("P1 x\n") << 0;
        QTest::newRow("upper-case and lower-case") << QByteArray("Pt x\n") << 0;
        QTest::newRow("upper-case alone") << QByteArray("P\n") << 0;
        QTest::newRow("lower-case pair") << QByteArray("pt x\n") << 0;
        QTest::newRow("t and b") << QByteArray("tb end\n") << 5;
        QTest::newRow("t and d") << QByteArray("td end\n") << 5;
        QTest::newRow("t and a") << QByteArray("ta\n") << 5;
        QTest::newRow("t and upper-case") << QByteArray("tX\n") << 5;
        QTest::newRow("t and digit") << QByteArray("t0\n") << 5;
        QTest::newRow("t alone") << QByteArray("t\n") << 5;
        QTest::newRow("t and e") << QByteArray("te end\n") << 0;
        QTest::newRow("t and z") << QByteArray("tz\n") << 0;
        QTest::newRow("t and a byte above 127") << QByteArray("t\xe9t\xe9\n") << 0;
        QTest::newRow("T and e") << QByteArray("Te\n") << 0;
        QTest::newRow("empty line") << QByteArray("\n") << 0;
        QTest::newRow("blank first") << QByteArray(" SF\n") << 0;
        QTest::newRow("a byte above 127 first") << QByteArray("\xc9SF\n") << 0;
        QTest::newRow("NUL first") << QByteArray("\0SF\n", 4) << 0;
    }
    // The index of each line, and the file it lands in through a split.
    void routing()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, index);
        QCOMPARE(QASTSplitSurvey::recordIndex(line.constData(), line.size()), index);
        QCOMPARE(QASTSplitSurvey::recordIndex(line.constData(), line.size() - 1), index);

        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        append(input, "ZZ before\n" + line + "ZZ after\n");
        QVERIFY(QASTSplitSurvey::splitFile(input, dir.path()));
        const QList<QByteArray> outputs = outputsIn(dir.path());
        if (index == 0) {
            QCOMPARE(outputs.at(0), "ZZ before\n" + line + "ZZ after\n");
        } else {
            QCOMPARE(outputs.at(0), QByteArray("ZZ before\nZZ after\n"));
            QCOMPARE(outputs.at(index), line);
        }
        for (int other = 1; other < QASTSplitSurvey::OutputCount; ++other)
            if (other != index)
                QVERIFY2(!QFile::exists(dir.filePath(QLatin1String(names[other]))), names[other]);
    }

    void stamps_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("written"); // a pattern; TIME stands for the time
        QTest::newRow("PT bare") << QByteArray("PT \n") << 1 << "PT \"\" \"TIME\"";
        QTest::newRow("PT one field") << QByteArray("PT \"main\"\n") << 1 << "PT \"\" \"TIME\"";
        QTest::newRow("PT two fields, one quoted with blanks")
            << QByteArray("PT \"a b c\" d\n") << 1 << "PT \"\" \"TIME\"";
        QTest::newRow("PT three fields") << QByteArray("PT \"a\" 12 \"b c\"\n") << 1
                                         << "PT \"a\" 12 \"b c\" \"TIME\"";
        QTest::newRow("PT three fields, an escaped quote")
            << QByteArray("PT \"a \\\" b\" c d\n") << 1 << "PT \"a \\\" b\" c d \"TIME\"";
        QTest::newRow("PT three fields, CRLF") << QByteArray("PT 1 2 3\r\n") << 1
                                               << "PT 1 2 3 \"TIME\"";
        QTest::newRow("PT without blank") << QByteArray("PT\n") << 1 << "PT";
        QTest::newRow("QD") << QByteArray("QD 12 13\n") << 2 << "QD \"TIME\"";
        QTest::newRow("QD without blank") << QByteArray("QDx\n") << 2 << "QDx";
        QTest::newRow("DT of 0") << QByteArray("DT \"0\"\n") << 3 << "DT \"TIME\"";
        QTest::newRow("DT of 0, more after") << QByteArray("DT \"0\" x\n") << 3 << "DT \"TIME\"";
        QTest::newRow("DT of 01") << QByteArray("DT \"01\"\n") << 3 << "DT \"01\"";
        QTest::newRow("DT of a date") << QByteArray("DT \"Mon\"\n") << 3 << "DT \"Mon\"";
        QTest::newRow("DT unquoted 0") << QByteArray("DT 0\n") << 3 << "DT 0";
    }
    // The records the studio stamps, through splitOneLine and through the
    // survey.
    void stamps()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, index);
        QFETCH(QString, written);
        const QRegularExpression pattern(
            QLatin1Char('^')
            + QRegularExpression::escape(written).replace(QStringLiteral("TIME"), timePattern)
            + QStringLiteral("\\n$"));
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        {
            QASTSplitSurvey split(input);
            split.splitOneLine(line.constData());
            line.chop(1);
            split.splitOneLine(line.constData()); // without its "\n"
        }
        // Through the survey, between two records of the same file.
        const QByteArray neighbour = QByteArray(&"  PUQUCO"[2 * index], 2) + " n\n";
        append(input, neighbour + line + "\n" + neighbour);
        {
            QASTSplitSurvey split(input);
            split.splitExistingLines();
        }
        const QList<QByteArray> lines = readFile(dir.filePath(QLatin1String(names[index])))
                                            .split('\n');
        QCOMPARE(lines.size(), 6); // five lines and the empty rest
        for (int i : {0, 1, 3})
            QVERIFY2(pattern.match(QString::fromLatin1(lines.at(i) + "\n")).hasMatch(),
                     lines.at(i).constData());
        QCOMPARE(lines.at(2) + "\n", neighbour);
        QCOMPARE(lines.at(4) + "\n", neighbour);
        if (written.contains(QStringLiteral("TIME")))
            QVERIFY(lines.at(0).contains(QByteArray::number(QDate::currentDate().year())));
    }

    void outputNames()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("run/runtime.out"));
        const auto inRun = [&](const char* name) {
            return QDir(dir.filePath(QStringLiteral("run"))).filePath(QLatin1String(name));
        };
        QASTSplitSurvey defaults(input);
        for (int i = 0; i < QASTSplitSurvey::OutputCount; ++i) {
            QCOMPARE(QASTSplitSurvey::defaultOutputName(i), QLatin1String(names[i]));
            QCOMPARE(defaults.outputFile(i), inRun(names[i]));
        }
        QCOMPARE(defaults.survey()->objectName(), QStringLiteral("qastsplit-survey"));
        QCOMPARE(defaults.survey()->findChild<QTimer*>(QStringLiteral("f-survey"))->interval(),
                 1000);

        QASTSplitSurvey named(input, "/r/c.tio", "/r/t.tdf", "/r/m.tpf", "/r/p.tqf", 250);
        QCOMPARE(named.outputFile(3), QStringLiteral("/r/c.tio"));
        QCOMPARE(named.outputFile(4), QStringLiteral("/r/t.tdf"));
        QCOMPARE(named.outputFile(1), QStringLiteral("/r/m.tpf"));
        QCOMPARE(named.outputFile(2), QStringLiteral("/r/p.tqf"));
        QCOMPARE(named.outputFile(0), inRun(names[0]));
        QCOMPARE(named.survey()->delay(), 250);

        QASTSplitSurvey some(input, QString(), "/r/t.tdf");
        QCOMPARE(some.outputFile(3), inRun(names[3]));
        QCOMPARE(some.outputFile(4), QStringLiteral("/r/t.tdf"));
        QCOMPARE(some.outputFile(1), inRun(names[1]));
    }

    // Lines appended with an index outside 0..5 are kept apart and the
    // console is told once.
    void rejectedLines()
    {
        RecordingStudio studio;
        QTemporaryDir dir;
        QASTSplitSurvey split(dir.filePath(QStringLiteral("runtime.out")));
        split.appendLine("first\n", 6);
        split.appendLine("second", -1);
        split.appendLine("third\n", 42);
        split.appendLine("fine\n", 5);
        split.closeOutputFile();
        QCOMPARE(readFile(dir.filePath(QStringLiteral("atlout.rej"))),
                 QByteArray("first\nsecond\nthird\n"));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("atlendtest.txt"))), QByteArray("fine\n"));
        QCOMPARE(studio.messages(QAStData::MessageConsole),
                 QStringList{QStringLiteral("Some lines have not been recognized during the split "
                                            "(file %1 contains the rejected lines)")
                                 .arg(dir.filePath(QStringLiteral("atlout.rej")))});
    }

    // While a writer appends, at every surveyDone each output holds exactly
    // the lines read so far that belong to it, in order, and whole.
    void completeAtEveryTick()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        QASTSplitSurvey split(input, QString(), QString(), QString(), QString(), 5);
        int ticks = 0;
        int ticksWithLines = 0;
        QString mismatch; // the first one
        const auto check = [&] {
            ++ticks;
            QByteArray read = readFile(input).left(split.survey()->offset());
            read.truncate(read.lastIndexOf('\n') + 1);
            QList<QByteArray> expected(QASTSplitSurvey::OutputCount);
            for (const QByteArray& line : read.split('\n'))
                if (!line.isEmpty())
                    expected[expectedIndex(line)] += line + '\n';
            const QList<QByteArray> outputs = outputsIn(dir.path());
            if (!read.isEmpty())
                ++ticksWithLines;
            for (int i = 0; i < QASTSplitSurvey::OutputCount; ++i)
                if (outputs.at(i) != expected.at(i) && mismatch.isEmpty())
                    mismatch = QStringLiteral("%1 at tick %2").arg(names[i]).arg(ticks);
        };
        connect(split.survey(), &QAFileSurvey::surveyDone, this, check);
        QSignalSpy appeared(&split, &QASTSplitSurvey::appeared);
        split.survey()->start();

        QProcess writer;
        writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        writer.start(QStringLiteral("perl"),
                     {QStringLiteral("-e"), QString::fromLatin1(writerScript), input,
                      QStringLiteral("3000"), QStringLiteral("11")});
        QVERIFY(writer.waitForStarted());
        QSignalSpy finished(&writer, &QProcess::finished);
        QVERIFY(finished.wait(60000));
        split.survey()->finish();
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
        QCOMPARE(appeared.count(), 1);
        QVERIFY(ticksWithLines > 3);
        const QList<QByteArray> outputs = outputsIn(dir.path());
        QCOMPARE(outputs.join().size(), readFile(input).size());
    }

    // What the input holds before the survey starts is split once, on
    // demand; a new run that truncates it is split from its start.
    void existingLinesAndNewRuns()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        append(input, "CO 1\nSF 2\npart");
        {
            QASTSplitSurvey skipping(input);
            skipping.survey()->survey();
            QVERIFY(outputsIn(dir.path()).join().isEmpty());
        }
        QASTSplitSurvey split(input);
        QSignalSpy shrinked(&split, &QASTSplitSurvey::shrinked);
        split.splitExistingLines();
        QCOMPARE(outputsIn(dir.path()),
                 (QList<QByteArray>{"", "", "", "CO 1\n", "SF 2\n", "", ""}));
        append(input, "ial\nCO 3\n");
        split.survey()->survey();
        QCOMPARE(outputsIn(dir.path()),
                 (QList<QByteArray>{"partial\n", "", "", "CO 1\nCO 3\n", "SF 2\n", "", ""}));

        QVERIFY(QFile::resize(input, 0));
        append(input, "CO 4\n");
        split.survey()->survey();
        QCOMPARE(shrinked.count(), 1);
        QCOMPARE(outputsIn(dir.path()).at(3), QByteArray("CO 1\nCO 3\nCO 4\n"));
    }

    // The whole-file split: outputs made afresh in a new directory, the
    // reasons it fails.
    void splitFile()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        append(input, "SF a\ntb end\nlast");
        const QString out = dir.filePath(QStringLiteral("results/one"));
        QString error;
        for (int i = 0; i < 2; ++i) { // again: the same files, not doubled
            QVERIFY(QASTSplitSurvey::splitFile(input, out, &error));
            QCOMPARE(outputsIn(out), (QList<QByteArray>{"last\n", "", "", "", "SF a\n", "tb end\n", ""}));
        }
        QVERIFY(!QASTSplitSurvey::splitFile(dir.filePath(QStringLiteral("none")), out, &error));
        QVERIFY(error.contains(dir.filePath(QStringLiteral("none"))));
        QVERIFY(!QASTSplitSurvey::splitFile(input, input + QStringLiteral("/below"), &error));
        QVERIFY(error.contains(input));
        const QString named = dir.filePath(QStringLiteral("tracer.tdf"));
        QVERIFY(QFile::copy(input, named));
        QVERIFY(!QASTSplitSurvey::splitFile(named, dir.path(), &error));
        QCOMPARE(readFile(named), readFile(input));
    }

    // Binary bytes, empty and one-byte lines, a line of many megabytes
    // without "\n": nothing lost but the bytes beyond the bound are cut
    // into lines of their own.
    void badInput()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        QByteArray bytes;
        for (int i = 0; i < 256; ++i)
            bytes += char(255 - i);
        const qsizetype max = QAFileSurvey::MaxLineLength;
        const QByteArray huge = "SF" + QByteArray(max + 100, 'x');
        static const char lines[] = "\n\n\nt\nT\nS\n\0\n";
        const QByteArray text =
            bytes + QByteArray(lines, sizeof lines - 1) + bytes + "\nPT" + huge;
        append(input, text);
        QVERIFY(QASTSplitSurvey::splitFile(input, dir.path()));
        const QList<QByteArray> outputs = outputsIn(dir.path());
        QCOMPARE(outputs.join().size(), text.size() + 2); // two "\n" added
        QCOMPARE(outputs.at(5), QByteArray("t\n"));
        QVERIFY(outputs.at(1).startsWith("PTSFxxx")); // not stamped: no blank
        QCOMPARE(outputs.at(1).size(), max + 1);
        QVERIFY(outputs.at(0).endsWith("\n" + QByteArray(104, 'x') + "\n"));
    }

    // An output that cannot be written loses its lines; the others go on.
    void unwritableOutput()
    {
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("runtime.out"));
        append(input, "SF 1\nCO 2\nSF 3\nCO 4\n");
        QASTSplitSurvey split(input, QString(), dir.filePath(QStringLiteral("no/such/dir/t.tdf")));
        split.splitExistingLines();
        QCOMPARE(outputsIn(dir.path()).at(3), QByteArray("CO 2\nCO 4\n"));
        QVERIFY(!QFile::exists(split.outputFile(4)));
    }

    void javaPaths_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("posix");
        QTest::addColumn<QByteArray>("windows");
        QTest::newRow("class") << QByteArray("PU \"com/acme/Shop\" 12\n")
                               << QByteArray("PU \"com.acme.Shop\" 12\n")
                               << QByteArray("PU \"com.acme.Shop\" 12\n");
        QTest::newRow("inner class") << QByteArray("SF \"a/b/C$D_1\"\n")
                                     << QByteArray("SF \"a.b.C$D_1\"\n")
                                     << QByteArray("SF \"a.b.C$D_1\"\n");
        QTest::newRow("source path") << QByteArray("SF \"com/acme/Shop.java\" 3\n")
                                     << QByteArray("SF \"com/acme/Shop.java\" 3\n")
                                     << QByteArray("SF \"com\\acme\\Shop.java\" 3\n");
        QTest::newRow("windows source path") << QByteArray("SF \"C:\\src\\Shop.java\"\n")
                                             << QByteArray("SF \"C:/src/Shop.java\"\n")
                                             << QByteArray("SF \"C:\\src\\Shop.java\"\n");
        QTest::newRow("descriptor") << QByteArray("PF \"(Ljava/lang/String;)V\"\n")
                                    << QByteArray("PF \"(Ljava/lang/String;)V\"\n")
                                    << QByteArray("PF \"(Ljava/lang/String;)V\"\n");
        QTest::newRow("no slash, unquoted slash")
            << QByteArray("PF \"Shop\" a/b \"\"\n") << QByteArray("PF \"Shop\" a/b \"\"\n")
            << QByteArray("PF \"Shop\" a/b \"\"\n");
        QTest::newRow("slash first or doubled")
            << QByteArray("PF \"/a/B\" \"a//B\"\n") << QByteArray("PF \"/a/B\" \"a//B\"\n")
            << QByteArray("PF \"/a/B\" \"a//B\"\n");
        QTest::newRow("quote never closed") << QByteArray("PF \"a/b\" \"c/d\n")
                                            << QByteArray("PF \"a.b\" \"c/d\n")
                                            << QByteArray("PF \"a.b\" \"c/d\n");
    }
    void javaPaths()
    {
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, posix);
        QFETCH(QByteArray, windows);
        QCOMPARE(QASTSplitJavaPSurvey::convertLine(line, QAInstall::Posix), posix);
        QCOMPARE(QASTSplitJavaPSurvey::convertLine(line, QAInstall::Windows), windows);
    }

    // Two profiler files into the memory-profile and trace files, tick by
    // tick; a restart empties them unless they are shared.
    void javaSplit()
    {
        QTemporaryDir dir;
        const QString one = dir.filePath(QStringLiteral("vm1.jp"));
        const QString two = dir.filePath(QStringLiteral("vm2.jp"));
        const QString tpf = dir.filePath(QStringLiteral("m.tpf"));
        const QString tdf = dir.filePath(QStringLiteral("t.tdf"));
        append(one, "PU \"a/B\" 1\nSF \"a/B.java\" 2\nCI \"a/B\" 3\npar");
        QASTSplitJavaPSurvey java({one, two}, tpf, tdf);
        QCOMPARE(java.inputFiles(), (QStringList{one, two}));
        java.tickReceived();
        QCOMPARE(readFile(tpf), QByteArray("PU \"a.B\" 1\n"));
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\n"));

        append(one, "t\nPF 4\n");
        append(two, "LE 5\nQT 6");
        java.stop();
        QCOMPARE(readFile(tpf), QByteArray("PU \"a.B\" 1\npart\nPF 4\nQT 6\n"));
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\nLE 5\n"));

        java.work_with_other_instr(true);
        QVERIFY(java.worksWithOtherInstrumentation());
        java.restart();
        java.tickReceived();
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\nLE 5\n"
                                           "SF \"a/B.java\" 2\nCI \"a.B\" 3\nLE 5\n"));

        java.work_with_other_instr(false);
        java.restart();
        java.tickReceived();
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\nLE 5\n"));
        QCOMPARE(readFile(tpf), QByteArray("PU \"a.B\" 1\npart\nPF 4\n"));
    }
};

QTEST_GUILESS_MAIN(TestSplitSurvey)
#include "tst_split_survey.moc"
