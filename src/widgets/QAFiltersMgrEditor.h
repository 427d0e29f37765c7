#pragma once

#include "QAFiltersMgrEditorView.h"
#include "sdk110widgets_export.h"

#include <QDialog>
#include <QList>

class QAFilter;
class QAFiltersMgr;
class QListWidget;
class QListWidgetItem;
class QPushButton;

// The dialog of a filter manager: one row per filter, named by its
// filterName and ticked when enabled, and the buttons "New", "Edit",
// "Remove", "Import", "Export" and "Help".
//
// Ticking a row enables its filter; "New" and "Edit" run a QAFilterEditor;
// "Remove" deletes the selected filters; "Export" writes the selected
// filters to a file and "Import" appends a file's filters, telling in one
// warning the entries it left out. Every box and file chooser is asked of
// the host (QAStData::studioIFace()). Each change marks both the dialog and
// the manager modified and emits filtersChanged.
//
// The manager makes the dialog once (QAFiltersMgr::edit) and keeps it; the
// manager must outlive the dialog.
class SDK110WIDGETS_EXPORT QAFiltersMgrEditor : public QDialog, public QAFiltersMgrEditorView {
    Q_OBJECT
public:
    explicit QAFiltersMgrEditor(QAFiltersMgr* manager, QWidget* parent = nullptr);
    ~QAFiltersMgrEditor() override;

    QAFiltersMgr* manager() const { return m_manager; }
    QObject* object() override { return this; }
    bool isModified() const override { return m_modified; }
    void setModified(bool modified) override { m_modified = modified; }
    int exec() override { return QDialog::exec(); }

    QListWidget* filterList() const { return m_list; }
    // The selected filters, in the manager's order.
    QList<QAFilter*> selectedFilters() const;

    // Called by the manager: a filter was appended; a filter's enabled flag
    // changed outside the dialog.
    void filterAdded(QAFilter* filter) override;
    void updateEnabled(QAFilter* filter) override;

public slots:
    // Shows every filter of the manager again.
    void refresh() override;
    void newFilter();
    // Edits the current filter.
    void editFilter();
    void removeFilter();
    void importFilters();
    void exportFilters();
    void help();

signals:
    // A filter was added, edited, removed, ticked or unticked, or filters
    // were imported.
    void filtersChanged();

protected:
    // Runs the dialog that edits filter; true when the user accepted it.
    // The base runs a modal QAFilterEditor.
    virtual bool runFilterEditor(QAFilter* filter);

private:
    void addRow(QAFilter* filter);
    // The filter a row shows, when the manager still holds it; the row of
    // a filter.
    QAFilter* filterOf(const QListWidgetItem* item) const;
    QListWidgetItem* itemOf(const QAFilter* filter) const;
    void rowChanged(QListWidgetItem* item);
    void markModified();
    void updateButtons();

    QAFiltersMgr* m_manager;
    bool m_modified = false;
    QListWidget* m_list;
    QPushButton* m_new;
    QPushButton* m_edit;
    QPushButton* m_remove;
    QPushButton* m_import;
    QPushButton* m_export;
    QPushButton* m_help;
};
