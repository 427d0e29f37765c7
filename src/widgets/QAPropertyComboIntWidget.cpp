#include "QAPropertyComboIntWidget.h"

#include "QAPropertyComboInt.h"

QAPropertyComboIntWidget::QAPropertyComboIntWidget(QAPropertyComboInt* property, QWidget* parent)
    : QAPropertyComboWidget(property, parent)
{
    const QStringList texts = property->itemTexts();
    const QList<int> values = property->itemValues();
    for (int i = 0; i < texts.size() && i < values.size(); ++i)
        addEntry(texts.at(i), values.at(i));
    refresh();
}

QAPropertyComboIntWidget::~QAPropertyComboIntWidget() = default;
