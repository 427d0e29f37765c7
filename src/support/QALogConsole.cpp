#include "QALogConsole.h"

#include <QTextStream>

QALogConsole::QALogConsole(QTextStream* logStream, QTextStream* errorStream)
    : m_log(logStream)
    , m_error(errorStream)
{
}

void QALogConsole::log(const QString& text)
{
    writeLine(m_log, text);
}

void QALogConsole::error(const QString& text)
{
    countError();
    writeLine(m_error, text);
}

void QALogConsole::writeLine(QTextStream* stream, const QString& text)
{
    if (!stream)
        return;
    *stream << text;
    if (!text.endsWith(QLatin1Char('\n')))
        *stream << QLatin1Char('\n');
    stream->flush();
}
