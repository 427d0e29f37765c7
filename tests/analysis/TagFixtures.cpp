#include "TagFixtures.h"

#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStRootFolder.h"
#include "TestFiles.h"
#include "TestPaths.h"

using namespace Qt::StringLiterals;

namespace TagFixtures {

namespace {
QString kindOf(const QAStATag* tag)
{
    if (qobject_cast<const QAStAMethodTag*>(tag))
        return u"method"_s;
    if (qobject_cast<const QAStAFunctionTag*>(tag))
        return u"function"_s;
    if (qobject_cast<const QAStAClassTag*>(tag))
        return u"class"_s;
    if (qobject_cast<const QAStAStructTag*>(tag))
        return u"struct"_s;
    if (qobject_cast<const QAStAPackageTag*>(tag))
        return u"package"_s;
    return u"tag"_s;
}

void dumpInto(const QAStATag* tag, int depth, QStringList& lines)
{
    for (const QAStATag* c : tag->children()) {
        QString line = QString(2 * depth, QLatin1Char(' ')) + kindOf(c) + QLatin1Char(' ') + c->displayName();
        if (c->qualifier() != 0)
            line += u" q"_s + QString::number(c->qualifier());
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
    TestFiles::copyTree(TestPaths::data(u"tags"_s), dir);
}

QAStFile* tagged(QAStRootFolder& tree, const QString& path)
{
    const QList<QAStFile*> added = tree.addFiles({path});
    QAStFile* file = added.isEmpty() ? tree.file(path) : added.first();
    if (!file || !file->taggingInformation(false) || !file->lastTaggingSucceeded()) {
        QTest::qFail(qPrintable(u"tagging failed: "_s + path), __FILE__, __LINE__);
        return nullptr;
    }
    return file;
}

}
