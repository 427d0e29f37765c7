#include "QAPropertyBool.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboString.h"
#include "QAPropertyInt.h"
#include "QAPropertyLineEdit.h"
#include "QAPropertyListBox.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathItem.h"
#include "QAPropertySerializer.h"
#include "QAPropertyStore.h"
#include "QAPropertyYesNo.h"
#include "QARes.h"

#include <QDomDocument>
#include <QTextStream>
#include <QtTest>

#include <memory>

namespace {

// A store inheriting from another, as configurations do.
class ChainedStore : public QAPropertyStore {
public:
    explicit ChainedStore(QAPropertyStore* inherit = nullptr)
        : m_inherit(inherit)
    {
    }
    QAPropertyStore* inheritOf() const override { return m_inherit; }

private:
    QAPropertyStore* m_inherit;
};

// A leaf of any value type, for the serializer's encodings; the value
// operations are not used by it.
class TypedLeaf : public QAProperty {
public:
    TypedLeaf(const QString& tag, QMetaType::Type type)
        : m_type(type)
    {
        setTag(tag);
    }
    QString displayValue() const override { return QString(); }
    bool isOverriden() const override { return false; }
    bool isResetable() const override { return false; }
    void reset() override {}
    void setValue(const QVariant&) override {}
    QVariant value() const override { return QVariant(); }
    QMetaType::Type type() const override { return m_type; }
    QWidget* createEditor(QWidget*) override { return nullptr; }

private:
    QMetaType::Type m_type;
};

// One map-bound property of each kind, by kind name.
QAProperty* createMapProperty(const QString& kind, const QString& tag)
{
    if (kind == "Int") return new QAPropertyMapInt(tag);
    if (kind == "ComboInt") return new QAPropertyMapComboInt(tag);
    if (kind == "Bool") return new QAPropertyMapBool(tag);
    if (kind == "YesNo") return new QAPropertyMapYesNo(tag);
    if (kind == "LineEdit") return new QAPropertyMapLineEdit(tag);
    if (kind == "ComboString") return new QAPropertyMapComboString(tag);
    if (kind == "PathItem") return new QAPropertyMapPathItem(tag);
    if (kind == "ListBox") return new QAPropertyMapListBox(tag);
    if (kind == "PathBox") return new QAPropertyMapPathBox(tag);
    return nullptr;
}

const QStringList allKinds = {"Int", "ComboInt", "Bool", "YesNo", "LineEdit",
                              "ComboString", "PathItem", "ListBox", "PathBox"};

QString written(QAPropertyStore* store, QAPropertyGroup* group, const QString& element = QString())
{
    QString text;
    QTextStream s(&text);
    if (element.isEmpty())
        QAPropertySerializer::write(store, group, s, 1);
    else
        QAPropertySerializer::write(store, group, element, s, 1);
    s.flush();
    return text;
}

}

class TestProperties : public QObject {
    Q_OBJECT

private slots:
    void storeOverloadsGiveTheirTypes();
    void storeLooksUpAlongTheChain();
    void storeCopiesItsMap();

    void childValueOverridesParentUntilReset_data();
    void childValueOverridesParentUntilReset();
    void topOfChainIsNotResetable();
    void valueOfAnotherTypeIsNotShown_data();
    void valueOfAnotherTypeIsNotShown();
    void propertyWithoutStoreGivesDefaults_data();
    void propertyWithoutStoreGivesDefaults();
    void setValueConvertsByKind_data();
    void setValueConvertsByKind();
    void displayValues_data();
    void displayValues();

    void attributeBindingInheritsAndResets();
    void attributeBindingWithoutAttribute();

    void groupStructure();
    void groupIsOverridenWhenAChildIs();
    void groupPixmapsNeedNoDisplay();
    void setPropertyStoreBindsNestedMapGroups();
    void copyKeepsFieldsButNotTheGroup();

