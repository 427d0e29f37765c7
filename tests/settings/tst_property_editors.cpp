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
#include "QAPropertyYesNo.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QtTest>

#include <memory>

namespace {

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
    QAPropertyFileChooser::Chooser previous;

    FakeChooser()
    {
        previous = QAPropertyFileChooser::setChooser(
            [this](QWidget*, const QAPropertyFileChooser::Request& r) {
                requests << r;
                return answer;
            });
    }
    ~FakeChooser() { QAPropertyFileChooser::setChooser(previous); }
};

template <class W>
std::unique_ptr<W> editorOf(QAProperty* p)
{
    auto* w = qobject_cast<W*>(p->createEditor(nullptr));
    return std::unique_ptr<W>(w);
}

}

class TestPropertyEditors : public QObject {
    Q_OBJECT

private slots:
    void createEditorGivesTheKindsWidget_data();
    void createEditorGivesTheKindsWidget();
    void intEditorWritesAndResets();
    void readOnlyEditorRefusesEdits();
    void comboIntEditor();
    void boolEditorStyles();
    void lineEditCommitsTypedTextOnly();
    void comboStringEditor();
    void pathItemBrowsesThroughChooser();
    void listBoxEditor();
    void listBoxInPlaceEdit();
    void pathBoxButtons_data();
    void pathBoxButtons();
    void pathBoxAddsChosenPaths();
    void attributeBoundEditorResets();
};

void TestPropertyEditors::createEditorGivesTheKindsWidget_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("widgetClass");
    QTest::newRow("Int") << "Int" << "QAPropertyIntWidget";
    QTest::newRow("ComboInt") << "ComboInt" << "QAPropertyComboIntWidget";
    QTest::newRow("Bool") << "Bool" << "QAPropertyBoolWidget";
    QTest::newRow("YesNo") << "YesNo" << "QAPropertyBoolWidget";
    QTest::newRow("LineEdit") << "LineEdit" << "QAPropertyLineEditWidget";
    QTest::newRow("ComboString") << "ComboString" << "QAPropertyComboStringWidget";
    QTest::newRow("PathItem") << "PathItem" << "QAPropertyPathItemWidget";
    QTest::newRow("ListBox") << "ListBox" << "QAPropertyListBoxWidget";
    QTest::newRow("PathBox") << "PathBox" << "QAPropertyPathBoxWidget";
}

void TestPropertyEditors::createEditorGivesTheKindsWidget()
{
    QFETCH(QString, kind);
    QFETCH(QString, widgetClass);
    Sheet sheet;
    QAProperty* p = nullptr;
    if (kind == "Int") p = sheet.add(new QAPropertyMapInt("k"));
    if (kind == "ComboInt") p = sheet.add(new QAPropertyMapComboInt("k"));
    if (kind == "Bool") p = sheet.add(new QAPropertyMapBool("k"));
    if (kind == "YesNo") p = sheet.add(new QAPropertyMapYesNo("k"));
    if (kind == "LineEdit") p = sheet.add(new QAPropertyMapLineEdit("k"));
    if (kind == "ComboString") p = sheet.add(new QAPropertyMapComboString("k"));
    if (kind == "PathItem") p = sheet.add(new QAPropertyMapPathItem("k"));
    if (kind == "ListBox") p = sheet.add(new QAPropertyMapListBox("k"));
    if (kind == "PathBox") p = sheet.add(new QAPropertyMapPathBox("k"));
    QWidget parent;
    QWidget* editor = p->createEditor(&parent);
    QVERIFY(editor);
    QCOMPARE(editor->parentWidget(), &parent);
    QCOMPARE(QString(editor->metaObject()->className()), widgetClass);
    auto* base = qobject_cast<QAPropertyEditor*>(editor);
    QVERIFY(base);
    QCOMPARE(base->property(), p);
    // Showing a value that is only inherited does not make it local.
    QVERIFY(!p->isOverriden());
}

void TestPropertyEditors::intEditorWritesAndResets()
{
    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapInt("level", "Level", 0, 50, 5));
    p->setSuffix(" %");
    sheet.parent.setProperty("level", 10);
    auto editor = editorOf<QAPropertyIntWidget>(p);
    QSpinBox* spin = editor->spinBox();
    QCOMPARE(spin->value(), 10);
    QCOMPARE(spin->maximum(), 50);
    QCOMPARE(spin->singleStep(), 5);
    QCOMPARE(spin->suffix(), QStringLiteral(" %"));

    QSignalSpy committed(editor.get(), &QAPropertyEditor::valueCommitted);
    spin->setValue(25);
    QCOMPARE(committed.count(), 1);
    QCOMPARE(sheet.child.property("level"), QVariant(25));
    QCOMPARE(sheet.parent.property("level"), QVariant(10));

    editor->reset();
    QVERIFY(!sheet.child.hasProperty("level"));
    QCOMPARE(spin->value(), 10);
    QCOMPARE(committed.count(), 1);
}

