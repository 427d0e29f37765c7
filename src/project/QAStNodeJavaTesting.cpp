#include "QAStNodeJavaTesting.h"

#include "QAStPerlGen.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeJavaTesting>
    registration("java_testing", QT_TRANSLATE_NOOP("QAStNode", "Java Testing"));
}

QAStNodeJavaTesting::QAStNodeJavaTesting(const QString& name, const QPixmap& icon, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(name, icon, parent, after)
{
}

QAStNodeJavaTesting::QAStNodeJavaTesting(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

QAStNodeJavaTesting::QAStNodeJavaTesting(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTest(res, parent, after)
{
}

QAStNodeJavaTesting::QAStNodeJavaTesting(QAStData* parent, QAStData* after)
    : QAStNodeTest(parent, after)
{
}

void QAStNodeJavaTesting::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "java_testing");
    QAStNodeTest::write(s, indent + 1);
    closeElement(s, indent, "java_testing");
}

bool QAStNodeJavaTesting::init(const QDomElement& e, int version)
{
    return checkElement(e, "java_testing") && QAStNodeTest::init(innerBlock(e, "test"), version);
}

unsigned int QAStNodeJavaTesting::propertyKind() const
{
    return QAStPropertyFilters::JavaTesting;
}

QStringList QAStNodeJavaTesting::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeJavaTestingScript"), QStringLiteral("QAStNodeSource")};
}

QStringList QAStNodeJavaTesting::addableChildKinds() const
{
    return {QStringLiteral("javatesting_script"), QStringLiteral("source")};
}

void QAStNodeJavaTesting::generateEnv(QTextStream& out)
{
    QAStNodeTest::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeInstrumentationFiles(out, this);
}

QString QAStNodeJavaTesting::driverKind() const
{
    return QStringLiteral("java_testing");
}

bool QAStNodeJavaTesting::executesDriver() const
{
    return true;
}
