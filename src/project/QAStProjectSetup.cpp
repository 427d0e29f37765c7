#include "QAStProjectSetup.h"

#include "QAFileUtil.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboString.h"
#include "QAPropertyInt.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyPathItem.h"
#include "QAStATag.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeLibrary.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStTargetPackage.h"
#include "QAStTargetPackageList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <memory>

namespace {

const QLatin1String generationFormatKey("generationFormat");

QString boxText(const QString& file, const QString& reason)
{
    return file + QStringLiteral("\n\n") + reason;
}

void setError(QString* error, const QString& file, const QString& reason)
{
    if (error)
        *error = boxText(file, reason);
}

QString projectFileOf(const QAStData* item)
{
    const QAStProject* project = item ? item->project() : nullptr;
    return project ? project->path() : QString();
}

// Names in the order of the file tree: case ignored, ties by case.
int compareNames(const QString& a, const QString& b)
{
    const int c = QString::compare(a, b, Qt::CaseInsensitive);
    return c != 0 ? c : QString::compare(a, b);
}

// The child behind which an item named name goes among folder's children:
// folders first, each group by name. Null for the front.
QAStData* placeFor(const QAStFolder* folder, const QString& name, bool isFolder)
{
    // Files come sorted most of the time: behind the last one at once.
    QAStData* last = folder->last();
    if (!isFolder && last && !qobject_cast<const QAStFolder*>(last) && compareNames(last->name(), name) < 0)
        return last;
    QAStData* after = nullptr;
    for (QAStData* child = folder->child(); child; child = child->next()) {
        const bool childIsFolder = qobject_cast<const QAStFolder*>(child) != nullptr;
        if (isFolder ? (childIsFolder && compareNames(child->name(), name) < 0)
                     : (childIsFolder || compareNames(child->name(), name) < 0))
            after = child;
    }
    return after;
}

// The folder of the file tree that mirrors the directory of file (relative
// to the project's directory), made when missing; the root folder for a
// file outside the project's directory.
QAStFolder* folderFor(QAStProject& project, const QString& file)
{
    QAStFolder* folder = project.rootFolder();
    const QString relative = QDir(project.directory()).relativeFilePath(QFileInfo(file).path());
    if (relative == QLatin1String(".") || relative.startsWith(QLatin1String("..")) ||
        QDir::isAbsolutePath(relative))
        return folder;
    for (const QString& part : relative.split(u'/', Qt::SkipEmptyParts)) {
        QAStFolder* found = nullptr;
        for (QAStFolder* sub : folder->folders()) {
            if (sub->name() == part) {
                found = sub;
                break;
            }
        }
        if (!found)
            found = new QAStFolder(part, QPixmap(), folder, placeFor(folder, part, true));
        folder = found;
    }
    return folder;
}

// The directories and files a directory's walk leaves out for a project:
// its intermediate and output directories (when below its own directory)
// and its two files.
struct Excluded {
    QSet<QString> directories;
    QSet<QString> files;
};

Excluded excludedFor(const QAStProject* project)
{
    Excluded excluded;
    if (!project)
        return excluded;
    excluded.files << QFileInfo(project->path()).absoluteFilePath()
                   << QFileInfo(project->browseInformationFilePath()).absoluteFilePath();
    const QDir base(project->directory());
    const QString top = QDir::cleanPath(base.absolutePath());
    for (const QAStConfiguration* c : project->configurationList()) {
        for (const char* key : {"intdir", "outdir"}) {
            const QString dir = c->property(QLatin1String(key)).toString();
            if (dir.isEmpty())
                continue;
            const QString absolute = QDir::cleanPath(base.absoluteFilePath(dir));
            if (absolute != top)
                excluded.directories.insert(absolute);
        }
    }
    return excluded;
}

void collectFiles(const QString& directory, const Excluded& excluded, QStringList& found)
{
    const QDir dir(directory);
    for (const QFileInfo& info : dir.entryInfoList(QDir::Files, QDir::Name)) {
        const QString path = QDir::cleanPath(info.absoluteFilePath());
        if (!excluded.files.contains(path) &&
            QAStFile::fileType(info.fileName()) != QAStFile::UnknownFile)
            found.append(path);
    }
    for (const QFileInfo& sub :
         dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name)) {
        const QString path = QDir::cleanPath(sub.absoluteFilePath());
        if (!excluded.directories.contains(path))
            collectFiles(path, excluded, found);
    }
}

