#include "QAStConfiguration.h"
#include "QAStDataFactory.h"
#include "QAStNodeApplication.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeGroup.h"
#include "QAStNodeKinds.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeLink.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeSystemTestingScript.h"
#include "QAStNodeTest.h"
#include "QAStNodeTestScript.h"
#include "QAStNodeUser.h"
#include "QAStNodeVirtualTester.h"
#include "QAStPropertyFilters.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestItems.h"
#include "TestPaths.h"
#include "TestXml.h"

#include <QAction>
#include <QDomDocument>
#include <QMenu>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Every kind of the project file: its tag, class, property-sheet kind and
// the elements directly inside its own element, in written order.
struct KindRow {
    const char* tag;
    const char* className;
    unsigned int propertyKind;
    const char* layout;
};

const KindRow kinds[] = {
    {"group", "QAStNodeGroup", QAStPropertyFilters::Group, "group"},
    {"library", "QAStNodeLibrary", QAStPropertyFilters::Library, "group"},
    {"application", "QAStNodeApplication", QAStPropertyFilters::Application, "test"},
    {"unit_testing", "QAStNodeUnitTesting", QAStPropertyFilters::UnitTesting, "test"},
    {"object_testing", "QAStNodeObjectTesting", QAStPropertyFilters::ObjectTesting, "test"},
    {"java_testing", "QAStNodeJavaTesting", QAStPropertyFilters::JavaTesting, "test"},
    {"system_testing", "QAStNodeSystemTesting", QAStPropertyFilters::SystemTesting,
     "test deployment_table rendezvous_list machine_list"},
    {"source", "QAStNodeSource", QAStPropertyFilters::Source,
     "nodefile_ref integrated source_child"},
    {"test_script", "QAStNodeTestScript", QAStPropertyFilters::TestScript,
     "nodefile_ref cas_all fam_all cas_selection fam_selection instance"},
    {"unittesting_script", "QAStNodeUnitTestingScript", QAStPropertyFilters::UnitTestScript,
     "test_script"},
    {"javatesting_script", "QAStNodeJavaTestingScript", QAStPropertyFilters::TestScript,
     "test_script"},
    {"systemtesting_script", "QAStNodeSystemTestingScript", QAStPropertyFilters::SystemTestScript,
     "test_script filepath virtual_tester_list"},
    {"virtual_tester", "QAStNodeVirtualTester", QAStPropertyFilters::VirtualTester,
     "test_script virtual_tester_child"},
    {"user", "QAStNodeUser", QAStPropertyFilters::User,
     "node redirect_stdout redirect_stderr user_child"},
    {"link", "QAStNodeLink", 0, "node linked_node class_name"},
};

// The inner blocks' layouts.
const QHash<QString, QString> blockLayouts = {
    {u"group"_s, u"node group_child"_s},
    {u"test"_s, u"node test_child"_s},
    {u"nodefile_ref"_s, u"node filepath"_s},
    {u"test_script"_s, u"nodefile_ref cas_all fam_all cas_selection fam_selection instance"_s},
};

const KindRow* kindOf(const QString& tag)
{
    for (const KindRow& row : kinds) {
        if (tag == QLatin1String(row.tag))
            return &row;
    }
    return nullptr;
}

void addKindRows()
{
    QTest::addColumn<QString>("tag");
    for (const KindRow& row : kinds)
        QTest::newRow(row.tag) << QString::fromLatin1(row.tag);
}

std::unique_ptr<QAStNode> freshNode(const QString& tag, const QString& name = u"N"_s)
{
    return std::unique_ptr<QAStNode>(QAStNode::createNode(tag, name, nullptr, nullptr));
}

QStringList childTags(const QDomElement& e)
{
    QStringList tags;
    for (QDomElement c = e.firstChildElement(); !c.isNull(); c = c.nextSiblingElement())
        tags << c.tagName();
    return tags;
}

QStringList classNames(const QList<QAStData*>& items)
{
    QStringList names;
    for (const QAStData* item : items)
        names << QString::fromLatin1(item->metaObject()->className());
    return names;
}

}

class TestNodeKinds : public QObject {
    Q_OBJECT

    RecordingStudio m_studio;

private slots:
    void initTestCase() { QVERIFY(QAStConfiguration::initialize(nullptr, nullptr)); }
    void init()
    {
        QAStData::clearLoadReport();
        m_studio.reset();
    }

