#include "QAFEExprGroupWidget.h"
#include "QAFilterEditor.h"
#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QAFiltersMgrEditor.h"
#include "QATagFilter.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"
#include "QATagFiltersMgr.h"
#include "RecordingStudio.h"
#include "TestFiles.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

namespace {

using Kind = RecordingStudio::Request::Kind;

QATagFilter* tagFilter(const QString& name, bool enabled = false)
{
    auto* filter = new QATagFilter;
    filter->setFilterName(name);
    filter->setEnabled(enabled);
    auto* group = new QATagFilterExprGroup;
    group->addExpr(new QATagFilterExpr(QATagFilterExpr::Name, QStringLiteral("get*"), false));
    group->addExpr(new QATagFilterExpr(QATagFilterExpr::Kind, QStringLiteral("method"), true));
    filter->addGroup(group);
    return filter;
}

// Runs act on the filter editor that the next modal run opens, then
// presses its OK button (or Cancel).
void onFilterEditor(std::function<void(QAFilterEditor*)> act, bool ok = true)
{
    QTimer::singleShot(0, [act, ok] {
        auto* editor = qobject_cast<QAFilterEditor*>(QApplication::activeModalWidget());
        if (!editor) {
            QFAIL("no filter editor is open");
            return;
        }
        act(editor);
        auto* box = editor->findChild<QDialogButtonBox*>();
        box->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
        // A refused OK leaves the editor open: close it so the test goes on.
        if (editor->isVisible()) {
            editor->reject();
            QFAIL("the filter editor refused OK");
        }
    });
}

void click(QWidget* dialog, const char* name)
{
    auto* button = dialog->findChild<QPushButton*>(QLatin1String(name));
    QVERIFY2(button, name);
    QVERIFY2(button->isEnabled(), name);
    button->click();
}

void selectRows(QListWidget* list, const QList<int>& rows)
{
    list->clearSelection();
    for (int row : rows)
        list->item(row)->setSelected(true);
    if (!rows.isEmpty())
        list->setCurrentRow(rows.first(), QItemSelectionModel::Current);
}

// One Export through the editor, the host saying yes, then path, then
// replace to the question asked when the file exists.
void exportTo(RecordingStudio& studio, QAFiltersMgrEditor& editor, const QString& path,
              QMessageBox::StandardButton replace = QMessageBox::Yes)
{
    studio.reset();
    studio.answer(QMessageBox::Yes);
    studio.answerPath(path);
    studio.answer(replace);
    click(&editor, "exportButton");
}

QStringList rowTexts(const QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text() + (list->item(i)->checkState() == Qt::Checked ? "[x]" : "[ ]");
    return texts;
}

}

class TestFilterDialogs : public QObject {
    Q_OBJECT

private slots:
    void editTicksAndUnticks();
    void newEditAndCancel();
    void removeSelected();
    void managerChangesReachTheOpenEditor();
    void exportAsksAndWrites();
    void importShowsEveryFilter();
    void importErrors_data();
    void importErrors();
    void help();
};

void TestFilterDialogs::editTicksAndUnticks()
{
    RecordingStudio studio;
    QATagFiltersMgr mgr;
    mgr.addFilter(tagFilter(QStringLiteral("a")));
    mgr.addFilter(tagFilter(QStringLiteral("b"), true));

    QAFiltersMgrEditor* first = nullptr;
    QTimer::singleShot(0, [&] {
        first = qobject_cast<QAFiltersMgrEditor*>(QApplication::activeModalWidget());
        QVERIFY(first);
        QCOMPARE(first->objectName(), QStringLiteral("filtersEditor"));
        QSignalSpy changed(first, &QAFiltersMgrEditor::filtersChanged);
        QListWidget* list = first->filterList();
        QCOMPARE(rowTexts(list), (QStringList{"a[ ]", "b[x]"}));
        list->item(0)->setCheckState(Qt::Checked);
        list->item(1)->setCheckState(Qt::Unchecked);
        list->item(0)->setText(QStringLiteral("renaming is no tick"));
        QCOMPARE(changed.size(), 2);
        first->accept();
    });
    QVERIFY(mgr.edit(nullptr, "filtersEditor"));
    QVERIFY(mgr.filters().at(0)->enabled() && !mgr.filters().at(1)->enabled());
    QVERIFY(mgr.modified());

    // The same editor again, handed the manager's flag and giving it back.
    mgr.setModified(false);
    QTimer::singleShot(0, [&] {
        QCOMPARE(QApplication::activeModalWidget(), first);
        QVERIFY(!first->isModified());
        first->accept();
    });
    QVERIFY(mgr.edit(nullptr, "ignored"));
    QCOMPARE(dynamic_cast<QAFiltersMgrEditor*>(mgr.editor()), first);
    QVERIFY(!mgr.modified());

    class NoEditor : public QATagFiltersMgr {
    public:
        QAFiltersMgrEditor* createEditor(QWidget*, const char*) override { return nullptr; }
    } without;
    QVERIFY(!without.edit(nullptr, nullptr));
}

