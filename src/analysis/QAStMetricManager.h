#pragma once

#include "sdk110_export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

class QAStDriverBatch;
class QTemporaryFile;
class QTextStream;

// Computes the metrics of a list of source files through the metrics
// driver "Metrics.pl" of the installation. The driver measures a batch of
// files in one run (up to batchSize()), one file after the other, and
// reports each file as its metrics file is written; the batches run one
// after the other. Each file's metrics file goes into the metrics
// directory (metricFileName); the log file is appended to.
//
// Each run gets an assignment file, passed to the script as its first
// argument:
//   $METDIR='<metrics directory>';
//   $FILENAME='<absolute path of the batch's first source>';
//   $LOGFILENAME2='<log file>';
//   @FILENAMES=('<first source>', '<second source>', ...);
// (values escaped with QAStPerlGen::safeStr; @FILENAMES only for more than
// one file), written in the metrics directory, which is also the working
// directory, and removed after the run. The script's output goes to the
// output console.
//
// Progress goes to the host: "Computing Metric in progress" with the
// number of files, "Compute Metric for File:%1" for each file as the
// driver comes to it, and an "Abort" button when cancelling is enabled.
// Abort (the host's progressWasCanceled, looked at after each file and
// every 100 ms during a run, or canceled()) kills the running script and
// ends the run; the files done keep their metrics. In batch mode or
// without a host nothing is shown and nothing cancels.
//
// A file that fails (cannot be read, its metrics file cannot be written)
// is reported by computeFileTerminated and the run goes on with the next
// file. A script that fails as a whole (does not start, dies) fails the
// file it was at; the files of its batch after that one go to the next
// run.
class SDK110_EXPORT QAStMetricManager : public QObject {
    Q_OBJECT
public:
    explicit QAStMetricManager(const QString& metricDirectory, QObject* parent = nullptr,
                               const char* name = nullptr);
    ~QAStMetricManager() override;

    QString metricDirectory() const { return m_metricDirectory; }
    void setMetricDirectory(const QString& directory) { m_metricDirectory = directory; }
    // The log file of the runs; <metrics directory>/Metrics.log when not set.
    QString logFileName() const;
    void setLogFileName(const QString& file) { m_logFileName = file; }

    // The sources; a relative path is taken from the current directory.
    void setFileList(const QStringList& files) { m_files = files; }
    QStringList fileList() const { return m_files; }
    // Whether the progress shows "Abort" and the user may abort (default
    // true).
    void setCancelEnabled(bool enabled) { m_cancelEnabled = enabled; }
    bool isCancelEnabled() const { return m_cancelEnabled; }
    // The most files one script run measures (at least 1; default
    // DefaultBatchSize): the interpreter's start spread over many files.
    static constexpr int DefaultBatchSize = 64;
    void setBatchSize(int files);
    int batchSize() const { return m_batchSize; }
    // Whether the manager deletes itself (later) once a run has ended
    // (default false).
    void setAutoDeleteEnabled(bool enabled) { m_autoDelete = enabled; }
    bool isAutoDeleteEnabled() const { return m_autoDelete; }

    // Starts a run over the file list (the metrics directory is made when
    // missing): emits computeMetricStarted and starts the first script.
    // False, and nothing happens, while a run is in progress.
    bool start();
    // Ends the run: kills the running script; no further file is started.
    void stop();
    bool inProgress() const { return m_inProgress; }
    // The last run was aborted by the user.
    bool wasCanceled() const { return m_canceled; }
    // True when the last run went through every file with success; false
    // from start() on, or when set so by the owner (the sources changed).
    bool state() const { return m_state; }
    void setState(bool state) { m_state = state; }

    // The metrics files written with success by the last run, in order.
    QStringList metricFiles() const { return m_metricFiles; }
    // The sources whose script failed in the last run.
    QStringList failedFiles() const { return m_failedFiles; }

    // The source as the script receives it in $FILENAME: absolute, cleaned,
    // with the platform's separators.
    static QString scriptFileName(const QString& sourceFile);
    // The metrics file the script writes for a source: "<file name>.<the
    // first 8 hexadecimal digits of the MD5 of $FILENAME in UTF-8>.met" in
    // the metrics directory.
    static QString metricFileName(const QString& metricDirectory, const QString& sourceFile);
    // The three assignment lines of a run over one file.
    static QString assignments(const QString& metricDirectory, const QString& sourceFile,
                               const QString& logFile);
    // The assignments of a run over a batch: those of its first file, then
    // @FILENAMES with every file when there are several.
    static QString assignments(const QString& metricDirectory, const QStringList& sourceFiles,
                               const QString& logFile);

public slots:
    // The user's abort: ends the run and marks it canceled (nothing when
    // cancelling is disabled or no run is in progress).
    void canceled();

signals:
    void computeMetricStarted();
    // One file's script starts, or has ended.
    void computeFileStarted(const QString& file);
    void computeFileTerminated(const QString& file, bool succeeded);
    // The run has ended: every file done, stopped or canceled.
    void computeMetricTerminated();

private slots:
    void metricScriptTerminated();
    void fileReported(int index, bool succeeded);
    void nextBatch();
    void pollCancel();

private:
    bool hostCanceled() const;
    // Shows the files done as the progress value; false, the run canceled,
    // when the host was asked to cancel.
    bool showProgress();
    // Starts the file at m_index: its label and computeFileStarted. False
    // when a receiver stopped the run.
    bool startFile();
    // Ends the file at m_index and moves to the next.
    void endFile(bool succeeded);
    bool runBatch(const QStringList& files);
    void finish();

    QString m_metricDirectory;
    QString m_logFileName;
    QStringList m_files;
    bool m_cancelEnabled = true;
    bool m_autoDelete = false;
    int m_batchSize = DefaultBatchSize;

    bool m_inProgress = false;
    bool m_stopping = false;
    bool m_canceled = false;
    bool m_state = false;
    // The file the running script is at, and the first file of its batch.
    int m_index = 0;
    int m_batchStart = 0;
    int m_batchEnd = 0;
    QStringList m_metricFiles;
    QStringList m_failedFiles;

    // The item the scripts run on (QAStData::executePerlScript), and the
    // assignment file of the running script.
    std::unique_ptr<QAStDriverBatch> m_runner;
    std::unique_ptr<QTemporaryFile> m_assignmentFile;
    std::unique_ptr<QTextStream> m_assignmentStream;
    QTimer m_next;
    QTimer m_poll;
};
