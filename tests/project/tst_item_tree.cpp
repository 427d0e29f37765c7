#include "QARes.h"
#include "QAStData.h"
#include "QAXML.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QDomDocument>
#include <QDomElement>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTextStream>
#include <QtTest>

#include <memory>

namespace {

QStringList namesOf(const QList<QAStData*>& items)
{
    QStringList names;
    for (const QAStData* item : items)
        names << item->name();
    return names;
}

QStringList childNames(const QAStData* parent)
{
    return namesOf(parent->childItems());
}

// The children as the sibling links give them, walked both ways.
QStringList linkedNames(const QAStData* parent)
{
    QStringList forward;
    for (QAStData* c = parent->child(); c; c = c->next())
        forward << c->name();
    QStringList backward;
    for (QAStData* c = parent->last(); c; c = c->previous())
        backward.prepend(c->name());
    return forward == backward ? forward : QStringList{QStringLiteral("<broken links>")};
}

QString dataBlock(const QString& inner)
{
    return QStringLiteral("<data>") + inner + QStringLiteral("</data>");
}

}

class TestItemTree : public QObject {
    Q_OBJECT
private slots:
    void init();

    void renameEmitsOnlyOnChange();
    void everyAttributeSignalsItsChange();
    void childrenFollowAfter();
    void signalsOfAddAndRemove();
    void movingAChildBetweenParents();
    void addChildRefusesCycles();
    void deletingAChildDetachesItQuietly();
    void deleteChildrenEmitsAndDeletes();
    void sortedChildren();
    void sortingRecursively();
    void searches();

    void writeGivesTheDataBlock();
    void encodedNamesReadBack_data();
    void encodedNamesReadBack();
    void faultsOfTheDataBlock_data();
    void faultsOfTheDataBlock();
    void checkTagOnANonElement();
    void quidsStayUniqueAfterARead();
    void quidThatIsNotANumber_data();
    void quidThatIsNotANumber();
    void anyTextReadsBack();
    void initFromResources();
    void readBoolValAcceptsText();

    void childrenKeepFileOrder_data();
    void childrenKeepFileOrder();
    void unknownTagIsReportedAndSkipped();
    void badPlaceIsReportedAndDropped();

private:
    std::unique_ptr<RecordingStudio> m_studio;
};

void TestItemTree::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    QAStData::clearLoadReport();
}

void TestItemTree::renameEmitsOnlyOnChange()
{
    QAStData item(QStringLiteral("a"), QPixmap());
    QSignalSpy renamed(&item, &QAStData::renamed);
    item.setName(QStringLiteral("b"));
    item.setName(QStringLiteral("b"));
    QCOMPARE(renamed.count(), 1);
    QCOMPARE(renamed.at(0).at(0).toString(), QStringLiteral("b"));
}

void TestItemTree::everyAttributeSignalsItsChange()
{
    QAStData item(QStringLiteral("a"), QPixmap());
    QSignalSpy changed(&item, &QAStData::attributeChanged);
    item.setName(QStringLiteral("b"));
    item.setQuid(item.quid() + 1000);
    item.setIconByFileName(QStringLiteral("node.png"));
    item.setRenameable(!item.isRenameable());
    item.setDeletable(!item.isDeletable());
    item.setExtended(!item.isExtended());
    item.setAlphabeticallySorted(!item.isAlphabeticallySorted());
    item.setExecutionResult(item.executionResult() + 1);
    item.setDuplicable(!item.isDuplicable());
    item.setModified(!item.isModified());
    QStringList names;
    for (const QList<QVariant>& args : changed)
        names << args.at(0).toString();
    QCOMPARE(names, (QStringList{"name", "quid", "icon", "renameable", "deletable", "open",
                                 "sorted", "executionResult", "duplicable", "modified"}));

    changed.clear();
    item.setRenameable(item.isRenameable());
    item.setExecutionResult(item.executionResult());
    item.setModified(item.isModified());
    QCOMPARE(changed.count(), 0);
}

