#pragma once

#include "QAStNodeTestScript.h"

// The test script of a unit-testing node.
//
// XML: "<unittesting_script>" around the test_script block.
class SDK110_EXPORT QAStNodeUnitTestingScript : public QAStNodeTestScript {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeUnitTestingScript(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                              QAStData* after = nullptr);
    // A node read from its "unittesting_script" element.
    QAStNodeUnitTestingScript(const QDomElement& e, int version, QAStData* parent = nullptr,
                              QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeUnitTestingScript(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    unsigned int propertyKind() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeUnitTestingScript(QAStData* parent, QAStData* after);

    // Reads the "unittesting_script" element: the test_script block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
