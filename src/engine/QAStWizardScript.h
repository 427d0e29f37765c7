#pragma once

#include "sdk110_export.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class QTextStream;

// The short Perl script that a start wizard of the studio writes for a
// one-off run, the driver loading it with "do". Each wizard fills one of the
// plain structs below; the script sets one Perl variable per member, one line
// each, in the order listed. Perl reads every value back exactly as given
// (QAStPerlGen::safePath and safeStr).
//
// Unit testing:
//   $LOGFILENAME2, $SCRIPTFILE, $TESTEDFILE (paths), $TESTEDCOMPONENT (text),
//   @SERVICES, @INTEGRATEDFILES, @SIMULATEDFILES, then $OPTIONS: the options
//   followed by " -insert" when the code is to be instrumented by insertion.
// Object testing:
//   $LOGFILENAME2, @TESTEDFILENAMES, @CLASSES, @METHODS,
//   @INTEGRATEDFILENAMES, $OTDNAME (path), $TESTCLASSPREFIX (text),
//   $OTCNAME (path), @INSERTEDFILENAMES.
// Java testing:
//   $LOGFILENAME2, @COMPONENTS, @METHODS, @SIMULATEDFILES, $TESTDRIVERNAME
//   (path), @INSERTEDFILENAMES, $ODIR (path), $JPREFIX (text), then $OPTIONS:
//   the options followed by the profile's switch (" -typical", " -j2me",
//   " -j2se" or " -midlet").
//
// write() gives the variable lines alone. writeFile() replaces a file at
// once with those lines followed by "1;", so that "do" returns true, in
// UTF-8; on failure the file is left as it was and error, when given, names
// the file and the reason.
class SDK110_EXPORT QAStWizardScript {
    Q_DECLARE_TR_FUNCTIONS(QAStWizardScript)
public:
    struct UnitTesting {
        QString logFile, scriptFile, testedFile, testedComponent;
        QStringList services, integratedFiles, simulatedFiles;
        QString options;
        bool codeInsertion = false;
    };

    struct ObjectTesting {
        QString logFile;
        QStringList testedFileNames, classes, methods, integratedFileNames;
        QString otdName, testClassPrefix, otcName;
        QStringList insertedFileNames;
    };

    struct JavaTesting {
        enum Profile { Typical, J2ME, J2SE, MIDlet };
        QString logFile;
        QStringList components, methods, simulatedFiles;
        QString testDriverName;
        QStringList insertedFileNames;
        QString outputDir, prefix, options;
        Profile profile = Typical;
    };

    static void write(QTextStream& out, const UnitTesting& script);
    static void write(QTextStream& out, const ObjectTesting& script);
    static void write(QTextStream& out, const JavaTesting& script);

    static bool writeFile(const QString& path, const UnitTesting& script,
                          QString* error = nullptr);
    static bool writeFile(const QString& path, const ObjectTesting& script,
                          QString* error = nullptr);
    static bool writeFile(const QString& path, const JavaTesting& script,
                          QString* error = nullptr);
};
