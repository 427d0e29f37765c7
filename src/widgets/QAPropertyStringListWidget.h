#pragma once

#include "QAPropertyEditor.h"

#include <QStringList>

class QBoxLayout;
class QListWidget;
class QPushButton;

// A list of texts with a column of buttons, shared by the list and path-list
// editors. Items are editable in place; every change (an edited item, an
// added, removed or moved one) commits the whole list. An in-place edit is
// committed once the item view has finished with the edited item, since
// showing the stored list may rebuild the items.
class SDK110WIDGETS_EXPORT QAPropertyStringListWidget : public QAPropertyEditor {
    Q_OBJECT
public:
    ~QAPropertyStringListWidget() override;

    QListWidget* listWidget() const { return m_list; }
    // The texts the list shows.
    QStringList items() const;

public slots:
    void refresh() override;
    // Appends the texts and commits.
    void appendItems(const QStringList& texts);
    // Removes the selected item and commits.
    void removeSelected();
    void moveSelectedUp();
    void moveSelectedDown();

protected:
    QAPropertyStringListWidget(QAProperty* property, QWidget* parent);
    // Layout above the list, for a subclass's own fields.
    QBoxLayout* headerLayout() const { return m_header; }
    // Adds a button to the column beside the list.
    QPushButton* addButton(const QString& objectName, const QString& text);
    // Adds the "Remove" button.
    void addRemoveButton();
    // Adds the "Up" and "Down" buttons.
    void addMoveButtons();

private:
    void moveSelected(int offset);
    // Commits the texts and selects the row when it exists.
    void commitItems(const QStringList& texts, int currentRow);

    QBoxLayout* m_header;
    QListWidget* m_list;
    QBoxLayout* m_buttons;
};
