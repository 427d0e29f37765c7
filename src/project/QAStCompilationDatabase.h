#pragma once

#include "sdk110_export.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// A compilation database ("compile_commands.json", as CMake, Meson and
// Bear write it) read into the build targets it tells of
// (docs/formats/compilation-database.md).
//
// Each entry names a "directory", a "file" and the compiler's command,
// as "arguments" (its words) or "command" (one line, split as a POSIX
// shell splits it), and may name its "output". The targets are told by
// the object each entry makes:
//   <dir>/CMakeFiles/<target>.dir/...  a CMake target: link.txt beside
//        the objects (written by the Makefile generators) says what the
//        link makes and what it links;
//   <dir>/<output>.p/<object>          a Meson target, named after its
//        output without "lib" and extensions;
//   anything else                      one application holding them all.
// When no link.txt tells, the statement of build.ninja (beside the
// database) whose inputs hold a target's objects does, as the Ninja
// generators of CMake and Meson write it; without either, a Meson target
// is a library when its output's name says so, and a CMake target an
// application.
//
// Of each compiler command only what gives the sources their meaning is
// kept: include directories (-I, -isystem, -iquote, -idirafter), macros
// (-D, -U), the language standard (-std=) and forced includes (-include,
// -imacros). Optimisation, debugging, warnings and code generation belong
// to the project's configurations; leftOutOptions() lists what was left.
class SDK110_EXPORT QAStCompilationDatabase {
    Q_DECLARE_TR_FUNCTIONS(QAStCompilationDatabase)
public:
    enum Writer { CMake, Meson, OtherWriter };
    enum TargetKind { Application, StaticLibrary, SharedLibrary };

    // One compiled source of a target.
    struct Source {
        QString file; // absolute, cleaned
        QString object; // absolute, cleaned; empty when not told
        QStringList includeDirectories; // absolute, cleaned, in command order
        QStringList preprocessorOptions; // -D, -U, -std=, -include words, in order
    };

    // One target: what one link (or archive) makes of its sources.
    struct Target {
        QString name;
        TargetKind kind = Application;
        // The file the link makes, absolute; empty when not known.
        QString output;
        QList<Source> sources;
        // Names of the database's targets it links, in link order.
        QStringList links;
        // The other libraries of its link, in order: "-l" words, library
        // files (absolute) and "-pthread".
        QStringList libraries;
        // Its "-L" directories, absolute, in order.
        QStringList libraryDirectories;
        // Whether link.txt or build.ninja told the kind, output and links.
        bool linkKnown = false;
    };

    QAStCompilationDatabase();
    ~QAStCompilationDatabase();
    QAStCompilationDatabase(const QAStCompilationDatabase&) = delete;
    QAStCompilationDatabase& operator=(const QAStCompilationDatabase&) = delete;

    // Reads the database at file and finds its targets. False, with the
    // reason in error ("FILE", a blank line, the reason), when the file
    // cannot be read, is not JSON, is not a list of entries, is empty, or
    // an entry lacks what it needs (the entry is named by its number).
    bool read(const QString& file, QString* error = nullptr);

    // The database file read, absolute.
    QString file() const;
    Writer writer() const;
    // The source tree the build system names (CMAKE_HOME_DIRECTORY of
    // CMakeCache.txt, the source directory of meson-info/meson-info.json),
    // else the deepest directory holding every source.
    QString sourceDirectory() const;
    // The targets, each after those it links, libraries first; within
    // that, in the order of the database.
    const QList<Target>& targets() const;
    // The options of the compiler commands that were not kept, each once,
    // in the order first met.
    QStringList leftOutOptions() const;

    // The words of a POSIX shell command line: blanks separate words;
    // single quotes keep everything up to the next one; double quotes keep
    // all but a backslash before $, `, ", \ or a new line; a backslash out
    // of quotes keeps the next character. False, with the reason in error,
    // for an unbalanced quote.
    static bool splitCommand(const QString& command, QStringList* words, QString* error = nullptr);
    // Words joined by blanks, each as the drivers read it back: a word of
    // letters, digits and "@%+=:,./-_" as it is, any other in single
    // quotes (a quote inside written '\'').
    static QString joinCommand(const QStringList& words);

    // The source directory read from the files a build system leaves in
    // the build directory (CMakeCache.txt, meson-info); empty when none.
    static QString buildSystemSourceDirectory(const QString& buildDirectory);

private:
    class Private;
    std::unique_ptr<Private> d;
};
