#pragma once

#include "QAStDataFactory.h"

#include <QDomDocument>
#include <QDomElement>

#include <memory>

// The item the factory builds from XML text, as a project file holds it.
inline std::unique_ptr<QAStData> buildItem(const QString& xml, QAStData* parent = nullptr)
{
    QDomDocument doc;
    doc.setContent(xml);
    return std::unique_ptr<QAStData>(QAStDataFactory::create(doc.documentElement(), 1, parent, nullptr));
}
