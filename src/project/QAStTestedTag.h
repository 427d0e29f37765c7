#pragma once

#include "QAStATag.h"

// A tag that can be the subject of a test: the classes, structures,
// packages and functions found in a source file, and the file itself.
//
// Element "tested_tag" wrapping the "tag" element.
//
// Only its kinds are made: the factory knows no "tested_tag" element of
// its own.
class SDK110_EXPORT QAStTestedTag : public QAStATag {
    Q_OBJECT
public:
    void write(QTextStream& s, int indent) const override;

protected:
    // A new tag, inserted into parent behind after.
    QAStTestedTag(const QString& name, const QPixmap& icon, const QString& filePath, int line,
                  QAStData* parent = nullptr, QAStData* after = nullptr);
    // For kinds that read their own element (see QAStData).
    QAStTestedTag(QAStData* parent, QAStData* after);

    // Reads a "tested_tag" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
};
