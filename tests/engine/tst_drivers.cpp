// The installation's driver scripts run by perl on hand-written environment
// scripts (compile, archive, link, run, $STAGE, clean, faults), then the
// example project built, executed with its runtime output split, and cleaned
// through the walk.
#include "QAFileSurvey.h"
#include "QAProcess.h"
#include "QAStConfiguration.h"
#include "QAStNodeUnitTesting.h"
#include "QAStProject.h"
#include "QASTSplitSurvey.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"
#include "TestWalk.h"

#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// What a driver printed (both channels, in order) and how it ended.
struct Run {
    int code = -1;
    QByteArray output;
    QByteArray lastLine() const { return output.trimmed().split('\n').last(); }
    bool has(const QByteArray& text) const { return output.contains(text); }
};

QString perlString(QString text)
{
    text.replace(QLatin1Char('\\'), u"\\\\"_s).replace(QLatin1Char('\''), u"\\'"_s);
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

// The lines of a file, without their newlines.
QList<QByteArray> fileLines(const QString& path)
{
    QList<QByteArray> lines = TestFiles::readFile(path).split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

const QByteArray dateField = R"("\d{4}-\d\d-\d\d \d\d:\d\d:\d\d")";

// The records with each test's length (the last field of its SM record, in
// milliseconds) left out: it differs from run to run.
QList<QByteArray> withoutLengths(QList<QByteArray> records)
{
    static const QRegularExpression length(u"^(SM .*) \\d+$"_s);
    for (QByteArray& record : records) {
        const QRegularExpressionMatch m = length.match(QString::fromUtf8(record));
        if (record.startsWith("SM ") && m.hasMatch())
            record = m.captured(1).toUtf8();
        else if (record.startsWith("SM "))
            record += " (no length)";
    }
    return records;
}

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

class TestDrivers : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QString path(const QString& relative) const { return m_dir->filePath(relative); }
    void write(const QString& relative, const QByteArray& text) { TestFiles::writeFile(path(relative), text); }

    // The variables the drivers read, for a node of that name; the result
    // files under "out", objects under "obj". A QStringList value is a
    // list, a name "ENV:X" an entry of %ENV.
    QVariantMap vars(const QString& name, const QString& stage = u"cptler"_s) const
    {
        const QString targets = TestPaths::installTree() + u"/targets/gcc-c"_s;
        QVariantMap v{{"NAME", name}, {"STAGE", stage}, {"LP_TARGETDIR", targets}, {"TARGETDIR", targets},
                      {"INTDIR", "obj"}, {"OUTDIR", "out"}, {"OBJEXT", ".o"}, {"CPPFLAGS", ""},
                      {"CFLAGS", "-g -O0"}, {"LDFLAGS", "-g"}, {"LIBRARIES", ""}, {"ARGUMENTS", ""},
                      {"INCLUDE_DIR_LIST", QStringList{"include"}}, {"OBJECTS", QStringList()},
                      {"ADDITIONAL_LIBRARIES", QStringList()}, {"TEST_NAME", name},
                      {"ENV:ZELTASTUDIO_VERBOSE", "0"}};
        v["ATL_OUT_FILE"] = u"obj/%1.spt"_s.arg(name);
        const std::pair<const char*, const char*> results[] = {
            {"LOGFILENAME", "log"}, {"ATC_TIO_NAME", "tio"}, {"ATT_TDF_NAME", "tdf"},
            {"TDFFILE", "tdf"},     {"ATP_TPF_NAME", "tpf"}, {"ATQ_TQF_NAME", "tqf"}};
        for (const auto& [var, ext] : results)
            v[var] = u"out/%1.%2"_s.arg(name, ext);
        return v;
    }

    QString writeEnv(const QVariantMap& v, const QString& file = u"env.pl"_s)
    {
        QByteArray text;
        for (auto it = v.begin(); it != v.end(); ++it) {
            if (it.key().startsWith(QLatin1String("ENV:"))) {
                text += u"$ENV{'%1'} = %2;\n"_s.arg(it.key().mid(4), perlString(it.value().toString())).toUtf8();
            } else if (it.value().typeId() == QMetaType::QStringList) {
                QStringList items;
                for (const QString& item : it.value().toStringList())
                    items << perlString(item);
                text += u"@%1=(%2);\n"_s.arg(it.key(), items.join(u", "_s)).toUtf8();
            } else {
                text += u"$%1=%2;\n"_s.arg(it.key(), perlString(it.value().toString())).toUtf8();
            }
        }
        write(file, text + "1;\n");
        return file;
    }

    Run run(const QString& driver, const QVariantMap& v, const QString& kind, const QStringList& files = {})
    {
        return runWith(driver, writeEnv(v), kind, files);
    }
    Run runWith(const QString& driver, const QString& env, const QString& kind, const QStringList& files = {})
    {
        const QString install = TestPaths::installTree();
        QProcess perl;
        perl.setWorkingDirectory(m_dir->path());
        perl.setProcessChannelMode(QProcess::MergedChannels);
        perl.start(u"perl"_s, QStringList{"-I" + install + "/lib/perl",
                                                       install + "/scripts/" + driver + ".pl", env, kind}
                                               + files);
        Run result;
        if (perl.waitForFinished(120000) && perl.exitStatus() == QProcess::NormalExit)
            result.code = perl.exitCode();
        result.output = perl.readAll();
        return result;
    }

    // Builds src/<file> as a source node; the object is obj/<base>.o.
    bool compile(const QString& file, QVariantMap v = {})
    {
        if (v.isEmpty())
            v = vars(file);
        v["FILENAME"] = path(u"src/"_s + file);
        const Run r = run(u"Build"_s, v, u"source"_s);
        if (r.code != 0)
            qWarning().noquote() << r.output;
        return r.code == 0;
    }

    // A package of the tests in pkg/: the first ini in name order counts.
    QString testPackage(const QByteArray& extra = {})
    {
        write("pkg/b-second.ini", "NAME = \"Second\"\nCC = /nonexistent/cc\n");
        write("pkg/a-first.ini", "# a package of the tests\n"
                                 "NAME = \"Test \" \"GCC\"   // adjacent strings join\n"
                                 "LANGUAGE = C\n"
                                 "DEFAULT_DEFINES = \"FROM_PACKAGE=1 -DOTHER\"\n"
                                 "DEFAULT_INCLUDE_PATHS = ( \"/usr/include\", )\n"
                                 "CC = \"gcc -std=c99\"\n"
                                 "LD = gcc\nAR = ar\nARFLAGS = rcs\nDLLEXT = .so\nDEFAULT_LIBS = \"-lm\"\n"
                                 + extra);
        return path(u"pkg"_s);
    }

    // The example, one copy for all its tests, which follow each other.
    QString examplePath(const QString& relative) const { return m_example->filePath(relative); }
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
        QDirIterator it(m_example->path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            found << QDir(m_example->path()).relativeFilePath(it.next());
        found.sort();
        return found;
    }

    std::unique_ptr<QTemporaryDir> m_example;
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;
    QAStNodeUnitTesting* m_unit = nullptr;
    QStringList m_before;
    QTemporaryDir m_gates; // the files a waiting test program looks for

private slots:
    void initTestCase()
    {
        SKIP_WITHOUT("perl", "gcc", "g++", "ar");
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        m_example = std::make_unique<QTemporaryDir>();
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_example->path());
        m_project = std::make_unique<QAStProject>(u"calculator"_s, QPixmap());
        QVERIFY(m_project->open(examplePath(u"calculator.rtp"_s)));
        m_unit = qobject_cast<QAStNodeUnitTesting*>(m_project->findNode(u"Unit tests"_s));
        QVERIFY(m_unit);
    }

    void cleanupTestCase()
    {
        m_project.reset();
        QAStProject::setModeBatch(false);
    }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        write("include/calc.h", "int add(int a, int b);\nconst char* message(void);\n");
    }

    // C with the package's compiler, defines and quoted flags (the example
    // builds C++ with the C++ package's g++).
    void compilesSources()
    {
        write("src/calc.c", "#include \"calc.h\"\n"
                            "#if !defined(FROM_PACKAGE) || !defined(OTHER)\n#error no package defines\n#endif\n"
                            "int add(int a, int b) { return a + b; }\n"
                            "const char* message(void) { return MSG; }\n");
        QVariantMap v = vars("calc.c");
        v["LP_TARGETDIR"] = testPackage();
        v["CPPFLAGS"] = "-DMSG=\"\\\"two words\\\"\"";
        v["FILENAME"] = path("src/calc.c");
        Run r = run("Build", v, "source");
        QVERIFY2(r.code == 0, r.output);
        QVERIFY(QFileInfo::exists(path("obj/calc.o")));
        const QByteArray command = r.output.split('\n').first();
        QVERIFY2(command.startsWith("gcc -std=c99 '-DMSG=\"two words\"' -g -O0 -DFROM_PACKAGE=1 -DOTHER -I"), command);
        QVERIFY(command.contains(" -I" + path("include").toUtf8() + " -fPIC -c "));
        QVERIFY(command.endsWith(" -o obj/calc.o"));
    }

    // gcc's own file:line messages, then the failure line; a missing file.
    void reportsCompileErrors()
    {
        write("src/bad.c", "int f(void)\n{\n    return undeclared_name;\n}\n");
        QVariantMap v = vars("bad.c");
        v["FILENAME"] = path("src/bad.c");
        Run r = run("Build", v, "source");
        QVERIFY(r.code != 0);
        QVERIFY2(QRegularExpression(R"(src/bad\.c:3:\d+: error: .undeclared_name)").match(QString::fromUtf8(r.output)).hasMatch(), r.output);
        QCOMPARE(r.lastLine(), "bad.c: compilation of " + path("src/bad.c").toUtf8() + " failed (status 1)");
        QVERIFY(!QFileInfo::exists(path("obj/bad.o")));
        v["FILENAME"] = path("src/none.c");
        r = run("Build", v, "source");
        QVERIFY(r.code != 0);
        QVERIFY(r.has(path("src/none.c").toUtf8() + ":1: no such file\n"));
        QCOMPARE(r.lastLine(), "bad.c: source " + path("src/none.c").toUtf8() + " not found");
    }

    void honoursStages_data()
    {
        QTest::addColumn<QString>("stage");
        QTest::addColumn<QString>("verbose");
        QTest::addColumn<bool>("object");
        QTest::addColumn<bool>("skippedLine");
        QTest::newRow("t only") << "t" << "1" << true << false;
        QTest::newRow("no t, quiet") << "cpler" << "0" << false << false;
        QTest::newRow("p, verbose") << "p" << "1" << false << true;
        QTest::newRow("all, verbose") << "cptler" << "1" << true << true;
    }

    void honoursStages()
    {
        QFETCH(QString, stage);
        QFETCH(QString, verbose);
        QFETCH(bool, object);
        QFETCH(bool, skippedLine);
        write("src/calc.c", "int add(int a, int b) { return a + b; }\n");
        QVariantMap v = vars("calc.c", stage);
        v["FILENAME"] = path("src/calc.c");
        v["ENV:ZELTASTUDIO_VERBOSE"] = verbose;
        const Run r = run("Build", v, "source");
        QVERIFY2(r.code == 0, r.output);
        QCOMPARE(QFileInfo::exists(path("obj/calc.o")), object);
        QCOMPARE(r.has("calc.c: source preparation skipped"), skippedLine);
        QCOMPARE(r.has("gcc "), object);
        if (!object && !skippedLine)
            QCOMPARE(r.output, QByteArray());
    }

    // A static archive made anew, a shared library for the package's DLLEXT.
    void makesLibraries()
    {
        write("src/a.c", "int a(void) { return 1; }\n");
        write("src/b.c", "int b(void) { return 2; }\n");
        QVERIFY(compile("a.c"));
        QVERIFY(compile("b.c"));
        auto members = [this](const QString& archive) {
            QProcess ar;
            ar.start("ar", {"t", path(archive)});
            ar.waitForFinished(30000);
            return ar.readAllStandardOutput();
        };
        QVariantMap v = vars("libab");
        v["OBJECTS"] = QStringList{"obj/a.o", "obj/b.o"};
        v["LIBRARY_FILE_ABS"] = path("lib/out/libab.a");
        Run r = run("Build", v, "library");
        QVERIFY2(r.code == 0, r.output);
        QCOMPARE(members("lib/out/libab.a"), QByteArray("a.o\nb.o\n"));
        v["OBJECTS"] = QStringList{"obj/b.o"};
        QCOMPARE(run("Build", v, "library").code, 0);
        QCOMPARE(members("lib/out/libab.a"), QByteArray("b.o\n"));
        v["STAGE"] = "cpter";
        v["LIBRARY_FILE_ABS"] = path("lib/libab.so");
        QCOMPARE(run("Build", v, "library").code, 0);
        QVERIFY(!QFileInfo::exists(path("lib/libab.so")));
        v["STAGE"] = "l";
        r = run("Build", v, "library");
        QVERIFY2(r.code == 0, r.output);
        QVERIFY(r.output.startsWith("gcc -shared -fPIC -g -o " + path("lib/libab.so").toUtf8() + " obj/b.o"));
        QVERIFY(TestFiles::readFile(path("lib/libab.so")).startsWith("\x7f" "ELF"));
        v["OBJECTS"] = QStringList();
        r = run("Build", v, "library");
        QVERIFY(r.code != 0);
        QCOMPARE(r.lastLine(), "libab: no object files to put into " + path("lib/libab.so").toUtf8());
    }

    // A node that links compiles the sources of its environment scripts,
    // at once as $BUILD_JOBS allows, each into the object its script names
    // (equal file names in two folders stay apart), each one's output in
    // one block; an option changed remakes what depends on it.
    void linkersCompileWhatChanged()
    {
        write("src/a/x.c", "#include \"calc.h\"\nint ax(void) { return add(1, 0); }\n");
        write("src/b/x.c", "int bx(void) { return 2; }\n");
        write("src/c/broken.c", "int broken(void) { return undeclared_c; }\n");
        write("src/d/broken.c", "int broken2(void) { return undeclared_d; }\n");
        const auto sourceEnv = [this](const QString& file, const QString& cflags) {
            QVariantMap v = vars(file);
            v["FILENAME"] = path(u"src/"_s + file);
            v["OBJECT_FILE"] = u"obj/lib.objects/src/"_s + file + u".o"_s;
            v["CFLAGS"] = cflags;
            return writeEnv(v, file + u".env"_s);
        };
        QVariantMap v = vars("lib");
        v["OBJECT_DIR"] = "obj/lib.objects";
        v["LIBRARY_FILE_ABS"] = path("obj/liblib.a");
        v["BUILD_JOBS"] = "2";
        const QStringList objects{"obj/lib.objects/src/a/x.c.o", "obj/lib.objects/src/b/x.c.o"};
        v["OBJECTS"] = objects;
        v["SOURCE_ENVIRONMENTS"] = QStringList{sourceEnv("a/x.c", "-g"), sourceEnv("b/x.c", "-g")};
        Run r = run("Build", v, "library");
        QVERIFY2(r.code == 0, r.output);
        QCOMPARE(r.output.count("-c " + path("src/").toUtf8()), 2);
        for (const QString& object : objects)
            QVERIFY2(QFileInfo::exists(path(object)), qPrintable(object));
        v["SOURCE_ENVIRONMENTS"] = QStringList{sourceEnv("a/x.c", "-g -O1"), sourceEnv("b/x.c", "-g")};
        r = run("Build", v, "library");
        QCOMPARE(r.output.count(" -c "), 1);
        QVERIFY(r.has("-O1 ") && r.has("-c " + path("src/a/x.c").toUtf8()));

        // Two failing sources: each command line with its own error after it.
        v["SOURCE_ENVIRONMENTS"] = QStringList{sourceEnv("c/broken.c", "-g"), sourceEnv("d/broken.c", "-g")};
        r = run("Build", v, "library");
        QVERIFY(r.code != 0);
        for (const char* letter : {"c", "d"}) {
            const QByteArray command = QByteArray("-c ") + path(u"src/%1/broken.c"_s.arg(letter)).toUtf8();
            const qsizetype at = r.output.indexOf(command);
            QVERIFY2(at >= 0, r.output);
            const QByteArray block = r.output.mid(at, r.output.indexOf("\ngcc", at) - at);
            QVERIFY2(block.contains(QByteArray("undeclared_") + letter) &&
                         !block.contains(QByteArray("undeclared_") + (letter[0] == 'c' ? "d" : "c")),
                     r.output);
        }
        QVERIFY(r.lastLine().startsWith("lib: compilation of 2 of 2 sources failed"));
    }

    // Linked, run with its arguments and %ENV, both channels copied and
    // recorded line by line; nothing without the letter e.
    void runsApplications()
    {
        write("src/main.c", "#include <stdio.h>\n#include <stdlib.h>\n"
                            "int main(int argc, char** argv) {\n"
                            "    for (int i = 1; i < argc; ++i) printf(\"arg %d: %s\\n\", i, argv[i]);\n"
                            "    const char* e = getenv(\"DRIVER_TEST_VALUE\");\n"
                            "    printf(\"env: %s\\n\", e ? e : \"(unset)\");\n"
                            "    printf(\"quote \\\" back \\\\ tab\\t.\\n\");\n"
                            "    fflush(stdout);\n"
                            "    fprintf(stderr, \"warning on stderr\\n\");\n"
                            "    printf(\"no newline\");\n"
                            "    return 0;\n}\n");
        QVERIFY(compile("main.c"));
        const QString program = path("bin dir/calc app");
        QVariantMap v = vars("calc app");
        v["OBJECTS"] = QStringList{"obj/main.o"};
        v["TESTPROGRAM_ABS"] = program;
        v["ARGUMENTS"] = "'two words' plain";
        v["ENV:DRIVER_TEST_VALUE"] = "from the env file";
        Run r = run("Build", v, "application");
        QVERIFY2(r.code == 0, r.output);
        QVERIFY(QFileInfo(program).isExecutable());
        for (int pass = 0; pass < 2; ++pass) { // the second run replaces the first's records
            r = run("Execute", v, "application");
            QVERIFY2(r.code == 0, r.output);
            QVERIFY(r.has("arg 1: two words\n") && r.has("warning on stderr\n"));
            QVERIFY(r.has("calc app: 1 test(s) run, 1 passed, 0 failed, 0 failure line(s)\n"));
            const QList<QByteArray> records = withoutLengths(fileLines(path("obj/calc app.spt")));
            QCOMPARE(records.size(), 9);
            QVERIFY2(QRegularExpression("^BT \"calc app\" " + dateField + " \"" + program + "\"$").match(QString::fromUtf8(records[0])).hasMatch(),
                     records[0]);
            const QList<QByteArray> expected{R"(RL "arg 1: two words")", R"(RL "arg 2: plain")",
                                             R"(RL "env: from the env file")", "RL \"quote \\\" back \\\\ tab\\t.\"",
                                             R"(RE "warning on stderr")", R"(RL "no newline")",
                                             R"(SM "calc app" 0 6 0 0)", R"(td "calc app" 0 1 0)"};
            QCOMPARE(records.mid(1), expected);
        }
        QFile::remove(path("obj/calc app.spt"));
        v["STAGE"] = "cptl";
        r = run("Execute", v, "application");
        QCOMPARE(r.code, 0);
        QCOMPARE(r.output, QByteArray());
        QVERIFY(!QFileInfo::exists(path("obj/calc app.spt")));
    }

    // A unit test built from its script and the objects under test; the
    // lines that tell a failed or passed check (plain FAILED:, Unity, TAP)
    // become failure and pass records, and its status is the driver's.
    void recordsUnitTestFailures()
    {
        write("src/calc.c", "int add(int a, int b) { return a - b; }\n");
        write("tests/test_calc.c", "#include <stdio.h>\n#include \"calc.h\"\n"
                                   "int main(void) {\n    int failed = 0;\n"
                                   "    if (add(2, 3) != 5) { printf(\"FAILED: add(2, 3) gave %d\\n\", add(2, 3)); ++failed; }\n"
                                   "    if (add(0, 0) != 0) { printf(\"FAILED: add(0, 0)\\n\"); ++failed; }\n"
                                   "    printf(\"test_calc.c:7:test_add:FAIL: Expected 5 Was -1\\n\");\n"
                                   "    printf(\"test_calc.c:9:test_zero:PASS\\n\");\n"
                                   "    printf(\"not ok 3 - negative\\nok 4 - zero\\n\");\n"
                                   "    printf(\"2 checks, %d failed\\n\", failed);\n    return failed ? 1 : 0;\n}\n");
        QVERIFY(compile("calc.c"));
        QVariantMap v = vars("Unit tests");
        v["OBJECTS"] = QStringList{"obj/calc.o"};
        v["UNITTESTING_TESTSCRIPTNAME"] = path("tests/test_calc.c");
        v["TESTPROGRAM_ABS"] = path("obj/Unit tests");
        Run r = run("Build", v, "unit_testing");
        QVERIFY2(r.code == 0, r.output);
        QVERIFY(QFileInfo::exists(path("obj/test_calc.o")));
        r = run("Execute", v, "unit_testing");
        QCOMPARE(r.code, 1);
        QCOMPARE(r.lastLine(), QByteArray("Unit tests: test program failed with status 1"));
        QVERIFY(r.has("Unit tests: 1 test(s) run, 0 passed, 1 failed, 3 failure line(s)\n"));
        const QList<QByteArray> records = withoutLengths(fileLines(path("obj/Unit tests.spt")));
        QCOMPARE(records.size(), 9);
        QVERIFY(records[0].startsWith("BT \"Unit tests\" "));
        QCOMPARE(records.mid(1), (QList<QByteArray>{R"(FL "FAILED: add(2, 3) gave -1")",
                                                    R"(FL "test_calc.c:7:test_add:FAIL: Expected 5 Was -1")",
                                                    R"(PL "test_calc.c:9:test_zero:PASS")", R"(FL "not ok 3 - negative")",
                                                    R"(PL "ok 4 - zero")", R"(RL "2 checks, 1 failed")",
                                                    R"(SM "Unit tests" 1 6 3 2)", R"(td "Unit tests" 1 1 1)"}));
        v["STAGE"] = "r"; // a report alone fails on the failed test it reads
        r = run("Execute", v, "unit_testing");
        QVERIFY(r.code != 0);
        QCOMPARE(r.lastLine(), QByteArray("Unit tests: 1 of 1 test(s) failed"));
        v["STAGE"] = "c";
        v["UNITTESTING_TESTSCRIPTNAME"] = path("tests/missing.c");
        r = run("Build", v, "unit_testing");
        QVERIFY(r.code != 0);
        QVERIFY(r.has(path("tests/missing.c").toUtf8() + ":1: no such file\n"));
    }

    // Each script run by sh with the arguments, one test each; every script
    // runs, the first failing status is the driver's.
    void runsSystemTestingScripts()
    {
        write("scripts/pass.sh", "echo \"pass got $1\"\n");
        write("scripts/fail.sh", "echo 'FAILED: nothing works'\necho oops >&2\nexit 3\n");
        const QString pass = path("scripts/pass.sh");
        const QString fail = path("scripts/fail.sh");
        QVariantMap v = vars("System tests");
        v["ARGUMENTS"] = "value";
        QCOMPARE(run("Build", v, "system_testing", {pass, fail}).code, 0);
        Run r = run("Build", v, "system_testing", {pass, path("scripts/missing.sh")});
        QVERIFY(r.code != 0);
        QVERIFY(r.has(path("scripts/missing.sh").toUtf8() + ":1: no such file\n"));
        r = run("Execute", v, "system_testing", {fail, pass});
        QCOMPARE(r.code, 3);
        QVERIFY(r.has("sh " + fail.toUtf8() + " value\n") && r.has("pass got value\n"));
        QCOMPARE(r.lastLine(), "System tests: system-testing script " + fail.toUtf8() + " failed with status 3");
        QList<QByteArray> records = withoutLengths(fileLines(path("obj/System tests.spt")));
        QCOMPARE(records.size(), 8);
        QVERIFY(records[0].startsWith("BT \"fail.sh\" ") && records[0].endsWith(" \"" + fail.toUtf8() + "\""));
        QVERIFY(records[4].startsWith("BT \"pass.sh\" ") && records[4].endsWith(" \"" + pass.toUtf8() + "\""));
        records.removeAt(4);
        QCOMPARE(records.mid(1), (QList<QByteArray>{R"(FL "FAILED: nothing works")", R"(RE "oops")",
                                                    R"(SM "fail.sh" 3 2 1 0)", R"(RL "pass got value")",
                                                    R"(SM "pass.sh" 0 1 0 0)", R"(td "System tests" 3 2 1)"}));
        QCOMPARE(run("Execute", v, "system_testing", {pass}).code, 0);
        r = run("Execute", v, "system_testing");
        QVERIFY(r.code != 0);
        QCOMPARE(r.lastLine(), QByteArray("System tests: no system-testing script selected"));
    }

    // What Build made for each kind and the result files; not the objects
    // of @OBJECTS; missing files are no error.
    void cleansWhatWasMade()
    {
        write("src/calc.c", "int add(int a, int b) { return a + b; }\n");
        QVERIFY(compile("calc.c"));
        QVariantMap v = vars("calc.c");
        v["FILENAME"] = path("src/calc.c");
        Run r = run("Clean", v, "source");
        QCOMPARE(r.code, 0);
        QCOMPARE(r.output, QByteArray("removed obj/calc.o\n"));
        QVERIFY(!QFileInfo::exists(path("obj/calc.o")));
        r = run("Clean", v, "source");
        QCOMPARE(r.code, 0);
        QCOMPARE(r.output, QByteArray());
        v = vars("app");
        v["OBJECTS"] = QStringList{"obj/main.o"};
        v["TESTPROGRAM_ABS"] = path("bin/app");
        const QStringList made{"obj/main.o", "bin/app", "obj/app.spt", "out/app.log", "out/app.tio", "out/app.tdf",
                               "out/app.tpf", "out/app.tqf"};
        for (const QString& file : made)
            write(file, "x");
        r = run("Clean", v, "application");
        QCOMPARE(r.code, 0);
        QCOMPARE(r.output.count("removed "), 7);
        QVERIFY(r.has("removed " + path("bin/app").toUtf8() + "\n") && r.has("removed out/app.tdf\n"));
        for (const QString& file : made.mid(1))
            QVERIFY2(!QFileInfo::exists(path(file)), qPrintable(file));
        QVERIFY(QFileInfo::exists(path("obj/main.o")));
        v["LIBRARY_FILE_ABS"] = path("lib/libx.a");
        write("lib/libx.a", "x");
        write("obj/app.spt", "x");
        r = run("Clean", v, "library");
        QCOMPARE(r.output, "removed " + path("lib/libx.a").toUtf8() + "\n");
        QVERIFY(QFileInfo::exists(path("obj/app.spt")));
    }

    // No package, an unsupported kind, an unreadable environment, a fault
    // in the package's ini (told, the build goes on).
    void reportsSetupProblems()
    {
        write("src/calc.c", "int add(int a, int b) { return a + b; }\n");
        const QByteArray error = "Error: Unable to generate the Target Deployment Port path because the target "
                                 "package named [gone] cannot be found in the installation";
        QVariantMap v = vars("calc.c");
        v["FILENAME"] = path("src/calc.c");
        v["LP_TARGETDIR"] = QString::fromUtf8(error);
        Run r = run("Build", v, "source");
        QVERIFY(r.code != 0);
        QVERIFY(r.has(error + "\n"));
        QCOMPARE(r.lastLine(), QByteArray("calc.c: no target package"));
        v["LP_TARGETDIR"] = path("nowhere");
        r = run("Build", v, "source");
        QVERIFY(r.code != 0);
        QVERIFY(r.has("nowhere does not exist"));
        v["LP_TARGETDIR"] = testPackage("CXX g++\n");
        for (const char* driver : {"Build", "Execute", "Clean"}) {
            for (const char* kind : {"object_testing", "java_testing"}) {
                r = run(driver, v, kind);
                QVERIFY(r.code != 0);
                QCOMPARE(r.lastLine(), "calc.c: " + QByteArray(kind) + " is not supported by the target package Test GCC");
            }
        }
        r = run("Build", v, "source");
        QVERIFY2(r.code == 0, r.output);
        QVERIFY2(r.has(path("pkg/a-first.ini").toUtf8() + ":12: '=' expected after 'CXX'\n"), r.output);
        write("bad-env.pl", "$NAME='x';\n$STAGE=;\n1;\n");
        r = runWith("Build", "bad-env.pl", "source");
        QVERIFY(r.code != 0);
        QVERIFY2(r.has("bad-env.pl:2: syntax error"), r.output);
        QVERIFY(r.lastLine().endsWith("Build.pl: cannot load the environment file bad-env.pl"));
        QCOMPARE(run("Build", v, "weird").lastLine(), QByteArray("calc.c: unknown kind weird (one of: source library "
                                                                  "application unit_testing system_testing "
                                                                  "object_testing java_testing)"));
    }

    // --- the example through the walk

    // The result files are the environment script's, in the split's order.
    void resultFilesOfTheConfiguration()
    {
        QCOMPARE(m_unit->runtimeOutputFile(), examplePath(u"build/Unit tests.spt"_s));
        QStringList files;
        for (const char* file : {"results/Unit tests.rio", "results/Unit tests.tpf", "results/Unit tests.tqf",
                                 "results/Unit tests.tio", "results/Unit tests.tdf", "Unit tests.end",
                                 "Unit tests.rej"})
            files << examplePath(u"build/"_s + QLatin1String(file));
        QCOMPARE(m_unit->runtimeResultFiles(), files);
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
            QVERIFY2(QFileInfo::exists(examplePath(QLatin1String(made))), made);
        QVERIFY(!QFileInfo::exists(examplePath(u"sub/printer/build"_s)));
        QVERIFY(console().contains(QLatin1String("-c ")));
        QVERIFY(!console().contains(QLatin1String("sub/printer/sub/printer")));
        QVERIFY(console().indexOf(QLatin1String("libprinter.a")) < console().indexOf(QLatin1String("libcalc.a")));
        // A build leaves the execution stages alone.
        QVERIFY(!QFileInfo::exists(examplePath(u"build/calc.spt"_s)));
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
        const QString header = examplePath(u"include/calc.h"_s);
        TestFiles::writeFile(header, TestFiles::readFile(header) + "\n");
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
        // Built alone after a fresh load, the application links the
        // libraries an earlier run made.
        QAStProject fresh(u"calculator"_s, QPixmap());
        QVERIFY(fresh.open(examplePath(u"calculator.rtp"_s)));
        auto* application = qobject_cast<QAStNode*>(fresh.findNode(u"calc"_s));
        QVERIFY(application);
        QVERIFY(QFile::remove(examplePath(u"build/calc"_s)));
        m_studio->reset();
        QVERIFY2(walk(application, &QAStNode::build), qPrintable(console()));
        QVERIFY(QFileInfo::exists(examplePath(u"build/calc"_s)));
    }

    // The test nodes run their programs and write their results.
    void executesTheTests()
    {
        QVERIFY2(walk(m_project.get(), &QAStNode::execute), qPrintable(console()));
        QVERIFY(console().contains(QLatin1String("16 checks, 0 failed")));
        QVERIFY(console().contains(QLatin1String("system test: 0 failed")));
        for (const char* results : {"build/calc.spt", "build/Unit tests.spt", "build/System tests.spt"})
            QVERIFY2(QFileInfo(examplePath(QLatin1String(results))).size() > 0, results);
    }

    // The clean of the project leaves the tree as it was before the build.
    void cleanRemovesWhatTheBuildMade()
    {
        QVERIFY(walk(m_project.get(), &QAStNode::clean));
        QVERIFY(console().contains(QLatin1String("calc: Cleaning...")));
        QCOMPARE(files(), m_before);
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
        QVERIFY(QFileInfo::exists(examplePath(u"build/Unit tests.objects/korvilrt-cpqt.o"_s)));
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
        // The runtime's function coverage ends, then the driver adds the
        // lines and branches of the compiler's counters for the same run.
        const QStringList coverageCodes = codesOf(coverage);
        QCOMPARE(coverageCodes.count(u"TE"_s), 1);
        QVERIFY(coverageCodes.indexOf(u"TE"_s) < coverageCodes.indexOf(u"DC"_s));
        QCOMPARE(coverageCodes.last(), u"EI"_s);
        QCOMPARE(coverageCodes.count(u"NT"_s), 2);
        const QList<QByteArray> coverageLines = coverage.split('\n');
        QCOMPARE(coverageLines.first(), coverageLines.at(coverageCodes.lastIndexOf(u"NT"_s)));
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
        QCOMPARE(codesOf(result(Output::Coverage)).count(u"TE"_s), 1);
        QCOMPARE(codesOf(result(Output::Coverage)).count(u"EI"_s), 1);
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
        QCOMPARE(codesOf(result(Output::Coverage)).count(u"TE"_s), 1);
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

QTEST_MAIN(TestDrivers)
#include "tst_drivers.moc"
