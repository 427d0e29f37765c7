#pragma once

#include "QATagFilter.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"

#include <QList>
#include <QString>

// Tag filters made in a line, for the tests of filters and of the views
// that follow them.
namespace TagFilters {

struct Expr {
    quint32 type;
    QString text;
    bool caseSensitive = false;
};

inline QATagFilterExprGroup* group(const QList<Expr>& exprs, bool matchAll = true, bool enabled = true,
                                   bool invert = false)
{
    auto* group = new QATagFilterExprGroup;
    group->setMatchAll(matchAll);
    group->setEnabled(enabled);
    group->setInvertFilter(invert);
    for (const Expr& e : exprs)
        group->addExpr(new QATagFilterExpr(e.type, e.text, e.caseSensitive));
    return group;
}

// A filter of those groups, which it owns.
inline QATagFilter* filter(const QString& name, bool enabled, const QList<QATagFilterExprGroup*>& groups,
                           bool wildcard = true)
{
    auto* filter = new QATagFilter;
    filter->setFilterName(name);
    filter->setEnabled(enabled);
    filter->setUseWildcard(wildcard);
    for (QATagFilterExprGroup* group : groups)
        filter->addGroup(group);
    return filter;
}

// A filter of one group of one expression.
inline QATagFilter* filter(const QString& name, quint32 type, const QString& text, bool enabled)
{
    return filter(name, enabled, {group({{type, text}})});
}

}
