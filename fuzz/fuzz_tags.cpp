// The tag file: records below a file item, with parents and scopes, made
// items by a walk.
#include "FuzzSupport.h"

#include "QAStFile.h"
#include "QAStTagFileReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::environment();
    QAStFile file(QStringLiteral("/fuzz/source.cpp"));
    QAStTagFileReader reader(&file);
    reader.readText(QByteArrayView(reinterpret_cast<const char*>(data), qsizetype(size)),
                    QStringLiteral("fuzz.tags"));
    // The rows kept are made items here, parents and all.
    file.descendants();
    return 0;
}
