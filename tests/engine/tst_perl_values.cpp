// Values in the Perl scripts: the escaping, the three line forms, and what
// the real Perl interpreter reads back from the line writers.
#include "PerlScripts.h"
#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"

#include <QtTest>

namespace {

// A script of lines of one form ("path", "text", "list", "strings",
// "number"): a list form writes all values as @V, the other forms one
// scalar $V0, $V1, ... per value.
QByteArray script(const QString& form, const QStringList& values)
{
    QByteArray text;
    QTextStream out(&text);
    if (form == QLatin1String("list"))
        QAFileUtil::perlList(out, "V", values);
    else if (form == QLatin1String("strings"))
        QAStPerlGen::writeStringList(out, QStringLiteral("V"), values);
    for (qsizetype i = 0; i < values.size(); ++i) {
        const QByteArray var = "V" + QByteArray::number(i);
        if (form == QLatin1String("path"))
            QAFileUtil::perlPath(out, var.constData(), values.at(i));
        else if (form == QLatin1String("text"))
            QAFileUtil::perlString(out, var.constData(), values.at(i));
        else if (form == QLatin1String("number"))
            QAFileUtil::perlNumber(out, var.constData(), values.at(i).toLongLong());
    }
    out.flush();
    return text;
}

const QString nul(QChar(0));

}

class TestPerlValues : public QObject {
    Q_OBJECT
private slots:
    // Paths and free text escape alike.
    void escaping_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("written");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("quotes and backslash") << R"(C:\My 'dir')" << R"(C:\\My \'dir\')";
        QTest::newRow("unc, trailing") << R"(\\srv\share\)" << R"(\\\\srv\\share\\)";
        QTest::newRow("pair inside") << R"(a\b\\c)" << R"(a\\b\\\\c)";
        QTest::newRow("quote after backslash") << R"(a\'b)" << R"(a\\\'b)";
        QTest::newRow("sigils, blanks, non-ASCII kept") << "$HOME @x ${Y} é Ω" << "$HOME @x ${Y} é Ω";
        QTest::newRow("CR LF") << "a\r\nb" << R"(a'."\r\n".'b)";
        QTest::newRow("other controls, at both ends")
            << "\t" + nul + "x\x1b\x7f" << R"('."\t\x{00}".'x'."\x{1B}\x{7F}".')";
    }
    void escaping()
    {
        QFETCH(QString, value);
        QFETCH(QString, written);
        QCOMPARE(QAStPerlGen::safePath(value), written);
        QCOMPARE(QAStPerlGen::safeStr(value), written);
    }

    // With a node the value is expanded first, then escaped.
    void expandsWithNode()
    {
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
        qputenv("PERL_VALUES_DIR", R"(C:\it's)");
        QAStProject project(QStringLiteral("p"), QPixmap());
        auto* node = new QAStNode(QStringLiteral("n"), QPixmap(), &project);
        const QString value = QStringLiteral("${PERL_VALUES_DIR}\\x");
        QCOMPARE(QAStPerlGen::safePath(value, node), QStringLiteral(R"(C:\\it\'s\\x)"));
        QCOMPARE(QAStPerlGen::safeStr(value, node), QStringLiteral(R"(C:\\it\'s\\x)"));
        QCOMPARE(QAStPerlGen::safeStr(value), QStringLiteral(R"(${PERL_VALUES_DIR}\\x)"));
    }

    void lines_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QString>("line");
        QTest::newRow("S path") << "path" << QStringList{R"(C:\My 'dir')"}
                                << "$V0='C:\\\\My \\'dir\\'';\n";
        QTest::newRow("S empty") << "path" << QStringList{QString()} << "$V0='';\n";
        QTest::newRow("S text") << "text" << QStringList{R"(-I\inc \)"}
                                << "$V0='-I\\\\inc \\\\';\n";
        QTest::newRow("S text, line end") << "text" << QStringList{"a\r\n"}
                                          << "$V0='a'.\"\\r\\n\".'';\n";
        QTest::newRow("N") << "number" << QStringList{"-42"} << "$V0=-42;\n";
        QTest::newRow("L") << "list" << QStringList{"a", R"(b\'c)"}
                           << "@V=('a', 'b\\\\\\'c');\n";
        QTest::newRow("L empty") << "list" << QStringList() << "@V=();\n";
    }
    void lines()
    {
        QFETCH(QString, form);
        QFETCH(QStringList, values);
        QFETCH(QString, line);
        QCOMPARE(QString::fromUtf8(script(form, values)), line);
    }

    void shortPath()
    {
        const QString path = QStringLiteral("/opt/my sdk/bin");
        QCOMPARE(QAFileUtil::shortPath(path, QAInstall::Posix), path);
#ifndef Q_OS_WIN
        // Without Windows there is no 8.3 name to ask for.
        QCOMPARE(QAFileUtil::shortPath(R"(C:\Program Files\x)", QAInstall::Windows),
                 QStringLiteral(R"(C:\Program Files\x)"));
#endif
    }

    // The script passes perl -c, and perl reads back every value byte for
    // byte (the UTF-8 the stream wrote), whatever the form.
    void readBackByPerl_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QStringList>("values");
        const QStringList chosen{R"(C:\My 'dir')", R"(\\srv\share\)", R"(a\b\\c)", "/home/u/my dir/",
                                 R"(Größe\日本'\)", R"(x\\\'y\\\)", "-DNAME='x y'", "a\r\nb\r",
                                 "''", QString()};
        quint32 seed = 1;
        for (const char* form : {"path", "text", "list", "strings"}) {
            QTest::addRow("%s, chosen", form) << form << chosen;
            QTest::addRow("%s, random %u", form, seed) << form << PerlScripts::randomValues(seed, 300);
            ++seed;
        }
        QTest::newRow("list empty") << "list" << QStringList();
        QTest::newRow("number") << "number" << QStringList{"-9000000000"};
    }
    void readBackByPerl()
    {
        QFETCH(QString, form);
        QFETCH(QStringList, values);
        if (!PerlScripts::perlPresent())
            QSKIP("perl is not installed: the Perl read-back is not checked");
        const QByteArray text = script(form, values);
        QVERIFY(PerlScripts::perlCompiles(text));
        const bool list = form == QLatin1String("list") || form == QLatin1String("strings");
        QStringList expressions{QStringLiteral("@V")};
        if (!list) {
            expressions.clear();
            for (qsizetype i = 0; i < values.size(); ++i)
                expressions.append(QStringLiteral("$V%1").arg(i));
        }
        QList<QStringList> read;
        QVERIFY(PerlScripts::evaluate(text, expressions, &read));
        QStringList got;
        for (const QStringList& each : read)
            got += each;
        QCOMPARE(got.size(), values.size());
        for (qsizetype i = 0; i < values.size(); ++i)
            QVERIFY2(got.at(i) == values.at(i), qPrintable(QAStPerlGen::safeStr(values.at(i))));
    }
};

QTEST_GUILESS_MAIN(TestPerlValues)
#include "tst_perl_values.moc"
