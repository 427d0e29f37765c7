#include "QAPropertyComboStringWidget.h"

#include "QAPropertyComboString.h"

QAPropertyComboStringWidget::QAPropertyComboStringWidget(QAPropertyComboString* property,
                                                         QWidget* parent)
    : QAPropertyComboWidget(property, parent)
{
    const QStringList texts = property->itemTexts();
    const QStringList values = property->itemValues();
    for (int i = 0; i < texts.size() && i < values.size(); ++i)
        addEntry(texts.at(i), values.at(i));
    refresh();
}

QAPropertyComboStringWidget::~QAPropertyComboStringWidget() = default;
