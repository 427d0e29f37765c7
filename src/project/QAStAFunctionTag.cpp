#include "QAStAFunctionTag.h"

#include "QAStMenus.h"

#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"

#include <QCoreApplication>
#include <QDomElement>
#include <QSet>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStAFunctionTag> functionRow("function");

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

// Words of a parameter that name a type, never a parameter.
bool isTypeWord(const QString& word)
{
    static const QSet<QString> words = {
        QStringLiteral("void"),     QStringLiteral("bool"),     QStringLiteral("char"),
        QStringLiteral("short"),    QStringLiteral("int"),      QStringLiteral("long"),
        QStringLiteral("float"),    QStringLiteral("double"),   QStringLiteral("signed"),
        QStringLiteral("unsigned"), QStringLiteral("const"),    QStringLiteral("volatile"),
        QStringLiteral("wchar_t"),  QStringLiteral("char16_t"), QStringLiteral("char32_t"),
        QStringLiteral("auto"),     QStringLiteral("byte"),     QStringLiteral("boolean"),
        QStringLiteral("final"),    QStringLiteral("struct"),   QStringLiteral("class"),
        QStringLiteral("enum"),     QStringLiteral("union")};
    return words.contains(word);
}

// The words and punctuation marks of a text.
QStringList tokens(const QString& text)
{
    QStringList found;
    for (qsizetype i = 0; i < text.size();) {
        const QChar c = text.at(i);
        if (c.isSpace()) {
            ++i;
        } else if (isWordChar(c)) {
            const qsizetype start = i;
            while (i < text.size() && isWordChar(text.at(i)))
                ++i;
            found.append(text.mid(start, i - start));
        } else if (c == QLatin1Char(':') && i + 1 < text.size() && text.at(i + 1) == c) {
            found.append(QStringLiteral("::"));
            i += 2;
        } else {
            found.append(QString(c));
            ++i;
        }
    }
    return found;
}

// Tokens joined with a blank only between two words.
QString joinTokens(const QStringList& list)
{
    QString text;
    for (const QString& t : list) {
        if (!text.isEmpty() && isWordChar(text.back()) && isWordChar(t.front()))
            text += QLatin1Char(' ');
        text += t;
    }
    return text;
}

// One parameter without its name and default value.
QString parameterType(const QString& parameter)
{
    QStringList list = tokens(parameter);
    const qsizetype assignment = list.indexOf(QStringLiteral("="));
    if (assignment >= 0)
        list = list.mid(0, assignment);
    // Array brackets follow the name: keep them apart.
    QStringList suffix;
    while (!list.isEmpty() && list.back() == QLatin1String("]")) {
        const qsizetype open = list.lastIndexOf(QStringLiteral("["));
        if (open < 0)
            break;
        suffix = list.mid(open) + suffix;
        list = list.mid(0, open);
    }
    // "Name : Type" (Ada) names its parameter first.
    const qsizetype colon = list.indexOf(QStringLiteral(":"));
    if (colon > 0)
        list = list.mid(colon + 1);
    else if (list.size() > 1 && isWordChar(list.back().front()) && !isTypeWord(list.back())
             && list.at(list.size() - 2) != QLatin1String("::"))
        list.removeLast();
    return joinTokens(list + suffix);
}

// The parameters of a list, split at the commas outside brackets and
// quotes.
QStringList splitParameters(const QString& list)
{
    QStringList parameters;
    int depth = 0;
    qsizetype start = 0;
    QChar quote;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QChar c = list.at(i);
        if (!quote.isNull()) {
            if (c == QLatin1Char('\\'))
                ++i;
            else if (c == quote)
                quote = QChar();
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\''))
            quote = c;
        else if (c == QLatin1Char('(') || c == QLatin1Char('<') || c == QLatin1Char('['))
            ++depth;
        else if (c == QLatin1Char(')') || c == QLatin1Char('>') || c == QLatin1Char(']'))
            --depth;
        else if ((c == QLatin1Char(',') || c == QLatin1Char(';')) && depth == 0) {
            parameters.append(list.mid(start, i - start));
            start = i + 1;
        }
    }
    parameters.append(list.mid(start));
    return parameters;
}
}

QAStAFunctionTag::QAStAFunctionTag(const QString& name, const QString& filePath, int line,
                                   QAStData* parent, QAStData* after)
    : QAStTestedTag(name, QPixmap(), filePath, line, parent, after)
{
    useIcon(QStringLiteral("function_xpm"));
}