    void roundTrip_data() { addKindRows(); }
    void roundTrip()
    {
        QFETCH(QString, tag);
        const std::unique_ptr<QAStNode> node = freshNode(tag);
        QVERIFY(node);
        setOwnFields(node.get());
        const QStringList addable = node->addableChildKinds();
        if (!addable.isEmpty()) {
            setOwnFields(node->addNewChild(addable.last()));
            node->addNewChild(addable.first());
        }

        const QString written = node->toString();
        const std::unique_ptr<QAStData> read = buildItem(written);
        QVERIFY(read);
        QVERIFY(read->isValid());
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(read->metaObject()->className(), node->metaObject()->className());
        QCOMPARE(classNames(read->childItems()), classNames(node->childItems()));
        const auto* readNode = qobject_cast<QAStNode*>(read.get());
        QCOMPARE(readNode->configurations(), node->configurations());
        QCOMPARE(readNode->currentConfiguration()->localProperty(u"cflags"_s), QVariant(u"-g"_s));
        QCOMPARE(read->toString(), written);
    }

    void layout_data() { addKindRows(); }
    // The kind's elements, and the property-sheet kind it shows.
    void layout()
    {
        QFETCH(QString, tag);
        const KindRow* row = kindOf(tag);
        const std::unique_ptr<QAStNode> node = freshNode(tag);
        QCOMPARE(node->propertyKind(), row->propertyKind);
        QDomDocument doc;
        QVERIFY(doc.setContent(node->toString()));

        // The kind's own element, then each wrapped block down to the node block.
        QDomElement e = doc.documentElement();
        QCOMPARE(e.tagName(), tag);
        QCOMPARE(childTags(e).join(u' '), QString::fromLatin1(row->layout));
        // The library's kind table names the block the element wraps.
        QCOMPARE(QLatin1String(QAStNodeKind::byName(tag)->block), e.firstChildElement().tagName());
        for (e = e.firstChildElement(); e.tagName() != u"node"_s; e = e.firstChildElement()) {
            QVERIFY2(blockLayouts.contains(e.tagName()), qPrintable(e.tagName()));
            QCOMPARE(childTags(e).join(u' '), blockLayouts.value(e.tagName()));
        }
        QCOMPARE(childTags(e).join(u' '),
                 u"data current_configuration state background outfilename_list "
                 "perlscript_before_child perlscript_after_child configuration_list"_s);
    }

    void systemTestingScriptListsTesters()
    {
        QAStNodeSystemTestingScript script(u"s.pts"_s, QPixmap());
        script.setFileKey(u"scripts/s.pts"_s);
        new QAStNodeVirtualTester(u"VT1"_s, QPixmap(), &script);
        new QAStNodeVirtualTester(u"VT2"_s, QPixmap(), &script, script.child());
        QDomDocument doc;
        QVERIFY(doc.setContent(script.toString()));
        const QDomElement e = doc.documentElement();
        QCOMPARE(e.firstChildElement(u"filepath"_s).text(), u"scripts/s.pts"_s);
        const QDomElement list = e.firstChildElement(u"virtual_tester_list"_s);
        QCOMPARE(childTags(list), (QStringList{u"virtual_tester"_s, u"virtual_tester"_s}));

        // The key repeated at this level stands in for an empty one below.
        e.firstChildElement(u"test_script"_s)
            .firstChildElement(u"nodefile_ref"_s)
            .firstChildElement(u"filepath"_s)
            .firstChild()
            .setNodeValue(QString());
        const std::unique_ptr<QAStData> read = buildItem(doc.toString());
        QCOMPARE(static_cast<QAStNodeFileRef*>(read.get())->fileKey(), u"scripts/s.pts"_s);
        QCOMPARE(read->child()->name(), u"VT1"_s);
        QCOMPARE(read->last()->name(), u"VT2"_s);
    }

    // The lists read back whole, quotes, commas and markup in their
    // attributes; the TDF channel is not kept.
    void systemTestingLists()
    {
        QAStNodeSystemTesting system(u"ST"_s, QPixmap());
        QAStNodeSystemTesting::Deployment d = testDeployment(u"VT,1"_s, u"10.0.0.1"_s);
        system.setDeployments({d});
        system.setRendezvous({{u"go"_s, 2}});
        system.setMachines({u"m1"_s, u"m2"_s});
        system.setConnectedTDFChannel(5);
        const std::unique_ptr<QAStData> read = buildItem(system.toString());
        const auto* readSystem = qobject_cast<QAStNodeSystemTesting*>(read.get());
        QVERIFY(readSystem);
        QCOMPARE(readSystem->deployments().size(), 1);
        QVERIFY(readSystem->deployments().first() == d);
        QVERIFY(readSystem->rendezvousAutoGenerate());
        QCOMPARE(readSystem->rendezvous().first().name, u"go"_s);
        QCOMPARE(readSystem->machines(), (QStringList{u"m1"_s, u"m2"_s}));
        QCOMPARE(readSystem->connectedTDFChannel(), 0);
    }

