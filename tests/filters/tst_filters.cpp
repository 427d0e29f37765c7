// Filters: their evaluation, the tag browser's expressions, the export
// file and its failures, and the dialogs that edit, import and export them.
#include "FailingStorage.h"
#include "QAFEExprGroupWidget.h"
#include "QAFilter.h"
#include "QAFilterEditor.h"
#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QAFiltersMgr.h"
#include "QAFiltersMgrEditor.h"
#include "QATagFiltersMgr.h"
#include "RecordingStudio.h"
#include "TagFilters.h"
#include "TestFiles.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDomDocument>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

// An expression whose outcome is fixed; counts how often it is asked.
struct FixedExpr : QAFilterExpr {
    FixedExpr(bool outcome, int* asked) : outcome(outcome), asked(asked) {}
    bool match(void*, void*, bool) override
    {
        ++*asked;
        return outcome;
    }
    bool outcome;
    int* asked;
};

int unused = 0;

// A filter of groups of fixed expressions, each group written as its flags
// ("|" any rather than all, "!" inverted, "-" disabled) then its outcomes
// ("T" holds, "F" fails) in order.
QAFilter* fixedFilter(const QStringList& groups, bool enabled, int* asked = &unused)
{
    auto* filter = new QAFilter;
    filter->setEnabled(enabled);
    for (const QString& written : groups) {
        auto* group = new QAFilterExprGroup;
        group->setMatchAll(!written.contains(u'|'));
        group->setInvertFilter(written.contains(u'!'));
        group->setEnabled(!written.contains(u'-'));
        for (QChar c : written) {
            if (c == u'T' || c == u'F')
                group->addExpr(new FixedExpr(c == u'T', asked));
        }
        filter->addGroup(group);
    }
    return filter;
}

using TagFilters::group;

// A tag filter of one group: names "get*" and kind "method".
QATagFilter* tagFilter(const QString& name, bool enabled = false)
{
    return TagFilters::filter(name, enabled,
                              {group({{QATagFilterExpr::Name, "get*"}, {QATagFilterExpr::Kind, "method", true}})});
}

// Everything a filter holds as one text, to compare two filters.
QString describe(const QAFilter* f)
{
    QString s = u"%1|%2|%3|%4"_s.arg(f->metaObject()->className(), f->filterName()).arg(f->enabled())
                    .arg(f->useWildcard());
    for (const QAFilterExprGroup* g : f->groups()) {
        s += u"\n %1 %2%3%4"_s.arg(g->metaObject()->className()).arg(g->matchAll())
                 .arg(g->enabled()).arg(g->invertFilter());
        for (const QAFilterExpr* e : g->exprList())
            s += u"\n  %1 %2 [%3] %4"_s.arg(e->metaObject()->className())
                     .arg(e->type()).arg(e->text()).arg(e->caseSensitive());
    }
    return s;
}

const QATagFilterSubject someTag{"getValue", "method", "/work/src/value.cpp", 1};

// A filter of another viewer, which keeps its name as element text.
class TextFilter : public QAFilter {
public:
    explicit TextFilter(const QString& name = QString()) { setFilterName(name); }
    QString xmlTag() const override { return u"text_filter"_s; }
    void xmlSave(QDomDocument& doc, QDomElement& e) override
    {
        e.appendChild(doc.createElement(u"name"_s)).appendChild(doc.createTextNode(filterName()));
    }
    bool xmlLoad(QDomDocument&, QDomElement& e) override
    {
        setFilterName(e.firstChildElement(u"name"_s).text());
        return true;
    }
};

class TextFiltersMgr : public QAFiltersMgr {
public:
    QAFilter* createFilter() override { return new TextFilter; }
    bool xmlLoad(QDomDocument&, QDomElement&) override { return true; }
};

using Kind = RecordingStudio::Request::Kind;

