// The property model: stores and their chains, the kinds bound to a store
// or to an attribute, groups, the XML and resource forms, and the editor
// each kind makes.
#include "QAPropertyBool.h"
#include "QAPropertyBoolWidget.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboIntWidget.h"
#include "QAPropertyComboString.h"
#include "QAPropertyComboStringWidget.h"
#include "QAPropertyInt.h"
#include "QAPropertyIntWidget.h"
#include "QAPropertyLineEdit.h"
#include "QAPropertyLineEditWidget.h"
#include "QAPropertyListBox.h"
#include "QAPropertyListBoxWidget.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathBoxWidget.h"
#include "QAPropertyPathItem.h"
#include "QAPropertyPathItemWidget.h"
#include "QAPropertySerializer.h"
#include "QAPropertyStore.h"
#include "QAPropertyYesNo.h"
#include "QARes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDomDocument>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTextStream>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A store inheriting from another, as configurations do.
class ChainedStore : public QAPropertyStore {
public:
    explicit ChainedStore(QAPropertyStore* inherit = nullptr) : m_inherit(inherit) {}
    QAPropertyStore* inheritOf() const override { return m_inherit; }

private:
    QAPropertyStore* m_inherit;
};

// A leaf of any value type, for the serializer's encodings; the value
// operations are not used by it.
class TypedLeaf : public QAProperty {
public:
    TypedLeaf(const QString& tag, QMetaType::Type type) : m_type(type) { setTag(tag); }
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

// A map group holding one property of the kind, bound to store.
struct Bound {
    QAPropertyMapGroup group;
    QAProperty* p;
    Bound(const QString& kind, QAPropertyStore* store) : p(createMapProperty(kind, "opt"))
    {
        group.addChild(p);
        group.setPropertyStore(store);
    }
};

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

// A descriptor group bound to a store that inherits from a parent store.
struct Sheet {
    ChainedStore parent;
    ChainedStore child{&parent};
    QAPropertyMapGroup group;

    template <class P>
    P* add(P* property)
    {
        group.addChild(property);
        group.setPropertyStore(&child);
        return property;
    }
};

// Answers file choosers with fixed paths and records the requests.
struct FakeChooser {
    QStringList answer;
    QList<QAPropertyFileChooser::Request> requests;
    QAPropertyFileChooser::Chooser previous = QAPropertyFileChooser::setChooser(
        [this](QWidget*, const QAPropertyFileChooser::Request& r) {
            requests << r;
            return answer;
        });
    ~FakeChooser() { QAPropertyFileChooser::setChooser(previous); }
};

template <class W>
std::unique_ptr<W> editorOf(QAProperty* p)
{
    return std::unique_ptr<W>(qobject_cast<W*>(p->createEditor(nullptr)));
}

}

class TestProperties : public QObject {
    Q_OBJECT

private slots:
    // A text, bytes, a list and a map keep their types; a C string is a
    // text, not a Boolean.
    void storeOverloadsGiveTheirTypes()
    {
        QAPropertyStore store(nullptr, "store");
        QCOMPARE(store.objectName(), u"store"_s);
        store.setProperty("string", u"s"_s);
        store.setProperty("bytes", QByteArray("b"));
        store.setProperty("list", QStringList{"a"});
        store.setProperty("chars", "c");
        store.setProperty("map", QVariantMap{{"k", "v"}});
        store.setProperty("int", 1);
        const QList<QPair<QString, int>> expected = {
            {"string", QMetaType::QString}, {"bytes", QMetaType::QByteArray}, {"list", QMetaType::QStringList},
            {"chars", QMetaType::QString}, {"map", QMetaType::QVariantMap}, {"int", QMetaType::Int}};
        for (const auto& e : expected)
            QVERIFY2(store.property(e.first).typeId() == e.second, qPrintable(e.first));
        QCOMPARE(store.propertyNames(), QStringList({"bytes", "chars", "int", "list", "map", "string"}));
        store.unsetProperty("int");
        QVERIFY(!store.hasProperty("int"));
        QVERIFY(!store.property("int").isValid());
        store.clear();
        QVERIFY(store.propertyNames().isEmpty());
    }

