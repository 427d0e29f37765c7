#pragma once

#include "QAStNodeTest.h"

// A unit-testing node: unit-testing scripts run against its sources.
//
// XML: "<unit_testing>" around the test block. It holds unit-testing
// scripts and sources.
class SDK110_EXPORT QAStNodeUnitTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTest::QAStNodeTest;
    // A node read from its "unit_testing" element.
    QAStNodeUnitTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                        QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The kind's driver (docs/formats/driver-scripts.md).
    // Compiles its sources and links them.
    bool linksObjects() const override;
    // The sources' objects and the script's.
    QStringList builtObjects() const override;
    // The absolute path of the first selected unit-testing script child;
    // empty when none is.
    QString selectedScript() const;
    bool executesDriver() const override;

protected:
    // The test program runs through the Execute driver: its runtime output
    // is split.
    bool splitsRuntimeOutput() const override;
    // Prepares the link step (QAStNodeSource::prepareLinkStep).
    void buildFirstChild() override;

    // Reads the "unit_testing" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
