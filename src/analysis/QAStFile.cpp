#include "QAStFile.h"

#include "QAStDataFactory.h"

#include <QDomElement>
#include <QFileInfo>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStFile> fileRow("file");
}

QAStFile::QAStFile(const QString& path, QAStData* parent, QAStData* after)
    : QAStTestedTag(QFileInfo(path).fileName(), QPixmap(), path, -1, parent, after)
{
}

QAStFile::QAStFile(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

void QAStFile::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<file>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::indent(s, indent);
    s << "</file>\n";
}

bool QAStFile::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "file")) {
        setValid(false);
        return false;
    }
    return QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
}
