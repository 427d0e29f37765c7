#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "QAStTagFileReader.h"
#include "RecordingStudio.h"
#include "TagFixtures.h"
#include "TestFiles.h"

#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using TagFixtures::dump;

class TestTagging : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void driverTagsEachLanguage_data();
    void driverTagsEachLanguage();
    void driverWritesTheDocumentedLayout();
    void readerToleratesRealTagFiles();
    void utf8SourcesKeepTheirNames_data();
    void utf8SourcesKeepTheirNames();
    void tagFileDecoding_data();
    void tagFileDecoding();
    void malformedLineCostsOnlyItself_data();
    void malformedLineCostsOnlyItself();
    void qualifierWordsAreAdded_data();
    void qualifierWordsAreAdded();
    void kindsMakeTheirClasses_data();
    void kindsMakeTheirClasses();
    void traceLinesTellSearchesAndUnknownKinds();
    void missingTagFileKeepsTheTags();
    void oneTaggingAtATime();
    void stoppedTaggingReadsNothing();
    void analyseRunsTheFilesInTurn();
    void analyseAbortsThroughTheHost();

private:
    QAStFile* fileWithText(const QByteArray& text);

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QAStRootFolder> m_tree;
};

void TestTagging::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    m_dir = std::make_unique<QTemporaryDir>();
    TagFixtures::copySources(m_dir->path());
    m_tree = std::make_unique<QAStRootFolder>(QStringLiteral("files"));
    m_tree->setDirectory(m_dir->path());
    QAStData::preferences()->setEncodingName(QString());
}

void TestTagging::cleanup()
{
    QLoggingCategory::setFilterRules(QString());
    m_tree.reset();
    m_dir.reset();
    m_studio.reset();
}

// A file item whose tag file holds text, read at once.
QAStFile* TestTagging::fileWithText(const QByteArray& text)
{
    auto* file = new QAStFile(m_dir->filePath(QStringLiteral("cpp/shapes.h")), m_tree.get(),
                              m_tree->last());
    const QString tags = m_dir->filePath(QStringLiteral("hand.tags"));
    TestFiles::writeFile(tags, text);
    file->readTagFile(tags);
    return file;
}

