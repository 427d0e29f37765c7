// Following a growing file: whole lines only, each once and in order,
// across writes cut anywhere, new runs that truncate, remove or replace the
// file, and the final pass; the signals and the shrink and disappear
// policies; very long lines and binary bytes. The writer is a real perl
// process appending while the survey runs in the test's event loop.
#include "QAFileSurvey.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

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

// Everything a survey emits.
struct Recorder {
    explicit Recorder(QAFileSurvey* survey)
    {
        QObject::connect(survey, &QAFileSurvey::newLines, &context,
                         [this](const QByteArray& lines) {
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
    // The lines of one tick and its events, forgotten afterwards.
    QList<QByteArray> take()
    {
        QList<QByteArray> taken = lines;
        lines.clear();
        return taken;
    }
    QStringList takeEvents()
    {
        QStringList taken = events;
        events.clear();
        return taken;
    }

    QByteArray received;      // newLines, joined
    QList<QByteArray> blocks; // newLines, one entry each
    QList<QByteArray> lines;  // hasNewLine
    QStringList events;
    QObject context;
};

void write(const QString& path, const QByteArray& bytes, QIODevice::OpenMode mode)
{
    QFile file(path);
    QVERIFY(file.open(mode));
    QCOMPARE(file.write(bytes), bytes.size());
}

void append(const QString& path, const QByteArray& bytes)
{
    write(path, bytes, QIODevice::Append);
}

void rewrite(const QString& path, const QByteArray& bytes)
{
    write(path, bytes, QIODevice::WriteOnly | QIODevice::Truncate);
}

// Every emitted block holds whole lines only.
bool wholeLines(const QList<QByteArray>& blocks)
{
    return std::all_of(blocks.begin(), blocks.end(),
                       [](const QByteArray& block) { return block.endsWith('\n'); });
}

using Lines = QList<QByteArray>;

// Where two texts first differ, with the line around it in each.
QString firstDifference(const QByteArray& received, const QByteArray& written)
{
    qsizetype at = 0;
    while (at < received.size() && at < written.size() && received.at(at) == written.at(at))
        ++at;
    const auto around = [at](const QByteArray& text) {
        const qsizetype begin = text.lastIndexOf('\n', at - 1) + 1;
        return QString::fromLatin1(text.mid(begin, 80).toPercentEncoding(" =\"", "\n"));
    };
    return QStringLiteral("%1 bytes received, %2 written, first difference at %3:\n  received %4\n"
                          "  written  %5")
        .arg(received.size())
        .arg(written.size())
        .arg(at)
        .arg(around(received), around(written));
}

}

class TestFileSurvey : public QObject {
    Q_OBJECT
private slots:
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
        QTest::newRow("one run, last line unfinished")
            << "append" << 1 << 1000 << 60 << 10 << true << false;
        QTest::newRow("lines longer than a read block")
            << "append" << 1 << 40 << 400000 << 10 << false << false;
        QTest::newRow("new runs truncate the file")
            << "truncate" << 4 << 400 << 50 << 10 << false << false;
        QTest::newRow("a new run writes past the old end at once")
            << "truncate" << 3 << 300 << 50 << 40 << false << true;
        QTest::newRow("new runs remove and create the file")
            << "remove" << 4 << 400 << 50 << 10 << true << false;
        QTest::newRow("new runs rename another file over it")
            << "replace" << 4 << 400 << 50 << 10 << false << true;
    }
    // The lines received equal the lines written, whatever the cuts and
    // the runs; every emission holds whole lines.
    void followsWriter()
    {
        QFETCH(QString, mode);
        QFETCH(int, runs);
        QFETCH(int, lines);
        QFETCH(int, maxLength);
        QFETCH(int, delay);
        QFETCH(bool, partial);
        QFETCH(bool, big);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        const QString expected = dir.filePath(QStringLiteral("expected.out"));

        QAFileSurvey survey(file, delay);
        Recorder recorder(&survey);
        int acknowledged = 1;
        // A new run may begin once everything of the last one was read.
        connect(&survey, &QAFileSurvey::surveyDone, &recorder.context, [&] {
            const QString ready = file + QStringLiteral(".ready%1").arg(acknowledged + 1);
            if (QFile::exists(ready) && survey.offset() == QFileInfo(file).size()) {
                ++acknowledged;
                QFile ack(file + QStringLiteral(".ack%1").arg(acknowledged));
                QVERIFY(ack.open(QIODevice::WriteOnly));
            }
        });
        survey.start();

        QProcess writer;
        writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        writer.start(QStringLiteral("perl"),
                     {QStringLiteral("-e"), QString::fromLatin1(writerScript), file, expected, mode,
                      QString::number(runs), QString::number(lines), QString::number(maxLength),
                      QString::number(qHash(QByteArray(QTest::currentDataTag())) % 1000),
                      QString::number(partial), QString::number(big)});
        QVERIFY(writer.waitForStarted());
        QSignalSpy finished(&writer, &QProcess::finished);
        QVERIFY(finished.wait(120000));
        QCOMPARE(writer.exitCode(), 0);
        survey.finish();

        QByteArray written;
        {
            QFile all(expected);
            QVERIFY(all.open(QIODevice::ReadOnly));
            written = all.readAll();
        }
        if (partial)
            written += '\n';
        QVERIFY2(recorder.received == written, qPrintable(firstDifference(recorder.received, written)));
        QVERIFY(wholeLines(recorder.blocks));
        // One hasNewLine per line, the same bytes.
        QCOMPARE(recorder.lines.size(), written.count('\n'));
        QVERIFY(recorder.lines.join() == written);
        QCOMPARE(acknowledged, runs);
        QVERIFY(!survey.isActive());
    }

    // The signals of each change, in a survey ticked by hand.
    void signalsOfChanges()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        QAFileSurvey survey(file, 1000);
        Recorder r(&survey);
        QSignalSpy done(&survey, &QAFileSurvey::surveyDone);

        survey.survey(); // absent from the start: waited for, nothing said
        QCOMPARE(r.takeEvents(), QStringList());
        QCOMPARE(done.count(), 1);

        append(file, "a\nb");
        survey.survey();
        QCOMPARE(r.takeEvents(), (QStringList{"appear", "grow"}));
        QCOMPARE(r.take(), Lines{"a\n"});

        survey.survey(); // nothing new
        QCOMPARE(r.takeEvents(), QStringList());

        append(file, "c\n");
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList{"grow"});
        QCOMPARE(r.take(), Lines{"bc\n"});

