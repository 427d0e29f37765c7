#include "QAFilterExprGroup.h"

#include "QAFilterExpr.h"

QAFilterExprGroup::QAFilterExprGroup() = default;

QAFilterExprGroup::~QAFilterExprGroup()
{
    clearExprs();
}

void QAFilterExprGroup::addExpr(QAFilterExpr* expr)
{
    m_exprs.append(expr);
}

bool QAFilterExprGroup::removeExpr(int index)
{
    if (index < 0 || index >= m_exprs.size())
        return false;
    delete m_exprs.takeAt(index);
    return true;
}

void QAFilterExprGroup::clearExprs()
{
    qDeleteAll(m_exprs);
    m_exprs.clear();
}

QString QAFilterExprGroup::groupTag() const
{
    return QStringLiteral("group");
}

QString QAFilterExprGroup::typeName(quint32) const
{
    return QStringLiteral("<unknown>");
}

quint32 QAFilterExprGroup::toType(const QString&, bool* ok) const
{
    if (ok)
        *ok = false;
    return 0;
}

QAFilterExpr* QAFilterExprGroup::createExpr()
{
    return new QAFilterExpr;
}

bool QAFilterExprGroup::match(void* item, void* context, bool useWildcard)
{
    for (QAFilterExpr* expr : std::as_const(m_exprs)) {
        const bool matched = expr->match(item, context, useWildcard);
        if (matched && !m_matchAll)
            return !m_invertFilter;
        if (!matched && m_matchAll)
            return m_invertFilter;
    }
    return m_matchAll ? !m_invertFilter : m_invertFilter;
}

int QAFilterExprGroup::exprCount() const
{
    return 0;
}