// Paths made absolute against base and checked; a directory stands for
// its files. False, with the path that names nothing, when one is missing.
bool expandPaths(const QAStProject& project, const QStringList& paths, QStringList& files,
                 QString* missing)
{
    const QDir base(project.directory());
    for (const QString& path : paths) {
        const QString absolute = QDir::cleanPath(base.absoluteFilePath(path));
        const QFileInfo info(absolute);
        if (info.isDir()) {
            files += QAStProjectSetup::filesBelow(absolute, &project);
        } else if (info.isFile()) {
            files.append(absolute);
        } else {
            *missing = absolute;
            return false;
        }
    }
    files.removeDuplicates();
    return true;
}

// A fresh node of kind, not in any tree: what it stands for and takes.
std::unique_ptr<QAStNode> probeOf(const QString& kind)
{
    return std::unique_ptr<QAStNode>(QAStNode::createNode(kind, QString(), nullptr, nullptr));
}

// --- settings

void collectSettings(const QAPropertyGroup* group, QList<QAProperty*>& settings)
{
    for (QAProperty* property : group->children()) {
        if (property->isGroup())
            collectSettings(static_cast<const QAPropertyGroup*>(property), settings);
        else if (!property->tag().isEmpty())
            settings.append(property);
    }
}

QList<QAProperty*> allSettings()
{
    QList<QAProperty*> settings;
    if (const QAPropertyMapGroup* descriptor = QAStConfiguration::propertyDescriptor())
        collectSettings(descriptor, settings);
    return settings;
}

int editDistance(const QString& a, const QString& b)
{
    QList<int> row(b.size() + 1);
    for (qsizetype j = 0; j <= b.size(); ++j)
        row[j] = int(j);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = int(i);
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const int above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a.at(i - 1) == b.at(j - 1) ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

bool readBool(const QString& text, bool* value)
{
    const QString word = text.trimmed().toLower();
    static const QStringList yes = {QStringLiteral("true"), QStringLiteral("yes"), QStringLiteral("on"),
                                    QStringLiteral("1")};
    static const QStringList no = {QStringLiteral("false"), QStringLiteral("no"), QStringLiteral("off"),
                                   QStringLiteral("0")};
    *value = yes.contains(word);
    return *value || no.contains(word);
}

} // namespace

// --- a new project

QStringList QAStProjectSetup::newConfigurationNames()
{
    return {QStringLiteral("Debug"), QStringLiteral("Release")};
}

QString QAStProjectSetup::defaultIntermediateDirectory()
{
    return QStringLiteral("build");
}

int QAStProjectSetup::languageOf(const QString& name)
{
    const QString upper = name.trimmed().toUpper();
    if (upper == QLatin1String("C"))
        return QAStFile::LanguageC;
    if (upper == QLatin1String("C++") || upper == QLatin1String("CPP"))
        return QAStFile::LanguageCpp;
    if (upper == QLatin1String("ADA"))
        return QAStFile::LanguageAda;
    if (upper == QLatin1String("JAVA"))
        return QAStFile::LanguageJava;
    return QAStFile::NoLanguage;
}

QString QAStProjectSetup::languageName(int language)
{
    switch (language) {
    case QAStFile::LanguageC:
        return QStringLiteral("C");
    case QAStFile::LanguageCpp:
        return QStringLiteral("C++");
    case QAStFile::LanguageAda:
        return QStringLiteral("Ada");
    case QAStFile::LanguageJava:
        return QStringLiteral("Java");
    default:
        return QString();
    }
}

namespace {

QString installedPackagesText()
{
    QStringList names;
    for (const QAStTargetPackage* package : QAStTargetPackageList::installTargetPackages()->packages())
        names.append(
            QStringLiteral("%1 (%2)").arg(package->name(), QFileInfo(package->directory()).fileName()));
    return names.isEmpty() ? QAStProjectSetup::tr("none is installed")
                           : QAStProjectSetup::tr("the installed ones are %1")
                                 .arg(names.join(QStringLiteral(", ")));
}

} // namespace

QAStTargetPackage* QAStProjectSetup::packageForLanguage(int language, QString* error)
{
    for (QAStTargetPackage* package : QAStTargetPackageList::installTargetPackages()->packages()) {
        if (package->languageType() == language)
            return package;
    }
    setError(error, QAStData::targetDir(),
             tr("No target package for %1 is installed; %2.")
                 .arg(languageName(language).isEmpty() ? tr("this language") : languageName(language),
                      installedPackagesText()));
    return nullptr;
}

