#pragma once

#include "QAPropertyStringListWidget.h"

class QAPropertyListBox;
class QLineEdit;

// Editor of a list of texts: a field for a new entry with an "Add" button
// (return in the field adds too), the list, and "Remove", "Up", "Down".
class SDK110WIDGETS_EXPORT QAPropertyListBoxWidget : public QAPropertyStringListWidget {
    Q_OBJECT
public:
    QAPropertyListBoxWidget(QAPropertyListBox* property, QWidget* parent = nullptr);
    ~QAPropertyListBoxWidget() override;

    // The field holding the entry to add.
    QLineEdit* entryEdit() const { return m_entry; }

public slots:
    // Appends the field's text, if any, and empties the field.
    void addEntry();

private:
    QLineEdit* m_entry;
};
