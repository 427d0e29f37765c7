// Long and invalid lines for the command-line splitter and the message
// analysis. Both match regular expressions at successive offsets of one
// line; each match used to check the whole line's UTF-16 again, so a line
// of a few hundred thousand characters took minutes. The lines below are a
// bounded amount of work that now takes a moment.
#include "QAProcess.h"
#include "QAStAnalyseMsg.h"

#include <QtTest>

class TestBadInput : public QObject {
    Q_OBJECT
private slots:
    void longCommandLines_data();
    void longCommandLines();
    void loneSurrogates();
    void longMessageLines_data();
    void longMessageLines();
};

void TestBadInput::longCommandLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("last");
    QTest::newRow("words") << QStringLiteral("ab ").repeated(150000) << 150000 << "ab";
    QTest::newRow("empty strings") << QStringLiteral("\"\"").repeated(200000) << 200000 << "";
    QTest::newRow("a quote never closed")
        << QStringLiteral("\"") + QStringLiteral("x ").repeated(100000) << 100000 << "x";
    QTest::newRow("single-quoted strings")
        << QStringLiteral("'a b' ").repeated(100000) << 100000 << "a b";
}

void TestBadInput::longCommandLines()
{
    QFETCH(QString, line);
    QFETCH(int, count);
    QFETCH(QString, last);
    QStringList args;
    QAProcess::commandLineToArgs(line, args);
    QCOMPARE(args.size(), count);
    QCOMPARE(args.last(), last);
}

// A lone surrogate (not valid UTF-16) reads as a replacement character.
void TestBadInput::loneSurrogates()
{
    const QChar lone(char16_t(0xD800));
    QStringList args;
    QAProcess::commandLineToArgs(QStringLiteral("a ") + lone + QStringLiteral(" \"x") + lone
                                     + QStringLiteral("y\" b"),
                                 args);
    QCOMPARE(args, (QStringList{QStringLiteral("a"), QStringLiteral("x\uFFFDy"), QStringLiteral("b")}));

    QAStAnalyseMsg message;
    QVERIFY(message.analyze(QStringLiteral("ma") + lone + QStringLiteral("in.c:12: error: x")));
    QCOMPARE(message.fileName(), QStringLiteral("ma\uFFFDin.c"));
    QCOMPARE(message.lineNumber(), 12);
    QCOMPARE(QAStAnalyseMsg::fileNameStart(QStringLiteral("  ") + lone), 2);
}

void TestBadInput::longMessageLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("lineNumber");
    QTest::newRow("include chain") << QStringLiteral("from ").repeated(40000) + QStringLiteral("x.h:3,")
                                   << true << 3;
    QTest::newRow("tool prefixes") << QStringLiteral("make: ").repeated(40000) + QStringLiteral("x.c:9:")
                                   << true << 9;
    QTest::newRow("colons") << QStringLiteral("a:").repeated(100000) << false << 0;
    QTest::newRow("blanks") << QStringLiteral(" ").repeated(200000) << false << 0;
}

void TestBadInput::longMessageLines()
{
    QFETCH(QString, line);
    QFETCH(bool, found);
    QFETCH(int, lineNumber);
    QAStAnalyseMsg message;
    QCOMPARE(message.analyze(line), found);
    QCOMPARE(message.lineNumber(), lineNumber);
}

QTEST_MAIN(TestBadInput)
#include "tst_bad_input.moc"
