#include "QAStProject.h"

#include "QAFileUtil.h"
#include "QAHost.h"
#include "QAInstall.h"
#include "QARes.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeJavaTesting.h"
#include "QAStNodeJavaTestingScript.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeObjectTesting.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeSystemTestingScript.h"
#include "QAStNodeTestScript.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStNodeUser.h"
#include "QAStNodeVirtualTester.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "QAXML.h"
#include "StudioInterface.h"

#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QSignalBlocker>
#include <QTextStream>

#include <algorithm>
#include <memory>
#include <utility>

namespace {


// Resource errors of an older project file become lines of the load
// report, "file:line: message", while it is read.
class LoadReportErrorHandler : public QAResErrorHandler {
public:
    LoadReportErrorHandler() : m_previous(QARes::setErrorHandler(this)) {}
    ~LoadReportErrorHandler() override { QARes::setErrorHandler(m_previous); }

    void error(const QString& file, int line, const QString& message) override
    {
        QAStData::appendLoadReport(QStringLiteral("%1:%2: %3\n").arg(file).arg(line).arg(message));
    }

private:
    QAResErrorHandler* m_previous;
};

QString absoluteCleanPath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// The file name with extension appended when it has none.
QString withExtension(const QString& file, const QString& extension)
{
    return QFileInfo(file).suffix().isEmpty() ? file + extension : file;
}

QString resourceString(const QARes* group, const char* key, const QString& fallback = QString())
{
    const QARes* r = group ? group->find(QLatin1String(key)) : nullptr;
    return r && r->isString() ? r->toResString()->value() : fallback;
}

int resourceInt(const QARes* group, const char* key, int fallback)
{
    const QARes* r = group ? group->find(QLatin1String(key)) : nullptr;
    return r && r->isInt() ? int(r->toResInt()->value()) : fallback;
}

// A child kind of the older project format: its "kind" word, its class and
// how it is made from its resource group.
struct ResourceKind {
    const char* word;
    const QMetaObject* meta;
    QAStData* (*create)(QARes* res, QAStData* parent, QAStData* after);
};

template <class T>
QAStData* createFromResource(QARes* res, QAStData* parent, QAStData* after)
{
    return new T(res, parent, after);
}

// A sub-project names its project file, relative to the including
// project's directory.
QAStData* createSubProject(QARes* res, QAStData* parent, QAStData* after)
{
    const QString file = QAFileUtil::relativePathToAbs(parent->directory(), resourceString(res, "file"));
    return new QAStSubProject(file, parent, after);
}

template <class T>
constexpr ResourceKind kind(const char* word)
{
    return {word, &T::staticMetaObject, &createFromResource<T>};
}

// The words are the node-kind names of the settings descriptor.
const ResourceKind resourceKinds[] = {
    kind<QAStNodeGroup>("GROUP"),
    kind<QAStNodeLibrary>("LIBRARY"),
    kind<QAStNodeApplication>("APPLICATION"),
    kind<QAStNodeUnitTesting>("UNIT_TESTING"),
    kind<QAStNodeObjectTesting>("OBJECT_TESTING"),
    kind<QAStNodeSystemTesting>("SYSTEM_TESTING"),
    kind<QAStNodeJavaTesting>("JAVA_TESTING"),
    kind<QAStNodeUser>("USER"),
    kind<QAStNodeSource>("SOURCE"),
    kind<QAStNodeTestScript>("TEST_SCRIPT"),
    kind<QAStNodeUnitTestingScript>("UNIT_TESTSCRIPT"),
    kind<QAStNodeSystemTestingScript>("SYSTEM_TESTSCRIPT"),
    kind<QAStNodeJavaTestingScript>("JAVA_TESTSCRIPT"),
    kind<QAStNodeVirtualTester>("VIRTUAL_TESTER"),
    {"PROJECT", &QAStSubProject::staticMetaObject, &createSubProject},
};

const ResourceKind* findResourceKind(const QString& word)
{
    for (const ResourceKind& k : resourceKinds) {
        if (word == QLatin1String(k.word))
            return &k;
    }
    return nullptr;
}

bool metaInherits(const QMetaObject* meta, const QString& className)
{
    for (; meta; meta = meta->superClass()) {
        if (className == QLatin1String(meta->className()))
            return true;
    }
    return false;
}

// Whether parent takes a child of that class (allowedChildClasses).
bool accepts(const QAStData* parent, const QMetaObject* meta)
{
    const auto* node = qobject_cast<const QAStNode*>(parent);
    if (!node)
        return false;
    const QStringList allowed = node->allowedChildClasses();
    return std::any_of(allowed.cbegin(), allowed.cend(),
                       [meta](const QString& name) { return metaInherits(meta, name); });
}

}

