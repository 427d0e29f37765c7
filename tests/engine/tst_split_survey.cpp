// Following a growing file and splitting it: the survey (whole lines once and
// in order across cut writes and new runs, signals, policies, long lines,
// binary bytes) and the split into the result files (routing, names, stamps,
// rejected lines, every tick, whole-file split, bad input, the Java variant),
// with real perl writers appending while the survey runs.
#include "QAFileSurvey.h"
#include "QASTSplitJavaPSurvey.h"
#include "QASTSplitSurvey.h"
#include "QAStData.h"
#include "RecordingStudio.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;
using TestFiles::readFile;

namespace {

// Appends runs of random lines to a file, each run written in chunks cut
// at random bytes, some written at once, some after a pause. Before each
// new run it leaves <file>.ready<run> and waits for <file>.ack<run>, then
// begins the run as the mode says: append (go on), truncate (open the
// file anew), remove (unlink, pause, create), replace (write the first
// part into another file and rename it over). Everything written also
// goes to the expected file. With "partial", the last line has no "\n".
// With "big", a new run's first chunk is larger than the whole previous
// run, so the file is longer than before at the next tick.
const char* const writerScript = R"perl(
use strict; use warnings; use Time::HiRes qw(usleep);
my ($file, $expected, $mode, $runs, $lines, $maxLength, $seed, $partial, $big) = @ARGV;
srand($seed);
open(my $all, '>>', $expected) or die; binmode $all;
my @codes = ('SF', 'CO', 'PU', 'QT', 'tb', 'Result', '', 'x');
my $previous = 0;
for my $run (1 .. $runs) {
    my $text = '';
    for my $i (1 .. $lines) {
        $text .= $codes[rand @codes] . " run $run line $i " . ('=' x int(rand($maxLength))) . "\n";
    }
    chop $text if $partial && $run == $runs;
    my $first = $big && $run > 1 ? $previous + 10 : 0;
    $first = length $text if $first > length $text;
    if ($run > 1) {
        open(my $ready, '>', "$file.ready$run") or die; close $ready;
        usleep(2000) until -e "$file.ack$run";
        if ($mode eq 'truncate') { open(my $f, '>', $file) or die; close $f; }
        if ($mode eq 'remove') { unlink $file; usleep(int(rand(30000))); }
        if ($mode eq 'replace') {
            open(my $f, '>', "$file.new") or die; binmode $f;
            syswrite($f, substr($text, 0, $first)); close $f;
            rename("$file.new", $file) or die;
        }
    }
    open(my $out, '>>', $file) or die; binmode $out;
    my $pos = $mode eq 'replace' && $run > 1 ? $first : 0;
    if ($first && $mode ne 'replace') { syswrite($out, substr($text, 0, $first)); $pos = $first; }
    while ($pos < length $text) {
        my $n = 1 + int(rand(rand() < 0.2 ? 4 * $maxLength + 200 : 40));
        $n = length($text) - $pos if $pos + $n > length $text;
        syswrite($out, substr($text, $pos, $n));
        $pos += $n;
        usleep(int(rand(3000))) if rand() < 0.2;
    }
    close $out;
    print $all $text;
    $previous = length $text;
}
)perl";

// Runs the writer (file, expected, mode, runs, lines, maxLength, seed,
// partial, big) to its end while the event loop turns.
void runWriter(const QStringList& args)
{
    QProcess writer;
    writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    writer.start(u"perl"_s, QStringList{u"-e"_s, QString::fromLatin1(writerScript)} + args);
    QVERIFY(writer.waitForStarted());
    QSignalSpy finished(&writer, &QProcess::finished);
    QVERIFY(finished.wait(120000));
    QCOMPARE(writer.exitCode(), 0);
}

using Lines = QList<QByteArray>;

