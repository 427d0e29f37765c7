#include "QAStDataUndoAction.h"

#include "QAStData.h"
#include "QAStDataFactory.h"

#include <QDomDocument>
#include <QDomElement>

namespace {

quint32 quidOf(const QAStData* item)
{
    return item ? item->quid() : 0;
}

QAStData* findByQuid(QAStData* top, quint32 quid)
{
    if (top->quid() == quid)
        return top;
    for (QAStData* c = top->child(); c; c = c->next()) {
        if (QAStData* found = findByQuid(c, quid))
            return found;
    }
    return nullptr;
}

}

QAStDataUndoAction::QAStDataUndoAction(QAStDataUndoAction::Action action, QAStData* item)
    : m_action(action),
      m_root(item ? item->root() : nullptr),
      m_item(item),
      m_parent(item ? item->parent() : nullptr),
      m_preceding(item ? item->previous() : nullptr),
      m_itemQuid(quidOf(item)),
      m_parentQuid(quidOf(m_parent)),
      m_precedingQuid(quidOf(m_preceding)),
      m_text(item ? item->toString() : QString())
{
}

QAStData* QAStDataUndoAction::find(const QPointer<QAStData>& pointer, quint32 quid) const
{
    if (!m_root)
        return nullptr;
    QAStData* item = pointer.data();
    if (item && (item == m_root || m_root->isAncestorOf(item)))
        return item;
    // Quid 0 stands for "no item" (a removed item's missing predecessor).
    return quid != 0 ? findByQuid(m_root, quid) : nullptr;
}

QAStData* QAStDataUndoAction::item() const
{
    return find(m_item, m_itemQuid);
}

QAStData* QAStDataUndoAction::parent() const
{
    return find(m_parent, m_parentQuid);
}

QAStData* QAStDataUndoAction::preceding() const
{
    QAStData* found = find(m_preceding, m_precedingQuid);
    return found && found->parent() == parent() ? found : nullptr;
}

bool QAStDataUndoAction::isApplicable() const
{
    return m_action == Added ? item() != nullptr : parent() != nullptr;
}

QAStData* QAStDataUndoAction::rebuild() const
{
    QAStData* into = parent();
    if (!into)
        return nullptr;
    QDomDocument document(QStringLiteral("Clipboard"));
    if (!document.setContent(m_text))
        return nullptr;
    return QAStDataFactory::create(document.documentElement(), 1, into, preceding());
}
