#pragma once

#include "QAPropertyGroup.h"

class QAPropertyStore;

// A group of map-bound properties. Binding it to a store binds every map
// group below it, so one call points a whole descriptor tree at the store
// of another node or configuration. The store is not owned.
class SDK110_EXPORT QAPropertyMapGroup : public QAPropertyGroup {
public:
    explicit QAPropertyMapGroup(const QString& name = QString());
    ~QAPropertyMapGroup() override;

    // Binds this group and, in child order, every child that is a map group.
    void setPropertyStore(QAPropertyStore* store);
    QAPropertyStore* propertyStore() const { return m_store; }

    // The store of the nearest map group holding the property, or null.
    static QAPropertyStore* storeOf(const QAProperty& property);

private:
    QAPropertyStore* m_store = nullptr;
};
