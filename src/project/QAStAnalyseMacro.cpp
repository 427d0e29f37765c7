#include "QAStAnalyseMacro.h"

#include "QAHost.h"
#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStNode.h"
#include "QAStProject.h"
#include "QATr.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace {

const QString macroPrompt = QStringLiteral("PROMPT");
const QString macroOpen = QStringLiteral("OPEN");
const QString macroEditor = QStringLiteral("EDITOR");

// The messages, "%1" the node's name (or the text analysed).
const char* const unknownMacro = QT_TRANSLATE_NOOP(QATR_PROJECT, "%1: Unknown macro %2");
const char* const unterminatedMacro =
    QT_TRANSLATE_NOOP(QATR_PROJECT, "%1: Unterminated macro %2");
const char* const tooDeep =
    QT_TRANSLATE_NOOP(QATR_PROJECT, "%1: Recursion deeper than %2 levels in macro %3");
const char* const tooMany =
    QT_TRANSLATE_NOOP(QATR_PROJECT, "%1: More than %2 macros to expand");
const char* const tooLong =
    QT_TRANSLATE_NOOP(QATR_PROJECT, "%1: Expansion longer than %2 characters");

// Names of settings, variables and macros are made of ASCII letters,
// digits and "_".
bool isWordChar(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= u'a' && u <= u'z') || (u >= u'A' && u <= u'Z') || (u >= u'0' && u <= u'9')
        || u == u'_';
}

// The end of the word that starts at from (from itself when there is none).
qsizetype wordEnd(const QString& text, qsizetype from)
{
    qsizetype end = from;
    while (end < text.size() && isWordChar(text.at(end)))
        ++end;
    return end;
}

// The first "$" or "@" at or after from; the text's size when none.
qsizetype nextSpecial(const QString& text, qsizetype from)
{
    qsizetype at = from;
    while (at < text.size() && text.at(at) != u'$' && text.at(at) != u'@')
        ++at;
    return at;
}

// "@@" directly followed by a word.
bool isMacroStart(const QString& text, qsizetype at)
{
    return at + 2 < text.size() && text.at(at + 1) == u'@' && isWordChar(text.at(at + 2));
}

// A setting value as text: a Boolean as 1 or 0, a list joined by blanks, a
// map as key=value entries joined by blanks, anything else as QVariant
// converts it.
QString settingText(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::QStringList:
        return value.toStringList().join(u' ');
    case QMetaType::QVariantMap: {
        QStringList entries;
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            entries << it.key() + u'=' + it.value().toString();
        return entries.join(u' ');
    }
    default:
        return value.toString();
    }
}

// The argument list between the parentheses of a macro: split at its first
// comma outside nested parentheses, so that only the last argument may hold
// commas. raw comes from between matching parentheses, so those inside it
// are balanced.
QStringList splitArguments(const QString& raw)
{
    int level = 0;
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const QChar c = raw.at(i);
        if (c == u'(')
            ++level;
        else if (c == u')')
            --level;
        else if (c == u',' && level == 0)
            return {raw.left(i).trimmed(), raw.mid(i + 1).trimmed()};
    }
    return {raw.trimmed()};
}

// The editor command of the user's environment: $VISUAL, else $EDITOR.
QString editorCommand()
{
    const QString visual = qEnvironmentVariable("VISUAL");
    return visual.isEmpty() ? qEnvironmentVariable("EDITOR") : visual;
}

// The environment variable name; for the installation's own variables,
// when the environment lacks them, the installation the library runs on,
// so that ${ZELTAHOME}/targets/... works wherever the installation was
// found.
QString environmentValue(const QString& name)
{
    const QString value = qEnvironmentVariable(name.toLatin1().constData());
    if (value.isEmpty() && (name == QLatin1String("ZELTAHOME") || name == QLatin1String("KORVILDIR")))
        return QAStData::installDir();
    return value;
}

// A text being expanded. The ")" matching each "(" is found in one pass on
// first need, so that many unterminated macros cost no rescans.
class Source {
public:
    explicit Source(const QString& text) : m_text(text) {}

    const QString& text() const { return m_text; }

