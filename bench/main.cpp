#include "Harness.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <map>

#include <sys/resource.h>

namespace Bench {

std::vector<Benchmark>& registry()
{
    static std::vector<Benchmark> benchmarks;
    return benchmarks;
}

namespace {

std::map<QString, std::function<void(const QStringList&)>>& steps()
{
    static std::map<QString, std::function<void(const QStringList&)>> all;
    return all;
}

}

StepRegistrar::StepRegistrar(const char* name, std::function<void(const QStringList&)> run)
{
    steps()[QString::fromUtf8(name)] = std::move(run);
}

long peakOfStepKiB(const QString& name, const QStringList& arguments)
{
    QProcess step;
    step.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    step.start(QCoreApplication::applicationFilePath(), QStringList{QStringLiteral("--step"), name} + arguments);
    if (!step.waitForFinished(-1) || step.exitCode() != 0)
        return -1;
    bool ok = false;
    const long kib = step.readAllStandardOutput().trimmed().toLong(&ok);
    return ok ? kib : -1;
}

long statusKiB(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').first().toLong();
    }
    return -1;
}

Registrar::Registrar(const char* name, std::function<Measure()> prepare)
{
    registry().push_back({QString::fromUtf8(name), std::move(prepare)});
}

void keep(const void* p)
{
    static const void* volatile sink;
    sink = p;
}

}

namespace {

double median(std::vector<qint64> v)
{
    std::sort(v.begin(), v.end());
    return double(v[v.size() / 2]);
}

// The processor time of this process and of its children that ended, in
// nanoseconds: a run that starts programs counts theirs too.
qint64 processorTime()
{
    qint64 total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval& t : {usage.ru_utime, usage.ru_stime})
            total += qint64(t.tv_sec) * 1000000000 + qint64(t.tv_usec) * 1000;
    }
    return total;
}

struct Times {
    qint64 wall;
    qint64 processor;
};

Times timeOnce(const std::function<void()>& f)
{
    const qint64 processor = processorTime();
    QElapsedTimer t;
    t.start();
    f();
    return {t.nsecsElapsed(), processorTime() - processor};
}

QString human(double ns)
{
    if (ns >= 1e9) return QString::number(ns / 1e9, 'f', 3) + QStringLiteral(" s");
    if (ns >= 1e6) return QString::number(ns / 1e6, 'f', 3) + QStringLiteral(" ms");
    if (ns >= 1e3) return QString::number(ns / 1e3, 'f', 3) + QStringLiteral(" us");
    return QString::number(ns, 'f', 0) + QStringLiteral(" ns");
}

}

// Usage: sdk110-bench [substring...]   runs the benchmarks whose name holds
// one of the given substrings (all without arguments).
//        sdk110-bench --list            prints the name of every benchmark: what
//                                       it measures, its baseline and its goal.
// Each side is timed on the wall clock and in processor time (its own and
// that of the programs it ran), the medians of its runs side by side.
int main(int argc, char** argv)
{
    // The tag browser's benchmark makes widgets: no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList filters = app.arguments().mid(1);
    QTextStream out(stdout);
    if (filters == QStringList{QStringLiteral("--help")} || filters == QStringList{QStringLiteral("-h")}) {
        out << "Usage: sdk110-bench [SUBSTRING...]\n"
               "       sdk110-bench --list\n\n"
               "Runs the benchmarks whose name holds one of the substrings (all without\n"
               "one). Each times its subject and a baseline on the same input, alternating\n"
               "them, and prints the medians in wall and processor time (its own and that\n"
               "of the programs it ran) and the ratio against its target. Exit status 1\n"
               "when a benchmark is over its target.\n\n"
               "--list prints every benchmark's name, which says what it measures, against\n"
               "which baseline and its goal. --step NAME ARGS runs one step of a benchmark\n"
               "alone and prints how far it raised the peak resident size, in KiB.\n"
               "SDK110_BENCH_KEEP=1 keeps the generated large project for a profiler.\n";
        return 0;
    }
    if (filters.size() >= 2 && filters.first() == QLatin1String("--step")) {
        const auto step = Bench::steps().find(filters.at(1));
        if (step == Bench::steps().end())
            return 2;
        const long before = Bench::statusKiB("VmRSS:");
        step->second(filters.mid(2));
        out << Bench::statusKiB("VmHWM:") - before << "\n";
        return 0;
    }
    if (filters == QStringList{QStringLiteral("--list")}) {
        for (const Bench::Benchmark& b : Bench::registry())
            out << b.name << "\n";
        return 0;
    }
    int over = 0;
    for (const Bench::Benchmark& b : Bench::registry()) {
        if (!filters.isEmpty()
            && std::none_of(filters.begin(), filters.end(),
                            [&](const QString& f) { return b.name.contains(f); }))
            continue;
        Bench::Measure m = b.prepare();
        m.runSubject();  // warm-up
        m.runBaseline();
        std::vector<qint64> subject, baseline, subjectCpu, baselineCpu;
        for (int i = 0; i < m.repetitions; ++i) {
            const Times s = timeOnce(m.runSubject);
            const Times b = timeOnce(m.runBaseline);
            subject.push_back(s.wall);
            subjectCpu.push_back(s.processor);
            baseline.push_back(b.wall);
            baselineCpu.push_back(b.processor);
        }
        const double s = median(subject), base = median(baseline);
        const double sCpu = median(subjectCpu), baseCpu = median(baselineCpu);
        const double ratio = base > 0 ? s / base : 0;
        const double cpuRatio = baseCpu > 0 ? sCpu / baseCpu : 0;
        QString verdict;
        if (m.target > 0) {
            verdict = ratio <= m.target ? QStringLiteral("within target %1x").arg(m.target)
                                        : QStringLiteral("OVER target %1x").arg(m.target);
            if (ratio > m.target) ++over;
        }
        out << b.name << "\n"
            << "  " << m.subject << ": " << human(s) << " wall, " << human(sCpu) << " CPU\n"
            << "  " << m.baseline << ": " << human(base) << " wall, " << human(baseCpu) << " CPU\n"
            << "  ratio " << QString::number(ratio, 'f', 2) << "x  " << verdict << "  (CPU "
            << QString::number(cpuRatio, 'f', 2) << "x)\n";
        out.flush();
    }
    return over == 0 ? 0 : 1;
}
