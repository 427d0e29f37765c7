#include "QAStNodeContainer.h"

#include <QDomElement>

QAStNodeContainer::QAStNodeContainer(const QString& name, const QPixmap& icon, QAStData* parent,
                                     QAStData* after)
    : QAStNode(name, icon, parent, after)
{
}

QAStNodeContainer::QAStNodeContainer(const QDomElement& e, int version, QAStData* parent,
                                     QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

QAStNodeContainer::QAStNodeContainer(QARes* res, QAStData* parent, QAStData* after)
    : QAStNode(res, parent, after)
{
}

QAStNodeContainer::QAStNodeContainer(QAStData* parent, QAStData* after) : QAStNode(parent, after)
{
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

QStringList QAStNodeContainer::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeGroup"), QStringLiteral("QAStNodeLibrary"),
            QStringLiteral("QAStNodeTest"), QStringLiteral("QAStNodeUser"),
            QStringLiteral("QAStNodeLink")};
}

QStringList QAStNodeContainer::addableChildKinds() const
{
    return {QStringLiteral("group"),
            QStringLiteral("application"),
            QStringLiteral("library"),
            QStringLiteral("unit_testing"),
            QStringLiteral("object_testing"),
            QStringLiteral("system_testing"),
            QStringLiteral("java_testing"),
            QStringLiteral("user"),
            QStringLiteral("link")};
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
