// The item tree: children, their signals, order and searches; the data
// block and the node block in XML and in the older resource form; the
// factory and the places a plug-in fills; undo and redo of edits.
#include "QAIActivityPlugin.h"
#include "QAINodePlugin.h"
#include "QAIProjectPlugin.h"
#include "QAITestNodePlugin.h"
#include "QARes.h"
#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStDataFactory.h"
#include "QAStDataUndoAction.h"
#include "QAStDataUndoActionManager.h"
#include "QAStNode.h"
#include "QAStNodePluginCenter.h"
#include "QAStProject.h"
#include "QAStSubProject.h"
#include "QAXML.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QClipboard>
#include <QDomDocument>
#include <QGuiApplication>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

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
    QStringList forward, backward;
    for (QAStData* c = parent->child(); c; c = c->next())
        forward << c->name();
    for (QAStData* c = parent->last(); c; c = c->previous())
        backward.prepend(c->name());
    return forward == backward ? forward : QStringList{u"<broken links>"_s};
}

// Children by name, nested ones in brackets: "a b[b1 b2] c".
QString shape(const QAStData* item)
{
    QStringList parts;
    for (QAStData* c = item->child(); c; c = c->next())
        parts << c->name() + (c->child() ? "[" + shape(c) + "]" : QString());
    return parts.join(u' ');
}

QString dataBlock(const QString& inner)
{
    return u"<data>"_s + inner + u"</data>"_s;
}

// Runs the deletions that del() and undo leave for later.
void flushDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

std::unique_ptr<QAStNode> readNode(const QString& xml)
{
    return std::make_unique<QAStNode>(parseElement(xml), 1);
}

// A node plug-in that answers for the interfaces it is told to, and
// records what the factory asks of it.
class ScriptedPlugin : public QAINodePlugin, public QAIActivityPlugin, public QAITestNodePlugin,
                       public QAIProjectPlugin {
public:
    enum Place { Activity = 1, TestNode = 2, Project = 4 };

    ScriptedPlugin(const QStringList& features, int places) : m_features(features), m_places(places)
    {
        QAStNodePluginCenter::nodePluginCenter()->registerPlugin(this);
    }
    ~ScriptedPlugin() override { QAStNodePluginCenter::nodePluginCenter()->unregisterPlugin(this); }

    QStringList features() const override { return m_features; }
    void* queryInterface(const char* iid) override
    {
        if ((m_places & Activity) && qstrcmp(iid, QAIActivityPlugin::interfaceId()) == 0)
            return static_cast<QAIActivityPlugin*>(this);
        if ((m_places & TestNode) && qstrcmp(iid, QAITestNodePlugin::interfaceId()) == 0)
            return static_cast<QAITestNodePlugin*>(this);
        if ((m_places & Project) && qstrcmp(iid, QAIProjectPlugin::interfaceId()) == 0)
            return static_cast<QAIProjectPlugin*>(this);
        return nullptr;
    }
    QAStData* createTestNode(const QString& feature, const QDomElement& e, int version, QAStData* parent,
                             QAStData* after) override
    {
        return make(u"test node"_s, feature, e, version, parent, after);
    }
    QAStData* createProjectItem(const QString& feature, const QDomElement& e, int version, QAStData* parent,
                                QAStData* after) override
    {
        return make(u"project item"_s, feature, e, version, parent, after);
    }

    QStringList calls;
    int lastVersion = 0;
    QAStData* lastAfter = nullptr;

private:
    QAStData* make(const QString& how, const QString& feature, const QDomElement& e, int version,
                   QAStData* parent, QAStData* after)
    {
        calls << how + u' ' + feature + u' ' + e.tagName();
        lastVersion = version;
        lastAfter = after;
        return new TestLeaf(how, parent, after);
    }

    QStringList m_features;
    int m_places;
};

}

class TestItemTree : public QObject {
    Q_OBJECT

