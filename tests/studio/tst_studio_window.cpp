// The window host driven as a user would: a copy of the example project
// opened in the window, its tree edited, its settings changed, its output
// followed to the editor, its tags browsed and filtered, a node built.
// Every box the window shows is answered by a modal answerer.
#include "ProjectTree.h"
#include "PropertySheet.h"
#include "StudioWindow.h"

#include "QAPropertyTextWidget.h"
#include "QAStConfiguration.h"
#include "QAStCoverageView.h"
#include "QAStData.h"
#include "QAStFile.h"
#include "QAStMemoryView.h"
#include "QAStNodeTest.h"
#include "QAStProfileView.h"
#include "QAStResultsView.h"
#include "QAStObjectManager.h"
#include "QAStOutputWidget.h"
#include "QAStRootFolder.h"
#include "QATagFiltersMgr.h"
#include "TagFilters.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QDir>
#include <QFileDialog>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QToolButton>
#include <QtTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Answers the modal boxes as they come: each scripted handler takes the
// next box; a box nobody expected is noted and rejected, so that a test
// never hangs on it.
class ModalAnswerer : public QObject {
public:
    using Handler = std::function<void(QWidget*)>;

    ModalAnswerer()
    {
        connect(&m_poll, &QTimer::timeout, this, [this] {
            QWidget* box = QApplication::activeModalWidget();
            // The progress dialog of a long run is the window's own business.
            if (!box || box == m_last || qobject_cast<QProgressDialog*>(box))
                return;
            m_last = box;
            QPointer<QWidget> guard(box);
            if (!m_handlers.isEmpty()) {
                m_handlers.takeFirst()(box);
            } else {
                auto* message = qobject_cast<QMessageBox*>(box);
                m_unexpected << box->windowTitle() + QLatin1String(": ") + (message ? message->text() : QString());
                if (auto* dialog = qobject_cast<QDialog*>(box))
                    dialog->reject();
            }
            if (!guard)
                m_last = nullptr;
        });
        m_poll.start(20);
    }
    void then(const Handler& handler) { m_handlers.append(handler); }
    // Clicks a button of the next message box, keeping its text.
    void click(QMessageBox::StandardButton button)
    {
        then([this, button](QWidget* box) {
            auto* message = qobject_cast<QMessageBox*>(box);
            QVERIFY(message);
            m_texts << message->text();
            message->button(button)->click();
        });
    }
    // Chooses path in the next file dialog.
    void choose(const QString& path)
    {
        then([path](QWidget* box) {
            auto* dialog = qobject_cast<QFileDialog*>(box);
            QVERIFY(dialog);
            // Typed, as a user would: the dialog's own selection waits for
            // its file system model.
            auto* edit = dialog->findChild<QLineEdit*>(u"fileNameEdit"_s);
            QVERIFY(edit);
            edit->setText(path);
            QMetaObject::invokeMethod(dialog, "accept");
        });
    }
    // Picks text in the next input dialog.
    void pick(const QString& text)
    {
        then([text](QWidget* box) {
            auto* dialog = qobject_cast<QInputDialog*>(box);
            QVERIFY(dialog);
            dialog->setTextValue(text);
            dialog->accept();
        });
    }
    bool idle() const { return m_handlers.isEmpty(); }
    QStringList unexpected() const { return m_unexpected; }
    QStringList texts() const { return m_texts; }
    void reset()
    {
        m_unexpected.clear();
        m_texts.clear();
    }

private:
    QTimer m_poll;
    QList<Handler> m_handlers;
    QStringList m_unexpected;
    QStringList m_texts;
    QPointer<QWidget> m_last;
};

QTreeWidgetItem* row(QTreeWidget* tree, const QString& text)
{
    const QList<QTreeWidgetItem*> found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

QStringList childTexts(const QTreeWidgetItem* parent)
{
    QStringList texts;
    for (int i = 0; parent && i < parent->childCount(); ++i)
        texts << parent->child(i)->text(0);
    return texts;
}

} // namespace

