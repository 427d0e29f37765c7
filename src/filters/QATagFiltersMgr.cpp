#include "QATagFiltersMgr.h"

#include "QATagFilter.h"
#include "QATagFilterExpr.h"

QATagFiltersMgr::QATagFiltersMgr(QObject* parent)
    : QAFiltersMgr(parent)
{
}

QATagFiltersMgr::~QATagFiltersMgr() = default;

bool QATagFiltersMgr::match(const QATagFilterSubject& tag)
{
    // The expressions only read the subject.
    return QAFiltersMgr::match(const_cast<QATagFilterSubject*>(&tag), nullptr);
}

QAFilter* QATagFiltersMgr::createFilter()
{
    return new QATagFilter;
}

bool QATagFiltersMgr::xmlLoad(QDomDocument&, QDomElement&)
{
    return true;
}