void TestItemTree::childrenFollowAfter()
{
    TestItem root(QStringLiteral("root"));
    auto* b = new TestItem(QStringLiteral("b"), &root, nullptr);
    new TestItem(QStringLiteral("a"), &root, nullptr); // front
    new TestItem(QStringLiteral("c"), &root, b);
    TestItem stranger(QStringLiteral("stranger"));
    new TestItem(QStringLiteral("d"), &root, &stranger); // not a child: front

    QCOMPARE(linkedNames(&root), (QStringList{"d", "a", "b", "c"}));
    QCOMPARE(root.childCount(), 4);
    QCOMPARE(b->parent(), &root);
    QCOMPARE(b->QObject::parent(), &root);
    QCOMPARE(root.child()->name(), QStringLiteral("d"));
    QCOMPARE(root.last()->name(), QStringLiteral("c"));
}

void TestItemTree::signalsOfAddAndRemove()
{
    TestItem parent(QStringLiteral("p"));
    QSignalSpy childAdded(&parent, &QAStData::childAdded);
    QSignalSpy childRemoved(&parent, &QAStData::childRemoved);

    auto* child = new TestItem(QStringLiteral("c"));
    QSignalSpy added(child, &QAStData::added);
    QSignalSpy removed(child, &QAStData::removed);
    parent.addChild(child, nullptr);
    QCOMPARE(added.count(), 1);
    QCOMPARE(childAdded.count(), 1);
    QCOMPARE(childAdded.at(0).at(0).value<QAStData*>(), child);

    child->remove();
    QCOMPARE(removed.count(), 1);
    QCOMPARE(childRemoved.count(), 1);
    QCOMPARE(childRemoved.at(0).at(0).value<QAStData*>(), child);
    QVERIFY(!child->parent());
    QVERIFY(!child->QObject::parent());
    QCOMPARE(parent.childCount(), 0);

    child->remove(); // already detached: nothing
    QCOMPARE(removed.count(), 1);
    delete child;

    new TestItem(QStringLiteral("built inside"), &parent, nullptr);
    QCOMPARE(childAdded.count(), 2);
}

void TestItemTree::movingAChildBetweenParents()
{
    TestItem first(QStringLiteral("first"));
    TestItem second(QStringLiteral("second"));
    auto* child = new TestItem(QStringLiteral("c"), &first, nullptr);
    QSignalSpy leftFirst(&first, &QAStData::childRemoved);
    QSignalSpy reachedSecond(&second, &QAStData::childAdded);

    second.addChild(child, nullptr);
    QCOMPARE(leftFirst.count(), 1);
    QCOMPARE(reachedSecond.count(), 1);
    QCOMPARE(first.childCount(), 0);
    QCOMPARE(child->parent(), &second);
}

void TestItemTree::addChildRefusesCycles()
{
    TestItem root(QStringLiteral("root"));
    auto* mid = new TestItem(QStringLiteral("mid"), &root, nullptr);
    auto* leaf = new TestItem(QStringLiteral("leaf"), mid, nullptr);
    QSignalSpy added(leaf, &QAStData::childAdded);

    leaf->addChild(&root, nullptr);
    leaf->addChild(leaf, nullptr);
    leaf->addChild(nullptr, nullptr);
    QCOMPARE(added.count(), 0);
    QVERIFY(!root.parent());
    QVERIFY(root.isAncestorOf(leaf));
    QVERIFY(!leaf->isAncestorOf(&root));
    QCOMPARE(leaf->root(), &root);
}

void TestItemTree::deletingAChildDetachesItQuietly()
{
    TestItem root(QStringLiteral("root"));
    new TestItem(QStringLiteral("a"), &root, nullptr);
    auto* b = new TestItem(QStringLiteral("b"), &root, root.last());
    new TestItem(QStringLiteral("c"), &root, root.last());
    new TestItem(QStringLiteral("b1"), b, nullptr);
    QSignalSpy childRemoved(&root, &QAStData::childRemoved);

    delete b;
    QCOMPARE(childRemoved.count(), 0);
    QCOMPARE(linkedNames(&root), (QStringList{"a", "c"}));
    QCOMPARE(root.childCount(), 2);
}

