// The command-line tool end to end: the real binary as a child process, on
// a copy of the example project and on projects it makes, with the real
// drivers, interpreter and compilers.
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct Run {
    int status = -1;
    QString out;
    QString err;
};

// The line of text that starts with start (after blanks); empty when none.
QString lineStarting(const QString& text, const QString& start)
{
    for (const QString& line : text.split(u'\n')) {
        if (line.trimmed().startsWith(start))
            return line;
    }
    return QString();
}

// Standard error holds messages only: each line starts with "korvil: " or
// continues the message above it, indented by two blanks; no blank line,
// and the last line is ended. Empty when it is so, else the fault.
QString messageLayoutFault(const QString& err)
{
    if (!err.isEmpty() && !err.endsWith(u'\n'))
        return u"the last line is not ended"_s;
    const QStringList lines = err.split(u'\n');
    for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
        const QString& line = lines.at(i);
        const bool continuation = i > 0 && line.startsWith(QLatin1String("  ")) && !line.trimmed().isEmpty();
        if (!line.startsWith(QLatin1String("korvil: ")) && !continuation)
            return u"line %1 is no message line: \"%2\""_s.arg(i + 1).arg(line);
    }
    return QString();
}

// The lines that differ between two texts: those of each between their
// common first and last lines.
struct Change {
    QStringList removed;
    QStringList inserted;
};

Change change(const QByteArray& before, const QByteArray& after)
{
    const QStringList a = QString::fromUtf8(before).split(u'\n');
    const QStringList b = QString::fromUtf8(after).split(u'\n');
    qsizetype head = 0;
    while (head < a.size() && head < b.size() && a.at(head) == b.at(head))
        ++head;
    qsizetype tail = 0;
    while (tail < a.size() - head && tail < b.size() - head &&
           a.at(a.size() - 1 - tail) == b.at(b.size() - 1 - tail))
        ++tail;
    return {a.mid(head, a.size() - head - tail), b.mid(head, b.size() - head - tail)};
}

}

class TestKorvil : public QObject {
    Q_OBJECT

    // Runs the tool in directory (the project's copy by default) and waits
    // for its end.
    Run korvil(const QStringList& arguments, const QString& directory = QString(),
               const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
    {
        QProcess process;
        process.setWorkingDirectory(directory.isEmpty() ? m_dir->path() : directory);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(KORVIL_BINARY), arguments);
        Run run;
        if (!process.waitForFinished(300000)) {
            process.kill();
            process.waitForFinished();
            run.err = u"korvil did not end"_s;
            return run;
        }
        run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        run.err = QString::fromLocal8Bit(process.readAllStandardError());
        return run;
    }

    QString path(const QString& relative) const { return m_dir->filePath(relative); }
    // The project the project commands make, in a directory of its own.
    Run demo(const QStringList& arguments) { return korvil(arguments, m_demo.path()); }
    QString demoPath(const QString& relative) const { return m_demo.filePath(relative); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QTemporaryDir m_demo;
    bool m_demoMade = false;

private slots:
    void initTestCase()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        const QString example = TestPaths::sourceDir() + u"/examples/calculator"_s;
        TestFiles::copyTree(example, m_dir->path());
        // A second copy whose object information file is gone.
        TestFiles::copyTree(example, path("noinf"));
        QVERIFY(QFile::remove(path("noinf/calculator.inf")));
    }

    // --- usage

