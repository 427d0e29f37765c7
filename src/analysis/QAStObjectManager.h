#pragma once

#include "QATagFilterExpr.h"
#include "sdk110_export.h"

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QTreeWidget>

#include <functional>

class QAStATag;
class QAStFile;
class QAStProject;
class QATagFiltersMgr;

// The tag browser: every tag of a project and of its sub-projects, in one
// of three layouts (sortModified), rebuilt whenever the tagging of one of
// their files ends (QAStFile::taggingNotifier) and when the project is
// loaded.
//
//   0 by file       each file holding tags, in the order of the file
//                   trees, with its tags below it as they nest; a member
//                   standing apart from its class (a body in a source
//                   file) is named with its class, as far as the item it
//                   stands below does not say it ("Shape::move(...)"
//                   below "geo")
//   1 by type       "Test Items" holding "Classes" (class tags),
//                   "Functions" (function and method tags) and "Packages"
//                   (package tags), each a flat list by qualified name,
//                   in the order of the file trees
//   2 alphabetical  the by-file layout with the files, and the tags at
//                   every level, ordered by name (case ignored)
//
// An item filter, when set, keeps only the tags it accepts; the accepted
// tags below a refused one move up to the nearest item shown, and a file
// with no tag shown is left out.
//
// Tag filters (setTagFilters), the user's filters, restrict what is shown
// once at least one of them is enabled; with none enabled every tag shows.
// Each tag is tested through its QATagFilterSubject (filterSubject). A tag
// the enabled filters refuse is left out, unless a tag below it passes:
// then it stays as that tag's context (isContextItem, drawn in the
// disabled text colour). A file shows when one of its tags does; the
// headers of the by-type layout always show. A tag the item filter
// refuses is not tested. The browser builds its layout again when the
// filters change (QAFiltersMgr::filtersChanged): once, when control
// returns to the event loop, however many changes came before.
//
// A double click runs the tag's doubleClickAction; the context menu is
// the tag's popupMenu, whose "Test" action puts the test node in the
// project.
class SDK110_EXPORT QAStObjectManager : public QTreeWidget {
    Q_OBJECT
public:
    enum SortMode { SortByFile = 0, SortByType = 1, SortAlpha = 2 };
    using ItemFilter = std::function<bool(const QAStATag*)>;

    explicit QAStObjectManager(QAStProject* project = nullptr, QWidget* parent = nullptr);

    // Shows project (not owned; null shows nothing) in the layout it keeps
    // (QAStProject::sortMethod).
    void setProject(QAStProject* project);
    QAStProject* project() const { return m_project; }
    int sortMode() const { return m_mode; }

    void setItemFilter(const ItemFilter& filter);
    ItemFilter itemFilter() const { return m_filter; }

    // Follows the tag filters of filters (not owned; null follows none)
    // and builds the layout anew at once.
    void setTagFilters(QATagFiltersMgr* filters);
    QATagFiltersMgr* tagFilters() const;
    // What the tag filters test of tag: its name, its kind ("class",
    // "struct", "package", "method", "function"; "tag" for another tag),
    // the path of its file with "/" separators and its qualifier bits.
    static QATagFilterSubject filterSubject(const QAStATag* tag);
    // Whether item shows a tag the tag filters refuse, kept because a tag
    // below it passes.
    bool isContextItem(const QTreeWidgetItem* item) const;

    // The tag an item shows (a file item shows its file); null for a
    // header item or a tag deleted since the last rebuild.
    QAStATag* tagOf(const QTreeWidgetItem* item) const;
    // The item showing a tag; null when it is not shown.
    QTreeWidgetItem* itemOf(const QAStATag* tag) const;

    // The project and its loaded sub-projects, and the files of all of
    // them, in tree order.
    QList<QAStProject*> projects() const;
    QList<QAStFile*> files() const;

    // --- the layouts without a widget (a command-line host prints them)

    // One entry of a layout: its text, the tag it shows (a file entry its
    // file; null for a header), the pixmap name of a header with an icon
    // ("project_xpm" for "Test Items"), and the entries below it. A
    // context entry shows a tag the tag filters refuse, above one they
    // pass.
    struct LayoutEntry {
        QString text;
        QAStATag* tag = nullptr;
        QString icon;
        QList<LayoutEntry> children;
        bool context = false;
    };
    // The entries of a layout (SortMode; any other value lays out by file)
    // of files, taken in the order given, with the tags that filter accepts
    // (every tag when it is empty) and that tagFilters pass (every tag when
    // it is null or has no filter enabled). The widget shows exactly these.
    static QList<LayoutEntry> layout(const QList<QAStFile*>& files, int mode,
                                     const ItemFilter& filter = ItemFilter(),
                                     QATagFiltersMgr* tagFilters = nullptr);

public slots:
    // Picks a layout (0 by file, 1 by type, 2 alphabetical; others are
    // ignored), keeps it in the project and rebuilds.
    void sortModified(int mode);
    // Builds the current layout anew.
    void rebuild();
    void sortByFile();
    void sortByType();
    void sortAlpha();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private slots:
    void fileTaggingTerminated(QAStFile* file);
    void runDoubleClickAction(QTreeWidgetItem* item);
    // Asks for one rebuild when control returns to the event loop.
    void scheduleRebuild();
    void rebuildIfPending();

private:
    QTreeWidgetItem* newItem(QTreeWidgetItem* parent, const QString& text, QAStATag* tag);
    // The items of an entry and of the entries below it, under parent.
    void addEntry(QTreeWidgetItem* parent, const LayoutEntry& entry);
    bool accepts(const QAStATag* tag) const;
    void clearItems();

    QPointer<QAStProject> m_project;
    int m_mode = SortByFile;
    ItemFilter m_filter;
    QPointer<QATagFiltersMgr> m_tagFilters;
    QSet<const QTreeWidgetItem*> m_context;
    bool m_rebuildPending = false;
    QHash<const QTreeWidgetItem*, QPointer<QAStATag>> m_tags;
    QHash<const QAStATag*, QTreeWidgetItem*> m_items;
};
