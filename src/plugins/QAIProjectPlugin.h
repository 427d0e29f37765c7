#pragma once

#include "sdk110_export.h"

#include <QString>

class QAStData;
class QDomElement;

// Interface of a plug-in that adds items of its own to projects.
class SDK110_EXPORT QAIProjectPlugin {
public:
    static const char* interfaceId() { return "sdk110.QAIProjectPlugin/1"; }

    virtual ~QAIProjectPlugin() = default;

    // Builds the item read from element e (whose tag is feature), inside
    // parent behind after; null when it cannot.
    virtual QAStData* createProjectItem(const QString& feature, const QDomElement& e, int version,
                                        QAStData* parent, QAStData* after) = 0;
};
