// Message lines: file and line found in real tool output (tests/data/messages),
// the forms and their order, long and invalid lines; the output window driven
// offscreen, and the three log sinks.
#include "QALogConsole.h"
#include "QALogMessageBox.h"
#include "QAStAnalyseMsg.h"
#include "QAStData.h"
#include "QAStOutputWidget.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString command = u"gcc -c src/calc.c -o obj/calc.o"_s;
const QString compileError = u"src/calc.c:7:17: error: expected ';' before '}' token"_s;
const QString summary = u"calc: compilation of src/calc.c failed (status 1)"_s;

QStringList lines(const QPlainTextEdit& w) { return w.toPlainText().split(u'\n'); }

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

class TestMessages : public QObject {
    Q_OBJECT
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QAStOutputWidget> m_w;

    void doubleClickLine(int n)
    {
        const QTextCursor c(m_w->document()->findBlockByNumber(n));
        QTest::mouseDClick(m_w->viewport(), Qt::LeftButton, {}, m_w->cursorRect(c).center() + QPoint(4, 0));
    }
    void cursorTo(int line, int column = 0, int selected = 0)
    {
        QTextCursor c(m_w->document()->findBlockByNumber(line));
        c.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, column);
        c.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor, selected);
        m_w->setTextCursor(c);
    }
    int cursorLine() const { return m_w->textCursor().block().blockNumber(); }

