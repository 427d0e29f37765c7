#include "QAPropertyPathBox.h"

#include "QAPropertyEditorFactory.h"

QAPropertyPathBox::QAPropertyPathBox(const QString& name)
    : QAProperty(name)
{
}

QAPropertyPathBox::~QAPropertyPathBox() = default;

QString QAPropertyPathBox::displayValue() const
{
    return value().toStringList().join(QLatin1String(", "));
}

QMetaType::Type QAPropertyPathBox::type() const
{
    return QMetaType::QStringList;
}

QWidget* QAPropertyPathBox::createEditor(QWidget* parent)
{
    return QAPropertyEditorFactory::create(QStringLiteral("PathBox"), this, parent);
}

QString QAPropertyPathBox::filter() const
{
    return QAPropertyFileChooser::filterString(m_filters);
}

bool QAPropertyPathBox::buttonsFromString(const QString& text, Buttons* buttons)
{
    static const struct {
        const char* name;
        Buttons buttons;
    } names[] = {
        {"NoButton", NoButton},
        {"Single", Single},
        {"SingleWithoutMoves", SingleWithoutMoves},
        {"Multi", Multi},
        {"MultiWithMoves", MultiWithMoves},
    };
    for (const auto& entry : names) {
        if (text == QLatin1String(entry.name)) {
            if (buttons)
                *buttons = entry.buttons;
            return true;
        }
    }
    return false;
}

QAPropertyAttrPathBox::~QAPropertyAttrPathBox() = default;
QAPropertyMapPathBox::~QAPropertyMapPathBox() = default;
