#include "QAPropertyLineEdit.h"

#include "QAPropertyEditorFactory.h"

QAPropertyLineEdit::QAPropertyLineEdit(const QString& name)
    : QAProperty(name)
{
}

QAPropertyLineEdit::~QAPropertyLineEdit() = default;

QString QAPropertyLineEdit::displayValue() const
{
    return value().toString();
}

QMetaType::Type QAPropertyLineEdit::type() const
{
    return QMetaType::QString;
}

QWidget* QAPropertyLineEdit::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("LineEdit"), this, parent);
}

QVariant QAPropertyLineEdit::convertedValue(QMetaType::Type, const QVariant& v)
{
    QString text = v.toString();
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text.simplified();
}

QAPropertyAttrLineEdit::~QAPropertyAttrLineEdit() = default;
QAPropertyMapLineEdit::~QAPropertyMapLineEdit() = default;
