#include "Harness.h"

#include "QATagFilter.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"
#include "QATagFiltersMgr.h"

#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int itemCount = 1000000;
constexpr int filterCount = 10;
constexpr int groupsPerFilter = 5;
constexpr int exprsPerGroup = 5;

// One test as a developer would write it by hand, with the texts that a
// filter expression states it in.
enum class Field { Name, Kind, File, Qualifier };
enum class Op { Equals, StartsWith, EndsWith, Contains, Pattern, AnyBit, AllBits };

struct TestRow {
    Field field;
    Op op;
    const char* literal;   // for the string tests
    bool caseSensitive;
    const char* wildcard;  // the expression text in a wildcard filter
    const char* regExp;    // the expression text in a regular-expression filter
    unsigned bits;         // for the qualifier tests
};

const TestRow testRows[] = {
    {Field::Qualifier, Op::AnyBit, "", false, "private", "private", 4},
    {Field::Name, Op::StartsWith, "get", false, "get*", "get.*", 0},
    {Field::Kind, Op::Equals, "method", false, "method", "method", 0},
    {Field::File, Op::EndsWith, ".h", false, "*.h", ".*\\.h", 0},
    {Field::Name, Op::Contains, "Path", true, "*Path*", ".*Path.*", 0},
    {Field::Kind, Op::Equals, "class", true, "class", "class", 0},
    {Field::Qualifier, Op::AllBits, "", false, "0x41", "0x41", 0x41},
    {Field::Name, Op::EndsWith, "Count", true, "*Count", ".*Count", 0},
    {Field::File, Op::StartsWith, "io", false, "io*", "io.*", 0},
    {Field::Kind, Op::Equals, "function", false, "function", "function", 0},
    {Field::Qualifier, Op::AnyBit, "", false, "*virtual", ".*virtual", 96},
    {Field::Name, Op::Equals, "update", false, "update", "update", 0},
    {Field::File, Op::EndsWith, ".cpp", false, "*.cpp", ".*\\.cpp", 0},
    {Field::Name, Op::StartsWith, "is", true, "is*", "is.*", 0},
    {Field::Kind, Op::Equals, "struct", false, "struct", "struct", 0},
    {Field::Qualifier, Op::AnyBit, "", false, "public", "public", 1},
};
constexpr int testRowCount = int(sizeof testRows / sizeof testRows[0]);

// The test of expression e of group g of filter f, spread over the table.
const TestRow& testAt(int f, int g, int e)
{
    return testRows[(f * 7 + g * 3 + e * 5) % testRowCount];
}

// One filter of regular expressions; its patterns go through
// QRegularExpression on both sides.
bool isWildcardFilter(int f) { return f != 5; }

// Narrow "all" groups, and two "none of" groups (inverted "any") that let
// about half of the tags pass, so that most tags are tried by most filters.
bool isMatchAllGroup(int f, int g) { return !(g == 2 && (f == 1 || f == 9)); }
bool isInvertedGroup(int f, int g) { return !isMatchAllGroup(f, g); }

quint32 exprType(Field field)
{
    switch (field) {
    case Field::Name: return QATagFilterExpr::Name;
    case Field::Kind: return QATagFilterExpr::Kind;
    case Field::File: return QATagFilterExpr::File;
    case Field::Qualifier: return QATagFilterExpr::Qualifier;
    }
    return QATagFilterExpr::Name;
}

// --- the hand-written side

struct HandTest {
    Field field;
    Op op;
    QString literal;
    Qt::CaseSensitivity cs;
    QRegularExpression regex;
    unsigned bits;
};

struct HandGroup {
    bool matchAll;
    bool invert;
    std::vector<HandTest> tests;
};

using HandFilter = std::vector<HandGroup>;

