#pragma once

#include "QAStTestedTag.h"

#include <QList>

class QAStAFunctionTag;

// A package (Ada, Java) or a namespace (C++) found in a source file, with
// its complete (qualified) name. Its functions, classes and inner packages
// are its children.
//
// Element "package": the "tested_tag" form, then "complete_name".
class SDK110_EXPORT QAStAPackageTag : public QAStTestedTag {
    Q_OBJECT
public:
    // A new package, inserted into parent behind after.
    QAStAPackageTag(const QString& name, const QString& filePath, int line,
                    QAStData* parent = nullptr, QAStData* after = nullptr);
    // A package read from a "package" element.
    QAStAPackageTag(const QDomElement& e, int version, QAStData* parent = nullptr,
                    QAStData* after = nullptr);

    QString completeName() const { return m_completeName; }
    void setCompleteName(const QString& name) { m_completeName = name; }
    // The complete name; the enclosing tag's qualified name, the separator
    // and the name when it has none.
    QString qualifiedName() const override;

    // The free functions right below the package, in order (not owned).
    QList<QAStAFunctionTag*> functions() const;
    // A package is testable when its qualifier has neither the
    // GenericUnit bit (0x800) nor the Instantiation bit (0x20000).
    bool isTestable() const;
    // Testable, and standing in a body file: not a header file, not an
    // Ada declaration file (".ads").
    bool isInstrumentable() const;
    bool canBeTested() const override;

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStAPackageTag(QAStData* parent, QAStData* after);

    // Reads a "package" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
    // The file of the package of the same qualified name in a body file
    // (an Ada body for a declaration file), else the package's own.
    QString testedSourceFile() const override;

private:
    QString m_completeName;
};
