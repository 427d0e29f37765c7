#include "QAStNodeContainer.h"

QAStNodeContainer::QAStNodeContainer(const QString& name, const QPixmap& icon, QAStData* parent,
                                     QAStData* after)
    : QAStNode(name, icon, parent, after)
{
}

QAStNodeContainer::QAStNodeContainer(const QDomElement& e, int version, QAStData* parent,
                                     QAStData* after)
    : QAStNode(e, version, parent, after)
{
}

QAStNodeContainer::QAStNodeContainer(QARes* res, QAStData* parent, QAStData* after)
    : QAStNode(res, parent, after)
{
}

QAStNodeContainer::QAStNodeContainer(QAStData* parent, QAStData* after)
    : QAStNode(parent, after)
{
}

QAStNodeContainer::~QAStNodeContainer() = default;
