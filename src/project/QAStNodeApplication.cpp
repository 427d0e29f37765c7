#include "QAStNodeApplication.h"

#include "QAStNodeSource.h"

#include "QAStPerlGen.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeApplication>
    registration("application", QT_TRANSLATE_NOOP("QAStNode", "Application"));
}

QAStNodeApplication::QAStNodeApplication(const QString& name, const QPixmap& icon, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(name, icon, parent, after)
{
}

QAStNodeApplication::QAStNodeApplication(const QDomElement& e, int version, QAStData* parent,
                                         QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

QAStNodeApplication::QAStNodeApplication(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeTest(res, parent, after)
{
}

QAStNodeApplication::QAStNodeApplication(QAStData* parent, QAStData* after)
    : QAStNodeTest(parent, after)
{
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

unsigned int QAStNodeApplication::propertyKind() const
{
    return QAStPropertyFilters::Application;
}

QStringList QAStNodeApplication::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeSource"), QStringLiteral("QAStNodeLibrary"),
            QStringLiteral("QAStNodeTestScript"), QStringLiteral("QAStNodeUser"),
            QStringLiteral("QAStNodeLink")};
}

QStringList QAStNodeApplication::addableChildKinds() const
{
    return {QStringLiteral("source"), QStringLiteral("library"), QStringLiteral("test_script"),
            QStringLiteral("user"), QStringLiteral("link")};
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

QString QAStNodeApplication::driverKind() const
{
    return QStringLiteral("application");
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
