#include "QAFilter.h"
#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QAFiltersMgr.h"
#include "QATagFilter.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"
#include "QATagFiltersMgr.h"
#include "TestFiles.h"

#include <QDomDocument>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

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
    QString s = QStringLiteral("%1|%2|%3|%4")
                    .arg(f->metaObject()->className(), f->filterName())
                    .arg(f->enabled())
                    .arg(f->useWildcard());
    for (const QAFilterExprGroup* g : f->groups()) {
        s += QStringLiteral("\n %1 %2%3%4").arg(g->metaObject()->className()).arg(g->matchAll())
                 .arg(g->enabled()).arg(g->invertFilter());
        for (const QAFilterExpr* e : g->exprList())
            s += QStringLiteral("\n  %1 %2 [%3] %4").arg(e->metaObject()->className())
                     .arg(e->type()).arg(e->text()).arg(e->caseSensitive());
    }
    return s;
}

const QATagFilterSubject someTag{"getValue", "method", "/work/src/value.cpp", 1};

// A filter of another viewer, which keeps its name as element text.
class TextFilter : public QAFilter {
public:
    QString xmlTag() const override { return QStringLiteral("text_filter"); }
    void xmlSave(QDomDocument& doc, QDomElement& e) override
    {
        QDomElement name = doc.createElement(QStringLiteral("name"));
        name.appendChild(doc.createTextNode(filterName()));
        e.appendChild(name);
    }
    bool xmlLoad(QDomDocument&, QDomElement& e) override
    {
        setFilterName(e.firstChildElement(QStringLiteral("name")).text());
        return true;
    }
};

class TextFiltersMgr : public QAFiltersMgr {
public:
    QAFilter* createFilter() override { return new TextFilter; }
    bool xmlLoad(QDomDocument&, QDomElement&) override { return true; }
};

}

class TestFilters : public QObject {
    Q_OBJECT

private slots:
    void groupEvaluation_data();
    void groupEvaluation();
    void filterEvaluation_data();
    void filterEvaluation();
    void managerEvaluation();
    void ownershipAndModification();
    void tagExpr_data();
    void tagExpr();
    void tagExprFollowsItsFields();
    void exportThenImport();
    void textsReadBackEqual_data();
    void textsReadBackEqual();
    void exportIsTheSameEveryTime();
    void exportWritesInOnePiece();
};

// --- evaluation

void TestFilters::groupEvaluation_data()
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

void TestFilters::groupEvaluation()
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

void TestFilters::filterEvaluation_data()
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

void TestFilters::filterEvaluation()
{
    QFETCH(QStringList, groups);
    QFETCH(bool, groupsEnabled);
    QFETCH(bool, expected);

    std::unique_ptr<QAFilter> filter(fixedFilter(groups, true));
    for (QAFilterExprGroup* g : filter->groups())
        g->setEnabled(groupsEnabled);
    QCOMPARE(filter->match(nullptr, nullptr), expected);
}

void TestFilters::managerEvaluation()
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
    tag.name = QStringLiteral("setValue");
    QVERIFY(!tags.match(&tag, nullptr));
}

void TestFilters::ownershipAndModification()
{
    auto mgr = std::make_unique<QAFiltersMgr>();
    QAFilter* first = fixedFilter({"T"}, true);
    QAFilter* second = fixedFilter({"TT"}, true);
    first->setFilterName(QStringLiteral("twin"));
    second->setFilterName(QStringLiteral("twin"));
    mgr->addFilter(first);
    mgr->addFilter(second);
    QCOMPARE(mgr->fromName(QStringLiteral("twin")), first);
    QCOMPARE(mgr->fromName(QStringLiteral("Twin")), nullptr);

    QVERIFY(!mgr->remove(-1));
    QVERIFY(!mgr->remove(2));
    QCOMPARE(mgr->filters().size(), 2);

    // Removing deletes the filter, its groups and their expressions.
    QPointer<QAFilterExprGroup> group = first->groups().first();
    QPointer<QAFilterExpr> expr = group->exprList().first();
    QVERIFY(mgr->remove(0));
    QVERIFY(group.isNull() && expr.isNull());
    QCOMPARE(mgr->fromName(QStringLiteral("twin")), second);

    QVERIFY(!mgr->hasModification());
    second->setModified(true);
    QVERIFY(mgr->hasModification() && !mgr->modified());

    expr = second->groups().first()->exprList().last();
    mgr.reset();
    QVERIFY(expr.isNull());
}

