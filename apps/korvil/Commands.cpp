#include "Commands.h"

#include "CommandLineStudio.h"

#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStNode.h"
#include "QAStNodeTest.h"
#include "QAStProject.h"
#include "QAStSubProject.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <algorithm>

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

namespace Commands {

void out(const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void err(const QString& text)
{
    const QByteArray bytes = CommandLineStudio::messageText(text).toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

namespace {

// Out of batch mode for its lifetime: the project asks the tool's host,
// which answers on its own, instead of deciding alone; so a question
// reaches standard error with the answer taken, and a warning as a box.
class HostAsked {
public:
    HostAsked() { QAStProject::setModeBatch(false); }
    ~HostAsked() { QAStProject::setModeBatch(true); }
    HostAsked(const HostAsked&) = delete;
    HostAsked& operator=(const HostAsked&) = delete;
};

} // namespace

std::unique_ptr<QAStProject> load(const QString& path)
{
    if (!QFileInfo(path).isFile()) {
        err(QStringLiteral("%1: no such project file").arg(path));
        return nullptr;
    }
    QAStConfiguration::initialize(QAStData::studioIFace(), nullptr);
    auto project = std::make_unique<QAStProject>(QFileInfo(path).completeBaseName(), QPixmap());
    bool opened = false;
    {
        const HostAsked asked;
        opened = project->open(QFileInfo(path).absoluteFilePath());
    }
    if (!opened) {
        QString text = QStringLiteral("%1: the project could not be loaded").arg(path);
        // The library only says the content is not valid: tell what it
        // looked for.
        if (QAStProject::fileKind(path) == QAStProject::UnknownFile)
            text += QStringLiteral("\nno line of it holds \"<!DOCTYPE project\", which marks a project file,"
                                   "\nnor \"PROJECT = \" or \"WORKSPACE = \" of the older project and workspace files");
        err(text);
        return nullptr;
    }
    return project;
}

bool isProjectFile(const QString& path)
{
    switch (QAStProject::fileKind(path)) {
    case QAStProject::XmlProject:
    case QAStProject::ResourceProject:
    case QAStProject::ResourceWorkspace:
        return true;
    default:
        break;
    }
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("rtp") || suffix == QLatin1String("rtt");
}

qint64 lineCount(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    qint64 lines = 0;
    char last = '\n';
    QByteArray block;
    while (!(block = file.read(64 * 1024)).isEmpty()) {
        lines += block.count('\n');
        last = block.back();
    }
    return last == '\n' ? lines : lines + 1;
}

QString linesText(qint64 count, int width)
{
    const QString text = count < 0   ? QStringLiteral("(none)")
                         : count == 1 ? QStringLiteral("1 line")
                                      : QStringLiteral("%1 lines").arg(count);
    return text.rightJustified(width);
}

namespace {

struct Command {
    const char* name;
    // After "korvil <name> ": the arguments, "[...]" when optional, "..."
    // when repeated, and a required option with its value.
    const char* synopsis;
    const char* summary;
    // More of the help text, after the options.
    const char* details;
    // Adds the command's options to the parser.
    std::function<void(QCommandLineParser&)> options;
    std::function<int(QCommandLineParser&, CommandLineStudio&)> run;
};

const QCommandLineOption configOption({QStringLiteral("c"), QStringLiteral("config")},
                                      QStringLiteral("Use the configuration NAME."),
                                      QStringLiteral("NAME"));
const QCommandLineOption debugOption(QStringLiteral("debug"),
                                     QStringLiteral("Run in debug mode (execute only)."));
const QCommandLineOption outputOption({QStringLiteral("o"), QStringLiteral("output")},
                                      QStringLiteral("Write to FILE instead of standard output."),
                                      QStringLiteral("FILE"));
const QCommandLineOption asOption(QStringLiteral("as"),
                                  QStringLiteral("Write the project to FILE."),
                                  QStringLiteral("FILE"));

} // namespace

QAStNode* findNode(QAStProject& project, const QString& name)
{
    if (name.isEmpty())
        return &project;
    QAStData* item = &project;
    for (const QString& part : name.split(u'/', Qt::SkipEmptyParts)) {
        QAStData* found = nullptr;
        for (QAStData* child = item->child(); child && !found; child = child->next()) {
            if (child->name() == part)
                found = child;
        }
        item = found;
        if (!item)
            break;
    }
    if (auto* node = qobject_cast<QAStNode*>(item))
        return node;
    return qobject_cast<QAStNode*>(project.findNode(name));
}

bool useConfiguration(QAStProject& project, const QString& name)
{
    if (name.isEmpty())
        return true;
    if (!project.configurations().contains(name)) {
        err(QStringLiteral("%1: no configuration named \"%2\" (it has: %3)")
                .arg(project.path(), name, project.configurations().join(QStringLiteral(", "))));
        return false;
    }
    project.setCurrentConfigurationName(name);
    for (QAStData* item : project.childrenOfClass("QAStNode", true))
        static_cast<QAStNode*>(item)->setCurrentConfigurationName(name);
    return true;
}

namespace {

// "application" for QAStNodeApplication, "sub-project" for QAStSubProject.
QString kindWord(const QAStData* item)
{
    static const QList<QPair<const char*, const char*>> words = {
        {"QAStSubProject", "sub-project"}, {"QAStProject", "project"},
        {"QAStNodeUnitTestingScript", "unit testing script"},
        {"QAStNodeJavaTestingScript", "Java testing script"},
        {"QAStNodeSystemTestingScript", "system testing script"},
        {"QAStNodeVirtualTester", "virtual tester"}, {"QAStNodeTestScript", "test script"},
        {"QAStNodeUnitTesting", "unit testing"}, {"QAStNodeObjectTesting", "object testing"},
        {"QAStNodeJavaTesting", "Java testing"}, {"QAStNodeSystemTesting", "system testing"},
        {"QAStNodeApplication", "application"}, {"QAStNodeLibrary", "library"},
        {"QAStNodeTest", "test"}, {"QAStNodeSource", "source"}, {"QAStNodeLink", "link"},
        {"QAStNodeUser", "user"}, {"QAStNodeGroup", "group"}, {"QAStNodeFileRef", "file"},
    };
    for (const auto& [className, word] : words) {
        if (item->inherits(className))
            return QLatin1String(word);
    }
    return QString::fromLatin1(item->metaObject()->className());
}

QString stateWord(QAStNode::State state)
{
    switch (state) {
    case QAStNode::Selected:
        return QStringLiteral("selected");
    case QAStNode::UnSelected:
        return QStringLiteral("unselected");
    case QAStNode::UnSelectedReported:
        return QStringLiteral("unselected, reported");
    }
    return QString();
}

void printTree(const QAStData* item, int depth)
{
    QString line = QString(2 * depth, u' ') + item->name() + QStringLiteral("  (") + kindWord(item);
    if (const auto* node = qobject_cast<const QAStNode*>(item)) {
        line += QStringLiteral(", ") + stateWord(node->state());
        line += QStringLiteral(", configuration ") + node->currentConfigurationName();
        if (!node->configurations().isEmpty())
            line += QStringLiteral(" of ") + node->configurations().join(QStringLiteral(", "));
    }
    out(line + QStringLiteral(")\n"));
    for (const QAStData* child = item->child(); child; child = child->next()) {
        if (qobject_cast<const QAStNode*>(child))
            printTree(child, depth + 1);
    }
}

// --- commands

int info(QCommandLineParser& parser, CommandLineStudio&)
{
    const std::unique_ptr<QAStProject> project = load(parser.positionalArguments().value(0));
    if (!project)
        return Failure;
    printTree(project.get(), 0);
    const QString report = QAStData::loadReport();
    if (!report.isEmpty())
        out(QStringLiteral("\nLoad report:\n") + report + (report.endsWith(u'\n') ? "" : "\n"));
    return Success;
}

int env(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project || !useConfiguration(*project, parser.value(configOption)))
        return project ? Usage : Failure;
    QAStNode* node = findNode(*project, args.value(1));
    if (!node) {
        err(QStringLiteral("%1: no node named \"%2\"").arg(args.value(0), args.value(1)));
        return Usage;
    }
    if (!node->currentConfiguration()) {
        err(QStringLiteral("%1: the node \"%2\" has no configuration \"%3\"")
                .arg(args.value(0), node->name(), node->currentConfigurationName()));
        return Failure;
    }
    if (!parser.isSet(outputOption)) {
        QFile stdoutFile;
        stdoutFile.open(stdout, QIODevice::WriteOnly);
        QTextStream stream(&stdoutFile);
        node->createEnvironmentFile(stream);
        return Success;
    }
    const QString file = parser.value(outputOption);
    QSaveFile saved(file);
    if (!saved.open(QIODevice::WriteOnly)) {
        err(QStringLiteral("%1: cannot write: %2").arg(file, saved.errorString()));
        return Failure;
    }
    QTextStream stream(&saved);
    node->createEnvironmentFile(stream);
    stream << "\n1;\n";
    stream.flush();
    if (!saved.commit()) {
        err(QStringLiteral("%1: cannot write: %2").arg(file, saved.errorString()));
        return Failure;
    }
    return Success;
}

// The nodes of a walk from node: itself and every node below it.
QList<QAStNode*> walkedNodes(QAStNode* node)
{
    QList<QAStNode*> nodes{node};
    for (QAStData* item : node->childrenOfClass("QAStNode", true))
        nodes.append(static_cast<QAStNode*>(item));
    return nodes;
}

// Lists the result files of the test nodes an execution ran, with their
// line counts; a file the run did not write is "(none)".
void printResultFiles(const QList<QAStNodeTest*>& tests)
{
    for (const QAStNodeTest* test : tests) {
        const QStringList files = test->runtimeResultFiles();
        if (files.isEmpty())
            continue;
        out(QStringLiteral("Result files of \"%1\":\n").arg(test->name()));
        const QDir base(test->directory());
        for (const QString& file : files)
            out(QStringLiteral("  %1  %2\n").arg(linesText(lineCount(file)), QDir::cleanPath(base.relativeFilePath(file))));
    }
}

// Runs a walk command and waits for its end. On a terminal the progress
// line tells which node the walk is at ("[n/m] build libcalc"). With
// listResults the result files of the test nodes walked are listed.
int walk(QCommandLineParser& parser, CommandLineStudio& studio, const char* verb,
         void (QAStNode::*command)(), bool listResults = false)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project)
        return Failure;
    if (!useConfiguration(*project, parser.value(configOption)))
        return Usage;
    QAStNode* node = findNode(*project, args.value(1));
    if (!node) {
        err(QStringLiteral("%1: no node named \"%2\"").arg(args.value(0), args.value(1)));
        return Usage;
    }
    const QList<QAStNode*> nodes = walkedNodes(node);
    QList<QAStNodeTest*> executed;
    int reached = 0;
    for (QAStNode* walked : nodes) {
        QObject::connect(walked, &QAStNode::buildExecuteInvoked, walked, [&, walked] {
            // A rebuild walks the nodes twice: the count starts again.
            reached = reached % int(nodes.size()) + 1;
            studio.showProgress(reached, QStringLiteral("%1 %2").arg(QLatin1String(verb), walked->name()));
            auto* test = qobject_cast<QAStNodeTest*>(walked);
            if (test && !test->isUnSelected() && !executed.contains(test))
                executed.append(test);
        });
    }
    studio.startProgress(QLatin1String(verb), QString(), int(nodes.size()));
    QEventLoop loop;
    QObject::connect(node, &QAStNode::buildExecuteFinished, &loop, &QEventLoop::quit);
    (node->*command)();
    if (node->isWalking())
        loop.exec();
    studio.finishProgress();
    studio.endLine();
    for (QAStNode* walked : nodes)
        QObject::disconnect(walked, &QAStNode::buildExecuteInvoked, walked, nullptr);
    if (listResults)
        printResultFiles(executed);
    const bool junitWritten = !listResults || !parser.isSet(junitOption()) ||
                              writeJUnit(executed, parser.value(junitOption()));
    if (!node->walkSucceeded()) {
        err(QStringLiteral("%1: %2 of \"%3\" failed").arg(args.value(0), QLatin1String(verb), node->name()));
        return Failure;
    }
    return junitWritten ? Success : Failure;
}

int save(QCommandLineParser& parser, CommandLineStudio& studio)
{
    if (!parser.isSet(asOption)) {
        err(QStringLiteral("save: --as FILE is required; see 'korvil save --help'"));
        return Usage;
    }
    const std::unique_ptr<QAStProject> project = load(parser.positionalArguments().value(0));
    if (!project)
        return Failure;
    // The project asks its host for the new name, which batch mode never
    // does: the tool's host answers with FILE.
    const QString file = QFileInfo(parser.value(asOption)).absoluteFilePath();
    studio.setSavePath(file);
    bool saved = false;
    {
        const HostAsked asked;
        saved = project->saveAs();
    }
    if (!saved) {
        err(QStringLiteral("%1: the project was not saved").arg(parser.value(asOption)));
        return Failure;
    }
    return Success;
}

const QList<Command>& commands()
{
    static const QList<Command> list = {
        {"info", "PROJECT", "Load a project and print its tree of nodes and the load report.",
         "Each node is shown with its kind, its state and its current configuration among\n"
         "those it has.\n",
         [](QCommandLineParser&) {}, info},
        {"env", "PROJECT NODE", "Write the Perl environment script of a node.",
         "The script states every setting of the node's current configuration as a Perl\n"
         "variable, as the drivers receive it.\n",
         [](QCommandLineParser& p) {
             p.addOption(configOption);
             p.addOption(outputOption);
         },
         env},
        {"build", "PROJECT [NODE]", "Build a node (the project when none is named) with the drivers.",
         "The nodes are walked one at a time, each child's walk ending before the next\n"
         "starts; the drivers' output goes to standard output.\n",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "build", &QAStNode::build); }},
        {"rebuild", "PROJECT [NODE]", "Clean, then build a node.", "",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "rebuild", &QAStNode::rebuild); }},
        {"execute", "PROJECT [NODE]", "Execute the test nodes of a node.",
         "The runtime output of each test is split into its result files while it runs;\n"
         "at the end the result files of every executed test node are listed with their\n"
         "line counts. --junit FILE writes their results as JUnit XML, also when tests\n"
         "failed; the exit status stays that of the run.\n",
         [](QCommandLineParser& p) {
             p.addOption(configOption);
             p.addOption(debugOption);
             p.addOption(junitOption());
         },
         [](QCommandLineParser& p, CommandLineStudio& s) {
             return walk(p, s, "execute", p.isSet(debugOption) ? &QAStNode::debug : &QAStNode::execute, true);
         }},
        {"report", "WHAT PROJECT [NODE]", "Report what the last run of test nodes left in their result files.",
         reportDetails(), reportOptions, report},
        {"clean", "PROJECT [NODE]", "Remove what a build and a run of a node made.", "",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "clean", &QAStNode::clean); }},
        {"save", "PROJECT --as FILE", "Load a project and write it again to FILE.",
         "FILE gets the project file and its object information file (.inf) beside it.\n",
         [](QCommandLineParser& p) { p.addOption(asOption); }, save},
        {"tags", "[PROJECT] [FILE...]", "Analyse source files into tags and print the tag tree.",
         "The files are the project's source files, or the FILEs given (with or without a\n"
         "project). A directory stands for its source files and those of its\n"
         "subdirectories, hidden ones left out: its C files, then C++, Java, Ada and\n"
         "header files (the order of the file-type table), each kind by path. The\n"
         "files are analysed by the tagging driver, many in one run; the tree is printed\n"
         "in one of the tag browser's layouts: by file (each file with its tags as they\n"
         "nest), by type (classes, functions and packages) or alphabetical.\n",
         tagsOptions, tags},
        {"metrics", "[PROJECT] [FILE...]", "Compute the metrics of C and C++ files and print them.",
         "The files are the project's C, C++ and header files, or the FILEs given; a\n"
         "directory stands for its C, C++ and header files, in that order, as for tags. The\n"
         "table has a row for each file, class, function and method, then the sum, mean\n"
         "and maximum over each file's units and over all the files. Testing Time is\n"
         "Effort divided by the Stroud number.\n",
         metricsOptions, metrics},
        {"split", "FILE", "Split a runtime output into its result files.",
         "The lines go by their record code to atlout.rio, mendralt.tpf, tallivexlt.tqf,\n"
         "zeltacov.tio, tracer.tdf, atlendtest.txt and atlout.rej, which are replaced.\n"
         "With --follow the file is followed as it grows until the tool is interrupted\n"
         "(Ctrl-C or a termination signal); a last pass then splits what remains. At the\n"
         "end each result file is listed with its line count.\n",
         splitOptions, split},
        {"new", "PROJECT", "Create a new project file on a target package.",
         "PROJECT gets its object information file (.inf) beside it and an empty file\n"
         "tree; an existing file is never replaced. The project has the configurations\n"
         "Debug (current) and Release, filled from the target package: the one named by\n"
         "--package, else the installation's package for the --language (C by default).\n"
         "Both build into build/, their results going to build/results; Release compiles\n"
         "with -O2.\n",
         newOptions, newProject},
        {"add", "PROJECT KIND NAME [FILE...]", "Add a node of a kind to a project.",
         "KIND is the tag of a node kind: group, application, library, unit_testing,\n"
         "object_testing, system_testing, java_testing, user, link, source, test_script,\n"
         "...; the parent (--under) must take it, and the message names the kinds it\n"
         "takes. Each C, C++, Ada or Java FILE becomes a source node of the new node; a\n"
         "directory stands for its files. Every FILE also enters the file tree. A source\n"
         "or test script refers to its one FILE, or to NAME when none is given.\n",
         addOptions, add},
        {"add-files", "PROJECT FILE...", "Add files and directories to the project's file tree.",
         "Each file goes into the folder of its directory (relative to the project's\n"
         "directory), folders made as needed. A directory stands for the files below it\n"
         "whose type is known, hidden ones and the project's build directories left out.\n",
         [](QCommandLineParser&) {}, addFiles},
        {"import", "SOURCE", "Make a new project of a compilation database or a directory.",
         "SOURCE is a compile_commands.json (as CMake, Meson or Bear write it): one node\n"
         "per target, its sources, include directories, macros and the libraries it\n"
         "links. Or a directory: its sources and headers, one application when a source\n"
         "defines main, else one library. The project goes to --output, else into the\n"
         "source tree, named after its directory; an existing file is never replaced.\n",
         importOptions, import},
        {"set", "PROJECT NODE KEY VALUE...", "Set a setting of a node's configuration.",
         "KEY is a key of the settings descriptor (cflags, ge_incdir, generationFormat,\n"
         "...); an unknown key is told with the closest ones. A list takes one item per\n"
         "VALUE, a text the VALUEs joined by blanks, any other kind one VALUE. Put -- before\n"
         "VALUEs that start with -.\n",
         settingOptions, set},
        {"get", "PROJECT NODE KEY", "Print a setting of a node's configuration.",
         "The value the node uses: its own, else the inherited one, else the default. A\n"
         "list prints one item a line.\n",
         settingOptions, get},
    };
    return list;
}

