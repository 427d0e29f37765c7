#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"
#include "QAStNodeFileRef.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QARes.h"
#include "QAStRootFolder.h"
#include "RecordingStudio.h"
#include "TagFixtures.h"

#include <QDomDocument>
#include <QMenu>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

std::unique_ptr<QAStData> build(const QString& xml, QAStData* parent = nullptr)
{
    QDomDocument doc;
    doc.setContent(xml);
    return std::unique_ptr<QAStData>(
        QAStDataFactory::create(doc.documentElement(), 1, parent, nullptr));
}

template <class T>
T* findTag(const QAStATag* top, const QString& qualifiedName, const QString& signature = QString())
{
    for (QAStATag* tag : top->descendants()) {
        auto* found = qobject_cast<T*>(tag);
        if (found && found->qualifiedName() == qualifiedName
            && (signature.isEmpty() || found->signature() == signature))
            return found;
    }
    return nullptr;
}

QStringList actionTexts(const QMenu* menu)
{
    QStringList texts;
    for (const QAction* a : menu->actions())
        texts.append(a->isSeparator() ? QStringLiteral("|")
                                      : a->text() + (a->isEnabled() ? "" : " (off)"));
    return texts;
}

QAction* action(const QMenu* menu, const QString& text)
{
    for (QAction* a : menu->actions()) {
        if (a->text() == text)
            return a;
    }
    return nullptr;
}

}

class TestTagModel : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void everyKindRoundTripsThroughItsElement();
    void kindElementsNestTheirBase();
    void wrongInnerElementMakesTheTagInvalid();
    void iconsFollowTheQualifier_data();
    void iconsFollowTheQualifier();
    void testabilityRules_data();
    void testabilityRules();
    void methodTestability();
    void signaturesCompareWithoutNames_data();
    void signaturesCompareWithoutNames();
    void declarationsAndImplementationsAcrossFiles();
    void editGoesThroughTheHost();
    void testCreatesANodeOfTheLanguage();
    void popupMenuOffersTheTagsActions();
    void olderResourceForm();

private:
    std::unique_ptr<RecordingStudio> m_studio;
    QTemporaryDir m_dir;
    // The sources of tests/data/tags, tagged once by the real driver.
    std::unique_ptr<QAStProject> m_project;
};

void TestTagModel::initTestCase()
{
    m_studio = std::make_unique<RecordingStudio>();
    TagFixtures::copySources(m_dir.path());
    m_project = std::make_unique<QAStProject>(QStringLiteral("tags"), QPixmap());
    m_project->setPath(m_dir.filePath(QStringLiteral("tags.rtp")));
    m_project->addConfiguration(QStringLiteral("Debug"));
    m_project->setCurrentConfigurationName(QStringLiteral("Debug"));
    for (const char* source : {"cpp/shapes.h", "cpp/shapes.cpp", "c/ledger.h", "c/ledger.c",
                               "java/Account.java", "ada/stacks.ads", "ada/stacks.adb"})
        QVERIFY(TagFixtures::tagged(*m_project->rootFolder(), m_dir.filePath(QLatin1String(source))));
}

void TestTagModel::init()
{
    m_studio->reset();
    QAStData::clearLoadReport();
    QAStData::preferences()->setUseRelativePath(true);
}

