#include "QARes.h"
#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

struct ReportedError {
    QString file;
    int line;
    QString message;
};

// Records every error while installed; puts the previous handler back
// when it goes.
class RecordingHandler : public QAResErrorHandler {
public:
    RecordingHandler() : m_previous(QARes::setErrorHandler(this)) {}
    ~RecordingHandler() override { QARes::setErrorHandler(m_previous); }

    void error(const QString& file, int line, const QString& message) override
    {
        errors.append({file, line, message});
    }

    QList<int> lines() const
    {
        QList<int> result;
        for (const ReportedError& e : errors)
            result.append(e.line);
        return result;
    }

    QList<ReportedError> errors;

private:
    QAResErrorHandler* m_previous;
};

using Tree = std::unique_ptr<QARes>;

Tree readFixture(const QString& name)
{
    return Tree(QARes::read(TestPaths::data(QStringLiteral("resources/") + name)));
}

Tree readText(const QString& text)
{
    return Tree(QARes::readText(text, QStringLiteral("mem.res")));
}

QStringList namesOf(const QARes* group)
{
    QStringList names;
    for (const QARes* child : group->toResGroup()->children())
        names.append(child->name());
    return names;
}

}

class TestResources : public QObject {
    Q_OBJECT

private slots:
    void valuesOfEveryKind();
    void sameNamedEntriesKeepFileOrder();
    void listsOfListsAndGroups();
    void words_data();
    void words();
    void strings_data();
    void strings();
    void olderProjectFiles_data();
    void olderProjectFiles();
    void targetPackageIni();
    void settingsDescriptor();
    void search_data();
    void search();
    void isListOf();
    void errorsNameFileAndLineAndReadingGoesOn();
    void syntaxErrors_data();
    void syntaxErrors();
    void unterminatedAtEndOfFile_data();
    void unterminatedAtEndOfFile();
    void missingFile();
    void defaultHandlerWarns();
    void silentReadStillCounts();
    void deepNesting();
    void hostileInputEnds();
};

void TestResources::valuesOfEveryKind()
{
    RecordingHandler handler;
    const Tree root = readFixture(QStringLiteral("values.res"));
    QVERIFY(root);
    QCOMPARE(QARes::errorCount(), 0);
    QVERIFY(handler.errors.isEmpty());
    QVERIFY(root->isGroup());
    QCOMPARE(root->line(), 0);
    QVERIFY(root->name().isEmpty());

    const QARes* title = root->find(QStringLiteral("title"));
    QVERIFY(title && title->toResString());
    QCOMPARE(title->toResString()->value(), QStringLiteral("A \"quoted\" title"));
    QCOMPARE(title->line(), 2);
    QVERIFY(title->fileName().endsWith(QStringLiteral("values.res")));
    QCOMPARE(title->parent(), root.get());

    QCOMPARE(root->find(QStringLiteral("count"))->toResInt()->value(), 42);
    QCOMPARE(root->find(QStringLiteral("offset"))->toResInt()->value(), -7);
    QCOMPARE(root->find(QStringLiteral("offset"))->toText(), QStringLiteral("-7"));
    QCOMPARE(root->find(QStringLiteral("enabled"))->toResBoolean()->value(), true);
    QCOMPARE(root->find(QStringLiteral("hidden"))->toText(), QStringLiteral("false"));
    QCOMPARE(root->find(QStringLiteral("path"))->toText(), QStringLiteral("/usr/local/lib"));
    QCOMPARE(root->find(QStringLiteral("empty"))->toResString()->value(), QString());

    const QARes* leaf = root->search(QStringLiteral("outer.inner.deepest.leaf"));
    QVERIFY(leaf);
    QCOMPARE(leaf->toText(), QStringLiteral("x # not a comment // nor this"));
    QCOMPARE(leaf->line(), 11);
    QCOMPARE(leaf->parent()->parent()->parent()->name(), QStringLiteral("outer"));
    QCOMPARE(root->find(QStringLiteral("outer"))->line(), 8);

    const QAResList* tags = root->search(QStringLiteral("outer.tags"))->toResList();
    QVERIFY(tags);
    QCOMPARE(tags->items().size(), 4);
    QCOMPARE(tags->items().at(2)->type(), QARes::Int);
    QCOMPARE(tags->items().at(3)->type(), QARes::Boolean);
    QVERIFY(tags->items().at(0)->name().isEmpty());
    QCOMPARE(tags->strings(), (QStringList{"one", "two", "3", "true"}));

    // Typed views refuse another type; scalar texts only for scalars.
    QVERIFY(!title->toResInt() && !title->toResGroup() && !title->toResList() && !title->toResBoolean());
    QVERIFY(root->find(QStringLiteral("outer"))->toText().isEmpty());
}

