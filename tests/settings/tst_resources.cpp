// The resource store (docs/formats/resource-file.md): values, searches, faults
// named with file and line, hostile input; and the settings descriptor's
// loader on it: faults, kinds and fields, groups, visibility, the shipped one.
#include "QAPropertyComboInt.h"
#include "QAPropertyComboString.h"
#include "QAPropertyInt.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyMapLoader.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathItem.h"
#include "QAPropertyYesNo.h"
#include "QARes.h"
#include "QAStPerlGen.h"
#include "QAStPropertyFilters.h"
#include "Recorders.h"
#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace QAStPropertyFilters;

namespace {

using Tree = std::unique_ptr<QARes>;

Tree readFixture(const QString& name)
{
    return Tree(QARes::read(TestPaths::data(u"resources/"_s + name)));
}

Tree readText(const QString& text)
{
    return Tree(QARes::readText(text, u"mem.res"_s));
}

QStringList namesOf(const QARes* group)
{
    QStringList names;
    for (const QARes* child : group->toResGroup()->children())
        names.append(child->name());
    return names;
}

using Descriptor = std::unique_ptr<QAPropertyMapGroup>;

QString fixture(const QString& name)
{
    return TestPaths::data(u"descriptor/"_s + name);
}

QString realDescriptor()
{
    return TestPaths::installTree() + u"/korvilprojectsettings.properties"_s;
}

Descriptor load(const QString& file, RecordingLog* log)
{
    QAPropertyMapLoader loader;
    return Descriptor(loader.load(file, table(), masks(), log));
}

// Every property below the group, depth first.
QList<QAProperty*> allProperties(const QAPropertyGroup* group)
{
    QList<QAProperty*> all;
    for (QAProperty* child : group->children()) {
        all.append(child);
        if (child->isGroup())
            all += allProperties(static_cast<const QAPropertyGroup*>(child));
    }
    return all;
}

QAProperty* findTag(const QAPropertyGroup* root, const QString& tag)
{
    for (QAProperty* p : allProperties(root)) {
        if (!p->isGroup() && p->tag() == tag)
            return p;
    }
    return nullptr;
}

QStringList leafTags(const QAPropertyGroup* root)
{
    QStringList tags;
    for (const QAProperty* p : allProperties(root)) {
        if (!p->isGroup())
            tags.append(p->tag());
    }
    return tags;
}

// Group names and leaf tags a property sheet shows for the context, in order.
QStringList shown(const QAPropertyGroup* group, unsigned int context)
{
    QStringList names;
    for (QAProperty* child : visibleChildren(group, context)) {
        if (child->isGroup()) {
            names.append(child->name());
            names += shown(static_cast<QAPropertyGroup*>(child), context);
        } else {
            names.append(child->tag());
        }
    }
    return names;
}

// A loader that knows one more type, built through the hooks.
class PercentLoader : public QAPropertyMapLoader {
protected:
    QAProperty* createProperty(const QString& type, const QString& tag, QARes* entry) override
    {
        if (type == QLatin1String("Percent"))
            return new QAPropertyMapInt(tag, QString(), 0, 100);
        return QAPropertyMapLoader::createProperty(type, tag, entry);
    }

    bool init(QAPropertyMapInt* property, const QString& tag, QARes* entry) override
    {
        property->setSuffix(u"%"_s);
        return QAPropertyMapLoader::init(property, tag, entry);
    }
};

}

