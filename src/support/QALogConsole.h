#pragma once

#include "QALog.h"
#include "sdk110_export.h"

class QTextStream;

// Logging to text streams, for hosts without a window: log() writes to the
// log stream, error() to the error stream. Each text is written as one
// line (a newline is added when it has none) and the stream is flushed, so
// that the two streams interleave as the texts came. A null stream drops
// its texts. The streams are not owned.
//
//   QTextStream out(stdout), err(stderr);
//   QALogConsole console(&out, &err);
class SDK110_EXPORT QALogConsole : public QALog {
public:
    explicit QALogConsole(QTextStream* logStream = nullptr, QTextStream* errorStream = nullptr);

    void log(const QString& text) override;
    void error(const QString& text) override;

    QTextStream* logStream() const { return m_log; }
    QTextStream* errorStream() const { return m_error; }
    void setLogStream(QTextStream* stream) { m_log = stream; }
    void setErrorStream(QTextStream* stream) { m_error = stream; }

private:
    static void writeLine(QTextStream* stream, const QString& text);

    QTextStream* m_log;
    QTextStream* m_error;
};
