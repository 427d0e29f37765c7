// Tags: the real tagging driver over tests/data/tags and everyday sources,
// the tag-file reader and its faults, batch runs with progress and abort,
// file types and languages, and the tag model over those sources.

#include "QARes.h"
#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStNodeFileRef.h"
#include "QAStObjectManager.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "QAStTagFileReader.h"
#include "Recorders.h"
#include "RecordingStudio.h"
#include "TagFixtures.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"
#include "TestXml.h"

#include <QLoggingCategory>
#include <QMenu>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

using TagFixtures::dump;

namespace {

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

class TestTagging : public QObject {
    Q_OBJECT
private slots:
    // A project of the sources, tagged once.
    void initTestCase()
    {
        RecordingStudio studio;
        TagFixtures::copySources(m_tagged.path());
        m_project = std::make_unique<QAStProject>(u"tags"_s, QPixmap());
        m_project->setPath(m_tagged.filePath(u"tags.rtp"_s));
        m_project->addConfiguration(u"Debug"_s);
        m_project->setCurrentConfigurationName(u"Debug"_s);
        for (const char* source : {"cpp/shapes.h", "cpp/shapes.cpp", "c/ledger.h", "c/ledger.c",
                                   "java/Account.java", "ada/stacks.ads", "ada/stacks.adb"})
            QVERIFY(TagFixtures::tagged(*m_project->rootFolder(), m_tagged.filePath(QLatin1String(source))));
    }

    void init()
    {
        QAStData::preferences()->setFileTypes({{u"Scripts"_s, u" *.sh ; *.bash;"_s}, {u"Docs"_s, u"*.md"_s}});
        QAStData::clearLoadReport();
        QAStData::preferences()->setUseRelativePath(true);
        m_studio = std::make_unique<RecordingStudio>();
        m_dir = std::make_unique<QTemporaryDir>();
        TagFixtures::copySources(m_dir->path());
        m_tree = std::make_unique<QAStRootFolder>(u"files"_s);
        m_tree->setDirectory(m_dir->path());
        QAStData::preferences()->setEncodingName(QString());
    }

    void cleanup()
    {
        QAStData::preferences()->setFileTypes({});
        QLoggingCategory::setFilterRules(QString());
        m_tree.reset();
        m_dir.reset();
        m_studio.reset();
    }

    // Sources through the real driver: a source of tests/data/tags as it
    // is, or sources a C or C++ user writes every day and UTF-8 sources,
    // written first, tagged with an encoding preferred.
    void driverTags_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QByteArray>("text"); // empty: the source as it is
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QStringList>("tree");
        QTest::newRow("C++ header") << "cpp/shapes.h" << QByteArray() << QString() << QStringList{
            "package geo",
            "  struct Point",
            "  class Shape",
            "    method Shape() q1",
            "    method ~Shape() q65",
            "    method area() const q33",
            "    method move(double dx,double dy) q65",
            "    method scale(int factor) q1",
            "    method scale(double factor) q1",
            "    method touch() q2",
            "    class Visitor q1",
            "      method visit(Shape & shape) q1",
            "  class Circle",
            "    method Circle(double radius) q1",
            "    method area() const q65",
            "  package detail",
            "    function counter(int start)"};
        // Bodies defined apart from their class go below the nearest scope.
        QTest::newRow("C++ body") << "cpp/shapes.cpp" << QByteArray() << QString() << QStringList{
            "package geo",
            "  method Shape()",
            "  method ~Shape()",
            "  method move(double dx,double dy)",
            "  method scale(int factor)",
            "  method scale(double factor)",
            "  method touch()",
            "  method visit(Shape & shape)",
            "  method Circle(double radius)",
            "  method area() const",
            "  package detail",
            "    function counter(int start)",
            "function helper(int a,int b)",
            "function shapes_total(int n)"};
        QTest::newRow("C body") << "c/ledger.c" << QByteArray() << QString() << QStringList{
            "struct entry",
            "function checked(long amount)",
            "function ledger_init(struct ledger * l)",
            "function ledger_add(struct ledger * l,long amount)",
            "function ledger_total(const struct ledger * ledger)"};
        QTest::newRow("Java") << "java/Account.java" << QByteArray() << QString() << QStringList{
            "package bank.core",
            "class Account q32",
            "  method Account(long opening) q1",
            "  method fee() q33",
            "  method deposit(long amount) q1",
            "  method deposit(int amount, String note) q1",
            "  method audit() q4",
            "  class Statement q1",
            "    method render() q1",
            "  class Listener q1",
            "    method changed(Account account) q1",
            "  method compareTo(Account other) q1"};
        QTest::newRow("Ada declaration file") << "ada/stacks.ads" << QByteArray() << QString() << QStringList{
            "package Stacks",
            "  function Push",
            "  function Pop",
            "  function Size",
            "  package Inner",
            "    function Reset",
            "  package Generic_Store",
            "    function Put"};
        QTest::newRow("Ada separate") << "ada/stacks-size.adb" << QByteArray() << QString() << QStringList{
            "package Stacks",
            "  function Size",
            "    function Check"};
        QTest::newRow("typedef of an anonymous struct") << "c/point.c"
            << QByteArray("typedef struct {\n    int x;\n} point;\n"
                          "typedef struct { int y; } *point_ptr, point_alias;\n"
                          "typedef struct named_s { int z; } named_t;\n")
            << QString() << QStringList{"struct point", "struct point_alias", "struct named_s"};
        QTest::newRow("typedef of an anonymous struct with members") << "cpp/holder.cpp"
            << QByteArray("namespace n {\ntypedef struct {\n    void f() {}\n    int g(int);\n} S;\n}\n")
            << QString() << QStringList{"package n", "  struct S", "    method f() q1", "    method g(int) q1"};
        QTest::newRow("lambdas") << "cpp/lambda.cpp"
            << QByteArray("int run(int* v, int n)\n{\n    auto square = [](int x) { return x * x; };\n"
                          "    auto less = [](int a, int b) { return a < b; };\n"
                          "    return less(square(n), v[0]);\n}\n") << QString()
            << QStringList{"function run(int * v,int n)"};
        // The members of an anonymous union belong to its owner, whatever
        // anonymous struct stands beside the union.
        QTest::newRow("structures in a nested anonymous union") << "c/packet.c"
            << QByteArray("struct packet {\n    struct { int kind; } head;\n    union {\n"
                          "        struct body_a { int x; } a;\n        struct body_b { int y; } b;\n"
                          "    } body;\n};\n") << QString()
            << QStringList{"struct packet", "  struct (anonymous) q1", "  struct body_a q1", "  struct body_b q1"};
        QTest::newRow("a top-level anonymous union after an anonymous struct") << "c/globals.c"
            << QByteArray("struct { int a; } first;\nunion { struct inner { int q; } i; } second;\n")
            << QString() << QStringList{"struct (anonymous)", "struct inner q1"};
        // ctags puts m in the union Outer::U, which stands in Outer: m goes
        // there, under its complete name.
        QTest::newRow("a method of a named union in a struct") << "cpp/outer.cpp"
            << QByteArray("struct Outer {\n    union U { void m(); } u;\n    void own();\n};\n")
            << QString() << QStringList{"struct Outer", "  method m() q1", "  method own() q1"};

