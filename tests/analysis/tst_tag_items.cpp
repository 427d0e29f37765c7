#include "QAStATag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "RecordingStudio.h"

#include <QDomDocument>
#include <QDomElement>
#include <QtTest>

#include <memory>

namespace {

QDomDocument parse(const QString& xml)
{
    QDomDocument doc;
    doc.setContent(xml);
    return doc;
}

std::unique_ptr<QAStData> build(const QString& xml, QAStData* parent = nullptr)
{
    const QDomDocument doc = parse(xml);
    return std::unique_ptr<QAStData>(
        QAStDataFactory::create(doc.documentElement(), 1, parent, nullptr));
}

// The data block as QAStData writes it at depth, with default flags.
QString dataBlock(const QString& name, quint32 quid, int depth)
{
    const QString pad(2 * depth, QLatin1Char(' '));
    const QString in = pad + QStringLiteral("  ");
    return pad + "<data>\n" + in + "<name>" + name + "</name>\n" + in + "<quid>" +
        QString::number(quid) + "</quid>\n" + in + "<icon></icon>\n" + in +
        "<renameable>true</renameable>\n" + in + "<deletable>true</deletable>\n" + in +
        "<open>false</open>\n" + in + "<sorted>false</sorted>\n" + in +
        "<executionResult>0</executionResult>\n" + pad + "</data>\n";
}

}

class TestTagItems : public QObject {
    Q_OBJECT
private slots:
    void init();

    void tagIsWrittenInItsForm();
    void fileWrapsTheTestedTag();
    void lineIsMinusOneWhenAbsentOrBad_data();
    void lineIsMinusOneWhenAbsentOrBad();
    void tagChildrenAreTagsOnly();
    void filePathRelativeToTheTree_data();
    void filePathRelativeToTheTree();
    void fileKeyIsTheCleanedAbsolutePath();

private:
    std::unique_ptr<RecordingStudio> m_studio;
};

void TestTagItems::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    QAStData::clearLoadReport();
    QAStData::preferences()->setUseRelativePath(true);
}

void TestTagItems::tagIsWrittenInItsForm()
{
    QAStATag tag(QStringLiteral("Stack"), QPixmap(), QStringLiteral("/src/stack.h"), 12);
    tag.setQuid(70);
    tag.setQualifier(5);
    tag.setSignature(QStringLiteral("(int a, T<b>&)"));
    auto* inner = new QAStATag(QStringLiteral("push"), QPixmap(), QStringLiteral("/src/stack.h"),
                               -1, &tag, nullptr);
    inner->setQuid(71);

    const QString expected = "<tag>\n" + dataBlock("Stack", 70, 1) +
        "  <filepath>/src/stack.h</filepath>\n"
        "  <line>12</line>\n"
        "  <qualifier>5</qualifier>\n"
        "  <signature>(int a#comma# T&lt;b&gt;&amp;)</signature>\n"
        "  <tag_child>\n"
        "    <tag>\n" +
        dataBlock("push", 71, 3) +
        "      <filepath>/src/stack.h</filepath>\n"
        "      <line>-1</line>\n"
        "      <qualifier>0</qualifier>\n"
        "      <signature></signature>\n"
        "      <tag_child>\n"
        "      </tag_child>\n"
        "    </tag>\n"
        "  </tag_child>\n"
        "</tag>\n";
    QCOMPARE(tag.toString(), expected);

    std::unique_ptr<QAStData> back = build(expected);
    auto* read = qobject_cast<QAStATag*>(back.get());
    QVERIFY(read && read->isValid());
    QCOMPARE(read->signature(), tag.signature());
    QCOMPARE(read->qualifier(), 5);
    QCOMPARE(read->children().size(), 1);
    QCOMPARE(read->toString(), expected);
}

void TestTagItems::fileWrapsTheTestedTag()
{
    QAStFile file(QStringLiteral("/src/a.c"));
    QCOMPARE(file.name(), QStringLiteral("a.c"));
    QCOMPARE(file.line(), -1);
    const QString fileText = file.toString();
    QVERIFY(fileText.startsWith(QStringLiteral("<file>\n  <tested_tag>\n    <tag>\n")));
    QVERIFY(fileText.endsWith(QStringLiteral("  </tested_tag>\n</file>\n")));
}

