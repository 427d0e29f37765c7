#include "QAFileUtil.h"

#include "QAPerlValues.h"

#include <QDir>
#include <QSaveFile>
#include <QTextStream>

#ifdef Q_OS_WIN
#include <qt_windows.h>

#include <string>
#endif

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

QString QAFileUtil::perlDirPath(const QString& path)
{
    QString doubled = path;
    return doubled.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
}

#ifdef Q_OS_WIN
// The short form as the file system reports it; the path itself when it
// does not exist or has no short form.
static QString windowsShortPath(const QString& path)
{
    const std::wstring longPath = QDir::toNativeSeparators(path).toStdWString();
    const DWORD size = GetShortPathNameW(longPath.c_str(), nullptr, 0);
    if (size == 0)
        return path;
    std::wstring shortPath(size, L'\0');
    const DWORD length = GetShortPathNameW(longPath.c_str(), shortPath.data(), size);
    if (length == 0 || length >= size)
        return path;
    const QString result = QString::fromWCharArray(shortPath.c_str(), int(length));
    // Keep the separators the caller used.
    return path.contains(QLatin1Char('\\')) ? result : QDir::fromNativeSeparators(result);
}
#endif

QString QAFileUtil::shortPath(const QString& path, QAInstall::Platform platform)
{
    if (platform == QAInstall::Posix || path.isEmpty())
        return path;
#ifdef Q_OS_WIN
    return windowsShortPath(path);
#else
    // Only Windows itself knows the 8.3 names of its files: elsewhere a
    // Windows path is kept as it is.
    return path;
#endif
}

// The line writers of the environment script, for scripts of their own.
void QAFileUtil::perlPath(QTextStream& out, const char* var, const QString& path)
{
    QAPerlValues::writeText(out, QLatin1String(var), path);
}

void QAFileUtil::perlString(QTextStream& out, const char* var, const QString& text)
{
    QAPerlValues::writeText(out, QLatin1String(var), text);
}

void QAFileUtil::perlList(QTextStream& out, const char* var, const QStringList& items)
{
    QAPerlValues::writeList(out, QLatin1String(var), items);
}

void QAFileUtil::perlNumber(QTextStream& out, const char* var, qlonglong number)
{
    QAPerlValues::writeNumber(out, QLatin1String(var), number);
}

bool QAFileUtil::replaceFile(const QString& path, const QByteArray& bytes, QString* reason)
{
    // Unbuffered, and written until every byte is taken: a buffered device
    // or a single short write (a full disk, a file size limit) would let a
    // truncated file be committed. Writing the rest after a short write
    // makes the system tell why it stopped.
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (qint64 done = 0; written && done < bytes.size();) {
        const qint64 count = file.write(bytes.constData() + done, bytes.size() - done);
        written = count > 0;
        done += count;
    }
    if (written && file.commit())
        return true;
    if (reason)
        *reason = file.errorString();
    file.cancelWriting();
    return false;
}