void TestTagging::driverTagsEachLanguage_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>("tree");

    QTest::newRow("C++ header") << "cpp/shapes.h" << QStringList{
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
    QTest::newRow("C++ body") << "cpp/shapes.cpp" << QStringList{
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
    QTest::newRow("C body") << "c/ledger.c" << QStringList{
        "struct entry",
        "function checked(long amount)",
        "function ledger_init(struct ledger * l)",
        "function ledger_add(struct ledger * l,long amount)",
        "function ledger_total(const struct ledger * ledger)"};
    QTest::newRow("Java") << "java/Account.java" << QStringList{
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
    QTest::newRow("Ada declaration file") << "ada/stacks.ads" << QStringList{
        "package Stacks",
        "  function Push",
        "  function Pop",
        "  function Size",
        "  package Inner",
        "    function Reset",
        "  package Generic_Store",
        "    function Put"};
    QTest::newRow("Ada separate") << "ada/stacks-size.adb" << QStringList{
        "package Stacks",
        "  function Size",
        "    function Check"};
}

void TestTagging::driverTagsEachLanguage()
{
    QFETCH(QString, source);
    QAStFile* file = TagFixtures::tagged(*m_tree, m_dir->filePath(source));
    QVERIFY(file);
    QTEST(dump(file), "tree");
    QVERIFY(m_studio->messages(QAStData::MessageConsole).isEmpty());
    for (const QAStATag* tag : file->descendants())
        QCOMPARE(tag->filePath(), file->filePath());
}

void TestTagging::driverWritesTheDocumentedLayout()
{
    QAStFile* file = TagFixtures::tagged(*m_tree, m_dir->filePath(QStringLiteral("cpp/shapes.h")));
    QVERIFY(file);
    const QList<QByteArray> lines = TestFiles::readFile(file->tagFilePath()).split('\n');
    QVERIFY(lines.first().startsWith("!_TAG_"));
    const QByteArray path = file->filePath().toUtf8();
    QVERIFY(lines.contains("area\t" + path + "\t16;\"\tprototype\timplementation:pure virtual\tclass:geo::Shape"
        "\taccess:public\tsignature:() const"));
    QVERIFY(lines.contains("Circle\t" + path + "\t34;\"\tclass\tnamespace:geo\tinherits:Shape"));

    const auto* circle = qobject_cast<QAStAClassTag*>(file->descendants().at(12));
    QVERIFY(circle);
    QCOMPARE(circle->line(), 34);
    QCOMPARE(circle->inherits(), QStringList{"Shape"});
    QCOMPARE(circle->qualifiedName(), QStringLiteral("geo::Circle"));
    QCOMPARE(circle->generalize(), QList<QAStAClassTag*>{qobject_cast<QAStAClassTag*>(
                                       file->descendants().at(2))});
    const auto* visit = qobject_cast<QAStAMethodTag*>(file->descendants().at(11));
    QCOMPARE(visit->completeName(), QStringLiteral("geo::Shape::Visitor::visit"));
    QCOMPARE(visit->classPrefix(), QStringLiteral("geo::Shape::Visitor"));
}

void TestTagging::readerToleratesRealTagFiles()
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

void TestTagging::utf8SourcesKeepTheirNames_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("tree");

    // Universal Ctags 5.9 reads non-ASCII identifiers in Ada; in C they
    // reach the tag file through the signature.
    const QByteArray c = "int berechnen(int gr\xc3\xb6\xc3\x9f" "e) { return gr\xc3\xb6\xc3\x9f" "e; }\n";
    const QByteArray ada = "package Gr\xc3\xb6\xc3\x9f" "e is\n"
                           "   procedure Ma\xc3\x9f (Wert : Integer);\n"
                           "end Gr\xc3\xb6\xc3\x9f" "e;\n";
    const QStringList cTree{QStringLiteral("function berechnen(int gr\u00f6\u00dfe)")};
    const QStringList adaTree{QStringLiteral("package Gr\u00f6\u00dfe"),
                              QStringLiteral("  function Ma\u00df")};
    QTest::newRow("C, no preference") << QString() << "utf8/maße.c" << c << cTree;
    QTest::newRow("C, ISO-8859-1 preferred") << "ISO-8859-1" << "utf8/maße.c" << c << cTree;
    QTest::newRow("Ada, ISO-8859-1 preferred") << "ISO-8859-1" << "utf8/masse.ads" << ada
                                               << adaTree;
}

void TestTagging::utf8SourcesKeepTheirNames()
{
    QFETCH(QString, encoding);
    QFETCH(QString, source);
    QFETCH(QByteArray, text);
    QAStData::preferences()->setEncodingName(encoding);
    const QString path = m_dir->filePath(source);
    TestFiles::writeFile(path, text);
    QAStFile* file = TagFixtures::tagged(*m_tree, path);
    QVERIFY(file);
    QTEST(dump(file), "tree");
}

void TestTagging::tagFileDecoding_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("tree");

    const QByteArray utf8Line =
        "Gr\xc3\xb6\xc3\x9f" "e\ta.h\t1;\"\tfunction\tsignature:(int ma\xc3\x9f)\n";
    const QByteArray latin1Line = "Ma\xdf\ta.h\t2;\"\tfunction\n";
    const QString utf8Tag = QStringLiteral("function Gr\u00f6\u00dfe(int ma\u00df)");
    QTest::newRow("UTF-8, ISO-8859-1 preferred")
        << "ISO-8859-1" << utf8Line << QStringList{utf8Tag};
    QTest::newRow("a line that is no UTF-8 beside one that is")
        << "ISO-8859-1" << utf8Line + latin1Line
        << QStringList{utf8Tag, QStringLiteral("function Ma\u00df")};
    QTest::newRow("no UTF-8, UTF-8 preferred")
        << QString() << utf8Line + latin1Line
        << QStringList{utf8Tag, QStringLiteral("function Ma\ufffd")};
}

void TestTagging::tagFileDecoding()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, text);
    QAStData::preferences()->setEncodingName(encoding);
    QTEST(dump(fileWithText(text)), "tree");
}

void TestTagging::malformedLineCostsOnlyItself_data()
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

void TestTagging::malformedLineCostsOnlyItself()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, message);
    QAStFile* file = fileWithText("before\ta.c\t1;\"\tfunction\n" + line + "\nafter\ta.c\t5;\"\tfunction\n");
    QCOMPARE(dump(file), (QStringList{"function before", "function after"}));
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{m_dir->filePath(QStringLiteral("hand.tags")) + ":2: " + message});
}

void TestTagging::qualifierWordsAreAdded_data()
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
    QTest::newRow("unknown words add nothing")
        << QByteArray("\taccess:friend\timplementation:inline") << 0;
}

void TestTagging::qualifierWordsAreAdded()
{
    QFETCH(QByteArray, fields);
    QAStTagRecord record;
    QString error;
    QCOMPARE(QAStTagFileReader::parseLine("f\ta.c\t7;\"\tfunction" + fields, record, &error),
             QAStTagFileReader::RecordLine);
    QTEST(record.qualifier, "qualifier");
    QCOMPARE(record.line, 7);
}

void TestTagging::kindsMakeTheirClasses_data()
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
        QTest::newRow(qPrintable(kind + " in a namespace"))
            << kind << "namespace" << "QAStAFunctionTag";
        QTest::newRow(qPrintable(kind + " of a class")) << kind << "class" << "QAStAMethodTag";
    }
    QTest::newRow("prototype of an interface") << "prototype" << "interface" << "QAStAMethodTag";
    QTest::newRow("method") << "method" << "class" << "QAStAMethodTag";
    QTest::newRow("macro") << "macro" << QString() << QString();
    QTest::newRow("member") << "member" << "class" << QString();
}

