#include "QAStAnalyseMsg.h"

#include "QAHost.h"
#include "QALogging.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtGlobal>

#include <array>

namespace {

// The forms in the order they are tried: the separator before the line
// number and the text after it, both regular expressions.
struct Form {
    const char* before;
    const char* after;
};
constexpr std::array<Form, 8> forms{{
    {",line ", ":"},
    {" at ", ":"},
    {":", ":"},
    {"\", line ", "\\."},
    {",?[ \\t]*line:?[ \\t]*", nullptr},
    {",", nullptr},
    {"\\(", "\\)"},
    {"/Line ", nullptr},
}};

// A form as one expression matched at the start of the file name: the
// shortest file name after which the separator, the number and the text
// after follow.
QRegularExpression formExpression(const char* before, const char* after)
{
    QString pattern = QStringLiteral("(.+?)(?:%1)([0-9]+)").arg(QString::fromUtf8(before));
    if (after && *after)
        pattern += QStringLiteral("(?:%1)").arg(QString::fromUtf8(after));
    return QRegularExpression(pattern);
}

const std::array<QRegularExpression, forms.size()>& formExpressions()
{
    static const auto expressions = [] {
        std::array<QRegularExpression, forms.size()> result;
        for (std::size_t i = 0; i < forms.size(); ++i)
            result[i] = formExpression(forms[i].before, forms[i].after);
        return result;
    }();
    return expressions;
}

// The text that every match of a line runs on: valid UTF-16, a lone
// surrogate replaced. It is checked here once, so the matches skip the
// check, which would go over the whole line at each of them (quadratic on
// a long line).
QString checkedText(const QString& line)
{
    if (line.isValidUtf16())
        return line;
    QString text = line;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

// text comes from checkedText.
QRegularExpressionMatch matchAt(const QRegularExpression& re, const QString& text, int from)
{
    return re.match(text, from, QRegularExpression::NormalMatch,
                    QRegularExpression::AnchorAtOffsetMatchOption
                        | QRegularExpression::DontCheckSubjectStringMatchOption);
}

// A line of gcc's source excerpt: "   12 |   code" or "      |   ^~~~".
const QRegularExpression& excerptLine()
{
    static const QRegularExpression re(QStringLiteral("^[ \\t]*[0-9]*[ \\t]+\\|(?:[ \\t]|$)"));
    return re;
}

// gcc's include chain: "In file included from a.h:3," then "   from b.c:2:".
const QRegularExpression& includePrefix()
{
    static const QRegularExpression re(QStringLiteral("(?:In file included from |from )"));
    return re;
}

// "tool: " of the tools whose messages may name a file after their own
// name: compiler drivers and passes, linkers, make, perl; with a directory
// ("/usr/bin/ld: "), a target prefix ("x86_64-linux-gnu-gcc: "), a version
// ("gcc-12: ") or make's level ("make[1]: "). make's "*** [" before the
// makefile of a failed rule goes with them.
const QRegularExpression& toolPrefix()
{
    static const QRegularExpression re(QStringLiteral(
        "(?:(?:[^\\s:]*/)?(?:[A-Za-z0-9_.+]+-)*"
        "(?:make(?:\\[[0-9]+\\])?|ld|ld\\.bfd|ld\\.gold|gold|lld|gcc|g\\+\\+|cc|c\\+\\+|cpp|cc1|cc1plus"
        "|collect2|as|ar|perl)(?:-[0-9][0-9.]*)?: |\\*\\*\\* \\[?)"));
    return re;
}

// A capitalised severity word that some tools and scripts put before the
// file: "Error: script.pts at 33: ...", "Warning: ", "Fatal: ". The blank
// after the colon keeps a file named so ("Error:12: ...").
const QRegularExpression& severityPrefix()
{
    static const QRegularExpression re(QStringLiteral("(?:Error|Warning|Fatal): "));
    return re;
}

// Perl ends its messages with " at FILE line N" and then ".", "," or the
// end of the line ("called at FILE line N" in a stack trace); this matches
// up to the last such " at ".
const QRegularExpression& perlAt()
{
    static const QRegularExpression re(
        QStringLiteral(".* at (?=\\S.*? line [0-9]+(?:[.,]|$))"));
    return re;
}

const QRegularExpression& fileColonLine()
{
    static const QRegularExpression re(QStringLiteral(":[0-9]+:"));
    return re;
}

const QRegularExpression& hashFallback()
{
    static const QRegularExpression re(QStringLiteral("(.+)#(.+)$"));
    return re;
}

int skipBlanks(const QString& text, int pos)
{
    while (pos < text.size() && (text.at(pos) == u' ' || text.at(pos) == u'\t'))
        ++pos;
    return pos;
}

struct Start {
    int pos = -1;
    bool includeChain = false; // the line is one of gcc's include chain
};

// line comes from checkedText.
Start findStart(const QString& line)
{
    Start start;
    if (excerptLine()
            .match(line, 0, QRegularExpression::NormalMatch,
                   QRegularExpression::DontCheckSubjectStringMatchOption)
            .hasMatch())
        return start;
    int pos = skipBlanks(line, 0);
    for (;;) {
        QRegularExpressionMatch m = matchAt(includePrefix(), line, pos);
        if (m.hasMatch()) {
            start.includeChain = true;
        } else {
            m = matchAt(toolPrefix(), line, pos);
            if (!m.hasMatch())
                m = matchAt(severityPrefix(), line, pos);
            if (!m.hasMatch())
                break;
        }
        pos = skipBlanks(line, int(m.capturedEnd()));
    }
    const QRegularExpressionMatch perl = matchAt(perlAt(), line, pos);
    if (perl.hasMatch() && !perl.captured().contains(fileColonLine()))
        pos = int(perl.capturedEnd());
    start.pos = pos;
    return start;
}

// The file name as found between the start and the separator, without
// enclosing blanks and double quotes ("x.c", line 7.) and without a final
// ':' (bash's "x.sh: line 3: ...").
QString cleanedFile(const QString& found)
{
    QString file = found.trimmed();
    while (file.endsWith(u':') || file.endsWith(u'"')) {
        file.chop(1);
        file = file.trimmed();
    }
    while (file.startsWith(u'"'))
        file.remove(0, 1);
    return file.trimmed();
}

QString withoutLineEnd(const QString& line)
{
    qsizetype end = line.size();
    while (end > 0 && (line.at(end - 1) == u'\n' || line.at(end - 1) == u'\r'))
        --end;
    return line.left(end);
}

} // namespace

void QAStAnalyseMsg::clear()
{
    m_file.clear();
    m_line = 0;
    m_form = -1;
}

bool QAStAnalyseMsg::analyze(const QString& line)
{
    clear();
    QString text = withoutLineEnd(checkedText(line));
    const Start start = findStart(text);
    if (start.pos < 0)
        return false;
    // "In file included from a.h:3," ends like the "b.c:2:" after it.
    if (start.includeChain && text.endsWith(u','))
        text[text.size() - 1] = u':';

    const auto& expressions = formExpressions();
    for (std::size_t i = 0; i < expressions.size(); ++i) {
        if (take(matchAt(expressions[i], text, start.pos))) {
            m_form = int(i) + 1;
            return true;
        }
    }
    if (take(matchAt(hashFallback(), text, start.pos))) {
        m_form = hashForm;
        return true;
    }
    return false;
}

bool QAStAnalyseMsg::analyzeLineNumber(const QString& line, int from, const char* before,
                                       const char* after)
{
    clear();
    if (!before || from < 0 || from >= line.size())
        return false;
    const QRegularExpression re = formExpression(before, after);
    if (!re.isValid()) {
        qCWarning(lcEngine, "QAStAnalyseMsg: invalid message form \"%s\": %s", before,
                 qPrintable(re.errorString()));
        return false;
    }
    return take(matchAt(re, checkedText(line), from));
}

bool QAStAnalyseMsg::take(const QRegularExpressionMatch& match)
{
    if (!match.hasMatch())
        return false;
    const QString file = cleanedFile(match.captured(1));
    if (file.isEmpty())
        return false;
    m_file = file;
    m_line = match.captured(2).trimmed().toInt();
    return true;
}

int QAStAnalyseMsg::fileNameStart(const QString& line)
{
    return findStart(checkedText(line)).pos;
}

QString QAStAnalyseMsg::resolvedFile(const QString& file, const QString& baseDirectory)
{
    if (QFileInfo(file).isAbsolute())
        return QDir::cleanPath(file);
    const QDir base(baseDirectory.isEmpty() ? QDir::currentPath() : baseDirectory);
    return QDir::cleanPath(base.absoluteFilePath(file));
}

bool QAStAnalyseMsg::editMessage(const QString& line, const QString& baseDirectory)
{
    QAStAnalyseMsg message;
    if (!QAHost::studioInterface() || !message.analyze(line))
        return false;
    const QString path = resolvedFile(message.fileName(), baseDirectory);
    if (!QFileInfo(path).isFile())
        return false;
    QAHost::editFile(path, message.lineNumber());
    return true;
}
