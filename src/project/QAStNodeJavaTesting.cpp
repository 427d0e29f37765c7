#include "QAStNodeJavaTesting.h"

#include "QAStPerlGen.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeJavaTesting::QAStNodeJavaTesting(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
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

void QAStNodeJavaTesting::generateEnv(QTextStream& out)
{
    QAStNodeTest::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeInstrumentationFiles(out, this);
}

bool QAStNodeJavaTesting::executesDriver() const
{
    return true;
}
