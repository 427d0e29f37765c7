#pragma once

#include "QAStNode.h"

// A user node: a command of the user's own, given as the node's Perl texts
// (before and after its children). The redirect flags send the command's
// standard output and standard error to the studio's output console.
//
// XML: "<user>", the node block, "redirect_stdout", "redirect_stderr",
// "user_child" with the children, "</user>". It holds sources, user nodes
// and links.
class SDK110_EXPORT QAStNodeUser : public QAStNode {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNode::QAStNode;
    // A node read from its "user" element.
    QAStNodeUser(const QDomElement& e, int version, QAStData* parent = nullptr,
                 QAStData* after = nullptr);

    // On by default.
    bool redirectStdout() const { return m_redirectStdout; }
    void setRedirectStdout(bool redirect);
    bool redirectStderr() const { return m_redirectStderr; }
    void setRedirectStderr(bool redirect);

    void write(QTextStream& s, int indent) const override;

protected:
    // Executing a user node runs its after-children text; without one there
    // is nothing to execute and the walk ends well. (Its build keeps the
    // base rule: without a text it aborts.)
    void executeAfterChildren(bool debug) override;

public:

protected:
    // Reads the "user" element. Returns isValid().
    bool init(const QDomElement& e, int version);

private:
    bool m_redirectStdout = true;
    bool m_redirectStderr = true;
};
