#pragma once

#include "sdk110_export.h"

#include <QFlags>
#include <QString>
#include <QStringList>

class QMainWindow;
class QWidget;

// The host studio as the library sees it.
//
// The library never opens a dialog, message box or file chooser itself: it
// asks this interface, reached through QAHost (QAStData::studioIFace()). The window
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
    // The buttons of a question, with the values of QMessageBox's, so that a
    // window host passes them on as they are.
    enum StandardButton {
        NoButton = 0x00000000,
        Ok = 0x00000400,
        Save = 0x00000800,
        Yes = 0x00004000,
        No = 0x00010000,
        Abort = 0x00040000,
        Retry = 0x00080000,
        Ignore = 0x00100000,
        Cancel = 0x00400000,
        Discard = 0x00800000,
    };
    Q_DECLARE_FLAGS(StandardButtons, StandardButton)
    // The icon of a box, with QMessageBox's values.
    enum Icon { NoIcon = 0, Information = 1, Warning = 2, Critical = 3, Question = 4 };
    // The English name of a button ("Yes", "Cancel"); empty for another
    // value.
    static QString buttonName(StandardButton button);

    virtual ~StudioInterface();

    // The studio's main window; null in a host without windows.
    virtual QMainWindow* mainWindow() const = 0;
    // The widget the library's boxes are parented to: the main window in a
    // window host; null in the base.
    virtual QWidget* boxParent() const;

    // The two output consoles: 0 is the output console, any other number the
    // message console (QAHost::Console).
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
    virtual StandardButton question(QWidget* parent, const QString& caption, const QString& text,
                                    StandardButtons buttons = StandardButtons(Yes | No),
                                    StandardButton defaultButton = Yes, Icon icon = Question);

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

Q_DECLARE_OPERATORS_FOR_FLAGS(StudioInterface::StandardButtons)
