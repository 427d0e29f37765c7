#include "QAStTestResults.h"

#include <QFileInfo>

namespace {

constexpr int BT = QAStRecordFields::codeOf('B', 'T');
constexpr int RL = QAStRecordFields::codeOf('R', 'L');
constexpr int RE = QAStRecordFields::codeOf('R', 'E');
constexpr int FL = QAStRecordFields::codeOf('F', 'L');
constexpr int PL = QAStRecordFields::codeOf('P', 'L');
constexpr int SM = QAStRecordFields::codeOf('S', 'M');
constexpr int TD = QAStRecordFields::codeOf('t', 'd');

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The part of line from its n-th colon on (n from 1), or -1.
qsizetype afterColons(const QByteArray& line, int n)
{
    qsizetype at = -1;
    for (int i = 0; i < n; ++i) {
        at = line.indexOf(':', at + 1);
        if (at < 0)
            return -1;
    }
    return at + 1;
}

// "file:line:" at the start of line, with no blank in file: the length of
// that part, or 0.
qsizetype leadingLocation(const QByteArray& line)
{
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0 || line.left(colon).contains(' '))
        return 0;
    qsizetype p = colon + 1;
    while (p < line.size() && isDigit(line.at(p)))
        ++p;
    return p > colon + 1 && p < line.size() && line.at(p) == ':' ? p + 1 : 0;
}

QString text(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes).trimmed();
}

}

int QAStTestResults::Test::failedChecks() const
{
    int failed = 0;
    for (const Check& c : checks)
        failed += !c.passed;
    return failed;
}

void QAStTestResults::clear()
{
    QAStRecordReader::clear();
    m_tests.clear();
    m_run = Run();
    m_open = false;
    m_checkNames.clear();
    m_lastFile.clear();
    m_lastLine = 0;
}

bool QAStTestResults::readFiles(const QString& rioFile, const QString& endFile)
{
    if (!readFile(rioFile))
        return false;
    if (endFile.isEmpty() || !QFileInfo::exists(endFile))
        return true;
    QFile end(endFile);
    if (end.open(QIODevice::ReadOnly))
        addLines(end.readAll());
    return true;
}

int QAStTestResults::failedTests() const
{
    int failed = 0;
    for (const Test& t : m_tests)
        failed += !t.passed();
    return failed;
}

int QAStTestResults::checkCount() const
{
    int count = 0;
    for (const Test& t : m_tests)
        count += int(t.checks.size());
    return count;
}

int QAStTestResults::failedChecks() const
{
    int failed = 0;
    for (const Test& t : m_tests)
        failed += t.failedChecks();
    return failed;
}

void QAStTestResults::readRecord(const QAStRecordFields& r)
{
    qint64 n[5] = {};
    switch (r.code()) {
    case BT:
        if (r.count() < 1) {
            skip("a test start without its name");
            return;
        }
        m_tests.append(Test());
        m_tests.last().name = QString::fromUtf8(r.text(0));
        m_tests.last().date = QString::fromUtf8(r.text(1));
        m_tests.last().program = QString::fromUtf8(r.text(2));
        m_open = true;
        m_checkNames.clear();
        m_lastFile.clear();
        m_lastLine = 0;
        return;
    case RL:
    case RE:
    case FL:
    case PL: {
        if (!m_open) {
            skip("a test's line outside a test");
            return;
        }
        if (r.count() < 1) {
            skip("a test's line without its text");
            return;
        }
        Test& test = m_tests.last();
        const QByteArray line = r.text(0);
        ++test.outputLines;
        (r.code() == RE ? test.err : test.out) += line + '\n';
        if (r.code() == FL || r.code() == PL)
            addCheck(test, line, r.code() == PL);
        else if (leadingLocation(line) > 0)
            findLocation(line, &m_lastFile, &m_lastLine);
        return;
    }
    case SM:
        if (!m_open) {
            skip("a test's end outside a test");
            return;
        }
        if (!r.number(1, &n[0])) {
            skip("a test's end without its status");
            return;
        }
        m_tests.last().ended = true;
        m_tests.last().status = int(n[0]);
        if (r.number(5, &n[1]))
            m_tests.last().elapsedMs = n[1];
        m_open = false;
        return;
    case TD:
        if (!r.number(1, &n[0]) || !r.number(2, &n[1]) || !r.number(3, &n[2])) {
            skip("an end-of-test line with fields missing");
            return;
        }
        m_run.ended = true;
        m_run.name = QString::fromUtf8(r.text(0));
        m_run.status = int(n[0]);
        m_run.tests = int(n[1]);
        m_run.failed = int(n[2]);
        return;
    default:
        skip("not a test-result record");
    }
}

void QAStTestResults::addCheck(Test& test, const QByteArray& line, bool passed)
{
    Check check = checkOf(line, passed);
    if (check.name.isEmpty())
        return; // a summary line: no check of its own
    if (!passed && check.file.isEmpty() && !m_lastFile.isEmpty()) {
        check.file = m_lastFile;
        check.line = m_lastLine;
    }
    const QString key = (passed ? u'P' : u'F') + check.name;
    if (m_checkNames.contains(key))
        return;
    m_checkNames.insert(key);
    test.checks.append(check);
}