QAStTargetPackage* QAStProjectSetup::packageNamed(const QString& name, QString* error)
{
    if (QAStTargetPackage* package = QAStTargetPackageList::search(name))
        return package;
    setError(error, QAStData::targetDir(),
             tr("No target package is named \"%1\"; %2.").arg(name, installedPackagesText()));
    return nullptr;
}

QString QAStProjectSetup::targetPathOf(const QAStTargetPackage& package)
{
    const QFileInfo directory(package.directory());
    const QString targets = QDir::cleanPath(QDir(QAStData::targetDir()).absolutePath());
    if (!QAStData::installDir().isEmpty() && QDir::cleanPath(directory.absolutePath()) == targets)
        return QStringLiteral("${ZELTAHOME}/targets/") + directory.fileName();
    return QDir::cleanPath(directory.absoluteFilePath());
}

bool QAStProjectSetup::createProject(QAStProject& project, const QString& path,
                                     const QAStTargetPackage& package, QString* error,
                                     const QString& intermediateDirectory)
{
    QString file = QFileInfo(path).absoluteFilePath();
    if (QFileInfo(file).suffix().isEmpty())
        file += QLatin1String(QAStProject::projectExtension);
    file = QDir::cleanPath(file);
    QAStProject probe{QString(), QPixmap()};
    probe.setPath(file);
    for (const QString& existing : QStringList{file, probe.browseInformationFilePath()}) {
        if (QFileInfo::exists(existing)) {
            setError(error, existing,
                     tr("The file exists already: a new project does not replace it."));
            return false;
        }
    }
    if (!QFileInfo(QFileInfo(file).absolutePath()).isDir()) {
        setError(error, file, tr("The directory of the project does not exist."));
        return false;
    }
    if (!project.create(file)) {
        setError(error, file, tr("The new project cannot be written."));
        return false;
    }
    QAStConfiguration::initialize(QAStData::studioIFace(), nullptr);
    const QString targetPath = targetPathOf(package);
    for (const QString& name : newConfigurationNames()) {
        QAStConfiguration* c = project.addConfiguration(name);
        c->init(package);
        c->setProperty(QStringLiteral("targetPath"), targetPath);
        c->setProperty(QStringLiteral("intdir"), intermediateDirectory);
        c->setProperty(QStringLiteral("outdir"), intermediateDirectory + QStringLiteral("/results"));
        if (name == QLatin1String("Release")) {
            QStringList flags{QStringLiteral("-O2")};
            for (const QString& flag : package.cFlags().split(u' ', Qt::SkipEmptyParts)) {
                if (!flag.startsWith(QLatin1String("-g")) && !flag.startsWith(QLatin1String("-O")))
                    flags.append(flag);
            }
            c->setProperty(QStringLiteral("cflags"), flags.join(u' '));
        }
    }
    project.setCurrentConfigurationName(newConfigurationNames().constFirst());
    if (!project.save()) {
        removeProjectFiles(project);
        project.close();
        setError(error, file, tr("The new project cannot be written."));
        return false;
    }
    return true;
}

void QAStProjectSetup::removeProjectFiles(const QAStProject& project)
{
    QFile::remove(project.path());
    QFile::remove(project.browseInformationFilePath());
}

// --- nodes

bool QAStProjectSetup::canAdd(const QAStNode* parent, const QString& kind, QString* error)
{
    if (!parent)
        return false;
    const QStringList kinds = parent->addableChildKinds();
    if (kinds.contains(kind))
        return true;
    setError(error, projectFileOf(parent),
             kinds.isEmpty()
                 ? tr("\"%1\" takes no node: a \"%2\" cannot go there.").arg(parent->name(), kind)
                 : tr("\"%1\" takes no \"%2\" node: it takes %3.")
                       .arg(parent->name(), kind, kinds.join(QStringLiteral(", "))));
    return false;
}

QString QAStProjectSetup::fileKey(const QAStProject& project, const QString& file)
{
    const QString relative = QDir(project.directory()).relativeFilePath(file);
    if (relative.startsWith(QLatin1String("..")) || QDir::isAbsolutePath(relative))
        return QDir::cleanPath(file);
    return relative;
}

