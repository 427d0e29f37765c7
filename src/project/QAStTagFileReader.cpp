#include "QAStTagFileReader.h"

#include "QALogging.h"
#include "QAStFile.h"
#include "QAStProjectPref.h"
#include "QAStTagTable.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringConverter>
#include <QtAlgorithms>

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

// The parent keys of a record, each with the word of its trace line;
// whether a function below it is a method, and whether it names the Ada
// parent unit rather than the complete name.
struct ParentKey {
    QByteArrayView key;
    QString kind;
    const char* trace;
    bool ofClass;
    bool separate;
};

const ParentKey parentKeys[] = {
    {"namespace", QStringLiteral("namespace"), "namespace", false, false},
    {"class", QStringLiteral("class"), "class", true, false},
    {"interface", QStringLiteral("interface"), "interface", true, false},
    {"outer", QStringLiteral("outer"), "ada outer", false, false},
    {"separate", QStringLiteral("separate"), "ada separate", false, true},
};

// The kind words of the tag classes, shared rather than decoded anew.
const QString knownKinds[] = {
    QStringLiteral("function"),   QStringLiteral("prototype"), QStringLiteral("method"),
    QStringLiteral("class"),      QStringLiteral("struct"),    QStringLiteral("namespace"),
    QStringLiteral("package"),    QStringLiteral("packspec"),  QStringLiteral("subprogram"),
    QStringLiteral("subprogspec"), QStringLiteral("interface"), QStringLiteral("separate"),
};

// Compares with a key of a few letters without a call: most fields hold
// one of them.
template <size_t N>
bool equals(QByteArrayView bytes, const char (&text)[N])
{
    static_assert(N - 1 <= 16);
    if (size_t(bytes.size()) != N - 1)
        return false;
    if constexpr (N - 1 <= 8) {
        quint64 a = 0;
        quint64 b = 0;
        std::memcpy(&a, bytes.data(), N - 1);
        std::memcpy(&b, text, N - 1);
        return a == b;
    } else {
        quint64 a[2] = {};
        quint64 b[2] = {};
        std::memcpy(a, bytes.data(), N - 1);
        std::memcpy(b, text, N - 1);
        return a[0] == b[0] && a[1] == b[1];
    }
}

bool equals(QByteArrayView bytes, QByteArrayView text)
{
    return bytes.size() == text.size() && std::memcmp(bytes.data(), text.data(), size_t(text.size())) == 0;
}

bool isAscii(QByteArrayView bytes)
{
    constexpr quint64 highs = 0x8080808080808080ULL;
    const char* p = bytes.data();
    qsizetype n = bytes.size();
    quint64 high = 0;
    for (; n >= 8; p += 8, n -= 8) {
        quint64 word;
        std::memcpy(&word, p, 8);
        high |= word;
    }
    for (; n > 0; ++p, --n)
        high |= quint8(*p);
    return (high & highs) == 0;
}

// A line's tabs, found in one pass together with whether it holds bytes
// above 127 and backslashes: most lines hold neither, and then no field
// needs its escapes undone nor its decoding chosen.
class LineScan {
public:
    explicit LineScan(QByteArrayView line) : m_line(line)
    {
        const char* p = line.data();
        const qsizetype n = line.size();
        qsizetype i = 0;
        unsigned high = 0;
        unsigned backslashes = 0;
#ifdef __SSE2__
        const __m128i tabBytes = _mm_set1_epi8('\t');
        const __m128i backslashBytes = _mm_set1_epi8('\\');
        for (; i + 16 <= n; i += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            high |= unsigned(_mm_movemask_epi8(v));
            backslashes |= unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, backslashBytes)));
            for (auto tabs = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, tabBytes))); tabs;
                 tabs &= tabs - 1)
                addTab(i + qCountTrailingZeroBits(tabs));
        }
        if (i < n && n >= 16) {
            // The last 16 bytes, those already seen masked off.
            const unsigned fresh = 0xffffu << (16 - (n - i));
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n - 16));
            high |= unsigned(_mm_movemask_epi8(v)) & fresh;
            backslashes |=
                unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, backslashBytes))) & fresh;
            for (unsigned tabs = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, tabBytes))) & fresh;
                 tabs; tabs &= tabs - 1)
                addTab(n - 16 + qCountTrailingZeroBits(tabs));
            i = n;
        }
