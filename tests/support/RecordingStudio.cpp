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

QStringList RecordingStudio::requestTexts(Request::Kind kind) const
{
    QStringList texts;
    for (const Request& r : m.requests) {
        if (r.kind == kind)
            texts << r.text;
    }
    return texts;
}

void RecordingStudio::clearMessage(int console)
{
    m.consoles[consoleIndex(console)].clear();
    ++m.clears[consoleIndex(console)];
}

void RecordingStudio::editFile(const QString& file, int line)
{
    m.editedFiles.append(file + QLatin1Char(':') + QString::number(line));
}

StudioInterface::StandardButton RecordingStudio::question(QWidget*, const QString& caption,
                                                         const QString& text, StandardButtons,
                                                         StandardButton defaultButton, Icon)
{
    const StandardButton chosen = m.buttons.isEmpty() ? defaultButton : m.buttons.takeFirst();
    record(Request::Question, caption, text);
    m.requests.last().answer = QMessageBox::StandardButton(chosen);
    return chosen;
}

QString RecordingStudio::getText(QWidget* parent, const QString& caption, const QString& label,
                                 const QString& text, bool* ok)
{
    record(Request::TextInput, caption, label);
    if (m.texts.isEmpty())
        return StudioInterface::getText(parent, caption, label, text, ok);
    const TextAnswer a = m.texts.takeFirst();
    if (ok)
        *ok = a.ok;
    return a.text;
}

QStringList RecordingStudio::nextPath(Request::Kind kind, const QString& caption, const QString& dir)
{
    record(kind, caption, dir);
    return m.paths.isEmpty() ? QStringList() : m.paths.takeFirst();
}

void RecordingStudio::startProgress(const QString& label, const QString& cancelText, int maximum)
{
    m.progressLabels.append(label);
    m.progressCancelText = cancelText;
    m.progressMaximum = maximum;
    m.progressValue = 0;
    m.progressRunning = true;
}
