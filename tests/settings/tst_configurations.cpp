// Configurations: the chain of inheritance down the tree, their values as
// the settings descriptor binds them, their XML, resource and package
// forms, and the property sheet a node shows.
#include "QAProperty.h"
#include "QAPropertyMapGroup.h"
#include "QARes.h"
#include "QAStConfiguration.h"
#include "QAStData.h"
#include "QAStNodeContainer.h"
#include "QAStProject.h"
#include "QAStPropertyFilters.h"
#include "QAStTargetPackage.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestPaths.h"

#include <QDomDocument>
#include <QPointer>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString debug = u"Debug"_s;

// The tests' own small descriptor; the target packages stay those of the
// test installation.
bool initializeTestDescriptor()
{
    EnvironmentVariable scope("ZELTAHOME", QFile::encodeName(TestPaths::data(u"configurations"_s)));
    return QAStConfiguration::initialize(nullptr, nullptr);
}

QAProperty* findLeaf(const QAPropertyGroup& group, const QString& tag)
{
    for (QAProperty* child : group.children()) {
        QAProperty* found = child->isGroup() ? findLeaf(*static_cast<QAPropertyGroup*>(child), tag)
                                             : (child->tag() == tag ? child : nullptr);
        if (found)
            return found;
    }
    return nullptr;
}

// The shared descriptor's leaf of that key, pointed at store.
QAProperty* boundLeaf(const QString& tag, QAPropertyStore* store)
{
    QAPropertyMapGroup* descriptor = QAStConfiguration::propertyDescriptor();
    descriptor->setPropertyStore(store);
    return findLeaf(*descriptor, tag);
}

// Project P > container G > node N, each with a "Debug" configuration.
struct Tree {
    QAStProject project{u"P"_s, QPixmap()};
    QAStNodeContainer* group = new QAStNodeContainer(u"G"_s, QPixmap(), &project);
    QAStNode* node = new QAStNode(u"N"_s, QPixmap(), group);

    Tree()
    {
        for (QAStNode* n : {static_cast<QAStNode*>(&project), static_cast<QAStNode*>(group), node})
            n->addConfiguration(debug);
    }
    // Top first: the initial configuration, then P's, G's and N's.
    QList<QAStConfiguration*> chain() const
    {
        return {project.initialConfiguration(debug), project.configuration(debug),
                group->configuration(debug), node->configuration(debug)};
    }
};

QString written(const QAStConfiguration& c, int indent)
{
    QString text;
    QTextStream s(&text);
    c.write(s, indent);
    s.flush();
    return text;
}

// A package whose every value differs, so that a mix-up of keys shows.
std::unique_ptr<QAStTargetPackage> demoPackage()
{
    const QString dir = TestPaths::data(u"configurations/targets/demo"_s);
    std::unique_ptr<QARes> res(QARes::read(dir + u"/demo.ini"_s));
    auto package = std::make_unique<QAStTargetPackage>();
    package->read(res.get(), dir, u"demo.ini"_s);
    return package;
}

// Every setting tag and group name the sheet of a node shows, walking the
// visible groups.
void collect(const QAStNode& node, const QAPropertyGroup* group, QStringList& shown)
{
    for (QAProperty* p : node.visibleSettings(group)) {
        shown << (p->isGroup() ? u"group:"_s + p->name() : p->tag());
        if (p->isGroup())
            collect(node, static_cast<QAPropertyGroup*>(p), shown);
    }
}

QStringList sheetOf(const QAStNode& node)
{
    QStringList shown;
    collect(node, QAStConfiguration::propertyDescriptor(), shown);
    return shown;
}

}