QAStProject::QAStProject(const QString& name, const QPixmap& icon, QAStData* parent,
                         QAStData* after)
    : QAStNodeContainer(name, icon, parent, after),
      m_rootFolder(std::make_unique<QAStRootFolder>(name))
{
}

QAStProject::QAStProject(const QDomElement& e, int, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after), m_rootFolder(std::make_unique<QAStRootFolder>(QString()))
{
    init(e);
}

QAStProject::QAStProject(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after), m_rootFolder(std::make_unique<QAStRootFolder>(QString()))
{
    init(res);
}

QAStProject::QAStProject(QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after), m_rootFolder(std::make_unique<QAStRootFolder>(QString()))
{
}

QAStProject::~QAStProject()
{
    qDeleteAll(std::exchange(m_initialConfigurations, {}));
}

// --- opening and closing

bool QAStProject::open(const QString& path)
{
    close();
    setPath(path);
    return loadProjectFile();
}

bool QAStProject::create(const QString& path)
{
    close();
    setName(QFileInfo(path).completeBaseName());
    m_rootFolder->setName(name());
    return saveAs(path, QLatin1String(projectExtension));
}

void QAStProject::close()
{
    deleteChildren();
    for (const QString& name : configurations())
        removeConfiguration(name);
    setCurrentConfigurationName(QString());
    m_rootFolder->deleteChildren();
    m_sortMethod = 0;
    m_pluginList.clear();
    m_open = false;
    m_readOnly = false;
}

bool QAStProject::reload()
{
    return open(m_path);
}

bool QAStProject::loadProjectFile()
{
    close();
    clearLoadReport();
    // The settings descriptor is loaded once and for all. Without it the
    // configurations keep every value as it was read, and the user is told
    // that settings can neither be shown nor used.
    QAStConfiguration::initialize(studioIFace(), preferenceResources());
    if (!QAStConfiguration::propertyDescriptor() && !parentOfClass("QAStProject")) {
        warning(tr("%1\n\nThe settings descriptor cannot be loaded: the project's settings are "
                   "kept as they are written, but cannot be shown, changed or used to build.")
                    .arg(QAStConfiguration::propertyDescriptorFile()));
    }

    const QString file = path();
    if (file.isEmpty() || !QFileInfo::exists(file))
        return failLoad(tr("%1\n\nThe project file don't exist.").arg(file));
    const FileKind kind = fileKind(file);
    if (kind == UnknownFile)
        return failLoad(tr("%1\n\nThis file content is not a valid project file").arg(file));
    if (kind == UnreadableFile || !QFileInfo(file).isReadable())
        return failLoad(tr("%1\n\nYou don't have the read access right").arg(file));
    if (!(kind == XmlProject ? loadXmlProject() : loadResourceProject()))
        return false;

    loadSubProjects();
    openObjectInformationFile();
    takeCurrentConfigurationToSubProjects();
    m_open = true;
    m_readOnly = !QFileInfo(file).isWritable();
    blockSignals(false);
    emit loaded(this);
    return true;
}

