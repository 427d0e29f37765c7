#include "QAStNodeObjectTesting.h"

#include <QDomElement>

QAStNodeObjectTesting::QAStNodeObjectTesting(const QDomElement& e, int version, QAStData* parent,
                                             QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
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

bool QAStNodeObjectTesting::executesDriver() const
{
    return true;
}