    void storeCopiesItsMap()
    {
        QAPropertyStore a(nullptr, "a");
        a.setProperty("k", 1);
        QAPropertyStore b(nullptr, "b");
        b.setProperty("other", 2);
        b = a;
        QCOMPARE(b.propertyNames(), QStringList{"k"});
        QCOMPARE(b.objectName(), u"b"_s);
        const QAPropertyStore c(a);
        a.setProperty("k", 3);
        QCOMPARE(c.property("k"), QVariant(1));
    }

    // Per kind: the values of a parent and a child store, what a store
    // holding the int 42 shows, the type shown without a store, the editor.
    void eachKind_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QVariant>("parentValue");
        QTest::addColumn<QVariant>("childValue");
        QTest::addColumn<QVariant>("fromInt");
        QTest::addColumn<int>("typeWithoutStore");
        const QVariant text = QString(), list = QStringList(), none;
        const int unknown = QMetaType::UnknownType, string = QMetaType::QString, strings = QMetaType::QStringList;
        QTest::newRow("Int") << "Int" << QVariant(1) << QVariant(2) << QVariant(42) << unknown;
        QTest::newRow("ComboInt") << "ComboInt" << QVariant(1) << QVariant(2) << QVariant(42) << unknown;
        QTest::newRow("Bool") << "Bool" << QVariant(true) << QVariant(false) << none << unknown;
        QTest::newRow("YesNo") << "YesNo" << QVariant(false) << QVariant(true) << none << unknown;
        QTest::newRow("LineEdit") << "LineEdit" << QVariant("-O2") << QVariant("-g") << text << string;
        QTest::newRow("ComboString") << "ComboString" << QVariant("a") << QVariant("b") << text << string;
        QTest::newRow("PathItem") << "PathItem" << QVariant("/p") << QVariant("/c") << text << string;
        QTest::newRow("ListBox") << "ListBox" << QVariant(QStringList{"a"}) << QVariant(QStringList{"b", "c"})
                                 << list << strings;
        QTest::newRow("PathBox") << "PathBox" << QVariant(QStringList{"/a"}) << QVariant(QStringList{}) << list
                                 << strings;
    }
    void eachKind()
    {
        QFETCH(QString, kind);
        QFETCH(QVariant, parentValue);
        QFETCH(QVariant, childValue);
        QFETCH(QVariant, fromInt);
        QFETCH(int, typeWithoutStore);
        {
            // A child's own value overrides the parent's until reset.
            ChainedStore parentStore, childStore(&parentStore);
            Bound b(kind, &parentStore);
            b.p->setValue(parentValue);
            b.group.setPropertyStore(&childStore);
            QCOMPARE(b.p->value(), parentValue);
            QVERIFY(!b.p->isOverriden());
            QVERIFY(b.p->isResetable());
            b.p->setValue(childValue);
            QCOMPARE(b.p->value(), childValue);
            QVERIFY(b.p->isOverriden());
            QCOMPARE(parentStore.property("opt"), parentValue);
            b.p->reset();
            QVERIFY(!childStore.hasProperty("opt"));
            QCOMPARE(b.p->value(), parentValue);
        }
        {
            // A value of another type is not shown.
            QAPropertyStore store;
            store.setProperty("opt", 42);
            Bound b(kind, &store);
            QCOMPARE(b.p->value().typeId(), fromInt.typeId());
            QCOMPARE(b.p->value(), fromInt);
        }
        // Outside a map group, in a plain group, and in a plain group inside a
        // bound map group: no store either way, the type's empty value.
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
            QCOMPARE(p->value().typeId(), typeWithoutStore);
            QVERIFY(p->value().toString().isEmpty());
            QVERIFY(!p->isOverriden());
            QVERIFY(!p->isResetable());
            p->reset();
        }
        QVERIFY(!store.hasProperty(u"opt"_s));

        // The kind's editor, in the parent given; showing a value that is
        // only inherited does not make it local.
        Sheet sheet;
        QAProperty* edited = sheet.add(createMapProperty(kind, "k"));
        QWidget parent;
        QWidget* editor = edited->createEditor(&parent);
        QVERIFY(editor);
        QCOMPARE(editor->parentWidget(), &parent);
        const QString widgetClass = kind == u"YesNo"_s ? u"QAPropertyBoolWidget"_s : u"QAProperty%1Widget"_s.arg(kind);
        QCOMPARE(QString(editor->metaObject()->className()), widgetClass);
        auto* base = qobject_cast<QAPropertyEditor*>(editor);
        QVERIFY(base);
        QCOMPARE(base->property(), edited);
        QVERIFY(!edited->isOverriden());
    }

    // A value given is stored converted to the kind's type, and shown.
    void setValueConvertsAndDisplays_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QVariant>("input");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("display");
        QTest::newRow("Int from text") << "Int" << QVariant("12") << QVariant(12) << "12 ms";
        QTest::newRow("Int unset") << "Int" << QVariant() << QVariant() << "";
        QTest::newRow("ComboInt from double") << "ComboInt" << QVariant(3.0) << QVariant(3) << "3";
        QTest::newRow("ComboInt label") << "ComboInt" << QVariant(2) << QVariant(2) << "two";
        QTest::newRow("Bool from int") << "Bool" << QVariant(1) << QVariant(true) << "True";
        QTest::newRow("Bool false") << "Bool" << QVariant(false) << QVariant(false) << "False";
        QTest::newRow("YesNo from text") << "YesNo" << QVariant("false") << QVariant(false) << "No";
        QTest::newRow("YesNo true") << "YesNo" << QVariant(true) << QVariant(true) << "Yes";
        QTest::newRow("LineEdit new lines") << "LineEdit" << QVariant("a\n  b ") << QVariant("a b") << "a b";
        QTest::newRow("LineEdit white space") << "LineEdit" << QVariant("\t x\r\n\ny  ") << QVariant("x y") << "x y";
        QTest::newRow("ComboString from int") << "ComboString" << QVariant(7) << QVariant("7") << "7";
        QTest::newRow("ComboString label") << "ComboString" << QVariant("gcc") << QVariant("gcc") << "GNU C";
        QTest::newRow("PathItem keeps blanks") << "PathItem" << QVariant(" /a b ") << QVariant(" /a b ") << " /a b ";
        QTest::newRow("ListBox from text") << "ListBox" << QVariant("x") << QVariant(QStringList{"x"}) << "x";
        QTest::newRow("ListBox") << "ListBox" << QVariant(QStringList{"a", "b"}) << QVariant(QStringList{"a", "b"})
                                 << "a, b";
        QTest::newRow("PathBox") << "PathBox" << QVariant(QStringList{"/a", "/b"})
                                 << QVariant(QStringList{"/a", "/b"}) << "/a, /b";
    }
    void setValueConvertsAndDisplays()
    {
        QFETCH(QString, kind);
        QFETCH(QVariant, input);
        QFETCH(QVariant, stored);
        QAPropertyStore store;
        Bound b(kind, &store);
        if (auto* i = dynamic_cast<QAPropertyInt*>(b.p))
            i->setSuffix(" ms");
        if (auto* c = dynamic_cast<QAPropertyComboInt*>(b.p)) {
            c->insertItem("one", 1);
            c->insertItem("two", 2);
        }
        if (auto* c = dynamic_cast<QAPropertyComboString*>(b.p))
            c->insertItem("GNU C", "gcc");
        if (input.isValid())
            b.p->setValue(input);
        QCOMPARE(store.property("opt").typeId(), stored.typeId());
        QCOMPARE(store.property("opt"), stored);
        QTEST(b.p->displayValue(), "display");
    }

    void attributeBindingInheritsAndResets()
    {
        QAStAttribute<int> top(10);
        QAStAttribute<int> middle(0, &top);
        QAStAttribute<int> bottom(0, &middle);
        QAPropertyAttrInt p(&bottom, "Level", 0, 100, 1);
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
        QVERIFY(!QAPropertyAttrInt(&top).isResetable());
        // Its editor resets to the inherited value too.
        middle.setValue(5);
        auto editor = editorOf<QAPropertyIntWidget>(&p);
        QCOMPARE(editor->spinBox()->value(), 5);
        editor->spinBox()->setValue(8);
        QVERIFY(bottom.isOverriden());
        QCOMPARE(bottom.value(), 8);
        editor->reset();
        QCOMPARE(editor->spinBox()->value(), 5);

        // Text kinds keep the text as given.
        QAStAttribute<QString> text;
        QAPropertyAttrLineEdit(&text).setValue("a\nb");
        QCOMPARE(text.value(), u"a\nb"_s);
        QAStAttribute<QStringList> list;
        QAPropertyAttrPathBox paths(&list);
        paths.setValue(QStringList{"/x"});
        QCOMPARE(paths.value(), QVariant(QStringList{"/x"}));
        QAStAttribute<bool> flag(false);
        QAPropertyAttrYesNo yesNo(&flag);
        yesNo.setValue(true);
        QCOMPARE(yesNo.displayValue(), u"Yes"_s);

        // Without an attribute: nothing kept, nothing to reset.
        QAPropertyAttrComboString none;
        none.setValue("x");
        QCOMPARE(none.value(), QVariant(QString()));
        QVERIFY(!none.isOverriden() && !none.isResetable());
        QVERIFY(!QAPropertyAttrBool().value().isValid());
    }

    void groupStructure()
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
        for (QAProperty* p : QList<QAProperty*>{a, sub, b, twin})
            root.addChild(p);
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

    // One call binds the map groups at every depth; a group is overridden
    // when a child is, at any depth.
    void nestedMapGroups()
    {
        QAPropertyMapGroup root;
        auto* level1 = new QAPropertyMapGroup;
        auto* level2 = new QAPropertyMapGroup;
        auto* leaf = new QAPropertyMapInt("leaf");
        level2->addChild(leaf);
        level1->addChild(level2);
        root.addChild(level1);
        root.addChild(new QAPropertyMapInt("direct"));
        QAPropertyStore first, second;
        root.setPropertyStore(&first);
        QVERIFY(!root.isOverriden());
        first.setProperty("leaf", 1);
        QVERIFY(level1->isOverriden() && root.isOverriden());
        first.clear();
        first.setProperty("direct", 1);
        QVERIFY(root.isOverriden());
        QVERIFY(!level1->isOverriden());
        QVERIFY(!root.isResetable());
        first.setProperty("leaf", 1);
        second.setProperty("leaf", 2);
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

    void copyKeepsFieldsButNotTheGroup()
    {
        QAPropertyMapGroup group;
        auto* p = new QAPropertyMapPathBox("paths", "Paths");
        group.addChild(p);
        p->setPerlVarName("$PATHS");
        p->setInitValue(QStringList{"/x"});
        p->setButtons(QAPropertyPathBox::SingleWithoutMoves);
        const QAPropertyMapPathBox copy(*p);
        QCOMPARE(QStringList({copy.tag(), copy.name(), copy.perlVarName()}), QStringList({"paths", "Paths", "$PATHS"}));
        QVERIFY(copy.hasInitValue());
        QCOMPARE(copy.buttons(), QAPropertyPathBox::SingleWithoutMoves);
        QVERIFY(!copy.parentGroup());
        auto* target = new QAPropertyMapPathBox;
        group.addChild(target);
        *target = copy;
        QCOMPARE(target->tag(), u"paths"_s);
        QCOMPARE(target->parentGroup(), &group);

        // A group copies its own fields, not its children, which belong to
        // their group; an assignment keeps the children it has.
        group.setName("Build");
        group.setOpenedPix("open.png");
        QAPropertyStore store;
        group.setPropertyStore(&store);
        QAPropertyMapGroup groupCopy(group);
        QCOMPARE(groupCopy.name(), u"Build"_s);
        QCOMPARE(groupCopy.openedPixName(), u"open.png"_s);
        QCOMPARE(groupCopy.propertyStore(), &store);
        QCOMPARE(groupCopy.count(), 0);
        QCOMPARE(p->parentGroup(), &group);
        QAPropertyGroup assigned("other");
        assigned.addChild(new QAPropertyMapInt("kept"));
        assigned = group;
        QCOMPARE(assigned.name(), u"Build"_s);
        QCOMPARE(assigned.count(), 1);
        QCOMPARE(assigned.children().first()->tag(), u"kept"_s);
    }

    // --- the XML and resource forms

    void writeEncodings_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("invalid") << int(QMetaType::QString) << QVariant() << "null";
        QTest::newRow("string") << int(QMetaType::QString) << QVariant("a,b<c>&d") << "a#comma#b&lt;c&gt;&amp;d";
        QTest::newRow("string with an entity text") << int(QMetaType::QString) << QVariant("a,b <c> & d &lt;")
                                                    << "a#comma#b &lt;c&gt; &amp; d &amp;lt;";
        QTest::newRow("empty string") << int(QMetaType::QString) << QVariant(QString()) << "";
        QTest::newRow("bytes") << int(QMetaType::QByteArray) << QVariant(QByteArray("x,y")) << "x#comma#y";
        QTest::newRow("bytes with a tag") << int(QMetaType::QByteArray) << QVariant(QByteArray("x,<y>"))
                                          << "x#comma#&lt;y&gt;";
        QTest::newRow("true") << int(QMetaType::Bool) << QVariant(true) << "true";
        QTest::newRow("false") << int(QMetaType::Bool) << QVariant(false) << "false";
        QTest::newRow("int") << int(QMetaType::Int) << QVariant(-12) << "-12";
        QTest::newRow("uint") << int(QMetaType::UInt) << QVariant(4000000000u) << "4000000000";
        QTest::newRow("list") << int(QMetaType::QStringList) << QVariant(QStringList{"a,1", "b"}) << "a#comma#1,b";
        QTest::newRow("list of specials") << int(QMetaType::QStringList) << QVariant(QStringList{"a,b", "<c>", "&"})
                                          << "a#comma#b,&lt;c&gt;,&amp;";
        QTest::newRow("empty list") << int(QMetaType::QStringList) << QVariant(QStringList{}) << "";
        QTest::newRow("map") << int(QMetaType::QVariantMap) << QVariant(QVariantMap{{"k", "v,w"}, {"n", 1}})
                             << "k=v#comma#w,n=1";
        QTest::newRow("map of specials") << int(QMetaType::QVariantMap)
                                         << QVariant(QVariantMap{{"k", "v,=w"}, {"<n>", "&"}})
                                         << "&lt;n&gt;=&amp;,k=v#comma#=w";
    }
    // Each type's text, read back as the same value of the same type.
    void writeEncodings()
    {
        QFETCH(int, type);
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        QAPropertyStore store;
        store.setProperty("v", value);
        QAPropertyGroup group;
        group.addChild(new TypedLeaf("v", QMetaType::Type(type)));
        QCOMPARE(written(&store, &group), "  <v>" + text + "</v>\n");
        if (!value.isValid())
            return;
        QDomDocument doc;
        QVERIFY(doc.setContent(written(&store, &group, "settings")));
        QAPropertyStore target;
        QAPropertySerializer::read(&target, &group, doc.documentElement());
        QVERIFY(target.property("v").typeId() == type);
        QCOMPARE(target.property("v"), value);
    }

    void writeIsFlatAndSkipsInherited()
    {
        ChainedStore parent, child(&parent);
        parent.setProperty("inherited", 1);
        QAPropertyMapGroup local;
        local.addChild(new QAPropertyMapInt("inherited"));
        QCOMPARE(written(&child, &local), QString());
        QCOMPARE(written(&child, &local, "settings"), u"  <settings>\n  </settings>\n"_s);
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
                 QStringLiteral("  <configuration>\n    <first>x</first>\n    <second>2</second>\n"
                                "  </configuration>\n"));
    }

    void readLeavesAbsentElementsUntouched()
    {
        QDomDocument doc;
        QVERIFY(doc.setContent(QStringLiteral(
            "<configuration><set>5</set><nested>yes</nested><stranger>1</stranger></configuration>")));
        QAPropertyStore store;
        store.setProperty("kept", 1);
        QAPropertyMapGroup group;
        for (const char* tag : {"set", "kept", "absent"})
            group.addChild(new QAPropertyMapInt(tag));
        auto* sub = new QAPropertyMapGroup;
        sub->addChild(new QAPropertyMapLineEdit("nested"));
        group.addChild(sub);
        QAPropertySerializer::read(&store, &group, doc.documentElement());
        QCOMPARE(store.propertyNames(), QStringList({"kept", "nested", "set"}));
        QCOMPARE(store.property("set"), QVariant(5));
        QCOMPARE(store.property("kept"), QVariant(1));
        QCOMPARE(store.property("nested"), QVariant("yes"));
    }

    void readFromResources()
    {
        const std::unique_ptr<QARes> root(QARes::readText(
            "compiler = { name = \"gcc\" debug = true level = 3\n"
            "  includes = ( \"/usr/include\", \"/opt/inc\" )\n"
            "  defines = ( \"DEBUG=1\", \"EXPR=a=b\", \"FLAG\" )\n"
            "  mixed = ( \"a\", 1 ) }\n", "mem.res"));
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
        QAPropertySerializer::read(&store, &group, root.get());
        QCOMPARE(store.property("compiler.name"), QVariant("gcc"));
        QCOMPARE(store.property("compiler.debug"), QVariant(true));
        QCOMPARE(store.property("compiler.level"), QVariant(3));
        QCOMPARE(store.property("compiler.includes"), QVariant(QStringList{"/usr/include", "/opt/inc"}));
        const QVariantMap defs{{"DEBUG", "1"}, {"EXPR", "a=b"}, {"FLAG", ""}};
        QCOMPARE(store.property("compiler.defines"), QVariant(defs));
        QVERIFY(!store.hasProperty("compiler.mixed"));
        QVERIFY(!store.hasProperty("compiler.absent"));
    }

    // --- editors

    // An editor shows the value the chain gives, writes what is chosen into
    // the node's own store, and shows the inherited value again after a
    // reset; a read-only setting's editor changes nothing.
    void intEditorWritesAndResets()
    {
        Sheet sheet;
        auto* p = sheet.add(new QAPropertyMapInt("level", "Level", 0, 50, 5));
        sheet.parent.setProperty("level", 10);
        auto editor = editorOf<QAPropertyIntWidget>(p);
        QSpinBox* spin = editor->spinBox();
        QCOMPARE(spin->value(), 10);
        QCOMPARE(spin->maximum(), 50);
        QSignalSpy committed(editor.get(), &QAPropertyEditor::valueCommitted);
        spin->setValue(25);
        QCOMPARE(committed.count(), 1);
        QCOMPARE(sheet.child.property("level"), QVariant(25));
        QCOMPARE(sheet.parent.property("level"), QVariant(10));
        editor->reset();
        QVERIFY(!sheet.child.hasProperty("level"));
        QCOMPARE(spin->value(), 10);
        QCOMPARE(committed.count(), 1);

        p->setReadOnly(true);
        sheet.child.setProperty("level", 3);
        auto readOnly = editorOf<QAPropertyIntWidget>(p);
        QVERIFY(!readOnly->isEnabled());
        readOnly->spinBox()->setValue(7);
        readOnly->reset();
        QCOMPARE(sheet.child.property("level"), QVariant(3));
    }

    // A combo box shows the label of the value, stores the value of the
    // label chosen, and shows the inherited value again after a reset.
    void comboEditors()
    {
        Sheet sheet;
        auto* numbers = sheet.add(new QAPropertyMapComboInt("opt"));
        numbers->insertItem("low", 1);
        numbers->insertItem("high", 9);
        auto* texts = sheet.add(new QAPropertyMapComboString("cc"));
        texts->insertItem("GNU C", "gcc");
        texts->insertItem("Clang", "clang");
        sheet.parent.setProperty("opt", 9);
        sheet.parent.setProperty("cc", "gcc");
        auto intEditor = editorOf<QAPropertyComboIntWidget>(numbers);
        QComboBox* combo = intEditor->comboBox();
        QCOMPARE(combo->currentText(), u"high"_s);
        combo->setCurrentIndex(0);
        QCOMPARE(sheet.child.property("opt"), QVariant(1));
        intEditor->reset();
        QCOMPARE(combo->currentText(), u"high"_s);
        // A value no item holds selects nothing.
        sheet.child.setProperty("opt", 4);
        intEditor->refresh();
        QCOMPARE(combo->currentIndex(), -1);

        auto stringEditor = editorOf<QAPropertyComboStringWidget>(texts);
        QCOMPARE(stringEditor->comboBox()->currentText(), u"GNU C"_s);
        stringEditor->comboBox()->setCurrentIndex(1);
        QCOMPARE(sheet.child.property("cc"), QVariant("clang"));
    }

    void boolEditorStyles()
    {
        Sheet sheet;
        auto* yesNo = sheet.add(new QAPropertyMapYesNo("y"));
        auto* flag = sheet.add(new QAPropertyMapBool("b"));
        sheet.parent.setProperty("y", true);
        auto combo = editorOf<QAPropertyBoolWidget>(yesNo);
        QCOMPARE(combo->comboBox()->currentText(), u"Yes"_s);
        combo->comboBox()->setCurrentIndex(1);
        QCOMPARE(sheet.child.property("y"), QVariant(false));
        combo->reset();
        QCOMPARE(combo->comboBox()->currentText(), u"Yes"_s);
        // No value anywhere: no entry chosen.
        QCOMPARE(editorOf<QAPropertyBoolWidget>(flag)->comboBox()->currentIndex(), -1);
        QAPropertyBoolWidget check(flag, nullptr, QAPropertyBoolWidget::CheckBox);
        QVERIFY(!check.checkBox()->isChecked());
        check.checkBox()->setChecked(true);
        QCOMPARE(sheet.child.property("b"), QVariant(true));
        check.reset();
        QVERIFY(!check.checkBox()->isChecked());
    }

    void lineEditCommitsTypedTextOnly()
    {
        Sheet sheet;
        auto* p = sheet.add(new QAPropertyMapLineEdit("flags"));
        sheet.parent.setProperty("flags", "-O2");
        auto editor = editorOf<QAPropertyLineEditWidget>(p);
        QLineEdit* line = editor->lineEdit();
        QCOMPARE(line->text(), u"-O2"_s);
        // Finishing without a change keeps the value inherited.
        emit line->editingFinished();
        QVERIFY(!sheet.child.hasProperty("flags"));
        line->clear();
        QTest::keyClicks(line, "  -g   -Wall ");
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(sheet.child.property("flags"), QVariant("-g -Wall"));
        QCOMPARE(line->text(), u"-g -Wall"_s);
        editor->reset();
        QCOMPARE(line->text(), u"-O2"_s);
    }

    void pathItemBrowsesThroughChooser()
    {
        FakeChooser chooser;
        Sheet sheet;
        auto* p = sheet.add(new QAPropertyMapPathItem("tdp", "Target"));
        p->setFilters({"Ini files (*.ini)"});
        p->setMode(QAPropertyFileChooser::DirectoryOnly);
        sheet.child.setProperty("tdp", "/start");
        auto editor = editorOf<QAPropertyPathItemWidget>(p);
        // Cancelled: nothing changes.
        editor->button()->click();
        QCOMPARE(sheet.child.property("tdp"), QVariant("/start"));
        QCOMPARE(chooser.requests.size(), 1);
        const QAPropertyFileChooser::Request& asked = chooser.requests.first();
        QCOMPARE(asked.caption, u"Target"_s);
        QCOMPARE(asked.startPath, u"/start"_s);
        QCOMPARE(asked.filters, QStringList{"Ini files (*.ini)"});
        QCOMPARE(asked.mode, QAPropertyFileChooser::DirectoryOnly);
        chooser.answer = QStringList{"/chosen", "/second"};
        editor->button()->click();
        QCOMPARE(sheet.child.property("tdp"), QVariant("/chosen"));
        QCOMPARE(editor->lineEdit()->text(), u"/chosen"_s);
    }

    void listBoxEditor()
    {
        Sheet sheet;
        auto* p = sheet.add(new QAPropertyMapListBox("defines"));
        sheet.parent.setProperty("defines", QStringList{"A"});
        auto editor = editorOf<QAPropertyListBoxWidget>(p);
        QCOMPARE(editor->items(), QStringList{"A"});
        QTest::keyClicks(editor->entryEdit(), "B");
        editor->findChild<QPushButton*>("add")->click();
        QCOMPARE(sheet.child.property("defines"), QVariant(QStringList({"A", "B"})));
        QVERIFY(editor->entryEdit()->text().isEmpty());
        QTest::keyClicks(editor->entryEdit(), "C");
        QTest::keyClick(editor->entryEdit(), Qt::Key_Return);
        QCOMPARE(editor->items(), QStringList({"A", "B", "C"}));
        editor->listWidget()->setCurrentRow(2);
        editor->findChild<QPushButton*>("up")->click();
        QCOMPARE(sheet.child.property("defines"), QVariant(QStringList({"A", "C", "B"})));
        QCOMPARE(editor->listWidget()->currentRow(), 1);
        editor->findChild<QPushButton*>("remove")->click();
        QCOMPARE(sheet.child.property("defines"), QVariant(QStringList({"A", "B"})));
        editor->reset();
        QCOMPARE(editor->items(), QStringList{"A"});
        // An item edited in place is taken too.
        sheet.parent.setProperty("defines", QStringList{"A", "B"});
        auto inPlace = editorOf<QAPropertyListBoxWidget>(p);
        inPlace->listWidget()->item(1)->setText("X");
        QTRY_COMPARE(sheet.child.property("defines"), QVariant(QStringList({"A", "X"})));
    }

    void pathBoxAddsChosenPaths()
    {
        FakeChooser chooser;
        Sheet sheet;
        auto* p = sheet.add(new QAPropertyMapPathBox("includes"));
        p->setFilters({"*.h"});
        sheet.parent.setProperty("includes", QStringList{"/usr/include"});
        auto editor = editorOf<QAPropertyPathBoxWidget>(p);
        chooser.answer = QStringList{"/a.h", "/b.h"};
        editor->findChild<QPushButton*>("addFile")->click();
        QCOMPARE(chooser.requests.last().mode, QAPropertyFileChooser::ExistingFiles);
        QCOMPARE(chooser.requests.last().filters, QStringList{"*.h"});
        chooser.answer = QStringList{"/inc"};
        editor->findChild<QPushButton*>("addDirectory")->click();
        QCOMPARE(chooser.requests.last().mode, QAPropertyFileChooser::Directory);
        QCOMPARE(sheet.child.property("includes"), QVariant(QStringList({"/usr/include", "/a.h", "/b.h", "/inc"})));
        chooser.answer.clear();
        editor->findChild<QPushButton*>("addFile")->click();
        QCOMPARE(editor->items().size(), 4);
        editor->reset();
        QCOMPARE(editor->items(), QStringList{"/usr/include"});
    }
};

QTEST_MAIN(TestProperties)
#include "tst_properties.moc"
