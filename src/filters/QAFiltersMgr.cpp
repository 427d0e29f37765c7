#include "QAFiltersMgr.h"

#include "QAFileUtil.h"
#include "QAFilter.h"
#include "QAFiltersMgrEditorView.h"
#include "QAXML.h"

#include <QDomDocument>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

bool holdsText(const QDomElement& e)
{
    for (QDomNode n = e.firstChild(); !n.isNull(); n = n.nextSibling()) {
        if (n.isText())
            return true;
    }
    return false;
}

// Writes e and what it holds: its attributes in name order, every attribute
// value and text in the value encoding (QAXML), so that any text reads back
// equal and the same filters give the same bytes. An element of elements
// only is written one child a line, indented by depth; the content of an
// element holding text (depth -1) is written as it is, without spacing.
void writeElement(QTextStream& out, const QDomElement& e, int depth)
{
    if (depth >= 0)
        QAXML::indent(out, depth);
    out << '<' << e.tagName();
    const QDomNamedNodeMap map = e.attributes();
    QList<QDomAttr> attributes;
    for (int i = 0; i < map.count(); ++i)
        attributes.append(map.item(i).toAttr());
    std::sort(attributes.begin(), attributes.end(),
              [](const QDomAttr& a, const QDomAttr& b) { return a.name() < b.name(); });
    for (const QDomAttr& a : attributes)
        out << ' ' << a.name() << "=\"" << QAXML::attributeToXMLValue(a.value()) << '"';

    const bool inLine = depth < 0 || holdsText(e);
    bool empty = true;
    for (QDomNode n = e.firstChild(); !n.isNull(); n = n.nextSibling()) {
        if (!n.isElement() && !n.isText())
            continue;
        if (empty)
            out << (inLine ? ">" : ">\n");
        empty = false;
        if (n.isText())
            out << QAXML::stringToXMLValue(n.toText().data());
        else
            writeElement(out, n.toElement(), inLine ? -1 : depth + 1);
    }
    if (empty) {
        out << "/>";
    } else {
        if (!inLine)
            QAXML::indent(out, depth);
        out << "</" << e.tagName() << '>';
    }
    if (depth >= 0)
        out << '\n';
}

// Undoes the value encoding of the attributes and texts below e.
void decodeValues(const QDomElement& e)
{
    const QDomNamedNodeMap map = e.attributes();
    for (int i = 0; i < map.count(); ++i) {
        QDomAttr a = map.item(i).toAttr();
        a.setValue(QAXML::commaToString(a.value()));
    }
    for (QDomNode n = e.firstChild(); !n.isNull(); n = n.nextSibling()) {
        if (n.isText())
            n.toText().setData(QAXML::commaToString(n.toText().data()));
        else if (n.isElement())
            decodeValues(n.toElement());
    }
}

}

const QString QAFiltersMgr::documentType = QStringLiteral("Korvil-Filters");
const QString QAFiltersMgr::rootTag = QStringLiteral("filters");

QAFiltersMgr::QAFiltersMgr(QObject* parent)
    : QObject(parent)
{
}

QAFiltersMgr::~QAFiltersMgr()
{
    delete m_editorObject.data();
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
    if (QAFiltersMgrEditorView* open = editor())
        open->filterAdded(filter);
}

bool QAFiltersMgr::remove(int index)
{
    if (index < 0 || index >= m_filters.size())
        return false;
    delete m_filters.takeAt(index);
    if (QAFiltersMgrEditorView* open = editor())
        open->refresh();
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
    if (QAFiltersMgrEditorView* open = editor())
        open->updateEnabled(filter);
    emit filtersChanged();
}

QAFiltersMgrEditorView* QAFiltersMgr::editor() const
{
    return m_editorObject ? m_editor : nullptr;
}

bool QAFiltersMgr::edit(QWidget* parent, const char* name)
{
    if (!editor()) {
        m_editor = createEditor(parent, name);
        m_editorObject = m_editor ? m_editor->object() : nullptr;
        if (!m_editor)
            return false;
    }
    m_editor->setModified(m_modified);
    m_editor->refresh();
    m_editor->exec();
    if (QAFiltersMgrEditorView* open = editor())
        m_modified = open->isModified();
    return true;
}

QAFiltersMgrEditorView* QAFiltersMgr::createEditor(QWidget* parent, const char* name)
{
    QAFiltersMgrEditorView* made = QAFiltersMgrEditorView::make(this, parent);
    if (made && name)
        made->object()->setObjectName(QString::fromLatin1(name));
    return made;
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
    QDomElement root = doc.createElement(rootTag);
    doc.appendChild(root);
    for (QAFilter* filter : filters) {
        QDomElement e = doc.createElement(filter->xmlTag());
        root.appendChild(e);
        filter->xmlSave(doc, e);
    }
    QByteArray text;
    QTextStream out(&text);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE " << documentType << ">\n";
    writeElement(out, root, 0);
    out.flush();
    return QAFileUtil::replaceFile(path, text, reason);
}

QAFiltersMgr::ImportResult QAFiltersMgr::importFile(const QString& path, QStringList* faults)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ImportResult::CannotOpen;
    QDomDocument doc;
    if (!QAXML::setContent(doc, &file))
        return ImportResult::NotWellFormed;
    QDomElement root = doc.documentElement();
    if (root.tagName() != rootTag)
        return ImportResult::BadRoot;
    decodeValues(root);
    if (!xmlLoad(doc, root))
        return ImportResult::BadRoot;

    std::vector<std::unique_ptr<QAFilter>> loaded;
    QStringList leftOut;
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        std::unique_ptr<QAFilter> filter(createFilter());
        const bool isFilter = filter && e.tagName() == filter->xmlTag();
        const bool read = isFilter && filter->xmlLoad(doc, e);
        if (filter)
            leftOut += filter->loadFaults();
        if (read) {
            filter->setModified(false);
            loaded.push_back(std::move(filter));
        } else if (!isFilter) {
            leftOut += tr("line %1: element \"%2\" left out: \"%3\" is expected")
                           .arg(e.lineNumber())
                           .arg(e.tagName(), filter ? filter->xmlTag() : QString());
        } else if (filter->loadFaults().isEmpty()) {
            leftOut += tr("line %1: element \"%2\" left out: the filter does not read it")
                           .arg(e.lineNumber())
                           .arg(e.tagName());
        }
    }
    for (std::unique_ptr<QAFilter>& filter : loaded)
        append(filter.release());
    if (!loaded.empty())
        setModified(true);
    if (faults)
        *faults = leftOut;
    return ImportResult::Imported;
}