        // Universal Ctags 5.9 reads non-ASCII identifiers in Ada; in C they
        // reach the tag file through the signature.
        const QByteArray c = "int berechnen(int gr\xc3\xb6\xc3\x9f" "e) { return gr\xc3\xb6\xc3\x9f" "e; }\n";
        const QByteArray ada = "package Gr\xc3\xb6\xc3\x9f" "e is\n"
                               "   procedure Ma\xc3\x9f (Wert : Integer);\n"
                               "end Gr\xc3\xb6\xc3\x9f" "e;\n";
        const QStringList cTree{u"function berechnen(int gr\u00f6\u00dfe)"_s};
        const QStringList adaTree{u"package Gr\u00f6\u00dfe"_s, u"  function Ma\u00df"_s};
        QTest::newRow("UTF-8 C, no preference") << "utf8/maße.c" << c << QString() << cTree;
        QTest::newRow("UTF-8 C, ISO-8859-1 preferred") << "utf8/maße.c" << c << "ISO-8859-1" << cTree;
        QTest::newRow("UTF-8 Ada, ISO-8859-1 preferred") << "utf8/masse.ads" << ada << "ISO-8859-1" << adaTree;
    }
    void driverTags()
    {
        QFETCH(QString, source);
        QFETCH(QByteArray, text);
        QFETCH(QString, encoding);
        QAStData::preferences()->setEncodingName(encoding);
        const QString path = m_dir->filePath(source);
        if (!text.isEmpty())
            TestFiles::writeFile(path, text);
        QAStFile* file = TagFixtures::tagged(*m_tree, path);
        QVERIFY(file);
        QTEST(dump(file), "tree");
        QVERIFY(m_studio->messages(QAStData::MessageConsole).isEmpty());
        for (const QAStATag* tag : file->descendants())
            QCOMPARE(tag->filePath(), file->filePath());
        if (source == QLatin1String("cpp/outer.cpp"))
            QCOMPARE(qobject_cast<QAStAMethodTag*>(file->descendants().at(1))->completeName(), u"Outer::U::m"_s);
    }

    void driverWritesTheDocumentedLayout()
    {
        QAStFile* file = TagFixtures::tagged(*m_tree, m_dir->filePath(u"cpp/shapes.h"_s));
        QVERIFY(file);
        const QList<QByteArray> lines = driverLines({file->filePath()});
        QVERIFY(!lines.isEmpty() && lines.first().startsWith("!_TAG_"));
        const QByteArray path = file->filePath().toUtf8();
        QVERIFY(lines.contains("area\t" + path + "\t16;\"\tprototype\tclass:geo::Shape\taccess:public"
            "\tsignature:() const\timplementation:pure virtual"));
        QVERIFY(lines.contains("Circle\t" + path + "\t34;\"\tclass\tnamespace:geo\tinherits:Shape"));
        const auto* circle = qobject_cast<QAStAClassTag*>(file->descendants().at(12));
        QVERIFY(circle);
        QCOMPARE(circle->line(), 34);
        QCOMPARE(circle->inherits(), QStringList{"Shape"});
        QCOMPARE(circle->qualifiedName(), u"geo::Circle"_s);
        QCOMPARE(circle->generalize(), QList<QAStAClassTag*>{qobject_cast<QAStAClassTag*>(
                                           file->descendants().at(2))});
        const auto* visit = qobject_cast<QAStAMethodTag*>(file->descendants().at(11));
        QCOMPARE(visit->completeName(), u"geo::Shape::Visitor::visit"_s);
        QCOMPARE(visit->classPrefix(), u"geo::Shape::Visitor"_s);
    }

