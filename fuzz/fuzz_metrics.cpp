// The metrics file: elements and their metrics into a metrics tree.
#include "FuzzSupport.h"

#include "QMetReader.h"
#include "QMetTree.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString file = env.writeInput(QStringLiteral("fuzz.met"), data, size);
    QMetTree tree{QStringList()};
    QMetReader reader(QStringList(), &tree);
    reader.addMetFile(file);
    return 0;
}
