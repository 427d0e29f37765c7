#pragma once

#include "QAPropertyGroup.h"

class QAPropertyStore;

// A group of map-bound properties. Binding it to a store binds every map
// group below it, so one call points a whole descriptor tree at the store
// of another node or configuration. The store is not owned.
//
// A map-bound property reads and writes the store of the map group that
// holds it directly. One held by a plain QAPropertyGroup has no store, even
// when that group lies inside a map group: binding passes through map
// groups only, so such a property would otherwise show a store the group
// above it chose. A copy (QAPropertyGroup's rule) keeps the store.
class SDK110_EXPORT QAPropertyMapGroup : public QAPropertyGroup {
public:
    explicit QAPropertyMapGroup(const QString& name = QString());
    ~QAPropertyMapGroup() override;

    // Binds this group and, in child order, every child that is a map group.
    void setPropertyStore(QAPropertyStore* store);
    QAPropertyStore* propertyStore() const { return m_store; }

    // The store of the map group holding the property directly; null when
    // it is held by no group or by a plain group.
    static QAPropertyStore* storeOf(const QAProperty& property);

private:
    QAPropertyStore* m_store = nullptr;
};
