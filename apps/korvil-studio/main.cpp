// korvil-studio: the window host of the library. It opens the project
// file given on the command line (or chosen in the window) and shows it:
// the project view, the tag browser, the consoles, the property sheet.
//
//   korvil-studio [PROJECT]
//   korvil-studio --screenshot FILE PROJECT   open, show, grab the window
//                                             into FILE (PNG) and quit
#include "StudioWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QTimer>
#include <QWindow>

#include "../HostInstallation.h"

#include <cstdio>

namespace {

// Grabs the window once it is on screen and painted, writes the picture
// and ends the application: status 0 when the file was written.
void grabWhenPainted(StudioWindow* window, const QString& file)
{
    auto* poll = new QTimer(window);
    poll->setInterval(100);
    auto tries = std::make_shared<int>(0);
    QObject::connect(poll, &QTimer::timeout, window, [window, file, poll, tries] {
        QWindow* handle = window->windowHandle();
        // A few turns after the window is exposed, so that every part has
        // painted at its final size.
        if ((!handle || !handle->isExposed()) && ++*tries < 100)
            return;
        if (++*tries < 8)
            return;
        poll->stop();
        QDir().mkpath(QFileInfo(file).absolutePath());
        const bool saved = window->grab().save(file, "PNG");
        if (!saved)
            std::fprintf(stderr, "korvil-studio: %s: cannot write the picture\n", qPrintable(file));
        QCoreApplication::exit(saved ? 0 : 1);
    });
    poll->start();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("korvil-studio"));
    QApplication::setApplicationVersion(QStringLiteral(KORVIL_VERSION));
    chooseHostInstallation(QStringLiteral(KORVIL_SOURCE_INSTALL_TREE));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The window host of the Korvil project library."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Grab the window into FILE (PNG) and quit."),
                                        QStringLiteral("FILE"));
    parser.addOption(screenshot);
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("The project file to open (.rtp)."));
    parser.process(app);
    const QStringList projects = parser.positionalArguments();
    if (projects.size() > 1)
        parser.showHelp(2);

    StudioWindow window;
    window.show();
    if (!projects.isEmpty() && !window.openProject(projects.first()) && parser.isSet(screenshot))
        return 1;
    if (parser.isSet(screenshot))
        grabWhenPainted(&window, parser.value(screenshot));
    return app.exec();
}
