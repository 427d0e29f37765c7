// Metrics: the driver run by the real interpreter (paths with blanks and
// quotes, files one after another, progress and abort), the tree read from
// its files and from hand-made ones (aggregates, classes over files, testing
// times, bad input), and the example project against counts made by hand by
// the rules of docs/formats/metrics.md: when one of its sources changes, the
// line check of its units fails first and the counts must be made again.
#include "QAStMetricManager.h"
#include "QAStProject.h"
#include "QMetElement.h"
#include "QMetMetric.h"
#include "QMetQuery.h"
#include "QMetReader.h"
#include "Recorders.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QPointer>
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

// Halstead effort from the four counts: V = (N1 + N2) log2(n1 + n2),
// D = (n1 / 2)(N2 / n2), E = D V.
double effort(int n1, int N1, int n2, int N2)
{
    return (N1 + N2) * std::log2(double(n1 + n2)) * (n1 / 2.0) * (double(N2) / n2);
}

double mean(const QList<double>& values)
{
    double sum = 0;
    for (double v : values)
        sum += v;
    return sum / values.size();
}

// The population form, as the tree derives it.
double deviation(const QList<double>& values)
{
    const double m = mean(values);
    double squares = 0;
    for (double v : values)
        squares += (v - m) * (v - m);
    return std::sqrt(squares / values.size());
}

const QStringList exampleSources = {"src/calc.c", "src/main.cpp", "include/calc.h",
                             "sub/printer/src/printer.c", "sub/printer/include/printer.h"};

// Hand counts of every function, by file in the order of the sources.
struct Unit {
    const char* file;
    const char* name;
    int line;
    int vg, statements, nested;
    int n1, N1, n2, N2;  // Halstead counts
    int src1, src2;
};

