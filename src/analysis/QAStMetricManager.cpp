#include "QAStMetricManager.h"

#include "QAStData.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QTemporaryFile>
#include <QTextStream>

namespace {
QString translate(const char* text)
{
    return QCoreApplication::translate("QAStMetricManager", text);
}

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
    connect(&m_next, &QTimer::timeout, this, &QAStMetricManager::nextFile);
    m_poll.setInterval(100);
    connect(&m_poll, &QTimer::timeout, this, &QAStMetricManager::pollCancel);
}

QAStMetricManager::~QAStMetricManager() = default;

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
    if (!m_runner)
        m_runner = std::make_unique<QAStData>(QStringLiteral("Metrics"), QPixmap());
    emit computeMetricStarted();
    if (StudioInterface* host = progressHost())
        host->startProgress(translate("Computing Metric in progress"),
                            m_cancelEnabled ? translate("Abort") : QString(), int(m_files.size()));
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

void QAStMetricManager::pollCancel()
{
    if (hostCanceled())
        canceled();
}

// The progress value is the number of files done; the host is asked for an
// abort once it has seen it.
void QAStMetricManager::nextFile()
{
    if (!m_inProgress || m_stopping)
        return;
    StudioInterface* host = progressHost();
    if (host)
        host->setProgressValue(m_index);
    if (hostCanceled()) {
        canceled();
        return;
    }
    if (m_index >= m_files.size()) {
        m_state = m_failedFiles.isEmpty();
        finish();
        return;
    }
    const QString file = m_files.at(m_index);
    if (host)
        host->setProgressLabel(translate("Compute Metric for File:%1").arg(file));
    emit computeFileStarted(file);
    if (!m_inProgress || m_stopping) // stopped by a receiver
        return;
    if (!runFile(file)) {
        m_failedFiles.append(file);
        emit computeFileTerminated(file, false);
        ++m_index;
        m_next.start();
    }
}

bool QAStMetricManager::runFile(const QString& file)
{
    m_assignmentFile = std::make_unique<QTemporaryFile>(
        QDir(m_metricDirectory).filePath(QStringLiteral("Metrics-XXXXXX.pl")));
    if (!m_assignmentFile->open()) {
        QAStData::displayMessage(QAStData::OutputConsole,
                                 translate("%1: cannot write the assignment file: %2\n")
                                     .arg(file, m_assignmentFile->errorString()));
        return false;
    }
    m_assignmentStream = std::make_unique<QTextStream>(m_assignmentFile.get());
    *m_assignmentStream << assignments(m_metricDirectory, file, logFileName());
    connect(m_runner.get(), &QAStData::perlScriptTerminated, this,
            &QAStMetricManager::metricScriptTerminated, Qt::UniqueConnection);
    m_poll.start();
    m_runner->executePerlScript(QString::fromLatin1(metricsScript), m_metricDirectory,
                                m_assignmentStream.get(), true, QAStData::OutputConsole);
    return true;
}

void QAStMetricManager::metricScriptTerminated()
{
    m_poll.stop();
    m_assignmentStream.reset();
    m_assignmentFile.reset();
    const QString file = m_files.value(m_index);
    const bool succeeded = m_runner->perlScriptSucceeded();
    if (succeeded)
        m_metricFiles.append(metricFileName(m_metricDirectory, file));
    else
        m_failedFiles.append(file);
    ++m_index;
    emit computeFileTerminated(file, succeeded);
    if (m_stopping)
        finish();
    else
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
