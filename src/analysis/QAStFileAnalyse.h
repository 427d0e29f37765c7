#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QAStFile;

// Analyses a list of files into tags, one file after the other, behind the
// host's progress dialog (StudioInterface::startProgress): the label
// "Analysing file in progress", then "Analysing File:<path>" for each
// file, and the cancel button "Abort" when cancelling is enabled.
//
// Files that are no source files are passed over. A file whose analysis
// fails is reported on the message console as "<path>: file analysing
// failed." and the run goes on. Aborting (the host's cancel, polled every
// 100 ms and at each file's end, or stop()) stops the running tagging and
// ends the run. With deleteAtEnd the object deletes itself (later) once
// the run has ended.
class SDK110_EXPORT QAStFileAnalyse : public QObject {
    Q_OBJECT
public:
    // The files are not owned; one deleted meanwhile is passed over.
    explicit QAStFileAnalyse(const QList<QAStFile*>& files, bool cancellable = true,
                             bool deleteAtEnd = false, QObject* parent = nullptr);
    ~QAStFileAnalyse() override;

    // Starts the run; false when it runs already. The files are tagged
    // asynchronously: the run ends with finished().
    bool start();
    // Stops the running tagging and ends the run.
    void stop();
    bool isRunning() const { return m_running; }

    // The files analysed well, and those whose analysis failed, so far.
    QList<QAStFile*> analysedFiles() const;
    QList<QAStFile*> failedFiles() const;
    // The run was stopped before its end.
    bool wasStopped() const { return m_stopped; }

signals:
    // One file's analysis ended.
    void fileAnalysed(QAStFile* file, bool succeeded);
    // The run ended, at its last file or stopped.
    void finished();

private slots:
    void fileTerminated();
    void pollCancel();
    void analyseNext();

private:
    void fileFailed(QAStFile* file);
    void finish();

    QList<QPointer<QAStFile>> m_files;
    QList<QPointer<QAStFile>> m_analysed;
    QList<QPointer<QAStFile>> m_failed;
    QPointer<QAStFile> m_current;
    QTimer m_cancelPoll;
    int m_next = 0;
    bool m_cancellable;
    bool m_deleteAtEnd;
    bool m_running = false;
    bool m_stopped = false;
};