        rewrite(file, "x\ny"); // a new run, shorter
        survey.survey();
        QCOMPARE(r.takeEvents(), (QStringList{"shrink", "grow"}));
        QCOMPARE(r.take(), Lines{"x\n"});

        QVERIFY(QFile::remove(file)); // the unfinished line ends with its file
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList{"disappear"});
        QCOMPARE(r.take(), Lines{"y\n"});
        survey.survey();
        QCOMPARE(r.takeEvents(), QStringList());

        append(file, "z\n");
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
        using P = QAFileSurvey;
        QTest::newRow("shrink, stop") << "shrink" << P::Stop << Lines{} << false
                                      << Lines{"3\n", "4\n", "partial\n"};
        QTest::newRow("shrink, from start") << "shrink" << P::FromStart << Lines{"3\n", "4\n"}
                                            << true << Lines{"partial\n"};
        QTest::newRow("shrink, from end") << "shrink" << P::FromEnd << Lines{} << true
                                          << Lines{"partial\n"};
        QTest::newRow("disappear, stop") << "disappear" << P::Stop << Lines{} << false
                                         << Lines{"3\n", "4\n", "partial\n"};
        QTest::newRow("disappear, from start") << "disappear" << P::FromStart << Lines{"3\n", "4\n"}
                                               << true << Lines{"partial\n"};
        // Absent at the restart: nothing of it to skip.
        QTest::newRow("disappear, from end") << "disappear" << P::FromEnd << Lines{"3\n", "4\n"}
                                             << true << Lines{"partial\n"};
        QTest::newRow("replace, stop") << "replace" << P::Stop << Lines{} << false
                                       << Lines{"3\n", "4\n", "partial\n"};
        QTest::newRow("replace, from start") << "replace" << P::FromStart << Lines{"3\n", "4\n"}
                                             << true << Lines{"partial\n"};
        QTest::newRow("replace, from end") << "replace" << P::FromEnd << Lines{} << true
                                           << Lines{"partial\n"};
    }
    void policies()
    {
        QFETCH(QString, change);
        QFETCH(QAFileSurvey::Policy, policy);
        QFETCH(Lines, atChange);
        QFETCH(bool, active);
        QFETCH(Lines, afterwards);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        // A replacing file is longer than what was read: no shrink to see.
        const QByteArray first = change == QLatin1String("shrink") ? "one\ntwo\nthree\n" : "1\n";
        append(file, first);
        QAFileSurvey survey(file, 60000);
        survey.setShrinkPolicy(policy);
        survey.setDisappearPolicy(policy);
        Recorder r(&survey);
        survey.start(); // ticked by hand: the timer never runs out
        survey.survey();
        QCOMPARE(r.take().join(), first);
        r.takeEvents();

        const QByteArray next = "3\n4\npart";
        if (change == QLatin1String("disappear")) {
            QVERIFY(QFile::remove(file));
            survey.survey();
            QCOMPARE(r.takeEvents(), QStringList{"disappear"});
            append(file, next);
            if (survey.isActive())
                survey.survey();
        } else {
            if (change == QLatin1String("shrink")) {
                rewrite(file, next);
            } else {
                const QString other = dir.filePath(QStringLiteral("other.out"));
                append(other, next);
                QVERIFY(QFile::rename(file, dir.filePath(QStringLiteral("old.out"))));
                QVERIFY(QFile::rename(other, file));
            }
            survey.survey();
            QCOMPARE(r.takeEvents().value(0), change == QLatin1String("shrink") ? "shrink" : "disappear");
        }
        QCOMPARE(r.take(), atChange);
        QCOMPARE(survey.isActive(), active);

        append(file, "ial\n");
        survey.start();
        survey.survey();
        QCOMPARE(r.take(), afterwards);
    }

    // A burst of changes is told once, when it has settled.
    void modificationSettles()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        QAFileSurvey survey(file, 60000);
        QCOMPARE(survey.modificationDelay(), 500);
        survey.setModificationDelay(100);
        QSignalSpy settled(&survey, &QAFileSurvey::fileModified);
        QSignalSpy modified(&survey, &QAFileSurvey::modified);
        for (int i = 0; i < 3; ++i) {
            append(file, "line\n");
            survey.survey();
        }
        QVERIFY(survey.modificationTime().isValid());
        QCOMPARE(settled.count(), 0);
        QVERIFY(settled.wait(5000));
        QTest::qWait(300);
        QCOMPARE(settled.count(), 1);
        QCOMPARE(modified.count(), 1);
        QCOMPARE(modified.at(0).at(0).toString(), file);
    }

    // The final pass reads what remains, then the unfinished line.
    void finishEndsTheLastLine()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        QAFileSurvey survey(file, 60000);
        Recorder r(&survey);
        QStringList order;
        connect(&survey, &QAFileSurvey::surveyDone, &r.context, [&] { order << "done"; });
        connect(&survey, &QAFileSurvey::hasNewLine, &r.context,
                [&](const char* line) { order << QString::fromLatin1(line); });
        survey.start();
        append(file, "x\ny");
        survey.finish();
        QCOMPARE(order, (QStringList{"x\n", "y\n", "done"}));
        QVERIFY(!survey.isActive());
        survey.finish(); // nothing left: no line, no "\n" alone
        QCOMPARE(order, (QStringList{"x\n", "y\n", "done", "done"}));
    }

    // Lines longer than the bound go out in pieces; the memory held stays
    // bounded while the line is still unfinished.
    void longLinesAreCut()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        const qsizetype max = QAFileSurvey::MaxLineLength;
        QAFileSurvey survey(file, 60000);
        Recorder r(&survey);
        append(file, QByteArray(max - 1, 'a'));
        survey.survey();
        append(file, QByteArray(12, 'b'));
        survey.survey();
        append(file, "\nend\n");
        survey.survey();
        QCOMPARE(r.blocks.size(), 3);
        QCOMPARE(r.blocks.at(0), QByteArray(max - 1, 'a') + "b\n");
        QCOMPARE(r.blocks.at(1), QByteArray(11, 'b') + "\n");
        QCOMPARE(r.blocks.at(2), QByteArray("end\n"));

        // A line of exactly the bound stays whole.
        r.blocks.clear();
        append(file, QByteArray(max, 'c') + "\n");
        survey.survey();
        QCOMPARE(r.blocks.size(), 1);
        QCOMPARE(r.blocks.at(0).size(), max + 1);
    }

    // Any byte passes unchanged through newLines; hasNewLine ends at a NUL.
    void binaryBytes()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        QByteArray bytes; // 0 to 255: a "\n" at 10
        for (int i = 0; i < 256; ++i)
            bytes += char(i);
        append(file, bytes + "\r\n" + bytes);
        QAFileSurvey survey(file, 60000);
        Recorder r(&survey);
        survey.finish();
        QCOMPARE(r.received, bytes + "\r\n" + bytes + "\n");
        QCOMPARE(r.lines, (Lines{"", bytes.mid(11) + "\r\n", "", bytes.mid(11) + "\n"}));
    }

    // Receivers may restart the survey or tick it again from a signal.
    void receiversMayRestart()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("runtime.out"));
        append(file, "a\nb\nc\n");
        QAFileSurvey survey(file, 60000);
        Lines lines;
        bool restarted = false;
        connect(&survey, &QAFileSurvey::hasNewLine, &survey, [&](const char* line) {
            lines << QByteArray(line);
            survey.survey(); // ignored: a tick is running
            if (!restarted) {
                restarted = true;
                survey.restart(true);
            }
        });
        survey.survey();
        QCOMPARE(lines, Lines{"a\n"});
        QVERIFY(survey.isActive());
        survey.survey();
        QCOMPARE(lines, (Lines{"a\n", "a\n", "b\n", "c\n"}));
    }
};

QTEST_GUILESS_MAIN(TestFileSurvey)
#include "tst_file_survey.moc"