bool QAStProject::loadXmlProject()
{
    QFile in(path());
    if (!in.open(QIODevice::ReadOnly))
        return failLoad(tr("%1\n\nUnable to read the project.\n").arg(path()));
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!QAXML::setContent(document, &in, &message, &line, &column)) {
        return failLoad(tr("%1\n\nUnable to read the project :%2 at line #%3 column #%4")
                            .arg(path(), message, QString::number(line), QString::number(column)));
    }
    bool valid = false;
    {
        const QSignalBlocker blocker(this);
        valid = init(document.documentElement());
    }
    if (!valid) {
        return failLoad(tr("%1\n\nIt is a bad project file.\nThe reason is:\n%2")
                            .arg(path(), loadReport()));
    }
    return true;
}

bool QAStProject::loadResourceProject()
{
    std::unique_ptr<QARes> resources;
    {
        const LoadReportErrorHandler handler;
        resources.reset(QARes::read(path()));
    }
    if (!resources)
        return failLoad(tr("%1\n\nUnable to read the project.\n").arg(path()));
    bool valid = false;
    {
        const QSignalBlocker blocker(this);
        valid = init(resources.get());
    }
    if (!valid)
        return failLoad(tr("%1\n\nIt is a bad project file\n%2").arg(path(), loadReport()));
    return true;
}

bool QAStProject::failLoad(const QString& text)
{
    close();
    blockSignals(false);
    warning(text);
    return false;
}

void QAStProject::loadSubProjects()
{
    for (QAStData* item : childrenOfClass("QAStSubProject"))
        loadSubProject(static_cast<QAStSubProject*>(item));
}

bool QAStProject::loadSubProject(QAStSubProject* sub)
{
    if (sub->isUnloaded())
        return false;
    sub->setPath(sub->projectFile());
    if (includesItself(sub)) {
        sub->close();
        warning(tr("%1\n\nThe project includes itself: it is left closed.").arg(sub->path()));
        return false;
    }
    // The sub-project's load starts a report of its own: the including
    // project's lines are kept before it.
    const QString report = loadReport();
    const bool loaded = sub->loadProjectFile();
    const QString subReport = loadReport();
    clearLoadReport();
    appendLoadReport(report + subReport);
    return loaded;
}

bool QAStProject::includesItself(const QAStProject* sub)
{
    for (const QAStData* above : sub->parentsOfClass("QAStProject")) {
        if (static_cast<const QAStProject*>(above)->path() == sub->path())
            return true;
    }
    return false;
}

void QAStProject::openObjectInformationFile()
{
    const QString file = browseInformationFilePath();
    if (m_rootFolder->open(file))
        return;
    const QString question =
        tr("%1\n\nUnable to open the project Object Information File\n"
           "Do you want to create it automatically?")
            .arg(file);
    if (askToRebuildFileTree(question))
        rebuildFileList();
}

bool QAStProject::askToRebuildFileTree(const QString& text) const
{
    StudioInterface* host = studioIFace();
    if (modeBatch() || !host) {
        displayMessage(MessageConsole, text);
        return true;
    }
    return host->question(QAHost::boxParent(), tr("Project"), text,
                          StudioInterface::Yes | StudioInterface::No, StudioInterface::Yes,
                          StudioInterface::Information)
           == StudioInterface::Yes;
}

void QAStProject::takeCurrentConfigurationToSubProjects()
{
    // A project without a current configuration (a workspace without
    // configurations) leaves its sub-projects' own.
    const QString current = currentConfigurationName();
    if (current.isEmpty())
        return;
    for (QAStData* item : childrenOfClass("QAStSubProject")) {
        auto* sub = static_cast<QAStSubProject*>(item);
        if (sub->isOpen())
            sub->setCurrentConfigurationName(current);
    }
}

QAStProject::FileKind QAStProject::fileKind(const QString& path)
{
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly))
        return UnreadableFile;
    while (!in.atEnd()) {
        const QByteArray line = in.readLine();
        if (line.contains("<!DOCTYPE project"))
            return XmlProject;
        if (line.contains("PROJECT = "))
            return ResourceProject;
        if (line.contains("WORKSPACE = "))
            return ResourceWorkspace;
    }
    return UnknownFile;
}

// --- saving

