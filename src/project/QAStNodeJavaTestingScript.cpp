#include "QAStNodeJavaTestingScript.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeJavaTestingScript>
    registration("javatesting_script", QT_TRANSLATE_NOOP("QAStNode", "Java Testing Script"));
}

QAStNodeJavaTestingScript::QAStNodeJavaTestingScript(const QString& name, const QPixmap& icon,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(name, icon, parent, after)
{
}

QAStNodeJavaTestingScript::QAStNodeJavaTestingScript(const QDomElement& e, int version,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
}

QAStNodeJavaTestingScript::QAStNodeJavaTestingScript(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTestScript(res, parent, after)
{
}

QAStNodeJavaTestingScript::QAStNodeJavaTestingScript(QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
}

void QAStNodeJavaTestingScript::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "javatesting_script");
    QAStNodeTestScript::write(s, indent + 1);
    closeElement(s, indent, "javatesting_script");
}

bool QAStNodeJavaTestingScript::init(const QDomElement& e, int version)
{
    return checkElement(e, "javatesting_script") &&
           QAStNodeTestScript::init(innerBlock(e, "test_script"), version);
}

unsigned int QAStNodeJavaTestingScript::propertyKind() const
{
    return QAStPropertyFilters::TestScript;
}
