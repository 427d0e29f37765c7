#pragma once

#include "QAStNodeContainer.h"

// A group of nodes, gathered to be built and run together.
//
// XML: "<group>" around the container block; it holds what a container
// holds.
class SDK110_EXPORT QAStNodeGroup : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeGroup(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                  QAStData* after = nullptr);
    // A node read from its "group" element.
    QAStNodeGroup(const QDomElement& e, int version, QAStData* parent = nullptr,
                  QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeGroup(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    unsigned int propertyKind() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeGroup(QAStData* parent, QAStData* after);

    // Reads the "group" element: the container block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
