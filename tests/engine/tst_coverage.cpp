// The coverage file of a test run: the reader on good and bad records, its
// lcov and Cobertura writers, and the example's unit test run for real
// with the compiler's coverage, whose figures must be gcov's own.
#include "QAStConfiguration.h"
#include "QAStCoverageReport.h"
#include "QAStNodeUnitTesting.h"
#include "QAStProject.h"
#include "QASTSplitSurvey.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"
#include "TestWalk.h"

#include <QBuffer>
#include <QDirIterator>
#include <QDomDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using Counts = QAStCoverageReport::Counts;

Q_DECLARE_METATYPE(QAStCoverageReport::Counts)

namespace {

// A run of two files: calc.c with two functions, its lines and branches,
// and a header with one line.
const QByteArray goodRun = "NT \"/p/test\" 42\n"
                           "DT \"Sun Nov 22 08:12:03 2026\"\n"
                           "FT \"main\" 0x55d0c2a4b3a1\n"
                           "CO \"main\" 1\n"
                           "TE 1\n"
                           "NT \"/p/test\" 42\n"
                           "DC \"/p/src/calc.c\"\n"
                           "TP \"add\" 3 6 4\n"
                           "TP \"unused\" 8 10 0\n"
                           "TA 3 4\n"
                           "TA 4 4\n"
                           "TA 5 0\n"
                           "TA 8 0\n"
                           "TA 9 0\n"
                           "TB 4 0 3\n"
                           "TB 4 1 1\n"
                           "TB 9 0 -\n"
                           "TB 9 1 -\n"
                           "DC \"/p/include/calc.h\"\n"
                           "TA 2 7\n"
                           "EI 2 6 3 4 2 2 1\n";

Counts counts(qint64 lines, qint64 linesHit, qint64 branches, qint64 branchesHit, qint64 functions,
              qint64 functionsHit)
{
    Counts c;
    c.lines = lines;
    c.linesHit = linesHit;
    c.branches = branches;
    c.branchesHit = branchesHit;
    c.functions = functions;
    c.functionsHit = functionsHit;
    return c;
}

QString describe(const Counts& c)
{
    return u"lines %1/%2 branches %3/%4 functions %5/%6"_s.arg(c.linesHit).arg(c.lines).arg(c.branchesHit)
        .arg(c.branches).arg(c.functionsHit).arg(c.functions);
}

// gcov's own summary of objects ("gcov -b -n"), per file as it names them:
// lines and branches taken at least once, hit and total.
QMap<QString, Counts> gcovSummary(const QString& directory, const QStringList& objects, QString* fault)
{
    QProcess gcov;
    gcov.setWorkingDirectory(directory);
    gcov.start(u"gcov"_s, QStringList{"-b", "-n"} + objects);
    if (!gcov.waitForFinished(60000) || gcov.exitCode() != 0) {
        *fault = QString::fromLocal8Bit(gcov.readAllStandardError());
        return {};
    }
    QMap<QString, Counts> files;
    QString current;
    bool linesSeen = false;
    const QRegularExpression ratio(u"^(Lines executed|Taken at least once):([\\d.]+)% of (\\d+)$"_s);
    for (const QString& line : QString::fromLocal8Bit(gcov.readAllStandardOutput()).split(u'\n')) {
        if (line.startsWith(QLatin1String("File '"))) {
            current = line.mid(6, line.size() - 7);
            linesSeen = false;
            if (files.contains(current))
                *fault = u"%1 is summed twice"_s.arg(current);
            files[current] = Counts();
            continue;
        }
        const QRegularExpressionMatch m = ratio.match(line);
        if (!m.hasMatch() || current.isEmpty())
            continue;
        const qint64 total = m.captured(3).toLongLong();
        const qint64 hit = qRound64(m.captured(2).toDouble() * double(total) / 100.0);
        if (m.captured(1).startsWith(u'L')) {
            // The last "Lines executed" is the summary of all the files.
            if (std::exchange(linesSeen, true))
                continue;
            files[current].lines = total;
            files[current].linesHit = hit;
        } else {
            files[current].branches = total;
            files[current].branchesHit = hit;
        }
    }
    return files;
}

} // namespace

