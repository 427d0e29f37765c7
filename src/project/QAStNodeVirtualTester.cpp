#include "QAStNodeVirtualTester.h"

#include "QAStNodeSystemTesting.h"
#include "QAStPerlGen.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeVirtualTester>
    registration("virtual_tester", QT_TRANSLATE_NOOP("QAStNode", "Virtual Tester"));
}

QAStNodeVirtualTester::QAStNodeVirtualTester(const QString& name, const QPixmap& icon,
                                             QAStData* parent, QAStData* after)
    : QAStNodeTestScript(name, icon, parent, after)
{
}

QAStNodeVirtualTester::QAStNodeVirtualTester(const QDomElement& e, int version, QAStData* parent,
                                             QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
}

QAStNodeVirtualTester::QAStNodeVirtualTester(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTestScript(res, parent, after)
{
}

QAStNodeVirtualTester::QAStNodeVirtualTester(QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
}

void QAStNodeVirtualTester::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "virtual_tester");
    QAStNodeTestScript::write(s, indent + 1);
    writeChildList(s, indent + 1, "virtual_tester_child");
    closeElement(s, indent, "virtual_tester");
}

bool QAStNodeVirtualTester::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "virtual_tester") ||
        !QAStNodeTestScript::init(innerBlock(e, "test_script"), version))
        return false;
    initChildList(e, "virtual_tester_child", version);
    return isValid();
}

unsigned int QAStNodeVirtualTester::propertyKind() const
{
    return QAStPropertyFilters::VirtualTester;
}

QStringList QAStNodeVirtualTester::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeSource")};
}

QStringList QAStNodeVirtualTester::addableChildKinds() const
{
    return {QStringLiteral("source")};
}

void QAStNodeVirtualTester::generateEnv(QTextStream& out)
{
    QAStNodeTestScript::generateEnv(out);
    if (!currentConfiguration())
        return;
    out << "## Virtual Tester Properties\n";
    if (instance() == allInstances())
        out << "$VT_INSTANCE=0;\n";
    else
        QAStPerlGen::writeString(out, QStringLiteral("VT_INSTANCE"), instance());
    if (auto* system = qobject_cast<QAStNodeSystemTesting*>(parentOfClass("QAStNodeSystemTesting")))
        system->generateVtRdvConfEnv(out);
}