void TestFilterDialogs::newEditAndCancel()
{
    QATagFiltersMgr mgr;
    QAFiltersMgrEditor editor(&mgr);
    const QATagFilterSubject setter{"setValue", "method", "/a.cpp", 4};
    const QATagFilterSubject publicClass{"getValue", "class", "/a.h", 1};
    const QATagFilterSubject getter{"getValue", "method", "/a.h", 0};

    // New: one group page of one row to fill in.
    onFilterEditor([](QAFilterEditor* e) {
        QAFEExprGroupWidget* page = e->groupWidget(0);
        QCOMPARE(page->rowCount(), 1);
        e->nameEdit()->setText(QStringLiteral("setters or public"));
        e->regExpButton()->setChecked(true);
        page->textEdit(0)->setText(QStringLiteral("set[A-Z].*"));
        page->caseBox(0)->setChecked(true);
        click(page, "moreButton");
        page->typeBox(1)->setCurrentText(QStringLiteral("Qualifier"));
        page->textEdit(1)->setText(QStringLiteral("public"));
        page->anyButton()->setChecked(true);
    });
    click(&editor, "newButton");
    QCOMPARE(rowTexts(editor.filterList()), QStringList{"setters or public[ ]"});
    QVERIFY(mgr.modified());
    editor.filterList()->item(0)->setCheckState(Qt::Checked);
    QVERIFY(mgr.match(setter) && mgr.match(publicClass) && !mgr.match(getter));
    QVERIFY(!mgr.match(QATagFilterSubject{"setvalue", "method", "/a.cpp", 4}));

    // Edit: the first group keeps one row, inverted; a new group of classes.
    onFilterEditor([](QAFilterEditor* e) {
        QAFEExprGroupWidget* page = e->groupWidget(0);
        QCOMPARE(page->typeBox(1)->currentText(), QStringLiteral("Qualifier"));
        click(page, "fewerButton");
        page->invertBox()->setChecked(true);
        page->enabledBox()->setChecked(false);
        click(e, "addGroupButton");
        e->groupWidget(1)->typeBox(0)->setCurrentText(QStringLiteral("Kind"));
        e->groupWidget(1)->textEdit(0)->setText(QStringLiteral("class"));
    });
    selectRows(editor.filterList(), {0});
    click(&editor, "editButton");
    QAFilter* filter = mgr.filters().first();
    const QAFilterExprGroupList groups = filter->groups();
    QCOMPARE(groups.size(), 2);
    QVERIFY(!groups.first()->enabled() && filter->modified());
    QVERIFY(!mgr.match(setter) && mgr.match(publicClass) && mgr.match(getter));

    // Canceled editors change nothing, whatever was done in them.
    filter->setModified(false);
    onFilterEditor(
        [](QAFilterEditor* e) {
            e->nameEdit()->setText(QStringLiteral("changed"));
            e->groupWidget(0)->fewer();
            e->groupWidget(0)->allButton()->setChecked(true);
            e->addGroup();
            e->removeGroup();
            e->removeGroup();
        },
        false);
    click(&editor, "editButton");
    QCOMPARE(filter->filterName(), QStringLiteral("setters or public"));
    QCOMPARE(filter->groups(), groups);
    QCOMPARE(groups.first()->exprList().size(), 1);
    QVERIFY(!groups.first()->matchAll() && !filter->modified());
    onFilterEditor([](QAFilterEditor* e) { e->nameEdit()->setText(QStringLiteral("x")); }, false);
    click(&editor, "newButton");
    QCOMPARE(mgr.filters().size(), 1);

    // Removing a page drops its group; a blank name is refused.
    onFilterEditor([](QAFilterEditor* e) {
        e->findChild<QTabWidget*>()->setCurrentIndex(0);
        click(e, "removeGroupButton");
    });
    click(&editor, "editButton");
    QCOMPARE(filter->groups(), QAFilterExprGroupList{groups.at(1)});
    QAFilterEditor blank(filter);
    blank.nameEdit()->setText(QStringLiteral("  "));
    blank.accept();
    QCOMPARE(filter->filterName(), QStringLiteral("setters or public"));
}