void TestResources::sameNamedEntriesKeepFileOrder()
{
    const Tree root = readFixture(QStringLiteral("values.res"));
    const QList<QARes*> items = root->toResGroup()->findAll(QStringLiteral("item"));
    QCOMPARE(items.size(), 3);
    QCOMPARE(items.at(0)->toText(), QStringLiteral("first"));
    QCOMPARE(items.at(1)->toText(), QStringLiteral("second"));
    QCOMPARE(items.at(2)->toText(), QStringLiteral("third"));
    QCOMPARE(items.at(1)->line(), 17);
    QCOMPARE(items.at(2)->line(), 17);
    QCOMPARE(root->find(QStringLiteral("item")), items.at(0));
}

void TestResources::listsOfListsAndGroups()
{
    const Tree root = readFixture(QStringLiteral("values.res"));
    const QAResList* pairs = root->find(QStringLiteral("pairs"))->toResList();
    QVERIFY(pairs && pairs->isListOf(QARes::List));
    QCOMPARE(pairs->items().at(1)->line(), 20);
    QVERIFY(pairs->strings().isEmpty());  // no scalar items

    const QAResList* records = root->find(QStringLiteral("records"))->toResList();
    QVERIFY(records && records->isListOf(QARes::Group));
    QCOMPARE(records->items().at(1)->search(QStringLiteral("label"))->toText(), QStringLiteral("b"));
    QCOMPARE(records->items().at(1)->find(QStringLiteral("value"))->toResInt()->value(), 2);
}

void TestResources::words_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");

    QTest::newRow("integer") << "42" << int(QARes::Int) << "42";
    QTest::newRow("negative") << "-12" << int(QARes::Int) << "-12";
    QTest::newRow("plus sign") << "+3" << int(QARes::Int) << "3";
    QTest::newRow("leading zeros") << "007" << int(QARes::Int) << "7";
    QTest::newRow("64 bits") << "-9223372036854775808" << int(QARes::Int) << "-9223372036854775808";
    QTest::newRow("true") << "true" << int(QARes::Boolean) << "true";
    QTest::newRow("false") << "false" << int(QARes::Boolean) << "false";
    QTest::newRow("yes is text") << "yes" << int(QARes::String) << "yes";
    QTest::newRow("TRUE is text") << "TRUE" << int(QARes::String) << "TRUE";
    QTest::newRow("decimal point") << "1.5" << int(QARes::String) << "1.5";
    QTest::newRow("sign alone") << "-" << int(QARes::String) << "-";
    QTest::newRow("extension") << ".o" << int(QARes::String) << ".o";
    QTest::newRow("windows path") << "C:\\tools\\bin" << int(QARes::String) << "C:\\tools\\bin";
    QTest::newRow("url keeps //") << "http://host/x" << int(QARes::String) << "http://host/x";
    QTest::newRow("quoted number") << "\"42\"" << int(QARes::String) << "42";
    QTest::newRow("quoted boolean") << "\"true\"" << int(QARes::String) << "true";
    QTest::newRow("non-ASCII") << "\u00e9t\u00e9" << int(QARes::String) << "\u00e9t\u00e9";
}

void TestResources::words()
{
    QFETCH(QString, word);
    QFETCH(int, type);
    QFETCH(QString, text);
    RecordingHandler handler;
    const Tree root = readText(QStringLiteral("v = ") + word + QStringLiteral(" # comment\n"));
    QVERIFY(handler.errors.isEmpty());
    const QARes* v = root->find(QStringLiteral("v"));
    QVERIFY(v);
    QCOMPARE(int(v->type()), type);
    QCOMPARE(v->toText(), text);
}

