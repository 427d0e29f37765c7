// The readers of a test run's result files (test results, performance and
// memory profiles, trace), the JUnit and trace-event writers, and the
// follower the views use: real files in a temporary directory, the JUnit
// file checked by xmllint against the schema in tests/data/junit.
#include "QAStChromeTrace.h"
#include "QAStJUnitWriter.h"
#include "QAStMemoryReport.h"
#include "QAStProfileReport.h"
#include "QAStResultFollower.h"
#include "QAStTestResults.h"
#include "QAStTraceReport.h"

#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QBuffer>
#include <QDomDocument>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<QAStRecordReader> readerOf(const QString& kind)
{
    if (kind == u"results")
        return std::make_unique<QAStTestResults>();
    if (kind == u"profile")
        return std::make_unique<QAStProfileReport>();
    if (kind == u"memory")
        return std::make_unique<QAStMemoryReport>();
    return std::make_unique<QAStTraceReport>();
}

// What a reader kept: tests, functions, blocks left or calls.
qint64 keptOf(const QAStRecordReader& reader)
{
    if (const auto* r = dynamic_cast<const QAStTestResults*>(&reader))
        return r->tests().size() * 100 + r->checkCount();
    if (const auto* p = dynamic_cast<const QAStProfileReport*>(&reader))
        return p->functions().size();
    if (const auto* m = dynamic_cast<const QAStMemoryReport*>(&reader))
        return m->blocksLeft().size();
    return qint64(static_cast<const QAStTraceReport&>(reader).calls().size());
}

QJsonArray chromeEvents(const QAStTraceReport& trace)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!QAStChromeTrace::write(&buffer, trace))
        return QJsonArray();
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(buffer.data(), &error);
    if (error.error != QJsonParseError::NoError)
        qWarning() << "trace-event JSON:" << error.errorString() << "at" << error.offset;
    return json.object().value(u"traceEvents"_s).toArray();
}

// xmllint's verdict on file against the shipped JUnit schema: empty when
// valid.
QString schemaFault(const QString& file)
{
    QProcess lint;
    lint.start(u"xmllint"_s, {u"--noout"_s, u"--schema"_s, QStringLiteral(SDK110_TEST_DATA "/junit/junit.xsd"), file});
    if (!lint.waitForFinished(60000))
        return u"xmllint did not end"_s;
    return lint.exitCode() == 0 ? QString() : QString::fromLocal8Bit(lint.readAllStandardError());
}

}

