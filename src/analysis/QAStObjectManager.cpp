#include "QAStObjectManager.h"

#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAPackageTag.h"
#include "QAStFile.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"

#include <QContextMenuEvent>
#include <QMenu>

#include <algorithm>
#include <memory>

namespace {
bool nameLess(const QAStATag* a, const QAStATag* b)
{
    const int folded = a->name().compare(b->name(), Qt::CaseInsensitive);
    if (folded != 0)
        return folded < 0;
    const int exact = a->name().compare(b->name());
    return exact != 0 ? exact < 0 : a->displayName() < b->displayName();
}

// A tag's text in the flat lists: its qualified name and signature.
QString qualifiedText(const QAStATag* tag)
{
    return tag->qualifiedName() + tag->signature();
}
}

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
    QList<QAStProject*> found;
    if (!m_project)
        return found;
    found.append(m_project);
    for (QAStData* sub : m_project->childrenOfClass("QAStSubProject", true))
        found.append(static_cast<QAStProject*>(sub));
    return found;
}

QList<QAStFile*> QAStObjectManager::files() const
{
    QList<QAStFile*> found;
    for (QAStProject* p : projects())
        found.append(p->files());
    return found;
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
    clear();
}

void QAStObjectManager::rebuild()
{
    clearItems();
    if (!m_project)
        return;
    if (m_mode == SortByType) {
        QTreeWidgetItem* top = newItem(nullptr, tr("Test Items"), nullptr);
        top->setIcon(0, QAStData::pixmap(QStringLiteral("project_xpm")));
        QTreeWidgetItem* classes = newItem(top, tr("Classes"), nullptr);
        QTreeWidgetItem* functions = newItem(top, tr("Functions"), nullptr);
        QTreeWidgetItem* packages = newItem(top, tr("Packages"), nullptr);
        for (QAStFile* file : files()) {
            for (QAStATag* tag : file->descendants()) {
                QTreeWidgetItem* header = qobject_cast<QAStAClassTag*>(tag) ? classes
                    : qobject_cast<QAStAFunctionTag*>(tag)                  ? functions
                    : qobject_cast<QAStAPackageTag*>(tag)                   ? packages
                                                                            : nullptr;
                if (header && accepts(tag))
                    newItem(header, qualifiedText(tag), tag);
            }
        }
        top->setExpanded(true);
        return;
    }
    QList<QAStFile*> shown = files();
    const bool sorted = m_mode == SortAlpha;
    if (sorted) {
        std::stable_sort(shown.begin(), shown.end(), [](const QAStFile* a, const QAStFile* b) {
            return nameLess(a, b) || (!nameLess(b, a) && a->filePath() < b->filePath());
        });
    }
    for (QAStFile* file : shown) {
        if (!shows(file))
            continue;
        QTreeWidgetItem* item = newFileItem(file);
        addTagTree(item, file, sorted);
    }
}

bool QAStObjectManager::shows(const QAStFile* file) const
{
    const QList<QAStATag*> tags = file->descendants();
    return std::any_of(tags.cbegin(), tags.cend(), [this](const QAStATag* t) { return accepts(t); });
}

bool QAStObjectManager::accepts(const QAStATag* tag) const
{
    return !m_filter || m_filter(tag);
}

int QAStObjectManager::addTagTree(QTreeWidgetItem* parent, const QAStATag* tag, bool sorted)
{
    QList<QAStATag*> children = tag->children();
    if (sorted)
        std::stable_sort(children.begin(), children.end(), nameLess);
    int added = 0;
    for (QAStATag* c : children) {
        if (accepts(c)) {
            addTagTree(newItem(parent, c->displayName(), c), c, sorted);
            ++added;
        } else {
            added += addTagTree(parent, c, sorted);
        }
    }
    return added;
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

QTreeWidgetItem* QAStObjectManager::newFileItem(QAStFile* file)
{
    QTreeWidgetItem* item = newItem(nullptr, file->name(), file);
    item->setToolTip(0, file->filePath());
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