bool QAStProject::save()
{
    if (m_path.isEmpty())
        return saveAs();
    bool saved = false;
    if (!m_open)
        reportSaveFailure(m_path, tr("The project is not open."));
    else if (m_readOnly)
        reportSaveFailure(m_path, tr("The project is read only."));
    else
        saved = writeFiles(m_path);
    return saveSubProjects() && saved;
}

bool QAStProject::saveSubProjects()
{
    bool saved = true;
    for (QAStData* item : childrenOfClass("QAStSubProject")) {
        auto* sub = static_cast<QAStSubProject*>(item);
        if (sub->isOpen() && !sub->isReadOnly())
            saved = sub->save() && saved;
    }
    return saved;
}

bool QAStProject::saveAs()
{
    const QString file =
        askFileName(FileChooser::Save, tr("Save Project As"), tr("Projects (*.rtp)"));
    return !file.isEmpty() && saveAs(file, QLatin1String(projectExtension));
}

bool QAStProject::saveAsTemplate()
{
    const QString file = askFileName(FileChooser::Save, tr("Save Project As Template"),
                                     tr("Project templates (*.rtt)"));
    return !file.isEmpty() && saveAs(file, QLatin1String(templateExtension), false);
}

bool QAStProject::isTemplate() const
{
    return m_path.endsWith(QLatin1String(templateExtension), Qt::CaseInsensitive);
}

bool QAStProject::saveAs(const QString& file, const QString& extension, bool keep)
{
    const QString former = m_path;
    // Relative paths inside the files are written against the new place.
    setPath(withExtension(file, extension));
    const bool written = writeFiles(m_path);
    if (!written || !keep) {
        setPath(former);
        return written;
    }
    m_open = true;
    m_readOnly = false;
    return true;
}

bool QAStProject::writeFiles(const QString& file)
{
    // Both files are written in full before either is replaced, so a
    // failure (a full disk) leaves the former pair whole. Each streams to
    // its temporary file: a large project is never held as text.
    const QString objects = browseInformationFilePath();
    const QString formerDirectory = m_rootFolder->directory();
    // The file tree's paths are written against the place of its file.
    m_rootFolder->setDirectory(QFileInfo(objects).absolutePath());
    QString failed;
    QString reason;
    if (QAFileUtil::replaceFiles({{file, {}, [this](QTextStream& s) { QAStProject::write(s, 0); }},
                                  {objects, {}, [this](QTextStream& s) { m_rootFolder->writeDocument(s); }}},
                                 &failed, &reason))
        return true;
    m_rootFolder->setDirectory(formerDirectory);
    return reportSaveFailure(failed, reason);
}

bool QAStProject::reportSaveFailure(const QString& file, const QString& reason)
{
    warning(tr("%1\n\nUnable to save the project.\n%2").arg(file, reason));
    return false;
}

void QAStProject::warning(const QString& text)
{
    StudioInterface* host = studioIFace();
    if (modeBatch() || !host)
        displayMessage(MessageConsole, text);
    else
        host->warning(QAHost::boxParent(), tr("Project"), text);
}

QString QAStProject::askFileName(FileChooser chooser, const QString& caption,
                                 const QString& filter) const
{
    StudioInterface* host = studioIFace();
    if (modeBatch() || !host)
        return QString();
    return chooser == FileChooser::Save
               ? host->getSaveFileName(QAHost::boxParent(), caption, directory(), filter)
               : host->getOpenFileName(QAHost::boxParent(), caption, directory(), filter);
}

// --- writing and reading

void QAStProject::write(QTextStream& s, int indent) const
{
    s << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    s << "<!DOCTYPE project SYSTEM \""
      << QAInstall::installPath(installDir(), QStringLiteral("lib/project.dtd")) << "\">\n";
    openElement(s, indent, "project");
    const int inner = indent + 1;
    QAStNodeContainer::write(s, inner);
    writeText(s, inner, "object_file", browseInformationFileName());
    writeInt(s, inner, "sort_method", m_sortMethod);
    openElement(s, inner, "root_configuration_list");
    for (const QAStConfiguration* c : configurationList())
        c->write(s, inner + 1);
    closeElement(s, inner, "root_configuration_list");
    writeInt(s, inner, "version_file", versionFile);
    if (!m_pluginList.isEmpty())
        QAXML::toStream(s, "plugin_list", QAXML::stringListToXMLValue(m_pluginList), inner);
    closeElement(s, indent, "project");
}

