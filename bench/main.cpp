#include "Harness.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

namespace Bench {

std::vector<Benchmark>& registry()
{
    static std::vector<Benchmark> benchmarks;
    return benchmarks;
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

qint64 timeOnce(const std::function<void()>& f)
{
    QElapsedTimer t;
    t.start();
    f();
    return t.nsecsElapsed();
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
int main(int argc, char** argv)
{
    // The tag browser's benchmark makes widgets: no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList filters = app.arguments().mid(1);
    QTextStream out(stdout);
    int over = 0;
    for (const Bench::Benchmark& b : Bench::registry()) {
        if (!filters.isEmpty()
            && std::none_of(filters.begin(), filters.end(),
                            [&](const QString& f) { return b.name.contains(f); }))
            continue;
        Bench::Measure m = b.prepare();
        m.runSubject();  // warm-up
        m.runBaseline();
        std::vector<qint64> subject, baseline;
        for (int i = 0; i < m.repetitions; ++i) {
            subject.push_back(timeOnce(m.runSubject));
            baseline.push_back(timeOnce(m.runBaseline));
        }
        const double s = median(subject), base = median(baseline);
        const double ratio = base > 0 ? s / base : 0;
        QString verdict;
        if (m.target > 0) {
            verdict = ratio <= m.target ? QStringLiteral("within target %1x").arg(m.target)
                                        : QStringLiteral("OVER target %1x").arg(m.target);
            if (ratio > m.target) ++over;
        }
        out << b.name << "\n"
            << "  " << m.subject << ": " << human(s) << "\n"
            << "  " << m.baseline << ": " << human(base) << "\n"
            << "  ratio " << QString::number(ratio, 'f', 2) << "x  " << verdict << "\n";
        out.flush();
    }
    return over == 0 ? 0 : 1;
}
