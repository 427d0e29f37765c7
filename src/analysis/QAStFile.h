#pragma once

#include "QAStTestedTag.h"

// The item for one file on disk, in a folder of the project's file tree.
// Its path is the tag's file path (absolute in memory, see QAStATag) and
// its name the path's file name. Nodes refer to it by fileKey().
//
// Element "file" wrapping the "tested_tag" element; the tags found in the
// file are the children inside its "tag_child".
class SDK110_EXPORT QAStFile : public QAStTestedTag {
    Q_OBJECT
public:
    // A new file item named after the path's file name, inserted into
    // parent behind after; a relative path is taken against the parent's
    // directory().
    explicit QAStFile(const QString& path, QAStData* parent = nullptr, QAStData* after = nullptr);
    // A file read from a "file" element.
    QAStFile(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads a "file" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
};
