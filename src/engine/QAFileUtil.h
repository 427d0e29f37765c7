#pragma once

#include "sdk110_export.h"

#include <QString>

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
};