// Runs act on the filter editor that the next modal run opens, then
// presses its OK button (or Cancel).
void onFilterEditor(std::function<void(QAFilterEditor*)> act, bool ok = true)
{
    QTimer::singleShot(0, [act, ok] {
        auto* editor = qobject_cast<QAFilterEditor*>(QApplication::activeModalWidget());
        QVERIFY2(editor, "no filter editor is open");
        act(editor);
        editor->findChild<QDialogButtonBox*>()->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
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

class TestFilters : public QObject {
    Q_OBJECT

private slots:
    // The groups of a filter are or-ed; a group stops at the first
    // expression that decides it.
    void evaluation_data()
    {
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<bool>("expected");
        QTest::addColumn<int>("asked"); // -1: not counted
        // Each row, then inverted: the opposite outcome, as many asked.
        const auto row = [](const char* tag, const QString& group, bool expected, int asked) {
            QTest::newRow(tag) << QStringList{group} << expected << asked;
            QTest::addRow("%s, inverted", tag) << QStringList{u'!' + group} << !expected << asked;
        };
        row("empty all", "", true, 0);
        row("empty any", "|", false, 0);
        row("all hold", "TTT", true, 3);
        row("all, second fails: stops", "TFT", false, 2);
        row("any, second holds: stops", "|FTF", true, 2);
        row("any, none holds", "|FFF", false, 3);
        QTest::newRow("no group") << QStringList{} << false << -1;
        QTest::newRow("one failing group") << QStringList{"F"} << false << -1;
        QTest::newRow("groups are or-ed") << QStringList{"F", "TF", "T"} << true << -1;
        QTest::newRow("empty all group matches") << QStringList{"F", ""} << true << -1;
        QTest::newRow("disabled groups still count") << QStringList{"-F", "-T"} << true << -1;
    }
    void evaluation()
    {
        QFETCH(QStringList, groups);
        QFETCH(int, asked);
        int count = 0;
        std::unique_ptr<QAFilter> filter(fixedFilter(groups, true, &count));
        QTEST(filter->match(nullptr, nullptr), "expected");
        if (asked >= 0)
            QCOMPARE(count, asked);
    }

    // Only enabled filters count; the manager owns its filters, their
    // groups and expressions.
    void manager()
    {
        auto mgr = std::make_unique<QAFiltersMgr>();
        QVERIFY(!mgr->filterActive());
        QVERIFY(!mgr->match(nullptr, nullptr));
        mgr->addFilter(fixedFilter({"T"}, false));
        QVERIFY(!mgr->filterActive());
        QVERIFY(!mgr->match(nullptr, nullptr));
        mgr->addFilter(fixedFilter({"F"}, true));
        QVERIFY(mgr->filterActive());
        QVERIFY(!mgr->match(nullptr, nullptr));
        mgr->addFilter(fixedFilter({"F", "T"}, true));
        QVERIFY(mgr->match(nullptr, nullptr));

        QAFilter* first = mgr->filters().at(1);
        QAFilter* second = mgr->filters().at(2);
        first->setFilterName(u"twin"_s);
        second->setFilterName(u"twin"_s);
        QCOMPARE(mgr->fromName(u"twin"_s), first);
        QCOMPARE(mgr->fromName(u"Twin"_s), nullptr);
        QVERIFY(!mgr->remove(-1));
        QVERIFY(!mgr->remove(3));
        QCOMPARE(mgr->filters().size(), 3);
        QPointer<QAFilterExprGroup> group = first->groups().first();
        QPointer<QAFilterExpr> expr = group->exprList().first();
        QVERIFY(mgr->remove(1));
        QVERIFY(group.isNull() && expr.isNull());
        QCOMPARE(mgr->fromName(u"twin"_s), second);
        QVERIFY(!mgr->hasModification());
        second->setModified(true);
        QVERIFY(mgr->hasModification() && !mgr->modified());
        expr = second->groups().first()->exprList().last();
        mgr.reset();
        QVERIFY(expr.isNull());
    }

    void tagExpr_data()
    {
        QTest::addColumn<quint32>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("wildcard");
        QTest::addColumn<bool>("caseSensitive");
        QTest::addColumn<QString>("value");  // the name, kind or file, by type
        QTest::addColumn<uint>("qualifiers");
        QTest::addColumn<bool>("expected");
        const quint32 name = QATagFilterExpr::Name, kind = QATagFilterExpr::Kind,
                      file = QATagFilterExpr::File, qual = QATagFilterExpr::Qualifier;
        const auto row = [](const char* tag) -> QTestData& { return QTest::newRow(tag); };
        row("plain, ignoring case") << name << "getvalue" << true << false << "getValue" << 0u << true;
        row("plain, case-sensitive") << name << "getvalue" << true << true << "getValue" << 0u << false;
        row("plain is whole") << name << "get" << true << false << "getValue" << 0u << false;
        row("prefix") << name << "get*" << true << false << "GetValue" << 0u << true;
        row("prefix, case-sensitive") << name << "get*" << true << true << "GetValue" << 0u << false;
        row("suffix") << name << "*value" << true << false << "getValue" << 0u << true;
        row("contains") << name << "*tVa*" << true << true << "getValue" << 0u << true;
        row("star") << name << "*" << true << false << "anything" << 0u << true;
        row("question mark") << name << "g?tValue" << true << false << "gotValue" << 0u << true;
        row("set") << name << "[gs]et*" << true << false << "setValue" << 0u << true;
        row("star stops at a slash") << name << "*" << true << false << "a/b" << 0u << false;
        row("prefix stops at a slash") << name << "a*" << true << false << "a/b" << 0u << false;
        row("contains stops at a slash") << name << "*b*" << true << false << "a/bc" << 0u << false;
        row("regexp anchored") << name << "get" << false << false << "getValue" << 0u << false;
        row("regexp") << name << "(get|set)[A-Z]\\w*" << false << true << "setValue" << 0u << true;
        row("regexp, case") << name << "(get|set)[A-Z]\\w*" << false << true << "setvalue" << 0u << false;
        row("regexp not compiling") << name << "get(" << false << false << "get(" << 0u << false;
        row("kind alternatives") << kind << "class|struct" << false << false << "struct" << 0u << true;
        row("file name") << file << "*.cpp" << true << false << "/work/src/a.cpp" << 0u << true;
        row("file name is whole") << file << "*.c" << true << false << "/work/src/a.cpp" << 0u << false;
        row("file path") << file << "/work/*/a.cpp" << true << false << "/work/src/a.cpp" << 0u << true;
        row("file path is whole") << file << "src/*.cpp" << true << false << "/work/src/a.cpp" << 0u << false;
        row("file name, regexp") << file << "a\\.(cpp|h)" << false << false << "/w/a.h" << 0u << true;
        row("qualifier word") << qual << "private" << true << false << "" << 4u << true;
        row("qualifier pattern, pure") << qual << "*virtual" << true << false << "" << 32u << true;
        row("qualifier pattern, virtual") << qual << "*virtual" << true << false << "" << 64u << true;
        row("qualifier virtual, not pure") << qual << "virtual" << true << false << "" << 32u << false;
        row("qualifier, case-sensitive") << qual << "Public" << true << true << "" << 1u << false;
        row("qualifier, regexp") << qual << "pro.*|pri.*" << false << false << "" << 2u << true;
        row("qualifier number, a bit short") << qual << "5" << true << false << "" << 4u << false;
        row("qualifier hexadecimal") << qual << "0x20000" << true << false << "" << 0x20001u << true;
        row("qualifier unknown word") << qual << "static" << true << false << "" << 0xffffu << false;
    }
    void tagExpr()
    {
        QFETCH(quint32, type);
        QFETCH(QString, text);
        QFETCH(bool, wildcard);
        QFETCH(bool, caseSensitive);
        QFETCH(QString, value);
        QATagFilterSubject tag = someTag;
        QFETCH(uint, qualifiers);
        tag.qualifiers = qualifiers;
        (type == QATagFilterExpr::Name ? tag.name : type == QATagFilterExpr::Kind ? tag.kind : tag.file) = value;
        QATagFilterExpr expr(type, text, caseSensitive);
        QTEST(expr.match(&tag, nullptr, wildcard), "expected");
        QVERIFY(!expr.match(nullptr, nullptr, wildcard));
    }

    void tagExprFollowsItsFields()
    {
        QATagFilterExpr expr(QATagFilterExpr::Name, u"get*"_s, false);
        QATagFilterSubject tag = someTag;
        QVERIFY(expr.matches(tag, true));
        expr.setText(u"set*"_s);
        QVERIFY(!expr.matches(tag, true));
        tag.name = u"SetValue"_s;
        QVERIFY(expr.matches(tag, true));
        expr.setCaseSensitive(true);
        QVERIFY(!expr.matches(tag, true));
        expr.setType(QATagFilterExpr::Qualifier);
        expr.setText(u"protected"_s);
        tag.qualifiers = 2;
        QVERIFY(expr.matches(tag, true));

        // Copies and assignments carry the compiled text along.
        const QATagFilterExpr copy(expr);
        QVERIFY(copy.matches(tag, true));
        QATagFilterExpr other(QATagFilterExpr::Kind, u"nothing"_s, false);
        static_cast<QAFilterExpr&>(other) = expr;
        QVERIFY(other.matches(tag, false));
        other.setType(99);
        QVERIFY(!other.matches(tag, true));
    }

    void textsReadBackEqual_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("control characters, quotes, markup") << u"\x1B[1m\"bold\" <&>\x01\x08\x7F"_s;
        QTest::newRow("tabs and line ends") << u"a\tb\nc\r\nd\re\n"_s;
        QTest::newRow("blanks only") << u" \t\n "_s;
        QTest::newRow("commas and escapes") << u"a,b #comma# #x1B# #x# ## #"_s;
        QTest::newRow("beyond the basic plane, halves of pairs")
            << u"\U0001F600 \u00e9t\u00e9 "_s + QChar(char16_t(0xD800)) + u'x' + QChar(char16_t(0xDC00));
    }
    // A text in an attribute (the tag filters) and in element text (another
    // viewer's filters) is written so that the file parses and reads back equal.
    void textsReadBackEqual()
    {
        QFETCH(QString, text);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);
        QATagFiltersMgr tags;
        QATagFilter* filter = TagFilters::filter(text, false, {group({{QATagFilterExpr::Name, text},
                                                                {QATagFilterExpr::File, text, true}})});
        tags.addFilter(filter);
        QVERIFY(tags.exportFile(path, tags.filters()));
        QATagFiltersMgr tagsBack;
        QCOMPARE(tagsBack.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(tagsBack.filters().size(), 1);
        QCOMPARE(describe(tagsBack.filters().first()), describe(filter));
        TextFiltersMgr texts;
        texts.addFilter(new TextFilter(text));
        QVERIFY(texts.exportFile(path, texts.filters()));
        TextFiltersMgr textsBack;
        QCOMPARE(textsBack.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(textsBack.filters().size(), 1);
        QCOMPARE(textsBack.filters().first()->filterName(), text);
    }
    // The same filters give the same bytes, whatever the seed of Qt's hashes
    // (random in each process unless QT_HASH_SEED says otherwise), over a
    // longer file; imported, the tag filters follow those already there as
    // they were, the manager modified, the filters not.
    void exportThenImport()
    {
        QATagFiltersMgr mgr;
        // A type outside the family reads back as it was.
        mgr.addFilter(TagFilters::filter(
            u"Public getters"_s, true,
            {group({{QATagFilterExpr::Name, "get*"}, {QATagFilterExpr::Qualifier, "public", true}}),
             group({{QATagFilterExpr::File, "*.h"}, {99, "kept"}}, false, false, true), group({})}));
        mgr.addFilter(TagFilters::filter(u"none"_s, false, {}, false));
        mgr.addFilter(new TextFilter);
        const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<!DOCTYPE Korvil-Filters>\n"
                                    "<filters>\n"
                                    "  <tag_filter enabled=\"1\" name=\"Public getters\" wildcard=\"1\">\n"
                                    "    <tag_group all=\"1\" enabled=\"1\" invert=\"0\">\n"
                                    "      <expr case=\"0\" text=\"get*\" type=\"name\"/>\n"
                                    "      <expr case=\"1\" text=\"public\" type=\"qualifier\"/>\n"
                                    "    </tag_group>\n"
                                    "    <tag_group all=\"0\" enabled=\"0\" invert=\"1\">\n"
                                    "      <expr case=\"0\" text=\"*.h\" type=\"file\"/>\n"
                                    "      <expr case=\"0\" text=\"kept\" type=\"99\"/>\n"
                                    "    </tag_group>\n"
                                    "    <tag_group all=\"1\" enabled=\"1\" invert=\"0\"/>\n"
                                    "  </tag_filter>\n"
                                    "  <tag_filter enabled=\"0\" name=\"none\" wildcard=\"0\"/>\n"
                                    "  <text_filter>\n"
                                    "    <name></name>\n"
                                    "  </text_filter>\n"
                                    "</filters>\n";
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);
        // Neither into a directory nor below a missing one, and nothing left.
        QVERIFY(!mgr.exportFile(dir.path(), mgr.filters()));
        QVERIFY(!mgr.exportFile(dir.filePath(u"missing/filters.xfl"_s), mgr.filters()));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
        TestFiles::writeFile(path, QByteArray(10000, 'x'));
        for (int run = 0; run < 3; ++run) {
            QHashSeed::resetRandomGlobalSeed();
            QVERIFY(mgr.exportFile(path, mgr.filters()));
            QCOMPARE(TestFiles::readFile(path), expected);
        }
        QATagFiltersMgr target;
        auto* before = new QATagFilter;
        target.addFilter(before);
        QCOMPARE(target.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(target.filters().size(), 3);
        QCOMPARE(target.filters().first(), before);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(describe(target.filters().at(i + 1)), describe(mgr.filters().at(i)));
            QVERIFY(!target.filters().at(i + 1)->modified());
        }
        QVERIFY(target.modified());
        // The base manager refuses every file.
        QAFiltersMgr base;
        QCOMPARE(base.importFile(path), QAFiltersMgr::ImportResult::BadRoot);
        QVERIFY(base.filters().isEmpty() && !base.modified());
    }

    // Into a full disk or a read-only directory: an older export file is left
    // byte for byte, with no stray file beside it, and the reason is given.
    void olderExportStaysWhole_data()
    {
        QTest::addColumn<QString>("mechanism");
        QTest::addColumn<int>("error");
        QTest::newRow("full disk at once") << u"limit:0"_s << EFBIG;
        QTest::newRow("full disk half-way") << u"limit:2000"_s << EFBIG;
        QTest::newRow("read-only directory") << u"read-only"_s << EACCES;
    }
    void olderExportStaysWhole()
    {
        QFETCH(QString, mechanism);
        QFETCH(int, error);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);
        const QByteArray old = "<!DOCTYPE Korvil-Filters>\n<filters/>\n";
        TestFiles::writeFile(path, old);
        QATagFiltersMgr manager;
        for (int i = 0; i < 100; ++i)
            manager.addFilter(TagFilters::filter(u"filter number %1"_s.arg(i), false, {}));
        FailingStorage::Failure failure(mechanism, dir.path());
        QVERIFY(failure.ready());
        if (failure.powerless())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        QString reason;
        const bool exported = manager.exportFile(path, manager.filters(), &reason);
        failure.end();
        QVERIFY(!exported);
        QCOMPARE(reason, FailingStorage::reason(error));
        QCOMPARE(TestFiles::readFile(path), old);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"filters.xfl"_s});
        QVERIFY(manager.exportFile(path, manager.filters()));
    }

    void editTicksAndUnticks()
    {
        RecordingStudio studio;
        QATagFiltersMgr mgr;
        mgr.addFilter(tagFilter(u"a"_s));
        mgr.addFilter(tagFilter(u"b"_s, true));
        QAFiltersMgrEditor* first = nullptr;
        QTimer::singleShot(0, [&] {
            first = qobject_cast<QAFiltersMgrEditor*>(QApplication::activeModalWidget());
            QVERIFY(first);
            QSignalSpy changed(first, &QAFiltersMgrEditor::filtersChanged);
            QListWidget* list = first->filterList();
            QCOMPARE(rowTexts(list), (QStringList{"a[ ]", "b[x]"}));
            list->item(0)->setCheckState(Qt::Checked);
            list->item(1)->setCheckState(Qt::Unchecked);
            list->item(0)->setText(u"renaming is no tick"_s);
            QCOMPARE(changed.size(), 2);
            first->accept();
        });
        QVERIFY(mgr.edit(nullptr, "filtersEditor"));
        QVERIFY(mgr.filters().at(0)->enabled() && !mgr.filters().at(1)->enabled());
        QVERIFY(mgr.modified());

        // The same editor again, handed the manager's flag and giving it
        // back; the manager's changes reach it and are not its own.
        mgr.setModified(false);
        QTimer::singleShot(0, [&] {
            QCOMPARE(QApplication::activeModalWidget(), first);
            QVERIFY(!first->isModified());
            mgr.addFilter(tagFilter(u"c"_s));
            mgr.filters().at(1)->setEnabled(true);
            mgr.updateEnabled(mgr.filters().at(1));
            QCOMPARE(rowTexts(first->filterList()).mid(1), (QStringList{"b[x]", "c[ ]"}));
            QVERIFY(mgr.remove(2));
            QCOMPARE(rowTexts(first->filterList()).mid(1), QStringList{"b[x]"});
            QVERIFY(!first->isModified());
            first->accept();
        });
        QVERIFY(mgr.edit(nullptr, "ignored"));
        QCOMPARE(dynamic_cast<QAFiltersMgrEditor*>(mgr.editor()), first);
        QVERIFY(!mgr.modified());
    }

    void newEditAndCancel()
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
            e->nameEdit()->setText(u"setters or public"_s);
            e->regExpButton()->setChecked(true);
            page->textEdit(0)->setText(u"set[A-Z].*"_s);
            page->caseBox(0)->setChecked(true);
            click(page, "moreButton");
            page->typeBox(1)->setCurrentText(u"Qualifier"_s);
            page->textEdit(1)->setText(u"public"_s);
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
            QCOMPARE(page->typeBox(1)->currentText(), u"Qualifier"_s);
            click(page, "fewerButton");
            page->invertBox()->setChecked(true);
            page->enabledBox()->setChecked(false);
            click(e, "addGroupButton");
            e->groupWidget(1)->typeBox(0)->setCurrentText(u"Kind"_s);
            e->groupWidget(1)->textEdit(0)->setText(u"class"_s);
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
        onFilterEditor([](QAFilterEditor* e) {
                e->nameEdit()->setText(u"changed"_s);
                e->groupWidget(0)->fewer();
                e->groupWidget(0)->allButton()->setChecked(true);
                e->addGroup();
                e->removeGroup();
                e->removeGroup();
            },
            false);
        click(&editor, "editButton");
        QCOMPARE(filter->filterName(), u"setters or public"_s);
        QCOMPARE(filter->groups(), groups);
        QCOMPARE(groups.first()->exprList().size(), 1);
        QVERIFY(!groups.first()->matchAll() && !filter->modified());
        onFilterEditor([](QAFilterEditor* e) { e->nameEdit()->setText(u"x"_s); }, false);
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
        blank.nameEdit()->setText(u"  "_s);
        blank.accept();
        QCOMPARE(filter->filterName(), u"setters or public"_s);
    }

    void exportAndRemoveTheSelected()
    {
        QTemporaryDir dir;
        RecordingStudio studio;
        QATagFiltersMgr mgr;
        for (const char* name : {"a", "b", "c"})
            mgr.addFilter(tagFilter(QString::fromLatin1(name), true));
        QAFiltersMgrEditor editor(&mgr);
        selectRows(editor.filterList(), {0, 2});
        const QString path = dir.filePath(u"mine.xfl"_s);

        // Declining the first question asks nothing more.
        studio.answer(QMessageBox::No);
        click(&editor, "exportButton");
        QCOMPARE(studio.requests().size(), 1);
        QCOMPARE(studio.requests().first().text, u"Export 2 selected filters?"_s);
        exportTo(studio, editor, path);
        QCOMPARE(studio.requestTexts(Kind::SaveFile), QStringList{QDir::current().filePath(u"filters.xfl"_s)});
        QCOMPARE(studio.statusMessages(), QStringList{"2 filter(s) saved."});
        QATagFiltersMgr back;
        QCOMPARE(back.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(back.fromName(u"c"_s), back.filters().at(1));

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
        const QString unwritable = dir.filePath(u"missing/filters.xfl"_s);
        exportTo(studio, editor, unwritable);
        QCOMPARE(studio.requestTexts(Kind::Warning),
                 QStringList{u"Cannot write file \"%1\".\nNo such file or directory"_s.arg(unwritable)});
        QVERIFY(studio.statusMessages().isEmpty());
        QVERIFY(!mgr.modified());

        // Removing takes the selected rows; without a selection neither
        // remove nor export is offered.
        selectRows(editor.filterList(), {0, 2});
        click(&editor, "removeButton");
        QCOMPARE(mgr.filters().size(), 1);
        QCOMPARE(rowTexts(editor.filterList()), QStringList{"b[x]"});
        QVERIFY(mgr.modified());
        editor.filterList()->clearSelection();
        QVERIFY(!editor.findChild<QPushButton*>(u"removeButton"_s)->isEnabled());
        QVERIFY(!editor.findChild<QPushButton*>(u"exportButton"_s)->isEnabled());
    }

    // Imported filters join the list; a bad entry costs itself alone.
    void imports_data()
    {
        QTest::addColumn<QByteArray>("content");  // empty: no file at all
        QTest::addColumn<QString>("message");     // %1: the file's path; empty: none
        QTest::addColumn<QStringList>("filters"); // what the manager holds after
        const QString cannotOpen = u"Can't open file \"%1\"."_s;
        const QString contents = u"Can't get file contents (file:\"%1\")."_s;
        const QString badRoot = u"Error loading filters in file \"%1\")."_s;
        const QString leftOut = u"Error loading filters element in file \"%1\").\n\n"_s;
        const QByteArray good = "<tag_filter name=\"good\"><tag_group><expr type=\"name\" "
                                "text=\"get*\"/></tag_group></tag_filter>\n";
        const QStringList kept{"kept: name,kind"};
        const QStringList keptAndGood{"kept: name,kind", "good: name"};
        QTest::newRow("good file") << QByteArray("<filters>\n<tag_filter name=\"x\" enabled=\"1\"/>\n"
                                                 "<tag_filter name=\"y\" enabled=\"0\"/>\n</filters>\n")
                                   << QString() << QStringList{"kept: name,kind", "x[x]: ", "y: "};
        QTest::newRow("no file") << QByteArray() << cannotOpen << kept;
        QTest::newRow("not well-formed") << QByteArray("<filters><tag_filter></filters>") << contents << kept;
        QTest::newRow("another root") << QByteArray("<project>" + good + "</project>") << badRoot << kept;
        QTest::newRow("another filter kind")
            << QByteArray("<filters>\n" + good + "<filter name=\"x\"/>\n</filters>")
            << leftOut + "line 3: element \"filter\" left out: \"tag_filter\" is expected" << keptAndGood;
        QTest::newRow("bad flag of a filter")
            << QByteArray("<filters>\n<tag_filter name=\"bad\" enabled=\"yes\"/>\n" + good + "</filters>")
            << leftOut + "line 2: filter \"bad\" left out: enabled=\"yes\" is neither 0 nor 1" << keptAndGood;
        QTest::newRow("only bad filters") << QByteArray("<filters><filter/></filters>")
            << leftOut + "line 1: element \"filter\" left out: \"tag_filter\" is expected" << kept;
        QTest::newRow("stray element in a filter") << QByteArray("<filters><tag_filter name=\"s\">\n<group/>\n"
                          "<tag_group><expr type=\"file\"/></tag_group></tag_filter></filters>")
            << leftOut + "line 2: a group of filter \"s\" left out: element \"group\" where "
                         "\"tag_group\" is expected" << QStringList{"kept: name,kind", "s: file"};
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
                         "line 4: an expression of filter \"t\" left out: case=\"yes\" is neither 0 nor 1"
            << QStringList{"kept: name,kind", "t: kind", "good: name"};
        QTest::newRow("stray element in a group")
            << QByteArray("<filters><tag_filter name=\"e\"><tag_group><tag_group/>"
                          "<expr type=\"qualifier\"/></tag_group></tag_filter></filters>")
            << leftOut + "line 1: an expression of filter \"e\" left out: element \"tag_group\" "
                         "where \"expr\" is expected" << QStringList{"kept: name,kind", "e: qualifier"};
    }
    void imports()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        QFETCH(QStringList, filters);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);
        if (!content.isEmpty())
            TestFiles::writeFile(path, content);
        RecordingStudio studio;
        QATagFiltersMgr mgr;
        mgr.addFilter(tagFilter(u"kept"_s));
        QAFiltersMgrEditor editor(&mgr);
        QSignalSpy changed(&editor, &QAFiltersMgrEditor::filtersChanged);
        studio.answerPath(path);
        click(&editor, "importButton");
        QCOMPARE(studio.requestTexts(Kind::OpenFile), QStringList{QDir::current().filePath("filters.xfl")});
        QCOMPARE(studio.requestTexts(Kind::Warning),
                 message.isEmpty() ? QStringList() : QStringList{message.arg(path)});
        // Each filter as its name, "[x]" when enabled, ": " and its groups,
        // each the types of its expressions.
        QStringList held;
        for (const QAFilter* filter : mgr.filters()) {
            QStringList groups;
            for (const QAFilterExprGroup* group : filter->groups()) {
                QStringList types;
                for (const QAFilterExpr* expr : group->exprList())
                    types << QATagFilterExpr::typeKey(expr->type());
                groups << types.join(QLatin1Char(','));
            }
            held << filter->filterName() + (filter->enabled() ? "[x]: " : ": ") + groups.join(QLatin1Char('|'));
        }
        QCOMPARE(held, filters);
        QCOMPARE(editor.filterList()->count(), mgr.filters().size());
        const bool imported = filters.size() > 1;
        QCOMPARE(mgr.hasModification(), imported);
        QCOMPARE(editor.isModified(), imported);
        QCOMPARE(changed.size(), imported ? 1 : 0);

        // No file chosen: nothing happens.
        studio.reset();
        click(&editor, "importButton");
        QCOMPARE(mgr.filters().size(), filters.size());
        QCOMPARE(studio.requests().size(), 1);
    }
};

QTEST_MAIN(TestFilters)
#include "tst_filters.moc"