void QAStProject::writeConfigurationList(QTextStream& s, int indent) const
{
    openElement(s, indent, "configuration_list");
    closeElement(s, indent, "configuration_list");
}

bool QAStProject::init(const QDomElement& projectElement)
{
    if (!checkElement(projectElement, "project"))
        return false;
    const int version = readInt(projectElement, "version_file", versionFile);
    m_pluginList = QAXML::domValueList(projectElement.firstChildElement(QStringLiteral("plugin_list")));
    if (!QAStNodeContainer::init(projectElement.firstChildElement(QStringLiteral("group")), version))
        return false;
    // The object information file is named after the project file
    // (browseInformationFileName), so a copied project never shares the
    // original's; "object_file" is only checked for.
    field(projectElement, "object_file");
    m_sortMethod = readInt(projectElement, "sort_method", 0);
    readRootConfigurations(field(projectElement, "root_configuration_list"), version);
    readExecutionFlag(projectElement.firstChildElement(QStringLiteral("execution_flag")));
    return isValid();
}

void QAStProject::readRootConfigurations(const QDomElement& list, int version)
{
    const QString tag = QStringLiteral("configuration");
    for (QDomElement e = list.firstChildElement(tag); !e.isNull(); e = e.nextSiblingElement(tag)) {
        auto* c = new QAStConfiguration(QString(), this);
        if (c->init(e, version))
            addConfiguration(c);
        else
            delete c;
    }
}

void QAStProject::readExecutionFlag(const QDomElement& flag)
{
    if (flag.isNull())
        return;
    const int value = QAXML::toInt(QAXML::domText(flag));
    for (QAStConfiguration* c : configurationList())
        c->setProperty(QStringLiteral("executionFlag"), value);
}

// --- the older resource formats

bool QAStProject::init(QARes* res)
{
    if (QARes* project = res ? res->find(QStringLiteral("PROJECT")) : nullptr)
        return initWithProject(project);
    if (QARes* workspace = res ? res->find(QStringLiteral("WORKSPACE")) : nullptr)
        return initWithWorkspace(workspace);
    appendLoadReport(tr("Unable to find tag %1\n").arg(QStringLiteral("PROJECT")));
    setValid(false);
    return false;
}

bool QAStProject::initWithProject(QARes* project)
{
    if (!initResourceRoot(project, "PROJECT"))
        return false;
    m_sortMethod = resourceInt(project, "sort_method", 0);
    initChilds(this, project);
    return isValid();
}

bool QAStProject::initWithWorkspace(QARes* workspace)
{
    if (!initResourceRoot(workspace, "WORKSPACE"))
        return false;
    const QARes* projects = workspace->find(QStringLiteral("projects"));
    if (!projects)
        return isValid();
    if (!projects->isListOf(QARes::String)) {
        reportResource(projects, tr("%1 is not a list of project files").arg(projects->name()));
        return isValid();
    }
    for (const QString& file : projects->toResList()->strings())
        new QAStSubProject(QAFileUtil::relativePathToAbs(directory(), file), this, last());
    return isValid();
}

bool QAStProject::initResourceRoot(QARes* root, const char* tag)
{
    if (!root->isGroup()) {
        reportResource(root, tr("%1 is not a group").arg(QLatin1String(tag)));
        setValid(false);
        return false;
    }
    if (!QAStData::init(root))
        return false;
    if (name().isEmpty())
        setName(QFileInfo(path()).completeBaseName());
    readResourceNode(this, root);
    return isValid();
}

