#include "Harness.h"

#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStNodeGroup.h"
#include "QAStNodeSource.h"
#include "QAStProject.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <sys/resource.h>

namespace {

constexpr int WalkNodes = 200;

// A copy of a directory tree, permissions included (the interpreter
// wrapper must stay executable).
bool copyTree(const QString& from, const QString& to)
{
    if (!QDir().mkpath(to))
        return false;
    QDirIterator it(from, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info = it.nextFileInfo();
        const QString target = to + u'/' + QDir(from).relativeFilePath(info.filePath());
        if (info.isDir()) {
            if (!QDir().mkpath(target))
                return false;
        } else {
            if (!QFile::copy(info.filePath(), target))
                return false;
            QFile::setPermissions(target, info.permissions());
        }
    }
    return true;
}

bool writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(text) == text.size();
}

// A word as a POSIX shell reads it back unchanged.
QString shellQuote(const QString& word)
{
    QString quoted = word;
    quoted.replace(QStringLiteral("'"), QStringLiteral("'\\''"));
    return u'\'' + quoted + u'\'';
}

double medianOf(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

double secondsOf(const std::function<void()>& f)
{
    QElapsedTimer timer;
    timer.start();
    f();
    return double(timer.nsecsElapsed()) / 1e9;
}

// The messages of the library during a walk (one or two per node), kept
// rather than printed so that the figures stay readable; shown when the
// walk fails.
QStringList* quietMessages = nullptr;

void keepMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    if (quietMessages)
        quietMessages->append(text);
}

// An installation whose build driver does nothing but read the environment
// script it is given, and a project of WalkNodes source nodes below one
// group. ZELTAHOME points at the installation while this lives.
struct WalkSetup {
    QTemporaryDir install;
    QTemporaryDir projectDir;
    std::unique_ptr<QAStProject> project;
    QString environmentFile; // one node's environment script, for the baseline
    QByteArray formerHome;
    bool hadHome = false;

    ~WalkSetup()
    {
        project.reset();
        if (hadHome)
            qputenv("ZELTAHOME", formerHome);
        else
            qunsetenv("ZELTAHOME");
    }
};

// Builds the whole project; true when the walk ended well.
bool buildProject(WalkSetup& setup)
{
    QStringList messages;
    quietMessages = &messages;
    const QtMessageHandler former = qInstallMessageHandler(keepMessage);
    QAStProject* project = setup.project.get();
    QEventLoop loop;
    QObject::connect(project, &QAStNode::buildExecuteFinished, &loop, &QEventLoop::quit);
    project->build();
    if (project->isWalking())
        loop.exec();
    qInstallMessageHandler(former);
    quietMessages = nullptr;
    const bool succeeded = project->walkSucceeded();
    if (!succeeded) {
        std::printf("  warning: the walk did not succeed; its last messages:\n");
        for (qsizetype i = std::max<qsizetype>(0, messages.size() - 5); i < messages.size(); ++i)
            std::printf("    %s\n", qPrintable(messages.at(i).trimmed()));
        std::fflush(stdout);
    }
    return succeeded;
}

// The same driver command, WalkNodes times in a row, from a shell loop.
void runDriverLoop(const QString& loopScript, const QString& workingDir)
{
    QProcess shell;
    shell.setWorkingDirectory(workingDir);
    shell.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), loopScript});
    if (!shell.waitForFinished(-1) || shell.exitStatus() != QProcess::NormalExit
        || shell.exitCode() != 0) {
        std::printf("  warning: the driver loop failed: %s\n",
                    shell.readAllStandardError().constData());
        std::fflush(stdout);
    }
}

void setUpInstallation()
{
    if (qEnvironmentVariableIsEmpty("ZELTAHOME"))
        qputenv("ZELTAHOME", SDK110_INSTALL_TREE);
    QAStProject::setModeBatch(true);
    QAStConfiguration::initialize(nullptr, nullptr);
}

} // namespace

