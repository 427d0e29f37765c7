#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

// A small benchmark harness. Each benchmark times a subject and a baseline
// on the same input, alternating them so both see the same machine state,
// and reports the ratio of their median times against a target.
namespace Bench {

struct Measure {
    QString subject;           // what is measured
    QString baseline;          // what it is compared with
    std::function<void()> runSubject;
    std::function<void()> runBaseline;
    double target = 0;         // the ratio the subject should stay under (0: none)
    int repetitions = 15;      // timed runs of each side
};

struct Benchmark {
    QString name;
    std::function<Measure()> prepare;  // builds the input and the two sides
};

// Registers a benchmark at static-initialisation time.
struct Registrar {
    Registrar(const char* name, std::function<Measure()> prepare);
};

std::vector<Benchmark>& registry();

// A step run alone in a fresh process of the benchmark program, for its
// peak memory: `sdk110-bench --step NAME ARGS...` runs it and prints how
// far the peak resident size rose above the size before it, in KiB.
struct StepRegistrar {
    StepRegistrar(const char* name, std::function<void(const QStringList&)> run);
};
// That figure for one step with its arguments; -1 when it could not run.
long peakOfStepKiB(const QString& name, const QStringList& arguments);
// A "VmRSS:"-like field of /proc/self/status, in KiB; -1 when unknown.
long statusKiB(const char* field);

// Keeps the optimiser from discarding a computed value.
void keep(const void* p);

}

#define SDK110_BENCHMARK(id, name) \
    static Bench::Measure id(); \
    static Bench::Registrar id##_registrar(name, &id); \
    static Bench::Measure id()
