#include "QAStNodeTestScript.h"

#include "QAStPerlGen.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeTestScript::QAStNodeTestScript(const QDomElement& e, int version, QAStData* parent,
                                       QAStData* after)
    : QAStNodeFileRef(parent, after)
{
    init(e, version);
}

QAStNodeTestScript::~QAStNodeTestScript() = default;

QString QAStNodeTestScript::allInstances()
{
    return QStringLiteral("<all>");
}

void QAStNodeTestScript::setTestCases(const QStringList& testCases)
{
    m_testCases = testCases;
}

void QAStNodeTestScript::setFamilies(const QStringList& families)
{
    m_families = families;
}

void QAStNodeTestScript::setSelectedTestCases(const QStringList& testCases)
{
    m_selectedTestCases = testCases;
}

void QAStNodeTestScript::setSelectedFamilies(const QStringList& families)
{
    m_selectedFamilies = families;
}

void QAStNodeTestScript::setInstance(const QString& instance)
{
    m_instance = instance;
}

void QAStNodeTestScript::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "test_script");
    const int inner = indent + 1;
    QAStNodeFileRef::write(s, inner);
    writeTextList(s, inner, "cas_all", "cas", m_testCases);
    writeTextList(s, inner, "fam_all", "fam", m_families);
    writeTextList(s, inner, "cas_selection", "cas", m_selectedTestCases);
    writeTextList(s, inner, "fam_selection", "fam", m_selectedFamilies);
    writeText(s, inner, "instance", m_instance);
    closeElement(s, indent, "test_script");
}

bool QAStNodeTestScript::init(const QDomElement& testScriptElement, int version)
{
    const QDomElement& e = testScriptElement;
    if (!checkElement(e, "test_script") ||
        !QAStNodeFileRef::init(innerBlock(e, "nodefile_ref"), version))
        return false;
    m_testCases = readTextList(e, "cas_all", "cas");
    m_families = readTextList(e, "fam_all", "fam");
    m_selectedTestCases = readTextList(e, "cas_selection", "cas");
    m_selectedFamilies = readTextList(e, "fam_selection", "fam");
    m_instance = readText(e, "instance", allInstances());
    return isValid();
}

void QAStNodeTestScript::generateEnv(QTextStream& out)
{
    QAStNodeFileRef::generateEnv(out);
    if (!currentConfiguration())
        return;
    const QAStData* context = parentOfClass("QAStNodeObjectTesting");
    const QStringList oti = QAStPerlGen::outputFilesOf(context ? context : this, QStringLiteral("OTI"),
                                                       context != nullptr);
    QAStPerlGen::writePathList(out, QStringLiteral("OTIFILES"), QAStPerlGen::relativeToProject(this, oti));
    QAStPerlGen::writePathList(out, QStringLiteral("VT_ITEM_SELECTION"), m_selectedTestCases);
    QAStPerlGen::writePathList(out, QStringLiteral("VT_FAM_SELECTION"), m_selectedFamilies);
}
