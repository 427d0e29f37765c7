#pragma once

#include "QAStNodeContainer.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QAStFile;
class QAStRootFolder;
class QAStSubProject;

// The root of a test project and its project file (".rtp").
//
// The project file (docs/formats/project-file.md): the XML declaration, a
// DOCTYPE naming <install>/lib/project.dtd, then "project" holding the
// container block (the project's own node block and its children),
// "object_file", "sort_method", "root_configuration_list" and
// "version_file". The project's configurations are written in
// "root_configuration_list", so the "configuration_list" of its node block
// stays empty.
//
// Beside the project file lies the object information file
// (browseInformationFileName()), which keeps the project's file tree
// (rootFolder()).
// The root folder is owned by the project and is not one of its children.
//
// Two older formats are still read, through the resource store
// (docs/formats/older-project-files.md): a project resource file and a
// workspace resource file.
//
// Beside its ordinary configurations the project keeps one initial
// configuration per name, holding the built-in defaults
// (QAStConfiguration::init()). It is made when a configuration of a new
// name is added to the project and sits at the top of the chain of that
// name: a node's configuration inherits from its parent node's, up to the
// project's, which inherits from the initial one, which inherits from
// nothing.
//
// Every box goes through the host (QAStData::studioIFace()); in batch mode
// (modeBatch()) none is shown: warnings go to the message console and
// questions take their default answer.
class SDK110_EXPORT QAStProject : public QAStNodeContainer {
    Q_OBJECT
public:
    // The kind of a file, told by its first line holding a marker.
    enum FileKind {
        UnknownFile,       // readable, but no marker line
        UnreadableFile,    // cannot be opened for reading
        XmlProject,        // "<!DOCTYPE project"
        ResourceProject,   // "PROJECT = "
        ResourceWorkspace  // "WORKSPACE = "
    };
    Q_ENUM(FileKind)

    // The format version written in "version_file".
    static constexpr int versionFile = 1;
    // The extensions of a project file and of a project template.
    static constexpr const char* projectExtension = ".rtp";
    static constexpr const char* templateExtension = ".rtt";

    // A new project, inserted into parent behind after (a sub-project).
    QAStProject(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                QAStData* after = nullptr);
    // A project read from a "project" element (init); the element's
    // "version_file" gives the format version, so version is not used.
    QAStProject(const QDomElement& e, int version, QAStData* parent = nullptr,
                QAStData* after = nullptr);
    // A project read from the older resource format (init(QARes*)).
    QAStProject(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStProject() override;

    // --- the project file

    // Closes the project, takes path (made absolute) as its file and loads
    // it. False, the user told why and the project closed, when it fails.
    bool open(const QString& path);
    // Closes the project and makes a new empty one named after the file
    // stem, saved at path with an empty file tree; a file already there is
    // replaced (the host's file chooser asks before). False when it cannot
    // be written.
    bool create(const QString& path);
    // Deletes the children, the configurations and the file tree; the
    // project keeps its name and path, so that reload() can read it again.
    void close();
    // Closes the project and loads its file again.
    bool reload();
    // Loads the project file at path() into this project: checks the file,
    // reads it (XML or an older format), loads the sub-projects, opens the
    // object information file (or rebuilds the file tree when the user
    // agrees), brings the sub-projects to the current configuration and
    // emits loaded(this). A failure is told in one warning box and leaves
    // the project closed. The load report is cleared first; the lines of
    // the sub-projects' loads follow the project's own.
    virtual bool loadProjectFile();

    // Writes the project file and the object information file to path().
    // Asks for a file name first when the project has none. A read-only
    // project, or one that is not open (its load failed, or it was closed
    // or never created), is not written, so that its file is not replaced
    // by an empty project. Loaded sub-projects are saved too. False, the
    // user told why, when a file is not written; the old file is then left
    // whole.
    virtual bool save();
    // Asks the host for a file name and saves the project there; the file
    // becomes the project's file. False when no name is given or the save
    // fails.
    virtual bool saveAs();
    // Asks the host for a file name and saves a copy of the project there
    // as a template (extension ".rtt"); the project keeps its own file.
    bool saveAsTemplate();
    // Whether the project's file is a template (its extension is ".rtt").
    bool isTemplate() const;

    // The whole project file: the XML declaration, the DOCTYPE, then the
    // "project" element at indent.
    void write(QTextStream& s, int indent) const override;

    // The project file: an absolute, cleaned path; empty for a project not
    // yet saved. setPath changes it without reading or writing anything.
    QString path() const { return m_path; }
    void setPath(const QString& path);
    // The file name of path(), without its directory.
    QString filename() const;
    // The directory of the project file, against which the project's
    // relative paths are taken; the parent's without a file.
    QString directory() const override;
    // The object information file's name: the project file's name without
    // ".rtp", followed by ".inf" ("calc.rtp" gives "calc.inf", the template
    // "calc.rtt" gives "calc.rtt.inf").
    QString browseInformationFileName() const;
    // Its full path, in directory().
    QString browseInformationFilePath() const;
    // The project's file tree; owned by the project, never null.
    QAStRootFolder* rootFolder() const { return m_rootFolder.get(); }

    // Whether the project was loaded or created and not closed since.
    bool isOpen() const { return m_open; }
    // A read-only project is not written by save(). Set on load when the
    // project file is not writable.
    bool isReadOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly);

