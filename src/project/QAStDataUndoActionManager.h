#pragma once

#include "sdk110_export.h"

#include <QList>

#include <deque>
#include <memory>
#include <vector>

class QAStDataUndoAction;

// The studio-wide undo and redo stacks of project edits
// (QAStData::undoManager()). An entry of a stack is the list of actions of
// one user edit, undone together; the newest entry is at the front.
//
// Undo takes the first entry that can still do anything (entries whose
// items are all gone are dropped on the way) and reverts its actions in
// order: a removed item is rebuilt from its text, an added item is removed
// and deleted (later, as QAStData::del does). The actions that revert
// those changes become one entry at the front of the redo stack. Redo is
// the same with the stacks exchanged. The place of each added item is
// taken before any action of the entry changes the tree, so that adjacent
// items come back in their order.
//
// Ownership: the manager owns every action handed to it.
class SDK110_EXPORT QAStDataUndoActionManager {
public:
    QAStDataUndoActionManager();
    ~QAStDataUndoActionManager();
    QAStDataUndoActionManager(const QAStDataUndoActionManager&) = delete;
    QAStDataUndoActionManager& operator=(const QAStDataUndoActionManager&) = delete;

    // Puts one entry at the front of the undo stack and clears the redo
    // stack. Null actions are left out; an empty edit changes nothing.
    void add(QAStDataUndoAction* action);
    void add(const QList<QAStDataUndoAction*>& actions);

    void undo();
    void redo();
    // Whether undo (redo) would change anything.
    bool hasUndoAction() const;
    bool hasRedoAction() const;
    // Forgets both stacks.
    void clear();

private:
    using Entry = std::vector<std::unique_ptr<QAStDataUndoAction>>;
    using Stack = std::deque<Entry>;

    // Reverts the first live entry of from and puts what reverts it back
    // at the front of to.
    static void revertFirst(Stack& from, Stack& to);
    static Entry revert(const Entry& entry);
    // Removes and deletes the item of a removal recorded for it; drops the
    // removal when the item has already left the tree.
    static void removeAndDelete(std::unique_ptr<QAStDataUndoAction>& removal);
    static bool isLive(const Entry& entry);
    static bool hasLive(const Stack& stack);

    Stack m_undo;
    Stack m_redo;
};
