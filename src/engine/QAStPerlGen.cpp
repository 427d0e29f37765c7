#include "QAStPerlGen.h"

#include "QAFileUtil.h"
#include "QAStAnalyseMacro.h"

namespace {

const QChar backslash = QLatin1Char('\\');
const QChar quote = QLatin1Char('\'');

// The value as the node's macros make it; as it is without a node.
QString expanded(const QString& value, QAStNode* node)
{
    return node ? QAStAnalyseMacro::analyse(value, node, QStringLiteral("Prompt Dialog")) : value;
}

// Every single quote preceded by a backslash.
QString escapeQuotes(const QString& text)
{
    QString escaped = text;
    return escaped.replace(quote, QStringLiteral("\\'"));
}

// Every run of backslashes that stands before a quote or at the end doubled,
// the other runs kept.
QString doubleClosingRuns(const QString& text)
{
    QString result;
    result.reserve(text.size() + 8);
    qsizetype i = 0;
    while (i < text.size()) {
        if (text.at(i) != backslash) {
            result += text.at(i++);
            continue;
        }
        const qsizetype start = i;
        while (i < text.size() && text.at(i) == backslash)
            ++i;
        const qsizetype run = i - start;
        const bool closing = i == text.size() || text.at(i) == quote;
        result += QString(closing ? 2 * run : run, backslash);
    }
    return result;
}

}

QString QAStPerlGen::safePath(const QString& value, QAStNode* node)
{
    if (value.isEmpty())
        return value;
    return escapeQuotes(QAFileUtil::perlDirPath(expanded(value, node)));
}

QString QAStPerlGen::safeStr(const QString& value, QAStNode* node)
{
    if (value.isEmpty())
        return value;
    return escapeQuotes(doubleClosingRuns(expanded(value, node)));
}
