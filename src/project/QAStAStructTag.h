#pragma once

#include "QAStTestedTag.h"

// A structure found in a source file.
//
// Element "struct": the "tested_tag" form.
class SDK110_EXPORT QAStAStructTag : public QAStTestedTag {
    Q_OBJECT
public:
    // A new structure, inserted into parent behind after.
    QAStAStructTag(const QString& name, const QString& filePath, int line,
                   QAStData* parent = nullptr, QAStData* after = nullptr);
    // A structure read from a "struct" element.
    QAStAStructTag(const QDomElement& e, int version, QAStData* parent = nullptr,
                   QAStData* after = nullptr);

    QString qualifiedName() const override;
    // A structure is a root item when it has no parent, or its parent is
    // not a class tag.
    bool isARootItem() const override;
    // A root structure can be tested.
    bool canBeTested() const override;

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStAStructTag(QAStData* parent, QAStData* after);

    // Reads a "struct" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
};
