#include "QAStSubProject.h"

#include "QAFileUtil.h"

#include <QDomElement>
#include <QFileInfo>
#include <QTextStream>

QAStSubProject::QAStSubProject(const QString& projectFile, QAStData* parent, QAStData* after)
    : QAStProject(parent, after)
{
    setName(QFileInfo(projectFile).completeBaseName());
    setProjectFile(projectFile);
}

QAStSubProject::QAStSubProject(const QDomElement& e, int version, QAStData* parent,
                               QAStData* after)
    : QAStProject(parent, after)
{
    init(e, version);
}

QString QAStSubProject::includingDirectory() const
{
    return parent() ? parent()->directory() : QString();
}

QString QAStSubProject::projectFile() const
{
    return QAFileUtil::relativePathToAbs(includingDirectory(), m_projectFile);
}

void QAStSubProject::setProjectFile(const QString& path)
{
    m_projectFile = QAFileUtil::relativePathToAbs(includingDirectory(), path);
}

QAStConfiguration* QAStSubProject::inheritConfiguration(const QAStConfiguration* c) const
{
    return QAStNode::inheritConfiguration(c);
}

void QAStSubProject::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<sub_project>\n";
    const int inner = indent + 1;
    QAStData::write(s, inner);
    const QString relative = QAFileUtil::absPathToRelative(includingDirectory(), projectFile());
    QAXML::toStream(s, "project_file", QAXML::stringToXMLValue(relative), inner);
    QAXML::toStream(s, "unload", QAXML::boolToXMLValue(m_unloaded), inner);
    QAXML::indent(s, indent);
    s << "</sub_project>\n";
}

bool QAStSubProject::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "sub_project") ||
        !QAStData::init(e.firstChildElement(QStringLiteral("data")), version)) {
        setValid(false);
        return false;
    }
    setProjectFile(QAXML::domValue(e.firstChildElement(QStringLiteral("project_file"))));
    m_unloaded = QAXML::toBool(e.firstChildElement(QStringLiteral("unload")).text());
    return true;
}
