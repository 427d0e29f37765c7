#include "QAStFolder.h"

#include "QAFileUtil.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"
#include "QAStRootFolder.h"

#include <QDomElement>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>

namespace {
const QAStDataFactory::Registration<QAStFolder> folderRow("folder");

QRegularExpression wildcard(const QString& pattern)
{
    return QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern),
                              QRegularExpression::CaseInsensitiveOption);
}
}

QAStFolder::QAStFolder(const QString& name, const QPixmap& icon, QAStData* parent,
                       QAStData* after)
    : QAStData(name, icon, parent, after)
{
}

QAStFolder::QAStFolder(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStData(parent, after)
{
    init(e, version);
}

QAStFolder::QAStFolder(QAStData* parent, QAStData* after) : QAStData(parent, after) {}

void QAStFolder::setFilters(const QString& filters)
{
    m_filters = filters;
    m_patterns.clear();
    for (const QString& pattern : filterPatterns())
        m_patterns.append(wildcard(pattern));
}

QStringList QAStFolder::filterPatterns() const
{
    QStringList patterns;
    for (const QString& piece : m_filters.split(QLatin1Char(';'))) {
        const QString pattern = piece.trimmed();
        if (!pattern.isEmpty())
            patterns.append(pattern);
    }
    return patterns;
}

bool QAStFolder::matches(const QString& path) const
{
    if (m_patterns.isEmpty())
        return true;
    const QString fileName = QFileInfo(path).fileName();
    return std::any_of(m_patterns.cbegin(), m_patterns.cend(),
                       [&fileName](const QRegularExpression& re) {
                           return re.match(fileName).hasMatch();
                       });
}

QList<QAStFolder*> QAStFolder::folders() const
{
    QList<QAStFolder*> found;
    for (QAStData* c = child(); c; c = c->next()) {
        if (auto* folder = qobject_cast<QAStFolder*>(c))
            found.append(folder);
    }
    return found;
}

QList<QAStFile*> QAStFolder::files() const
{
    QList<QAStFile*> found;
    collectFiles(found);
    return found;
}

void QAStFolder::collectFiles(QList<QAStFile*>& found) const
{
    for (QAStData* c = child(); c; c = c->next()) {
        if (auto* file = qobject_cast<QAStFile*>(c))
            found.append(file);
        else if (auto* folder = qobject_cast<QAStFolder*>(c))
            folder->collectFiles(found);
    }
}

QAStFile* QAStFolder::file(const QString& key) const
{
    const QString wanted = QAStATag::fileKeyOf(QAFileUtil::relativePathToAbs(directory(), key));
    for (QAStFile* f : files()) {
        if (f->fileKey() == wanted)
            return f;
    }
    return nullptr;
}

void QAStFolder::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<folder>\n";
    const int inner = indent + 1;
    QAStData::write(s, inner);
    QAXML::toStream(s, "filters", QAXML::stringToXMLValue(m_filters), inner);
    QAXML::indent(s, inner);
    s << "<folder_child>\n";
    for (QAStData* c = child(); c; c = c->next())
        c->write(s, inner + 1);
    QAXML::indent(s, inner);
    s << "</folder_child>\n";
    QAXML::indent(s, indent);
    s << "</folder>\n";
}

bool QAStFolder::acceptDrop(QAStData* item) const
{
    if (qobject_cast<QAStFolder*>(item))
        return item != this && !item->isAncestorOf(this) && !qobject_cast<const QAStRootFolder*>(item);
    auto* dropped = qobject_cast<QAStFile*>(item);
    if (!dropped || !matches(dropped->filePath()))
        return false;
    const QAStFile* present = topFolder()->file(dropped->fileKey());
    return !present || present == dropped;
}

const QAStFolder* QAStFolder::topFolder() const
{
    const QAStFolder* top = this;
    while (auto* above = qobject_cast<const QAStFolder*>(top->parent()))
        top = above;
    return top;
}

bool QAStFolder::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "folder") ||
        !QAStData::init(e.firstChildElement(QStringLiteral("data")), version)) {
        setValid(false);
        return false;
    }
    setFilters(QAXML::domValue(e.firstChildElement(QStringLiteral("filters"))));
    initChildren(e.firstChildElement(QStringLiteral("folder_child")), version,
                 QStringList{QStringLiteral("QAStFolder"), QStringLiteral("QAStFile")});
    return true;
}
