#pragma once

#include "QAStData.h"

#include <QList>
#include <QString>

// Base of the items found in, or standing for, a source file: a tag has the
// path of its file, the line of its declaration (-1 when unknown), a set of
// qualifier bits and a signature, and holds child tags only.
//
// Element "tag": the data block, then "filepath", "line", "qualifier",
// "signature", then "tag_child" holding the child tags; a child that is
// not a tag is reported ("x bad place") and dropped.
//
// The file path is absolute in memory once the tag stands in a tree whose
// directory() is known. It is read against that directory and written
// relative to it when the preferences' useRelativePath is set. A tag read
// while detached keeps a relative path as it is, and filePath() resolves it
// against the tree the tag is in when asked.
class SDK110_EXPORT QAStATag : public QAStData {
    Q_OBJECT
public:
    // A new tag, inserted into parent behind after.
    QAStATag(const QString& name, const QPixmap& icon, const QString& filePath, int line,
             QAStData* parent = nullptr, QAStData* after = nullptr);
    // A tag read from a "tag" element.
    QAStATag(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);

    QString filePath() const;
    void setFilePath(const QString& path);
    int line() const { return m_line; }
    void setLine(int line) { m_line = line; }
    int qualifier() const { return m_qualifier; }
    virtual void setQualifier(int qualifier);
    QString signature() const { return m_signature; }
    void setSignature(const QString& signature) { m_signature = signature; }

    // The child tags, in order; the list does not own them.
    QList<QAStATag*> children() const;

    // The key of the tag's file (fileKeyOf(filePath())).
    virtual QString fileKey() const;
    // The key by which items refer to a file: its cleaned path, with "/"
    // separators, absolute when it could be resolved.
    static QString fileKeyOf(const QString& path);

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStATag(QAStData* parent, QAStData* after);

    // Reads a "tag" element; false (item not valid) when the element or its
    // data block is bad.
    bool init(const QDomElement& e, int version);

private:
    QString m_filePath;
    int m_line = -1;
    int m_qualifier = 0;
    QString m_signature;
};
