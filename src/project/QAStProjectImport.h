#pragma once

#include "sdk110_export.h"

#include <QCoreApplication>
#include <QString>

class QAStProject;

// Makes a new project of an existing code base (docs/formats/project-setup.md):
// from a compilation database (QAStCompilationDatabase), one node per
// build target with the sources, include directories, macros and links
// the database tells; or from a bare directory, one library or
// application of the sources found there. The project is built so that
// it builds with no hand edit.
//
// Both make project a new project (QAStProjectSetup::createProject, on
// the package named, else the installation's package for the sources'
// language: C++ when any source is C++) and save it. False, with the
// reason in error as a box text ("FILE", a blank line, the reason), when
// the source cannot be read, holds no source, or the project file exists
// or cannot be written; no file is left behind then. Notes (options left
// to the configurations, a link that could not be told, sources that
// could not be tagged) go to the message console.
class SDK110_EXPORT QAStProjectImport {
    Q_DECLARE_TR_FUNCTIONS(QAStProjectImport)
public:
    // The project file an import of source makes when none is named, in
    // the source tree and named after its directory: for a directory,
    // "<dir>/<dir name>.rtp"; for a compilation database, the same in the
    // source directory of the build (QAStCompilationDatabase::
    // sourceDirectory, read from CMakeCache.txt or meson-info when there,
    // else the directory holding every source). Empty when the database
    // cannot be read.
    static QString defaultProjectFile(const QString& source);

    // A directory (importDirectory) or a compilation database
    // (importDatabase), by what source is.
    static bool importSource(QAStProject& project, const QString& source,
                             const QString& projectFile = QString(),
                             const QString& packageName = QString(), QString* error = nullptr);

    // From a compilation database, a node per target, libraries first,
    // each after those it links; in each:
    // - a library ("generationFormat" LIB, or DLL for a shared one) or an
    //   application named after the target, a source node per source;
    // - on each of its configurations, the include directories ("ge_incdir")
    //   and the preprocessor options ("cppFlags": -D, -U, -std=, -include)
    //   most of its sources have; a source that has others gets its own;
    // - a link node ("link to <library>") to each library of the database
    //   it links, in link order, its other libraries ("-l", files,
    //   -pthread) in "additionnalObjects" and "-L" directories in
    //   "ge_libdir".
    // Paths inside the project's directory are kept relative to it. The
    // file tree gets the sources and the headers of the include
    // directories and source directories inside the project's directory.
    // The build products go to "<build directory>/korvil" when the
    // database's directory lies inside the project's, else to "build".
    static bool importDatabase(QAStProject& project, const QString& database,
                               const QString& projectFile = QString(),
                               const QString& packageName = QString(), QString* error = nullptr);

    // From a bare directory: its C, C++, Ada and Java sources and headers
    // (QAStProjectSetup::filesBelow) enter the file tree; the sources are
    // tagged (QAStFile::taggingInformation, waiting for the end), and one
    // node named after the directory holds them: an application when a
    // source defines main, else a library. Its include directories are
    // the directories holding headers, and each directory named "include"
    // above one.
    static bool importDirectory(QAStProject& project, const QString& directory,
                                const QString& projectFile = QString(),
                                const QString& packageName = QString(), QString* error = nullptr);
};