private slots:
    void init()
    {
        QAStProject::setModeBatch(false);
        m_studio = std::make_unique<RecordingStudio>();
        m_w = std::make_unique<QAStOutputWidget>(nullptr, "output");
        m_w->resize(600, 300);
        m_w->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_w.get()));
        for (const QString& line : {command, compileError, summary})
            m_w->append(line);
    }
    void cleanup()
    {
        m_w.reset();
        m_studio.reset();
        QAStProject::setModeBatch(false);
    }

    // append adds whole lines; Append continues the line its last chunk
    // left open; error lines look apart without colouring what follows.
    void addingText()
    {
        m_w->clear();
        m_w->append("first\n");
        for (const char* chunk : {"sec", "ond\r\nthi", "rd\n", "\n", "fourth"})
            m_w->Append(chunk);
        m_w->error("fifth\r\n");
        m_w->Append("sixth");
        m_w->log("seventh");
        QCOMPARE(lines(*m_w), QStringList({"first", "second", "third", "", "fourth", "fifth", "sixth", "seventh"}));
        const auto colour = [this](int n) {
            QTextCursor c(m_w->document()->findBlockByNumber(n));
            c.movePosition(QTextCursor::EndOfBlock);
            return c.charFormat().foreground().color();
        };
        QVERIFY(colour(5) != colour(4));
        QCOMPARE(colour(6), colour(4));
    }

    // A double click picks the line under the mouse whole, selectLine and
    // Return the cursor's line, the menu entry a selection within one line
    // as it is (else the cursor's line). Below the last line nothing is
    // picked, nor a line marked with noAction(). The context menu's first
    // entry edits the line of the cursor, its last clears.
    void pickingLines()
    {
        m_w->append("src/calc.c:3: seen " + QAStOutputWidget::noAction());
        QSignalSpy picked(m_w.get(), &QAStOutputWidget::selectedLine);
        doubleClickLine(1);
        QCOMPARE(m_w->textCursor().selectedText(), compileError);
        doubleClickLine(2);
        doubleClickLine(3);
        QTest::mouseDClick(m_w->viewport(), Qt::LeftButton, {}, QPoint(20, m_w->viewport()->height() - 5));
        cursorTo(3);
        m_w->selectLine();
        m_w->editSelection();
        cursorTo(1, 5);
        m_w->selectLine();
        cursorTo(0, 3);
        QTest::keyClick(m_w->viewport(), Qt::Key_Return);
        cursorTo(1, 0, 12);
        m_w->editSelection();
        cursorTo(1, 4, 80);
        m_w->editSelection();
        QStringList texts;
        for (const QList<QVariant>& args : picked)
            texts << args.at(0).toString();
        QCOMPARE(texts, QStringList({compileError, summary, compileError, command, "src/calc.c:7", summary}));
        const std::unique_ptr<QMenu> menu(m_w->createContextMenu());
        cursorTo(1);
        menu->actions().first()->trigger();
        QCOMPARE(picked.count(), 7);
        QCOMPARE(picked.last().at(0).toString(), compileError);
        menu->actions().last()->trigger();
        QCOMPARE(m_w->toPlainText(), QString());
    }

    // find goes to the next match after the cursor, then round from the
    // start; a text found nowhere keeps the cursor. find() asks the host,
    // or in batch mode finds the last text again.
    void find()
    {
        cursorTo(1, 10);
        QVERIFY(m_w->find("CALC.C"));
        QCOMPARE(cursorLine(), 2);
        QVERIFY(m_w->find("calc.o"));
        QCOMPARE(cursorLine(), 0);
        QVERIFY(!m_w->find("delta"));
        QCOMPARE(m_w->textCursor().selectedText(), u"calc.o"_s);
        m_studio->answerText("error");
        QVERIFY(m_w->find());
        QCOMPARE(cursorLine(), 1);
        m_studio->answerText("command", false);
        QVERIFY(!m_w->find());
        QAStProject::setModeBatch(true);
        QVERIFY(m_w->find());
        QCOMPARE(m_w->lastFound(), u"error"_s);
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::TextInput).size(), 2);
    }

    // Connected to the editor, a picked line opens its file through the
    // host, a relative name taken from the base directory.
    void opensTheFileThroughTheHost()
    {
        QTemporaryDir project;
        TestFiles::writeFile(project.filePath("src/calc.c"), "int main(void) { return 0 }\n");
        m_w->setBaseDirectory(project.path());
        m_w->connectToEditor();
        m_w->connectToEditor();
        m_w->append("src/gone.c:1: no such file");
        m_w->append("In file included from src/calc.c:2,");
        for (int n = 0; n < 5; ++n)
            doubleClickLine(n);
        const QString calc = QDir(project.path()).absoluteFilePath("src/calc.c");
        QCOMPARE(m_studio->editedFiles(), QStringList({calc + ":7", calc + ":2"}));
        m_w->connectToEditor(false);
        doubleClickLine(1);
        QCOMPARE(m_studio->editedFiles().size(), 2);
    }

    // The same operations on the three sinks; boxes go through the host,
    // to the message console in batch mode.
    void logSinks()
    {
        QString logText, errorText, otherText;
        QTextStream logStream(&logText), errorStream(&errorText), otherStream(&otherText);
        QALogConsole console(&logStream, &errorStream);
        QALogMessageBox boxes("Build");
        m_w->clear();
        for (QALog* sink : QList<QALog*>{m_w.get(), &console, &boxes}) {
            sink->log("compiling");
            sink->error("failed\n");
            QCOMPARE(sink->errorCount(), 1);
            sink->resetError();
            QVERIFY(!sink->hasError());
        }
        QCOMPARE(lines(*m_w), QStringList({"compiling", "failed"}));
        QCOMPARE(logText + u'|' + errorText, u"compiling\n|failed\n"_s);
        console.setLogStream(&otherStream);
        console.log("elsewhere");
        QCOMPARE(otherText + u'|' + logText, u"elsewhere\n|compiling\n"_s);
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList({"compiling"}));
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Critical), QStringList({"failed\n"}));
        QCOMPARE(m_studio->requests().first().caption, u"Build"_s);
        QAStProject::setModeBatch(true);
        boxes.error("fault");
        QCOMPARE(m_studio->requests().size(), 2);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList({"fault"}));
    }

    // --- message analysis

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
        QAStAnalyseMsg msg;
        QCOMPARE(msg.analyze(line), !file.isEmpty());
        QCOMPARE(msg.fileName(), file);
        QTEST(msg.lineNumber(), "number");
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
        QTest::newRow("3 blank in the path") << "/p/my project/calc.h:7:5: error: x" << "/p/my project/calc.h"
                                             << 7 << 3;
        QTest::newRow("3 included from") << "In file included from /p/my project/calc.c:2:"
                                         << "/p/my project/calc.c" << 2 << 3;
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
        QFETCH(int, form);
        QAStAnalyseMsg msg;
        msg.analyze(u"before.c:1: x"_s);
        QCOMPARE(msg.analyze(line), form != -1);
        QTEST(msg.fileName(), "file");
        QTEST(msg.lineNumber(), "number");
        QCOMPARE(msg.form(), form);
    }

    // Long lines are a bounded amount of work (the analysis matches at
    // successive offsets of one line); a lone surrogate reads as a
    // replacement character.
    void longAndInvalidLines_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("found");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("file"); // null: not looked at
        const QChar lone(char16_t(0xD800));
        QTest::newRow("include chain") << u"from "_s.repeated(40000) + u"x.h:3,"_s << true << 3 << QString();
        QTest::newRow("tool prefixes") << u"make: "_s.repeated(40000) + u"x.c:9:"_s << true << 9 << QString();
        QTest::newRow("colons") << u"a:"_s.repeated(100000) << false << 0 << QString();
        QTest::newRow("blanks") << u" "_s.repeated(200000) << false << 0 << QString();
        QTest::newRow("lone surrogate") << u"ma"_s + lone + u"in.c:12: error: x"_s << true << 12 << u"ma\uFFFDin.c"_s;
    }
    void longAndInvalidLines()
    {
        QFETCH(QString, line);
        QFETCH(QString, file);
        QAStAnalyseMsg message;
        QTEST(message.analyze(line), "found");
        QTEST(message.lineNumber(), "number");
        if (!file.isNull())
            QCOMPARE(message.fileName(), file);
        QCOMPARE(QAStAnalyseMsg::fileNameStart(u"  "_s + QChar(char16_t(0xD800))), 2);
    }

    void analyzeLineNumber()
    {
        QAStAnalyseMsg msg;
        QVERIFY(msg.analyzeLineNumber("xx main.c @@ 4!", 3, " @+ ", "!"));
        QCOMPARE(msg.fileName() + u':' + QString::number(msg.lineNumber()), u"main.c:4"_s);
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
        m_studio.reset(); // no host at first
        QTemporaryDir project;
        TestFiles::writeFile(project.filePath("src/calc.c"), "int x;\n");
        const QString calc = QDir(project.path()).absoluteFilePath("src/calc.c");
        QCOMPARE(QAStAnalyseMsg::resolvedFile("inc/../src/calc.c", project.path() + "/"), calc);
        QCOMPARE(QAStAnalyseMsg::resolvedFile("/usr//x.h", project.path()), u"/usr/x.h"_s);
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

QTEST_MAIN(TestMessages)
#include "tst_messages.moc"