void TestTagModel::everyKindRoundTripsThroughItsElement()
{
    QAStRootFolder tree(QStringLiteral("files"));
    tree.setDirectory(QStringLiteral("/p"));
    auto* file = new QAStFile(QStringLiteral("/p/src/geo.h"), &tree);
    auto* ns = new QAStAPackageTag(QStringLiteral("geo"), file->filePath(), 3, file);
    ns->setCompleteName(QStringLiteral("geo"));
    auto* shape = new QAStAClassTag(QStringLiteral("Shape"), file->filePath(), 5, ns);
    shape->setInherits({QStringLiteral("Base"), QStringLiteral("Mix<a,b>")});
    shape->setQualifier(QAStATag::Protected);
    auto* area = new QAStAMethodTag(QStringLiteral("area"), file->filePath(), 7, shape);
    area->setCompleteName(QStringLiteral("geo::Shape::area"));
    area->setQualifier(QAStATag::Public | QAStATag::PureVirtual);
    area->setSignature(QStringLiteral("(int a, T<b>&) const"));
    new QAStAStructTag(QStringLiteral("Point"), file->filePath(), 12, ns, shape);
    new QAStAFunctionTag(QStringLiteral("counter"), file->filePath(), -1, ns, ns->last());

    const QString text = file->toString();
    std::unique_ptr<QAStData> back = build(text);
    auto* read = qobject_cast<QAStFile*>(back.get());
    QVERIFY(read && read->isValid());
    QCOMPARE(QAStData::loadReport(), QString());
    QCOMPARE(read->toString(), text);
    QCOMPARE(TagFixtures::dump(read), TagFixtures::dump(file));

    const auto* readShape = qobject_cast<QAStAClassTag*>(read->descendants().at(1));
    QCOMPARE(readShape->inherits(), shape->inherits());
    QCOMPARE(readShape->iconFileName(), QStringLiteral("class_protected_xpm"));
    const auto* readArea = qobject_cast<QAStAMethodTag*>(readShape->children().first());
    QCOMPARE(readArea->completeName(), QStringLiteral("geo::Shape::area"));
    QCOMPARE(readArea->line(), 7);
    QCOMPARE(read->descendants().last()->line(), -1);
    QCOMPARE(readArea->filePath(), read->filePath());
}

void TestTagModel::kindElementsNestTheirBase()
{
    QAStAMethodTag method(QStringLiteral("f"), QStringLiteral("/a.cpp"), 4);
    method.setCompleteName(QStringLiteral("A::f"));
    const QStringList lines = method.toString().split(QLatin1Char('\n'));
    QCOMPARE(lines.mid(0, 4), (QStringList{"<method>", "  <function>", "    <tested_tag>",
                                           "      <tag>"}));
    QCOMPARE(lines.mid(lines.size() - 6),
             (QStringList{"      </tag>", "    </tested_tag>", "  </function>",
                          "  <complete_name>A::f</complete_name>", "</method>", ""}));

    QAStAClassTag c(QStringLiteral("A"), QStringLiteral("/a.h"), 1);
    c.setInherits({QStringLiteral("B"), QStringLiteral("C")});
    QVERIFY(c.toString().endsWith("  </tested_tag>\n  <inherits>B,C</inherits>\n</class>\n"));
    QAStAPackageTag p(QStringLiteral("P"), QStringLiteral("/a.ads"), 1);
    QVERIFY(p.toString().endsWith("  </tested_tag>\n  <complete_name></complete_name>\n</package>\n"));
    QAStAStructTag s(QStringLiteral("S"), QStringLiteral("/a.h"), 1);
    QVERIFY(s.toString().startsWith("<struct>\n  <tested_tag>\n    <tag>\n"));

    // Without a line element, a kind reads -1 as the plain tag does.
    std::unique_ptr<QAStData> noLine = build(QStringLiteral(
        "<class><tested_tag><tag><data><name>A</name><quid>3</quid></data></tag></tested_tag>"
        "</class>"));
    QCOMPARE(qobject_cast<QAStATag*>(noLine.get())->line(), -1);
    QVERIFY(noLine->isValid());
}

void TestTagModel::wrongInnerElementMakesTheTagInvalid()
{
    std::unique_ptr<QAStData> method = build(QStringLiteral(
        "<method><tested_tag><tag><data><name>f</name><quid>3</quid></data></tag></tested_tag>"
        "<complete_name>A::f</complete_name></method>"));
    QVERIFY(method && !method->isValid());
    QVERIFY(QAStData::loadReport().contains(QStringLiteral("function")));
}

void TestTagModel::iconsFollowTheQualifier_data()
{
    QTest::addColumn<bool>("isClass");
    QTest::addColumn<int>("qualifier");
    QTest::addColumn<QString>("icon");
    QTest::newRow("class") << true << 1 << "class_xpm";
    QTest::newRow("protected class") << true << 2 << "class_protected_xpm";
    QTest::newRow("private class") << true << 4 << "class_private_xpm";
    QTest::newRow("class both private and protected") << true << 6 << "class_private_xpm";
    QTest::newRow("method") << false << 65 << "function_xpm";
    QTest::newRow("protected method") << false << 2 << "method_protected_xpm";
    QTest::newRow("private method") << false << 4 << "method_private_xpm";
    QTest::newRow("method both private and protected") << false << 6 << "method_private_xpm";
}

