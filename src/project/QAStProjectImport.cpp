#include "QAStProjectImport.h"

#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStCompilationDatabase.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStNodeLink.h"
#include "QAStProject.h"
#include "QAStProjectSetup.h"
#include "QAStTargetPackage.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace {

QString boxText(const QString& file, const QString& reason)
{
    return file + QStringLiteral("\n\n") + reason;
}

// A path as the project keeps it: relative to its directory when inside,
// "." for the directory itself, else absolute.
QString projectPath(const QAStProject& project, const QString& path)
{
    const QString key = QAStProjectSetup::fileKey(project, path);
    return key.isEmpty() ? QStringLiteral(".") : key;
}

bool isInside(const QString& path, const QString& directory)
{
    return path == directory || path.startsWith(directory + u'/');
}

QString projectFileOr(const QString& given, const QString& fallback)
{
    return given.isEmpty() ? fallback : QDir::cleanPath(QFileInfo(given).absoluteFilePath());
}

const QAStTargetPackage* packageFor(const QString& packageName, int language, QString* error)
{
    return packageName.isEmpty() ? QAStProjectSetup::packageForLanguage(language, error)
                                 : QAStProjectSetup::packageNamed(packageName, error);
}

// The value most entries have (compared by their text); on a tie, the
// one that reached the count first.
template <class T, class Text>
T mostCommon(const QList<T>& values, Text text)
{
    QHash<QString, qsizetype> counts;
    T best;
    qsizetype bestCount = 0;
    for (const T& value : values) {
        const qsizetype count = ++counts[text(value)];
        if (count > bestCount) {
            best = value;
            bestCount = count;
        }
    }
    return best;
}

// A name no child node of parent has yet: name, else "name 2", ...
QString freeName(const QAStNode* parent, const QString& name)
{
    const auto taken = [&](const QString& candidate) {
        for (const QAStData* child = parent->child(); child; child = child->next()) {
            if (child->name() == candidate)
                return true;
        }
        return false;
    };
    QString candidate = name;
    for (int n = 2; taken(candidate); ++n)
        candidate = name + u' ' + QString::number(n);
    return candidate;
}

void setOnEach(QAStNode* node, const QString& key, const QVariant& value)
{
    for (QAStConfiguration* c : node->configurationList())
        c->setProperty(key, value);
}

bool isHeader(const QString& path)
{
    return QAStFile::fileType(QFileInfo(path).fileName()) == QAStFile::HeaderFiles;
}

// The headers directly in directory.
QStringList headersIn(const QString& directory)
{
    QStringList headers;
    for (const QFileInfo& info : QDir(directory).entryInfoList(QDir::Files, QDir::Name)) {
        if (isHeader(info.fileName()))
            headers.append(QDir::cleanPath(info.absoluteFilePath()));
    }
    return headers;
}

// Whether a tagged source defines the program's entry: a free function
// main in C and C++, a method main in Java.
bool definesMain(const QAStFile* file)
{
    if (file->language() == QAStFile::LanguageJava) {
        const QList<QAStData*> methods = file->childrenOfClass("QAStAMethodTag", true);
        return std::any_of(methods.cbegin(), methods.cend(),
                           [](const QAStData* m) { return m->name() == QLatin1String("main"); });
    }
    for (const QAStData* tag = file->child(); tag; tag = tag->next()) {
        if (qobject_cast<const QAStAFunctionTag*>(tag) && !qobject_cast<const QAStAMethodTag*>(tag) &&
            tag->name() == QLatin1String("main"))
            return true;
    }
    return false;
}

// Saves the import's project; on failure its files go and the project
// closes.
bool finish(QAStProject& project, QString* error)
{
    if (project.save())
        return true;
    const QString file = project.path();
    QAStProjectSetup::removeProjectFiles(project);
    project.close();
    if (error)
        *error = boxText(file, QAStProjectImport::tr("The imported project cannot be written."));
    return false;
}

