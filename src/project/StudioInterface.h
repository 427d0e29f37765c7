#pragma once

#include "sdk110_export.h"

#include <QMessageBox>
#include <QString>
#include <QStringList>

class QMainWindow;
class QWidget;

// The host studio as the library sees it.
//
// The library never opens a dialog, message box or file chooser itself: it
// asks this interface, reached through QAStData::studioIFace(). The window
// host shows real boxes; a command-line host, batch mode and tests answer on
// their own. Without a host, texts go to the Qt warning channel and
// questions take their default button.
//
// Only the main window and the two consoles must be provided. Every other
// operation has a batch default: boxes are written to the message console
// (console 1), questions take their default button, text input keeps the
// proposed text, choosers return nothing, progress is never canceled.
class SDK110_EXPORT StudioInterface {
public:
    virtual ~StudioInterface();

    // The studio's main window, parent of every box; null in a host without
    // windows.
    virtual QMainWindow* mainWindow() const = 0;

    // The two output consoles: 0 is the output console, any other number the
    // message console (see QAStData::Console).
    virtual void displayMessage(int console, const QString& text) = 0;
    virtual void clearMessage(int console) = 0;

    // A transient status text (the status bar of a window host).
    virtual void statusMessage(const QString& text);
    // Name of the configuration-management tool the studio works with;
    // empty when none.
    virtual QString configurationManagementTool() const;
    // The port on which the studio listens for runtime feedback; 0 when the
    // host does not listen.
    virtual int studioPort() const;
    // Opens a file in the studio's editor at a line (1-based; 0: no line).
    virtual void editFile(const QString& file, int line);
    // The studio's viewers by id and name; -1 and empty when unknown.
    virtual int getViewerIdByName(const QString& name) const;
    virtual QString getViewerNameById(int id) const;

    // Message boxes with a single OK button.
    virtual void warning(QWidget* parent, const QString& caption, const QString& text);
    virtual void information(QWidget* parent, const QString& caption, const QString& text);
    virtual void critical(QWidget* parent, const QString& caption, const QString& text);

    // A question: returns the button chosen among buttons. The batch answer
    // is defaultButton.
    virtual QMessageBox::StandardButton question(
        QWidget* parent, const QString& caption, const QString& text,
        QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No,
        QMessageBox::StandardButton defaultButton = QMessageBox::Yes,
        QMessageBox::Icon icon = QMessageBox::Question);

    // A line of text input, proposing text. ok (when given) tells whether
    // the user accepted. The batch answer accepts the proposed text.
    virtual QString getText(QWidget* parent, const QString& caption, const QString& label,
                            const QString& text = QString(), bool* ok = nullptr);

    // File and directory choosers; filter as in QFileDialog ("Projects
    // (*.rtp);;All files (*)"). Empty when nothing was chosen.
    virtual QString getOpenFileName(QWidget* parent, const QString& caption,
                                    const QString& dir, const QString& filter);
    virtual QStringList getOpenFileNames(QWidget* parent, const QString& caption,
                                         const QString& dir, const QString& filter);
    virtual QString getSaveFileName(QWidget* parent, const QString& caption,
                                    const QString& dir, const QString& filter);
    virtual QString getExistingDirectory(QWidget* parent, const QString& caption,
                                         const QString& dir);

    // A modal progress dialog for long runs over many files: started with a
    // label, the text of its cancel button (the library passes "Abort") and
    // the number of steps; advanced with setProgressValue; closed with
    // finishProgress. progressWasCanceled is true once the user aborted.
    virtual void startProgress(const QString& label, const QString& cancelText, int maximum);
    virtual void setProgressValue(int value);
    virtual void setProgressLabel(const QString& label);
    virtual bool progressWasCanceled() const;
    virtual void finishProgress();
};