// calc_add: VG 1 + if + && + || + && = 5; Statements 3 ";" + if = 4.
//   operators int ()x4 long x3 ,x2 *x2 {} if >x2 &&x2 -x2 || <x2 return x2
//   ;x3 = + (16, 30); operands calc_add a x4 b x6 result x2 0 x2 LONG_MAX
//   LONG_MIN CALC_OVERFLOW CALC_OK (9, 19); lines 8-14.
// calc_subtract: the same shape with + and - swapped.
// calc_multiply: VG 1 + if = 2; Statements 2 ";" + if = 3.
//   operators int ()x3 long x3 ,x4 * {} if return x2 ;x2 (9, 18); operands
//   calc_multiply a x2 b x2 result x2 __builtin_mul_overflow CALC_OVERFLOW
//   CALC_OK (7, 10): E = 28 * 4 * 4.5 * 10/7 = 720.
// calc_divide: VG 1 + 2 if + && = 4; Statements 4 ";" + 2 if = 6.
//   operators int ()x3 long x3 ,x2 *x2 {} if x2 ==x3 return x3 ;x4 && -
//   = / (14, 28); operands calc_divide a x3 b x4 result x2 0
//   CALC_DIVISION_BY_ZERO LONG_MIN 1 CALC_OVERFLOW CALC_OK (10, 16).
// read_number: VG 1 + if + || + while = 4; Statements 7 ";" + if + while
//   (its condition is followed by "++end;") = 9. operators static int ()x6
//   const char x3 *x9 ,x3 long {} =x4 ;x7 & if ==x2 || return x2 while
//   unsigned ++ (19, 47); operands read_number text x4 value x2 end x6 NULL
//   errno x2 0 x2 strtol 10 ERANGE isspace 1 (12, 23); lines 42-53, the
//   comment above it is outside the function.
// calc_evaluate: VG 1 + 2 if + || + 4 case = 8 (default is no decision);
//   Statements 11 ";" + 2 if + switch = 14; NestedLevel 1 (the switch's
//   braces). operators int ()x10 const x3 char x3 *x5 ,x11 long x3 {}x2
//   =x4 ;x11 if x2 !x2 &x4 return x7 ++ || != switch case x4 :x5 default
//   (21, 82); operands calc_evaluate expression x2 result x5 text x5 a x6
//   0 x2 b x6 read_number x2 CALC_SYNTAX_ERROR x3 op x2 '\0' '+' '-' '*'
//   '/' calc_add calc_subtract calc_multiply calc_divide (19, 43).
// calc_status_text: VG 1 + 4 case = 5; Statements 5 ";" + switch = 6;
//   NestedLevel 1. operators const char * ()x2 int {}x2 switch case x4 :x5
//   return x5 ;x5 default (12, 29); operands calc_status_text status x2
//   four status names, five strings (11, 12).
// evaluate: VG 1 + if = 2; Statements 6 ";" + if = 7; NestedLevel 1.
//   operators int x2 ()x7 const x2 ::x2 &x2 {}x2 long =x2 ;x6 .x2 ,x3 if
//   != <<x4 return x2 (15, 39); operands evaluate std x2 string expression
//   x4 value x3 0 x2 status x3 calc_evaluate c_str x2 CALC_OK cerr ": "
//   calc_status_text '\n' 1 printer_print stdout (17, 27): E = 330 * 7.5 *
//   27/17.
// main: VG 1 + if + for + ? + for + if + ? = 7; Statements 6 ";" (not the
//   four inside the two for heads) + 2 if + 2 for = 10; NestedLevel 1.
//   operators int x4 ()x11 ,x2 char *x2 {}x3 if x2 >x2 ::x5 ;x10 for x2 =x2
//   < ++ +=x2 ?x2 :x2 + [] return x2 ! . == (23, 61); operands main argc x3
//   argv x2 1 x4 std x5 string x3 expression x3 i x5 " " "" evaluate x2
//   failures x3 0 x3 line x4 getline cin empty (17, 43).
// printer_print: VG 1; Statements 1. operators void ()x2 *x2 ,x5 const char
//   long {} ; (9, 15); operands printer_print FILE out x2 expression x2
//   value x2 fprintf "%s = %ld\n" (7, 10): E = 25 * 4 * 4.5 * 10/7.
const Unit units[] = {
    {"src/calc.c", "calc_add", 8, 5, 4, 0, 16, 30, 9, 19, 7, 0},
    {"src/calc.c", "calc_subtract", 16, 5, 4, 0, 16, 30, 9, 19, 7, 0},
    {"src/calc.c", "calc_multiply", 24, 2, 3, 0, 9, 18, 7, 10, 6, 0},
    {"src/calc.c", "calc_divide", 31, 4, 6, 0, 14, 28, 10, 16, 9, 0},
    {"src/calc.c", "read_number", 42, 4, 9, 0, 19, 47, 12, 23, 12, 0},
    {"src/calc.c", "calc_evaluate", 55, 8, 14, 1, 21, 82, 19, 43, 18, 0},
    {"src/calc.c", "calc_status_text", 74, 5, 6, 1, 12, 29, 11, 12, 10, 0},
    {"src/main.cpp", "evaluate", 12, 2, 7, 1, 15, 39, 17, 27, 11, 0},
    {"src/main.cpp", "main", 26, 7, 10, 1, 23, 61, 17, 43, 15, 0},
    {"sub/printer/src/printer.c", "printer_print", 3, 1, 1, 0, 9, 15, 7, 10, 4, 0},
};

// The driver writes two decimals; the tree keeps 32-bit floats.
bool closeTo(double actual, double expected, double tolerance = 0.006)
{
    return std::abs(actual - expected) <= tolerance + std::abs(expected) * 1e-6;
}

}

class TestMetrics : public QObject {
    Q_OBJECT
private slots:
    // The example's metrics, computed once in batch mode: without a host,
    // the run goes to its end.
    void initTestCase()
    {
        QVERIFY(QFileInfo::exists(source("calc.c")));
        m_perl = !QStandardPaths::findExecutable(u"perl"_s).isEmpty();
        if (!m_perl)
            return;
        RecordingStudio studio;
        QAStProject::setModeBatch(true);
        const QString example = TestPaths::sourceDir() + u"/examples/calculator/"_s;
        QStringList copies;
        for (const QString& s : exampleSources) {
            TestFiles::writeFile(exampleSource(s), TestFiles::readFile(example + s));
            copies << exampleSource(s);
        }
        const QStringList files = runDriver(copies, m_example.filePath(u"metrics"_s));
        QAStProject::setModeBatch(false);
        QCOMPARE(files.size(), exampleSources.size());
        m_query = std::make_unique<QMetQuery>(files);
        m_query->init();
        QVERIFY(m_query->reader()->errors().isEmpty());
    }