    void writeNothingLocal();
    void writeEncodings_data();
    void writeEncodings();
    void writeIsFlatAndSkipsInherited();
    void xmlRoundTrip();
    void readLeavesAbsentElementsUntouched();
    void readFromResources();
};

void TestProperties::storeOverloadsGiveTheirTypes()
{
    QAPropertyStore store(nullptr, "store");
    QCOMPARE(store.objectName(), QStringLiteral("store"));
    store.setProperty("int", 1);
    store.setProperty("bool", true);
    store.setProperty("uint", 2u);
    store.setProperty("double", 1.5);
    store.setProperty("float", 1.5f);
    store.setProperty("string", QStringLiteral("s"));
    store.setProperty("bytes", QByteArray("b"));
    store.setProperty("list", QStringList{"a"});
    store.setProperty("chars", "c");
    store.setProperty("map", QVariantMap{{"k", "v"}});
    const QList<QPair<QString, int>> expected = {
        {"int", QMetaType::Int},          {"bool", QMetaType::Bool},
        {"uint", QMetaType::UInt},        {"double", QMetaType::Double},
        {"float", QMetaType::Float},      {"string", QMetaType::QString},
        {"bytes", QMetaType::QByteArray}, {"list", QMetaType::QStringList},
        {"chars", QMetaType::QString},    {"map", QMetaType::QVariantMap},
    };
    for (const auto& e : expected)
        QVERIFY2(store.property(e.first).typeId() == e.second, qPrintable(e.first));
    QCOMPARE(store.propertyNames(),
             QStringList({"bool", "bytes", "chars", "double", "float", "int", "list", "map",
                          "string", "uint"}));
    store.unsetProperty("int");
    QVERIFY(!store.hasProperty("int"));
    QVERIFY(!store.property("int").isValid());
    store.clear();
    QVERIFY(store.propertyNames().isEmpty());
}

void TestProperties::storeLooksUpAlongTheChain()
{
    ChainedStore top;
    ChainedStore middle(&top);
    ChainedStore bottom(&middle);
    top.setProperty("k", 1);
    QCOMPARE(bottom.property("k"), QVariant(1));
    QVERIFY(!bottom.hasProperty("k"));
    middle.setProperty("k", 2);
    QCOMPARE(bottom.property("k"), QVariant(2));
    QCOMPARE(top.property("k"), QVariant(1));
    middle.unsetProperty("k");
    QCOMPARE(bottom.property("k"), QVariant(1));

    // A gap in the chain ends it.
    ChainedStore orphan;
    QVERIFY(!orphan.property("k").isValid());
}

void TestProperties::storeCopiesItsMap()
{
    QAPropertyStore a(nullptr, "a");
    a.setProperty("k", 1);
    QAPropertyStore b(nullptr, "b");
    b.setProperty("other", 2);
    b = a;
    QCOMPARE(b.propertyNames(), QStringList{"k"});
    QCOMPARE(b.objectName(), QStringLiteral("b"));
    const QAPropertyStore c(a);
    QCOMPARE(c.property("k"), QVariant(1));
    a.setProperty("k", 3);
    QCOMPARE(c.property("k"), QVariant(1));
}

void TestProperties::childValueOverridesParentUntilReset_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("parentValue");
    QTest::addColumn<QVariant>("childValue");
    QTest::newRow("Int") << "Int" << QVariant(1) << QVariant(2);
    QTest::newRow("ComboInt") << "ComboInt" << QVariant(1) << QVariant(2);
    QTest::newRow("Bool") << "Bool" << QVariant(true) << QVariant(false);
    QTest::newRow("YesNo") << "YesNo" << QVariant(false) << QVariant(true);
    QTest::newRow("LineEdit") << "LineEdit" << QVariant("-O2") << QVariant("-g");
    QTest::newRow("ComboString") << "ComboString" << QVariant("a") << QVariant("b");
    QTest::newRow("PathItem") << "PathItem" << QVariant("/p") << QVariant("/c");
    QTest::newRow("ListBox") << "ListBox" << QVariant(QStringList{"a"}) << QVariant(QStringList{"b", "c"});
    QTest::newRow("PathBox") << "PathBox" << QVariant(QStringList{"/a"}) << QVariant(QStringList{});
}

