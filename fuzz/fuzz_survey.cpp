// The file survey under a writer that does anything: the input is a script
// of steps on the followed file (append, truncate, replace, remove) and
// ticks, as a runtime and the studio would interleave them.
#include "FuzzSupport.h"

#include "QAFileSurvey.h"

#include <QSaveFile>

namespace {

struct Script {
    const uint8_t* data;
    size_t size;
    size_t at = 0;
    bool atEnd() const { return at >= size; }
    uint8_t next() { return at < size ? data[at++] : 0; }
    QByteArray take(size_t count)
    {
        count = std::min(count, size - at);
        QByteArray bytes(reinterpret_cast<const char*>(data + at), qsizetype(count));
        at += count;
        return bytes;
    }
};

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    env.clear();
    const QString path = env.path(QStringLiteral("followed.out"));
    QAFileSurvey survey(path, 1000, true);
    survey.setModificationDelay(0);
    qint64 received = 0;
    QObject::connect(&survey, &QAFileSurvey::newLines,
                     [&received](const QByteArray& lines) { received += lines.size(); });
    Script script{data, size};
    while (!script.atEnd()) {
        const uint8_t step = script.next();
        switch (step % 8) {
        case 0:
        case 1: {
            QFile file(path);
            if (file.open(QIODevice::Append))
                file.write(script.take(script.next()));
            break;
        }
        case 2: {
            QFile file(path);
            if (file.exists())
                file.resize(std::min<qint64>(file.size(), script.next()));
            break;
        }
        case 3: {
            QSaveFile file(path);
            if (file.open(QIODevice::WriteOnly)) {
                file.write(script.take(script.next()));
                file.commit();
            }
            break;
        }
        case 4:
            QFile::remove(path);
            break;
        case 5:
            survey.finish();
            break;
        case 6:
            survey.setShrinkPolicy(QAFileSurvey::Policy(script.next() % 3));
            survey.setDisappearPolicy(QAFileSurvey::Policy(script.next() % 3));
            break;
        default:
            survey.survey();
            break;
        }
    }
    survey.finish();
    return 0;
}