    void init()
    {
        const QByteArray name = QTest::currentTestFunction();
        if (!m_perl && (name.startsWith("example") || name.startsWith("manager") || name.startsWith("driver")))
            QSKIP("perl is not installed");
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(false);
        // Blanks and quotes in every path the driver receives.
        m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/metrics 'run'-XXXXXX");
        QVERIFY(m_dir->isValid());
        m_metdir = m_dir->filePath(u"met's"_s);
        TestFiles::copyTree(TestPaths::data(u"metrics"_s), m_dir->path());
        QVERIFY(QFile::copy(copy("calc.c"), copy("it's.c")));
    }

    void driverMeasuresTheFile()
    {
        const QString calc = source("calc.c");
        const QStringList files = runDriver({calc}, m_metdir);
        QVERIFY(!files.isEmpty());
        QMetQuery query(files);
        query.init();
        // What the example lacks, each function by its line: VG, Statements,
        // NestedLevel, Src1, Src2. one: a single return. sign: if, &&, else
        // if. sum_to: for, while and a do-while; nested braces two deep.
        // describe: two cases and a "?"; the braces and "&&" of its string
        // do not count.
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
    }

    void driverClassGathersMembersOfBothFiles()
    {
        const QString header = source("stack.h"), body = source("stack.cpp");
        const QStringList files = runDriver({body, header}, m_metdir);
        QVERIFY(!files.isEmpty());
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
        bool converted = !ok;
        QTEST(QMetMetric::textToFloat(text, &converted), "expected");
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

    // --- computing them

    void assignmentsAreEscaped()
    {
        QCOMPARE(QAStMetricManager::assignments("/m/it's", "/s/a.c", "/l/log"),
                 u"$METDIR='/m/it\\'s';\n$FILENAME='/s/a.c';\n$LOGFILENAME2='/l/log';\n"_s);
        QCOMPARE(QAStMetricManager::scriptFileName("/s/x/../a.c"), u"/s/a.c"_s);
        QCOMPARE(QAStMetricManager::assignments("/m", QStringList{"/s/a.c", "/s/it's.c"}, "/l/log"),
                 QStringLiteral("$METDIR='/m';\n$FILENAME='/s/a.c';\n$LOGFILENAME2='/l/log';\n"
                                "@FILENAMES=('/s/a.c', '/s/it\\'s.c');\n"));
        // Two sources of one name get two files.
        QVERIFY(QAStMetricManager::metricFileName("/m", "/a/util.c") !=
                QAStMetricManager::metricFileName("/m", "/b/util.c"));
        QVERIFY(QFileInfo(QAStMetricManager::metricFileName("/m", "/a/util.c")).fileName()
                    .startsWith(u"util.c."_s));
    }

    void managerRunsFilesOneAfterAnother_data()
    {
        QTest::addColumn<int>("batchSize");
        QTest::addColumn<int>("runs");
        QTest::newRow("one run for the batch") << QAStMetricManager::DefaultBatchSize << 1;
        QTest::newRow("a run for each file") << 1 << 2;
    }
    void managerRunsFilesOneAfterAnother()
    {
        QFETCH(int, batchSize);
        QAStMetricManager manager(m_metdir);
        manager.setBatchSize(batchSize);
        manager.setFileList({copy("it's.c"), copy("stack.cpp")});
        EndedRuns runs;
        const QStringList events = run(&manager);
        runs.stop();
        QTEST(runs.count(), "runs");
        QCOMPARE(events, QStringList({"started", "second start refused", "start it's.c",
                                      "end it's.c 1", "start stack.cpp", "end stack.cpp 1",
                                      "terminated canceled=0 state=1"}));
        QVERIFY(!manager.inProgress());
        QCOMPARE(m_studio->progressLabels(), QStringList({"Computing Metric in progress",
                              "Compute Metric for File:" + copy("it's.c"),
                              "Compute Metric for File:" + copy("stack.cpp")}));
        QCOMPARE(m_studio->progressCancelText(), u"Abort"_s);
        QCOMPARE(m_studio->progressMaximum(), 2);
        QCOMPARE(m_studio->progressValue(), 2);
        QVERIFY(!m_studio->progressRunning());

        // Each file began after the previous one had ended.
        const QStringList log = QString::fromUtf8(TestFiles::readFile(manager.logFileName()))
                                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(log.size(), 4);
        QVERIFY(log.at(0).startsWith("Metrics.pl: begin " + copy("it's.c")));
        QVERIFY(log.at(1).startsWith("Metrics.pl: end " + copy("it's.c")));
        QVERIFY(log.at(2).startsWith("Metrics.pl: begin " + copy("stack.cpp")));

        // The script read the quoted paths back exactly.
        QCOMPARE(manager.metricFiles(),
                 QStringList({QAStMetricManager::metricFileName(m_metdir, copy("it's.c")),
                              QAStMetricManager::metricFileName(m_metdir, copy("stack.cpp"))}));
        QMetQuery query(manager.metricFiles());
        query.init();
        QCOMPARE(query.fileMetric(copy("it's.c"), "VG"), 13.0f);
        QCOMPARE(query.fileElement(copy("stack.cpp"))->children().size(), 5);
        QVERIFY(query.reader()->errors().isEmpty());
        // No assignment file is left behind.
        QCOMPARE(QDir(m_metdir).entryList({"*.pl"}, QDir::Files), QStringList());
    }

    void managerAbortStopsTheRun_data()
    {
        QTest::addColumn<bool>("cancelEnabled");
        QTest::addColumn<int>("abortAt"); // files done when the user aborts
        QTest::addColumn<QStringList>("computed");
        QTest::newRow("abort after one file") << true << 1 << QStringList{"calc.c"};
        QTest::newRow("abort at once") << true << 0 << QStringList();
        QTest::newRow("abort disabled") << false << 1 << QStringList{"calc.c", "stack.h", "stack.cpp"};
    }
    void managerAbortStopsTheRun()
    {
        QFETCH(bool, cancelEnabled);
        QFETCH(int, abortAt);
        QFETCH(QStringList, computed);
        m_studio->cancelProgressAt(abortAt);
        QPointer<QAStMetricManager> manager = new QAStMetricManager(m_metdir);
        manager->setCancelEnabled(cancelEnabled);
        manager->setAutoDeleteEnabled(true);
        manager->setFileList({copy("calc.c"), copy("stack.h"), copy("stack.cpp")});
        // The files done keep their metrics; the run may have gone further
        // than the abort before it was killed, but tells of nothing more.
        QStringList metricFiles;
        connect(manager, &QAStMetricManager::computeMetricTerminated, this,
                [&] { metricFiles = manager->metricFiles(); });
        const QStringList events = run(manager);
        QCOMPARE(events.filter(QRegularExpression("^start ")).size(), computed.size());
        QCOMPARE(events.last(), u"terminated canceled=%1 state=%2"_s.arg(cancelEnabled).arg(!cancelEnabled));
        QCOMPARE(m_studio->progressCancelText(), cancelEnabled ? u"Abort"_s : QString());
        QVERIFY(!m_studio->progressRunning());
        QStringList measured;
        for (const QString& file : metricFiles) {
            QVERIFY(QFileInfo::exists(file));
            measured << QFileInfo(file).fileName().section(u'.', 0, -3);
        }
        QCOMPARE(measured, computed);
        QTRY_VERIFY(manager.isNull()); // deleted once the run ended
    }

    void managerStopKillsTheRunningScript()
    {
        // A source long enough for the script to be still running when stopped.
        const QByteArray unit = TestFiles::readFile(copy("calc.c"));
        TestFiles::writeFile(copy("long.c"), unit.repeated(2000));
        QAStMetricManager manager(m_metdir);
        manager.setFileList({copy("long.c"), copy("calc.c")});
        connect(&manager, &QAStMetricManager::computeFileStarted, &manager,
                &QAStMetricManager::stop, Qt::QueuedConnection);
        const QStringList events = run(&manager);
        QCOMPARE(events, QStringList({"started", "second start refused", "start long.c", "end long.c 0",
                                      "terminated canceled=0 state=0"}));
        QCOMPARE(manager.failedFiles(), QStringList{copy("long.c")});
        QVERIFY(QDir(m_metdir).entryList({"*.met*"}, QDir::Files).isEmpty());
    }

    void managerFailedFileDoesNotStopTheRun()
    {
        QAStMetricManager manager(m_metdir);
        manager.setFileList({copy("missing.c"), copy("calc.c")});
        const QStringList events = run(&manager);
        QCOMPARE(events.filter(u"end "_s), QStringList({"end missing.c 0", "end calc.c 1"}));
        QCOMPARE(events.last(), u"terminated canceled=0 state=0"_s);
        QCOMPARE(manager.failedFiles(), QStringList{copy("missing.c")});
        QCOMPARE(manager.metricFiles().size(), 1);
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole)
                    .contains("Metrics.pl: cannot read " + copy("missing.c")));
    }

    // --- the example, counted by hand

    void exampleFunctions_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(units)); ++i)
            QTest::addRow("%s", units[i].name) << i;
    }
    void exampleFunctions()
    {
        QFETCH(int, index);
        const Unit& u = units[index];
        const QMetElement* e = exampleUnit(u.file, u.name);
        QVERIFY2(e, "no such function in the metrics file");
        QCOMPARE(e->type(), u"FUNCTION"_s);
        QVERIFY2(e->lineNumber() == u.line, "the example changed: count this function again");
        QCOMPARE(value(e, "VG"), float(u.vg));
        QCOMPARE(value(e, "Statements"), float(u.statements));
        QCOMPARE(value(e, "NestedLevel"), float(u.nested));
        const double expected = effort(u.n1, u.N1, u.n2, u.N2);
        QVERIFY2(closeTo(value(e, "Effort"), expected),
                 qPrintable(u"Effort %1, counted %2"_s.arg(value(e, "Effort")).arg(expected)));
        QCOMPARE(value(e, "Src1"), float(u.src1));
        QCOMPARE(value(e, "Src2"), float(u.src2));
    }

    void exampleFiles_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("vg");
        QTest::addColumn<int>("statements");
        QTest::addColumn<int>("nested");
        QTest::addColumn<double>("effort");  // negative: not counted by hand
        QTest::addColumn<int>("src1");
        QTest::addColumn<int>("src2");
        QTest::addColumn<int>("units");

        // VG 5+5+2+4+4+8+5; Statements the functions' 46, nothing declared
        // outside them; lines of code 5 preprocessor lines + 7+7+6+9+12+18+10
        // of the functions; one comment line (41).
        QTest::newRow("calc.c") << "src/calc.c" << 33 << 46 << 1 << -1.0 << 74 << 1 << 7;
        // VG 2+7, Statements 7+10; lines of code 5 preprocessor lines, the two
        // lines of the anonymous namespace and 11+15 of the functions; comment
        // lines 1 and 2.
        QTest::newRow("main.cpp") << "src/main.cpp" << 9 << 17 << 1 << -1.0 << 33 << 2 << 2;
        // No function: VG 0. Statements: the enum's "};" and six prototypes.
        // Effort over the whole file: operators extern {}x2 enum =x4 ,x12 ;x7
        // int x6 ()x6 long x13 *x7 const x2 char x2 (12, 63); operands "C"
        // calc_status, four enumerators, 0 1 2 3, six function names, a x4 b x4
        // result x5 expression status (21, 31). 21 lines of code (12
        // preprocessor lines, 6, 10-15, 19-22, 25, 28, 31 less the blank
        // ones), 8 lines with comments (1, 9, 12, 14, 17, 18, 24, 27).
        QTest::newRow("calc.h") << "include/calc.h" << 0 << 7 << 0 << effort(12, 63, 21, 31) << 21 << 8 << 0;
        // The #include gives no token, so the file's effort is its function's.
        QTest::newRow("printer.c") << "sub/printer/src/printer.c" << 1 << 1 << 0 << effort(9, 15, 7, 10)
                                   << 5 << 0 << 1;
        // extern "C" { void printer_print(FILE *out, const char *expression,
        // long value); }: operators extern {} void () *x2 ,x2 const char long ;
        // (10, 12); operands "C" printer_print FILE out expression value (6, 6):
        // E = 18 * 4 * 5 * 1 = 360.
        QTest::newRow("printer.h") << "sub/printer/include/printer.h" << 0 << 1 << 0 << 360.0 << 11 << 2 << 0;
    }
    void exampleFiles()
    {
        QFETCH(QString, file);
        QFETCH(int, vg);
        QFETCH(int, statements);
        QFETCH(int, nested);
        QFETCH(double, effort);
        QFETCH(int, src1);
        QFETCH(int, src2);
        QFETCH(int, units);
        const QMetElement* e = exampleFile(file);
        QVERIFY(e);
        QCOMPARE(e->type(), u"FILE"_s);
        QCOMPARE(e->children().size(), units);
        QCOMPARE(value(e, "VG"), float(vg));
        QCOMPARE(value(e, "Statements"), float(statements));
        QCOMPARE(value(e, "NestedLevel"), float(nested));
        if (effort >= 0)
            QVERIFY2(closeTo(value(e, "Effort"), effort), qPrintable(QString::number(value(e, "Effort"))));
        QCOMPARE(value(e, "Src1"), float(src1));
        QCOMPARE(value(e, "Src2"), float(src2));
        // A file's own VG is the sum of its functions'.
        if (units > 0)
            QCOMPARE(value(e, "VG_SUM"), float(vg));
        else
            QVERIFY(!e->metric(u"VG_SUM"_s));
    }

    void exampleAggregatesOverTheFunctionsOfAFile()
    {
        // calc.c, VG of its functions 5 5 2 4 4 8 5: sum 33, mean 33/7 = 4.714,
        // max 8, deviation sqrt(19.43/7) = 1.666.
        const QMetElement* calc = exampleFile("src/calc.c");
        QVERIFY(calc);
        QCOMPARE(value(calc, "VG_SUM"), 33.0f);
        QVERIFY(closeTo(value(calc, "VG_MEAN"), 33.0 / 7, 1e-5));
        QCOMPARE(value(calc, "VG_MAX"), 8.0f);
        QVERIFY(closeTo(value(calc, "VG_STD"), std::sqrt(19.428571 / 7), 1e-5));
        QCOMPARE(calc->counter(u"VG_MEAN"_s), 7);
        QCOMPARE(calc->metric(u"VG_STD"_s)->name(), u"Standard deviation of VG"_s);

        // main.cpp: Statements 7 and 10: mean 8.5, deviation 1.5.
        QCOMPARE(value(exampleFile("src/main.cpp"), "Statements_STD"), 1.5f);

        // No class in the example: no class-wide aggregate anywhere.
        QVERIFY(m_query->root()->classes().isEmpty());
        for (const QString& s : exampleSources) {
            for (const QMetElement* e : exampleFile(s)->children())
                QVERIFY(!e->metric(u"VG_SUM2"_s));
        }
    }

    void exampleAggregatesOverTheFiles()
    {
        // The root aggregates the files' own values: VG 33 9 0 1 0, Statements
        // 46 17 7 1 1, NestedLevel 1 1 0 0 0, Src1 74 33 21 5 11.
        const QMetElement* root = m_query->root();
        QCOMPARE(root->type(), u"ROOT"_s);
        QCOMPARE(root->children().size(), exampleSources.size());
        QCOMPARE(value(root, "VG_SUM"), 43.0f);
        QVERIFY(closeTo(value(root, "VG_MEAN"), 43.0 / 5, 1e-5));
        QCOMPARE(value(root, "VG_MAX"), 33.0f);
        QVERIFY(closeTo(value(root, "VG_STD"), deviation({33, 9, 0, 1, 0}), 1e-4));
        QCOMPARE(value(root, "Statements_SUM"), 72.0f);
        QCOMPARE(value(root, "Statements_MAX"), 46.0f);
        QVERIFY(closeTo(value(root, "NestedLevel_MEAN"), 0.4, 1e-6));
        QCOMPARE(value(root, "Src1_SUM"), 144.0f);
        QCOMPARE(value(root, "Src2_SUM"), 13.0f);
        QCOMPARE(root->counter(u"Src2_MEAN"_s), 5);

        // The root's Effort_SUM is the files' efforts together.
        double efforts = 0;
        for (const QString& s : exampleSources)
            efforts += value(exampleFile(s), "Effort");
        QVERIFY(closeTo(value(root, "Effort_SUM"), efforts, 0.05));
    }

    void exampleTestingTimes()
    {
        // calc_multiply: Effort 720, 720 / 18 = 40; printer.h: 360 / 18 = 20.
        const QMetElement* multiply = exampleUnit("src/calc.c", "calc_multiply");
        QVERIFY(multiply);
        QCOMPARE(value(multiply, "TestingTime"), 40.0f);
        QCOMPARE(multiply->metric(u"TestingTime"_s)->name(), u"Testing Time"_s);
        QCOMPARE(value(exampleFile("sub/printer/include/printer.h"), "TestingTime"), 20.0f);
        // A file's TestingTime_SUM comes from its Effort_SUM.
        const QMetElement* calc = exampleFile("src/calc.c");
        QVERIFY(closeTo(value(calc, "TestingTime_SUM"), value(calc, "Effort_SUM") / 18.0, 1e-3));
        const QMetElement* root = m_query->root();
        QVERIFY(closeTo(value(root, "TestingTime_SUM"), value(root, "Effort_SUM") / 18.0, 1e-3));
        // The root follows a new Stroud number too.
        m_query->stroudChange(36);
        QVERIFY(closeTo(value(root, "TestingTime_SUM"), value(root, "Effort_SUM") / 36.0, 1e-3));
        m_query->stroudChange(18);
    }

    void exampleQueriesOfTheSelectionPage()
    {
        bool ok = false;
        QCOMPARE(m_query->itemMetric(exampleSource("src/calc.c"), 55, u"VG"_s, &ok), 8.0f);
        QVERIFY(ok);
        QCOMPARE(m_query->itemMetric(exampleSource("src/main.cpp"), 26, u"Statements"_s, &ok), 10.0f);
        QCOMPARE(m_query->itemMetric(exampleSource("src/calc.c"), 24, u"TestingTime"_s, &ok), 40.0f);
        m_query->itemMetric(exampleSource("src/calc.c"), 41, u"VG"_s, &ok);
        QVERIFY(!ok);
        QCOMPARE(m_query->fileMetric(exampleSource("src/calc.c"), u"NestedLevel"_s, &ok), 1.0f);
        QCOMPARE(m_query->getSourceLinesValue(exampleSource("src/calc.c")), u"74/1"_s);
        QCOMPARE(m_query->getSourceLinesValue(exampleSource("include/calc.h")), u"21/8"_s);
    }

