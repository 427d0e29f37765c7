#include "QAFiltersMgrEditor.h"

#include "QAFilter.h"
#include "QAFilterEditor.h"
#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"
#include "QAFiltersMgr.h"
#include "QAHost.h"
#include "QALogging.h"
#include "StudioInterface.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

const char* const fileFilter = QT_TRANSLATE_NOOP("QAFiltersMgrEditor", "Filters (*.xfl);;All files (*)");
const char* const defaultFileName = "filters.xfl";

// The host's answer to a yes/no question; without a host, the default.
StudioInterface::StandardButton ask(QWidget* parent, const QString& caption, const QString& text,
                                    StudioInterface::StandardButton defaultButton)
{
    StudioInterface* host = QAHost::studioInterface();
    if (!host)
        return defaultButton;
    return host->question(parent, caption, text, StudioInterface::Yes | StudioInterface::No,
                          defaultButton);
}

void warn(QWidget* parent, const QString& caption, const QString& text)
{
    if (StudioInterface* host = QAHost::studioInterface())
        host->warning(parent, caption, text);
    else
        qCWarning(lcWidgets, "%s: %s", qPrintable(caption), qPrintable(text));
}

QString defaultFilePath()
{
    return QDir::current().filePath(QLatin1String(defaultFileName));
}

}

QAFiltersMgrEditor::QAFiltersMgrEditor(QAFiltersMgr* manager, QWidget* parent)
    : QDialog(parent)
    , m_manager(manager)
{
    setWindowTitle(tr("Filters"));

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("filterList"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    connect(m_list, &QListWidget::itemChanged, this, &QAFiltersMgrEditor::rowChanged);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &QAFiltersMgrEditor::updateButtons);
    connect(m_list, &QListWidget::currentRowChanged, this, &QAFiltersMgrEditor::updateButtons);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QAFiltersMgrEditor::editFilter);

    const auto button = [this](const QString& text, const char* name, void (QAFiltersMgrEditor::*slot)()) {
        auto* b = new QPushButton(text, this);
        b->setObjectName(QLatin1String(name));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    m_new = button(tr("New"), "newButton", &QAFiltersMgrEditor::newFilter);
    m_edit = button(tr("Edit"), "editButton", &QAFiltersMgrEditor::editFilter);
    m_remove = button(tr("Remove"), "removeButton", &QAFiltersMgrEditor::removeFilter);
    m_import = button(tr("Import"), "importButton", &QAFiltersMgrEditor::importFilters);
    m_export = button(tr("Export"), "exportButton", &QAFiltersMgrEditor::exportFilters);
    m_help = button(tr("Help"), "helpButton", &QAFiltersMgrEditor::help);

    auto* side = new QVBoxLayout;
    for (QPushButton* b : {m_new, m_edit, m_remove, m_import, m_export, m_help})
        side->addWidget(b);
    side->addStretch();

    auto* body = new QHBoxLayout;
    body->addWidget(m_list, 1);
    body->addLayout(side);

    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(close, &QDialogButtonBox::rejected, this, &QAFiltersMgrEditor::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body);
    layout->addWidget(close);

    refresh();
}

QAFiltersMgrEditor::~QAFiltersMgrEditor() = default;

QList<QAFilter*> QAFiltersMgrEditor::selectedFilters() const
{
    QList<QAFilter*> selected;
    for (QAFilter* filter : m_manager->filters()) {
        const QListWidgetItem* item = itemOf(filter);
        if (item && item->isSelected())
            selected.append(filter);
    }
    return selected;
}

void QAFiltersMgrEditor::filterAdded(QAFilter* filter)
{
    addRow(filter);
    updateButtons();
}

void QAFiltersMgrEditor::updateEnabled(QAFilter* filter)
{
    QListWidgetItem* item = itemOf(filter);
    if (!item)
        return;
    const QSignalBlocker blocker(m_list);
    item->setCheckState(filter->enabled() ? Qt::Checked : Qt::Unchecked);
}

void QAFiltersMgrEditor::refresh()
{
    {
        const QSignalBlocker blocker(m_list);
        m_list->clear();
        for (QAFilter* filter : m_manager->filters())
            addRow(filter);
    }
    updateButtons();
}

void QAFiltersMgrEditor::newFilter()
{
    QAFilter* filter = m_manager->createFilter();
    if (!filter)
        return;
    // Something to fill in: one group of one expression.
    if (filter->groups().isEmpty()) {
        if (QAFilterExprGroup* group = filter->createGroup()) {
            if (QAFilterExpr* expr = group->createExpr())
                group->addExpr(expr);
            filter->addGroup(group);
        }
    }
    if (!runFilterEditor(filter)) {
        delete filter;
        return;
    }
    m_manager->addFilter(filter);
    refresh();
    m_list->setCurrentRow(m_list->count() - 1);
    markModified();
}

void QAFiltersMgrEditor::editFilter()
{
    QListWidgetItem* item = m_list->currentItem();
    QAFilter* filter = item ? filterOf(item) : nullptr;
    if (!filter || !runFilterEditor(filter))
        return;
    {
        const QSignalBlocker blocker(m_list);
        item->setText(filter->filterName());
    }
    markModified();
}