void TestItemTree::deleteChildrenEmitsAndDeletes()
{
    TestItem root(QStringLiteral("root"));
    auto* a = new TestItem(QStringLiteral("a"), &root, nullptr);
    new TestItem(QStringLiteral("b"), &root, a);
    QSignalSpy childRemoved(&root, &QAStData::childRemoved);
    QSignalSpy destroyed(a, &QObject::destroyed);

    root.deleteChildren();
    QCOMPARE(childRemoved.count(), 2);
    QCOMPARE(destroyed.count(), 1);
    QCOMPARE(root.childCount(), 0);
    QVERIFY(!root.child());
    QVERIFY(!root.last());
}

void TestItemTree::sortedChildren()
{
    TestItem root(QStringLiteral("root"));
    root.setAlphabeticallySorted(true);
    new TestItem(QStringLiteral("delta"), &root, nullptr);
    new TestItem(QStringLiteral("Bravo"), &root, root.last());
    auto* alpha = new TestItem(QStringLiteral("alpha"), &root, root.last());
    new TestItem(QStringLiteral("bravo"), &root, nullptr);
    QCOMPARE(linkedNames(&root), (QStringList{"alpha", "Bravo", "bravo", "delta"}));

    alpha->setName(QStringLiteral("echo"));
    QCOMPARE(linkedNames(&root), (QStringList{"Bravo", "bravo", "delta", "echo"}));

    root.setAlphabeticallySorted(false);
    new TestItem(QStringLiteral("aaa"), &root, root.last());
    QCOMPARE(root.last()->name(), QStringLiteral("aaa"));
}

void TestItemTree::sortingRecursively()
{
    TestItem root(QStringLiteral("root"));
    auto* sub = new TestItem(QStringLiteral("sub"), &root, nullptr);
    new TestItem(QStringLiteral("z"), sub, nullptr);
    new TestItem(QStringLiteral("y"), sub, sub->last());
    new TestItem(QStringLiteral("a"), &root, root.last());

    root.setAlphabeticallySorted(true, false);
    QCOMPARE(childNames(&root), (QStringList{"a", "sub"}));
    QCOMPARE(childNames(sub), (QStringList{"z", "y"}));

    root.setAlphabeticallySorted(true, true);
    QVERIFY(sub->isAlphabeticallySorted());
    QCOMPARE(childNames(sub), (QStringList{"y", "z"}));
}

void TestItemTree::searches()
{
    TestItem root(QStringLiteral("root"));
    auto* folder = new TestFolder(QStringLiteral("folder"), &root, nullptr);
    auto* leaf1 = new TestLeaf(QStringLiteral("leaf1"), folder, nullptr);
    auto* inner = new TestFolder(QStringLiteral("inner"), folder, leaf1);
    auto* leaf2 = new TestLeaf(QStringLiteral("leaf2"), inner, nullptr);
    new TestLeaf(QStringLiteral("leaf3"), &root, folder);

    QCOMPARE(namesOf(root.childrenOfClass("TestLeaf")), QStringList{"leaf3"});
    QCOMPARE(namesOf(root.childrenOfClass("TestLeaf", true)), (QStringList{"leaf1", "leaf2", "leaf3"}));
    QCOMPARE(namesOf(root.childrenOfClass("QAStData", true)),
             (QStringList{"folder", "leaf1", "inner", "leaf2", "leaf3"}));
    QVERIFY(root.childrenOfClass("QAStProject", true).isEmpty());

    QCOMPARE(leaf2->parentOfClass("TestFolder"), inner);
    QCOMPARE(namesOf(leaf2->parentsOfClass("TestFolder")), (QStringList{"inner", "folder"}));
    QVERIFY(!leaf2->parentOfClass("TestLeaf"));

    QCOMPARE(root.searchChildOfClass(QStringLiteral("leaf2"), "TestLeaf", true), leaf2);
    QVERIFY(!root.searchChildOfClass(QStringLiteral("leaf2"), "TestLeaf", false));
    QVERIFY(!root.searchChildOfClass(QStringLiteral("inner"), "TestLeaf", true));

    QCOMPARE(root.findNode(QStringLiteral("leaf2")), leaf2);
    QCOMPARE(root.findNode(QStringLiteral("root")), &root);
    QVERIFY(!folder->findNode(QStringLiteral("leaf3")));
    QVERIFY(!root.projectItem());
    QVERIFY(!leaf2->rootProjectItem());
}