QAStNode* QAStProjectSetup::addSource(QAStNode* parent, const QString& file)
{
    if (!parent || !parent->addableChildKinds().contains(QStringLiteral("source")))
        return nullptr;
    const QAStProject* project = parent->project();
    QAStNode* source = parent->addNewChild(QStringLiteral("source"));
    if (!source || !project)
        return source;
    source->setName(QFileInfo(file).fileName());
    static_cast<QAStNodeFileRef*>(source)->setFileKey(fileKey(*project, file));
    return source;
}

QAStNode* QAStProjectSetup::addNode(QAStNode* parent, const QString& kind, const QString& name,
                                    const QStringList& files, QString* error)
{
    QAStProject* project = parent ? parent->project() : nullptr;
    if (!project || !canAdd(parent, kind, error))
        return nullptr;
    const std::unique_ptr<QAStNode> probe = probeOf(kind);
    if (!probe) {
        setError(error, project->path(), tr("\"%1\" is no kind of node.").arg(kind));
        return nullptr;
    }
    const bool standsForFile = qobject_cast<const QAStNodeFileRef*>(probe.get()) != nullptr;
    QStringList paths = files;
    if (standsForFile && paths.isEmpty() && !name.isEmpty())
        paths.append(name);
    if (standsForFile && paths.size() != 1) {
        setError(error, project->path(), tr("A \"%1\" node refers to one file: give one.").arg(kind));
        return nullptr;
    }
    QStringList expanded;
    QString missing;
    if (!expandPaths(*project, paths, expanded, &missing)) {
        setError(error, missing, tr("No such file or directory."));
        return nullptr;
    }
    QStringList sources;
    if (!standsForFile) {
        for (const QString& file : std::as_const(expanded)) {
            if (QAStFile::languageType(file) != QAStFile::NoLanguage)
                sources.append(file);
        }
        if (!sources.isEmpty() && !probe->addableChildKinds().contains(QStringLiteral("source"))) {
            setError(
                error, sources.constFirst(),
                tr("A \"%1\" node takes no source: add the sources to an application or a library.")
                    .arg(kind));
            return nullptr;
        }
    } else if (QFileInfo(QDir(project->directory()).absoluteFilePath(paths.constFirst())).isDir()) {
        setError(error, expanded.value(0, paths.constFirst()),
                 tr("A \"%1\" node refers to a file, not a directory.").arg(kind));
        return nullptr;
    }
    const QString nodeName = !name.isEmpty() && !(standsForFile && files.isEmpty()) ? name
                             : standsForFile ? QFileInfo(expanded.constFirst()).fileName()
                                             : QString();
    if (!nodeName.isEmpty()) {
        for (const QAStData* child = parent->child(); child; child = child->next()) {
            if (child->name() == nodeName && qobject_cast<const QAStNode*>(child)) {
                setError(error, project->path(),
                         tr("\"%1\" has a node named \"%2\" already.").arg(parent->name(), nodeName));
                return nullptr;
            }
        }
    }

    QAStNode* node = parent->addNewChild(kind);
    if (!node) {
        setError(error, project->path(), tr("\"%1\" takes no \"%2\" node.").arg(parent->name(), kind));
        return nullptr;
    }
    if (!nodeName.isEmpty())
        node->setName(nodeName);
    if (qobject_cast<const QAStNodeLibrary*>(node)) {
        for (QAStConfiguration* c : node->configurationList())
            c->setProperty(generationFormatKey, QStringLiteral("LIB"));
    }
    if (standsForFile)
        static_cast<QAStNodeFileRef*>(node)->setFileKey(fileKey(*project, expanded.constFirst()));
    for (const QString& source : std::as_const(sources))
        addSource(node, source);
    addFiles(*project, expanded);
    return node;
}

// --- the file tree

