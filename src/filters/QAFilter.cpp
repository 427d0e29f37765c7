#include "QAFilter.h"

#include "QAFilterExprGroup.h"

#include <QDomNode>

QAFilter::QAFilter() = default;

QAFilter::~QAFilter()
{
    clearGroups();
}

void QAFilter::addGroup(QAFilterExprGroup* group)
{
    m_groups.append(group);
}

bool QAFilter::removeGroup(int index)
{
    QAFilterExprGroup* group = takeGroup(index);
    delete group;
    return group != nullptr;
}

QAFilterExprGroup* QAFilter::takeGroup(int index)
{
    if (index < 0 || index >= m_groups.size())
        return nullptr;
    return m_groups.takeAt(index);
}

void QAFilter::clearGroups()
{
    qDeleteAll(m_groups);
    m_groups.clear();
}

QAFilterExprGroup* QAFilter::createGroup()
{
    return new QAFilterExprGroup;
}

bool QAFilter::match(void* item, void* context)
{
    for (QAFilterExprGroup* group : std::as_const(m_groups)) {
        if (group->match(item, context, m_useWildcard))
            return true;
    }
    return false;
}

QString QAFilter::xmlTag() const
{
    return QStringLiteral("filter");
}

void QAFilter::xmlSave(QDomDocument&, QDomElement&) {}

bool QAFilter::xmlLoad(QDomDocument&, QDomElement&)
{
    return false;
}

void QAFilter::addLoadFault(const QDomNode& node, const QString& text)
{
    m_loadFaults.append(tr("line %1: %2").arg(node.lineNumber()).arg(text));
}
