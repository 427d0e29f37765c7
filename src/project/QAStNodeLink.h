#pragma once

#include "QAStNode.h"

// A link to another node of the project, known by its name and class: the
// linked node is built or used in place of the link. The settings
// descriptor has no kind name for links, so a link shows the unrestricted
// settings only.
//
// XML: "<link>", the node block, "linked_node" (the linked node's name),
// "class_name" (its class), "</link>".
class SDK110_EXPORT QAStNodeLink : public QAStNode {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNode::QAStNode;
    // A node read from its "link" element.
    QAStNodeLink(const QDomElement& e, int version, QAStData* parent = nullptr,
                 QAStData* after = nullptr);

    QString linkedNodeName() const { return m_linkedNode; }
    QString linkedClassName() const { return m_className; }
    // Links to the node of that name whose class inherits className.
    void setLinkedNode(const QString& name, const QString& className);
    // Links to node: its name and class.
    void setLinkedNode(const QAStNode* node);
    // The linked node, looked up by name in the outermost project (the
    // whole tree outside a project), depth first: the first node of that
    // name, other than the link itself, whose class inherits the linked
    // class (any node when no class is kept). Null when none.
    QAStNode* linkedNode() const;

    void write(QTextStream& s, int indent) const override;

protected:
    // Nothing of its own to run unless its text or driver says so: the walk
    // ends well after the children.
    void buildAfterChildren() override;
    void executeAfterChildren(bool debug) override;

public:

protected:
    // Reads the "link" element. Returns isValid().
    bool init(const QDomElement& e, int version);

private:
    QAStNode* findLinked(QAStData* item, const char* className) const;

    QString m_linkedNode;
    QString m_className;
};
