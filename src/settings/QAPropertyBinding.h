#pragma once

#include "QAPropertyMapGroup.h"
#include "QAPropertyStore.h"
#include "QAStAttribute.h"

#include <utility>

// The two storage bindings shared by every value kind. Each kind's bound
// classes (QAPropertyMapInt, QAPropertyAttrInt, ...) derive from these with
// the abstract kind as Kind, which supplies type(), displayValue() and the
// editor; the binding supplies the value and its inheritance.
//
// Kind::convertedValue(type, v) gives the form in which an edited value is
// stored; QAProperty supplies the conversion by type and a kind may hide it
// with a stricter one (the line edit flattens its text).

// Bound to the key tag() of the store of the map group holding the property.
template <class Kind>
class SDK110_EXPORT QAPropertyMapBinding : public Kind {
public:
    // The tag is the key in the store; the remaining arguments go to the kind.
    template <class... KindArgs>
    explicit QAPropertyMapBinding(const QString& tag = QString(), KindArgs&&... kindArgs)
        : Kind(std::forward<KindArgs>(kindArgs)...)
    {
        this->setTag(tag);
    }

    // The store of the map group holding the property; null outside one.
    QAPropertyStore* propertyStore() const { return QAPropertyMapGroup::storeOf(*this); }

    bool isOverriden() const override
    {
        const QAPropertyStore* store = propertyStore();
        return store && store->hasProperty(this->tag());
    }

    // Only below the top of the store chain is there something to show
    // once the local value is gone.
    bool isResetable() const override
    {
        const QAPropertyStore* store = propertyStore();
        return store && store->inheritOf();
    }

    void reset() override
    {
        if (QAPropertyStore* store = propertyStore())
            store->unsetProperty(this->tag());
    }

    // Writes the bound store only, never an inherited one.
    void setValue(const QVariant& v) override
    {
        if (QAPropertyStore* store = propertyStore())
            store->setProperty(this->tag(), Kind::convertedValue(this->type(), v));
    }

    // A value of another type than the kind's is deliberately not shown.
    QVariant value() const override
    {
        if (const QAPropertyStore* store = propertyStore()) {
            const QVariant v = store->property(this->tag());
            if (v.typeId() == this->type())
                return v;
        }
        return QAProperty::emptyValue(this->type());
    }
};

// Bound to one QAStAttribute<T> of a project item (not owned).
template <class Kind, class T>
class SDK110_EXPORT QAPropertyAttrBinding : public Kind {
public:
    using Attribute = QAStAttribute<T>;

    // The remaining arguments go to the kind.
    template <class... KindArgs>
    explicit QAPropertyAttrBinding(Attribute* attribute = nullptr, KindArgs&&... kindArgs)
        : Kind(std::forward<KindArgs>(kindArgs)...)
        , m_attribute(attribute)
    {
    }

    Attribute* attribute() const { return m_attribute; }
    void setAttribute(Attribute* attribute) { m_attribute = attribute; }

    bool isOverriden() const override { return m_attribute && m_attribute->isOverriden(); }
    bool isResetable() const override { return m_attribute && m_attribute->inheritOf(); }

    // The local value stays in the attribute but is no longer used.
    void reset() override
    {
        if (m_attribute)
            m_attribute->reset();
    }

    void setValue(const QVariant& v) override
    {
        if (m_attribute)
            m_attribute->setValue(v.value<T>());
    }

    // The first overridden value up the inherit chain, else the top's own.
    QVariant value() const override
    {
        if (!m_attribute)
            return QAProperty::emptyValue(this->type());
        return QVariant::fromValue(m_attribute->value());
    }

private:
    Attribute* m_attribute;
};
