#pragma once

#include "sdk110_export.h"

#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class QAStFile;
class QAStTagTable;

// One record of a tag file, as the reader hands it to QAStFile::createTag.
// Its map form (toMap) uses the keys "Name", "File", "Line", "Kind",
// "Qualifier", "Complete Name", "Separate", "Signature", "Parent Kind" and
// "Inherits" (docs/formats/tags.md).
struct SDK110_EXPORT QAStTagRecord {
    QString name;
    QString file;
    int line = -1;
    QString kind;
    // Sum of the values of the access and implementation words.
    int qualifier = 0;
    // The record's scope: "namespace", "class", "interface", "outer" or
    // "separate" (empty when none) and the scope's name as written.
    QString parentKind;
    QString completeName;
    // For an Ada separate unit: the parent unit's name.
    QString separate;
    QString signature;
    QStringList inherits;

    QMap<QString, QVariant> toMap() const;
    static QAStTagRecord fromMap(const QMap<QString, QVariant>& map);
};

// Reads a tag file (docs/formats/tags.md) into tags below a file item.
//
// Lines are read one by one: pseudo-tag lines ("!_TAG_...") and blank
// lines are passed over, a carriage return before the line end is
// dropped, fields after the kind may come in any order and unknown keys
// are ignored. A malformed line is reported with its expecting-message
// ("<tag file>:<line>: expecting a tab") on the message console and costs
// only its own tag. Texts are the sources' own bytes: a tag file that is
// valid UTF-8 is decoded as UTF-8, whatever the preferences say; a file that
// is not has each line that is valid UTF-8 decoded as UTF-8 and the others
// in the preferences' source encoding (UTF-8 when it names UTF-8 or the
// system's, else ISO-8859-1). Since a line break never falls inside a
// UTF-8 sequence, the file is valid exactly when each line is, so the
// choice is made line by line, and only for lines with a byte above 127
// in a field that is kept. The backslash escapes \\, \t, \r and \n of a
// field are undone.
//
// Parents: a record's parent field is looked up among the tags made so far
// from the same text ("Search class = %s", ... as trace lines); the new
// tag goes below the tag found, else below the nearest enclosing scope
// found, else below the file. Records come in source order, so a scope
// stands before what it holds.
//
// The tags are not made items at once: each record becomes a compact row
// of a table (QAStTagTable: class, line, qualifier, parent row, name and
// signature bytes, shared complete names) handed to the file at the end
// of the text; the file makes the items, in file order, when its children
// are first walked. Only the fields kept are decoded, and only then. A file
// on disk is read in chunks, so its bytes are never all in memory at once.
class SDK110_EXPORT QAStTagFileReader {
public:
    enum LineKind { RecordLine, SkippedLine, MalformedLine };

    explicit QAStTagFileReader(QAStFile* file);
    ~QAStTagFileReader();

    // Reads the tag file at path, replacing the file's former tags. False
    // when it cannot be opened ("Can't open tag file." on the message
    // console).
    bool read(const QString& path);
    // Reads tag-file text held in memory, adding its tags behind the
    // file's; name stands for the file in messages.
    void readText(QByteArrayView text, const QString& name);

    // Records read, malformed lines, and tags made (as rows or items).
    int recordCount() const { return m_records; }
    int malformedCount() const { return m_malformed; }
    int tagCount() const { return m_tags; }

    // Parses one line (without its line end) with the given decoding.
    // MalformedLine sets error to the expecting-message.
    static LineKind parseLine(QByteArrayView line, QAStTagRecord& record, QString* error,
                              bool utf8 = false);

    // The fields of a line as the reader splits it, one object for a
    // whole text (defined with the reader).
    struct Fields;

private:
    void begin();
    void readLines(QByteArrayView text, const QString& name);
    void readLine(QByteArrayView line, int number, const QString& name, Fields& f);
    void finish();
    int findScope(const QString& scope) const;

    QAStFile* m_file;
    // The preferences' decoding of text that is not valid UTF-8.
    bool m_fallbackUtf8 = false;
    bool m_ada = false;
    QString m_separator;
    // The rows of the text being read, handed to the file at its end.
    std::unique_ptr<QAStTagTable> m_table;
    // Scope rows made so far by their key: the record's scope and name
    // joined by the separator (the name alone for Ada, whose scopes are
    // simple).
    QHash<QString, int> m_scopes;
    // The last record's parent scope, kept while the next one's is the
    // same, and the row found for it when m_scopesSearched scopes were
    // made (a scope made since may be the one sought).
    QString m_scope;
    int m_parent = -1;
    int m_scopesMade = 0;
    int m_scopesSearched = -1;
    // Field bytes with their escapes undone.
    QByteArray m_name;
    QByteArray m_signature;
    int m_lineNumber = 0;
    int m_records = 0;
    int m_malformed = 0;
    int m_tags = 0;
};
