#pragma once

#include "QAStAFunctionTag.h"

class QAStAClassTag;

// A member function found in a source file, with its complete (qualified)
// name ("geo::Shape::area"). It stands below its class tag when the class
// is in the same file; a body defined apart from its class (a ".cpp"
// file) stands below the file or the enclosing namespace, and finds its
// class through classPrefix().
//
// Element "method": the "function" form, then "complete_name".
//
// Icon: "method_private_xpm" when the private bit (4) is set, else
// "method_protected_xpm" with the protected bit (2), else the function
// icon.
class SDK110_EXPORT QAStAMethodTag : public QAStAFunctionTag {
    Q_OBJECT
public:
    // A new method, inserted into parent behind after.
    QAStAMethodTag(const QString& name, const QString& filePath, int line,
                   QAStData* parent = nullptr, QAStData* after = nullptr);
    // A method read from a "method" element.
    QAStAMethodTag(const QDomElement& e, int version, QAStData* parent = nullptr,
                   QAStData* after = nullptr);

    QString completeName() const { return m_completeName; }
    void setCompleteName(const QString& name) { m_completeName = name; }
    void setQualifier(int qualifier) override;
    // The complete name; else the class's qualified name, the separator
    // and the name.
    QString qualifiedName() const override;

    // The class: the parent when it is a class tag, else the class tag of
    // the tree whose qualified name is classPrefix(); null when none.
    QAStAClassTag* ofClass() const;
    // The complete name without its last part ("geo::Shape" for
    // "geo::Shape::area"); the parent class's qualified name when there is
    // no complete name.
    QString classPrefix() const;
    // The method's own flag is "public set and pure virtual clear" in its
    // qualifier when the Declaration bit (0x80) is set or it has no
    // declaration tag, else its declaration's flag. It is directly
    // testable only when that flag holds and it has a class that is
    // itself directly testable.
    bool isDirectlyTestable() const override;

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads a "method" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
    // A Java method is tested by a Java test node, any other by an object
    // test node.
    QString testNodeKind() const override;

private:
    // The flag of the rule above, for this tag alone.
    bool ownAccessFlag() const;
    void chooseIcon();

    QString m_completeName;
};
