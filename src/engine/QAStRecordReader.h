#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QString>

#include <cstring>

// The fields of one record line, parsed in place: a two-character code,
// then fields separated by blanks; a text field is in double quotes, in
// which a backslash escapes the next character ("\t", "\r", "\n", "\xHH",
// any other byte as itself). Nothing is copied: a field is a range of the
// line, quotes left out, escapes kept until text() resolves them.
class SDK110_EXPORT QAStRecordFields {
public:
    static constexpr int MaxFields = 16;

    // Parses [begin, end), the line without its "\n" (a "\r" before it is
    // dropped). False when the line is no record: shorter than its code,
    // code not followed by a blank or its end, a quote left open. Fields
    // past MaxFields are left out.
    bool parse(const char* begin, const char* end);

    // The two bytes of the code, as one number ('M' << 8 | 'E').
    int code() const { return m_code; }
    static constexpr int codeOf(char a, char b) { return (int(uchar(a)) << 8) | int(uchar(b)); }
    int count() const { return m_count; }
    bool isQuoted(int i) const { return i < m_count && m_fields[i].quoted; }
    // The field's bytes as written (quotes left out, escapes kept).
    QByteArray raw(int i) const;
    const char* begin(int i) const { return m_fields[i].begin; }
    const char* end(int i) const { return m_fields[i].end; }
    // The field's text, escapes resolved; empty past the last field.
    QByteArray text(int i) const;
    // A decimal number (an unquoted field of digits only); false otherwise.
    bool number(int i, qint64* value) const;
    // An address "0x<hex>"; false otherwise.
    bool address(int i, quint64* value) const;

    // Resolves the escapes of a quoted field's bytes.
    static QByteArray unescape(const char* begin, const char* end);
    // Parses the digits of [begin, end); false when empty, not digits only
    // or over 18 digits.
    static bool parseNumber(const char* begin, const char* end, qint64* value);

private:
    struct Field {
        const char* begin;
        const char* end;
        bool quoted;
    };
    Field m_fields[MaxFields];
    int m_count = 0;
    int m_code = 0;
};

// What the readers of result files share: a file read at once (mapped when
// large), split into lines on the byte "\n", each line handed to the
// reader; lines counted, those the reader could not use counted as skipped
// with the first one's reason. An empty line is no record and is passed
// over without a count. A file cut in the middle of its last line gives
// that line too, which usually is skipped.
//
// The readers also take lines as a file grows (addLines), as the views
// following a file during a run give them.
class SDK110_EXPORT QAStRecordReader {
public:
    virtual ~QAStRecordReader();

    // Clears, then reads path. False when it cannot be read (errorString()
    // tells why, naming the file); a missing file is such a fault.
    bool readFile(const QString& path);
    // Whole lines, one after the other; a last line without "\n" is taken
    // as a line.
    void addLines(const char* data, qsizetype size);
    void addLines(const QByteArray& lines) { addLines(lines.constData(), lines.size()); }
    // Forgets every line read.
    virtual void clear();

    // The file last read (readFile or setFileName).
    QString fileName() const { return m_fileName; }
    void setFileName(const QString& name) { m_fileName = name; }
    qint64 lineCount() const { return m_lines; }
    qint64 skippedLines() const { return m_skipped; }
    // "<file>: cannot read: <why>" after a failed readFile; empty otherwise.
    QString errorString() const { return m_error; }
    // "<file>: <n> line(s) skipped, the first at line <l>: <why>"; empty
    // when none was.
    QString skippedText() const;

protected:
    // Lines [data, end), the last one possibly without "\n": by default
    // each is counted, parsed and handed to readRecord (readLine). A
    // reader of many lines of a few forms may read those forms itself.
    virtual void readLines(const char* data, const char* end);
    // One line without its "\n", counted, parsed and handed on.
    void readLine(const char* begin, const char* end);
    // A line read by the reader itself, counted.
    void countLine() { ++m_lines; }
    // One line, parsed; the reader calls skip() when it cannot use it.
    virtual void readRecord(const QAStRecordFields& record) = 0;
    // A line that is no record; by default skipped as such.
    virtual void readOther(const char* begin, const char* end);
    // The line being read is skipped, for why (a static text).
    void skip(const char* why);

private:
    QAStRecordFields m_record;
    QString m_fileName;
    QString m_error;
    qint64 m_lines = 0;
    qint64 m_skipped = 0;
    qint64 m_firstSkippedLine = 0;
    const char* m_firstSkipReason = nullptr;
};
