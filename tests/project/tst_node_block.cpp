#include "QAStConfiguration.h"
#include "QAStNode.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QDomElement>
#include <QSignalSpy>
#include <QTextStream>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A node that keeps its configurations elsewhere, as the project does.
class RootLikeNode : public QAStNode {
    Q_OBJECT
public:
    using QAStNode::QAStNode;

protected:
    void writeConfigurationList(QTextStream& s, int indent) const override
    {
        QAXML::toStream(s, "configuration_list", QString(), indent);
    }
};

std::unique_ptr<QAStNode> readNode(const QString& xml)
{
    return std::make_unique<QAStNode>(parseElement(xml), 1);
}

}

class TestNodeBlock : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(QAStConfiguration::initialize(nullptr, nullptr)); }
    void init() { QAStData::clearLoadReport(); }

    void statePredicates_data();
    void statePredicates();
    void stateChangedOnlyOnChange();
    void blockLayout();
    void blockRoundTrip();
    void perlTexts_data();
    void perlTexts();
    void outputFilesMergeByType();
    void configurationsRoundTrip();
    void configurationListHook();
    void badBlock_data();
    void badBlock();
    void missingFieldsKeepDefaults();

private:
    RecordingStudio m_studio;
};

void TestNodeBlock::statePredicates_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("unSelected");
    QTest::addColumn<bool>("reports");
    QTest::newRow("0 selected") << 0 << true << false << true;
    QTest::newRow("1 left out") << 1 << false << true << false;
    QTest::newRow("2 left out, reported") << 2 << false << true << true;
}

void TestNodeBlock::statePredicates()
{
    QFETCH(int, state);
    QAStNode node(u"n"_s, QPixmap());
    node.setState(QAStNode::State(state));

    QFETCH(bool, selected);
    QFETCH(bool, unSelected);
    QFETCH(bool, reports);
    QCOMPARE(node.isSelected(), selected);
    QCOMPARE(node.isUnSelected(), unSelected);
    QCOMPARE(node.provideReports(), reports);

    // The state is written as its integer and read back.
    const std::unique_ptr<QAStNode> read = readNode(node.toString());
    QCOMPARE(int(read->state()), state);
}

void TestNodeBlock::stateChangedOnlyOnChange()
{
    QAStNode node(u"n"_s, QPixmap());
    QSignalSpy spy(&node, &QAStNode::stateChanged);
    node.setState(QAStNode::Selected);
    QCOMPARE(spy.count(), 0);
    node.setState(QAStNode::UnSelected);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<QAStNode::State>(), QAStNode::UnSelected);
}

void TestNodeBlock::blockLayout()
{
    QAStNode node(u"N"_s, QPixmap());
    node.setQuid(7);
    node.setCurrentConfigurationName(u"Debug"_s);
    node.addConfiguration(u"Debug"_s);
    node.setState(QAStNode::UnSelectedReported);
    node.setBackground(true);
    node.addOutputFile(u"TSF"_s, {u"a.tsf"_s, u"b,c.tsf"_s});
    node.setPerlScriptBeforeChild(u"print \"a,b\";"_s);

    QCOMPARE(node.toString(),
             u"<node>\n"
             "  <data>\n"
             "    <name>N</name>\n"
             "    <quid>7</quid>\n"
             "    <icon></icon>\n"
             "    <renameable>true</renameable>\n"
             "    <deletable>true</deletable>\n"
             "    <open>false</open>\n"
             "    <sorted>false</sorted>\n"
             "    <executionResult>0</executionResult>\n"
             "  </data>\n"
             "  <current_configuration>Debug</current_configuration>\n"
             "  <state>2</state>\n"
             "  <background>true</background>\n"
             "  <outfilename_list>\n"
             "    <outfilename>\n"
             "      <filetype>TSF</filetype>\n"
             "      <filepath>a.tsf,b#comma#c.tsf</filepath>\n"
             "    </outfilename>\n"
             "  </outfilename_list>\n"
             "  <perlscript_before_child>print \"a#comma#b\";</perlscript_before_child>\n"
             "  <perlscript_after_child></perlscript_after_child>\n"
             "  <configuration_list>\n"
             "    <configuration>\n"
             "      <name>Debug</name>\n"
             "    </configuration>\n"
             "  </configuration_list>\n"
             "</node>\n"_s);
}

void TestNodeBlock::blockRoundTrip()
{
    QAStNode node(u"a <b> & c, d"_s, QPixmap());
    node.setCurrentConfigurationName(u"Rel,ease"_s);
    node.setBackground(true);
    node.addOutputFile(u"RIO"_s, {u"/out/one.rio"_s, u"/out/t,w<o>.rio"_s, u"three.rio"_s});
    node.addOutputFile(u"TDC"_s, {u"x.tdc"_s});
    node.setPerlScriptAfterChild(u"1;"_s);

    const std::unique_ptr<QAStNode> read = readNode(node.toString());
    QVERIFY(read->isValid());
    QCOMPARE(QAStData::loadReport(), QString());
    QCOMPARE(read->name(), node.name());
    QCOMPARE(read->currentConfigurationName(), u"Rel,ease"_s);
    QVERIFY(read->background());
    QCOMPARE(read->outputFiles().size(), 2);
    QCOMPARE(read->outputFiles(u"RIO"_s), node.outputFiles(u"RIO"_s));
    QCOMPARE(read->outputFiles(u"TDC"_s), QStringList{u"x.tdc"_s});
    QCOMPARE(read->outputFiles().at(1).filetype, u"TDC"_s);
    QCOMPARE(read->toString(), node.toString());
}

