#include "QATagFilter.h"

#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"

#include <QDomDocument>
#include <QDomElement>

#include <memory>
#include <vector>

namespace {

const QString exprTag = QStringLiteral("expr");

QString flagText(bool flag)
{
    return flag ? QStringLiteral("1") : QStringLiteral("0");
}

// Reads a "1"/"0" attribute into *flag, which keeps its value when the
// attribute is absent; false for any other value.
bool readFlag(const QDomElement& e, const QString& name, bool* flag)
{
    if (!e.hasAttribute(name))
        return true;
    const QString value = e.attribute(name);
    if (value != QLatin1String("1") && value != QLatin1String("0"))
        return false;
    *flag = value == QLatin1String("1");
    return true;
}

void saveGroup(QDomDocument& doc, QDomElement& parent, const QAFilterExprGroup& group)
{
    QDomElement g = doc.createElement(group.groupTag());
    g.setAttribute(QStringLiteral("all"), flagText(group.matchAll()));
    g.setAttribute(QStringLiteral("enabled"), flagText(group.enabled()));
    g.setAttribute(QStringLiteral("invert"), flagText(group.invertFilter()));
    for (const QAFilterExpr* expr : group.exprList()) {
        QDomElement x = doc.createElement(exprTag);
        x.setAttribute(QStringLiteral("type"), QATagFilterExpr::typeKey(expr->type()));
        x.setAttribute(QStringLiteral("case"), flagText(expr->caseSensitive()));
        x.setAttribute(QStringLiteral("text"), expr->text());
        g.appendChild(x);
    }
    parent.appendChild(g);
}

bool loadExpr(const QDomElement& x, QAFilterExpr* expr)
{
    if (x.tagName() != exprTag)
        return false;
    bool known = false;
    const quint32 type = QATagFilterExpr::typeFromKey(x.attribute(QStringLiteral("type")), &known);
    bool caseSensitive = false;
    if (!known || !readFlag(x, QStringLiteral("case"), &caseSensitive))
        return false;
    expr->setType(type);
    expr->setText(x.attribute(QStringLiteral("text")));
    expr->setCaseSensitive(caseSensitive);
    return true;
}

bool loadGroup(const QDomElement& g, QAFilterExprGroup* group)
{
    if (g.tagName() != group->groupTag())
        return false;
    bool matchAll = group->matchAll();
    bool enabled = group->enabled();
    bool invert = group->invertFilter();
    if (!readFlag(g, QStringLiteral("all"), &matchAll)
        || !readFlag(g, QStringLiteral("enabled"), &enabled)
        || !readFlag(g, QStringLiteral("invert"), &invert))
        return false;
    group->setMatchAll(matchAll);
    group->setEnabled(enabled);
    group->setInvertFilter(invert);
    for (QDomElement x = g.firstChildElement(); !x.isNull(); x = x.nextSiblingElement()) {
        std::unique_ptr<QAFilterExpr> expr(group->createExpr());
        if (!loadExpr(x, expr.get()))
            return false;
        group->addExpr(expr.release());
    }
    return true;
}

}

QATagFilter::QATagFilter() = default;

QATagFilter::~QATagFilter() = default;

bool QATagFilter::match(const QATagFilterSubject& tag)
{
    // The expressions only read the subject.
    return QAFilter::match(const_cast<QATagFilterSubject*>(&tag), nullptr);
}

QAFilterExprGroup* QATagFilter::createGroup()
{
    return new QATagFilterExprGroup;
}

QString QATagFilter::xmlTag() const
{
    return QStringLiteral("tag_filter");
}

void QATagFilter::xmlSave(QDomDocument& doc, QDomElement& e)
{
    e.setAttribute(QStringLiteral("name"), filterName());
    e.setAttribute(QStringLiteral("enabled"), flagText(enabled()));
    e.setAttribute(QStringLiteral("wildcard"), flagText(useWildcard()));
    for (const QAFilterExprGroup* group : groups())
        saveGroup(doc, e, *group);
}

bool QATagFilter::xmlLoad(QDomDocument&, QDomElement& e)
{
    if (e.tagName() != xmlTag())
        return false;
    bool isEnabled = false;
    bool wildcard = true;
    if (!readFlag(e, QStringLiteral("enabled"), &isEnabled)
        || !readFlag(e, QStringLiteral("wildcard"), &wildcard))
        return false;
    std::vector<std::unique_ptr<QAFilterExprGroup>> loaded;
    for (QDomElement g = e.firstChildElement(); !g.isNull(); g = g.nextSiblingElement()) {
        std::unique_ptr<QAFilterExprGroup> group(createGroup());
        if (!loadGroup(g, group.get()))
            return false;
        loaded.push_back(std::move(group));
    }
    setFilterName(e.attribute(QStringLiteral("name")));
    setEnabled(isEnabled);
    setUseWildcard(wildcard);
    clearGroups();
    for (std::unique_ptr<QAFilterExprGroup>& group : loaded)
        addGroup(group.release());
    return true;
}
