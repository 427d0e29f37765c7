#include "QAStTagFileReader.h"

#include "QALogging.h"
#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStProjectPref.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringConverter>

#include <cstring>

namespace {


const QString keyName = QStringLiteral("Name");
const QString keyFile = QStringLiteral("File");
const QString keyLine = QStringLiteral("Line");
const QString keyKind = QStringLiteral("Kind");
const QString keyQualifier = QStringLiteral("Qualifier");
const QString keyCompleteName = QStringLiteral("Complete Name");
const QString keySeparate = QStringLiteral("Separate");
const QString keySignature = QStringLiteral("Signature");
const QString keyParentKind = QStringLiteral("Parent Kind");
const QString keyInherits = QStringLiteral("Inherits");

// The parent keys of a record, each with the word of its trace line.
struct ParentKey {
    const char* key;
    QString kind;
    const char* trace;
};

const ParentKey parentKeys[] = {
    {"namespace", QStringLiteral("namespace"), "namespace"},
    {"class", QStringLiteral("class"), "class"},
    {"interface", QStringLiteral("interface"), "interface"},
    {"outer", QStringLiteral("outer"), "ada outer"},
    {"separate", QStringLiteral("separate"), "ada separate"},
};

// The kind words of the tag classes, shared rather than decoded anew.
const QString knownKinds[] = {
    QStringLiteral("function"),   QStringLiteral("prototype"), QStringLiteral("method"),
    QStringLiteral("class"),      QStringLiteral("struct"),    QStringLiteral("namespace"),
    QStringLiteral("package"),    QStringLiteral("packspec"),  QStringLiteral("subprogram"),
    QStringLiteral("subprogspec"), QStringLiteral("interface"), QStringLiteral("separate"),
};

bool equals(QByteArrayView bytes, const char* text)
{
    const size_t n = std::strlen(text);
    return size_t(bytes.size()) == n && std::memcmp(bytes.data(), text, n) == 0;
}

// The text of a field: its escapes undone, then decoded.
QString decode(QByteArrayView bytes, bool utf8)
{
    if (bytes.empty())
        return QString();
    if (!std::memchr(bytes.data(), '\\', size_t(bytes.size())))
        return utf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    QByteArray plain;
    plain.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        char c = bytes[i];
        if (c == '\\' && i + 1 < bytes.size()) {
            switch (bytes[i + 1]) {
            case '\\': c = '\\'; ++i; break;
            case 't': c = '\t'; ++i; break;
            case 'r': c = '\r'; ++i; break;
            case 'n': c = '\n'; ++i; break;
            default: break;
            }
        }
        plain.append(c);
    }
    return utf8 ? QString::fromUtf8(plain) : QString::fromLatin1(plain);
}

bool isAscii(QByteArrayView bytes)
{
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

// Sets field to the text of a field, keeping the text it holds when it is
// the same: records in a row mostly share their file and scope.
void decodeInto(QString& field, QByteArrayView bytes, bool utf8)
{
    const bool same = field.size() == bytes.size()
        && !std::memchr(bytes.data(), '\\', size_t(bytes.size()))
        && QLatin1String(bytes.data(), bytes.size()) == field && (!utf8 || isAscii(bytes));
    if (!same)
        field = decode(bytes, utf8);
}

QString decodeKind(QByteArrayView bytes, bool utf8)
{
    for (const QString& kind : knownKinds) {
        if (kind.size() == bytes.size() && QLatin1String(bytes.data(), bytes.size()) == kind)
            return kind;
    }
    return decode(bytes, utf8);
}

// Adds the value of each word of a comma-separated list.
int wordsValue(QByteArrayView list)
{
    int value = 0;
    while (!list.empty()) {
        qsizetype comma = list.indexOf(',');
        const QByteArrayView word = comma < 0 ? list : list.first(comma);
        value += QAStATag::qualifierWordValue(word.trimmed());
        list = comma < 0 ? QByteArrayView() : list.sliced(comma + 1);
    }
    return value;
}

// The next field: the text up to the next tab, or to the end.
QByteArrayView takeField(QByteArrayView line, qsizetype& pos)
{
    const qsizetype tab = line.indexOf('\t', pos);
    const qsizetype end = tab < 0 ? line.size() : tab;
    const QByteArrayView field = line.sliced(pos, end - pos);
    pos = end;
    return field;
}

bool isBlank(QByteArrayView line)
{
    for (char c : line) {
        if (c != ' ' && c != '\t')
            return false;
    }
    return true;
}

// Whether the preferences' source encoding, the decoding of a tag file that
// is not valid UTF-8, is UTF-8 (or the system's) rather than ISO-8859-1.
bool sourceEncodingIsUtf8()
{
    const QString name = QAStData::preferences()->encodingName();
    const auto encoding = QStringConverter::encodingForName(name.toLatin1().constData());
    return encoding == QStringConverter::Utf8 || encoding == QStringConverter::System;
}

}

