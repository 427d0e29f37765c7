#pragma once

#include "QAStNode.h"

// A node standing for one file, known by its file key: the path as the
// project file keeps it, relative to the project's directory or absolute.
//
// XML, the nodefile_ref block: "<nodefile_ref>", the node block,
// "filepath" (the file key), "</nodefile_ref>". The source and test-script
// kinds open their own element around it; the block alone is not an item
// of the project file, so "nodefile_ref" has no row in the factory.
class SDK110_EXPORT QAStNodeFileRef : public QAStNode {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeFileRef(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                    QAStData* after = nullptr);
    // A node read from a nodefile_ref block.
    QAStNodeFileRef(const QDomElement& e, int version, QAStData* parent = nullptr,
                    QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeFileRef(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStNodeFileRef() override;

    QString fileKey() const { return m_fileKey; }
    void setFileKey(const QString& key);
    // The file key made absolute from the directory of the node's project;
    // the key as it is, cleaned, when there is no project directory.
    QString absoluteFilePath() const;

    // The nodefile_ref block.
    void write(QTextStream& s, int indent) const override;

protected:
    // Nothing of its own to run unless its text or driver says so: the walk
    // ends well after the children.
    void buildAfterChildren() override;
    void executeAfterChildren(bool debug) override;

public:

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeFileRef(QAStData* parent, QAStData* after);

    // Reads the nodefile_ref block: the node block (required), then the
    // file key. Returns isValid().
    bool init(const QDomElement& fileRefElement, int version);

private:
    QString m_fileKey;
};