void TestItemTree::writeGivesTheDataBlock()
{
    QAStData item(QStringLiteral("a,b"), QPixmap());
    item.setQuid(42);
    item.setIconByFileName(QStringLiteral("node<1>.png"));
    item.setRenameable(false);
    item.setExtended(true);
    item.setExecutionResult(-3);

    QString text;
    QTextStream s(&text);
    item.write(s, 1);
    s.flush();
    QCOMPARE(text, QStringLiteral("  <data>\n"
                                  "    <name>a#comma#b</name>\n"
                                  "    <quid>42</quid>\n"
                                  "    <icon>node&lt;1&gt;.png</icon>\n"
                                  "    <renameable>false</renameable>\n"
                                  "    <deletable>true</deletable>\n"
                                  "    <open>true</open>\n"
                                  "    <sorted>false</sorted>\n"
                                  "    <executionResult>-3</executionResult>\n"
                                  "  </data>\n"));
}

void TestItemTree::encodedNamesReadBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("comma") << QStringLiteral("a,b,,c");
    QTest::newRow("angles") << QStringLiteral("<vector<int>>");
    QTest::newRow("ampersand") << QStringLiteral("R&D");
    QTest::newRow("entity text") << QStringLiteral("&lt;not a tag&gt;");
    QTest::newRow("all") << QStringLiteral(" a, <b> & c ");
    QTest::newRow("blanks only") << QStringLiteral("   ");
    QTest::newRow("tab and line feed only") << QStringLiteral("\t\n");
    QTest::newRow("carriage returns") << QStringLiteral("a\r\nb\rc\r");
    QTest::newRow("control characters") << QStringLiteral("esc\x1b[0m bell\x07 vt\x0b");
    QTest::newRow("escape texts literally") << QStringLiteral("#comma# #x41# ##x41# #x#comma#");
    QTest::newRow("hash before an escape") << QStringLiteral("#x4,#xA\x01#");
    QTest::newRow("non-characters") << QString(QChar(0xFFFE)) + QChar(0xFFFF) + QChar(0xD800)
                                           + QStringLiteral("x") + QChar(0xDC00);
    QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x98\x80 Gr\xC3\xB6\xC3\x9F" "e");
}

void TestItemTree::encodedNamesReadBack()
{
    QFETCH(QString, name);
    QAStData written(name, QPixmap());
    written.setIconByFileName(name);
    written.setAlphabeticallySorted(true);
    written.setDeletable(false);

    QDomDocument doc;
    QVERIFY(doc.setContent(written.toString()));
    QAStData read(doc.documentElement(), 1);
    QVERIFY(read.isValid());
    QCOMPARE(read.name(), name);
    QCOMPARE(read.iconFileName(), name);
    QCOMPARE(read.quid(), written.quid());
    QVERIFY(read.isAlphabeticallySorted());
    QVERIFY(!read.isDeletable());
    QVERIFY(QAStData::loadReport().isEmpty());
}

void TestItemTree::faultsOfTheDataBlock_data()
{
    QTest::addColumn<QString>("xml");
    QTest::addColumn<QString>("report");
    QTest::addColumn<QString>("name");

    QTest::newRow("no name") << dataBlock("<quid>3</quid>")
                             << "Unable to find tag name\n" << QString();
    QTest::newRow("no quid") << dataBlock("<name>n</name>")
                             << "Unable to find tag quid\n" << "n";
    QTest::newRow("neither") << dataBlock("<icon>i</icon>")
                             << "Unable to find tag name\nUnable to find tag quid\n" << QString();
    QTest::newRow("wrong tag") << "<foo><name>n</name><quid>3</quid></foo>"
                               << "Wait for tag data and read foo\n" << QString();
}

