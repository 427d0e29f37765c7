#pragma once

#include "QAStFile.h"
#include "sdk110_export.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

// Analyses a list of files into tags behind the host's progress dialog
// (StudioInterface::startProgress): the label "Analysing file in
// progress", then "Analysing File:<path>" for each file as the tagging
// comes to it, and the cancel button "Abort" when cancelling is enabled.
//
// The files go to the tagging driver in batches (QAStFile::
// taggingInformation with a list): one run of the interpreter and of the
// tag program for up to batchSize() files, the batches one after the
// other. Each file is read into tags as soon as the driver has written its
// tag file, so the progress moves file by file while a batch runs.
//
// Files that are no source files are passed over. A file whose analysis
// fails is reported on the message console as "<path>: file analysing
// failed." and the run goes on. When a driver run dies before the end of
// its batch (the tag program crashed on a file), the file it was at is
// tagged again in a run of its own, since the culprit may be a later file
// whose output died with the tag program; it fails only when it fails
// alone. The files after it go to the next batch. Aborting (the host's cancel, polled every
// 100 ms and at each file's end, or stop()) kills the running driver and
// ends the run; the files done keep their tags. With deleteAtEnd the
// object deletes itself (later) once the run has ended.
class SDK110_EXPORT QAStFileAnalyse : public QObject {
    Q_OBJECT
public:
    // The files of one driver run by default. An abort kills the driver at
    // once and every file is read as soon as it is done, whatever the
    // batch; so the size only spreads the start of a run (the interpreter,
    // the tag program, the pipeline filling: some 30 to 70 ms) over its
    // files, under 0.2 ms a file here.
    static constexpr int DefaultBatchSize = 512;

    // The files are not owned; one deleted meanwhile is passed over.
    explicit QAStFileAnalyse(const QList<QAStFile*>& files, bool cancellable = true,
                             bool deleteAtEnd = false, QObject* parent = nullptr);
    ~QAStFileAnalyse() override;

    // The most files one driver run handles (at least 1).
    void setBatchSize(int files);
    int batchSize() const { return m_batchSize; }

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
    void fileStarted();
    void fileTerminated();
    void batchTerminated();
    void pollCancel();
    void analyseNext();

private:
    // The position in the list of a file of the running batch; -1 if none.
    int batchPosition(const QObject* file) const;
    void connectBatch(bool on);
    void fileFailed(QAStFile* file);
    void finish();

    QList<QPointer<QAStFile>> m_files;
    QList<QPointer<QAStFile>> m_analysed;
    QList<QPointer<QAStFile>> m_failed;
    // The running batch: the positions of its files in m_files, and
    // whether each has ended.
    QList<int> m_batch;
    QList<bool> m_batchEnded;
    QTimer m_cancelPoll;
    int m_next = 0;
    int m_batchSize = DefaultBatchSize;
    // The next batch is the file at m_next alone.
    bool m_alone = false;
    bool m_cancellable;
    bool m_deleteAtEnd;
    bool m_running = false;
    bool m_stopped = false;
};
