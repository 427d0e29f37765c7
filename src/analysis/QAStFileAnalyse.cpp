#include "QAStFileAnalyse.h"

#include "QAStFile.h"
#include "StudioInterface.h"

#include <QCoreApplication>

namespace {
QList<QAStFile*> living(const QList<QPointer<QAStFile>>& files)
{
    QList<QAStFile*> found;
    for (const QPointer<QAStFile>& f : files) {
        if (f)
            found.append(f);
    }
    return found;
}
}

QAStFileAnalyse::QAStFileAnalyse(const QList<QAStFile*>& files, bool cancellable,
                                 bool deleteAtEnd, QObject* parent)
    : QObject(parent), m_cancellable(cancellable), m_deleteAtEnd(deleteAtEnd)
{
    for (QAStFile* f : files)
        m_files.append(f);
    m_cancelPoll.setInterval(100);
    connect(&m_cancelPoll, &QTimer::timeout, this, &QAStFileAnalyse::pollCancel);
}

QAStFileAnalyse::~QAStFileAnalyse()
{
    if (!m_running)
        return;
    if (m_current && QAStFile::fileInformationProcessed() == m_current)
        QAStFile::stopFileInformationProcess();
    if (StudioInterface* host = QAStData::studioIFace())
        host->finishProgress();
}

bool QAStFileAnalyse::start()
{
    if (m_running)
        return false;
    m_running = true;
    m_stopped = false;
    m_next = 0;
    m_analysed.clear();
    m_failed.clear();
    if (StudioInterface* host = QAStData::studioIFace())
        host->startProgress(tr("Analysing file in progress"),
                            m_cancellable ? tr("Abort") : QString(), int(m_files.size()));
    if (m_cancellable)
        m_cancelPoll.start();
    analyseNext();
    return true;
}

void QAStFileAnalyse::stop()
{
    if (!m_running)
        return;
    m_stopped = true;
    if (m_current) {
        disconnect(m_current, &QAStFile::taggingTerminated, this, &QAStFileAnalyse::fileTerminated);
        if (QAStFile::fileInformationProcessed() == m_current)
            QAStFile::stopFileInformationProcess();
        m_current = nullptr;
    }
    finish();
}

QList<QAStFile*> QAStFileAnalyse::analysedFiles() const
{
    return living(m_analysed);
}

QList<QAStFile*> QAStFileAnalyse::failedFiles() const
{
    return living(m_failed);
}

void QAStFileAnalyse::analyseNext()
{
    StudioInterface* host = QAStData::studioIFace();
    while (m_running && m_next < m_files.size()) {
        QAStFile* file = m_files.at(m_next++);
        if (!file || !file->isSourceFile()) {
            if (host)
                host->setProgressValue(m_next);
            continue;
        }
        if (host)
            host->setProgressLabel(tr("Analysing File:%1").arg(file->filePath()));
        m_current = file;
        connect(file, &QAStFile::taggingTerminated, this, &QAStFileAnalyse::fileTerminated);
        if (file->taggingInformation(true))
            return;
        disconnect(file, &QAStFile::taggingTerminated, this, &QAStFileAnalyse::fileTerminated);
        m_current = nullptr;
        fileFailed(file);
        if (host)
            host->setProgressValue(m_next);
    }
    finish();
}

void QAStFileAnalyse::fileTerminated()
{
    QAStFile* file = m_current;
    if (!file || sender() != file)
        return;
    disconnect(file, &QAStFile::taggingTerminated, this, &QAStFileAnalyse::fileTerminated);
    m_current = nullptr;
    if (file->lastTaggingSucceeded()) {
        m_analysed.append(file);
        emit fileAnalysed(file, true);
    } else {
        fileFailed(file);
    }
    if (StudioInterface* host = QAStData::studioIFace())
        host->setProgressValue(m_next);
    pollCancel();
    // The next file from the event loop: a tagging that ends at once (its
    // interpreter missing) must not nest one file's end in the other.
    if (m_running)
        QMetaObject::invokeMethod(this, &QAStFileAnalyse::analyseNext, Qt::QueuedConnection);
}

void QAStFileAnalyse::pollCancel()
{
    StudioInterface* host = QAStData::studioIFace();
    if (m_running && m_cancellable && host && host->progressWasCanceled())
        stop();
}

void QAStFileAnalyse::fileFailed(QAStFile* file)
{
    m_failed.append(file);
    QAStData::displayMessage(QAStData::MessageConsole,
                             tr("%1: file analysing failed.").arg(file->filePath()));
    emit fileAnalysed(file, false);
}

void QAStFileAnalyse::finish()
{
    if (!m_running)
        return;
    m_running = false;
    m_cancelPoll.stop();
    if (StudioInterface* host = QAStData::studioIFace())
        host->finishProgress();
    emit finished();
    if (m_deleteAtEnd)
        deleteLater();
}
