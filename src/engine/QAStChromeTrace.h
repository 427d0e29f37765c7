#pragma once

#include "sdk110_export.h"

#include <QString>

class QAStTraceReport;
class QIODevice;

// Writes the calls of a trace in the trace-event JSON form that trace
// viewers open (docs/formats/reports.md): one complete event ("ph":"X")
// per call with its function as name, its start and length in
// microseconds (ts, dur), the program's process id (pid) and its thread
// (tid; the process id for records without a thread), and one metadata
// event per program naming it. A call that did not return carries
// "args":{"incomplete":true}. The events are streamed in blocks, so a
// large trace needs no more memory than its report.
class SDK110_EXPORT QAStChromeTrace {
public:
    // False when the device fails.
    static bool write(QIODevice* device, const QAStTraceReport& trace);
    // Writes path whole or not at all; false with the reason, naming the
    // file, in *error.
    static bool writeFile(const QString& path, const QAStTraceReport& trace, QString* error);
};
