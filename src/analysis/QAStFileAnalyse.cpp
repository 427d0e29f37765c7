#include "QAStFileAnalyse.h"

#include "QAStFile.h"
#include "StudioInterface.h"

#include <QCoreApplication>

#include <algorithm>

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
    connectBatch(false);
    if (batchPosition(QAStFile::fileInformationProcessed()) >= 0)
        QAStFile::stopFileInformationProcess();
    if (StudioInterface* host = QAStData::studioIFace())
        host->finishProgress();
}

void QAStFileAnalyse::setBatchSize(int files)
{
    m_batchSize = std::max(files, 1);
}

bool QAStFileAnalyse::start()
{
    if (m_running)
        return false;
    m_running = true;
    m_stopped = false;
    m_next = 0;
    m_alone = false;
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
    connectBatch(false);
    if (batchPosition(QAStFile::fileInformationProcessed()) >= 0)
        QAStFile::stopFileInformationProcess();
    m_batch.clear();
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

int QAStFileAnalyse::batchPosition(const QObject* file) const
{
    if (!file)
        return -1;
    for (int position : m_batch) {
        if (m_files.at(position) == file)
            return position;
    }
    return -1;
}

void QAStFileAnalyse::connectBatch(bool on)
{
    for (int position : std::as_const(m_batch)) {
        QAStFile* file = m_files.at(position);
        if (!file)
            continue;
        if (on) {
            connect(file, &QAStFile::taggingStarted, this, &QAStFileAnalyse::fileStarted);
            connect(file, &QAStFile::taggingTerminated, this, &QAStFileAnalyse::fileTerminated);
        } else {
            disconnect(file, nullptr, this, nullptr);
        }
    }
    if (on)
        connect(QAStFile::taggingNotifier(), &QAStFileTaggingNotifier::taggingRunTerminated, this,
                &QAStFileAnalyse::batchTerminated, Qt::UniqueConnection);
    else
        disconnect(QAStFile::taggingNotifier(), nullptr, this, nullptr);
}

// The next batch: up to batchSize source files from the first not given
// to a batch yet.
void QAStFileAnalyse::analyseNext()
{
    StudioInterface* host = QAStData::studioIFace();
    while (m_running && m_batch.isEmpty() && m_next < m_files.size()) {
        QList<QAStFile*> files;
        const int size = std::exchange(m_alone, false) ? 1 : m_batchSize;
        while (m_next < m_files.size() && files.size() < size) {
            QAStFile* file = m_files.at(m_next);
            if (file && file->isSourceFile()) {
                m_batch.append(m_next);
                files.append(file);
            } else if (host) {
                host->setProgressValue(m_next + 1);
            }
            ++m_next;
        }
        if (files.isEmpty())
            break;
        m_batchEnded = QList<bool>(m_batch.size(), false);
        connectBatch(true);
        if (QAStFile::taggingInformation(files, true))
            return;
        connectBatch(false);
        const QList<int> refused = std::exchange(m_batch, QList<int>());
        for (int position : refused) {
            fileFailed(m_files.at(position));
            if (host)
                host->setProgressValue(position + 1);
        }
    }
    if (m_batch.isEmpty())
        finish();
}

void QAStFileAnalyse::fileStarted()
{
    const int position = batchPosition(sender());
    StudioInterface* host = QAStData::studioIFace();
    if (position >= 0 && host)
        host->setProgressLabel(tr("Analysing File:%1").arg(m_files.at(position)->filePath()));
}

void QAStFileAnalyse::fileTerminated()
{
    const int position = batchPosition(sender());
    if (position < 0)
        return;
    QAStFile* file = m_files.at(position);
    if (file->lastTaggingInterrupted() && m_batch.size() > 1) {
        m_alone = true; // once more, alone (batchTerminated)
        return;
    }
    m_batchEnded[m_batch.indexOf(position)] = true;
    if (file->lastTaggingSucceeded()) {
        m_analysed.append(file);
        emit fileAnalysed(file, true);
    } else {
        fileFailed(file);
    }
    if (StudioInterface* host = QAStData::studioIFace())
        host->setProgressValue(position + 1);
    pollCancel();
}

// The driver run has ended: the files of the batch after the last one that
// ended go to the next batch (a file deleted meanwhile ends with no
// signal, and is passed over there).
void QAStFileAnalyse::batchTerminated()
{
    if (!m_running || m_batch.isEmpty())
        return;
    connectBatch(false);
    const int comeTo = int(m_batchEnded.lastIndexOf(true)) + 1;
    if (comeTo < m_batch.size())
        m_next = m_batch.at(comeTo);
    m_batch.clear();
    // The next batch from the event loop: a run that ends at once (its
    // interpreter missing) must not nest one batch's end in the other.
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
    if (!file)
        return;
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
