#pragma once

#include "sdk110_export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

class QAStData;
class QTemporaryFile;
class QTextStream;

// Computes the metrics of a list of source files: the metrics driver
// "Metrics.pl" of the installation runs once per file, one file after the
// other, each run starting when the previous one has ended. Each run writes
// the metrics file of its source into the metrics directory
// (metricFileName) and appends to the log file.
//
// Each run gets an assignment file of three lines, passed to the script as
// its first argument:
//   $METDIR='<metrics directory>';
//   $FILENAME='<absolute path of the source>';
//   $LOGFILENAME2='<log file>';
// (values escaped with QAStPerlGen::safeStr), written in the metrics
// directory, which is also the working directory, and removed after the
// run. The script's output goes to the output console.
//
// Progress goes to the host: "Computing Metric in progress" with the
// number of files, "Compute Metric for File:%1" for each file, and an
// "Abort" button when cancelling is enabled. Abort (the host's
// progressWasCanceled, looked at before each file and every 100 ms during
// a run, or canceled()) kills the running script and ends the run. In
// batch mode or without a host nothing is shown and nothing cancels.
//
// A script that fails (does not start, ends with a non-zero status) is
// reported by computeFileTerminated and the run goes on with the next file.
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
    // The three assignment lines of a run.
    static QString assignments(const QString& metricDirectory, const QString& sourceFile,
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
    void nextFile();
    void pollCancel();

private:
    bool hostCanceled() const;
    bool runFile(const QString& file);
    void finish();

    QString m_metricDirectory;
    QString m_logFileName;
    QStringList m_files;
    bool m_cancelEnabled = true;
    bool m_autoDelete = false;

    bool m_inProgress = false;
    bool m_stopping = false;
    bool m_canceled = false;
    bool m_state = false;
    int m_index = 0;
    QStringList m_metricFiles;
    QStringList m_failedFiles;

    // The item the scripts run on (QAStData::executePerlScript), and the
    // assignment file of the running script.
    std::unique_ptr<QAStData> m_runner;
    std::unique_ptr<QTemporaryFile> m_assignmentFile;
    std::unique_ptr<QTextStream> m_assignmentStream;
    QTimer m_next;
    QTimer m_poll;
};
