#include "QAStNodeObjectTesting.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeObjectTesting>
    registration("object_testing", QT_TRANSLATE_NOOP("QAStNode", "Object Testing"));
}

QAStNodeObjectTesting::QAStNodeObjectTesting(const QString& name, const QPixmap& icon,
                                             QAStData* parent, QAStData* after)
    : QAStNodeTest(name, icon, parent, after)
{
}

QAStNodeObjectTesting::QAStNodeObjectTesting(const QDomElement& e, int version, QAStData* parent,
                                             QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

QAStNodeObjectTesting::QAStNodeObjectTesting(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTest(res, parent, after)
{
}

QAStNodeObjectTesting::QAStNodeObjectTesting(QAStData* parent, QAStData* after)
    : QAStNodeTest(parent, after)
{
}

void QAStNodeObjectTesting::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "object_testing");
    QAStNodeTest::write(s, indent + 1);
    closeElement(s, indent, "object_testing");
}

bool QAStNodeObjectTesting::init(const QDomElement& e, int version)
{
    return checkElement(e, "object_testing") && QAStNodeTest::init(innerBlock(e, "test"), version);
}

unsigned int QAStNodeObjectTesting::propertyKind() const
{
    return QAStPropertyFilters::ObjectTesting;
}

QStringList QAStNodeObjectTesting::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeTestScript"), QStringLiteral("QAStNodeSource")};
}

QStringList QAStNodeObjectTesting::addableChildKinds() const
{
    return {QStringLiteral("test_script"), QStringLiteral("source")};
}

QString QAStNodeObjectTesting::driverKind() const
{
    return QStringLiteral("object_testing");
}

bool QAStNodeObjectTesting::executesDriver() const
{
    return true;
}