QAStAFunctionTag::QAStAFunctionTag(const QDomElement& e, int version, QAStData* parent,
                                   QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

QAStAFunctionTag::QAStAFunctionTag(QAStData* parent, QAStData* after)
    : QAStTestedTag(parent, after)
{
}

QString QAStAFunctionTag::qualifiedName() const
{
    return scopedName();
}

QAStAPackageTag* QAStAFunctionTag::ofPackage() const
{
    for (QAStData* item = parent(); qobject_cast<QAStATag*>(item); item = item->parent()) {
        if (auto* package = qobject_cast<QAStAPackageTag*>(item))
            return package;
    }
    return nullptr;
}

bool QAStAFunctionTag::isDeclarationFile(const QString& path)
{
    return QAStFile::fileType(path) == QAStFile::HeaderFiles
        || path.endsWith(QLatin1String(".ads"), Qt::CaseInsensitive);
}

QString QAStAFunctionTag::normalizedSignature(const QString& signature)
{
    const QString text = signature.trimmed();
    const qsizetype open = text.indexOf(QLatin1Char('('));
    if (open < 0)
        return joinTokens(tokens(text));
    int depth = 0;
    qsizetype close = -1;
    for (qsizetype i = open; i < text.size() && close < 0; ++i) {
        if (text.at(i) == QLatin1Char('('))
            ++depth;
        else if (text.at(i) == QLatin1Char(')') && --depth == 0)
            close = i;
    }
    if (close < 0)
        return joinTokens(tokens(text));
    QStringList types;
    for (const QString& parameter : splitParameters(text.mid(open + 1, close - open - 1))) {
        const QString type = parameterType(parameter);
        if (!type.isEmpty())
            types.append(type);
    }
    if (types == QStringList{QStringLiteral("void")})
        types.clear();
    const QString trailing = joinTokens(tokens(text.mid(close + 1)));
    return QLatin1Char('(') + types.join(QLatin1Char(',')) + QLatin1Char(')') +
        (trailing.isEmpty() ? QString() : QLatin1Char(' ') + trailing);
}

QAStAFunctionTag* QAStAFunctionTag::counterpart(bool inDeclarationFile) const
{
    if (isDeclarationFile(filePath()) == inDeclarationFile)
        return const_cast<QAStAFunctionTag*>(this);
    const bool isMethod = qobject_cast<const QAStAMethodTag*>(this) != nullptr;
    const QString qualified = qualifiedName();
    const QString wanted = normalizedSignature(signature());
    QAStAFunctionTag* onlyNamesake = nullptr;
    int namesakes = 0;
    for (QAStATag* tag : treeTags()) {
        auto* f = qobject_cast<QAStAFunctionTag*>(tag);
        if (!f || f == this || (qobject_cast<QAStAMethodTag*>(f) != nullptr) != isMethod
            || f->name() != name() || f->qualifiedName() != qualified
            || isDeclarationFile(f->filePath()) != inDeclarationFile)
            continue;
        if (normalizedSignature(f->signature()) == wanted)
            return f;
        onlyNamesake = f;
        ++namesakes;
    }
    return namesakes == 1 ? onlyNamesake : nullptr;
}

QAStAFunctionTag* QAStAFunctionTag::declaration() const
{
    return counterpart(true);
}

QAStAFunctionTag* QAStAFunctionTag::implementation() const
{
    return counterpart(false);
}

void QAStAFunctionTag::editDeclaration()
{
    if (QAStAFunctionTag* tag = declaration())
        tag->edit();
}

void QAStAFunctionTag::editImplementation()
{
    if (QAStAFunctionTag* tag = implementation())
        tag->edit();
}

void QAStAFunctionTag::localActionMenuItems(QMenu* menu)
{
    QAStMenus::functionEntries(this, menu);
}

bool QAStAFunctionTag::isDirectlyTestable() const
{
    return QAStFile::fileType(filePath()) != QAStFile::AdaFiles;
}

bool QAStAFunctionTag::canBeTested() const
{
    return isDirectlyTestable();
}

QString QAStAFunctionTag::testedSourceFile() const
{
    const QAStAFunctionTag* body = implementation();
    return body ? body->filePath() : filePath();
}

QString QAStAFunctionTag::testNodeKind() const
{
    return testNodeKindOf(QAStFile::languageType(testedSourceFile()));
}

void QAStAFunctionTag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<function>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::indent(s, indent);
    s << "</function>\n";
}

bool QAStAFunctionTag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "function")) {
        setValid(false);
        return false;
    }
    const bool valid =
        QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
    useIcon(QStringLiteral("function_xpm"));
    return valid;
}
