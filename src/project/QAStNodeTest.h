#pragma once

#include "QAStNodeContainer.h"

// Base of the test nodes and of the application node: a container whose
// block is "test" rather than "group".
//
// XML, the test block: "<test>", the node block, "<test_child>", the
// children, "</test_child>", "</test>". Each test kind opens its own element
// around it. The block alone is not an item of the project file, so "test"
// has no row in the factory.
//
// By default it holds test scripts and sources.
class SDK110_EXPORT QAStNodeTest : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeTest(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                 QAStData* after = nullptr);
    // A node read from a test block ("test" element).
    QAStNodeTest(const QDomElement& e, int version, QAStData* parent = nullptr,
                 QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeTest(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStNodeTest() override;

    // The test block.
    void write(QTextStream& s, int indent) const override;
    unsigned int propertyKind() const override;
    QStringList allowedChildClasses() const override;
    QStringList addableChildKinds() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeTest(QAStData* parent, QAStData* after);

    // Reads the test block: the node block (required), then the children of
    // "test_child". Returns isValid().
    bool init(const QDomElement& testElement, int version);
};