class TestCoverage : public QObject {
    Q_OBJECT

private slots:
    // Good records and every kind of bad input: what could be read is
    // kept, each bad line skipped and counted.
    void readsRecords_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("files");
        QTest::addColumn<Counts>("totals");
        QTest::addColumn<qint64>("skipped");
        QTest::addColumn<bool>("complete");

        const Counts good = counts(6, 3, 4, 2, 2, 1);
        QTest::newRow("a whole run") << goodRun << 2 << good << qint64(0) << true;
        QTest::newRow("carriage returns") << QByteArray(goodRun).replace("\n", "\r\n") << 2 << good << qint64(0)
                                          << true;
        QTest::newRow("empty") << QByteArray() << 0 << Counts() << qint64(0) << false;
        QTest::newRow("cut in a line") << goodRun.left(goodRun.indexOf("TA 9 0") + 4) << 1
                                       << counts(4, 2, 0, 0, 2, 1) << qint64(1) << false;
        QTest::newRow("cut before the end") << goodRun.left(goodRun.indexOf("EI")) << 2 << good << qint64(0) << false;
        QTest::newRow("unknown records") << QByteArray(goodRun).replace("TA 4 4\n", "TA 4 4\nZZ 1 2\nhello\n\n")
                                         << 2 << good << qint64(3) << true;
        QTest::newRow("malformed records")
            << QByteArray(goodRun).replace("TA 4 4\n", "TA 4 4\nTA x 3\nTA 5\nTB 3 0 x\nTA 99999999999 1\n"
                                                       "TP \"f 1 2 3\nDC noquote\nTA -1 2\nNT \"/p/test\"\n")
            << 2 << good << qint64(8) << true;
        QTest::newRow("a line before its file") << QByteArray("TA 1 1\nTB 1 0 1\nTP \"f\" 1 1 1\n") + goodRun << 2
                                                << good << qint64(3) << true;
        // Lines of another program in the middle are skipped up to the
        // next record of the first run.
        QTest::newRow("another run in the middle")
            << QByteArray(goodRun).replace("TA 8 0\n", "NT \"/other\" 7\nTA 8 9\nFT \"x\" 0x1\nNT \"/p/test\" 42\nTA 8 0\n")
            << 2 << good << qint64(3) << true;
        QTest::newRow("another process of the program")
            << QByteArray(goodRun).replace("TA 8 0\n", "NT \"/p/test\" 43\nTA 8 9\nNT \"/p/test\" 42\nTA 8 0\n")
            << 2 << good << qint64(2) << true;
        QTest::newRow("another run to the end")
            << QByteArray(goodRun).replace("DC \"/p/include", "NT \"/other\" 7\nDC \"/p/include") << 1
            << counts(5, 2, 4, 2, 2, 1) << qint64(4) << false;
        // Repeated and unordered records are summed and put in order.
        QTest::newRow("a file named twice, lines unordered")
            << QByteArray(goodRun).replace("TA 3 4\nTA 4 4\n", "TA 4 3\n").replace("TA 2 7\n",
                                           "TA 2 7\nDC \"/p/src/calc.c\"\nTA 3 4\nTA 4 1\n")
            << 2 << good << qint64(0) << true;
        QTest::newRow("end record of other totals") << QByteArray(goodRun).replace("EI 2 6 3", "EI 2 7 3") << 2
                                                    << good << qint64(0) << false;
        QTest::newRow("the runtime's functions alone")
            << QByteArray("NT \"/p/test\" 42\nDT \"x\"\nFT \"main\" 0x1\nFT \"f\" 0x2\nCO \"main\" 1\nCO \"f\" 3\nTE 2\n")
            << 0 << counts(0, 0, 0, 0, 2, 2) << qint64(0) << true;
        QTest::newRow("binary bytes") << QByteArray("\x00\xff\x01TA\n\x80\x80 1 2\nDC \"\xff\xfe\"\nTA 1 1\n", 28)
                                      << 1 << counts(1, 1, 0, 0, 0, 0) << qint64(2) << false;
    }

    void readsRecords()
    {
        QFETCH(QByteArray, input);
        QFETCH(int, files);
        QFETCH(Counts, totals);
        QFETCH(qint64, skipped);
        QFETCH(bool, complete);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"run.tio"_s);
        TestFiles::writeFile(path, input);
        QAStCoverageReport report;
        QVERIFY(report.read(path));
        QCOMPARE(int(report.files().size()), files);
        QVERIFY2(report.totals() == totals, qPrintable(describe(report.totals())));
        QCOMPARE(report.skippedLines(), skipped);
        QCOMPARE(report.isComplete(), complete);
        // Each fault names the file and the line.
        for (const QString& fault : report.faults())
            QVERIFY2(fault.startsWith(path + u':'), qPrintable(fault));
        if (skipped > 0)
            QVERIFY(!report.faults().isEmpty());
        // The same from memory.
        QAStCoverageReport fromData;
        fromData.readData(input, path);
        QVERIFY(fromData.totals() == totals);
        QCOMPARE(fromData.skippedLines(), skipped);
        QCOMPARE(fromData.faults(), report.faults());
    }

    // A function counts the lines and branches of its own lines; a file
    // and a line are found by path and number; a missing file is told.
    void filesAndFunctions()
    {
        QAStCoverageReport report;
        report.readData(QByteArray(goodRun).replace("DC \"/p/src/calc.c\"", "DC \"/p/src/x\\\"y\\x41.c\""));
        QCOMPARE(report.program(), QByteArray("/p/test"));
        QCOMPARE(report.pid(), qint64(42));
        QVERIFY(report.hasLineCoverage());
        const QAStCoverageReport::File* calc = report.file(u"/p/src/x\"yA.c"_s);
        QVERIFY(calc);
        QCOMPARE(int(calc->functions.size()), 2);
        QCOMPARE(calc->functions[0].name, QByteArray("add"));
        QVERIFY2(calc->functions[0].counts == counts(3, 2, 2, 2, 1, 1), qPrintable(describe(calc->functions[0].counts)));
        QVERIFY2(calc->functions[1].counts == counts(2, 0, 2, 0, 1, 0), qPrintable(describe(calc->functions[1].counts)));
        QCOMPARE(calc->lineCount(4), qint64(4));
        QCOMPARE(calc->lineCount(5), qint64(0));
        QCOMPARE(calc->lineCount(6), qint64(-1));
        QCOMPARE(calc->branches[2].taken, qint64(-1));
        QCOMPARE(report.runtimeFunctions().size(), size_t(1));
        QCOMPARE(report.runtimeFunctions()[0].calls, qint64(1));
        QCOMPARE(QAStCoverageReport::percent(1, 8), u"12.5"_s);
        QCOMPARE(QAStCoverageReport::percent(0, 0), u"-"_s);

        QAStCoverageReport missing;
        QVERIFY(!missing.read(u"/nonexistent/run.tio"_s));
        QVERIFY(missing.error().startsWith(QLatin1String("/nonexistent/run.tio: cannot read")));
    }

    // The lcov tracefile, line by line, and the Cobertura report's totals
    // and structure.
    void writesLcovAndCobertura()
    {
        QAStCoverageReport report;
        report.readData(goodRun);
        QBuffer lcov;
        lcov.open(QIODevice::WriteOnly);
        QVERIFY(report.writeLcov(&lcov, u"Unit tests"_s));
        QCOMPARE(lcov.data(), QByteArray("TN:Unit_tests\nSF:/p/src/calc.c\nFN:3,add\nFN:8,unused\nFNDA:4,add\n"
                                         "FNDA:0,unused\nFNF:2\nFNH:1\nBRDA:4,0,0,3\nBRDA:4,0,1,1\nBRDA:9,0,0,-\n"
                                         "BRDA:9,0,1,-\nBRF:4\nBRH:2\nDA:3,4\nDA:4,4\nDA:5,0\nDA:8,0\nDA:9,0\n"
                                         "LF:5\nLH:2\nend_of_record\n"
                                         "TN:Unit_tests\nSF:/p/include/calc.h\nFNF:0\nFNH:0\nBRF:0\nBRH:0\n"
                                         "DA:2,7\nLF:1\nLH:1\nend_of_record\n"));

        QBuffer xml;
        xml.open(QIODevice::WriteOnly);
        QVERIFY(report.writeCobertura(&xml, u"/p"_s));
        QDomDocument document;
        QVERIFY(document.setContent(xml.data()));
        const QDomElement root = document.documentElement();
        QCOMPARE(root.tagName(), u"coverage"_s);
        QCOMPARE(root.attribute(u"lines-valid"_s), u"6"_s);
        QCOMPARE(root.attribute(u"lines-covered"_s), u"3"_s);
        QCOMPARE(root.attribute(u"branches-valid"_s), u"4"_s);
        QCOMPARE(root.attribute(u"branches-covered"_s), u"2"_s);
        QCOMPARE(root.attribute(u"line-rate"_s), u"0.5000"_s);
        const QDomNodeList classes = document.elementsByTagName(u"class"_s);
        QCOMPARE(classes.size(), 2);
        QCOMPARE(classes.at(0).toElement().attribute(u"filename"_s), u"include/calc.h"_s);
        QCOMPARE(classes.at(1).toElement().attribute(u"filename"_s), u"src/calc.c"_s);
        QCOMPARE(document.elementsByTagName(u"package"_s).at(1).toElement().attribute(u"name"_s), u"src"_s);
        const QDomElement add = document.elementsByTagName(u"method"_s).at(0).toElement();
        QCOMPARE(add.attribute(u"name"_s), u"add"_s);
        QCOMPARE(add.elementsByTagName(u"line"_s).size(), 3);
        QCOMPARE(add.elementsByTagName(u"line"_s).at(1).toElement().attribute(u"condition-coverage"_s),
                 u"100% (2/2)"_s);

        // Without the compiler's coverage, the runtime's functions.
        QAStCoverageReport runtime;
        runtime.readData("NT \"/p/test\" 1\nFT \"main\" 0x1\nCO \"main\" 2\nTE 1\n");
        QBuffer functions;
        functions.open(QIODevice::WriteOnly);
        QVERIFY(runtime.writeLcov(&functions, u"t"_s));
        QCOMPARE(functions.data(), QByteArray("TN:t\nSF:/p/test\nFN:0,main\nFNDA:2,main\nFNF:1\nFNH:1\nend_of_record\n"));
    }

    // The example's unit test built and run with the compiler's coverage:
    // the report's lines and branches of each file are gcov's own summary
    // of the same counters; genhtml renders its lcov file; its Cobertura
    // report holds the same totals.
    void exampleMatchesGcov()
    {
        SKIP_WITHOUT("perl", "gcc", "gcov");
        RecordingStudio studio;
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(&studio, nullptr));
        QTemporaryDir example;
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, example.path());
        QAStProject project(u"calculator"_s, QPixmap());
        QVERIFY(project.open(example.filePath(u"calculator.rtp"_s)));
        auto* unit = qobject_cast<QAStNodeUnitTesting*>(project.findNode(u"Unit tests"_s));
        QVERIFY(unit);
        unit->currentConfiguration()->setProperty(u"arguments"_s, u"--rounds 1"_s);
        unit->currentConfiguration()->setProperty(u"atc_onthefly"_s, false);
        unit->currentConfiguration()->setProperty(u"att_on_fly"_s, false);
        const auto console = [&] { return studio.consoleText(QAStData::OutputConsole); };
        QVERIFY2(walk(unit, &QAStNode::build), qPrintable(console()));
        QVERIFY2(console().contains(QLatin1String("--coverage")), qPrintable(console()));
        QVERIFY2(walk(unit, &QAStNode::execute), qPrintable(console()));

        const QString tio = unit->runtimeResultFiles().at(QASTSplitSurvey::Coverage);
        QAStCoverageReport report;
        QVERIFY(report.read(tio));
        QVERIFY2(report.faults().isEmpty(), qPrintable(report.faults().join(u'\n')));
        QVERIFY(report.isComplete());
        QVERIFY(report.hasLineCoverage());
        QVERIFY(!report.runtimeFunctions().empty());

        QStringList objects;
        QDirIterator notes(example.filePath(u"build/Unit tests.objects"_s), {u"*.gcno"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (notes.hasNext())
            objects << notes.next();
        QCOMPARE(objects.size(), 2);
        QString fault;
        const QMap<QString, Counts> gcov = gcovSummary(example.path(), objects, &fault);
        QVERIFY2(fault.isEmpty(), qPrintable(fault));
        const QString root = QFileInfo(example.path()).canonicalFilePath();
        Counts gcovTotals;
        int inProject = 0;
        for (auto it = gcov.cbegin(); it != gcov.cend(); ++it) {
            const QString path = QFileInfo(QDir(example.path()).filePath(it.key())).canonicalFilePath();
            if (!path.startsWith(root + u'/'))
                continue;
            ++inProject;
            gcovTotals.add(it.value());
            const QAStCoverageReport::File* file = report.file(path);
            QVERIFY2(file, qPrintable(path));
            QCOMPARE(file->counts.lines, it.value().lines);
            QCOMPARE(file->counts.linesHit, it.value().linesHit);
            QCOMPARE(file->counts.branches, it.value().branches);
            QCOMPARE(file->counts.branchesHit, it.value().branchesHit);
        }
        QCOMPARE(int(report.files().size()), inProject);
        QVERIFY(report.totals().lines > 10 && report.totals().branches > 4);
        QVERIFY(report.totals().linesHit < report.totals().lines);
        QCOMPARE(QAStCoverageReport::percent(report.totals().linesHit, report.totals().lines),
                 QAStCoverageReport::percent(gcovTotals.linesHit, gcovTotals.lines));
        QCOMPARE(QAStCoverageReport::percent(report.totals().branchesHit, report.totals().branches),
                 QAStCoverageReport::percent(gcovTotals.branchesHit, gcovTotals.branches));
        const QAStCoverageReport::File* calc = report.file(example.filePath(u"src/calc.c"_s));
        QVERIFY(calc);
        QVERIFY(std::any_of(calc->functions.begin(), calc->functions.end(),
                            [](const auto& f) { return f.name == "calc_evaluate" && f.calls == 16; }));

        // A second run starts from fresh counters.
        QVERIFY2(walk(unit, &QAStNode::execute), qPrintable(console()));
        QAStCoverageReport second;
        QVERIFY(second.read(tio));
        QVERIFY(second.totals() == report.totals());
        QCOMPARE(second.file(example.filePath(u"src/calc.c"_s))->lineCount(calc->lines.front().number),
                 calc->lines.front().count);

        if (!TestTools::missing({"genhtml"}).isEmpty())
            QSKIP("genhtml is not installed");
        QSaveFile lcov(example.filePath(u"coverage.info"_s));
        QVERIFY(lcov.open(QIODevice::WriteOnly));
        QVERIFY(report.writeLcov(&lcov, unit->name()));
        QVERIFY(lcov.commit());
        QProcess genhtml;
        genhtml.setProcessChannelMode(QProcess::MergedChannels);
        genhtml.start(u"genhtml"_s, {u"--branch-coverage"_s, u"-o"_s, example.filePath(u"html"_s), lcov.fileName()});
        QVERIFY(genhtml.waitForFinished(120000));
        QVERIFY2(genhtml.exitCode() == 0, genhtml.readAll().constData());
        QVERIFY(QFileInfo::exists(example.filePath(u"html/index.html"_s)));

        QBuffer xml;
        xml.open(QIODevice::WriteOnly);
        QVERIFY(report.writeCobertura(&xml, example.path()));
        QDomDocument document;
        QVERIFY(document.setContent(xml.data()));
        const QDomElement root2 = document.documentElement();
        QCOMPARE(root2.attribute(u"lines-valid"_s).toLongLong(), gcovTotals.lines);
        QCOMPARE(root2.attribute(u"lines-covered"_s).toLongLong(), gcovTotals.linesHit);
        QCOMPARE(root2.attribute(u"branches-valid"_s).toLongLong(), gcovTotals.branches);
        QCOMPARE(root2.attribute(u"branches-covered"_s).toLongLong(), gcovTotals.branchesHit);
        QAStProject::setModeBatch(false);
    }
};

QTEST_MAIN(TestCoverage)
#include "tst_coverage.moc"