void TestResources::strings_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("errors");

    QTest::newRow("plain") << R"("plain text")" << "plain text" << 0;
    QTest::newRow("quote and backslash") << R"("a\"b\\c")" << "a\"b\\c" << 0;
    QTest::newRow("control escapes") << R"("1\t2\n3\r")" << "1\t2\n3\r" << 0;
    QTest::newRow("unicode escape") << R"("\u00e9\u20AC")" << "\u00e9\u20ac" << 0;
    QTest::newRow("comment markers are text") << R"("# // text")" << "# // text" << 0;
    QTest::newRow("adjacent strings join") << "\"ab\" \"cd\"\n  \"ef\"" << "abcdef" << 0;
    QTest::newRow("unknown escape kept") << R"("C:\Program")" << "C:\\Program" << 1;
    QTest::newRow("short unicode escape") << R"("\u12")" << "\\u12" << 1;
    QTest::newRow("unterminated at end of line") << "\"open\nnext = 1" << "open" << 1;
}

void TestResources::strings()
{
    QFETCH(QString, source);
    QFETCH(QString, value);
    QFETCH(int, errors);
    RecordingHandler handler;
    const Tree root = readText(QStringLiteral("s = ") + source);
    QCOMPARE(handler.errors.size(), errors);
    QCOMPARE(QARes::errorCount(), errors);
    QCOMPARE(root->find(QStringLiteral("s"))->toResString()->value(), value);
    for (const ReportedError& e : handler.errors)
        QCOMPARE(e.line, 1);
}

void TestResources::olderProjectFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");

    QTest::newRow("project") << "project.res" << "PROJECT = " << "PROJECT.node.kind" << "APPLICATION";
    QTest::newRow("workspace") << "workspace.res" << "WORKSPACE = " << "WORKSPACE.current" << "0";
}

void TestResources::olderProjectFiles()
{
    QFETCH(QString, file);
    QFETCH(QString, marker);
    QFETCH(QString, path);
    QFETCH(QString, text);

    QFile raw(TestPaths::data(QStringLiteral("resources/") + file));
    QVERIFY(raw.open(QIODevice::ReadOnly));
    QVERIFY(QString::fromUtf8(raw.readLine()).startsWith(marker));

    RecordingHandler handler;
    const Tree root = readFixture(file);
    QVERIFY(root);
    QVERIFY(handler.errors.isEmpty());
    QCOMPARE(root->toResGroup()->children().size(), 1);
    QCOMPARE(root->search(path)->toText(), text);
}

void TestResources::targetPackageIni()
{
    RecordingHandler handler;
    const Tree root = readFixture(QStringLiteral("tdp.ini"));
    QVERIFY(root);
    QVERIFY(handler.errors.isEmpty());
    QCOMPARE(root->find(QStringLiteral("NAME"))->toText(), QStringLiteral("GNU C++ on Linux"));
    QCOMPARE(root->find(QStringLiteral("LANGUAGE"))->toText(), QStringLiteral("CPP"));
    QCOMPARE(root->find(QStringLiteral("OBJEXT"))->toText(), QStringLiteral(".o"));
    QCOMPARE(root->find(QStringLiteral("EXEEXT"))->toText(), QString());
    QCOMPARE(root->find(QStringLiteral("DEFAULT_CFLAGS"))->toText(), QStringLiteral("-O2 -g"));
    const QARes* includes = root->find(QStringLiteral("DEFAULT_INCLUDE_PATHS"));
    QVERIFY(includes->isListOf(QARes::String));
    QCOMPARE(includes->toResList()->strings(),
             (QStringList{"/usr/include", "$ZELTAHOME/targets/gcc/include"}));
    QVERIFY(root->find(QStringLiteral("DEFAULT_LIBRARY_PATHS"))->toResList()->items().isEmpty());
    QCOMPARE(root->find(QStringLiteral("J2ME_RESTRICTION"))->toText(), QStringLiteral("false"));
}

