#include "Harness.h"

#include "QAFileSurvey.h"
#include "QASTSplitSurvey.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr qint64 InputSize = qint64(1) << 30; // 1 GiB
// awk splits about 20 MB a second here: it is given the first 256 MiB, so
// that the benchmark stays within two minutes.
constexpr qint64 SliceSize = qint64(256) << 20;

// The runtime output of a long instrumented run, generated once per run of
// the benchmarks: records of every kind in the order a real trace writes
// them (a call traced, its lines covered, its memory and time profiled),
// with a result line now and then and, rarely, a record the split stamps
// and an end-of-test line.
struct GeneratedOutput {
    QTemporaryDir dir;
    QString input;
    QString slice;  // the first SliceSize bytes of input, whole lines
    QString sample; // the first 8 MiB
    qint64 lines = 0;
};

QByteArray pick(QRandomGenerator& random, const char* const* codes, int count)
{
    return QByteArray(codes[random.bounded(count)]);
}

// One call's records.
QByteArray callRecords(QRandomGenerator& random, int call)
{
    static const char* const trace[] = {"SF", "CS", "CI", "LK", "ST", "ME", "MR", "LS", "LE", "TM"};
    static const char* const coverage[] = {"NT", "CO", "FT", "DC", "TP", "TA", "TB"};
    static const char* const memory[] = {"PU", "PS", "PY", "PE", "PB", "PF"};
    static const char* const performance[] = {"QU", "QT", "QS", "QF"};
    const int file = random.bounded(400);
    const int line = random.bounded(5000);
    QByteArray records;
    records += pick(random, trace, 10) + " \"src/module" + QByteArray::number(file % 40)
        + "/unit" + QByteArray::number(file) + ".c\" " + QByteArray::number(line) + "\n";
    records += pick(random, trace, 10) + " \"function_" + QByteArray::number(random.bounded(9000))
        + "\" " + QByteArray::number(call) + " " + QByteArray::number(random.bounded(64)) + "\n";
    for (int i = random.bounded(1, 4); i > 0; --i)
        records += pick(random, coverage, 7) + " " + QByteArray::number(file) + " "
            + QByteArray::number(line + i) + " " + QByteArray::number(random.bounded(2)) + "\n";
    records += pick(random, memory, 6) + " " + QByteArray::number(random.bounded(1 << 20))
        + " \"0x7ffd" + QByteArray::number(random.generate(), 16) + "\" "
        + QByteArray::number(line) + "\n";
    records += pick(random, performance, 4) + " " + QByteArray::number(call) + " "
        + QByteArray::number(random.bounded(1000000)) + " "
        + QByteArray::number(random.bounded(10000)) + "\n";
    if (call % 40 == 0)
        records += "Test case " + QByteArray::number(call / 40) + " of unit"
            + QByteArray::number(file) + ": passed\n";
    if (call % 5000 == 0)
        records += "PT \"main\"\nQD \"0\"\nDT \"0\"\ntb end of test " + QByteArray::number(call)
            + "\n";
    return records;
}

std::shared_ptr<GeneratedOutput> generatedOutput()
{
    static std::shared_ptr<GeneratedOutput> generated;
    if (generated)
        return generated;
    generated = std::make_shared<GeneratedOutput>();
    generated->input = generated->dir.filePath(QStringLiteral("runtime.out"));
    // A pool of calls written again and again: the records vary, and the
    // generation costs a copy.
    QRandomGenerator random(110);
    QByteArray pool;
    qint64 poolLines = 0;
    for (int call = 1; pool.size() < 8 * 1024 * 1024; ++call) {
        const QByteArray records = callRecords(random, call);
        pool += records;
        poolLines += records.count('\n');
    }
    generated->slice = generated->dir.filePath(QStringLiteral("slice.out"));
    generated->sample = generated->dir.filePath(QStringLiteral("sample.out"));
    QFile sample(generated->sample);
    if (!sample.open(QIODevice::WriteOnly) || sample.write(pool) != pool.size())
        qFatal("cannot write %s", qPrintable(generated->sample));
    QFile out(generated->input);
    QFile slice(generated->slice);
    if (!out.open(QIODevice::WriteOnly) || !slice.open(QIODevice::WriteOnly))
        qFatal("cannot write in %s", qPrintable(generated->dir.path()));
    for (qint64 written = 0; written < InputSize; written += pool.size()) {
        out.write(pool);
        if (written < SliceSize)
            slice.write(pool);
        generated->lines += poolLines;
    }
    std::printf("  input: %.0f MiB, %lld lines, %s\n", double(out.size()) / (1 << 20),
                static_cast<long long>(generated->lines), qPrintable(generated->input));
    std::fflush(stdout);
    return generated;
}

