#include "QAStTagLayout.h"

#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStProject.h"
#include "QAStSubProject.h"
#include "QATagFiltersMgr.h"

#include <QDir>

#include <algorithm>

namespace {
bool nameLess(const QAStATag* a, const QAStATag* b)
{
    const int folded = a->name().compare(b->name(), Qt::CaseInsensitive);
    if (folded != 0)
        return folded < 0;
    const int exact = a->name().compare(b->name());
    return exact != 0 ? exact < 0 : a->displayName() < b->displayName();
}

// A tag's text in the flat lists: its qualified name and signature.
QString qualifiedText(const QAStATag* tag)
{
    return tag->qualifiedName() + tag->signature();
}

// A tag's text below owner (a file or a tag) in the by-file layouts: its
// display name; a member shown apart from its class is named with as much
// of its class as owner does not say ("Shape::move(double dx)" below the
// namespace "geo", "geo::Shape::move(double dx)" below its file).
QString nestedText(const QAStATag* tag, const QAStATag* owner)
{
    const auto* method = qobject_cast<const QAStAMethodTag*>(tag);
    if (!method)
        return tag->displayName();
    QString prefix = method->classPrefix();
    const QString under = qobject_cast<const QAStFile*>(owner) ? QString() : owner->qualifiedName();
    if (prefix.isEmpty() || prefix == under)
        return tag->displayName();
    const QString separator = method->scopeSeparator();
    if (!under.isEmpty() && prefix.startsWith(under + separator))
        prefix.remove(0, under.size() + separator.size());
    return prefix + separator + tag->displayName();
}

const QString& kindOf(const QAStATag* tag)
{
    static const QString method = QStringLiteral("method");
    static const QString function = QStringLiteral("function");
    static const QString klass = QStringLiteral("class");
    static const QString structure = QStringLiteral("struct");
    static const QString package = QStringLiteral("package");
    static const QString other = QStringLiteral("tag");
    if (qobject_cast<const QAStAMethodTag*>(tag))
        return method;
    if (qobject_cast<const QAStAFunctionTag*>(tag))
        return function;
    if (qobject_cast<const QAStAClassTag*>(tag))
        return klass;
    if (qobject_cast<const QAStAStructTag*>(tag))
        return structure;
    if (qobject_cast<const QAStAPackageTag*>(tag))
        return package;
    return other;
}

// A path that needs no directory: "/x", "\\host\x", "C:/x". Cheaper than
// QDir::isAbsolutePath, which makes a QFileInfo, for every tag of a layout.
bool isAbsolute(const QString& path)
{
    if (path.isEmpty())
        return false;
    const QChar first = path.at(0);
    return first == u'/' || first == u'\\' || (path.size() > 2 && path.at(1) == u':');
}

// Fills subject without copying texts: the path kept by the tag is shared
// by the tags of one file.
void fillSubject(const QAStATag* tag, QATagFilterSubject& subject)
{
    subject.name = tag->name();
    subject.kind = kindOf(tag);
    const QString& kept = tag->storedFilePath();
    subject.file = isAbsolute(kept) ? kept : tag->filePath();
    if (subject.file.contains(QLatin1Char('\\')))
        subject.file = QDir::fromNativeSeparators(subject.file);
    subject.qualifiers = unsigned(tag->qualifier());
}
}


namespace {
using LayoutEntry = QAStTagLayout::Entry;

// What decides whether a tag shows: the item filter, then the tag filters
// when one of them is enabled.
struct TagTest {
    TagTest(const QAStTagLayout::ItemFilter& filter, QATagFiltersMgr* tagFilters)
        : accepts(filter)
        , filters(tagFilters && tagFilters->filterActive() ? tagFilters : nullptr)
    {
    }
    bool accepted(const QAStATag* tag) const { return !accepts || accepts(tag); }
    bool passes(const QAStATag* tag)
    {
        if (!filters)
            return true;
        fillSubject(tag, subject);
        return filters->match(subject);
    }
    bool shows(const QAStATag* tag) { return accepted(tag) && passes(tag); }

