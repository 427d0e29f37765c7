#pragma once

#include "QAStNodeTestScript.h"

// A virtual tester: the system-testing script built for one target and
// deployed as one or more instances (QAStNodeSystemTesting's deployment
// table names it). Its instance selection is the test_script block's
// "instance".
//
// XML: "<virtual_tester>", the test_script block, "virtual_tester_child"
// with the children, "</virtual_tester>". It holds sources built into it
// (stubs, for instance).
class SDK110_EXPORT QAStNodeVirtualTester : public QAStNodeTestScript {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTestScript::QAStNodeTestScript;
    // A node read from its "virtual_tester" element.
    QAStNodeVirtualTester(const QDomElement& e, int version, QAStData* parent = nullptr,
                          QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;

protected:
    // Reads the "virtual_tester" element. Returns isValid().
    bool init(const QDomElement& e, int version);
};
