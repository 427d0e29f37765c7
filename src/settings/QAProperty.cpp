#include "QAProperty.h"

#include "QAPropertyGroup.h"

#include <QStringList>

QAProperty::QAProperty(const QString& name)
    : m_name(name)
{
}

QAProperty::QAProperty(const QAProperty& other)
    : m_name(other.m_name)
    , m_whatThis(other.m_whatThis)
    , m_tag(other.m_tag)
    , m_readOnly(other.m_readOnly)
    , m_validator(other.m_validator)
    , m_perlVarName(other.m_perlVarName)
    , m_initValue(other.m_initValue)
    , m_applyMask(other.m_applyMask)
    , m_unapplyMask(other.m_unapplyMask)
{
}

QAProperty& QAProperty::operator=(const QAProperty& other)
{
    m_name = other.m_name;
    m_whatThis = other.m_whatThis;
    m_tag = other.m_tag;
    m_readOnly = other.m_readOnly;
    m_validator = other.m_validator;
    m_perlVarName = other.m_perlVarName;
    m_initValue = other.m_initValue;
    m_applyMask = other.m_applyMask;
    m_unapplyMask = other.m_unapplyMask;
    return *this;
}

QAProperty::~QAProperty()
{
    if (m_parent)
        m_parent->removeChild(this);
}

bool QAProperty::isGroup() const
{
    return false;
}

QVariant QAProperty::convertedValue(QMetaType::Type type, const QVariant& v)
{
    switch (type) {
    case QMetaType::Int:
        return v.toInt();
    case QMetaType::Bool:
        return v.toBool();
    case QMetaType::QString:
        return v.toString();
    case QMetaType::QStringList:
        return v.toStringList();
    default:
        return v;
    }
}

QVariant QAProperty::emptyValue(QMetaType::Type type)
{
    switch (type) {
    case QMetaType::QString:
        return QString();
    case QMetaType::QStringList:
        return QStringList();
    default:
        return QVariant();
    }
}
