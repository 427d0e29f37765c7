#pragma once

#include "sdk110_export.h"

// Interface of an activity plug-in: it keeps its own data in the project
// file but has no item in the project tree, so the factory builds nothing
// for its elements. For now it only marks the plug-in as such.
class SDK110_EXPORT QAIActivityPlugin {
public:
    static const char* interfaceId() { return "sdk110.QAIActivityPlugin/1"; }

    virtual ~QAIActivityPlugin() = default;
};
