#include "QAStRecordReader.h"

#include "QAFileBytes.h"

#include <QCoreApplication>

#include <climits>

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}

// --- QAStRecordFields

bool QAStRecordFields::parse(const char* begin, const char* end)
{
    if (end > begin && end[-1] == '\r')
        --end;
    m_count = 0;
    if (end - begin < 2 || (end - begin > 2 && begin[2] != ' ' && begin[2] != '\t'))
        return false;
    m_code = codeOf(begin[0], begin[1]);
    const char* p = begin + 2;
    while (p < end) {
        while (p < end && (*p == ' ' || *p == '\t'))
            ++p;
        if (p == end)
            break;
        Field field{p, p, false};
        if (*p == '"') {
            ++p;
            field.begin = p;
            while (p < end && *p != '"')
                p += (*p == '\\' && p + 1 < end) ? 2 : 1;
            if (p >= end)
                return false;
            field.end = p++;
            field.quoted = true;
        } else {
            while (p < end && *p != ' ' && *p != '\t')
                ++p;
            field.end = p;
        }
        if (m_count < MaxFields)
            m_fields[m_count++] = field;
    }
    return true;
}

QByteArray QAStRecordFields::raw(int i) const
{
    if (i >= m_count)
        return QByteArray();
    return QByteArray(m_fields[i].begin, qsizetype(m_fields[i].end - m_fields[i].begin));
}

QByteArray QAStRecordFields::text(int i) const
{
    if (i >= m_count)
        return QByteArray();
    const Field& f = m_fields[i];
    return f.quoted ? unescape(f.begin, f.end) : QByteArray(f.begin, qsizetype(f.end - f.begin));
}

QByteArray QAStRecordFields::unescape(const char* begin, const char* end)
{
    if (!std::memchr(begin, '\\', size_t(end - begin)))
        return QByteArray(begin, qsizetype(end - begin));
    QByteArray text;
    text.reserve(qsizetype(end - begin));
    for (const char* p = begin; p < end; ++p) {
        if (*p != '\\' || p + 1 == end) {
            text += *p;
            continue;
        }
        const char c = *++p;
        if (c == 't') {
            text += '\t';
        } else if (c == 'r') {
            text += '\r';
        } else if (c == 'n') {
            text += '\n';
        } else if (c == 'x' && p + 2 < end && hexDigit(p[1]) >= 0 && hexDigit(p[2]) >= 0) {
            text += char(hexDigit(p[1]) * 16 + hexDigit(p[2]));
            p += 2;
        } else {
            text += c;
        }
    }
    return text;
}

bool QAStRecordFields::parseNumber(const char* begin, const char* end, qint64* value)
{
    if (begin == end || end - begin > 18)
        return false;
    qint64 n = 0;
    for (const char* p = begin; p < end; ++p) {
        if (*p < '0' || *p > '9')
            return false;
        n = n * 10 + (*p - '0');
    }
    *value = n;
    return true;
}

bool QAStRecordFields::number(int i, qint64* value) const
{
    return i < m_count && !m_fields[i].quoted && parseNumber(m_fields[i].begin, m_fields[i].end, value);
}

bool QAStRecordFields::address(int i, quint64* value) const
{
    if (i >= m_count || m_fields[i].quoted)
        return false;
    const char* p = m_fields[i].begin;
    const char* end = m_fields[i].end;
    if (end - p < 3 || end - p > 18 || p[0] != '0' || (p[1] != 'x' && p[1] != 'X'))
        return false;
    quint64 n = 0;
    for (p += 2; p < end; ++p) {
        const int digit = hexDigit(*p);
        if (digit < 0)
            return false;
        n = n * 16 + quint64(digit);
    }
    *value = n;
    return true;
}

// --- QAStRecordReader

QAStRecordReader::~QAStRecordReader() = default;

void QAStRecordReader::clear()
{
    m_error.clear();
    m_lines = 0;
    m_skipped = 0;
    m_firstSkippedLine = 0;
    m_firstSkipReason = nullptr;
}

bool QAStRecordReader::readFile(const QString& path)
{
    clear();
    m_fileName = path;
    const QAFileBytes bytes(path);
    if (!bytes.isValid()) {
        m_error = bytes.errorString();
        return false;
    }
    addLines(bytes.data(), bytes.size());
    return true;
}

void QAStRecordReader::addLines(const char* data, qsizetype size)
{
    readLines(data, data + size);
}

void QAStRecordReader::readLines(const char* data, const char* end)
{
    const char* p = data;
    while (p < end) {
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)));
        const char* lineEnd = newline ? newline : end;
        readLine(p, lineEnd);
        p = lineEnd + 1;
    }
}

void QAStRecordReader::readLine(const char* begin, const char* end)
{
    ++m_lines;
    if (begin == end || (end - begin == 1 && *begin == '\r'))
        return;
    if (m_record.parse(begin, end))
        readRecord(m_record);
    else
        readOther(begin, end);
}

void QAStRecordReader::readOther(const char*, const char*)
{
    skip("no record");
}

void QAStRecordReader::skip(const char* why)
{
    if (m_skipped++ == 0) {
        m_firstSkippedLine = m_lines;
        m_firstSkipReason = why;
    }
}

QString QAStRecordReader::skippedText() const
{
    if (m_skipped == 0)
        return QString();
    return QCoreApplication::translate("QAStRecordReader", "%1: %n line(s) skipped, the first at line %2: %3",
                                       nullptr, int(qMin<qint64>(m_skipped, INT_MAX)))
        .arg(m_fileName.isEmpty() ? QStringLiteral("(lines)") : m_fileName)
        .arg(m_firstSkippedLine)
        .arg(QLatin1String(m_firstSkipReason));
}
