#include "QAStATag.h"

#include "QAFileUtil.h"
#include "QAStDataFactory.h"
#include "QAStProjectPref.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStATag> tagRow("tag");

QDomElement childElement(const QDomElement& e, const char* tag)
{
    return e.firstChildElement(QLatin1String(tag));
}
}

QAStATag::QAStATag(const QString& name, const QPixmap& icon, const QString& filePath, int line,
                   QAStData* parent, QAStData* after)
    : QAStData(name, icon, parent, after), m_line(line)
{
    setFilePath(filePath);
}

QAStATag::QAStATag(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStData(parent, after)
{
    init(e, version);
}

QAStATag::QAStATag(QAStData* parent, QAStData* after) : QAStData(parent, after) {}

QString QAStATag::filePath() const
{
    return QAFileUtil::relativePathToAbs(directory(), m_filePath);
}

void QAStATag::setFilePath(const QString& path)
{
    m_filePath = QAFileUtil::relativePathToAbs(directory(), path);
}

void QAStATag::setQualifier(int qualifier)
{
    m_qualifier = qualifier;
}

QList<QAStATag*> QAStATag::children() const
{
    QList<QAStATag*> tags;
    for (QAStData* c = child(); c; c = c->next()) {
        if (auto* tag = qobject_cast<QAStATag*>(c))
            tags.append(tag);
    }
    return tags;
}

QString QAStATag::fileKey() const
{
    return fileKeyOf(filePath());
}

QString QAStATag::fileKeyOf(const QString& path)
{
    return QAFileUtil::cleanDirPath(path);
}

void QAStATag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<tag>\n";
    const int inner = indent + 1;
    QAStData::write(s, inner);
    const QString path = preferences()->useRelativePath()
        ? QAFileUtil::absPathToRelative(directory(), filePath())
        : filePath();
    QAXML::toStream(s, "filepath", QAXML::stringToXMLValue(path), inner);
    QAXML::toStream(s, "line", QAXML::fromInt(m_line), inner);
    QAXML::toStream(s, "qualifier", QAXML::fromInt(m_qualifier), inner);
    QAXML::toStream(s, "signature", QAXML::stringToXMLValue(m_signature), inner);
    QAXML::indent(s, inner);
    s << "<tag_child>\n";
    for (QAStData* c = child(); c; c = c->next())
        c->write(s, inner + 1);
    QAXML::indent(s, inner);
    s << "</tag_child>\n";
    QAXML::indent(s, indent);
    s << "</tag>\n";
}

bool QAStATag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "tag") || !QAStData::init(childElement(e, "data"), version)) {
        setValid(false);
        return false;
    }
    setFilePath(QAXML::domValue(childElement(e, "filepath")));
    bool ok = false;
    const int line = QAXML::toInt(childElement(e, "line").text(), &ok);
    m_line = ok ? line : -1;
    m_qualifier = QAXML::toInt(childElement(e, "qualifier").text());
    m_signature = QAXML::domValue(childElement(e, "signature"));
    initChildren(childElement(e, "tag_child"), version, QStringList{QStringLiteral("QAStATag")});
    return true;
}
