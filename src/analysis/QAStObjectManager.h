#pragma once

#include "sdk110_export.h"

#include <QHash>
#include <QPointer>
#include <QTreeWidget>

#include <functional>

class QAStATag;
class QAStFile;
class QAStProject;

// The tag browser: every tag of a project and of its sub-projects, in one
// of three layouts (sortModified), rebuilt whenever the tagging of one of
// their files ends (QAStFile::taggingNotifier) and when the project is
// loaded.
//
//   0 by file       each file holding tags, in the order of the file
//                   trees, with its tags below it as they nest
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

    // The tag an item shows (a file item shows its file); null for a
    // header item or a tag deleted since the last rebuild.
    QAStATag* tagOf(const QTreeWidgetItem* item) const;
    // The item showing a tag; null when it is not shown.
    QTreeWidgetItem* itemOf(const QAStATag* tag) const;

    // The project and its loaded sub-projects, and the files of all of
    // them, in tree order.
    QList<QAStProject*> projects() const;
    QList<QAStFile*> files() const;

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

private:
    QTreeWidgetItem* newItem(QTreeWidgetItem* parent, const QString& text, QAStATag* tag);
    QTreeWidgetItem* newFileItem(QAStFile* file);
    // The items of the tags below tag, under parent; the number added.
    int addTagTree(QTreeWidgetItem* parent, const QAStATag* tag, bool sorted);
    bool accepts(const QAStATag* tag) const;
    bool shows(const QAStFile* file) const;
    void clearItems();

    QPointer<QAStProject> m_project;
    int m_mode = SortByFile;
    ItemFilter m_filter;
    QHash<const QTreeWidgetItem*, QPointer<QAStATag>> m_tags;
    QHash<const QAStATag*, QTreeWidgetItem*> m_items;
};