QString toolHelp()
{
    QString text = QStringLiteral("Usage: korvil [--help] [--version] COMMAND [OPTIONS] ARGUMENTS\n\n"
                                  "Works on a test project file in batch mode: no dialog is shown, "
                                  "questions take their default.\n\nCommands:\n");
    for (const Command& c : commands())
        text += QStringLiteral("  %1 %2\n      %3\n")
                    .arg(QLatin1String(c.name), -8)
                    .arg(QLatin1String(c.synopsis), QLatin1String(c.summary));
    text += QStringLiteral("\n'korvil help COMMAND' or 'korvil COMMAND --help' describes a command.\n"
                           "The installation is $ZELTAHOME, else $KORVILDIR, else the one shipped with "
                           "the tool.\nExit status: 0 success, 1 a failed job, 2 bad usage.\n");
    return text;
}

QString argumentHelp(const QString& command, const QString& word)
{
    if (word == QLatin1String("PROJECT"))
        return QStringLiteral("The project file (.rtp).");
    if (word == QLatin1String("NODE"))
        return QStringLiteral("A node: a path of names from the project (Build/calc), or a name.");
    if (word == QLatin1String("FILE") && command == QLatin1String("split"))
        return QStringLiteral("The runtime output to split.");
    if (word == QLatin1String("FILE") && command.startsWith(QLatin1String("add")))
        return QStringLiteral("A file or a directory.");
    if (word == QLatin1String("WHAT"))
        return QStringLiteral("The report, one of those below.");
    if (word == QLatin1String("KIND"))
        return QStringLiteral("The kind of the node: application, library, group, source, ...");
    if (word == QLatin1String("NAME"))
        return QStringLiteral("The name of the node.");
    if (word == QLatin1String("KEY"))
        return QStringLiteral("The key of a setting (cflags, ge_incdir, ...).");
    if (word == QLatin1String("VALUE"))
        return QStringLiteral("The setting's value; one per item for a list.");
    if (word == QLatin1String("SOURCE"))
        return QStringLiteral("A compile_commands.json file or a directory of sources.");
    if (word == QLatin1String("FILE"))
        return QStringLiteral("A source file; the project's sources when none is given.");
    return QString();
}

