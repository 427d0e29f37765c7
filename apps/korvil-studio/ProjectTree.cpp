#include "ProjectTree.h"

#include "QAStNode.h"
#include "QAStProject.h"

#include "QAStATag.h"
#include "QAStData.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNode.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"

#include <QApplication>
#include <QDropEvent>
#include <QHeaderView>
#include <QStyle>
#include <QTimer>

namespace {
const char* context = "ProjectTree";
}

ProjectTree::ProjectTree(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("projectTree"));
    setColumnCount(2);
    setHeaderLabels({QCoreApplication::translate(context, "Project"),
                     QCoreApplication::translate(context, "State")});
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    header()->setSectionResizeMode(StateColumn, QHeaderView::ResizeToContents);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* current) { emit currentDataChanged(dataOf(current)); });
    connect(this, &QTreeWidget::itemChanged, this, &ProjectTree::renameFromRow);
    connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* row) {
        if (QAStData* data = dataOf(row))
            data->setExtended(true);
    });
    connect(this, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* row) {
        if (QAStData* data = dataOf(row))
            data->setExtended(false);
    });
}

ProjectTree::~ProjectTree()
{
    setProject(nullptr);
}

QString ProjectTree::runningText() { return QCoreApplication::translate(context, "running"); }
QString ProjectTree::succeededText() { return QCoreApplication::translate(context, "succeeded"); }
QString ProjectTree::failedText() { return QCoreApplication::translate(context, "failed"); }

void ProjectTree::setProject(QAStProject* project)
{
    for (auto it = m_rows.cbegin(); it != m_rows.cend(); ++it)
        disconnect(it.key(), nullptr, this, nullptr);
    m_rows.clear();
    m_pending.clear();
    clear();
    m_project = project;
    if (!project)
        return;
    QTreeWidgetItem* projectRow = addRow(nullptr, project);
    QTreeWidgetItem* filesRow = addRow(nullptr, project->rootFolder());
    projectRow->setExpanded(true);
    filesRow->setExpanded(true);
    setCurrentItem(projectRow);
}

QAStData* ProjectTree::dataOf(const QTreeWidgetItem* item) const
{
    if (!item)
        return nullptr;
    auto* data = reinterpret_cast<QAStData*>(item->data(NameColumn, Qt::UserRole).value<quintptr>());
    // Rows of items gone are forgotten at once; a stale row names nothing.
    return m_rows.value(data) == item ? data : nullptr;
}

QTreeWidgetItem* ProjectTree::itemOf(const QAStData* data) const
{
    return m_rows.value(data);
}

QAStData* ProjectTree::currentData() const
{
    return dataOf(currentItem());
}

void ProjectTree::setCurrentData(QAStData* data)
{
    if (QTreeWidgetItem* row = itemOf(data))
        setCurrentItem(row);
}

QIcon ProjectTree::iconFor(const QAStData* data) const
{
    const QPixmap own = data->icon();
    if (!own.isNull())
        return own;
    if (data->inherits("QAStProject"))
        return style()->standardIcon(QStyle::SP_DirHomeIcon);
    if (data->inherits("QAStFolder"))
        return style()->standardIcon(QStyle::SP_DirIcon);
    if (data->inherits("QAStFile"))
        return style()->standardIcon(QStyle::SP_FileIcon);
    if (data->inherits("QAStNodeContainer"))
        return style()->standardIcon(QStyle::SP_DirClosedIcon);
    if (data->inherits("QAStNode"))
        return style()->standardIcon(QStyle::SP_ComputerIcon);
    return style()->standardIcon(QStyle::SP_FileDialogDetailedView);
}