private:
    // Runs the metrics driver over the sources; the metrics files written.
    static QStringList runDriver(const QStringList& sources, const QString& metdir)
    {
        QAStMetricManager manager(metdir);
        manager.setFileList(sources);
        QSignalSpy ended(&manager, &QAStMetricManager::computeMetricTerminated);
        if (!manager.start() || !ended.wait(120000) || !manager.failedFiles().isEmpty() || !manager.state())
            return {};
        return manager.metricFiles();
    }
    // Runs the manager to its end; the events it signalled, in order, and
    // at its end whether it was canceled and its state.
    QStringList run(QAStMetricManager* manager)
    {
        QStringList events;
        connect(manager, &QAStMetricManager::computeMetricStarted, this, [&] { events << u"started"_s; });
        connect(manager, &QAStMetricManager::computeFileStarted, this,
                [&](const QString& f) { events << "start " + QFileInfo(f).fileName(); });
        connect(manager, &QAStMetricManager::computeFileTerminated, this, [&](const QString& f, bool ok) {
                    events << u"end %1 %2"_s.arg(QFileInfo(f).fileName()).arg(ok);
                });
        connect(manager, &QAStMetricManager::computeMetricTerminated, this, [&, manager] {
            events << u"terminated canceled=%1 state=%2"_s.arg(manager->wasCanceled()).arg(manager->state());
        });
        QSignalSpy terminated(manager, &QAStMetricManager::computeMetricTerminated);
        const QPointer<QAStMetricManager> guard(manager);
        if (!manager->start())
            return {u"refused"_s};
        if (!manager->start())
            events << u"second start refused"_s;
        if (!terminated.wait(60000))
            events << u"no end"_s;
        if (guard)
            disconnect(manager, nullptr, this, nullptr);
        return events;
    }
    QString copy(const QString& name) const { return m_dir->filePath(name); }
    QString exampleSource(const QString& relative) const { return m_example.filePath(relative); }
    QMetElement* exampleFile(const QString& relative) const { return m_query->fileElement(exampleSource(relative)); }
    QMetElement* exampleUnit(const QString& relative, const QString& name) const
    {
        const QMetElement* file = exampleFile(relative);
        return file ? child(file, name) : nullptr;
    }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir; // a copy of tests/data/metrics
    QString m_metdir;
    bool m_perl = false;
    QTemporaryDir m_example;
    std::unique_ptr<QMetQuery> m_query;
};

QTEST_MAIN(TestMetrics)
#include "tst_metrics.moc"