void TestNodeBlock::perlTexts_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("lines") << u"my $x = 1;\nprint $x;\n"_s;
    QTest::newRow("quotes") << u"print \"it's\", 'a \"test\"';"_s;
    QTest::newRow("commas") << u"f(a,b,,c), g(,)"_s;
    QTest::newRow("markup") << u"if ($a < $b && $c > 0) { print '&lt;'; }"_s;
    QTest::newRow("blanks kept") << u"  indented\n\ttabbed  "_s;
}

void TestNodeBlock::perlTexts()
{
    QFETCH(QString, script);
    QAStNode node(u"n"_s, QPixmap());
    node.setPerlScriptBeforeChild(script);
    node.setPerlScriptAfterChild(script + u"\n1;"_s);

    const std::unique_ptr<QAStNode> read = readNode(node.toString());
    QCOMPARE(read->perlScriptBeforeChild(), script);
    QCOMPARE(read->perlScriptAfterChild(), script + u"\n1;"_s);
}

void TestNodeBlock::outputFilesMergeByType()
{
    QAStNode node(u"n"_s, QPixmap());
    node.addOutputFile(u"TSF"_s, {u"a"_s, u"b"_s});
    node.addOutputFile(u"FDC"_s, {u"f"_s});
    node.addOutputFile(u"TSF"_s, {u"b"_s, u"c"_s});
    QCOMPARE(node.outputFiles().size(), 2);
    QCOMPARE(node.outputFiles(u"TSF"_s), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    QCOMPARE(node.outputFiles(u"none"_s), QStringList());

    node.removeOutputFiles(u"TSF"_s);
    QCOMPARE(node.outputFiles().size(), 1);
    QCOMPARE(node.outputFiles().at(0).filetype, u"FDC"_s);
}

void TestNodeBlock::configurationsRoundTrip()
{
    QAStNode node(u"n"_s, QPixmap());
    QAStConfiguration* debug = node.addConfiguration(u"Debug"_s);
    debug->setProperty(u"cflags"_s, u"-g -DX=1,2"_s);
    debug->setProperty(u"ge_incdir"_s, QStringList{u"/usr/include"_s, u"/opt/a,b"_s});
    node.addConfiguration(u"Release"_s)->setProperty(u"cflags"_s, u"-O2"_s);
    node.setCurrentConfigurationName(u"Release"_s);

    const std::unique_ptr<QAStNode> read = readNode(node.toString());
    QCOMPARE(read->configurations(), (QStringList{u"Debug"_s, u"Release"_s}));
    QCOMPARE(read->currentConfiguration(), read->configuration(u"Release"_s));
    const QAStConfiguration* readDebug = read->configuration(u"Debug"_s);
    QCOMPARE(readDebug->node(), read.get());
    QCOMPARE(readDebug->propertyNames(), debug->propertyNames());
    for (const QString& key : debug->propertyNames())
        QCOMPARE(readDebug->localProperty(key), debug->localProperty(key));
    QCOMPARE(read->toString(), node.toString());
}

void TestNodeBlock::configurationListHook()
{
    RootLikeNode node(u"root"_s, QPixmap());
    node.addConfiguration(u"Debug"_s);
    const QString text = node.toString();
    QVERIFY(text.contains(u"  <configuration_list></configuration_list>\n</node>\n"_s));
    QVERIFY(!text.contains(u"<configuration>"_s));
}

void TestNodeBlock::badBlock_data()
{
    QTest::addColumn<QString>("xml");
    QTest::addColumn<QString>("report");
    QTest::newRow("other element")
        << u"<group><data/></group>"_s << u"Wait for tag node and read group\n"_s;
    QTest::newRow("no data block")
        << u"<node><current_configuration>x</current_configuration></node>"_s
        << u"Unable to find tag data\n"_s;
    QTest::newRow("data without quid")
        << u"<node><data><name>n</name></data></node>"_s << u"Unable to find tag quid\n"_s;
}

void TestNodeBlock::badBlock()
{
    QFETCH(QString, xml);
    const std::unique_ptr<QAStNode> read = readNode(xml);
    QVERIFY(!read->isValid());
    QTEST(QAStData::loadReport(), "report");
}

void TestNodeBlock::missingFieldsKeepDefaults()
{
    const std::unique_ptr<QAStNode> read =
        readNode(u"<node><data><name>n</name><quid>3</quid></data><state>9</state></node>"_s);
    QVERIFY(read->isValid());
    QCOMPARE(read->state(), QAStNode::Selected);
    QVERIFY(!read->background());
    QVERIFY(read->outputFiles().isEmpty());
    const QString report = QAStData::loadReport();
    for (const char* tag :
         {"current_configuration", "background", "outfilename_list", "perlscript_before_child",
          "perlscript_after_child", "configuration_list"})
        QVERIFY2(report.contains(u"Unable to find tag "_s + QLatin1String(tag)), tag);
    QVERIFY(!report.contains(u"tag state"_s));
}

QTEST_MAIN(TestNodeBlock)
#include "tst_node_block.moc"
