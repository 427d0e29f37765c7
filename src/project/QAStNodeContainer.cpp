#include "QAStNodeContainer.h"

#include <QDomElement>

QAStNodeContainer::QAStNodeContainer(const QDomElement& e, int version, QAStData* parent,
                                     QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

QAStNodeContainer::~QAStNodeContainer() = default;

void QAStNodeContainer::write(QTextStream& s, int indent) const
{
    writeBlock(s, indent, "group", "group_child");
}

bool QAStNodeContainer::init(const QDomElement& groupElement, int version)
{
    return initBlock(groupElement, version, "group", "group_child");
}

void QAStNodeContainer::writeBlock(QTextStream& s, int indent, const char* blockTag,
                                   const char* childTag) const
{
    openElement(s, indent, blockTag);
    QAStNode::write(s, indent + 1);
    writeChildList(s, indent + 1, childTag);
    closeElement(s, indent, blockTag);
}

bool QAStNodeContainer::initBlock(const QDomElement& e, int version, const char* blockTag,
                                  const char* childTag)
{
    if (!checkElement(e, blockTag) || !QAStNode::init(innerBlock(e, "node"), version))
        return false;
    initChildList(e, childTag, version);
    return isValid();
}

void QAStNodeContainer::buildAfterChildren()
{
    runOwnStep(true);
}

void QAStNodeContainer::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    runOwnStep(true);
}