void TestPropertyEditors::readOnlyEditorRefusesEdits()
{
    Sheet sheet;
    auto* number = sheet.add(new QAPropertyMapInt("n"));
    auto* text = sheet.add(new QAPropertyMapLineEdit("t"));
    number->setReadOnly(true);
    text->setReadOnly(true);
    sheet.child.setProperty("n", 3);
    sheet.parent.setProperty("n", 1);

    auto numberEditor = editorOf<QAPropertyIntWidget>(number);
    QVERIFY(!numberEditor->isEnabled());
    numberEditor->spinBox()->setValue(7);
    QCOMPARE(sheet.child.property("n"), QVariant(3));
    numberEditor->reset();
    QCOMPARE(sheet.child.property("n"), QVariant(3));

    auto textEditor = editorOf<QAPropertyLineEditWidget>(text);
    QVERIFY(!textEditor->isEnabled());
    textEditor->lineEdit()->setText("x");
    textEditor->lineEdit()->setModified(true);
    emit textEditor->lineEdit()->editingFinished();
    QVERIFY(!sheet.child.hasProperty("t"));
}

void TestPropertyEditors::comboIntEditor()
{
    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapComboInt("opt"));
    p->insertItem("low", 1);
    p->insertItem("high", 9);
    sheet.parent.setProperty("opt", 9);
    auto editor = editorOf<QAPropertyComboIntWidget>(p);
    QComboBox* combo = editor->comboBox();
    QCOMPARE(combo->count(), 2);
    QCOMPARE(combo->currentText(), QStringLiteral("high"));
    combo->setCurrentIndex(0);
    QCOMPARE(sheet.child.property("opt"), QVariant(1));
    editor->reset();
    QCOMPARE(combo->currentText(), QStringLiteral("high"));
    // A value no item holds selects nothing.
    sheet.child.setProperty("opt", 4);
    editor->refresh();
    QCOMPARE(combo->currentIndex(), -1);
}

void TestPropertyEditors::boolEditorStyles()
{
    Sheet sheet;
    auto* yesNo = sheet.add(new QAPropertyMapYesNo("y"));
    auto* flag = sheet.add(new QAPropertyMapBool("b"));
    sheet.parent.setProperty("y", true);

    auto combo = editorOf<QAPropertyBoolWidget>(yesNo);
    QVERIFY(!combo->checkBox());
    QCOMPARE(combo->comboBox()->itemText(0), QStringLiteral("Yes"));
    QCOMPARE(combo->comboBox()->itemText(1), QStringLiteral("No"));
    QCOMPARE(combo->comboBox()->currentText(), QStringLiteral("Yes"));
    combo->comboBox()->setCurrentIndex(1);
    QCOMPARE(sheet.child.property("y"), QVariant(false));
    combo->reset();
    QCOMPARE(combo->comboBox()->currentText(), QStringLiteral("Yes"));

    // No value anywhere: no entry chosen.
    auto unset = editorOf<QAPropertyBoolWidget>(flag);
    QCOMPARE(unset->comboBox()->currentIndex(), -1);

    QAPropertyBoolWidget check(flag, nullptr, QAPropertyBoolWidget::CheckBox);
    QVERIFY(!check.comboBox());
    QVERIFY(!check.checkBox()->isChecked());
    check.checkBox()->setChecked(true);
    QCOMPARE(sheet.child.property("b"), QVariant(true));
    check.reset();
    QVERIFY(!check.checkBox()->isChecked());
}

void TestPropertyEditors::lineEditCommitsTypedTextOnly()
{
    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapLineEdit("flags"));
    sheet.parent.setProperty("flags", "-O2");
    auto editor = editorOf<QAPropertyLineEditWidget>(p);
    QLineEdit* line = editor->lineEdit();
    QCOMPARE(line->text(), QStringLiteral("-O2"));
    QVERIFY(editor->button());

    // Finishing without a change keeps the value inherited.
    emit line->editingFinished();
    QVERIFY(!sheet.child.hasProperty("flags"));

    line->clear();
    QTest::keyClicks(line, "  -g   -Wall ");
    QTest::keyClick(line, Qt::Key_Return);
    QCOMPARE(sheet.child.property("flags"), QVariant("-g -Wall"));
    QCOMPARE(line->text(), QStringLiteral("-g -Wall"));

    editor->reset();
    QCOMPARE(line->text(), QStringLiteral("-O2"));
}