QList<QAStFile*> QAStProjectSetup::addFiles(QAStProject& project, const QStringList& paths,
                                            QString* error)
{
    QStringList files;
    QString missing;
    if (!expandPaths(project, paths, files, &missing)) {
        setError(error, missing, tr("No such file or directory."));
        return {};
    }
    QList<QAStFile*> added;
    QAStRootFolder* root = project.rootFolder();
    // Looked up once each: the tree's files, and the folder of each directory.
    QSet<QString> known;
    for (const QAStFile* f : root->files())
        known.insert(f->fileKey());
    QHash<QString, QAStFolder*> folderOfDirectory;
    for (const QString& file : std::as_const(files)) {
        const QString key = QAStATag::fileKeyOf(QAFileUtil::relativePathToAbs(root->directory(), file));
        if (known.contains(key))
            continue;
        known.insert(key);
        const QString directory = QFileInfo(file).path();
        QAStFolder*& folder = folderOfDirectory[directory];
        if (!folder)
            folder = folderFor(project, file);
        added.append(new QAStFile(file, folder, placeFor(folder, QFileInfo(file).fileName(), false)));
    }
    return added;
}

QStringList QAStProjectSetup::filesBelow(const QString& directory, const QAStProject* project)
{
    QStringList found;
    collectFiles(QDir::cleanPath(QDir(directory).absolutePath()), excludedFor(project), found);
    return found;
}

// --- settings

QAProperty* QAStProjectSetup::settingProperty(const QString& key)
{
    for (QAProperty* property : allSettings()) {
        if (property->tag() == key)
            return property;
    }
    return nullptr;
}

QStringList QAStProjectSetup::closeSettingKeys(const QString& key)
{
    const QString wanted = key.trimmed().toLower();
    struct Close {
        int score;
        QString key;
    };
    QList<Close> close;
    for (const QAProperty* property : allSettings()) {
        const QString tag = property->tag().toLower();
        const int distance = editDistance(wanted, tag);
        int score = -1;
        if (distance <= std::max<qsizetype>(1, wanted.size() / 3))
            score = distance;
        else if (wanted.size() >= 3 && (tag.contains(wanted) || wanted.contains(tag) ||
                                        property->name().toLower().contains(wanted)))
            score = 10 + int(std::abs(tag.size() - wanted.size()));
        if (score >= 0)
            close.append({score, property->tag()});
    }
    std::stable_sort(close.begin(), close.end(), [](const Close& a, const Close& b) {
        return a.score != b.score ? a.score < b.score : a.key < b.key;
    });
    QStringList keys;
    for (const Close& c : std::as_const(close)) {
        if (!keys.contains(c.key) && keys.size() < 5)
            keys.append(c.key);
    }
    return keys;
}

QString QAStProjectSetup::unknownSettingText(const QString& key)
{
    if (!QAStConfiguration::propertyDescriptor())
        return tr("No setting has the key \"%1\": the settings descriptor %2 is not loaded.")
            .arg(key, QAStConfiguration::propertyDescriptorFile());
    QStringList described;
    for (const QString& close : closeSettingKeys(key)) {
        const QAProperty* property = settingProperty(close);
        described.append(property->name().isEmpty()
                             ? close
                             : QStringLiteral("%1 (%2)").arg(close, property->name()));
    }
    if (described.isEmpty())
        return tr("No setting has the key \"%1\", nor a key close to it.").arg(key);
    return tr("No setting has the key \"%1\"; the closest keys are %2.")
        .arg(key, described.join(QStringLiteral(", ")));
}

QAStConfiguration* QAStProjectSetup::configurationOf(QAStNode* node, const QString& name, bool create,
                                                     QString* error)
{
    if (!node)
        return nullptr;
    const QString wanted = name.isEmpty() ? node->currentConfigurationName() : name;
    if (QAStConfiguration* c = node->configuration(wanted))
        return c;
    const QAStProject* project = node->project();
    const QStringList names = project ? project->configurations() : node->configurations();
    if (create && names.contains(wanted))
        return node->addConfiguration(wanted);
    if (names.contains(wanted))
        setError(error, projectFileOf(node),
                 tr("\"%1\" has no configuration \"%2\" of its own.").arg(node->name(), wanted));
    else
        setError(error, projectFileOf(node),
                 tr("The project has no configuration \"%1\"; it has %2.")
                     .arg(wanted, names.isEmpty() ? tr("none") : names.join(QStringLiteral(", "))));
    return nullptr;
}

