#pragma once

#include "QAStNodeTest.h"

// An object-testing node: object-testing scripts run against its sources.
//
// XML: "<object_testing>" around the test block. It holds test scripts and
// sources.
class SDK110_EXPORT QAStNodeObjectTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTest::QAStNodeTest;
    // A node read from its "object_testing" element.
    QAStNodeObjectTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                          QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The kind's driver (docs/formats/driver-scripts.md).
    bool executesDriver() const override;

protected:
    // Reads the "object_testing" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
