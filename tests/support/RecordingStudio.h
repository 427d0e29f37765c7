#pragma once

#include "StudioInterface.h"

#include <QList>
#include <QMessageBox>
#include <QString>
#include <QStringList>

// A host studio for tests: records every console line, box, question,
// input and chooser request, and answers from scripted queues.
//
//   RecordingStudio studio;          // installed as the library's host
//   studio.answer(QMessageBox::No);  // the next question answers No
//   ... code under test ...
//   QCOMPARE(studio.messages(QAStData::MessageConsole), QStringList{"..."});
//
// A question with no scripted answer takes its default button; a text
// input without one keeps the proposed text; a chooser without one returns
// nothing. The destructor uninstalls the studio if it is still the host.
class RecordingStudio : public StudioInterface {
public:
    // One request the library made of the host, in the order made.
    struct Request {
        enum Kind { Warning, Information, Critical, Question, TextInput, OpenFile, OpenFiles,
                    SaveFile, Directory };
        Kind kind;
        QString caption;
        QString text; // box text, input label, or chooser start directory
        QMessageBox::StandardButton answer = QMessageBox::NoButton; // questions
    };

    // Installs itself with QAStData::initialize unless told not to.
    explicit RecordingStudio(bool installNow = true);
    ~RecordingStudio() override;

    void install();

    // --- scripted answers, each used once, first in first out
    void answer(QMessageBox::StandardButton button) { m.buttons.append(StandardButton(button)); }
    void answer(StandardButton button) { m.buttons.append(button); }
    void answerText(const QString& text, bool ok = true) { m.texts.append({text, ok}); }
    // For open, save and directory choosers.
    void answerPath(const QString& path) { m.paths.append(QStringList{path}); }
    // progressWasCanceled turns true once the progress value reaches value.
    void cancelProgressAt(int value) { m.cancelAt = value; }
    void setMainWindow(QMainWindow* window) { m_mainWindow = window; }

    // --- records
    // Texts shown on a console (0 output, anything else message) since it
    // was last cleared, one entry per call.
    QStringList messages(int console) const { return m.consoles[consoleIndex(console)]; }
    // The same texts joined.
    QString consoleText(int console) const { return messages(console).join(QString()); }
    int clearCount(int console) const { return m.clears[consoleIndex(console)]; }
    const QList<Request>& requests() const { return m.requests; }
    // The texts of the requests of one kind.
    QStringList requestTexts(Request::Kind kind) const;
    QStringList statusMessages() const { return m.statusMessages; }
    // "file:line" of every editFile call.
    QStringList editedFiles() const { return m.editedFiles; }
    QStringList progressLabels() const { return m.progressLabels; }
    QString progressCancelText() const { return m.progressCancelText; }
    int progressMaximum() const { return m.progressMaximum; }
    int progressValue() const { return m.progressValue; }
    bool progressRunning() const { return m.progressRunning; }
    // Forgets every record and every scripted answer.
    void reset() { m = State(); }

    // --- StudioInterface
    QMainWindow* mainWindow() const override { return m_mainWindow; }
    void displayMessage(int console, const QString& text) override { m.consoles[consoleIndex(console)].append(text); }
    void clearMessage(int console) override;
    void statusMessage(const QString& text) override { m.statusMessages.append(text); }
    QString configurationManagementTool() const override { return QString(); }
    int studioPort() const override { return 0; }
    void editFile(const QString& file, int line) override;
    int getViewerIdByName(const QString&) const override { return -1; }
    QString getViewerNameById(int) const override { return QString(); }
    void warning(QWidget*, const QString& caption, const QString& text) override
    {
        record(Request::Warning, caption, text);
    }
    void information(QWidget*, const QString& caption, const QString& text) override
    {
        record(Request::Information, caption, text);
    }
    void critical(QWidget*, const QString& caption, const QString& text) override
    {
        record(Request::Critical, caption, text);
    }
    StandardButton question(QWidget* parent, const QString& caption, const QString& text,
                            StandardButtons buttons, StandardButton defaultButton, Icon icon) override;
    QString getText(QWidget* parent, const QString& caption, const QString& label,
                    const QString& text, bool* ok) override;
    QString getOpenFileName(QWidget*, const QString& caption, const QString& dir, const QString&) override
    {
        return nextPath(Request::OpenFile, caption, dir).value(0);
    }
    QStringList getOpenFileNames(QWidget*, const QString& caption, const QString& dir,
                                 const QString&) override
    {
        return nextPath(Request::OpenFiles, caption, dir);
    }
    QString getSaveFileName(QWidget*, const QString& caption, const QString& dir, const QString&) override
    {
        return nextPath(Request::SaveFile, caption, dir).value(0);
    }
    QString getExistingDirectory(QWidget*, const QString& caption, const QString& dir) override
    {
        return nextPath(Request::Directory, caption, dir).value(0);
    }
    void startProgress(const QString& label, const QString& cancelText, int maximum) override;
    void setProgressValue(int value) override { m.progressValue = value; }
    void setProgressLabel(const QString& label) override { m.progressLabels.append(label); }
    bool progressWasCanceled() const override { return m.cancelAt >= 0 && m.progressValue >= m.cancelAt; }
    void finishProgress() override { m.progressRunning = false; }

private:
    struct TextAnswer {
        QString text;
        bool ok;
    };
    // The scripted answers and the records, which reset() forgets.
    struct State {
        QList<StandardButton> buttons;
        QList<TextAnswer> texts;
        QList<QStringList> paths;
        int cancelAt = -1;
        QStringList consoles[2];
        int clears[2] = {0, 0};
        QList<Request> requests;
        QStringList statusMessages;
        QStringList editedFiles;
        QStringList progressLabels;
        QString progressCancelText;
        int progressMaximum = 0;
        int progressValue = 0;
        bool progressRunning = false;
    };

    static int consoleIndex(int console) { return console == 0 ? 0 : 1; }
    void record(Request::Kind kind, const QString& caption, const QString& text)
    {
        m.requests.append(Request{kind, caption, text});
    }
    // Records a chooser request and takes the next scripted answer.
    QStringList nextPath(Request::Kind kind, const QString& caption, const QString& dir);

    QMainWindow* m_mainWindow = nullptr;
    State m;
};
