#include "QAStNodeVirtualTester.h"

#include "QAStNodeSystemTesting.h"
#include "QAStPerlGen.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeVirtualTester::QAStNodeVirtualTester(const QDomElement& e, int version, QAStData* parent,
                                             QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
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
