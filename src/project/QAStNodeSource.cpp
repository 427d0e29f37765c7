#include "QAStNodeSource.h"
#include "QAStConfiguration.h"
#include "QAStAnalyseMacro.h"

#include "QAStPerlGen.h"

#include "QAStPropertyFilters.h"

#include <QDomElement>
#include <QFileInfo>
#include <QTextStream>

namespace {
const QAStNode::KindRegistration<QAStNodeSource>
    registration("source", QT_TRANSLATE_NOOP("QAStNode", "Source"));
}

QAStNodeSource::QAStNodeSource(const QString& name, const QPixmap& icon, QAStData* parent,
                               QAStData* after)
    : QAStNodeFileRef(name, icon, parent, after)
{
}

QAStNodeSource::QAStNodeSource(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeFileRef(parent, after)
{
    init(e, version);
}

QAStNodeSource::QAStNodeSource(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeFileRef(res, parent, after)
{
}

QAStNodeSource::QAStNodeSource(QAStData* parent, QAStData* after) : QAStNodeFileRef(parent, after)
{
}

void QAStNodeSource::setIntegratedSource(bool integrated)
{
    m_integrated = integrated;
}

void QAStNodeSource::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "source");
    QAStNodeFileRef::write(s, indent + 1);
    writeBool(s, indent + 1, "integrated", m_integrated);
    writeChildList(s, indent + 1, "source_child");
    closeElement(s, indent, "source");
}

bool QAStNodeSource::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "source") ||
        !QAStNodeFileRef::init(innerBlock(e, "nodefile_ref"), version))
        return false;
    m_integrated = readBool(e, "integrated", false);
    initChildList(e, "source_child", version);
    return isValid();
}

unsigned int QAStNodeSource::propertyKind() const
{
    return QAStPropertyFilters::Source;
}

QStringList QAStNodeSource::allowedChildClasses() const
{
    return {QStringLiteral("QAStNodeUser")};
}

QStringList QAStNodeSource::addableChildKinds() const
{
    return {QStringLiteral("user")};
}

void QAStNodeSource::generateEnv(QTextStream& out)
{
    QAStNodeFileRef::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeNumber(out, QStringLiteral("CODE_INSERTION"), m_integrated ? 1 : 0);
    QAStPerlGen::writePathList(out, QStringLiteral("OTIFILES"),
                               QAStPerlGen::relativeToProject(this, outputFiles(QStringLiteral("OTI"))));
}

QString QAStNodeSource::driverKind() const
{
    return QStringLiteral("source");
}

QString QAStNodeSource::objectFile() const
{
    const QAStConfiguration* c = currentConfiguration();
    const QString directory =
        QAStPerlGen::settingValue(c, QStringLiteral("intdir")).toString();
    const QString extension =
        QAStPerlGen::settingValue(c, QStringLiteral("objectExt")).toString();
    return QAStAnalyseMacro::analyse(
        QAStPerlGen::joinPath(directory, QFileInfo(fileKey()).completeBaseName() + extension),
        const_cast<QAStNodeSource*>(this), QStringLiteral("Prompt Dialog"));
}

namespace {

void collectObjects(const QAStData* item, QStringList& objects)
{
    for (const QAStData* child = item->child(); child; child = child->next()) {
        if (const auto* source = qobject_cast<const QAStNodeSource*>(child)) {
            if (source->isSelected() && !objects.contains(source->objectFile()))
                objects.append(source->objectFile());
        } else if (child->inherits("QAStNodeGroup")) {
            collectObjects(child, objects);
        }
    }
}

} // namespace

void QAStNodeSource::prepareLinkStep(QAStNode* linker)
{
    QStringList objects;
    collectObjects(linker, objects);
    linker->removeOutputFiles(QStringLiteral("OBJ"));
    if (!objects.isEmpty())
        linker->addOutputFile(QStringLiteral("OBJ"), objects);
}
