#include "QAPropertyBool.h"

#include "QAPropertyEditorFactory.h"
#include "QATr.h"

#include <QCoreApplication>

QAPropertyBool::QAPropertyBool(const QString& name)
    : QAProperty(name)
{
}

QAPropertyBool::~QAPropertyBool() = default;

QString QAPropertyBool::displayValue() const
{
    return text(value().toBool());
}

QMetaType::Type QAPropertyBool::type() const
{
    return QMetaType::Bool;
}

QWidget* QAPropertyBool::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("Bool"), this, parent);
}

QString QAPropertyBool::text(bool b) const
{
    return b ? QATr::settings("True")
             : QATr::settings("False");
}

QAPropertyAttrBool::~QAPropertyAttrBool() = default;
QAPropertyMapBool::~QAPropertyMapBool() = default;
