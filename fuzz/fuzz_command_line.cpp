// The command-line splitter of the process runner.
#include "FuzzSupport.h"

#include "QAProcess.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::environment();
    QStringList args;
    QAProcess::commandLineToArgs(QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size)),
                                 args);
    return 0;
}
