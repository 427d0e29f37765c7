// Child processes: splitting command lines, their output as signals per
// line or per read, the synchronous wait, the process list and killAll,
// and the interpreter's command and wrapper. The children are real: sh and
// perl.
#include "QAInstall.h"
#include "QAProcess.h"
#include "TestEnvironment.h"
#include "TestPaths.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

QStringList sh(const QString& script)
{
    return {u"/bin/sh"_s, u"-c"_s, script};
}

// Everything a process signals, in order: "out:<text>", "err:<text>",
// "exited:<normal>,<status>".
struct Recorder {
    explicit Recorder(QAProcess* process)
    {
        QObject::connect(process, &QAProcess::stdoutReceived, &context,
                         [this](const QString& text) { events << u"out:"_s + text; });
        QObject::connect(process, &QAProcess::stderrReceived, &context,
                         [this](const QString& text) { events << u"err:"_s + text; });
        QObject::connect(process, &QAProcess::exited, &context, [this](bool normal, int status) {
            events << u"exited:%1,%2"_s.arg(normal).arg(status);
        });
    }
    // The texts of one kind ("out", "err", "exited").
    QStringList of(const QString& kind) const
    {
        QStringList texts;
        for (const QString& event : events)
            if (event.startsWith(kind + QLatin1Char(':')))
                texts << event.mid(kind.size() + 1);
        return texts;
    }
    QStringList events;
    QObject context;
};

double cpuSeconds()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

}

