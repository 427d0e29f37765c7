// The settings descriptor: groups and typed entries with their fields,
// paths, filters and initial values.
#include "FuzzSupport.h"

#include "QAPropertyMapGroup.h"
#include "QAPropertyMapLoader.h"
#include "QAStPropertyFilters.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString file = env.writeInput(QStringLiteral("settings.properties"), data, size);
    QAPropertyMapLoader loader;
    std::unique_ptr<QAPropertyMapGroup> root(
        loader.load(file, QAStPropertyFilters::table(), QAStPropertyFilters::masks(), nullptr));
    return 0;
}
