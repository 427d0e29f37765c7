// The test results of a run (.rio and the end-of-test line): read whole
// from a file, fed line block by line block as a view following the file
// gets them, and written as JUnit XML.
#include "FuzzSupport.h"

#include "QAStJUnitWriter.h"
#include "QAStTestResults.h"

#include <QBuffer>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    const QString input = env.writeInput(QStringLiteral("t.rio"), data, size);
    QAStTestResults results;
    results.readFiles(input, input);
    results.skippedText();
    QBuffer junit;
    junit.open(QIODevice::WriteOnly);
    QAStJUnitWriter::write(&junit, {{QStringLiteral("node"), &results}});

    QAStTestResults followed;
    const QByteArray bytes = Fuzz::bytes(data, size);
    const qsizetype cut = bytes.indexOf('\n', bytes.size() / 2) + 1;
    followed.addLines(bytes.left(cut));
    followed.addLines(bytes.mid(cut));
    return 0;
}