bool QAStTestResults::findLocation(const QByteArray& line, QString* file, int* number)
{
    const char* data = line.constData();
    const qsizetype size = line.size();
    for (qsizetype colon = line.indexOf(':'); colon > 0; colon = line.indexOf(':', colon + 1)) {
        qsizetype end = colon + 1;
        while (end < size && isDigit(data[end]))
            ++end;
        if (end == colon + 1 || end - colon > 10)
            continue;
        qsizetype start = colon;
        while (start > 0 && data[start - 1] != ' ' && data[start - 1] != '\t' && data[start - 1] != '"' &&
               data[start - 1] != '\'' && data[start - 1] != '(' && data[start - 1] != '[' &&
               data[start - 1] != ':')
            --start;
        const QByteArray name = line.mid(start, colon - start);
        const qsizetype dot = name.lastIndexOf('.');
        if (dot <= 0 || dot == name.size() - 1)
            continue;
        *file = QString::fromUtf8(name);
        *number = line.mid(colon + 1, end - colon - 1).toInt();
        return true;
    }
    return false;
}

QAStTestResults::Check QAStTestResults::checkOf(const QByteArray& line, bool passed)
{
    Check check;
    check.passed = passed;
    check.message = QString::fromUtf8(line);
    findLocation(line, &check.file, &check.line);
    const QByteArray trimmed = line.trimmed();

    // GoogleTest: "[  FAILED  ] Suite.Test (3 ms)", "[       OK ] Suite.Test (0 ms)";
    // its closing summary ("[  FAILED  ] 2 tests, listed below:") is no check.
    if (trimmed.startsWith("[  FAILED  ] ") || trimmed.startsWith("[       OK ] ")) {
        QByteArray name = trimmed.mid(13);
        if (!name.isEmpty() && isDigit(name.at(0)))
            return Check();
        const qsizetype paren = name.indexOf(" (");
        check.name = text(paren >= 0 ? name.left(paren) : name);
        return check;
    }
    // TAP: "not ok 3 - name # comment", "ok 3 - name".
    if (trimmed.startsWith("not ok") || trimmed.startsWith("ok")) {
        QByteArray rest = trimmed.mid(trimmed.startsWith("ok") ? 2 : 6).trimmed();
        qsizetype p = 0;
        while (p < rest.size() && isDigit(rest.at(p)))
            ++p;
        const QByteArray number = rest.left(p);
        rest = rest.mid(p).trimmed();
        if (rest.startsWith('-'))
            rest = rest.mid(1).trimmed();
        const qsizetype hash = rest.indexOf(" #");
        rest = hash >= 0 ? rest.left(hash) : rest;
        check.name = !rest.isEmpty() ? text(rest) : QStringLiteral("test %1").arg(QString::fromLatin1(number));
        return check;
    }
    // CUnit: "  Test: name ...FAILED", "  Test: name ...passed".
    const qsizetype dots = trimmed.lastIndexOf("...");
    if (trimmed.startsWith("Test: ") && dots > 6) {
        check.name = text(trimmed.mid(6, dots - 6));
        return check;
    }
    // "FAILED: what", "PASSED: what".
    if (trimmed.startsWith("FAILED:") || trimmed.startsWith("PASSED:")) {
        check.name = text(trimmed.mid(7));
        return check;
    }
    const qsizetype located = leadingLocation(trimmed);
    if (located > 0) {
        const QByteArray rest = trimmed.mid(located);
        // "file:line: FAILED: what", "file:line: PASSED: what".
        const QByteArray plain = rest.trimmed();
        if (plain.startsWith("FAILED:") || plain.startsWith("PASSED:")) {
            check.name = text(plain.mid(7));
            return check;
        }
        // Check: "file:line:F:suite:test:iteration: message" (E an error, P a pass).
        if (rest.size() > 2 && (rest.at(0) == 'F' || rest.at(0) == 'E' || rest.at(0) == 'P') &&
            rest.at(1) == ':') {
            const qsizetype suiteEnd = afterColons(rest, 2);
            const qsizetype testEnd = afterColons(rest, 3);
            if (suiteEnd > 0 && testEnd > suiteEnd) {
                check.name = text(rest.mid(suiteEnd, testEnd - suiteEnd - 1));
                const qsizetype messageAt = afterColons(rest, 4);
                if (messageAt > 0)
                    check.message = text(rest.mid(messageAt));
                return check;
            }
        }
        // Unity: "file:line:test:FAIL: message", "file:line:test:PASS".
        const qsizetype colon = rest.indexOf(':');
        if (colon > 0) {
            check.name = text(rest.left(colon));
            const QByteArray tail = rest.mid(colon + 1);
            const qsizetype messageAt = tail.indexOf(':');
            if (messageAt > 0 && !text(tail.mid(messageAt + 1)).isEmpty())
                check.message = text(tail.mid(messageAt + 1));
            return check;
        }
    }
    // assert(): "program: file.c:12: function: Assertion `x' failed."
    const qsizetype assertion = trimmed.indexOf(": Assertion ");
    if (assertion > 0) {
        const qsizetype functionAt = trimmed.lastIndexOf(": ", assertion - 1);
        check.name = text(functionAt > 0 ? trimmed.mid(functionAt + 2, assertion - functionAt - 2)
                                         : trimmed.left(assertion));
        check.message = text(trimmed.mid(assertion + 2));
        return check;
    }
    check.name = text(trimmed);
    return check;
}
