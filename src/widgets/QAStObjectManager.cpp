#include "QAStObjectManager.h"

#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "QATagFiltersMgr.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QMenu>

#include <algorithm>
#include <memory>

QAStObjectManager::QAStObjectManager(QAStProject* project, QWidget* parent) : QTreeWidget(parent)
{
    setColumnCount(1);
    setHeaderHidden(true);
    setRootIsDecorated(true);
    connect(QAStFile::taggingNotifier(), &QAStFileTaggingNotifier::taggingTerminated, this,
            &QAStObjectManager::fileTaggingTerminated);
    connect(this, &QTreeWidget::itemDoubleClicked, this,
            &QAStObjectManager::runDoubleClickAction);
    setProject(project);
}

void QAStObjectManager::setProject(QAStProject* project)
{
    if (m_project)
        disconnect(m_project, nullptr, this, nullptr);
    m_project = project;
    if (project) {
        const int kept = project->sortMethod();
        m_mode = kept >= SortByFile && kept <= SortAlpha ? kept : SortByFile;
        connect(project, &QAStProject::loaded, this, &QAStObjectManager::rebuild);
        connect(project, &QObject::destroyed, this, &QAStObjectManager::clearItems);
    }
    rebuild();
}

void QAStObjectManager::setItemFilter(const ItemFilter& filter)
{
    m_filter = filter;
    rebuild();
}

void QAStObjectManager::setTagFilters(QATagFiltersMgr* filters)
{
    if (m_tagFilters)
        disconnect(m_tagFilters, nullptr, this, nullptr);
    m_tagFilters = filters;
    if (filters) {
        connect(filters, &QAFiltersMgr::filtersChanged, this, &QAStObjectManager::scheduleRebuild);
        connect(filters, &QObject::destroyed, this, &QAStObjectManager::scheduleRebuild);
    }
    rebuild();
}

QATagFiltersMgr* QAStObjectManager::tagFilters() const
{
    return m_tagFilters;
}

QATagFilterSubject QAStObjectManager::filterSubject(const QAStATag* tag)
{
    return QAStTagLayout::filterSubject(tag);
}

bool QAStObjectManager::isContextItem(const QTreeWidgetItem* item) const
{
    return m_context.contains(item);
}

void QAStObjectManager::scheduleRebuild()
{
    if (m_rebuildPending)
        return;
    m_rebuildPending = true;
    QMetaObject::invokeMethod(this, &QAStObjectManager::rebuildIfPending, Qt::QueuedConnection);
}

void QAStObjectManager::rebuildIfPending()
{
    if (m_rebuildPending)
        rebuild();
}

QAStATag* QAStObjectManager::tagOf(const QTreeWidgetItem* item) const
{
    return m_tags.value(item);
}

QTreeWidgetItem* QAStObjectManager::itemOf(const QAStATag* tag) const
{
    return m_items.value(tag);
}

QList<QAStProject*> QAStObjectManager::projects() const
{
    return QAStTagLayout::projectsOf(m_project);
}

QList<QAStFile*> QAStObjectManager::files() const
{
    return QAStTagLayout::filesOf(m_project);
}

void QAStObjectManager::sortModified(int mode)
{
    if (mode < SortByFile || mode > SortAlpha)
        return;
    m_mode = mode;
    if (m_project)
        m_project->setSortMethod(mode);
    rebuild();
}

void QAStObjectManager::sortByFile()
{
    sortModified(SortByFile);
}

void QAStObjectManager::sortByType()
{
    sortModified(SortByType);
}

void QAStObjectManager::sortAlpha()
{
    sortModified(SortAlpha);
}

void QAStObjectManager::clearItems()
{
    m_tags.clear();
    m_items.clear();
    m_context.clear();
    clear();
}

void QAStObjectManager::rebuild()
{
    m_rebuildPending = false;
    clearItems();
    if (!m_project)
        return;
    ItemFilter accepted;
    if (m_filter)
        accepted = [this](const QAStATag* tag) { return accepts(tag); };
    for (const LayoutEntry& entry : layout(files(), m_mode, accepted, m_tagFilters))
        addEntry(nullptr, entry);
    if (m_mode == SortByType && topLevelItemCount() > 0)
        topLevelItem(0)->setExpanded(true);
}

bool QAStObjectManager::accepts(const QAStATag* tag) const
{
    return !m_filter || m_filter(tag);
}

void QAStObjectManager::addEntry(QTreeWidgetItem* parent, const LayoutEntry& entry)
{
    QTreeWidgetItem* item = newItem(parent, entry.text, entry.tag);
    if (!entry.icon.isEmpty())
        item->setIcon(0, QAStData::pixmap(entry.icon));
    if (entry.context) {
        m_context.insert(item);
        item->setForeground(0, palette().brush(QPalette::Disabled, QPalette::Text));
    }
    if (const auto* file = qobject_cast<const QAStFile*>(entry.tag))
        item->setToolTip(0, file->filePath());
    for (const LayoutEntry& child : entry.children)
        addEntry(item, child);
}

QTreeWidgetItem* QAStObjectManager::newItem(QTreeWidgetItem* parent, const QString& text,
                                            QAStATag* tag)
{
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
    item->setText(0, text);
    if (tag) {
        item->setIcon(0, tag->icon());
        item->setToolTip(0, tag->qualifiedName());
        m_tags.insert(item, tag);
        m_items.insert(tag, item);
    }
    return item;
}

void QAStObjectManager::fileTaggingTerminated(QAStFile* file)
{
    const QAStData* tree = file ? file->root() : nullptr;
    for (QAStProject* p : projects()) {
        if (p->rootFolder() == tree) {
            rebuild();
            return;
        }
    }
}

void QAStObjectManager::runDoubleClickAction(QTreeWidgetItem* item)
{
    if (QAStATag* tag = tagOf(item))
        tag->doubleClickAction();
}

void QAStObjectManager::contextMenuEvent(QContextMenuEvent* event)
{
    QAStATag* tag = tagOf(itemAt(viewport()->mapFromGlobal(event->globalPos())));
    if (!tag)
        return;
    std::unique_ptr<QMenu> menu(tag->popupMenu(this, m_project));
    menu->exec(event->globalPos());
}
