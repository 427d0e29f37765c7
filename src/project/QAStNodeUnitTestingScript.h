#pragma once

#include "QAStNodeTestScript.h"

// The test script of a unit-testing node.
//
// XML: "<unittesting_script>" around the test_script block.
class SDK110_EXPORT QAStNodeUnitTestingScript : public QAStNodeTestScript {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTestScript::QAStNodeTestScript;
    // A node read from its "unittesting_script" element.
    QAStNodeUnitTestingScript(const QDomElement& e, int version, QAStData* parent = nullptr,
                              QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads the "unittesting_script" element: the test_script block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