void TestProperties::childValueOverridesParentUntilReset()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, parentValue);
    QFETCH(QVariant, childValue);
    ChainedStore parentStore;
    ChainedStore childStore(&parentStore);
    QAPropertyMapGroup group;
    QAProperty* p = createMapProperty(kind, "opt");
    group.addChild(p);

    group.setPropertyStore(&parentStore);
    p->setValue(parentValue);
    group.setPropertyStore(&childStore);
    QCOMPARE(p->value(), parentValue);
    QVERIFY(!p->isOverriden());
    QVERIFY(p->isResetable());

    p->setValue(childValue);
    QCOMPARE(p->value(), childValue);
    QVERIFY(p->isOverriden());
    QCOMPARE(parentStore.property("opt"), parentValue);

    p->reset();
    QVERIFY(!childStore.hasProperty("opt"));
    QCOMPARE(p->value(), parentValue);
}

void TestProperties::topOfChainIsNotResetable()
{
    ChainedStore top;
    ChainedStore child(&top);
    QAPropertyMapGroup group;
    auto* p = new QAPropertyMapInt("opt");
    group.addChild(p);
    group.setPropertyStore(&top);
    p->setValue(4);
    QVERIFY(p->isOverriden());
    QVERIFY(!p->isResetable());
    group.setPropertyStore(&child);
    QVERIFY(p->isResetable());
}

void TestProperties::valueOfAnotherTypeIsNotShown_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("Int") << "Int" << QVariant(42);
    QTest::newRow("ComboInt") << "ComboInt" << QVariant(42);
    QTest::newRow("Bool") << "Bool" << QVariant();
    QTest::newRow("LineEdit") << "LineEdit" << QVariant(QString());
    QTest::newRow("PathItem") << "PathItem" << QVariant(QString());
    QTest::newRow("ListBox") << "ListBox" << QVariant(QStringList());
}

void TestProperties::valueOfAnotherTypeIsNotShown()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, expected);
    QAPropertyStore store;
    store.setProperty("opt", 42);
    QAPropertyMapGroup group;
    QAProperty* p = createMapProperty(kind, "opt");
    group.addChild(p);
    group.setPropertyStore(&store);
    QCOMPARE(p->value().typeId(), expected.typeId());
    QCOMPARE(p->value(), expected);
}

void TestProperties::propertyWithoutStoreGivesDefaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("expectedType");
    QTest::newRow("Int") << "Int" << int(QMetaType::UnknownType);
    QTest::newRow("ComboInt") << "ComboInt" << int(QMetaType::UnknownType);
    QTest::newRow("Bool") << "Bool" << int(QMetaType::UnknownType);
    QTest::newRow("YesNo") << "YesNo" << int(QMetaType::UnknownType);
    QTest::newRow("LineEdit") << "LineEdit" << int(QMetaType::QString);
    QTest::newRow("ComboString") << "ComboString" << int(QMetaType::QString);
    QTest::newRow("PathItem") << "PathItem" << int(QMetaType::QString);
    QTest::newRow("ListBox") << "ListBox" << int(QMetaType::QStringList);
    QTest::newRow("PathBox") << "PathBox" << int(QMetaType::QStringList);
}

void TestProperties::propertyWithoutStoreGivesDefaults()
{
    QFETCH(QString, kind);
    QFETCH(int, expectedType);
    // Outside a map group, in a plain group, and in a plain group inside a
    // bound map group: no store either way.
    std::unique_ptr<QAProperty> loose(createMapProperty(kind, "opt"));
    QAPropertyGroup plain;
    QAProperty* inPlain = createMapProperty(kind, "opt");
    plain.addChild(inPlain);
    QAPropertyStore store;
    QAPropertyMapGroup bound;
    auto* nested = new QAPropertyGroup;
    bound.addChild(nested);
    QAProperty* inNested = createMapProperty(kind, "opt");
    nested->addChild(inNested);
    bound.setPropertyStore(&store);
    for (QAProperty* p : {loose.get(), inPlain, inNested}) {
        p->setValue(QVariant(1));
        QCOMPARE(p->value().typeId(), expectedType);
        QVERIFY(p->value().toString().isEmpty());
        QVERIFY(!p->isOverriden());
        QVERIFY(!p->isResetable());
        p->reset();
    }
    QVERIFY(!store.hasProperty(QStringLiteral("opt")));
}