void TestItemTree::faultsOfTheDataBlock()
{
    QFETCH(QString, xml);
    QFETCH(QString, report);
    QFETCH(QString, name);

    QAStData item(parseElement(xml), 1);
    QVERIFY(!item.isValid());
    QCOMPARE(QAStData::loadReport(), report);
    QCOMPARE(item.name(), name);
}

void TestItemTree::checkTagOnANonElement()
{
    QDomDocument doc;
    QVERIFY(doc.setContent(QStringLiteral("<group>text</group>")));
    QVERIFY(!TestItem::checkTag(doc.documentElement().firstChild(), "data"));
    QVERIFY(!TestItem::checkTag(QDomElement(), "node"));
    QVERIFY(TestItem::checkTag(doc.documentElement(), "group"));
    QCOMPARE(QAStData::loadReport(),
             QStringLiteral("The xml tag data is not an element\nUnable to find tag node\n"));

    QAStData::clearLoadReport();
    QVERIFY(QAStData::loadReport().isEmpty());
}

void TestItemTree::quidsStayUniqueAfterARead()
{
    const quint32 high = QAStData(QStringLiteral("probe"), QPixmap()).quid() + 100000;
    QAStData read(parseElement(dataBlock(QStringLiteral("<name>r</name><quid>%1</quid>").arg(high))), 1);
    QCOMPARE(read.quid(), high);
    QAStData fresh(QStringLiteral("fresh"), QPixmap());
    QVERIFY(fresh.quid() > high);

    TestItem copy(QStringLiteral("copy"));
    auto* child = new TestItem(QStringLiteral("child"), &copy, nullptr);
    const quint32 before = child->quid();
    copy.renewQuids();
    QVERIFY(child->quid() > before);
}

void TestItemTree::quidThatIsNotANumber_data()
{
    QTest::addColumn<QString>("quid");
    QTest::newRow("word") << QStringLiteral("abc");
    QTest::newRow("negative") << QStringLiteral("-5");
    QTest::newRow("exponent") << QStringLiteral("1e29");
    QTest::newRow("too large") << QStringLiteral("4294967296");
}

// Said in the load report, and a fresh quid rather than 0 for every such
// item.
void TestItemTree::quidThatIsNotANumber()
{
    QFETCH(QString, quid);
    const QString xml = dataBlock(QStringLiteral("<name>n</name><quid>%1</quid>").arg(quid));
    QAStData first(parseElement(xml), 1);
    QAStData second(parseElement(xml), 1);
    QVERIFY(first.isValid());
    QVERIFY(first.quid() != 0);
    QVERIFY(first.quid() != second.quid());
    QCOMPARE(QAStData::loadReport(),
             QStringLiteral("The quid \"%1\" of n is not a number: it is given the quid %2\n"
                            "The quid \"%1\" of n is not a number: it is given the quid %3\n")
                 .arg(quid)
                 .arg(first.quid())
                 .arg(second.quid()));
}

