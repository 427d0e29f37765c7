#include "QAStNodeLibrary.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>

namespace {
const QAStNode::KindRegistration<QAStNodeLibrary>
    registration("library", QT_TRANSLATE_NOOP("QAStNode", "Library"));
}

QAStNodeLibrary::QAStNodeLibrary(const QString& name, const QPixmap& icon, QAStData* parent,
                                 QAStData* after)
    : QAStNodeContainer(name, icon, parent, after)
{
}

QAStNodeLibrary::QAStNodeLibrary(const QDomElement& e, int version, QAStData* parent,
                                 QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

QAStNodeLibrary::QAStNodeLibrary(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeContainer(res, parent, after)
{
}

QAStNodeLibrary::QAStNodeLibrary(QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
}

void QAStNodeLibrary::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "library");
    QAStNodeContainer::write(s, indent + 1);
    closeElement(s, indent, "library");
}

bool QAStNodeLibrary::init(const QDomElement& e, int version)
{
    return checkElement(e, "library") && QAStNodeContainer::init(innerBlock(e, "group"), version);
}

unsigned int QAStNodeLibrary::propertyKind() const
{
    return QAStPropertyFilters::Library;
}

QStringList QAStNodeLibrary::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeSource"), QStringLiteral("QAStNodeLink")};
}

QStringList QAStNodeLibrary::addableChildKinds() const
{
    return {QStringLiteral("source"), QStringLiteral("link")};
}