bool abandon(QAStProject& project, QString* error, const QString& reason)
{
    QAStProjectSetup::removeProjectFiles(project);
    project.close();
    if (error)
        *error = reason;
    return false;
}

} // namespace

QString QAStProjectImport::defaultProjectFile(const QString& source)
{
    const QFileInfo info(source);
    QString directory;
    if (info.isDir()) {
        directory = QDir::cleanPath(info.absoluteFilePath());
    } else {
        directory = QAStCompilationDatabase::buildSystemSourceDirectory(info.absolutePath());
        if (directory.isEmpty()) {
            QAStCompilationDatabase database;
            if (!database.read(source))
                return QString();
            directory = database.sourceDirectory();
        }
    }
    const QString name = QFileInfo(directory).fileName();
    return directory + u'/' + (name.isEmpty() ? QStringLiteral("project") : name) +
           QLatin1String(QAStProject::projectExtension);
}

bool QAStProjectImport::importSource(QAStProject& project, const QString& source,
                                     const QString& projectFile, const QString& packageName,
                                     QString* error)
{
    if (QFileInfo(source).isDir())
        return importDirectory(project, source, projectFile, packageName, error);
    return importDatabase(project, source, projectFile, packageName, error);
}

bool QAStProjectImport::importDatabase(QAStProject& project, const QString& path,
                                       const QString& projectFile, const QString& packageName,
                                       QString* error)
{
    QAStCompilationDatabase database;
    if (!database.read(path, error))
        return false;
    const QString sourceDirectory = database.sourceDirectory();
    const QString name = QFileInfo(sourceDirectory).fileName();
    const QString file = projectFileOr(
        projectFile, sourceDirectory + u'/' + (name.isEmpty() ? QStringLiteral("project") : name) +
                         QLatin1String(QAStProject::projectExtension));
    bool cpp = false;
    for (const QAStCompilationDatabase::Target& target : database.targets()) {
        for (const QAStCompilationDatabase::Source& source : target.sources)
            cpp = cpp || QAStFile::languageType(source.file) == QAStFile::LanguageCpp;
    }
    const QAStTargetPackage* package =
        packageFor(packageName, cpp ? QAStFile::LanguageCpp : QAStFile::LanguageC, error);
    if (!package)
        return false;

    // The build products go beside the build system's, when it builds
    // inside the project's directory.
    const QString projectDirectory = QFileInfo(file).absolutePath();
    const QString buildDirectory = QFileInfo(database.file()).absolutePath();
    QString intermediate = QAStProjectSetup::defaultIntermediateDirectory();
    if (isInside(buildDirectory, projectDirectory)) {
        const QString relative = QDir(projectDirectory).relativeFilePath(buildDirectory);
        intermediate = relative.isEmpty() || relative == QLatin1String(".")
                           ? QStringLiteral("korvil")
                           : relative + QStringLiteral("/korvil");
    }
    if (!QAStProjectSetup::createProject(project, file, *package, error, intermediate))
        return false;

    QHash<QString, QAStNode*> nodeOf;
    QStringList files;
    QStringList headerDirectories;
    QStringList sourceDirectories;
    for (const QAStCompilationDatabase::Target& target : database.targets()) {
        const QString tag = target.kind == QAStCompilationDatabase::Application
                                ? QStringLiteral("application")
                                : QStringLiteral("library");
        QString reason;
        QAStNode* node =
            QAStProjectSetup::addNode(&project, tag, freeName(&project, target.name), {}, &reason);
        if (!node)
            return abandon(project, error, reason);
        nodeOf.insert(target.name, node);
        if (target.kind == QAStCompilationDatabase::SharedLibrary)
            setOnEach(node, QStringLiteral("generationFormat"), QStringLiteral("DLL"));
        if (!target.linkKnown && target.kind == QAStCompilationDatabase::Application &&
            database.writer() != QAStCompilationDatabase::OtherWriter)
            QAStData::displayMessage(
                QAStData::MessageConsole,
                tr("%1: nothing beside the database tells how \"%2\" links: it is taken "
                   "as an application.")
                    .arg(database.file(), target.name));

        QList<QStringList> includes;
        QList<QString> options;
        for (const QAStCompilationDatabase::Source& source : target.sources) {
            QStringList directories;
            for (const QString& directory : source.includeDirectories) {
                directories.append(projectPath(project, directory));
                if (isInside(directory, projectDirectory) && !headerDirectories.contains(directory))
                    headerDirectories.append(directory);
            }
            includes.append(directories);
            options.append(QAStCompilationDatabase::joinCommand(source.preprocessorOptions));
            const QString sourceDirectory = QFileInfo(source.file).path();
            if (isInside(sourceDirectory, projectDirectory) &&
                !sourceDirectories.contains(sourceDirectory))
                sourceDirectories.append(sourceDirectory);
            files.append(source.file);
        }
        const QStringList nodeIncludes =
            mostCommon(includes, [](const QStringList& dirs) { return dirs.join(u'\n'); });
        const QString nodeOptions = mostCommon(options, [](const QString& text) { return text; });
        if (!nodeIncludes.isEmpty())
            setOnEach(node, QStringLiteral("ge_incdir"), nodeIncludes);
        if (!nodeOptions.isEmpty())
            setOnEach(node, QStringLiteral("cppFlags"), nodeOptions);
        for (qsizetype i = 0; i < target.sources.size(); ++i) {
            QAStNode* source = QAStProjectSetup::addSource(node, target.sources.at(i).file);
            if (!source)
                continue;
            if (includes.at(i) != nodeIncludes)
                setOnEach(source, QStringLiteral("ge_incdir"), includes.at(i));
            if (options.at(i) != nodeOptions)
                setOnEach(source, QStringLiteral("cppFlags"), options.at(i));
        }

        for (const QString& linked : target.links) {
            QAStNode* library = nodeOf.value(linked);
            auto* link = library
                             ? qobject_cast<QAStNodeLink*>(node->addNewChild(QStringLiteral("link")))
                             : nullptr;
            if (!link)
                continue;
            link->setName(QStringLiteral("link to ") + library->name());
            link->setLinkedNode(library);
        }
        QStringList libraries;
        for (const QString& library : target.libraries)
            libraries.append(library.startsWith(u'-') ? library : projectPath(project, library));
        if (!libraries.isEmpty())
            setOnEach(node, QStringLiteral("additionnalObjects"),
                      QAStCompilationDatabase::joinCommand(libraries));
        QStringList libraryDirectories;
        for (const QString& directory : target.libraryDirectories)
            libraryDirectories.append(projectPath(project, directory));
        if (!libraryDirectories.isEmpty())
            setOnEach(node, QStringLiteral("ge_libdir"), libraryDirectories);
    }

    // The headers of the project's include and source directories, those
    // of the build directory only when an include directory lies in it.
    for (const QString& directory : std::as_const(headerDirectories)) {
        const bool inBuild = isInside(directory, buildDirectory);
        for (const QString& below : QAStProjectSetup::filesBelow(directory, &project)) {
            if (isHeader(below) && (inBuild || !isInside(below, buildDirectory)))
                files.append(below);
        }
    }
    for (const QString& directory : std::as_const(sourceDirectories))
        files += headersIn(directory);
    // A source the build makes is not on disk before it runs: its node
    // stays, the file tree waits for it.
    QStringList missing;
    for (const QString& source : std::as_const(files)) {
        if (!QFileInfo::exists(source) && !missing.contains(source))
            missing.append(source);
    }
    for (const QString& source : std::as_const(missing))
        files.removeAll(source);
    if (!missing.isEmpty())
        QAStData::displayMessage(QAStData::MessageConsole,
                                 tr("%1: sources not on disk, left out of the file tree: %2")
                                     .arg(database.file(), missing.join(QStringLiteral(", "))));
    QString reason;
    if (!files.isEmpty() && QAStProjectSetup::addFiles(project, files, &reason).isEmpty() &&
        !reason.isEmpty())
        return abandon(project, error, reason);

    const QStringList leftOut = database.leftOutOptions();
    if (!leftOut.isEmpty())
        QAStData::displayMessage(QAStData::MessageConsole,
                                 tr("%1: compiler options left to the project's configurations: %2")
                                     .arg(database.file(), leftOut.join(u' ')));
    return finish(project, error);
}

