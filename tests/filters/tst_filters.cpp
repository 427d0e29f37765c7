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
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// An expression whose outcome is fixed; counts how often it is asked.
class FixedExpr : public QAFilterExpr {
public:
    FixedExpr(bool outcome, int* asked)
        : m_outcome(outcome)
        , m_asked(asked)
    {
    }

    bool match(void*, void*, bool) override
    {
        ++*m_asked;
        return m_outcome;
    }

private:
    bool m_outcome;
    int* m_asked;
};

int unused = 0;

// A group of fixed expressions: "T" holds, "F" fails, in order.
QAFilterExprGroup* fixedGroup(const QString& outcomes, bool matchAll = true, bool invert = false,
                              int* asked = &unused)
{
    auto* group = new QAFilterExprGroup;
    group->setMatchAll(matchAll);
    group->setInvertFilter(invert);
    for (QChar c : outcomes)
        group->addExpr(new FixedExpr(c == u'T', asked));
    return group;
}

QAFilter* fixedFilter(const QStringList& groups, bool enabled)
{
    auto* filter = new QAFilter;
    filter->setEnabled(enabled);
    for (const QString& g : groups)
        filter->addGroup(fixedGroup(g));
    return filter;
}

struct ExprRow {
    quint32 type;
    QString text;
    bool caseSensitive = false;
};