class TestReports : public QObject {
    Q_OBJECT

private slots:
    // A failure or pass line is one check, named and placed by the
    // framework's form of the line.
    void checkNames_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("message");
        QTest::newRow("plain") << QByteArray(R"(FAILED: "2 + 3" gave ok 6, expected ok 5)")
                               << R"("2 + 3" gave ok 6, expected ok 5)" << "" << "";
        QTest::newRow("plain after its place") << QByteArray("tests/test_ring.c:12: FAILED: v == 3") << "v == 3"
                                               << "tests/test_ring.c:12" << "";
        QTest::newRow("unity fail") << QByteArray("test/test_calc.c:42:test_add:FAIL: Expected 5 Was 6")
                                    << "test_add" << "test/test_calc.c:42" << "Expected 5 Was 6";
        QTest::newRow("unity pass") << QByteArray("test/test_calc.c:50:test_sub:PASS") << "test_sub"
                                    << "test/test_calc.c:50" << "";
        QTest::newRow("check") << QByteArray("check_money.c:17:F:Core:test_create:0: Assertion 'x == 5' failed")
                               << "test_create" << "check_money.c:17" << "Assertion 'x == 5' failed";
        QTest::newRow("googletest") << QByteArray("[  FAILED  ] CalcTest.Adds (3 ms)") << "CalcTest.Adds" << ""
                                    << "";
        QTest::newRow("googletest summary") << QByteArray("[  FAILED  ] 2 tests, listed below:") << "" << ""
                                            << "";
        QTest::newRow("tap") << QByteArray("not ok 3 - divides by zero # TODO later") << "divides by zero" << ""
                             << "";
        QTest::newRow("tap without name") << QByteArray("not ok 7") << "test 7" << "" << "";
        QTest::newRow("cunit") << QByteArray("  Test: test_divide ...FAILED") << "test_divide" << "" << "";
        QTest::newRow("assert") << QByteArray("test_calc: tests/unit/test_calc.c:88: main: Assertion `ok' failed.")
                                << "main" << "tests/unit/test_calc.c:88" << "Assertion `ok' failed.";
        QTest::newRow("other form, place inside") << QByteArray("ERROR in (src/calc.c:12) overflow")
                                                  << "ERROR in (src/calc.c:12) overflow" << "src/calc.c:12" << "";
        QTest::newRow("a time is no place") << QByteArray("FAILED: timeout at 12:30:01") << "timeout at 12:30:01"
                                            << "" << "";
    }

    void checkNames()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, name);
        QFETCH(QString, place);
        QFETCH(QString, message);
        const QAStTestResults::Check check = QAStTestResults::checkOf(line, false);
        QCOMPARE(check.name, name);
        QCOMPARE(check.file.isEmpty() ? QString() : u"%1:%2"_s.arg(check.file).arg(check.line), place);
        if (!name.isEmpty())
            QCOMPARE(check.message, message.isEmpty() ? QString::fromUtf8(line) : message);
    }

    // Bad input gives what could be read and a count of the lines skipped,
    // with the first one's line and reason.
    void badInput_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<qint64>("kept");
        QTest::addColumn<qint64>("skipped");
        QTest::addColumn<QString>("firstSkip");

        const QByteArray test = "BT \"t\" \"2026-01-02 03:04:05\" \"/bin/t\"\nFL \"FAILED: one\"\nSM \"t\" 1 1 1 0\n";
        QTest::newRow("results: empty") << "results" << QByteArray() << 0ll << 0ll << "";
        QTest::newRow("results: whole") << "results" << test << 101ll << 0ll << "";
        QTest::newRow("results: cut in its last line") << "results" << test.left(test.size() - 10) << 101ll << 1ll
                                                       << "line 3: no record";
        QTest::newRow("results: lines before the test") << "results" << "RL \"stale\"\nSM \"old\" 0 0 0 0\n" + test
                                                        << 101ll << 2ll << "line 1: a test's line outside a test";
        QTest::newRow("results: unknown record and garbage")
            << "results" << test + "ZZ 1 2\n\x01\xff\xfe\n\"open\n" << 101ll << 3ll << "line 4: not a test-result record";
        QTest::newRow("results: quote left open") << "results" << QByteArray("BT \"t\nRL \"x\"\n") << 0ll << 2ll
                                                  << "line 1: no record";
        QTest::newRow("results: CRLF") << "results" << QByteArray(test).replace("\n", "\r\n") << 101ll << 0ll << "";

        const QByteArray profile = "QU \"/bin/t\" 42\nQD \"Mon\"\nQF \"f\" 2 30 20 16\nQF \"g\" 1 10 10 10\nQT 99\n";
        QTest::newRow("profile: whole") << "profile" << profile << 2ll << 0ll << "";
        QTest::newRow("profile: fields missing") << "profile" << "QF \"f\" 2 30\nQF f 1 2 3 4\n" + profile << 2ll
                                                 << 2ll << "line 1: a function's profile with fields missing";
        QTest::newRow("profile: cut") << "profile" << profile.left(profile.indexOf("QF \"g\"") + 9) << 1ll << 1ll
                                      << "line 4: a function's profile with fields missing";
        QTest::newRow("profile: a trace record") << "profile" << "ME 0 \"f\" 1\n" + profile << 2ll << 1ll
                                                 << "line 1: not a performance-profile record";

        const QByteArray memory = "PU \"/bin/t\" 42\nPT \"\" \"Mon\"\nPB 6 0x10 \"f\"\nPB 8 0x20 \"g\"\n"
                                  "PF 0x10 6 \"f\"\nPO 8 0x20 \"g\"\nPS 2 1 14 14 1 8\n";
        QTest::newRow("memory: whole") << "memory" << memory << 1ll << 0ll << "";
        QTest::newRow("memory: killed before its end") << "memory" << memory.left(memory.indexOf("PO")) << 1ll
                                                       << 0ll << "";
        QTest::newRow("memory: bad address") << "memory" << QByteArray("PB 6 16 \"f\"\nPF zz 6 \"f\"\n") << 0ll << 2ll
                                             << "line 1: an allocation with fields missing";
        QTest::newRow("memory: bare stamp") << "memory" << "PT\n" + memory << 1ll << 0ll << "";
        QTest::newRow("memory: free never allocated") << "memory" << QByteArray("PX 0x30 \"f\"\nPF 0x40 4 \"f\"\n") << 0ll
                                                      << 0ll << "";

        const QByteArray trace = "TS \"/bin/t\" 42\nME 0 \"main\" 1 42\nME 1 \"f\" 2 42\nMR 1 \"f\" 5 42\n"
                                 "MR 0 \"main\" 9 42\nTM 2 2\n";
        QTest::newRow("trace: whole") << "trace" << trace << 2ll << 0ll << "";
        QTest::newRow("trace: older form") << "trace" << QByteArray(trace).replace(" 42\n", "\n") << 2ll << 0ll << "";
        QTest::newRow("trace: return without entry") << "trace" << "MR 3 \"x\" 1\n" + trace << 2ll << 1ll
                                                     << "line 1: a return without its entry";
        QTest::newRow("trace: cut in a name") << "trace" << trace.left(trace.indexOf("MR 1") + 6) << 2ll << 1ll
                                              << "line 4: no record";
        QTest::newRow("trace: time no number") << "trace" << QByteArray("ME 0 \"f\" x1\nME 0 \"f\"\n") << 0ll << 2ll
                                               << "line 1: a call record with fields missing";
        QTest::newRow("trace: a profile record") << "trace" << "QF \"f\" 1 1 1 1\n" + trace << 2ll << 1ll
                                                 << "line 1: not a trace record";
    }

    void badInput()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, input);
        QFETCH(qint64, kept);
        QFETCH(qint64, skipped);
        QFETCH(QString, firstSkip);
        QTemporaryDir dir;
        const QString file = dir.filePath(u"result"_s);
        TestFiles::writeFile(file, input);
        const std::unique_ptr<QAStRecordReader> reader = readerOf(kind);
        QVERIFY(reader->readFile(file));
        QCOMPARE(keptOf(*reader), kept);
        QCOMPARE(reader->skippedLines(), skipped);
        if (skipped == 0) {
            QCOMPARE(reader->skippedText(), QString());
        } else {
            QVERIFY2(reader->skippedText().startsWith(file + u": "_s), qPrintable(reader->skippedText()));
            QVERIFY2(reader->skippedText().endsWith(firstSkip), qPrintable(reader->skippedText()));
        }
        // The same lines given in two parts, as a follower gives them.
        const std::unique_ptr<QAStRecordReader> parts = readerOf(kind);
        const qsizetype half = input.indexOf('\n', input.size() / 2) + 1;
        parts->addLines(input.left(half > 0 ? half : input.size()));
        if (half > 0)
            parts->addLines(input.mid(half));
        QCOMPARE(keptOf(*parts), kept);
        QCOMPARE(parts->skippedLines(), skipped);

        QVERIFY(!reader->readFile(dir.filePath(u"missing"_s)));
        QVERIFY(reader->errorString().startsWith(dir.filePath(u"missing"_s) + u": cannot read: "_s));
    }

    // A system test's two scripts: each a test, its checks once each, the
    // output kept by channel, the end of the run from the end-of-test line.
    void testResults()
    {
        QTemporaryDir dir;
        TestFiles::writeFile(dir.filePath(u"t.rio"_s),
                             "BT \"fail.sh\" \"2026-01-02 03:04:05\" \"/t/fail.sh\"\n"
                             "RL \"tests/a_test.cc:12: Failure\"\n"
                             "FL \"[  FAILED  ] A.Adds (0 ms)\"\n"
                             "PL \"[       OK ] A.Subs (0 ms)\"\n"
                             "RE \"warning\\ton \\\"err\\\"\"\n"
                             "FL \"[  FAILED  ] A.Adds\"\n"
                             "FL \"[  FAILED  ] 1 test, listed below:\"\n"
                             "SM \"fail.sh\" 1 5 3 1\n"
                             "BT \"crash.sh\" \"2026-01-02 03:04:06\" \"/t/crash.sh\"\n"
                             "SM \"crash.sh\" 139 0 0 0\n"
                             "BT \"hang.sh\" \"2026-01-02 03:04:07\" \"/t/hang.sh\"\n"
                             "RL \"waiting\"\n");
        TestFiles::writeFile(dir.filePath(u"t.end"_s), "td \"System tests\" 1 2 2\n");
        QAStTestResults results;
        QVERIFY(results.readFiles(dir.filePath(u"t.rio"_s), dir.filePath(u"t.end"_s)));
        QCOMPARE(results.skippedLines(), 0);
        QCOMPARE(results.tests().size(), 3);
        const QAStTestResults::Test& fail = results.tests().at(0);
        QCOMPARE(fail.checks.size(), 2);
        QCOMPARE(fail.checks.at(0).name, u"A.Adds"_s);
        QCOMPARE(fail.checks.at(0).file, u"tests/a_test.cc"_s); // from the line before
        QCOMPARE(fail.checks.at(0).line, 12);
        QVERIFY(fail.checks.at(1).passed);
        QCOMPARE(fail.err, QByteArray("warning\ton \"err\"\n"));
        QVERIFY(fail.out.startsWith("tests/a_test.cc:12: Failure\n[  FAILED  ] A.Adds (0 ms)\n"));
        QCOMPARE(fail.outputLines, 6);
        QVERIFY(!fail.passed());
        QCOMPARE(results.tests().at(1).status, 139);
        QVERIFY(results.tests().at(1).ended && !results.tests().at(1).passed());
        QVERIFY(!results.tests().at(2).ended);
        QCOMPARE(results.failedTests(), 3);
        QCOMPARE(results.checkCount(), 2);
        QCOMPARE(results.failedChecks(), 1);
        QVERIFY(results.run().ended);
        QCOMPARE(results.run().name, u"System tests"_s);
        QCOMPARE(results.run().failed, 2);

        // As JUnit: a suite with a case per check, one for the crash, an
        // error for the test that did not end; valid against the schema.
        QAStTestResults unit;
        TestFiles::writeFile(dir.filePath(u"u.rio"_s), "BT \"Unit tests\" \"2026-01-02 03:04:05\" \"/t/u\"\n"
                                                       "RL \"16 checks, 0 failed \\x01\\x1B[0m\"\n"
                                                       "SM \"Unit tests\" 0 1 0 0 1250\n");
        QVERIFY(unit.readFile(dir.filePath(u"u.rio"_s)));
        const QString junit = dir.filePath(u"junit.xml"_s);
        QString error;
        QVERIFY(QAStJUnitWriter::writeFile(junit, {{u"System tests"_s, &results}, {u"Unit tests"_s, &unit}}, &error));
        if (TestTools::missing({"xmllint"}).isEmpty())
            QVERIFY2(schemaFault(junit).isEmpty(), qPrintable(schemaFault(junit)));
        QDomDocument xml;
        QVERIFY(xml.setContent(TestFiles::readFile(junit)));
        const QDomElement root = xml.documentElement();
        QCOMPARE(root.attribute(u"tests"_s), u"5"_s);
        QCOMPARE(root.attribute(u"failures"_s), u"2"_s);
        QCOMPARE(root.attribute(u"errors"_s), u"1"_s);
        const QDomElement system = root.firstChildElement(u"testsuite"_s);
        QCOMPARE(system.attribute(u"name"_s), u"System tests"_s);
        QCOMPARE(system.attribute(u"timestamp"_s), u"2026-01-02T03:04:05"_s);
        const QDomElement adds = system.firstChildElement(u"testcase"_s);
        QCOMPARE(adds.attribute(u"name"_s), u"A.Adds"_s);
        QCOMPARE(adds.attribute(u"classname"_s), u"System tests.fail.sh"_s);
        QCOMPARE(adds.firstChildElement(u"failure"_s).text(), u"tests/a_test.cc:12: [  FAILED  ] A.Adds (0 ms)"_s);
        const QDomElement crash = adds.nextSiblingElement().nextSiblingElement();
        QCOMPARE(crash.firstChildElement(u"failure"_s).attribute(u"message"_s), u"crash.sh was killed by signal 11"_s);
        QCOMPARE(crash.nextSiblingElement().firstChildElement(u"error"_s).attribute(u"message"_s),
                 u"hang.sh did not end"_s);
        QVERIFY(system.firstChildElement(u"system-err"_s).text().contains(u"warning\ton \"err\""_s));
        const QDomElement unitSuite = system.nextSiblingElement(u"testsuite"_s);
        QCOMPARE(unitSuite.attribute(u"time"_s), u"1.250"_s);
        QCOMPARE(unitSuite.firstChildElement(u"testcase"_s).attribute(u"name"_s), u"Unit tests"_s);
        QCOMPARE(unitSuite.firstChildElement(u"system-out"_s).text(), u"16 checks, 0 failed \\x01\\x1B[0m\n"_s);
    }

    // The blocks left and the counts: the runtime's own at the end, those
    // of the blocks seen for a run that did not end; the profile sorted by
    // own time, a function reported twice summed.
    void memoryAndProfile()
    {
        QAStMemoryReport memory;
        memory.addLines("PU \"/bin/t\" 7\nPB 10 0x10 \"f\"\nPB 20 0x20 \"g\"\nPB 30 0x30 \"g\"\nPF 0x20 20 \"g\"\n"
                        "PX 0x99 \"h\"\n");
        QVERIFY(!memory.ended());
        QCOMPARE(memory.allocations(), 3);
        QCOMPARE(memory.frees(), 2);
        QCOMPARE(memory.unknownFrees(), 1);
        QCOMPARE(memory.peakBytes(), 60);
        QCOMPARE(memory.bytesLeft(), 40);
        QCOMPARE(memory.blocksLeft().size(), 2);
        QCOMPARE(memory.sites().first().function, u"g"_s);
        QCOMPARE(memory.sites().first().bytes, 30);
        memory.addLines("PO 10 0x10 \"f\"\nPO 30 0x30 \"g\"\nPS 3 2 60 60 2 40\n");
        QVERIFY(memory.ended());
        QCOMPARE(memory.blocksLeft().size(), 2);
        QCOMPARE(memory.blocksLeft().first().address, 0x10u);
        QCOMPARE(memory.bytesLeft(), 40);

        QAStProfileReport profile;
        profile.addLines("QF \"a\" 1 50 5 50\nQF \"b\" 4 40 40 20\nQF \"c\" 1 9 9 9\nQF \"a\" 1 50 10 45\nQT 100\n");
        QStringList order;
        for (const QAStProfileReport::Function& f : profile.functions())
            order << f.name;
        QCOMPARE(order, (QStringList{"b", "a", "c"}));
        QCOMPARE(profile.functions().at(1).calls, 2);
        QCOMPARE(profile.functions().at(1).self, 15);
        QCOMPARE(profile.functions().at(1).longest, 50);
        QCOMPARE(profile.runTime(), 100);
    }

    // Entries and returns pair on their own thread, however the threads'
    // records interleave; calls left open end incomplete; the trace-event
    // file holds one complete event per entry, valid JSON.
    void traceAndChromeEvents()
    {
        const QByteArray traceLines = "TS \"/bin/t\" 40\n"
                                     "ME 0 \"main\" 0 40\n"
                                     "ME 0 \"worker\" 1 41\n"
                                     "ME 1 \"f\\\"q\\\\\" 2 40\n"
                                     "ME 1 \"f\\\"q\\\\\" 3 41\n"
                                     "MR 1 \"f\\\"q\\\\\" 10 40\n"
                                     "ME 2 \"deep\" 11 41\n"
                                     "MR 1 \"f\\\"q\\\\\" 20 41\n" // deep never returned
                                     "MR 0 \"main\" 30 40\n"
                                     "ME 1 \"\\x01odd \\xff\" 31 41\n";
        QAStTraceReport trace;
        trace.addLines(traceLines);
        QCOMPARE(trace.skippedLines(), 0);
        QCOMPARE(trace.calls().size(), size_t(6));
        QCOMPARE(trace.threads().size(), 2);
        const auto& calls = trace.calls();
        QCOMPARE(trace.functionName(calls[2]), u"f\"q\\"_s);
        QCOMPARE(calls[2].thread, calls[0].thread);
        QCOMPARE(trace.durationOf(calls[2]), 8); // 2..10 on thread 40
        QCOMPARE(trace.durationOf(calls[3]), 17); // 3..20 on thread 41
        QVERIFY(calls[3].complete);
        QVERIFY(!calls[4].complete); // deep
        QCOMPARE(trace.durationOf(calls[4]), 9);
        QCOMPARE(trace.durationOf(calls[0]), 30);
        QVERIFY(!calls[1].complete); // worker still open at the end
        QCOMPARE(trace.openCalls(), 2);
        QCOMPARE(trace.maximumDepth(), 2);
        // The totals, the same whether the calls are kept or not: f"q\
        // twice (8 and 17 us), main once (30), deep cut at 20 (9).
        QAStTraceReport totalsOnly;
        totalsOnly.setKeepCalls(false);
        totalsOnly.addLines(traceLines);
        QVERIFY(totalsOnly.calls().empty());
        for (const QAStTraceReport* read : {&trace, &totalsOnly}) {
            const auto& totals = read->functionTotals();
            QCOMPARE(totals.size(), size_t(5));
            QCOMPARE(totals[0].calls, 1); // main
            QCOMPARE(totals[0].total, 30);
            QCOMPARE(totals[2].calls, 2); // f"q\
            QCOMPARE(totals[2].total, 25);
            QCOMPARE(totals[2].longest, 17);
            QCOMPARE(totals[3].total, 9); // deep
        }

        const QJsonArray events = chromeEvents(trace);
        int complete = 0;
        for (const QJsonValue& value : events) {
            const QJsonObject event = value.toObject();
            if (event.value(u"ph"_s) == u"M"_s) {
                QCOMPARE(event.value(u"args"_s).toObject().value(u"name"_s).toString(), u"/bin/t"_s);
                continue;
            }
            QCOMPARE(event.value(u"ph"_s).toString(), u"X"_s);
            QCOMPARE(event.value(u"pid"_s).toInt(), 40);
            ++complete;
        }
        QCOMPARE(complete, 6);
        QCOMPARE(events.at(3).toObject().value(u"name"_s).toString(), u"f\"q\\"_s);
        QCOMPARE(events.at(4).toObject().value(u"tid"_s).toInt(), 41);
        QCOMPARE(events.at(4).toObject().value(u"dur"_s).toInt(), 17);
        QVERIFY(events.at(5).toObject().value(u"args"_s).toObject().value(u"incomplete"_s).toBool());
        QCOMPARE(events.at(6).toObject().value(u"name"_s).toString(), u"\x01odd \uFFFD"_s);

        // The older form: one thread, the process id as its thread.
        QAStTraceReport older;
        older.addLines("TS \"/bin/t\" 9\nME 0 \"main\" 0\nME 1 \"f\" 1\nMR 1 \"f\" 2\nMR 0 \"main\" 3\n");
        const QJsonArray olderEvents = chromeEvents(older);
        QCOMPARE(olderEvents.size(), 3);
        QCOMPARE(olderEvents.at(2).toObject().value(u"tid"_s).toInt(), 9);
    }

    // The follower hands a reader the file's lines as it grows and starts
    // it again when the file is emptied by a new run.
    void followerFollowsTheFile()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(u"t.tqf"_s);
        TestFiles::writeFile(file, "QF \"a\" 1 5 5 5\n");
        QAStProfileReport profile;
        QAStResultFollower follower;
        QSignalSpy resets(&follower, &QAStResultFollower::reset);
        QSignalSpy changes(&follower, &QAStResultFollower::changed);
        follower.follow(file, &profile, 60000);
        QCOMPARE(resets.size(), 1);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(profile.functions().size(), 1);
        QCOMPARE(profile.fileName(), file);

        QFile grow(file);
        QVERIFY(grow.open(QIODevice::Append));
        grow.write("QF \"b\" 1 9 9 9\nQF \"c\" 1 1");
        grow.close();
        follower.poll();
        QCOMPARE(profile.functions().size(), 2); // the cut line waits for its end
        QCOMPARE(changes.size(), 2);
        follower.poll();
        QCOMPARE(changes.size(), 2); // nothing new: no redraw
        QVERIFY(grow.open(QIODevice::Append));
        grow.write(" 1 1\n");
        grow.close();
        follower.poll();
        QCOMPARE(profile.functions().size(), 3);

        TestFiles::writeFile(file, "QF \"z\" 2 3 3 3\n");
        follower.poll();
        QCOMPARE(resets.size(), 2);
        QCOMPARE(profile.functions().size(), 1);
        QCOMPARE(profile.functions().first().name, u"z"_s);

        follower.follow(QString(), &profile);
        QCOMPARE(profile.functions().size(), 0);
        QVERIFY(!follower.isFollowing());
    }
};

QTEST_MAIN(TestReports)
#include "tst_reports.moc"
