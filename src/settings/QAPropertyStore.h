#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

// A map from setting key to value whose look-up falls back, key by key, to
// the store it inherits from (inheritOf(), null in this class). Writes only
// ever touch this store's own map.
class SDK110_EXPORT QAPropertyStore : public QObject {
    Q_OBJECT
public:
    explicit QAPropertyStore(QObject* parent = nullptr, const char* name = nullptr);
    // Copies the map and the object name; the copy has no parent.
    QAPropertyStore(const QAPropertyStore& other);
    // Copies the map; the object keeps its name and parent.
    QAPropertyStore& operator=(const QAPropertyStore& other);
    ~QAPropertyStore() override;

    // The effective value: the own entry, else the inherited store's
    // property(), else an invalid variant.
    virtual QVariant property(const QString& name) const;
    // The store this one inherits from, or null. A subclass whose answer
    // can change (its owner moved, a store added or removed) calls
    // inheritanceChanged() when it does: stores keep what they inherit
    // until then or until a value changes.
    virtual QAPropertyStore* inheritOf() const;
    static void inheritanceChanged();

    // True when the key is in this store's own map (inheritance not consulted).
    bool hasProperty(const QString& name) const { return m_properties.contains(name); }
    // The own entry only; invalid when absent.
    QVariant localProperty(const QString& name) const { return m_properties.value(name); }
    // The own entries.
    const QHash<QString, QVariant>& localProperties() const { return m_properties; }
    // Changes with every change of the own entries (and differs between
    // any two stores that lived in the process): who keeps values read
    // from a store knows when to read them again.
    quint64 revision() const { return m_revision; }
    // The own keys, sorted.
    QStringList propertyNames() const;

    void setProperty(const QString& name, int v);
    void setProperty(const QString& name, bool v);
    void setProperty(const QString& name, unsigned int v);
    void setProperty(const QString& name, double v);
    void setProperty(const QString& name, float v);
    void setProperty(const QString& name, const QString& v);
    void setProperty(const QString& name, const QByteArray& v);
    void setProperty(const QString& name, const QStringList& v);
    void setProperty(const QString& name, const char* v);
    void setProperty(const QString& name, const QMap<QString, QVariant>& v);
    void setProperty(const QString& name, const QVariant& v);

    void unsetProperty(const QString& name);
    void clear();

private:
    // A fresh revision from a process-wide counter.
    void touch();
    // The values of this store and of every store it inherits from, the
    // nearest winning, once looked up through often enough to pay for
    // itself; null until then. Kept with the revisions of the chain.
    const QHash<QString, QVariant>* mergedValues() const;

    struct MergedView;
    QHash<QString, QVariant> m_properties;
    quint64 m_revision = 0;
    mutable std::unique_ptr<MergedView> m_merged;
};