    std::unique_ptr<RecordingStudio> m_studio;
    // For undo: root: a, b[b1 b2], c
    std::unique_ptr<TestItem> m_root;
    QAStData* m_b = nullptr;

private slots:
    void initTestCase() { QVERIFY(QAStConfiguration::initialize(nullptr, nullptr)); }

    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStData::clearLoadReport();
        QAStData::undoManager()->clear();
        m_root = std::make_unique<TestItem>(u"root"_s);
        auto* a = new TestItem(u"a"_s, m_root.get(), nullptr);
        m_b = new TestItem(u"b"_s, m_root.get(), a);
        new TestItem(u"b2"_s, m_b, new TestItem(u"b1"_s, m_b, nullptr));
        new TestItem(u"c"_s, m_root.get(), m_b);
    }

    void cleanup()
    {
        m_root.reset();
        flushDeletes();
        QAStData::undoManager()->clear();
    }

    // --- the tree

    void everyAttributeSignalsItsChange()
    {
        QAStData item(u"a"_s, QPixmap());
        QSignalSpy changed(&item, &QAStData::attributeChanged);
        QSignalSpy renamed(&item, &QAStData::renamed);
        item.setName(u"b"_s);
        item.setName(u"b"_s);
        QCOMPARE(renamed.count(), 1);
        QCOMPARE(renamed.at(0).at(0).toString(), u"b"_s);
        item.setQuid(item.quid() + 1000);
        item.setIconByFileName(u"node.png"_s);
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
        QCOMPARE(names, QStringList({"name", "quid", "icon", "renameable", "deletable", "open", "sorted",
                                     "executionResult", "duplicable", "modified"}));
        changed.clear();
        item.setRenameable(item.isRenameable());
        item.setExecutionResult(item.executionResult());
        item.setModified(item.isModified());
        QCOMPARE(changed.count(), 0);
    }

    void childrenFollowAfter()
    {
        TestItem root(u"root"_s);
        auto* b = new TestItem(u"b"_s, &root, nullptr);
        new TestItem(u"a"_s, &root, nullptr); // front
        new TestItem(u"c"_s, &root, b);
        TestItem stranger(u"stranger"_s);
        new TestItem(u"d"_s, &root, &stranger); // not a child: front
        QCOMPARE(linkedNames(&root), QStringList({"d", "a", "b", "c"}));
        QCOMPARE(root.childCount(), 4);
        QCOMPARE(b->parent(), &root);
        QCOMPARE(b->QObject::parent(), &root);
    }

    void signalsOfAddMoveAndRemove()
    {
        TestItem parent(u"p"_s);
        QSignalSpy childAdded(&parent, &QAStData::childAdded);
        QSignalSpy childRemoved(&parent, &QAStData::childRemoved);
        auto* child = new TestItem(u"c"_s);
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
        new TestItem(u"built inside"_s, &parent, nullptr);
        QCOMPARE(childAdded.count(), 2);

        // A child moved to another parent leaves the first with a signal.
        TestItem second(u"second"_s);
        QSignalSpy reachedSecond(&second, &QAStData::childAdded);
        second.addChild(parent.child(), nullptr);
        QCOMPARE(childRemoved.count(), 2);
        QCOMPARE(reachedSecond.count(), 1);
        QCOMPARE(parent.childCount(), 0);
        QCOMPARE(second.child()->parent(), &second);
    }

    void addChildRefusesCycles()
    {
        TestItem root(u"root"_s);
        auto* leaf = new TestItem(u"leaf"_s, new TestItem(u"mid"_s, &root, nullptr), nullptr);
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

    // Deleting a child detaches it quietly; deleteChildren says so for each.
    void deletingChildren()
    {
        QSignalSpy childRemoved(m_root.get(), &QAStData::childRemoved);
        delete m_b;
        QCOMPARE(childRemoved.count(), 0);
        QCOMPARE(linkedNames(m_root.get()), QStringList({"a", "c"}));
        QCOMPARE(m_root->childCount(), 2);
        QSignalSpy destroyed(m_root->child(), &QObject::destroyed);
        m_root->deleteChildren();
        QCOMPARE(childRemoved.count(), 2);
        QCOMPARE(destroyed.count(), 1);
        QCOMPARE(m_root->childCount(), 0);
        QVERIFY(!m_root->child());
        QVERIFY(!m_root->last());
    }

    void sortedChildren()
    {
        TestItem root(u"root"_s);
        root.setAlphabeticallySorted(true);
        new TestItem(u"delta"_s, &root, nullptr);
        new TestItem(u"Bravo"_s, &root, root.last());
        auto* alpha = new TestItem(u"alpha"_s, &root, root.last());
        new TestItem(u"bravo"_s, &root, nullptr);
        QCOMPARE(linkedNames(&root), QStringList({"alpha", "Bravo", "bravo", "delta"}));
        alpha->setName(u"echo"_s);
        QCOMPARE(linkedNames(&root), QStringList({"Bravo", "bravo", "delta", "echo"}));
        root.setAlphabeticallySorted(false);
        new TestItem(u"aaa"_s, &root, root.last());
        QCOMPARE(root.last()->name(), u"aaa"_s);

        // Sorted alone or with the levels below.
        TestItem top(u"top"_s);
        auto* sub = new TestItem(u"sub"_s, &top, nullptr);
        new TestItem(u"y"_s, sub, new TestItem(u"z"_s, sub, nullptr));
        new TestItem(u"a"_s, &top, top.last());
        top.setAlphabeticallySorted(true, false);
        QCOMPARE(childNames(&top), QStringList({"a", "sub"}));
        QCOMPARE(childNames(sub), QStringList({"z", "y"}));
        top.setAlphabeticallySorted(true, true);
        QVERIFY(sub->isAlphabeticallySorted());
        QCOMPARE(childNames(sub), QStringList({"y", "z"}));
    }

    void searches()
    {
        TestItem root(u"root"_s);
        auto* folder = new TestFolder(u"folder"_s, &root, nullptr);
        auto* leaf1 = new TestLeaf(u"leaf1"_s, folder, nullptr);
        auto* inner = new TestFolder(u"inner"_s, folder, leaf1);
        auto* leaf2 = new TestLeaf(u"leaf2"_s, inner, nullptr);
        new TestLeaf(u"leaf3"_s, &root, folder);
        QCOMPARE(namesOf(root.childrenOfClass("TestLeaf")), QStringList{"leaf3"});
        QCOMPARE(namesOf(root.childrenOfClass("TestLeaf", true)), QStringList({"leaf1", "leaf2", "leaf3"}));
        QCOMPARE(namesOf(root.childrenOfClass("QAStData", true)),
                 QStringList({"folder", "leaf1", "inner", "leaf2", "leaf3"}));
        QVERIFY(root.childrenOfClass("QAStProject", true).isEmpty());
        QCOMPARE(leaf2->parentOfClass("TestFolder"), inner);
        QCOMPARE(namesOf(leaf2->parentsOfClass("TestFolder")), QStringList({"inner", "folder"}));
        QVERIFY(!leaf2->parentOfClass("TestLeaf"));
        QCOMPARE(root.searchChildOfClass(u"leaf2"_s, "TestLeaf", true), leaf2);
        QVERIFY(!root.searchChildOfClass(u"leaf2"_s, "TestLeaf", false));
        QVERIFY(!root.searchChildOfClass(u"inner"_s, "TestLeaf", true));
        QCOMPARE(root.findNode(u"leaf2"_s), leaf2);
        QCOMPARE(root.findNode(u"root"_s), &root);
        QVERIFY(!folder->findNode(u"leaf3"_s));
        QVERIFY(!root.projectItem());
        QVERIFY(!leaf2->rootProjectItem());
    }

    // --- the data block

    void encodedNamesReadBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("all") << u" a,,b <vector<int>> R&D &lt;not a tag&gt; "_s;
        QTest::newRow("blanks only") << u"   "_s;
        QTest::newRow("tab and line feed only") << u"\t\n"_s;
        QTest::newRow("carriage returns") << u"a\r\nb\rc\r"_s;
        QTest::newRow("control characters") << u"esc\x1b[0m bell\x07 vt\x0b"_s;
        QTest::newRow("escape texts literally") << u"#comma# #x41# ##x41# #x#comma#"_s;
        QTest::newRow("hash before an escape") << u"#x4,#xA\x01#"_s;
        QTest::newRow("non-characters") << QString(QChar(0xFFFE)) + QChar(0xFFFF) + QChar(0xD800) + u"x"_s + QChar(0xDC00);
        QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x98\x80 Gr\xC3\xB6\xC3\x9F" "e");
    }
    void encodedNamesReadBack()
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

    // A data block, or a node block around one, that is not read: said in
    // the load report.
    void faultsOfTheBlocks_data()
    {
        QTest::addColumn<bool>("node");
        QTest::addColumn<QString>("xml");
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("name");
        QTest::newRow("no name") << false << dataBlock("<quid>3</quid>") << "Unable to find tag name\n" << QString();
        QTest::newRow("no quid") << false << dataBlock("<name>n</name>") << "Unable to find tag quid\n" << "n";
        QTest::newRow("neither") << false << dataBlock("<icon>i</icon>")
                                 << "Unable to find tag name\nUnable to find tag quid\n" << QString();
        QTest::newRow("wrong tag") << false << "<foo><name>n</name><quid>3</quid></foo>"
                                   << "Wait for tag data and read foo\n" << QString();
        QTest::newRow("node: other element") << true << "<group><data/></group>"
                                             << "Wait for tag node and read group\n" << QString();
        QTest::newRow("node: no data block") << true << "<node><current_configuration>x</current_configuration></node>"
                                             << "Unable to find tag data\n" << QString();
        QTest::newRow("node: data without quid") << true << "<node><data><name>n</name></data></node>"
                                                 << "Unable to find tag quid\n" << "n";
    }
    void faultsOfTheBlocks()
    {
        QFETCH(bool, node);
        QFETCH(QString, xml);
        const std::unique_ptr<QAStData> item(node ? new QAStNode(parseElement(xml), 1)
                                                  : new QAStData(parseElement(xml), 1));
        QVERIFY(!item->isValid());
        QTEST(QAStData::loadReport(), "report");
        QTEST(item->name(), "name");
    }

    void checkTagOnANonElement()
    {
        QDomDocument doc;
        QVERIFY(doc.setContent(u"<group>text</group>"_s));
        QVERIFY(!TestItem::checkTag(doc.documentElement().firstChild(), "data"));
        QVERIFY(!TestItem::checkTag(QDomElement(), "node"));
        QVERIFY(TestItem::checkTag(doc.documentElement(), "group"));
        QCOMPARE(QAStData::loadReport(), u"The xml tag data is not an element\nUnable to find tag node\n"_s);
        QAStData::clearLoadReport();
        QVERIFY(QAStData::loadReport().isEmpty());
    }

    void quidsStayUniqueAfterARead()
    {
        const quint32 high = QAStData(u"probe"_s, QPixmap()).quid() + 100000;
        QAStData read(parseElement(dataBlock(u"<name>r</name><quid>%1</quid>"_s.arg(high))), 1);
        QCOMPARE(read.quid(), high);
        QVERIFY(QAStData(u"fresh"_s, QPixmap()).quid() > high);
        const quint32 before = m_root->child()->quid();
        m_root->renewQuids();
        QVERIFY(m_root->child()->quid() > before);
    }

    void quidThatIsNotANumber_data()
    {
        QTest::addColumn<QString>("quid");
        for (const char* quid : {"abc", "-5", "1e29", "4294967296"})
            QTest::newRow(quid) << QString::fromLatin1(quid);
    }
    // Said in the load report, and a fresh quid rather than 0 for every such
    // item.
    void quidThatIsNotANumber()
    {
        QFETCH(QString, quid);
        const QString xml = dataBlock(u"<name>n</name><quid>%1</quid>"_s.arg(quid));
        QAStData first(parseElement(xml), 1);
        QAStData second(parseElement(xml), 1);
        QVERIFY(first.isValid());
        QVERIFY(first.quid() != 0);
        QVERIFY(first.quid() != second.quid());
        QCOMPARE(QAStData::loadReport(), u"The quid \"%1\" of n is not a number: it is given the quid %2\n"
                                         "The quid \"%1\" of n is not a number: it is given the quid %3\n"_s
                                             .arg(quid).arg(first.quid()).arg(second.quid()));
    }

    // Random texts over the characters that need care, as a value, a list
    // and a map, each through a real parse: what is written reads back
    // equal, and the undecoded form decodes the same way.
    void anyTextReadsBack()
    {
        const QList<char16_t> pool = {'a', ' ', ',', '=', '#', 'x', '4', '1', 'c', 'o', 'm', '&', '<', '>', ';', '"',
                                      '\'', '\t', '\n', '\r', 0x00, 0x01, 0x1B, 0xE9, 0xFFFE, 0xD83D, 0xDE00};
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
            const QString xml = u"<v><s>%1</s><l>%2</l><m>%3</m><a x=\"%4\"/></v>"_s.arg(
                QAXML::stringToXMLValue(text), QAXML::stringListToXMLValue(list), QAXML::stringMapToXMLValue(map),
                QAXML::attributeToXMLValue(text));
            QDomDocument doc;
            QString message;
            QVERIFY2(doc.setContent(xml, &message), qPrintable(message + u' ' + xml));
            const QDomElement v = doc.documentElement();
            QCOMPARE(QAXML::domValue(v.firstChildElement(u"s"_s)), text);
            QCOMPARE(QAXML::commaToString(v.firstChildElement(u"a"_s).attribute("x")), text);
            QCOMPARE(QAXML::xmlValueToString(QAXML::stringToXMLValue(text)), text);
            QCOMPARE(QAXML::domValueList(v.firstChildElement(u"l"_s)), list);
            QCOMPARE(QAXML::domValueMap(v.firstChildElement(u"m"_s)), map);
        }
    }

    void initFromResources()
    {
        std::unique_ptr<QARes> res(QARes::readText(
            u"name = \"from res\"\nquid = 777\nicon = \"folder.png\"\nrenameable = false\n"
            "deletable = \"false\"\nopen = true\nsorted = true\nexecutionResult = 2\n"_s, u"item.res"_s));
        QVERIFY(res);
        QAStData item(res.get());
        QVERIFY(item.isValid());
        QCOMPARE(item.name(), u"from res"_s);
        QCOMPARE(item.quid(), 777u);
        QCOMPARE(item.iconFileName(), u"folder.png"_s);
        QVERIFY(!item.isRenameable());
        QVERIFY(!item.isDeletable());
        QVERIFY(item.isExtended());
        QVERIFY(item.isAlphabeticallySorted());
        QCOMPARE(item.executionResult(), 2);

        std::unique_ptr<QARes> values(QARes::readText(
            u"paths = ( \"a\", \"b\" )\nmap = ( \"k=v=w\", \"bare\" )\nnumber = \"7\"\n"
            "a = true\nb = \"false\"\nc = \"maybe\"\nd = 1\n"_s, u"values.res"_s));
        QAStStringListAttribute paths;
        QVERIFY(TestItem::readStrListVal(values.get(), u"paths"_s, paths));
        QCOMPARE(paths.value(), QStringList({"a", "b"}));
        QAStStringMapAttribute map;
        QVERIFY(TestItem::readStrMapVal(values.get(), u"map"_s, map));
        QCOMPARE(map.value().value(u"k"_s), u"v=w"_s);
        QVERIFY(map.value().contains(u"bare"_s));
        QAStIntAttribute number(5);
        QVERIFY(!TestItem::readIntVal(values.get(), u"number"_s, number));
        QCOMPARE(number.value(), 5);
        // A Boolean is read from a word or a text of one.
        QAStBoolAttribute a, b, c(true), d(true);
        QVERIFY(TestItem::readBoolVal(values.get(), u"a"_s, a));
        QVERIFY(a.value());
        QVERIFY(TestItem::readBoolVal(values.get(), u"b"_s, b));
        QVERIFY(!b.value());
        QVERIFY(!TestItem::readBoolVal(values.get(), u"c"_s, c));
        QVERIFY(!TestItem::readBoolVal(values.get(), u"d"_s, d));
        QVERIFY(c.value() && !c.isOverriden());

        QAStData none(static_cast<QARes*>(nullptr));
        QVERIFY(!none.isValid());
    }

    void childrenKeepFileOrder_data()
    {
        QTest::addColumn<bool>("sorted");
        QTest::newRow("insertion order") << false;
        QTest::newRow("sorted parent") << true;
    }
    // Items are attached before their names are read: under a sorted parent
    // each would go to the front and the order would flip at every load.
    void childrenKeepFileOrder()
    {
        QFETCH(bool, sorted);
        TestItem root(u"root"_s);
        root.setAlphabeticallySorted(sorted);
        new TestLeaf(u"a"_s, &root, new TestLeaf(u"z"_s, &root, nullptr));
        auto* m = new TestFolder(u"m"_s, &root, root.last());
        m->setAlphabeticallySorted(sorted);
        new TestLeaf(u"m1"_s, m, new TestLeaf(u"m2"_s, m, nullptr));
        const QStringList order = childNames(&root);
        const QString text = root.toString();
        QDomDocument doc;
        QVERIFY(doc.setContent(text));
        TestItem read(doc.documentElement(), 1, nullptr, nullptr);
        QVERIFY(read.isValid());
        QCOMPARE(childNames(&read), order);
        QCOMPARE(read.toString(), text);
        QAStData* readM = read.findNode(u"m"_s);
        QCOMPARE(readM->metaObject()->className(), "TestFolder");
        QCOMPARE(linkedNames(readM), sorted ? QStringList({"m1", "m2"}) : QStringList({"m2", "m1"}));
        QVERIFY(QAStData::loadReport().isEmpty());
        // A file whose order is not the sorted one keeps it too.
        TestItem handWritten(parseElement(u"<test_item><data><name>g</name><quid>1</quid><sorted>true</sorted>"
                                          "</data><children>"
                                          "<test_leaf><data><name>c</name><quid>2</quid></data></test_leaf>"
                                          "<test_leaf><data><name>a</name><quid>3</quid></data></test_leaf>"
                                          "<test_leaf><data><name>b</name><quid>4</quid></data></test_leaf>"
                                          "</children></test_item>"_s), 1, nullptr, nullptr);
        QCOMPARE(linkedNames(&handWritten), QStringList({"c", "a", "b"}));
    }

    // An unknown tag is reported, told on the message console, and left out;
    // the items around it are read and the group stays valid. (A known tag
    // in a bad place: TestNodeKinds::badPlace.)
    void unknownTagIsReportedAndSkipped()
    {
        QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature x");
        TestItem group(parseElement(u"<test_item><data><name>g</name><quid>1</quid></data><children>"
                                    "<test_leaf><data><name>before</name><quid>2</quid></data></test_leaf>"
                                    "<x><anything/></x>"
                                    "<test_leaf><data><name>after</name><quid>3</quid></data></test_leaf>"
                                    "</children></test_item>"_s), 1, nullptr, nullptr);
        QCOMPARE(childNames(&group), QStringList({"before", "after"}));
        QCOMPARE(QAStData::loadReport(), u"No plugin found for feature \"x\"\n"_s);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList{u"Tag ignored in the group: x"_s});
        QVERIFY(m_studio->messages(QAStData::OutputConsole).isEmpty());
        QVERIFY(group.isValid());
    }

    // --- the node block

    void statePredicates_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("selected");
        QTest::addColumn<bool>("unSelected");
        QTest::addColumn<bool>("reports");
        QTest::newRow("0 selected") << 0 << true << false << true;
        QTest::newRow("1 left out") << 1 << false << true << false;
        QTest::newRow("2 left out, reported") << 2 << false << true << true;
    }
    void statePredicates()
    {
        QFETCH(int, state);
        QAStNode node(u"n"_s, QPixmap());
        QSignalSpy changed(&node, &QAStNode::stateChanged);
        node.setState(QAStNode::State(state));
        node.setState(QAStNode::State(state));
        QCOMPARE(changed.count(), state == 0 ? 0 : 1);
        QTEST(node.isSelected(), "selected");
        QTEST(node.isUnSelected(), "unSelected");
        QTEST(node.provideReports(), "reports");
        // The state is written as its integer and read back.
        QCOMPARE(int(readNode(node.toString())->state()), state);
    }

    void outputFilesMergeByType()
    {
        QAStNode node(u"n"_s, QPixmap());
        node.addOutputFile(u"TSF"_s, {u"a"_s, u"b"_s});
        node.addOutputFile(u"FDC"_s, {u"f"_s});
        node.addOutputFile(u"TSF"_s, {u"b"_s, u"c"_s});
        QCOMPARE(node.outputFiles().size(), 2);
        QCOMPARE(node.outputFiles(u"TSF"_s), QStringList({u"a"_s, u"b"_s, u"c"_s}));
        QCOMPARE(node.outputFiles(u"none"_s), QStringList());
        node.removeOutputFiles(u"TSF"_s);
        QCOMPARE(node.outputFiles().size(), 1);
        QCOMPARE(node.outputFiles().at(0).filetype, u"FDC"_s);
    }

    void missingFieldsKeepDefaults()
    {
        const std::unique_ptr<QAStNode> read =
            readNode(u"<node><data><name>n</name><quid>3</quid></data><state>9</state></node>"_s);
        QVERIFY(read->isValid());
        QCOMPARE(read->state(), QAStNode::Selected);
        QVERIFY(!read->background());
        QVERIFY(read->outputFiles().isEmpty());
        const QString report = QAStData::loadReport();
        for (const char* tag : {"current_configuration", "background", "outfilename_list", "perlscript_before_child",
                                "perlscript_after_child", "configuration_list"})
            QVERIFY2(report.contains(u"Unable to find tag "_s + QLatin1String(tag)), tag);
        QVERIFY(!report.contains(u"tag state"_s));
    }

    // --- the factory and the plug-ins

    void registrationCanBeWithdrawn()
    {
        int calls = 0;
        QAStDataFactory::registerClass(u"counted"_s, [&calls](const QDomElement&, int, QAStData* p, QAStData* a) {
            ++calls;
            return new TestItem(u"counted"_s, p, a);
        });
        QVERIFY(QAStDataFactory::isRegistered(u"counted"_s));
        delete QAStDataFactory::create(parseElement("<counted/>"), 1, nullptr, nullptr);
        QCOMPARE(calls, 1);
        QAStDataFactory::unregisterClass(u"counted"_s);
        QVERIFY(!QAStDataFactory::isRegistered(u"counted"_s));
        QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature counted");
        QVERIFY(!QAStDataFactory::create(parseElement("<counted/>"), 1, nullptr, nullptr));
        QCOMPARE(calls, 1);
        QVERIFY(!QAStDataFactory::create(QDomElement(), 1, nullptr, nullptr));
    }

    void pluginPlaces_data()
    {
        QTest::addColumn<int>("places");
        QTest::addColumn<QString>("call");
        QTest::newRow("none") << 0 << QString();
        QTest::newRow("activity builds nothing") << int(ScriptedPlugin::Activity) << QString();
        QTest::newRow("test node") << int(ScriptedPlugin::TestNode) << "test node feat feat";
        QTest::newRow("project") << int(ScriptedPlugin::Project) << "project item feat feat";
    }
    void pluginPlaces()
    {
        QFETCH(int, places);
        QFETCH(QString, call);
        ScriptedPlugin plugin({u"feat"_s}, places);
        QAStData* after = m_root->child();
        if (call.isEmpty())
            QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature feat");
        QAStData* made = QAStDataFactory::create(parseElement("<feat/>"), 7, m_root.get(), after);
        QCOMPARE(made != nullptr, !call.isEmpty());
        QCOMPARE(plugin.calls, call.isEmpty() ? QStringList() : QStringList{call});
        if (made) {
            QCOMPARE(plugin.lastVersion, 7);
            QCOMPARE(plugin.lastAfter, after);
            QCOMPARE(made->previous(), after);
        }
    }

    void firstAnsweringPluginWins()
    {
        // Activity comes before the test-node interface, even in one plug-in.
        ScriptedPlugin both({u"one"_s}, ScriptedPlugin::Activity | ScriptedPlugin::TestNode);
        QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature one");
        QVERIFY(!QAStDataFactory::create(parseElement("<one/>"), 1, nullptr, nullptr));
        QVERIFY(both.calls.isEmpty());
        // Test node comes before project, whichever plug-in registered first.
        ScriptedPlugin project({u"two"_s}, ScriptedPlugin::Project);
        ScriptedPlugin testNode({u"two"_s}, ScriptedPlugin::TestNode);
        delete QAStDataFactory::create(parseElement("<two/>"), 1, nullptr, nullptr);
        QCOMPARE(testNode.calls, QStringList{"test node two two"});
        QVERIFY(project.calls.isEmpty());
    }

    void pluginItemsJoinTheTree()
    {
        ScriptedPlugin plugin({u"plugged"_s}, ScriptedPlugin::TestNode);
        TestFolder folder(parseElement(u"<test_folder><data><name>f</name><quid>1</quid></data><children>"
                                       "<test_leaf><data><name>first</name><quid>2</quid></data></test_leaf>"
                                       "<plugged/>"
                                       "<test_leaf><data><name>last</name><quid>3</quid></data></test_leaf>"
                                       "</children></test_folder>"_s), 1, nullptr, nullptr);
        QCOMPARE(linkedNames(&folder), QStringList({"first", "test node", "last"}));
        QVERIFY(QAStData::loadReport().isEmpty());
        QVERIFY(m_studio->messages(QAStData::MessageConsole).isEmpty());
    }

    void centerMatchesFeatureAndInterface()
    {
        QAStNodePluginCenter* center = QAStNodePluginCenter::nodePluginCenter();
        ScriptedPlugin a({u"f1"_s}, ScriptedPlugin::Project);
        ScriptedPlugin b({u"f1"_s, u"f2"_s}, ScriptedPlugin::Project);
        center->registerPlugin(&a); // twice: no effect
        QCOMPARE(center->plugins().count(&a), 1);
        void* found = &found;
        QVERIFY(center->queryComponentInterface(u"f1"_s, QAIProjectPlugin::interfaceId(), &found));
        QCOMPARE(found, static_cast<void*>(static_cast<QAIProjectPlugin*>(&a)));
        QVERIFY(center->queryComponentInterface(u"f2"_s, QAIProjectPlugin::interfaceId(), &found));
        QCOMPARE(found, static_cast<void*>(static_cast<QAIProjectPlugin*>(&b)));
        QVERIFY(!center->queryComponentInterface(u"f2"_s, QAITestNodePlugin::interfaceId(), &found));
        QVERIFY(!found);
        QVERIFY(!center->queryComponentInterface(u"f3"_s, QAIProjectPlugin::interfaceId(), &found));
        const quint64 generation = center->generation();
        center->unregisterPlugin(&a);
        QVERIFY(center->generation() != generation);
        QVERIFY(!center->plugins().contains(&a));
    }

    // --- undo

    void undoOfARemovalRebuildsItInPlace()
    {
        const quint32 quid = m_b->quid();
        const quint32 childQuid = m_b->child()->quid();
        const QString text = m_b->toString();
        QVERIFY(m_b->del());
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a c"_s);
        QVERIFY(QAStData::isUndoAvailable());
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
        QAStData* rebuilt = m_root->child()->next();
        QCOMPARE(rebuilt->quid(), quid);
        QCOMPARE(rebuilt->child()->quid(), childQuid);
        QCOMPARE(rebuilt->toString(), text);
        QVERIFY(!QAStData::isUndoAvailable());
        QVERIFY(QAStData::isRedoAvailable());
        // Redone, then undone again.
        QAStData::redo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a c"_s);
        QVERIFY(QAStData::isUndoAvailable());
        QVERIFY(!QAStData::isRedoAvailable());
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
    }

    void additionsAndMoves()
    {
        QVERIFY(m_root->userAdd(new TestItem(u"d"_s), m_root->child()));
        QCOMPARE(shape(m_root.get()), u"a d b[b1 b2] c"_s);
        // A move is one entry: a removal at the old place, an addition at the new.
        QVERIFY(QAStData::userMove(m_b->child(), m_root->last(), nullptr));
        QCOMPARE(shape(m_root.get()), u"a d b[b2] c[b1]"_s);
        QVERIFY(!QAStData::userMove(m_root.get(), m_b, nullptr));
        QAStData::undo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a d b[b1 b2] c"_s);
        QAStData::undo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
        QAStData::redo();
        QAStData::redo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a d b[b2] c[b1]"_s);
    }

    void pasteAndCutRecord()
    {
        m_root->child()->copy();
        QVERIFY(m_b->paste());
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2 a] c"_s);
        m_root->last()->cut();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2 a]"_s);
        QVERIFY(QGuiApplication::clipboard()->text().contains(u"<name>c</name>"_s));
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2 a] c"_s);
        QAStData::undo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
    }

    // An empty stack changes nothing, neither does an empty entry; loading
    // and deleteChildren record nothing; a new edit empties the redo stack.
    void stackRules()
    {
        const QString before = m_root->toString();
        QAStData::undo();
        QAStData::redo();
        QCOMPARE(m_root->toString(), before);
        QVERIFY(!QAStData::isUndoAvailable());
        QVERIFY(!QAStData::isRedoAvailable());
        QAStData::undoManager()->add(QList<QAStDataUndoAction*>{nullptr});
        QVERIFY(!QAStData::isUndoAvailable());
        {
            std::unique_ptr<QAStData> loaded(QAStData::stringContentToData(m_root->toString()));
            QVERIFY(loaded);
            QCOMPARE(shape(loaded.get()), shape(m_root.get()));
            loaded->deleteChildren();
            QVERIFY(!QAStData::isUndoAvailable());
        }
        m_b->del();
        QAStData::undo();
        QVERIFY(QAStData::isRedoAvailable());
        m_root->child()->del();
        QVERIFY(!QAStData::isRedoAvailable());
        QAStData::redo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"b[b1 b2] c"_s);
    }

    void goneParentIsSkipped()
    {
        m_b->child()->del();
        m_b->userAdd(new TestItem(u"added"_s), nullptr);
        QPointer<QAStData> b = m_b;
        delete m_b;
        flushDeletes();
        QVERIFY(!b);
        QVERIFY(!QAStData::isUndoAvailable());
        QAStData::undo();
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a c"_s);
        QVERIFY(!QAStData::isRedoAvailable());
        // The whole tree gone: the project closed.
        m_root->child()->del();
        m_root.reset();
        flushDeletes();
        QAStData::undo();
        QVERIFY(!QAStData::isRedoAvailable());
    }

    void adjacentRemovalsInOneEntry()
    {
        // As a view deletes a selection: every removal taken before any
        // item leaves.
        QAStData* a = m_root->child();
        QList<QAStDataUndoAction*> removals{new QAStDataUndoAction(QAStDataUndoAction::Removed, a),
                                            new QAStDataUndoAction(QAStDataUndoAction::Removed, m_b)};
        for (QAStData* item : {a, m_b}) {
            item->remove();
            item->deleteLater();
        }
        QAStData::undoManager()->add(removals);
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"c"_s);
        for (int round = 0; round < 2; ++round) {
            QAStData::undo();
            QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
            QAStData::redo();
            flushDeletes();
            QCOMPARE(shape(m_root.get()), u"c"_s);
        }
    }

    void childComesBackIntoItsRebuiltParent()
    {
        m_b->child()->del();
        m_b->del();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), u"a c"_s);
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b2] c"_s);
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
    }

    // The rebuilt item is attached before its name is read: it must not go
    // to the front of its sorted parent.
    void sortedParentTakesItBackInPlace()
    {
        m_root->setAlphabeticallySorted(true);
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
        QVERIFY(m_b->del());
        flushDeletes();
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
        QAStData::redo();
        flushDeletes();
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), u"a b[b1 b2] c"_s);
    }

    // Quids are unique within one project file: a sub-project made apart
    // from its including project uses the same numbers, and undo must not
    // put an item of the project into the sub-project's file.
    void quidsOfAnotherProjectFileAreNotSearched()
    {
        QAStProject project(u"p"_s, QPixmap());
        auto* sub = new QAStSubProject(u"sub/sub.rtp"_s, &project, nullptr);
        auto* inSub = new TestItem(u"in the sub-project"_s, sub, nullptr);
        auto* group = new TestItem(u"group"_s, &project, sub);
        inSub->setQuid(group->quid());
        QAStData* item = new TestItem(u"item"_s, group, nullptr);
        QVERIFY(item->del());
        QVERIFY(group->del());
        flushDeletes();
        QAStData::undo();
        QAStData::undo();
        QCOMPARE(shape(&project), u"sub[in the sub-project] group[item]"_s);
    }
};

QTEST_MAIN(TestItemTree)
#include "tst_item_tree.moc"
