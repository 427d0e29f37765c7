#include "QATagFilterExpr.h"

#include <algorithm>

namespace {

// Characters with a meaning in a wildcard besides "*"; "/" and "\" because
// the conversion treats path separators apart.
const QString wildcardMeta = QStringLiteral("?[]\\/");
const QString regExpMeta = QStringLiteral("\\^$.|?*+()[]{}");

bool holdsAny(QStringView text, QStringView characters)
{
    for (QChar c : text) {
        if (characters.contains(c))
            return true;
    }
    return false;
}

bool holdsSeparator(QStringView text)
{
    for (QChar c : text) {
        if (c == u'/' || c == u'\\')
            return true;
    }
    return false;
}

QStringView fileNameOf(const QString& path)
{
    for (qsizetype i = path.size(); i > 0; --i) {
        const QChar c = path.at(i - 1);
        if (c == u'/' || c == u'\\')
            return QStringView(path).mid(i);
    }
    return QStringView(path);
}

// A qualifier number: decimal, or hexadecimal after "0x".
bool toQualifierNumber(const QString& text, unsigned* value)
{
    const QString t = text.trimmed();
    bool ok = false;
    const bool hex = t.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    *value = hex ? t.mid(2).toUInt(&ok, 16) : t.toUInt(&ok, 10);
    return ok;
}

QRegularExpression compiledRegex(const QString& pattern, Qt::CaseSensitivity cs)
{
    return QRegularExpression(pattern, cs == Qt::CaseSensitive
                                           ? QRegularExpression::NoPatternOption
                                           : QRegularExpression::CaseInsensitiveOption);
}

}

inline bool QATagFilterExpr::Pattern::matches(QStringView text) const
{
    switch (form) {
    case Never:
        return false;
    case Exact:
        return text.compare(literal, cs) == 0;
    case Prefix:
        if (!text.startsWith(literal, cs))
            return false;
        break;
    case Suffix:
        if (!text.endsWith(literal, cs))
            return false;
        break;
    case Contains:
        if (!text.contains(literal, cs))
            return false;
        break;
    case AnyText:
        break;
    case Regex:
        return regex.match(text).hasMatch();
    }
    // A wildcard's "*" stops at a path separator: only a text holding one
    // needs the regular expression.
    return !holdsSeparator(text) || regex.match(text).hasMatch();
}

QATagFilterExpr::QATagFilterExpr()
{
    compile();
}

QATagFilterExpr::QATagFilterExpr(quint32 type, const QString& text, bool caseSensitive)
    : QAFilterExpr(type, text, caseSensitive)
{
    compile();
}

QATagFilterExpr::QATagFilterExpr(const QATagFilterExpr& other) = default;

QATagFilterExpr::~QATagFilterExpr() = default;

inline bool QATagFilterExpr::holds(const QATagFilterSubject& tag, bool useWildcard) const
{
    const Compiled& c = useWildcard ? m_wildcard : m_regExp;
    switch (type()) {
    case Name:
        return c.pattern.matches(tag.name);
    case Kind:
        return c.pattern.matches(tag.kind);
    case File:
        return c.pattern.matches(c.wholePath ? QStringView(tag.file) : fileNameOf(tag.file));
    case Qualifier:
        return c.allBits ? (tag.qualifiers & c.mask) == c.mask : (tag.qualifiers & c.mask) != 0;
    }
    return false;
}

bool QATagFilterExpr::match(void* item, void*, bool useWildcard)
{
    return item && holds(*static_cast<const QATagFilterSubject*>(item), useWildcard);
}

bool QATagFilterExpr::matches(const QATagFilterSubject& tag, bool useWildcard) const
{
    return holds(tag, useWildcard);
}

QString QATagFilterExpr::typeKey(quint32 type)
{
    switch (type) {
    case Name: return QStringLiteral("name");
    case Kind: return QStringLiteral("kind");
    case File: return QStringLiteral("file");
    case Qualifier: return QStringLiteral("qualifier");
    }
    return QString::number(type);
}