bool QAStProjectImport::importDirectory(QAStProject& project, const QString& path,
                                        const QString& projectFile, const QString& packageName,
                                        QString* error)
{
    const QString directory = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    if (!QFileInfo(directory).isDir()) {
        if (error)
            *error = boxText(directory, tr("No such directory."));
        return false;
    }
    const QString file = projectFileOr(projectFile, defaultProjectFile(directory));
    // What the new project's build makes is none of its sources.
    const QString products = QDir(QFileInfo(file).absolutePath())
                                 .absoluteFilePath(QAStProjectSetup::defaultIntermediateDirectory());
    QStringList sources;
    QStringList headers;
    int languages = 0;
    for (const QString& found : QAStProjectSetup::filesBelow(directory)) {
        if (isInside(found, products))
            continue;
        const int language = QAStFile::languageType(found);
        languages |= language;
        if (language != QAStFile::NoLanguage)
            sources.append(found);
        else if (isHeader(found))
            headers.append(found);
    }
    if (sources.isEmpty()) {
        if (error)
            *error = boxText(directory, tr("No C, C++, Ada or Java source lies in this directory."));
        return false;
    }
    const int language = (languages & QAStFile::LanguageCpp)   ? int(QAStFile::LanguageCpp)
                         : (languages & QAStFile::LanguageC)   ? int(QAStFile::LanguageC)
                         : (languages & QAStFile::LanguageAda) ? int(QAStFile::LanguageAda)
                                                               : int(QAStFile::LanguageJava);
    const QAStTargetPackage* package = packageFor(packageName, language, error);
    if (!package || !QAStProjectSetup::createProject(project, file, *package, error))
        return false;

    QString reason;
    const QList<QAStFile*> added = QAStProjectSetup::addFiles(project, sources + headers, &reason);
    if (added.isEmpty())
        return abandon(project, error, reason);
    QList<QAStFile*> tagged;
    for (QAStFile* item : added) {
        if (item->language() != QAStFile::NoLanguage)
            tagged.append(item);
    }
    QStringList mains;
    if (!QAStFile::taggingInformation(tagged, false)) {
        QAStData::displayMessage(
            QAStData::MessageConsole,
            tr("%1: the sources could not be tagged, so no main was looked for: the "
               "project builds a library.")
                .arg(directory));
    }
    for (const QAStFile* item : std::as_const(tagged)) {
        if (definesMain(item))
            mains.append(QAStProjectSetup::fileKey(project, item->filePath()));
    }
    if (mains.size() > 1)
        QAStData::displayMessage(
            QAStData::MessageConsole,
            tr("%1: several sources define main: %2").arg(directory, mains.join(QStringLiteral(", "))));

    const QString tag = mains.isEmpty() ? QStringLiteral("library") : QStringLiteral("application");
    QAStNode* node = QAStProjectSetup::addNode(&project, tag, project.name(), {}, &reason);
    if (!node)
        return abandon(project, error, reason);
    for (const QString& source : std::as_const(sources))
        QAStProjectSetup::addSource(node, source);

    QStringList includes;
    const QString projectDirectory = project.directory();
    const auto include = [&](const QString& dir) {
        const QString kept = projectPath(project, dir);
        if (!includes.contains(kept))
            includes.append(kept);
    };
    for (const QString& header : std::as_const(headers)) {
        const QString dir = QFileInfo(header).path();
        include(dir);
        for (QString above = QFileInfo(dir).path();
             isInside(above, projectDirectory) && above != projectDirectory;
             above = QFileInfo(above).path()) {
            if (QFileInfo(above).fileName() == QLatin1String("include"))
                include(above);
        }
    }
    if (!includes.isEmpty())
        setOnEach(node, QStringLiteral("ge_incdir"), includes);
    return finish(project, error);
}
