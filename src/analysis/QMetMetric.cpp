#include "QMetMetric.h"

#include "QMetElement.h"

#include <QDomElement>

#include <cmath>

QMetMetric::QMetMetric(const QDomElement& e, QMetElement* owner)
    : m_owner(owner)
    , m_key(e.attribute(QStringLiteral("Key")))
    , m_name(m_key)
{
    bool ok = false;
    m_value = textToFloat(e.attribute(QStringLiteral("Value")), &ok);
    m_valid = ok && !m_key.isEmpty();
}

QMetMetric::QMetMetric(QMetElement* owner, const QString& key, const QString& name, float value,
                       Kind kind)
    : m_owner(owner)
    , m_key(key)
    , m_name(name)
    , m_value(value)
    , m_kind(kind)
{
}

float QMetMetric::textToFloat(const QString& text, bool* ok)
{
    bool converted = false;
    float value = text.toFloat(&converted);
    if (!converted || !std::isfinite(value)) {
        converted = false;
        value = 0;
    }
    if (ok)
        *ok = converted;
    return value;
}
