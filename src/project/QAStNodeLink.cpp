#include "QAStNodeLink.h"

#include <QDomElement>

QAStNodeLink::QAStNodeLink(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

void QAStNodeLink::setLinkedNode(const QString& name, const QString& className)
{
    m_linkedNode = name;
    m_className = className;
}

void QAStNodeLink::setLinkedNode(const QAStNode* node)
{
    if (node)
        setLinkedNode(node->name(), QString::fromLatin1(node->metaObject()->className()));
    else
        setLinkedNode(QString(), QString());
}

QAStNode* QAStNodeLink::linkedNode() const
{
    if (m_linkedNode.isEmpty())
        return nullptr;
    const QByteArray className =
        m_className.isEmpty() ? QByteArrayLiteral("QAStNode") : m_className.toLatin1();
    QAStData* top = rootProjectItem();
    return findLinked(top ? top : root(), className.constData());
}

QAStNode* QAStNodeLink::findLinked(QAStData* item, const char* className) const
{
    auto* node = qobject_cast<QAStNode*>(item);
    if (node && node != this && node->name() == m_linkedNode && node->inherits(className))
        return node;
    for (QAStData* c = item->child(); c; c = c->next()) {
        if (QAStNode* found = findLinked(c, className))
            return found;
    }
    return nullptr;
}

void QAStNodeLink::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "link");
    QAStNode::write(s, indent + 1);
    writeText(s, indent + 1, "linked_node", m_linkedNode);
    writeText(s, indent + 1, "class_name", m_className);
    closeElement(s, indent, "link");
}

bool QAStNodeLink::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "link") || !QAStNode::init(innerBlock(e, "node"), version))
        return false;
    m_linkedNode = readText(e, "linked_node");
    m_className = readText(e, "class_name");
    return isValid();
}

void QAStNodeLink::buildAfterChildren()
{
    runOwnStep(true);
}

void QAStNodeLink::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    runOwnStep(true);
}
