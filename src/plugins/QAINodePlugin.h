#pragma once

#include "sdk110_export.h"

#include <QStringList>

// A plug-in of the studio that serves project-file elements the library
// does not know. It is registered with QAStNodePluginCenter, names the
// element tags (features) it serves and hands out its interfaces by id
// (QAIActivityPlugin, QAITestNodePlugin, QAIProjectPlugin).
class SDK110_EXPORT QAINodePlugin {
public:
    virtual ~QAINodePlugin() = default;

    // The tag names of the project-file elements this plug-in serves.
    virtual QStringList features() const = 0;
    // This plug-in's interface of that id, or null. An implementation
    // compares the id with the interfaces' interfaceId() and returns
    // static_cast<Interface*>(this).
    virtual void* queryInterface(const char* interfaceId) = 0;
};
