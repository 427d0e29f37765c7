#include "QAStTestedTag.h"

#include <QDomElement>
#include <QTextStream>

QAStTestedTag::QAStTestedTag(const QString& name, const QPixmap& icon, const QString& filePath,
                             int line, QAStData* parent, QAStData* after)
    : QAStATag(name, icon, filePath, line, parent, after)
{
}

QAStTestedTag::QAStTestedTag(QAStData* parent, QAStData* after) : QAStATag(parent, after) {}

void QAStTestedTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<tested_tag>\n";
    QAStATag::write(s, indent + 1);
    QAXML::indent(s, indent);
    s << "</tested_tag>\n";
}

bool QAStTestedTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "tested_tag")) {
        setValid(false);
        return false;
    }
    return QAStATag::init(e.firstChildElement(QStringLiteral("tag")), version);
}