void TestResources::settingsDescriptor()
{
    RecordingHandler handler;
    const Tree root = readFixture(QStringLiteral("descriptor.properties"));
    QVERIFY(handler.errors.isEmpty());
    const QARes* properties = root->find(QStringLiteral("properties"));
    QVERIFY(properties && properties->isGroup());
    const QList<QARes*> entries = properties->toResGroup()->findAll(QStringLiteral("property"));
    QCOMPARE(entries.size(), 3);
    QCOMPARE(entries.at(1)->line(), 7);

    const QARes* combo = entries.at(1);
    QCOMPARE(namesOf(combo), (QStringList{"path", "type", "name", "whatThis", "perlVarName", "readonly",
                                          "apply", "unapply", "value", "content"}));
    QCOMPARE(combo->find(QStringLiteral("whatThis"))->toText(),
             QStringLiteral("How hard the compiler works. Higher levels build slower."));
    QCOMPARE(combo->find(QStringLiteral("readonly"))->type(), QARes::Boolean);
    QCOMPARE(combo->find(QStringLiteral("apply"))->toResList()->strings(), (QStringList{"C++", "ADA"}));
    const QAResList* content = combo->find(QStringLiteral("content"))->toResList();
    QCOMPARE(content->items().size(), 3);
    QCOMPARE(content->items().at(2)->toResList()->items().at(1)->toResInt()->value(), 2);

    QCOMPARE(entries.at(2)->find(QStringLiteral("extension"))->toResList()->strings(),
             (QStringList{"*.h", "*.hpp"}));
}

void TestResources::search_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("found");   // text of the result, "<null>" for none, "<group>"

    QTest::newRow("top level") << "count" << "." << "42";
    QTest::newRow("dotted") << "outer.inner.deepest.leaf" << "." << "x # not a comment // nor this";
    QTest::newRow("to a group") << "outer.inner" << "." << "<group>";
    QTest::newRow("other separator") << "outer/inner/deepest/leaf" << "/" << "x # not a comment // nor this";
    QTest::newRow("first of a name") << "item" << "." << "first";
    QTest::newRow("missing step") << "outer.nothing.leaf" << "." << "<null>";
    QTest::newRow("through a scalar") << "count.x" << "." << "<null>";
    QTest::newRow("through a list") << "outer.tags.x" << "." << "<null>";
    QTest::newRow("wrong separator") << "outer/inner" << "." << "<null>";
    QTest::newRow("empty step") << "outer..inner" << "." << "<null>";
    QTest::newRow("empty path") << "" << "." << "<null>";
}

void TestResources::search()
{
    QFETCH(QString, path);
    QFETCH(QString, separator);
    QFETCH(QString, found);
    const Tree root = readFixture(QStringLiteral("values.res"));
    const QARes* res = root->search(path, separator.at(0));
    if (found == QLatin1String("<null>"))
        QVERIFY(!res);
    else if (found == QLatin1String("<group>"))
        QVERIFY(res && res->isGroup());
    else
        QCOMPARE(res ? res->toText() : QStringLiteral("<null>"), found);
}

void TestResources::isListOf()
{
    const Tree root = readText(QStringLiteral("s = (a, \"b\")\nm = (a, 1)\ne = ()\nn = 1\n"));
    QVERIFY(root->find(QStringLiteral("s"))->isListOf(QARes::String));
    QVERIFY(!root->find(QStringLiteral("m"))->isListOf(QARes::String));
    QVERIFY(!root->find(QStringLiteral("m"))->isListOf(QARes::Int));
    QVERIFY(root->find(QStringLiteral("e"))->isListOf(QARes::Int));
    QVERIFY(!root->find(QStringLiteral("n"))->isListOf(QARes::Int));
    QVERIFY(!root->isListOf(QARes::Group));
}

