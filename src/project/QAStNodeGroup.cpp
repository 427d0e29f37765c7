#include "QAStNodeGroup.h"

#include <QDomElement>

QAStNodeGroup::QAStNodeGroup(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

void QAStNodeGroup::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "group");
    QAStNodeContainer::write(s, indent + 1);
    closeElement(s, indent, "group");
}

bool QAStNodeGroup::init(const QDomElement& e, int version)
{
    return checkElement(e, "group") && QAStNodeContainer::init(innerBlock(e, "group"), version);
}