void QAStProject::readResourceNode(QAStNode* node, const QARes* res)
{
    for (QARes* group : res->toResGroup()->findAll(QStringLiteral("CONFIGURATION"))) {
        auto* c = new QAStConfiguration(QString(), node);
        c->init(group);
        if (c->name().isEmpty()) {
            reportResource(group, tr("CONFIGURATION without a name"));
            delete c;
            continue;
        }
        node->addConfiguration(c);
    }
    // Without one of its own, a node uses its parent's current
    // configuration, else its first.
    QString fallback;
    if (const auto* parentNode = qobject_cast<const QAStNode*>(node->parent()))
        fallback = parentNode->currentConfigurationName();
    const QStringList names = node->configurations();
    if (fallback.isEmpty() && !names.isEmpty())
        fallback = names.first();
    node->setCurrentConfigurationName(resourceString(res, "current_configuration", fallback));
}

bool QAStProject::initChilds(QAStData* parent, QARes* res)
{
    const QARes* children = res ? res->find(QStringLiteral("children")) : nullptr;
    if (!children)
        return true;
    if (!children->isList()) {
        reportResource(children, tr("children is not a list"));
        return false;
    }
    bool understood = true;
    QAStData* last = parent->last();
    for (QARes* entry : children->toResList()->items()) {
        QAStData* item = createResourceChild(parent, entry, last);
        if (!item) {
            understood = false;
            continue;
        }
        last = item;
    }
    return understood;
}

QAStData* QAStProject::createResourceChild(QAStData* parent, QARes* entry, QAStData* after)
{
    if (!entry->isGroup()) {
        reportResource(entry, tr("a child is not a group"));
        return nullptr;
    }
    const QString word = resourceString(entry, "kind");
    const ResourceKind* known = findResourceKind(word);
    if (!known) {
        reportResource(entry, tr("unknown kind \"%1\"").arg(word));
        return nullptr;
    }
    if (!accepts(parent, known->meta)) {
        reportResource(entry, tr("%1 bad place").arg(word));
        return nullptr;
    }
    QAStData* item = known->create(entry, parent, after);
    if (qobject_cast<QAStSubProject*>(item))
        return item; // read from its own file when it is loaded
    readResourceNode(static_cast<QAStNode*>(item), entry);
    if (auto* fileRef = qobject_cast<QAStNodeFileRef*>(item))
        fileRef->setFileKey(resourceString(entry, "file"));
    initChilds(item, entry);
    return item;
}

void QAStProject::reportResource(const QARes* res, const QString& text)
{
    appendLoadReport(QStringLiteral("%1:%2: %3\n").arg(res->fileName()).arg(res->line()).arg(text));
}

// --- the project's file and place

void QAStProject::setPath(const QString& path)
{
    m_path = absoluteCleanPath(path);
    if (!m_path.isEmpty())
        m_rootFolder->setDirectory(directory());
}

QString QAStProject::filename() const
{
    return QFileInfo(m_path).fileName();
}

QString QAStProject::directory() const
{
    return m_path.isEmpty() ? QAStNodeContainer::directory() : QFileInfo(m_path).absolutePath();
}

QString QAStProject::browseInformationFileName() const
{
    // Only ".rtp" is dropped, so that a template or a workspace beside a
    // project of the same stem keeps a file tree of its own.
    QString name = QFileInfo(m_path).fileName();
    if (name.endsWith(QLatin1String(projectExtension), Qt::CaseInsensitive))
        name.chop(int(qstrlen(projectExtension)));
    return name + QStringLiteral(".inf");
}

QString QAStProject::browseInformationFilePath() const
{
    return QDir(directory()).filePath(browseInformationFileName());
}

void QAStProject::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

void QAStProject::setSortMethod(int method)
{
    m_sortMethod = method;
}

void QAStProject::setPluginList(const QStringList& features)
{
    m_pluginList = features;
}

bool QAStProject::modeBatch()
{
    return QAHost::batchMode();
}

void QAStProject::setModeBatch(bool batch)
{
    QAHost::setBatchMode(batch);
}

// --- files and sub-projects

