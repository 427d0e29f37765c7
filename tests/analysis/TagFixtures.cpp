#include "TagFixtures.h"

#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStRootFolder.h"
#include "TestFiles.h"
#include "TestPaths.h"

namespace TagFixtures {

namespace {
QString kindOf(const QAStATag* tag)
{
    if (qobject_cast<const QAStAMethodTag*>(tag))
        return QStringLiteral("method");
    if (qobject_cast<const QAStAFunctionTag*>(tag))
        return QStringLiteral("function");
    if (qobject_cast<const QAStAClassTag*>(tag))
        return QStringLiteral("class");
    if (qobject_cast<const QAStAStructTag*>(tag))
        return QStringLiteral("struct");
    if (qobject_cast<const QAStAPackageTag*>(tag))
        return QStringLiteral("package");
    return QStringLiteral("tag");
}

void dumpInto(const QAStATag* tag, int depth, QStringList& lines)
{
    for (const QAStATag* c : tag->children()) {
        QString line = QString(2 * depth, QLatin1Char(' ')) + kindOf(c) + QLatin1Char(' ') +
            c->displayName();
        if (c->qualifier() != 0)
            line += QStringLiteral(" q") + QString::number(c->qualifier());
        lines.append(line);
        dumpInto(c, depth + 1, lines);
    }
}
}

QStringList dump(const QAStATag* top)
{
    QStringList lines;
    dumpInto(top, 0, lines);
    return lines;
}

void copySources(const QString& dir)
{
    TestFiles::copyTree(TestPaths::data(QStringLiteral("tags")), dir);
}

QAStFile* tagged(QAStRootFolder& tree, const QString& path)
{
    const QList<QAStFile*> added = tree.addFiles({path});
    QAStFile* file = added.isEmpty() ? tree.file(path) : added.first();
    if (!file || !file->taggingInformation(false) || !file->lastTaggingSucceeded()) {
        QTest::qFail(qPrintable(QStringLiteral("tagging failed: ") + path), __FILE__, __LINE__);
        return nullptr;
    }
    return file;
}

}