void TestPropertyEditors::comboStringEditor()
{
    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapComboString("cc"));
    p->insertItem("GNU C", "gcc");
    p->insertItem("Clang", "clang");
    sheet.parent.setProperty("cc", "gcc");
    auto editor = editorOf<QAPropertyComboStringWidget>(p);
    QCOMPARE(editor->comboBox()->currentText(), QStringLiteral("GNU C"));
    editor->comboBox()->setCurrentIndex(1);
    QCOMPARE(sheet.child.property("cc"), QVariant("clang"));
    editor->reset();
    QCOMPARE(editor->comboBox()->currentText(), QStringLiteral("GNU C"));
}

void TestPropertyEditors::pathItemBrowsesThroughChooser()
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
    QCOMPARE(chooser.requests.first().caption, QStringLiteral("Target"));
    QCOMPARE(chooser.requests.first().startPath, QStringLiteral("/start"));
    QCOMPARE(chooser.requests.first().filters, QStringList{"Ini files (*.ini)"});
    QCOMPARE(chooser.requests.first().mode, QAPropertyFileChooser::DirectoryOnly);

    chooser.answer = QStringList{"/chosen", "/second"};
    editor->button()->click();
    QCOMPARE(sheet.child.property("tdp"), QVariant("/chosen"));
    QCOMPARE(editor->lineEdit()->text(), QStringLiteral("/chosen"));
}

void TestPropertyEditors::listBoxEditor()
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
}

void TestPropertyEditors::listBoxInPlaceEdit()
{
    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapListBox("defines"));
    sheet.parent.setProperty("defines", QStringList{"A", "B"});
    auto editor = editorOf<QAPropertyListBoxWidget>(p);
    editor->listWidget()->item(1)->setText("X");
    QTRY_COMPARE(sheet.child.property("defines"), QVariant(QStringList({"A", "X"})));
}

void TestPropertyEditors::pathBoxButtons_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<QStringList>("buttons");
    QTest::newRow("NoButton") << int(QAPropertyPathBox::NoButton) << QStringList();
    QTest::newRow("Single") << int(QAPropertyPathBox::Single)
                            << QStringList{"add", "remove", "up", "down"};
    QTest::newRow("SingleWithoutMoves") << int(QAPropertyPathBox::SingleWithoutMoves)
                                        << QStringList{"add", "remove"};
    QTest::newRow("Multi") << int(QAPropertyPathBox::Multi)
                           << QStringList{"addFile", "addDirectory", "remove"};
    QTest::newRow("MultiWithMoves") << int(QAPropertyPathBox::MultiWithMoves)
                                    << QStringList{"addFile", "addDirectory", "remove", "up", "down"};
}

void TestPropertyEditors::pathBoxButtons()
{
    QFETCH(int, layout);
    QFETCH(QStringList, buttons);
    QAPropertyPathBox::Buttons parsed;
    QVERIFY(QAPropertyPathBox::buttonsFromString(QTest::currentDataTag(), &parsed));
    QCOMPARE(int(parsed), layout);

    Sheet sheet;
    auto* p = sheet.add(new QAPropertyMapPathBox("paths"));
    p->setButtons(QAPropertyPathBox::Buttons(layout));
    auto editor = editorOf<QAPropertyPathBoxWidget>(p);
    QStringList found;
    for (QPushButton* b : editor->findChildren<QPushButton*>())
        found << b->objectName();
    QCOMPARE(found, buttons);
}

void TestPropertyEditors::pathBoxAddsChosenPaths()
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
    QCOMPARE(sheet.child.property("includes"),
             QVariant(QStringList({"/usr/include", "/a.h", "/b.h", "/inc"})));

    chooser.answer.clear();
    editor->findChild<QPushButton*>("addFile")->click();
    QCOMPARE(editor->items().size(), 4);

    editor->reset();
    QCOMPARE(editor->items(), QStringList{"/usr/include"});
}

void TestPropertyEditors::attributeBoundEditorResets()
{
    QAStAttribute<int> parent(5);
    QAStAttribute<int> child(0, &parent);
    QAPropertyAttrInt p(&child, "Level", 0, 100, 1);
    auto editor = editorOf<QAPropertyIntWidget>(&p);
    QCOMPARE(editor->spinBox()->value(), 5);
    editor->spinBox()->setValue(8);
    QVERIFY(child.isOverriden());
    QCOMPARE(child.value(), 8);
    editor->reset();
    QCOMPARE(editor->spinBox()->value(), 5);
}

QTEST_MAIN(TestPropertyEditors)
#include "tst_property_editors.moc"