void ProjectTree::fillRow(QTreeWidgetItem* row, QAStData* data)
{
    m_filling = true;
    // The file tree's top folder carries the project's name too.
    const bool fileTree = m_project && data == m_project->rootFolder();
    row->setText(NameColumn, fileTree ? QCoreApplication::translate(context, "Files") : data->displayName());
    row->setIcon(NameColumn, iconFor(data));
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
    if (data->isRenameable() && !fileTree)
        flags |= Qt::ItemIsEditable;
    if (data->parent() && data->isDeletable())
        flags |= Qt::ItemIsDragEnabled;
    row->setFlags(flags);
    m_filling = false;
}

QTreeWidgetItem* ProjectTree::addRow(QTreeWidgetItem* parentRow, QAStData* data)
{
    auto* row = parentRow ? new QTreeWidgetItem(parentRow) : new QTreeWidgetItem(this);
    row->setData(NameColumn, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(data)));
    m_rows.insert(data, row);
    fillRow(row, data);
    watch(data);
    for (QAStData* child = data->child(); child; child = child->next())
        addRow(row, child);
    row->setExpanded(data->isExtended());
    return row;
}

void ProjectTree::watch(QAStData* data)
{
    connect(data, &QObject::destroyed, this, &ProjectTree::forget);
    connect(data, &QAStData::childAdded, this, [this, data] { scheduleSync(data); });
    connect(data, &QAStData::childRemoved, this, [this, data] { scheduleSync(data); });
    auto refill = [this, data] {
        if (QTreeWidgetItem* row = itemOf(data))
            fillRow(row, data);
        emit treeChanged();
    };
    connect(data, &QAStData::renamed, this, refill);
    connect(data, &QAStData::iconChanged, this, refill);
    connect(data, &QAStData::attributeChanged, this, [refill](const QString& attribute) {
        if (attribute == QLatin1String("renameable") || attribute == QLatin1String("deletable"))
            refill();
    });
    if (auto* node = qobject_cast<QAStNode*>(data))
        watchNode(node);
}

void ProjectTree::watchNode(QAStNode* node)
{
    auto show = [this, node](const QString& text, const QColor& colour) {
        if (QTreeWidgetItem* row = itemOf(node)) {
            row->setText(StateColumn, text);
            row->setForeground(StateColumn, colour);
        }
    };
    connect(node, &QAStNode::buildExecuteInvoked, this,
            [show] { show(runningText(), QColor(0x1f, 0x5f, 0xbf)); });
    connect(node, &QAStNode::buildExecuteFinished, this, [show, node] {
        if (node->walkSucceeded())
            show(succeededText(), QColor(0x1a, 0x7f, 0x2a));
        else
            show(failedText(), QColor(0xc0, 0x1c, 0x1c));
    });
}

void ProjectTree::scheduleSync(QAStData* parent)
{
    if (!m_pending.contains(parent))
        m_pending.append(parent);
    if (m_syncScheduled)
        return;
    m_syncScheduled = true;
    QTimer::singleShot(0, this, &ProjectTree::synchronize);
}

void ProjectTree::synchronize()
{
    m_syncScheduled = false;
    const QList<QPointer<QAStData>> pending = std::exchange(m_pending, {});
    for (const QPointer<QAStData>& parent : pending) {
        if (parent && m_rows.contains(parent))
            syncChildren(parent);
    }
    if (!pending.isEmpty())
        emit treeChanged();
}

// Brings the rows below parent's row in line with its children: rows of
// children that left are dropped (a child moved elsewhere gets a new row
// there), rows are made for new children, and the order is the items'.
void ProjectTree::syncChildren(QAStData* parent)
{
    QTreeWidgetItem* parentRow = itemOf(parent);
    QAStData* current = currentData();
    for (int i = parentRow->childCount() - 1; i >= 0; --i) {
        QTreeWidgetItem* row = parentRow->child(i);
        QAStData* data = dataOf(row);
        if (!data)
            delete row;
        else if (data->parent() != parent)
            dropRows(data);
    }
    const QList<QAStData*> children = parent->childItems();
    for (int i = 0; i < children.size(); ++i) {
        QAStData* child = children.at(i);
        QTreeWidgetItem* row = itemOf(child);
        if (row && row->parent() != parentRow) {
            dropRows(child);
            row = nullptr;
        }
        if (!row)
            row = addRow(parentRow, child);
        const int at = parentRow->indexOfChild(row);
        if (at != i) {
            const bool expanded = row->isExpanded();
            parentRow->takeChild(at);
            parentRow->insertChild(i, row);
            row->setExpanded(expanded);
        }
    }
    if (current && itemOf(current))
        setCurrentData(current);
    // A new child shows under its parent.
    parentRow->setExpanded(true);
}

