// Message analysis: the file and line found in real output of gcc, g++,
// the linker, make, perl and the driver scripts (tests/data/messages), the
// forms and their order, the start of the file name, opening through the host.
#include "QAStAnalyseMsg.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QStringList captureLines(const QString& capture)
{
    const QByteArray text = TestFiles::readFile(TestPaths::data("messages/" + capture));
    return QString::fromUtf8(text.endsWith('\n') ? text.chopped(1) : text).split(u'\n');
}

// expected.tsv, "capture:line" -> {file, line}.
QHash<QString, QPair<QString, int>> expectations()
{
    QHash<QString, QPair<QString, int>> result;
    for (const QString& row : captureLines("expected.tsv")) {
        const QStringList f = row.split(u'\t');
        if (f.size() == 4)
            result.insert(f[0] + u':' + f[1], {f[2], f[3].toInt()});
    }
    return result;
}

} // namespace

class tst_AnalyseMsg : public QObject {
    Q_OBJECT
private slots:
    // Every line of every capture: the listed ones give their file and
    // line, all others (excerpts, command lines, summaries) nothing.
    void capturedOutput_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("number");
        auto expected = expectations();
        QVERIFY(expected.size() > 40);
        for (const QString& capture : QDir(TestPaths::data("messages")).entryList({"*.txt"})) {
            const QStringList lines = captureLines(capture);
            for (int i = 0; i < lines.size(); ++i) {
                const QString key = capture + u':' + QString::number(i + 1);
                const auto e = expected.take(key);
                QTest::newRow(qPrintable(key)) << lines[i] << e.first << e.second;
            }
        }
        QVERIFY2(expected.isEmpty(), "expected.tsv names lines that are not captured");
    }
    void capturedOutput()
    {
        QFETCH(QString, line);
        QFETCH(QString, file);
        QFETCH(int, number);
        QAStAnalyseMsg msg;
        QCOMPARE(msg.analyze(line), !file.isEmpty());
        QCOMPARE(msg.fileName(), file);
        QCOMPARE(msg.lineNumber(), number);
    }

    // Form -1: nothing found (and the previous result cleared).
    void forms_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("form");
        QTest::newRow("1 ,line") << "x.c,line 12: bad" << "x.c" << 12 << 1;
        QTest::newRow("2 at") << "x.c at 12: bad" << "x.c" << 12 << 2;
        QTest::newRow("3 file:line") << "main.c:12: error" << "main.c" << 12 << 3;
        QTest::newRow("3 gcc column") << "main.c:12:5: error: x" << "main.c" << 12 << 3;
        QTest::newRow("4 quoted") << "\"x.c\", line 7." << "x.c" << 7 << 4;
        QTest::newRow("5 line") << "x.c, line: 4 bad" << "x.c" << 4 << 5;
        QTest::newRow("5 bash") << "st.sh: line 2: foo: command not found" << "st.sh" << 2 << 5;
        QTest::newRow("6 comma") << "x.c,12" << "x.c" << 12 << 6;
        QTest::newRow("7 parentheses") << "C:\\x.c(12) : error C2065" << "C:\\x.c" << 12 << 7;
        QTest::newRow("8 /Line") << "x.c/Line 12" << "x.c" << 12 << 8;
        QTest::newRow("1 before 3") << "a.c,line 3: b.c:4:" << "a.c" << 3 << 1;
        QTest::newRow("3 before 5") << "x.c:3: no line 9 here" << "x.c" << 3 << 3;
        QTest::newRow("5 before 7") << "f(2) in x.c line 9" << "f(2) in x.c" << 9 << 5;
        QTest::newRow("# position") << "x.c#12" << "x.c" << 12 << 0;
        QTest::newRow("# no number") << "notes#intro" << "notes" << 0 << 0;
        QTest::newRow("line end") << " \t main.c:12: error\r\n" << "main.c" << 12 << 3;
        QTest::newRow("file named ld") << "ld.c:3: x" << "ld.c" << 3 << 3;
        QTest::newRow("Error: prefix") << "Error: script.pts at 33: no such step" << "script.pts" << 33 << 2;
        QTest::newRow("Warning: prefix") << "Warning: main.c:12: unused x" << "main.c" << 12 << 3;
        QTest::newRow("Fatal: prefix") << "  Fatal: \"x.c\", line 7." << "x.c" << 7 << 4;
        QTest::newRow("tool, then Error:") << "make: Error: Makefile:4: no rule" << "Makefile" << 4 << 3;
        QTest::newRow("file named Error") << "Error:12: x" << "Error" << 12 << 3;
        QTest::newRow("perl at in text") << "look at this at x.pl line 4." << "x.pl" << 4 << 5;
        QTest::newRow("perl quoted by file:N:") << "env.pl:3: error at env.pl line 3, near"
                                                << "env.pl" << 3 << 3;
        QTest::newRow("gcc, perl-like text") << "a.c:5:2: error: #error at x line 7" << "a.c" << 5 << 3;
        QTest::newRow("no number, no #") << "Build finished" << "" << 0 << -1;
        QTest::newRow("empty file") << "\"\":12:" << "" << 0 << -1;
        QTest::newRow("excerpt #") << "    1 | #include \"missing.h\"" << "" << 0 << -1;
    }
    void forms()
    {
        QFETCH(QString, line);
        QFETCH(QString, file);
        QFETCH(int, number);
        QFETCH(int, form);
        QAStAnalyseMsg msg;
        msg.analyze(QStringLiteral("before.c:1: x"));
        QCOMPARE(msg.analyze(line), form != -1);
        QCOMPARE(msg.fileName(), file);
        QCOMPARE(msg.lineNumber(), number);
        QCOMPARE(msg.form(), form);
    }

    void analyzeLineNumber()
    {
        QAStAnalyseMsg msg;
        QVERIFY(msg.analyzeLineNumber("xx main.c @@ 4!", 3, " @+ ", "!"));
        QCOMPARE(msg.fileName() + u':' + QString::number(msg.lineNumber()), QStringLiteral("main.c:4"));
        QVERIFY(msg.analyzeLineNumber("a.c:4", 0, ":", nullptr));
        QVERIFY(!msg.analyzeLineNumber("a.c:4", 0, ":", ":"));
        QVERIFY(!msg.analyzeLineNumber("a.c:4:", 6, ":", ":"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("invalid message form"));
        QVERIFY(!msg.analyzeLineNumber("a(1)", 0, "(", nullptr));
    }

    // Only a line naming an existing file reaches the host's editor, a
    // relative name taken from the base directory.
    void editMessage()
    {
        QTemporaryDir project;
        TestFiles::writeFile(project.filePath("src/calc.c"), "int x;\n");
        const QString calc = QDir(project.path()).absoluteFilePath("src/calc.c");
        QCOMPARE(QAStAnalyseMsg::resolvedFile("inc/../src/calc.c", project.path() + "/"), calc);
        QCOMPARE(QAStAnalyseMsg::resolvedFile("/usr//x.h", project.path()), QStringLiteral("/usr/x.h"));
        QVERIFY(!QAStAnalyseMsg::editMessage("src/calc.c:7: error", project.path()));
        RecordingStudio studio;
        QVERIFY(QAStAnalyseMsg::editMessage("src/calc.c:7:17: error: x", project.path()));
        QVERIFY(QAStAnalyseMsg::editMessage(calc + ":2: y", QString()));
        QVERIFY(!QAStAnalyseMsg::editMessage("src/gone.c:1: no such file", project.path()));
        QVERIFY(!QAStAnalyseMsg::editMessage("src:3: a directory", project.path()));
        QVERIFY(!QAStAnalyseMsg::editMessage("Build finished", project.path()));
        QCOMPARE(studio.editedFiles(), QStringList({calc + ":7", calc + ":2"}));
    }
};

QTEST_GUILESS_MAIN(tst_AnalyseMsg)
#include "tst_analyse_msg.moc"
