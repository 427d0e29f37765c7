#include "QAStNodeUnitTestingScript.h"

#include <QDomElement>

QAStNodeUnitTestingScript::QAStNodeUnitTestingScript(const QDomElement& e, int version,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
}

void QAStNodeUnitTestingScript::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "unittesting_script");
    QAStNodeTestScript::write(s, indent + 1);
    closeElement(s, indent, "unittesting_script");
}

bool QAStNodeUnitTestingScript::init(const QDomElement& e, int version)
{
    return checkElement(e, "unittesting_script") &&
           QAStNodeTestScript::init(innerBlock(e, "test_script"), version);
}

