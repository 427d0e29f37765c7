#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QString>

// The installation a host uses when neither ZELTAHOME nor KORVILDIR says:
// the one installed beside it (<prefix>/share/korvil), else sourceTree (the
// source tree's of the build). Sets ZELTAHOME for the library.
inline void chooseHostInstallation(const QString& sourceTree)
{
    if (!qEnvironmentVariableIsEmpty("ZELTAHOME") || !qEnvironmentVariableIsEmpty("KORVILDIR"))
        return;
    const QString installed =
        QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QStringLiteral("../share/korvil"));
    const QString tree = QFileInfo(installed).isDir() ? installed : sourceTree;
    qputenv("ZELTAHOME", QDir::cleanPath(tree).toLocal8Bit());
}
