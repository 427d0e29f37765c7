#include "QAProperty.h"

#include "QAPropertyGroup.h"

#include <QStringList>

struct QAProperty::Private {
    QString m_name;
    QString m_whatThis;
    QString m_tag;
    bool m_readOnly = false;
    const QValidator* m_validator = nullptr;
    QString m_perlVarName;
    QVariant m_initValue;
    unsigned int m_applyMask = 0;
    unsigned int m_unapplyMask = 0;
    QAPropertyGroup* m_parent = nullptr;
};

QAProperty::QAProperty(const QString& name) : d(std::make_unique<Private>())
{
    d->m_name = name;
}

QAProperty::QAProperty(const QAProperty& other) : d(std::make_unique<Private>(*other.d))
{
    d->m_parent = nullptr;
}

QAProperty& QAProperty::operator=(const QAProperty& other)
{
    if (this == &other)
        return *this;
    QAPropertyGroup* group = d->m_parent;
    *d = *other.d;
    d->m_parent = group;
    return *this;
}

QAProperty::~QAProperty()
{
    if (d->m_parent)
        d->m_parent->removeChild(this);
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

const QString& QAProperty::name() const
{
    return d->m_name;
}

void QAProperty::setName(const QString& name)
{
    d->m_name = name;
}

const QString& QAProperty::whatThis() const
{
    return d->m_whatThis;
}

void QAProperty::setWhatThis(const QString& whatThis)
{
    d->m_whatThis = whatThis;
}

const QString& QAProperty::tag() const
{
    return d->m_tag;
}

void QAProperty::setTag(const QString& tag)
{
    d->m_tag = tag;
}

bool QAProperty::readOnly() const
{
    return d->m_readOnly;
}

void QAProperty::setReadOnly(bool readOnly)
{
    d->m_readOnly = readOnly;
}

const QValidator* QAProperty::validator() const
{
    return d->m_validator;
}

void QAProperty::setValidator(const QValidator* validator)
{
    d->m_validator = validator;
}

const QString& QAProperty::perlVarName() const
{
    return d->m_perlVarName;
}

void QAProperty::setPerlVarName(const QString& perlVarName)
{
    d->m_perlVarName = perlVarName;
}

const QVariant& QAProperty::initValue() const
{
    return d->m_initValue;
}

void QAProperty::setInitValue(const QVariant& initValue)
{
    d->m_initValue = initValue;
}

bool QAProperty::hasInitValue() const
{
    return d->m_initValue.isValid();
}

unsigned int QAProperty::applyMask() const
{
    return d->m_applyMask;
}

void QAProperty::setApplyMask(unsigned int mask)
{
    d->m_applyMask = mask;
}

unsigned int QAProperty::unapplyMask() const
{
    return d->m_unapplyMask;
}

void QAProperty::setUnapplyMask(unsigned int mask)
{
    d->m_unapplyMask = mask;
}

QAPropertyGroup* QAProperty::parentGroup() const
{
    return d->m_parent;
}

void QAProperty::setParentGroup(QAPropertyGroup* group)
{
    d->m_parent = group;
}
