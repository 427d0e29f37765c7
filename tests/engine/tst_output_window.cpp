// The output window driven offscreen (lines added, picked by double click,
// Return or the menu, the no-action mark, find, files opened through the
// host) and the three log sinks.
#include "QALogConsole.h"
#include "QALogMessageBox.h"
#include "QAStData.h"
#include "QAStOutputWidget.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"

#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QtTest>

#include <memory>

namespace {

const QString command = QStringLiteral("gcc -c src/calc.c -o obj/calc.o");
const QString compileError = QStringLiteral("src/calc.c:7:17: error: expected ';' before '}' token");
const QString summary = QStringLiteral("calc: compilation of src/calc.c failed (status 1)");

QStringList lines(const QPlainTextEdit& w) { return w.toPlainText().split(u'\n'); }

} // namespace

class tst_OutputWindow : public QObject {
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
    // picked, nor a line marked with noAction().
    void pickingLines()
    {
        QCOMPARE(QAStOutputWidget::noAction(), QStringLiteral("(no action!!)"));
        m_w->append("src/calc.c:3: seen (no action!!)");
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
        QCOMPARE(m_w->textCursor().selectedText(), QStringLiteral("calc.o"));

        m_studio->answerText("error");
        QVERIFY(m_w->find());
        QCOMPARE(cursorLine(), 1);
        m_studio->answerText("command", false);
        QVERIFY(!m_w->find());
        QAStProject::setModeBatch(true);
        QVERIFY(m_w->find());
        QCOMPARE(m_w->lastFound(), QStringLiteral("error"));
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::TextInput).size(), 2);
    }

    void contextMenu()
    {
        const std::unique_ptr<QMenu> menu(m_w->createContextMenu());
        QStringList texts;
        QVariantList ids;
        for (QAction* a : menu->actions()) {
            if (a->isSeparator())
                continue;
            texts << a->text();
            ids << a->data();
        }
        QCOMPARE(texts, QStringList({"Edit selected file", "Copy", "Select All", "Find...", "Clear window"}));
        QCOMPARE(ids, QVariantList({1000, QVariant(), QVariant(), QVariant(), 1001}));
        QSignalSpy picked(m_w.get(), &QAStOutputWidget::selectedLine);
        cursorTo(1);
        menu->actions().first()->trigger();
        QCOMPARE(picked.count(), 1);
        menu->actions().last()->trigger();
        QCOMPARE(m_w->toPlainText(), QString());
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
        QCOMPARE(logText + u'|' + errorText, QStringLiteral("compiling\n|failed\n"));
        console.setLogStream(&otherStream);
        console.log("elsewhere");
        QCOMPARE(otherText + u'|' + logText, QStringLiteral("elsewhere\n|compiling\n"));

        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList({"compiling"}));
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Critical), QStringList({"failed\n"}));
        QCOMPARE(m_studio->requests().first().caption, QStringLiteral("Build"));
        QAStProject::setModeBatch(true);
        boxes.error("fault");
        QCOMPARE(m_studio->requests().size(), 2);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList({"fault"}));
    }
};

QTEST_MAIN(tst_OutputWindow)
#include "tst_output_window.moc"