void TestFilterDialogs::removeSelected()
{
    QATagFiltersMgr mgr;
    for (const char* name : {"a", "b", "c", "d"})
        mgr.addFilter(tagFilter(QString::fromLatin1(name)));
    QAFiltersMgrEditor editor(&mgr);
    selectRows(editor.filterList(), {1, 3});
    click(&editor, "removeButton");
    QCOMPARE(mgr.filters().size(), 2);
    QCOMPARE(rowTexts(editor.filterList()), (QStringList{"a[ ]", "c[ ]"}));
    QVERIFY(mgr.modified());

    editor.filterList()->clearSelection();
    QVERIFY(!editor.findChild<QPushButton*>(QStringLiteral("removeButton"))->isEnabled());
    QVERIFY(!editor.findChild<QPushButton*>(QStringLiteral("exportButton"))->isEnabled());
}

void TestFilterDialogs::managerChangesReachTheOpenEditor()
{
    RecordingStudio studio;
    QATagFiltersMgr mgr;
    mgr.addFilter(tagFilter(QStringLiteral("a")));
    QTimer::singleShot(0, [&] {
        auto* editor = dynamic_cast<QAFiltersMgrEditor*>(mgr.editor());
        mgr.addFilter(tagFilter(QStringLiteral("b")));
        mgr.filters().first()->setEnabled(true);
        mgr.updateEnabled(mgr.filters().first());
        QCOMPARE(rowTexts(editor->filterList()), (QStringList{"a[x]", "b[ ]"}));
        QVERIFY(mgr.remove(1));
        QCOMPARE(rowTexts(editor->filterList()), QStringList{"a[x]"});
        // Shown changes made by the viewer are not the editor's.
        QVERIFY(!editor->isModified());
        editor->accept();
    });
    QVERIFY(mgr.edit());
}

void TestFilterDialogs::exportAsksAndWrites()
{
    QTemporaryDir dir;
    RecordingStudio studio;
    QATagFiltersMgr mgr;
    for (const char* name : {"a", "b", "c"})
        mgr.addFilter(tagFilter(QString::fromLatin1(name), true));
    QAFiltersMgrEditor editor(&mgr);
    selectRows(editor.filterList(), {0, 2});
    const QString path = dir.filePath(QStringLiteral("mine.xfl"));

    // Declining the first question asks nothing more.
    studio.answer(QMessageBox::No);
    click(&editor, "exportButton");
    QCOMPARE(studio.requests().size(), 1);
    QCOMPARE(studio.requests().first().caption, QStringLiteral("Export Filter"));
    QCOMPARE(studio.requests().first().text, QStringLiteral("Export 2 selected filters?"));

    exportTo(studio, editor, path);
    QCOMPARE(studio.requestTexts(Kind::SaveFile),
             QStringList{QDir::current().filePath(QStringLiteral("filters.xfl"))});
    QCOMPARE(studio.statusMessages(), QStringList{"2 filter(s) saved."});
    QATagFiltersMgr back;
    QCOMPARE(back.importFile(path), QAFiltersMgr::ImportResult::Imported);
    QCOMPARE(back.fromName(QStringLiteral("c")), back.filters().at(1));

    // An existing file is replaced only when the user says so.
    const QByteArray before = TestFiles::readFile(path);
    selectRows(editor.filterList(), {1});
    exportTo(studio, editor, path, QMessageBox::No);
    QCOMPARE(studio.requestTexts(Kind::Question).last(),
             path + "\nalready exists.\nReplace existing file?\n");
    QCOMPARE(TestFiles::readFile(path), before);
    QVERIFY(studio.statusMessages().isEmpty());

    exportTo(studio, editor, path);
    QCOMPARE(studio.statusMessages(), QStringList{"1 filter(s) saved."});
    QATagFiltersMgr replaced;
    QCOMPARE(replaced.importFile(path), QAFiltersMgr::ImportResult::Imported);
    QCOMPARE(replaced.filters().size(), 1);

    const QString unwritable = dir.filePath(QStringLiteral("missing/filters.xfl"));
    exportTo(studio, editor, unwritable);
    QCOMPARE(studio.requests().last().caption, QStringLiteral("Export Filters"));
    QCOMPARE(studio.requestTexts(Kind::Warning),
             QStringList{QStringLiteral("Cannot write file \"%1\".\nNo such file or directory")
                             .arg(unwritable)});
    QVERIFY(studio.statusMessages().isEmpty());
    QVERIFY(!mgr.modified());
}

