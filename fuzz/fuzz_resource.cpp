// The resource grammar (settings descriptor, target-package ini, older
// project formats), and a target package read from what it gave.
#include "FuzzSupport.h"

#include "QARes.h"
#include "QAStTargetPackage.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::environment();
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    std::unique_ptr<QARes> res(QARes::readText(text, QStringLiteral("fuzz.ini")));
    if (res) {
        QAStTargetPackage package;
        package.read(res.get(), QStringLiteral("/fuzz/target"), QStringLiteral("fuzz.ini"));
    }
    return 0;
}