// --- the tag browser's expressions

void TestFilters::tagExpr_data()
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
    row("regexp, case") << name << "(get|set)[A-Z]\\w*" << false << true << "setvalue" << 0u
                        << false;
    row("regexp not compiling") << name << "get(" << false << false << "get(" << 0u << false;
    row("kind alternatives") << kind << "class|struct" << false << false << "struct" << 0u << true;
    row("file name") << file << "*.cpp" << true << false << "/work/src/a.cpp" << 0u << true;
    row("file name is whole") << file << "*.c" << true << false << "/work/src/a.cpp" << 0u << false;
    row("file path") << file << "/work/*/a.cpp" << true << false << "/work/src/a.cpp" << 0u << true;
    row("file path is whole") << file << "src/*.cpp" << true << false << "/work/src/a.cpp" << 0u
                              << false;
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

void TestFilters::tagExpr()
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
    (type == QATagFilterExpr::Name ? tag.name : type == QATagFilterExpr::Kind ? tag.kind
                                                                              : tag.file) = value;
    QATagFilterExpr expr(type, text, caseSensitive);
    QCOMPARE(expr.match(&tag, nullptr, wildcard), expected);
    QVERIFY(!expr.match(nullptr, nullptr, wildcard));
}

void TestFilters::tagExprFollowsItsFields()
{
    QATagFilterExpr expr(QATagFilterExpr::Name, QStringLiteral("get*"), false);
    QATagFilterSubject tag = someTag;
    QVERIFY(expr.matches(tag, true));

    expr.setText(QStringLiteral("set*"));
    QVERIFY(!expr.matches(tag, true));
    tag.name = QStringLiteral("SetValue");
    QVERIFY(expr.matches(tag, true));
    expr.setCaseSensitive(true);
    QVERIFY(!expr.matches(tag, true));
    expr.setType(QATagFilterExpr::Qualifier);
    expr.setText(QStringLiteral("protected"));
    tag.qualifiers = 2;
    QVERIFY(expr.matches(tag, true));

    // Copies and assignments carry the compiled text along.
    const QATagFilterExpr copy(expr);
    QVERIFY(copy.matches(tag, true));
    QATagFilterExpr other(QATagFilterExpr::Kind, QStringLiteral("nothing"), false);
    static_cast<QAFilterExpr&>(other) = expr;
    QVERIFY(other.matches(tag, false));
    other.setType(99);
    QVERIFY(!other.matches(tag, true));
}

// --- export and import

void TestFilters::exportThenImport()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));

    QATagFiltersMgr source;
    auto* tricky = new QATagFilter;
    tricky->setFilterName(QStringLiteral("  \"quoted\" & <odd> \u00e9t\u00e9 "));
    tricky->setEnabled(true);
    tricky->setUseWildcard(false);
    // A type outside the family reads back as it was.
    tricky->addGroup(tagGroup({{QATagFilterExpr::Name, " (get|set)<&>\"\t", true},
                               {QATagFilterExpr::Qualifier, "0x20000"},
                               {99, "kept"}},
                              false, false, true));
    tricky->addGroup(tagGroup({}));
    auto* plain = new QATagFilter;
    plain->setFilterName(QStringLiteral("sources"));
    plain->addGroup(tagGroup({{QATagFilterExpr::File, "*.cpp"}, {QATagFilterExpr::Kind, ""}}));
    source.addFilter(tricky);
    source.addFilter(plain);
    source.addFilter(new QATagFilter);
    QVERIFY(source.exportFile(path, source.filters()));

    QDomDocument written;
    QVERIFY(written.setContent(TestFiles::readFile(path)));
    QCOMPARE(written.doctype().name(), QStringLiteral("Korvil-Filters"));
    QCOMPARE(written.documentElement().tagName(), QStringLiteral("filters"));

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

