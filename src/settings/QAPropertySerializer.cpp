#include "QAPropertySerializer.h"

#include "QAPropertyGroup.h"
#include "QAPropertyStore.h"
#include "QARes.h"
#include "QAXML.h"

#include <QDomElement>
#include <QTextStream>

namespace {

const QAPropertyGroup* asGroup(const QAProperty* p)
{
    return dynamic_cast<const QAPropertyGroup*>(p);
}

QMap<QString, QString> toStringMap(const QVariantMap& map)
{
    QMap<QString, QString> strings;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        strings.insert(it.key(), it.value().toString());
    return strings;
}

QVariantMap toVariantMap(const QMap<QString, QString>& map)
{
    QVariantMap variants;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        variants.insert(it.key(), it.value());
    return variants;
}

// The text of a value in the project file's XML encoding.
QString encodedValue(const QVariant& v)
{
    switch (v.typeId()) {
    case QMetaType::UnknownType:
        return QStringLiteral("null");
    case QMetaType::Bool:
        return QAXML::boolToXMLValue(v.toBool());
    case QMetaType::Int:
        return QAXML::fromInt(v.toInt());
    case QMetaType::UInt:
        return QAXML::fromUInt(v.toUInt());
    case QMetaType::QStringList:
        return QAXML::stringListToXMLValue(v.toStringList());
    case QMetaType::QVariantMap:
        return QAXML::stringMapToXMLValue(toStringMap(v.toMap()));
    default:
        return QAXML::stringToXMLValue(v.toString());
    }
}

void writeLeaves(const QAPropertyStore& store, const QAPropertyGroup& group, QTextStream& s,
                 int indent)
{
    for (const QAProperty* child : group.children()) {
        if (const QAPropertyGroup* subGroup = asGroup(child)) {
            writeLeaves(store, *subGroup, s, indent);
        } else if (store.hasProperty(child->tag())) {
            QAXML::indent(s, indent);
            s << '<' << child->tag() << '>' << encodedValue(store.localProperty(child->tag()))
              << "</" << child->tag() << ">\n";
        }
    }
}

// Stores the text of an element as the type the property describes; other
// types are not read.
void readLeaf(QAPropertyStore& store, const QAProperty& leaf, const QDomElement& e)
{
    const QString& tag = leaf.tag();
    switch (leaf.type()) {
    case QMetaType::QString:
        store.setProperty(tag, QAXML::domValue(e));
        break;
    case QMetaType::QByteArray:
        store.setProperty(tag, QAXML::domValue(e).toUtf8());
        break;
    case QMetaType::Bool:
        store.setProperty(tag, QAXML::toBool(QAXML::domText(e)));
        break;
    case QMetaType::UInt:
        store.setProperty(tag, QAXML::toUInt(QAXML::domText(e)));
        break;
    case QMetaType::Int:
        store.setProperty(tag, QAXML::toInt(QAXML::domText(e)));
        break;
    case QMetaType::QStringList:
        store.setProperty(tag, QAXML::domValueList(e));
        break;
    case QMetaType::QVariantMap:
        store.setProperty(tag, toVariantMap(QAXML::domValueMap(e)));
        break;
    default:
        break;
    }
}

void readLeaves(QAPropertyStore& store, const QAPropertyGroup& group, const QDomElement& element)
{
    for (const QAProperty* child : group.children()) {
        if (const QAPropertyGroup* subGroup = asGroup(child)) {
            readLeaves(store, *subGroup, element);
            continue;
        }
        const QDomElement e = element.firstChildElement(child->tag());
        if (!e.isNull())
            readLeaf(store, *child, e);
    }
}

// Entries "key=value", split at the first "="; an entry without one is a
// key with an empty value.
QVariantMap entriesToMap(const QStringList& entries)
{
    QVariantMap map;
    for (const QString& entry : entries) {
        const int eq = entry.indexOf(QLatin1Char('='));
        if (eq < 0)
            map.insert(entry, QString());
        else
            map.insert(entry.left(eq), entry.mid(eq + 1));
    }
    return map;
}

// Stores a resource by its own kind; a list of strings becomes a map for a
// Map-typed property.
void readResource(QAPropertyStore& store, const QAProperty& leaf, QARes& res)
{
    const QString& tag = leaf.tag();
    if (res.isString()) {
        store.setProperty(tag, res.toResString()->value());
    } else if (res.isBoolean()) {
        store.setProperty(tag, res.toResBoolean()->value());
    } else if (res.isInt()) {
        store.setProperty(tag, int(res.toResInt()->value()));
    } else if (res.isList() && res.isListOf(QARes::String)) {
        const QStringList strings = res.toResList()->strings();
        if (leaf.type() == QMetaType::QVariantMap)
            store.setProperty(tag, entriesToMap(strings));
        else
            store.setProperty(tag, strings);
    }
}

void readResources(QAPropertyStore& store, const QAPropertyGroup& group, const QARes& res)
{
    for (const QAProperty* child : group.children()) {
        if (const QAPropertyGroup* subGroup = asGroup(child)) {
            readResources(store, *subGroup, res);
        } else if (QARes* found = res.search(child->tag(), QLatin1Char('.'))) {
            readResource(store, *child, *found);
        }
    }
}

}

void QAPropertySerializer::write(QAPropertyStore* store, QAPropertyGroup* group, QTextStream& s,
                                 int indent)
{
    if (store && group)
        writeLeaves(*store, *group, s, indent);
}

void QAPropertySerializer::write(QAPropertyStore* store, QAPropertyGroup* group,
                                 const QString& element, QTextStream& s, int indent)
{
    QAXML::indent(s, indent);
    s << '<' << element << ">\n";
    write(store, group, s, indent + 1);
    QAXML::indent(s, indent);
    s << "</" << element << ">\n";
}

void QAPropertySerializer::read(QAPropertyStore* store, QAPropertyGroup* group,
                                const QDomElement& element)
{
    if (store && group)
        readLeaves(*store, *group, element);
}

void QAPropertySerializer::read(QAPropertyStore* store, QAPropertyGroup* group, QARes* res)
{
    if (store && group && res)
        readResources(*store, *group, *res);
}
