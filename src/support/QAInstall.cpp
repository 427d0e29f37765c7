#include "QAInstall.h"

#include "QAFileUtil.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

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

QString QAInstall::perlProgramName(const QString& name, Platform platform)
{
    if (platform != Windows)
        return name;
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const qsizetype directory =
        qMax(name.lastIndexOf(QLatin1Char('\\')), name.lastIndexOf(QLatin1Char('/')));
    const QString extension = dot > directory ? name.mid(dot + 1) : QString();
    return extension.toUpper() == QLatin1String("EXE") ? name : name + QStringLiteral(".EXE");
}

QStringList QAInstall::perlCommand(const QString& installDir, Platform platform)
{
    QString interpreter;
    if (platform == Windows) {
        QString home = qEnvironmentVariable("ZELTAHOME");
        if (home.isEmpty())
            home = qEnvironmentVariable("KORVILDIR");
        if (home.isEmpty())
            home = installDir;
        interpreter = binaryDir(home, platform) + separator(platform)
                      + perlProgramName(QStringLiteral("Korvilperl.exe"), platform);
    } else {
        interpreter = binaryDir(installDir, platform) + separator(platform)
                      + QStringLiteral("Korvilperl");
    }
    const QString lib =
        QAFileUtil::shortPath(installPath(installDir, QStringLiteral("lib"), platform), platform);
    return {interpreter, QStringLiteral("-I") + lib + separator(platform) + QStringLiteral("perl")};
}

QString QAInstall::installDir()
{
    for (const char* variable : {"ZELTAHOME", "KORVILDIR"}) {
        const QString dir = qEnvironmentVariable(variable);
        if (!dir.isEmpty())
            return dir;
    }
    if (!QCoreApplication::instance())
        return QString();
    const QString beside =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1String("/../share/korvil"));
    return QFileInfo(beside).isDir() ? beside : QString();
}