// Everything a survey emits.
struct Recorder {
    explicit Recorder(QAFileSurvey* survey)
    {
        QObject::connect(survey, &QAFileSurvey::newLines, &context, [this](const QByteArray& lines) {
                             received += lines;
                             blocks << QByteArray(lines.constData(), lines.size());
                         });
        QObject::connect(survey, &QAFileSurvey::hasNewLine, &context,
                         [this](const char* line) { lines << QByteArray(line); });
        const auto log = [this, survey](void (QAFileSurvey::*signal)(), const char* name) {
            QObject::connect(survey, signal, &context, [this, name] { events << name; });
        };
        log(&QAFileSurvey::fileAppear, "appear");
        log(&QAFileSurvey::fileDisappear, "disappear");
        log(&QAFileSurvey::fileShrink, "shrink");
        log(&QAFileSurvey::fileGrow, "grow");
    }
    // The lines and the events of one tick, forgotten afterwards.
    Lines take() { return std::exchange(lines, {}); }
    QStringList takeEvents() { return std::exchange(events, {}); }

    QByteArray received; // newLines, joined
    Lines blocks;        // newLines, one entry each
    Lines lines;         // hasNewLine
    QStringList events;
    QObject context;
};

void append(const QString& path, const QByteArray& bytes, QIODevice::OpenMode mode = QIODevice::Append)
{
    QFile file(path);
    QVERIFY(file.open(mode));
    QCOMPARE(file.write(bytes), bytes.size());
}

void rewrite(const QString& path, const QByteArray& bytes)
{
    append(path, bytes, QIODevice::WriteOnly | QIODevice::Truncate);
}

// Where two texts first differ, with the line around it in each.
QString firstDifference(const QByteArray& received, const QByteArray& written)
{
    qsizetype at = 0;
    while (at < received.size() && at < written.size() && received.at(at) == written.at(at))
        ++at;
    const auto around = [at](const QByteArray& text) {
        return QString::fromLatin1(text.mid(text.lastIndexOf('\n', at - 1) + 1, 80).toPercentEncoding(" =\"", "\n"));
    };
    return u"%1 bytes received, %2 written, first difference at %3:\n  received %4\n  written  %5"_s
        .arg(received.size()).arg(written.size()).arg(at).arg(around(received), around(written));
}

const char* const names[] = {"atlout.rio",    "mendralt.tpf", "tallivexlt.tqf", "zeltacov.tio",
                             "tracer.tdf",    "atlendtest.txt", "atlout.rej"};

// The seven files of a directory, by index.
Lines outputsIn(const QString& dir)
{
    Lines outputs;
    for (const char* name : names)
        outputs << readFile(QDir(dir).filePath(QLatin1String(name)));
    return outputs;
}

// ctime()'s form, without its "\n".
const QString timePattern = QStringLiteral(
    "(Mon|Tue|Wed|Thu|Fri|Sat|Sun) (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ 123]\\d "
    "[012]\\d:[0-5]\\d:[0-6]\\d \\d{4}");

// The file of a writer's line, by its code: an oracle apart from the table.
int expectedIndex(const QByteArray& line)
{
    static const QHash<QByteArray, int> byCode = {{"SF", 4}, {"CO", 3}, {"PU", 1}, {"QT", 2}, {"tb", 5}};
    return byCode.value(line.left(2), 0);
}

}