void run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program),
               process.readAllStandardError().constData());
}

QString awkVersion()
{
    QProcess process;
    process.start(QStringLiteral("awk"), {QStringLiteral("-W"), QStringLiteral("version")});
    process.waitForFinished(-1);
    return QString::fromLocal8Bit(process.readAllStandardOutput()).section(QLatin1Char('\n'), 0, 0);
}

// The seven files of dir, with the time stamps made alike.
QList<QByteArray> stampedAlike(const QString& dir)
{
    static const QRegularExpression time(QStringLiteral(
        "\"[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}\""));
    QList<QByteArray> outputs;
    for (int index = 0; index < QASTSplitSurvey::OutputCount; ++index) {
        QFile file(QDir(dir).filePath(QASTSplitSurvey::defaultOutputName(index)));
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        outputs << QString::fromLatin1(bytes).replace(time, QStringLiteral("TIME")).toLatin1();
    }
    return outputs;
}

void removeOutputs(const QString& dir)
{
    for (int index = 0; index < QASTSplitSurvey::OutputCount; ++index)
        QFile::remove(QDir(dir).filePath(QASTSplitSurvey::defaultOutputName(index)));
}

}

SDK110_BENCHMARK(splitAgainstAwk, "split: 256 MiB runtime output against awk (goal 0.2x)")
{
    const std::shared_ptr<GeneratedOutput> generated = generatedOutput();
    const QString splitDir = generated->dir.filePath(QStringLiteral("split"));
    const QString awkDir = generated->dir.filePath(QStringLiteral("awk"));
    QDir().mkpath(awkDir);
    const QString script = QStringLiteral(SDK110_BENCH_SOURCES "/split.awk");
    std::printf("  awk: %s, on the first 256 MiB of the input (a run on 1 GiB takes about"
                " a minute)\n",
                qPrintable(awkVersion()));
    std::fflush(stdout);

    // Both sides write the same files.
    const QString sampleSplit = generated->dir.filePath(QStringLiteral("sample-split"));
    const QString sampleAwk = generated->dir.filePath(QStringLiteral("sample-awk"));
    QDir().mkpath(sampleAwk);
    QASTSplitSurvey::splitFile(generated->sample, sampleSplit);
    run(QStringLiteral("awk"), {QStringLiteral("-v"), QStringLiteral("dir=") + sampleAwk,
                                QStringLiteral("-f"), script, generated->sample});
    if (stampedAlike(sampleSplit) != stampedAlike(sampleAwk))
        qFatal("the split and awk wrote different files from %s", qPrintable(generated->sample));

    Bench::Measure m;
    m.subject = QStringLiteral("QASTSplitSurvey::splitFile");
    m.baseline = QStringLiteral("awk -f bench/split.awk (the same table and stamps)");
    m.runSubject = [generated, splitDir] {
        QString error;
        if (!QASTSplitSurvey::splitFile(generated->slice, splitDir, &error))
            qFatal("%s", qPrintable(error));
    };
    m.runBaseline = [generated, awkDir, script] {
        removeOutputs(awkDir);
        run(QStringLiteral("awk"), {QStringLiteral("-v"), QStringLiteral("dir=") + awkDir,
                                    QStringLiteral("-f"), script, generated->slice});
    };
    m.target = 0.2; // at least five times faster
    m.repetitions = 1;
    return m;
}

SDK110_BENCHMARK(splitAgainstCopy, "split: 1 GiB runtime output against cat (goal 1.25x: 0.8x its speed)")
{
    // A router reads and writes every byte, so a user-space copy is its
    // bound: cat reads and writes the same bytes through its buffer (cp
    // copies inside the kernel and is no fair bound).
    const std::shared_ptr<GeneratedOutput> generated = generatedOutput();
    const QString splitDir = generated->dir.filePath(QStringLiteral("split"));
    const QString copy = generated->dir.filePath(QStringLiteral("copy.out"));
    std::printf("  the goal: the split at 0.8x the speed of cat or better, a ratio of"
                " 1.25x or less\n");
    std::fflush(stdout);

    Bench::Measure m;
    m.subject = QStringLiteral("QASTSplitSurvey::splitFile");
    m.baseline = QStringLiteral("cat FILE > OUT of the same file");
    m.runSubject = [generated, splitDir] {
        QASTSplitSurvey::splitFile(generated->input, splitDir);
    };
    m.runBaseline = [generated, copy] {
        run(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("cat \"$0\" > \"$1\""),
                                   generated->input, copy});
    };
    m.target = 1.25;
    m.repetitions = 3;
    return m;
}

