#include "QAPropertyYesNo.h"

#include "QATr.h"

#include <QCoreApplication>

QAPropertyYesNo::QAPropertyYesNo(const QString& name)
    : QAPropertyBool(name)
{
}

QAPropertyYesNo::~QAPropertyYesNo() = default;

QString QAPropertyYesNo::text(bool b) const
{
    return b ? QATr::settings("Yes")
             : QATr::settings("No");
}

QAPropertyAttrYesNo::~QAPropertyAttrYesNo() = default;
QAPropertyMapYesNo::~QAPropertyMapYesNo() = default;
