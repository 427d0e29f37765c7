#pragma once

#include "QAStTestedTag.h"

class QAStAPackageTag;

// A free function (or an Ada subprogram) found in a source file. Its
// signature is the parameter list as the tagging gave it.
//
// Element "function": the "tested_tag" form.
//
// Declaration and implementation: the same function may stand as a
// prototype in a declaration file (a header file, an Ada declaration
// file ".ads") and as a body in another file. declaration() and
// implementation() find those tags among the tags of the tree: the same
// kind of tag with the same qualified name and the same signature once
// parameter names, default values and blanks are left out; when no
// signature matches, the only namesake of that side, if there is just one.
class SDK110_EXPORT QAStAFunctionTag : public QAStTestedTag {
    Q_OBJECT
public:
    // A new function, inserted into parent behind after.
    QAStAFunctionTag(const QString& name, const QString& filePath, int line,
                     QAStData* parent = nullptr, QAStData* after = nullptr);
    // A function read from a "function" element.
    QAStAFunctionTag(const QDomElement& e, int version, QAStData* parent = nullptr,
                     QAStData* after = nullptr);

    QString qualifiedName() const override;

    // The nearest enclosing package; null when none.
    QAStAPackageTag* ofPackage() const;
    // The matching tag in a declaration file: this one when it stands in
    // one; null when none is found.
    QAStAFunctionTag* declaration() const;
    // The matching tag in a body file: this one when it stands in one;
    // null when none is found.
    QAStAFunctionTag* implementation() const;
    // Open the declaration's, or the implementation's, file at its line.
    void editDeclaration();
    void editImplementation();
    // "Edit Declaration" and "Edit Implementation", each enabled when its
    // tag is found.
    void localActionMenuItems(QMenu* menu) override;

    // A function is directly testable unless its file is an Ada file.
    virtual bool isDirectlyTestable() const;
    bool canBeTested() const override;

    // Whether a file holds declarations: a header file, or an Ada
    // declaration file (".ads").
    static bool isDeclarationFile(const QString& path);
    // A signature reduced for comparison: parameter types only, no names,
    // default values or blanks that do not separate words; "(void)" is
    // "()". Trailing qualifiers ("const") stay.
    static QString normalizedSignature(const QString& signature);

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStAFunctionTag(QAStData* parent, QAStData* after);

    // Reads a "function" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
    // The implementation's file, else the function's own.
    QString testedSourceFile() const override;
    // By the language of the tested source file.
    QString testNodeKind() const override;

private:
    // The matching tag in a declaration file (wanted true) or in a body
    // file (false).
    QAStAFunctionTag* counterpart(bool inDeclarationFile) const;
};
