#include "TestItems.h"

#include "QAStConfiguration.h"
#include "QAStDataFactory.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeKinds.h"
#include "QAStNodeLink.h"
#include "QAStNodeSource.h"
#include "QAStNodeTestScript.h"
#include "QAStNodeUser.h"

#include <QDomDocument>
#include <QDomElement>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {
const QAStDataFactory::Registration<TestItem> itemRow("test_item");
const QAStDataFactory::Registration<TestFolder> folderRow("test_folder");
const QAStDataFactory::Registration<TestLeaf> leafRow("test_leaf");
}

TestItem::TestItem(const QString& name, QAStData* parent, QAStData* after)
    : QAStData(name, QPixmap(), parent, after)
{
}

TestItem::TestItem(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : TestItem("test_item", e, version, parent, after, QStringList())
{
}

TestItem::TestItem(const char* tag, const QDomElement& e, int version, QAStData* parent,
                   QAStData* after, const QStringList& allowedClasses)
    : QAStData(parent, after)
{
    if (!checkTag(e, tag) || !init(e.firstChildElement(u"data"_s), version)) {
        setValid(false);
        return;
    }
    initChildren(e.firstChildElement(u"children"_s), version, allowedClasses);
}

void TestItem::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << '<' << tag() << ">\n";
    QAStData::write(s, indent + 1);
    QAXML::indent(s, indent + 1);
    s << "<children>\n";
    for (QAStData* c = child(); c; c = c->next())
        c->write(s, indent + 2);
    QAXML::indent(s, indent + 1);
    s << "</children>\n";
    QAXML::indent(s, indent);
    s << "</" << tag() << ">\n";
}

TestFolder::TestFolder(const QString& name, QAStData* parent, QAStData* after)
    : TestItem(name, parent, after)
{
}

TestFolder::TestFolder(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : TestItem("test_folder", e, version, parent, after, QStringList{u"TestLeaf"_s})
{
}

TestLeaf::TestLeaf(const QString& name, QAStData* parent, QAStData* after)
    : TestItem(name, parent, after)
{
}

TestLeaf::TestLeaf(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : TestItem("test_leaf", e, version, parent, after, QStringList())
{
}

QDomElement parseElement(const QString& xml)
{
    QDomDocument doc;
    doc.setContent(xml);
    return doc.documentElement();
}

QAStNodeSystemTesting::Deployment testDeployment(const QString& tester, const QString& host)
{
    QAStNodeSystemTesting::Deployment d;
    d.activated = false;
    d.vtNodeName = tester;
    d.instance = u"I \"1\", <a&b>"_s;
    d.delay = 250;
    d.number = 3;
    d.occId = 4;
    d.hostIp = host;
    d.portAgent = 10000;
    d.startRoutine = u"vt_main"_s;
    return d;
}

void setOwnFields(QAStNode* node)
{
    node->setState(QAStNode::UnSelectedReported);
    node->setBackground(true);
    node->setCurrentConfigurationName(u"Debug"_s);
    node->addConfiguration(u"Debug"_s)->setProperty(u"cflags"_s, u"-g"_s);
    node->addConfiguration(u"Release"_s);
    node->addOutputFile(u"TSF"_s, {u"a.tsf"_s, u"b,c.tsf"_s});
    node->setPerlScriptBeforeChild(u"print \"before\";\n"_s);
    node->setPerlScriptAfterChild(u"print 'after', 1;"_s);
    if (auto* file = qobject_cast<QAStNodeFileRef*>(node))
        file->setFileKey(u"src/a b,c.c"_s);
    if (auto* source = qobject_cast<QAStNodeSource*>(node))
        source->setIntegratedSource(true);
    if (auto* script = qobject_cast<QAStNodeTestScript*>(node)) {
        script->setTestCases({u"t1"_s, u"t,2"_s});
        script->setFamilies({u"nominal"_s, u"robustness"_s});
        script->setSelectedTestCases({u"t,2"_s});
        script->setSelectedFamilies({u"nominal"_s});
        script->setInstance(u"VT<1>"_s);
    }
    if (auto* system = qobject_cast<QAStNodeSystemTesting*>(node)) {
        system->setDeployments({testDeployment(u"VT1"_s, u"10.0.0.1"_s), testDeployment(u"VT2"_s, {})});
        system->setRendezvous({{u"start"_s, 2}, {u"end,all"_s, 3}});
        system->setRendezvousAutoGenerate(false);
        system->setMachines({u"host-a"_s, u"host \"b\""_s});
    }
    if (auto* user = qobject_cast<QAStNodeUser*>(node)) {
        user->setRedirectStdout(false);
        user->setRedirectStderr(false);
    }
    if (auto* link = qobject_cast<QAStNodeLink*>(node))
        link->setLinkedNode(u"Lib"_s, u"QAStNodeLibrary"_s);
}

bool addEveryKind(QAStNode* root)
{
    QStringList missing;
    for (const QAStNodeKind* kind : QAStNodeKind::all()) {
        if (kind->make)
            missing << QLatin1String(kind->name);
    }
    QList<QAStNode*> made{root};
    for (qsizetype i = 0; i < made.size(); ++i) {
        for (const QString& kind : made.at(i)->addableChildKinds()) {
            if (missing.removeOne(kind)) {
                made << made.at(i)->addNewChild(kind);
                setOwnFields(made.last());
            }
        }
    }
    return missing.isEmpty();
}
