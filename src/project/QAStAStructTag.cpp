#include "QAStAStructTag.h"

#include "QAStAClassTag.h"
#include "QAStDataFactory.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStAStructTag> structRow("struct");
}

QAStAStructTag::QAStAStructTag(const QString& name, const QString& filePath, int line,
                               QAStData* parent, QAStData* after)
    : QAStTestedTag(name, QPixmap(), filePath, line, parent, after)
{
    useIcon(QStringLiteral("struct_xpm"));
}

QAStAStructTag::QAStAStructTag(const QDomElement& e, int version, QAStData* parent,
                               QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

QAStAStructTag::QAStAStructTag(QAStData* parent, QAStData* after) : QAStTestedTag(parent, after) {}

QString QAStAStructTag::qualifiedName() const
{
    return scopedName();
}

bool QAStAStructTag::isARootItem() const
{
    return !parent() || !qobject_cast<const QAStAClassTag*>(parent());
}

bool QAStAStructTag::canBeTested() const
{
    return isARootItem();
}

void QAStAStructTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<struct>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::indent(s, indent);
    s << "</struct>\n";
}

bool QAStAStructTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "struct")) {
        setValid(false);
        return false;
    }
    const bool valid =
        QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
    useIcon(QStringLiteral("struct_xpm"));
    return valid;
}
