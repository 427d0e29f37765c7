#include "QAStNodeUser.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeUser> registration("user",
                                                            QT_TRANSLATE_NOOP("QAStNode", "User"));
}

QAStNodeUser::QAStNodeUser(const QString& name, const QPixmap& icon, QAStData* parent,
                           QAStData* after)
    : QAStNode(name, icon, parent, after)
{
}

QAStNodeUser::QAStNodeUser(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

QAStNodeUser::QAStNodeUser(QARes* res, QAStData* parent, QAStData* after)
    : QAStNode(res, parent, after)
{
}

QAStNodeUser::QAStNodeUser(QAStData* parent, QAStData* after) : QAStNode(parent, after)
{
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

unsigned int QAStNodeUser::propertyKind() const
{
    return QAStPropertyFilters::User;
}

QStringList QAStNodeUser::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeSource"), QStringLiteral("QAStNodeUser"),
            QStringLiteral("QAStNodeLink")};
}

QStringList QAStNodeUser::addableChildKinds() const
{
    return {QStringLiteral("source"), QStringLiteral("user"), QStringLiteral("link")};
}

void QAStNodeUser::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    runOwnStep(true);
}
