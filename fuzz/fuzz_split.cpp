// The split of the runtime's result stream: the record table, a whole-file
// split, and the same lines split one by one as the survey hands them.
#include "FuzzSupport.h"

#include "QASTSplitSurvey.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    env.clear();
    const QString input = env.writeInput(QStringLiteral("atlout.spt"), data, size);
    QASTSplitSurvey::splitFile(input, env.path(QStringLiteral("whole")));

    QASTSplitSurvey split(env.path(QStringLiteral("none.spt")), env.path(QStringLiteral("a.rio")),
                          env.path(QStringLiteral("a.tdf")), env.path(QStringLiteral("a.tpf")),
                          env.path(QStringLiteral("a.tqf")));
    const QByteArray bytes = Fuzz::bytes(data, size);
    for (const QByteArray& line : bytes.split('\n')) {
        QASTSplitSurvey::recordIndex(line.constData(), line.size());
        split.splitOneLine(line.constData());
    }
    split.closeOutputFile();
    return 0;
}