#endif
        for (; i < n; ++i) {
            const char c = p[i];
            if (c == '\t')
                addTab(i);
            high |= quint8(c) & 0x80;
            backslashes |= c == '\\';
        }
        ascii = high == 0;
        backslash = backslashes != 0;
    }

    // The next field from pos: the text up to the next tab, or to the end.
    QByteArrayView take(qsizetype& pos)
    {
        while (m_next < m_count && m_tabs[m_next] < pos)
            ++m_next;
        qsizetype end = m_line.size();
        if (m_next < m_count) {
            end = m_tabs[m_next];
        } else if (m_more) {
            const qsizetype tab = m_line.indexOf('\t', pos);
            end = tab < 0 ? m_line.size() : tab;
        }
        const QByteArrayView field = m_line.sliced(pos, end - pos);
        pos = end;
        return field;
    }

    bool ascii = true;
    bool backslash = false;

private:
    void addTab(qsizetype at)
    {
        if (m_count < MaxTabs)
            m_tabs[m_count++] = at;
        else
            m_more = true;
    }

    static constexpr int MaxTabs = 32;
    QByteArrayView m_line;
    qsizetype m_tabs[MaxTabs];
    int m_count = 0;
    int m_next = 0;
    // More tabs than kept: the rest are looked for.
    bool m_more = false;
};

// The bytes of a field with its escapes undone, into plain; the field
// itself when it holds no backslash.
QByteArrayView unescape(QByteArrayView bytes, QByteArray& plain)
{
    if (!std::memchr(bytes.data(), '\\', size_t(bytes.size())))
        return bytes;
    plain.resize(0);
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
    return plain;
}

// The text of a field: its escapes undone, then decoded.
QString decode(QByteArrayView bytes, bool utf8)
{
    if (bytes.empty())
        return QString();
    QByteArray plain;
    const QByteArrayView text = unescape(bytes, plain);
    return utf8 ? QString::fromUtf8(text) : QString::fromLatin1(text);
}


