#include "QAStNodeSystemTestingScript.h"

#include "QAStNodeSystemTesting.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeSystemTestingScript::QAStNodeSystemTestingScript(const QDomElement& e, int version,
                                                         QAStData* parent, QAStData* after)
    : QAStNodeTestScript(parent, after)
{
    init(e, version);
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

void QAStNodeSystemTestingScript::generateEnv(QTextStream& out)
{
    QAStNodeTestScript::generateEnv(out);
    if (!currentConfiguration())
        return;
    if (auto* system = qobject_cast<QAStNodeSystemTesting*>(parentOfClass("QAStNodeSystemTesting")))
        system->generateVtRdvConfEnv(out);
}