class TestSplitSurvey : public QObject {
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_input; // runtime.out in the test's directory
    QString path(const QString& name) const { return m_dir->filePath(name); }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_input = path(u"runtime.out"_s);
    }

    void followsWriter_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("runs");
        QTest::addColumn<int>("lines");
        QTest::addColumn<int>("maxLength");
        QTest::addColumn<int>("delay");
        QTest::addColumn<bool>("partial");
        QTest::addColumn<bool>("big");
        QTest::newRow("one run, short lines") << "append" << 1 << 3000 << 20 << 5 << false << false;
        QTest::newRow("one run, last line unfinished") << "append" << 1 << 1000 << 60 << 10 << true << false;
        QTest::newRow("lines longer than a read block") << "append" << 1 << 40 << 400000 << 10 << false << false;
        QTest::newRow("new runs truncate the file") << "truncate" << 4 << 400 << 50 << 10 << false << false;
        QTest::newRow("a new run writes past the old end at once")
            << "truncate" << 3 << 300 << 50 << 40 << false << true;
        QTest::newRow("new runs remove and create the file") << "remove" << 4 << 400 << 50 << 10 << true << false;
        QTest::newRow("new runs rename another file over it") << "replace" << 4 << 400 << 50 << 10 << false << true;
    }
    // The lines received equal the lines written, whatever the cuts and
    // the runs; every emission holds whole lines.
    void followsWriter()
    {
        QFETCH(int, runs);
        QFETCH(int, delay);
        QFETCH(bool, partial);
        const QString expected = path(u"expected.out"_s);
        QAFileSurvey survey(m_input, delay);
        Recorder recorder(&survey);
        int acknowledged = 1;
        // A new run may begin once everything of the last one was read.
        connect(&survey, &QAFileSurvey::surveyDone, &recorder.context, [&] {
            const QString ready = m_input + u".ready%1"_s.arg(acknowledged + 1);
            if (QFile::exists(ready) && survey.offset() == QFileInfo(m_input).size()) {
                ++acknowledged;
                QFile ack(m_input + u".ack%1"_s.arg(acknowledged));
                QVERIFY(ack.open(QIODevice::WriteOnly));
            }
        });
        survey.start();
        QFETCH(QString, mode);
        QFETCH(int, lines);
        QFETCH(int, maxLength);
        QFETCH(bool, big);
        runWriter({m_input, expected, mode, QString::number(runs), QString::number(lines),
                   QString::number(maxLength), QString::number(qHash(QByteArray(QTest::currentDataTag())) % 1000),
                   QString::number(partial), QString::number(big)});
        survey.finish();
        const QByteArray written = readFile(expected) + (partial ? "\n" : "");
        QVERIFY2(recorder.received == written, qPrintable(firstDifference(recorder.received, written)));
        QVERIFY(std::all_of(recorder.blocks.begin(), recorder.blocks.end(),
                            [](const QByteArray& block) { return block.endsWith('\n'); }));
        // One hasNewLine per line, the same bytes.
        QCOMPARE(recorder.lines.size(), written.count('\n'));
        QVERIFY(recorder.lines.join() == written);
        QCOMPARE(acknowledged, runs);
        QVERIFY(!survey.isActive());
    }

    // The signals of each change, in a survey ticked by hand.
    void signalsOfChanges()
    {
        QAFileSurvey survey(m_input, 1000);
        Recorder r(&survey);
        QSignalSpy done(&survey, &QAFileSurvey::surveyDone);
        survey.survey(); // absent from the start: waited for, nothing said
        QCOMPARE(r.takeEvents(), QStringList());
        QCOMPARE(done.count(), 1);
        append(m_input, "a\nb");
        survey.survey();
        QCOMPARE(r.takeEvents(), (QStringList{"appear", "grow"}));
        QCOMPARE(r.take(), Lines{"a\n"});
        survey.survey(); // nothing new
        QCOMPARE(r.takeEvents(), QStringList());
        append(m_input, "c\n");
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList{"grow"});
        QCOMPARE(r.take(), Lines{"bc\n"});
        rewrite(m_input, "x\ny"); // a new run, shorter
        survey.survey();
        QCOMPARE(r.takeEvents(), (QStringList{"shrink", "grow"}));
        QCOMPARE(r.take(), Lines{"x\n"});
        QVERIFY(QFile::remove(m_input)); // the unfinished line ends with its file
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList{"disappear"});
        QCOMPARE(r.take(), Lines{"y\n"});
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList());
        append(m_input, "z\n");
        survey.survey();
        QCOMPARE(r.takeEvents(), (QStringList{"appear", "grow"}));
        QCOMPARE(r.take(), Lines{"z\n"});
        QCOMPARE(done.count(), 8);
    }

    void policies_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QAFileSurvey::Policy>("policy");
        QTest::addColumn<Lines>("atChange");   // lines of the tick that sees it
        QTest::addColumn<bool>("active");      // after that tick
        QTest::addColumn<Lines>("afterwards"); // "ial\n" appended, start(), a tick
        const Lines both{"3\n", "4\n"}, all{"3\n", "4\n", "partial\n"}, last{"partial\n"};
        for (const char* change : {"shrink", "disappear", "replace"}) {
            QTest::addRow("%s, stop", change) << change << QAFileSurvey::Stop << Lines{} << false << all;
            QTest::addRow("%s, from start", change) << change << QAFileSurvey::FromStart << both << true << last;
            // Absent at the restart: nothing of it to skip.
            QTest::addRow("%s, from end", change) << change << QAFileSurvey::FromEnd
                                                  << (qstrcmp(change, "disappear") == 0 ? both : Lines{}) << true
                                                  << last;
        }
    }
    void policies()
    {
        QFETCH(QString, change);
        QFETCH(QAFileSurvey::Policy, policy);
        // A replacing file is longer than what was read: no shrink to see.
        const QByteArray first = change == QLatin1String("shrink") ? "one\ntwo\nthree\n" : "1\n";
        append(m_input, first);
        QAFileSurvey survey(m_input, 60000);
        survey.setShrinkPolicy(policy);
        survey.setDisappearPolicy(policy);
        Recorder r(&survey);
        survey.start(); // ticked by hand: the timer never runs out
        survey.survey();
        QCOMPARE(r.take().join(), first);
        r.takeEvents();
        const QByteArray next = "3\n4\npart";
        if (change == QLatin1String("disappear")) {
            QVERIFY(QFile::remove(m_input));
            survey.survey();
            QCOMPARE(r.takeEvents(), QStringList{"disappear"});
            append(m_input, next);
            if (survey.isActive())
                survey.survey();
        } else {
            if (change == QLatin1String("shrink")) {
                rewrite(m_input, next);
            } else {
                append(path(u"other.out"_s), next);
                QVERIFY(QFile::rename(m_input, path(u"old.out"_s)));
                QVERIFY(QFile::rename(path(u"other.out"_s), m_input));
            }
            survey.survey();
            QCOMPARE(r.takeEvents().value(0), change == QLatin1String("shrink") ? "shrink" : "disappear");
        }
        QTEST(r.take(), "atChange");
        QTEST(survey.isActive(), "active");
        append(m_input, "ial\n");
        survey.start();
        survey.survey();
        QTEST(r.take(), "afterwards");
    }

    // A burst of changes is told once, when it has settled.
    void modificationSettles()
    {
        QAFileSurvey survey(m_input, 60000);
        QCOMPARE(survey.modificationDelay(), 500);
        survey.setModificationDelay(100);
        QSignalSpy settled(&survey, &QAFileSurvey::fileModified);
        QSignalSpy modified(&survey, &QAFileSurvey::modified);
        for (int i = 0; i < 3; ++i) {
            append(m_input, "line\n");
            survey.survey();
        }
        QVERIFY(survey.modificationTime().isValid());
        QCOMPARE(settled.count(), 0);
        QVERIFY(settled.wait(5000));
        QTest::qWait(300);
        QCOMPARE(settled.count(), 1);
        QCOMPARE(modified.count(), 1);
        QCOMPARE(modified.at(0).at(0).toString(), m_input);
    }

    // The final pass reads what remains, then the unfinished line.
    void finishEndsTheLastLine()
    {
        QAFileSurvey survey(m_input, 60000);
        QStringList order;
        connect(&survey, &QAFileSurvey::surveyDone, &survey, [&] { order << "done"; });
        connect(&survey, &QAFileSurvey::hasNewLine, &survey,
                [&](const char* line) { order << QString::fromLatin1(line); });
        survey.start();
        append(m_input, "x\ny");
        survey.finish();
        QCOMPARE(order, (QStringList{"x\n", "y\n", "done"}));
        QVERIFY(!survey.isActive());
        survey.finish(); // nothing left: no line, no "\n" alone
        QCOMPARE(order, (QStringList{"x\n", "y\n", "done", "done"}));
    }

    // Lines longer than the bound go out in pieces; the memory held stays
    // bounded while the line is still unfinished. A line of exactly the
    // bound stays whole.
    void longLinesAreCut()
    {
        const qsizetype max = QAFileSurvey::MaxLineLength;
        QAFileSurvey survey(m_input, 60000);
        Recorder r(&survey);
        for (const QByteArray& bytes : {QByteArray(max - 1, 'a'), QByteArray(12, 'b'), QByteArray("\nend\n"),
                                        QByteArray(max, 'c') + "\n"}) {
            append(m_input, bytes);
            survey.survey();
        }
        QCOMPARE(r.blocks.size(), 4);
        QCOMPARE(r.blocks.at(0), QByteArray(max - 1, 'a') + "b\n");
        QCOMPARE(r.blocks.at(1), QByteArray(11, 'b') + "\n");
        QCOMPARE(r.blocks.at(2), QByteArray("end\n"));
        QCOMPARE(r.blocks.at(3).size(), max + 1);
    }

    // Any byte passes unchanged through newLines; hasNewLine ends at a NUL.
    void binaryBytes()
    {
        QByteArray bytes; // 0 to 255: a "\n" at 10
        for (int i = 0; i < 256; ++i)
            bytes += char(i);
        append(m_input, bytes + "\r\n" + bytes);
        QAFileSurvey survey(m_input, 60000);
        Recorder r(&survey);
        survey.finish();
        QCOMPARE(r.received, bytes + "\r\n" + bytes + "\n");
        QCOMPARE(r.lines, (Lines{"", bytes.mid(11) + "\r\n", "", bytes.mid(11) + "\n"}));
    }

    // Receivers may restart the survey or tick it again from a signal.
    void receiversMayRestart()
    {
        append(m_input, "a\nb\nc\n");
        QAFileSurvey survey(m_input, 60000);
        Lines lines;
        bool restarted = false;
        connect(&survey, &QAFileSurvey::hasNewLine, &survey, [&](const char* line) {
            lines << QByteArray(line);
            survey.survey(); // ignored: a tick is running
            if (!std::exchange(restarted, true))
                survey.restart(true);
        });
        survey.survey();
        QCOMPARE(lines, Lines{"a\n"});
        QVERIFY(survey.isActive());
        survey.survey();
        QCOMPARE(lines, (Lines{"a\n", "a\n", "b\n", "c\n"}));
    }

    // --- the split

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
        const auto row = [](const char* tag, const QByteArray& line, int index) {
            QTest::newRow(tag) << line << index;
        };
        row("pair outside the table", "ZZ top\n", 0);
        row("upper-case and digit", "P1 x\n", 0);
        row("upper-case and lower-case", "Pt x\n", 0);
        row("upper-case alone", "P\n", 0);
        row("lower-case pair", "pt x\n", 0);
        row("t and b", "tb end\n", 5);
        row("t and d", "td end\n", 5);
        row("t and a", "ta\n", 5);
        row("t and upper-case", "tX\n", 5);
        row("t and digit", "t0\n", 5);
        row("t alone", "t\n", 5);
        row("t and e", "te end\n", 0);
        row("t and z", "tz\n", 0);
        row("t and a byte above 127", "t\xe9t\xe9\n", 0);
        row("T and e", "Te\n", 0);
        row("empty line", "\n", 0);
        row("blank first", " SF\n", 0);
        row("a byte above 127 first", "\xc9SF\n", 0);
        row("NUL first", QByteArray("\0SF\n", 4), 0);
    }
    // The index of each line, and the file it lands in through a split.
    void routing()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, index);
        QCOMPARE(QASTSplitSurvey::recordIndex(line.constData(), line.size()), index);
        QCOMPARE(QASTSplitSurvey::recordIndex(line.constData(), line.size() - 1), index);
        append(m_input, "ZZ before\n" + line + "ZZ after\n");
        QVERIFY(QASTSplitSurvey::splitFile(m_input, m_dir->path()));
        const Lines outputs = outputsIn(m_dir->path());
        if (index == 0) {
            QCOMPARE(outputs.at(0), "ZZ before\n" + line + "ZZ after\n");
        } else {
            QCOMPARE(outputs.at(0), QByteArray("ZZ before\nZZ after\n"));
            QCOMPARE(outputs.at(index), line);
        }
        for (int other = 1; other < QASTSplitSurvey::OutputCount; ++other)
            if (other != index)
                QVERIFY2(!QFile::exists(path(QLatin1String(names[other]))), names[other]);
    }

    void stamps_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("written"); // a pattern; TIME stands for the time
        const auto row = [](const char* tag, const QByteArray& line, int index, const char* written) {
            QTest::newRow(tag) << line << index << QString::fromLatin1(written);
        };
        row("PT bare", "PT \n", 1, "PT \"\" \"TIME\"");
        row("PT one field", "PT \"main\"\n", 1, "PT \"\" \"TIME\"");
        row("PT two fields, one quoted with blanks", "PT \"a b c\" d\n", 1, "PT \"\" \"TIME\"");
        row("PT three fields", "PT \"a\" 12 \"b c\"\n", 1, "PT \"a\" 12 \"b c\" \"TIME\"");
        row("PT three fields, an escaped quote", "PT \"a \\\" b\" c d\n", 1, "PT \"a \\\" b\" c d \"TIME\"");
        row("PT three fields, CRLF", "PT 1 2 3\r\n", 1, "PT 1 2 3 \"TIME\"");
        row("PT without blank", "PT\n", 1, "PT");
        row("QD", "QD 12 13\n", 2, "QD \"TIME\"");
        row("QD without blank", "QDx\n", 2, "QDx");
        row("DT of 0", "DT \"0\"\n", 3, "DT \"TIME\"");
        row("DT of 0, more after", "DT \"0\" x\n", 3, "DT \"TIME\"");
        row("DT of 01", "DT \"01\"\n", 3, "DT \"01\"");
        row("DT of a date", "DT \"Mon\"\n", 3, "DT \"Mon\"");
        row("DT unquoted 0", "DT 0\n", 3, "DT 0");
    }
    // The records the studio stamps, through splitOneLine and through the
    // survey.
    void stamps()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, index);
        QFETCH(QString, written);
        const QRegularExpression pattern(QLatin1Char('^')
            + QRegularExpression::escape(written).replace(u"TIME"_s, timePattern) + u"\\n$"_s);
        {
            QASTSplitSurvey split(m_input);
            split.splitOneLine(line.constData());
            line.chop(1);
            split.splitOneLine(line.constData()); // without its "\n"
        }
        // Through the survey, between two records of the same file.
        const QByteArray neighbour = QByteArray(&"  PUQUCO"[2 * index], 2) + " n\n";
        append(m_input, neighbour + line + "\n" + neighbour);
        QASTSplitSurvey(m_input).splitExistingLines();
        const Lines lines = readFile(path(QLatin1String(names[index]))).split('\n');
        QCOMPARE(lines.size(), 6); // five lines and the empty rest
        for (int i : {0, 1, 3})
            QVERIFY2(pattern.match(QString::fromLatin1(lines.at(i) + "\n")).hasMatch(), lines.at(i).constData());
        QCOMPARE(lines.at(2) + "\n", neighbour);
        QCOMPARE(lines.at(4) + "\n", neighbour);
        if (written.contains(u"TIME"_s))
            QVERIFY(lines.at(0).contains(QByteArray::number(QDate::currentDate().year())));
    }

    // Outputs named apart where given, beside the input where not.
    void outputNames()
    {
        const QString input = path(u"run/runtime.out"_s);
        const auto inRun = [&](int index) { return path(u"run/"_s + QLatin1String(names[index])); };
        QASTSplitSurvey named(input, "/r/c.tio", "/r/t.tdf", "/r/m.tpf", "/r/p.tqf", 250);
        QCOMPARE((QStringList{named.outputFile(0), named.outputFile(1), named.outputFile(2), named.outputFile(3),
                              named.outputFile(4)}),
                 (QStringList{inRun(0), "/r/m.tpf", "/r/p.tqf", "/r/c.tio", "/r/t.tdf"}));
        QCOMPARE(named.survey()->delay(), 250);
        QASTSplitSurvey some(input, QString(), "/r/t.tdf");
        QCOMPARE((QStringList{some.outputFile(1), some.outputFile(3), some.outputFile(4)}),
                 (QStringList{inRun(1), inRun(3), "/r/t.tdf"}));
    }

    // Lines appended with an index outside 0..5 are kept apart and the
    // console is told once.
    void rejectedLines()
    {
        RecordingStudio studio;
        QASTSplitSurvey split(m_input);
        split.appendLine("first\n", 6);
        split.appendLine("second", -1);
        split.appendLine("third\n", 42);
        split.appendLine("fine\n", 5);
        split.closeOutputFile();
        QCOMPARE(readFile(path(u"atlout.rej"_s)), QByteArray("first\nsecond\nthird\n"));
        QCOMPARE(readFile(path(u"atlendtest.txt"_s)), QByteArray("fine\n"));
        QCOMPARE(studio.messages(QAStData::MessageConsole),
                 QStringList{u"Some lines have not been recognized during the split (file %1 contains the "
                             "rejected lines)"_s.arg(path(u"atlout.rej"_s))});
    }

    // While a writer appends, at every surveyDone each output holds exactly
    // the lines read so far that belong to it, in order, and whole.
    void completeAtEveryTick()
    {
        QASTSplitSurvey split(m_input, QString(), QString(), QString(), QString(), 5);
        int ticks = 0;
        int ticksWithLines = 0;
        QString mismatch; // the first one
        connect(split.survey(), &QAFileSurvey::surveyDone, this, [&] {
            ++ticks;
            QByteArray read = readFile(m_input).left(split.survey()->offset());
            read.truncate(read.lastIndexOf('\n') + 1);
            Lines expected(QASTSplitSurvey::OutputCount);
            for (const QByteArray& line : read.split('\n'))
                if (!line.isEmpty())
                    expected[expectedIndex(line)] += line + '\n';
            const Lines outputs = outputsIn(m_dir->path());
            if (!read.isEmpty())
                ++ticksWithLines;
            for (int i = 0; i < QASTSplitSurvey::OutputCount; ++i)
                if (outputs.at(i) != expected.at(i) && mismatch.isEmpty())
                    mismatch = u"%1 at tick %2"_s.arg(names[i]).arg(ticks);
        });
        QSignalSpy appeared(&split, &QASTSplitSurvey::appeared);
        split.survey()->start();
        runWriter({m_input, path(u"expected.out"_s), u"append"_s, u"1"_s, u"3000"_s, u"70"_s, u"11"_s, u"0"_s,
                   u"0"_s});
        split.survey()->finish();
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
        QCOMPARE(appeared.count(), 1);
        QVERIFY(ticksWithLines > 3);
        QCOMPARE(outputsIn(m_dir->path()).join().size(), readFile(m_input).size());
    }

    // What the input holds before the survey starts is split once, on
    // demand; a new run that truncates it is split from its start.
    void existingLinesAndNewRuns()
    {
        append(m_input, "CO 1\nSF 2\npart");
        {
            QASTSplitSurvey skipping(m_input);
            skipping.survey()->survey();
            QVERIFY(outputsIn(m_dir->path()).join().isEmpty());
        }
        QASTSplitSurvey split(m_input);
        QSignalSpy shrinked(&split, &QASTSplitSurvey::shrinked);
        split.splitExistingLines();
        QCOMPARE(outputsIn(m_dir->path()), (Lines{"", "", "", "CO 1\n", "SF 2\n", "", ""}));
        append(m_input, "ial\nCO 3\n");
        split.survey()->survey();
        QCOMPARE(outputsIn(m_dir->path()), (Lines{"partial\n", "", "", "CO 1\nCO 3\n", "SF 2\n", "", ""}));
        QVERIFY(QFile::resize(m_input, 0));
        append(m_input, "CO 4\n");
        split.survey()->survey();
        QCOMPARE(shrinked.count(), 1);
        QCOMPARE(outputsIn(m_dir->path()).at(3), QByteArray("CO 1\nCO 3\nCO 4\n"));
    }

    // The whole-file split: outputs made afresh in a new directory, the
    // reasons it fails.
    void splitFile()
    {
        append(m_input, "SF a\ntb end\nlast");
        const QString out = path(u"results/one"_s);
        QString error;
        for (int i = 0; i < 2; ++i) { // again: the same files, not doubled
            QVERIFY(QASTSplitSurvey::splitFile(m_input, out, &error));
            QCOMPARE(outputsIn(out), (Lines{"last\n", "", "", "", "SF a\n", "tb end\n", ""}));
        }
        QVERIFY(!QASTSplitSurvey::splitFile(path(u"none"_s), out, &error));
        QVERIFY(error.contains(path(u"none"_s)));
        QVERIFY(!QASTSplitSurvey::splitFile(m_input, m_input + u"/below"_s, &error));
        QVERIFY(error.contains(m_input));
        const QString named = path(u"tracer.tdf"_s);
        QVERIFY(QFile::copy(m_input, named));
        QVERIFY(!QASTSplitSurvey::splitFile(named, m_dir->path(), &error));
        QCOMPARE(readFile(named), readFile(m_input));
    }

    // Binary bytes, empty and one-byte lines, a line of many megabytes
    // without "\n": nothing lost but the bytes beyond the bound are cut
    // into lines of their own.
    void badInput()
    {
        QByteArray bytes;
        for (int i = 0; i < 256; ++i)
            bytes += char(255 - i);
        const qsizetype max = QAFileSurvey::MaxLineLength;
        const QByteArray huge = "SF" + QByteArray(max + 100, 'x');
        static const char lines[] = "\n\n\nt\nT\nS\n\0\n";
        const QByteArray text = bytes + QByteArray(lines, sizeof lines - 1) + bytes + "\nPT" + huge;
        append(m_input, text);
        QVERIFY(QASTSplitSurvey::splitFile(m_input, m_dir->path()));
        const Lines outputs = outputsIn(m_dir->path());
        QCOMPARE(outputs.join().size(), text.size() + 2); // two "\n" added
        QCOMPARE(outputs.at(5), QByteArray("t\n"));
        QVERIFY(outputs.at(1).startsWith("PTSFxxx")); // not stamped: no blank
        QCOMPARE(outputs.at(1).size(), max + 1);
        QVERIFY(outputs.at(0).endsWith("\n" + QByteArray(104, 'x') + "\n"));
    }

    // An output that cannot be written loses its lines; the others go on.
    void unwritableOutput()
    {
        append(m_input, "SF 1\nCO 2\nSF 3\nCO 4\n");
        QASTSplitSurvey split(m_input, QString(), path(u"no/such/dir/t.tdf"_s));
        split.splitExistingLines();
        QCOMPARE(outputsIn(m_dir->path()).at(3), QByteArray("CO 2\nCO 4\n"));
        QVERIFY(!QFile::exists(split.outputFile(4)));
    }

    void javaPaths_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("posix");
        QTest::addColumn<QByteArray>("windows");
        const auto row = [](const char* tag, const char* line, const char* posix, const char* windows = nullptr) {
            QTest::newRow(tag) << QByteArray(line) << QByteArray(posix) << QByteArray(windows ? windows : posix);
        };
        row("class", "PU \"com/acme/Shop\" 12\n", "PU \"com.acme.Shop\" 12\n");
        row("inner class", "SF \"a/b/C$D_1\"\n", "SF \"a.b.C$D_1\"\n");
        row("source path", "SF \"com/acme/Shop.java\" 3\n", "SF \"com/acme/Shop.java\" 3\n",
            "SF \"com\\acme\\Shop.java\" 3\n");
        row("windows source path", "SF \"C:\\src\\Shop.java\"\n", "SF \"C:/src/Shop.java\"\n",
            "SF \"C:\\src\\Shop.java\"\n");
        row("descriptor", "PF \"(Ljava/lang/String;)V\"\n", "PF \"(Ljava/lang/String;)V\"\n");
        row("no slash, unquoted slash", "PF \"Shop\" a/b \"\"\n", "PF \"Shop\" a/b \"\"\n");
        row("slash first or doubled", "PF \"/a/B\" \"a//B\"\n", "PF \"/a/B\" \"a//B\"\n");
        row("quote never closed", "PF \"a/b\" \"c/d\n", "PF \"a.b\" \"c/d\n");
    }
    void javaPaths()
    {
        QFETCH(QByteArray, line);
        QTEST(QASTSplitJavaPSurvey::convertLine(line, QAInstall::Posix), "posix");
        QTEST(QASTSplitJavaPSurvey::convertLine(line, QAInstall::Windows), "windows");
    }

    // Two profiler files into the memory-profile and trace files, tick by
    // tick; a restart empties them unless they are shared.
    void javaSplit()
    {
        const QString one = path(u"vm1.jp"_s), two = path(u"vm2.jp"_s);
        const QString tpf = path(u"m.tpf"_s), tdf = path(u"t.tdf"_s);
        append(one, "PU \"a/B\" 1\nSF \"a/B.java\" 2\nCI \"a/B\" 3\npar");
        QASTSplitJavaPSurvey java({one, two}, tpf, tdf);
        java.tickReceived();
        QCOMPARE(readFile(tpf), QByteArray("PU \"a.B\" 1\n"));
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\n"));
        append(one, "t\nPF 4\n");
        append(two, "LE 5\nQT 6");
        java.stop();
        QCOMPARE(readFile(tpf), QByteArray("PU \"a.B\" 1\npart\nPF 4\nQT 6\n"));
        QCOMPARE(readFile(tdf), QByteArray("SF \"a/B.java\" 2\nCI \"a.B\" 3\nLE 5\n"));
        java.work_with_other_instr(true);
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
