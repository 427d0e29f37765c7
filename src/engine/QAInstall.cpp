#include "QAInstall.h"

QAInstall::Platform QAInstall::nativePlatform()
{
#ifdef Q_OS_WIN
    return Windows;
#else
    return Posix;
#endif
}

QString QAInstall::osName(Platform platform)
{
    return platform == Windows ? QStringLiteral("win32") : QStringLiteral("linux");
}

QChar QAInstall::separator(Platform platform)
{
    return platform == Windows ? QLatin1Char('\\') : QLatin1Char('/');
}

QString QAInstall::installPath(const QString& installDir, const QString& relative, Platform platform)
{
    const QChar sep = separator(platform);
    QString path = relative;
    path.replace(QLatin1Char('/'), sep);
    return installDir + sep + path;
}

QString QAInstall::binaryDir(const QString& installDir, Platform platform)
{
    return installPath(installDir, QStringLiteral("bin/intel/") + osName(platform), platform);
}
