#pragma once

#include "sdk110_export.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

class QAProperty;
class QAStConfiguration;
class QAStFile;
class QAStNode;
class QAStProject;
class QAStTargetPackage;

// The rules by which a project is made and filled without writing its
// XML by hand, one place for every host: the command-line tool's new,
// add, add-files, set and get, and the window's menus
// (docs/formats/project-setup.md).
//
// Every operation that can fail returns false (or null) and puts the
// reason in *error as a box text: the file concerned, a blank line, the
// reason; the caller shows it (a warning box in the window, a message in
// korvil). Nothing is changed when an operation fails. Operations that
// edit a project leave saving to the caller, but createProject, which
// writes the new files.
class SDK110_EXPORT QAStProjectSetup {
    Q_DECLARE_TR_FUNCTIONS(QAStProjectSetup)
public:
    // --- a new project

    // The configurations of a new project, in order; the first one is
    // current: "Debug" and "Release".
    static QStringList newConfigurationNames();
    // The intermediate directory of a new project ("build"); its output
    // directory is "<intermediate>/results".
    static QString defaultIntermediateDirectory();

    // The language bit of a language name, case ignored: "C" 1, "C++" or
    // "CPP" 2, "Ada" 4, "Java" 8; 0 for any other.
    static int languageOf(const QString& name);
    // "C", "C++", "Ada" or "Java" for a language bit; empty for another.
    static QString languageName(int language);
    // The installed target package of a language: the first, in scan
    // order, whose LANGUAGE is that language. Null, with the installed
    // packages named in error, when there is none.
    static QAStTargetPackage* packageForLanguage(int language, QString* error = nullptr);
    // The installed target package named name (its NAME or its
    // directory's name, QAStTargetPackageList::search). Null, with the
    // installed packages named in error, when there is none.
    static QAStTargetPackage* packageNamed(const QString& name, QString* error = nullptr);
    // The "targetPath" of a package: "${ZELTAHOME}/targets/<directory>"
    // for one of the installation's targets directory, so that the project
    // moves with the installation; its directory otherwise.
    static QString targetPathOf(const QAStTargetPackage& package);

    // Makes project a new project saved at path (".rtp" added when the
    // name has no extension): the project file and its object information
    // file, with an empty file tree and the configurations
    // newConfigurationNames() on the project, each filled from package
    // (QAStConfiguration::init), "targetPath" from targetPathOf, "intdir"
    // intermediateDirectory, "outdir" "<intermediateDirectory>/results";
    // "Release" compiles with "-O2" in place of the package's "-g" and
    // "-O" options. Refuses, changing nothing on disk, when either file
    // exists already or cannot be written. project is closed first
    // (QAStProject::create): a host asks about unsaved changes before.
    static bool createProject(QAStProject& project, const QString& path,
                              const QAStTargetPackage& package, QString* error = nullptr,
                              const QString& intermediateDirectory = defaultIntermediateDirectory());
    // Removes the two files of a project createProject made, when a later
    // step of making it fails.
    static void removeProjectFiles(const QAStProject& project);

    // --- nodes

    // Whether parent takes a new node of kind (an element tag:
    // "application", "library", "source", ...). The reason, naming the
    // kinds parent takes, in error when not.
    static bool canAdd(const QAStNode* parent, const QString& kind, QString* error = nullptr);
    // Adds a node of kind named name (the kind's label when empty) as the
    // last child of parent (QAStNode::addNewChild: it takes an empty
    // configuration of each of the parent's names, and is an undo entry).
    // A library compiles into a static library: "generationFormat" is
    // "LIB" on each of its configurations.
    //
    // files (absolute, or relative to the project's directory) enter the
    // project's file tree (addFiles); a directory stands for its files
    // (filesBelow). For a kind that stands for one file (a source, a test
    // script), the node refers to the one file given, or to name when
    // none is; it is named after the file when name is empty. For any other
    // kind, each C, C++, Ada or Java file becomes a source node below the
    // new node, named after its file; the other files only enter the tree.
    //
    // Null, nothing changed, when parent does not take the kind, takes no
    // sources while source files are given, has a child of that name
    // already, or a file is missing.
    static QAStNode* addNode(QAStNode* parent, const QString& kind, const QString& name,
                             const QStringList& files = QStringList(), QString* error = nullptr);
    // Adds a source node referring to file (absolute) below parent, named
    // after the file; null when parent takes no sources.
    static QAStNode* addSource(QAStNode* parent, const QString& file);
    // The key by which a node refers to a file (absolute): relative to
    // the project's directory when the file lies in it, else absolute.
    static QString fileKey(const QAStProject& project, const QString& file);

    // --- the file tree

    // Adds files and directories to project's file tree, each file once
    // (one the tree holds already is passed over). A directory stands for
    // its files (filesBelow). A file under the project's directory goes
    // into the folder of its directory, folders made as needed ("src/a.c"
    // into "src", "lib/x/y.h" into "x" inside "lib"), placed among their
    // siblings folders first, each by name; any other file into the root
    // folder. Relative paths are taken against the project's directory.
    // Returns the files added; nothing is added when a path names nothing
    // (error names it). Like the file tree's own addFiles, no undo entry.
    static QList<QAStFile*> addFiles(QAStProject& project, const QStringList& paths,
                                     QString* error = nullptr);
    // The files below directory that a project takes from it: those of a
    // type of the file-type table or of the user's types
    // (QAStFile::fileType), hidden files and directories left out, and the
    // project's own files (its project and object information files, and
    // what its intermediate and output directories hold) when a project is
    // given; in directory order, each directory's files by name.
    static QStringList filesBelow(const QString& directory, const QAStProject* project = nullptr);

    // --- settings

    // The settings descriptor's property of key; null when the descriptor
    // describes no such key (or is not loaded).
    static QAProperty* settingProperty(const QString& key);
    // The keys of the descriptor closest to key, closest first (at most
    // five): the same but for case, those a few letters apart, and those
    // holding it or whose display name holds it.
    static QStringList closeSettingKeys(const QString& key);
    // The text telling that key is no setting, with its close keys.
    static QString unknownSettingText(const QString& key);

    // The node's own configuration of that name (its current one when
    // name is empty). With create, a name the project has but the node
    // lacks is added to the node. Null, with the names the project has in
    // error, otherwise.
    static QAStConfiguration* configurationOf(QAStNode* node, const QString& name, bool create,
                                              QString* error = nullptr);
    // Sets the setting key of configuration to values, read by the kind of
    // the descriptor's property: Int (one number within its limits), Bool
    // and YesNo (one of true, false, yes, no, on, off, 1, 0), a combo (one
    // of its values, or of its labels), a text (the values joined by one
    // blank; one value for a path or a combo), a list (one item a value).
    // False, nothing changed, for an unknown key, a read-only setting or a
    // value the kind does not take.
    static bool setSetting(QAStConfiguration& configuration, const QString& key,
                           const QStringList& values, QString* error = nullptr);
    // The value of the setting key for configuration: its own, else the
    // inherited one, else the descriptor's initial value. Invalid, with the
    // reason in error, for an unknown key.
    static QVariant setting(const QAStConfiguration& configuration, const QString& key,
                            QString* error = nullptr);
    // A setting's value as lines of text: a list one item a line, a
    // Boolean "true" or "false", a number in decimal, a text as it is.
    static QStringList settingLines(const QVariant& value);
};
