#pragma once

#include "QAStNodeTest.h"

// A Java-testing node: Java-testing scripts run against its sources.
//
// XML: "<java_testing>" around the test block. It holds Java-testing
// scripts and sources.
class SDK110_EXPORT QAStNodeJavaTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTest::QAStNodeTest;
    // A node read from its "java_testing" element.
    QAStNodeJavaTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                        QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The kind's driver (docs/formats/driver-scripts.md).
    bool executesDriver() const override;

protected:
    // Reads the "java_testing" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
