#pragma once

#include "QAPropertyEditor.h"

class QAPropertyBool;
class QCheckBox;
class QComboBox;

// Editor of a Boolean property: a combo box of the kind's two texts
// ("True"/"False", "Yes"/"No"), or a check box. The combo shows no entry
// while the property has no value at all.
class SDK110WIDGETS_EXPORT QAPropertyBoolWidget : public QAPropertyEditor {
    Q_OBJECT
public:
    enum Style { ComboBox, CheckBox };

    QAPropertyBoolWidget(QAPropertyBool* property, QWidget* parent = nullptr, Style style = ComboBox);
    ~QAPropertyBoolWidget() override;

    // The widget of the chosen style; the other is null.
    QComboBox* comboBox() const { return m_comboBox; }
    QCheckBox* checkBox() const { return m_checkBox; }

public slots:
    void refresh() override;

private:
    void createComboBox(const QAPropertyBool& property);
    void createCheckBox(const QAPropertyBool& property);

    QComboBox* m_comboBox = nullptr;
    QCheckBox* m_checkBox = nullptr;
};