HandTest handTest(const TestRow& s, bool wildcard)
{
    HandTest t{s.field, s.op, QString::fromLatin1(s.literal),
               s.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive, {}, s.bits};
    // A regular-expression filter states these tests as patterns.
    if (!wildcard && (s.op == Op::StartsWith || s.op == Op::EndsWith || s.op == Op::Contains)) {
        t.op = Op::Pattern;
        t.regex = QRegularExpression(
            QRegularExpression::anchoredPattern(QString::fromLatin1(s.regExp)),
            s.caseSensitive ? QRegularExpression::NoPatternOption
                            : QRegularExpression::CaseInsensitiveOption);
        t.regex.optimize();
    }
    return t;
}

std::vector<HandFilter> handFilters()
{
    std::vector<HandFilter> filters(filterCount);
    for (int f = 0; f < filterCount; ++f) {
        for (int g = 0; g < groupsPerFilter; ++g) {
            HandGroup group{isMatchAllGroup(f, g), isInvertedGroup(f, g), {}};
            for (int e = 0; e < exprsPerGroup; ++e)
                group.tests.push_back(handTest(testAt(f, g, e), isWildcardFilter(f)));
            filters[f].push_back(std::move(group));
        }
    }
    return filters;
}

bool handTestHolds(const HandTest& t, const QATagFilterSubject& tag)
{
    if (t.op == Op::AnyBit)
        return (tag.qualifiers & t.bits) != 0;
    if (t.op == Op::AllBits)
        return (tag.qualifiers & t.bits) == t.bits;
    QStringView value;
    switch (t.field) {
    case Field::Name: value = tag.name; break;
    case Field::Kind: value = tag.kind; break;
    case Field::File: value = QStringView(tag.file).mid(tag.file.lastIndexOf(u'/') + 1); break;
    case Field::Qualifier: break;
    }
    switch (t.op) {
    case Op::Equals: return value.compare(t.literal, t.cs) == 0;
    case Op::StartsWith: return value.startsWith(t.literal, t.cs);
    case Op::EndsWith: return value.endsWith(t.literal, t.cs);
    case Op::Contains: return value.contains(t.literal, t.cs);
    case Op::Pattern: return t.regex.match(value).hasMatch();
    case Op::AnyBit:
    case Op::AllBits: break;
    }
    return false;
}

bool handGroupHolds(const HandGroup& group, const QATagFilterSubject& tag, long long* tests)
{
    for (const HandTest& t : group.tests) {
        if (tests)
            ++*tests;
        const bool holds = handTestHolds(t, tag);
        if (holds && !group.matchAll)
            return !group.invert;
        if (!holds && group.matchAll)
            return group.invert;
    }
    return group.matchAll != group.invert;
}

bool handPasses(const std::vector<HandFilter>& filters, const QATagFilterSubject& tag,
                long long* tests = nullptr)
{
    for (const HandFilter& filter : filters) {
        for (const HandGroup& group : filter) {
            if (handGroupHolds(group, tag, tests))
                return true;
        }
    }
    return false;
}

// --- the filters' side

void buildManager(QATagFiltersMgr& mgr)
{
    for (int f = 0; f < filterCount; ++f) {
        auto* filter = new QATagFilter;
        filter->setFilterName(QStringLiteral("filter %1").arg(f));
        filter->setEnabled(true);
        filter->setUseWildcard(isWildcardFilter(f));
        for (int g = 0; g < groupsPerFilter; ++g) {
            auto* group = new QATagFilterExprGroup;
            group->setMatchAll(isMatchAllGroup(f, g));
            group->setInvertFilter(isInvertedGroup(f, g));
            for (int e = 0; e < exprsPerGroup; ++e) {
                const TestRow& s = testAt(f, g, e);
                group->addExpr(new QATagFilterExpr(
                    exprType(s.field),
                    QString::fromLatin1(isWildcardFilter(f) ? s.wildcard : s.regExp),
                    s.caseSensitive));
            }
            filter->addGroup(group);
        }
        mgr.addFilter(filter);
    }
}

// --- the items: tags of a large code base

