#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

// One inheritable field of a project item: the local value, whether it was
// set on this item, and the same field of the item it inherits from (not
// owned; null at the top of the chain).
template <typename T>
class QAStAttribute {
public:
    QAStAttribute() = default;
    explicit QAStAttribute(const T& initial, QAStAttribute* inherit = nullptr)
        : m_value(initial), m_inherit(inherit) {}

    // The local value, whether or not it is overridden.
    const T& localValue() const { return m_value; }

    // The effective value: the local one when overridden, else the first
    // overridden one up the chain, else the top attribute's own value.
    const T& value() const
    {
        const QAStAttribute* a = this;
        while (!a->m_overridden && a->m_inherit)
            a = a->m_inherit;
        return a->m_value;
    }

    // Sets the local value and marks it overridden.
    void setValue(const T& v)
    {
        m_value = v;
        m_overridden = true;
    }

    // Forgets the local value so that the inherited one shows again. The
    // value stays in memory but is no longer used.
    void reset() { m_overridden = false; }

    bool isOverriden() const { return m_overridden; }
    void setOverriden(bool o) { m_overridden = o; }

    QAStAttribute* inheritOf() const { return m_inherit; }
    void setInheritOf(QAStAttribute* inherit) { m_inherit = inherit; }

    operator const T&() const { return value(); }
    QAStAttribute& operator=(const T& v)
    {
        setValue(v);
        return *this;
    }

private:
    T m_value{};
    bool m_overridden = false;
    QAStAttribute* m_inherit = nullptr;
};

using QAStIntAttribute = QAStAttribute<int>;
using QAStBoolAttribute = QAStAttribute<bool>;
using QAStStringAttribute = QAStAttribute<QString>;
using QAStStringListAttribute = QAStAttribute<QStringList>;
using QAStStringMapAttribute = QAStAttribute<QMap<QString, QString>>;
