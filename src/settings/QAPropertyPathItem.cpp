#include "QAPropertyPathItem.h"

#include "QAPropertyEditorFactory.h"

QAPropertyPathItem::QAPropertyPathItem(const QString& name)
    : QAProperty(name)
{
}

QAPropertyPathItem::~QAPropertyPathItem() = default;

QString QAPropertyPathItem::displayValue() const
{
    return value().toString();
}

QMetaType::Type QAPropertyPathItem::type() const
{
    return QMetaType::QString;
}

QWidget* QAPropertyPathItem::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("PathItem"), this, parent);
}

QString QAPropertyPathItem::filter() const
{
    return QAPropertyFileChooser::filterString(m_filters);
}

QAPropertyAttrPathItem::~QAPropertyAttrPathItem() = default;
QAPropertyMapPathItem::~QAPropertyMapPathItem() = default;