    // The index of the ")" that closes the "(" at open; -1 when none does.
    qsizetype closing(qsizetype open)
    {
        if (!m_closing)
            m_closing = matchParentheses();
        return m_closing->value(open, -1);
    }

private:
    QHash<qsizetype, qsizetype> matchParentheses() const
    {
        QHash<qsizetype, qsizetype> pairs;
        QList<qsizetype> open;
        for (qsizetype i = 0; i < m_text.size(); ++i) {
            if (m_text.at(i) == u'(')
                open.append(i);
            else if (m_text.at(i) == u')' && !open.isEmpty())
                pairs.insert(open.takeLast(), i);
        }
        return pairs;
    }

    const QString& m_text;
    std::optional<QHash<qsizetype, qsizetype>> m_closing;
};

// One call of analyse: its context, its limits and the faults it met.
class Expander {
public:
    Expander(QAStNode* node, const QString& promptTitle, const QString& subject)
        : m_node(node),
          m_configuration(node ? node->currentConfiguration() : nullptr),
          m_promptTitle(promptTitle),
          m_subject(subject)
    {
    }

    // Appends the expansion of text, met at depth, to out. False once a
    // limit stopped the whole expansion.
    bool expand(const QString& text, int depth, QString& out)
    {
        Source source(text);
        qsizetype at = 0;
        while (at < text.size() && !m_stopped) {
            const qsizetype special = nextSpecial(text, at);
            out.append(QStringView(text).mid(at, special - at));
            if (special == text.size())
                break;
            at = text.at(special) == u'$' ? expandDollar(source, special, depth, out)
                                          : expandAt(source, special, depth, out);
            checkLength(out);
        }
        return !m_stopped;
    }

private:
    // "${NAME}" or "$${"; any other "$" stays.
    qsizetype expandDollar(Source& source, qsizetype at, int depth, QString& out)
    {
        const QString& text = source.text();
        if (QStringView(text).mid(at).startsWith(u"$${")) {
            out.append(u"${");
            return at + 3;
        }
        if (at + 1 < text.size() && text.at(at + 1) == u'{') {
            const qsizetype end = wordEnd(text, at + 2);
            if (end > at + 2 && end < text.size() && text.at(end) == u'}') {
                expandReference(text.mid(at + 2, end - at - 2), depth, out);
                return end + 1;
            }
        }
        out.append(u'$');
        return at + 1;
    }

    // "@@WORD", with its argument list for the macros that take one; any
    // other "@" stays.
    qsizetype expandAt(Source& source, qsizetype at, int depth, QString& out)
    {
        const QString& text = source.text();
        if (!isMacroStart(text, at)) {
            out.append(u'@');
            return at + 1;
        }
        const qsizetype end = wordEnd(text, at + 2);
        const QString word = text.mid(at + 2, end - at - 2);
        if (!spend())
            return end;
        if (word == macroEditor) {
            out.append(editorCommand());
            return end;
        }
        if (word == macroPrompt || word == macroOpen)
            return expandCall(source, word, end, depth, out);
        report(unknownMacro, macroText(word));
        out.append(macroText(word));
        return end;
    }

    // A macro with an optional argument list starting at after; returns
    // where the text goes on.
    qsizetype expandCall(Source& source, const QString& word, qsizetype after, int depth,
                         QString& out)
    {
        const QString& text = source.text();
        QStringList arguments;
        qsizetype next = after;
        if (after < text.size() && text.at(after) == u'(') {
            const qsizetype close = source.closing(after);
            if (close < 0) {
                report(unterminatedMacro, macroText(word));
                out.append(macroText(word));
                return after;
            }
            next = close + 1;
            if (!deeper(depth, macroText(word)))
                return next;
            arguments = expandArguments(text.mid(after + 1, close - after - 1), depth + 1);
        }
        if (!m_stopped)
            out.append(word == macroPrompt ? prompt(arguments.value(0), arguments.value(1))
                                           : openFile(arguments.value(0), arguments.value(1)));
        return next;
    }