bool QAStProjectSetup::setSetting(QAStConfiguration& configuration, const QString& key,
                                  const QStringList& values, QString* error)
{
    const QString file = projectFileOf(configuration.node());
    const QAProperty* property = settingProperty(key);
    if (!property) {
        setError(error, file, unknownSettingText(key));
        return false;
    }
    if (property->readOnly()) {
        setError(error, file, tr("The setting \"%1\" (%2) is read only.").arg(key, property->name()));
        return false;
    }
    const auto fail = [&](const QString& reason) {
        setError(error, file, tr("The setting \"%1\" (%2) %3").arg(key, property->name(), reason));
        return false;
    };
    const QMetaType::Type type = property->type();
    // A list takes any number of values, a free text one or more (joined);
    // everything else one.
    const bool freeText = type == QMetaType::QString &&
                          !dynamic_cast<const QAPropertyComboString*>(property) &&
                          !dynamic_cast<const QAPropertyPathItem*>(property);
    if (type != QMetaType::QStringList && (freeText ? values.isEmpty() : values.size() != 1))
        return fail(tr("takes one value."));
    const QString text = values.value(0);
    switch (type) {
    case QMetaType::Int: {
        if (const auto* combo = dynamic_cast<const QAPropertyComboInt*>(property)) {
            const QStringList labels = combo->itemTexts();
            const QList<int> numbers = combo->itemValues();
            bool ok = false;
            int value = text.toInt(&ok);
            for (qsizetype i = 0; !ok && i < labels.size(); ++i) {
                if (labels.at(i).compare(text, Qt::CaseInsensitive) == 0) {
                    value = numbers.at(i);
                    ok = true;
                }
            }
            if (!ok || !numbers.contains(value)) {
                QStringList choices;
                for (qsizetype i = 0; i < labels.size(); ++i)
                    choices.append(QStringLiteral("%1 (%2)").arg(numbers.at(i)).arg(labels.at(i)));
                return fail(
                    tr("takes one of %1, not \"%2\".").arg(choices.join(QStringLiteral(", ")), text));
            }
            configuration.setProperty(key, value);
            return true;
        }
        bool ok = false;
        const int value = text.trimmed().toInt(&ok);
        if (!ok)
            return fail(tr("takes a whole number, not \"%1\".").arg(text));
        if (const auto* number = dynamic_cast<const QAPropertyInt*>(property)) {
            if (value < number->minimum() || value > number->maximum())
                return fail(tr("takes a number from %1 to %2, not %3.")
                                .arg(number->minimum())
                                .arg(number->maximum())
                                .arg(value));
        }
        configuration.setProperty(key, value);
        return true;
    }
    case QMetaType::Bool: {
        bool value = false;
        if (!readBool(text, &value))
            return fail(tr("takes true or false (or yes, no, on, off, 1, 0), not \"%1\".").arg(text));
        configuration.setProperty(key, value);
        return true;
    }
    case QMetaType::QString: {
        if (const auto* combo = dynamic_cast<const QAPropertyComboString*>(property)) {
            const QStringList labels = combo->itemTexts();
            const QStringList choices = combo->itemValues();
            qsizetype index = choices.indexOf(text);
            for (qsizetype i = 0; index < 0 && i < labels.size(); ++i) {
                if (labels.at(i).compare(text, Qt::CaseInsensitive) == 0)
                    index = i;
            }
            if (index < 0) {
                QStringList shown;
                for (qsizetype i = 0; i < choices.size(); ++i)
                    shown.append(QStringLiteral("%1 (%2)").arg(choices.at(i), labels.value(i)));
                return fail(
                    tr("takes one of %1, not \"%2\".").arg(shown.join(QStringLiteral(", ")), text));
            }
            configuration.setProperty(key, choices.at(index));
            return true;
        }
        configuration.setProperty(key, values.join(u' '));
        return true;
    }
    case QMetaType::QStringList:
        configuration.setProperty(key, values);
        return true;
    default:
        return fail(tr("cannot be set from a text."));
    }
}

QVariant QAStProjectSetup::setting(const QAStConfiguration& configuration, const QString& key,
                                   QString* error)
{
    const QAProperty* property = settingProperty(key);
    if (!property) {
        setError(error, projectFileOf(configuration.node()), unknownSettingText(key));
        return QVariant();
    }
    QVariant value = configuration.property(key);
    if (!value.isValid())
        value = property->initValue();
    if (!value.isValid())
        value = QAProperty::emptyValue(property->type());
    return value;
}

QStringList QAStProjectSetup::settingLines(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QStringList:
        return value.toStringList();
    case QMetaType::Bool:
        return {value.toBool() ? QStringLiteral("true") : QStringLiteral("false")};
    case QMetaType::UnknownType:
        return {};
    default:
        return {value.toString()};
    }
}
