#include "BigProject.h"
#include "Harness.h"

#include "QAStNode.h"
#include "QAStProject.h"

#include <QElapsedTimer>
#include <QTextStream>

#include <cstdio>
#include <memory>

namespace {

struct LoadedProject {
    QAStProject project{QStringLiteral("big"), QPixmap()};
    QList<QAStData*> nodes;   // every node
    QList<QAStData*> tenth;   // every tenth node
    QByteArray script;        // reused, so that growing it costs nothing
};

// Writes the environment script of each node in turn, as a build of those
// nodes would; returns the bytes written.
qint64 generate(LoadedProject& loaded, const QList<QAStData*>& nodes)
{
    qint64 written = 0;
    for (QAStData* node : nodes) {
        loaded.script.clear();
        QTextStream out(&loaded.script);
        node->createEnvironmentFile(out);
        out.flush();
        written += loaded.script.size();
    }
    Bench::keep(loaded.script.constData());
    return written;
}

}

SDK110_BENCHMARK(environmentScripts, "environment: scripts of 10,000 nodes")
{
    const std::shared_ptr<GeneratedProject> generated = bigProject();
    auto loaded = std::make_shared<LoadedProject>();
    loaded->project.open(generated->path);
    loaded->nodes = loaded->project.childrenOfClass("QAStNode", true);
    for (qsizetype i = 0; i < loaded->nodes.size(); i += 10)
        loaded->tenth.append(loaded->nodes.at(i));

    QElapsedTimer timer;
    timer.start();
    const qint64 bytes = generate(*loaded, loaded->nodes);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    std::printf("  %lld nodes, %.1f ms in all: %.1f us and %lld bytes per node\n",
                static_cast<long long>(loaded->nodes.size()), ms,
                1000.0 * ms / double(loaded->nodes.size()),
                static_cast<long long>(bytes / loaded->nodes.size()));
    std::fflush(stdout);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStData::createEnvironmentFile of every node");
    m.baseline = QStringLiteral("the same for every tenth node (expected ratio 10)");
    m.runSubject = [loaded] { generate(*loaded, loaded->nodes); };
    m.runBaseline = [loaded] { generate(*loaded, loaded->tenth); };
    m.target = 11.0;
    m.repetitions = 5;
    return m;
}
