#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStNodeFileRef.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QARes.h"
#include "QAStRootFolder.h"
#include "RecordingStudio.h"
#include "TagFixtures.h"
#include "TestXml.h"

#include <QDomDocument>
#include <QMenu>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// The data block as QAStData writes it at depth, with default flags.
QString dataBlock(const QString& name, quint32 quid, int depth)
{
    const QString pad(2 * depth, QLatin1Char(' '));
    const QString in = pad + u"  "_s;
    return pad + "<data>\n" + in + "<name>" + name + "</name>\n" + in + "<quid>" +
        QString::number(quid) + "</quid>\n" + in + "<icon></icon>\n" + in +
        "<renameable>true</renameable>\n" + in + "<deletable>true</deletable>\n" + in +
        "<open>false</open>\n" + in + "<sorted>false</sorted>\n" + in +
        "<executionResult>0</executionResult>\n" + pad + "</data>\n";
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
        texts.append(a->isSeparator() ? u"|"_s : a->text() + (a->isEnabled() ? "" : " (off)"));
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
    void initTestCase()
    {
        m_studio = std::make_unique<RecordingStudio>();
        TagFixtures::copySources(m_dir.path());
        m_project = std::make_unique<QAStProject>(u"tags"_s, QPixmap());
        m_project->setPath(m_dir.filePath(u"tags.rtp"_s));
        m_project->addConfiguration(u"Debug"_s);
        m_project->setCurrentConfigurationName(u"Debug"_s);
        for (const char* source : {"cpp/shapes.h", "cpp/shapes.cpp", "c/ledger.h", "c/ledger.c",
                                   "java/Account.java", "ada/stacks.ads", "ada/stacks.adb"})
            QVERIFY(TagFixtures::tagged(*m_project->rootFolder(), m_dir.filePath(QLatin1String(source))));
    }

    void init()
    {
        m_studio->reset();
        QAStData::clearLoadReport();
        QAStData::preferences()->setUseRelativePath(true);
    }

    void everyKindRoundTripsThroughItsElement()
    {
        QAStRootFolder tree(u"files"_s);
        tree.setDirectory(u"/p"_s);
        auto* file = new QAStFile(u"/p/src/geo.h"_s, &tree);
        auto* ns = new QAStAPackageTag(u"geo"_s, file->filePath(), 3, file);
        ns->setCompleteName(u"geo"_s);
        auto* shape = new QAStAClassTag(u"Shape"_s, file->filePath(), 5, ns);
        shape->setInherits({u"Base"_s, u"Mix<a,b>"_s});
        shape->setQualifier(QAStATag::Protected);
        auto* area = new QAStAMethodTag(u"area"_s, file->filePath(), 7, shape);
        area->setCompleteName(u"geo::Shape::area"_s);
        area->setQualifier(QAStATag::Public | QAStATag::PureVirtual);
        area->setSignature(u"(int a, T<b>&) const"_s);
        new QAStAStructTag(u"Point"_s, file->filePath(), 12, ns, shape);
        new QAStAFunctionTag(u"counter"_s, file->filePath(), -1, ns, ns->last());
        const QString text = file->toString();
        std::unique_ptr<QAStData> back = buildItem(text);
        auto* read = qobject_cast<QAStFile*>(back.get());
        QVERIFY(read && read->isValid());
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(read->toString(), text);
        QCOMPARE(TagFixtures::dump(read), TagFixtures::dump(file));
        const auto* readShape = qobject_cast<QAStAClassTag*>(read->descendants().at(1));
        QCOMPARE(readShape->inherits(), shape->inherits());
        QCOMPARE(readShape->iconFileName(), u"class_protected_xpm"_s);
        const auto* readArea = qobject_cast<QAStAMethodTag*>(readShape->children().first());
        QCOMPARE(readArea->completeName(), u"geo::Shape::area"_s);
        QCOMPARE(readArea->line(), 7);
        QCOMPARE(read->descendants().last()->line(), -1);
        QCOMPARE(readArea->filePath(), read->filePath());
    }

    void kindElementsNestTheirBase()
    {
        QAStAMethodTag method(u"f"_s, u"/a.cpp"_s, 4);
        method.setCompleteName(u"A::f"_s);
        const QStringList lines = method.toString().split(QLatin1Char('\n'));
        QCOMPARE(lines.mid(0, 4), (QStringList{"<method>", "  <function>", "    <tested_tag>", "      <tag>"}));
        QCOMPARE(lines.mid(lines.size() - 6), (QStringList{"      </tag>", "    </tested_tag>", "  </function>",
                              "  <complete_name>A::f</complete_name>", "</method>", ""}));
        QAStAClassTag c(u"A"_s, u"/a.h"_s, 1);
        c.setInherits({u"B"_s, u"C"_s});
        QVERIFY(c.toString().endsWith("  </tested_tag>\n  <inherits>B,C</inherits>\n</class>\n"));
        QAStAPackageTag p(u"P"_s, u"/a.ads"_s, 1);
        QVERIFY(p.toString().endsWith("  </tested_tag>\n  <complete_name></complete_name>\n</package>\n"));
        QAStAStructTag s(u"S"_s, u"/a.h"_s, 1);
        QVERIFY(s.toString().startsWith("<struct>\n  <tested_tag>\n    <tag>\n"));
        QAStFile file(u"/src/a.c"_s);
        QCOMPARE(file.name(), u"a.c"_s);
        QCOMPARE(file.line(), -1);
        QVERIFY(file.toString().startsWith(u"<file>\n  <tested_tag>\n    <tag>\n"_s));
        QVERIFY(file.toString().endsWith(u"  </tested_tag>\n</file>\n"_s));

        // Without a line element, a kind reads -1 as the plain tag does.
        std::unique_ptr<QAStData> noLine = buildItem(QStringLiteral(
            "<class><tested_tag><tag><data><name>A</name><quid>3</quid></data></tag></tested_tag>" "</class>"));
        QCOMPARE(qobject_cast<QAStATag*>(noLine.get())->line(), -1);
        QVERIFY(noLine->isValid());
        // A wrong inner element makes the tag invalid.
        std::unique_ptr<QAStData> wrong = buildItem(QStringLiteral(
            "<method><tested_tag><tag><data><name>f</name><quid>3</quid></data></tag></tested_tag>"
            "<complete_name>A::f</complete_name></method>"));
        QVERIFY(wrong && !wrong->isValid());
        QVERIFY(QAStData::loadReport().contains(u"function"_s));
    }

    void testabilityRules_data()
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
    void testabilityRules()
    {
        QFETCH(QString, case_);
        QAStRootFolder tree(u"files"_s);
        const QString ext = case_.endsWith("adb") ? "adb" : case_.endsWith("in c") ? "c" : "h";
        auto* file = new QAStFile("/p/a." + ext, &tree);
        const QString path = file->filePath();
        auto* outer = new QAStAClassTag(u"Outer"_s, path, 1, file);
        QAStATag* tag = nullptr;
        if (case_ == "class" || case_ == "class not under test") {
            tag = outer;
            if (case_.endsWith("not under test"))
                file->setQualifier(QAStATag::NotUnderTest);
        } else if (case_.endsWith("nested class")) {
            tag = new QAStAClassTag(u"In"_s, path, 2, outer);
            tag->setQualifier(case_.startsWith("private") ? QAStATag::Private : QAStATag::Public);
        } else if (case_ == "struct alone") {
            tag = new QAStAStructTag(u"S"_s, path, 2);
        } else if (case_ == "struct in class") {
            tag = new QAStAStructTag(u"S"_s, path, 2, outer);
        } else if (case_ == "struct in function") {
            tag = new QAStAStructTag(u"S"_s, path, 2, new QAStAFunctionTag(u"f"_s, path, 2, file));
        } else if (case_ == "struct in package") {
            tag = new QAStAStructTag(u"S"_s, path, 2, new QAStAPackageTag(u"p"_s, path, 2, file));
        } else if (case_.startsWith("package")) {
            tag = new QAStAPackageTag(u"p"_s, path, 2, file);
            tag->setQualifier(case_.section(' ', 1).toInt(nullptr, 0));
        } else {
            tag = new QAStAFunctionTag(u"f"_s, path, 2, file);
        }
        std::unique_ptr<QAStATag> detached(tag->parent() ? nullptr : tag);
        QTEST(tag->isARootItem(), "rootItem");
        QTEST(tag->canBeTested(), "testable");
    }

    void methodTestability()
    {
        QAStRootFolder tree(u"files"_s);
        auto* header = new QAStFile(u"/p/a.h"_s, &tree);
        auto* body = new QAStFile(u"/p/a.cpp"_s, &tree, header);
        auto* a = new QAStAClassTag(u"A"_s, header->filePath(), 1, header);
        auto* declared = new QAStAMethodTag(u"f"_s, header->filePath(), 2, a);
        declared->setCompleteName(u"A::f"_s);
        declared->setSignature(u"(int x)"_s);
        auto* defined = new QAStAMethodTag(u"f"_s, body->filePath(), 5, body);
        defined->setCompleteName(u"A::f"_s);
        defined->setSignature(u"(int y)"_s);
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
        defined->setCompleteName(u"Gone::f"_s);
        defined->setQualifier(QAStATag::Public | QAStATag::Declaration);
        QVERIFY(!defined->ofClass());
        QVERIFY(!defined->isDirectlyTestable());
    }

    void signaturesCompareWithoutNames_data()
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
    void signaturesCompareWithoutNames()
    {
        QFETCH(QString, signature);
        QTEST(QAStAFunctionTag::normalizedSignature(signature), "normalized");
    }

    void declarationsAndImplementationsAcrossFiles()
    {
        const QAStFile* header = m_project->file(m_dir.filePath(u"cpp/shapes.h"_s));
        const QAStFile* body = m_project->file(m_dir.filePath(u"cpp/shapes.cpp"_s));
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
        const QAStFile* cHeader = m_project->file(m_dir.filePath(u"c/ledger.h"_s));
        const QAStFile* cBody = m_project->file(m_dir.filePath(u"c/ledger.c"_s));
        QCOMPARE(findTag<QAStAFunctionTag>(cBody, "ledger_total")->declaration(),
                 findTag<QAStAFunctionTag>(cHeader, "ledger_total"));
        QVERIFY(!findTag<QAStAFunctionTag>(cBody, "checked")->declaration());
        const QAStFile* spec = m_project->file(m_dir.filePath(u"ada/stacks.ads"_s));
        const QAStFile* adaBody = m_project->file(m_dir.filePath(u"ada/stacks.adb"_s));
        QCOMPARE(findTag<QAStAFunctionTag>(spec, "Stacks.Inner.Reset")->implementation(),
                 findTag<QAStAFunctionTag>(adaBody, "Stacks.Inner.Reset"));
        const QAStFile* java = m_project->file(m_dir.filePath(u"java/Account.java"_s));
        auto* render = findTag<QAStAMethodTag>(java, "Account.Statement.render");
        QVERIFY(render && !render->declaration());
        QCOMPARE(render->implementation(), render);
        QVERIFY(render->isDirectlyTestable());
        QVERIFY(!findTag<QAStAMethodTag>(java, "Account.fee")->isDirectlyTestable());
        QCOMPARE(render->language(), int(QAStFile::LanguageJava));
    }

    void testCreatesANodeOfTheLanguage()
    {
        const QAStFile* header = m_project->file(m_dir.filePath(u"cpp/shapes.h"_s));
        const QAStFile* cHeader = m_project->file(m_dir.filePath(u"c/ledger.h"_s));
        const QAStFile* java = m_project->file(m_dir.filePath(u"java/Account.java"_s));
        const QAStFile* spec = m_project->file(m_dir.filePath(u"ada/stacks.ads"_s));
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
            QCOMPARE(node->currentConfigurationName(), u"Debug"_s);
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

    // The menu of a tag, its edits going through the host.
    void popupMenuOffersTheTagsActions()
    {
        const QAStFile* header = m_project->file(m_dir.filePath(u"cpp/shapes.h"_s));
        auto* area = findTag<QAStAMethodTag>(header, "geo::Circle::area");
        std::unique_ptr<QMenu> menu(area->popupMenu(nullptr, m_project.get()));
        QCOMPARE(actionTexts(menu.get()),
                 (QStringList{"Edit", "Edit Declaration", "Edit Implementation", "|", "Test"}));
        action(menu.get(), "Edit Implementation")->trigger();
        // Double click, declaration and a tag of no known line through the host too.
        const QAStFile* body = m_project->file(m_dir.filePath(u"cpp/shapes.cpp"_s));
        auto* move = findTag<QAStAMethodTag>(body, "geo::Shape::move");
        move->doubleClickAction();
        move->editDeclaration();
        QAStATag(u"x"_s, QPixmap(), u"/a.c"_s, -1).edit();
        QCOMPARE(m_studio->editedFiles(), (QStringList{body->filePath() + ":34", body->filePath() + ":9",
                                                       m_dir.filePath("cpp/shapes.h") + ":17", "/a.c:0"}));
        const int nodes = m_project->childCount();
        action(menu.get(), "Test")->trigger();
        QCOMPARE(m_project->childCount(), nodes + 1);
        QCOMPARE(m_project->last()->name(), u"Test geo::Circle::area"_s);
        auto* pure = findTag<QAStAMethodTag>(header, "geo::Shape::area");
        menu.reset(pure->popupMenu(nullptr, m_project.get()));
        QCOMPARE(actionTexts(menu.get()), (QStringList{"Edit", "Edit Declaration", "Edit Implementation (off)"}));
        menu.reset(findTag<QAStAClassTag>(header, "geo::Shape")->popupMenu(nullptr));
        QCOMPARE(actionTexts(menu.get()), QStringList{"Edit"});
        QCOMPARE(findTag<QAStAMethodTag>(header, "geo::Shape::Visitor::visit")
                     ->directlyTestableParent()->qualifiedName(), u"geo::Shape::Visitor"_s);
    }

    void olderResourceForm()
    {
        std::unique_ptr<QARes> res(QARes::readText(
            QStringLiteral("name = \"push\"\nquid = 41\nfilepath = \"/src/stack.c\"\nline = 12\n"
                           "qualifier = 5\nsignature = \"(int)\"\n"), u"old.rtp"_s));
        QAStATag tag(res.get());
        QCOMPARE(tag.name(), u"push"_s);
        QCOMPARE(tag.filePath(), u"/src/stack.c"_s);
        QCOMPARE(tag.line(), 12);
        QCOMPARE(tag.qualifier(), 5);
        QCOMPARE(tag.signature(), u"(int)"_s);
        std::unique_ptr<QARes> bare(QARes::readText(u"name = \"x\"\n"_s, u"old.rtp"_s));
        QCOMPARE(QAStATag(bare.get()).line(), -1);
    }

    void tagIsWrittenInItsForm()
    {
        QAStATag tag(u"Stack"_s, QPixmap(), u"/src/stack.h"_s, 12);
        tag.setQuid(70);
        tag.setQualifier(5);
        tag.setSignature(u"(int a, T<b>&)"_s);
        auto* inner = new QAStATag(u"push"_s, QPixmap(), u"/src/stack.h"_s, -1, &tag, nullptr);
        inner->setQuid(71);
        const QString expected = "<tag>\n" + dataBlock("Stack", 70, 1) + "  <filepath>/src/stack.h</filepath>\n"
            "  <line>12</line>\n"
            "  <qualifier>5</qualifier>\n"
            "  <signature>(int a#comma# T&lt;b&gt;&amp;)</signature>\n"
            "  <tag_child>\n"
            "    <tag>\n" +
            dataBlock("push", 71, 3) + "      <filepath>/src/stack.h</filepath>\n"
                                       "      <line>-1</line>\n"
                                       "      <qualifier>0</qualifier>\n"
                                       "      <signature></signature>\n"
                                       "      <tag_child>\n"
                                       "      </tag_child>\n"
                                       "    </tag>\n"
                                       "  </tag_child>\n"
                                       "</tag>\n";
        QCOMPARE(tag.toString(), expected);
        std::unique_ptr<QAStData> back = buildItem(expected);
        auto* read = qobject_cast<QAStATag*>(back.get());
        QVERIFY(read && read->isValid());
        QCOMPARE(read->signature(), tag.signature());
        QCOMPARE(read->qualifier(), 5);
        QCOMPARE(read->children().size(), 1);
        QCOMPARE(read->toString(), expected);
    }

    void lineIsMinusOneWhenAbsentOrBad_data()
    {
        QTest::addColumn<QString>("lineElement");
        QTest::addColumn<int>("line");
        QTest::newRow("absent") << QString() << -1;
        QTest::newRow("not a number") << "<line>twelve</line>" << -1;
        QTest::newRow("given") << "<line>42</line>" << 42;
    }
    void lineIsMinusOneWhenAbsentOrBad()
    {
        QFETCH(QString, lineElement);
        std::unique_ptr<QAStData> item = buildItem(
            "<tag><data><name>t</name><quid>5</quid></data><filepath>/a.c</filepath>" + lineElement + "</tag>");
        auto* tag = qobject_cast<QAStATag*>(item.get());
        QVERIFY(tag && tag->isValid());
        QTEST(tag->line(), "line");
        QCOMPARE(tag->qualifier(), 0);
    }

    void tagChildrenAreTagsOnly()
    {
        std::unique_ptr<QAStData> item = buildItem(QStringLiteral(
            "<tag><data><name>outer</name><quid>1</quid></data><tag_child>"
            "<folder><data><name>intruder</name><quid>2</quid></data></folder>"
            "<tag><data><name>inner</name><quid>3</quid></data></tag>" "</tag_child></tag>"));
        auto* tag = qobject_cast<QAStATag*>(item.get());
        QVERIFY(tag);
        QCOMPARE(tag->childCount(), 1);
        QCOMPARE(tag->child()->name(), u"inner"_s);
        QCOMPARE(QAStData::loadReport(), u"folder bad place\n"_s);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{u"Tag ignored in the group: folder"_s});
        std::unique_ptr<QAStData> broken = buildItem(u"<tag><filepath>/a.c</filepath></tag>"_s);
        QVERIFY(broken && !broken->isValid());
    }

    void filePathRelativeToTheTree_data()
    {
        QTest::addColumn<bool>("useRelativePath");
        QTest::addColumn<QString>("written");
        QTest::newRow("relative") << true << "src/a.c";
        QTest::newRow("absolute") << false << "/project/src/a.c";
    }
    void filePathRelativeToTheTree()
    {
        QFETCH(bool, useRelativePath);
        QFETCH(QString, written);
        QAStData::preferences()->setUseRelativePath(useRelativePath);
        QAStRootFolder root(u"files"_s);
        root.setDirectory(u"/project"_s);
        auto* file = new QAStFile(u"src/a.c"_s, &root, nullptr);
        QCOMPARE(file->filePath(), u"/project/src/a.c"_s);
        const QString text = file->toString();
        QVERIFY2(text.contains("<filepath>" + written + "</filepath>"), qPrintable(text));

        // Read into another tree: relative paths follow that tree's directory.
        QAStRootFolder moved(u"files"_s);
        moved.setDirectory(u"/elsewhere"_s);
        std::unique_ptr<QAStData> back = buildItem(text, &moved);
        const QString expected = useRelativePath ? u"/elsewhere/src/a.c"_s : written;
        QCOMPARE(qobject_cast<QAStFile*>(back.get())->filePath(), expected);

        // Read detached: a relative path waits for a tree.
        std::unique_ptr<QAStData> detached = buildItem(text);
        auto* waiting = qobject_cast<QAStFile*>(detached.get());
        QCOMPARE(waiting->filePath(), written);
        moved.addChild(waiting, nullptr);
        QCOMPARE(waiting->filePath(), expected);
    }

    void fileKeyIsTheCleanedAbsolutePath()
    {
        QAStRootFolder root(u"files"_s);
        root.setDirectory(u"/project/sub"_s);
        auto* file = new QAStFile(u"../src/./a.c"_s, &root, nullptr);
        QCOMPARE(file->fileKey(), u"/project/src/a.c"_s);
        QCOMPARE(root.file(u"../src/a.c"_s), file);
        QCOMPARE(root.file(u"/project/src//a.c"_s), file);
        QVERIFY(!root.file(u"a.c"_s));
    }

private:
    std::unique_ptr<RecordingStudio> m_studio;
    QTemporaryDir m_dir;
    // The sources of tests/data/tags, tagged once by the real driver.
    std::unique_ptr<QAStProject> m_project;
};

QTEST_MAIN(TestTagModel)
#include "tst_tag_model.moc"
