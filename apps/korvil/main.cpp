// korvil: the command-line host of the library. It loads a project file in
// batch mode (no dialog ever: questions take their default) and runs one
// command on it; the library's messages go to standard output (the output
// console) and standard error (the message console).
#include "CommandLineStudio.h"
#include "Commands.h"

#include "QAStData.h"
#include "QAStProject.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {

// The installation the tool uses when neither ZELTAHOME nor KORVILDIR
// says: the one installed beside it (<prefix>/share/korvil), else the
// source tree's of the build.
void chooseInstallation()
{
    if (!qEnvironmentVariableIsEmpty("ZELTAHOME") || !qEnvironmentVariableIsEmpty("KORVILDIR"))
        return;
    const QString installed =
        QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QStringLiteral("../share/korvil"));
    const QString tree = QFileInfo(installed).isDir() ? installed : QStringLiteral(KORVIL_SOURCE_INSTALL_TREE);
    qputenv("ZELTAHOME", QDir::cleanPath(tree).toLocal8Bit());
}

// The library's trace lines on the Qt warning channel ("Terminated process
// pid = ...", the walk's steps) are for developers: shown with
// KORVIL_TRACE=1 only. Everything a user must read reaches the consoles.
void messageHandler(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    static const bool trace = qEnvironmentVariableIntValue("KORVIL_TRACE") != 0;
    if ((type == QtDebugMsg || type == QtInfoMsg || type == QtWarningMsg) && !trace)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(text));
}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(messageHandler);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvil"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KORVIL_VERSION));
    chooseInstallation();

    CommandLineStudio studio;
    QAStData::initialize(&studio);
    QAStProject::setModeBatch(true);
    return Commands::run(app.arguments(), studio);
}