// The item lives on elsewhere: its row and those of its subtree go, and
// the item is no longer followed until a row is made for it again.
void ProjectTree::dropRows(QAStData* data)
{
    QTreeWidgetItem* row = itemOf(data);
    QList<QAStData*> subtree = data->childrenOfClass("QAStData", true);
    subtree.append(data);
    for (QAStData* gone : subtree) {
        disconnect(gone, nullptr, this, nullptr);
        m_rows.remove(gone);
    }
    delete row;
}

void ProjectTree::forget(QObject* object)
{
    // Only the address is used: the item is being destroyed.
    auto* data = static_cast<QAStData*>(object);
    QTreeWidgetItem* row = m_rows.take(data);
    if (!row)
        return;
    row->setData(NameColumn, Qt::UserRole, QVariant());
    const bool wasCurrent = row == currentItem() || row->isSelected();
    delete row;
    if (wasCurrent)
        emit currentDataChanged(currentData());
}

void ProjectTree::renameFromRow(QTreeWidgetItem* row, int column)
{
    if (m_filling || column != NameColumn)
        return;
    QAStData* data = dataOf(row);
    if (!data)
        return;
    const QString name = row->text(NameColumn).trimmed();
    if (!name.isEmpty() && data->isRenameable() && name != data->name())
        data->setName(name);
    fillRow(row, data);
}

bool ProjectTree::canHold(const QAStData* parent, const QAStData* item)
{
    if (!parent || !item || parent == item || item->isAncestorOf(parent))
        return false;
    return parent->acceptDrop(const_cast<QAStData*>(item));
}

bool ProjectTree::dropPlace(QDropEvent* event, QAStData* item, QAStData** parent,
                            QAStData** after) const
{
    QAStData* target = dataOf(itemAt(event->position().toPoint()));
    if (!target || !item)
        return false;
    switch (dropIndicatorPosition()) {
    case QAbstractItemView::OnItem:
        *parent = target;
        *after = target->last() == item ? item->previous() : target->last();
        break;
    case QAbstractItemView::AboveItem:
        *parent = target->parent();
        *after = target->previous() == item ? item->previous() : target->previous();
        break;
    case QAbstractItemView::BelowItem:
        *parent = target->parent();
        *after = target == item ? item->previous() : target;
        break;
    case QAbstractItemView::OnViewport:
        return false;
    }
    // Moving beside itself changes nothing.
    if (*parent == item->parent() && (*after == item || *after == item->previous()))
        return false;
    return canHold(*parent, item) || (*parent == item->parent() && *parent);
}

void ProjectTree::dragMoveEvent(QDragMoveEvent* event)
{
    QTreeWidget::dragMoveEvent(event);
    QAStData* parent = nullptr;
    QAStData* after = nullptr;
    if (event->source() != this || !dropPlace(event, currentData(), &parent, &after))
        event->ignore();
}

void ProjectTree::dropEvent(QDropEvent* event)
{
    QAStData* item = currentData();
    QAStData* parent = nullptr;
    QAStData* after = nullptr;
    // The view never moves rows itself: the item moves, and the rows follow.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    if (event->source() != this || !dropPlace(event, item, &parent, &after))
        return;
    QAStData::userMove(item, parent, after);
    synchronize();
    setCurrentData(item);
}
