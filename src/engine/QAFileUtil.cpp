#include "QAFileUtil.h"

#include <QDir>

QString QAFileUtil::cleanDirPath(const QString& path)
{
    if (path.isEmpty())
        return path;
    return QDir::cleanPath(QDir::fromNativeSeparators(path));
}

QString QAFileUtil::absPathToRelative(const QString& dir, const QString& path)
{
    const QString clean = cleanDirPath(path);
    if (clean.isEmpty() || dir.isEmpty() || QDir::isRelativePath(clean))
        return clean;
    const QString relative = QDir(cleanDirPath(dir)).relativeFilePath(clean);
    // The directory itself.
    return relative.isEmpty() ? QStringLiteral(".") : relative;
}

QString QAFileUtil::relativePathToAbs(const QString& dir, const QString& path)
{
    const QString clean = cleanDirPath(path);
    if (clean.isEmpty() || dir.isEmpty() || QDir::isAbsolutePath(clean))
        return clean;
    return QDir::cleanPath(cleanDirPath(dir) + QLatin1Char('/') + clean);
}
