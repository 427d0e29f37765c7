// The scripts of the start wizards: what Perl reads back from each form, the
// order of their lines, the option switches, and a failed write.
#include "QAStWizardScript.h"

#include <QtTest>

namespace {

using Script = QAStWizardScript;
// Variables as "$NAME" or "@NAME" with their values, in the script's order.
using Vars = QList<std::pair<QString, QStringList>>;

// Loads the script with "do", which must return true, and prints each
// variable named on the command line as: name, count, values, each ended by
// a NUL byte. The bytes are printed as read: the test decodes UTF-8.
const char* const readBack =
    "my ($file, @vars) = @ARGV; do $file or die($@ || $! || 'do returned false');"
    "for my $var (@vars) { my ($sigil, $name) = $var =~ /^(.)(.*)$/;"
    "  my @v = $sigil eq '@' ? @{\"main::$name\"} : (${\"main::$name\"});"
    "  defined $v[0] or $sigil eq '@' or die(\"$var unset\");"
    "  print join(\"\\0\", $var, scalar(@v), @v), \"\\0\"; }";

// Paths, each holding a "\\" that free-text quoting would not keep.
const QString winPath = QStringLiteral(R"(\\host\C$\it's é\log.txt)");
const QString uncDir = QStringLiteral(R"(\\srv\share Ω\dir\)");
const QString longPath = QStringLiteral(R"(\\?\D:\out dir\é)");
const QString posixPath = QStringLiteral("/home/u/my dir/ü'x.pl");
// Free text: single backslashes, a quote, blanks, a trailing backslash.
const QString text = QStringLiteral(R"(-I C:\inc é 'Ω' \)");
const QStringList items{QStringLiteral(R"(C:\a b\x.c)"), QStringLiteral("it's Ω"), uncDir,
                        QString()};

bool perlPresent()
{
    QProcess perl;
    perl.start(QStringLiteral("perl"), {QStringLiteral("-v")});
    return perl.waitForFinished(30000) && perl.exitCode() == 0;
}

// Writes the script over a longer file, then checks its bytes, the order of
// its lines and every value Perl reads back.
template <typename Form>
void checkReadBack(const Form& form, const Vars& expected)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("wizard script.pl"));
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
    QStringList args{QStringLiteral("-e"), QString::fromLatin1(readBack), path};
    QStringList wanted;
    for (const auto& [name, values] : expected) {
        names << name;
        wanted << name << QString::number(values.size()) << values;
    }
    QCOMPARE(order, names);

    QProcess perl;
    perl.start(QStringLiteral("perl"), args + names);
    QVERIFY(perl.waitForFinished(30000));
    QVERIFY2(perl.exitCode() == 0, perl.readAllStandardError().constData());
    QStringList got = QString::fromUtf8(perl.readAllStandardOutput()).split(QChar(0));
    QCOMPARE(got.takeLast(), QString());
    QCOMPARE(got, wanted);
}

}

class TestWizardScript : public QObject {
    Q_OBJECT
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
        if (!perlPresent())
            QSKIP("perl is not installed");
        const Script::UnitTesting form{winPath, uncDir, longPath, text, items, {QStringLiteral("é")},
                                       {}, text, insertion};
        checkReadBack(form, {{"$LOGFILENAME2", {winPath}}, {"$SCRIPTFILE", {uncDir}},
                             {"$TESTEDFILE", {longPath}}, {"$TESTEDCOMPONENT", {text}},
                             {"@SERVICES", items}, {"@INTEGRATEDFILES", {QStringLiteral("é")}},
                             {"@SIMULATEDFILES", {}}, {"$OPTIONS", {options}}});
    }

    void objectTesting()
    {
        if (!perlPresent())
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
        if (!perlPresent())
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
        const QString path = dir.filePath(QStringLiteral("missing/wizard.pl"));
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
};

QTEST_GUILESS_MAIN(TestWizardScript)
#include "tst_wizardscript.moc"