SDK110_BENCHMARK(walkBuild, "walk: build 200 nodes with drivers that do nothing against a shell loop (goal 1.2x)")
{
    auto setup = std::make_shared<WalkSetup>();
    setup->hadHome = qEnvironmentVariableIsSet("ZELTAHOME");
    setup->formerHome = qgetenv("ZELTAHOME");

    // The installation, with a build driver that only reads the
    // environment script.
    const QString home = setup->install.path();
    if (!copyTree(QStringLiteral(SDK110_INSTALL_TREE), home)
        || !writeFile(home + QStringLiteral("/scripts/Build.pl"),
                      "# Reads the environment script, builds nothing.\n"
                      "do $ARGV[0];\n"
                      "exit 0;\n"))
        std::printf("  warning: cannot make the installation in %s\n", qPrintable(home));
    qputenv("ZELTAHOME", QFile::encodeName(home));
    QAStProject::setModeBatch(true);
    QAStConfiguration::initialize(nullptr, nullptr);

    // The project: one group of WalkNodes sources, each with its own
    // configuration.
    setup->project = std::make_unique<QAStProject>(QStringLiteral("walk"), QPixmap());
    QAStProject* project = setup->project.get();
    project->create(setup->projectDir.filePath(QStringLiteral("walk.rtp")));
    QAStConfiguration* debug = project->addConfiguration(QStringLiteral("Debug"));
    debug->setProperty(QStringLiteral("targetPath"), QStringLiteral("${ZELTAHOME}/targets/gcc-c"));
    project->setCurrentConfigurationName(QStringLiteral("Debug"));
    auto* group = new QAStNodeGroup(QStringLiteral("Sources"), QPixmap(), project, project->last());
    group->addConfiguration(QStringLiteral("Debug"));
    group->setCurrentConfigurationName(QStringLiteral("Debug"));
    QAStNodeSource* first = nullptr;
    for (int i = 0; i < WalkNodes; ++i) {
        const QString file = QStringLiteral("src/file%1.c").arg(i);
        auto* source = new QAStNodeSource(QStringLiteral("file%1.c").arg(i), QPixmap(), group,
                                          group->last());
        source->setFileKey(file);
        source->addConfiguration(QStringLiteral("Debug"));
        source->setCurrentConfigurationName(QStringLiteral("Debug"));
        if (!first)
            first = source;
    }
    setup->environmentFile = first->environmentFileName();

    // The baseline: the interpreter command of a driver run, repeated by a
    // shell on one of the environment scripts the walk writes.
    QStringList command = QAStData::perlCommand();
    command << QAStData::scriptsDir() + QStringLiteral("/Build.pl") << setup->environmentFile
            << QStringLiteral("source");
    QStringList quoted;
    for (const QString& word : command)
        quoted << shellQuote(word);
    const QString loopScript =
        QStringLiteral("i=0; while [ $i -lt %1 ]; do %2 || exit 1; i=$((i+1)); done")
            .arg(WalkNodes)
            .arg(quoted.join(u' '));
    const QString workingDir = project->directory();

    // A first build writes the environment scripts; then a few runs of
    // each side for the cost of the walk per node.
    buildProject(*setup);
    if (!QFileInfo::exists(setup->environmentFile))
        std::printf("  warning: no environment script at %s\n",
                    qPrintable(setup->environmentFile));
    std::vector<double> walks, loops;
    for (int i = 0; i < 3; ++i) {
        walks.push_back(secondsOf([&] { buildProject(*setup); }));
        loops.push_back(secondsOf([&] { runDriverLoop(loopScript, workingDir); }));
    }
    const double walk = medianOf(walks), plain = medianOf(loops);
    std::printf("  %d driver runs: walk %.3f s, shell loop %.3f s; "
                "overhead of the walk %.3f ms per node\n",
                WalkNodes, walk, plain, 1000.0 * (walk - plain) / WalkNodes);
    std::fflush(stdout);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStNode::build of the project (200 driver runs)");
    m.baseline = QStringLiteral("a shell loop running the same driver command 200 times");
    m.runSubject = [setup] { buildProject(*setup); };
    m.runBaseline = [setup, loopScript, workingDir] { runDriverLoop(loopScript, workingDir); };
    m.target = 1.2;
    m.repetitions = 3;
    return m;
}

namespace {

double processorSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
           + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

struct SleepSetup {
    QTemporaryDir dir;
    QString longScript;  // sleeps 2 s
    QString shortScript; // sleeps 0.2 s
    QAStData runner{QStringLiteral("runner"), QPixmap()};
};

} // namespace

SDK110_BENCHMARK(walkProcessorTime, "walk: processor time of a synchronous run against a blocking wait (goal 1.2x)")
{
    setUpInstallation();
    auto setup = std::make_shared<SleepSetup>();
    setup->longScript = setup->dir.filePath(QStringLiteral("sleep2.pl"));
    setup->shortScript = setup->dir.filePath(QStringLiteral("sleep02.pl"));
    if (!writeFile(setup->longScript, "select(undef, undef, undef, 2);\nexit 0;\n")
        || !writeFile(setup->shortScript, "select(undef, undef, undef, 0.2);\nexit 0;\n"))
        std::printf("  warning: cannot write the scripts in %s\n", qPrintable(setup->dir.path()));

    // The host's own processor time while a synchronous run waits.
    QElapsedTimer timer;
    const double cpuBefore = processorSeconds();
    timer.start();
    setup->runner.executePerlScript(setup->longScript, setup->dir.path(), nullptr, false,
                                    QAStData::OutputConsole);
    const double wall = double(timer.nsecsElapsed()) / 1e9;
    const double cpu = processorSeconds() - cpuBefore;
    if (!setup->runner.perlScriptSucceeded())
        std::printf("  warning: the script did not succeed\n");
    const double percent = wall > 0 ? 100.0 * cpu / wall : 0;
    std::printf("  synchronous run of a 2 s script: wall %.3f s, processor %.3f s\n", wall, cpu);
    std::printf("  processor time / wall time = %.2f %% (%s 5 %%)\n", percent,
                percent < 5.0 ? "under" : "NOT under");
    std::fflush(stdout);

    QStringList command = QAStData::perlCommand();
    const QString program = command.takeFirst();
    command << setup->shortScript;

    Bench::Measure m;
    m.subject = QStringLiteral("QAStData::executePerlScript, synchronous, of a 0.2 s script");
    m.baseline = QStringLiteral("QProcess::execute of the same command (a blocking wait)");
    m.runSubject = [setup] {
        setup->runner.executePerlScript(setup->shortScript, setup->dir.path(), nullptr, false,
                                        QAStData::OutputConsole);
    };
    m.runBaseline = [program, command] { QProcess::execute(program, command); };
    m.target = 1.2;
    m.repetitions = 3;
    return m;
}
