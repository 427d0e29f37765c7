#pragma once

#include "QAStNodeTest.h"

// A Java-testing node: Java-testing scripts run against its sources.
//
// XML: "<java_testing>" around the test block. It holds Java-testing
// scripts and sources.
class SDK110_EXPORT QAStNodeJavaTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeJavaTesting(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                        QAStData* after = nullptr);
    // A node read from its "java_testing" element.
    QAStNodeJavaTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                        QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeJavaTesting(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    unsigned int propertyKind() const override;
    // The kind's driver (docs/formats/driver-scripts.md).
    QString driverKind() const override;
    bool executesDriver() const override;
    QStringList allowedChildClasses() const override;
    QStringList addableChildKinds() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeJavaTesting(QAStData* parent, QAStData* after);

    // Reads the "java_testing" element: the test block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
