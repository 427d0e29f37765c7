#pragma once

#include "QAInstall.h"
#include "sdk110_export.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QTextStream;

// Path helpers shared by the items that store paths relative to a directory
// (sub-projects, files, tags). Paths use "/" in memory, whatever the
// platform; an empty directory means "unknown", and then a relative path
// is kept as it is rather than resolved against the working directory.
class SDK110_EXPORT QAFileUtil {
public:
    // path relative to dir. A relative path, or any path when dir is empty,
    // is only cleaned. A path on another root (another drive) stays
    // absolute.
    static QString absPathToRelative(const QString& dir, const QString& path);
    // path made absolute against dir and cleaned. An absolute path is only
    // cleaned; a relative one stays relative (cleaned) when dir is empty.
    static QString relativePathToAbs(const QString& dir, const QString& path);
    // The path with "/" separators, "." and ".." resolved and no trailing
    // separator; empty stays empty.
    static QString cleanDirPath(const QString& path);

    // The path with every backslash doubled, as a Perl single-quoted string
    // needs it to read the backslash back.
    static QString perlDirPath(const QString& path);
    // The short 8.3 form of a Windows path, so that no blank reaches a
    // command line; a POSIX path, or a path that cannot be shortened,
    // comes back unchanged.
    static QString shortPath(const QString& path,
                             QAInstall::Platform platform = QAInstall::nativePlatform());

    // Lines of a Perl script, each ended by "\n", whose values Perl reads
    // back exactly as given (escaped by QAPerlValues::quoted):
    // $var='path';
    static void perlPath(QTextStream& out, const char* var, const QString& path);
    // $var='text'; with the text as free text.
    static void perlString(QTextStream& out, const char* var, const QString& text);
    // @var=('a', 'b'); with each item as a path; @var=(); when empty.
    static void perlList(QTextStream& out, const char* var, const QStringList& items);
    // $var=number;
    static void perlNumber(QTextStream& out, const char* var, qlonglong number);

    // Replaces the file at path with bytes in one piece: they go to a
    // temporary file beside it, which takes the file's place only once
    // every byte is written. On failure (false) a file already there is
    // left exactly as it was and reason, when given, holds the system's
    // reason ("No space left on device", "Permission denied", ...).
    static bool replaceFile(const QString& path, const QByteArray& bytes,
                            QString* reason = nullptr);

    // One file of replaceFiles: its path and its whole new content, or,
    // when write is set, the function that streams the content as UTF-8
    // text (a large file is never held in memory whole).
    struct FileContent {
        QString path;
        QByteArray bytes;
        std::function<void(QTextStream&)> write;
    };
    // Replaces several files as one: every content is written in full to a
    // temporary file beside its file first; only then do they take the
    // files' places, each in one step. On failure (false) every file is
    // left as it was (a file put in place before the failure is put back),
    // failedPath names the file that failed and reason the system's
    // reason.
    static bool replaceFiles(const QList<FileContent>& files, QString* failedPath = nullptr,
                             QString* reason = nullptr);
};