// --- record

QMap<QString, QVariant> QAStTagRecord::toMap() const
{
    QMap<QString, QVariant> map;
    map.insert(keyName, name);
    map.insert(keyFile, file);
    map.insert(keyLine, line);
    map.insert(keyKind, kind);
    map.insert(keyQualifier, qualifier);
    if (!completeName.isEmpty())
        map.insert(keyCompleteName, completeName);
    if (!separate.isEmpty())
        map.insert(keySeparate, separate);
    if (!signature.isEmpty())
        map.insert(keySignature, signature);
    if (!parentKind.isEmpty())
        map.insert(keyParentKind, parentKind);
    if (!inherits.isEmpty())
        map.insert(keyInherits, inherits);
    return map;
}

QAStTagRecord QAStTagRecord::fromMap(const QMap<QString, QVariant>& map)
{
    QAStTagRecord record;
    record.name = map.value(keyName).toString();
    record.file = map.value(keyFile).toString();
    bool ok = false;
    const int line = map.value(keyLine).toInt(&ok);
    record.line = ok ? line : -1;
    record.kind = map.value(keyKind).toString();
    record.qualifier = map.value(keyQualifier).toInt();
    record.completeName = map.value(keyCompleteName).toString();
    record.separate = map.value(keySeparate).toString();
    record.signature = map.value(keySignature).toString();
    record.parentKind = map.value(keyParentKind).toString();
    record.inherits = map.value(keyInherits).toStringList();
    return record;
}

// --- one line

QAStTagFileReader::LineKind QAStTagFileReader::parseLine(QByteArrayView line,
                                                         QAStTagRecord& record, QString* error,
                                                         bool utf8)
{
    const auto malformed = [error](const char* message) {
        if (error)
            *error = QATr::project(message);
        return MalformedLine;
    };
    if (line.endsWith('\r'))
        line.chop(1);
    if (isBlank(line) || line.startsWith("!_"))
        return SkippedLine;

    qsizetype pos = 0;
    const QByteArrayView name = takeField(line, pos);
    if (name.empty())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting an identifier"));
    if (pos == line.size())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a tab"));
    ++pos;
    const QByteArrayView file = takeField(line, pos);
    if (file.empty())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a file"));
    if (pos == line.size())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a tab"));
    ++pos;

    qint64 number = 0;
    const qsizetype digits = pos;
    while (pos < line.size() && line[pos] >= '0' && line[pos] <= '9' && number <= INT_MAX)
        number = number * 10 + (line[pos++] - '0');
    if (pos == digits || number > INT_MAX)
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a line number"));
    if (!line.sliced(pos).startsWith(";\""))
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting the extension separator"));
    pos += 2;
    if (pos == line.size() || line[pos] != '\t')
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a tab"));
    ++pos;
    QByteArrayView kind = takeField(line, pos);
    if (kind.startsWith("kind:"))
        kind = kind.sliced(5);
    if (kind.empty())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a kind"));

    record.qualifier = 0;
    record.signature.clear();
    record.inherits.clear();
    bool hasParent = false;
    while (pos < line.size()) {
        ++pos;
        const QByteArrayView field = takeField(line, pos);
        const qsizetype colon = field.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArrayView key = field.first(colon);
        const QByteArrayView value = field.sliced(colon + 1);
        if (equals(key, "access")) {
            record.qualifier += wordsValue(value);
        } else if (equals(key, "implementation")) {
            if (value.empty())
                return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting an implementation name"));
            record.qualifier += wordsValue(value);
        } else if (equals(key, "signature")) {
            if (value.empty())
                return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a signature"));
            record.signature = decode(value, utf8);
        } else if (equals(key, "inherits")) {
            const QString bases = decode(value, utf8);
            record.inherits = bases.split(QLatin1Char(','), Qt::SkipEmptyParts);
        } else {
            for (const ParentKey& parent : parentKeys) {
                if (!equals(key, parent.key))
                    continue;
                if (value.empty())
                    return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a parent name"));
                hasParent = true;
                record.parentKind = parent.kind;
                const bool separate = parent.kind == QLatin1String("separate");
                decodeInto(separate ? record.separate : record.completeName, value, utf8);
                (separate ? record.completeName : record.separate).clear();
                break;
            }
        }
    }
    if (!hasParent) {
        record.parentKind.clear();
        record.completeName.clear();
        record.separate.clear();
    }
    record.name = decode(name, utf8);
    decodeInto(record.file, file, utf8);
    record.line = int(number);
    record.kind = decodeKind(kind, utf8);
    return RecordLine;
}

