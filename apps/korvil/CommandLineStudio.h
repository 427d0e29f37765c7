#pragma once

#include "StudioInterface.h"

#include <QString>

// The host of the command-line tool. The output console is standard
// output, passed on as it comes (the drivers' output arrives in pieces).
// The message console, boxes and questions are messages on standard
// error, laid out by messageText: every line of a message is ended, its
// first line starts "korvil: ", its further lines are indented by two
// blanks. Questions take their default, printed on one line with the
// answer (questionText). A save chooser answers with the path given on the
// command line; progress is one line redrawn below the output when
// standard output is a terminal, and nothing otherwise.
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
    StandardButton question(QWidget* parent, const QString& caption, const QString& text,
                                         StandardButtons buttons,
                                         StandardButton defaultButton,
                                         Icon icon) override;

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
    // The drivers' output does not always end its last line: keep the
    // terminal tidy by ending an open line before the tool's own output.
    void endLine();

    // A message as lines for standard error: "korvil: " and its first
    // line, then each further line indented by two blanks, every line
    // ended by one "\n". A box's text "FILE\n\nREASON" starts
    // "korvil: FILE: REASON"; blank lines are left out. Empty for a text
    // of blanks only.
    static QString messageText(const QString& text);
    // A question and the answer taken, as one line for standard error:
    // "korvil: " and its lines joined (". " after a line that does not end
    // a sentence), then the answer and "(batch mode)".
    static QString questionText(const QString& text, StandardButton answer);

private:
    void writeOutput(const QString& text);
    void writeMessage(const QString& lines);
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
    bool m_outputLineOpen = false;
};