void TestProperties::setValueConvertsByKind_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("input");
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("Int from text") << "Int" << QVariant("12") << QVariant(12);
    QTest::newRow("ComboInt from double") << "ComboInt" << QVariant(3.0) << QVariant(3);
    QTest::newRow("Bool from int") << "Bool" << QVariant(1) << QVariant(true);
    QTest::newRow("YesNo from text") << "YesNo" << QVariant("false") << QVariant(false);
    QTest::newRow("LineEdit new lines") << "LineEdit" << QVariant("a\n  b ") << QVariant("a b");
    QTest::newRow("LineEdit white space") << "LineEdit" << QVariant("\t x\r\n\ny  ") << QVariant("x y");
    QTest::newRow("ComboString from int") << "ComboString" << QVariant(7) << QVariant("7");
    QTest::newRow("PathItem keeps blanks") << "PathItem" << QVariant(" /a b ") << QVariant(" /a b ");
    QTest::newRow("ListBox from text") << "ListBox" << QVariant("x") << QVariant(QStringList{"x"});
    QTest::newRow("PathBox") << "PathBox" << QVariant(QStringList{"/a", "/b"})
                             << QVariant(QStringList{"/a", "/b"});
}

void TestProperties::setValueConvertsByKind()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, input);
    QFETCH(QVariant, stored);
    QAPropertyStore store;
    QAPropertyMapGroup group;
    QAProperty* p = createMapProperty(kind, "opt");
    group.addChild(p);
    group.setPropertyStore(&store);
    p->setValue(input);
    QCOMPARE(store.property("opt").typeId(), stored.typeId());
    QCOMPARE(store.property("opt"), stored);
}

void TestProperties::displayValues_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("display");
    QTest::newRow("Bool true") << "Bool" << QVariant(true) << "True";
    QTest::newRow("Bool false") << "Bool" << QVariant(false) << "False";
    QTest::newRow("YesNo true") << "YesNo" << QVariant(true) << "Yes";
    QTest::newRow("YesNo false") << "YesNo" << QVariant(false) << "No";
    QTest::newRow("Int with suffix") << "Int" << QVariant(5) << "5 ms";
    QTest::newRow("Int unset") << "Int" << QVariant() << "";
    QTest::newRow("ComboInt label") << "ComboInt" << QVariant(2) << "two";
    QTest::newRow("ComboInt unknown") << "ComboInt" << QVariant(9) << "9";
    QTest::newRow("ComboString label") << "ComboString" << QVariant("gcc") << "GNU C";
    QTest::newRow("ComboString unknown") << "ComboString" << QVariant("cl") << "cl";
    QTest::newRow("ListBox") << "ListBox" << QVariant(QStringList{"a", "b"}) << "a, b";
}

void TestProperties::displayValues()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, value);
    QFETCH(QString, display);
    QAPropertyStore store;
    QAPropertyMapGroup group;
    QAProperty* p = createMapProperty(kind, "opt");
    group.addChild(p);
    group.setPropertyStore(&store);
    if (auto* i = dynamic_cast<QAPropertyInt*>(p))
        i->setSuffix(" ms");
    if (auto* c = dynamic_cast<QAPropertyComboInt*>(p)) {
        c->insertItem("one", 1);
        c->insertItem("two", 2);
    }
    if (auto* c = dynamic_cast<QAPropertyComboString*>(p))
        c->insertItem("GNU C", "gcc");
    if (value.isValid())
        p->setValue(value);
    QCOMPARE(p->displayValue(), display);
}

