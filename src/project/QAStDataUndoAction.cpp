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

// The item standing for the file in which the children of parent are
// kept: the nearest project, parent included, else the top of its tree
// (a project's file tree).
QAStData* fileOf(QAStData* parent)
{
    if (!parent)
        return nullptr;
    QAStData* project = parent->projectItem();
    return project ? project : parent->root();
}

// Whether item is kept in the file of file: file itself, or below it with
// no other project file in between.
bool isKeptIn(const QAStData* item, const QAStData* file)
{
    for (const QAStData* p = item; p; p = p->parent()) {
        if (p == file)
            return true;
        if (p != item && p->asProject())
            return false;
    }
    return false;
}

// The item of that quid kept in the file of file. Quids are unique within
// one file only, so nested project files are not searched.
QAStData* findByQuid(QAStData* file, quint32 quid)
{
    if (file->quid() == quid)
        return file;
    for (QAStData* c = file->child(); c; c = c->next()) {
        if (c->quid() == quid)
            return c;
        if (!c->asProject()) {
            if (QAStData* found = findByQuid(c, quid))
                return found;
        }
    }
    return nullptr;
}

}

QAStDataUndoAction::QAStDataUndoAction(QAStDataUndoAction::Action action, QAStData* item)
    : m_action(action),
      m_file(fileOf(item ? item->parent() : nullptr)),
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
    if (!m_file)
        return nullptr;
    QAStData* item = pointer.data();
    if (item && isKeptIn(item, m_file))
        return item;
    // Quid 0 stands for "no item" (a removed item's missing predecessor).
    return quid != 0 ? findByQuid(m_file, quid) : nullptr;
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
