#pragma once

#include "QAStNodeTestScript.h"

// The test script of a system-testing node. Its children are the virtual
// testers built from it.
//
// XML: "<systemtesting_script>", the test_script block, "filepath" (the
// script's file key once more; read back only when the nodefile_ref block
// gives none), "virtual_tester_list" with the virtual testers,
// "</systemtesting_script>".
class SDK110_EXPORT QAStNodeSystemTestingScript : public QAStNodeTestScript {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTestScript::QAStNodeTestScript;
    // A node read from its "systemtesting_script" element.
    QAStNodeSystemTestingScript(const QDomElement& e, int version, QAStData* parent = nullptr,
                                QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;

protected:
    // Reads the "systemtesting_script" element. Returns isValid().
    bool init(const QDomElement& e, int version);
};
