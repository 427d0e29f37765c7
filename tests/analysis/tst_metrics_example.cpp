// The metrics of the example project, computed by the real driver through
// QAStMetricManager and read into a QMetQuery, against counts made by hand
// from the sources by the rules of docs/formats/metrics.md.
//
// The counts belong to the example's sources as they are: when a source
// changes, the line check of its units fails first and the counts below
// must be made again.

#include "QAStMetricManager.h"
#include "QAStProject.h"
#include "QMetElement.h"
#include "QMetQuery.h"
#include "QMetReader.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

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

const QStringList sources = {"src/calc.c", "src/main.cpp", "include/calc.h",
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

class TestMetricsExample : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"perl"_s).isEmpty())
            QSKIP("perl is not installed");
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        const QString example = TestPaths::sourceDir() + u"/examples/calculator/"_s;
        QStringList copies;
        for (const QString& s : sources) {
            TestFiles::writeFile(source(s), TestFiles::readFile(example + s));
            copies << source(s);
        }
        QAStMetricManager manager(m_dir.filePath(u"metrics"_s));
        manager.setFileList(copies);
        QSignalSpy ended(&manager, &QAStMetricManager::computeMetricTerminated);
        QVERIFY(manager.start());
        QVERIFY(ended.wait(120000));
        QVERIFY2(manager.failedFiles().isEmpty(), qPrintable(manager.failedFiles().join(", ")));
        QVERIFY(manager.state());
        QCOMPARE(manager.metricFiles().size(), sources.size());
        m_query = std::make_unique<QMetQuery>(manager.metricFiles());
        m_query->init();
        QVERIFY(m_query->reader()->errors().isEmpty());
    }

    void cleanupTestCase()
    {
        m_query.reset();
        QAStProject::setModeBatch(false);
    }

    void functions_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(units)); ++i)
            QTest::addRow("%s", units[i].name) << i;
    }
    void functions()
    {
        QFETCH(int, index);
        const Unit& u = units[index];
        const QMetElement* e = unitElement(u.file, u.name);
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

    void files_data()
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
    void files()
    {
        QFETCH(QString, file);
        QFETCH(int, vg);
        QFETCH(int, statements);
        QFETCH(int, nested);
        QFETCH(double, effort);
        QFETCH(int, src1);
        QFETCH(int, src2);
        QFETCH(int, units);
        const QMetElement* e = fileElement(file);
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

    void aggregatesOverTheFunctionsOfAFile()
    {
        // calc.c, VG of its functions 5 5 2 4 4 8 5: sum 33, mean 33/7 = 4.714,
        // max 8, deviation sqrt(19.43/7) = 1.666.
        const QMetElement* calc = fileElement("src/calc.c");
        QVERIFY(calc);
        QCOMPARE(value(calc, "VG_SUM"), 33.0f);
        QVERIFY(closeTo(value(calc, "VG_MEAN"), 33.0 / 7, 1e-5));
        QCOMPARE(value(calc, "VG_MAX"), 8.0f);
        QVERIFY(closeTo(value(calc, "VG_STD"), std::sqrt(19.428571 / 7), 1e-5));
        QCOMPARE(calc->counter(u"VG_MEAN"_s), 7);
        QCOMPARE(calc->metric(u"VG_STD"_s)->name(), u"Standard deviation of VG"_s);

        // main.cpp: Statements 7 and 10: mean 8.5, deviation 1.5.
        QCOMPARE(value(fileElement("src/main.cpp"), "Statements_STD"), 1.5f);

        // No class in the example: no class-wide aggregate anywhere.
        QVERIFY(m_query->root()->classes().isEmpty());
        for (const QString& s : sources) {
            for (const QMetElement* e : fileElement(s)->children())
                QVERIFY(!e->metric(u"VG_SUM2"_s));
        }
    }

    void aggregatesOverTheFiles()
    {
        // The root aggregates the files' own values: VG 33 9 0 1 0, Statements
        // 46 17 7 1 1, NestedLevel 1 1 0 0 0, Src1 74 33 21 5 11.
        const QMetElement* root = m_query->root();
        QCOMPARE(root->type(), u"ROOT"_s);
        QCOMPARE(root->children().size(), sources.size());
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
        for (const QString& s : sources)
            efforts += value(fileElement(s), "Effort");
        QVERIFY(closeTo(value(root, "Effort_SUM"), efforts, 0.05));
    }

    void testingTimes()
    {
        // calc_multiply: Effort 720, 720 / 18 = 40; printer.h: 360 / 18 = 20.
        const QMetElement* multiply = unitElement("src/calc.c", "calc_multiply");
        QVERIFY(multiply);
        QCOMPARE(value(multiply, "TestingTime"), 40.0f);
        QCOMPARE(multiply->metric(u"TestingTime"_s)->name(), u"Testing Time"_s);
        QCOMPARE(value(fileElement("sub/printer/include/printer.h"), "TestingTime"), 20.0f);
        // A file's TestingTime_SUM comes from its Effort_SUM.
        const QMetElement* calc = fileElement("src/calc.c");
        QVERIFY(closeTo(value(calc, "TestingTime_SUM"), value(calc, "Effort_SUM") / 18.0, 1e-3));
        const QMetElement* root = m_query->root();
        QVERIFY(closeTo(value(root, "TestingTime_SUM"), value(root, "Effort_SUM") / 18.0, 1e-3));
        m_query->stroudChange(36);
        QCOMPARE(value(multiply, "TestingTime"), 20.0f);
        QVERIFY(closeTo(value(root, "TestingTime_SUM"), value(root, "Effort_SUM") / 36.0, 1e-3));
        m_query->stroudChange(18);
        QCOMPARE(value(multiply, "TestingTime"), 40.0f);
    }

    void queriesOfTheSelectionPage()
    {
        bool ok = false;
        QCOMPARE(m_query->itemMetric(source("src/calc.c"), 55, u"VG"_s, &ok), 8.0f);
        QVERIFY(ok);
        QCOMPARE(m_query->itemMetric(source("src/main.cpp"), 26, u"Statements"_s, &ok), 10.0f);
        QCOMPARE(m_query->itemMetric(source("src/calc.c"), 24, u"TestingTime"_s, &ok), 40.0f);
        m_query->itemMetric(source("src/calc.c"), 41, u"VG"_s, &ok);
        QVERIFY(!ok);
        QCOMPARE(m_query->fileMetric(source("src/calc.c"), u"NestedLevel"_s, &ok), 1.0f);
        QCOMPARE(m_query->getSourceLinesValue(source("src/calc.c")), u"74/1"_s);
        QCOMPARE(m_query->getSourceLinesValue(source("include/calc.h")), u"21/8"_s);
    }

private:
    QString source(const QString& relative) const { return m_dir.filePath(relative); }
    QMetElement* fileElement(const QString& relative) const
    {
        return m_query->fileElement(source(relative));
    }
    QMetElement* unitElement(const QString& relative, const QString& name) const
    {
        const QMetElement* file = fileElement(relative);
        if (!file)
            return nullptr;
        for (QMetElement* e : file->children()) {
            if (e->name() == name)
                return e;
        }
        return nullptr;
    }
    float value(const QMetElement* element, const QString& key) const
    {
        bool ok = false;
        const float v = element->metricValue(key, &ok);
        if (!ok)
            qWarning("%s has no metric %s", qPrintable(element->name()), qPrintable(key));
        return ok ? v : std::nanf("");
    }

    std::unique_ptr<RecordingStudio> m_studio;
    QTemporaryDir m_dir;
    std::unique_ptr<QMetQuery> m_query;
};

QTEST_MAIN(TestMetricsExample)
#include "tst_metrics_example.moc"