void TestFilterDialogs::importShowsEveryFilter()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));
    QATagFiltersMgr source;
    source.addFilter(tagFilter(QStringLiteral("x"), true));
    source.addFilter(tagFilter(QStringLiteral("y")));
    QVERIFY(source.exportFile(path, source.filters()));

    RecordingStudio studio;
    QATagFiltersMgr mgr;
    mgr.addFilter(tagFilter(QStringLiteral("a")));
    QAFiltersMgrEditor editor(&mgr);
    QSignalSpy changed(&editor, &QAFiltersMgrEditor::filtersChanged);
    studio.answerPath(path);
    click(&editor, "importButton");

    QCOMPARE(studio.requests().size(), 1);
    QCOMPARE(studio.requests().first().kind, Kind::OpenFile);
    QCOMPARE(studio.requests().first().caption, QStringLiteral("Import Filter"));
    QCOMPARE(studio.requests().first().text, QDir::current().filePath("filters.xfl"));
    QCOMPARE(rowTexts(editor.filterList()), (QStringList{"a[ ]", "x[x]", "y[ ]"}));
    QVERIFY(mgr.modified() && editor.isModified());
    QCOMPARE(changed.size(), 1);

    // No file chosen: nothing happens.
    studio.reset();
    click(&editor, "importButton");
    QCOMPARE(mgr.filters().size(), 3);
    QCOMPARE(studio.requests().size(), 1);
}

