#include "QAIActivityPlugin.h"
#include "QAINodePlugin.h"
#include "QAIProjectPlugin.h"
#include "QAITestNodePlugin.h"
#include "QAStDataFactory.h"
#include "QAStNodePluginCenter.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QDomElement>
#include <QtTest>

namespace {

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

    QAStData* createTestNode(const QString& feature, const QDomElement& e, int version,
                             QAStData* parent, QAStData* after) override
    {
        return make(QStringLiteral("test node"), feature, e, version, parent, after);
    }
    QAStData* createProjectItem(const QString& feature, const QDomElement& e, int version,
                                QAStData* parent, QAStData* after) override
    {
        return make(QStringLiteral("project item"), feature, e, version, parent, after);
    }

    QStringList calls;
    int lastVersion = 0;
    QAStData* lastAfter = nullptr;

private:
    QAStData* make(const QString& how, const QString& feature, const QDomElement& e, int version,
                   QAStData* parent, QAStData* after)
    {
        calls << how + QLatin1Char(' ') + feature + QLatin1Char(' ') + e.tagName();
        lastVersion = version;
        lastAfter = after;
        return new TestLeaf(how, parent, after);
    }

    QStringList m_features;
    int m_places;
};

}

class TestFactory : public QObject {
    Q_OBJECT
private slots:
    void knownTagsBuildTheirClass();
    void registrationCanBeWithdrawn();
    void pluginPlaces_data();
    void pluginPlaces();
    void firstAnsweringPluginWins();
    void unregisteredPluginIsForgotten();
    void pluginItemsJoinTheTree();
    void centerMatchesFeatureAndInterface();
};

void TestFactory::knownTagsBuildTheirClass()
{
    TestItem parent(QStringLiteral("p"));
    auto* first = new TestItem(QStringLiteral("first"), &parent, nullptr);
    QAStData* made = QAStDataFactory::create(
        parseElement("<test_leaf><data><name>n</name><quid>9</quid></data></test_leaf>"), 1,
        &parent, first);
    QVERIFY(made);
    QCOMPARE(made->metaObject()->className(), "TestLeaf");
    QCOMPARE(made->parent(), &parent);
    QCOMPARE(made->previous(), first);
    QCOMPARE(made->name(), QStringLiteral("n"));
    QVERIFY(!QAStDataFactory::create(QDomElement(), 1, nullptr, nullptr));
}

void TestFactory::registrationCanBeWithdrawn()
{
    int calls = 0;
    QAStDataFactory::registerClass(QStringLiteral("counted"),
                                   [&calls](const QDomElement&, int, QAStData* p, QAStData* a) {
                                       ++calls;
                                       return new TestItem(QStringLiteral("counted"), p, a);
                                   });
    QVERIFY(QAStDataFactory::isRegistered(QStringLiteral("counted")));
    delete QAStDataFactory::create(parseElement("<counted/>"), 1, nullptr, nullptr);
    QCOMPARE(calls, 1);

    QAStDataFactory::unregisterClass(QStringLiteral("counted"));
    QVERIFY(!QAStDataFactory::isRegistered(QStringLiteral("counted")));
    QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature counted");
    QVERIFY(!QAStDataFactory::create(parseElement("<counted/>"), 1, nullptr, nullptr));
    QCOMPARE(calls, 1);
}

void TestFactory::pluginPlaces_data()
{
    QTest::addColumn<int>("places");
    QTest::addColumn<QString>("call");

    QTest::newRow("none") << 0 << QString();
    QTest::newRow("activity builds nothing") << int(ScriptedPlugin::Activity) << QString();
    QTest::newRow("test node") << int(ScriptedPlugin::TestNode) << "test node feat feat";
    QTest::newRow("project") << int(ScriptedPlugin::Project) << "project item feat feat";
}

void TestFactory::pluginPlaces()
{
    QFETCH(int, places);
    QFETCH(QString, call);

    ScriptedPlugin plugin({QStringLiteral("feat")}, places);
    TestItem parent(QStringLiteral("p"));
    auto* after = new TestItem(QStringLiteral("after"), &parent, nullptr);
    if (call.isEmpty())
        QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature feat");
    QAStData* made = QAStDataFactory::create(parseElement("<feat/>"), 7, &parent, after);

    QCOMPARE(made != nullptr, !call.isEmpty());
    QCOMPARE(plugin.calls, call.isEmpty() ? QStringList() : QStringList{call});
    if (made) {
        QCOMPARE(plugin.lastVersion, 7);
        QCOMPARE(plugin.lastAfter, after);
        QCOMPARE(made->previous(), after);
    }
}

