#include "Commands.h"

#include "CommandLineStudio.h"

#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStNode.h"
#include "QAStProject.h"
#include "QAStSubProject.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <algorithm>

#include <cstdio>
#include <functional>
#include <memory>

namespace Commands {
namespace {

enum Status { Success = 0, Failure = 1, Usage = 2 };

void out(const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void err(const QString& text)
{
    const QByteArray bytes = (QStringLiteral("korvil: ") + text + u'\n').toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

struct Command {
    const char* name;
    const char* synopsis;  // after "korvil <name> "
    const char* summary;
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

// --- the project

// Loads the project file; the load report and the warnings reach standard
// error through the host. Null, with a message naming the file, when it
// does not load.
std::unique_ptr<QAStProject> load(const QString& path)
{
    if (!QFileInfo(path).isFile()) {
        err(QStringLiteral("%1: no such project file").arg(path));
        return nullptr;
    }
    QAStConfiguration::initialize(QAStData::studioIFace(), nullptr);
    auto project = std::make_unique<QAStProject>(QFileInfo(path).completeBaseName(), QPixmap());
    if (!project->open(QFileInfo(path).absoluteFilePath())) {
        err(QStringLiteral("%1: the project could not be loaded").arg(path));
        return nullptr;
    }
    return project;
}

// The node named by spec: a path of names from the project ("Build/calc"),
// or a name found anywhere (the first, depth first). The project itself
// when spec is empty.
QAStNode* findNode(QAStProject& project, const QString& spec)
{
    if (spec.isEmpty())
        return &project;
    QAStData* item = &project;
    for (const QString& part : spec.split(u'/', Qt::SkipEmptyParts)) {
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
    return qobject_cast<QAStNode*>(project.findNode(spec));
}

// Makes name the current configuration of every node; false when the
// project has no configuration of that name.
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

// Runs a walk command and waits for its end.
int walk(QCommandLineParser& parser, CommandLineStudio& studio, const char* verb,
         void (QAStNode::*command)())
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
    QEventLoop loop;
    QObject::connect(node, &QAStNode::buildExecuteFinished, &loop, &QEventLoop::quit);
    (node->*command)();
    if (node->isWalking())
        loop.exec();
    studio.endLine();
    if (!node->walkSucceeded()) {
        err(QStringLiteral("%1: %2 of \"%3\" failed").arg(args.value(0), QLatin1String(verb), node->name()));
        return Failure;
    }
    return Success;
}

int save(QCommandLineParser& parser, CommandLineStudio& studio)
{
    const std::unique_ptr<QAStProject> project = load(parser.positionalArguments().value(0));
    if (!project)
        return Failure;
    if (!parser.isSet(asOption)) {
        err(QStringLiteral("save: --as FILE is required"));
        return Usage;
    }
    studio.setSavePath(QFileInfo(parser.value(asOption)).absoluteFilePath());
    return project->saveAs() ? Success : Failure;
}

const QList<Command>& commands()
{
    static const QList<Command> list = {
        {"info", "PROJECT", "Load a project and print its tree of nodes and the load report.",
         [](QCommandLineParser&) {}, info},
        {"env", "PROJECT NODE", "Write the Perl environment script of a node.",
         [](QCommandLineParser& p) {
             p.addOption(configOption);
             p.addOption(outputOption);
         },
         env},
        {"build", "PROJECT [NODE]", "Build a node (the project when none is named) with the drivers.",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "build", &QAStNode::build); }},
        {"rebuild", "PROJECT [NODE]", "Clean, then build a node.",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "rebuild", &QAStNode::rebuild); }},
        {"execute", "PROJECT [NODE]", "Execute the test nodes of a node.",
         [](QCommandLineParser& p) {
             p.addOption(configOption);
             p.addOption(debugOption);
         },
         [](QCommandLineParser& p, CommandLineStudio& s) {
             return walk(p, s, "execution", p.isSet(debugOption) ? &QAStNode::debug : &QAStNode::execute);
         }},
        {"clean", "PROJECT [NODE]", "Remove what a build and a run of a node made.",
         [](QCommandLineParser& p) { p.addOption(configOption); },
         [](QCommandLineParser& p, CommandLineStudio& s) { return walk(p, s, "clean", &QAStNode::clean); }},
        {"save", "PROJECT --as FILE", "Load a project and write it again to FILE.",
         [](QCommandLineParser& p) { p.addOption(asOption); }, save},
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
    text += QStringLiteral("\n'korvil COMMAND --help' describes a command. The installation is "
                           "$ZELTAHOME, else $KORVILDIR, else the one shipped with the tool.\n"
                           "Exit status: 0 success, 1 a failed job, 2 bad usage.\n");
    return text;
}

} // namespace

int run(const QStringList& arguments, CommandLineStudio& studio)
{
    const QString name = arguments.value(1);
    if (name.isEmpty() || name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        const QString topic = name == QLatin1String("help") ? arguments.value(2) : QString();
        if (topic.isEmpty()) {
            (name.isEmpty() ? err(QStringLiteral("no command given")) : void());
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
        err(QStringLiteral("unknown command \"%1\"; see 'korvil --help'").arg(name));
        return Usage;
    }
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(command->summary));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Describe this command."));
    parser.addOption(help);
    command->options(parser);
    const QStringList words = QString::fromLatin1(command->synopsis).split(u' ');
    for (const QString& word : words) {
        if (!word.startsWith(QLatin1String("--")) && word != QLatin1String("FILE"))
            parser.addPositionalArgument(word, QString(), word);
    }
    QStringList parsed = arguments;
    parsed.removeAt(1);
    parsed[0] = QStringLiteral("korvil ") + name;
    if (!parser.parse(parsed)) {
        err(QStringLiteral("%1: %2").arg(name, parser.errorText()));
        return Usage;
    }
    if (parser.isSet(help)) {
        out(parser.helpText());
        return Success;
    }
    const int required = int(std::count_if(words.cbegin(), words.cend(), [](const QString& w) {
        return !w.startsWith(u'[') && !w.startsWith(QLatin1String("--")) && w != QLatin1String("FILE");
    }));
    const int allowed = int(std::count_if(words.cbegin(), words.cend(), [](const QString& w) {
        return !w.startsWith(QLatin1String("--")) && w != QLatin1String("FILE");
    }));
    const int given = int(parser.positionalArguments().size());
    if (given < required || given > allowed) {
        err(QStringLiteral("%1: expects %2; see 'korvil %1 --help'").arg(name, QLatin1String(command->synopsis)));
        return Usage;
    }
    return command->run(parser, studio);
}

}
