// The message analysis of the output window: every line of the input is
// one line of tool output.
#include "FuzzSupport.h"

#include "QAStAnalyseMsg.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::environment();
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        QAStAnalyseMsg message;
        QAStAnalyseMsg::fileNameStart(line);
        if (message.analyze(line))
            QAStAnalyseMsg::resolvedFile(message.fileName(), QStringLiteral("/fuzz/base"));
    }
    return 0;
}