void TestTagModel::iconsFollowTheQualifier()
{
    QFETCH(bool, isClass);
    QFETCH(int, qualifier);
    std::unique_ptr<QAStATag> tag;
    if (isClass)
        tag = std::make_unique<QAStAClassTag>(QStringLiteral("C"), QStringLiteral("/a.h"), 1);
    else
        tag = std::make_unique<QAStAMethodTag>(QStringLiteral("m"), QStringLiteral("/a.h"), 1);
    tag->setQualifier(4);
    tag->setQualifier(qualifier);
    QTEST(tag->iconFileName(), "icon");
}

void TestTagModel::testabilityRules_data()
{
    QTest::addColumn<QString>("case_");
    QTest::addColumn<bool>("rootItem");
    QTest::addColumn<bool>("testable");
    QTest::newRow("class at the top") << "class" << true << true;
    QTest::newRow("public nested class") << "nested class" << false << true;
    QTest::newRow("private nested class") << "private nested class" << false << false;
    QTest::newRow("class of a file not under test") << "class not under test" << true << false;
    QTest::newRow("struct alone") << "struct alone" << true << true;
    QTest::newRow("struct in a class") << "struct in class" << false << false;
    QTest::newRow("struct in a function") << "struct in function" << true << true;
    QTest::newRow("struct in a package") << "struct in package" << true << true;
    QTest::newRow("package") << "package" << true << true;
    QTest::newRow("generic package") << "package 0x800" << true << false;
    QTest::newRow("instantiated package") << "package 0x20000" << true << false;
    QTest::newRow("C function") << "function in c" << true << true;
    QTest::newRow("function in a header") << "function in h" << true << true;
    QTest::newRow("Ada function") << "function in adb" << true << false;
}

void TestTagModel::testabilityRules()
{
    QFETCH(QString, case_);
    QAStRootFolder tree(QStringLiteral("files"));
    const QString ext = case_.endsWith("adb") ? "adb" : case_.endsWith("in c") ? "c" : "h";
    auto* file = new QAStFile("/p/a." + ext, &tree);
    const QString path = file->filePath();
    auto* outer = new QAStAClassTag(QStringLiteral("Outer"), path, 1, file);
    QAStATag* tag = nullptr;
    if (case_ == "class" || case_ == "class not under test") {
        tag = outer;
        if (case_.endsWith("not under test"))
            file->setQualifier(QAStATag::NotUnderTest);
    } else if (case_.endsWith("nested class")) {
        tag = new QAStAClassTag(QStringLiteral("In"), path, 2, outer);
        tag->setQualifier(case_.startsWith("private") ? QAStATag::Private : QAStATag::Public);
    } else if (case_ == "struct alone") {
        tag = new QAStAStructTag(QStringLiteral("S"), path, 2);
    } else if (case_ == "struct in class") {
        tag = new QAStAStructTag(QStringLiteral("S"), path, 2, outer);
    } else if (case_ == "struct in function") {
        tag = new QAStAStructTag(QStringLiteral("S"), path, 2,
                                 new QAStAFunctionTag(QStringLiteral("f"), path, 2, file));
    } else if (case_ == "struct in package") {
        tag = new QAStAStructTag(QStringLiteral("S"), path, 2,
                                 new QAStAPackageTag(QStringLiteral("p"), path, 2, file));
    } else if (case_.startsWith("package")) {
        tag = new QAStAPackageTag(QStringLiteral("p"), path, 2, file);
        tag->setQualifier(case_.section(' ', 1).toInt(nullptr, 0));
    } else {
        tag = new QAStAFunctionTag(QStringLiteral("f"), path, 2, file);
    }
    std::unique_ptr<QAStATag> detached(tag->parent() ? nullptr : tag);
    QTEST(tag->isARootItem(), "rootItem");
    QTEST(tag->canBeTested(), "testable");
}

