// The metrics tree: trees built from files the metrics driver writes over
// the sources of tests/data/metrics, and from hand-made metrics files for
// the aggregates, classes spread over files, testing times and bad input.

#include "QAStMetricManager.h"
#include "QAStProject.h"
#include "QMetElement.h"
#include "QMetMetric.h"
#include "QMetQuery.h"
#include "QMetReader.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A source or a hand-made metrics file of tests/data/metrics.
QString source(const QString& name)
{
    return TestPaths::data(u"metrics/"_s + name);
}

QStringList qualifiedNames(const QList<QMetElement*>& elements)
{
    QStringList names;
    for (const QMetElement* e : elements)
        names << e->qualifiedName();
    names.sort();
    return names;
}

QMetElement* child(const QMetElement* parent, const QString& name)
{
    for (QMetElement* c : parent->children())
        if (c->name() == name)
            return c;
    return nullptr;
}

float value(const QMetElement* e, const QString& key)
{
    bool ok = false;
    const float v = e->metricValue(key, &ok);
    if (!ok)
        qWarning("no metric %s on %s", qPrintable(key), qPrintable(e->name()));
    return ok ? v : std::nanf("");
}

}

#define REQUIRE_DRIVER(files)                                                   \
    if (QStandardPaths::findExecutable(u"perl"_s).isEmpty())      \
        QSKIP("perl is not installed");                                         \
    QVERIFY(!(files).isEmpty())

