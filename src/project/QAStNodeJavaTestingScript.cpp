#include "QAStNodeJavaTestingScript.h"

#include <QDomElement>

QAStNodeJavaTestingScript::QAStNodeJavaTestingScript(const QDomElement& e, int version,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
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