void TestTagModel::methodTestability()
{
    QAStRootFolder tree(QStringLiteral("files"));
    auto* header = new QAStFile(QStringLiteral("/p/a.h"), &tree);
    auto* body = new QAStFile(QStringLiteral("/p/a.cpp"), &tree, header);
    auto* a = new QAStAClassTag(QStringLiteral("A"), header->filePath(), 1, header);
    auto* declared = new QAStAMethodTag(QStringLiteral("f"), header->filePath(), 2, a);
    declared->setCompleteName(QStringLiteral("A::f"));
    declared->setSignature(QStringLiteral("(int x)"));
    auto* defined = new QAStAMethodTag(QStringLiteral("f"), body->filePath(), 5, body);
    defined->setCompleteName(QStringLiteral("A::f"));
    defined->setSignature(QStringLiteral("(int y)"));

    declared->setQualifier(QAStATag::Public | QAStATag::Virtual);
    QVERIFY(declared->isDirectlyTestable());
    // The body has no access words: its declaration answers for it.
    QCOMPARE(defined->declaration(), declared);
    QCOMPARE(defined->ofClass(), a);
    QVERIFY(defined->isDirectlyTestable());
    // Its own bits count with the declaration bit.
    defined->setQualifier(QAStATag::Declaration);
    QVERIFY(!defined->isDirectlyTestable());
    defined->setQualifier(QAStATag::Declaration | QAStATag::Public);
    QVERIFY(defined->isDirectlyTestable());
    defined->setQualifier(0);

    declared->setQualifier(QAStATag::Public | QAStATag::PureVirtual);
    QVERIFY(!declared->isDirectlyTestable());
    QVERIFY(!defined->isDirectlyTestable());
    declared->setQualifier(QAStATag::Protected);
    QVERIFY(!defined->isDirectlyTestable());

    // A class that is not directly testable hides every method.
    declared->setQualifier(QAStATag::Public);
    header->setQualifier(QAStATag::NotUnderTest);
    QVERIFY(!declared->isDirectlyTestable());
    QVERIFY(!defined->isDirectlyTestable());
    header->setQualifier(0);

    // Without a class, nothing.
    defined->setCompleteName(QStringLiteral("Gone::f"));
    defined->setQualifier(QAStATag::Public | QAStATag::Declaration);
    QVERIFY(!defined->ofClass());
    QVERIFY(!defined->isDirectlyTestable());
}

void TestTagModel::signaturesCompareWithoutNames_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QString>("normalized");
    QTest::newRow("names") << "(int a,int b)" << "(int,int)";
    QTest::newRow("reference") << "(Shape & shape)" << "(Shape&)";
    QTest::newRow("void") << "(void)" << "()";
    QTest::newRow("trailing const") << "()  const" << "() const";
    QTest::newRow("default with comma") << "(const std::string& s = \"x, y\", int n = f(1, 2))"
                                        << "(const std::string&,int)";
    QTest::newRow("type words only") << "(unsigned int, const char*)" << "(unsigned int,const char*)";
    QTest::newRow("array") << "(int values[], char b[4])" << "(int[],char[4])";
    QTest::newRow("template") << "(std::map<int, long> m)" << "(std::map<int,long>)";
    QTest::newRow("qualified type") << "(std::string)" << "(std::string)";
    QTest::newRow("Ada") << "(S : in out Stack; Item : Integer)" << "(in out Stack,Integer)";
}

void TestTagModel::signaturesCompareWithoutNames()
{
    QFETCH(QString, signature);
    QTEST(QAStAFunctionTag::normalizedSignature(signature), "normalized");
}