class TestMetrics : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(QFileInfo::exists(source("calc.c")));
    }

    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(false);
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void driverMeasuresTheFile()
    {
        const QString calc = source("calc.c");
        const QStringList files = runDriver({calc});
        REQUIRE_DRIVER(files);
        QMetQuery query(files);
        query.init();
        // Each function by its line: VG, Statements, NestedLevel, Src1, Src2.
        // one: a single return. sign: if, &&, else if. sum_to: for, while and
        // a do-while; nested braces two deep. describe: two cases and a "?";
        // the braces and "&&" of its string do not count.
        const int functions[][6] = {{5, 1, 1, 0, 1, 0}, {9, 4, 5, 0, 8, 1}, {18, 4, 8, 2, 14, 0}, {33, 4, 8, 1, 15, 1}};
        for (const auto& f : functions) {
            const int line = f[0];
            QVERIFY(query.findLine(calc, line));
            QCOMPARE(query.findLine(calc, line)->type(), u"FUNCTION"_s);
            QCOMPARE(query.itemMetric(calc, line, "VG"), float(f[1]));
            QCOMPARE(query.itemMetric(calc, line, "Statements"), float(f[2]));
            QCOMPARE(query.itemMetric(calc, line, "NestedLevel"), float(f[3]));
            QCOMPARE(query.itemMetric(calc, line, "Src1"), float(f[4]));
            QCOMPARE(query.itemMetric(calc, line, "Src2"), float(f[5]));
        }
        // int one(void) { return 1; }: operators int ( void { return ; (6,
        // all distinct), operands one 1: E = 6/2 * 2/2 * 8 * log2(8) = 72.
        QCOMPARE(query.itemMetric(calc, 5, "Effort"), 72.0f);
        QCOMPARE(query.itemMetric(calc, 5, "TestingTime"), 4.0f);
        // 47 lines: 4 blank, 3 of comment only; comments on 6 lines.
        QCOMPARE(query.getSourceLinesValue(calc), u"40/6"_s);
        QCOMPARE(query.fileMetric(calc, "VG"), 13.0f);
        QCOMPARE(query.fileMetric(calc, "VG_SUM"), 13.0f);
        QCOMPARE(query.fileMetric(calc, "VG_MEAN"), 3.25f);
        QCOMPARE(query.fileMetric(calc, "NestedLevel"), 2.0f);
        QCOMPARE(query.fileMetric(calc, "Statements"), 22.0f);
        QCOMPARE(query.fileMetric(calc, "Statements_SUM"), 22.0f);
    }

    void driverClassGathersMembersOfBothFiles()
    {
        const QString header = source("stack.h"), body = source("stack.cpp");
        const QStringList files = runDriver({body, header});
        REQUIRE_DRIVER(files);
        QMetQuery query(files);
        query.init();
        QMetElement* stack = query.root()->findClass(u"Stack"_s);
        QVERIFY(stack);
        QCOMPARE(stack->fileName(), u"stack.h"_s);
        QCOMPARE(qualifiedNames(stack->children2()),
                 QStringList({"Stack::Stack", "Stack::isFull", "Stack::pop", "Stack::push",
                              "Stack::size", "Stack::~Stack"}));
        // Own inline members: 1 + 1 + 2; with the file's: + 1 + 2 + 2.
        QCOMPARE(value(stack, "VG"), 4.0f);
        QCOMPARE(value(stack, "VG_SUM2"), 9.0f);
        QCOMPARE(query.itemMetric(header, stack->lineNumber(), "VG"), 9.0f);
        QCOMPARE(query.itemMetric(header, stack->lineNumber(), "Src1"), value(stack, "Src1"));
        QMetElement* file = query.fileElement(body);
        QVERIFY(file);
        QCOMPARE(child(file, "~Stack")->type(), u"DESTRUCTOR"_s);
        QCOMPARE(child(file, "operator==")->type(), u"FUNCTION"_s);
        QCOMPARE(qualifiedNames(query.root()->unattachedMembers()), QStringList{"Holder::get"});
        QCOMPARE(value(file, "VG_SUM"), 7.0f);
    }

    void meanDividesByChildrenHavingTheKey()
    {
        QMetTree tree(source("partial.met"));
        tree.init();
        QMetElement* file = tree.fileElement(u"/src/partial.c"_s);
        QVERIFY(file);
        QCOMPARE(value(file, "Calls_SUM"), 12.0f);
        QCOMPARE(value(file, "Calls_MEAN"), 6.0f);
        QCOMPARE(file->counter(u"Calls_MEAN"_s), 2);
        QCOMPARE(value(file, "Calls_MAX"), 8.0f);
        QCOMPARE(value(file, "Calls_STD"), 2.0f);
        QCOMPARE(value(file, "VG_MEAN"), 5.0f);
        QCOMPARE(file->counter(u"VG_MEAN"_s), 3);
        QVERIFY(qAbs(value(file, "VG_STD") - std::sqrt(26.0f / 3)) < 1e-5f);
        QCOMPARE(file->metric(u"Calls_MEAN"_s)->name(), u"Mean of Calls"_s);
        QCOMPARE(file->metric(u"VG_STD"_s)->name(), u"Standard deviation of VG"_s);

        // Making them again replaces them.
        const qsizetype count = file->metrics().size();
        tree.root()->updateMetrics(tree.stroudNumber());
        QCOMPARE(file->metrics().size(), count);
        QCOMPARE(value(file, "VG_SUM"), 15.0f);
    }

    void memberDefinedInAnotherFileJoinsItsClass_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::newRow("declaration first") << QStringList{"declared.met", "defined.met"};
        QTest::newRow("definition first") << QStringList{"defined.met", "declared.met"};
    }
    void memberDefinedInAnotherFileJoinsItsClass()
    {
        QFETCH(QStringList, files);
        for (QString& f : files)
            f = source(f);
        QMetQuery query(files);
        query.init();
        QCOMPARE(query.root()->type(), u"ROOT"_s);
        QCOMPARE(query.root()->name(), u"Root"_s);
        QCOMPARE(query.root()->children().size(), 2);
        QCOMPARE(query.root()->classes().size(), 1);
        QMetElement* shape = query.root()->findClass(u"Shape"_s);
        QVERIFY(shape);
        QCOMPARE(qualifiedNames(shape->children2()),
                 QStringList({"Shape::Shape", "Shape::area", "Shape::scale"}));
        QCOMPARE(value(shape, "VG_SUM2"), 6.0f);
        QCOMPARE(value(shape, "VG_MEAN2"), 2.0f);
        QCOMPARE(shape->counter(u"VG_MEAN2"_s), 3);
        QCOMPARE(value(shape, "VG_MAX2"), 4.0f);
        QCOMPARE(shape->metric(u"VG_SUM2"_s)->name(), u"Sum of VG for complete Class"_s);
        QCOMPARE(value(shape, "VG_SUM"), 1.0f); // its own child only
        QCOMPARE(query.itemMetric("/src/shape.h", 3, "VG"), 6.0f);
        QCOMPARE(query.itemMetric("/src/shape.h", 3, "Effort"), 90.0f);

        // The method of a class that exists nowhere stays in its file.
        QCOMPARE(qualifiedNames(query.root()->unattachedMembers()), QStringList{"Canvas::draw"});
        QCOMPARE(query.fileMetric("/src/shape.cpp", "VG_SUM"), 10.0f);
    }

    void testingTimeFollowsTheStroudNumber()
    {
        QMetQuery query(source("effort.met"));
        QSignalSpy updated(&query, &QMetTree::treeUpdated);
        query.init();
        const QString file = u"/src/effort.c"_s;
        QCOMPARE(query.stroudNumber(), 18.0f);
        QCOMPARE(query.itemMetric(file, 3, "TestingTime"), 2.0f);
        QCOMPARE(query.itemMetric(file, 8, "TestingTime"), 3.0f);
        QCOMPARE(query.fileMetric(file, "TestingTime_SUM"), 5.0f);
        QCOMPARE(query.fileElement(file)->metric("TestingTime_SUM")->name(), u"Sum of Testing Time"_s);
        query.stroudChange(9.0f);
        QCOMPARE(query.stroudNumber(), 9.0f);
        QCOMPARE(query.itemMetric(file, 3, "TestingTime"), 4.0f);
        QCOMPARE(query.fileMetric(file, "TestingTime_SUM"), 10.0f);
        query.init(); // a new reading keeps the number
        QCOMPARE(query.itemMetric(file, 8, "TestingTime"), 6.0f);
        query.stroudChange(0.0f);
        QCOMPARE(query.stroudNumber(), 9.0f);
        QCOMPARE(query.itemMetric(file, 3, "TestingTime"), 4.0f);
        QCOMPARE(updated.count(), 3);
    }

    void queriesFindFilesAndLines()
    {
        QMetQuery query(QStringList{source("declared.met"), source("partial.met")});
        query.init();
        bool ok = true;
        QCOMPARE(query.fileMetric("/src/partial.c", "VG_MAX", &ok), 9.0f);
        QVERIFY(ok);
        query.fileMetric("/src/partial.c", "Nothing", &ok);
        QVERIFY(!ok);
        query.fileMetric("/src/other.c", "VG_MAX", &ok);
        QVERIFY(!ok);
        QCOMPARE(query.fileMetric("/src/../src/./partial.c", "VG_MAX"), 9.0f);
        QCOMPARE(query.findLine("/src/shape.h", 5)->qualifiedName(), u"Shape::area"_s);
        QVERIFY(!query.findLine("/src/shape.h", 4));
        query.itemMetric("/src/shape.h", 4, "VG", &ok);
        QVERIFY(!ok);
        QCOMPARE(query.getSourceLinesValue("/src/partial.c"), QString());
    }

    void textToFloat_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<float>("expected");
        QTest::newRow("whole") << "12" << true << 12.0f;
        QTest::newRow("blanks around") << " 2.5\t" << true << 2.5f;
        QTest::newRow("sign and exponent") << "-1.5e2" << true << -150.0f;
        QTest::newRow("decimal comma") << "1,5" << false << 0.0f;
        QTest::newRow("group separator") << "1,000" << false << 0.0f;
        QTest::newRow("word") << "abc" << false << 0.0f;
        QTest::newRow("trailing text") << "3x" << false << 0.0f;
        QTest::newRow("empty") << "" << false << 0.0f;
        QTest::newRow("nan") << "nan" << false << 0.0f;
        QTest::newRow("infinite") << "inf" << false << 0.0f;
        QTest::newRow("beyond a float") << "1e40" << false << 0.0f;
    }
    void textToFloat()
    {
        QFETCH(QString, text);
        QFETCH(bool, ok);
        QFETCH(float, expected);
        bool converted = !ok;
        QCOMPARE(QMetMetric::textToFloat(text, &converted), expected);
        QCOMPARE(converted, ok);
    }

    void qualifiedNameSeparator_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("expected");
        QTest::newRow("c++ method") << "METHOD" << "a.cpp" << "Shape" << "Shape::area";
        QTest::newRow("constructor") << "CONSTRUCTOR" << "a.h" << "Shape" << "Shape::area";
        QTest::newRow("destructor") << "DESTRUCTOR" << "a.cc" << "Shape" << "Shape::area";
        QTest::newRow("java") << "METHOD" << "Shape.java" << "Shape" << "Shape.area";
        QTest::newRow("java upper case") << "METHOD" << "SHAPE.JAVA" << "Shape" << "Shape.area";
        QTest::newRow("ada") << "METHOD" << "shape.ada" << "Shape" << "Shape.area";
        QTest::newRow("ada spec") << "METHOD" << "shape.ads" << "Shape" << "Shape.area";
        QTest::newRow("ada body") << "METHOD" << "shape.adb" << "Shape" << "Shape.area";
        QTest::newRow("no class") << "METHOD" << "a.cpp" << "" << "area";
        QTest::newRow("function") << "FUNCTION" << "a.cpp" << "Shape" << "area";
    }
    void qualifiedNameSeparator()
    {
        QFETCH(QString, type);
        QFETCH(QString, file);
        QFETCH(QString, className);
        QMetElement e(type, u"area"_s);
        e.setFileName(file);
        e.setClassName(className);
        QTEST(e.qualifiedName(), "expected");
    }

    void unparsableFileIsReportedOthersLoad_data()
    {
        QTest::addColumn<bool>("batch");
        QTest::newRow("window host") << false;
        QTest::newRow("batch mode") << true;
    }
    void unparsableFileIsReportedOthersLoad()
    {
        QFETCH(bool, batch);
        QAStProject::setModeBatch(batch);
        const QString broken = source("broken.met"), missing = m_dir->filePath("missing.met");
        QMetQuery query(QStringList{broken, source("partial.met"), missing, source("effort.met")});
        query.init();
        QAStProject::setModeBatch(false);
        const QStringList expected{"Parsing error for file " + broken, "Parsing error for file " + missing};
        if (batch) {
            QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList());
            QCOMPARE(m_studio->messages(QAStData::MessageConsole), expected);
        } else {
            QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), expected);
        }
        QCOMPARE(query.reader()->files(), QStringList({source("partial.met"), source("effort.met")}));
        QCOMPARE(query.reader()->errors().size(), 2);
        QVERIFY(query.reader()->errors().at(0).startsWith(broken + ": line "));
        QCOMPARE(query.fileMetric("/src/partial.c", "VG_SUM"), 15.0f);
        QCOMPARE(query.fileMetric("/src/effort.c", "TestingTime_SUM"), 5.0f);
    }

    void badValuesAndNamelessElements()
    {
        QMetQuery query(source("values.met"));
        query.init();
        const QStringList errors = query.reader()->errors();
        QCOMPARE(errors.size(), 4);
        QVERIFY(errors.at(0).contains(u"metric \"VG\" of \"f\" left out: its value \"abc\" is not a number"_s));
        QVERIFY(errors.at(1).contains(u"\"1,5\""_s));
        QVERIFY(errors.at(2).contains(u"\"nan\""_s));
        QVERIFY(errors.at(3).contains(u"it has no key"_s));
        const QString file = u"/src/values.c"_s;
        QMetElement* f = query.findLine(file, 2);
        QVERIFY(f);
        QCOMPARE(f->metrics().size(), 1);
        QCOMPARE(value(f, "NestedLevel"), 2.0f);

        // The nameless function counts; the nameless class is not registered
        // but keeps its own member.
        QCOMPARE(query.fileMetric(file, "VG_SUM"), 3.0f);
        QCOMPARE(query.fileMetric(file, "VG_MEAN"), 3.0f);
        QCOMPARE(query.fileMetric(file, "NestedLevel_MEAN"), 3.0f);
        QVERIFY(query.root()->classes().isEmpty());
        QMetElement* nameless = query.findLine(file, 9);
        QVERIFY(nameless && nameless->isClass());
        QCOMPARE(value(nameless, "VG_SUM2"), 7.0f);
        QCOMPARE(query.itemMetric(file, 9, "VG"), 7.0f);
    }

private:
    // Runs the metrics driver over the sources; the metrics files written.
    QStringList runDriver(const QStringList& sources)
    {
        if (QStandardPaths::findExecutable(u"perl"_s).isEmpty())
            return {};
        QAStMetricManager manager(m_dir->filePath(u"met"_s));
        manager.setFileList(sources);
        QSignalSpy ended(&manager, &QAStMetricManager::computeMetricTerminated);
        if (!manager.start() || !ended.wait(60000) || !manager.failedFiles().isEmpty())
            return {};
        return manager.metricFiles();
    }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestMetrics)
#include "tst_metrics.moc"
