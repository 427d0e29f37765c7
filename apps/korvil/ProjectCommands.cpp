// The commands that make and edit a project: new, add, add-files, import,
// set and get. The rules are the library's (QAStProjectSetup,
// QAStProjectImport); each command loads, changes and saves, so the file
// changes only where the command changed the project.
#include "Commands.h"

#include "CommandLineStudio.h"

#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStNode.h"
#include "QAStNodeLink.h"
#include "QAStProject.h"
#include "QAStProjectImport.h"
#include "QAStProjectSetup.h"
#include "QAStTargetPackage.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <memory>

namespace Commands {

namespace {

const QCommandLineOption
    languageOption(QStringLiteral("language"),
                   QStringLiteral("The sources' language: C, C++, Ada or Java (C by default)."),
                   QStringLiteral("LANGUAGE"));
const QCommandLineOption
    packageOption(QStringLiteral("package"),
                  QStringLiteral("Use the installed target package NAME (its name or "
                                 "directory)."),
                  QStringLiteral("NAME"));
const QCommandLineOption underOption(QStringLiteral("under"),
                                     QStringLiteral("Add below NODE (the project by default)."),
                                     QStringLiteral("NODE"));
const QCommandLineOption projectOption({QStringLiteral("o"), QStringLiteral("output")},
                                       QStringLiteral("Write the project to FILE."),
                                       QStringLiteral("FILE"));
const QCommandLineOption
    settingConfigOption({QStringLiteral("c"), QStringLiteral("config")},
                        QStringLiteral("Use the configuration NAME (the node's current "
                                       "one by default)."),
                        QStringLiteral("NAME"));

// Paths of the command line, taken against the current directory.
QStringList absolutePaths(const QStringList& paths)
{
    QStringList absolute;
    for (const QString& path : paths)
        absolute.append(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    return absolute;
}

QString countText(qsizetype count, const char* one, const char* many)
{
    return count == 1 ? QStringLiteral("1 %1").arg(QLatin1String(one))
                      : QStringLiteral("%1 %2").arg(count).arg(QLatin1String(many));
}

bool saveProject(QAStProject& project, const QString& shown)
{
    if (project.save())
        return true;
    err(QStringLiteral("%1: the project was not saved").arg(shown));
    return false;
}

// The node of a command's NODE argument; null, told, when there is none.
QAStNode* nodeArgument(QAStProject& project, const QString& projectArgument, const QString& name)
{
    QAStNode* node = findNode(project, name);
    if (!node)
        err(QStringLiteral("%1: no node named \"%2\"").arg(projectArgument, name));
    return node;
}

// A node and what it holds, as the import prints it.
QString nodeLine(const QAStNode* node)
{
    const QList<QAStData*> sources = node->childrenOfClass("QAStNodeSource", true);
    QStringList links;
    for (const QAStData* link : node->childrenOfClass("QAStNodeLink"))
        links.append(static_cast<const QAStNodeLink*>(link)->linkedNodeName());
    QString line = QStringLiteral("  %1 %2: %3")
                       .arg(node->inherits("QAStNodeLibrary") ? QStringLiteral("library")
                                                              : QStringLiteral("application"),
                            node->name(), countText(sources.size(), "source", "sources"));
    if (!links.isEmpty())
        line += QStringLiteral(", links ") + links.join(QStringLiteral(", "));
    return line + u'\n';
}

} // namespace

void newOptions(QCommandLineParser& parser)
{
    parser.addOption(languageOption);
    parser.addOption(packageOption);
}

int newProject(QCommandLineParser& parser, CommandLineStudio&)
{
    const QString path = parser.positionalArguments().value(0);
    int language = 0;
    if (parser.isSet(languageOption)) {
        language = QAStProjectSetup::languageOf(parser.value(languageOption));
        if (!language) {
            err(QStringLiteral("new: --language \"%1\" is none of C, C++, Ada, Java")
                    .arg(parser.value(languageOption)));
            return Usage;
        }
    }
    QString error;
    const QAStTargetPackage* package =
        parser.isSet(packageOption)
            ? QAStProjectSetup::packageNamed(parser.value(packageOption), &error)
            : QAStProjectSetup::packageForLanguage(language ? language : int(QAStFile::LanguageC),
                                                   &error);
    if (!package) {
        err(error);
        return Failure;
    }
    if (language && package->languageType() != language) {
        err(QStringLiteral("new: the package \"%1\" is for %2, not %3")
                .arg(package->name(), QAStProjectSetup::languageName(package->languageType()),
                     QAStProjectSetup::languageName(language)));
        return Usage;
    }
    QAStProject project(QFileInfo(path).completeBaseName(), QPixmap());
    if (!QAStProjectSetup::createProject(project, path, *package, &error)) {
        err(error);
        return Failure;
    }
    out(QStringLiteral("%1: a new project on %2, configurations %3 (current %4)\n")
            .arg(QDir::current().relativeFilePath(project.path()), package->name(),
                 project.configurations().join(QStringLiteral(", ")),
                 project.currentConfigurationName()));
    return Success;
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOption(underOption);
}

int add(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project)
        return Failure;
    QAStNode* parent = nodeArgument(*project, args.value(0), parser.value(underOption));
    if (!parent)
        return Usage;
    QString error;
    if (!QAStProjectSetup::canAdd(parent, args.value(1), &error)) {
        err(error);
        return Usage;
    }
    QAStNode* node = QAStProjectSetup::addNode(parent, args.value(1), args.value(2),
                                               absolutePaths(args.mid(3)), &error);
    if (!node) {
        err(error);
        return Failure;
    }
    if (!saveProject(*project, args.value(0)))
        return Failure;
    const qsizetype sources = node->childrenOfClass("QAStNodeSource").size();
    out(QStringLiteral("%1: added %2 \"%3\" under \"%4\"%5\n")
            .arg(args.value(0), args.value(1), node->name(), parent->name(),
                 sources ? QStringLiteral(" with ") + countText(sources, "source", "sources")
                         : QString()));
    return Success;
}

int addFiles(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project)
        return Failure;
    QString error;
    const QList<QAStFile*> added =
        QAStProjectSetup::addFiles(*project, absolutePaths(args.mid(1)), &error);
    if (!error.isEmpty()) {
        err(error);
        return Failure;
    }
    if (!added.isEmpty() && !saveProject(*project, args.value(0)))
        return Failure;
    out(QStringLiteral("%1: %2 added to the file tree\n")
            .arg(args.value(0), countText(added.size(), "file", "files")));
    return Success;
}

