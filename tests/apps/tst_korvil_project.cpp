// The commands that make and edit projects, end to end: the real binary
// as a child process, the real drivers and compilers.
#include "TestFiles.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

struct Run {
    int status = -1;
    QString out;
    QString err;
};

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

} // namespace

class TestKorvilProject : public QObject {
    Q_OBJECT

    Run korvil(const QStringList& arguments, const QString& directory = QString())
    {
        QProcess process;
        process.setWorkingDirectory(directory.isEmpty() ? m_dir->path() : directory);
        process.start(QStringLiteral(KORVIL_BINARY), arguments);
        Run run;
        if (!process.waitForFinished(300000)) {
            process.kill();
            process.waitForFinished();
            run.err = QStringLiteral("korvil did not end");
            return run;
        }
        run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        run.err = QString::fromLocal8Bit(process.readAllStandardError());
        return run;
    }

    QString path(const QString& relative) const { return m_dir->filePath(relative); }

    std::unique_ptr<QTemporaryDir> m_dir;

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("gcc")).isEmpty() ||
            QStandardPaths::findExecutable(QStringLiteral("perl")).isEmpty())
            QSKIP("gcc or perl is not installed");
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    // From nothing to a running program: a new project, an application
    // of two sources, the header in the file tree, a build and a run.
    void fromNothing()
    {
        TestFiles::writeFile(path("main.c"),
                             "#include \"greet.h\"\nint main(void) { return greet() - 7; }\n");
        TestFiles::writeFile(path("greet.c"), "#include \"greet.h\"\nint greet(void) { return 7; }\n");
        TestFiles::writeFile(path("greet.h"), "int greet(void);\n");
        Run run = korvil({"new", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(
            run.out,
            QStringLiteral("demo.rtp: a new project on GNU C (host gcc), configurations Debug, Release "
                           "(current Debug)\n"));
        run = korvil({"add", "demo.rtp", "application", "greeter", "main.c", "greet.c"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(
            run.out,
            QStringLiteral("demo.rtp: added application \"greeter\" under \"demo\" with 2 sources\n"));
        run = korvil({"add-files", "demo.rtp", "."});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, QStringLiteral("demo.rtp: 1 file added to the file tree\n"));
        run = korvil({"build", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QVERIFY(QFileInfo(path("build/greeter")).isExecutable());
        run = korvil({"execute", "demo.rtp"});
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.contains(QLatin1String("greeter: passed")));
    }

    void faults_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("new over a project")
            << QStringList{"new", "demo.rtp"} << 1
            << "/demo.rtp: The file exists already: a new project does not replace it.";
        QTest::newRow("unknown language")
            << QStringList{"new", "x.rtp", "--language", "Cobol"} << 2
            << "korvil: new: --language \"Cobol\" is none of C, C++, Ada, Java";
        QTest::newRow("package of another language")
            << QStringList{"new", "x.rtp", "--language", "C", "--package", "gcc-cpp"} << 2
            << "korvil: new: the package \"GNU C++ (host g++)\" is for C++, not C";
        QTest::newRow("kind the parent does not take")
            << QStringList{"add", "demo.rtp", "application", "inner", "--under", "greeter"} << 2
            << "/demo.rtp: \"greeter\" takes no \"application\" node: it takes source, library, test_script, user, link.";
        QTest::newRow("missing source") << QStringList{"add", "demo.rtp", "library", "lib", "nowhere.c"}
                                        << 1 << "/nowhere.c: No such file or directory.";
        QTest::newRow("unknown key")
            << QStringList{"set", "demo.rtp", "greeter", "cflag", "x"} << 2
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
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, message);
        const QByteArray project = TestFiles::readFile(path("demo.rtp"));
        const QByteArray objects = TestFiles::readFile(path("demo.inf"));
        QVERIFY(!project.isEmpty());
        const Run run = korvil(arguments);
        QCOMPARE(run.status, status);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(run.err.startsWith(QLatin1String("korvil: ")));
        QVERIFY(run.err.endsWith(u'\n'));
        QCOMPARE(TestFiles::readFile(path("demo.rtp")), project);
        QCOMPARE(TestFiles::readFile(path("demo.inf")), objects);
        QVERIFY(!QFileInfo::exists(path("x.rtp")));
    }

    // What set writes, get reads back: texts, lists, another
    // configuration; the project's own value is inherited until set.
    void setGet()
    {
        QCOMPARE(korvil({"get", "demo.rtp", "greeter", "cflags"}).out, QStringLiteral("-g -O0\n"));
        QCOMPARE(korvil({"get", "demo.rtp", "greeter", "cflags", "-c", "Release"}).out,
                 QStringLiteral("-O2\n"));
        QCOMPARE(korvil({"set", "demo.rtp", "greeter", "cflags", "--", "-O1", "-Wall"}).status, 0);
        QCOMPARE(korvil({"get", "demo.rtp", "greeter", "cflags"}).out, QStringLiteral("-O1 -Wall\n"));
        QCOMPARE(korvil({"set", "demo.rtp", "greeter", "ge_incdir", "inc", "my dir"}).status, 0);
        QCOMPARE(korvil({"get", "demo.rtp", "greeter", "ge_incdir"}).out,
                 QStringLiteral("inc\nmy dir\n"));
        QCOMPARE(korvil({"set", "demo.rtp", "greeter", "debug", "no", "-c", "Release"}).status, 0);
        QCOMPARE(korvil({"get", "demo.rtp", "greeter", "debug", "-c", "Release"}).out,
                 QStringLiteral("false\n"));
        QCOMPARE(korvil({"get", "demo.rtp", "demo", "cflags"}).out, QStringLiteral("-g -O0\n"));
        QCOMPARE(korvil({"set", "demo.rtp", "greeter", "cflags", "--", "-g", "-O0"}).status, 0);
        QVERIFY(korvil({"build", "demo.rtp"}).status == 0);
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
        QTest::newRow("add with a file")
            << QStringList{"add", "demo.rtp", "library", "extralib", "extra/x.c"}
            << QStringList{"<library>", "</library>"} << QStringList{};
    }

    // A command changes the files only where it changed the project: the
    // lines it inserts form one element, every other byte stays, and the
    // file is what a save of the project writes.
    void byteStable()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, projectChange);
        QFETCH(QStringList, objectsChange);
        TestFiles::writeFile(path("extra/x.c"), "int x;\n");
        const QByteArray project = TestFiles::readFile(path("demo.rtp"));
        const QByteArray objects = TestFiles::readFile(path("demo.inf"));
        const Run run = korvil(arguments);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        const QByteArray projectAfter = TestFiles::readFile(path("demo.rtp"));
        const QByteArray objectsAfter = TestFiles::readFile(path("demo.inf"));
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
        QDir().mkpath(path("copy"));
        QCOMPARE(korvil({"save", "demo.rtp", "--as", path("copy/demo.rtp")}).status, 0);
        QCOMPARE(TestFiles::readFile(path("copy/demo.rtp")), projectAfter);
    }

    // The way of the README: configure with cmake for the compilation
    // database, import it, build.
    void fromCMakeInThreeCommands()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("cmake")).isEmpty())
            QSKIP("cmake is not installed");
        const QString tree = path("hello");
        TestFiles::writeFile(
            tree + QStringLiteral("/CMakeLists.txt"),
            "cmake_minimum_required(VERSION 3.16)\nproject(hello C)\n"
            "add_library(words STATIC lib/words.c)\ntarget_include_directories(words PUBLIC lib)\n"
            "add_executable(hello main.c)\ntarget_link_libraries(hello PRIVATE words)\n");
        TestFiles::writeFile(tree + QStringLiteral("/lib/words.h"), "const char* word(void);\n");
        TestFiles::writeFile(tree + QStringLiteral("/lib/words.c"),
                             "#include \"words.h\"\nconst char* word(void) { return \"hello\"; }\n");
        TestFiles::writeFile(
            tree + QStringLiteral("/main.c"),
            "#include <stdio.h>\n#include <words.h>\nint main(void) { return puts(word()) < 0; }\n");
        QProcess cmake;
        cmake.setWorkingDirectory(tree);
        cmake.start(QStringLiteral("cmake"),
                    {"-S", ".", "-B", "build", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"});
        QVERIFY(cmake.waitForFinished(180000) && cmake.exitCode() == 0);
        Run run = korvil({"import", "build/compile_commands.json", "-o", "hello.rtp"}, tree);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, QStringLiteral("hello.rtp: 2 nodes, 2 sources\n  library words: 1 source\n"
                                         "  application hello: 1 source, links words\n"));
        run = korvil({"build", "hello.rtp"}, tree);
        QVERIFY2(run.status == 0, qPrintable(run.out + run.err));
        run = korvil({"execute", "hello.rtp"}, tree);
        QVERIFY2(run.status == 0 && run.out.contains(QLatin1String("\nhello\n")),
                 qPrintable(run.out + run.err));
    }

    void help()
    {
        for (const char* command : {"new", "add", "add-files", "import", "set", "get"}) {
            const Run run = korvil({QLatin1String(command), "--help"});
            QCOMPARE(run.status, 0);
            QVERIFY2(run.out.startsWith(
                         QStringLiteral("Usage: korvil %1 [options] ").arg(QLatin1String(command))),
                     qPrintable(run.out));
        }
    }
};

QTEST_MAIN(TestKorvilProject)
#include "tst_korvil_project.moc"