class TestResources : public QObject {
    Q_OBJECT
private slots:
    void valuesOfEveryKind()
    {
        RecordingResErrors handler;
        const Tree root = readFixture(u"values.res"_s);
        QVERIFY(root);
        QCOMPARE(QARes::errorCount(), 0);
        QVERIFY(handler.errors.isEmpty());
        QVERIFY(root->isGroup());
        QCOMPARE(root->line(), 0);
        QVERIFY(root->name().isEmpty());

        const QARes* title = root->find(u"title"_s);
        QVERIFY(title && title->toResString());
        QCOMPARE(title->toResString()->value(), u"A \"quoted\" title"_s);
        QCOMPARE(title->line(), 2);
        QVERIFY(title->fileName().endsWith(u"values.res"_s));
        QCOMPARE(title->parent(), root.get());

        QCOMPARE(root->find(u"count"_s)->toResInt()->value(), 42);
        QCOMPARE(root->find(u"enabled"_s)->toResBoolean()->value(), true);
        QCOMPARE(root->find(u"empty"_s)->toResString()->value(), QString());

        const QARes* leaf = root->search(u"outer.inner.deepest.leaf"_s);
        QVERIFY(leaf);
        QCOMPARE(leaf->toText(), u"x # not a comment // nor this"_s);
        QCOMPARE(leaf->line(), 11);
        QCOMPARE(leaf->parent()->parent()->parent()->name(), u"outer"_s);
        QCOMPARE(root->find(u"outer"_s)->line(), 8);

        const QAResList* tags = root->search(u"outer.tags"_s)->toResList();
        QVERIFY(tags);
        QCOMPARE(tags->items().size(), 4);
        QCOMPARE(tags->items().at(2)->type(), QARes::Int);
        QCOMPARE(tags->items().at(3)->type(), QARes::Boolean);
        QVERIFY(tags->items().at(0)->name().isEmpty());
        QCOMPARE(tags->strings(), (QStringList{"one", "two", "3", "true"}));

        // Typed views refuse another type; scalar texts only for scalars.
        QVERIFY(!title->toResInt() && !title->toResGroup() && !title->toResList() && !title->toResBoolean());
        QVERIFY(root->find(u"outer"_s)->toText().isEmpty());

        // Entries of one name keep the file's order.
        const QList<QARes*> items = root->toResGroup()->findAll(u"item"_s);
        QCOMPARE(items.size(), 3);
        QCOMPARE(QStringList({items.at(0)->toText(), items.at(1)->toText(), items.at(2)->toText()}),
                 QStringList({"first", "second", "third"}));
        QCOMPARE(items.at(1)->line(), 17);
        QCOMPARE(items.at(2)->line(), 17);
        QCOMPARE(root->find(u"item"_s), items.at(0));

        // Lists of lists and of groups.
        const QAResList* pairs = root->find(u"pairs"_s)->toResList();
        QVERIFY(pairs && pairs->isListOf(QARes::List));
        QCOMPARE(pairs->items().at(1)->line(), 20);
        QVERIFY(pairs->strings().isEmpty()); // no scalar items
        const QAResList* records = root->find(u"records"_s)->toResList();
        QVERIFY(records && records->isListOf(QARes::Group));
        QCOMPARE(records->items().at(1)->search(u"label"_s)->toText(), u"b"_s);
        QCOMPARE(records->items().at(1)->find(u"value"_s)->toResInt()->value(), 2);
    }