    void baseBlocksAreNotItems()
    {
        for (const QString& tag : {u"test"_s, u"nodefile_ref"_s}) {
            QVERIFY(!QAStDataFactory::isRegistered(tag));
            QVERIFY(!QAStNode::createNode(tag, u"n"_s, nullptr, nullptr));
        }

        // Each base still reads its own block through its element constructor.
        QAStNodeTest test(u"T"_s, QPixmap());
        new QAStNodeSource(u"s"_s, QPixmap(), &test);
        QAStNodeTest readTest(parseElement(test.toString()), 1);
        QVERIFY(readTest.isValid());
        QCOMPARE(readTest.toString(), test.toString());

        QAStNodeFileRef file(u"F"_s, QPixmap());
        file.setFileKey(u"f.c"_s);
        QAStNodeFileRef readFile(parseElement(file.toString()), 1);
        QCOMPARE(readFile.fileKey(), u"f.c"_s);
        QCOMPARE(QAStData::loadReport(), QString());
    }

    void badPlace_data()
    {
        QTest::addColumn<QString>("parentTag");
        QTest::addColumn<QString>("childTag");
        QTest::newRow("group in library") << u"library"_s << u"group"_s;
        QTest::newRow("application in unit testing") << u"unit_testing"_s << u"application"_s;
        QTest::newRow("source in group") << u"group"_s << u"source"_s;
        QTest::newRow("unit script in system testing")
            << u"system_testing"_s << u"unittesting_script"_s;
        QTest::newRow("group in source") << u"source"_s << u"group"_s;
        QTest::newRow("source in system script") << u"systemtesting_script"_s << u"source"_s;
        QTest::newRow("group in user") << u"user"_s << u"group"_s;
    }

    void badPlace()
    {
        QFETCH(QString, parentTag);
        QFETCH(QString, childTag);
        const std::unique_ptr<QAStNode> parent = freshNode(parentTag, u"P"_s);
        const QString before = parent->addableChildKinds().last();
        parent->addNewChild(before);
        QDomDocument doc;
        QVERIFY(doc.setContent(parent->toString()));

        // The misplaced child goes after the allowed one, in the same list.
        const QDomElement allowed = doc.elementsByTagName(before).at(0).toElement();
        const std::unique_ptr<QAStNode> misplaced = freshNode(childTag, u"X"_s);
        QDomDocument childDoc;
        QVERIFY(childDoc.setContent(misplaced->toString()));
        allowed.parentNode().appendChild(doc.importNode(childDoc.documentElement(), true));

        const std::unique_ptr<QAStData> read = buildItem(doc.toString());
        QVERIFY(read->isValid());
        QCOMPARE(QAStData::loadReport(), childTag + u" bad place\n"_s);
        QCOMPARE(m_studio.messages(QAStData::MessageConsole),
                 QStringList{u"Tag ignored in the group: "_s + childTag});
        QCOMPARE(read->childCount(), 1);
        QCOMPARE(read->child()->name(), parent->child()->name());
    }

    void missingBaseBlock_data() { addKindRows(); }
    void missingBaseBlock()
    {
        QFETCH(QString, tag);
        const std::unique_ptr<QAStNode> node = freshNode(tag);
        QDomDocument doc;
        QVERIFY(doc.setContent(node->toString()));
        QDomElement root = doc.documentElement();
        const QString inner = root.firstChildElement().tagName();
        root.removeChild(root.firstChildElement());

        const std::unique_ptr<QAStData> read = buildItem(doc.toString());
        QVERIFY(read);
        QVERIFY(!read->isValid());
        QVERIFY(QAStData::loadReport().startsWith(u"Unable to find tag "_s + inner + u'\n'));
    }

    void addableChildren_data() { addKindRows(); }
    void addableChildren()
    {
        QFETCH(QString, tag);
        const std::unique_ptr<QAStNode> node = freshNode(tag);
        const QStringList addable = node->addableChildKinds();
        QCOMPARE(addable.isEmpty(), node->allowedChildClasses().isEmpty());

        // Every kind on the menu makes its own class, which reading accepts.
        for (const QString& childTag : addable) {
            QAStNode* child = node->addNewChild(childTag);
            QVERIFY2(child, qPrintable(childTag));
            QCOMPARE(child->metaObject()->className(), kindOf(childTag)->className);
            QCOMPARE(child->parent(), node.get());
            QCOMPARE(node->last(), child);
        }
        const std::unique_ptr<QAStData> read = buildItem(node->toString());
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(read->childCount(), addable.size());

        for (const KindRow& row : kinds) {
            if (!addable.contains(QLatin1String(row.tag)))
                QVERIFY(!node->addNewChild(QLatin1String(row.tag)));
        }
        QCOMPARE(node->childCount(), addable.size());
    }

