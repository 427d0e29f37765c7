#pragma once

#include "QAPropertyComboWidget.h"

class QAPropertyComboString;

// Combo box of the labelled texts of a QAPropertyComboString.
class SDK110WIDGETS_EXPORT QAPropertyComboStringWidget : public QAPropertyComboWidget {
    Q_OBJECT
public:
    QAPropertyComboStringWidget(QAPropertyComboString* property, QWidget* parent = nullptr);
    ~QAPropertyComboStringWidget() override;
};
