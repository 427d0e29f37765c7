// The project file: XML or one of the older resource formats, found by the
// project's own look at the file, with its object information file beside
// it (rebuilt in batch mode when missing).
#include "FuzzSupport.h"

#include "QAStProject.h"

#include <QPixmap>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    env.loadDescriptor();
    env.clear();
    const QString file = env.writeInput(QStringLiteral("p.rtp"), data, size);
    QAStProject project(QStringLiteral("p"), QPixmap());
    project.open(file);
    return 0;
}
