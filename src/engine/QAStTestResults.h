#pragma once

#include "QAStRecordReader.h"
#include "sdk110_export.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>

// The results of a test node's last run, read from its result files: the
// test results (<test>.rio: BT RL RE FL PL SM) and the end-of-test line
// (<test>.end: td), as the Execute driver writes them
// (docs/formats/reports.md).
//
// A run holds one test per BT (a unit test one, a system test one per
// script). A test's checks are its failure and pass lines (FL, PL), one
// check per line, named from the framework's form of the line (Unity,
// Check, GoogleTest, TAP, CUnit, assert(), "FAILED:"/"PASSED:"); a check
// named twice with the same outcome (a summary repeating a failure, a
// round run again) is one check. Where the output tells no check apart,
// the test has none and stands for itself.
//
// Lines outside a test (before its BT or after its SM), unknown records
// and records with fields missing are skipped and counted.
class SDK110_EXPORT QAStTestResults : public QAStRecordReader {
public:
    struct Check {
        QString name;
        bool passed = false;
        // The line that told it, as the test wrote it.
        QString message;
        // The place the line names ("file:line"), when it names one.
        QString file;
        int line = 0;
    };

    struct Test {
        QString name;
        QString date;    // as BT gives it
        QString program; // the file run
        bool ended = false;    // its SM came
        int status = 0;        // its exit status (128 + signal when killed)
        qint64 elapsedMs = -1; // its length when SM gives one
        qint64 outputLines = 0;
        QList<Check> checks;
        // Its output, each line ended by "\n": standard output with the
        // check lines, and standard error.
        QByteArray out;
        QByteArray err;

        int failedChecks() const;
        // Ended with status 0 and no failed check.
        bool passed() const { return ended && status == 0 && failedChecks() == 0; }
    };

    struct Run {
        bool ended = false; // the end-of-test line came
        QString name;
        int status = 0;
        int tests = 0;
        int failed = 0;
    };

    // Reads the test results, then the end-of-test line when endFile is
    // given and exists (a run that did not end has none). False when the
    // test results cannot be read.
    bool readFiles(const QString& rioFile, const QString& endFile);

    void clear() override;

    const QList<Test>& tests() const { return m_tests; }
    const Run& run() const { return m_run; }
    int failedTests() const;
    int checkCount() const;
    int failedChecks() const;

    // The check a failure or pass line tells: its name, place and message.
    static Check checkOf(const QByteArray& line, bool passed);
    // The first "file:line" a line names (a file name with an extension,
    // a colon, digits); false when none.
    static bool findLocation(const QByteArray& line, QString* file, int* number);

protected:
    void readRecord(const QAStRecordFields& record) override;

private:
    void addCheck(Test& test, const QByteArray& line, bool passed);

    QList<Test> m_tests;
    Run m_run;
    bool m_open = false; // a BT without its SM yet
    // The open test's checks by outcome and name, each kept once.
    QSet<QString> m_checkNames;
    // The last place an output line of the open test named: a failure line
    // naming none (GoogleTest's) takes it.
    QString m_lastFile;
    int m_lastLine = 0;
};
