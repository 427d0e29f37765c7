#include "CommandLineStudio.h"


#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

CommandLineStudio::CommandLineStudio() : m_terminal(::isatty(STDOUT_FILENO) == 1)
{
    // One line on the terminal, whatever the label's length.
    winsize size{};
    if (m_terminal && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1)
        m_width = size.ws_col - 1;
}

namespace {

// The lines of a message that carry text, the file of a box's text
// "FILE\n\nREASON" joined to its reason as in the tool's own "FILE: fault".
QStringList messageLines(const QString& text)
{
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
    }
    const auto blank = [](const QString& line) { return line.trimmed().isEmpty(); };
    if (lines.size() > 2 && !blank(lines.at(0)) && blank(lines.at(1)) && !blank(lines.at(2))) {
        lines[2] = lines.at(0) + QLatin1String(": ") + lines.at(2);
        lines.remove(0, 2);
    }
    lines.removeIf(blank);
    return lines;
}

bool endsSentence(const QString& text)
{
    return !text.isEmpty() && QStringLiteral(".?!:;,").contains(text.back());
}

} // namespace

QString CommandLineStudio::messageText(const QString& text)
{
    QString result;
    for (const QString& line : messageLines(text))
        result += (result.isEmpty() ? QLatin1String("korvil: ") : QLatin1String("  ")) + line + u'\n';
    return result;
}

QString CommandLineStudio::questionText(const QString& text, StandardButton answer)
{
    QString line;
    for (const QString& part : messageLines(text)) {
        if (!line.isEmpty())
            line += endsSentence(line) ? QLatin1String(" ") : QLatin1String(". ");
        line += part.trimmed();
    }
    return QStringLiteral("korvil: %1 %2 (batch mode)\n").arg(line, buttonName(answer));
}

void CommandLineStudio::writeOutput(const QString& text)
{
    if (text.isEmpty())
        return;
    clearProgress();
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
    m_outputLineOpen = !bytes.endsWith('\n');
    // The progress line stays below the output once its line is ended.
    drawProgress();
}

// A message starts a line of its own, also where both streams are one
// terminal.
void CommandLineStudio::writeMessage(const QString& lines)
{
    if (lines.isEmpty())
        return;
    clearProgress();
    endLine();
    const QByteArray bytes = lines.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
    drawProgress();
}

void CommandLineStudio::clearProgress()
{
    if (!m_progressShown)
        return;
    std::fputs("\r\033[K", stdout);
    std::fflush(stdout);
    m_progressShown = false;
}

void CommandLineStudio::endLine()
{
    if (!m_outputLineOpen)
        return;
    std::fputc('\n', stdout);
    std::fflush(stdout);
    m_outputLineOpen = false;
}

void CommandLineStudio::displayMessage(int console, const QString& text)
{
    if (console == 0) {
        writeOutput(text);
        return;
    }
    ++m_problems;
    writeMessage(messageText(text));
}

void CommandLineStudio::clearMessage(int console)
{
    Q_UNUSED(console);
}

void CommandLineStudio::statusMessage(const QString& text)
{
    Q_UNUSED(text);
}

// A box is a message like those of the message console: its caption is the
// title of a window.
void CommandLineStudio::warning(QWidget*, const QString&, const QString& text)
{
    ++m_problems;
    writeMessage(messageText(text));
}

void CommandLineStudio::information(QWidget*, const QString&, const QString& text)
{
    writeMessage(messageText(text));
}

void CommandLineStudio::critical(QWidget*, const QString&, const QString& text)
{
    ++m_problems;
    writeMessage(messageText(text));
}

StudioInterface::StandardButton CommandLineStudio::question(QWidget*, const QString&, const QString& text,
                                                        StandardButtons,
                                                        StandardButton defaultButton,
                                                        Icon)
{
    writeMessage(questionText(text, defaultButton));
    return defaultButton;
}

QString CommandLineStudio::getSaveFileName(QWidget*, const QString&, const QString&, const QString&)
{
    return std::exchange(m_savePath, QString());
}

void CommandLineStudio::startProgress(const QString& label, const QString& cancelText, int maximum)
{
    Q_UNUSED(cancelText);
    m_progressLabel = label;
    m_progressValue = 0;
    m_progressMaximum = maximum;
    m_progressActive = true;
    drawProgress();
}

void CommandLineStudio::setProgressValue(int value)
{
    m_progressValue = value;
    drawProgress();
}

void CommandLineStudio::setProgressLabel(const QString& label)
{
    m_progressLabel = label;
    drawProgress();
}

void CommandLineStudio::showProgress(int value, const QString& label)
{
    m_progressValue = value;
    m_progressLabel = label;
    drawProgress();
}

void CommandLineStudio::finishProgress()
{
    m_progressActive = false;
    clearProgress();
}

// Only when standard output is a terminal, and not in the middle of a
// line: a log file or a pipe gets no carriage returns.
void CommandLineStudio::drawProgress()
{
    if (!m_terminal || !m_progressActive || m_outputLineOpen)
        return;
    const QString line = m_progressMaximum > 0
                             ? QStringLiteral("[%1/%2] %3").arg(m_progressValue).arg(m_progressMaximum).arg(m_progressLabel)
                             : m_progressLabel;
    std::fprintf(stdout, "\r\033[K%s", qPrintable(line.left(m_width)));
    std::fflush(stdout);
    m_progressShown = true;
}
