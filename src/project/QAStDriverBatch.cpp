#include "QAStDriverBatch.h"

#include <QPointer>

QAStDriverBatch::QAStDriverBatch(const QString& script)
    : QAStData(script, QPixmap())
    , m_script(script)
    , m_prefix(script + QStringLiteral(": file "))
{
}

bool QAStDriverBatch::parseReport(const QString& line, int* index, bool* succeeded) const
{
    if (!line.startsWith(m_prefix))
        return false;
    const qsizetype space = line.indexOf(u' ', m_prefix.size());
    if (space < 0)
        return false;
    bool ok = false;
    const int number = QStringView(line).sliced(m_prefix.size(), space - m_prefix.size()).toInt(&ok);
    if (!ok || number < 1)
        return false;
    const QStringView rest = QStringView(line).sliced(space + 1);
    const bool done = rest.startsWith(QLatin1String("done: "));
    if (!done && !rest.startsWith(QLatin1String("failed: ")))
        return false;
    *index = number - 1;
    *succeeded = done;
    return true;
}

// The output comes as whole lines, each ended by "\n". Reports are told in
// their order with the text before them shown first; a receiver may stop
// the run or delete this object meanwhile.
void QAStDriverBatch::charReceived(const QString& text)
{
    const QPointer<QAStDriverBatch> self(this);
    QString shown;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf(u'\n', start);
        end = end < 0 ? text.size() : end + 1;
        const QString line = text.mid(start, end - start);
        start = end;
        int index = 0;
        bool succeeded = false;
        if (!parseReport(line.trimmed(), &index, &succeeded)) {
            shown += line;
            continue;
        }
        if (!shown.isEmpty())
            QAStData::charReceived(std::exchange(shown, QString()));
        emit fileReported(index, succeeded);
        if (!self)
            return;
    }
    if (!shown.isEmpty())
        QAStData::charReceived(shown);
}
