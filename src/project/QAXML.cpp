#include "QAXML.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QDomElement>
#include <QIODevice>
#include <QTextStream>
#include <QXmlStreamReader>

QString QAXML::stringToXMLValue(const QString& s)
{
    QString r = s;
    r.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    r.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    r.replace(QLatin1Char('>'), QLatin1String("&gt;"));
    r.replace(QLatin1Char(','), QLatin1String("#comma#"));
    return r;
}

QString QAXML::commaToString(const QString& parsedText)
{
    QString r = parsedText;
    r.replace(QLatin1String("#comma#"), QLatin1String(","));
    return r;
}

QString QAXML::xmlValueToString(const QString& s)
{
    QString r = commaToString(s);
    r.replace(QLatin1String("&gt;"), QLatin1String(">"));
    r.replace(QLatin1String("&lt;"), QLatin1String("<"));
    r.replace(QLatin1String("&amp;"), QLatin1String("&"));
    return r;
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
        pairs << stringToXMLValue(it.key()) + QLatin1Char('=') + stringToXMLValue(it.value());
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

QString QAXML::domValue(const QDomElement& e)
{
    return commaToString(e.text());
}

QStringList QAXML::domValueList(const QDomElement& e)
{
    return commaToStringList(e.text());
}

QMap<QString, QString> QAXML::domValueMap(const QDomElement& e)
{
    return commaToStringMap(e.text());
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

bool QAXML::setContent(QDomDocument& document, QIODevice* device, QString* message, int* line,
                       int* column)
{
    return setContent(document, device->readAll(), message, line, column);
}

bool QAXML::setContent(QDomDocument& document, const QByteArray& text, QString* message,
                       int* line, int* column)
{
    // A first pass with the stream reader, which takes linear time whatever
    // the depth; a malformed text is left for the DOM parser to report.
    QXmlStreamReader reader(text);
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement) {
            --depth;
        } else if (token == QXmlStreamReader::StartElement && ++depth > maxDepth) {
            if (message)
                *message = QCoreApplication::translate("QAXML", "elements nested more than %1 deep")
                               .arg(maxDepth);
            if (line)
                *line = int(reader.lineNumber());
            if (column)
                *column = int(reader.columnNumber());
            document.clear();
            return false;
        }
    }
    return document.setContent(text, message, line, column);
}
