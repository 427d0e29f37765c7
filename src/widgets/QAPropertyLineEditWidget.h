#pragma once

#include "QAPropertyTextWidget.h"

class QAPropertyLineEdit;

// Editor of a text property: a line edit, and a "..." button opening a
// dialog for editing the text on several lines.
class SDK110WIDGETS_EXPORT QAPropertyLineEditWidget : public QAPropertyTextWidget {
    Q_OBJECT
public:
    QAPropertyLineEditWidget(QAPropertyLineEdit* property, QWidget* parent = nullptr);
    ~QAPropertyLineEditWidget() override;

protected:
    // Opens the multi-line edit dialog and commits its text when accepted.
    void buttonClicked() override;
};
