#include "QAPropertyInt.h"

#include "QAPropertyEditorFactory.h"

QAPropertyInt::QAPropertyInt(const QString& name, int min, int max, int step)
    : QAProperty(name)
    , m_min(min)
    , m_max(max)
    , m_step(step)
{
}

QAPropertyInt::~QAPropertyInt() = default;

QString QAPropertyInt::displayValue() const
{
    const QVariant v = value();
    return v.isValid() ? QString::number(v.toInt()) + m_suffix : QString();
}

QMetaType::Type QAPropertyInt::type() const
{
    return QMetaType::Int;
}

QWidget* QAPropertyInt::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("Int"), this, parent);
}

QAPropertyAttrInt::~QAPropertyAttrInt() = default;
QAPropertyMapInt::~QAPropertyMapInt() = default;
