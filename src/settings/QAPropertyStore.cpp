#include "QAPropertyStore.h"

#include <QList>
#include <QPair>

#include <atomic>

namespace {

// Every revision comes from one counter, so "no store changed" is one
// comparison; the inheritance generation changes when a chain may have.
std::atomic<quint64> revisions{0};
std::atomic<quint64> inheritance{0};

// Look-ups through a store before its merged view is built: a store
// looked up through once or twice is not worth a copy of its chain.
constexpr int lookupsBeforeMerging = 16;

}

struct QAPropertyStore::MergedView {
    // The state of the process when last found valid: while neither counter
    // moved, nothing in any chain did.
    quint64 revisions = 0;
    quint64 inheritance = 0;
    // The chain (this store first) with each store's revision.
    QList<QPair<const QAPropertyStore*, quint64>> stamps;
    QHash<QString, QVariant> values;
    bool built = false;
    int lookups = 0;
};

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

// A chain holding this store changes with it.
QAPropertyStore::~QAPropertyStore()
{
    inheritanceChanged();
}

void QAPropertyStore::touch()
{
    m_revision = ++revisions;
}

void QAPropertyStore::inheritanceChanged()
{
    ++inheritance;
}

QVariant QAPropertyStore::property(const QString& name) const
{
    const auto own = m_properties.constFind(name);
    if (own != m_properties.cend())
        return *own;
    const QAPropertyStore* inherited = inheritOf();
    if (!inherited)
        return QVariant();
    if (const QHash<QString, QVariant>* merged = inherited->mergedValues())
        return merged->value(name);
    return inherited->property(name);
}

const QHash<QString, QVariant>* QAPropertyStore::mergedValues() const
{
    if (!m_merged)
        m_merged = std::make_unique<MergedView>();
    MergedView& m = *m_merged;
    const quint64 nowRevisions = revisions;
    const quint64 nowInheritance = inheritance;
    if (m.revisions != nowRevisions || m.inheritance != nowInheritance) {
        // Something changed somewhere: the view stands if its chain did not.
        QList<QPair<const QAPropertyStore*, quint64>> stamps;
        stamps.reserve(m.stamps.size());
        for (const QAPropertyStore* s = this; s; s = s->inheritOf()) {
            stamps.append({s, s->m_revision});
            if (stamps.size() > 1000) // a chain that runs in a circle
                return nullptr;
        }
        if (stamps != m.stamps) {
            m.stamps = std::move(stamps);
            m.values = QHash<QString, QVariant>();
            m.built = false;
            m.lookups = 0;
        }
        m.revisions = nowRevisions;
        m.inheritance = nowInheritance;
    }
    if (m.built)
        return &m.values;
    // A store that inherits nothing is its own view.
    if (m.stamps.size() < 2)
        return &m_properties;
    if (++m.lookups < lookupsBeforeMerging)
        return nullptr;
    for (auto s = m.stamps.crbegin(); s != m.stamps.crend(); ++s) {
        const QHash<QString, QVariant>& own = s->first->m_properties;
        for (auto it = own.cbegin(); it != own.cend(); ++it)
            m.values.insert(it.key(), it.value());
    }
    m.built = true;
    return &m.values;
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