void TestTagModel::declarationsAndImplementationsAcrossFiles()
{
    const QAStFile* header = m_project->file(m_dir.filePath(QStringLiteral("cpp/shapes.h")));
    const QAStFile* body = m_project->file(m_dir.filePath(QStringLiteral("cpp/shapes.cpp")));
    QVERIFY(header && body);
    for (const QString& signature : {"(int factor)", "(double factor)"}) {
        auto* declared = findTag<QAStAMethodTag>(header, "geo::Shape::scale", signature);
        auto* defined = findTag<QAStAMethodTag>(body, "geo::Shape::scale", signature);
        QVERIFY(declared && defined);
        QCOMPARE(defined->declaration(), declared);
        QCOMPARE(declared->implementation(), defined);
        QCOMPARE(declared->declaration(), declared);
        QCOMPARE(defined->ofClass(), findTag<QAStAClassTag>(header, "geo::Shape"));
        QVERIFY(defined->isDirectlyTestable());
    }
    QVERIFY(!findTag<QAStAMethodTag>(header, "geo::Shape::area")->implementation());
    QVERIFY(!findTag<QAStAMethodTag>(body, "geo::Shape::touch")->isDirectlyTestable());
    QVERIFY(findTag<QAStAMethodTag>(body, "geo::Shape::Visitor::visit")->isDirectlyTestable());
    QCOMPARE(findTag<QAStAFunctionTag>(body, "geo::detail::counter")->declaration(),
             findTag<QAStAFunctionTag>(header, "geo::detail::counter"));

    const QAStFile* cHeader = m_project->file(m_dir.filePath(QStringLiteral("c/ledger.h")));
    const QAStFile* cBody = m_project->file(m_dir.filePath(QStringLiteral("c/ledger.c")));
    QCOMPARE(findTag<QAStAFunctionTag>(cBody, "ledger_total")->declaration(),
             findTag<QAStAFunctionTag>(cHeader, "ledger_total"));
    QVERIFY(!findTag<QAStAFunctionTag>(cBody, "checked")->declaration());

    const QAStFile* spec = m_project->file(m_dir.filePath(QStringLiteral("ada/stacks.ads")));
    const QAStFile* adaBody = m_project->file(m_dir.filePath(QStringLiteral("ada/stacks.adb")));
    QCOMPARE(findTag<QAStAFunctionTag>(spec, "Stacks.Inner.Reset")->implementation(),
             findTag<QAStAFunctionTag>(adaBody, "Stacks.Inner.Reset"));

    const QAStFile* java = m_project->file(m_dir.filePath(QStringLiteral("java/Account.java")));
    auto* render = findTag<QAStAMethodTag>(java, "Account.Statement.render");
    QVERIFY(render && !render->declaration());
    QCOMPARE(render->implementation(), render);
    QVERIFY(render->isDirectlyTestable());
    QVERIFY(!findTag<QAStAMethodTag>(java, "Account.fee")->isDirectlyTestable());
    QCOMPARE(render->language(), int(QAStFile::LanguageJava));
}

void TestTagModel::editGoesThroughTheHost()
{
    const QAStFile* body = m_project->file(m_dir.filePath(QStringLiteral("cpp/shapes.cpp")));
    auto* move = findTag<QAStAMethodTag>(body, "geo::Shape::move");
    move->doubleClickAction();
    move->editDeclaration();
    QAStATag unknownLine(QStringLiteral("x"), QPixmap(), QStringLiteral("/a.c"), -1);
    unknownLine.edit();
    QCOMPARE(m_studio->editedFiles(),
             (QStringList{body->filePath() + ":9", m_dir.filePath("cpp/shapes.h") + ":17", "/a.c:0"}));
}

