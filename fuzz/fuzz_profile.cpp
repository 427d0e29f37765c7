// The performance profile of a run (.tqf): read whole from a file and fed
// in two blocks, then sorted.
#include "FuzzSupport.h"

#include "QAStProfileReport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString input = env.writeInput(QStringLiteral("t.tqf"), data, size);
    QAStProfileReport profile;
    profile.readFile(input);
    profile.functions();
    profile.totalSelf();
    profile.skippedText();

    QAStProfileReport followed;
    const QByteArray bytes = Fuzz::bytes(data, size);
    const qsizetype cut = bytes.indexOf('\n', bytes.size() / 2) + 1;
    followed.addLines(bytes.left(cut));
    followed.functions();
    followed.addLines(bytes.mid(cut));
    followed.functions();
    return 0;
}
