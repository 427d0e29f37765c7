#pragma once

#include "QAStProject.h"

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QTreeWidget>

class QAStData;

// The project view: the project's items (nodes, sub-projects) under the
// project, and its file tree (folders, files, their tags) under a second
// top item, each with its icon and name; the second column tells how the
// last build or execution walk of a node went.
//
// The view follows the items: a child added, removed or moved, a rename or
// an icon change shows at once. Structure changes are applied on the next
// turn of the event loop, since an item announces a new child while the
// child is still being made (QAStData::childAdded).
//
// Drag and drop moves an item through QAStData::userMove, so a move is one
// undo entry; only a drop the target accepts (canHold) is made. Renaming
// in place goes through QAStData::setName for items that allow it.
class ProjectTree : public QTreeWidget {
    Q_OBJECT
public:
    enum Column { NameColumn = 0, StateColumn = 1 };

    explicit ProjectTree(QWidget* parent = nullptr);
    ~ProjectTree() override;

    // Shows project (not owned; null shows nothing).
    void setProject(QAStProject* project);
    QAStProject* project() const { return m_project; }

    // The item a row shows, and the row of an item; null when none.
    QAStData* dataOf(const QTreeWidgetItem* item) const;
    QTreeWidgetItem* itemOf(const QAStData* data) const;
    // The item of the current row; null when none.
    QAStData* currentData() const;
    void setCurrentData(QAStData* data);

    // Applies the pending structure changes now (they are otherwise applied
    // on the next turn of the event loop).
    void synchronize();

    // Whether item may be put below parent: what parent's acceptDrop
    // takes, or, for a node, a node of a class it holds
    // (QAStNode::allowedChildClasses). Never an item into itself or below.
    static bool canHold(const QAStData* parent, const QAStData* item);

    // The text of the state column for a node's walk.
    static QString runningText();
    static QString succeededText();
    static QString failedText();

signals:
    // The current item changed (null when none).
    void currentDataChanged(QAStData* data);
    // The tree of items changed (an item added, removed, moved or renamed).
    void treeChanged();

protected:
    void dropEvent(QDropEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;

private:
    QTreeWidgetItem* addRow(QTreeWidgetItem* parentRow, QAStData* data);
    void fillRow(QTreeWidgetItem* row, QAStData* data);
    void watch(QAStData* data);
    void watchNode(QAStNode* node);
    void scheduleSync(QAStData* parent);
    void syncChildren(QAStData* parent);
    void dropRows(QAStData* data);
    void forget(QObject* object);
    void renameFromRow(QTreeWidgetItem* row, int column);
    // Where a drop at the event's position puts the dragged item: the new
    // parent and the sibling it follows (null: first).
    bool dropPlace(QDropEvent* event, QAStData* item, QAStData** parent, QAStData** after) const;
    QIcon iconFor(const QAStData* data) const;

    QPointer<QAStProject> m_project;
    QHash<const QAStData*, QTreeWidgetItem*> m_rows;
    QList<QPointer<QAStData>> m_pending;
    bool m_syncScheduled = false;
    bool m_filling = false;
};