// The positional arguments of a synopsis: its words but options and their
// values. An optional one is written "[WORD]", a repeated one "WORD...".
QStringList positionalWords(const Command& command)
{
    QStringList words;
    bool optionValue = false;
    for (const QString& word : QString::fromLatin1(command.synopsis).split(u' ', Qt::SkipEmptyParts)) {
        if (std::exchange(optionValue, false))
            continue;
        if (word.startsWith(QLatin1String("--"))) {
            optionValue = true;
            continue;
        }
        words.append(word);
    }
    return words;
}

QString usageLine(const Command& command)
{
    return QStringLiteral("Usage: korvil %1 [options] %2")
        .arg(QLatin1String(command.name), QLatin1String(command.synopsis));
}

} // namespace

int run(const QStringList& arguments, CommandLineStudio& studio)
{
    const QString name = arguments.value(1);
    if (name.isEmpty() || name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        const QString topic = name == QLatin1String("help") ? arguments.value(2) : QString();
        if (topic.isEmpty()) {
            if (name.isEmpty())
                err(QStringLiteral("no command given"));
            std::fputs(qPrintable(toolHelp()), name.isEmpty() ? stderr : stdout);
            return name.isEmpty() ? Usage : Success;
        }
        return run({arguments.value(0), topic, QStringLiteral("--help")}, studio);
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        out(QStringLiteral("korvil %1\n").arg(QCoreApplication::applicationVersion()));
        return Success;
    }
    const auto command = std::find_if(commands().cbegin(), commands().cend(),
                                      [&](const Command& c) { return name == QLatin1String(c.name); });
    if (command == commands().cend()) {
        err(QStringLiteral("unknown command \"%1\"").arg(name));
        std::fputs("Usage: korvil [--help] [--version] COMMAND [OPTIONS] ARGUMENTS\n"
                   "'korvil --help' lists the commands.\n", stderr);
        return Usage;
    }
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(command->summary));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Describe this command."));
    parser.addOption(help);
    command->options(parser);
    const QStringList words = positionalWords(*command);
    for (const QString& word : words) {
        QString bare = word;
        bare.remove(u'[').remove(u']').remove(QStringLiteral("..."));
        parser.addPositionalArgument(bare, argumentHelp(name, bare), word);
    }
    QStringList parsed = arguments;
    parsed.removeAt(1);
    parsed[0] = QStringLiteral("korvil ") + name;
    const auto usage = [&](const QString& fault) {
        err(QStringLiteral("%1: %2").arg(name, fault));
        std::fprintf(stderr, "%s\n'korvil %s --help' describes it.\n", qPrintable(usageLine(*command)),
                     command->name);
        return Usage;
    };
    if (!parser.parse(parsed))
        return usage(parser.errorText());
    if (parser.isSet(help)) {
        // The parser names the program by its path: the first line is ours.
        const QString text = parser.helpText();
        out(usageLine(*command) + text.mid(text.indexOf(u'\n')) + u'\n' + QLatin1String(command->details));
        return Success;
    }
    const bool repeated = std::any_of(words.cbegin(), words.cend(),
                                      [](const QString& w) { return w.endsWith(QLatin1String("...")) ||
                                                                    w.endsWith(QLatin1String("...]")); });
    const int required = int(std::count_if(words.cbegin(), words.cend(),
                                           [](const QString& w) { return !w.startsWith(u'['); }));
    const int given = int(parser.positionalArguments().size());
    if (given < required || (!repeated && given > words.size()))
        return usage(given < required ? QStringLiteral("missing arguments") : QStringLiteral("too many arguments"));
    return command->run(parser, studio);
}

}
