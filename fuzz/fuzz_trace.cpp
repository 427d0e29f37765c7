// The trace of a run (.tdf): read whole from a file and fed in two
// blocks, then written as trace-event JSON, which must parse.
#include "FuzzSupport.h"

#include "QAStChromeTrace.h"
#include "QAStTraceReport.h"

#include <QBuffer>
#include <QJsonDocument>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString input = env.writeInput(QStringLiteral("t.tdf"), data, size);
    QAStTraceReport trace;
    trace.readFile(input);
    QBuffer json;
    json.open(QIODevice::WriteOnly);
    QAStChromeTrace::write(&json, trace);
    QJsonParseError error;
    QJsonDocument::fromJson(json.data(), &error);
    if (error.error != QJsonParseError::NoError)
        abort(); // the writer made JSON that does not parse

    QAStTraceReport followed;
    const QByteArray bytes = Fuzz::bytes(data, size);
    const qsizetype cut = bytes.indexOf('\n', bytes.size() / 2) + 1;
    followed.addLines(bytes.left(cut));
    followed.addLines(bytes.mid(cut));
    followed.openCalls();
    return 0;
}
