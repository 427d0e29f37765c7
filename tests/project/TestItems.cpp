#include "TestItems.h"

#include "QAStDataFactory.h"

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