class TestProcess : public QObject {
    Q_OBJECT
    // How the last synchronous run ended.
    bool normal = false;
    int status = -1;

private slots:
    void init()
    {
        normal = false;
        status = -1;
    }
    // Long lines are a bounded amount of work: each match of the splitter
    // at successive offsets used to check the whole line's UTF-16 again, so
    // a line of a few hundred thousand characters took minutes. A lone
    // surrogate (not valid UTF-16) reads as a replacement character.
    void splitter_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("args");
        const auto row = [](const char* tag, const QString& line, const QStringList& args) {
            QTest::newRow(tag) << line << args;
        };
        row("words", " perl.exe\t-I/a/b  C:\\x\\y.pl k=v,w;(1) ", {"perl.exe", "-I/a/b", "C:\\x\\y.pl", "k=v,w;(1)"});
        row("double quotes", "a \"b  c\" d", {"a", "b  c", "d"});
        row("single quotes", "perl.exe x.pl 'a b' &", {"perl.exe", "x.pl", "a b", "&"});
        row("ampersand", "a & b&", {"a", "&", "b&"});
        row("two strings", "\"a b\" \"c d\" 'e' 'f g'", {"a b", "c d", "e", "f g"});
        row("escaped quote kept inside", "\"say \\\"hi\\\"\" 'it\\'s' x", {"say \\\"hi\\\"", "it\\'s", "x"});
        row("backslash before the only closing quote", "\"C:\\dir\\\" x", {"C:\\dir\\", "x"});
        row("empty string", "a \"\" b", {"a", "", "b"});
        row("forms side by side", "-I\"a b\"x", {"-I", "a b", "x"});
        row("unclosed quote dropped", "\"a b", {"a", "b"});
        row("characters outside every form", "a^b `c` caf\u00e9", {"a", "b", "c", "caf"});
        row("blank", " \t\n ", {});
        const QChar lone(char16_t(0xD800));
        row("lone surrogate", u"a "_s + lone + u" \"x"_s + lone + u"y\" b"_s, {"a", "x\uFFFDy", "b"});
        row("long: words", u"ab "_s.repeated(150000), QStringList(150000, u"ab"_s));
        row("long: empty strings", u"\"\""_s.repeated(200000), QStringList(200000, QString()));
        row("long: a quote never closed", u"\""_s + u"x "_s.repeated(100000), QStringList(100000, u"x"_s));
        row("long: single-quoted strings", u"'a b' "_s.repeated(100000), QStringList(100000, u"a b"_s));
    }
    void splitter()
    {
        QFETCH(QString, line);
        QStringList split{u"left over"_s};
        QAProcess::commandLineToArgs(line, split);
        QTEST(split, "args");
    }

    // A last argument holding "&" is dropped and makes the start
    // asynchronous; the child sees the other arguments.
    void ampersand_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("asynchronous");
        QTest::addColumn<QString>("output");
        const QString child = u"/bin/sh -c 'echo \"$# $0|$1\"; exit 4' x 'y z'"_s;
        QTest::newRow("lone &") << child + " &" << true << "1 x|y z";
        QTest::newRow("& in the last word") << child + " w&" << true << "1 x|y z";
        QTest::newRow("none") << child << false << "1 x|y z";
    }

    void ampersand()
    {
        QFETCH(QString, line);
        QFETCH(bool, asynchronous);
        QFETCH(QString, output);
        QAProcess process;
        process.setLinePerLine(true);
        Recorder recorder(&process);
        QVERIFY(process.start(line, QDir(), normal, status, nullptr, false));
        QCOMPARE(process.isAsynchronous(), asynchronous);
        QCOMPARE(process.isFinished(), !asynchronous);
        QCOMPARE(recorder.of("exited").size(), asynchronous ? 0 : 1);
        QTRY_COMPARE(recorder.of("exited"), QStringList{"1,4"});
        QCOMPARE(recorder.of("out"), QStringList{output});
    }

    // Output as signals, exited last. The child writes "\xC3\xA9\n\n" (two
    // lines) in one write, then "c" without newline once a receiver has
    // created the flag file: during the synchronous wait (else the child
    // ends with 9 after 30 s).
    void output_data()
    {
        QTest::addColumn<bool>("linePerLine");
        QTest::addColumn<int>("codec"); // 0 none, 1 UTF-8, 2 UTF-8 then reset
        QTest::addColumn<bool>("errorStream");
        QTest::addColumn<QStringList>("events");
        const QString latin = u"\u00c3\u00a9"_s;
        const QStringList latinLines{"out:" + latin, "out:", "out:c"};
        QTest::newRow("line per line") << true << 0 << false << latinLines;
        QTest::newRow("one text per read") << false << 0 << false
                                           << QStringList{"out:" + latin + "\n\n", "out:c\n"};
        QTest::newRow("error stream") << false << 0 << true
                                      << QStringList{"err:" + latin + "\n\n", "err:c\n"};
        QTest::newRow("UTF-8") << true << 1 << true << QStringList{"err:\u00e9", "err:", "err:c"};
        QTest::newRow("reset to Latin-1") << true << 2 << false << latinLines;
    }

    void output()
    {
        QFETCH(bool, linePerLine);
        QFETCH(int, codec);
        QFETCH(bool, errorStream);
        QFETCH(QStringList, events);
        QTemporaryDir dir;
        const QString flag = dir.filePath(u"flag"_s);
        QAProcess process;
        process.setLinePerLine(linePerLine);
        if (codec > 0)
            process.setTextCodec(QStringConverter::Utf8);
        if (codec > 1)
            process.resetTextCodec();
        Recorder recorder(&process);
        const auto createFlag = [&] { QFile(flag).open(QIODevice::WriteOnly); };
        connect(&process, &QAProcess::stdoutReceived, this, createFlag);
        connect(&process, &QAProcess::stderrReceived, this, createFlag);
        const QString child = QStringLiteral(
            "my ($flag, $err) = @ARGV; select(STDERR) if $err; $| = 1; print qq(\\xC3\\xA9\\n\\n);"
            "my $n = 0;"
            "until (-e $flag) { select(undef, undef, undef, 0.05); exit 9 if ++$n > 600 }"
            "print 'c';");
        QVERIFY(process.start(QStringList{"perl", "-e", child, flag, errorStream ? "1" : ""},
                              QDir(), normal, status, nullptr, false));
        QCOMPARE(recorder.events, events << "exited:1,0");
    }

    // The wait stores the end: working directory and environment as given.
    void synchronous_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<bool>("normal");
        QTest::addColumn<int>("status");
        QTest::newRow("exit 3") << "exit 3" << true << 3;
        QTest::newRow("exit 0") << "exit 0" << true << 0;
        QTest::newRow("killed") << "kill -KILL $$" << false << 9;
    }

    void synchronous()
    {
        QFETCH(QString, script);
        QFETCH(bool, normal);
        QTemporaryDir dir;
        QStringList environment{u"KORVIL_PROBE=probe value"_s};
        QAProcess process;
        process.setLinePerLine(true);
        Recorder recorder(&process);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Terminated process pid = \\d+$"_s));
        bool endNormal = !normal;
        int endStatus = -1;
        QVERIFY(process.start(sh("pwd -P; echo \"$KORVIL_PROBE\"; " + script), QDir(dir.path()),
                              endNormal, endStatus, &environment, false));
        QCOMPARE(endNormal, normal);
        QTEST(endStatus, "status");
        QCOMPARE(process.normalExit(), normal);
        QVERIFY(process.isFinished());
        QVERIFY(process.pid() > 0);
        QVERIFY(!QAProcess::listOfProcess().contains(&process));
        QCOMPARE(recorder.of("out"), (QStringList{QFileInfo(dir.path()).canonicalFilePath(), "probe value"}));
    }

    // A receiver turning the event loop while the child writes more and
    // ends: it is not re-entered, the next line comes after it returns,
    // and exited comes last. The child writes "2" once the receiver holds
    // "1", then creates "done"; the receiver turns the loop until then.
    void reentrantReceiver_data()
    {
        QTest::addColumn<bool>("asynchronous");
        QTest::newRow("asynchronous") << true;
        QTest::newRow("synchronous") << false;
    }

    void reentrantReceiver()
    {
        QFETCH(bool, asynchronous);
        QTemporaryDir dir;
        QAProcess process;
        process.setLinePerLine(true);
        Recorder recorder(&process);
        int depth = 0;
        int deepest = 0;
        connect(&process, &QAProcess::stdoutReceived, this, [&] {
            deepest = qMax(deepest, ++depth);
            QFile(dir.filePath(u"flag"_s)).open(QIODevice::WriteOnly);
            // Bounded; without "done" the comparisons below fail.
            (void)QTest::qWaitFor([&] { return QFile::exists(dir.filePath("done")); });
            QTest::qWait(20);
            --depth;
        });
        QVERIFY(process.start(sh("echo 1; n=0; until [ -e flag ] || [ $n -gt 500 ]; do sleep 0.02; "
                                 "n=$((n+1)); done; echo 2; echo e >&2; : > done"),
                              QDir(dir.path()), normal, status, nullptr, asynchronous));
        QTRY_COMPARE(recorder.of("exited"), QStringList{"1,0"});
        QCOMPARE(deepest, 1);
        QCOMPARE(recorder.of("out"), (QStringList{"1", "2"}));
        QCOMPARE(recorder.of("err"), QStringList{"e"});
        QCOMPARE(recorder.events.last(), u"exited:1,0"_s);
    }

    void failedStart_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("dir");
        QTest::newRow("no such program") << QStringList{"/nonexistent/korvil-tool", "a"}
                                         << QString();
        QTest::newRow("not executable") << QStringList{TestPaths::installTree() + "/README.md"}
                                        << QString();
        QTest::newRow("no such directory") << QStringList{"/bin/sh"} << "/nonexistent/dir";
        QTest::newRow("no program") << QStringList() << QString();
    }

    void failedStart()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, dir);
        QAProcess process;
        Recorder recorder(&process);
        QTest::ignoreMessage(QtWarningMsg, qPrintable(args.value(0) + ": unable to start the command\n"));
        bool normal = true;
        int status = 7;
        QVERIFY(!process.start(args, dir.isEmpty() ? QDir() : QDir(dir), normal, status));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
        QVERIFY(!process.isRunning());
        QTest::qWait(100);
        QCOMPARE(recorder.events, QStringList());
        QCOMPARE(normal, true);
        QCOMPARE(status, 7);
    }

    void killAll()
    {
        QAProcess ended;
        QVERIFY(ended.start(sh("exit 0"), QDir(), normal, status, nullptr, false));
        QAProcess::killAll();
        QVERIFY(QAProcess::listOfProcess().isEmpty());
        QVERIFY(ended.isFinished() && ended.normalExit());
        QAProcess first;
        QAProcess second;
        Recorder firstRecorder(&first);
        Recorder secondRecorder(&second);
        QVERIFY(first.start(sh("exec sleep 30"), QDir(), normal, status));
        QVERIFY(second.start(u"sleep 30 &"_s, QDir(), normal, status, nullptr, false));
        QCOMPARE(QAProcess::listOfProcess(), (QList<QAProcess*>{&first, &second}));
        QAProcess::killAll();
        QVERIFY(QAProcess::listOfProcess().isEmpty());
        QTRY_COMPARE(firstRecorder.of("exited"), QStringList{"0,9"});
        QTRY_COMPARE(secondRecorder.of("exited"), QStringList{"0,9"});
        QVERIFY(!first.isRunning() && !second.isRunning());
    }

    // Destroying a process kills its child quietly; a receiver may destroy
    // it from its signals.
    void destruction_data()
    {
        QTest::addColumn<QString>("when"); // "now", "output" or "exited"
        QTest::addColumn<QString>("script");
        QTest::addColumn<bool>("asynchronous");
        QTest::newRow("while running") << "now" << "echo a; exec sleep 30" << true;
        QTest::newRow("by a receiver during the wait") << "output" << "echo a; exec sleep 30" << false;
        QTest::newRow("by a receiver of exited") << "exited" << "exit 0" << true;
    }

    void destruction()
    {
        QFETCH(QString, when);
        QFETCH(bool, asynchronous);
        QFETCH(QString, script);
        if (when != QLatin1String("exited"))
            QTest::failOnWarning(QRegularExpression(u"."_s));
        auto* process = new QAProcess;
        qint64 pid = 0;
        const auto destroy = [&] {
            pid = process->pid();
            delete process;
            process = nullptr;
        };
        Recorder recorder(process);
        if (when == QLatin1String("output"))
            connect(process, &QAProcess::stdoutReceived, this, destroy);
        else if (when == QLatin1String("exited"))
            connect(process, &QAProcess::exited, this, destroy);
        bool normal = true;
        int status = 0;
        QVERIFY(process->start(sh(script), QDir(), normal, status, nullptr, asynchronous));
        if (when == QLatin1String("now"))
            destroy();
        QTRY_VERIFY(!process);
        if (!asynchronous)
            QCOMPARE((QPair<bool, int>(normal, status)), (QPair<bool, int>(false, -1)));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
        QCOMPARE(recorder.of("exited").size(), when == QLatin1String("exited") ? 1 : 0);
        errno = 0;
        QCOMPARE(::kill(pid_t(pid), 0), -1);
        QCOMPARE(errno, ESRCH);
    }

    // A bound on the processor time the wait uses, not a timing.
    void waitDoesNotSpin()
    {
        QAProcess process;
        QElapsedTimer wall;
        const double cpuBefore = cpuSeconds();
        wall.start();
        QVERIFY(process.start(sh("sleep 1"), QDir(), normal, status, nullptr, false));
        const double cpu = cpuSeconds() - cpuBefore;
        const double elapsed = wall.nsecsElapsed() / 1e9;
        QVERIFY2(cpu < 0.2 * elapsed, qPrintable(u"%1 s of %2 s"_s.arg(cpu).arg(elapsed)));
    }

    void perlCommand_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("zeltaHome"); // null: unset
        QTest::addColumn<QString>("korvilDir");
        QTest::addColumn<QStringList>("command");
        const QString winPerl = u"\\bin\\intel\\win32\\Korvilperl.exe"_s;
        const QString winLib = u"-IC:\\inst\\lib\\perl"_s;
        QTest::newRow("POSIX: the installation given") << int(QAInstall::Posix) << "/z" << "/k"
            << QStringList{"C:\\inst/bin/intel/linux/Korvilperl", "-IC:\\inst/lib/perl"};
        QTest::newRow("Windows: ZELTAHOME") << int(QAInstall::Windows) << "C:\\Z" << "D:\\K"
                                            << QStringList{"C:\\Z" + winPerl, winLib};
        QTest::newRow("Windows: KORVILDIR") << int(QAInstall::Windows) << QString() << "D:\\K"
                                            << QStringList{"D:\\K" + winPerl, winLib};
        QTest::newRow("Windows: neither") << int(QAInstall::Windows) << QString() << QString()
                                          << QStringList{"C:\\inst" + winPerl, winLib};
    }

    void perlCommand()
    {
        QFETCH(int, platform);
        QFETCH(QString, zeltaHome);
        QFETCH(QString, korvilDir);
        EnvironmentVariable home("ZELTAHOME", zeltaHome.isNull() ? QByteArray() : zeltaHome.toLocal8Bit());
        EnvironmentVariable dir("KORVILDIR", korvilDir.isNull() ? QByteArray() : korvilDir.toLocal8Bit());
        QTEST(QAInstall::perlCommand(u"C:\\inst"_s, QAInstall::Platform(platform)), "command");
    }

    void perlProgramName_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("program");
        const int windows = QAInstall::Windows;
        QTest::newRow("exe kept") << windows << "korvilperl.exe" << "korvilperl.exe";
        QTest::newRow("none added") << windows << "Korvilperl" << "Korvilperl.EXE";
        QTest::newRow("other added") << windows << "perl.bat" << "perl.bat.EXE";
        QTest::newRow("dot in a directory") << windows << "C:\\a.exe\\perl" << "C:\\a.exe\\perl.EXE";
        QTest::newRow("POSIX kept") << int(QAInstall::Posix) << "Korvilperl" << "Korvilperl";
    }

    void perlProgramName()
    {
        QFETCH(int, platform);
        QFETCH(QString, name);
        QTEST(QAInstall::perlProgramName(name, QAInstall::Platform(platform)), "program");
    }

    // The installed wrapper runs perl on the module path, and knows its
    // installation when ZELTAHOME is not set.
    void wrapper_data()
    {
        QTest::addColumn<bool>("unsetHome");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("output");
        const QString tree = QFileInfo(TestPaths::installTree()).canonicalFilePath();
        QTest::newRow("module path") << false << "print $INC[0]" << TestPaths::installTree() + "/lib/perl";
        QTest::newRow("own installation") << true << "print $ENV{ZELTAHOME}" << tree;
    }

    void wrapper()
    {
        QFETCH(bool, unsetHome);
        QFETCH(QString, program);
        QFETCH(QString, output);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (unsetHome)
            environment.remove(u"ZELTAHOME"_s);
        QStringList variables = environment.toStringList();
        QAProcess process;
        process.setLinePerLine(true);
        Recorder recorder(&process);
        QVERIFY(process.start(QAInstall::perlCommand(TestPaths::installTree()) << "-e" << program,
                              QDir(), normal, status, &variables, false));
        QCOMPARE(recorder.of("out"), QStringList{output});
        QVERIFY(normal && status == 0);
    }
};

QTEST_GUILESS_MAIN(TestProcess)
#include "tst_process.moc"