void TestFactory::firstAnsweringPluginWins()
{
    // Activity comes before the test-node interface, even in one plug-in.
    ScriptedPlugin both({QStringLiteral("one")}, ScriptedPlugin::Activity | ScriptedPlugin::TestNode);
    QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature one");
    QVERIFY(!QAStDataFactory::create(parseElement("<one/>"), 1, nullptr, nullptr));
    QVERIFY(both.calls.isEmpty());

    // Test node comes before project, whichever plug-in registered first.
    ScriptedPlugin project({QStringLiteral("two")}, ScriptedPlugin::Project);
    ScriptedPlugin testNode({QStringLiteral("two")}, ScriptedPlugin::TestNode);
    delete QAStDataFactory::create(parseElement("<two/>"), 1, nullptr, nullptr);
    QCOMPARE(testNode.calls, QStringList{"test node two two"});
    QVERIFY(project.calls.isEmpty());
}

void TestFactory::unregisteredPluginIsForgotten()
{
    {
        ScriptedPlugin plugin({QStringLiteral("gone")}, ScriptedPlugin::Project);
        delete QAStDataFactory::create(parseElement("<gone/>"), 1, nullptr, nullptr);
        QCOMPARE(plugin.calls.size(), 1);
    }
    QTest::ignoreMessage(QtDebugMsg, "No plugin found for feature gone");
    QVERIFY(!QAStDataFactory::create(parseElement("<gone/>"), 1, nullptr, nullptr));

    ScriptedPlugin later({QStringLiteral("gone")}, ScriptedPlugin::TestNode);
    delete QAStDataFactory::create(parseElement("<gone/>"), 1, nullptr, nullptr);
    QCOMPARE(later.calls.size(), 1);
}

void TestFactory::pluginItemsJoinTheTree()
{
    RecordingStudio studio;
    ScriptedPlugin plugin({QStringLiteral("plugged")}, ScriptedPlugin::TestNode);
    QAStData::clearLoadReport();
    const QString xml = QStringLiteral(
        "<test_folder><data><name>f</name><quid>1</quid></data><children>"
        "<test_leaf><data><name>first</name><quid>2</quid></data></test_leaf>"
        "<plugged/>"
        "<test_leaf><data><name>last</name><quid>3</quid></data></test_leaf>"
        "</children></test_folder>");
    TestFolder folder(parseElement(xml), 1, nullptr, nullptr);

    QStringList names;
    for (QAStData* c = folder.child(); c; c = c->next())
        names << c->name();
    QCOMPARE(names, (QStringList{"first", "test node", "last"}));
    QVERIFY(QAStData::loadReport().isEmpty());
    QVERIFY(studio.messages(QAStData::MessageConsole).isEmpty());
}

void TestFactory::centerMatchesFeatureAndInterface()
{
    QAStNodePluginCenter* center = QAStNodePluginCenter::nodePluginCenter();
    ScriptedPlugin a({QStringLiteral("f1")}, ScriptedPlugin::Project);
    ScriptedPlugin b({QStringLiteral("f1"), QStringLiteral("f2")}, ScriptedPlugin::Project);
    center->registerPlugin(&a); // twice: no effect
    QCOMPARE(center->plugins().count(&a), 1);

    void* found = &found;
    QVERIFY(center->queryComponentInterface(QStringLiteral("f1"), QAIProjectPlugin::interfaceId(), &found));
    QCOMPARE(found, static_cast<void*>(static_cast<QAIProjectPlugin*>(&a)));
    QVERIFY(center->queryComponentInterface(QStringLiteral("f2"), QAIProjectPlugin::interfaceId(), &found));
    QCOMPARE(found, static_cast<void*>(static_cast<QAIProjectPlugin*>(&b)));
    QVERIFY(!center->queryComponentInterface(QStringLiteral("f2"), QAITestNodePlugin::interfaceId(), &found));
    QVERIFY(!found);
    QVERIFY(!center->queryComponentInterface(QStringLiteral("f3"), QAIProjectPlugin::interfaceId(), &found));

    const quint64 generation = center->generation();
    center->unregisterPlugin(&a);
    QVERIFY(center->generation() != generation);
    QVERIFY(!center->plugins().contains(&a));
}

QTEST_MAIN(TestFactory)
#include "tst_factory.moc"
