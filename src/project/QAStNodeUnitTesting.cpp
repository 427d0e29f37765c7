#include "QAStNodeUnitTesting.h"

#include "QAStNodeSource.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStPerlGen.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeUnitTesting>
    registration("unit_testing", QT_TRANSLATE_NOOP("QAStNode", "Unit Testing"));
}

QAStNodeUnitTesting::QAStNodeUnitTesting(const QString& name, const QPixmap& icon, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(name, icon, parent, after)
{
}

QAStNodeUnitTesting::QAStNodeUnitTesting(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

QAStNodeUnitTesting::QAStNodeUnitTesting(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTest(res, parent, after)
{
}

QAStNodeUnitTesting::QAStNodeUnitTesting(QAStData* parent, QAStData* after)
    : QAStNodeTest(parent, after)
{
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

unsigned int QAStNodeUnitTesting::propertyKind() const
{
    return QAStPropertyFilters::UnitTesting;
}

QStringList QAStNodeUnitTesting::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeUnitTestingScript"), QStringLiteral("QAStNodeSource")};
}

QStringList QAStNodeUnitTesting::addableChildKinds() const
{
    return {QStringLiteral("unittesting_script"), QStringLiteral("source")};
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

QString QAStNodeUnitTesting::driverKind() const
{
    return QStringLiteral("unit_testing");
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
