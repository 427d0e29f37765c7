#pragma once

#include "QAStNodeContainer.h"

// A group of nodes, gathered to be built and run together.
//
// XML: "<group>" around the container block; it holds what a container
// holds.
class SDK110_EXPORT QAStNodeGroup : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeContainer::QAStNodeContainer;
    // A node read from its "group" element.
    QAStNodeGroup(const QDomElement& e, int version, QAStData* parent = nullptr,
                  QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;

protected:
    // Reads the "group" element: the container block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
