#include "QAStDataUndoActionManager.h"

#include "QAStData.h"
#include "QAStDataUndoAction.h"

#include <algorithm>

QAStDataUndoActionManager::QAStDataUndoActionManager() = default;

QAStDataUndoActionManager::~QAStDataUndoActionManager() = default;

void QAStDataUndoActionManager::add(QAStDataUndoAction* action)
{
    add(QList<QAStDataUndoAction*>{action});
}

void QAStDataUndoActionManager::add(const QList<QAStDataUndoAction*>& actions)
{
    Entry entry;
    for (QAStDataUndoAction* action : actions) {
        if (action)
            entry.emplace_back(action);
    }
    if (entry.empty())
        return;
    m_undo.push_front(std::move(entry));
    m_redo.clear();
}

void QAStDataUndoActionManager::undo()
{
    revertFirst(m_undo, m_redo);
}

void QAStDataUndoActionManager::redo()
{
    revertFirst(m_redo, m_undo);
}

bool QAStDataUndoActionManager::hasUndoAction() const
{
    return hasLive(m_undo);
}

bool QAStDataUndoActionManager::hasRedoAction() const
{
    return hasLive(m_redo);
}

void QAStDataUndoActionManager::clear()
{
    m_undo.clear();
    m_redo.clear();
}

bool QAStDataUndoActionManager::isLive(const Entry& entry)
{
    return std::any_of(entry.cbegin(), entry.cend(),
                       [](const auto& action) { return action->isApplicable(); });
}

bool QAStDataUndoActionManager::hasLive(const Stack& stack)
{
    return std::any_of(stack.cbegin(), stack.cend(), isLive);
}

void QAStDataUndoActionManager::revertFirst(Stack& from, Stack& to)
{
    while (!from.empty() && !isLive(from.front()))
        from.pop_front();
    if (from.empty())
        return;
    const Entry entry = std::move(from.front());
    from.pop_front();
    Entry reverted = revert(entry);
    if (!reverted.empty())
        to.push_front(std::move(reverted));
}

QAStDataUndoActionManager::Entry QAStDataUndoActionManager::revert(const Entry& entry)
{
    // Each added item's removal is recorded before anything moves.
    Entry inverses(entry.size());
    for (std::size_t i = 0; i < entry.size(); ++i) {
        if (entry[i]->action() != QAStDataUndoAction::Added)
            continue;
        if (QAStData* item = entry[i]->item())
            inverses[i] = std::make_unique<QAStDataUndoAction>(QAStDataUndoAction::Removed, item);
    }
    for (std::size_t i = 0; i < entry.size(); ++i) {
        if (entry[i]->action() == QAStDataUndoAction::Removed) {
            if (QAStData* rebuilt = entry[i]->rebuild())
                inverses[i] =
                    std::make_unique<QAStDataUndoAction>(QAStDataUndoAction::Added, rebuilt);
        } else if (inverses[i]) {
            removeAndDelete(inverses[i]);
        }
    }
    Entry reverted;
    for (auto& inverse : inverses) {
        if (inverse)
            reverted.push_back(std::move(inverse));
    }
    return reverted;
}

void QAStDataUndoActionManager::removeAndDelete(std::unique_ptr<QAStDataUndoAction>& removal)
{
    QAStData* item = removal->item();
    if (!item) {
        // Gone with an item removed before it in the same entry, whose
        // text brings it back.
        removal.reset();
        return;
    }
    item->remove();
    item->deleteLater();
}
