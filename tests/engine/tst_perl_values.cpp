// Values in the Perl environment script: the escaping of paths and free
// text, the three line forms, and what the real Perl interpreter reads back.
#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"

#include <QtTest>

#include <memory>

namespace {

// Perl program run on a script: prints every value of the variable V (the
// scalar $V, or each item of @V for a list), each followed by a NUL byte.
const char* const readBack =
    "my ($file, $form) = @ARGV;"
    "defined(do $file) or die($@ || $!);"
    "binmode STDOUT, ':encoding(UTF-8)';"
    "print map { \"$_\\0\" } ($form eq 'list' ? @V : ($V));";

// The script holding one line of the given form ("path", "text", "list",
// "number") for the variable V; UTF-8 as "use utf8;" at its top says.
QByteArray script(const QString& form, const QStringList& values)
{
    QByteArray text;
    QTextStream out(&text);
    out << "use utf8;\n";
    if (form == QLatin1String("path"))
        QAFileUtil::perlPath(out, "V", values.value(0));
    else if (form == QLatin1String("text"))
        QAFileUtil::perlString(out, "V", values.value(0));
    else if (form == QLatin1String("list"))
        QAFileUtil::perlList(out, "V", values);
    else
        QAFileUtil::perlNumber(out, "V", values.value(0).toLongLong());
    out.flush();
    return text;
}

// Runs perl with args; its standard output, or a failure with its errors.
bool runPerl(const QStringList& args, QByteArray* output)
{
    QProcess perl;
    perl.start(QStringLiteral("perl"), args);
    if (!perl.waitForFinished(30000) || perl.exitStatus() != QProcess::NormalExit
        || perl.exitCode() != 0) {
        qWarning().noquote() << perl.readAllStandardError();
        return false;
    }
    *output = perl.readAllStandardOutput();
    return true;
}

bool perlPresent()
{
    QProcess perl;
    perl.start(QStringLiteral("perl"), {QStringLiteral("-v")});
    return perl.waitForFinished(30000) && perl.exitCode() == 0;
}

}

class TestPerlValues : public QObject {
    Q_OBJECT
private slots:
    void safePath_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("written");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("quotes and backslash") << R"(C:\My 'dir')" << R"(C:\\My \'dir\')";
        QTest::newRow("unc, trailing") << R"(\\srv\share\)" << R"(\\\\srv\\share\\)";
        QTest::newRow("posix blanks") << "/home/u/my dir" << "/home/u/my dir";
        QTest::newRow("quote after backslash") << R"(a\'b)" << R"(a\\\'b)";
    }
    void safePath()
    {
        QFETCH(QString, value);
        QFETCH(QString, written);
        QCOMPARE(QAStPerlGen::safePath(value), written);
    }

    void safeStr_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("written");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("quotes") << "-DNAME='x'" << R"(-DNAME=\'x\')";
        QTest::newRow("plain backslashes kept") << R"(C:\dir\a\\b)" << R"(C:\dir\a\\b)";
        QTest::newRow("backslash before quote") << R"(a\'b)" << R"(a\\\'b)";
        QTest::newRow("trailing backslash") << R"(dir\)" << R"(dir\\)";
        QTest::newRow("runs before quote and at end")
            << R"(x\\\'y\\)" << R"(x\\\\\\\'y\\\\)";
        QTest::newRow("run inside kept") << R"(a\\\b')" << R"(a\\\b\')";
    }
    void safeStr()
    {
        QFETCH(QString, value);
        QFETCH(QString, written);
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
        QCOMPARE(QAStPerlGen::safeStr(value, node), QStringLiteral(R"(C:\it\'s\x)"));
        QCOMPARE(QAStPerlGen::safeStr(value), QStringLiteral(R"(${PERL_VALUES_DIR}\x)"));
    }

    void lines_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QString>("line");
        QTest::newRow("S path") << "path" << QStringList{R"(C:\My 'dir')"}
                                << "$V='C:\\\\My \\'dir\\'';\n";
        QTest::newRow("S empty") << "path" << QStringList{QString()} << "$V='';\n";
        QTest::newRow("S text") << "text" << QStringList{R"(-I\inc \)"}
                                << "$V='-I\\inc \\\\';\n";
        QTest::newRow("N") << "number" << QStringList{"-42"} << "$V=-42;\n";
        QTest::newRow("L") << "list" << QStringList{"a", R"(b\'c)"}
                           << "@V=('a', 'b\\\\\\'c');\n";
        QTest::newRow("L empty") << "list" << QStringList() << "@V=();\n";
    }
    void lines()
    {
        QFETCH(QString, form);
        QFETCH(QStringList, values);
        QFETCH(QString, line);
        QCOMPARE(QString::fromUtf8(script(form, values)), "use utf8;\n" + line);
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

    // The script passes perl -c, and perl reads back the exact value for
    // paths, list items and numbers, and what Perl's quoting makes of free
    // text (only "\\" inside it becomes one backslash).
    void readBackByPerl_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("read");
        const QStringList paths{R"(C:\My 'dir')", R"(\\srv\share\)", "/home/u/my dir/",
                                R"(Größe\日本'\)", "''", QString()};
        for (const QString& path : paths)
            QTest::addRow("path %s", qPrintable(path)) << "path" << QStringList{path}
                                                       << QStringList{path};
        const QStringList exactTexts{"-DNAME='x y'", R"(C:\dir\file)", R"(a\'b)", R"(dir\)",
                                     R"(x\\\'y\\\)", "ü -O2"};
        for (const QString& text : exactTexts)
            QTest::addRow("text %s", qPrintable(text)) << "text" << QStringList{text}
                                                       << QStringList{text};
        QTest::newRow("text pair inside") << "text" << QStringList{R"(a\\b)"}
                                          << QStringList{R"(a\b)"};
        QTest::newRow("list") << "list" << QStringList{"a", "b c", R"(C:\x\)", "it's", "é"}
                              << QStringList{"a", "b c", R"(C:\x\)", "it's", "é"};
        QTest::newRow("list empty") << "list" << QStringList() << QStringList();
        QTest::newRow("number") << "number" << QStringList{"-9000000000"}
                                << QStringList{"-9000000000"};
    }
    void readBackByPerl()
    {
        QFETCH(QString, form);
        QFETCH(QStringList, values);
        QFETCH(QStringList, read);
        if (!perlPresent())
            QSKIP("perl is not installed: the Perl read-back is not checked");
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QFile file(dir.filePath(QStringLiteral("env.pl")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(script(form, values));
        file.close();
        QByteArray output;
        QVERIFY(runPerl({QStringLiteral("-c"), file.fileName()}, &output));
        QVERIFY(runPerl({QStringLiteral("-e"), QString::fromLatin1(readBack), file.fileName(), form},
                        &output));
        QStringList got = QString::fromUtf8(output).split(QChar(0));
        got.removeLast();
        QCOMPARE(got, read);
    }
};

QTEST_GUILESS_MAIN(TestPerlValues)
#include "tst_perl_values.moc"
