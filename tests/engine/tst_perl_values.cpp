// Values in the generated Perl scripts: the escaping, the three line forms,
// and what the real Perl interpreter reads back from the line writers; the
// scripts of the start wizards, the order of their lines, their option
// switches, and a failed write, which leaves the script already there byte
// for byte and names the file and the system's reason.
#include "FailingStorage.h"
#include "PerlScripts.h"
#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "QAStWizardScript.h"
#include "TestFiles.h"

#include <QtTest>

using namespace Qt::StringLiterals;

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
        QAStPerlGen::writeStringList(out, u"V"_s, values);
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

namespace {

using Script = QAStWizardScript;
// Variables as "$NAME" or "@NAME" with their values, in the script's order.
using Vars = QList<std::pair<QString, QStringList>>;

// Paths, each holding a "\\" that free-text quoting would not keep.
const QString winPath = QStringLiteral(R"(\\host\C$\it's é\log.txt)");
const QString uncDir = QStringLiteral(R"(\\srv\share Ω\dir\)");
const QString longPath = QStringLiteral(R"(\\?\D:\out dir\é)");
const QString posixPath = u"/home/u/my dir/ü'x.pl"_s;
// Free text: single backslashes, a quote, blanks, a trailing backslash.
const QString text = QStringLiteral(R"(-I C:\inc é 'Ω' \)");
const QStringList items{QStringLiteral(R"(C:\a b\x.c)"), u"it's Ω"_s, uncDir,
                        QString()};

// Writes the script over a longer file, then checks its bytes, the order of
// its lines and every value Perl reads back.
template <typename Form>
void checkReadBack(const Form& form, const Vars& expected)
{
    if (!PerlScripts::perlPresent())
        QSKIP("perl is not installed");
    QTemporaryDir dir;
    const QString path = dir.filePath(u"wizard script.pl"_s);
    TestFiles::writeFile(path, QByteArray(4096, '#'));
    QString error;
    QVERIFY2(Script::writeFile(path, form, &error), qPrintable(error));
    QByteArray lines;
    QTextStream out(&lines);
    Script::write(out, form);
    out.flush();
    const QByteArray written = TestFiles::readFile(path);
    QCOMPARE(written, lines + "1;\n");

    QStringList order, names;
    for (const QByteArray& line : lines.split('\n'))
        if (!line.isEmpty())
            order << QString::fromUtf8(line.left(line.indexOf('=')));
    QList<QStringList> wanted;
    for (const auto& [name, values] : expected) {
        names << name;
        wanted << values;
    }
    QCOMPARE(order, names);
    QList<QStringList> got;
    QVERIFY(PerlScripts::evaluate(written, names, &got));
    QCOMPARE(got, wanted);
}

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
        QAStProject project(u"p"_s, QPixmap());
        auto* node = new QAStNode(u"n"_s, QPixmap(), &project);
        const QString value = u"${PERL_VALUES_DIR}\\x"_s;
        QCOMPARE(QAStPerlGen::safePath(value, node), QStringLiteral(R"(C:\\it\'s\\x)"));
        QCOMPARE(QAStPerlGen::safeStr(value, node), QStringLiteral(R"(C:\\it\'s\\x)"));
        QCOMPARE(QAStPerlGen::safeStr(value), QStringLiteral(R"(${PERL_VALUES_DIR}\\x)"));
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
        QStringList expressions{u"@V"_s};
        if (!list) {
            expressions.clear();
            for (qsizetype i = 0; i < values.size(); ++i)
                expressions.append(u"$V%1"_s.arg(i));
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

    // --- the start wizards' scripts

private slots:
    void unitTesting_data()
    {
        QTest::addColumn<bool>("insertion");
        QTest::addColumn<QString>("options");
        QTest::newRow("no insertion") << false << text;
        QTest::newRow("insertion") << true << text + QLatin1String(" -insert");
    }
    void unitTesting()
    {
        QFETCH(bool, insertion);
        QFETCH(QString, options);
        const Script::UnitTesting form{winPath, uncDir, longPath, text, items, {u"é"_s}, {}, text, insertion};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"$SCRIPTFILE", {uncDir}},
                             {"$TESTEDFILE", {longPath}}, {"$TESTEDCOMPONENT", {text}},
                             {"@SERVICES", items}, {"@INTEGRATEDFILES", {u"é"_s}},
                             {"@SIMULATEDFILES", {}}, {"$OPTIONS", {options}}});
    }

    void objectTesting()
    {
        const QStringList one{posixPath};
        const Script::ObjectTesting form{winPath, items, one,  {},    {uncDir},
                                         longPath, text,  uncDir, items};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"@TESTEDFILENAMES", items},
                             {"@CLASSES", one}, {"@METHODS", {}}, {"@INTEGRATEDFILENAMES", {uncDir}},
                             {"$OTDNAME", {longPath}}, {"$TESTCLASSPREFIX", {text}},
                             {"$OTCNAME", {uncDir}}, {"@INSERTEDFILENAMES", items}});
    }

    void javaTesting_data()
    {
        QTest::addColumn<int>("profile");
        QTest::addColumn<QString>("options");
        QTest::newRow("typical") << int(Script::JavaTesting::Typical) << text + " -typical";
        QTest::newRow("j2me") << int(Script::JavaTesting::J2ME) << text + " -j2me";
        QTest::newRow("j2se") << int(Script::JavaTesting::J2SE) << text + " -j2se";
        QTest::newRow("midlet") << int(Script::JavaTesting::MIDlet) << text + " -midlet";
    }
    void javaTesting()
    {
        QFETCH(int, profile);
        QFETCH(QString, options);
        const Script::JavaTesting form{winPath, items,  {},   {posixPath}, uncDir, items, longPath,
                                       text,    text, Script::JavaTesting::Profile(profile)};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"@COMPONENTS", items}, {"@METHODS", {}},
                             {"@SIMULATEDFILES", {posixPath}}, {"$TESTDRIVERNAME", {uncDir}},
                             {"@INSERTEDFILENAMES", items}, {"$ODIR", {longPath}},
                             {"$JPREFIX", {text}}, {"$OPTIONS", {options}}});
    }

    // A write that fails, with or without a place for the reason, leaves
    // the old script whole, or nothing where its directory went.
    void oldScriptStaysWhole_data()
    {
        QTest::addColumn<QString>("mechanism");
        QTest::addColumn<int>("error");
        QTest::newRow("full disk at once") << u"limit:0"_s << EFBIG;
        QTest::newRow("full disk on the last bytes") << u"limit:300"_s << EFBIG;
        QTest::newRow("full disk past the first buffer") << u"limit:20000"_s << EFBIG;
        QTest::newRow("read-only directory") << u"read-only"_s << EACCES;
        QTest::newRow("directory removed") << u"removed"_s << ENOENT;
    }
    void oldScriptStaysWhole()
    {
        QFETCH(QString, mechanism);
        QFETCH(int, error);
        QTemporaryDir root;
        const QString dir = root.filePath(u"wizard"_s);
        const QString path = dir + u"/unit.pl"_s;
        const QByteArray old = "$LOGFILENAME2 = 'old.log';\n1;\n";
        TestFiles::writeFile(path, old);
        Script::UnitTesting script;
        script.logFile = u"/logs/unit.log"_s;
        // Longer than the write buffers, so that a failure can come in any
        // of the buffers written.
        for (int i = 0; i < 1500; ++i)
            script.integratedFiles << u"/src/module-%1.c"_s.arg(i);
        FailingStorage::Failure failure(mechanism, dir);
        QVERIFY(failure.ready());
        if (failure.powerless())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        QString message;
        QVERIFY(!Script::writeFile(path, script, nullptr));
        const bool written = Script::writeFile(path, script, &message);
        failure.end();
        QVERIFY(!written);
        QVERIFY2(message.contains(path), qPrintable(message));
        QVERIFY2(message.contains(FailingStorage::reason(error)), qPrintable(message));
        if (error == ENOENT) {
            QVERIFY(!QFileInfo::exists(dir));
            return;
        }
        QCOMPARE(TestFiles::readFile(path), old);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::Hidden), QStringList{u"unit.pl"_s});
        // And the same script goes through once the disk has room again.
        QVERIFY(Script::writeFile(path, script, &message));
        QVERIFY(TestFiles::readFile(path).endsWith("1;\n"));
    }
};

QTEST_GUILESS_MAIN(TestPerlValues)
#include "tst_perl_values.moc"
