#include "QAPerlValues.h"

#include <QTextStream>

#include <algorithm>

namespace {

const QChar backslash = QLatin1Char('\\');
const QChar quote = QLatin1Char('\'');

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7f;
}

bool needsEscape(QChar c)
{
    return c == backslash || c == quote || isControl(c);
}

const char hexDigits[] = "0123456789ABCDEF";

// A control character as a double-quoted Perl escape.
void appendControlEscape(QString& out, QChar c)
{
    switch (c.unicode()) {
    case '\t':
        out += QLatin1String("\\t");
        break;
    case '\n':
        out += QLatin1String("\\n");
        break;
    case '\r':
        out += QLatin1String("\\r");
        break;
    default:
        out += QLatin1String("\\x{");
        out += QLatin1Char(hexDigits[c.unicode() >> 4]);
        out += QLatin1Char(hexDigits[c.unicode() & 0xf]);
        out += QLatin1Char('}');
    }
}

} // namespace

QString QAPerlValues::quoted(const QString& text)
{
    if (std::none_of(text.cbegin(), text.cend(), needsEscape))
        return text;
    QString out;
    out.reserve(text.size() + 16);
    for (qsizetype i = 0; i < text.size();) {
        const QChar c = text.at(i);
        if (isControl(c)) {
            out += QLatin1String("'.\"");
            for (; i < text.size() && isControl(text.at(i)); ++i)
                appendControlEscape(out, text.at(i));
            out += QLatin1String("\".'");
            continue;
        }
        if (c == backslash || c == quote)
            out += backslash;
        out += c;
        ++i;
    }
    return out;
}

void QAPerlValues::writeText(QTextStream& out, const QString& var, const QString& text)
{
    out << '$' << var << "='" << quoted(text) << "';\n";
}

void QAPerlValues::writeNumber(QTextStream& out, const QString& var, qlonglong number)
{
    out << '$' << var << '=' << number << ";\n";
}

void QAPerlValues::writeList(QTextStream& out, const QString& var, const QStringList& items)
{
    out << '@' << var << "=(";
    for (qsizetype i = 0; i < items.size(); ++i)
        out << (i > 0 ? ", '" : "'") << quoted(items.at(i)) << '\'';
    out << ");\n";
}
