// The analysis drivers over many files: tagging 500 real headers against
// Universal Ctags alone, and computing the metrics of 200 C files against
// the metrics code run in one interpreter. Both count the processor time
// of the programs they start.
#include "Harness.h"

#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStMetricManager.h"
#include "QAStRootFolder.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>
#include <memory>

namespace {

constexpr int Headers = 500;
constexpr int CFiles = 200;

const QString installTree = QStringLiteral(SDK110_INSTALL_TREE);

// The installation's drivers run through the library: ZELTAHOME points at
// it, and each end of a run ("Terminated process pid") stays off the
// terminal.
QtMessageHandler formerHandler = nullptr;
void quietRuns(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (!text.startsWith(QLatin1String("Terminated process pid")))
        formerHandler(type, context, text);
}

void useInstallation()
{
    if (qEnvironmentVariableIsEmpty("ZELTAHOME"))
        qputenv("ZELTAHOME", SDK110_INSTALL_TREE);
    if (!formerHandler)
        formerHandler = qInstallMessageHandler(quietRuns);
}

// 500 headers of the system: Qt's, module by module, then /usr/include's.
QStringList realHeaders()
{
    QStringList found;
    const QString qt = QStringLiteral("/usr/include/x86_64-linux-gnu/qt6");
    QStringList dirs;
    for (const QString& module : QDir(qt).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        dirs.append(qt + u'/' + module);
    dirs.append(QStringLiteral("/usr/include"));
    for (const QString& dir : dirs) {
        for (const QString& name : QDir(dir).entryList({QStringLiteral("*.h")}, QDir::Files, QDir::Name)) {
            found.append(dir + u'/' + name);
            if (found.size() == Headers)
                return found;
        }
    }
    return found;
}

// The tag program's command line of the driver, read from the driver
// itself so that the baseline runs exactly what the driver runs.
QStringList ctagsOptions()
{
    QFile driver(installTree + QStringLiteral("/scripts/Tagging.pl"));
    driver.open(QIODevice::ReadOnly);
    const QString text = QString::fromUtf8(driver.readAll());
    const QString block = text.section(QStringLiteral("my @CTAGS = ("), 1).section(QStringLiteral(");"), 0, 0);
    QStringList options;
    static const QRegularExpression quoted(QStringLiteral("'([^']*)'"));
    for (const QRegularExpressionMatch& m : quoted.globalMatch(block))
        options.append(m.captured(1));
    return options;
}

// Runs a program to its end; false, with a line, when it fails.
bool runProgram(const QString& program, const QStringList& arguments, const QString& output = QString())
{
    QProcess process;
    if (!output.isEmpty())
        process.setStandardOutputFile(output);
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        std::fprintf(stderr, "  %s failed: %s\n", qPrintable(program),
                     process.readAllStandardError().left(500).constData());
        return false;
    }
    return true;
}

// --- tagging

struct TaggingInput {
    QStringList headers;
    QStringList options;
    QTemporaryDir scratch;
};

// Every header analysed into tag items below its file, through the
// tagging driver in batches, as the studio does.
void tagThroughTheLibrary(const TaggingInput& input)
{
    QAStRootFolder tree(QStringLiteral("headers"));
    QList<QAStFile*> files;
    for (const QString& path : input.headers)
        files.append(new QAStFile(path, &tree, tree.last()));
    QAStFileAnalyse analyse(files, false);
    QEventLoop loop;
    QObject::connect(&analyse, &QAStFileAnalyse::finished, &loop, &QEventLoop::quit);
    analyse.start();
    if (analyse.isRunning())
        loop.exec();
    if (!analyse.failedFiles().isEmpty())
        std::fprintf(stderr, "  %d headers failed\n", int(analyse.failedFiles().size()));
    qint64 tags = 0;
    for (const QAStFile* file : files)
        tags += file->descendants().size();
    Bench::keep(&tags);
}

SDK110_BENCHMARK(driversTagging, "tags: 500 headers through the tagging driver against ctags alone (goal 2x)")
{
    useInstallation();
    auto input = std::make_shared<TaggingInput>();
    input->headers = realHeaders();
    input->options = ctagsOptions();
    std::printf("  %d headers; ctags%s\n", int(input->headers.size()),
                qPrintable(input->options.mid(1).join(u' ').prepend(u' ')));
    Bench::Measure m;
    m.subject = QStringLiteral("QAStFileAnalyse: the driver in batches, tags read into items");
    m.baseline = QStringLiteral("ctags alone, the driver's options, one run");
    m.runSubject = [input] { tagThroughTheLibrary(*input); };
    m.runBaseline = [input] {
        runProgram(input->options.first(), input->options.mid(1) + input->headers,
                   input->scratch.filePath(QStringLiteral("ctags.out")));
    };
    m.target = 2.0;
    m.repetitions = 5;
    return m;
}

// --- metrics

struct MetricsInput {
    QTemporaryDir dir;
    QStringList sources;
    QString metricDirectory;
    QString script; // the baseline's analysis loop
};

// A C file of some twenty functions with loops, branches and comments.
QByteArray cSource(int n)
{
    QByteArray text = "/* generated source " + QByteArray::number(n) + " */\n#include <stdio.h>\n\n";
    for (int f = 0; f < 20; ++f) {
        const QByteArray name = "unit_" + QByteArray::number(n) + '_' + QByteArray::number(f);
        text += "// " + name + ": adds what it is given\n"
                "static int " + name + "(const int *values, int count, int limit)\n{\n"
                "    int total = 0;\n"
                "    for (int i = 0; i < count; ++i) {\n"
                "        if (values[i] > limit && total < 1000)\n"
                "            total += values[i] * 2;\n"
                "        else if (values[i] < 0 || values[i] == limit)\n"
                "            total -= values[i];\n"
                "        else\n"
                "            total += values[i];\n"
                "    }\n"
                "    switch (total % 3) {\n"
                "    case 0: total += 1; break;\n"
                "    case 1: total -= 1; break;\n"
                "    default: break;\n"
                "    }\n"
                "    while (total > limit)\n"
                "        total /= 2;\n"
                "    return total > 0 ? total : -total;\n"
                "}\n\n";
    }
    text += "int main(void)\n{\n    int v[3] = {1, 2, 3};\n    printf(\"%d\\n\", unit_" +
            QByteArray::number(n) + "_0(v, 3, 2));\n    return 0;\n}\n";
    return text;
}

void measureThroughTheLibrary(const MetricsInput& input)
{
    QAStMetricManager manager(input.metricDirectory);
    manager.setFileList(input.sources);
    manager.setCancelEnabled(false);
    QEventLoop loop;
    QObject::connect(&manager, &QAStMetricManager::computeMetricTerminated, &loop, &QEventLoop::quit);
    if (manager.start() && manager.inProgress())
        loop.exec();
    if (manager.metricFiles().size() != input.sources.size())
        std::fprintf(stderr, "  %d files failed\n", int(manager.failedFiles().size()));
}

SDK110_BENCHMARK(driversMetrics, "metrics: 200 C files through the metrics driver against the analysis in one perl (goal 3x)")
{
    useInstallation();
    auto input = std::make_shared<MetricsInput>();
    for (int n = 0; n < CFiles; ++n) {
        const QString path = input->dir.filePath(QStringLiteral("src/unit_%1.c").arg(n));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(cSource(n));
        input->sources.append(path);
    }
    input->metricDirectory = input->dir.filePath(QStringLiteral("metrics"));
    // The same analysis and XML for every file, in one interpreter.
    input->script = QStringLiteral(
        "use Korvil::Metrics; use File::Basename;"
        "for my $source (@ARGV) {"
        "  open(my $in, '<:raw', $source) or die; my $text = do { local $/; <$in> };"
        "  my $file = Korvil::Metrics::analyse($text);"
        "  my $xml = Korvil::Metrics::to_xml($file, basename($source), dirname($source));"
        "}");
    std::printf("  %d files of %d bytes\n", CFiles, int(cSource(0).size()));
    Bench::Measure m;
    m.subject = QStringLiteral("QAStMetricManager: the driver in batches, one metrics file each");
    m.baseline = QStringLiteral("Korvil::Metrics analyse and to_xml of each file in one perl");
    m.runSubject = [input] { measureThroughTheLibrary(*input); };
    m.runBaseline = [input] {
        runProgram(QStringLiteral("perl"),
                   QStringList{QStringLiteral("-I") + installTree + QStringLiteral("/lib/perl"),
                               QStringLiteral("-e"), input->script} + input->sources);
    };
    m.target = 3.0;
    m.repetitions = 5;
    return m;
}

}
