#include "QAStNodeTest.h"

#include "QAStPropertyFilters.h"

QAStNodeTest::QAStNodeTest(const QString& name, const QPixmap& icon, QAStData* parent,
                           QAStData* after)
    : QAStNodeContainer(name, icon, parent, after)
{
}

QAStNodeTest::QAStNodeTest(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

QAStNodeTest::QAStNodeTest(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeContainer(res, parent, after)
{
}

QAStNodeTest::QAStNodeTest(QAStData* parent, QAStData* after) : QAStNodeContainer(parent, after)
{
}

QAStNodeTest::~QAStNodeTest() = default;

void QAStNodeTest::write(QTextStream& s, int indent) const
{
    writeBlock(s, indent, "test", "test_child");
}

bool QAStNodeTest::init(const QDomElement& testElement, int version)
{
    return initBlock(testElement, version, "test", "test_child");
}

unsigned int QAStNodeTest::propertyKind() const
{
    return QAStPropertyFilters::Test;
}

QStringList QAStNodeTest::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeTestScript"), QStringLiteral("QAStNodeSource")};
}

QStringList QAStNodeTest::addableChildKinds() const
{
    return {QStringLiteral("test_script"), QStringLiteral("source")};
}
