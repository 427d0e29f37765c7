#pragma once

#include "sdk110_export.h"

#include <QString>

class QAStData;
class QDomElement;

// Interface of a plug-in that adds a kind of test node to projects.
class SDK110_EXPORT QAITestNodePlugin {
public:
    static const char* interfaceId() { return "sdk110.QAITestNodePlugin/1"; }

    virtual ~QAITestNodePlugin() = default;

    // Builds the test node read from element e (whose tag is feature),
    // inside parent behind after; null when it cannot.
    virtual QAStData* createTestNode(const QString& feature, const QDomElement& e, int version,
                                     QAStData* parent, QAStData* after) = 0;
};
