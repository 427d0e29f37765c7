#pragma once

#include "QAStTestedTag.h"

#include <QList>
#include <QStringList>

class QAStAMethodTag;

// A class or an interface found in a source file, with the names of its
// base classes as the tagging gave them. Its methods and nested classes
// are its children.
//
// Element "class": the "tested_tag" form, then "inherits" (a list).
//
// Icon: "class_private_xpm" when the private bit (4) is set, else
// "class_protected_xpm" with the protected bit (2), else "class_xpm".
class SDK110_EXPORT QAStAClassTag : public QAStTestedTag {
    Q_OBJECT
public:
    // A new class, inserted into parent behind after.
    QAStAClassTag(const QString& name, const QString& filePath, int line,
                  QAStData* parent = nullptr, QAStData* after = nullptr);
    // A class read from a "class" element.
    QAStAClassTag(const QDomElement& e, int version, QAStData* parent = nullptr,
                  QAStData* after = nullptr);

    QStringList inherits() const { return m_inherits; }
    void setInherits(const QStringList& bases) { m_inherits = bases; }

    void setQualifier(int qualifier) override;
    // The enclosing tag's qualified name, the separator and the name.
    QString qualifiedName() const override;

    // The class this one is nested in; null for a class at the top.
    QAStAClassTag* ofClass() const;
    // The methods right below the class, in order (not owned).
    QList<QAStAMethodTag*> methods() const;
    // The first of them named name; null when none.
    QAStAMethodTag* method(const QString& name) const;
    // The base classes found as class tags of the tree: for each name of
    // inherits(), the class of that qualified name, else the first class
    // of that simple name.
    QList<QAStAClassTag*> generalize() const;

    // A class is testable unless its file has the NotUnderTest bit.
    bool isTestable() const;
    // Testable, and either a root item or a nested class neither private
    // nor protected inside a directly testable class.
    bool isDirectlyTestable() const;
    // A class is a root item when it has no enclosing class.
    bool isARootItem() const override;
    bool canBeTested() const override;

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStAClassTag(QAStData* parent, QAStData* after);

    // Reads a "class" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);
    // The body file of the first method implemented in another file, else
    // the class's own file.
    QString testedSourceFile() const override;
    // A Java class is tested by a Java test node, any other by an object
    // test node.
    QString testNodeKind() const override;

private:
    void chooseIcon();

    QStringList m_inherits;
};
