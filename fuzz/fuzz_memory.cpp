// The memory profile of a run (.tpf): read whole from a file and fed in
// two blocks, the blocks left grouped by function.
#include "FuzzSupport.h"

#include "QAStMemoryReport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString input = env.writeInput(QStringLiteral("t.tpf"), data, size);
    QAStMemoryReport memory;
    memory.readFile(input);
    memory.sites();
    memory.bytesLeft();
    memory.peakBytes();

    QAStMemoryReport followed;
    const QByteArray bytes = Fuzz::bytes(data, size);
    const qsizetype cut = bytes.indexOf('\n', bytes.size() / 2) + 1;
    followed.addLines(bytes.left(cut));
    followed.blocksLeft();
    followed.addLines(bytes.mid(cut));
    followed.sites();
    return 0;
}