    // A value after "=": its type and text, and the faults it gives, all on
    // its line.
    void values_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("errors");
        QTest::newRow("integer") << "42" << int(QARes::Int) << "42" << 0;
        QTest::newRow("negative") << "-12" << int(QARes::Int) << "-12" << 0;
        QTest::newRow("plus sign") << "+3" << int(QARes::Int) << "3" << 0;
        QTest::newRow("leading zeros") << "007" << int(QARes::Int) << "7" << 0;
        QTest::newRow("64 bits") << "-9223372036854775808" << int(QARes::Int) << "-9223372036854775808" << 0;
        QTest::newRow("true") << "true" << int(QARes::Boolean) << "true" << 0;
        QTest::newRow("yes is text") << "yes" << int(QARes::String) << "yes" << 0;
        QTest::newRow("TRUE is text") << "TRUE" << int(QARes::String) << "TRUE" << 0;
        QTest::newRow("decimal point") << "1.5" << int(QARes::String) << "1.5" << 0;
        QTest::newRow("sign alone") << "-" << int(QARes::String) << "-" << 0;
        QTest::newRow("extension") << ".o" << int(QARes::String) << ".o" << 0;
        QTest::newRow("windows path") << "C:\\tools\\bin" << int(QARes::String) << "C:\\tools\\bin" << 0;
        QTest::newRow("url keeps //") << "http://host/x" << int(QARes::String) << "http://host/x" << 0;
        QTest::newRow("quoted number") << "\"42\"" << int(QARes::String) << "42" << 0;
        QTest::newRow("non-ASCII") << "\u00e9t\u00e9" << int(QARes::String) << "\u00e9t\u00e9" << 0;
        QTest::newRow("quote and backslash") << "\"a\\\"b\\\\c\"" << int(QARes::String) << "a\"b\\c" << 0;
        QTest::newRow("control escapes") << "\"1\\t2\\n3\\r\"" << int(QARes::String) << "1\t2\n3\r" << 0;
        QTest::newRow("unicode escape") << "\"\\u00e9\\u20AC\"" << int(QARes::String) << "\u00e9\u20ac" << 0;
        QTest::newRow("comment markers are text") << "\"# // text\"" << int(QARes::String) << "# // text" << 0;
        QTest::newRow("adjacent strings join") << "\"ab\" \"cd\"\n  \"ef\"" << int(QARes::String) << "abcdef" << 0;
        QTest::newRow("unknown escape kept") << "\"C:\\Program\"" << int(QARes::String) << "C:\\Program" << 1;
        QTest::newRow("short unicode escape") << "\"\\u12\"" << int(QARes::String) << "\\u12" << 1;
        QTest::newRow("unterminated at end of line") << "\"open\nnext = 1" << int(QARes::String) << "open" << 1;
    }
    void values()
    {
        QFETCH(QString, source);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(int, errors);
        RecordingResErrors handler;
        const Tree root = readText(u"v = "_s + source + u" # comment\n"_s);
        QCOMPARE(handler.errors.size(), errors);
        QCOMPARE(QARes::errorCount(), errors);
        for (const RecordingResErrors::Error& e : handler.errors)
            QCOMPARE(e.line, 1);
        const QARes* v = root->find(u"v"_s);
        QVERIFY(v);
        QCOMPARE(int(v->type()), type);
        QCOMPARE(v->toText(), text);
    }

    void search_data()
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
    void search()
    {
        QFETCH(QString, path);
        QFETCH(QString, separator);
        QFETCH(QString, found);
        const Tree root = readFixture(u"values.res"_s);
        const QARes* res = root->search(path, separator.at(0));
        if (found == QLatin1String("<null>"))
            QVERIFY(!res);
        else if (found == QLatin1String("<group>"))
            QVERIFY(res && res->isGroup());
        else
            QCOMPARE(res ? res->toText() : u"<null>"_s, found);
    }

    void isListOf()
    {
        const Tree root = readText(u"s = (a, \"b\")\nm = (a, 1)\ne = ()\nn = 1\n"_s);
        QVERIFY(root->find(u"s"_s)->isListOf(QARes::String));
        QVERIFY(!root->find(u"m"_s)->isListOf(QARes::String));
        QVERIFY(!root->find(u"m"_s)->isListOf(QARes::Int));
        QVERIFY(root->find(u"e"_s)->isListOf(QARes::Int));
        QVERIFY(!root->find(u"n"_s)->isListOf(QARes::Int));
        QVERIFY(!root->isListOf(QARes::Group));
    }

    void errorsNameFileAndLineAndReadingGoesOn()
    {
        QAResErrorHandler* const before = QARes::errorHandler();
        const QString file = TestPaths::data(u"resources/errors.res"_s);
        Tree root;
        QList<RecordingResErrors::Error> errors;
        {
            RecordingResErrors handler;
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
        QCOMPARE(root->find(u"list"_s)->toResList()->strings(), (QStringList{"a", "b", "c"}));
        QCOMPARE(root->find(u"open"_s)->toResList()->strings(), (QStringList{"a", "b"}));
        QCOMPARE(root->find(u"fifth"_s)->toText(), u"bad \\q escape"_s);
        QCOMPARE(root->find(u"last"_s)->line(), 10);
    }

    void syntaxErrors_data()
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
    void syntaxErrors()
    {
        QFETCH(QString, text);
        QFETCH(QList<int>, lines);
        QFETCH(QStringList, names);
        RecordingResErrors handler;
        const Tree root = readText(text);
        QCOMPARE(handler.lines(), lines);
        QCOMPARE(QARes::errorCount(), lines.size());
        for (const RecordingResErrors::Error& e : handler.errors)
            QCOMPARE(e.file, u"mem.res"_s);
        QCOMPARE(namesOf(root.get()), names);
    }

    void unterminatedAtEndOfFile_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("lines");
        QTest::addColumn<QString>("path");   // still read
        QTest::addColumn<QString>("value");

        QTest::newRow("string") << "a = 1\ns = \"never closed" << QList<int>{2} << "s" << "never closed";
        QTest::newRow("group") << "g = {\n  x = 1\n" << QList<int>{1} << "g.x" << "1";
        QTest::newRow("nested groups") << "g =\n{\n  h = {\n  x = 1\n" << QList<int>{2, 3} << "g.h.x" << "1";
        QTest::newRow("list") << "a = 1\nl = ( 1, 2" << QList<int>{2} << "a" << "1";
    }
    void unterminatedAtEndOfFile()
    {
        QFETCH(QString, text);
        QFETCH(QList<int>, lines);
        QFETCH(QString, path);
        QFETCH(QString, value);
        RecordingResErrors handler;
        const Tree root = readText(text);
        QCOMPARE(handler.lines(), lines);
        QVERIFY(root->search(path));
        QCOMPARE(root->search(path)->toText(), value);
    }

    void missingFile()
    {
        QTemporaryDir dir;
        const QString missing = dir.filePath(u"nothing.res"_s);
        {
            RecordingResErrors handler;
            QVERIFY(!QARes::read(missing));
            QCOMPARE(QARes::errorCount(), 1);
            QCOMPARE(handler.errors.size(), 1);
            QCOMPARE(handler.errors.at(0).file, missing);
            QVERIFY(handler.errors.at(0).message.contains(u"cannot open"_s));

            QVERIFY(!QARes::read(QFile::encodeName(missing).constData()));
            QCOMPARE(handler.errors.size(), 2);
        }

        // An empty file is a file without entries, not a failure.
        const QString empty = dir.filePath(u"empty.res"_s);
        QVERIFY(QFile(empty).open(QIODevice::WriteOnly));
        const Tree root(QARes::read(empty));
        QVERIFY(root);
        QCOMPARE(QARes::errorCount(), 0);
        QVERIFY(root->toResGroup()->children().isEmpty());
    }

    // Without a handler a fault is a warning; a silent read tells nobody
    // but still counts.
    void defaultHandlerAndSilentRead()
    {
        RecordingResErrors recording;
        QAResErrorHandler* const replaced = QARes::setErrorHandler(nullptr);
        QCOMPARE(replaced, &recording);
        QTest::ignoreMessage(QtWarningMsg, "mem.res:2: expected '=' after 'b'");
        const Tree root = readText(u"a = 1\nb 2\n"_s);
        QVERIFY(root->find(u"a"_s));
        QARes::setErrorHandler(replaced);
        const Tree silent(QARes::readText(u"a\nb = \"x"_s, u"mem.res"_s, false));
        QCOMPARE(QARes::errorCount(), 2);
        QVERIFY(!QARes::read(u"/nonexistent/dir/x.res"_s, false));
        QCOMPARE(QARes::errorCount(), 1);
        QVERIFY(recording.errors.isEmpty());
    }

    void deepNesting()
    {
        auto nested = [](int depth) {
            QString text;
            for (int i = 0; i < depth; ++i)
                text += u"g = {\n"_s;
            text += u"leaf = 1\n"_s;
            for (int i = 0; i < depth; ++i)
                text += u"}\n"_s;
            return text + u"after = 2\n"_s;
        };

        RecordingResErrors handler;
        Tree root = readText(nested(200));
        QVERIFY(handler.errors.isEmpty());
        QString path = u"g"_s;
        for (int i = 1; i < 200; ++i)
            path += u".g"_s;
        QCOMPARE(root->search(path + u".leaf"_s)->toText(), u"1"_s);
        QVERIFY(root->find(u"after"_s));

        root = readText(nested(201));
        QCOMPARE(handler.lines(), QList<int>{201});
        QVERIFY(root->search(path));
        QVERIFY(root->search(path)->toResGroup()->children().isEmpty());
        QCOMPARE(root->find(u"after"_s)->toText(), u"2"_s);
    }

    void hostileInputEnds()
    {
        QByteArray junk;
        for (int i = 0; i < 4096; ++i)
            junk.append(char((i * 7919 + 13) % 256));
        const QStringList inputs{
            QString(100000, QLatin1Char('(')),
            QString(100000, QLatin1Char('{')),
            u"a = "_s + QString(50000, QLatin1Char('(')) + QString(50000, QLatin1Char(')')),
            QString::fromUtf8(junk),
            u"\"\\"_s,
            u"a = \"\\u"_s,
            u"= = = , ; ) } ( {"_s,
            u"a = "_s + u"\"\\n\" "_s.repeated(100000) + QLatin1Char('"'),
            u"a = ("_s + u"\"\\n\", "_s.repeated(100000),
        };
        for (const QString& input : inputs) {
            const Tree root(QARes::readText(input, u"hostile"_s, false));
            QVERIFY(root);
            QVERIFY(QARes::errorCount() > 0);
        }
    }

    // --- the settings descriptor

    void fileFaultsLoadNothing_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("message");
        const QString missing = fixture(u"missing.properties"_s);
        const QString other = fixture(u"notdescriptor.properties"_s);
        const QString alone = fixture(u"nogroup.properties"_s);
        QTest::newRow("missing") << missing << missing + u": not found"_s;
        QTest::newRow("directory") << fixture(QString()) << fixture(QString()) + u": not found"_s;
        QTest::newRow("not a descriptor") << other << other + u" is not property definition file"_s;
        QTest::newRow("no group") << alone << alone + u": no group defined in the file"_s;
    }
    void fileFaultsLoadNothing()
    {
        QFETCH(QString, file);
        QFETCH(QString, message);
        RecordingLog log;
        QVERIFY(!load(file, &log));
        QCOMPARE(log.messages, QStringList{message});
    }
    // The loader routes the reader's faults to its own handler while it reads.
    void syntaxErrorsAreCountedAndTheRestLoads()
    {
        RecordingResErrors outside;
        const QString file = fixture(u"syntax.properties"_s);
        RecordingLog log;
        const Descriptor root = load(file, &log);
        QCOMPARE(QARes::errorHandler(), &outside);
        QVERIFY(outside.errors.isEmpty());
        QCOMPARE(log.messages.size(), 2);
        QVERIFY2(log.messages.at(0).startsWith(file + u":7: "_s), qPrintable(log.messages.at(0)));
        QCOMPARE(log.messages.at(1), u"1 Error(s) in property file "_s + file);
        QVERIFY(root);
        QCOMPARE(leafTags(root.get()), (QStringList{"before", "after"}));
    }

    void faultyEntriesAreReportedAndSkipped()
    {
        RecordingLog log;
        const Descriptor root = load(fixture(u"faults.properties"_s), &log);
        const QString notExpected = u"Property at line %1: the value of the field '%2' is not expected"_s;
        const QStringList expected = {
            "Property at line 4: the field path is required in property definition",
            "Property at line 5: the field type is required in property definition",
            "Property at line 6: the field path is required in property definition",
            "Property at line 6: the field type is required in property definition",
            "Property at line 7: unable to find the group 'Missing'",
            "Property at line 8: unable to find the group 'Cmmon'",
            "Property at line 9: unable to find the path '/'",
            "Property at line 10: the type 'Slider' is not expected",
            "Property at line 11: the field tag is required in property definition",
            "The value for filter 'COBOL' does not exist in the loader",
            notExpected.arg(13).arg("value"),
            notExpected.arg(14).arg("min"),
            notExpected.arg(15).arg("content"),
            notExpected.arg(16).arg("mode"),
            notExpected.arg(17).arg("button"),
            notExpected.arg(18).arg("readonly"),
            "The value for filter 'PASCAL' does not exist in the loader",
            "Property at line 20: unable to find the group 'Broken'",
        };
        QCOMPARE(log.messages, expected);
        QVERIFY(root);
        QCOMPARE(root->count(), 1);
        QCOMPARE(leafTags(root.get()), QStringList{"kept"});
    }

    void everyKindWithItsOwnFields()
    {
        RecordingLog log;
        const Descriptor root = load(fixture(u"kinds.properties"_s), &log);
        QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
        QVERIFY(root);
        QCOMPARE(root->name(), u"Common"_s);
        const auto* group = dynamic_cast<QAPropertyMapGroup*>(root->children().value(0));
        QVERIFY(group);
        QCOMPARE(group->name(), u"All kinds"_s);
        QCOMPARE(group->whatThis(), u"Every kind once."_s);
        QCOMPARE(leafTags(root.get()),
                 (QStringList{"count", "level", "flag", "answer", "options", "format", "rules", "names", "dirs"}));

        auto* count = dynamic_cast<QAPropertyMapInt*>(group->property("count"));
        QVERIFY(count);
        QCOMPARE(count->name(), u"Count"_s);
        QCOMPARE(count->whatThis(), u"How many."_s);
        QCOMPARE(count->perlVarName(), u"COUNT"_s);
        QVERIFY(count->readOnly());
        QCOMPARE(count->initValue(), QVariant(12));
        QCOMPARE(count->minimum(), -5);
        QCOMPARE(count->maximum(), 500);
        QCOMPARE(count->step(), 5);
        QCOMPARE(count->suffix(), u" items"_s);

        auto* level = dynamic_cast<QAPropertyMapComboInt*>(group->property("level"));
        QVERIFY(level);
        QVERIFY(!level->readOnly());
        QCOMPARE(level->itemTexts(), (QStringList{"Low", "Medium", "High"}));
        QCOMPARE(level->itemValues(), (QList<int>{0, 1, 2}));
        QCOMPARE(level->initValue(), QVariant(2));

        QCOMPARE(group->property("flag")->type(), QMetaType::Bool);
        QCOMPARE(group->property("flag")->initValue(), QVariant(true));
        QVERIFY(dynamic_cast<QAPropertyYesNo*>(group->property("answer")));
        QCOMPARE(group->property("answer")->initValue(), QVariant(false));
        QCOMPARE(group->property("options")->initValue(), QVariant(u"-g -O2"_s));
        QCOMPARE(group->property("options")->perlVarName(), u"OPTIONS"_s);

        auto* format = dynamic_cast<QAPropertyMapComboString*>(group->property("format"));
        QVERIFY(format);
        QCOMPARE(format->itemTexts(), (QStringList{"Executable", "Shared library"}));
        QCOMPARE(format->itemValues(), (QStringList{"EXE", "DLL"}));
        QCOMPARE(format->initValue(), QVariant(u"DLL"_s));

        auto* rules = dynamic_cast<QAPropertyMapPathItem*>(group->property("rules"));
        QVERIFY(rules);
        QCOMPARE(rules->mode(), QAPropertyFileChooser::AnyFile);
        QCOMPARE(rules->filters(), (QStringList{"Rule files (*.xml)", "All files (*)"}));
        QCOMPARE(rules->initValue(), QVariant(u"<default>"_s));

        QCOMPARE(group->property("names")->initValue(), QVariant(QStringList{"one", "two"}));

        auto* dirs = dynamic_cast<QAPropertyMapPathBox*>(group->property("dirs"));
        QVERIFY(dirs);
        QCOMPARE(dirs->mode(), QAPropertyFileChooser::Directory);
        QCOMPARE(dirs->buttons(), QAPropertyPathBox::SingleWithoutMoves);
        QCOMPARE(dirs->filters(), QStringList{"*.h"});
        QCOMPARE(dirs->initValue(), QVariant(QStringList{"/usr/include", "include"}));
    }

    void groupsNestByPath()
    {
        RecordingLog log;
        const Descriptor root = load(fixture(u"nested.properties"_s), &log);
        QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
        QCOMPARE(root->count(), 2);
        QCOMPARE(root->nbGroup(), 1);
        QCOMPARE(root->children().at(1)->tag(), u"topLevel"_s);
        auto* build = static_cast<QAPropertyGroup*>(root->children().at(0));
        QCOMPARE(build->name(), u"Build"_s);
        QCOMPARE(build->nbGroup(), 2);
        auto* compiler = static_cast<QAPropertyGroup*>(build->children().at(0));
        QCOMPARE(compiler->name(), u"Compiler"_s);
        QCOMPARE(compiler->count(), 2);
        QVERIFY(compiler->property(u"cflags"_s));
        auto* warnings = static_cast<QAPropertyGroup*>(compiler->children().at(0));
        QVERIFY(warnings->property(u"strict"_s));
        QVERIFY(static_cast<QAPropertyGroup*>(build->children().at(1))->property(u"ldflags"_s));
        // Map groups all the way down, so one call binds the tree.
        QVERIFY(dynamic_cast<QAPropertyMapGroup*>(warnings));
    }

    void hooksAddTypes()
    {
        RecordingLog log;
        PercentLoader loader;
        const Descriptor root(loader.load(fixture(u"percent.properties"_s), table(), masks(), &log));
        QVERIFY(log.messages.isEmpty());
        auto* ratio = dynamic_cast<QAPropertyMapInt*>(findTag(root.get(), u"ratio"_s));
        QVERIFY(ratio);
        QCOMPARE(ratio->maximum(), 100);
        QCOMPARE(ratio->suffix(), u"%"_s);
        QCOMPARE(ratio->initValue(), QVariant(40));
    }

    void visibility_data()
    {
        QTest::addColumn<unsigned int>("context");
        QTest::addColumn<QStringList>("visible");
        QTest::newRow("C application in the studio") << context(LanguageC, Application, Studio)
            << QStringList{"Everywhere", "plain", "notJava", "common"};
        QTest::newRow("C++ object testing") << context(LanguageCpp, ObjectTesting, Studio)
            << QStringList{"Everywhere", "plain", "cppOnly", "cppOrAda", "notJava", "cppObjectTesting", "common"};
        QTest::newRow("C++ unit testing under the RTA host") << context(LanguageCpp, UnitTesting, EclipseRta)
            << QStringList{"Everywhere", "plain", "cppOnly", "cppOrAda", "notJava", "unitOrProject", "rtaOnly", "common"};
        QTest::newRow("Ada library") << context(LanguageAda, Library, Studio)
            << QStringList{"Everywhere", "plain", "cppOrAda", "notJava", "common"};
        QTest::newRow("Java application") << context(LanguageJava, Application, Studio)
            << QStringList{"Everywhere", "plain", "common", "adaJavaNotLibrary", "Java only children", "javaLeaf"};
        QTest::newRow("C system testing") << context(LanguageC, SystemTesting, Studio)
            << QStringList{"Everywhere", "plain", "notJava", "common", "System testing", "stLeaf"};
        QTest::newRow("Java virtual tester under TPTP") << context(LanguageJava, VirtualTester, EclipseTptp)
            << QStringList{"Everywhere", "plain", "common", "adaJavaNotLibrary", "System testing", "stLeaf",
                           "stJava", "Java only children", "javaLeaf"};
        QTest::newRow("C project, host unknown") << (unsigned(LanguageC) | unsigned(Project))
            << QStringList{"Everywhere", "plain", "notJava", "unitOrProject", "common"};
    }
    void visibility()
    {
        QFETCH(unsigned int, context);
        QFETCH(QStringList, visible);
        RecordingLog log;
        const Descriptor root = load(fixture(u"visibility.properties"_s), &log);
        QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
        QCOMPARE(shown(root.get(), context), visible);
        for (const QAProperty* p : allProperties(root.get())) {
            const QString id = p->isGroup() ? p->name() : p->tag();
            QCOMPARE(isApplicable(p, context), visible.contains(id));
        }
    }

    void hiddenGroupsHideWhatTheyHold()
    {
        RecordingLog log;
        const Descriptor root = load(fixture(u"visibility.properties"_s), &log);
        const QAProperty* hiddenLeaf = findTag(root.get(), u"hiddenLeaf"_s);
        const auto* hidden = hiddenLeaf->parentGroup();
        const unsigned int anywhere = context(LanguageCpp, Project, Studio);
        // The leaf has no restriction of its own; its group's hides it.
        QCOMPARE(hiddenLeaf->applyMask() | hiddenLeaf->unapplyMask(), 0u);
        QVERIFY(!isApplicable(hiddenLeaf, anywhere));
        QVERIFY(visibleChildren(hidden, anywhere).isEmpty());
        // "Common" in apply restricts nothing; in unapply it hides everywhere.
        QCOMPARE(findTag(root.get(), u"common"_s)->applyMask(), 0u);
        QCOMPARE(hidden->unapplyMask(), unsigned(LanguageMask | KindMask | 0x07000000u));
        QVERIFY(isApplicable(root.get(), anywhere));
    }

    // The shipped descriptor loads cleanly; the analysis switches are plain
    // Booleans; tags are unique; each setting shows at the project of some
    // language, where it is set for the whole tree.
    void realDescriptorIsComplete()
    {
        RecordingLog log;
        const Descriptor root = load(realDescriptor(), &log);
        QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
        QVERIFY(root);
        QVERIFY(root->nbGroup() >= 10);
        for (const char* key : {"memoryProfiling", "performanceProfiling", "codeCoverage", "runtimeTracing",
                                "contractCheck", "staticMetrics", "misraCheck", "systemTestingProbes"}) {
            const QAProperty* property = findTag(root.get(), QString::fromLatin1(key));
            QVERIFY2(property, key);
            QCOMPARE(property->type(), QMetaType::Bool);
            QVERIFY2(property->perlVarName().isEmpty(), key);
            QCOMPARE(property->initValue(), QVariant(false));
        }
        for (const char* unused : {"name", "encoding"})
            QVERIFY2(!findTag(root.get(), QString::fromLatin1(unused)), unused);

        QStringList tags = leafTags(root.get());
        const qsizetype all = tags.size();
        tags.removeDuplicates();
        QCOMPARE(tags.size(), all);

        for (const QAProperty* p : allProperties(root.get())) {
            const QString id = p->isGroup() ? p->name() : p->tag();
            QVERIFY2(!p->perlVarName().startsWith(QLatin1Char('$')) && !p->perlVarName().startsWith(QLatin1Char('@')),
                     qPrintable(id));
            bool atTheTop = false;
            for (Language language : {LanguageC, LanguageCpp, LanguageAda, LanguageJava})
                atTheTop = atTheTop || isApplicable(p, context(language, Project, Studio));
            QVERIFY2(atTheTop, qPrintable(id));
        }

        // Every setting the environment script reads, in its settings part
        // or outside it, is described with a name and help, in the type of
        // the script's form: S a string, N a number or switch, L a list.
        // (That each line's variable is the setting's: TestEnvironmentScript.)
        // "key:VARIABLE:form", "*" for any variable, empty for none.
        QStringList rows = QStringLiteral(
            "executionFlag::N targetPath::S targetPathAsRelative::N envVariables::L testProgram:TESTPROGRAM:S "
            "sourceFile:SRCFILE:S otiFile:OTIFILE:S xrdFile:XRDFILE:S printbuffer::N "
            "printbuffersize:ATO_PRINT_BUFFER_SIZE:N intermediateFile:ATU_INTERMEDIATE_FILE:S atc_onthefly::N "
            "att_split_prefixe:ATT_SPLIT_PREFIX:S misraconf:MISRA_CONF:S generationFormat::S "
            "libraryDynamicExt::S libraryStaticExt::S").split(u' ');
        using Form = QAStPerlGen::Form;
        for (const QAStPerlGen::SettingLine& line : QAStPerlGen::settingLines()) {
            const bool list = line.form == Form::PathList || line.form == Form::StringList;
            if (line.key)
                rows << QLatin1String(line.key) + (line.form == Form::Number ? u":*:N"_s : list ? u":*:L"_s : u":*:S"_s);
        }
        for (const QString& row : rows) {
            const QStringList f = row.split(u':');
            const QAProperty* property = findTag(root.get(), f[0]);
            QVERIFY2(property, qPrintable(f[0] + u" is not described"_s));
            QVERIFY2(!property->name().isEmpty() && !property->whatThis().isEmpty(), qPrintable(f[0]));
            QVERIFY2(f[1] == u"*"_s || property->perlVarName() == f[1], qPrintable(f[0]));
            const QMetaType::Type type = property->type();
            const bool typed = f[2] == u"S"_s   ? type == QMetaType::QString
                               : f[2] == u"L"_s ? type == QMetaType::QStringList
                                                : type == QMetaType::Int || type == QMetaType::Bool;
            QVERIFY2(typed, qPrintable(f[0]));
            QVERIFY2(!property->hasInitValue() || property->initValue().typeId() == int(type), qPrintable(f[0]));
        }
    }
};

QTEST_GUILESS_MAIN(TestResources)
#include "tst_resources.moc"