// Sets field to the text of a field, keeping the text it holds when it is
// the same: records in a row mostly share their file and scope. Whether
// it changed.
bool decodeInto(QString& field, QByteArrayView bytes, bool utf8)
{
    const bool same = field.size() == bytes.size()
        && !std::memchr(bytes.data(), '\\', size_t(bytes.size()))
        && QLatin1String(bytes.data(), bytes.size()) == field && (!utf8 || isAscii(bytes));
    if (!same)
        field = decode(bytes, utf8);
    return !same;
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

// The fields of a record line, as bytes; one object serves every line of
// a text, splitLine setting what each line needs.
struct QAStTagFileReader::Fields {
    QByteArrayView name;
    QByteArrayView file;
    QByteArrayView kind;
    int line = 0;
    int qualifier = 0;
    bool hasSignature = false;
    QByteArrayView signature;
    bool hasInherits = false;
    QByteArrayView inherits;
    // The last parent field, and its value.
    const ParentKey* parent = nullptr;
    QByteArrayView parentName;
    // The line holds no byte above 127, and no backslash.
    bool ascii = true;
    bool backslash = false;
};

namespace {

using Fields = QAStTagFileReader::Fields;


// Splits a line into its fields; MalformedLine sets error to the
// expecting-message (untranslated).
QAStTagFileReader::LineKind splitLine(QByteArrayView line, Fields& f, const char** error)
{
    const auto malformed = [error](const char* message) {
        *error = message;
        return QAStTagFileReader::MalformedLine;
    };
    if (line.endsWith('\r'))
        line.chop(1);
    if (isBlank(line) || (line.size() >= 2 && line[0] == '!' && line[1] == '_'))
        return QAStTagFileReader::SkippedLine;

    LineScan scan(line);
    f.qualifier = 0;
    f.hasSignature = false;
    f.hasInherits = false;
    f.parent = nullptr;
    f.ascii = scan.ascii;
    f.backslash = scan.backslash;
    qsizetype pos = 0;
    f.name = scan.take(pos);
    if (f.name.empty())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting an identifier"));
    if (pos == line.size())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a tab"));
    ++pos;
    f.file = scan.take(pos);
    if (f.file.empty())
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
    f.line = int(number);
    if (line.size() - pos < 2 || line[pos] != ';' || line[pos + 1] != '"')
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting the extension separator"));
    pos += 2;
    if (pos == line.size() || line[pos] != '\t')
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a tab"));
    ++pos;
    f.kind = scan.take(pos);
    if (f.kind.size() >= 5 && equals(f.kind.first(5), "kind:"))
        f.kind = f.kind.sliced(5);
    if (f.kind.empty())
        return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a kind"));

    while (pos < line.size()) {
        ++pos;
        const QByteArrayView field = scan.take(pos);
        const qsizetype colon = field.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArrayView key = field.first(colon);
        const QByteArrayView value = field.sliced(colon + 1);
        if (equals(key, "access")) {
            f.qualifier += wordsValue(value);
        } else if (equals(key, "implementation")) {
            if (value.empty())
                return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting an implementation name"));
            f.qualifier += wordsValue(value);
        } else if (equals(key, "signature")) {
            if (value.empty())
                return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a signature"));
            f.hasSignature = true;
            f.signature = value;
        } else if (equals(key, "inherits")) {
            f.hasInherits = true;
            f.inherits = value;
        } else {
            for (const ParentKey& parent : parentKeys) {
                if (!equals(key, parent.key))
                    continue;
                if (value.empty())
                    return malformed(QT_TRANSLATE_NOOP(QATR_PROJECT, "expecting a parent name"));
                f.parent = &parent;
                f.parentName = value;
                break;
            }
        }
    }
    return QAStTagFileReader::RecordLine;
}

bool isSeparate(const ParentKey* parent)
{
    return parent && parent->separate;
}

bool isClassParent(const ParentKey* parent)
{
    return parent && parent->ofClass;
}

}

QAStTagFileReader::LineKind QAStTagFileReader::parseLine(QByteArrayView line,
                                                         QAStTagRecord& record, QString* error,
                                                         bool utf8)
{
    Fields f;
    const char* message = nullptr;
    const LineKind kind = splitLine(line, f, &message);
    if (kind == MalformedLine && error)
        *error = QATr::project(message);
    if (kind != RecordLine)
        return kind;
    record.qualifier = f.qualifier;
    record.signature = f.hasSignature ? decode(f.signature, utf8) : QString();
    record.inherits = f.hasInherits
        ? decode(f.inherits, utf8).split(QLatin1Char(','), Qt::SkipEmptyParts)
        : QStringList();
    if (f.parent) {
        const bool separate = isSeparate(f.parent);
        record.parentKind = f.parent->kind;
        decodeInto(separate ? record.separate : record.completeName, f.parentName, utf8);
        (separate ? record.completeName : record.separate).clear();
    } else {
        record.parentKind.clear();
        record.completeName.clear();
        record.separate.clear();
    }
    record.name = decode(f.name, utf8);
    decodeInto(record.file, f.file, utf8);
    record.line = f.line;
    record.kind = decodeKind(f.kind, utf8);
    return RecordLine;
}

// --- the whole file

QAStTagFileReader::QAStTagFileReader(QAStFile* file) : m_file(file)
{
    m_fallbackUtf8 = sourceEncodingIsUtf8();
    m_ada = file && file->language() == QAStFile::LanguageAda;
    m_separator = file ? file->scopeSeparator() : QStringLiteral("::");
}

QAStTagFileReader::~QAStTagFileReader() = default;

bool QAStTagFileReader::read(const QString& path)
{
    QFile tags(path);
    if (!tags.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        QAStData::displayMessage(QAStData::MessageConsole, QATr::project("Can't open tag file."));
        return false;
    }
    if (m_file)
        m_file->deleteChildren();
    begin();
    // Room for what a tag file of this size mostly holds (lines of 100
    // bytes and more, half of them name and signature; beyond 512 MiB the
    // rows grow as they come); only the pages filled take memory.
    const qint64 size = std::min<qint64>(tags.size(), qint64(512) << 20);
    if (m_table)
        m_table->reserve(size / 64, size / 2);
    // Whole lines a chunk at a time; the unfinished line moves to the front.
    constexpr qsizetype chunk = 1 << 20;
    QByteArray buffer(chunk, Qt::Uninitialized);
    qsizetype kept = 0;
    for (;;) {
        if (kept == buffer.size())
            buffer.resize(buffer.size() * 2);
        const qint64 got = tags.read(buffer.data() + kept, buffer.size() - kept);
        if (got <= 0)
            break;
        const qsizetype filled = kept + qsizetype(got);
        const QByteArrayView text(buffer.constData(), filled);
        const qsizetype end = text.lastIndexOf('\n') + 1;
        readLines(text.first(end), path);
        kept = filled - end;
        if (end > 0)
            std::memmove(buffer.data(), buffer.constData() + end, size_t(kept));
    }
    readLines(QByteArrayView(buffer.constData(), kept), path);
    finish();
    return true;
}

void QAStTagFileReader::readText(QByteArrayView text, const QString& name)
{
    begin();
    readLines(text, name);
    finish();
}

void QAStTagFileReader::begin()
{
    m_lineNumber = 0;
    m_scopes.clear();
    m_scope.clear();
    m_scopesMade = 0;
    m_scopesSearched = -1;
    m_table = m_file ? std::make_unique<QAStTagTable>(m_file->storedFilePath(), m_separator)
                     : nullptr;
}

void QAStTagFileReader::readLines(QByteArrayView text, const QString& name)
{
    Fields f;
    qsizetype start = 0;
    while (start < text.size()) {
        const char* begin = text.data() + start;
        const auto* newline =
            static_cast<const char*>(std::memchr(begin, '\n', size_t(text.size() - start)));
        const qsizetype end = newline ? newline - text.data() : text.size();
        readLine(text.sliced(start, end - start), ++m_lineNumber, name, f);
        start = end + 1;
    }
}

void QAStTagFileReader::finish()
{
    m_scopes.clear();
    if (m_table && m_table->size() > 0)
        m_file->keepTags(std::move(m_table));
    m_table.reset();
}

void QAStTagFileReader::readLine(QByteArrayView line, int number, const QString& name,
                                 Fields& f)
{
    const char* error = nullptr;
    switch (splitLine(line, f, &error)) {
    case SkippedLine:
        return;
    case MalformedLine:
        ++m_malformed;
        QAStData::displayMessage(QAStData::MessageConsole, QStringLiteral("%1:%2: %3")
                                                              .arg(name)
                                                              .arg(number)
                                                              .arg(QATr::project(error)));
        return;
    case RecordLine:
        break;
    }
    ++m_records;
    // The decoding of a field, looked at only for a field above ASCII.
    int utf8Line = -1;
    const auto utf8 = [&](QByteArrayView field) {
        if (f.ascii || isAscii(field))
            return false;
        if (utf8Line < 0)
            utf8Line = m_fallbackUtf8 || line.isValidUtf8() ? 1 : 0;
        return utf8Line == 1;
    };
    const auto plain = [&f](QByteArrayView field, QByteArray& buffer) {
        return f.backslash ? unescape(field, buffer) : field;
    };

    int parent = -1;
    if (f.parent) {
        const bool changed = decodeInto(m_scope, f.parentName, utf8(f.parentName));
        if (lcTagging().isInfoEnabled())
            qCInfo(lcTagging, "Search %s = %s", f.parent->trace, qUtf8Printable(m_scope));
        // The scope of the record before, with no scope made since: the
        // same parent.
        if (changed || m_scopesMade != m_scopesSearched) {
            m_parent = findScope(m_scope);
            m_scopesSearched = m_scopesMade;
        }
        parent = m_parent;
    }
    const QAStTagTable::Class kind = QAStTagTable::classify(f.kind, isClassParent(f.parent));
    if (kind == QAStTagTable::NoClass) {
        qCInfo(lcTagging, "[info] TAGGING: %s is a kind of token not yet implemented",
               qUtf8Printable(decodeKind(f.kind, utf8(f.kind))));
        return;
    }
    if (!m_table)
        return;

    const QByteArrayView tagName = plain(f.name, m_name);
    const QByteArrayView signature = f.hasSignature ? plain(f.signature, m_signature) : QByteArrayView();
    const bool rowUtf8 = utf8(tagName) || utf8(signature);
    // The complete name: the scope of a parent field other than separate.
    static const QString none;
    const QString& scope = f.parent && !isSeparate(f.parent) ? m_scope : none;
    QStringList inherits;
    if (kind == QAStTagTable::ClassTag && f.hasInherits)
        inherits = decode(f.inherits, utf8(f.inherits)).split(QLatin1Char(','), Qt::SkipEmptyParts);
    const int row = m_table->append(kind, tagName, signature, rowUtf8, f.line, f.qualifier,
                                    parent, scope, inherits);
    ++m_tags;

    const bool isScope = kind == QAStTagTable::Package || kind == QAStTagTable::ClassTag
        || kind == QAStTagTable::Struct
        || (m_ada && (kind == QAStTagTable::Function || kind == QAStTagTable::Method));
    if (!isScope)
        return;
    const QString decodedName = m_table->name(row);
    m_scopes.insert(m_ada || scope.isEmpty() ? decodedName : scope + m_separator + decodedName,
                    row);
    ++m_scopesMade;
}

int QAStTagFileReader::findScope(const QString& scope) const
{
    QString wanted = scope;
    while (!wanted.isEmpty()) {
        const auto found = m_scopes.constFind(wanted);
        if (found != m_scopes.cend())
            return found.value();
        // Not there: the nearest enclosing scope that is.
        const qsizetype cut = wanted.lastIndexOf(m_separator);
        if (cut <= 0)
            break;
        wanted.truncate(cut);
    }
    return -1;
}
