#include "QAFiltersMgr.h"

#include "QAFileUtil.h"
#include "QAFilter.h"
#include "QAFiltersMgrEditor.h"
#include "QAXML.h"

#include <QDomDocument>
#include <QFile>

#include <algorithm>
#include <memory>
#include <vector>

const QString QAFiltersMgr::documentType = QStringLiteral("Korvil-Filters");
const QString QAFiltersMgr::rootTag = QStringLiteral("filters");

QAFiltersMgr::QAFiltersMgr(QObject* parent)
    : QObject(parent)
{
}

QAFiltersMgr::~QAFiltersMgr()
{
    delete m_editor.data();
    qDeleteAll(m_filters);
}

void QAFiltersMgr::addFilter(QAFilter* filter)
{
    append(filter);
    emit filtersChanged();
}

void QAFiltersMgr::append(QAFilter* filter)
{
    m_filters.append(filter);
    if (m_editor)
        m_editor->filterAdded(filter);
}

bool QAFiltersMgr::remove(int index)
{
    if (index < 0 || index >= m_filters.size())
        return false;
    delete m_filters.takeAt(index);
    if (m_editor)
        m_editor->refresh();
    emit filtersChanged();
    return true;
}

QAFilter* QAFiltersMgr::fromName(const QString& name) const
{
    return m_filters.fromName(name);
}

bool QAFiltersMgr::filterActive() const
{
    return std::any_of(m_filters.begin(), m_filters.end(),
                       [](const QAFilter* f) { return f->enabled(); });
}

bool QAFiltersMgr::match(void* item, void* context)
{
    for (QAFilter* filter : std::as_const(m_filters)) {
        if (filter->enabled() && filter->match(item, context))
            return true;
    }
    return false;
}

bool QAFiltersMgr::hasModification() const
{
    return m_modified
        || std::any_of(m_filters.begin(), m_filters.end(),
                       [](const QAFilter* f) { return f->modified(); });
}

void QAFiltersMgr::setModified(bool modified)
{
    m_modified = modified;
    if (modified)
        emit filtersChanged();
}

void QAFiltersMgr::updateEnabled(QAFilter* filter)
{
    if (m_editor)
        m_editor->updateEnabled(filter);
    emit filtersChanged();
}

QAFiltersMgrEditor* QAFiltersMgr::editor() const
{
    return m_editor.data();
}

bool QAFiltersMgr::edit(QWidget* parent, const char* name)
{
    if (!m_editor) {
        m_editor = createEditor(parent, name);
        if (!m_editor)
            return false;
    }
    m_editor->setModified(m_modified);
    m_editor->refresh();
    m_editor->exec();
    if (m_editor)
        m_modified = m_editor->isModified();
    return true;
}

QAFiltersMgrEditor* QAFiltersMgr::createEditor(QWidget* parent, const char* name)
{
    auto* editor = new QAFiltersMgrEditor(this, parent);
    if (name)
        editor->setObjectName(QString::fromLatin1(name));
    return editor;
}

QAFilter* QAFiltersMgr::createFilter()
{
    return new QAFilter;
}

bool QAFiltersMgr::xmlLoad(QDomDocument&, QDomElement&)
{
    return false;
}

bool QAFiltersMgr::exportFile(const QString& path, const QList<QAFilter*>& filters,
                              QString* reason)
{
    QDomDocument doc(documentType);
    doc.appendChild(doc.createProcessingInstruction(QStringLiteral("xml"),
                                                    QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = doc.createElement(rootTag);
    doc.appendChild(root);
    for (QAFilter* filter : filters) {
        QDomElement e = doc.createElement(filter->xmlTag());
        root.appendChild(e);
        filter->xmlSave(doc, e);
    }
    return QAFileUtil::replaceFile(path, doc.toByteArray(1), reason);
}

QAFiltersMgr::ImportResult QAFiltersMgr::importFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ImportResult::CannotOpen;
    QDomDocument doc;
    if (!QAXML::setContent(doc, &file))
        return ImportResult::NotWellFormed;
    QDomElement root = doc.documentElement();
    if (root.tagName() != rootTag || !xmlLoad(doc, root))
        return ImportResult::BadRoot;

    std::vector<std::unique_ptr<QAFilter>> loaded;
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        std::unique_ptr<QAFilter> filter(createFilter());
        if (!filter || e.tagName() != filter->xmlTag() || !filter->xmlLoad(doc, e))
            return ImportResult::BadFilter;
        filter->setModified(false);
        loaded.push_back(std::move(filter));
    }
    for (std::unique_ptr<QAFilter>& filter : loaded)
        append(filter.release());
    setModified(true);
    return ImportResult::Imported;
}
