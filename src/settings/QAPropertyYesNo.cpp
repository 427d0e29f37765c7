#include "QAPropertyYesNo.h"

#include <QCoreApplication>

QAPropertyYesNo::QAPropertyYesNo(const QString& name)
    : QAPropertyBool(name)
{
}

QAPropertyYesNo::~QAPropertyYesNo() = default;

QString QAPropertyYesNo::text(bool b) const
{
    return b ? QCoreApplication::translate("Properties", "Yes")
             : QCoreApplication::translate("Properties", "No");
}

QAPropertyAttrYesNo::~QAPropertyAttrYesNo() = default;
QAPropertyMapYesNo::~QAPropertyMapYesNo() = default;
