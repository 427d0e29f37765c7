#include "QATagFilter.h"

#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"

#include <QDomDocument>
#include <QDomElement>

#include <functional>
#include <memory>
#include <vector>

namespace {

const QString exprTag = QStringLiteral("expr");

QString flagText(bool flag)
{
    return flag ? QStringLiteral("1") : QStringLiteral("0");
}

// Reads a "1"/"0" attribute into *flag, which keeps its value when the
// attribute is absent; false, with the reason, for any other value.
bool readFlag(const QDomElement& e, const QString& name, bool* flag, QString* reason)
{
    if (!e.hasAttribute(name))
        return true;
    const QString value = e.attribute(name);
    if (value != QLatin1String("1") && value != QLatin1String("0")) {
        *reason = QATagFilter::tr("%1=\"%2\" is neither 0 nor 1").arg(name, value);
        return false;
    }
    *flag = value == QLatin1String("1");
    return true;
}

QString unexpectedElement(const QDomElement& e, const QString& expected)
{
    return QATagFilter::tr("element \"%1\" where \"%2\" is expected").arg(e.tagName(), expected);
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

// Reads x into expr; false, with the reason, when x is no expression.
bool loadExpr(const QDomElement& x, QAFilterExpr* expr, QString* reason)
{
    if (x.tagName() != exprTag) {
        *reason = unexpectedElement(x, exprTag);
        return false;
    }
    bool known = false;
    const QString key = x.attribute(QStringLiteral("type"));
    const quint32 type = QATagFilterExpr::typeFromKey(key, &known);
    if (!known) {
        *reason = QATagFilter::tr("unknown type \"%1\"").arg(key);
        return false;
    }
    bool caseSensitive = false;
    if (!readFlag(x, QStringLiteral("case"), &caseSensitive, reason))
        return false;
    expr->setType(type);
    expr->setText(x.attribute(QStringLiteral("text")));
    expr->setCaseSensitive(caseSensitive);
    return true;
}

// Reads g into group; false, with the reason, when g is no group. A bad
// expression is left out of the group and told to leaveOut.
bool loadGroup(const QDomElement& g, QAFilterExprGroup* group, QString* reason,
               const std::function<void(const QDomElement&, const QString&)>& leaveOut)
{
    if (g.tagName() != group->groupTag()) {
        *reason = unexpectedElement(g, group->groupTag());
        return false;
    }
    bool matchAll = group->matchAll();
    bool enabled = group->enabled();
    bool invert = group->invertFilter();
    if (!readFlag(g, QStringLiteral("all"), &matchAll, reason)
        || !readFlag(g, QStringLiteral("enabled"), &enabled, reason)
        || !readFlag(g, QStringLiteral("invert"), &invert, reason))
        return false;
    group->setMatchAll(matchAll);
    group->setEnabled(enabled);
    group->setInvertFilter(invert);
    for (QDomElement x = g.firstChildElement(); !x.isNull(); x = x.nextSiblingElement()) {
        std::unique_ptr<QAFilterExpr> expr(group->createExpr());
        QString why;
        if (loadExpr(x, expr.get(), &why))
            group->addExpr(expr.release());
        else
            leaveOut(x, why);
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
    clearLoadFaults();
    if (e.tagName() != xmlTag()) {
        addLoadFault(e, tr("element \"%1\" left out: \"%2\" is expected").arg(e.tagName(), xmlTag()));
        return false;
    }
    const QString name = e.attribute(QStringLiteral("name"));
    bool isEnabled = false;
    bool wildcard = true;
    QString reason;
    if (!readFlag(e, QStringLiteral("enabled"), &isEnabled, &reason)
        || !readFlag(e, QStringLiteral("wildcard"), &wildcard, &reason)) {
        addLoadFault(e, tr("filter \"%1\" left out: %2").arg(name, reason));
        return false;
    }
    const auto leaveOutExpr = [this, &name](const QDomElement& x, const QString& why) {
        addLoadFault(x, tr("an expression of filter \"%1\" left out: %2").arg(name, why));
    };
    std::vector<std::unique_ptr<QAFilterExprGroup>> loaded;
    for (QDomElement g = e.firstChildElement(); !g.isNull(); g = g.nextSiblingElement()) {
        std::unique_ptr<QAFilterExprGroup> group(createGroup());
        if (loadGroup(g, group.get(), &reason, leaveOutExpr))
            loaded.push_back(std::move(group));
        else
            addLoadFault(g, tr("a group of filter \"%1\" left out: %2").arg(name, reason));
    }
    setFilterName(name);
    setEnabled(isEnabled);
    setUseWildcard(wildcard);
    clearGroups();
    for (std::unique_ptr<QAFilterExprGroup>& group : loaded)
        addGroup(group.release());
    return true;
}