void TestResources::errorsNameFileAndLineAndReadingGoesOn()
{
    QAResErrorHandler* const before = QARes::errorHandler();
    const QString file = TestPaths::data(QStringLiteral("resources/errors.res"));
    Tree root;
    QList<ReportedError> errors;
    {
        RecordingHandler handler;
        QCOMPARE(QARes::errorHandler(), &handler);
        root.reset(QARes::read(file));
        errors = handler.errors;
    }
    QCOMPARE(QARes::errorHandler(), before);

    QVERIFY(root);
    QCOMPARE(QARes::errorCount(), 6);
    QCOMPARE(errors.size(), 6);
    const QList<int> lines{2, 4, 5, 7, 8, 9};
    for (int i = 0; i < errors.size(); ++i) {
        QCOMPARE(errors.at(i).file, file);
        QCOMPARE(errors.at(i).line, lines.at(i));
        QVERIFY(!errors.at(i).message.isEmpty());
    }
    QCOMPARE(namesOf(root.get()),
             (QStringList{"first", "second", "list", "fourth", "open", "fifth", "last"}));
    QCOMPARE(root->find(QStringLiteral("list"))->toResList()->strings(), (QStringList{"a", "b", "c"}));
    QCOMPARE(root->find(QStringLiteral("open"))->toResList()->strings(), (QStringList{"a", "b"}));
    QCOMPARE(root->find(QStringLiteral("fifth"))->toText(), QStringLiteral("bad \\q escape"));
    QCOMPARE(root->find(QStringLiteral("last"))->line(), 10);
}

void TestResources::syntaxErrors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("lines");
    QTest::addColumn<QStringList>("names");   // top-level names read

    QTest::newRow("missing value before next entry") << "a =\nb = 1" << QList<int>{1} << QStringList{"b"};
    QTest::newRow("missing value at end") << "a = 1\nb =" << QList<int>{2} << QStringList{"a"};
    QTest::newRow("quoted name") << "\"a\" = 1\nb = 2" << QList<int>{1} << QStringList{"b"};
    QTest::newRow("stray closers") << "}\n)\na = 1" << QList<int>{1, 2} << QStringList{"a"};
    QTest::newRow("bad line with a block skips the block")
        << "a b = {\n x = 1\n}\nc = 2" << QList<int>{1} << QStringList{"c"};
    QTest::newRow("')' closes the list around an open group")
        << "l = ( { x = 1 )\nb = 2" << QList<int>{1} << QStringList{"l", "b"};
    QTest::newRow("'}' closes the group around an open list")
        << "g = {\n l = ( 1, 2\n}\nb = 2" << QList<int>{2} << QStringList{"g", "b"};
    QTest::newRow("empty list item") << "l = ( 1, , 2 )\nb = 2" << QList<int>{1} << QStringList{"l", "b"};
    QTest::newRow("'=' in a list") << "l = ( 1, = )\nb = 2" << QList<int>{1} << QStringList{"l", "b"};
    QTest::newRow("integer out of range") << "i = 99999999999999999999\nb = 2" << QList<int>{1} << QStringList{"b"};
    QTest::newRow("control character") << "a = 1\n\x01 b = 2" << QList<int>{2} << QStringList{"a", "b"};
}

void TestResources::syntaxErrors()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, lines);
    QFETCH(QStringList, names);
    RecordingHandler handler;
    const Tree root = readText(text);
    QCOMPARE(handler.lines(), lines);
    QCOMPARE(QARes::errorCount(), lines.size());
    for (const ReportedError& e : handler.errors)
        QCOMPARE(e.file, QStringLiteral("mem.res"));
    QCOMPARE(namesOf(root.get()), names);
}

void TestResources::unterminatedAtEndOfFile_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("lines");
    QTest::addColumn<QString>("path");   // still read
    QTest::addColumn<QString>("value");

    QTest::newRow("string") << "a = 1\ns = \"never closed" << QList<int>{2} << "s" << "never closed";
    QTest::newRow("group") << "g = {\n  x = 1\n" << QList<int>{1} << "g.x" << "1";
    QTest::newRow("nested groups") << "g =\n{\n  h = {\n  x = 1\n"
                                   << QList<int>{2, 3} << "g.h.x" << "1";
    QTest::newRow("list") << "a = 1\nl = ( 1, 2" << QList<int>{2} << "a" << "1";
}

void TestResources::unterminatedAtEndOfFile()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, lines);
    QFETCH(QString, path);
    QFETCH(QString, value);
    RecordingHandler handler;
    const Tree root = readText(text);
    QCOMPARE(handler.lines(), lines);
    QVERIFY(root->search(path));
    QCOMPARE(root->search(path)->toText(), value);
}