void TestProperties::attributeBindingInheritsAndResets()
{
    QAStAttribute<int> top(10);
    QAStAttribute<int> middle(0, &top);
    QAStAttribute<int> bottom(0, &middle);
    QAPropertyAttrInt p(&bottom, "Level", 0, 100, 1);
    QCOMPARE(p.name(), QStringLiteral("Level"));
    QCOMPARE(p.maximum(), 100);

    // Never set at the top: the top's own value.
    QCOMPARE(p.value(), QVariant(10));
    QVERIFY(p.isResetable());
    QVERIFY(!p.isOverriden());

    middle.setValue(20);
    QCOMPARE(p.value(), QVariant(20));
    p.setValue(QVariant("30"));
    QCOMPARE(p.value(), QVariant(30));
    QVERIFY(p.isOverriden());
    QCOMPARE(middle.localValue(), 20);

    p.reset();
    QCOMPARE(p.value(), QVariant(20));
    QCOMPARE(bottom.localValue(), 30);

    QAPropertyAttrInt atTop(&top);
    QVERIFY(!atTop.isResetable());

    // Text kinds keep the text as given.
    QAStAttribute<QString> text;
    QAPropertyAttrLineEdit edit(&text);
    edit.setValue("a\nb");
    QCOMPARE(text.value(), QStringLiteral("a\nb"));
    QAStAttribute<QStringList> list;
    QAPropertyAttrPathBox paths(&list);
    paths.setValue(QStringList{"/x"});
    QCOMPARE(paths.value(), QVariant(QStringList{"/x"}));
    QAStAttribute<bool> flag(false);
    QAPropertyAttrYesNo yesNo(&flag);
    yesNo.setValue(true);
    QCOMPARE(yesNo.displayValue(), QStringLiteral("Yes"));
}

void TestProperties::attributeBindingWithoutAttribute()
{
    QAPropertyAttrComboString p;
    p.setValue("x");
    QCOMPARE(p.value(), QVariant(QString()));
    QVERIFY(!p.isOverriden());
    QVERIFY(!p.isResetable());
    QAPropertyAttrBool b;
    QVERIFY(!b.value().isValid());
}

void TestProperties::groupStructure()
{
    QAPropertyGroup root("root");
    QVERIFY(root.isGroup());
    QVERIFY(!root.value().isValid());
    QCOMPARE(root.type(), QMetaType::UnknownType);
    QVERIFY(!root.createEditor(nullptr));
    auto* a = new QAPropertyMapInt("a");
    auto* sub = new QAPropertyGroup("sub");
    auto* b = new QAPropertyMapInt("b");
    auto* twin = new QAPropertyMapLineEdit("a");
    root.addChild(a);
    root.addChild(sub);
    root.addChild(b);
    root.addChild(twin);
    QCOMPARE(root.count(), 4);
    QCOMPARE(root.nbGroup(), 1);
    QCOMPARE(root.property("a"), a);
    QVERIFY(!root.property("missing"));
    QCOMPARE(a->parentGroup(), &root);

    // Moving a child leaves its former group; removing hands it back.
    sub->addChild(b);
    QCOMPARE(root.count(), 3);
    QCOMPARE(b->parentGroup(), sub);
    root.removeChild(a);
    QVERIFY(!a->parentGroup());
    QCOMPARE(root.property("a"), twin);
    delete a;

    // Deleting a child takes it out of its group.
    delete twin;
    QCOMPARE(root.count(), 1);
}