    // Each argument expanded on its own, so a value it takes in cannot
    // change where the arguments split.
    QStringList expandArguments(const QString& raw, int depth)
    {
        QStringList expanded;
        for (const QString& argument : splitArguments(raw)) {
            QString value;
            expand(argument, depth, value);
            expanded << value;
        }
        return expanded;
    }

    // The node's setting, whose value may hold macros of its own, else the
    // environment variable taken as it is, else nothing.
    void expandReference(const QString& name, int depth, QString& out)
    {
        if (!spend())
            return;
        const QVariant setting = m_configuration ? m_configuration->property(name) : QVariant();
        if (!setting.isValid()) {
            out.append(environmentValue(name));
            return;
        }
        if (deeper(depth, QStringLiteral("${") + name + u'}'))
            expand(settingText(setting), depth + 1, out);
    }

    // The host to ask; none in batch mode.
    static StudioInterface* askingHost()
    {
        return QAStProject::modeBatch() ? nullptr : QAStData::studioIFace();
    }

    // Asks the host for a text; in batch mode, without a host, or when the
    // user cancels, the default.
    QString prompt(const QString& question, const QString& defaultText) const
    {
        StudioInterface* host = askingHost();
        if (!host)
            return defaultText;
        bool ok = false;
        const QString answer =
            host->getText(QAHost::boxParent(), m_promptTitle, question, defaultText, &ok);
        return ok ? answer : defaultText;
    }

    // Asks the host's file chooser, starting in the node's directory;
    // nothing in batch mode or without a host.
    QString openFile(const QString& caption, const QString& filter) const
    {
        StudioInterface* host = askingHost();
        if (!host)
            return QString();
        return host->getOpenFileName(QAHost::boxParent(),
                                     caption.isEmpty() ? m_promptTitle : caption,
                                     m_node ? m_node->directory() : QString(), filter);
    }

    static QString macroText(const QString& word) { return QStringLiteral("@@") + word; }

    // Whether the expansion may go one level below depth; stops it when not.
    bool deeper(int depth, const QString& macro)
    {
        if (depth < QAStAnalyseMacro::maxDepth)
            return true;
        stop(QATr::project(tooDeep).arg(m_subject, QString::number(QAStAnalyseMacro::maxDepth),
                                     macro));
        return false;
    }

    // Counts one expansion; stops the whole expansion beyond the budget.
    bool spend()
    {
        if (++m_expansions <= QAStAnalyseMacro::maxExpansions)
            return true;
        stop(QATr::project(tooMany).arg(m_subject,
                                     QString::number(QAStAnalyseMacro::maxExpansions)));
        return false;
    }

    void checkLength(const QString& out)
    {
        if (out.size() > QAStAnalyseMacro::maxLength)
            stop(QATr::project(tooLong).arg(m_subject,
                                         QString::number(QAStAnalyseMacro::maxLength)));
    }

    void stop(const QString& message)
    {
        if (m_stopped)
            return;
        m_stopped = true;
        QAStData::displayMessage(QAStData::MessageConsole, message);
    }

    // A fault of a macro, "%1" the subject and "%2" the macro; each fault
    // once per call, since a setting referred to many times repeats its
    // faults (and the subject may be a long text).
    void report(const char* text, const QString& macro)
    {
        const QString fault = QLatin1String(text) + macro;
        if (m_reported.contains(fault))
            return;
        m_reported.insert(fault);
        QAStData::displayMessage(QAStData::MessageConsole, QATr::project(text).arg(m_subject, macro));
    }

    QAStNode* m_node;
    QAStConfiguration* m_configuration;
    QString m_promptTitle;
    QString m_subject;
    int m_expansions = 0;
    bool m_stopped = false;
    QSet<QString> m_reported; // faults reported, as text and macro
};

}

QString QAStAnalyseMacro::analyse(const QString& text, QAStNode* node, const QString& promptTitle)
{
    // Most values hold neither a reference nor a macro.
    if (!text.contains(QLatin1String("${")) && !text.contains(QLatin1String("@@")))
        return text;
    Expander expander(node, promptTitle, node ? node->name() : text);
    QString expanded;
    return expander.expand(text, 0, expanded) ? expanded : text;
}