    void badUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QString project = u"calculator.rtp"_s;
        QTest::newRow("no command") << QStringList{} << "no command given";
        QTest::newRow("unknown command") << QStringList{"frobnicate"} << "unknown command \"frobnicate\"";
        QTest::newRow("unknown option") << QStringList{"info", "--bogus", project} << "Usage: korvil info";
        QTest::newRow("missing argument") << QStringList{"env", project} << "Usage: korvil env";
        QTest::newRow("too many") << QStringList{"info", project, "extra"} << "too many arguments";
        QTest::newRow("option value missing") << QStringList{"build", project, "--config"} << "Usage: korvil build";
        QTest::newRow("unknown layout") << QStringList{"tags", "--layout", "sideways", project} << "sideways";
        QTest::newRow("save without --as") << QStringList{"save", project} << "--as FILE";
        QTest::newRow("bad Stroud number") << QStringList{"metrics", "--stroud", "0", project} << "Stroud";
        QTest::newRow("tags of nothing") << QStringList{"tags"} << "give a project file or source files";
        QTest::newRow("split of nothing") << QStringList{"split"} << "Usage: korvil split";
        QTest::newRow("unknown configuration") << QStringList{"build", "-c", "Nightly", project} << "Nightly";
        QTest::newRow("unknown node") << QStringList{"build", project, "Nowhere"} << "Nowhere";
    }

    // Exit status 2 and a message on standard error; nothing is run.
    void badUsage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const Run run = korvil(arguments);
        QCOMPARE(run.status, 2);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }

    // Every command is listed, and "help CMD" says what "CMD --help" says.
    void help()
    {
        const Run tool = korvil({"--help"});
        QCOMPARE(tool.status, 0);
        for (const char* name : {"info", "env", "build", "rebuild", "execute", "clean", "save", "tags", "metrics",
                                 "split", "new", "add", "add-files", "import", "set", "get", "report"}) {
            const QString command = QLatin1String(name);
            QVERIFY2(tool.out.contains(u"\n  %1 "_s.arg(command)), name);
            const Run own = korvil({command, "--help"});
            QCOMPARE(own.status, 0);
            QVERIFY2(own.out.startsWith(u"Usage: korvil "_s + command + u' '), qPrintable(own.out));
            QCOMPARE(korvil({"help", command}).out, own.out);
        }
        const Run version = korvil({"--version"});
        QCOMPARE(version.status, 0);
        QVERIFY(QRegularExpression(u"^korvil \\d+\\.\\d+"_s).match(version.out).hasMatch());
    }

    // --- bad input

    void projectFaults_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content"); // null: the file as it is
        QTest::addColumn<int>("status");
        // Lines of standard error in this order, "%1" the project copy's
        // directory; a final "*" matches the rest of the line.
        QTest::addColumn<QStringList>("lines");
        const QStringList noMarker{"  no line of it holds \"<!DOCTYPE project\", which marks a project file,",
                                   "  nor \"PROJECT = \" or \"WORKSPACE = \" of the older project and workspace files"};
        QByteArray example = TestFiles::readFile(TestPaths::sourceDir() + u"/examples/calculator/calculator.rtp"_s);
        const qsizetype doctype = example.indexOf("<!DOCTYPE project");
        QVERIFY(doctype > 0);
        const QByteArray withoutDoctype = example.remove(doctype, example.indexOf('\n', doctype) + 1 - doctype);

        QTest::newRow("truncated") << "truncated.rtp"
                                   << QByteArray("<?xml version=\"1.0\"?>\n<!DOCTYPE project>\n<project>\n<group>\n") << 1
                                   << QStringList{"korvil: %1/truncated.rtp: Unable to read the project :*",
                                                  "korvil: truncated.rtp: the project could not be loaded"};
        QTest::newRow("bad project, report ended by a new line")
            << "bad.rtp" << QByteArray("<?xml version=\"1.0\"?>\n<!DOCTYPE project>\n<project/>\n") << 1
            << QStringList{"korvil: %1/bad.rtp: It is a bad project file.", "  The reason is:",
                           "  Unable to find tag version_file", "korvil: bad.rtp: the project could not be loaded"};
        QTest::newRow("no project") << "notes.rtp" << QByteArray("some notes\n") << 1
                                    << QStringList{"korvil: %1/notes.rtp: This file content is not a valid project file",
                                                   "korvil: notes.rtp: the project could not be loaded"}
                                           + noMarker;
        QTest::newRow("no DOCTYPE line") << "nodoctype.rtp" << withoutDoctype << 1
                                         << QStringList{"korvil: %1/nodoctype.rtp: This file content is not a valid project file",
                                                        "korvil: nodoctype.rtp: the project could not be loaded"}
                                                + noMarker;
        QTest::newRow("missing") << "nowhere.rtp" << QByteArray() << 1
                                 << QStringList{"korvil: nowhere.rtp: no such project file"};
        QTest::newRow("question of a missing object file") << "noinf/calculator.rtp" << QByteArray() << 0
            << QStringList{"korvil: %1/noinf/calculator.inf: Unable to open the project Object Information File. "
                           "Do you want to create it automatically? Yes (batch mode)"};
    }

    // Faults and questions on standard error, each message on lines of its
    // own (see messageLayoutFault); the project file is left as it was. A
    // project read prints its tree.
    void projectFaults()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QFETCH(QStringList, lines);
        if (!content.isNull())
            TestFiles::writeFile(path(file), content);
        const Run run = korvil({"info", file});
        QCOMPARE(run.status, status);
        QCOMPARE(run.out.isEmpty(), status != 0);
        QVERIFY2(messageLayoutFault(run.err).isEmpty(), qPrintable(messageLayoutFault(run.err) + "\n" + run.err));
        const QStringList errLines = run.err.split(u'\n');
        qsizetype at = 0;
        for (QString want : lines) {
            want.replace(QLatin1String("%1"), m_dir->path());
            const bool prefix = want.endsWith(u'*');
            if (prefix)
                want.chop(1);
            while (at < errLines.size() && !(prefix ? errLines.at(at).startsWith(want) : errLines.at(at) == want))
                ++at;
            QVERIFY2(at < errLines.size(), qPrintable(u"missing in order: %1\n%2"_s.arg(want, run.err)));
        }
        if (!content.isNull())
            QCOMPARE(TestFiles::readFile(path(file)), content);
        if (status == 0) {
            QVERIFY(run.out.startsWith("calculator  (project, selected, configuration Debug of Debug, Release)\n"));
            QVERIFY(run.out.contains("\n    calc  (application"));
            QVERIFY(run.out.contains("\n  Unit tests  (unit testing"));
        }
    }

    // --- the project

    // Built and executed with the installation found beside the tool (no
    // ZELTAHOME): every test node's result files are listed with their
    // line counts, and a pipe gets no progress line.
    void buildAndExecute()
    {
        SKIP_WITHOUT("gcc", "perl");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"ZELTAHOME"_s);
        environment.remove(u"KORVILDIR"_s);

        const Run build = korvil({"build", "calculator.rtp"}, QString(), environment);
        QVERIFY2(build.status == 0, qPrintable(build.out + build.err));
        QVERIFY(QFileInfo::exists(path("build/calc")));

        const Run execute = korvil({"execute", "calculator.rtp"}, QString(), environment);
        QVERIFY2(execute.status == 0, qPrintable(execute.out + execute.err));
        QVERIFY(!execute.out.contains(u'\r') && !execute.out.contains(u'\033'));
        for (const char* node : {"calc", "Unit tests", "System tests"}) {
            const int block = int(execute.out.indexOf(u"Result files of \"%1\":\n"_s.arg(QLatin1String(node))));
            QVERIFY2(block >= 0, qPrintable(execute.out));
            // The block's lines: "<n> lines  <file>" or "(none)  <file>".
            const QStringList lines = execute.out.mid(block).split(u'\n').mid(1, 7);
            int withLines = 0;
            for (const QString& line : lines) {
                const QRegularExpressionMatch m =
                    QRegularExpression(u"^ +(\\d+) lines?  (.+)$"_s).match(line);
                if (!m.hasMatch()) {
                    QVERIFY2(line.trimmed().startsWith("(none)"), qPrintable(line));
                    continue;
                }
                const QString file = QDir(m_dir->path()).filePath(m.captured(2));
                QCOMPARE(QString::number(TestFiles::readFile(file).count('\n')), m.captured(1));
                withLines += m.captured(1).toInt() > 0;
            }
            QVERIFY2(withLines > 0, node);
        }
    }

    // The coverage of the run above: each file and function of the unit
    // test with its lines, branches and functions, the totals, and the
    // lcov and Cobertura files.
    void reportCoverage()
    {
        SKIP_WITHOUT("gcc", "perl", "gcov");
        const Run report = korvil({"report", "coverage", "calculator.rtp", "Unit tests", "--lcov", "cov.info",
                                   "--cobertura", "cov.xml"});
        QVERIFY2(report.status == 0, qPrintable(report.out + report.err));
        QVERIFY2(report.err.isEmpty(), qPrintable(report.err));
        QVERIFY(report.out.startsWith(u"Coverage of \"Unit tests\": build/results/Unit tests.tio\n"_s));
        const QRegularExpression counts(u"^ +(\\S+) +(\\d+)/(\\d+) +([\\d.]+) % "_s);
        const QString calc = lineStarting(report.out, u"src/calc.c"_s);
        const QRegularExpressionMatch m = counts.match(calc);
        QVERIFY2(m.hasMatch(), qPrintable(report.out));
        QVERIFY(m.captured(2).toInt() > 0 && m.captured(2).toInt() <= m.captured(3).toInt());
        QVERIFY(!lineStarting(report.out, u"calc_evaluate"_s).isEmpty());
        QVERIFY(counts.match(lineStarting(report.out, u"Total"_s)).hasMatch());
        const QByteArray lcov = TestFiles::readFile(path("cov.info"));
        QVERIFY(lcov.startsWith("TN:Unit_tests\nSF:/"));
        QVERIFY(lcov.contains("/src/calc.c\n"));
        QVERIFY(TestFiles::readFile(path("cov.xml")).contains("<coverage "));

        // The whole project: the unit test is the one test node with coverage.
        const Run all = korvil({"report", "coverage", "calculator.rtp"});
        QCOMPARE(all.status, 0);
        QVERIFY(all.out.contains(u"src/calc.c"_s));

        // The application's run measured no memory profile: told, no fault.
        const Run memory = korvil({"report", "memory", "calculator.rtp", "calc"});
        QCOMPARE(memory.status, 0);
        QVERIFY2(memory.out.startsWith(u"Memory profile of \"calc\": none recorded: the run measured no memory "
                                       "profile (set memoryProfiling to true"_s),
                 qPrintable(memory.out));
    }

    // A run of the example's unit test with a failing check: --junit
    // writes a JUnit file that the schema accepts and that names the
    // check, the run's status stays a failure; the reports read the
    // run's result files back, and the trace becomes a trace-event file
    // with one event per call entered.
    void reportsOfARun()
    {
        SKIP_WITHOUT("gcc", "perl", "xmllint");
        QTemporaryDir dir;
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, dir.path());
        const QString test = dir.filePath(u"tests/unit/test_calc.c"_s);
        QByteArray source = TestFiles::readFile(test);
        QVERIFY(source.contains("check_evaluate(\"2 + 3\", CALC_OK, 5);"));
        source.replace("check_evaluate(\"2 + 3\", CALC_OK, 5);", "check_evaluate(\"2 + 3\", CALC_OK, 6);");
        TestFiles::writeFile(test, source);
        const auto tool = [&](const QStringList& arguments) { return korvil(arguments, dir.path()); };
        QCOMPARE(tool({"set", "calculator.rtp", "Unit tests", "arguments", "--", "--rounds", "1"}).status, 0);
        const Run build = tool({"build", "calculator.rtp", "Unit tests"});
        QVERIFY2(build.status == 0, qPrintable(build.out + build.err));

        const Run execute = tool({"execute", "calculator.rtp", "Unit tests", "--junit", "out/junit.xml"});
        QVERIFY2(execute.status == 1, qPrintable(execute.out + execute.err));
        const QString junit = dir.filePath(u"out/junit.xml"_s);
        QProcess lint;
        lint.start(u"xmllint"_s, {u"--noout"_s, u"--schema"_s, QStringLiteral(SDK110_TEST_DATA "/junit/junit.xsd"), junit});
        QVERIFY(lint.waitForFinished(60000));
        QVERIFY2(lint.exitCode() == 0, lint.readAllStandardError().constData());
        const QByteArray xml = TestFiles::readFile(junit);
        QVERIFY2(xml.contains("<testsuite name=\"Unit tests\""), xml.constData());
        QVERIFY2(xml.contains("<testcase name=\"&quot;2 + 3&quot; gave ok 5, expected ok 6\" classname=\"Unit tests\""),
                 xml.constData());
        QVERIFY(xml.contains("failures=\"1\""));

        const Run results = tool({"report", "results", "calculator.rtp", "Unit tests"});
        QCOMPARE(results.status, 1);
        QVERIFY2(results.out.startsWith(u"Unit tests: FAILED, 1 test(s), 1 check(s): 0 passed, 1 failed\n"_s),
                 qPrintable(results.out));
        QVERIFY(results.out.contains(u"    failed: \"2 + 3\" gave ok 5, expected ok 6\n"_s));
        QVERIFY(results.out.endsWith(u"Total: 1 test node(s), 0 passed, 1 failed; 1 check(s), 1 failed\n"_s));
        QCOMPARE(results.err, QString());

        const Run profile = tool({"report", "profile", "calculator.rtp", "Unit tests"});
        QVERIFY2(profile.status == 0, qPrintable(profile.err));
        QVERIFY2(QRegularExpression(u"\n +\\d+ us +[\\d.]+ +\\d+ us +16 +\\d+ us  calc_evaluate\n"_s).match(profile.out).hasMatch(),
                 qPrintable(profile.out));
        QVERIFY(profile.out.contains(u" us  main\n"_s));

        const Run memory = tool({"report", "memory", "calculator.rtp", "Unit tests"});
        QVERIFY2(memory.status == 0, qPrintable(memory.err));
        QVERIFY2(memory.out.contains(u": 16 allocation(s), 16 free(s), "_s), qPrintable(memory.out));
        QVERIFY(memory.out.contains(u"0 block(s) not freed, 0 byte(s)\n"_s));

        const Run trace = tool({"report", "trace", "calculator.rtp", "Unit tests", "--chrome", "out/trace.json"});
        QVERIFY2(trace.status == 0, qPrintable(trace.err));
        QJsonParseError error;
        const QJsonDocument json = QJsonDocument::fromJson(TestFiles::readFile(dir.filePath(u"out/trace.json"_s)), &error);
        QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(error.errorString()));
        int calls = 0;
        for (const QJsonValue& event : json.object().value(u"traceEvents"_s).toArray())
            calls += event.toObject().value(u"ph"_s) == u"X"_s;
        int entries = 0;
        for (const QByteArray& line : TestFiles::readFile(dir.filePath(u"build/results/Unit tests.tdf"_s)).split('\n'))
            entries += line.startsWith("ME ");
        QVERIFY(entries > 16);
        QCOMPARE(calls, entries);

        const Run unknown = tool({"report", "speed", "calculator.rtp"});
        QCOMPARE(unknown.status, 2);
        QVERIFY(unknown.err.contains(u"unknown report \"speed\" (one of: coverage, results, profile, memory, trace"_s));
        QVERIFY(messageLayoutFault(unknown.err).isEmpty());
    }

    // A second save of a saved project writes the same bytes, project file
    // and object information file.
    void saveRoundTrip()
    {
        QVERIFY(QDir().mkpath(path("saved")));
        QCOMPARE(korvil({"save", "calculator.rtp", "--as", "saved/first.rtp"}).status, 0);
        const QByteArray project = TestFiles::readFile(path("saved/first.rtp"));
        const QByteArray objects = TestFiles::readFile(path("saved/first.inf"));
        QVERIFY(project.contains("<project>"));
        QVERIFY(project.contains("<project_file>../sub/printer/printer.rtp</project_file>"));
        QVERIFY(objects.contains("<objects>") || objects.contains("<objects "));
        QCOMPARE(korvil({"save", "saved/first.rtp", "--as", "saved/first.rtp"}).status, 0);
        QCOMPARE(TestFiles::readFile(path("saved/first.rtp")), project);
        QCOMPARE(TestFiles::readFile(path("saved/first.inf")), objects);
    }

    // --- analysis

    void tags_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QStringList>("expected"); // lines, in this order
        QTest::newRow("file") << "file" << QStringList{"include/calc.h", "src/calc.c",
                                             "  calc_add(long a,long b,long * result)  (line 8)", "src/main.cpp",
                                             "  (anonymous)  (line 10)",
                                             "    evaluate(const std::string & expression)  (line 12)"};
        QTest::newRow("type") << "type"
                              << QStringList{"Test Items (3)", "  Classes (0)", "  Functions (", "    calc_add(",
                                             "    (anonymous)::evaluate(", "  Packages (1)",
                                             "    (anonymous)  (main.cpp:10)"};
        QTest::newRow("alpha") << "alpha"
                               << QStringList{"src/calc.c", "  calc_add(", "  calc_divide(", "  read_number(",
                                              "include/calc.h", "src/main.cpp", "  (anonymous)", "    evaluate(",
                                              "  main(", "sub/printer/src/printer.c", "tests/unit/test_calc.c"};
    }

    // The project's source files analysed by the tagging driver, printed in
    // each layout of the tag browser.
    void tags()
    {
        SKIP_WITHOUT("ctags");
        QFETCH(QString, layout);
        QFETCH(QStringList, expected);
        const Run run = korvil({"tags", "calculator.rtp", "--layout", layout});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        const QStringList lines = run.out.split(u'\n');
        int at = 0;
        for (const QString& want : expected) {
            while (at < lines.size() && !lines.at(at).startsWith(want))
                ++at;
            QVERIFY2(at < lines.size(), qPrintable(u"%1 missing in order from:\n%2"_s.arg(want, run.out)));
        }
    }

    void directoryStandsForItsSources_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("files"); // as printed, in this order
        // The order of the file-type table: C, then C++, then headers.
        const QStringList c{"src/calc.c", "sub/printer/src/printer.c", "tests/unit/test_calc.c"};
        const QStringList cpp{"src/main.cpp"};
        const QStringList headers{"include/calc.h", "sub/printer/include/printer.h"};
        QTest::newRow("tags") << "tags" << c + cpp + headers;
        QTest::newRow("metrics") << "metrics" << c + cpp + headers;
    }

    // A directory given stands for its source files below it, hidden ones
    // left out. Without a project, a directory without sources, a missing
    // file and one of no known type are told, the others are analysed, and
    // the status says something failed.
    void directoryStandsForItsSources()
    {
        SKIP_WITHOUT("ctags");
        QFETCH(QString, command);
        QFETCH(QStringList, files);
        const QString tree = path("tree-" + command);
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, tree);
        TestFiles::writeFile(tree + "/.hidden/ghost.c", "int ghost(void) { return 0; }\n");
        TestFiles::writeFile(tree + "/src/.ghost.c", "int ghost(void) { return 0; }\n");
        const Run run = korvil({command, "."}, tree);
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QStringList printed; // the lines that name a file of the tree
        for (const QString& line : run.out.split(u'\n')) {
            const QString first = line.section(u' ', 0, 0);
            if (!first.isEmpty() && QFileInfo(tree + u'/' + first).isFile())
                printed.append(first);
        }
        QCOMPARE(printed, files);
        QVERIFY(!run.out.contains("ghost"));

        TestFiles::writeFile(tree + "/empty/notes.txt", "nothing to analyse\n");
        const Run some = korvil({command, "empty", "src/calc.c", "missing.c", "Makefile", "src/main.cpp"}, tree);
        QCOMPARE(some.status, 1);
        QVERIFY2(some.err.contains("empty: no file in this directory is a C, C++"), qPrintable(some.err));
        QVERIFY(some.err.contains("missing.c: no such file"));
        QVERIFY2(some.err.contains("Makefile: not a C, C++"), qPrintable(some.err));
        QVERIFY2(messageLayoutFault(some.err).isEmpty(), qPrintable(some.err));
        QVERIFY(some.out.contains("calc.c"));
        if (command == u"tags"_s) {
            QVERIFY(some.err.contains("Makefile: not a C, C++, Ada, Java or header file"));
            QVERIFY2(some.out.contains("main.cpp\n  (anonymous)  (line 10)\n    evaluate("), qPrintable(some.out));
        }
    }

    // Two tools tagging at once, each its own files one after the other:
    // neither sees the other's tags.
    void runsAtOnceKeepTheirOwnTags()
    {
        SKIP_WITHOUT("ctags");
        QStringList alpha, beta;
        for (int i = 0; i < 20; ++i) {
            alpha << path(u"at-once/alpha_%1.c"_s.arg(i));
            beta << path(u"at-once/beta_%1.c"_s.arg(i));
            TestFiles::writeFile(alpha.last(), u"int alpha_%1(void) { return %1; }\n"_s.arg(i).toUtf8());
            TestFiles::writeFile(beta.last(), u"int beta_%1(void) { return %1; }\n"_s.arg(i).toUtf8());
        }
        QProcess first, second;
        first.start(QStringLiteral(KORVIL_BINARY), QStringList{"tags"} + alpha);
        second.start(QStringLiteral(KORVIL_BINARY), QStringList{"tags"} + beta);
        QVERIFY(first.waitForFinished(300000) && second.waitForFinished(300000));
        const QString firstOut = QString::fromLocal8Bit(first.readAllStandardOutput());
        const QString secondOut = QString::fromLocal8Bit(second.readAllStandardOutput());
        QCOMPARE(first.exitCode(), 0);
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(firstOut.count("alpha_"), 40); // the file and its function
        QCOMPARE(secondOut.count("beta_"), 40);
        QVERIFY(!firstOut.contains("beta_") && !secondOut.contains("alpha_"));
    }

    // A row per file and unit with its metrics, the aggregates of each file
    // and of the project, testing times from the Stroud number.
    void metrics()
    {
        SKIP_WITHOUT("perl");
        const Run run = korvil({"metrics", "calculator.rtp", "--stroud", "36"});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.startsWith("Metrics of 6 files (Stroud number 36)\n"));
        const QStringList header = lineStarting(run.out, "element").split(u' ', Qt::SkipEmptyParts);
        QCOMPARE(header, (QStringList{"element", "kind", "line", "VG", "Statements", "NestedLevel", "Effort",
                                      "TestingTime", "Src1", "Src2"}));
        // src/main.cpp: file, line 1, then the seven values.
        const QStringList file = lineStarting(run.out, "src/main.cpp").split(u' ', Qt::SkipEmptyParts);
        QCOMPARE(file.size(), 10);
        QCOMPARE(file.mid(1, 3), (QStringList{"file", "1", "9"}));
        QVERIFY(qAbs(file.at(7).toDouble() - file.at(6).toDouble() / 36) < 0.01);
        QVERIFY(lineStarting(run.out, "main").contains("function"));
        // The file's sum of VG over its two functions is its own VG.
        const int fileRow = int(run.out.indexOf("src/main.cpp"));
        const QStringList sum = lineStarting(run.out.mid(fileRow), "_SUM over 2 units").split(u' ', Qt::SkipEmptyParts);
        QCOMPARE(sum.value(4), u"9"_s);
        QVERIFY(lineStarting(run.out, "_MEAN over 6 files").size() > 0);
        QVERIFY(lineStarting(run.out, "_MAX over 6 files").size() > 0);
    }

    // --- split

    void split()
    {
        const QString input = path("run/out.spt");
        TestFiles::writeFile(input, "BT \"t\"\nNT \"cov\"\nSF \"trace\"\nCS \"trace\"\nPU \"mem\"\nQU \"perf\"\n"
                                    "td \"end\"\nZZ \"unknown pair\"\nRL \"last\"");
        const Run here = korvil({"split", input});
        QCOMPARE(here.status, 0);
        QVERIFY2(here.out.contains(u"     3 lines  %1\n"_s.arg(path("run/atlout.rio"))), qPrintable(here.out));
        QVERIFY(here.out.contains(u"     2 lines  %1\n"_s.arg(path("run/tracer.tdf"))));
        QVERIFY(here.out.contains(u"      1 line  %1\n"_s.arg(path("run/atlendtest.txt"))));
        QVERIFY(!here.out.contains("atlout.rej"));

        const Run there = korvil({"split", input, "--out", "results"});
        QCOMPARE(there.status, 0);
        QCOMPARE(TestFiles::readFile(path("results/zeltacov.tio")), QByteArray("NT \"cov\"\n"));
        QCOMPARE(TestFiles::readFile(path("results/atlout.rio")), TestFiles::readFile(path("run/atlout.rio")));

        const Run missing = korvil({"split", "nothing.spt"});
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.err.contains("nothing.spt: no such file"));
        const Run itself = korvil({"split", path("run/atlout.rio")});
        QCOMPARE(itself.status, 1);
        QVERIFY(itself.err.contains("atlout.rio"));

        // Result files that cannot be written (each name taken by a
        // directory, which binds root too): counted, told, a failure.
        for (const char* name : {"atlout.rio", "zeltacov.tio", "tracer.tdf", "mendralt.tpf",
                                 "tallivexlt.tqf", "atlendtest.txt", "atlout.rej"})
            QVERIFY(QDir().mkpath(path(u"blocked/"_s + QLatin1String(name))));
        const Run blocked = korvil({"split", input, "--out", "blocked"});
        QCOMPARE(blocked.status, 1);
        QVERIFY2(blocked.err.contains("3 line(s) could not be written to blocked/atlout.rio: "),
                 qPrintable(blocked.err));
        QVERIFY(blocked.err.contains("2 line(s) could not be written to blocked/tracer.tdf: "));
        QVERIFY2(messageLayoutFault(blocked.err).isEmpty(), qPrintable(blocked.err));
        QVERIFY(!blocked.out.contains("no result file"));
    }

    // Following a growing file until terminated: lines written meanwhile
    // are split, and the final pass takes the last line without "\n".
    void splitFollow()
    {
        const QString input = path("live/out.spt");
        TestFiles::writeFile(input, "NT \"first\"\n");
        QProcess process;
        process.setWorkingDirectory(m_dir->path());
        process.start(QStringLiteral(KORVIL_BINARY), {"split", "--follow", input, "--out", "live-results"});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(TestFiles::readFile(path("live-results/zeltacov.tio")) == "NT \"first\"\n", 20000);
        {
            QFile file(input);
            QVERIFY(file.open(QIODevice::Append));
            file.write("SF \"trace\"\nNT \"second\"\nRL \"unended");
        }
        QTRY_VERIFY_WITH_TIMEOUT(TestFiles::readFile(path("live-results/tracer.tdf")) == "SF \"trace\"\n", 20000);
        QVERIFY(!QFileInfo::exists(path("live-results/atlout.rio")));
        process.terminate();
        QVERIFY(process.waitForFinished(20000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(TestFiles::readFile(path("live-results/zeltacov.tio")), QByteArray("NT \"first\"\nNT \"second\"\n"));
        QCOMPARE(TestFiles::readFile(path("live-results/atlout.rio")), QByteArray("RL \"unended\n"));
        const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
        QVERIFY2(out.contains("2 lines  live-results/zeltacov.tio"), qPrintable(out));
    }

    // --- the commands that make and edit projects

    // From nothing to a running program: a new project, an application
    // of two sources, the header in the file tree, a build and a run.
    void fromNothing()
    {
        SKIP_WITHOUT("gcc", "perl");
        TestFiles::writeFile(demoPath("main.c"),
                             "#include \"greet.h\"\nint main(void) { return greet() - 7; }\n");
        TestFiles::writeFile(demoPath("greet.c"), "#include \"greet.h\"\nint greet(void) { return 7; }\n");
        TestFiles::writeFile(demoPath("greet.h"), "int greet(void);\n");
        Run run = demo({"new", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out,
            QStringLiteral("demo.rtp: a new project on GNU C (host gcc), configurations Debug, Release "
                           "(current Debug)\n"));
        run = demo({"add", "demo.rtp", "application", "greeter", "main.c", "greet.c"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, u"demo.rtp: added application \"greeter\" under \"demo\" with 2 sources\n"_s);
        run = demo({"add-files", "demo.rtp", "."});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, u"demo.rtp: 1 file added to the file tree\n"_s);
        run = demo({"build", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QVERIFY(QFileInfo(demoPath("build/greeter")).isExecutable());
        run = demo({"execute", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.contains(QLatin1String("greeter: passed")));
        m_demoMade = true;
    }

    void faults_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("new over a project") << QStringList{"new", "demo.rtp"} << 1
            << "/demo.rtp: The file exists already: a new project does not replace it.";
        QTest::newRow("unknown language") << QStringList{"new", "x.rtp", "--language", "Cobol"} << 2
            << "korvil: new: --language \"Cobol\" is none of C, C++, Ada, Java";
        QTest::newRow("package of another language")
            << QStringList{"new", "x.rtp", "--language", "C", "--package", "gcc-cpp"} << 2
            << "korvil: new: the package \"GNU C++ (host g++)\" is for C++, not C";
        QTest::newRow("kind the parent does not take")
            << QStringList{"add", "demo.rtp", "application", "inner", "--under", "greeter"} << 2
            << "/demo.rtp: \"greeter\" takes no \"application\" node: it takes source, library, test_script, user, link.";
        QTest::newRow("missing source") << QStringList{"add", "demo.rtp", "library", "lib", "nowhere.c"}
                                        << 1 << "/nowhere.c: No such file or directory.";
        QTest::newRow("unknown key") << QStringList{"set", "demo.rtp", "greeter", "cflag", "x"} << 2
            << "No setting has the key \"cflag\"; the closest keys are cflags (Compiler options)";
        QTest::newRow("unknown configuration")
            << QStringList{"set", "demo.rtp", "greeter", "debug", "yes", "-c", "Nightly"} << 2
            << "The project has no configuration \"Nightly\"; it has Debug, Release.";
        QTest::newRow("import of nothing") << QStringList{"import", "nowhere.json"} << 1
                                           << "korvil: nowhere.json: no such file or directory";
    }

    // Each fault is one message naming the file and the reason, with its
    // exit status; the project's files stay as they were.
    void faults()
    {
        if (!m_demoMade)
            QSKIP("no project was made");
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, message);
        const QByteArray project = TestFiles::readFile(demoPath("demo.rtp"));
        const QByteArray objects = TestFiles::readFile(demoPath("demo.inf"));
        QVERIFY(!project.isEmpty());
        const Run run = demo(arguments);
        QCOMPARE(run.status, status);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(run.err.startsWith(QLatin1String("korvil: ")));
        QVERIFY(run.err.endsWith(u'\n'));
        QCOMPARE(TestFiles::readFile(demoPath("demo.rtp")), project);
        QCOMPARE(TestFiles::readFile(demoPath("demo.inf")), objects);
        QVERIFY(!QFileInfo::exists(demoPath("x.rtp")));
    }

    // What set writes, get reads back: texts, lists, another
    // configuration; the project's own value is inherited until set.
    void setGet()
    {
        if (!m_demoMade)
            QSKIP("no project was made");
        QCOMPARE(demo({"get", "demo.rtp", "greeter", "cflags"}).out, u"-g -O0\n"_s);
        QCOMPARE(demo({"get", "demo.rtp", "greeter", "cflags", "-c", "Release"}).out, u"-O2\n"_s);
        QCOMPARE(demo({"set", "demo.rtp", "greeter", "cflags", "--", "-O1", "-Wall"}).status, 0);
        QCOMPARE(demo({"get", "demo.rtp", "greeter", "cflags"}).out, u"-O1 -Wall\n"_s);
        QCOMPARE(demo({"set", "demo.rtp", "greeter", "ge_incdir", "inc", "my dir"}).status, 0);
        QCOMPARE(demo({"get", "demo.rtp", "greeter", "ge_incdir"}).out, u"inc\nmy dir\n"_s);
        QCOMPARE(demo({"set", "demo.rtp", "greeter", "debug", "no", "-c", "Release"}).status, 0);
        QCOMPARE(demo({"get", "demo.rtp", "greeter", "debug", "-c", "Release"}).out, u"false\n"_s);
        QCOMPARE(demo({"get", "demo.rtp", "demo", "cflags"}).out, u"-g -O0\n"_s);
        QCOMPARE(demo({"set", "demo.rtp", "greeter", "cflags", "--", "-g", "-O0"}).status, 0);
        QVERIFY(demo({"build", "demo.rtp"}).status == 0);
    }

    void byteStable_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>(
            "projectChange"); // first and last inserted line, trimmed; empty: none
        QTest::addColumn<QStringList>("objectsChange");
        QTest::newRow("set") << QStringList{"set", "demo.rtp", "greeter", "ldflags", "--", "-g -s"}
                             << QStringList{"<ldflags>-g -s</ldflags>", "<ldflags>-g -s</ldflags>"}
                             << QStringList{};
        QTest::newRow("add") << QStringList{"add", "demo.rtp", "group", "Tests"}
                             << QStringList{"<group>", "</group>"} << QStringList{};
        QTest::newRow("add-files") << QStringList{"add-files", "demo.rtp", "extra"} << QStringList{}
                                   << QStringList{"<folder>", "</folder>"};
        QTest::newRow("add with a file") << QStringList{"add", "demo.rtp", "library", "extralib", "extra/x.c"}
            << QStringList{"<library>", "</library>"} << QStringList{};
    }

    // A command changes the files only where it changed the project: the
    // lines it inserts form one element, every other byte stays, and the
    // file is what a save of the project writes.
    void byteStable()
    {
        if (!m_demoMade)
            QSKIP("no project was made");
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, projectChange);
        QFETCH(QStringList, objectsChange);
        TestFiles::writeFile(demoPath("extra/x.c"), "int x;\n");
        const QByteArray project = TestFiles::readFile(demoPath("demo.rtp"));
        const QByteArray objects = TestFiles::readFile(demoPath("demo.inf"));
        const Run run = demo(arguments);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        const QByteArray projectAfter = TestFiles::readFile(demoPath("demo.rtp"));
        const QByteArray objectsAfter = TestFiles::readFile(demoPath("demo.inf"));
        for (const auto& [before, after, expected] :
             {std::make_tuple(project, projectAfter, projectChange),
              std::make_tuple(objects, objectsAfter, objectsChange)}) {
            const Change changed = change(before, after);
            QVERIFY2(changed.removed.isEmpty(), qPrintable(changed.removed.join(u'\n')));
            if (expected.isEmpty()) {
                QVERIFY(changed.inserted.isEmpty());
                continue;
            }
            QVERIFY(!changed.inserted.isEmpty());
            QCOMPARE(changed.inserted.constFirst().trimmed(), expected.at(0));
            QCOMPARE(changed.inserted.constLast().trimmed(), expected.at(1));
        }
        QDir().mkpath(demoPath("copy"));
        QCOMPARE(demo({"save", "demo.rtp", "--as", demoPath("copy/demo.rtp")}).status, 0);
        QCOMPARE(TestFiles::readFile(demoPath("copy/demo.rtp")), projectAfter);
    }

    // The import prints the nodes it made (TestProjectImport builds and
    // runs an imported project).
    void import()
    {
        const QString from = TestPaths::data(u"databases/import"_s);
        for (QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString file = it.next();
            TestFiles::writeFile(demoPath(u"imported/"_s + QDir(from).relativeFilePath(file)),
                                 TestFiles::readFile(file).replace("@DIR@", QFile::encodeName(demoPath("imported"))));
        }
        const Run run = korvil({"import", "src/b/compile_commands.json"}, demoPath("imported"));
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, QStringLiteral("src/src.rtp: 2 nodes, 4 sources\n  library calc: 1 source\n"
                                         "  application app: 3 sources, links calc\n"));
    }
};

QTEST_GUILESS_MAIN(TestKorvil)
#include "tst_korvil.moc"
