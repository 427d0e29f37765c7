#pragma once

#include "QAStProject.h"

// A project included in another one. The including project's file keeps
// only where the sub-project's own project file lies and whether it is
// loaded; the sub-project's content is read from and saved to that file by
// the project loader.
//
// Element "sub_project": the data block, then "project_file" (the path
// relative to the including project's directory, QAFileUtil), then
// "unload" (bool).
//
// The including project's directory is the parent's directory(). A
// sub-project read while detached keeps a relative path as it is, and
// projectFile() resolves it against the tree it is in when asked.
class SDK110_EXPORT QAStSubProject : public QAStProject {
    Q_OBJECT
public:
    // A sub-project named after the file's base name, inserted into parent
    // behind after; a relative projectFile is taken against the parent's
    // directory().
    explicit QAStSubProject(const QString& projectFile, QAStData* parent = nullptr,
                            QAStData* after = nullptr);
    // A sub-project read from a "sub_project" element.
    QAStSubProject(const QDomElement& e, int version, QAStData* parent = nullptr,
                   QAStData* after = nullptr);

    // The sub-project's own project file, absolute once the including
    // project's directory is known.
    QString projectFile() const;
    void setProjectFile(const QString& path);
    // The sub-project is left out of the load.
    bool isUnloaded() const { return m_unloaded; }
    void setUnloaded(bool unloaded) { m_unloaded = unloaded; }

    // The node's rule, not the project's: a configuration of the
    // sub-project inherits from the same-named one of its parent node.
    QAStConfiguration* inheritConfiguration(const QAStConfiguration* c) const override;

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads a "sub_project" element; false (item not valid) when the
    // element or its data block is bad.
    bool init(const QDomElement& e, int version);

private:
    // The including project's directory.
    QString includingDirectory() const;

    QString m_projectFile;
    bool m_unloaded = false;
};
