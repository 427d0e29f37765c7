#include "QAStNodeUnitTesting.h"

#include "QAStNodeSource.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStPerlGen.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeUnitTesting::QAStNodeUnitTesting(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

void QAStNodeUnitTesting::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "unit_testing");
    QAStNodeTest::write(s, indent + 1);
    closeElement(s, indent, "unit_testing");
}

bool QAStNodeUnitTesting::init(const QDomElement& e, int version)
{
    return checkElement(e, "unit_testing") && QAStNodeTest::init(innerBlock(e, "test"), version);
}

QString QAStNodeUnitTesting::selectedScript() const
{
    for (const QAStData* child = this->child(); child; child = child->next()) {
        const auto* unitScript = qobject_cast<const QAStNodeUnitTestingScript*>(child);
        if (unitScript && unitScript->isSelected())
            return unitScript->absoluteFilePath();
    }
    return QString();
}

QStringList QAStNodeUnitTesting::builtObjects() const
{
    QStringList objects = QAStNodeTest::builtObjects();
    const QString script = selectedScript();
    if (!script.isEmpty() && currentConfiguration())
        objects << objectFileFor(script);
    return objects;
}

void QAStNodeUnitTesting::generateEnv(QTextStream& out)
{
    QAStNodeTest::generateEnv(out);
    if (!currentConfiguration())
        return;
    const QString script = selectedScript();
    bool matlab = false;
    for (const QAStData* child = this->child(); child; child = child->next()) {
        const auto* source = qobject_cast<const QAStNodeSource*>(child);
        if (source && source->fileKey().endsWith(QLatin1String(".m"), Qt::CaseInsensitive))
            matlab = true;
    }
    QAStPerlGen::writePath(out, QStringLiteral("UNITTESTING_TESTSCRIPTNAME"), script);
    QAStPerlGen::writePath(out, QStringLiteral("UNITTESTING_TESTSCRIPT_OBJECT"),
                           script.isEmpty() ? QString() : objectFileFor(script));
    QAStPerlGen::writeNumber(out, QStringLiteral("MATLAB"), matlab ? 1 : 0);
    QAStNodeSource::writeLinkLines(out, this);
}

bool QAStNodeUnitTesting::linksObjects() const
{
    return true;
}

bool QAStNodeUnitTesting::executesDriver() const
{
    return true;
}

void QAStNodeUnitTesting::buildFirstChild()
{
    QAStNodeSource::prepareLinkStep(this);
    QAStNodeTest::buildFirstChild();
}

bool QAStNodeUnitTesting::splitsRuntimeOutput() const
{
    return true;
}
