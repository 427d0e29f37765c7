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
    explicit LoadedProject(const GeneratedProject& generated)
    {
        project.open(generated.path);
        nodes = project.childrenOfClass("QAStNode", true);
    }
    QAStProject project{QStringLiteral("big"), QPixmap()};
    QList<QAStData*> nodes;
    QByteArray script;  // reused, so that growing it costs nothing
};

// Writes the environment script of every node in turn, as a build of the
// whole project would; returns the bytes written.
qint64 generate(LoadedProject& loaded)
{
    qint64 written = 0;
    for (QAStData* node : loaded.nodes) {
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

SDK110_BENCHMARK(environmentScripts, "environment: scripts of 10,000 against 1,000 nodes (goal: linear)")
{
    auto big = std::make_shared<LoadedProject>(*bigProject());
    auto small = std::make_shared<LoadedProject>(*generatedProject(36));

    QElapsedTimer timer;
    timer.start();
    const qint64 bytes = generate(*big);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    std::printf("  %lld nodes, %.1f ms in all: %.1f us and %lld bytes per node\n",
                static_cast<long long>(big->nodes.size()), ms, 1000.0 * ms / double(big->nodes.size()),
                static_cast<long long>(bytes / big->nodes.size()));
    std::fflush(stdout);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStData::createEnvironmentFile of every node of a project of %1 nodes")
                    .arg(big->nodes.size());
    m.baseline = QStringLiteral("the same of a project of %1 nodes (ratio %2 when linear)")
                     .arg(small->nodes.size())
                     .arg(double(big->nodes.size()) / double(small->nodes.size()), 0, 'f', 2);
    m.runSubject = [big] { generate(*big); };
    m.runBaseline = [small] { generate(*small); };
    m.target = 11.0;
    m.repetitions = 5;
    return m;
}