quint32 QATagFilterExpr::typeFromKey(const QString& key, bool* ok)
{
    for (quint32 type = 0; type < quint32(typeCount); ++type) {
        if (typeKey(type) == key) {
            if (ok)
                *ok = true;
            return type;
        }
    }
    // A type outside the family, written as its number.
    const bool digits = !key.isEmpty()
        && std::all_of(key.begin(), key.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    bool number = false;
    const quint32 type = digits ? key.toUInt(&number) : 0;
    if (ok)
        *ok = number;
    return type;
}

const QList<QPair<QString, unsigned>>& QATagFilterExpr::qualifierWords()
{
    static const QList<QPair<QString, unsigned>> words = {
        {QStringLiteral("public"), 1u},   {QStringLiteral("protected"), 2u},
        {QStringLiteral("private"), 4u},  {QStringLiteral("pure virtual"), 32u},
        {QStringLiteral("abstract"), 32u}, {QStringLiteral("virtual"), 64u},
    };
    return words;
}

void QATagFilterExpr::exprChanged()
{
    compile();
}

void QATagFilterExpr::compile()
{
    m_wildcard = compiled(true);
    m_regExp = compiled(false);
}

QATagFilterExpr::Compiled QATagFilterExpr::compiled(bool wildcard) const
{
    const Qt::CaseSensitivity cs = caseSensitive() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    Compiled c;
    c.pattern = wildcard ? wildcardPattern(text(), cs) : regExpPattern(text(), cs);
    c.wholePath = type() == File && text().contains(u'/');
    if (type() == Qualifier) {
        c.allBits = toQualifierNumber(text(), &c.mask);
        if (!c.allBits) {
            for (const auto& word : qualifierWords()) {
                if (c.pattern.matches(word.first))
                    c.mask |= word.second;
            }
        }
    }
    return c;
}

QATagFilterExpr::Pattern QATagFilterExpr::wildcardPattern(const QString& text,
                                                          Qt::CaseSensitivity cs)
{
    Pattern p;
    p.cs = cs;
    p.regex = compiledRegex(QRegularExpression::wildcardToRegularExpression(text), cs);
    const qsizetype stars = text.count(u'*');
    const QString core = QString(text).remove(u'*');
    if (holdsAny(text, wildcardMeta)) {
        p.form = Pattern::Regex;
    } else if (stars == 0) {
        p.form = Pattern::Exact;
    } else if (core.isEmpty()) {
        p.form = Pattern::AnyText;
    } else if (stars == 1 && text.endsWith(u'*')) {
        p.form = Pattern::Prefix;
    } else if (stars == 1 && text.startsWith(u'*')) {
        p.form = Pattern::Suffix;
    } else if (stars == 2 && text.startsWith(u'*') && text.endsWith(u'*')) {
        p.form = Pattern::Contains;
    } else {
        p.form = Pattern::Regex;
    }
    if (p.form != Pattern::Regex)
        p.literal = core;
    // The regular expression decides the forms other than Exact whenever
    // the text holds a separator, so it is compiled now for them too.
    if (!p.regex.isValid())
        p.form = Pattern::Never;
    else if (p.form != Pattern::Exact)
        p.regex.optimize();
    return p;
}

QATagFilterExpr::Pattern QATagFilterExpr::regExpPattern(const QString& text,
                                                        Qt::CaseSensitivity cs)
{
    Pattern p;
    p.cs = cs;
    if (!holdsAny(text, regExpMeta)) {
        p.form = Pattern::Exact;
        p.literal = text;
        return p;
    }
    p.regex = compiledRegex(QRegularExpression::anchoredPattern(text), cs);
    if (p.regex.isValid()) {
        p.form = Pattern::Regex;
        p.regex.optimize();
    }
    return p;
}
