#include "QMetTree.h"

#include "QMetElement.h"
#include "QMetReader.h"

#include <QDir>

namespace {
QMetElement* newRoot()
{
    return new QMetElement(QStringLiteral("ROOT"), QStringLiteral("Root"));
}

QString filePath(const QString& dir, const QString& name)
{
    return QDir::cleanPath(dir.isEmpty() ? name : dir + QLatin1Char('/') + name);
}
}

QMetTree::QMetTree(const QString& file, QObject* parent)
    : QMetTree(QStringList{file}, parent)
{
}

QMetTree::QMetTree(const QStringList& files, QObject* parent)
    : QObject(parent)
    , m_files(files)
    , m_root(newRoot())
{
}

QMetTree::~QMetTree()
{
    delete m_root;
}

void QMetTree::init()
{
    delete m_reader;
    delete m_root;
    m_fileElements.clear();
    m_root = newRoot();
    m_reader = new QMetReader(m_files, this, "QMetReader");
    indexFiles(m_root);
    m_root->updateMetrics(stroudNumber());
    emit treeUpdated();
}

void QMetTree::stroudChange(float stroudNumber)
{
    if (!(stroudNumber > 0))
        return;
    m_root->updateTestingTime(stroudNumber);
    emit treeUpdated();
}

QMetElement* QMetTree::fileElement(const QString& sourceFile) const
{
    return m_fileElements.value(QDir::cleanPath(sourceFile));
}

void QMetTree::indexFiles(QMetElement* element)
{
    for (QMetElement* child : element->children()) {
        if (child->isFile()) {
            const QString path = filePath(child->path(), child->fileName());
            if (!child->fileName().isEmpty() && !m_fileElements.contains(path))
                m_fileElements.insert(path, child);
        } else {
            indexFiles(child);
        }
    }
}
