#pragma once

#include "QAStNode.h"

// A node that holds other nodes: the project, sub-projects, groups,
// libraries, applications and test nodes.
//
// XML, the container block: "<group>", the node block, "<group_child>",
// the children each written by its own write, "</group_child>",
// "</group>". The test nodes keep the same shape under other tags ("test",
// "test_child"), through writeBlock and initBlock.
//
// By default it holds what a group holds: groups, libraries, applications
// and test nodes, user nodes and links.
class SDK110_EXPORT QAStNodeContainer : public QAStNode {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNode::QAStNode;
    // A container read from a container block ("group" element).
    QAStNodeContainer(const QDomElement& e, int version, QAStData* parent = nullptr,
                      QAStData* after = nullptr);
    ~QAStNodeContainer() override;

    // The container block.
    void write(QTextStream& s, int indent) const override;

protected:
    // Nothing of its own to run unless its text or driver says so: the walk
    // ends well after the children.
    void buildAfterChildren() override;
    void executeAfterChildren(bool debug) override;

public:


protected:
    // Reads the container block: the node block (required), then the
    // children of "group_child". Returns isValid().
    bool init(const QDomElement& groupElement, int version);

    // "<blockTag>", the node block, the children inside childTag,
    // "</blockTag>"; and its reading.
    void writeBlock(QTextStream& s, int indent, const char* blockTag, const char* childTag) const;
    bool initBlock(const QDomElement& e, int version, const char* blockTag, const char* childTag);
};
