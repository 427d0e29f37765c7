#pragma once

#include "sdk110widgets_export.h"

#include <QDialog>
#include <QList>

class QAFEExprGroupWidget;
class QAFilter;
class QAFilterExprGroup;
class QDialogButtonBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

// The dialog that edits one filter: its name, the choice between wildcard
// and regular-expression text, and a tab per group (QAFEExprGroupWidget),
// with "Add group" and "Remove group".
//
// Nothing is written into the filter before apply(), which OK calls: a
// canceled dialog leaves the filter as it was. apply() marks the filter
// modified. OK is refused while the name is blank. The filter is not owned
// and must outlive the dialog; groups added here belong to the dialog until
// apply() hands them to the filter.
class SDK110WIDGETS_EXPORT QAFilterEditor : public QDialog {
    Q_OBJECT
public:
    explicit QAFilterEditor(QAFilter* filter, QWidget* parent = nullptr);
    ~QAFilterEditor() override;

    QAFilter* filter() const { return m_filter; }
    int groupCount() const;
    QAFEExprGroupWidget* groupWidget(int index) const;
    QLineEdit* nameEdit() const { return m_name; }
    QRadioButton* wildcardButton() const { return m_wildcard; }
    QRadioButton* regExpButton() const { return m_regExp; }

public slots:
    // Adds a page for a new group of the filter's family, with one row.
    void addGroup();
    // Drops the current page.
    void removeGroup();
    // Writes name, text choice and pages into the filter.
    void apply();
    void accept() override;

private:
    void addPage(QAFilterExprGroup* group);
    void updateTitles();
    void updateButtons();

    QAFilter* m_filter;
    QList<QAFilterExprGroup*> m_newGroups;  // owned until apply()
    QLineEdit* m_name;
    QRadioButton* m_wildcard;
    QRadioButton* m_regExp;
    QTabWidget* m_tabs;
    QPushButton* m_addGroup;
    QPushButton* m_removeGroup;
    QDialogButtonBox* m_buttons;
};
