#pragma once

#include "QAPropertyEditor.h"

class QAPropertyInt;
class QSpinBox;

// Spin box editor of an integer property, with its limits, step and suffix.
// A value is committed when the user finishes changing it.
class SDK110WIDGETS_EXPORT QAPropertyIntWidget : public QAPropertyEditor {
    Q_OBJECT
public:
    QAPropertyIntWidget(QAPropertyInt* property, QWidget* parent = nullptr);
    ~QAPropertyIntWidget() override;

    QSpinBox* spinBox() const { return m_spinBox; }

public slots:
    void refresh() override;

private:
    QSpinBox* m_spinBox;
};