QATagFilterExprGroup* tagGroup(const QList<ExprRow>& exprs, bool matchAll = true,
                               bool enabled = true, bool invert = false)
{
    auto* group = new QATagFilterExprGroup;
    group->setMatchAll(matchAll);
    group->setEnabled(enabled);
    group->setInvertFilter(invert);
    for (const ExprRow& e : exprs)
        group->addExpr(new QATagFilterExpr(e.type, e.text, e.caseSensitive));
    return group;
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
    QString xmlTag() const override { return u"text_filter"_s; }
    void xmlSave(QDomDocument& doc, QDomElement& e) override
    {
        QDomElement name = doc.createElement(u"name"_s);
        name.appendChild(doc.createTextNode(filterName()));
        e.appendChild(name);
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

QATagFilter* tagFilter(const QString& name, bool enabled = false)
{
    auto* filter = new QATagFilter;
    filter->setFilterName(name);
    filter->setEnabled(enabled);
    auto* group = new QATagFilterExprGroup;
    group->addExpr(new QATagFilterExpr(QATagFilterExpr::Name, u"get*"_s, false));
    group->addExpr(new QATagFilterExpr(QATagFilterExpr::Kind, u"method"_s, true));
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

class TestFilters : public QObject {
    Q_OBJECT

private slots:
    void groupEvaluation_data()
    {
        QTest::addColumn<QString>("outcomes");
        QTest::addColumn<bool>("matchAll");
        QTest::addColumn<bool>("invert");
        QTest::addColumn<bool>("expected");
        QTest::addColumn<int>("asked");

        QTest::newRow("empty all") << "" << true << false << true << 0;
        QTest::newRow("empty all, inverted") << "" << true << true << false << 0;
        QTest::newRow("empty any") << "" << false << false << false << 0;
        QTest::newRow("empty any, inverted") << "" << false << true << true << 0;
        QTest::newRow("all hold") << "TTT" << true << false << true << 3;
        QTest::newRow("all hold, inverted") << "TTT" << true << true << false << 3;
        QTest::newRow("all, second fails: stops") << "TFT" << true << false << false << 2;
        QTest::newRow("all, second fails, inverted") << "TFT" << true << true << true << 2;
        QTest::newRow("any, second holds: stops") << "FTF" << false << false << true << 2;
        QTest::newRow("any, second holds, inverted") << "FTF" << false << true << false << 2;
        QTest::newRow("any, none holds") << "FFF" << false << false << false << 3;
        QTest::newRow("any, none holds, inverted") << "FFF" << false << true << true << 3;
    }
    void groupEvaluation()
    {
        QFETCH(QString, outcomes);
        QFETCH(bool, matchAll);
        QFETCH(bool, invert);
        QFETCH(bool, expected);
        QFETCH(int, asked);

        int count = 0;
        std::unique_ptr<QAFilterExprGroup> group(fixedGroup(outcomes, matchAll, invert, &count));
        QCOMPARE(group->match(nullptr, nullptr, true), expected);
        QCOMPARE(count, asked);
    }

    void filterEvaluation_data()
    {
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<bool>("groupsEnabled");
        QTest::addColumn<bool>("expected");

        QTest::newRow("no group") << QStringList{} << true << false;
        QTest::newRow("one failing group") << QStringList{"F"} << true << false;
        QTest::newRow("groups are or-ed") << QStringList{"F", "TF", "T"} << true << true;
        QTest::newRow("empty all group matches") << QStringList{"F", ""} << true << true;
        QTest::newRow("disabled groups still count") << QStringList{"F", "T"} << false << true;
    }
    void filterEvaluation()
    {
        QFETCH(QStringList, groups);
        QFETCH(bool, groupsEnabled);
        QFETCH(bool, expected);

        std::unique_ptr<QAFilter> filter(fixedFilter(groups, true));
        for (QAFilterExprGroup* g : filter->groups())
            g->setEnabled(groupsEnabled);
        QCOMPARE(filter->match(nullptr, nullptr), expected);
    }

    void managerEvaluation()
    {
        QAFiltersMgr mgr;
        QVERIFY(!mgr.filterActive());
        QVERIFY(!mgr.match(nullptr, nullptr));

        // Only enabled filters count: without one, nothing matches.
        mgr.addFilter(fixedFilter({"T"}, false));
        QVERIFY(!mgr.filterActive());
        QVERIFY(!mgr.match(nullptr, nullptr));
        mgr.addFilter(fixedFilter({"F"}, true));
        QVERIFY(mgr.filterActive());
        QVERIFY(!mgr.match(nullptr, nullptr));
        mgr.addFilter(fixedFilter({"F", "T"}, true));
        QVERIFY(mgr.match(nullptr, nullptr));

        // The item reaches the expressions untouched.
        QATagFiltersMgr tags;
        auto* filter = new QATagFilter;
        filter->setEnabled(true);
        filter->addGroup(tagGroup({{QATagFilterExpr::Name, "get*"}}));
        tags.addFilter(filter);
        QATagFilterSubject tag = someTag;
        QVERIFY(tags.match(tag));
        tag.name = u"setValue"_s;
        QVERIFY(!tags.match(&tag, nullptr));
    }

    void ownershipAndModification()
    {
        auto mgr = std::make_unique<QAFiltersMgr>();
        QAFilter* first = fixedFilter({"T"}, true);
        QAFilter* second = fixedFilter({"TT"}, true);
        first->setFilterName(u"twin"_s);
        second->setFilterName(u"twin"_s);
        mgr->addFilter(first);
        mgr->addFilter(second);
        QCOMPARE(mgr->fromName(u"twin"_s), first);
        QCOMPARE(mgr->fromName(u"Twin"_s), nullptr);

        QVERIFY(!mgr->remove(-1));
        QVERIFY(!mgr->remove(2));
        QCOMPARE(mgr->filters().size(), 2);

        // Removing deletes the filter, its groups and their expressions.
        QPointer<QAFilterExprGroup> group = first->groups().first();
        QPointer<QAFilterExpr> expr = group->exprList().first();
        QVERIFY(mgr->remove(0));
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
        QFETCH(uint, qualifiers);
        QFETCH(bool, expected);

        QATagFilterSubject tag = someTag;
        tag.qualifiers = qualifiers;
        (type == QATagFilterExpr::Name ? tag.name : type == QATagFilterExpr::Kind ? tag.kind : tag.file) = value;
        QATagFilterExpr expr(type, text, caseSensitive);
        QCOMPARE(expr.match(&tag, nullptr, wildcard), expected);
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

    void exportThenImport()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);

        QATagFiltersMgr source;
        auto* tricky = new QATagFilter;
        tricky->setFilterName(u"  \"quoted\" & <odd> \u00e9t\u00e9 "_s);
        tricky->setEnabled(true);
        tricky->setUseWildcard(false);
        // A type outside the family reads back as it was.
        tricky->addGroup(tagGroup({{QATagFilterExpr::Name, " (get|set)<&>\"\t", true},
                                   {QATagFilterExpr::Qualifier, "0x20000"}, {99, "kept"}}, false, false, true));
        tricky->addGroup(tagGroup({}));
        auto* plain = new QATagFilter;
        plain->setFilterName(u"sources"_s);
        plain->addGroup(tagGroup({{QATagFilterExpr::File, "*.cpp"}, {QATagFilterExpr::Kind, ""}}));
        source.addFilter(tricky);
        source.addFilter(plain);
        source.addFilter(new QATagFilter);
        QVERIFY(source.exportFile(path, source.filters()));

        QDomDocument written;
        QVERIFY(written.setContent(TestFiles::readFile(path)));
        QCOMPARE(written.doctype().name(), u"Korvil-Filters"_s);
        QCOMPARE(written.documentElement().tagName(), u"filters"_s);

        // Imported filters follow those already there; the manager is modified,
        // the filters are not.
        QATagFiltersMgr target;
        auto* before = new QATagFilter;
        target.addFilter(before);
        QCOMPARE(target.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(target.filters().size(), 4);
        QCOMPARE(target.filters().first(), before);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(describe(target.filters().at(i + 1)), describe(source.filters().at(i)));
            QVERIFY(!target.filters().at(i + 1)->modified());
        }
        QVERIFY(target.modified());

        // The base manager refuses every file.
        QAFiltersMgr base;
        QCOMPARE(base.importFile(path), QAFiltersMgr::ImportResult::BadRoot);
        QVERIFY(base.filters().isEmpty() && !base.modified());
    }

    void textsReadBackEqual_data()
    {
        QTest::addColumn<QString>("text");
        const QChar high(char16_t(0xD800));
        const QChar low(char16_t(0xDC00));
        QTest::newRow("control characters, quotes, markup") << u"\x1B[1m\"bold\" <&>\x01\x08\x7F"_s;
        QTest::newRow("tabs and line ends") << u"a\tb\nc\r\nd\re\n"_s;
        QTest::newRow("blanks only") << u" \t\n "_s;
        QTest::newRow("commas and escapes") << u"a,b #comma# #x1B# #x# ## #"_s;
        QTest::newRow("beyond the basic plane, halves of pairs")
            << u"\U0001F600 \u00e9t\u00e9 "_s + high + QLatin1Char('x') + low;
    }
    // A text in an attribute (the tag filters) and in element text (another
    // viewer's filters) is written so that the file parses and reads back equal.
    void textsReadBackEqual()
    {
        QFETCH(QString, text);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);

        QATagFiltersMgr tags;
        auto* filter = new QATagFilter;
        filter->setFilterName(text);
        filter->addGroup(tagGroup({{QATagFilterExpr::Name, text}, {QATagFilterExpr::File, text, true}}));
        tags.addFilter(filter);
        QVERIFY(tags.exportFile(path, tags.filters()));
        QATagFiltersMgr tagsBack;
        QCOMPARE(tagsBack.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(tagsBack.filters().size(), 1);
        QCOMPARE(describe(tagsBack.filters().first()), describe(filter));

        TextFiltersMgr texts;
        auto* textFilter = new TextFilter;
        textFilter->setFilterName(text);
        texts.addFilter(textFilter);
        QVERIFY(texts.exportFile(path, texts.filters()));
        TextFiltersMgr textsBack;
        QCOMPARE(textsBack.importFile(path), QAFiltersMgr::ImportResult::Imported);
        QCOMPARE(textsBack.filters().size(), 1);
        QCOMPARE(textsBack.filters().first()->filterName(), text);
    }
    // The same filters give the same bytes, whatever the seed of Qt's hashes
    // (random in each process unless QT_HASH_SEED says otherwise).
    void exportIsTheSameEveryTime()
    {
        QATagFiltersMgr mgr;
        auto* getters = new QATagFilter;
        getters->setFilterName(u"Public getters"_s);
        getters->setEnabled(true);
        getters->addGroup(tagGroup({{QATagFilterExpr::Name, "get*"},
                                    {QATagFilterExpr::Qualifier, "public", true}}));
        getters->addGroup(tagGroup({{QATagFilterExpr::File, "*.h"}}, false, true, true));
        getters->addGroup(tagGroup({}));
        auto* none = new QATagFilter;
        none->setFilterName(u"none"_s);
        none->setUseWildcard(false);
        mgr.addFilter(getters);
        mgr.addFilter(none);
        mgr.addFilter(new TextFilter);

        const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<!DOCTYPE Korvil-Filters>\n"
                                    "<filters>\n"
                                    "  <tag_filter enabled=\"1\" name=\"Public getters\" wildcard=\"1\">\n"
                                    "    <tag_group all=\"1\" enabled=\"1\" invert=\"0\">\n"
                                    "      <expr case=\"0\" text=\"get*\" type=\"name\"/>\n"
                                    "      <expr case=\"1\" text=\"public\" type=\"qualifier\"/>\n"
                                    "    </tag_group>\n"
                                    "    <tag_group all=\"0\" enabled=\"1\" invert=\"1\">\n"
                                    "      <expr case=\"0\" text=\"*.h\" type=\"file\"/>\n"
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
        for (int run = 0; run < 3; ++run) {
            QHashSeed::resetRandomGlobalSeed();
            QVERIFY(mgr.exportFile(path, mgr.filters()));
            QCOMPARE(TestFiles::readFile(path), expected);
        }
    }

    void exportWritesInOnePiece()
    {
        QTemporaryDir dir;
        QATagFiltersMgr mgr;
        mgr.addFilter(new QATagFilter);

        QVERIFY(!mgr.exportFile(dir.path(), mgr.filters()));
        QVERIFY(!mgr.exportFile(dir.filePath(u"missing/filters.xfl"_s), mgr.filters()));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());

        const QString path = dir.filePath(u"filters.xfl"_s);
        TestFiles::writeFile(path, QByteArray(10000, 'x'));
        QVERIFY(mgr.exportFile(path, mgr.filters()));
        QDomDocument doc;
        QVERIFY(doc.setContent(TestFiles::readFile(path)));
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
        for (int i = 0; i < 100; ++i) {
            auto* filter = static_cast<QATagFilter*>(manager.createFilter());
            filter->setFilterName(u"filter number %1"_s.arg(i));
            manager.addFilter(filter);
        }

        std::optional<FailingStorage::FileSizeLimit> limit;
        std::optional<FailingStorage::PermissionsEnforced> enforced;
        if (mechanism.startsWith(QLatin1String("limit:"))) {
            limit.emplace(mechanism.mid(6).toInt());
            QVERIFY(limit->active());
        } else {
            QVERIFY(QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
            enforced.emplace();
            if (!enforced->active())
                QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        }
        QString reason;
        const bool exported = manager.exportFile(path, manager.filters(), &reason);
        limit.reset();
        enforced.reset();
        QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

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
            QCOMPARE(first->objectName(), u"filtersEditor"_s);
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

    void removeSelected()
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
        QVERIFY(!editor.findChild<QPushButton*>(u"removeButton"_s)->isEnabled());
        QVERIFY(!editor.findChild<QPushButton*>(u"exportButton"_s)->isEnabled());
    }

    void managerChangesReachTheOpenEditor()
    {
        RecordingStudio studio;
        QATagFiltersMgr mgr;
        mgr.addFilter(tagFilter(u"a"_s));
        QTimer::singleShot(0, [&] {
            auto* editor = dynamic_cast<QAFiltersMgrEditor*>(mgr.editor());
            mgr.addFilter(tagFilter(u"b"_s));
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

    void exportAsksAndWrites()
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
        QCOMPARE(studio.requests().first().caption, u"Export Filter"_s);
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
        QCOMPARE(studio.requests().last().caption, u"Export Filters"_s);
        QCOMPARE(studio.requestTexts(Kind::Warning),
                 QStringList{u"Cannot write file \"%1\".\nNo such file or directory"_s.arg(unwritable)});
        QVERIFY(studio.statusMessages().isEmpty());
        QVERIFY(!mgr.modified());
    }

    void importShowsEveryFilter()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"filters.xfl"_s);
        QATagFiltersMgr source;
        source.addFilter(tagFilter(u"x"_s, true));
        source.addFilter(tagFilter(u"y"_s));
        QVERIFY(source.exportFile(path, source.filters()));

        RecordingStudio studio;
        QATagFiltersMgr mgr;
        mgr.addFilter(tagFilter(u"a"_s));
        QAFiltersMgrEditor editor(&mgr);
        QSignalSpy changed(&editor, &QAFiltersMgrEditor::filtersChanged);
        studio.answerPath(path);
        click(&editor, "importButton");

        QCOMPARE(studio.requests().size(), 1);
        QCOMPARE(studio.requests().first().kind, Kind::OpenFile);
        QCOMPARE(studio.requests().first().caption, u"Import Filter"_s);
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

    void importErrors_data()
    {
        QTest::addColumn<QByteArray>("content");  // empty: no file at all
        QTest::addColumn<QString>("message");     // %1: the file's path
        QTest::addColumn<QStringList>("filters"); // what the manager holds after

        const QString cannotOpen = u"Can't open file \"%1\"."_s;
        const QString contents = u"Can't get file contents (file:\"%1\")."_s;
        const QString badRoot = u"Error loading filters in file \"%1\")."_s;
        const QString leftOut = u"Error loading filters element in file \"%1\").\n\n"_s;
        const QByteArray good = "<tag_filter name=\"good\"><tag_group><expr type=\"name\" "
                                "text=\"get*\"/></tag_group></tag_filter>\n";
        const QStringList kept{"kept: name,kind"};
        const QStringList keptAndGood{"kept: name,kind", "good: name"};

        QTest::newRow("no file") << QByteArray() << cannotOpen << kept;
        QTest::newRow("not well-formed") << QByteArray("<filters><tag_filter></filters>") << contents << kept;
        QTest::newRow("another root") << QByteArray("<project>" + good + "</project>") << badRoot << kept;

        // A bad entry costs itself alone: a filter, a group or an expression.
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
    void importErrors()
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
        mgr.addFilter(tagFilter(u"kept"_s, true));
        QAFiltersMgrEditor editor(&mgr);
        studio.answerPath(path);
        click(&editor, "importButton");

        QCOMPARE(studio.requestTexts(Kind::Warning), QStringList{message.arg(path)});
        QCOMPARE(studio.requests().last().caption, u"Import Filters"_s);
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

    void help()
    {
        RecordingStudio studio;
        QATagFiltersMgr mgr;
        QAFiltersMgrEditor editor(&mgr);
        click(&editor, "helpButton");
        QCOMPARE(studio.requests().size(), 1);
        QCOMPARE(studio.requests().first().kind, Kind::Information);
        QCOMPARE(studio.requests().first().caption, u"Filters"_s);
    }
};

QTEST_MAIN(TestFilters)
#include "tst_filters.moc"