// Random texts over the characters that need care, as a value, a list and
// a map, each through a real parse: what is written reads back equal, and
// the undecoded form decodes the same way.
void TestItemTree::anyTextReadsBack()
{
    const QList<char16_t> pool = {'a', ' ', ',', '=', '#', 'x', '4', '1', 'c', 'o', 'm', '&', '<',
                                  '>', ';', '"', '\'', '\t', '\n', '\r', 0x00, 0x01, 0x1B, 0xE9,
                                  0xFFFE, 0xD83D, 0xDE00};
    QRandomGenerator random(1803);
    const auto randomText = [&] {
        QString text;
        for (int i = random.bounded(8); i > 0; --i)
            text += QChar(pool.at(random.bounded(int(pool.size()))));
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const QString text = randomText();
        const QStringList list{randomText(), randomText()};
        const QMap<QString, QString> map{{randomText(), randomText()}, {randomText(), randomText()}};
        const QString xml = QStringLiteral("<v><s>%1</s><l>%2</l><m>%3</m><a x=\"%4\"/></v>")
                                .arg(QAXML::stringToXMLValue(text),
                                     QAXML::stringListToXMLValue(list),
                                     QAXML::stringMapToXMLValue(map),
                                     QAXML::attributeToXMLValue(text));
        QDomDocument doc;
        QString message;
        QVERIFY2(doc.setContent(xml, &message), qPrintable(message + QLatin1Char(' ') + xml));
        const QDomElement v = doc.documentElement();
        QCOMPARE(QAXML::domValue(v.firstChildElement(QStringLiteral("s"))), text);
        QCOMPARE(QAXML::commaToString(v.firstChildElement(QStringLiteral("a")).attribute("x")), text);
        QCOMPARE(QAXML::xmlValueToString(QAXML::stringToXMLValue(text)), text);
        QCOMPARE(QAXML::domValueList(v.firstChildElement(QStringLiteral("l"))), list);
        QCOMPARE(QAXML::domValueMap(v.firstChildElement(QStringLiteral("m"))), map);
    }
}

void TestItemTree::initFromResources()
{
    std::unique_ptr<QARes> res(QARes::readText(QStringLiteral("name = \"from res\"\n"
                                                              "quid = 777\n"
                                                              "icon = \"folder.png\"\n"
                                                              "renameable = false\n"
                                                              "deletable = \"false\"\n"
                                                              "open = true\n"
                                                              "sorted = true\n"
                                                              "executionResult = 2\n"),
                                               QStringLiteral("item.res")));
    QVERIFY(res);
    QAStData item(res.get());
    QVERIFY(item.isValid());
    QCOMPARE(item.name(), QStringLiteral("from res"));
    QCOMPARE(item.quid(), 777u);
    QCOMPARE(item.iconFileName(), QStringLiteral("folder.png"));
    QVERIFY(!item.isRenameable());
    QVERIFY(!item.isDeletable());
    QVERIFY(item.isExtended());
    QVERIFY(item.isAlphabeticallySorted());
    QCOMPARE(item.executionResult(), 2);

    std::unique_ptr<QARes> lists(QARes::readText(
        QStringLiteral("paths = ( \"a\", \"b\" )\nmap = ( \"k=v=w\", \"bare\" )\nnumber = \"7\"\n"),
        QStringLiteral("lists.res")));
    QAStStringListAttribute paths;
    QVERIFY(TestItem::readStrListVal(lists.get(), QStringLiteral("paths"), paths));
    QCOMPARE(paths.value(), (QStringList{"a", "b"}));
    QAStStringMapAttribute map;
    QVERIFY(TestItem::readStrMapVal(lists.get(), QStringLiteral("map"), map));
    QCOMPARE(map.value().value(QStringLiteral("k")), QStringLiteral("v=w"));
    QVERIFY(map.value().contains(QStringLiteral("bare")));
    QAStIntAttribute number(5);
    QVERIFY(!TestItem::readIntVal(lists.get(), QStringLiteral("number"), number));
    QCOMPARE(number.value(), 5);

    QAStData none(static_cast<QARes*>(nullptr));
    QVERIFY(!none.isValid());
}

void TestItemTree::readBoolValAcceptsText()
{
    std::unique_ptr<QARes> res(QARes::readText(
        QStringLiteral("a = true\nb = \"false\"\nc = \"maybe\"\nd = 1\n"), QStringLiteral("b.res")));
    QAStBoolAttribute a, b, c(true), d(true);
    QVERIFY(TestItem::readBoolVal(res.get(), QStringLiteral("a"), a));
    QVERIFY(a.value());
    QVERIFY(TestItem::readBoolVal(res.get(), QStringLiteral("b"), b));
    QVERIFY(!b.value());
    QVERIFY(!TestItem::readBoolVal(res.get(), QStringLiteral("c"), c));
    QVERIFY(!TestItem::readBoolVal(res.get(), QStringLiteral("d"), d));
    QVERIFY(c.value() && !c.isOverriden());
}