void TestProperties::groupIsOverridenWhenAChildIs()
{
    QAPropertyStore store;
    QAPropertyMapGroup root;
    auto* sub = new QAPropertyMapGroup;
    auto* deep = new QAPropertyMapInt("deep");
    auto* direct = new QAPropertyMapInt("direct");
    sub->addChild(deep);
    root.addChild(sub);
    root.addChild(direct);
    root.setPropertyStore(&store);
    QVERIFY(!root.isOverriden());
    store.setProperty("deep", 1);
    QVERIFY(sub->isOverriden());
    QVERIFY(root.isOverriden());
    store.clear();
    store.setProperty("direct", 1);
    QVERIFY(root.isOverriden());
    QVERIFY(!sub->isOverriden());
    QVERIFY(!root.isResetable());
}

void TestProperties::groupPixmapsNeedNoDisplay()
{
    // No QGuiApplication here: the names are kept, no pixmap is made.
    QAPropertyGroup g;
    g.setOpenedPix("opened.png");
    g.setClosedPix("closed.png");
    QCOMPARE(g.openedPixName(), QStringLiteral("opened.png"));
    QVERIFY(g.openedPix().isNull());
    QVERIFY(g.closedPix().isNull());
}

void TestProperties::setPropertyStoreBindsNestedMapGroups()
{
    QAPropertyMapGroup root;
    auto* level1 = new QAPropertyMapGroup;
    auto* level2 = new QAPropertyMapGroup;
    auto* leaf = new QAPropertyMapInt("leaf");
    level2->addChild(leaf);
    level1->addChild(level2);
    root.addChild(level1);
    QAPropertyStore first, second;
    first.setProperty("leaf", 1);
    second.setProperty("leaf", 2);
    root.setPropertyStore(&first);
    QCOMPARE(level2->propertyStore(), &first);
    QCOMPARE(leaf->propertyStore(), &first);
    QCOMPARE(leaf->value(), QVariant(1));
    root.setPropertyStore(&second);
    QCOMPARE(leaf->value(), QVariant(2));
    // Binding a sub-tree leaves the groups above it alone.
    level1->setPropertyStore(&first);
    QCOMPARE(root.propertyStore(), &second);
    QCOMPARE(leaf->value(), QVariant(1));
}

void TestProperties::copyKeepsFieldsButNotTheGroup()
{
    QAPropertyMapGroup group;
    auto* p = new QAPropertyMapPathBox("paths", "Paths");
    group.addChild(p);
    p->setWhatThis("help");
    p->setReadOnly(true);
    p->setPerlVarName("$PATHS");
    p->setInitValue(QStringList{"/x"});
    p->setFilters({"*.c"});
    p->setButtons(QAPropertyPathBox::SingleWithoutMoves);
    const QAPropertyMapPathBox copy(*p);
    QCOMPARE(copy.tag(), QStringLiteral("paths"));
    QCOMPARE(copy.name(), QStringLiteral("Paths"));
    QCOMPARE(copy.whatThis(), QStringLiteral("help"));
    QVERIFY(copy.readOnly());
    QCOMPARE(copy.perlVarName(), QStringLiteral("$PATHS"));
    QVERIFY(copy.hasInitValue());
    QCOMPARE(copy.filters(), QStringList{"*.c"});
    QCOMPARE(copy.buttons(), QAPropertyPathBox::SingleWithoutMoves);
    QVERIFY(!copy.parentGroup());

    auto* target = new QAPropertyMapPathBox;
    group.addChild(target);
    *target = copy;
    QCOMPARE(target->tag(), QStringLiteral("paths"));
    QCOMPARE(target->parentGroup(), &group);

    // A group copies its own fields, not its children, which belong to
    // their group; an assignment keeps the children it has.
    group.setName("Build");
    group.setOpenedPix("open.png");
    QAPropertyStore store;
    group.setPropertyStore(&store);
    QAPropertyMapGroup groupCopy(group);
    QCOMPARE(groupCopy.name(), QStringLiteral("Build"));
    QCOMPARE(groupCopy.openedPixName(), QStringLiteral("open.png"));
    QCOMPARE(groupCopy.propertyStore(), &store);
    QCOMPARE(groupCopy.count(), 0);
    QCOMPARE(p->parentGroup(), &group);
    QAPropertyGroup assigned("other");
    assigned.addChild(new QAPropertyMapInt("kept"));
    assigned = group;
    QCOMPARE(assigned.name(), QStringLiteral("Build"));
    QCOMPARE(assigned.count(), 1);
    QCOMPARE(assigned.children().first()->tag(), QStringLiteral("kept"));
}