void importOptions(QCommandLineParser& parser)
{
    parser.addOption(projectOption);
    parser.addOption(packageOption);
}

int import(QCommandLineParser& parser, CommandLineStudio&)
{
    const QString source = parser.positionalArguments().value(0);
    if (!QFileInfo::exists(source)) {
        err(QStringLiteral("%1: no such file or directory").arg(source));
        return Failure;
    }
    QAStConfiguration::initialize(QAStData::studioIFace(), nullptr);
    QAStProject project{QString(), QPixmap()};
    QString error;
    if (!QAStProjectImport::importSource(project, source, parser.value(projectOption),
                                         parser.value(packageOption), &error)) {
        err(error);
        return Failure;
    }
    const QList<QAStData*> nodes = project.childrenOfClass("QAStNode");
    out(QStringLiteral("%1: %2, %3\n")
            .arg(QDir::current().relativeFilePath(project.path()),
                 countText(nodes.size(), "node", "nodes"),
                 countText(project.childrenOfClass("QAStNodeSource", true).size(), "source",
                           "sources")));
    for (const QAStData* node : nodes)
        out(nodeLine(static_cast<const QAStNode*>(node)));
    return Success;
}

void settingOptions(QCommandLineParser& parser)
{
    parser.addOption(settingConfigOption);
}

int set(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project)
        return Failure;
    QAStNode* node = nodeArgument(*project, args.value(0), args.value(1));
    if (!node)
        return Usage;
    QString error;
    QAStConfiguration* configuration =
        QAStProjectSetup::configurationOf(node, parser.value(settingConfigOption), true, &error);
    if (!configuration ||
        !QAStProjectSetup::setSetting(*configuration, args.value(2), args.mid(3), &error)) {
        err(error);
        return Usage;
    }
    return saveProject(*project, args.value(0)) ? Success : Failure;
}

int get(QCommandLineParser& parser, CommandLineStudio&)
{
    const QStringList args = parser.positionalArguments();
    const std::unique_ptr<QAStProject> project = load(args.value(0));
    if (!project)
        return Failure;
    QAStNode* node = nodeArgument(*project, args.value(0), args.value(1));
    if (!node)
        return Usage;
    QString error;
    const QAStConfiguration* configuration =
        QAStProjectSetup::configurationOf(node, parser.value(settingConfigOption), false, &error);
    const QVariant value =
        configuration ? QAStProjectSetup::setting(*configuration, args.value(2), &error) : QVariant();
    if (!error.isEmpty()) {
        err(error);
        return Usage;
    }
    for (const QString& line : QAStProjectSetup::settingLines(value))
        out(line + u'\n');
    return Success;
}

} // namespace Commands
