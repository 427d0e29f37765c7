#include "RecordingStudio.h"

#include "QAStData.h"

RecordingStudio::RecordingStudio(bool installNow)
{
    if (installNow)
        install();
}

RecordingStudio::~RecordingStudio()
{
    if (QAStData::studioIFace() == this)
        QAStData::initialize(nullptr);
}

void RecordingStudio::install()
{
    QAStData::initialize(this);
}

void RecordingStudio::answer(QMessageBox::StandardButton button)
{
    answer(StandardButton(button));
}

void RecordingStudio::answer(StandardButton button)
{
    m_buttons.append(button);
}

void RecordingStudio::answerText(const QString& text, bool ok)
{
    m_texts.append(TextAnswer{text, ok});
}

void RecordingStudio::answerPath(const QString& path)
{
    m_paths.append(QStringList{path});
}

void RecordingStudio::answerPaths(const QStringList& paths)
{
    m_paths.append(paths);
}

void RecordingStudio::cancelProgressAt(int value)
{
    m_cancelAt = value;
}

QStringList RecordingStudio::messages(int console) const
{
    return m_consoles[consoleIndex(console)];
}

QString RecordingStudio::consoleText(int console) const
{
    return messages(console).join(QString());
}

int RecordingStudio::clearCount(int console) const
{
    return m_clears[consoleIndex(console)];
}

QStringList RecordingStudio::requestTexts(Request::Kind kind) const
{
    QStringList texts;
    for (const Request& r : m_requests) {
        if (r.kind == kind)
            texts << r.text;
    }
    return texts;
}

void RecordingStudio::reset()
{
    m_buttons.clear();
    m_texts.clear();
    m_paths.clear();
    m_cancelAt = -1;
    for (int i = 0; i < 2; ++i) {
        m_consoles[i].clear();
        m_clears[i] = 0;
    }
    m_requests.clear();
    m_statusMessages.clear();
    m_editedFiles.clear();
    m_progressLabels.clear();
    m_progressCancelText.clear();
    m_progressMaximum = m_progressValue = 0;
    m_progressRunning = false;
}

void RecordingStudio::displayMessage(int console, const QString& text)
{
    m_consoles[consoleIndex(console)].append(text);
}

void RecordingStudio::clearMessage(int console)
{
    m_consoles[consoleIndex(console)].clear();
    ++m_clears[consoleIndex(console)];
}

void RecordingStudio::statusMessage(const QString& text)
{
    m_statusMessages.append(text);
}

void RecordingStudio::editFile(const QString& file, int line)
{
    m_editedFiles.append(file + QLatin1Char(':') + QString::number(line));
}

int RecordingStudio::getViewerIdByName(const QString& name) const
{
    return int(m_viewers.indexOf(name));
}

QString RecordingStudio::getViewerNameById(int id) const
{
    return m_viewers.value(id);
}

void RecordingStudio::record(Request::Kind kind, const QString& caption, const QString& text)
{
    m_requests.append(Request{kind, caption, text});
}

void RecordingStudio::warning(QWidget*, const QString& caption, const QString& text)
{
    record(Request::Warning, caption, text);
}

void RecordingStudio::information(QWidget*, const QString& caption, const QString& text)
{
    record(Request::Information, caption, text);
}

void RecordingStudio::critical(QWidget*, const QString& caption, const QString& text)
{
    record(Request::Critical, caption, text);
}

StudioInterface::StandardButton RecordingStudio::question(QWidget*, const QString& caption,
                                                         const QString& text, StandardButtons,
                                                         StandardButton defaultButton, Icon)
{
    const StandardButton chosen = m_buttons.isEmpty() ? defaultButton : m_buttons.takeFirst();
    record(Request::Question, caption, text);
    m_requests.last().answer = QMessageBox::StandardButton(chosen);
    return chosen;
}

QString RecordingStudio::getText(QWidget* parent, const QString& caption, const QString& label,
                                 const QString& text, bool* ok)
{
    record(Request::TextInput, caption, label);
    if (m_texts.isEmpty())
        return StudioInterface::getText(parent, caption, label, text, ok);
    const TextAnswer a = m_texts.takeFirst();
    if (ok)
        *ok = a.ok;
    return a.text;
}

QString RecordingStudio::nextPath()
{
    return m_paths.isEmpty() ? QString() : m_paths.takeFirst().value(0);
}

QString RecordingStudio::getOpenFileName(QWidget*, const QString& caption, const QString& dir,
                                         const QString&)
{
    record(Request::OpenFile, caption, dir);
    return nextPath();
}

QStringList RecordingStudio::getOpenFileNames(QWidget*, const QString& caption,
                                              const QString& dir, const QString&)
{
    record(Request::OpenFiles, caption, dir);
    return m_paths.isEmpty() ? QStringList() : m_paths.takeFirst();
}

QString RecordingStudio::getSaveFileName(QWidget*, const QString& caption, const QString& dir,
                                         const QString&)
{
    record(Request::SaveFile, caption, dir);
    return nextPath();
}

QString RecordingStudio::getExistingDirectory(QWidget*, const QString& caption,
                                              const QString& dir)
{
    record(Request::Directory, caption, dir);
    return nextPath();
}

void RecordingStudio::startProgress(const QString& label, const QString& cancelText, int maximum)
{
    m_progressLabels.append(label);
    m_progressCancelText = cancelText;
    m_progressMaximum = maximum;
    m_progressValue = 0;
    m_progressRunning = true;
}

void RecordingStudio::setProgressValue(int value)
{
    m_progressValue = value;
}

void RecordingStudio::setProgressLabel(const QString& label)
{
    m_progressLabels.append(label);
}

bool RecordingStudio::progressWasCanceled() const
{
    return m_cancelAt >= 0 && m_progressValue >= m_cancelAt;
}

void RecordingStudio::finishProgress()
{
    m_progressRunning = false;
}
