#pragma once

#include "QAStData.h"
#include "QAStNodeSystemTesting.h"

#include <QStringList>

// Item kinds for the tests, registered with the factory under their tags.
// Each writes "<tag>", its data block, "<children>" with the children,
// "</children>", "</tag>", and reads the same back the way a real kind
// does: the protected constructor, then init on the data block, then
// initChildren.
class TestItem : public QAStData {
    Q_OBJECT
public:
    explicit TestItem(const QString& name, QAStData* parent = nullptr, QAStData* after = nullptr);
    TestItem(const QDomElement& e, int version, QAStData* parent, QAStData* after);

    void write(QTextStream& s, int indent) const override;
    bool acceptDrop(QAStData*) const override { return true; }

    // Opened for the tests.
    using QAStData::checkTag;
    using QAStData::initChildren;
    using QAStData::readBoolVal;
    using QAStData::readIntVal;
    using QAStData::readStrListVal;
    using QAStData::readStrMapVal;
    using QAStData::readStrVal;

protected:
    TestItem(const char* tag, const QDomElement& e, int version, QAStData* parent, QAStData* after,
             const QStringList& allowedClasses);
    virtual const char* tag() const { return "test_item"; }
};

// "test_folder": accepts only TestLeaf children.
class TestFolder : public TestItem {
    Q_OBJECT
public:
    explicit TestFolder(const QString& name, QAStData* parent = nullptr, QAStData* after = nullptr);
    TestFolder(const QDomElement& e, int version, QAStData* parent, QAStData* after);

protected:
    const char* tag() const override { return "test_folder"; }
};

// "test_leaf".
class TestLeaf : public TestItem {
    Q_OBJECT
public:
    explicit TestLeaf(const QString& name, QAStData* parent = nullptr, QAStData* after = nullptr);
    TestLeaf(const QDomElement& e, int version, QAStData* parent, QAStData* after);

protected:
    const char* tag() const override { return "test_leaf"; }
};

// Parses XML text and returns its root element (the document stays alive
// with the element).
QDomElement parseElement(const QString& xml);

// A deployment whose every field differs from its default.
QAStNodeSystemTesting::Deployment testDeployment(const QString& tester, const QString& host);

// Gives every field a node kind owns a value other than its default.
void setOwnFields(QAStNode* node);

// A node of every kind the project file knows below root, each below the
// first node (breadth first) that takes it, with fields of its own; false
// when a kind found no place.
bool addEveryKind(QAStNode* root);