void TestTagging::kindsMakeTheirClasses()
{
    QFETCH(QString, kind);
    QFETCH(QString, parentKind);
    QFETCH(QString, made);
    QAStFile file(m_dir->filePath(QStringLiteral("cpp/shapes.h")));
    QAStTagRecord record;
    record.name = QStringLiteral("x");
    record.kind = kind;
    record.line = 9;
    record.qualifier = 5;
    record.parentKind = parentKind;
    record.completeName = parentKind.isEmpty() ? QString() : QStringLiteral("outer");
    record.signature = QStringLiteral("(int)");
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
    QCOMPARE(tag->signature(), QStringLiteral("(int)"));
    QCOMPARE(tag->filePath(), file.filePath());
    if (auto* method = qobject_cast<QAStAMethodTag*>(tag))
        QCOMPARE(method->completeName(), QStringLiteral("outer::x"));
    if (auto* package = qobject_cast<QAStAPackageTag*>(tag))
        QCOMPARE(package->completeName(), QStringLiteral("x"));
}

void TestTagging::traceLinesTellSearchesAndUnknownKinds()
{
    QLoggingCategory::setFilterRules(QStringLiteral("sdk110.tagging.info=true"));
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
    QCOMPARE(dump(file), (QStringList{"package ns", "  method f", "method g", "function h",
                                      "function k"}));
}

void TestTagging::missingTagFileKeepsTheTags()
{
    QAStFile* file = fileWithText("kept\ta.c\t1;\"\tfunction\n");
    QVERIFY(!file->readTagFile(m_dir->filePath(QStringLiteral("no/tags"))));
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{QStringLiteral("Can't open tag file.")});
    QCOMPARE(dump(file), QStringList{"function kept"});
}

void TestTagging::oneTaggingAtATime()
{
    auto* header = new QAStFile(m_dir->filePath(QStringLiteral("c/ledger.h")), m_tree.get());
    auto* body = new QAStFile(m_dir->filePath(QStringLiteral("c/ledger.c")), m_tree.get());
    auto* script = new QAStFile(m_dir->filePath(QStringLiteral("run.sh")), m_tree.get());
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

void TestTagging::stoppedTaggingReadsNothing()
{
    auto* file = new QAStFile(m_dir->filePath(QStringLiteral("cpp/shapes.h")), m_tree.get());
    QSignalSpy ended(file, &QAStFile::taggingTerminated);
    QVERIFY(file->taggingInformation(true));
    QAStFile::stopFileInformationProcess();
    QVERIFY(ended.wait(20000));
    QVERIFY(!file->lastTaggingSucceeded());
    QCOMPARE(file->childCount(), 0);
    QVERIFY(!m_studio->messages(QAStData::MessageConsole).contains("Can't open tag file."));
}

void TestTagging::analyseRunsTheFilesInTurn()
{
    const QString missing = m_dir->filePath(QStringLiteral("c/gone.c"));
    const QList<QAStFile*> files = m_tree->addFiles(
        {m_dir->filePath(QStringLiteral("c/ledger.h")), m_dir->filePath(QStringLiteral("run.sh")),
         missing, m_dir->filePath(QStringLiteral("java/Account.java"))});
    QPointer<QAStFileAnalyse> run = new QAStFileAnalyse(files, true, true);
    QSignalSpy finished(run.data(), &QAStFileAnalyse::finished);
    QSignalSpy analysed(run.data(), &QAStFileAnalyse::fileAnalysed);
    QVERIFY(run->start());
    QVERIFY(finished.wait(60000));
    QCOMPARE(analysed.size(), 3);
    QCOMPARE(m_studio->progressCancelText(), QStringLiteral("Abort"));
    QCOMPARE(m_studio->progressMaximum(), 4);
    QCOMPARE(m_studio->progressLabels(),
             (QStringList{"Analysing file in progress", "Analysing File:" + files[0]->filePath(),
                          "Analysing File:" + missing,
                          "Analysing File:" + files[3]->filePath()}));
    QVERIFY(!m_studio->progressRunning());
    QCOMPARE(m_studio->progressValue(), 4);
    const QStringList console = m_studio->messages(QAStData::MessageConsole);
    QVERIFY(console.contains(QStringLiteral("Can't open tag file.")));
    QCOMPARE(console.last(), missing + QStringLiteral(": file analysing failed."));
    QCOMPARE(run->failedFiles(), QList<QAStFile*>{files[2]});
    QCOMPARE(run->analysedFiles(), (QList<QAStFile*>{files[0], files[3]}));
    QCOMPARE(dump(files[3]).first(), QStringLiteral("package bank.core"));
    QTRY_VERIFY(run.isNull());
}

void TestTagging::analyseAbortsThroughTheHost()
{
    const QList<QAStFile*> files =
        m_tree->addFiles({m_dir->filePath(QStringLiteral("c/ledger.h")),
                          m_dir->filePath(QStringLiteral("c/ledger.c"))});
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

QTEST_MAIN(TestTagging)
#include "tst_tagging.moc"