void TestTagModel::testCreatesANodeOfTheLanguage()
{
    const QAStFile* header = m_project->file(m_dir.filePath(QStringLiteral("cpp/shapes.h")));
    const QAStFile* cHeader = m_project->file(m_dir.filePath(QStringLiteral("c/ledger.h")));
    const QAStFile* java = m_project->file(m_dir.filePath(QStringLiteral("java/Account.java")));
    const QAStFile* spec = m_project->file(m_dir.filePath(QStringLiteral("ada/stacks.ads")));

    struct Expected {
        QAStATag* tag;
        const char* kind;
        QString name;
        QString source;
    };
    const Expected cases[] = {
        {findTag<QAStAClassTag>(header, "geo::Shape"), "QAStNodeObjectTesting", "Test geo::Shape",
         "cpp/shapes.cpp"},
        {findTag<QAStAClassTag>(header, "geo::Shape"), "QAStNodeObjectTesting",
         "Test geo::Shape 2", "cpp/shapes.cpp"},
        {findTag<QAStAFunctionTag>(cHeader, "ledger_add"), "QAStNodeUnitTesting", "Test ledger_add",
         "c/ledger.c"},
        {findTag<QAStAClassTag>(java, "Account"), "QAStNodeJavaTesting", "Test Account",
         "java/Account.java"},
        {findTag<QAStAPackageTag>(spec, "Stacks"), "QAStNodeUnitTesting", "Test Stacks",
         "ada/stacks.adb"},
        {findTag<QAStAStructTag>(cHeader, "ledger"), "QAStNodeUnitTesting", "Test ledger",
         QString()},
    };
    for (const Expected& e : cases) {
        QVERIFY(e.tag);
        QAStNode* node = e.tag->test(m_project.get());
        QVERIFY2(node, qPrintable(e.name));
        QCOMPARE(node->parent(), m_project.get());
        QCOMPARE(node->metaObject()->className(), e.kind);
        QCOMPARE(node->name(), e.name);
        QCOMPARE(node->currentConfigurationName(), QStringLiteral("Debug"));
        const auto* source = qobject_cast<QAStNodeFileRef*>(node->child());
        QCOMPARE(source ? source->fileKey() : QString(), e.source);
    }
    QCOMPARE(findTag<QAStAFunctionTag>(cHeader, "ledger_add")->stubbableFiles(),
             (QStringList{m_dir.filePath("cpp/shapes.cpp"), m_dir.filePath("c/ledger.c"),
                          m_dir.filePath("ada/stacks.ads"), m_dir.filePath("ada/stacks.adb")}));
    const int nodes = m_project->childCount();
    QVERIFY(!findTag<QAStAFunctionTag>(spec, "Stacks.Push")->test(m_project.get()));
    QVERIFY(!findTag<QAStAMethodTag>(header, "geo::Shape::area")->test(m_project.get()));
    QVERIFY(!header->canBeTested());
    QCOMPARE(m_project->childCount(), nodes);
}

void TestTagModel::popupMenuOffersTheTagsActions()
{
    const QAStFile* header = m_project->file(m_dir.filePath(QStringLiteral("cpp/shapes.h")));
    auto* area = findTag<QAStAMethodTag>(header, "geo::Circle::area");
    std::unique_ptr<QMenu> menu(area->popupMenu(nullptr, m_project.get()));
    QCOMPARE(actionTexts(menu.get()),
             (QStringList{"Edit", "Edit Declaration", "Edit Implementation", "|", "Test"}));
    action(menu.get(), "Edit Implementation")->trigger();
    QCOMPARE(m_studio->editedFiles(), QStringList{m_dir.filePath("cpp/shapes.cpp") + ":34"});
    const int nodes = m_project->childCount();
    action(menu.get(), "Test")->trigger();
    QCOMPARE(m_project->childCount(), nodes + 1);
    QCOMPARE(m_project->last()->name(), QStringLiteral("Test geo::Circle::area"));

    auto* pure = findTag<QAStAMethodTag>(header, "geo::Shape::area");
    menu.reset(pure->popupMenu(nullptr, m_project.get()));
    QCOMPARE(actionTexts(menu.get()),
             (QStringList{"Edit", "Edit Declaration", "Edit Implementation (off)"}));
    menu.reset(findTag<QAStAClassTag>(header, "geo::Shape")->popupMenu(nullptr));
    QCOMPARE(actionTexts(menu.get()), QStringList{"Edit"});
    QCOMPARE(findTag<QAStAMethodTag>(header, "geo::Shape::Visitor::visit")
                 ->directlyTestableParent()->qualifiedName(),
             QStringLiteral("geo::Shape::Visitor"));
}

void TestTagModel::olderResourceForm()
{
    std::unique_ptr<QARes> res(QARes::readText(
        QStringLiteral("name = \"push\"\nquid = 41\nfilepath = \"/src/stack.c\"\nline = 12\n"
                       "qualifier = 5\nsignature = \"(int)\"\n"),
        QStringLiteral("old.rtp")));
    QAStATag tag(res.get());
    QCOMPARE(tag.name(), QStringLiteral("push"));
    QCOMPARE(tag.filePath(), QStringLiteral("/src/stack.c"));
    QCOMPARE(tag.line(), 12);
    QCOMPARE(tag.qualifier(), 5);
    QCOMPARE(tag.signature(), QStringLiteral("(int)"));
    std::unique_ptr<QARes> bare(QARes::readText(QStringLiteral("name = \"x\"\n"),
                                                QStringLiteral("old.rtp")));
    QCOMPARE(QAStATag(bare.get()).line(), -1);
}

QTEST_MAIN(TestTagModel)
#include "tst_tag_model.moc"
