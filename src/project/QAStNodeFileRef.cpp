#include "QAStNodeFileRef.h"

#include "QAStProject.h"

#include <QDir>
#include <QDomElement>

QAStNodeFileRef::QAStNodeFileRef(const QString& name, const QPixmap& icon, QAStData* parent,
                                 QAStData* after)
    : QAStNode(name, icon, parent, after)
{
}

QAStNodeFileRef::QAStNodeFileRef(const QDomElement& e, int version, QAStData* parent,
                                 QAStData* after)
    : QAStNode(parent, after)
{
    init(e, version);
}

QAStNodeFileRef::QAStNodeFileRef(QARes* res, QAStData* parent, QAStData* after)
    : QAStNode(res, parent, after)
{
}

QAStNodeFileRef::QAStNodeFileRef(QAStData* parent, QAStData* after) : QAStNode(parent, after)
{
}

QAStNodeFileRef::~QAStNodeFileRef() = default;

void QAStNodeFileRef::setFileKey(const QString& key)
{
    m_fileKey = key;
}

QString QAStNodeFileRef::absoluteFilePath() const
{
    if (m_fileKey.isEmpty())
        return QString();
    const QAStProject* owner = project();
    const QString directory = owner ? owner->directory() : QString();
    if (directory.isEmpty())
        return QDir::cleanPath(m_fileKey);
    return determineAbsolutePathFile(directory, m_fileKey);
}

void QAStNodeFileRef::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "nodefile_ref");
    QAStNode::write(s, indent + 1);
    writeText(s, indent + 1, "filepath", m_fileKey);
    closeElement(s, indent, "nodefile_ref");
}

bool QAStNodeFileRef::init(const QDomElement& fileRefElement, int version)
{
    if (!checkElement(fileRefElement, "nodefile_ref") ||
        !QAStNode::init(innerBlock(fileRefElement, "node"), version))
        return false;
    m_fileKey = readText(fileRefElement, "filepath");
    return isValid();
}

void QAStNodeFileRef::buildAfterChildren()
{
    runOwnStep(true);
}

void QAStNodeFileRef::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    runOwnStep(true);
}
