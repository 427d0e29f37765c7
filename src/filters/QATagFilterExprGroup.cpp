#include "QATagFilterExprGroup.h"

#include "QATagFilterExpr.h"
#include "QATr.h"

#include <QCoreApplication>

namespace {

const char* const typeNames[QATagFilterExpr::typeCount] = {
    QT_TRANSLATE_NOOP(QATR_FILTERS, "Name"),
    QT_TRANSLATE_NOOP(QATR_FILTERS, "Kind"),
    QT_TRANSLATE_NOOP(QATR_FILTERS, "File"),
    QT_TRANSLATE_NOOP(QATR_FILTERS, "Qualifier"),
};

}

QATagFilterExprGroup::QATagFilterExprGroup() = default;

QATagFilterExprGroup::~QATagFilterExprGroup() = default;

QString QATagFilterExprGroup::groupTag() const
{
    return QStringLiteral("tag_group");
}

QString QATagFilterExprGroup::typeName(quint32 type) const
{
    if (type >= quint32(QATagFilterExpr::typeCount))
        return QAFilterExprGroup::typeName(type);
    return QATr::filters(typeNames[type]);
}

quint32 QATagFilterExprGroup::toType(const QString& name, bool* ok) const
{
    for (quint32 type = 0; type < quint32(QATagFilterExpr::typeCount); ++type) {
        if (typeName(type) == name) {
            if (ok)
                *ok = true;
            return type;
        }
    }
    return QAFilterExprGroup::toType(name, ok);
}

QAFilterExpr* QATagFilterExprGroup::createExpr()
{
    return new QATagFilterExpr;
}

int QATagFilterExprGroup::exprCount() const
{
    return QATagFilterExpr::typeCount;
}
