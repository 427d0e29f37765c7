#include "QAStNodeApplication.h"

#include "QAStNodeSource.h"

#include "QAStPerlGen.h"

#include <QDomElement>
#include <QTextStream>

QAStNodeApplication::QAStNodeApplication(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

void QAStNodeApplication::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "application");
    QAStNodeTest::write(s, indent + 1);
    closeElement(s, indent, "application");
}

bool QAStNodeApplication::init(const QDomElement& e, int version)
{
    return checkElement(e, "application") && QAStNodeTest::init(innerBlock(e, "test"), version);
}

void QAStNodeApplication::generateEnv(QTextStream& out)
{
    QAStNodeTest::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeApplicationFiles(out, this);
    QAStNodeSource::writeLinkLines(out, this);
}

bool QAStNodeApplication::linksObjects() const
{
    return true;
}

bool QAStNodeApplication::executesDriver() const
{
    return true;
}

void QAStNodeApplication::buildFirstChild()
{
    QAStNodeSource::prepareLinkStep(this);
    QAStNodeTest::buildFirstChild();
}

bool QAStNodeApplication::splitsRuntimeOutput() const
{
    return true;
}
