#pragma once

#include "sdk110_export.h"

#include <QString>

// Receives the messages of a long operation that reads files (the settings
// descriptor loader, the target-package scan): one text per fault, already
// naming the file and the line where there is one.
class SDK110_EXPORT QAILogMonitor {
public:
    virtual ~QAILogMonitor() = default;
    virtual void log(const QString& message) = 0;
};
