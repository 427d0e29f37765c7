#pragma once

#include "QAStNodeTest.h"

// An application build node: its sources, libraries and object-testing
// scripts are built into one program.
//
// XML: "<application>" around the test block. It holds sources, libraries,
// test scripts, user nodes and links.
class SDK110_EXPORT QAStNodeApplication : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTest::QAStNodeTest;
    // A node read from its "application" element.
    QAStNodeApplication(const QDomElement& e, int version, QAStData* parent = nullptr,
                        QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The kind's driver (docs/formats/driver-scripts.md).
    // Compiles its sources and links them.
    bool linksObjects() const override;
    bool executesDriver() const override;

protected:
    // The test program runs through the Execute driver: its runtime output
    // is split.
    bool splitsRuntimeOutput() const override;
    // Prepares the link step (QAStNodeSource::prepareLinkStep).
    void buildFirstChild() override;

    // Reads the "application" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
