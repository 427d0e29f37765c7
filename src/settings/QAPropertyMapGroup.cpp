#include "QAPropertyMapGroup.h"

QAPropertyMapGroup::QAPropertyMapGroup(const QString& name)
    : QAPropertyGroup(name)
{
}

QAPropertyMapGroup::~QAPropertyMapGroup() = default;

void QAPropertyMapGroup::setPropertyStore(QAPropertyStore* store)
{
    m_store = store;
    for (QAProperty* child : children()) {
        if (auto* mapGroup = dynamic_cast<QAPropertyMapGroup*>(child))
            mapGroup->setPropertyStore(store);
    }
}

QAPropertyStore* QAPropertyMapGroup::storeOf(const QAProperty& property)
{
    const auto* mapGroup = dynamic_cast<const QAPropertyMapGroup*>(property.parentGroup());
    return mapGroup ? mapGroup->propertyStore() : nullptr;
}
