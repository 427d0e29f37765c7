#pragma once

#include "QAStData.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

class QAStFile;
class QAStNode;
class QMenu;
class QWidget;

// Base of the items found in, or standing for, a source file: a tag has the
// path of its file, the line of its declaration (-1 when unknown), a set of
// qualifier bits and a signature, and holds child tags only.
//
// Element "tag": the data block, then "filepath", "line", "qualifier",
// "signature", then "tag_child" holding the child tags; a child that is
// not a tag is reported ("x bad place") and dropped. Each kind wraps the
// form of its base in its own element (docs/formats/tags.md).
//
// The file path is absolute in memory once the tag stands in a tree whose
// directory() is known. It is read against that directory and written
// relative to it when the preferences' useRelativePath is set. A tag read
// while detached keeps a relative path as it is, and filePath() resolves it
// against the tree the tag is in when asked.
//
// Testing: canBeTested() applies the kind's testability rule and decides
// whether the "Test" action is offered; test() then makes a test node for
// the tag below a node of the project (see test()).
class SDK110_EXPORT QAStATag : public QAStData {
    Q_OBJECT
public:
    // Qualifier bits. The tagging reader adds the value of each access and
    // implementation word of a record (qualifierWordValue); the other bits
    // come from other producers of tags.
    enum Qualifier {
        Public = 0x1,
        Protected = 0x2,
        Private = 0x4,
        PureVirtual = 0x20,   // "pure virtual" and "abstract" share it
        Abstract = 0x20,
        Virtual = 0x40,
        Declaration = 0x80,   // the tag is its own declaration: its access
                              // words count, whatever a prototype says
        GenericUnit = 0x800,  // a generic package: tested through instances
        NotUnderTest = 0x10000, // on a file: its classes are not tested
        Instantiation = 0x20000 // a package made from a generic one
    };
    Q_ENUM(Qualifier)

    // A new tag, inserted into parent behind after.
    QAStATag(const QString& name, const QPixmap& icon, const QString& filePath, int line,
             QAStData* parent = nullptr, QAStData* after = nullptr);
    // A tag read from a "tag" element.
    QAStATag(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // A tag read from a group of the older resource form: the item's keys
    // (QAStData) and "filepath", "line", "qualifier", "signature"; a
    // missing key keeps its default.
    QAStATag(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    QString filePath() const;
    // The path as kept, without a copy: shared by the tags of one file, and
    // absolute once the tag stands in a tree with a directory.
    const QString& storedFilePath() const { return m_filePath; }
    void setFilePath(const QString& path);
    int line() const { return m_line; }
    void setLine(int line) { m_line = line; }
    int qualifier() const { return m_qualifier; }
    // Sets the bits; classes and methods also choose their icon by them.
    virtual void setQualifier(int qualifier);
    QString signature() const { return m_signature; }
    void setSignature(const QString& signature) { m_signature = signature; }

    // The value a qualifier word adds: "public" 1, "protected" 2,
    // "private" 4, "pure virtual" 32, "abstract" 32, "virtual" 64; any
    // other word 0.
    static int qualifierWordValue(QByteArrayView word);

    // The file item that holds the tag (itself for a file); null for a tag
    // outside any file.
    QAStFile* file() const;
    // The language bit of the tag's file (QAStFile::languageType).
    virtual int language() const;
    // The name, followed by the signature when there is one, so that
    // overloads are told apart.
    QString displayName() const override;
    // The name qualified by the enclosing scopes; the name itself here.
    virtual QString qualifiedName() const;
    // The text joining scope names in the tag's language: "." for Java and
    // Ada, "::" otherwise.
    QString scopeSeparator() const;

    // The child tags, in order; the list does not own them.
    QList<QAStATag*> children() const;
    // Every tag below this one, depth first.
    QList<QAStATag*> descendants() const;

    // The key of the tag's file (fileKeyOf(filePath())).
    virtual QString fileKey() const;
    // The key by which items refer to a file: its cleaned path, with "/"
    // separators, absolute when it could be resolved.
    static QString fileKeyOf(const QString& path);

    // Opens the tag's file at its line in the host's editor (line 0 when
    // unknown).
    virtual void edit();
    // What a double click does: edit().
    virtual void doubleClickAction();
    // The tag's context menu, parented to parent; the caller owns it. It
    // holds "Edit", the kind's own actions (localActionMenuItems), and
    // "Test" when a test parent is given and canBeTested().
    virtual QMenu* popupMenu(QWidget* parent, QAStNode* testParent = nullptr);
    // Adds the kind's own actions to a menu; none here.
    virtual void localActionMenuItems(QMenu* menu);

    // Whether the "Test" action is offered: the kind's testability rule.
    // No plain tag is tested.
    virtual bool canBeTested() const;
    // The nearest enclosing tag that can be tested; null when none.
    QAStATag* directlyTestableParent() const;
    // A tag whose parent is no tag (it stands right below its file).
    virtual bool isARootItem() const;
    // Makes a test node for the tag as the last child of parent (the
    // project or a group) and returns it; null when the tag cannot be
    // tested or parent takes no test node of the kind. The steps are in
    // docs/formats/tags.md: the kind by language, a fresh node named
    // "Test <qualified name>", then a source node for the file that holds
    // the tested code.
    virtual QAStNode* test(QAStNode* parent);
    // The body files of the tag's tree that a test of this tag may stub:
    // every C, C++ or Ada file of the tree but the tag's own.
    QStringList stubbableFiles() const;

    void write(QTextStream& s, int indent) const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStATag(QAStData* parent, QAStData* after);

    // Reads a "tag" element; false (item not valid) when the element or its
    // data block is bad.
    bool init(const QDomElement& e, int version);
    // Sets the icon by file name unless it is the one already set.
    void useIcon(const QString& fileName);
    // The name behind the qualified name of the enclosing tag (not the
    // file), joined by scopeSeparator(); the name alone at the top.
    QString scopedName() const;
    // The tags of the tree the tag stands in (every file of its file tree,
    // or the tags below its topmost tag when it is in no file tree).
    QList<QAStATag*> treeTags() const;
    // The file that holds the code a test of this tag compiles: the tag's
    // own here.
    virtual QString testedSourceFile() const;
    // The test node kind for the tag (see test()).
    virtual QString testNodeKind() const;
    // The test node kind for a language of QAStFile::languageType.
    static QString testNodeKindOf(int language);

private:
    QString m_filePath;
    int m_line = -1;
    int m_qualifier = 0;
    QString m_signature;
};
