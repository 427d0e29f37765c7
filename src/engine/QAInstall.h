#pragma once

#include "sdk110_export.h"

#include <QChar>
#include <QString>

// The one place where the installation's layout differs by platform.
//
// Windows keeps the layout of the product's installation: binaries under
// <install>\bin\intel\win32 and "\" as separator. Every other platform uses
// the POSIX layout: <install>/bin/intel/linux and "/". Each query takes the
// platform as an argument whose default is the native one, so the Windows
// form can be checked on any machine.
class SDK110_EXPORT QAInstall {
public:
    enum Platform { Posix, Windows };

    static Platform nativePlatform();

    // Name of the platform's directory under bin/intel: "linux" or "win32".
    static QString osName(Platform platform = nativePlatform());
    // Separator of the paths handed to the platform's tools: "/" or "\".
    static QChar separator(Platform platform = nativePlatform());
    // The binaries directory of an installation.
    static QString binaryDir(const QString& installDir, Platform platform = nativePlatform());
    // installDir joined with a relative path whose parts are separated by "/".
    static QString installPath(const QString& installDir, const QString& relative,
                               Platform platform = nativePlatform());
};