void TestProperties::writeNothingLocal()
{
    ChainedStore parent;
    ChainedStore child(&parent);
    parent.setProperty("a", 1);
    QAPropertyMapGroup group;
    group.addChild(new QAPropertyMapInt("a"));
    QCOMPARE(written(&child, &group), QString());
    QCOMPARE(written(&child, &group, "settings"), QStringLiteral("  <settings>\n  </settings>\n"));
}

void TestProperties::writeEncodings_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("invalid") << int(QMetaType::QString) << QVariant() << "null";
    QTest::newRow("string") << int(QMetaType::QString) << QVariant("a,b<c>&d") << "a#comma#b&lt;c&gt;&amp;d";
    QTest::newRow("bytes") << int(QMetaType::QByteArray) << QVariant(QByteArray("x,y")) << "x#comma#y";
    QTest::newRow("bool") << int(QMetaType::Bool) << QVariant(false) << "false";
    QTest::newRow("int") << int(QMetaType::Int) << QVariant(-12) << "-12";
    QTest::newRow("uint") << int(QMetaType::UInt) << QVariant(4000000000u) << "4000000000";
    QTest::newRow("list") << int(QMetaType::QStringList) << QVariant(QStringList{"a,1", "b"}) << "a#comma#1,b";
    QTest::newRow("map") << int(QMetaType::QVariantMap) << QVariant(QVariantMap{{"k", "v,w"}, {"n", 1}})
                         << "k=v#comma#w,n=1";
}

void TestProperties::writeEncodings()
{
    QFETCH(int, type);
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QAPropertyStore store;
    store.setProperty("v", value);
    QAPropertyGroup group;
    group.addChild(new TypedLeaf("v", QMetaType::Type(type)));
    QCOMPARE(written(&store, &group), "  <v>" + text + "</v>\n");
}

void TestProperties::writeIsFlatAndSkipsInherited()
{
    ChainedStore parent;
    ChainedStore child(&parent);
    parent.setProperty("inherited", 1);
    child.setProperty("second", 2);
    child.setProperty("first", "x");
    child.setProperty("unknown", 3);
    QAPropertyMapGroup group;
    group.addChild(new QAPropertyMapLineEdit("first"));
    auto* sub = new QAPropertyMapGroup;
    sub->addChild(new QAPropertyMapInt("inherited"));
    sub->addChild(new QAPropertyMapInt("second"));
    group.addChild(sub);
    QCOMPARE(written(&child, &group, "configuration"),
             QStringLiteral("  <configuration>\n"
                            "    <first>x</first>\n"
                            "    <second>2</second>\n"
                            "  </configuration>\n"));
}

void TestProperties::xmlRoundTrip()
{
    const QList<QPair<QMetaType::Type, QVariant>> values = {
        {QMetaType::QString, QString("a,b <c> & d &lt;")},
        {QMetaType::QString, QString()},
        {QMetaType::QByteArray, QByteArray("x,<y>")},
        {QMetaType::Bool, true},
        {QMetaType::Bool, false},
        {QMetaType::Int, -7},
        {QMetaType::UInt, 7u},
        {QMetaType::QStringList, QStringList{"a,b", "<c>", "&"}},
        {QMetaType::QStringList, QStringList{}},
        {QMetaType::QVariantMap, QVariantMap{{"k", "v,=w"}, {"<n>", "&"}}},
    };
    QAPropertyStore source;
    QAPropertyGroup group;
    for (int i = 0; i < values.size(); ++i) {
        const QString tag = QStringLiteral("v%1").arg(i);
        source.setProperty(tag, values.at(i).second);
        group.addChild(new TypedLeaf(tag, values.at(i).first));
    }
    QDomDocument doc;
    QVERIFY(doc.setContent(written(&source, &group, "settings")));
    QAPropertyStore target;
    QAPropertySerializer::read(&target, &group, doc.documentElement());
    for (int i = 0; i < values.size(); ++i) {
        const QString tag = QStringLiteral("v%1").arg(i);
        QVERIFY2(target.property(tag).typeId() == values.at(i).first, qPrintable(tag));
        QCOMPARE(target.property(tag), values.at(i).second);
    }
}

