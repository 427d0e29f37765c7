// The filters export file, imported by the tag browser's manager; what
// loads is matched against a tag and exported again.
#include "FuzzSupport.h"

#include "QATagFilterExpr.h"
#include "QATagFiltersMgr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString file = env.writeInput(QStringLiteral("fuzz.flt"), data, size);
    QATagFiltersMgr manager;
    if (manager.importFile(file) == QAFiltersMgr::ImportResult::Imported) {
        QATagFilterSubject tag{QStringLiteral("Stack::push"), QStringLiteral("method"),
                               QStringLiteral("/src/stack.cpp"), 1};
        manager.match(tag);
        manager.exportFile(env.path(QStringLiteral("export.flt")), manager.filters());
    }
    return 0;
}
