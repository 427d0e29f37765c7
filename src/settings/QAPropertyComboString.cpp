#include "QAPropertyComboString.h"

#include "QAPropertyEditorFactory.h"

QAPropertyComboString::QAPropertyComboString(const QString& name)
    : QAProperty(name)
{
}

QAPropertyComboString::~QAPropertyComboString() = default;

QString QAPropertyComboString::displayValue() const
{
    const QString current = value().toString();
    return m_items.labelOf(current, current);
}

QMetaType::Type QAPropertyComboString::type() const
{
    return QMetaType::QString;
}

QWidget* QAPropertyComboString::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("ComboString"), this, parent);
}

void QAPropertyComboString::insertItem(const QString& text, const QString& value)
{
    m_items.insert(text, value);
}

QStringList QAPropertyComboString::itemTexts() const
{
    return m_items.texts();
}

QStringList QAPropertyComboString::itemValues() const
{
    return m_items.values();
}

QAPropertyAttrComboString::~QAPropertyAttrComboString() = default;
QAPropertyMapComboString::~QAPropertyMapComboString() = default;
