#pragma once

#include "sdk110_export.h"

#include <QChar>
#include <QString>
#include <QStringList>

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
    // The installation in use: $ZELTAHOME, else $KORVILDIR, else
    // share/korvil beside the application's bin directory
    // (<appdir>/../share/korvil) when it exists, else empty.
    static QString installDir();
    // installDir joined with a relative path whose parts are separated by "/".
    static QString installPath(const QString& installDir, const QString& relative,
                               Platform platform = nativePlatform());

    // The command prefix that runs the Perl interpreter on a driver script,
    // two items: the interpreter, then "-I" and its module directory
    // <install>/lib/perl (as a short path on Windows).
    //
    // On POSIX the interpreter is <install>/bin/intel/linux/Korvilperl, the
    // wrapper of the installation. On Windows it is Korvilperl.exe in the
    // binaries directory of $ZELTAHOME, else of $KORVILDIR, else of
    // installDir (a variable set to an empty value counts as not set).
    static QStringList perlCommand(const QString& installDir,
                                   Platform platform = nativePlatform());
    // A program name as the platform runs it: on Windows a name whose
    // extension is not EXE (in any case) gets ".EXE" appended; other
    // platforms keep it as it is.
    static QString perlProgramName(const QString& name, Platform platform = nativePlatform());
};