void TestFilters::textsReadBackEqual_data()
{
    QTest::addColumn<QString>("text");
    const QChar high(char16_t(0xD800));
    const QChar low(char16_t(0xDC00));
    QTest::newRow("control characters, quotes, markup")
        << QStringLiteral("\x1B[1m\"bold\" <&>\x01\x08\x7F");
    QTest::newRow("tabs and line ends") << QStringLiteral("a\tb\nc\r\nd\re\n");
    QTest::newRow("blanks only") << QStringLiteral(" \t\n ");
    QTest::newRow("commas and escapes") << QStringLiteral("a,b #comma# #x1B# #x# ## #");
    QTest::newRow("beyond the basic plane, halves of pairs")
        << QStringLiteral("\U0001F600 \u00e9t\u00e9 ") + high + QLatin1Char('x') + low;
}

// A text in an attribute (the tag filters) and in element text (another
// viewer's filters) is written so that the file parses and reads back equal.
void TestFilters::textsReadBackEqual()
{
    QFETCH(QString, text);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));

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
void TestFilters::exportIsTheSameEveryTime()
{
    QATagFiltersMgr mgr;
    auto* getters = new QATagFilter;
    getters->setFilterName(QStringLiteral("Public getters"));
    getters->setEnabled(true);
    getters->addGroup(tagGroup({{QATagFilterExpr::Name, "get*"},
                                {QATagFilterExpr::Qualifier, "public", true}}));
    getters->addGroup(tagGroup({{QATagFilterExpr::File, "*.h"}}, false, true, true));
    getters->addGroup(tagGroup({}));
    auto* none = new QATagFilter;
    none->setFilterName(QStringLiteral("none"));
    none->setUseWildcard(false);
    mgr.addFilter(getters);
    mgr.addFilter(none);
    mgr.addFilter(new TextFilter);

    const QByteArray expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
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
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));
    for (int run = 0; run < 3; ++run) {
        QHashSeed::resetRandomGlobalSeed();
        QVERIFY(mgr.exportFile(path, mgr.filters()));
        QCOMPARE(TestFiles::readFile(path), expected);
    }
}

void TestFilters::exportWritesInOnePiece()
{
    QTemporaryDir dir;
    QATagFiltersMgr mgr;
    mgr.addFilter(new QATagFilter);

    QVERIFY(!mgr.exportFile(dir.path(), mgr.filters()));
    QVERIFY(!mgr.exportFile(dir.filePath(QStringLiteral("missing/filters.xfl")), mgr.filters()));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());

    const QString path = dir.filePath(QStringLiteral("filters.xfl"));
    TestFiles::writeFile(path, QByteArray(10000, 'x'));
    QVERIFY(mgr.exportFile(path, mgr.filters()));
    QDomDocument doc;
    QVERIFY(doc.setContent(TestFiles::readFile(path)));

#ifdef Q_OS_UNIX
    // A write cut short (here by the process's file size limit) fails and
    // leaves the older file as it was, with no stray file beside it.
    const QByteArray old = TestFiles::readFile(path);
    for (int i = 0; i < 50; ++i)
        mgr.addFilter(new QATagFilter);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    rlimit small = previous;
    small.rlim_cur = 512;
    setrlimit(RLIMIT_FSIZE, &small);
    const bool exported = mgr.exportFile(path, mgr.filters());
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);
    QVERIFY(!exported);
    QCOMPARE(TestFiles::readFile(path), old);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"filters.xfl"});
#endif
}

QTEST_MAIN(TestFilters)
#include "tst_filters.moc"