QAStFile* QAStProject::addFile(const QString& path)
{
    const QList<QAStFile*> added = m_rootFolder->addFiles({path});
    return added.isEmpty() ? file(path) : added.first();
}

QList<QAStFile*> QAStProject::addFiles(const QStringList& paths)
{
    return m_rootFolder->addFiles(paths);
}

QAStFile* QAStProject::file(const QString& key) const
{
    return m_rootFolder->file(key);
}

QList<QAStFile*> QAStProject::files() const
{
    return m_rootFolder->files();
}

void QAStProject::rebuildFileList()
{
    QStringList paths;
    for (QAStData* item : childrenOfClass("QAStNodeFileRef", true)) {
        // The nodes of a sub-project name the files of its own tree.
        if (item->project() != this)
            continue;
        const QString file = static_cast<QAStNodeFileRef*>(item)->absoluteFilePath();
        if (!file.isEmpty())
            paths.append(file);
    }
    m_rootFolder->addFiles(paths);
    m_rootFolder->normalize();
}

QAStSubProject* QAStProject::addSubProject(const QString& path)
{
    if (path.isEmpty())
        return nullptr;
    auto* sub = new QAStSubProject(QAFileUtil::relativePathToAbs(directory(), path), this, last());
    loadSubProject(sub);
    takeCurrentConfigurationToSubProjects();
    return sub;
}

QAStSubProject* QAStProject::addNewProject()
{
    const QString file = askFileName(FileChooser::Save, tr("New Project"), tr("Projects (*.rtp)"));
    if (file.isEmpty())
        return nullptr;
    auto sub = std::make_unique<QAStSubProject>(
        QAFileUtil::relativePathToAbs(directory(), withExtension(file, QLatin1String(projectExtension))));
    if (!sub->create(sub->projectFile()))
        return nullptr;
    // The new project takes the configuration names, to be filled in.
    for (const QString& name : configurations())
        sub->addConfiguration(name);
    sub->setCurrentConfigurationName(currentConfigurationName());
    if (!sub->save() || !userAdd(sub.get(), last()))
        return nullptr;
    return sub.release();
}

QAStSubProject* QAStProject::addExistingProject()
{
    const QString file =
        askFileName(FileChooser::Open, tr("Add Existing Project"), tr("Projects (*.rtp)"));
    if (file.isEmpty())
        return nullptr;
    auto sub = std::make_unique<QAStSubProject>(QAFileUtil::relativePathToAbs(directory(), file));
    if (!userAdd(sub.get(), last()))
        return nullptr;
    QAStSubProject* added = sub.release();
    loadSubProject(added);
    takeCurrentConfigurationToSubProjects();
    return added;
}

// --- configurations

void QAStProject::addConfiguration(QAStConfiguration* c)
{
    if (!c)
        return;
    QAStNodeContainer::addConfiguration(c);
    if (!initialConfiguration(c->name()))
        addInitialConfiguration(c->name());
}

bool QAStProject::removeConfiguration(const QString& name)
{
    if (QAStConfiguration* initial = initialConfiguration(name)) {
        m_initialConfigurations.removeOne(initial);
        delete initial;
    }
    return QAStNodeContainer::removeConfiguration(name);
}

void QAStProject::addInitialConfiguration(const QString& name)
{
    auto* initial = new QAStConfiguration(name, this);
    initial->init();
    m_initialConfigurations.append(initial);
    QAPropertyStore::inheritanceChanged();
}

QAStConfiguration* QAStProject::initialConfiguration(const QString& name) const
{
    for (QAStConfiguration* c : m_initialConfigurations) {
        if (c->name() == name)
            return c;
    }
    return nullptr;
}

QAStConfiguration* QAStProject::inheritConfiguration(const QAStConfiguration* c) const
{
    if (!c)
        return nullptr;
    QAStConfiguration* initial = initialConfiguration(c->name());
    if (c == initial)
        return nullptr;
    return configuration(c->name()) == c ? initial : nullptr;
}

QAStProject* QAStProject::asProject() const
{
    return const_cast<QAStProject*>(this);
}
