// The object information file (".inf"): the folder and file tree of a
// project, normalized and written again as a save would.
#include "FuzzSupport.h"

#include "QAStRootFolder.h"

#include <QTextStream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString file = env.writeInput(QStringLiteral("p.inf"), data, size);
    QAStRootFolder root(QStringLiteral("p"));
    if (root.open(file)) {
        root.normalize();
        QString text;
        QTextStream out(&text);
        root.writeDocument(out);
    }
    return 0;
}
