#pragma once

#include "QAStFolder.h"

// The root of a project's file tree, kept in the project's object
// information file (".inf") rather than in the project file.
//
// Layout of the file (docs/formats/object-information-file.md): the XML
// declaration, a DOCTYPE for "objects" whose SYSTEM identifier is
// <install>/lib/project.dtd, then "objects" holding this folder's "folder"
// element and "version_file" (1).
//
// Paths of the files below are kept relative to directory(): the
// directory of the object information file last opened or written, or the
// one given with setDirectory, else the parent's.
class SDK110_EXPORT QAStRootFolder : public QAStFolder {
    Q_OBJECT
public:
    // The version_file value written.
    static constexpr int versionFile = 1;

    // A new, empty root folder; it can be neither deleted nor copied.
    explicit QAStRootFolder(const QString& name, QAStData* parent = nullptr,
                            QAStData* after = nullptr);

    QString directory() const override;
    void setDirectory(const QString& directory);

    // Replaces the tree with the one of an object information file and
    // takes the file's directory. False, with the reason in the load
    // report, when the file is missing, unreadable, not XML, or lacks its
    // "objects" or "folder" element (the tree is then empty); faults below
    // the folder are reported and skipped.
    bool open(const QString& file);

    using QAStFolder::write;
    // Writes the object information file through a temporary file, so a
    // failed save leaves the old one whole; the file's directory becomes
    // this folder's directory. On failure the reason goes to the message
    // console and false is returned.
    bool write(const QString& file);
    // The whole object information file.
    void writeDocument(QTextStream& s) const;

    // Adds a file item for each path not yet in the tree (relative paths
    // are taken against directory()), into the first folder, depth first
    // from this one, whose filters match it, else into this folder. Returns
    // the items added, in the order of paths.
    QList<QAStFile*> addFiles(const QStringList& paths);

    // Tidies the tree, in this order:
    // 1. a file whose key is already found earlier (depth first) is
    //    deleted; files whose file no longer exists on disk are kept;
    // 2. a file whose folder has filters that it does not match moves to
    //    the folder addFiles would choose for it;
    // 3. in every folder, folders come before files, each by name (case
    //    ignored, ties by case); an alphabetically sorted folder keeps
    //    plain name order.
    // Empty folders are kept: they wait for the files their filters name.
    void normalize();

private:
    // The first of folders (this one's, depth first) whose non-empty
    // filters match path; this folder when none does.
    QAStFolder* folderFor(const QList<QAStFolder*>& folders, const QString& path);
    bool readObjects(const QDomElement& objects);
    void removeDuplicateFiles();
    void placeMisfiledFiles();
    static void orderChildren(QAStFolder* folder);
    static bool reportSaveFailure(const QString& file, const QString& reason);

    QString m_directory;
};