class TestConfigurations : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(initializeTestDescriptor()); }
    void cleanupTestCase() { QAStConfiguration::terminate(nullptr, nullptr); }

    void nearestLevelWins_data()
    {
        QTest::addColumn<int>("lowestSet");
        QTest::newRow("initial configuration only") << 0;
        QTest::newRow("project over initial") << 1;
        QTest::newRow("ancestor over project") << 2;
        QTest::newRow("own value over all") << 3;
    }
    // Each level from the top down to lowestSet holds a value of its own;
    // the grandchild sees the lowest one. Every level but the top can be
    // reset.
    void nearestLevelWins()
    {
        QFETCH(int, lowestSet);
        Tree tree;
        const QList<QAStConfiguration*> chain = tree.chain();
        for (int level = 0; level <= lowestSet; ++level)
            chain[level]->setProperty(u"cflags"_s, u"level %1"_s.arg(level));
        QCOMPARE(chain.last()->property(u"cflags"_s).toString(), u"level %1"_s.arg(lowestSet));
        QCOMPARE(boundLeaf(u"cflags"_s, chain[lowestSet])->isResetable(), lowestSet > 0);
    }

    void gapEndsTheChain()
    {
        Tree tree;
        tree.project.addConfiguration(u"Release"_s)->setProperty(u"cflags"_s, "-O2");
        QAStConfiguration* own = tree.node->addConfiguration(u"Release"_s);
        QVERIFY(!own->inheritOf());
        QVERIFY(!own->property(u"cflags"_s).isValid());
        QVERIFY(!own->property(u"sourceExt"_s).isValid()); // nor the initial defaults
    }

    // Look-ups many enough to keep a merged view of the chain still see
    // every change: a value above, a store added or removed on the way, the
    // node moved under another parent.
    void lookupsFollowEveryChange()
    {
        Tree tree;
        auto* other = new QAStNodeContainer(u"G2"_s, QPixmap(), &tree.project);
        other->addConfiguration(debug)->setProperty(u"cflags"_s, "-other");
        QAStConfiguration* own = tree.node->configuration(debug);
        const auto seen = [own] {
            QString value;
            for (int i = 0; i < 100; ++i)
                value = own->property(u"cflags"_s).toString();
            return value;
        };
        tree.project.configuration(debug)->setProperty(u"cflags"_s, "-project");
        QCOMPARE(seen(), u"-project"_s);
        tree.group->configuration(debug)->setProperty(u"cflags"_s, "-group");
        QCOMPARE(seen(), u"-group"_s);
        other->addChild(tree.node, nullptr);
        QCOMPARE(seen(), u"-other"_s);
        QVERIFY(other->removeConfiguration(debug));
        QCOMPARE(seen(), QString());
        other->addConfiguration(debug);
        QCOMPARE(seen(), u"-project"_s);
        tree.project.configuration(debug)->unsetProperty(u"cflags"_s);
        QCOMPARE(seen(), tree.project.initialConfiguration(debug)->property(u"cflags"_s).toString());
    }

    void nodeKeepsOneConfigurationPerName()
    {
        QAStNode node(u"N"_s, QPixmap());
        QPointer<QAStConfiguration> first = node.addConfiguration(debug);
        QCOMPARE(node.addConfiguration(debug), first.data());
        node.addConfiguration(u"Release"_s);
        auto* other = new QAStConfiguration(debug, nullptr);
        node.addConfiguration(other);
        QVERIFY(first.isNull());
        QCOMPARE(node.configurations(), QStringList({u"Release"_s, debug}));
        QCOMPARE(other->node(), &node);
        QAStNode second(u"M"_s, QPixmap());
        second.addConfiguration(other);
        QCOMPARE(node.configurations(), QStringList{u"Release"_s});
        node.setCurrentConfigurationName(u"Release"_s);
        QCOMPARE(node.currentConfiguration(), node.configuration(u"Release"_s));
        QVERIFY(node.removeConfiguration(u"Release"_s));
        QVERIFY(!node.removeConfiguration(u"Release"_s));
        QVERIFY(!node.currentConfiguration());
    }

    void projectKeepsInitialConfigurations()
    {
        QAStProject project(u"P"_s, QPixmap());
        auto* inner = new QAStProject(u"inner"_s, QPixmap(), &project);
        auto* node = new QAStNode(u"N"_s, QPixmap(), inner);
        QCOMPARE(node->project(), inner);
        QCOMPARE(node->rootProject(), &project);
        QAStConfiguration* own = project.addConfiguration(debug);
        QPointer<QAStConfiguration> initial = project.initialConfiguration(debug);
        QVERIFY(initial && initial != own);
        project.addConfiguration(new QAStConfiguration(debug, nullptr));
        QCOMPARE(project.initialConfiguration(debug), initial.data()); // made once per name
        QVERIFY(project.removeConfiguration(debug));
        QVERIFY(initial.isNull());
    }

    void languageType_data()
    {
        QTest::addColumn<QVariant>("language");
        QTest::addColumn<int>("bit");
        const QList<std::pair<const char*, int>> rows{{"C", 1}, {"CPP", 2}, {"cpp", 2}, {"Ada", 4},
                                                      {"ADA83", 4}, {"ada95", 4}, {"JAVA", 8}, {"Pascal", 1}};
        for (const auto& [language, bit] : rows)
            QTest::newRow(language) << QVariant(QString::fromLatin1(language)) << bit;
        QTest::newRow("none") << QVariant() << 1;
    }
    void languageType()
    {
        QFETCH(QVariant, language);
        QAStConfiguration c(debug, nullptr);
        if (language.isValid())
            c.setProperty(u"sourceLanguage"_s, language);
        QTEST(c.languageType(), "bit");
    }

    void writeThenReadKeepsLocalValuesOnly()
    {
        Tree tree;
        tree.group->configuration(debug)->setProperty(u"ldflags"_s, "-inherited");
        QAStConfiguration* own = tree.node->configuration(debug);
        own->setProperty(u"cflags"_s, "-g");
        QCOMPARE(written(*own, 1), u"  <configuration>\n    <name>Debug</name>\n    <cflags>-g</cflags>\n"
                                   "  </configuration>\n"_s);
        own->setName(u"De,<bug>"_s);
        own->setProperty(u"cppFlags"_s, u"-DA=1,2 <x> && 'y'"_s);
        own->setProperty(u"ge_incdir"_s, QStringList{u"/a,b"_s, u"<inc>&"_s});
        own->setProperty(u"debug"_s, true);
        own->setProperty(u"computerPort"_s, 42);
        own->setProperty(u"undescribed"_s, "not saved");
        QDomDocument doc;
        QVERIFY(doc.setContent(written(*own, 0)));
        QAStConfiguration read(u"unnamed"_s, nullptr);
        QVERIFY(read.init(doc.documentElement(), 1));
        own->unsetProperty(u"undescribed"_s);
        QCOMPARE(read.propertyNames(), own->propertyNames());
        for (const QString& key : own->propertyNames())
            QCOMPARE(read.localProperty(key), own->localProperty(key));

        QVERIFY(doc.setContent(u"<configuration><cflags>-g</cflags></configuration>"_s));
        QAStData::clearLoadReport();
        QVERIFY(!read.init(doc.documentElement(), 1));
        QVERIFY(QAStData::loadReport().contains(u"Unable to find tag name"_s));
    }

    void targetPackageByPath()
    {
        QAStConfiguration c(debug, nullptr);
        QVERIFY(!c.targetPackage());
        c.setProperty(u"targetPath"_s, u"/no/such/package"_s);
        QVERIFY(!c.targetPackage());
        c.setProperty(u"targetPath"_s, TestPaths::installTree() + u"/targets/gcc-cpp"_s);
        QVERIFY(c.targetPackage());
        QCOMPARE(c.targetPackage()->language(), u"CPP"_s);
    }

    void initFromPackage_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("targetPath") << u"targetPath"_s << QVariant(TestPaths::data(u"configurations/targets/demo"_s));
        const char* const texts[][2] = {
            {"sourceLanguage", "CPP"}, {"sourceExt", ".cxx"}, {"objectExt", ".obj"}, {"binaryExt", ".exe"},
            {"libraryStaticExt", ".lib"}, {"libraryDynamicExt", ".dll"}, {"cppFlags", "-DDEMO"},
            {"cflags", "-O1"}, {"ldflags", "-s"}};
        for (const auto& text : texts)
            QTest::newRow(text[0]) << QString::fromLatin1(text[0]) << QVariant(QString::fromLatin1(text[1]));
        QTest::newRow("ge_incdir") << u"ge_incdir"_s << QVariant(QStringList{u"/demo/include"_s, u"/demo/include/sys"_s});
        QTest::newRow("ge_libdir") << u"ge_libdir"_s << QVariant(QStringList{u"/demo/lib"_s});
        QTest::newRow("javaBootClasspath") << u"javaBootClasspath"_s << QVariant(QStringList{u"/demo/rt.jar"_s});
    }
    // Each value lands under its key in the type the descriptor gives it, so
    // the property sheet shows it; reset drops every other value but the name.
    void initFromPackage()
    {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QAStConfiguration c(debug, nullptr);
        c.init(*demoPackage());
        QCOMPARE(boundLeaf(key, &c)->value(), value);
        c.setProperty(key, u"changed"_s);
        c.setProperty(u"debug"_s, true);
        c.reset(*demoPackage());
        QCOMPARE(c.localProperty(key), value);
        QCOMPARE(c.name(), debug);
        QVERIFY(!c.hasProperty(u"debug"_s));
    }

    void perlVariablesAreBoundAndNamed()
    {
        QAStConfiguration c(debug, nullptr);
        c.setProperty(u"cflags"_s, "-g");
        QStringList names;
        for (const QAProperty* p : c.perlVariables()) {
            names.append(p->perlVarName());
            if (p->tag() == u"cflags"_s)
                QCOMPARE(p->value().toString(), u"-g"_s);
        }
        QCOMPARE(names, QStringList({u"TDP_LANGUAGE"_s, u"SRCEXT"_s, u"OBJEXT"_s, u"EXEEXT"_s, u"CPPFLAGS"_s,
                                     u"CFLAGS"_s, u"LDFLAGS"_s, u"INCLUDE_DIR_LIST"_s, u"DEBUG"_s, u"PORT"_s}));
    }

    void descriptorLoadsOnce()
    {
        QAPropertyMapGroup* loaded = QAStConfiguration::propertyDescriptor();
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
        QCOMPARE(QAStConfiguration::propertyDescriptor(), loaded);
        QAStConfiguration::terminate(nullptr, nullptr);
        RecordingStudio studio;
        QTemporaryDir empty;
        {
            EnvironmentVariable scope("ZELTAHOME", QFile::encodeName(empty.path()));
            QVERIFY(!QAStConfiguration::initialize(nullptr, nullptr));
            // Loading is tried once: later calls return at once.
            QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
            QCOMPARE(studio.messages(QAStData::MessageConsole),
                     QStringList{QAStConfiguration::propertyDescriptorFile() + u": not found"_s});
        }
        QVERIFY(!QAStConfiguration::propertyDescriptor());
        QAStConfiguration::terminate(nullptr, nullptr);
        QVERIFY(initializeTestDescriptor());
    }

    // The installation's descriptor loads without a message and describes
    // every key a package fills, in the type it is stored with, so the
    // values show in the property sheet and are saved.
    void shippedDescriptor()
    {
        RecordingStudio studio;
        QAStConfiguration::terminate(nullptr, nullptr);
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
        QCOMPARE(studio.messages(QAStData::MessageConsole), QStringList());
        QAStConfiguration c(debug, nullptr);
        c.init(*demoPackage());
        QStringList keys = c.propertyNames();
        keys.removeOne(u"name"_s);
        for (const QString& key : keys) {
            const QAProperty* leaf = boundLeaf(key, &c);
            QVERIFY2(leaf, qPrintable(key));
            QCOMPARE(leaf->value(), c.localProperty(key));
        }

        // The sheet of a node shows the settings that apply to its kind and
        // its language.
        QAStProject project(u"p"_s, QPixmap());
        project.addConfiguration(debug)->setProperty(u"sourceLanguage"_s, u"C"_s);
        project.setCurrentConfigurationName(debug);
        const QStringList inC = sheetOf(project);
        QVERIFY(inC.contains(u"group:Unit testing"_s) && !inC.contains(u"virtualMachineArguments"_s));
        project.configuration(debug)->setProperty(u"sourceLanguage"_s, u"JAVA"_s);
        QVERIFY(sheetOf(project).contains(u"virtualMachineArguments"_s));
        project.configuration(debug)->setProperty(u"sourceLanguage"_s, u"C"_s);
        QAStNode plainNode(u"n"_s, QPixmap(), &project);
        QVERIFY(!sheetOf(plainNode).contains(u"group:Unit testing"_s));

        QCOMPARE(project.propertyContext() & QAStPropertyFilters::HostMask, unsigned(QAStPropertyFilters::Studio));
        QAStPropertyFilters::setHost(QAStPropertyFilters::EclipseRta);
        const unsigned context = project.propertyContext();
        QAStPropertyFilters::setHost(QAStPropertyFilters::Studio);
        QCOMPARE(context & QAStPropertyFilters::HostMask, unsigned(QAStPropertyFilters::EclipseRta));
        QCOMPARE(context & QAStPropertyFilters::KindMask, unsigned(QAStPropertyFilters::Project));
        QCOMPARE(context & QAStPropertyFilters::LanguageMask, unsigned(QAStPropertyFilters::LanguageC));
        QAStConfiguration::terminate(nullptr, nullptr);
        QVERIFY(initializeTestDescriptor());
    }
};

QTEST_MAIN(TestConfigurations)
#include "tst_configurations.moc"
