// The coverage file of a test run: its records read, then written again as
// an lcov tracefile and a Cobertura report.
#include "FuzzSupport.h"

#include "QAStCoverageReport.h"

#include <QBuffer>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::environment();
    QAStCoverageReport report;
    report.readData(Fuzz::bytes(data, size), QStringLiteral("fuzz.tio"));
    QBuffer lcov;
    lcov.open(QIODevice::WriteOnly);
    report.writeLcov(&lcov, QStringLiteral("fuzz"));
    QBuffer cobertura;
    cobertura.open(QIODevice::WriteOnly);
    report.writeCobertura(&cobertura, QStringLiteral("/p"));
    return 0;
}
