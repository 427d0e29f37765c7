#include "QAXML.h"

#include "QATr.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QIODevice>
#include <QTextStream>

#include <algorithm>
#include <cstring>

namespace {

// Characters an XML 1.0 document cannot hold, not even as a character
// reference: the C0 controls but tab, line feed and carriage return,
// U+FFFE, U+FFFF, and halves of surrogate pairs that stand alone.
bool isUnrepresentable(const QString& s, qsizetype i)
{
    const char16_t c = s.at(i).unicode();
    if (c < 0x20)
        return c != '\t' && c != '\n' && c != '\r';
    if (c == 0xFFFE || c == 0xFFFF)
        return true;
    if (QChar::isHighSurrogate(c))
        return i + 1 >= s.size() || !s.at(i + 1).isLowSurrogate();
    if (QChar::isLowSurrogate(c))
        return i == 0 || !s.at(i - 1).isHighSurrogate();
    return false;
}

bool isHexDigit(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
           || (c >= QLatin1Char('a') && c <= QLatin1Char('f'))
           || (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
}

bool isXmlSpace(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n')
           || c == QLatin1Char('\r');
}

bool isBlank(const QString& s)
{
    return !s.isEmpty() && std::all_of(s.cbegin(), s.cend(), isXmlSpace);
}

void appendCodeEscape(QString& out, char16_t c)
{
    out += QLatin1String("#x") + QString::number(c, 16).toUpper() + QLatin1Char('#');
}

constexpr QLatin1String commaEscape("#comma#");
constexpr int maxHexDigits = 4;

// The length of the escape that starts at i ("#comma#" or "#x" with one to
// four hexadecimal digits and "#"), 0 when none does; code receives the
// character of a "#x" escape.
qsizetype escapeAt(QStringView s, qsizetype i, char16_t* code = nullptr)
{
    if (s.mid(i).startsWith(commaEscape)) {
        if (code)
            *code = ',';
        return commaEscape.size();
    }
    if (i + 3 >= s.size() || s.at(i + 1) != QLatin1Char('x'))
        return 0;
    qsizetype end = i + 2;
    while (end < s.size() && end - i - 2 < maxHexDigits && isHexDigit(s.at(end)))
        ++end;
    if (end == i + 2 || end >= s.size() || s.at(end) != QLatin1Char('#'))
        return 0;
    if (code)
        *code = char16_t(s.mid(i + 2, end - i - 2).toUInt(nullptr, 16));
    return end - i + 1;
}

}

namespace {

// The text in the value encoding; a map's key also escapes "=", which ends
// it.
QString encodeText(const QString& s, bool mapKey)
{
    const bool blank = isBlank(s);
    QString out;
    out.reserve(s.size() + 8);
    // Where a "#" of the text went: one that starts what would read as an
    // escape is escaped itself once the rest is written.
    QList<qsizetype> hashes;
    for (qsizetype i = 0; i < s.size(); ++i) {
        const QChar c = s.at(i);
        // A text of blanks only would be dropped by the parser as spacing
        // between elements: its first character is escaped.
        if ((blank && i == 0) || isUnrepresentable(s, i) || (mapKey && c == QLatin1Char('='))) {
            appendCodeEscape(out, c.unicode());
            continue;
        }
        switch (c.unicode()) {
        case '&': out += QLatin1String("&amp;"); break;
        case '<': out += QLatin1String("&lt;"); break;
        case '>': out += QLatin1String("&gt;"); break;
        case ',': out += commaEscape; break;
        // A parser turns a carriage return of the text into a line feed,
        // but keeps one given by reference.
        case '\r': out += QLatin1String("&#13;"); break;
        case '#':
            hashes.append(out.size());
            out += c;
            break;
        default: out += c;
        }
    }
    // Right to left, so that each test sees the final text after it.
    for (auto it = hashes.crbegin(); it != hashes.crend(); ++it) {
        if (escapeAt(out, *it))
            out.replace(*it, 1, QLatin1String("#x23#"));
    }
    return out;
}

}

QString QAXML::stringToXMLValue(const QString& s)
{
    return encodeText(s, false);
}

QString QAXML::attributeToXMLValue(const QString& s)
{
    // A parser turns tabs and line feeds of an attribute into blanks.
    QString out = stringToXMLValue(s);
    out.replace(QLatin1Char('"'), QLatin1String("&quot;"));
    out.replace(QLatin1Char('\t'), QLatin1String("&#9;"));
    out.replace(QLatin1Char('\n'), QLatin1String("&#10;"));
    return out;
}

QString QAXML::parsedTextToXMLValue(const QString& parsedText)
{
    QString out;
    out.reserve(parsedText.size());
    for (const QChar c : parsedText) {
        switch (c.unicode()) {
        case '&': out += QLatin1String("&amp;"); break;
        case '<': out += QLatin1String("&lt;"); break;
        case '>': out += QLatin1String("&gt;"); break;
        case '\r': out += QLatin1String("&#13;"); break;
        default: out += c;
        }
    }
    return out;
}

QString QAXML::commaToString(const QString& parsedText)
{
    if (!parsedText.contains(QLatin1Char('#')))
        return parsedText;
    QString out;
    out.reserve(parsedText.size());
    for (qsizetype i = 0; i < parsedText.size();) {
        char16_t code = 0;
        const qsizetype length =
            parsedText.at(i) == QLatin1Char('#') ? escapeAt(parsedText, i, &code) : 0;
        if (length) {
            out += QChar(code);
            i += length;
        } else {
            out += parsedText.at(i++);
        }
    }
    return out;
}

namespace {

// The character of the entity or character reference at i (of length
// *length), for the entities the encoding writes and numeric references;
// 0 length when none starts there.
QChar entityAt(QStringView s, qsizetype i, qsizetype* length)
{
    static const std::pair<QLatin1String, char16_t> named[] = {
        {QLatin1String("&amp;"), '&'},   {QLatin1String("&lt;"), '<'},
        {QLatin1String("&gt;"), '>'},    {QLatin1String("&quot;"), '"'},
        {QLatin1String("&apos;"), '\''},
    };
    const QStringView rest = s.mid(i);
    for (const auto& [text, c] : named) {
        if (rest.startsWith(text)) {
            *length = text.size();
            return QChar(c);
        }
    }
    *length = 0;
    if (!rest.startsWith(QLatin1String("&#")))
        return QChar();
    const qsizetype end = rest.indexOf(QLatin1Char(';'));
    if (end < 3 || end > 10)
        return QChar();
    const bool hex = rest.at(2) == QLatin1Char('x');
    bool ok = false;
    const uint code = rest.mid(hex ? 3 : 2, end - (hex ? 3 : 2)).toUInt(&ok, hex ? 16 : 10);
    if (!ok || code > 0xFFFF)
        return QChar();
    *length = end + 1;
    return QChar(char16_t(code));
}

}

QString QAXML::xmlValueToString(const QString& s)
{
    if (!s.contains(QLatin1Char('&')))
        return commaToString(s);
    // Entities first, as a parser resolves them before the text is decoded.
    QString parsed;
    parsed.reserve(s.size());
    for (qsizetype i = 0; i < s.size();) {
        qsizetype length = 0;
        const QChar c = s.at(i) == QLatin1Char('&') ? entityAt(s, i, &length) : QChar();
        if (length) {
            parsed += c;
            i += length;
        } else {
            parsed += s.at(i++);
        }
    }
    return commaToString(parsed);
}

namespace {

using Decoder = QString (*)(const QString&);

QStringList splitList(const QString& s, Decoder decode)
{
    QStringList l;
    if (s.isEmpty())
        return l;
    const QStringList pieces = s.split(QLatin1Char(','));
    l.reserve(pieces.size());
    for (const QString& p : pieces)
        l << decode(p);
    return l;
}

QMap<QString, QString> splitMap(const QString& s, Decoder decode)
{
    QMap<QString, QString> m;
    if (s.isEmpty())
        return m;
    for (const QString& pair : s.split(QLatin1Char(','))) {
        const int eq = pair.indexOf(QLatin1Char('='));
        if (eq < 0)
            m.insert(decode(pair), QString());
        else
            m.insert(decode(pair.left(eq)), decode(pair.mid(eq + 1)));
    }
    return m;
}

}

QString QAXML::stringListToXMLValue(const QStringList& l)
{
    QStringList encoded;
    encoded.reserve(l.size());
    for (const QString& s : l)
        encoded << stringToXMLValue(s);
    return encoded.join(QLatin1Char(','));
}

QStringList QAXML::xmlValueToStringList(const QString& s)
{
    return splitList(s, &QAXML::xmlValueToString);
}

QStringList QAXML::commaToStringList(const QString& parsedText)
{
    return splitList(parsedText, &QAXML::commaToString);
}

QString QAXML::stringMapToXMLValue(const QMap<QString, QString>& m)
{
    QStringList pairs;
    for (auto it = m.cbegin(); it != m.cend(); ++it)
        pairs << encodeText(it.key(), true) + QLatin1Char('=') + stringToXMLValue(it.value());
    return pairs.join(QLatin1Char(','));
}

QMap<QString, QString> QAXML::xmlValueToStringMap(const QString& s)
{
    return splitMap(s, &QAXML::xmlValueToString);
}

QMap<QString, QString> QAXML::commaToStringMap(const QString& parsedText)
{
    return splitMap(parsedText, &QAXML::commaToString);
}

QString QAXML::domText(const QDomElement& e)
{
    const QDomNode first = e.firstChild();
    if (first.isNull())
        return QString();
    if (first.nextSibling().isNull() && first.isText())
        return first.nodeValue();
    return e.text();
}

QString QAXML::domValue(const QDomElement& e)
{
    return commaToString(domText(e));
}

QStringList QAXML::domValueList(const QDomElement& e)
{
    return commaToStringList(domText(e));
}

QMap<QString, QString> QAXML::domValueMap(const QDomElement& e)
{
    return commaToStringMap(domText(e));
}

QString QAXML::boolToXMLValue(bool b)
{
    return b ? QStringLiteral("true") : QStringLiteral("false");
}

QString QAXML::fromInt(int i)
{
    return QString::number(i);
}

QString QAXML::fromUInt(uint u)
{
    return QString::number(u);
}

int QAXML::toInt(const QString& s, bool* ok)
{
    return s.trimmed().toInt(ok);
}

uint QAXML::toUInt(const QString& s, bool* ok)
{
    return s.trimmed().toUInt(ok);
}

bool QAXML::toBool(const QString& s, bool* ok)
{
    const QString t = s.trimmed();
    const bool isTrue = t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
    const bool isFalse = t.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0;
    if (ok)
        *ok = isTrue || isFalse;
    return isTrue;
}

void QAXML::indent(QTextStream& s, int depth)
{
    for (int i = 0; i < depth; ++i)
        s << "  ";
}

void QAXML::toStream(QTextStream& s, const char* tag, const QString& value, int depth)
{
    indent(s, depth);
    s << '<' << tag << '>' << value << "</" << tag << ">\n";
}

namespace {

// The offset of the first start tag that opens a level deeper than
// maxDepth, or -1. A linear walk over the bytes that knows just enough of
// XML to count levels: comments, CDATA sections, processing instructions
// and declarations (a document type's internal subset included) are
// skipped, quoted attribute values may hold '>' and '/'. What it cannot
// make sense of it leaves to the parser, which reports malformed text.
qsizetype tooDeep(const QByteArray& text, int maxDepth, qsizetype* tagEnd)
{
    const char* const begin = text.constData();
    const char* const end = begin + text.size();
    const auto find = [end](const char* from, const char* what) -> const char* {
        const qsizetype n = qsizetype(qstrlen(what));
        for (const char* p = from; end - p >= n; ++p) {
            p = static_cast<const char*>(std::memchr(p, what[0], size_t(end - p)));
            if (!p || end - p < n)
                return nullptr;
            if (std::memcmp(p, what, size_t(n)) == 0)
                return p;
        }
        return nullptr;
    };
    const auto startsWith = [end](const char* p, const char* what) {
        const qsizetype n = qsizetype(qstrlen(what));
        return end - p >= n && std::memcmp(p, what, size_t(n)) == 0;
    };
    int depth = 0;
    for (const char* p = begin; p < end;) {
        p = static_cast<const char*>(std::memchr(p, '<', size_t(end - p)));
        if (!p)
            return -1;
        const char* close = nullptr;
        if (startsWith(p, "<!--")) {
            close = find(p + 4, "-->");
        } else if (startsWith(p, "<![CDATA[")) {
            close = find(p + 9, "]]>");
        } else if (startsWith(p, "<?")) {
            close = find(p + 2, "?>");
        } else if (startsWith(p, "<!")) {
            // A declaration; a document type's internal subset ends at "]".
            const char* q = p + 2;
            while (q < end && *q != '>' && *q != '[')
                ++q;
            if (q < end && *q == '[')
                q = find(q, "]");
            close = q ? static_cast<const char*>(std::memchr(q, '>', size_t(end - q))) : nullptr;
        } else {
            const bool endTag = startsWith(p, "</");
            const char* q = p + 1;
            while (q < end && *q != '>') {
                if (*q == '"' || *q == '\'') {
                    const void* quote = std::memchr(q + 1, *q, size_t(end - q - 1));
                    if (!quote)
                        return -1;
                    q = static_cast<const char*>(quote);
                }
                ++q;
            }
            if (q >= end)
                return -1;
            if (endTag) {
                --depth;
            } else if (q[-1] != '/' && ++depth > maxDepth) {
                *tagEnd = q + 1 - begin;
                return p - begin;
            }
            close = q;
        }
        if (!close)
            return -1;
        p = close + 1;
    }
    return -1;
}

}

namespace {

// A first pass over the bytes, which takes linear time whatever the depth:
// true, with the place, when they nest deeper than maxDepth. A malformed
// text is left for the DOM parser to report.
bool refuseDeep(QDomDocument& document, const QByteArray& text, QString* message, int* line,
                int* column)
{
    qsizetype tagEnd = 0;
    if (tooDeep(text, QAXML::maxDepth, &tagEnd) >= 0) {
        if (message)
            *message = QATr::support("elements nested more than %1 deep").arg(QAXML::maxDepth);
        // Where a stream reader stands after the tag: the line, and the
        // characters of it read so far.
        const qsizetype lineStart = text.lastIndexOf('\n', tagEnd - 1) + 1;
        if (line)
            *line = int(text.left(lineStart).count('\n') + 1);
        if (column)
            *column = int(QString::fromUtf8(text.constData() + lineStart, tagEnd - lineStart).size());
        document.clear();
        return true;
    }
    return false;
}

}

bool QAXML::setContent(QDomDocument& document, const QByteArray& text, QString* message,
                       int* line, int* column)
{
    return !refuseDeep(document, text, message, line, column) &&
           document.setContent(text, message, line, column);
}

bool QAXML::setContent(QDomDocument& document, QIODevice* device, QString* message, int* line,
                       int* column)
{
    // A large file is checked through a map of its pages and then parsed
    // from the file, so that its text is never held on the heap beside the
    // document the parser builds; a small one is cheaper read.
    auto* file = qobject_cast<QFile*>(device);
    if (file && !file->isSequential() && file->pos() == 0 && file->size() > (1 << 20)) {
        if (uchar* map = file->map(0, file->size())) {
            const QByteArray text = QByteArray::fromRawData(reinterpret_cast<const char*>(map),
                                                            qsizetype(file->size()));
            const bool deep = refuseDeep(document, text, message, line, column);
            file->unmap(map);
            if (deep)
                return false;
            return document.setContent(device, message, line, column);
        }
    }
    return setContent(document, device->readAll(), message, line, column);
}
