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

#include <optional>

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

// Loads the script with "do", which must return true, and prints each
// variable named on the command line as: name, count, values, each ended by
// a NUL byte. The bytes are printed as read: the test decodes UTF-8.
const char* const readBack = "my ($file, @vars) = @ARGV; do $file or die($@ || $! || 'do returned false');"
    "for my $var (@vars) { my ($sigil, $name) = $var =~ /^(.)(.*)$/;"
    "  my @v = $sigil eq '@' ? @{\"main::$name\"} : (${\"main::$name\"});"
    "  defined $v[0] or $sigil eq '@' or die(\"$var unset\");"
    "  print join(\"\\0\", $var, scalar(@v), @v), \"\\0\"; }";

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
    QTemporaryDir dir;
    const QString path = dir.filePath(u"wizard script.pl"_s);
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write(QByteArray(4096, '#')) == 4096);
    old.close();
    QString error;
    QVERIFY2(Script::writeFile(path, form, &error), qPrintable(error));

    QByteArray lines;
    QTextStream out(&lines);
    Script::write(out, form);
    out.flush();
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), lines + "1;\n");

    QStringList order, names;
    for (const QByteArray& line : lines.split('\n'))
        if (!line.isEmpty())
            order << QString::fromUtf8(line.left(line.indexOf('=')));
    QStringList args{u"-e"_s, QString::fromLatin1(readBack), path};
    QStringList wanted;
    for (const auto& [name, values] : expected) {
        names << name;
        wanted << name << QString::number(values.size()) << values;
    }
    QCOMPARE(order, names);

    QProcess perl;
    perl.start(u"perl"_s, args + names);
    QVERIFY(perl.waitForFinished(30000));
    QVERIFY2(perl.exitCode() == 0, perl.readAllStandardError().constData());
    QStringList got = QString::fromUtf8(perl.readAllStandardOutput()).split(QChar(0));
    QCOMPARE(got.takeLast(), QString());
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
        const QString path = u"/opt/my sdk/bin"_s;
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
        if (!PerlScripts::perlPresent())
            QSKIP("perl is not installed");
        const Script::UnitTesting form{winPath, uncDir, longPath, text, items, {u"é"_s}, {}, text, insertion};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"$SCRIPTFILE", {uncDir}},
                             {"$TESTEDFILE", {longPath}}, {"$TESTEDCOMPONENT", {text}},
                             {"@SERVICES", items}, {"@INTEGRATEDFILES", {u"é"_s}},
                             {"@SIMULATEDFILES", {}}, {"$OPTIONS", {options}}});
    }

    void objectTesting()
    {
        if (!PerlScripts::perlPresent())
            QSKIP("perl is not installed");
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
        if (!PerlScripts::perlPresent())
            QSKIP("perl is not installed");
        const Script::JavaTesting form{winPath, items,  {},   {posixPath}, uncDir, items, longPath,
                                       text,    text, Script::JavaTesting::Profile(profile)};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"@COMPONENTS", items}, {"@METHODS", {}},
                             {"@SIMULATEDFILES", {posixPath}}, {"$TESTDRIVERNAME", {uncDir}},
                             {"@INSERTEDFILENAMES", items}, {"$ODIR", {longPath}},
                             {"$JPREFIX", {text}}, {"$OPTIONS", {options}}});
    }

    // Into a missing directory every form fails, names the file and
    // leaves nothing behind.
    void writeFileIntoMissingDirectory()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"missing/wizard.pl"_s);
        const auto fails = [&](const auto& form) {
            QString error;
            QVERIFY(!Script::writeFile(path, form, &error));
            QVERIFY2(error.contains(path), qPrintable(error));
            QVERIFY(!Script::writeFile(path, form, nullptr));
            QVERIFY(QDir(dir.path()).isEmpty());
        };
        fails(Script::UnitTesting{});
        fails(Script::ObjectTesting{});
        fails(Script::JavaTesting{});
    }

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
        std::optional<FailingStorage::FileSizeLimit> limit;
        std::optional<FailingStorage::PermissionsEnforced> enforced;
        if (mechanism.startsWith(QLatin1String("limit:"))) {
            limit.emplace(mechanism.mid(6).toInt());
            QVERIFY(limit->active());
        } else if (mechanism == QLatin1String("read-only")) {
            QVERIFY(QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
            enforced.emplace();
            if (!enforced->active())
                QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        } else {
            QVERIFY(QDir(dir).removeRecursively());
        }
        QString message;
        const bool written = Script::writeFile(path, script, &message);
        limit.reset();
        enforced.reset();
        QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
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