std::vector<QATagFilterSubject> makeTags()
{
    static const char* const verbs[] = {"get", "set", "is", "has", "make", "on", "to",
                                        "read", "write", "compute", "init", "update"};
    static const char* const nouns[] = {"Value", "Name", "Size", "Count", "Item",
                                        "Path", "Mode", "Text", "Index", "State"};
    static const char* const endings[] = {"", "s", "At", "Of", "For",
                                          "Impl", "Ex", "Ref", "Copy", "All"};
    static const char* const kinds[] = {"method", "method", "method", "function",
                                        "class", "struct", "package"};
    static const char* const extensions[] = {".cpp", ".h", ".c", ".java"};
    static const unsigned qualifiers[] = {0, 1, 1, 1, 2, 4, 4, 65, 33, 0x41 | 0x20000};

    QStringList names;
    for (const char* verb : verbs) {
        for (const char* noun : nouns) {
            for (const char* ending : endings)
                names << QString::fromLatin1(verb) + QString::fromLatin1(noun)
                             + QString::fromLatin1(ending);
        }
    }
    names << QStringLiteral("update") << QStringLiteral("Update");
    QStringList files;
    for (int d = 0; d < 50; ++d) {
        for (int f = 0; f < 10; ++f)
            files << QStringLiteral("/work/project/module%1/%2file%3%4")
                         .arg(d)
                         .arg(f % 3 ? QString() : QStringLiteral("io"))
                         .arg(f)
                         .arg(QLatin1String(extensions[(d + f) % 4]));
    }
    QStringList kindTexts;
    for (const char* kind : kinds)
        kindTexts << QString::fromLatin1(kind);

    std::mt19937 random(110);
    std::vector<QATagFilterSubject> tags;
    tags.reserve(itemCount);
    for (int i = 0; i < itemCount; ++i) {
        tags.push_back({names.at(int(random() % names.size())),
                        kindTexts.at(int(random() % kindTexts.size())),
                        files.at(int(random() % files.size())),
                        qualifiers[random() % (sizeof qualifiers / sizeof qualifiers[0])]});
    }
    return tags;
}

struct Data {
    std::vector<QATagFilterSubject> tags;
    QATagFiltersMgr mgr;
    std::vector<HandFilter> hand;
    long long passed = 0;  // of the last run, kept from the optimiser
};

}

SDK110_BENCHMARK(filtersEvaluate,
                 "filters: 10 filters of 5 groups of 5 expressions over 1,000,000 tags against a hand-written loop (goal 1.5x)")
{
    auto data = std::make_shared<Data>();
    data->tags = makeTags();
    buildManager(data->mgr);
    data->hand = handFilters();

    // Both sides must agree on every tag, or the comparison means nothing.
    long long passed = 0, tests = 0;
    for (const QATagFilterSubject& tag : data->tags) {
        const bool hand = handPasses(data->hand, tag, &tests);
        if (hand != data->mgr.match(tag)) {
            std::fprintf(stderr, "filters disagree on %s %s %s %u\n", qPrintable(tag.name),
                         qPrintable(tag.kind), qPrintable(tag.file), tag.qualifiers);
            std::abort();
        }
        passed += hand;
    }
    std::printf("  %lld of %d tags pass; %.1f expression tests a tag on average\n", passed,
                itemCount, double(tests) / itemCount);
    std::fflush(stdout);

    Bench::Measure m;
    m.subject = QStringLiteral("QATagFiltersMgr::match of every tag");
    m.baseline = QStringLiteral("a hand-written loop of the same tests");
    m.runSubject = [data] {
        long long n = 0;
        for (const QATagFilterSubject& tag : data->tags)
            n += data->mgr.match(tag);
        data->passed = n;
        Bench::keep(&data->passed);
    };
    m.runBaseline = [data] {
        long long n = 0;
        for (const QATagFilterSubject& tag : data->tags)
            n += handPasses(data->hand, tag);
        data->passed = n;
        Bench::keep(&data->passed);
    };
    m.target = 1.5;
    m.repetitions = 5;
    return m;
}