    // The tag browser's layout: 0 by file, 1 by type, 2 alphabetical.
    int sortMethod() const { return m_sortMethod; }
    void setSortMethod(int method);
    // The node plug-in features the project uses ("plugin_list"): read
    // when present and written back after "version_file" when not empty.
    QStringList pluginList() const { return m_pluginList; }
    void setPluginList(const QStringList& features);

    // Batch mode, process-wide: no box is shown; warnings go to the message
    // console and questions take their default answer.
    static bool modeBatch();
    static void setModeBatch(bool batch);

    // The kind of the file at path, from its first line holding
    // "<!DOCTYPE project", "PROJECT = " or "WORKSPACE = ".
    static FileKind fileKind(const QString& path);

    // --- files and sub-projects

    // Adds a file (relative paths are taken against directory()) to the
    // file tree unless it is there already; returns its item.
    QAStFile* addFile(const QString& path);
    // The same for several files; returns the items added.
    QList<QAStFile*> addFiles(const QStringList& paths);
    // The file of the tree with that key or path; null when none.
    QAStFile* file(const QString& key) const;
    // Every file of the tree, depth first.
    QList<QAStFile*> files() const;
    // Adds to the file tree every file the project's nodes refer to and
    // tidies it (QAStRootFolder::normalize).
    void rebuildFileList();

    // Adds the project file at path as a sub-project (stored relative to
    // directory()) behind the last child and loads it; null when path is
    // empty. An invalid sub-project stays in the tree, closed.
    QAStSubProject* addSubProject(const QString& path);
    // Asks the host for a new project file, creates it and adds it as a
    // sub-project; null when no name is given or it cannot be created.
    QAStSubProject* addNewProject();
    // Asks the host for an existing project file and adds it as a
    // sub-project; null when none is chosen.
    QAStSubProject* addExistingProject();

    // --- configurations

    using QAStNode::addConfiguration;
    // Adds c as QAStNode does and, when the project has no initial
    // configuration of its name yet, makes one with the built-in defaults.
    void addConfiguration(QAStConfiguration* c) override;
    // Removes the configuration and the initial configuration of that name.
    bool removeConfiguration(const QString& name) override;

    // The initial configuration of that name (owned by the project), or null.
    QAStConfiguration* initialConfiguration(const QString& name) const;

    // Null for an initial configuration (the top); the initial
    // configuration of its name for the project's own configuration;
    // otherwise null.
    QAStConfiguration* inheritConfiguration(const QAStConfiguration* c) const override;
    QAStProject* asProject() const override;


signals:
    // Emitted at the end of a successful load.
    void loaded(QAStProject* project);

protected:
    // For kinds that read their own element (see QAStData).
    QAStProject(QAStData* parent, QAStData* after);

    // Writes the project and its object information file to file, with
    // extension added when the name has none; file becomes the project's
    // file when keep is true, else the project keeps its own. False, the
    // user told why, when a file cannot be written.
    bool saveAs(const QString& file, const QString& extension, bool keep = true);

    // The project's node block holds an empty "configuration_list": its
    // configurations go to "root_configuration_list".
    void writeConfigurationList(QTextStream& s, int indent) const override;

    // Reads a "project" element in this order: "version_file", then
    // "plugin_list", the container block, "object_file", "sort_method",
    // "root_configuration_list" and "execution_flag". Returns whether the
    // project is valid; faults go to the load report.
    bool init(const QDomElement& projectElement);
    // Reads an older resource file's root: its "PROJECT" or "WORKSPACE"
    // group.
    bool init(QARes* res);
    bool initWithProject(QARes* project);
    bool initWithWorkspace(QARes* workspace);
    // Builds parent's children from the "children" list of res, each by
    // its "kind" (docs/formats/older-project-files.md). False when an entry
    // is not understood; the others are still built.
    bool initChilds(QAStData* parent, QARes* res);

    // Shows a warning: a box parented to the main window, or a line on the
    // message console in batch mode or without a host.
    static void warning(const QString& text);

private:
    enum class FileChooser { Open, Save };

    bool loadXmlProject();
    bool loadResourceProject();
    bool failLoad(const QString& text);
    void loadSubProjects();
    // Loads a sub-project from its project file unless it is unloaded or
    // already loaded above itself; false when it stays closed.
    bool loadSubProject(QAStSubProject* sub);
    static bool includesItself(const QAStProject* sub);
    void openObjectInformationFile();
    bool askToRebuildFileTree(const QString& text) const;
    void takeCurrentConfigurationToSubProjects();

    bool saveSubProjects();
    bool writeFiles(const QString& file);
    static bool reportSaveFailure(const QString& file, const QString& reason);
    // The host's file chooser; empty in batch mode or without a host.
    QString askFileName(FileChooser chooser, const QString& caption, const QString& filter) const;

    void readRootConfigurations(const QDomElement& list, int version);
    void readExecutionFlag(const QDomElement& flag);

    // The common part of a PROJECT or WORKSPACE group.
    bool initResourceRoot(QARes* root, const char* tag);
    // A node's CONFIGURATION groups and current_configuration.
    static void readResourceNode(QAStNode* node, const QARes* res);
    QAStData* createResourceChild(QAStData* parent, QARes* entry, QAStData* after);
    static void reportResource(const QARes* res, const QString& text);

    void addInitialConfiguration(const QString& name);

    QList<QAStConfiguration*> m_initialConfigurations;
    std::unique_ptr<QAStRootFolder> m_rootFolder;
    QString m_path;
    QStringList m_pluginList;
    int m_sortMethod = 0;
    bool m_open = false;
    bool m_readOnly = false;
};
