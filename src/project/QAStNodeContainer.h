#pragma once

#include "QAStNode.h"

// A node that holds other nodes: the project, sub-projects, groups,
// libraries, applications and test nodes.
class SDK110_EXPORT QAStNodeContainer : public QAStNode {
    Q_OBJECT
public:
    // A new container, inserted into parent behind after.
    QAStNodeContainer(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                      QAStData* after = nullptr);
    // A container read from a data block of the project file.
    QAStNodeContainer(const QDomElement& e, int version, QAStData* parent = nullptr,
                      QAStData* after = nullptr);
    // A container read from the older resource format.
    QAStNodeContainer(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStNodeContainer() override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeContainer(QAStData* parent, QAStData* after);
};
