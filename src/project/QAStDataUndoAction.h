#pragma once

#include "sdk110_export.h"

#include <QPointer>
#include <QString>

class QAStData;

// One edit of the project tree that can be undone: an item that was added
// (Added, 0) or removed (Removed, 1), with its parent, the item before it
// in the parent, and its XML text (QAStData::toString()), all taken when
// the action is made: after the addition, before the removal.
//
// Items can go behind the action's back (a parent deleted, an item rebuilt
// by an earlier undo, the project closed). The action holds guarded
// pointers and the quids of the items, and finds each item again in the
// same project file as when the action was made (the parent's nearest
// project, not the sub-projects inside it; for the file tree, its root
// folder): by pointer while it is still kept there, else by quid (a
// rebuilt item keeps its quid). Quids are unique only within one file, so
// an item is never looked for in another. An action whose items cannot be
// found is not applicable and does nothing.
class SDK110_EXPORT QAStDataUndoAction {
public:
    enum Action { Added = 0, Removed = 1 };

    QAStDataUndoAction(QAStDataUndoAction::Action action, QAStData* item);

    Action action() const { return m_action; }
    // The item, its parent and the item before it, as found now; null when
    // gone.
    QAStData* item() const;
    QAStData* parent() const;
    QAStData* preceding() const;
    QString text() const { return m_text; }

    // Whether undoing the action can do anything: an added item can still
    // be found, or a removed item's parent can.
    bool isApplicable() const;

    // Undoes a removal: rebuilds the item from its text with the factory,
    // inside its parent behind its preceding item (at the front when that
    // is gone), keeping its quids. The new item, or null.
    QAStData* rebuild() const;

private:
    // An item found again: the guarded pointer while it is still kept in
    // the file, else the item with that quid kept in the file.
    QAStData* find(const QPointer<QAStData>& pointer, quint32 quid) const;

    Action m_action;
    // The item standing for the file the edit was made in.
    QPointer<QAStData> m_file;
    QPointer<QAStData> m_item;
    QPointer<QAStData> m_parent;
    QPointer<QAStData> m_preceding;
    quint32 m_itemQuid = 0;
    quint32 m_parentQuid = 0;
    quint32 m_precedingQuid = 0;
    QString m_text;
};
