#include "QAStNodeSystemTestingScript.h"

#include "QAStNodeSystemTesting.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeSystemTestingScript>
    registration("systemtesting_script", QT_TRANSLATE_NOOP("QAStNode", "System Testing Script"));
}

QAStNodeSystemTestingScript::QAStNodeSystemTestingScript(const QString& name, const QPixmap& icon,
                                                         QAStData* parent, QAStData* after)
    : QAStNodeTestScript(name, icon, parent, after)
{
}

QAStNodeSystemTestingScript::QAStNodeSystemTestingScript(const QDomElement& e, int version,
                                                         QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
}

QAStNodeSystemTestingScript::QAStNodeSystemTestingScript(QARes* res, QAStData* parent,
                                                         QAStData* after)
    : QAStNodeTestScript(res, parent, after)
{
}

QAStNodeSystemTestingScript::QAStNodeSystemTestingScript(QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
}

void QAStNodeSystemTestingScript::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "systemtesting_script");
    QAStNodeTestScript::write(s, indent + 1);
    writeText(s, indent + 1, "filepath", fileKey());
    writeChildList(s, indent + 1, "virtual_tester_list");
    closeElement(s, indent, "systemtesting_script");
}

bool QAStNodeSystemTestingScript::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "systemtesting_script") ||
        !QAStNodeTestScript::init(innerBlock(e, "test_script"), version))
        return false;
    const QString key = readText(e, "filepath");
    if (fileKey().isEmpty())
        setFileKey(key);
    initChildList(e, "virtual_tester_list", version);
    return isValid();
}

unsigned int QAStNodeSystemTestingScript::propertyKind() const
{
    return QAStPropertyFilters::SystemTestScript;
}

QStringList QAStNodeSystemTestingScript::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeVirtualTester")};
}

QStringList QAStNodeSystemTestingScript::addableChildKinds() const
{
    return {QStringLiteral("virtual_tester")};
}

void QAStNodeSystemTestingScript::generateEnv(QTextStream& out)
{
    QAStNodeTestScript::generateEnv(out);
    if (!currentConfiguration())
        return;
    if (auto* system = qobject_cast<QAStNodeSystemTesting*>(parentOfClass("QAStNodeSystemTesting")))
        system->generateVtRdvConfEnv(out);
}