namespace {

// Appends records stamped with the time of their append for duration ms,
// a batch every millisecond or two, each batch cut at a random byte so
// that the survey also meets partial lines.
void appendStampedRecords(const QString& path, int duration, std::atomic<bool>* done,
                          std::chrono::steady_clock::time_point origin)
{
    static const char* const codes[] = {"SF", "CI", "CO", "PU", "QT", "Result"};
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        qFatal("cannot append to %s", qPrintable(path));
    QRandomGenerator random(7);
    QByteArray pending;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(duration);
    for (int record = 0; std::chrono::steady_clock::now() < end;) {
        for (int i = random.bounded(10, 60); i > 0; --i, ++record) {
            const qint64 now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::steady_clock::now() - origin)
                                   .count();
            pending += QByteArray(codes[record % 6]) + " \"on the fly\" " + QByteArray::number(now)
                + "\n";
        }
        const qsizetype cut = random.bounded(pending.size() + 1);
        out.write(pending.constData(), cut);
        pending.remove(0, cut);
        std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(500, 2000)));
    }
    out.write(pending);
    done->store(true);
}

// Reads what the result files gained and records, for every line, the
// time from its append (the number that ends it) to now.
struct ArrivalReader {
    QStringList files;
    std::vector<qint64> offsets;
    std::vector<double> delaysMs;
    qint64 lines = 0;

    void read(std::chrono::steady_clock::time_point origin)
    {
        const qint64 now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                               std::chrono::steady_clock::now() - origin)
                               .count();
        offsets.resize(files.size());
        for (int i = 0; i < files.size(); ++i) {
            QFile file(files.at(i));
            if (!file.open(QIODevice::ReadOnly) || !file.seek(offsets[i]))
                continue;
            const QByteArray bytes = file.readAll();
            offsets[i] += bytes.size();
            for (const QByteArray& line : bytes.split('\n')) {
                const qsizetype blank = line.lastIndexOf(' ');
                if (line.isEmpty() || blank < 0)
                    continue;
                delaysMs.push_back(double(now - line.mid(blank + 1).toLongLong()) / 1e6);
                ++lines;
            }
        }
    }
};

double percentile(std::vector<double> values, double p)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(p * double(values.size())))];
}

// The writer appends for three seconds while the split survey runs.
void measureOnTheFly(const QString& dir, int delay)
{
    QDir().mkpath(dir);
    const QString input = QDir(dir).filePath(QStringLiteral("fly.out"));
    QFile::remove(input);
    removeOutputs(dir);
    const auto origin = std::chrono::steady_clock::now();
    QASTSplitSurvey split(input, QString(), QString(), QString(), QString(), delay);
    ArrivalReader reader;
    for (int index = 0; index < QASTSplitSurvey::EndOfTest; ++index)
        reader.files << split.outputFile(index);
    QObject::connect(split.survey(), &QAFileSurvey::surveyDone, [&] { reader.read(origin); });

    std::atomic<bool> done {false};
    std::thread writer(appendStampedRecords, input, 3000, &done, origin);
    split.survey()->start();
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (done.load())
            loop.quit();
    });
    poll.start(10);
    loop.exec();
    writer.join();
    split.survey()->finish();

    std::printf("  on the fly: %lld lines, survey delay %d ms: delay from append to result file"
                " median %.1f ms, 99th percentile %.1f ms (%.2f x the survey delay),"
                " max %.1f ms\n",
                static_cast<long long>(reader.lines), delay, percentile(reader.delaysMs, 0.5),
                percentile(reader.delaysMs, 0.99), percentile(reader.delaysMs, 0.99) / delay,
                percentile(reader.delaysMs, 1.0));
    std::fflush(stdout);
}

}

SDK110_BENCHMARK(splitOnTheFly, "split: splitExistingLines of 1 GiB, and on the fly")
{
    const std::shared_ptr<GeneratedOutput> generated = generatedOutput();
    measureOnTheFly(generated->dir.filePath(QStringLiteral("fly")), 100);

    const QString copy = generated->dir.filePath(QStringLiteral("copy.out"));
    const QString inputDir = QFileInfo(generated->input).absolutePath();
    Bench::Measure m;
    m.subject = QStringLiteral("QASTSplitSurvey::splitExistingLines, then surveyDone");
    m.baseline = QStringLiteral("cp of the same file");
    m.runSubject = [generated, inputDir] {
        removeOutputs(inputDir);
        QASTSplitSurvey split(generated->input);
        split.splitExistingLines();
    };
    m.runBaseline = [generated, copy] {
        run(QStringLiteral("cp"), {generated->input, copy});
    };
    m.target = 4.0;
    m.repetitions = 3;
    return m;
}
