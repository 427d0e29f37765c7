#include "QAStAPackageTag.h"

#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStDataFactory.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStAPackageTag> packageRow("package");
}

QAStAPackageTag::QAStAPackageTag(const QString& name, const QString& filePath, int line,
                                 QAStData* parent, QAStData* after)
    : QAStTestedTag(name, QPixmap(), filePath, line, parent, after)
{
    useIcon(QStringLiteral("package_xpm"));
}

QAStAPackageTag::QAStAPackageTag(const QDomElement& e, int version, QAStData* parent,
                                 QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

QAStAPackageTag::QAStAPackageTag(QAStData* parent, QAStData* after) : QAStTestedTag(parent, after)
{
}

QString QAStAPackageTag::qualifiedName() const
{
    return m_completeName.isEmpty() ? scopedName() : m_completeName;
}

QList<QAStAFunctionTag*> QAStAPackageTag::functions() const
{
    QList<QAStAFunctionTag*> found;
    for (QAStData* c = child(); c; c = c->next()) {
        auto* f = qobject_cast<QAStAFunctionTag*>(c);
        if (f && !qobject_cast<QAStAMethodTag*>(c))
            found.append(f);
    }
    return found;
}

bool QAStAPackageTag::isTestable() const
{
    return !(qualifier() & (GenericUnit | Instantiation));
}

bool QAStAPackageTag::isInstrumentable() const
{
    return isTestable() && !QAStAFunctionTag::isDeclarationFile(filePath());
}

QString QAStAPackageTag::testedSourceFile() const
{
    if (!QAStAFunctionTag::isDeclarationFile(filePath()))
        return filePath();
    const QString qualified = qualifiedName();
    for (QAStATag* tag : treeTags()) {
        auto* body = qobject_cast<QAStAPackageTag*>(tag);
        if (body && body->qualifiedName() == qualified
            && !QAStAFunctionTag::isDeclarationFile(body->filePath()))
            return body->filePath();
    }
    return filePath();
}

bool QAStAPackageTag::canBeTested() const
{
    return isTestable();
}

void QAStAPackageTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<package>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::toStream(s, "complete_name", stringToXMLValue(m_completeName), indent + 1);
    QAXML::indent(s, indent);
    s << "</package>\n";
}

bool QAStAPackageTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "package")) {
        setValid(false);
        return false;
    }
    const bool valid =
        QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
    m_completeName = QAXML::domValue(e.firstChildElement(QStringLiteral("complete_name")));
    useIcon(QStringLiteral("package_xpm"));
    return valid;
}
