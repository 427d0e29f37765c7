#pragma once

#include "QAStNodeTest.h"

// An object-testing node: object-testing scripts run against its sources.
//
// XML: "<object_testing>" around the test block. It holds test scripts and
// sources.
class SDK110_EXPORT QAStNodeObjectTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeObjectTesting(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                          QAStData* after = nullptr);
    // A node read from its "object_testing" element.
    QAStNodeObjectTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                          QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeObjectTesting(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    unsigned int propertyKind() const override;
    // The kind's driver (docs/formats/driver-scripts.md).
    QString driverKind() const override;
    bool executesDriver() const override;
    QStringList allowedChildClasses() const override;
    QStringList addableChildKinds() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeObjectTesting(QAStData* parent, QAStData* after);

    // Reads the "object_testing" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