void TestItemTree::childrenKeepFileOrder_data()
{
    QTest::addColumn<bool>("sorted");
    QTest::newRow("insertion order") << false;
    QTest::newRow("sorted parent") << true;
}

// Items are attached before their names are read: under a sorted parent
// each would go to the front and the order would flip at every load.
void TestItemTree::childrenKeepFileOrder()
{
    QFETCH(bool, sorted);
    TestItem root(QStringLiteral("root"));
    root.setAlphabeticallySorted(sorted);
    new TestLeaf(QStringLiteral("z"), &root, nullptr);
    new TestLeaf(QStringLiteral("a"), &root, root.last());
    auto* m = new TestFolder(QStringLiteral("m"), &root, root.last());
    m->setAlphabeticallySorted(sorted);
    new TestLeaf(QStringLiteral("m2"), m, nullptr);
    new TestLeaf(QStringLiteral("m1"), m, m->last());
    const QStringList order = childNames(&root);

    const QString text = root.toString();
    QDomDocument doc;
    QVERIFY(doc.setContent(text));
    TestItem read(doc.documentElement(), 1, nullptr, nullptr);
    QVERIFY(read.isValid());
    QCOMPARE(childNames(&read), order);
    QCOMPARE(read.toString(), text);
    QAStData* readM = read.findNode(QStringLiteral("m"));
    QCOMPARE(readM->metaObject()->className(), "TestFolder");
    QCOMPARE(linkedNames(readM), sorted ? (QStringList{"m1", "m2"}) : (QStringList{"m2", "m1"}));
    QVERIFY(QAStData::loadReport().isEmpty());

    // A file whose order is not the sorted one keeps it too.
    TestItem handWritten(parseElement(QStringLiteral(
        "<test_item><data><name>g</name><quid>1</quid><sorted>true</sorted></data><children>"
        "<test_leaf><data><name>c</name><quid>2</quid></data></test_leaf>"
        "<test_leaf><data><name>a</name><quid>3</quid></data></test_leaf>"
        "<test_leaf><data><name>b</name><quid>4</quid></data></test_leaf>"
        "</children></test_item>")), 1, nullptr, nullptr);
    QCOMPARE(linkedNames(&handWritten), (QStringList{"c", "a", "b"}));
}

void TestItemTree::unknownTagIsReportedAndSkipped()
{
    const QString xml = QStringLiteral(
        "<test_item><data><name>g</name><quid>1</quid></data><children>"
        "<test_leaf><data><name>before</name><quid>2</quid></data></test_leaf>"
        "<x><anything/></x>"
        "<test_leaf><data><name>after</name><quid>3</quid></data></test_leaf>"
        "</children></test_item>");
    QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature x");
    TestItem group(parseElement(xml), 1, nullptr, nullptr);

    QCOMPARE(childNames(&group), (QStringList{"before", "after"}));
    QCOMPARE(QAStData::loadReport(), QStringLiteral("No plugin found for feature \"x\"\n"));
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{QStringLiteral("Tag ignored in the group: x")});
    QVERIFY(m_studio->messages(QAStData::OutputConsole).isEmpty());
    QVERIFY(group.isValid());
}

void TestItemTree::badPlaceIsReportedAndDropped()
{
    const QString xml = QStringLiteral(
        "<test_folder><data><name>f</name><quid>1</quid></data><children>"
        "<test_leaf><data><name>leaf</name><quid>2</quid></data></test_leaf>"
        "<test_item><data><name>intruder</name><quid>3</quid></data></test_item>"
        "<test_leaf><data><name>leaf2</name><quid>4</quid></data></test_leaf>"
        "</children></test_folder>");
    TestFolder folder(parseElement(xml), 1, nullptr, nullptr);

    QCOMPARE(linkedNames(&folder), (QStringList{"leaf", "leaf2"}));
    QCOMPARE(QAStData::loadReport(), QStringLiteral("test_item bad place\n"));
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{QStringLiteral("Tag ignored in the group: test_item")});
}

QTEST_MAIN(TestItemTree)
#include "tst_item_tree.moc"
