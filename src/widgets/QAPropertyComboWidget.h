#pragma once

#include "QAPropertyEditor.h"

class QComboBox;

// Combo box editor of the labelled-value kinds: each entry carries the
// value it stands for, and picking an entry commits that value. A value
// that no entry holds shows no entry selected.
class SDK110WIDGETS_EXPORT QAPropertyComboWidget : public QAPropertyEditor {
    Q_OBJECT
public:
    ~QAPropertyComboWidget() override;

    QComboBox* comboBox() const { return m_comboBox; }

public slots:
    void refresh() override;

protected:
    // Subclasses add their entries, then call refresh().
    QAPropertyComboWidget(QAProperty* property, QWidget* parent);
    void addEntry(const QString& text, const QVariant& value);

private:
    QComboBox* m_comboBox;
};