void TestTagItems::lineIsMinusOneWhenAbsentOrBad_data()
{
    QTest::addColumn<QString>("lineElement");
    QTest::addColumn<int>("line");
    QTest::newRow("absent") << QString() << -1;
    QTest::newRow("not a number") << "<line>twelve</line>" << -1;
    QTest::newRow("given") << "<line>42</line>" << 42;
}

void TestTagItems::lineIsMinusOneWhenAbsentOrBad()
{
    QFETCH(QString, lineElement);
    std::unique_ptr<QAStData> item = build(
        "<tag><data><name>t</name><quid>5</quid></data><filepath>/a.c</filepath>" + lineElement +
        "</tag>");
    auto* tag = qobject_cast<QAStATag*>(item.get());
    QVERIFY(tag && tag->isValid());
    QTEST(tag->line(), "line");
    QCOMPARE(tag->qualifier(), 0);
}

void TestTagItems::tagChildrenAreTagsOnly()
{
    std::unique_ptr<QAStData> item = build(QStringLiteral(
        "<tag><data><name>outer</name><quid>1</quid></data><tag_child>"
        "<folder><data><name>intruder</name><quid>2</quid></data></folder>"
        "<tag><data><name>inner</name><quid>3</quid></data></tag>"
        "</tag_child></tag>"));
    auto* tag = qobject_cast<QAStATag*>(item.get());
    QVERIFY(tag);
    QCOMPARE(tag->childCount(), 1);
    QCOMPARE(tag->child()->name(), QStringLiteral("inner"));
    QCOMPARE(QAStData::loadReport(), QStringLiteral("folder bad place\n"));
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{QStringLiteral("Tag ignored in the group: folder")});

    std::unique_ptr<QAStData> broken =
        build(QStringLiteral("<tag><filepath>/a.c</filepath></tag>"));
    QVERIFY(broken && !broken->isValid());
}

void TestTagItems::filePathRelativeToTheTree_data()
{
    QTest::addColumn<bool>("useRelativePath");
    QTest::addColumn<QString>("written");
    QTest::newRow("relative") << true << "src/a.c";
    QTest::newRow("absolute") << false << "/project/src/a.c";
}

void TestTagItems::filePathRelativeToTheTree()
{
    QFETCH(bool, useRelativePath);
    QFETCH(QString, written);
    QAStData::preferences()->setUseRelativePath(useRelativePath);

    QAStRootFolder root(QStringLiteral("files"));
    root.setDirectory(QStringLiteral("/project"));
    auto* file = new QAStFile(QStringLiteral("src/a.c"), &root, nullptr);
    QCOMPARE(file->filePath(), QStringLiteral("/project/src/a.c"));
    const QString text = file->toString();
    QVERIFY2(text.contains("<filepath>" + written + "</filepath>"), qPrintable(text));

    // Read into another tree: relative paths follow that tree's directory.
    QAStRootFolder moved(QStringLiteral("files"));
    moved.setDirectory(QStringLiteral("/elsewhere"));
    std::unique_ptr<QAStData> back = build(text, &moved);
    const QString expected = useRelativePath ? QStringLiteral("/elsewhere/src/a.c") : written;
    QCOMPARE(qobject_cast<QAStFile*>(back.get())->filePath(), expected);

    // Read detached: a relative path waits for a tree.
    std::unique_ptr<QAStData> detached = build(text);
    auto* waiting = qobject_cast<QAStFile*>(detached.get());
    QCOMPARE(waiting->filePath(), written);
    moved.addChild(waiting, nullptr);
    QCOMPARE(waiting->filePath(), expected);
}

void TestTagItems::fileKeyIsTheCleanedAbsolutePath()
{
    QAStRootFolder root(QStringLiteral("files"));
    root.setDirectory(QStringLiteral("/project/sub"));
    auto* file = new QAStFile(QStringLiteral("../src/./a.c"), &root, nullptr);
    QCOMPARE(file->fileKey(), QStringLiteral("/project/src/a.c"));
    QCOMPARE(root.file(QStringLiteral("../src/a.c")), file);
    QCOMPARE(root.file(QStringLiteral("/project/src//a.c")), file);
    QVERIFY(!root.file(QStringLiteral("a.c")));
}

QTEST_MAIN(TestTagItems)
#include "tst_tag_items.moc"