    // The bodies of a source file stand below the namespace, apart from their
    // classes in the header: the browser's by-file layouts name their class.
    void membersApartFromTheirClassNameIt()
    {
        QAStFile* header = TagFixtures::tagged(*m_tree, m_dir->filePath(u"cpp/shapes.h"_s));
        QAStFile* body = TagFixtures::tagged(*m_tree, m_dir->filePath(u"cpp/shapes.cpp"_s));
        QVERIFY(header && body);
        const auto texts = [](const QAStObjectManager::LayoutEntry& entry) {
            QStringList found;
            for (const QAStObjectManager::LayoutEntry& child : entry.children)
                found.append(child.text);
            return found;
        };
        const QList<QAStObjectManager::LayoutEntry> byFile =
            QAStObjectManager::layout({header, body}, QAStObjectManager::SortByFile);
        QCOMPARE(byFile.size(), 2);
        // In the header, below their class: their own names.
        const QAStObjectManager::LayoutEntry& shape = byFile.at(0).children.at(0).children.at(1);
        QCOMPARE(shape.text, u"Shape"_s);
        QVERIFY(texts(shape).contains(u"move(double dx,double dy)"_s));
        QCOMPARE(texts(byFile.at(1).children.at(0)),
                 (QStringList{"Shape::Shape()", "Shape::~Shape()", "Shape::move(double dx,double dy)",
                              "Shape::scale(int factor)", "Shape::scale(double factor)", "Shape::touch()",
                              "Shape::Visitor::visit(Shape & shape)", "Circle::Circle(double radius)",
                              "Circle::area() const", "detail"}));
        // Moved up to the file when the namespace is left out: the whole class.
        const QList<QAStObjectManager::LayoutEntry> withoutPackages = QAStObjectManager::layout(
            {body}, QAStObjectManager::SortAlpha,
            [](const QAStATag* tag) { return !qobject_cast<const QAStAPackageTag*>(tag); });
        QCOMPARE(texts(withoutPackages.at(0)).mid(0, 3),
                 (QStringList{"geo::Circle::area() const", "geo::Circle::Circle(double radius)",
                              "counter(int start)"}));
    }

    void readerToleratesRealTagFiles()
    {
        QAStFile* file = fileWithText(
            "!_TAG_FILE_FORMAT\t2\t/extended format/\r\n"
            "!_TAG_PROGRAM_NAME\tTagging.pl\t//\r\n"
            "\r\n"
            "ns\ta.h\t1;\"\tkind:namespace\r\n"
            // fields in another order, keys unknown here, no access word
            "Box\ta.h\t2;\"\tclass\tinherits:Base,Other\tfile:\tnamespace:ns\ttyperef:x:y\r\n"
            "put\ta.h\t3;\"\tprototype\tsignature:(char c = '\\t', const char* s = \"a\\\\b\")"
            "\taccess:public\tclass:ns::Box\r\n"
            // an operator whose name holds an escaped tab
            "operator\\tx\ta.h\t4;\"\tfunction\n"
            "last\ta.h\t5;\"\tfunction");
        QCOMPARE(dump(file), (QStringList{
            "package ns",
            "  class Box",
            "    method put(char c = '\t', const char* s = \"a\\b\") q1",
            "function operator\tx",
            "function last"}));
        const auto* box = qobject_cast<QAStAClassTag*>(file->descendants().at(1));
        QCOMPARE(box->inherits(), (QStringList{"Base", "Other"}));
        QVERIFY(m_studio->messages(QAStData::MessageConsole).isEmpty());
    }

