#include "QAStWizardScript.h"

#include "QAFileUtil.h"

#include <QIODevice>
#include <QStringConverter>
#include <QTextStream>

namespace {

// The switch that selects the Java profile on the driver's command line.
const char* profileSwitch(QAStWizardScript::JavaTesting::Profile profile)
{
    switch (profile) {
    case QAStWizardScript::JavaTesting::J2ME:
        return " -j2me";
    case QAStWizardScript::JavaTesting::J2SE:
        return " -j2se";
    case QAStWizardScript::JavaTesting::MIDlet:
        return " -midlet";
    case QAStWizardScript::JavaTesting::Typical:
        break;
    }
    return " -typical";
}

bool failed(QString* error, const QString& path, const QString& reason)
{
    if (error)
        *error = QAStWizardScript::tr("Unable to write the script %1: %2").arg(path, reason);
    return false;
}

// The script of any wizard written into path, replacing it only once
// complete.
template <typename Script>
bool saveScript(const QString& path, const Script& script, QString* error)
{
    QByteArray bytes;
    QTextStream out(&bytes, QIODevice::WriteOnly);
    out.setEncoding(QStringConverter::Utf8);
    QAStWizardScript::write(out, script);
    out << "1;\n";
    out.flush();
    QString reason;
    return QAFileUtil::replaceFile(path, bytes, &reason) || failed(error, path, reason);
}

}

void QAStWizardScript::write(QTextStream& out, const UnitTesting& script)
{
    QAFileUtil::perlPath(out, "LOGFILENAME2", script.logFile);
    QAFileUtil::perlPath(out, "SCRIPTFILE", script.scriptFile);
    QAFileUtil::perlPath(out, "TESTEDFILE", script.testedFile);
    QAFileUtil::perlString(out, "TESTEDCOMPONENT", script.testedComponent);
    QAFileUtil::perlList(out, "SERVICES", script.services);
    QAFileUtil::perlList(out, "INTEGRATEDFILES", script.integratedFiles);
    QAFileUtil::perlList(out, "SIMULATEDFILES", script.simulatedFiles);
    QAFileUtil::perlString(out, "OPTIONS",
                           script.codeInsertion ? script.options + QLatin1String(" -insert")
                                                : script.options);
}

void QAStWizardScript::write(QTextStream& out, const ObjectTesting& script)
{
    QAFileUtil::perlPath(out, "LOGFILENAME2", script.logFile);
    QAFileUtil::perlList(out, "TESTEDFILENAMES", script.testedFileNames);
    QAFileUtil::perlList(out, "CLASSES", script.classes);
    QAFileUtil::perlList(out, "METHODS", script.methods);
    QAFileUtil::perlList(out, "INTEGRATEDFILENAMES", script.integratedFileNames);
    QAFileUtil::perlPath(out, "OTDNAME", script.otdName);
    QAFileUtil::perlString(out, "TESTCLASSPREFIX", script.testClassPrefix);
    QAFileUtil::perlPath(out, "OTCNAME", script.otcName);
    QAFileUtil::perlList(out, "INSERTEDFILENAMES", script.insertedFileNames);
}

void QAStWizardScript::write(QTextStream& out, const JavaTesting& script)
{
    QAFileUtil::perlPath(out, "LOGFILENAME2", script.logFile);
    QAFileUtil::perlList(out, "COMPONENTS", script.components);
    QAFileUtil::perlList(out, "METHODS", script.methods);
    QAFileUtil::perlList(out, "SIMULATEDFILES", script.simulatedFiles);
    QAFileUtil::perlPath(out, "TESTDRIVERNAME", script.testDriverName);
    QAFileUtil::perlList(out, "INSERTEDFILENAMES", script.insertedFileNames);
    QAFileUtil::perlPath(out, "ODIR", script.outputDir);
    QAFileUtil::perlString(out, "JPREFIX", script.prefix);
    QAFileUtil::perlString(out, "OPTIONS",
                           script.options + QLatin1String(profileSwitch(script.profile)));
}

bool QAStWizardScript::writeFile(const QString& path, const UnitTesting& script, QString* error)
{
    return saveScript(path, script, error);
}

bool QAStWizardScript::writeFile(const QString& path, const ObjectTesting& script,
                                 QString* error)
{
    return saveScript(path, script, error);
}

bool QAStWizardScript::writeFile(const QString& path, const JavaTesting& script, QString* error)
{
    return saveScript(path, script, error);
}
