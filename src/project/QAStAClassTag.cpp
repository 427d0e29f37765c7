#include "QAStAClassTag.h"

#include "QAStAMethodTag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStAClassTag> classRow("class");
}

QAStAClassTag::QAStAClassTag(const QString& name, const QString& filePath, int line,
                             QAStData* parent, QAStData* after)
    : QAStTestedTag(name, QPixmap(), filePath, line, parent, after)
{
    chooseIcon();
}

QAStAClassTag::QAStAClassTag(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

QAStAClassTag::QAStAClassTag(QAStData* parent, QAStData* after) : QAStTestedTag(parent, after) {}

void QAStAClassTag::setQualifier(int qualifier)
{
    QAStTestedTag::setQualifier(qualifier);
    chooseIcon();
}

void QAStAClassTag::chooseIcon()
{
    if (qualifier() & Private)
        useIcon(QStringLiteral("class_private_xpm"));
    else if (qualifier() & Protected)
        useIcon(QStringLiteral("class_protected_xpm"));
    else
        useIcon(QStringLiteral("class_xpm"));
}

QString QAStAClassTag::qualifiedName() const
{
    return scopedName();
}

QAStAClassTag* QAStAClassTag::ofClass() const
{
    return qobject_cast<QAStAClassTag*>(parent());
}

QList<QAStAMethodTag*> QAStAClassTag::methods() const
{
    QList<QAStAMethodTag*> found;
    for (QAStData* c = child(); c; c = c->next()) {
        if (auto* m = qobject_cast<QAStAMethodTag*>(c))
            found.append(m);
    }
    return found;
}

QAStAMethodTag* QAStAClassTag::method(const QString& name) const
{
    for (QAStAMethodTag* m : methods()) {
        if (m->name() == name)
            return m;
    }
    return nullptr;
}

QList<QAStAClassTag*> QAStAClassTag::generalize() const
{
    QList<QAStAClassTag*> classes;
    for (QAStATag* tag : treeTags()) {
        if (auto* c = qobject_cast<QAStAClassTag*>(tag); c && c != this)
            classes.append(c);
    }
    const auto* enclosing = qobject_cast<const QAStATag*>(parent());
    const QString scope = enclosing && !qobject_cast<const QAStFile*>(enclosing)
        ? enclosing->qualifiedName() + scopeSeparator()
        : QString();
    QList<QAStAClassTag*> bases;
    for (const QString& base : m_inherits) {
        QAStAClassTag* byQualifiedName = nullptr;
        QAStAClassTag* bySimpleName = nullptr;
        for (QAStAClassTag* c : classes) {
            const QString qualified = c->qualifiedName();
            if (qualified == base || qualified == scope + base) {
                byQualifiedName = c;
                break;
            }
            if (!bySimpleName && c->name() == base)
                bySimpleName = c;
        }
        if (QAStAClassTag* found = byQualifiedName ? byQualifiedName : bySimpleName)
            bases.append(found);
    }
    return bases;
}

bool QAStAClassTag::isTestable() const
{
    const QAStFile* f = file();
    return !f || !(f->qualifier() & NotUnderTest);
}

bool QAStAClassTag::isDirectlyTestable() const
{
    if (!isTestable())
        return false;
    if (isARootItem())
        return true;
    return !(qualifier() & (Private | Protected)) && ofClass()->isDirectlyTestable();
}

bool QAStAClassTag::isARootItem() const
{
    return ofClass() == nullptr;
}

bool QAStAClassTag::canBeTested() const
{
    return isDirectlyTestable();
}

QString QAStAClassTag::testedSourceFile() const
{
    const QString own = fileKey();
    for (QAStAMethodTag* m : methods()) {
        const QAStAFunctionTag* body = m->implementation();
        if (body && body->fileKey() != own)
            return body->filePath();
    }
    return filePath();
}

QString QAStAClassTag::testNodeKind() const
{
    return language() == QAStFile::LanguageJava ? QStringLiteral("java_testing")
                                                 : QStringLiteral("object_testing");
}

void QAStAClassTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<class>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::toStream(s, "inherits", stringListToXMLValue(m_inherits), indent + 1);
    QAXML::indent(s, indent);
    s << "</class>\n";
}

bool QAStAClassTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "class")) {
        setValid(false);
        return false;
    }
    const bool valid = QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
    m_inherits = QAXML::domValueList(e.firstChildElement(QStringLiteral("inherits")));
    chooseIcon();
    return valid;
}
