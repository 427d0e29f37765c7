#include "QAPropertyComboInt.h"

#include "QAPropertyEditorFactory.h"

QAPropertyComboInt::QAPropertyComboInt(const QString& name)
    : QAProperty(name)
{
}

QAPropertyComboInt::~QAPropertyComboInt() = default;

QString QAPropertyComboInt::displayValue() const
{
    const QVariant v = value();
    if (!v.isValid())
        return QString();
    return m_items.labelOf(v.toInt(), QString::number(v.toInt()));
}

QMetaType::Type QAPropertyComboInt::type() const
{
    return QMetaType::Int;
}

QWidget* QAPropertyComboInt::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("ComboInt"), this, parent);
}

QStringList QAPropertyComboInt::itemTexts() const
{
    return m_items.texts();
}

QList<int> QAPropertyComboInt::itemValues() const
{
    return m_items.values();
}

void QAPropertyComboInt::insertItem(const QString& text, int value)
{
    m_items.insert(text, value);
}

QAPropertyAttrComboInt::~QAPropertyAttrComboInt() = default;
QAPropertyMapComboInt::~QAPropertyMapComboInt() = default;
