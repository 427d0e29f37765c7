#pragma once

#include "QAPropertyEditor.h"

class QLineEdit;
class QToolButton;

// A line edit with a "..." button beside it, shared by the text and path
// editors. A typed text is committed when editing finishes (return or
// leaving the field) and only if the user changed it, so merely visiting
// the field does not turn an inherited value into a local one.
class SDK110WIDGETS_EXPORT QAPropertyTextWidget : public QAPropertyEditor {
    Q_OBJECT
public:
    ~QAPropertyTextWidget() override;

    QLineEdit* lineEdit() const { return m_lineEdit; }
    // The "..." button; its object name is "button".
    QToolButton* button() const { return m_button; }

public slots:
    void refresh() override;

protected:
    QAPropertyTextWidget(QAProperty* property, QWidget* parent);
    // What the "..." button does.
    virtual void buttonClicked() = 0;

private:
    void commitTypedText();

    QLineEdit* m_lineEdit;
    QToolButton* m_button;
};
