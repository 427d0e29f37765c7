#pragma once

#include "QAStProject.h"
#include "QAStTagLayout.h"
#include "QATagFilterExpr.h"
#include "sdk110widgets_export.h"

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
// of the three layouts of QAStTagLayout (sortModified), rebuilt whenever
// the tagging of one of their files ends (QAStFile::taggingNotifier) and
// when the project is loaded. It shows exactly the entries of
// QAStTagLayout::layout, a refused tag kept as context drawn in the
// disabled text colour (isContextItem).
//
// Tag filters (setTagFilters), the user's filters, restrict what is shown
// once at least one of them is enabled. The browser builds its layout
// again when the filters change (QAFiltersMgr::filtersChanged): once, when
// control returns to the event loop, however many changes came before.
//
// A double click runs the tag's doubleClickAction; the context menu is
// the tag's popupMenu, whose "Test" action puts the test node in the
// project.
class SDK110WIDGETS_EXPORT QAStObjectManager : public QTreeWidget {
    Q_OBJECT
public:
    enum SortMode { SortByFile = 0, SortByType = 1, SortAlpha = 2 };
    using ItemFilter = QAStTagLayout::ItemFilter;
    using LayoutEntry = QAStTagLayout::Entry;

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
    // What the tag filters test of tag (QAStTagLayout::filterSubject).
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

    // The entries of a layout (QAStTagLayout::layout).
    static QList<LayoutEntry> layout(const QList<QAStFile*>& files, int mode,
                                     const ItemFilter& filter = ItemFilter(),
                                     QATagFiltersMgr* tagFilters = nullptr)
    {
        return QAStTagLayout::layout(files, mode, filter, tagFilters);
    }

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