    void tagFileDecoding_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("tree");
        const QByteArray utf8Line = "Gr\xc3\xb6\xc3\x9f" "e\ta.h\t1;\"\tfunction\tsignature:(int ma\xc3\x9f)\n";
        const QByteArray latin1Line = "Ma\xdf\ta.h\t2;\"\tfunction\n";
        const QString utf8Tag = u"function Gr\u00f6\u00dfe(int ma\u00df)"_s;
        QTest::newRow("UTF-8, ISO-8859-1 preferred") << "ISO-8859-1" << utf8Line << QStringList{utf8Tag};
        QTest::newRow("a line that is no UTF-8 beside one that is") << "ISO-8859-1" << utf8Line + latin1Line
            << QStringList{utf8Tag, u"function Ma\u00df"_s};
        QTest::newRow("no UTF-8, UTF-8 preferred") << QString() << utf8Line + latin1Line
            << QStringList{utf8Tag, u"function Ma\ufffd"_s};
    }
    void tagFileDecoding()
    {
        QFETCH(QString, encoding);
        QFETCH(QByteArray, text);
        QAStData::preferences()->setEncodingName(encoding);
        QTEST(dump(fileWithText(text)), "tree");
    }

    void malformedLineCostsOnlyItself_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("message");
        QTest::newRow("no identifier") << QByteArray("\ta.c\t3;\"\tfunction") << "expecting an identifier";
        QTest::newRow("identifier alone") << QByteArray("lonely") << "expecting a tab";
        QTest::newRow("no file") << QByteArray("f\t\t3;\"\tfunction") << "expecting a file";
        QTest::newRow("no tab after file") << QByteArray("f\ta.c") << "expecting a tab";
        QTest::newRow("pattern for line") << QByteArray("f\ta.c\t/^int f()$/;\"\tfunction")
                                          << "expecting a line number";
        QTest::newRow("line out of range") << QByteArray("f\ta.c\t99999999999;\"\tfunction")
                                           << "expecting a line number";
        QTest::newRow("short format") << QByteArray("f\ta.c\t3") << "expecting the extension separator";
        QTest::newRow("no kind field") << QByteArray("f\ta.c\t3;\"") << "expecting a tab";
        QTest::newRow("empty kind") << QByteArray("f\ta.c\t3;\"\t\tsignature:()") << "expecting a kind";
        QTest::newRow("empty implementation") << QByteArray("f\ta.c\t3;\"\tfunction\timplementation:")
                                              << "expecting an implementation name";
        QTest::newRow("empty parent") << QByteArray("f\ta.c\t3;\"\tfunction\tclass:")
                                      << "expecting a parent name";
        QTest::newRow("empty signature") << QByteArray("f\ta.c\t3;\"\tfunction\tsignature:")
                                         << "expecting a signature";
    }
    void malformedLineCostsOnlyItself()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, message);
        QAStFile* file = fileWithText("before\ta.c\t1;\"\tfunction\n" + line + "\nafter\ta.c\t5;\"\tfunction\n");
        QCOMPARE(dump(file), (QStringList{"function before", "function after"}));
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{m_dir->filePath(u"hand.tags"_s) + ":2: " + message});
    }

    void qualifierWordsAreAdded_data()
    {
        QTest::addColumn<QByteArray>("fields");
        QTest::addColumn<int>("qualifier");
        QTest::newRow("none") << QByteArray() << 0;
        QTest::newRow("public") << QByteArray("\taccess:public") << 1;
        QTest::newRow("public twice is protected") << QByteArray("\taccess:public\taccess:public") << 2;
        QTest::newRow("private and protected") << QByteArray("\taccess:private,protected") << 6;
        QTest::newRow("pure virtual and abstract is virtual")
            << QByteArray("\timplementation:pure virtual\timplementation:abstract") << 64;
        QTest::newRow("virtual public") << QByteArray("\timplementation:virtual\taccess:public") << 65;
        QTest::newRow("unknown words add nothing") << QByteArray("\taccess:friend\timplementation:inline") << 0;
    }
    void qualifierWordsAreAdded()
    {
        QFETCH(QByteArray, fields);
        QAStTagRecord record;
        QString error;
        QCOMPARE(QAStTagFileReader::parseLine("f\ta.c\t7;\"\tfunction" + fields, record, &error),
                 QAStTagFileReader::RecordLine);
        QTEST(record.qualifier, "qualifier");
        QCOMPARE(record.line, 7);
    }

    void kindsMakeTheirClasses_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("parentKind");
        QTest::addColumn<QString>("made");
        const QStringList packages{"namespace", "package", "packspec", "separate"};
        for (const QString& kind : packages)
            QTest::newRow(qPrintable(kind)) << kind << QString() << "QAStAPackageTag";
        QTest::newRow("class") << "class" << "namespace" << "QAStAClassTag";
        QTest::newRow("interface") << "interface" << QString() << "QAStAClassTag";
        QTest::newRow("struct") << "struct" << QString() << "QAStAStructTag";
        for (const QString& kind : {"function", "prototype", "subprogram", "subprogspec"}) {
            QTest::newRow(qPrintable(kind + " at the top")) << kind << QString() << "QAStAFunctionTag";
            QTest::newRow(qPrintable(kind + " in a namespace")) << kind << "namespace" << "QAStAFunctionTag";
            QTest::newRow(qPrintable(kind + " of a class")) << kind << "class" << "QAStAMethodTag";
        }
        QTest::newRow("prototype of an interface") << "prototype" << "interface" << "QAStAMethodTag";
        QTest::newRow("method") << "method" << "class" << "QAStAMethodTag";
        QTest::newRow("macro") << "macro" << QString() << QString();
        QTest::newRow("member") << "member" << "class" << QString();
    }
    void kindsMakeTheirClasses()
    {
        QFETCH(QString, kind);
        QFETCH(QString, parentKind);
        QFETCH(QString, made);
        QAStFile file(m_dir->filePath(u"cpp/shapes.h"_s));
        QAStTagRecord record;
        record.name = u"x"_s;
        record.kind = kind;
        record.line = 9;
        record.qualifier = 5;
        record.parentKind = parentKind;
        record.completeName = parentKind.isEmpty() ? QString() : u"outer"_s;
        record.signature = u"(int)"_s;
        QAStATag* tag = QAStFile::createTag(record.toMap(), &file, nullptr);
        if (made.isEmpty()) {
            QVERIFY(!tag);
            QCOMPARE(file.childCount(), 0);
            return;
        }
        QVERIFY(tag);
        QCOMPARE(tag->metaObject()->className(), qPrintable(made));
        QCOMPARE(tag->parent(), &file);
        QCOMPARE(tag->line(), 9);
        QCOMPARE(tag->qualifier(), 5);
        QCOMPARE(tag->signature(), u"(int)"_s);
        QCOMPARE(tag->filePath(), file.filePath());
        if (auto* method = qobject_cast<QAStAMethodTag*>(tag))
            QCOMPARE(method->completeName(), u"outer::x"_s);
        if (auto* package = qobject_cast<QAStAPackageTag*>(tag))
            QCOMPARE(package->completeName(), u"x"_s);
    }

    void traceLinesTellSearchesAndUnknownKinds()
    {
        QLoggingCategory::setFilterRules(u"sdk110.tagging.info=true"_s);
        QTest::ignoreMessage(QtInfoMsg, "Search namespace = ns");
        QTest::ignoreMessage(QtInfoMsg, "[info] TAGGING: macro is a kind of token not yet implemented");
        QTest::ignoreMessage(QtInfoMsg, "Search class = ns::Gone");
        QTest::ignoreMessage(QtInfoMsg, "Search interface = I");
        QTest::ignoreMessage(QtInfoMsg, "Search ada outer = P");
        QTest::ignoreMessage(QtInfoMsg, "Search ada separate = Q");
        QAStFile* file = fileWithText("ns\ta.h\t1;\"\tnamespace\n"
                                      "M\ta.h\t2;\"\tmacro\tnamespace:ns\n"
                                      "f\ta.h\t3;\"\tfunction\tclass:ns::Gone\n"
                                      "g\ta.h\t4;\"\tmethod\tinterface:I\n"
                                      "h\ta.h\t5;\"\tsubprogram\touter:P\n"
                                      "k\ta.h\t6;\"\tsubprogram\tseparate:Q\n");
        // A class missing from the file: the method goes below its namespace.
        QCOMPARE(dump(file), (QStringList{"package ns", "  method f", "method g", "function h", "function k"}));
    }

    void missingTagFileKeepsTheTags()
    {
        QAStFile* file = fileWithText("kept\ta.c\t1;\"\tfunction\n");
        QVERIFY(!file->readTagFile(m_dir->filePath(u"no/tags"_s)));
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList{u"Can't open tag file."_s});
        QCOMPARE(dump(file), QStringList{"function kept"});
    }

    void oneTaggingAtATime()
    {
        auto* header = new QAStFile(m_dir->filePath(u"c/ledger.h"_s), m_tree.get());
        auto* body = new QAStFile(m_dir->filePath(u"c/ledger.c"_s), m_tree.get());
        auto* script = new QAStFile(m_dir->filePath(u"run.sh"_s), m_tree.get());
        QVERIFY(!script->isSourceFile());
        QVERIFY(!script->taggingInformation(true));
        QSignalSpy started(QAStFile::taggingNotifier(), &QAStFileTaggingNotifier::taggingStarted);
        QSignalSpy ended(header, &QAStFile::taggingTerminated);
        QVERIFY(header->taggingInformation(true));
        QCOMPARE(started.size(), 1);
        QVERIFY(QAStFile::isFileInformationProcessing());
        QCOMPARE(QAStFile::fileInformationProcessed(), header);
        QVERIFY(!body->taggingInformation(true));
        QVERIFY(ended.wait(20000));
        QVERIFY(!QAStFile::isFileInformationProcessing());
        QVERIFY(header->lastTaggingSucceeded());
        QCOMPARE(dump(header).size(), 4);
        QVERIFY(body->taggingInformation(false));
        QVERIFY(body->lastTaggingSucceeded());
    }

    void stoppedTaggingReadsNothing()
    {
        auto* file = new QAStFile(m_dir->filePath(u"cpp/shapes.h"_s), m_tree.get());
        QSignalSpy ended(file, &QAStFile::taggingTerminated);
        QVERIFY(file->taggingInformation(true));
        QAStFile::stopFileInformationProcess();
        // Ended at once: another tagging may start.
        QCOMPARE(ended.size(), 1);
        QVERIFY(!QAStFile::isFileInformationProcessing());
        QVERIFY(!file->lastTaggingSucceeded());
        QCOMPARE(file->childCount(), 0);
        QVERIFY(file->taggingInformation(false));
        QVERIFY(file->lastTaggingSucceeded());
    }

    void analyseAbortsThroughTheHost()
    {
        const QList<QAStFile*> files = m_tree->addFiles({m_dir->filePath(u"c/ledger.h"_s),
                              m_dir->filePath(u"c/ledger.c"_s)});
        m_studio->cancelProgressAt(1);
        QAStFileAnalyse run(files, true, false);
        QSignalSpy finished(&run, &QAStFileAnalyse::finished);
        QVERIFY(run.start());
        QVERIFY(finished.wait(60000));
        QVERIFY(run.wasStopped());
        QCOMPARE(run.analysedFiles(), QList<QAStFile*>{files[0]});
        QCOMPARE(files[1]->childCount(), 0);
        QVERIFY(!QAStFile::isFileInformationProcessing());

        // Without cancelling, the host's cancel is not asked.
        QAStFileAnalyse uncancellable(files, false, false);
        QSignalSpy done(&uncancellable, &QAStFileAnalyse::finished);
        QVERIFY(uncancellable.start());
        QVERIFY(done.wait(60000));
        QVERIFY(!uncancellable.wasStopped());
        QCOMPARE(uncancellable.analysedFiles(), files);
        QCOMPARE(m_studio->progressCancelText(), QString());
    }

    void batchesRunOneDriverEach_data()
    {
        QTest::addColumn<int>("batchSize");
        QTest::addColumn<int>("runs");
        QTest::newRow("all in one run") << QAStFileAnalyse::DefaultBatchSize << 1;
        QTest::newRow("two files a run") << 2 << 3;
    }
    // One interpreter and one tag program for a batch; each file is read into
    // tags, labelled and counted on its own; a file the driver cannot read
    // fails alone, told on both consoles. The run deletes itself at its end.
    void batchesRunOneDriverEach()
    {
        QFETCH(int, batchSize);
        const QString missing = m_dir->filePath(u"c/gone.c"_s);
        const QStringList names{"c/ledger.h", "c/ledger.c", "run.sh", "cpp/shapes.h", "cpp/shapes.cpp",
                                "java/Account.java"};
        QStringList paths;
        for (const QString& name : names)
            paths.append(m_dir->filePath(name));
        const QList<QAStFile*> files = m_tree->addFiles(paths << missing);
        QPointer<QAStFileAnalyse> run = new QAStFileAnalyse(files, true, true);
        run->setBatchSize(batchSize);
        QSignalSpy finished(run.data(), &QAStFileAnalyse::finished);
        QSignalSpy analysed(run.data(), &QAStFileAnalyse::fileAnalysed);
        EndedRuns runs;
        QVERIFY(run->start());
        const bool ended = finished.wait(60000);
        runs.stop();
        QVERIFY(ended);
        QTEST(runs.count(), "runs");
        QList<QAStFile*> sources = files;
        sources.removeAt(2);
        QCOMPARE(analysed.size(), 6);
        QCOMPARE(run->failedFiles(), QList<QAStFile*>{files.last()});
        QCOMPARE(run->analysedFiles(), sources.first(5));
        QStringList labels{"Analysing file in progress"};
        for (const QAStFile* file : sources)
            labels.append("Analysing File:" + file->filePath());
        QCOMPARE(m_studio->progressLabels(), labels);
        QCOMPARE(m_studio->progressCancelText(), u"Abort"_s);
        QCOMPARE(m_studio->progressMaximum(), 7);
        QCOMPARE(m_studio->progressValue(), 7);
        QVERIFY(!m_studio->progressRunning());
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole).contains(missing + u":1: no such file"_s));
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList{missing + u": file analysing failed."_s});
        QCOMPARE(dump(files[0]).size(), 4);
        QCOMPARE(dump(files[3]).first(), u"package geo"_s);
        QCOMPARE(dump(files[5]).first(), u"package bank.core"_s);
        QTRY_VERIFY(run.isNull());
    }
    // A tag program that crashes on one file, after the output of the file
    // before it: that file fails alone, the others are tagged.
    void aFileTheTagProgramDiesOnFailsAlone()
    {
        const QString tagProgram = m_dir->filePath(u"dying-ctags"_s);
        TestFiles::writeFile(tagProgram, "#!/usr/bin/perl\n"
                                         "my @options = grep { /^-/ } @ARGV;\n"
                                         "for my $file (grep { !/^-/ } @ARGV) {\n"
                                         "    kill('SEGV', $$) if $file =~ /poison\\.c\\z/;\n"
                                         "    system('ctags', @options, $file) == 0 or exit(1);\n"
                                         "}\n");
        QVERIFY(QFile::setPermissions(tagProgram, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        TestFiles::writeFile(m_dir->filePath(u"c/poison.c"_s), "int poison(void) { return 0; }\n");
        const QList<QAStFile*> files = m_tree->addFiles(
            {m_dir->filePath(u"c/ledger.h"_s), m_dir->filePath(u"c/poison.c"_s),
             m_dir->filePath(u"c/ledger.c"_s)});
        EnvironmentVariable tagProgramVariable("KORVIL_CTAGS", tagProgram.toLocal8Bit());
        QAStFileAnalyse run(files, false, false);
        QSignalSpy finished(&run, &QAStFileAnalyse::finished);
        QVERIFY(run.start());
        QVERIFY(finished.wait(60000));
        QCOMPARE(run.failedFiles(), QList<QAStFile*>{files[1]});
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{files[1]->filePath() + u": file analysing failed."_s});
        QCOMPARE(run.analysedFiles(), (QList<QAStFile*>{files[0], files[2]}));
        QCOMPARE(dump(files[0]).size(), 4);
        QCOMPARE(dump(files[2]).size(), 5);
    }

    // --- the types and languages of files, with the user's types of init()

    void typeOfAName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("type");
        // The cases beyond the table's own rows.
        const QList<QPair<const char*, int>> rows = {
            {"t.PTU", 5}, {"x.Stb", 8}, {"A.JAVA", 15}, {"a.H", 9}, {"x.MAK", 17}, {"data.CSV", 25},
            // the supervision scripts stop at the first of their two rows
            {"sup.spv", 7},
            // "*.tsf" always gives runtime tracing
            {"all.tsf", 19},
            // case is ignored: an upper-case C is a C file, before C++
            {"a.C", 10}, {"a.CC", 12},
            {"MAKEFILE.old", 17}, {"GNUmakefile", 27}, {"", 27}, {"c", 27},
            {"/src/x.c/readme", 27}, {"/src/x.adb", 14}, {"C:\\src\\main.cpp", 12},
            // the user's types come after the table
            {"run.sh", 26}, {"RUN.BASH", 26}, {"notes.md", 26}, {"make.sh.c", 10}, {"x.shell", 27},
        };
        for (const auto& row : rows)
            QTest::newRow(row.first[0] ? row.first : "empty") << QString::fromLatin1(row.first) << row.second;
    }
    void typeOfAName()
    {
        QFETCH(QString, name);
        QTEST(int(QAStFile::fileType(name)), "type");
    }

    void userPatternsFollowThePreferences()
    {
        QCOMPARE(QAStFile::fileType(u"a.sh"_s), QAStFile::UserFile);
        QAStData::preferences()->setFileTypes({{u"Logs"_s, u"*.log"_s}});
        QCOMPARE(QAStFile::fileType(u"a.sh"_s), QAStFile::UnknownFile);
        QCOMPARE(QAStFile::fileType(u"A.LOG"_s), QAStFile::UserFile);
        QAStData::preferences()->setFileTypes({});
        QCOMPARE(QAStFile::fileType(u"a.log"_s), QAStFile::UnknownFile);
    }

    void languageOfAFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("language");
        QTest::newRow("C") << "/p/a.c" << 1;
        QTest::newRow("upper-case C") << "/p/a.C" << 1;
        QTest::newRow("C++") << "/p/a.cxx" << 2;
        QTest::newRow("Ada") << "/p/a.ads" << 4;
        QTest::newRow("Java") << "/p/A.java" << 8;
        QTest::newRow("header") << "/p/a.h" << 0;
        QTest::newRow("test script") << "/p/a.ptu" << 0;
        QTest::newRow("user type") << "/p/a.sh" << 0;
    }
    void languageOfAFile()
    {
        QFETCH(QString, path);
        QFETCH(int, language);
        QCOMPARE(QAStFile::languageType(path), language);
        QAStFile file(path);
        QCOMPARE(file.language(), language);
        QAStATag tag(u"t"_s, QPixmap(), path, 1, &file);
        QCOMPARE(tag.language(), language);
    }

    void filters_data()
    {
        QTest::addColumn<QList<int>>("types");
        QTest::addColumn<QString>("filter");
        QTest::newRow("second supervision row") << QList<int>{18} << "System Testing Supervision Scripts (*.spv)";
        QTest::newRow("user types") << QList<int>{26} << "Docs (*.md);;Scripts (*.sh *.bash)";
        QTest::newRow("outside the table") << QList<int>{99} << "";
        QTest::newRow("several") << QList<int>{15, 99, 9, 27}
                                 << "All Java Files (*.java);;Header Files (*.h *.hh *.hpp *.hxx *.H);;"
                                    "All Files (*)";
    }
    void filters()
    {
        QFETCH(QList<int>, types);
        QFETCH(QString, filter);
        if (types.size() == 1)
            QCOMPARE(QAStFile::fileTypeFilter(types.first()), filter);
        QCOMPARE(QAStFile::fileTypeFilter(types), filter);
    }
    // --- the tag model

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
        // The plain tag's fields follow its data block, the signature escaped.
        QAStATag tag(u"Stack"_s, QPixmap(), u"/src/stack.h"_s, 12);
        tag.setQualifier(5);
        tag.setSignature(u"(int a, T<b>&)"_s);
        QVERIFY(tag.toString().endsWith(u"  </data>\n  <filepath>/src/stack.h</filepath>\n  <line>12</line>\n"
                                        "  <qualifier>5</qualifier>\n"
                                        "  <signature>(int a#comma# T&lt;b&gt;&amp;)</signature>\n"
                                        "  <tag_child>\n  </tag_child>\n</tag>\n"_s));

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
        const QAStFile* header = m_project->file(m_tagged.filePath(u"cpp/shapes.h"_s));
        const QAStFile* body = m_project->file(m_tagged.filePath(u"cpp/shapes.cpp"_s));
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
        const QAStFile* cHeader = m_project->file(m_tagged.filePath(u"c/ledger.h"_s));
        const QAStFile* cBody = m_project->file(m_tagged.filePath(u"c/ledger.c"_s));
        QCOMPARE(findTag<QAStAFunctionTag>(cBody, "ledger_total")->declaration(),
                 findTag<QAStAFunctionTag>(cHeader, "ledger_total"));
        QVERIFY(!findTag<QAStAFunctionTag>(cBody, "checked")->declaration());
        const QAStFile* spec = m_project->file(m_tagged.filePath(u"ada/stacks.ads"_s));
        const QAStFile* adaBody = m_project->file(m_tagged.filePath(u"ada/stacks.adb"_s));
        QCOMPARE(findTag<QAStAFunctionTag>(spec, "Stacks.Inner.Reset")->implementation(),
                 findTag<QAStAFunctionTag>(adaBody, "Stacks.Inner.Reset"));
        const QAStFile* java = m_project->file(m_tagged.filePath(u"java/Account.java"_s));
        auto* render = findTag<QAStAMethodTag>(java, "Account.Statement.render");
        QVERIFY(render && !render->declaration());
        QCOMPARE(render->implementation(), render);
        QVERIFY(render->isDirectlyTestable());
        QVERIFY(!findTag<QAStAMethodTag>(java, "Account.fee")->isDirectlyTestable());
        QCOMPARE(render->language(), int(QAStFile::LanguageJava));
    }

    void testCreatesANodeOfTheLanguage()
    {
        const QAStFile* header = m_project->file(m_tagged.filePath(u"cpp/shapes.h"_s));
        const QAStFile* cHeader = m_project->file(m_tagged.filePath(u"c/ledger.h"_s));
        const QAStFile* java = m_project->file(m_tagged.filePath(u"java/Account.java"_s));
        const QAStFile* spec = m_project->file(m_tagged.filePath(u"ada/stacks.ads"_s));
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
                 (QStringList{m_tagged.filePath("cpp/shapes.cpp"), m_tagged.filePath("c/ledger.c"),
                              m_tagged.filePath("ada/stacks.ads"), m_tagged.filePath("ada/stacks.adb")}));
        const int nodes = m_project->childCount();
        QVERIFY(!findTag<QAStAFunctionTag>(spec, "Stacks.Push")->test(m_project.get()));
        QVERIFY(!findTag<QAStAMethodTag>(header, "geo::Shape::area")->test(m_project.get()));
        QVERIFY(!header->canBeTested());
        QCOMPARE(m_project->childCount(), nodes);
    }

    // The menu of a tag, its edits going through the host.
    void popupMenuOffersTheTagsActions()
    {
        const QAStFile* header = m_project->file(m_tagged.filePath(u"cpp/shapes.h"_s));
        auto* area = findTag<QAStAMethodTag>(header, "geo::Circle::area");
        std::unique_ptr<QMenu> menu(area->popupMenu(nullptr, m_project.get()));
        QCOMPARE(actionTexts(menu.get()),
                 (QStringList{"Edit", "Edit Declaration", "Edit Implementation", "|", "Test"}));
        action(menu.get(), "Edit Implementation")->trigger();
        // Double click, declaration and a tag of no known line through the host too.
        const QAStFile* body = m_project->file(m_tagged.filePath(u"cpp/shapes.cpp"_s));
        auto* move = findTag<QAStAMethodTag>(body, "geo::Shape::move");
        move->doubleClickAction();
        move->editDeclaration();
        QAStATag(u"x"_s, QPixmap(), u"/a.c"_s, -1).edit();
        QCOMPARE(m_studio->editedFiles(), (QStringList{body->filePath() + ":34", body->filePath() + ":9",
                                                       m_tagged.filePath("cpp/shapes.h") + ":17", "/a.c:0"}));
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
    // A file item whose tag file holds text, read at once.
    QAStFile* fileWithText(const QByteArray& text)
    {
        auto* file = new QAStFile(m_dir->filePath(u"cpp/shapes.h"_s), m_tree.get(), m_tree->last());
        const QString tags = m_dir->filePath(u"hand.tags"_s);
        TestFiles::writeFile(tags, text);
        file->readTagFile(tags);
        return file;
    }
    // The tag file the driver writes for sources, in its one-file form.
    QList<QByteArray> driverLines(const QStringList& sources)
    {
        const QString tags = m_dir->filePath(u"driver.tags"_s);
        QProcess driver;
        driver.start(u"perl"_s, QStringList{TestPaths::installTree() + u"/scripts/Tagging.pl"_s, tags} + sources);
        if (!driver.waitForFinished(60000) || driver.exitCode() != 0)
            return {};
        return TestFiles::readFile(tags).split('\n');
    }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QAStRootFolder> m_tree;
    QTemporaryDir m_tagged;
    // The sources of tests/data/tags, tagged once by the real driver.
    std::unique_ptr<QAStProject> m_project;
};

QTEST_MAIN(TestTagging)
#include "tst_tagging.moc"