void TestProperties::readLeavesAbsentElementsUntouched()
{
    QDomDocument doc;
    QVERIFY(doc.setContent(QStringLiteral(
        "<configuration><set>5</set><nested>yes</nested><stranger>1</stranger></configuration>")));
    QAPropertyStore store;
    store.setProperty("kept", 1);
    QAPropertyMapGroup group;
    group.addChild(new QAPropertyMapInt("set"));
    group.addChild(new QAPropertyMapInt("kept"));
    group.addChild(new QAPropertyMapInt("absent"));
    auto* sub = new QAPropertyMapGroup;
    sub->addChild(new QAPropertyMapLineEdit("nested"));
    group.addChild(sub);
    QAPropertySerializer::read(&store, &group, doc.documentElement());
    QCOMPARE(store.propertyNames(), QStringList({"kept", "nested", "set"}));
    QCOMPARE(store.property("set"), QVariant(5));
    QCOMPARE(store.property("kept"), QVariant(1));
    QCOMPARE(store.property("nested"), QVariant("yes"));
}

void TestProperties::readFromResources()
{
    QAResGroup root("");
    auto* compiler = new QAResGroup("compiler");
    compiler->append(new QAResString("name", "gcc"));
    compiler->append(new QAResBoolean("debug", true));
    compiler->append(new QAResInt("level", 3));
    auto* includes = new QAResList("includes");
    includes->append(new QAResString("", "/usr/include"));
    includes->append(new QAResString("", "/opt/inc"));
    compiler->append(includes);
    auto* defines = new QAResList("defines");
    defines->append(new QAResString("", "DEBUG=1"));
    defines->append(new QAResString("", "EXPR=a=b"));
    defines->append(new QAResString("", "FLAG"));
    compiler->append(defines);
    auto* mixed = new QAResList("mixed");
    mixed->append(new QAResString("", "a"));
    mixed->append(new QAResInt("", 1));
    compiler->append(mixed);
    root.append(compiler);

    QAPropertyGroup group;
    group.addChild(new QAPropertyMapLineEdit("compiler.name"));
    auto* sub = new QAPropertyGroup;
    sub->addChild(new QAPropertyMapBool("compiler.debug"));
    sub->addChild(new QAPropertyMapInt("compiler.level"));
    group.addChild(sub);
    group.addChild(new QAPropertyMapListBox("compiler.includes"));
    group.addChild(new TypedLeaf("compiler.defines", QMetaType::QVariantMap));
    group.addChild(new QAPropertyMapListBox("compiler.mixed"));
    group.addChild(new QAPropertyMapListBox("compiler.absent"));

    QAPropertyStore store;
    QAPropertySerializer::read(&store, &group, &root);
    QCOMPARE(store.property("compiler.name"), QVariant("gcc"));
    QCOMPARE(store.property("compiler.debug"), QVariant(true));
    QCOMPARE(store.property("compiler.level"), QVariant(3));
    QCOMPARE(store.property("compiler.includes"), QVariant(QStringList{"/usr/include", "/opt/inc"}));
    const QVariantMap defs{{"DEBUG", "1"}, {"EXPR", "a=b"}, {"FLAG", ""}};
    QCOMPARE(store.property("compiler.defines"), QVariant(defs));
    QVERIFY(!store.hasProperty("compiler.mixed"));
    QVERIFY(!store.hasProperty("compiler.absent"));
}

QTEST_GUILESS_MAIN(TestProperties)
#include "tst_properties.moc"