void QAFiltersMgrEditor::removeFilter()
{
    const QList<QAFilter*> selected = selectedFilters();
    if (selected.isEmpty())
        return;
    for (QAFilter* filter : selected)
        m_manager->remove(int(m_manager->filters().indexOf(filter)));
    refresh();
    markModified();
}

void QAFiltersMgrEditor::importFilters()
{
    StudioInterface* host = QAHost::studioInterface();
    const QString path = host ? host->getOpenFileName(this, tr("Import Filter"), defaultFilePath(),
                                                      tr(fileFilter))
                              : QString();
    if (path.isEmpty())
        return;

    const QString caption = tr("Import Filters");
    const qsizetype before = m_manager->filters().size();
    QStringList faults;
    switch (m_manager->importFile(path, &faults)) {
    case QAFiltersMgr::ImportResult::CannotOpen:
        warn(this, caption, tr("Can't open file \"%1\".").arg(path));
        return;
    case QAFiltersMgr::ImportResult::NotWellFormed:
        warn(this, caption, tr("Can't get file contents (file:\"%1\").").arg(path));
        return;
    case QAFiltersMgr::ImportResult::BadRoot:
        warn(this, caption, tr("Error loading filters in file \"%1\").").arg(path));
        return;
    case QAFiltersMgr::ImportResult::Imported:
        break;
    }
    if (m_manager->filters().size() > before) {
        refresh();
        markModified();
    }
    // The entries left out, after the list shows what was read.
    if (!faults.isEmpty())
        warn(this, caption,
             tr("Error loading filters element in file \"%1\").").arg(path)
                 + QLatin1String("\n\n") + faults.join(QLatin1Char('\n')));
}

void QAFiltersMgrEditor::exportFilters()
{
    const QList<QAFilter*> selected = selectedFilters();
    if (selected.isEmpty())
        return;
    const QString caption = tr("Export Filter");
    if (ask(this, caption, tr("Export %1 selected filters?").arg(selected.size()),
            StudioInterface::Yes) != StudioInterface::Yes)
        return;
    StudioInterface* host = QAHost::studioInterface();
    const QString path = host ? host->getSaveFileName(this, caption, defaultFilePath(),
                                                      tr(fileFilter))
                              : QString();
    if (path.isEmpty())
        return;
    if (QFileInfo::exists(path)
        && ask(this, caption, tr("%1\nalready exists.\nReplace existing file?\n").arg(path),
               StudioInterface::No) != StudioInterface::Yes)
        return;
    QString reason;
    if (!m_manager->exportFile(path, selected, &reason)) {
        warn(this, tr("Export Filters"),
             tr("Cannot write file \"%1\".").arg(path) + QLatin1Char('\n') + reason);
        return;
    }
    if (host)
        host->statusMessage(tr("%1 filter(s) saved.").arg(selected.size()));
}

void QAFiltersMgrEditor::help()
{
    const QString text = tr(
        "Each row is a filter; a ticked filter is active, and an item passes when one "
        "active filter is true for it.\n"
        "A filter is true when one of its groups is true. A group with \"All\" is true when "
        "every expression holds, with \"Any\" when one does; \"Invert\" turns its result "
        "around.\n"
        "Expression texts are wildcards (* and ?) or regular expressions, as the filter "
        "says, and must match the whole text tested.\n"
        "Export writes the selected filters to a file; Import adds the filters of a file.");
    if (StudioInterface* host = QAHost::studioInterface())
        host->information(this, tr("Filters"), text);
}

bool QAFiltersMgrEditor::runFilterEditor(QAFilter* filter)
{
    QAFilterEditor editor(filter, this);
    return editor.exec() == QDialog::Accepted;
}

void QAFiltersMgrEditor::addRow(QAFilter* filter)
{
    const QSignalBlocker blocker(m_list);
    auto* item = new QListWidgetItem(filter->filterName(), m_list);
    item->setData(Qt::UserRole, QVariant::fromValue(static_cast<void*>(filter)));
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(filter->enabled() ? Qt::Checked : Qt::Unchecked);
}

QAFilter* QAFiltersMgrEditor::filterOf(const QListWidgetItem* item) const
{
    auto* filter = static_cast<QAFilter*>(item->data(Qt::UserRole).value<void*>());
    // A row may outlive its filter until the next refresh.
    return m_manager->filters().contains(filter) ? filter : nullptr;
}

QListWidgetItem* QAFiltersMgrEditor::itemOf(const QAFilter* filter) const
{
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        if (item->data(Qt::UserRole).value<void*>() == filter)
            return item;
    }
    return nullptr;
}

void QAFiltersMgrEditor::rowChanged(QListWidgetItem* item)
{
    QAFilter* filter = filterOf(item);
    if (!filter)
        return;
    const bool ticked = item->checkState() == Qt::Checked;
    if (filter->enabled() == ticked)
        return;
    filter->setEnabled(ticked);
    markModified();
}

void QAFiltersMgrEditor::markModified()
{
    m_modified = true;
    m_manager->setModified(true);
    emit filtersChanged();
}

void QAFiltersMgrEditor::updateButtons()
{
    const bool selection = !m_list->selectedItems().isEmpty();
    m_edit->setEnabled(m_list->currentRow() >= 0);
    m_remove->setEnabled(selection);
    m_export->setEnabled(selection);
}
