#include "QAStNodeSource.h"

#include "QAFileUtil.h"
#include "QAStNodeGroup.h"
#include "QAStPerlGen.h"

#include <QDir>
#include <QDomElement>
#include <QFileInfo>
#include <QSet>
#include <QTextStream>

QAStNodeSource::QAStNodeSource(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeFileRef(parent, after)
{
    init(e, version);
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

void QAStNodeSource::generateEnv(QTextStream& out)
{
    QAStNodeFileRef::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeNumber(out, QStringLiteral("CODE_INSERTION"), m_integrated ? 1 : 0);
    QAStPerlGen::writePath(out, QStringLiteral("OBJECT_FILE"), objectFile());
    QAStPerlGen::writePathList(out, QStringLiteral("OTIFILES"),
                               QAStPerlGen::relativeToProject(this, outputFiles(QStringLiteral("OTI"))));
}

QAStNode* QAStNodeSource::linker() const
{
    QAStData* above = parent();
    while (above && qobject_cast<const QAStNodeGroup*>(above))
        above = above->parent();
    auto* node = qobject_cast<QAStNode*>(above);
    return node && node->linksObjects() ? node : nullptr;
}

QString QAStNodeSource::objectFile() const
{
    const QAStNode* owner = linker();
    return (owner ? owner : this)->objectFileFor(absoluteFilePath());
}

void QAStNodeSource::buildAfterChildren()
{
    const QAStNode* owner = linker();
    if (owner && owner->isBuildingOrCleaning() && perlScriptAfterChild().trimmed().isEmpty()) {
        finishWalk();
        return;
    }
    QAStNodeFileRef::buildAfterChildren();
}

namespace {

void collectSources(const QAStData* item, QList<QAStNodeSource*>& sources, QSet<QString>& files)
{
    for (QAStData* child = item->child(); child; child = child->next()) {
        if (auto* source = qobject_cast<QAStNodeSource*>(child)) {
            if (source->isSelected() && !files.contains(source->fileKey())) {
                files.insert(source->fileKey());
                sources.append(source);
            }
        } else if (qobject_cast<const QAStNodeGroup*>(child)) {
            collectSources(child, sources, files);
        }
    }
}

} // namespace

QList<QAStNodeSource*> QAStNodeSource::compiledBy(const QAStNode* linker)
{
    QList<QAStNodeSource*> sources;
    QSet<QString> files;
    collectSources(linker, sources, files);
    return sources;
}

void QAStNodeSource::prepareLinkStep(QAStNode* linker)
{
    QStringList objects;
    for (const QAStNodeSource* source : compiledBy(linker))
        objects.append(source->objectFile());
    linker->removeOutputFiles(QStringLiteral("OBJ"));
    if (!objects.isEmpty())
        linker->addOutputFile(QStringLiteral("OBJ"), objects);
}

void QAStNodeSource::writeLinkLines(QTextStream& out, QAStNode* linker)
{
    QAStPerlGen::writePath(out, QStringLiteral("OBJECT_DIR"), linker->objectDirectory());
    QStringList environments;
    for (const QAStNodeSource* source : compiledBy(linker))
        environments.append(source->environmentFileName());
    QAStPerlGen::writePathList(out, QStringLiteral("SOURCE_ENVIRONMENTS"), environments);
}

bool QAStNodeSource::writeSourceEnvironments(QAStNode* linker)
{
    for (QAStNodeSource* source : compiledBy(linker)) {
        const QString path = source->environmentFileName();
        QDir().mkpath(QFileInfo(path).absolutePath());
        QByteArray bytes;
        {
            QTextStream text(&bytes);
            source->createEnvironmentFile(text);
            text << "\n1;\n";
        }
        QString reason;
        if (!QAFileUtil::replaceFile(path, bytes, &reason)) {
            displayMessage(OutputConsole, tr("%1: cannot write the environment file %2: %3\n")
                                              .arg(linker->name(), path, reason));
            return false;
        }
    }
    return true;
}
