#pragma once

#include "StudioInterface.h"
#include "sdk110_export.h"

#include <QString>

class QMainWindow;
class QWidget;

// The program that hosts the library, as every part of it reaches the
// user: the one StudioInterface the program gave (none in a program
// without one), batch mode, and the services built on them. The project
// tree's static services (QAStData::studioIFace, displayMessage, ...) and
// QAStProject::modeBatch are forwarders to these.
//
// Without a host, console texts go to the Qt warning channel and questions
// take their default button. In batch mode no box is shown: a warning goes
// to the message console and a question takes its default button.
class SDK110_EXPORT QAHost {
public:
    // The host's two consoles: OutputConsole (0) receives the output of
    // driver runs, MessageConsole (1) the library's own messages; any value
    // but 0 is the message console.
    enum Console : int { OutputConsole = 0, MessageConsole = 1 };

    // The host's interface (not owned; null for none).
    static void setInterface(StudioInterface* host);
    static StudioInterface* studioInterface();
    // The host's main window and the parent of boxes; null without a host
    // or in a host without windows.
    static QMainWindow* mainWindow();
    static QWidget* boxParent();

    // No box is shown: the command-line host, and tests.
    static bool batchMode();
    static void setBatchMode(bool batch);

    static void displayMessage(int console, const QString& text);
    static void clearMessage(int console);
    static void editFile(const QString& file, int line);

    // A warning box; in batch mode or without a host, the text on the
    // message console.
    static void warning(const QString& caption, const QString& text);
    // A question; in batch mode or without a host, the text on the message
    // console and the default button.
    static StudioInterface::StandardButton
    question(const QString& caption, const QString& text, StudioInterface::StandardButtons buttons,
             StudioInterface::StandardButton defaultButton,
             StudioInterface::Icon icon = StudioInterface::Question);
};
