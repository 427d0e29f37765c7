#include "Harness.h"

#include "QAStCoverageReport.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

// A coverage file of about bytes: the runtime's records, then the
// compiler's coverage of many files of 40 functions of 25 lines each, a
// line in three run, two branches on every fifth line, and the end record
// with the totals.
QByteArray coverageRecords(qint64 bytes)
{
    QByteArray out;
    out.reserve(bytes + (1 << 20));
    out += "NT \"/work/project/build/Unit tests\" 4242\nDT \"Sun Nov 22 08:12:03 2026\"\n";
    for (int f = 0; f < 200; ++f)
        out += "FT \"function_" + QByteArray::number(f) + "\" 0x55d0c2a4b3a1\n";
    for (int f = 0; f < 200; ++f)
        out += "CO \"function_" + QByteArray::number(f) + "\" " + QByteArray::number(f * 7 + 1) + "\n";
    out += "TE 200\n";
    out += "NT \"/work/project/build/Unit tests\" 4242\n";
    qint64 files = 0, lines = 0, linesHit = 0, branches = 0, branchesHit = 0, functions = 0, functionsHit = 0;
    char line[96];
    while (out.size() < bytes) {
        out += "DC \"/work/project/src/module" + QByteArray::number(files % 50) + "/unit" +
               QByteArray::number(files) + ".c\"\n";
        ++files;
        for (int fn = 0; fn < 40; ++fn) {
            const int start = 1 + fn * 25;
            const qint64 calls = (files + fn) % 4 == 0 ? 0 : (files * 31 + fn) % 1000;
            out += "TP \"module_function_" + QByteArray::number(fn) + "\" " + QByteArray::number(start) + ' ' +
                   QByteArray::number(start + 23) + ' ' + QByteArray::number(calls) + '\n';
            ++functions;
            functionsHit += calls > 0;
        }
        for (int n = 1; n <= 1000; ++n) {
            const qint64 count = n % 3 == 0 ? 0 : (n * 17 + files) % 5000;
            out.append(line, std::snprintf(line, sizeof line, "TA %d %lld\n", n, count));
            ++lines;
            linesHit += count > 0;
        }
        for (int n = 5; n <= 1000; n += 5) {
            const bool ran = n % 3 != 0;
            for (int b = 0; b < 2; ++b) {
                const qint64 taken = ran ? (b == 0 ? (n * 3) % 97 : (n % 2)) : 0;
                if (ran)
                    out.append(line, std::snprintf(line, sizeof line, "TB %d %d %lld\n", n, b, taken));
                else
                    out.append(line, std::snprintf(line, sizeof line, "TB %d %d -\n", n, b));
                ++branches;
                branchesHit += taken > 0;
            }
        }
    }
    out.append(line, std::snprintf(line, sizeof line, "EI %lld %lld %lld %lld %lld %lld %lld\n", files, lines,
                                   linesHit, branches, branchesHit, functions, functionsHit));
    return out;
}

// The baseline: the file read in blocks of 1 MiB and split into its lines.
qint64 splitLines(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    qint64 kept = 0, lines = 0;
    for (;;) {
        const qint64 got = file.read(buffer.data() + kept, buffer.size() - kept);
        if (got <= 0)
            break;
        const char* begin = buffer.constData();
        const char* end = begin + kept + got;
        for (const char* nl; (nl = static_cast<const char*>(std::memchr(begin, '\n', size_t(end - begin))));
             begin = nl + 1) {
            Bench::keep(begin);
            ++lines;
        }
        kept = end - begin;
        std::memmove(buffer.data(), begin, size_t(kept));
    }
    return lines;
}

qint64 records(const QAStCoverageReport& report)
{
    qint64 n = 0;
    for (const QAStCoverageReport::File& file : report.files())
        n += qint64(file.lines.size() + file.branches.size() + file.functions.size()) + 1;
    return n;
}

double lcovSeconds(const QAStCoverageReport& report)
{
    QElapsedTimer timer;
    timer.start();
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    report.writeLcov(&out, QStringLiteral("Unit tests"));
    Bench::keep(out.data().constData());
    return double(timer.nsecsElapsed()) / 1e9;
}

struct Input {
    QTemporaryDir dir;
    QString file;
};

}

SDK110_BENCHMARK(coverageReport, "coverage: report of a 100 MB coverage file against splitting its lines (goal 3x; lcov writing linear)")
{
    auto input = std::make_shared<Input>();
    input->file = input->dir.filePath(QStringLiteral("run.tio"));
    {
        const QByteArray big = coverageRecords(100 << 20);
        QFile out(input->file);
        out.open(QIODevice::WriteOnly);
        out.write(big);
    }

    // The lcov writer at N and 10N records: the time should grow tenfold.
    {
        QAStCoverageReport small, large;
        small.readData(coverageRecords(10 << 20));
        large.read(input->file);
        if (!large.isComplete() || large.skippedLines() != 0)
            std::printf("  the generated file was not read whole: %s\n", qPrintable(large.faults().join(u' ')));
        lcovSeconds(small);
        double one = 0, ten = 0;
        for (int r = 0; r < 3; ++r) {
            one += lcovSeconds(small);
            ten += lcovSeconds(large);
        }
        std::printf("  lcov: %lld records in %.3f s, %lld records in %.3f s; ratio %.2f for %.2fx the records\n",
                    records(small), one / 3, records(large), ten / 3, ten / one,
                    double(records(large)) / double(records(small)));
        std::fflush(stdout);
    }

    Bench::Measure m;
    m.subject = QStringLiteral("QAStCoverageReport::read: records parsed, per file and function counts");
    m.baseline = QStringLiteral("the same file read in 1 MiB blocks and split into its lines");
    m.runSubject = [input] {
        QAStCoverageReport report;
        report.read(input->file);
        Bench::keep(&report);
    };
    m.runBaseline = [input] { Bench::keep(reinterpret_cast<const void*>(splitLines(input->file))); };
    m.target = 3;
    m.repetitions = 5;
    return m;
}
