#include "QAStResultFollower.h"

#include "QAFileSurvey.h"
#include "QAStRecordReader.h"

QAStResultFollower::QAStResultFollower(QObject* parent) : QObject(parent)
{
}

QAStResultFollower::~QAStResultFollower() = default;

void QAStResultFollower::follow(const QString& file, int delay)
{
    follow(file, nullptr, delay);
}

void QAStResultFollower::follow(const QString& file, QAStRecordReader* reader, int delay)
{
    stop();
    m_file = file;
    m_reader = reader;
    startAgain();
    if (file.isEmpty()) {
        emit changed();
        return;
    }
    m_survey = std::make_unique<QAFileSurvey>(file, delay, true, nullptr, "result-follower");
    m_survey->setShrinkPolicy(QAFileSurvey::FromStart);
    m_survey->setDisappearPolicy(QAFileSurvey::FromStart);
    connect(m_survey.get(), &QAFileSurvey::fileShrink, this, &QAStResultFollower::startAgain);
    connect(m_survey.get(), &QAFileSurvey::fileDisappear, this, &QAStResultFollower::startAgain);
    connect(m_survey.get(), &QAFileSurvey::newLines, this, [this](const QByteArray& lines) {
        if (m_reader)
            m_reader->addLines(lines);
        m_changed = true;
        emit linesAdded(lines);
    });
    connect(m_survey.get(), &QAFileSurvey::surveyDone, this, [this] {
        if (m_changed) {
            m_changed = false;
            emit changed();
        }
    });
    m_changed = true; // the first tick tells the view even when the file is empty
    m_survey->survey();
    m_survey->start();
}

void QAStResultFollower::stop()
{
    if (m_survey) {
        m_survey->stop();
        m_survey.release()->deleteLater();
    }
    m_reader = nullptr;
}

void QAStResultFollower::poll()
{
    if (m_survey)
        m_survey->survey();
}

void QAStResultFollower::startAgain()
{
    if (m_reader) {
        m_reader->clear();
        m_reader->setFileName(m_file);
    }
    m_changed = true;
    emit reset();
}
