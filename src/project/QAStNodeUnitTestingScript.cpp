#include "QAStNodeUnitTestingScript.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeUnitTestingScript>
    registration("unittesting_script", QT_TRANSLATE_NOOP("QAStNode", "Unit Testing Script"));
}

QAStNodeUnitTestingScript::QAStNodeUnitTestingScript(const QString& name, const QPixmap& icon,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(name, icon, parent, after)
{
}

QAStNodeUnitTestingScript::QAStNodeUnitTestingScript(const QDomElement& e, int version,
                                                     QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
}

QAStNodeUnitTestingScript::QAStNodeUnitTestingScript(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTestScript(res, parent, after)
{
}

QAStNodeUnitTestingScript::QAStNodeUnitTestingScript(QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
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

unsigned int QAStNodeUnitTestingScript::propertyKind() const
{
    return QAStPropertyFilters::UnitTestScript;
}