void TestFilterDialogs::importErrors_data()
{
    QTest::addColumn<QByteArray>("content");  // empty: no file at all
    QTest::addColumn<QString>("message");     // %1: the file's path
    QTest::addColumn<QStringList>("filters"); // what the manager holds after

    const QString cannotOpen = QStringLiteral("Can't open file \"%1\".");
    const QString contents = QStringLiteral("Can't get file contents (file:\"%1\").");
    const QString badRoot = QStringLiteral("Error loading filters in file \"%1\").");
    const QString leftOut = QStringLiteral("Error loading filters element in file \"%1\").\n\n");
    const QByteArray good = "<tag_filter name=\"good\"><tag_group><expr type=\"name\" "
                            "text=\"get*\"/></tag_group></tag_filter>\n";
    const QStringList kept{"kept: name,kind"};
    const QStringList keptAndGood{"kept: name,kind", "good: name"};

    QTest::newRow("no file") << QByteArray() << cannotOpen << kept;
    QTest::newRow("not well-formed") << QByteArray("<filters><tag_filter></filters>") << contents
                                     << kept;
    QTest::newRow("another root") << QByteArray("<project>" + good + "</project>") << badRoot
                                  << kept;

    // A bad entry costs itself alone: a filter, a group or an expression.
    QTest::newRow("another filter kind")
        << QByteArray("<filters>\n" + good + "<filter name=\"x\"/>\n</filters>")
        << leftOut + "line 3: element \"filter\" left out: \"tag_filter\" is expected"
        << keptAndGood;
    QTest::newRow("bad flag of a filter")
        << QByteArray("<filters>\n<tag_filter name=\"bad\" enabled=\"yes\"/>\n" + good
                      + "</filters>")
        << leftOut + "line 2: filter \"bad\" left out: enabled=\"yes\" is neither 0 nor 1"
        << keptAndGood;
    QTest::newRow("only bad filters")
        << QByteArray("<filters><filter/></filters>")
        << leftOut + "line 1: element \"filter\" left out: \"tag_filter\" is expected" << kept;
    QTest::newRow("stray element in a filter")
        << QByteArray("<filters><tag_filter name=\"s\">\n<group/>\n"
                      "<tag_group><expr type=\"file\"/></tag_group></tag_filter></filters>")
        << leftOut + "line 2: a group of filter \"s\" left out: element \"group\" where "
                     "\"tag_group\" is expected"
        << QStringList{"kept: name,kind", "s: file"};
    QTest::newRow("bad flag of a group")
        << QByteArray("<filters><tag_filter name=\"g\"><tag_group invert=\"2\"/>"
                      "<tag_group><expr type=\"name\"/></tag_group></tag_filter></filters>")
        << leftOut + "line 1: a group of filter \"g\" left out: invert=\"2\" is neither 0 nor 1"
        << QStringList{"kept: name,kind", "g: name"};
    QTest::newRow("unknown expression type, bad case flag")
        << QByteArray("<filters><tag_filter name=\"t\"><tag_group>\n<expr type=\"size\"/>\n"
                      "<expr type=\"kind\"/>\n<expr type=\"name\" case=\"yes\"/>\n"
                      "</tag_group></tag_filter>\n" + good + "</filters>")
        << leftOut + "line 2: an expression of filter \"t\" left out: unknown type \"size\"\n"
                     "line 4: an expression of filter \"t\" left out: case=\"yes\" is neither "
                     "0 nor 1"
        << QStringList{"kept: name,kind", "t: kind", "good: name"};
    QTest::newRow("stray element in a group")
        << QByteArray("<filters><tag_filter name=\"e\"><tag_group><tag_group/>"
                      "<expr type=\"qualifier\"/></tag_group></tag_filter></filters>")
        << leftOut + "line 1: an expression of filter \"e\" left out: element \"tag_group\" "
                     "where \"expr\" is expected"
        << QStringList{"kept: name,kind", "e: qualifier"};
}

void TestFilterDialogs::importErrors()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QFETCH(QStringList, filters);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));
    if (!content.isEmpty())
        TestFiles::writeFile(path, content);

    RecordingStudio studio;
    QATagFiltersMgr mgr;
    mgr.addFilter(tagFilter(QStringLiteral("kept"), true));
    QAFiltersMgrEditor editor(&mgr);
    studio.answerPath(path);
    click(&editor, "importButton");

    QCOMPARE(studio.requestTexts(Kind::Warning), QStringList{message.arg(path)});
    QCOMPARE(studio.requests().last().caption, QStringLiteral("Import Filters"));
    // Each filter as "name: " and its groups, each the types of its
    // expressions.
    QStringList held;
    for (const QAFilter* filter : mgr.filters()) {
        QStringList groups;
        for (const QAFilterExprGroup* group : filter->groups()) {
            QStringList types;
            for (const QAFilterExpr* expr : group->exprList())
                types << QATagFilterExpr::typeKey(expr->type());
            groups << types.join(QLatin1Char(','));
        }
        held << filter->filterName() + ": " + groups.join(QLatin1Char('|'));
    }
    QCOMPARE(held, filters);
    QCOMPARE(editor.filterList()->count(), mgr.filters().size());
    const bool imported = filters.size() > 1;
    QCOMPARE(mgr.hasModification(), imported);
    QCOMPARE(editor.isModified(), imported);
}

void TestFilterDialogs::help()
{
    RecordingStudio studio;
    QATagFiltersMgr mgr;
    QAFiltersMgrEditor editor(&mgr);
    click(&editor, "helpButton");
    QCOMPARE(studio.requests().size(), 1);
    QCOMPARE(studio.requests().first().kind, Kind::Information);
    QCOMPARE(studio.requests().first().caption, QStringLiteral("Filters"));
}

QTEST_MAIN(TestFilterDialogs)
#include "tst_filter_dialogs.moc"
