#pragma once

#include "QAILogMonitor.h"
#include "sdk110_export.h"

#include <QString>

// The logging operations shared by the sinks of texts: the output window
// (QAStOutputWidget), text streams (QALogConsole) and message boxes
// (QALogMessageBox). log() takes a normal text, error() a fault; a sink
// remembers that a fault was reported until resetError().
//
// Being a QAILogMonitor, any sink also receives the messages of the
// operations that report through one (the settings descriptor loader, the
// target-package scan).
class SDK110_EXPORT QALog : public QAILogMonitor {
public:
    ~QALog() override = default;

    void log(const QString& text) override = 0;
    virtual void error(const QString& text) = 0;
    // Forgets the faults reported so far.
    virtual void resetError() { m_errors = 0; }

    // The faults reported through error() since the last resetError().
    int errorCount() const { return m_errors; }
    bool hasError() const { return m_errors > 0; }

protected:
    // Every error() calls this once.
    void countError() { ++m_errors; }

private:
    int m_errors = 0;
};
