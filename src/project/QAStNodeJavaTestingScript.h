#pragma once

#include "QAStNodeTestScript.h"

// The test script of a Java-testing node. The settings descriptor has no
// kind name of its own for it: it shows the settings of test scripts.
//
// XML: "<javatesting_script>" around the test_script block.
class SDK110_EXPORT QAStNodeJavaTestingScript : public QAStNodeTestScript {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTestScript::QAStNodeTestScript;
    // A node read from its "javatesting_script" element.
    QAStNodeJavaTestingScript(const QDomElement& e, int version, QAStData* parent = nullptr,
                              QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads the "javatesting_script" element: the test_script block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
