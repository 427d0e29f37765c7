#include "QAStNodeGroup.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeGroup> registration("group", QT_TRANSLATE_NOOP("QAStNode",
                                                                                        "Group"));
}

QAStNodeGroup::QAStNodeGroup(const QString& name, const QPixmap& icon, QAStData* parent,
                             QAStData* after)
    : QAStNodeContainer(name, icon, parent, after)
{
}

QAStNodeGroup::QAStNodeGroup(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

QAStNodeGroup::QAStNodeGroup(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeContainer(res, parent, after)
{
}

QAStNodeGroup::QAStNodeGroup(QAStData* parent, QAStData* after) : QAStNodeContainer(parent, after)
{
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

unsigned int QAStNodeGroup::propertyKind() const
{
    return QAStPropertyFilters::Group;
}
