#pragma once

#include "QAPropertyComboWidget.h"

class QAPropertyComboInt;

// Combo box of the labelled integers of a QAPropertyComboInt.
class SDK110WIDGETS_EXPORT QAPropertyComboIntWidget : public QAPropertyComboWidget {
    Q_OBJECT
public:
    QAPropertyComboIntWidget(QAPropertyComboInt* property, QWidget* parent = nullptr);
    ~QAPropertyComboIntWidget() override;
};
