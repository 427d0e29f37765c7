#pragma once

#include "QAStData.h"

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

class QAStFile;

// A folder of a project's file tree, holding folders and files.
//
// Filters: wildcard patterns separated by ";" ("*.c;*.h"), blanks around a
// pattern ignored, matched against the whole file name (not the path)
// without regard to case. A folder without filters takes any file when the
// user puts one there, but never attracts files on its own: files added to
// the tree go to the first folder, in depth-first order, whose filters
// match (QAStRootFolder::addFiles).
//
// Element "folder": the data block, then "filters" (encoded text), then
// "folder_child" holding the child "folder" and "file" elements; any other
// child is reported ("x bad place") and dropped.
class SDK110_EXPORT QAStFolder : public QAStData {
    Q_OBJECT
public:
    // A new folder without filters, inserted into parent behind after.
    QAStFolder(const QString& name, const QPixmap& icon = QPixmap(), QAStData* parent = nullptr,
               QAStData* after = nullptr);
    // A folder read from a "folder" element.
    QAStFolder(const QDomElement& e, int version, QAStData* parent = nullptr,
               QAStData* after = nullptr);

    QString filters() const { return m_filters; }
    void setFilters(const QString& filters);
    // The patterns of filters(), blanks trimmed, empty ones left out.
    QStringList filterPatterns() const;
    bool hasFilters() const { return !m_patterns.isEmpty(); }
    // Whether the file name of path passes the filters; true when there
    // are none.
    bool matches(const QString& path) const;

    // The child folders, in order.
    QList<QAStFolder*> folders() const;
    // The files of this folder and of every folder below, depth first.
    QList<QAStFile*> files() const;
    // The file of this subtree with that key (QAStATag::fileKeyOf); a
    // relative path is first taken against directory(). Null when none.
    QAStFile* file(const QString& key) const;

    void write(QTextStream& s, int indent) const override;
    // Folders (not the root folder, nor this one or one above it), and
    // files that pass the filters and are not yet elsewhere in
    // the same file tree (a file stands once in a tree).
    bool acceptDrop(QAStData* item) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStFolder(QAStData* parent, QAStData* after);

    // Reads a "folder" element; false (item not valid) when the element or
    // its data block is bad.
    bool init(const QDomElement& e, int version);

private:
    void collectFiles(QList<QAStFile*>& found) const;
    // The outermost folder above this one, or this one.
    const QAStFolder* topFolder() const;

    QString m_filters;
    QList<QRegularExpression> m_patterns;
};
