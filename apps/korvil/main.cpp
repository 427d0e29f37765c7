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

#include "../HostInstallation.h"

#include <cstdio>

namespace {

// The library's trace lines on the Qt warning channel ("Terminated process
// pid = ...", the walk's steps) are for developers: shown with
// KORVIL_TRACE=1 only. Everything a user must read reaches the consoles.
// They are laid out as every message on standard error.
void messageHandler(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    static const bool trace = qEnvironmentVariableIntValue("KORVIL_TRACE") != 0;
    if ((type == QtDebugMsg || type == QtInfoMsg || type == QtWarningMsg) && !trace)
        return;
    std::fputs(qPrintable(CommandLineStudio::messageText(text)), stderr);
}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(messageHandler);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvil"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KORVIL_VERSION));
    chooseHostInstallation(QStringLiteral(KORVIL_SOURCE_INSTALL_TREE));

    CommandLineStudio studio;
    QAStData::initialize(&studio);
    QAStProject::setModeBatch(true);
    return Commands::run(app.arguments(), studio);
}