    void newChildTakesConfigurations()
    {
        QAStNodeGroup group(u"G"_s, QPixmap());
        group.addConfiguration(u"Debug"_s)->setProperty(u"cflags"_s, u"-g"_s);
        group.addConfiguration(u"Release"_s);
        group.setCurrentConfigurationName(u"Debug"_s);

        QAStNode* first = group.addNewChild(u"application"_s);
        QAStNode* second = group.addNewChild(u"application"_s);
        QCOMPARE(first->name(), u"Application"_s);
        QCOMPARE(second->name(), u"Application 2"_s);
        QCOMPARE(first->configurations(), (QStringList{u"Debug"_s, u"Release"_s}));
        QCOMPARE(first->currentConfigurationName(), u"Debug"_s);
        QCOMPARE(first->currentConfiguration()->property(u"cflags"_s), QVariant(u"-g"_s));
        QVERIFY(!first->currentConfiguration()->hasProperty(u"cflags"_s));
    }

    void addMenu()
    {
        QAStNodeSystemTesting system(u"ST"_s, QPixmap());
        std::unique_ptr<QMenu> menu(system.popupMenu(nullptr));
        QCOMPARE(menu->actions().size(), 1);
        QMenu* add = menu->actions().first()->menu();
        QVERIFY(add);
        QStringList tags;
        for (const QAction* action : add->actions())
            tags << action->data().toString();
        QCOMPARE(tags, system.addableChildKinds());

        add->actions().first()->trigger();
        QVERIFY(qobject_cast<QAStNodeSystemTestingScript*>(system.child()));

        QAStNodeLink link(u"L"_s, QPixmap());
        std::unique_ptr<QMenu> leafMenu(link.popupMenu(nullptr));
        QVERIFY(leafMenu->isEmpty());
    }

    void linkedNode()
    {
        QAStNodeGroup top(u"top"_s, QPixmap());
        auto* application = new QAStNodeApplication(u"Lib"_s, QPixmap(), &top);
        auto* library = new QAStNodeLibrary(u"Lib"_s, QPixmap(), application);
        auto* link = new QAStNodeLink(u"L"_s, QPixmap(), &top, application);

        link->setLinkedNode(library);
        QCOMPARE(link->linkedClassName(), u"QAStNodeLibrary"_s);
        QCOMPARE(link->linkedNode(), library);
        link->setLinkedNode(u"Lib"_s, QString());
        QCOMPARE(link->linkedNode(), application);
        link->setLinkedNode(u"L"_s, u"QAStNodeLink"_s);
        QCOMPARE(link->linkedNode(), nullptr);
        link->setLinkedNode(u"missing"_s, QString());
        QCOMPARE(link->linkedNode(), nullptr);
    }

    // A file as written by hand reads, values and all, and writes back the
    // same.
    void exampleFile()
    {
        const QString text = QString::fromUtf8(TestFiles::readFile(TestPaths::data(u"nodes/application.xml"_s)));
        const std::unique_ptr<QAStData> read = buildItem(text);
        const auto* application = qobject_cast<QAStNodeApplication*>(read.get());
        QVERIFY(application);
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(application->outputFiles(u"TSF"_s), QStringList{u"Calc.tsf"_s});
        QCOMPARE(static_cast<QAStNodeLink*>(application->last())->linkedNodeName(), u"MathLib"_s);
        QCOMPARE(read->toString(), text);
    }

    void pasteAndDropFollowTheNesting()
    {
        QAStNodeGroup group(u"Group"_s, QPixmap());
        auto* application = new QAStNodeApplication(u"App"_s, QPixmap(), &group);
        auto* source = new QAStNodeSource(u"main.c"_s, QPixmap(), application);
        auto* inner = new QAStNodeGroup(u"Inner"_s, QPixmap(), &group, application);

        // Where the project file allows the kind, and never into itself or
        // below itself.
        QVERIFY(group.acceptDrop(application));
        QVERIFY(inner->acceptDrop(application));
        QVERIFY(application->acceptDrop(source));
        QVERIFY(!source->acceptDrop(application));
        QVERIFY(!application->acceptDrop(&group));
        QVERIFY(!inner->acceptDrop(inner));
        QVERIFY(!inner->acceptDrop(&group));

        application->copy();
        QAStData* pasted = inner->paste();
        QVERIFY(pasted);
        QCOMPARE(pasted->parent(), static_cast<QAStData*>(inner));
        QCOMPARE(pasted->name(), u"App"_s);
        QCOMPARE(classNames(pasted->childItems()), QStringList{u"QAStNodeSource"_s});
        QVERIFY(QAStData::isUndoAvailable());
        QAStData::undo();
        QCOMPARE(inner->childCount(), 0);

        group.copy();
        QVERIFY(!source->paste());
        QCOMPARE(source->childCount(), 0);
    }
};

QTEST_MAIN(TestNodeKinds)
#include "tst_node_kinds.moc"