// --- the whole file

QAStTagFileReader::QAStTagFileReader(QAStFile* file) : m_file(file)
{
    m_fallbackUtf8 = sourceEncodingIsUtf8();
    m_ada = file && file->language() == QAStFile::LanguageAda;
    m_separator = file ? file->scopeSeparator() : QStringLiteral("::");
}

bool QAStTagFileReader::read(const QString& path)
{
    QFile tags(path);
    if (!tags.open(QIODevice::ReadOnly)) {
        QAStData::displayMessage(QAStData::MessageConsole, QATr::project("Can't open tag file."));
        return false;
    }
    if (m_file)
        m_file->deleteChildren();
    const qint64 size = tags.size();
    if (uchar* mapped = size > 0 ? tags.map(0, size) : nullptr) {
        readText(QByteArrayView(reinterpret_cast<const char*>(mapped), size), path);
        tags.unmap(mapped);
    } else {
        const QByteArray text = tags.readAll();
        readText(text, path);
    }
    return true;
}

void QAStTagFileReader::readText(QByteArrayView text, const QString& name)
{
    // One pass over the whole text; only a text that is not valid UTF-8 has
    // its lines checked one by one.
    m_utf8 = m_fallbackUtf8 || text.isValidUtf8();
    int number = 0;
    qsizetype start = 0;
    while (start < text.size()) {
        const char* begin = text.data() + start;
        const auto* newline =
            static_cast<const char*>(std::memchr(begin, '\n', size_t(text.size() - start)));
        const qsizetype end = newline ? newline - text.data() : text.size();
        readLine(text.sliced(start, end - start), ++number, name);
        start = end + 1;
    }
}

void QAStTagFileReader::readLine(QByteArrayView line, int number, const QString& name)
{
    QString error;
    const bool utf8 = m_utf8 || line.isValidUtf8();
    switch (parseLine(line, m_record, &error, utf8)) {
    case SkippedLine:
        return;
    case MalformedLine:
        ++m_malformed;
        QAStData::displayMessage(QAStData::MessageConsole,
                                 QStringLiteral("%1:%2: %3").arg(name).arg(number).arg(error));
        return;
    case RecordLine:
        break;
    }
    ++m_records;
    if (QAStATag* tag = QAStFile::createTag(m_record, m_file, findParent(m_record))) {
        ++m_tags;
        remember(tag, m_record);
    }
}

QAStATag* QAStTagFileReader::findParent(const QAStTagRecord& record) const
{
    if (record.parentKind.isEmpty())
        return nullptr;
    for (const ParentKey& parent : parentKeys) {
        if (parent.kind != record.parentKind)
            continue;
        const QString& scope =
            parent.kind == QLatin1String("separate") ? record.separate : record.completeName;
        if (lcTagging().isInfoEnabled())
            qCInfo(lcTagging, "Search %s = %s", parent.trace, qUtf8Printable(scope));
        return findScope(scope);
    }
    return nullptr;
}

QAStATag* QAStTagFileReader::findScope(const QString& scope) const
{
    QString wanted = scope;
    while (!wanted.isEmpty()) {
        if (QAStATag* found = m_scopes.value(wanted))
            return found;
        // Not there: the nearest enclosing scope that is.
        const qsizetype cut = wanted.lastIndexOf(m_separator);
        if (cut <= 0)
            break;
        wanted.truncate(cut);
    }
    return nullptr;
}

void QAStTagFileReader::remember(QAStATag* tag, const QAStTagRecord& record)
{
    const bool scope = qobject_cast<QAStAPackageTag*>(tag) || qobject_cast<QAStAClassTag*>(tag)
        || qobject_cast<QAStAStructTag*>(tag)
        || (m_ada && qobject_cast<QAStAFunctionTag*>(tag));
    if (!scope)
        return;
    if (m_ada || record.completeName.isEmpty())
        m_scopes.insert(record.name, tag);
    else
        m_scopes.insert(record.completeName + m_separator + record.name, tag);
}
