#pragma once

#include "sdk110widgets_export.h"

#include <QList>
#include <QWidget>

class QAFilterExprGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLineEdit;
class QPushButton;
class QRadioButton;

// The page of one expression group in the filter editor: an "all"/"any"
// choice, "Enabled" and "Invert" boxes, and one row per expression (its
// type among the group's types, its text, its case sensitivity), with
// "More" and "Fewer" to add a row or drop the last one.
//
// The page shows the group when made and writes into it only on apply(),
// so that a canceled editor leaves the group as it was. The group is not
// owned and must outlive the page.
class SDK110WIDGETS_EXPORT QAFEExprGroupWidget : public QWidget {
    Q_OBJECT
public:
    explicit QAFEExprGroupWidget(QAFilterExprGroup* group, QWidget* parent = nullptr);
    ~QAFEExprGroupWidget() override;

    QAFilterExprGroup* group() const { return m_group; }

    int rowCount() const { return int(m_rows.size()); }
    QComboBox* typeBox(int row) const { return m_rows.at(row).type; }
    QLineEdit* textEdit(int row) const { return m_rows.at(row).text; }
    QCheckBox* caseBox(int row) const { return m_rows.at(row).caseSensitive; }
    QRadioButton* allButton() const { return m_all; }
    QRadioButton* anyButton() const { return m_any; }
    QCheckBox* enabledBox() const { return m_enabled; }
    QCheckBox* invertBox() const { return m_invert; }

public slots:
    // Adds an empty row of the first type, not case-sensitive.
    void more();
    // Drops the last row.
    void fewer();
    // Writes the choices and the rows into the group: its expressions are
    // replaced by new ones (QAFilterExprGroup::createExpr), one per row.
    void apply();

private:
    struct Row {
        QComboBox* type;
        QLineEdit* text;
        QCheckBox* caseSensitive;
    };

    void addRow(quint32 type, const QString& text, bool caseSensitive);
    void updateButtons();

    QAFilterExprGroup* m_group;
    QRadioButton* m_all;
    QRadioButton* m_any;
    QCheckBox* m_enabled;
    QCheckBox* m_invert;
    QGridLayout* m_rowLayout;
    QPushButton* m_more;
    QPushButton* m_fewer;
    QList<Row> m_rows;
};
