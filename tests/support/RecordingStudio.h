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
    void answer(QMessageBox::StandardButton button);
    void answer(StandardButton button);
    void answerText(const QString& text, bool ok = true);
    // For open, save and directory choosers; a list answers getOpenFileNames.
    void answerPath(const QString& path);
    void answerPaths(const QStringList& paths);
    // progressWasCanceled turns true once the progress value reaches value.
    void cancelProgressAt(int value);
    void setMainWindow(QMainWindow* window) { m_mainWindow = window; }
    void setStudioPort(int port) { m_port = port; }
    void setConfigurationManagementTool(const QString& name) { m_cmTool = name; }
    void setViewers(const QStringList& namesById) { m_viewers = namesById; }

    // --- records
    // Texts shown on a console (0 output, anything else message) since it
    // was last cleared, one entry per call.
    QStringList messages(int console) const;
    // The same texts joined.
    QString consoleText(int console) const;
    int clearCount(int console) const;
    const QList<Request>& requests() const { return m_requests; }
    // The texts of the requests of one kind.
    QStringList requestTexts(Request::Kind kind) const;
    QStringList statusMessages() const { return m_statusMessages; }
    // "file:line" of every editFile call.
    QStringList editedFiles() const { return m_editedFiles; }
    QStringList progressLabels() const { return m_progressLabels; }
    QString progressCancelText() const { return m_progressCancelText; }
    int progressMaximum() const { return m_progressMaximum; }
    int progressValue() const { return m_progressValue; }
    bool progressRunning() const { return m_progressRunning; }
    // Forgets every record and every scripted answer.
    void reset();

    // --- StudioInterface
    QMainWindow* mainWindow() const override { return m_mainWindow; }
    void displayMessage(int console, const QString& text) override;
    void clearMessage(int console) override;
    void statusMessage(const QString& text) override;
    QString configurationManagementTool() const override { return m_cmTool; }
    int studioPort() const override { return m_port; }
    void editFile(const QString& file, int line) override;
    int getViewerIdByName(const QString& name) const override;
    QString getViewerNameById(int id) const override;
    void warning(QWidget* parent, const QString& caption, const QString& text) override;
    void information(QWidget* parent, const QString& caption, const QString& text) override;
    void critical(QWidget* parent, const QString& caption, const QString& text) override;
    StandardButton question(QWidget* parent, const QString& caption, const QString& text,
                            StandardButtons buttons, StandardButton defaultButton,
                            Icon icon) override;
    QString getText(QWidget* parent, const QString& caption, const QString& label,
                    const QString& text, bool* ok) override;
    QString getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override;
    QStringList getOpenFileNames(QWidget* parent, const QString& caption, const QString& dir,
                                 const QString& filter) override;
    QString getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override;
    QString getExistingDirectory(QWidget* parent, const QString& caption,
                                 const QString& dir) override;
    void startProgress(const QString& label, const QString& cancelText, int maximum) override;
    void setProgressValue(int value) override;
    void setProgressLabel(const QString& label) override;
    bool progressWasCanceled() const override;
    void finishProgress() override;

private:
    struct TextAnswer {
        QString text;
        bool ok;
    };

    static int consoleIndex(int console) { return console == 0 ? 0 : 1; }
    void record(Request::Kind kind, const QString& caption, const QString& text);
    QString nextPath();

    QMainWindow* m_mainWindow = nullptr;
    int m_port = 0;
    QString m_cmTool;
    QStringList m_viewers;

    QList<StandardButton> m_buttons;
    QList<TextAnswer> m_texts;
    QList<QStringList> m_paths;
    int m_cancelAt = -1;

    QStringList m_consoles[2];
    int m_clears[2] = {0, 0};
    QList<Request> m_requests;
    QStringList m_statusMessages;
    QStringList m_editedFiles;
    QStringList m_progressLabels;
    QString m_progressCancelText;
    int m_progressMaximum = 0;
    int m_progressValue = 0;
    bool m_progressRunning = false;
};