class TestStudioWindow : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }
    ProjectTree* tree() const { return m_window->projectTree(); }
    // Selects the project item named name in the project view.
    QAStData* select(const QString& name)
    {
        QTreeWidgetItem* found = row(tree(), name);
        if (!found)
            return nullptr;
        tree()->setCurrentItem(found);
        return tree()->dataOf(found);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StudioWindow> m_window;
    std::unique_ptr<ModalAnswerer> m_boxes;

private slots:
    void initTestCase()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir->path());
        m_boxes = std::make_unique<ModalAnswerer>();
        m_window = std::make_unique<StudioWindow>();
        QCOMPARE(QAStData::studioIFace(), static_cast<StudioInterface*>(m_window.get()));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QVERIFY(m_window->openProject(path(u"calculator.rtp"_s)));
    }

    void cleanup()
    {
        const QStringList unexpected = m_boxes->unexpected();
        const bool idle = m_boxes->idle();
        m_boxes->reset();
        QVERIFY2(unexpected.isEmpty(), qPrintable(unexpected.join('\n')));
        QVERIFY(idle);
    }

    void cleanupTestCase()
    {
        m_window.reset();
        QCOMPARE(QAStData::studioIFace(), nullptr);
    }

    // The project's nodes and its file tree, each under its own top row;
    // the chooser offers the project's configurations.
    void showsTheOpenedProject()
    {
        QCOMPARE(tree()->topLevelItemCount(), 2);
        QCOMPARE(tree()->dataOf(tree()->topLevelItem(0)), m_window->project());
        QCOMPARE(childTexts(tree()->topLevelItem(0)),
                 (QStringList{"printer", "Build", "Unit tests", "System tests"}));
        QVERIFY(row(tree(), u"Headers"_s));
        QVERIFY(row(tree(), u"calc.h"_s));
        QComboBox* chooser = m_window->configurationChooser();
        QCOMPARE(chooser->count(), 2);
        QCOMPARE(chooser->currentText(), u"Debug"_s);
        QVERIFY(m_window->windowTitle().startsWith(QLatin1String("calculator.rtp")));
        QVERIFY(!m_window->isModified());
    }

    // The sheet shows the selected node's configuration: its own values
    // marked, inherited ones not; an edit becomes a local value of that
    // configuration even when the library pointed the shared descriptor
    // elsewhere meanwhile, and a reset brings the inherited value back.
    void propertySheetEditsTheSelectedConfiguration()
    {
        auto* library = qobject_cast<QAStNode*>(select(u"libcalc"_s));
        QVERIFY(library);
        PropertySheet* sheet = m_window->propertySheet();
        QCOMPARE(sheet->node(), library);
        QAStConfiguration* config = library->currentConfiguration();
        QCOMPARE(sheet->configuration(), config);
        QVERIFY(sheet->isMarkedOverridden(u"generationFormat"_s));
        QVERIFY(sheet->rowOf(u"cflags"_s));
        QVERIFY(!sheet->isMarkedOverridden(u"cflags"_s));
        QVERIFY(!sheet->resetButtonOf(u"cflags"_s)->isEnabled());

        // Writing the project binds the descriptor to every configuration.
        QString text;
        QTextStream out(&text);
        m_window->project()->write(out, 0);

        auto* editor = qobject_cast<QAPropertyTextWidget*>(sheet->editorOf(u"cflags"_s));
        QVERIFY(editor);
        QCOMPARE(editor->lineEdit()->text(), u"-g -O0"_s);
        editor->lineEdit()->setFocus();
        editor->lineEdit()->selectAll();
        QTest::keyClicks(editor->lineEdit(), u"-g -O1"_s);
        QTest::keyClick(editor->lineEdit(), Qt::Key_Return);
        QCOMPARE(config->localProperty(u"cflags"_s).toString(), u"-g -O1"_s);
        QVERIFY(!m_window->project()->configuration(u"Debug"_s)->hasProperty(u"cflags"_s) ||
                m_window->project()->configuration(u"Debug"_s)->localProperty(u"cflags"_s) == u"-g -O0"_s);
        QVERIFY(sheet->isMarkedOverridden(u"cflags"_s));
        QVERIFY(m_window->isModified());

        QToolButton* reset = sheet->resetButtonOf(u"cflags"_s);
        QVERIFY(reset->isEnabled());
        reset->click();
        QVERIFY(!config->hasProperty(u"cflags"_s));
        QVERIFY(!sheet->isMarkedOverridden(u"cflags"_s));
        QCOMPARE(editor->lineEdit()->text(), u"-g -O0"_s);

        // Another configuration: the sheet follows the chooser.
        m_window->setCurrentConfiguration(u"Release"_s);
        QCOMPARE(sheet->configuration(), library->configuration(u"Release"_s));
        editor = qobject_cast<QAPropertyTextWidget*>(sheet->editorOf(u"cflags"_s));
        QCOMPARE(editor->lineEdit()->text(), u"-O2"_s);
        m_window->setCurrentConfiguration(u"Debug"_s);
    }

    // Adding from the add menu, deleting, and both undone and redone
    // through the library's undo manager; the view follows each step.
    void addDeleteUndoRedo()
    {
        QVERIFY(select(u"Build"_s));
        QMenu* add = m_window->addMenu();
        QVERIFY(add->isEnabled());
        QAction* library = nullptr;
        for (QAction* action : add->actions())
            if (action->data().toString() == QLatin1String("library"))
                library = action;
        QVERIFY(library);
        library->trigger();
        QAStNode* fresh = m_window->selectedNode();
        QVERIFY(fresh && fresh->inherits("QAStNodeLibrary"));
        QCOMPARE(fresh->configurations(), (QStringList{"Debug", "Release"}));
        const QString name = fresh->name();
        QTreeWidgetItem* build = row(tree(), u"Build"_s);
        QCOMPARE(childTexts(build).last(), name);
        QVERIFY(m_window->action(u"undo"_s)->isEnabled());

        m_window->undo();
        QVERIFY(!childTexts(build).contains(name));
        QVERIFY(m_window->action(u"redo"_s)->isEnabled());
        m_window->redo();
        QCOMPARE(childTexts(build).last(), name);

        QVERIFY(select(name));
        QVERIFY(m_window->deleteSelected());
        QVERIFY(!row(tree(), name));
        QCOMPARE(m_window->selectedData()->name(), u"Build"_s);
        m_window->undo();
        QVERIFY(row(tree(), name));
        m_window->undo();
        QTRY_VERIFY(!row(tree(), name));

        // A row is renamed through the item, and only where it may be.
        QAStData* headers = select(u"Headers"_s);
        row(tree(), u"Headers"_s)->setText(0, u"Include files"_s);
        QCOMPARE(headers->name(), u"Include files"_s);
    }

    // Cut and paste move a node into a group and a file into another
    // folder; each move is undone as one step. A node never goes into its
    // own subtree.
    void cutAndPasteMove()
    {
        QVERIFY(select(u"System tests"_s));
        QVERIFY(m_window->cutSelected());
        QVERIFY(!row(tree(), u"System tests"_s));
        QVERIFY(select(u"Build"_s));
        QAStData* pasted = m_window->pasteIntoSelected();
        QVERIFY(pasted);
        QCOMPARE(pasted->parent()->name(), u"Build"_s);
        QCOMPARE(row(tree(), u"System tests"_s)->parent(), row(tree(), u"Build"_s));
        m_window->undo();
        m_window->undo();
        QCOMPARE(row(tree(), u"System tests"_s)->parent(), tree()->topLevelItem(0));

        QAStData* header = select(u"calc.h"_s);
        QVERIFY(header->inherits("QAStFile"));
        QVERIFY(m_window->cutSelected());
        tree()->setCurrentItem(tree()->topLevelItem(1));
        QAStData* moved = m_window->pasteIntoSelected();
        QVERIFY(moved && moved->inherits("QAStFile"));
        QCOMPARE(moved->parent(), m_window->project()->rootFolder());
        QCOMPARE(row(tree(), u"calc.h"_s)->parent(), tree()->topLevelItem(1));

        QAStData* build = m_window->project()->findNode(u"Build"_s);
        QAStData* libcalc = m_window->project()->findNode(u"libcalc"_s);
        QVERIFY(ProjectTree::canHold(build, m_window->project()->findNode(u"Unit tests"_s)));
        QVERIFY(!ProjectTree::canHold(libcalc, build));
        QVERIFY(!ProjectTree::canHold(build, build));
    }

    // A line naming a file and a line, double-clicked in the output
    // console, opens the file read-only with the cursor on that line.
    void outputLineOpensTheFile()
    {
        m_window->displayMessage(QAStData::OutputConsole, u"compiling\n"_s);
        m_window->displayMessage(QAStData::OutputConsole, u"src/calc.c:12: error: expected ';'\n"_s);
        QAStOutputWidget* console = m_window->console(QAStData::OutputConsole);
        QTextCursor cursor(console->document()->findBlockByNumber(console->document()->blockCount() - 1));
        while (cursor.block().text().isEmpty() && cursor.block().previous().isValid())
            cursor = QTextCursor(cursor.block().previous());
        QVERIFY(cursor.block().text().startsWith(QLatin1String("src/calc.c:12")));
        console->setTextCursor(cursor);
        console->ensureCursorVisible();
        QTest::mouseDClick(console->viewport(), Qt::LeftButton, {}, console->cursorRect(cursor).center() + QPoint(4, 0));

        QPlainTextEdit* editor = m_window->editorOf(path(u"src/calc.c"_s));
        QVERIFY(editor);
        QVERIFY(editor->isReadOnly());
        QCOMPARE(m_window->editorTabs()->currentWidget(), editor);
        QCOMPARE(editor->textCursor().blockNumber(), 11);
        QCOMPARE(editor->toPlainText(), QString::fromUtf8(TestFiles::readFile(path(u"src/calc.c"_s))));

        // Opening it again keeps one tab; a missing file is told in a box.
        const int tabs = m_window->editorTabs()->count();
        m_window->editFile(path(u"src/calc.c"_s), 3);
        QCOMPARE(m_window->editorTabs()->count(), tabs);
        QCOMPARE(editor->textCursor().blockNumber(), 2);
        m_boxes->click(QMessageBox::Ok);
        m_window->editFile(path(u"src/missing.c"_s), 1);
        QVERIFY(m_boxes->texts().value(0).startsWith(path(u"src/missing.c"_s) + "\n\n"));
        QCOMPARE(m_window->editorTabs()->count(), tabs);
    }

    // Analysed through the library behind the progress dialog, the tags
    // show in the three layouts; an enabled filter set in the Filters
    // dialog hides the tags it refuses.
    void tagBrowserLayoutsAndFilters()
    {
        SKIP_WITHOUT("ctags");
        m_window->startProgress(u"probe"_s, u"Abort"_s, 3);
        auto* progress = m_window->findChild<QProgressDialog*>(u"progress"_s);
        QVERIFY(progress);
        const QList<QPushButton*> buttons = progress->findChildren<QPushButton*>();
        QVERIFY(!buttons.isEmpty());
        QCOMPARE(buttons.first()->text(), u"Abort"_s);
        buttons.first()->click();
        QVERIFY(m_window->progressWasCanceled());
        m_window->finishProgress();

        QVERIFY(m_window->analyseSources());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->action(u"analyse"_s)->isEnabled(), 60000);
        QAStObjectManager* browser = m_window->tagBrowser();
        QComboBox* layout = m_window->tagLayoutChooser();

        layout->setCurrentIndex(QAStObjectManager::SortByType);
        emit layout->activated(QAStObjectManager::SortByType);
        QCOMPARE(browser->sortMode(), int(QAStObjectManager::SortByType));
        QCOMPARE(browser->topLevelItem(0)->text(0), u"Test Items"_s);
        const int functions = browser->topLevelItem(0)->child(1)->childCount();
        QVERIFY(functions > 4);
        QCOMPARE(m_window->project()->sortMethod(), int(QAStObjectManager::SortByType));

        QATagFilter* filter = TagFilters::filter(u"divide only"_s, QATagFilterExpr::Name, u"*divide*"_s, true);
        m_window->tagFilters()->addFilter(filter);
        m_boxes->then([](QWidget* dialog) { static_cast<QDialog*>(dialog)->accept(); });
        m_window->action(u"filters"_s)->trigger();
        const QTreeWidgetItem* shown = browser->topLevelItem(0)->child(1);
        QCOMPARE(shown->childCount(), 2);
        QVERIFY(shown->child(0)->text(0).startsWith(QLatin1String("calc_divide")));

        filter->setEnabled(false);
        m_window->applyTagFilters();
        QCOMPARE(browser->topLevelItem(0)->child(1)->childCount(), functions);
    }

    // A question returns the button chosen, or the way out when the box is
    // closed; closing a modified project asks to save it.
    void hostBoxesAreAnswered()
    {
        m_boxes->click(QMessageBox::No);
        QCOMPARE(m_window->question(nullptr, u"Q"_s, u"Go on?"_s,
                                    StudioInterface::Yes | StudioInterface::No, StudioInterface::Yes,
                                    StudioInterface::Question), StudioInterface::No);
        m_boxes->then([](QWidget* box) { static_cast<QDialog*>(box)->reject(); });
        QCOMPARE(m_window->question(nullptr, u"Q"_s, u"Go on?"_s,
                                    StudioInterface::Yes | StudioInterface::Cancel, StudioInterface::Yes,
                                    StudioInterface::Question), StudioInterface::Cancel);

        // Closing a modified project: Cancel keeps it, Discard closes it
        // without writing; the file on disk is the one of before.
        QVERIFY(m_window->isModified());
        const QByteArray before = TestFiles::readFile(path(u"calculator.rtp"_s));
        m_boxes->click(QMessageBox::Cancel);
        QVERIFY(!m_window->closeProject());
        QVERIFY(m_window->project());
        m_boxes->click(QMessageBox::Discard);
        QVERIFY(m_window->closeProject());
        QVERIFY(!m_window->project());
        QCOMPARE(tree()->topLevelItemCount(), 0);
        QCOMPARE(TestFiles::readFile(path(u"calculator.rtp"_s)), before);
        QVERIFY(m_window->openProject(path(u"calculator.rtp"_s)));
    }

    // A node built for real: its row says how the walk went, and the
    // compiler's lines reach the output console. Executing right after a
    // good build asks nothing; a source touched since asks once whether to
    // rebuild.
    void buildAndExecute()
    {
        SKIP_WITHOUT("gcc", "perl");
        auto* library = qobject_cast<QAStNode*>(select(u"libcalc"_s));
        QVERIFY(library);
        QSignalSpy finished(library, &QAStNode::buildExecuteFinished);
        QVERIFY(m_window->buildSelected());
        QCOMPARE(row(tree(), u"libcalc"_s)->text(ProjectTree::StateColumn), ProjectTree::runningText());
        QVERIFY(!m_window->action(u"build"_s)->isEnabled());
        QVERIFY(finished.wait(180000));
        const QString output = m_window->console(QAStData::OutputConsole)->toPlainText();
        QVERIFY2(library->walkSucceeded(), qPrintable(output));
        QCOMPARE(row(tree(), u"libcalc"_s)->text(ProjectTree::StateColumn), ProjectTree::succeededText());
        QVERIFY(QFileInfo::exists(path(u"build/libcalc.a"_s)));
        QVERIFY(output.contains(QLatin1String("calc.c")));
        QVERIFY(m_window->action(u"build"_s)->isEnabled());

        auto* project = qobject_cast<QAStNode*>(select(u"calculator"_s));
        QVERIFY(project);
        QSignalSpy projectFinished(project, &QAStNode::buildExecuteFinished);
        QVERIFY(m_window->buildSelected());
        QVERIFY(projectFinished.wait(180000));
        QVERIFY2(project->walkSucceeded(),
                 qPrintable(m_window->console(QAStData::OutputConsole)->toPlainText()));
        QVERIFY(m_window->executeSelected());
        QVERIFY(projectFinished.wait(180000));
        QVERIFY2(project->walkSucceeded(),
                 qPrintable(m_window->console(QAStData::OutputConsole)->toPlainText()));
        QVERIFY(m_boxes->unexpected().isEmpty());

        QTest::qSleep(10);
        QFile source(path(u"src/calc.c"_s));
        QVERIFY(source.open(QIODevice::Append));
        source.write("\n");
        source.close();
        m_boxes->click(QMessageBox::Cancel);
        QVERIFY(m_window->executeSelected());
        QTRY_VERIFY(m_boxes->idle());
        QCOMPARE(m_boxes->texts().size(), 1);
        QVERIFY(m_boxes->texts().first().startsWith(QLatin1String("You have changed settings")));
    }

    // File > New project, Edit > Add files and File > Import through their
    // dialogs: each project is made, saved and shown.
    void createsAndImportsProjects()
    {
        QTemporaryDir work;
        const QString file = work.filePath(u"demo/demo.rtp"_s);
        QVERIFY(QDir().mkpath(work.filePath(u"demo/src"_s)));
        TestFiles::writeFile(work.filePath(u"demo/src/main.c"_s), "int main(void) { return 0; }\n");
        if (m_window->project() && m_window->isModified())
            m_boxes->click(QMessageBox::Discard);
        m_boxes->choose(file);
        m_boxes->pick(u"C"_s);
        m_window->action(u"newProject"_s)->trigger();
        QVERIFY(m_window->project());
        QCOMPARE(m_window->project()->path(), file);
        QVERIFY(QFileInfo::exists(work.filePath(u"demo/demo.inf"_s)));
        QCOMPARE(m_window->project()->configurations(), (QStringList{"Debug", "Release"}));

        m_boxes->choose(work.filePath(u"demo/src/main.c"_s));
        m_window->action(u"addFiles"_s)->trigger();
        QVERIFY(m_boxes->idle());
        QTRY_VERIFY(row(tree(), u"main.c"_s));
        QVERIFY(row(tree(), u"src"_s));
        QVERIFY(m_window->isModified());
        QVERIFY(m_window->saveProject());

        const QString imported = work.filePath(u"tool/tool.rtp"_s);
        TestFiles::writeFile(work.filePath(u"tool/lib/greet.h"_s), "const char* greet(void);\n");
        TestFiles::writeFile(work.filePath(u"tool/lib/greet.c"_s),
                             "#include \"greet.h\"\nconst char* greet(void) { return \"hi\"; }\n");
        TestFiles::writeFile(work.filePath(u"tool/main.c"_s),
                             "#include \"greet.h\"\nint main(void) { return greet()[0] != 'h'; }\n");
        m_boxes->choose(work.filePath(u"tool"_s));
        m_boxes->choose(imported);
        m_window->action(u"importDirectory"_s)->trigger();
        QVERIFY(m_window->project());
        QCOMPARE(m_window->project()->path(), imported);
        QStringList nodes;
        for (const QAStData* child = m_window->project()->child(); child; child = child->next())
            nodes << QLatin1String(child->metaObject()->className()) + u':' + child->name();
        QCOMPARE(nodes, QStringList{u"QAStNodeApplication:tool"_s});
        QTRY_VERIFY(row(tree(), u"greet.c"_s));
        QVERIFY(!m_window->isModified());
    }

    // The example's unit test, run above with coverage: selecting it shows
    // its files and functions with their coverage, coloured by it; a double
    // click opens the source with the lines that ran and those that did
    // not marked.
    void coverageViewShowsTheRun()
    {
        SKIP_WITHOUT("gcc", "perl", "gcov");
        if (m_window->project() && m_window->isModified())
            m_boxes->click(QMessageBox::Discard);
        QVERIFY(m_window->openProject(path(u"calculator.rtp"_s)));
        QVERIFY(select(u"Unit tests"_s));
        QAStCoverageView* view = m_window->coverageView();
        QVERIFY(view->isVisible());
        QCOMPARE(view->file(), path(u"build/results/Unit tests.tio"_s));
        QVERIFY(view->report().hasLineCoverage());
        QTreeWidgetItem* calc = row(view, u"src/calc.c"_s);
        QVERIFY(calc);
        QVERIFY(calc->text(QAStCoverageView::LinesColumn).contains(u'%'));
        QVERIFY(calc->background(QAStCoverageView::LinesColumn).color().isValid());
        QTreeWidgetItem* evaluate = row(view, u"calc_evaluate"_s);
        QVERIFY(evaluate && evaluate->parent() == calc);
        QVERIFY(row(view, u"Total"_s));
        QCOMPARE(QAStCoverageView::colourOf(1, 4), QColor(0xf4, 0xb6, 0xb0));
        QCOMPARE(QAStCoverageView::colourOf(3, 5), QColor(0xf8, 0xd8, 0x8c));
        QCOMPARE(QAStCoverageView::colourOf(4, 5), QColor(0xb8, 0xe6, 0xb0));

        emit view->itemDoubleClicked(evaluate, 0);
        QPlainTextEdit* editor = m_window->editorOf(path(u"src/calc.c"_s));
        QVERIFY(editor);
        const QAStCoverageReport::File* file = view->report().file(path(u"src/calc.c"_s));
        QVERIFY(file);
        const QList<QTextEdit::ExtraSelection> marks = editor->extraSelections();
        QCOMPARE(marks.size(), int(file->lines.size()));
        QSet<QRgb> colours;
        for (const QTextEdit::ExtraSelection& mark : marks)
            colours.insert(mark.format.background().color().rgb());
        QCOMPARE(colours.size(), file->counts.linesHit < file->counts.lines ? 2 : 1);
        QCOMPARE(editor->textCursor().blockNumber() + 1, evaluate->data(0, QAStCoverageView::LineRole).toInt());
    }

    // The docks show the results of the test node selected: the example's
    // unit test as the run above left them, its functions' profile and
    // its memory counts; they follow the files as a new run empties and
    // fills them.
    void resultDocksFollowTheSelectedTest()
    {
        SKIP_WITHOUT("gcc", "perl");
        if (m_window->project() && m_window->isModified())
            m_boxes->click(QMessageBox::Discard);
        QVERIFY(m_window->openProject(path(u"calculator.rtp"_s)));
        for (const char* dock : {"resultsDock", "profileDock", "memoryDock"})
            QVERIFY2(m_window->findChild<QDockWidget*>(QLatin1String(dock)), dock);
        QVERIFY(m_window->resultsView()->summaryText().startsWith(u"No test run selected"_s));

        auto* unit = qobject_cast<QAStNodeTest*>(select(u"Unit tests"_s));
        QVERIFY(unit);
        QCOMPARE(m_window->shownTestNode(), unit);
        const QStringList files = unit->runtimeResultFiles();
        QVERIFY2(QFileInfo::exists(files.at(0)), "the unit test was executed above");
        QAStResultsView* results = m_window->resultsView();
        QCOMPARE(results->fileName(), files.at(0));
        QTreeWidgetItem* test = results->table()->topLevelItem(0);
        QVERIFY(test);
        QCOMPARE(test->text(0), u"Unit tests"_s);
        QCOMPARE(test->text(1), u"passed"_s);
        QVERIFY2(results->summaryText().startsWith(u"1 test(s): 1 passed, 0 failed; the run ended with status 0"_s),
                 qPrintable(results->summaryText()));
        QVERIFY(row(m_window->profileView()->table(), u"calc_evaluate"_s));
        QVERIFY(m_window->memoryView()->summaryText().contains(u"0 block(s) not freed"_s));

        // A new run empties the file, then writes its records.
        TestFiles::writeFile(files.at(0), QByteArray());
        results->poll();
        QCOMPARE(results->table()->topLevelItemCount(), 0);
        QFile rio(files.at(0));
        QVERIFY(rio.open(QIODevice::Append));
        rio.write("BT \"Unit tests\" \"2026-01-02 03:04:05\" \"test_calc\"\n"
                  "FL \"tests/unit/test_calc.c:68:add:FAIL: 2 + 3\"\n");
        rio.close();
        results->poll();
        QCOMPARE(results->table()->topLevelItem(0)->text(1), u"running"_s);
        QTreeWidgetItem* check = results->table()->topLevelItem(0)->child(0);
        QVERIFY(check);
        QCOMPARE(check->text(0), u"add"_s);
        QCOMPARE(check->text(2), u"tests/unit/test_calc.c:68"_s);

        select(u"libcalc"_s); // no test node: the docks keep the last one
        QCOMPARE(m_window->shownTestNode(), unit);
    }
};

QTEST_MAIN(TestStudioWindow)
#include "tst_studio_window.moc"
