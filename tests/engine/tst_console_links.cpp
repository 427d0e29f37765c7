// Lines of a real build's console open the file they name: gcc's messages
// about a broken source and header, built through the walk with the real
// drivers, shown in the output window and double-clicked.
#include "QAStConfiguration.h"
#include "QAStNode.h"
#include "QAStOutputWidget.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QtTest>

#include <memory>

class TestConsoleLinks : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("gcc")).isEmpty() ||
            QStandardPaths::findExecutable(QStringLiteral("perl")).isEmpty())
            QSKIP("gcc or perl is not installed");
    }

    void cleanupTestCase() { QAStProject::setModeBatch(false); }

    // A project directory with a blank in its name; the header breaks the
    // source that includes it.
    void gccMessagesOpenTheirFiles()
    {
        RecordingStudio studio;
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(&studio, nullptr));
        QTemporaryDir temporary;
        const QString dir = temporary.filePath(QStringLiteral("my project"));
        TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), dir);
        QFile header(dir + QStringLiteral("/include/calc.h"));
        QVERIFY(header.open(QIODevice::Append));
        header.write("\nint broken(void) { return }\n");
        header.close();
        const int brokenLine = int(TestFiles::readFile(header.fileName()).count('\n'));

        QAStProject project(QStringLiteral("calculator"), QPixmap());
        QVERIFY(project.open(dir + QStringLiteral("/calculator.rtp")));
        auto* library = qobject_cast<QAStNode*>(project.findNode(QStringLiteral("libcalc")));
        QVERIFY(library);
        QSignalSpy finished(library, &QAStNode::buildExecuteFinished);
        library->build();
        QVERIFY(finished.wait(120000));
        QVERIFY(!library->walkSucceeded());

        QAStOutputWidget window(nullptr, "output");
        window.resize(900, 400);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.setBaseDirectory(library->directory());
        window.connectToEditor();
        for (const QString& chunk : studio.messages(QAStData::OutputConsole))
            window.Append(chunk);

        // The line of gcc's error and the line that says where the header
        // was included.
        const QStringList lines = window.toPlainText().split(u'\n');
        const auto lineOf = [&](const QString& pattern) {
            const QRegularExpression re(pattern);
            for (int n = 0; n < lines.size(); ++n)
                if (re.match(lines.at(n)).hasMatch())
                    return n;
            return -1;
        };
        const int error = lineOf(QStringLiteral("calc\\.h:%1:\\d+: error:").arg(brokenLine));
        const int included = lineOf(QStringLiteral("^In file included from .*calc\\.c:\\d+:$"));
        QVERIFY2(error >= 0 && included >= 0, qPrintable(window.toPlainText()));
        const int includeLine = lines.at(included).section(u':', -2, -2).toInt();

        for (int n : {error, included}) {
            const QTextCursor at(window.document()->findBlockByNumber(n));
            QTest::mouseDClick(window.viewport(), Qt::LeftButton, {},
                               window.cursorRect(at).center() + QPoint(4, 0));
        }
        const QString calcH = QFileInfo(dir + QStringLiteral("/include/calc.h")).absoluteFilePath();
        const QString calcC = QFileInfo(dir + QStringLiteral("/src/calc.c")).absoluteFilePath();
        QCOMPARE(studio.editedFiles(),
                 (QStringList{calcH + u':' + QString::number(brokenLine),
                              calcC + u':' + QString::number(includeLine)}));
    }
};

QTEST_MAIN(TestConsoleLinks)
#include "tst_console_links.moc"
