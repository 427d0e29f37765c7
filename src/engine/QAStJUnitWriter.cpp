#include "QAStJUnitWriter.h"

#include "QAStTestResults.h"

#include <QDateTime>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

// Text XML 1.0 can hold: control characters but tab, newline and return
// written "\xHH".
QString xmlText(const QString& text)
{
    const auto unfit = [](QChar c) {
        return (c.unicode() < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c.unicode() >= 0xFFFE;
    };
    if (std::none_of(text.cbegin(), text.cend(), unfit))
        return text;
    QString written;
    written.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (unfit(c))
            written += QStringLiteral("\\x") + QStringLiteral("%1").arg(c.unicode(), 2, 16, QLatin1Char('0')).toUpper();
        else
            written += c;
    }
    return written;
}

QString seconds(qint64 milliseconds)
{
    return QString::number(double(qMax<qint64>(0, milliseconds)) / 1000.0, 'f', 3);
}

// The BT date ("2026-11-22 08:12:03") as an XML date and time.
QString timestamp(const QString& date)
{
    const QDateTime time = QDateTime::fromString(date, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return time.isValid() ? time.toString(Qt::ISODate) : QString();
}

struct Counts {
    int tests = 0;
    int failures = 0;
    int errors = 0;
    qint64 ms = 0;
};

// The test cases of one test: its checks, and the test itself where no
// check tells its outcome.
struct Case {
    QString name;
    QString classname;
    qint64 ms = 0;
    enum { Passed, Failure, Error } outcome = Passed;
    QString message;
    QString text;
};

QList<Case> casesOf(const QString& suite, const QAStTestResults::Test& test)
{
    QList<Case> cases;
    const QString classname = test.name == suite ? suite : suite + u'.' + test.name;
    for (const QAStTestResults::Check& check : test.checks) {
        Case c{check.name, classname, 0, check.passed ? Case::Passed : Case::Failure, QString(), QString()};
        if (!check.passed) {
            c.message = check.message;
            // The place before the message, unless the message begins with it.
            const QString place = QStringLiteral("%1:%2").arg(check.file).arg(check.line);
            c.text = check.file.isEmpty() || check.message.startsWith(place)
                         ? check.message
                         : place + QStringLiteral(": ") + check.message;
        }
        cases.append(c);
    }
    const bool failedCheck = test.failedChecks() > 0;
    if (!test.ended) {
        cases.append({test.name, classname, qMax<qint64>(0, test.elapsedMs), Case::Error,
                      QStringLiteral("%1 did not end").arg(test.name),
                      QStringLiteral("The test results end before the end of %1.").arg(test.name)});
    } else if (test.status != 0 && !failedCheck) {
        const QString why = test.status > 128 ? QStringLiteral("was killed by signal %1").arg(test.status - 128)
                                              : QStringLiteral("ended with status %1").arg(test.status);
        cases.append({test.name, classname, qMax<qint64>(0, test.elapsedMs), Case::Failure,
                      QStringLiteral("%1 %2").arg(test.name, why), QStringLiteral("%1 %2").arg(test.name, why)});
    } else if (test.checks.isEmpty()) {
        cases.append({test.name, classname, qMax<qint64>(0, test.elapsedMs), Case::Passed, QString(), QString()});
    }
    return cases;
}

void writeCase(QXmlStreamWriter& xml, const Case& c)
{
    xml.writeStartElement(QStringLiteral("testcase"));
    xml.writeAttribute(QStringLiteral("name"), xmlText(c.name));
    xml.writeAttribute(QStringLiteral("classname"), xmlText(c.classname));
    xml.writeAttribute(QStringLiteral("time"), seconds(c.ms));
    if (c.outcome != Case::Passed) {
        xml.writeStartElement(c.outcome == Case::Failure ? QStringLiteral("failure") : QStringLiteral("error"));
        xml.writeAttribute(QStringLiteral("message"), xmlText(c.message));
        xml.writeAttribute(QStringLiteral("type"), c.outcome == Case::Failure ? QStringLiteral("failure")
                                                                             : QStringLiteral("error"));
        xml.writeCharacters(xmlText(c.text));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

// One suite's cases, counts and output, gathered before it is written:
// its counts lead it.
struct SuiteCases {
    QString name;
    QList<Case> cases;
    Counts counts;
    QByteArray out;
    QByteArray err;
    QString start;
};

SuiteCases gather(const QAStJUnitWriter::Suite& suite)
{
    SuiteCases gathered;
    gathered.name = suite.name;
    if (!suite.results)
        return gathered;
    for (const QAStTestResults::Test& test : suite.results->tests()) {
        gathered.cases += casesOf(suite.name, test);
        gathered.counts.ms += qMax<qint64>(0, test.elapsedMs);
        gathered.out += test.out;
        gathered.err += test.err;
        if (gathered.start.isEmpty())
            gathered.start = timestamp(test.date);
    }
    for (const Case& c : std::as_const(gathered.cases)) {
        ++gathered.counts.tests;
        gathered.counts.failures += c.outcome == Case::Failure;
        gathered.counts.errors += c.outcome == Case::Error;
    }
    return gathered;
}

void writeCounts(QXmlStreamWriter& xml, const Counts& counts)
{
    xml.writeAttribute(QStringLiteral("tests"), QString::number(counts.tests));
    xml.writeAttribute(QStringLiteral("failures"), QString::number(counts.failures));
    xml.writeAttribute(QStringLiteral("errors"), QString::number(counts.errors));
}

void writeSuite(QXmlStreamWriter& xml, const SuiteCases& suite, int id)
{
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), xmlText(suite.name));
    xml.writeAttribute(QStringLiteral("id"), QString::number(id));
    writeCounts(xml, suite.counts);
    xml.writeAttribute(QStringLiteral("skipped"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("time"), seconds(suite.counts.ms));
    if (!suite.start.isEmpty())
        xml.writeAttribute(QStringLiteral("timestamp"), suite.start);
    for (const Case& c : suite.cases)
        writeCase(xml, c);
    xml.writeTextElement(QStringLiteral("system-out"), xmlText(QString::fromUtf8(suite.out)));
    xml.writeTextElement(QStringLiteral("system-err"), xmlText(QString::fromUtf8(suite.err)));
    xml.writeEndElement();
}

}

bool QAStJUnitWriter::write(QIODevice* device, const QList<Suite>& suites)
{
    QList<SuiteCases> gathered;
    Counts total;
    for (const Suite& suite : suites) {
        gathered.append(gather(suite));
        const Counts& counts = gathered.last().counts;
        total.tests += counts.tests;
        total.failures += counts.failures;
        total.errors += counts.errors;
        total.ms += counts.ms;
    }
    QXmlStreamWriter xml(device);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("korvil"));
    writeCounts(xml, total);
    xml.writeAttribute(QStringLiteral("time"), seconds(total.ms));
    int id = 0;
    for (const SuiteCases& suite : std::as_const(gathered))
        writeSuite(xml, suite, id++);
    xml.writeEndElement();
    xml.writeEndDocument();
    return !xml.hasError();
}

bool QAStJUnitWriter::writeFile(const QString& path, const QList<Suite>& suites, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !write(&file, suites) || !file.commit()) {
        if (error)
            *error = QStringLiteral("%1: cannot write: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}
