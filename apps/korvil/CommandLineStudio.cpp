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

void CommandLineStudio::write(FILE* stream, const QString& text)
{
    if (text.isEmpty())
        return;
    clearProgress();
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
    m_lineOpen[stream == stderr] = !bytes.endsWith('\n');
    // The progress line stays below the text once the text's line is ended.
    if (m_progressActive && !m_lineOpen[0] && !m_lineOpen[1])
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
    for (FILE* stream : {stdout, stderr}) {
        if (m_lineOpen[stream == stderr]) {
            std::fputc('\n', stream);
            m_lineOpen[stream == stderr] = false;
        }
    }
}

void CommandLineStudio::displayMessage(int console, const QString& text)
{
    if (console != 0)
        ++m_problems;
    write(console == 0 ? stdout : stderr, text);
}

void CommandLineStudio::clearMessage(int console)
{
    Q_UNUSED(console);
}

void CommandLineStudio::statusMessage(const QString& text)
{
    Q_UNUSED(text);
}

void CommandLineStudio::warning(QWidget*, const QString& caption, const QString& text)
{
    ++m_problems;
    write(stderr, QStringLiteral("warning: %1: %2\n").arg(caption, text));
}

void CommandLineStudio::information(QWidget*, const QString& caption, const QString& text)
{
    write(stderr, QStringLiteral("%1: %2\n").arg(caption, text));
}

void CommandLineStudio::critical(QWidget*, const QString& caption, const QString& text)
{
    ++m_problems;
    write(stderr, QStringLiteral("error: %1: %2\n").arg(caption, text));
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
    if (!m_terminal || !m_progressActive || m_lineOpen[0] || m_lineOpen[1])
        return;
    const QString line = m_progressMaximum > 0
                             ? QStringLiteral("[%1/%2] %3").arg(m_progressValue).arg(m_progressMaximum).arg(m_progressLabel)
                             : m_progressLabel;
    std::fprintf(stdout, "\r\033[K%s", qPrintable(line.left(m_width)));
    std::fflush(stdout);
    m_progressShown = true;
}
