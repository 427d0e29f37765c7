#include "QAStNodeUser.h"

#include <QDomElement>

QAStNodeUser::QAStNodeUser(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

void QAStNodeUser::setRedirectStdout(bool redirect)
{
    m_redirectStdout = redirect;
}

void QAStNodeUser::setRedirectStderr(bool redirect)
{
    m_redirectStderr = redirect;
}

void QAStNodeUser::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "user");
    QAStNode::write(s, indent + 1);
    writeBool(s, indent + 1, "redirect_stdout", m_redirectStdout);
    writeBool(s, indent + 1, "redirect_stderr", m_redirectStderr);
    writeChildList(s, indent + 1, "user_child");
    closeElement(s, indent, "user");
}

bool QAStNodeUser::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "user") || !QAStNode::init(innerBlock(e, "node"), version))
        return false;
    m_redirectStdout = readBool(e, "redirect_stdout", true);
    m_redirectStderr = readBool(e, "redirect_stderr", true);
    initChildList(e, "user_child", version);
    return isValid();
}

void QAStNodeUser::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    runOwnStep(true);
}