    const QAStTagLayout::ItemFilter& accepts;
    QATagFiltersMgr* filters;
    QATagFilterSubject subject;  // reused for every tag
};

LayoutEntry tagEntry(const QString& text, QAStATag* tag)
{
    LayoutEntry entry;
    entry.text = text;
    entry.tag = tag;
    return entry;
}

// The entries of the tags below tag, into entries, the children of the
// entry of owner (tag itself, or the tag or file it moved up to): the
// accepted tags below a tag the item filter refuses move up to here; a tag
// the tag filters refuse stays as the context of the tags below it that
// pass, else goes. The number added.
int addTagEntries(QList<LayoutEntry>& entries, const QAStATag* tag, const QAStATag* owner,
                  bool sorted, TagTest& test)
{
    QList<QAStATag*> children = tag->children();
    if (sorted)
        std::stable_sort(children.begin(), children.end(), nameLess);
    int added = 0;
    for (QAStATag* c : children) {
        if (!test.accepted(c)) {
            added += addTagEntries(entries, c, owner, sorted, test);
            continue;
        }
        const bool passed = test.passes(c);
        if (!passed && !c->child())
            continue;
        entries.append(tagEntry(nestedText(c, owner), c));
        const int below = addTagEntries(entries.last().children, c, c, sorted, test);
        if (!passed) {
            if (below == 0) {
                entries.removeLast();
                continue;
            }
            entries.last().context = true;
        }
        ++added;
    }
    return added;
}

LayoutEntry byTypeEntry(const QList<QAStFile*>& files, TagTest& test)
{
    LayoutEntry top = tagEntry(QAStTagLayout::tr("Test Items"), nullptr);
    top.icon = QStringLiteral("project_xpm");
    top.children = {tagEntry(QAStTagLayout::tr("Classes"), nullptr),
                    tagEntry(QAStTagLayout::tr("Functions"), nullptr),
                    tagEntry(QAStTagLayout::tr("Packages"), nullptr)};
    for (QAStFile* file : files) {
        for (QAStATag* tag : file->descendants()) {
            const int header = qobject_cast<QAStAClassTag*>(tag)      ? 0
                             : qobject_cast<QAStAFunctionTag*>(tag)   ? 1
                             : qobject_cast<QAStAPackageTag*>(tag)    ? 2
                                                                      : -1;
            if (header >= 0 && test.shows(tag))
                top.children[header].children.append(tagEntry(qualifiedText(tag), tag));
        }
    }
    return top;
}
}

QList<QAStTagLayout::Entry> QAStTagLayout::layout(const QList<QAStFile*>& files,
                                                                int mode, const ItemFilter& filter,
                                                                QATagFiltersMgr* tagFilters)
{
    TagTest test(filter, tagFilters);
    if (mode == SortByType)
        return {byTypeEntry(files, test)};
    QList<QAStFile*> shown = files;
    const bool sorted = mode == SortAlpha;
    if (sorted) {
        std::stable_sort(shown.begin(), shown.end(), [](const QAStFile* a, const QAStFile* b) {
            return nameLess(a, b) || (!nameLess(b, a) && a->filePath() < b->filePath());
        });
    }
    QList<LayoutEntry> entries;
    for (QAStFile* file : shown) {
        LayoutEntry entry = tagEntry(file->name(), file);
        // A file with no tag shown is left out.
        if (addTagEntries(entry.children, file, file, sorted, test) > 0)
            entries.append(entry);
    }
    return entries;
}

// ---------------------------------------------------------------------------


QATagFilterSubject QAStTagLayout::filterSubject(const QAStATag* tag)
{
    QATagFilterSubject subject;
    fillSubject(tag, subject);
    return subject;
}

QList<QAStProject*> QAStTagLayout::projectsOf(QAStProject* project)
{
    QList<QAStProject*> found;
    if (!project)
        return found;
    found.append(project);
    for (QAStData* sub : project->childrenOfClass("QAStSubProject", true))
        found.append(static_cast<QAStProject*>(sub));
    return found;
}

QList<QAStFile*> QAStTagLayout::filesOf(QAStProject* project)
{
    QList<QAStFile*> found;
    for (QAStProject* p : projectsOf(project))
        found.append(p->files());
    return found;
}

