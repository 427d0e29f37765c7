#include "QAPropertyStore.h"

#include <atomic>

QAPropertyStore::QAPropertyStore(QObject* parent, const char* name)
    : QObject(parent)
{
    if (name)
        setObjectName(QString::fromUtf8(name));
    touch();
}

QAPropertyStore::QAPropertyStore(const QAPropertyStore& other)
    : QObject()
    , m_properties(other.m_properties)
{
    setObjectName(other.objectName());
    touch();
}

QAPropertyStore& QAPropertyStore::operator=(const QAPropertyStore& other)
{
    m_properties = other.m_properties;
    touch();
    return *this;
}

QAPropertyStore::~QAPropertyStore() = default;

void QAPropertyStore::touch()
{
    static std::atomic<quint64> counter{0};
    m_revision = ++counter;
}

QVariant QAPropertyStore::property(const QString& name) const
{
    const auto own = m_properties.constFind(name);
    if (own != m_properties.cend())
        return *own;
    const QAPropertyStore* inherited = inheritOf();
    return inherited ? inherited->property(name) : QVariant();
}

QAPropertyStore* QAPropertyStore::inheritOf() const
{
    return nullptr;
}

QStringList QAPropertyStore::propertyNames() const
{
    QStringList names = m_properties.keys();
    names.sort();
    return names;
}

void QAPropertyStore::setProperty(const QString& name, int v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, bool v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, unsigned int v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, double v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, float v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const QString& v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const QByteArray& v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const QStringList& v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const char* v)
{
    m_properties.insert(name, QString::fromUtf8(v));
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const QMap<QString, QVariant>& v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::setProperty(const QString& name, const QVariant& v)
{
    m_properties.insert(name, v);
    touch();
}

void QAPropertyStore::unsetProperty(const QString& name)
{
    m_properties.remove(name);
    touch();
}

void QAPropertyStore::clear()
{
    m_properties.clear();
    touch();
}
