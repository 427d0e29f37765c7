#include "QAStAMethodTag.h"

#include "QAStAClassTag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStAMethodTag> methodRow("method");
}

QAStAMethodTag::QAStAMethodTag(const QString& name, const QString& filePath, int line,
                               QAStData* parent, QAStData* after)
    : QAStAFunctionTag(name, filePath, line, parent, after)
{
}

QAStAMethodTag::QAStAMethodTag(const QDomElement& e, int version, QAStData* parent,
                               QAStData* after)
    : QAStAFunctionTag(parent, after)
{
    init(e, version);
}

void QAStAMethodTag::setQualifier(int qualifier)
{
    QAStAFunctionTag::setQualifier(qualifier);
    chooseIcon();
}

void QAStAMethodTag::chooseIcon()
{
    if (qualifier() & Private)
        useIcon(QStringLiteral("method_private_xpm"));
    else if (qualifier() & Protected)
        useIcon(QStringLiteral("method_protected_xpm"));
    else
        useIcon(QStringLiteral("function_xpm"));
}

QString QAStAMethodTag::qualifiedName() const
{
    if (!m_completeName.isEmpty())
        return m_completeName;
    if (const QAStAClassTag* c = qobject_cast<const QAStAClassTag*>(parent()))
        return c->qualifiedName() + scopeSeparator() + name();
    return scopedName();
}

QString QAStAMethodTag::classPrefix() const
{
    if (m_completeName.isEmpty()) {
        const auto* c = qobject_cast<const QAStAClassTag*>(parent());
        return c ? c->qualifiedName() : QString();
    }
    const QString separator = scopeSeparator();
    const qsizetype cut = m_completeName.lastIndexOf(separator);
    return cut < 0 ? QString() : m_completeName.left(cut);
}

QAStAClassTag* QAStAMethodTag::ofClass() const
{
    if (auto* c = qobject_cast<QAStAClassTag*>(parent()))
        return c;
    const QString prefix = classPrefix();
    if (prefix.isEmpty())
        return nullptr;
    for (QAStATag* tag : treeTags()) {
        auto* c = qobject_cast<QAStAClassTag*>(tag);
        if (c && c->qualifiedName() == prefix)
            return c;
    }
    return nullptr;
}

bool QAStAMethodTag::ownAccessFlag() const
{
    return (qualifier() & Public) && !(qualifier() & PureVirtual);
}

bool QAStAMethodTag::isDirectlyTestable() const
{
    bool flag = ownAccessFlag();
    if (!(qualifier() & Declaration)) {
        const auto* declared = qobject_cast<const QAStAMethodTag*>(declaration());
        if (declared && declared != this)
            flag = declared->ownAccessFlag();
    }
    if (!flag)
        return false;
    const QAStAClassTag* c = ofClass();
    return c && c->isDirectlyTestable();
}

QString QAStAMethodTag::testNodeKind() const
{
    return language() == QAStFile::LanguageJava ? QStringLiteral("java_testing")
                                                 : QStringLiteral("object_testing");
}

void QAStAMethodTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<method>\n";
    QAStAFunctionTag::write(s, indent + 1);
    QAXML::toStream(s, "complete_name", stringToXMLValue(m_completeName), indent + 1);
    QAXML::indent(s, indent);
    s << "</method>\n";
}

bool QAStAMethodTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "method")) {
        setValid(false);
        return false;
    }
    const bool valid =
        QAStAFunctionTag::init(e.firstChildElement(QStringLiteral("function")), version);
    m_completeName = QAXML::domValue(e.firstChildElement(QStringLiteral("complete_name")));
    chooseIcon();
    return valid;
}
