#include "QAPropertyListBox.h"

#include "QAPropertyEditorFactory.h"

QAPropertyListBox::QAPropertyListBox(const QString& name)
    : QAProperty(name)
{
}

QAPropertyListBox::~QAPropertyListBox() = default;

QString QAPropertyListBox::displayValue() const
{
    return value().toStringList().join(QLatin1String(", "));
}

QMetaType::Type QAPropertyListBox::type() const
{
    return QMetaType::QStringList;
}

QWidget* QAPropertyListBox::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("ListBox"), this, parent);
}

QAPropertyAttrListBox::~QAPropertyAttrListBox() = default;
QAPropertyMapListBox::~QAPropertyMapListBox() = default;