void TestResources::missingFile()
{
    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("nothing.res"));
    {
        RecordingHandler handler;
        QVERIFY(!QARes::read(missing));
        QCOMPARE(QARes::errorCount(), 1);
        QCOMPARE(handler.errors.size(), 1);
        QCOMPARE(handler.errors.at(0).file, missing);
        QVERIFY(handler.errors.at(0).message.contains(QStringLiteral("cannot open")));

        QVERIFY(!QARes::read(QFile::encodeName(missing).constData()));
        QCOMPARE(handler.errors.size(), 2);
    }

    // An empty file is a file without entries, not a failure.
    const QString empty = dir.filePath(QStringLiteral("empty.res"));
    QFile f(empty);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.close();
    const Tree root(QARes::read(empty));
    QVERIFY(root);
    QCOMPARE(QARes::errorCount(), 0);
    QVERIFY(root->toResGroup()->children().isEmpty());
}

void TestResources::defaultHandlerWarns()
{
    RecordingHandler recording;
    QAResErrorHandler* const replaced = QARes::setErrorHandler(nullptr);
    QCOMPARE(replaced, &recording);
    QTest::ignoreMessage(QtWarningMsg, "mem.res:2: expected '=' after 'b'");
    const Tree root = readText(QStringLiteral("a = 1\nb 2\n"));
    QVERIFY(recording.errors.isEmpty());
    QVERIFY(root->find(QStringLiteral("a")));
    QARes::setErrorHandler(replaced);
}

void TestResources::silentReadStillCounts()
{
    RecordingHandler handler;
    const Tree root(QARes::readText(QStringLiteral("a\nb = \"x"), QStringLiteral("mem.res"), false));
    QCOMPARE(QARes::errorCount(), 2);
    QVERIFY(handler.errors.isEmpty());
    QVERIFY(!QARes::read(QStringLiteral("/nonexistent/dir/x.res"), false));
    QCOMPARE(QARes::errorCount(), 1);
    QVERIFY(handler.errors.isEmpty());
}

void TestResources::deepNesting()
{
    auto nested = [](int depth) {
        QString text;
        for (int i = 0; i < depth; ++i)
            text += QStringLiteral("g = {\n");
        text += QStringLiteral("leaf = 1\n");
        for (int i = 0; i < depth; ++i)
            text += QStringLiteral("}\n");
        return text + QStringLiteral("after = 2\n");
    };

    RecordingHandler handler;
    Tree root = readText(nested(200));
    QVERIFY(handler.errors.isEmpty());
    QString path = QStringLiteral("g");
    for (int i = 1; i < 200; ++i)
        path += QStringLiteral(".g");
    QCOMPARE(root->search(path + QStringLiteral(".leaf"))->toText(), QStringLiteral("1"));
    QVERIFY(root->find(QStringLiteral("after")));

    root = readText(nested(201));
    QCOMPARE(handler.lines(), QList<int>{201});
    QVERIFY(root->search(path));
    QVERIFY(root->search(path)->toResGroup()->children().isEmpty());
    QCOMPARE(root->find(QStringLiteral("after"))->toText(), QStringLiteral("2"));
}

void TestResources::hostileInputEnds()
{
    QByteArray junk;
    for (int i = 0; i < 4096; ++i)
        junk.append(char((i * 7919 + 13) % 256));
    const QStringList inputs{
        QString(100000, QLatin1Char('(')),
        QString(100000, QLatin1Char('{')),
        QStringLiteral("a = ") + QString(50000, QLatin1Char('(')) + QString(50000, QLatin1Char(')')),
        QString::fromUtf8(junk),
        QStringLiteral("\"\\"),
        QStringLiteral("a = \"\\u"),
        QStringLiteral("= = = , ; ) } ( {"),
        QStringLiteral("a = ") + QStringLiteral("\"\\n\" ").repeated(100000) + QLatin1Char('"'),
        QStringLiteral("a = (") + QStringLiteral("\"\\n\", ").repeated(100000),
    };
    for (const QString& input : inputs) {
        const Tree root(QARes::readText(input, QStringLiteral("hostile"), false));
        QVERIFY(root);
        QVERIFY(QARes::errorCount() > 0);
    }
}

QTEST_GUILESS_MAIN(TestResources)
#include "tst_resources.moc"
