#pragma once

#include "sdk110_export.h"

#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

class QAStATag;
class QAStFile;

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
// system's, else ISO-8859-1). The backslash escapes \\, \t, \r and \n of
// a field are undone.
//
// Parents: a record's parent field is looked up among the tags this reader
// created ("Search class = %s", ... as trace lines); the new tag goes below
// the tag found, else below the nearest enclosing scope found, else below
// the file. Records come in source order, so a scope stands before what it
// holds.
class SDK110_EXPORT QAStTagFileReader {
public:
    enum LineKind { RecordLine, SkippedLine, MalformedLine };

    explicit QAStTagFileReader(QAStFile* file);

    // Reads the tag file at path. False when it cannot be opened ("Can't
    // open tag file." on the message console).
    bool read(const QString& path);
    // Reads tag-file text held in memory; name stands for the file in
    // messages.
    void readText(QByteArrayView text, const QString& name);

    // Records read into tags, malformed lines, and tags made.
    int recordCount() const { return m_records; }
    int malformedCount() const { return m_malformed; }
    int tagCount() const { return m_tags; }

    // Parses one line (without its line end) with the given decoding.
    // MalformedLine sets error to the expecting-message.
    static LineKind parseLine(QByteArrayView line, QAStTagRecord& record, QString* error,
                              bool utf8 = false);

private:
    void readLine(QByteArrayView line, int number, const QString& name);
    QAStATag* findParent(const QAStTagRecord& record) const;
    QAStATag* findScope(const QString& scope) const;
    void remember(QAStATag* tag, const QAStTagRecord& record);

    QAStFile* m_file;
    // The preferences' decoding of text that is not valid UTF-8.
    bool m_fallbackUtf8 = false;
    // The text being read decodes as UTF-8 throughout.
    bool m_utf8 = false;
    bool m_ada = false;
    QString m_separator;
    // Scopes made so far by their key: the record's scope and name joined
    // by the separator (the name alone for Ada, whose scopes are simple).
    QHash<QString, QAStATag*> m_scopes;
    QAStTagRecord m_record;
    int m_records = 0;
    int m_malformed = 0;
    int m_tags = 0;
};
