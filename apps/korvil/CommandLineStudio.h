#pragma once

#include "StudioInterface.h"

#include <QString>

// The host of the command-line tool: the output console is standard
// output, the message console standard error; boxes are lines on standard
// error ("warning: ...", "error: ..."); questions take their default; a
// save chooser answers with the path given on the command line; progress
// is one line redrawn below the output when standard output is a terminal,
// and nothing otherwise.
class CommandLineStudio : public StudioInterface {
public:
    CommandLineStudio();

    QMainWindow* mainWindow() const override { return nullptr; }
    void displayMessage(int console, const QString& text) override;
    void clearMessage(int console) override;
    void statusMessage(const QString& text) override;

    void warning(QWidget* parent, const QString& caption, const QString& text) override;
    void information(QWidget* parent, const QString& caption, const QString& text) override;
    void critical(QWidget* parent, const QString& caption, const QString& text) override;

    QString getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override;
    // The answer of the next save chooser.
    void setSavePath(const QString& path) { m_savePath = path; }

    void startProgress(const QString& label, const QString& cancelText, int maximum) override;
    void setProgressValue(int value) override;
    void setProgressLabel(const QString& label) override;
    void finishProgress() override;
    // The value and the label at once, drawn once.
    void showProgress(int value, const QString& label);

    // Messages that went to the message console or were boxes of kind
    // warning or error.
    int problems() const { return m_problems; }
    // Lines are not ended by the library in every message: keep the
    // terminal tidy by ending an open line before the tool's own output.
    void endLine();

private:
    void write(FILE* stream, const QString& text);
    void drawProgress();
    void clearProgress();

    QString m_savePath;
    bool m_terminal = false;
    bool m_progressShown = false;  // the line is on the terminal now
    bool m_progressActive = false; // between startProgress and finishProgress
    int m_width = 79;
    QString m_progressLabel;
    int m_progressValue = 0;
    int m_progressMaximum = 0;
    int m_problems = 0;
    bool m_lineOpen[2] = {false, false};
};
