#include "QAStMetricManager.h"

#include "QAStData.h"
#include "QAStDriverBatch.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "QATr.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QTemporaryFile>
#include <QTextStream>

#include <algorithm>

namespace {
// The host that shows the progress: none in batch mode.
StudioInterface* progressHost()
{
    return QAStProject::modeBatch() ? nullptr : QAStData::studioIFace();
}

const char* const metricsScript = "Metrics.pl";
}

QAStMetricManager::QAStMetricManager(const QString& metricDirectory, QObject* parent,
                                     const char* name)
    : QObject(parent)
    , m_metricDirectory(metricDirectory)
{
    if (name)
        setObjectName(QString::fromLatin1(name));
    m_next.setSingleShot(true);
    m_next.setInterval(0);
    connect(&m_next, &QTimer::timeout, this, &QAStMetricManager::nextBatch);
    m_poll.setInterval(100);
    connect(&m_poll, &QTimer::timeout, this, &QAStMetricManager::pollCancel);
}

QAStMetricManager::~QAStMetricManager() = default;

void QAStMetricManager::setBatchSize(int files)
{
    m_batchSize = std::max(files, 1);
}

QString QAStMetricManager::logFileName() const
{
    return m_logFileName.isEmpty() ? QDir(m_metricDirectory).filePath(QStringLiteral("Metrics.log"))
                                   : m_logFileName;
}

QString QAStMetricManager::scriptFileName(const QString& sourceFile)
{
    return QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(sourceFile).absoluteFilePath()));
}

QString QAStMetricManager::metricFileName(const QString& metricDirectory, const QString& sourceFile)
{
    const QString path = scriptFileName(sourceFile);
    const QByteArray digest =
        QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex().left(8);
    return QDir(metricDirectory)
        .filePath(QFileInfo(path).fileName() + QLatin1Char('.') + QString::fromLatin1(digest) +
                  QStringLiteral(".met"));
}

QString QAStMetricManager::assignments(const QString& metricDirectory, const QString& sourceFile,
                                       const QString& logFile)
{
    return QStringLiteral("$METDIR='") + QAStPerlGen::safeStr(metricDirectory) + "';\n" +
        QStringLiteral("$FILENAME='") + QAStPerlGen::safeStr(scriptFileName(sourceFile)) + "';\n" +
        QStringLiteral("$LOGFILENAME2='") + QAStPerlGen::safeStr(logFile) + "';\n";
}

QString QAStMetricManager::assignments(const QString& metricDirectory, const QStringList& sourceFiles,
                                       const QString& logFile)
{
    QString text = assignments(metricDirectory, sourceFiles.value(0), logFile);
    if (sourceFiles.size() > 1) {
        QStringList values;
        for (const QString& file : sourceFiles)
            values.append(u'\'' + QAStPerlGen::safeStr(scriptFileName(file)) + u'\'');
        text += QStringLiteral("@FILENAMES=(") + values.join(QStringLiteral(", ")) +
            QStringLiteral(");\n");
    }
    return text;
}

bool QAStMetricManager::start()
{
    if (m_inProgress)
        return false;
    m_inProgress = true;
    m_stopping = m_canceled = m_state = false;
    m_index = 0;
    m_metricFiles.clear();
    m_failedFiles.clear();
    QDir().mkpath(m_metricDirectory);
    if (!m_runner) {
        m_runner = std::make_unique<QAStDriverBatch>(QString::fromLatin1(metricsScript));
        connect(m_runner.get(), &QAStDriverBatch::fileReported, this, &QAStMetricManager::fileReported);
        connect(m_runner.get(), &QAStData::perlScriptTerminated, this,
                &QAStMetricManager::metricScriptTerminated);
    }
    emit computeMetricStarted();
    if (StudioInterface* host = progressHost())
        host->startProgress(QATr::analysis("Computing Metric in progress"),
                            m_cancelEnabled ? QATr::analysis("Abort") : QString(), int(m_files.size()));
    m_next.start();
    return true;
}

void QAStMetricManager::stop()
{
    if (!m_inProgress || m_stopping)
        return;
    m_stopping = true;
    m_next.stop();
    if (m_runner && m_runner->isRunning())
        m_runner->stop(); // its end (metricScriptTerminated) finishes the run
    else
        finish();
}

void QAStMetricManager::canceled()
{
    if (!m_inProgress || !m_cancelEnabled)
        return;
    m_canceled = true;
    stop();
}

bool QAStMetricManager::hostCanceled() const
{
    const StudioInterface* host = progressHost();
    return m_cancelEnabled && host && host->progressWasCanceled();
}

bool QAStMetricManager::showProgress()
{
    if (StudioInterface* host = progressHost())
        host->setProgressValue(m_index);
    if (!hostCanceled())
        return true;
    canceled();
    return false;
}

void QAStMetricManager::pollCancel()
{
    if (hostCanceled())
        canceled();
}

// The progress value is the number of files done; the host is asked for an
// abort once it has seen it.
void QAStMetricManager::nextBatch()
{
    if (!m_inProgress || m_stopping)
        return;
    if (!showProgress())
        return;
    if (m_index >= m_files.size()) {
        m_state = m_failedFiles.isEmpty();
        finish();
        return;
    }
    m_batchStart = m_index;
    m_batchEnd = int(std::min(m_files.size(), qsizetype(m_index) + m_batchSize));
    if (!startFile())
        return;
    if (!runBatch(m_files.mid(m_batchStart, m_batchEnd - m_batchStart))) {
        endFile(false);
        while (m_inProgress && !m_stopping && m_index < m_batchEnd && startFile())
            endFile(false);
        m_next.start();
    }
}

bool QAStMetricManager::startFile()
{
    const QString file = m_files.at(m_index);
    if (StudioInterface* host = progressHost())
        host->setProgressLabel(QATr::analysis("Compute Metric for File:%1").arg(file));
    emit computeFileStarted(file);
    return m_inProgress && !m_stopping; // a receiver may stop the run
}

void QAStMetricManager::endFile(bool succeeded)
{
    const QString file = m_files.at(m_index);
    if (succeeded)
        m_metricFiles.append(metricFileName(m_metricDirectory, file));
    else
        m_failedFiles.append(file);
    ++m_index;
    emit computeFileTerminated(file, succeeded);
}

bool QAStMetricManager::runBatch(const QStringList& files)
{
    m_assignmentFile = std::make_unique<QTemporaryFile>(
        QDir(m_metricDirectory).filePath(QStringLiteral("Metrics-XXXXXX.pl")));
    if (!m_assignmentFile->open()) {
        QAStData::displayMessage(QAStData::OutputConsole,
                                 QATr::analysis("%1: cannot write the assignment file: %2\n")
                                     .arg(files.constFirst(), m_assignmentFile->errorString()));
        return false;
    }
    m_assignmentStream = std::make_unique<QTextStream>(m_assignmentFile.get());
    *m_assignmentStream << assignments(m_metricDirectory, files, logFileName());
    m_poll.start();
    m_runner->executePerlScript(QString::fromLatin1(metricsScript), m_metricDirectory,
                                m_assignmentStream.get(), true, QAStData::OutputConsole);
    return true;
}

// The driver reports its files in order; the next one starts at once.
void QAStMetricManager::fileReported(int index, bool succeeded)
{
    if (!m_inProgress || m_stopping || m_batchStart + index != m_index || m_index >= m_batchEnd)
        return;
    endFile(succeeded);
    if (!m_inProgress || m_stopping)
        return;
    if (!showProgress())
        return;
    if (m_index < m_batchEnd)
        startFile();
}

// The end of a script: the file it was at, if any, failed; the files of
// its batch after that one go to the next run.
void QAStMetricManager::metricScriptTerminated()
{
    m_poll.stop();
    m_assignmentStream.reset();
    m_assignmentFile.reset();
    if (!m_inProgress)
        return;
    if (m_index < m_batchEnd)
        endFile(false);
    if (m_stopping)
        finish();
    else if (m_inProgress)
        m_next.start();
}

void QAStMetricManager::finish()
{
    m_next.stop();
    m_poll.stop();
    m_inProgress = false;
    m_stopping = false;
    if (StudioInterface* host = progressHost())
        host->finishProgress();
    emit computeMetricTerminated();
    if (m_autoDelete)
        deleteLater();
}
