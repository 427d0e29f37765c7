// The Perl environment script: every node of the example project, values
// read back by the real interpreter, kind and plug-in lines, encodings, the
// start wizards' scripts, and failed writes that leave the old script whole.
#include "FailingStorage.h"
#include "PerlScripts.h"
#include "QAFileUtil.h"
#include "QAINodePlugin.h"
#include "QAINodeSettingsPlugin.h"
#include "QAPropertyBool.h"
#include "QAPropertyInt.h"
#include "QAPropertyLineEdit.h"
#include "QAPropertyListBox.h"
#include "QAStConfiguration.h"
#include "QAStNodePluginCenter.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeTestScript.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QAStWizardScript.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

using PerlScripts::evaluate;
using PerlScripts::perlCompiles;

// The script of item as the driver loads it, closed by "1;".
QByteArray scriptOf(QAStData* item)
{
    QByteArray bytes;
    QTextStream out(&bytes);
    item->createEnvironmentFile(out);
    out << "\n1;\n";
    out.flush();
    return bytes;
}

QString textOf(QAStData* item)
{
    return QString::fromLatin1(scriptOf(item));
}

// The variable names the lines assign, in order: $NAME=, @NAME=( and the
// keys of $ENV{'NAME'}.
QStringList variableNames(const QString& script)
{
    static const QRegularExpression assignment(QStringLiteral(R"(^(?:\$ENV\{'([^']*)'\}|[$@](\w+))\s*=)"),
                                               QRegularExpression::MultilineOption);
    QStringList names;
    for (const auto& m : assignment.globalMatch(script))
        names.append(m.captured(1).isEmpty() ? m.captured(2) : m.captured(1));
    return names;
}

// The first line assigning $var, without its "\n"; empty when none.
QString scalarLine(const QString& script, const QString& var)
{
    for (const QString& line : script.split(u'\n')) {
        if (line.startsWith(u'$' + var + u'='))
            return line;
    }
    return {};
}

// The variables that end every common part: the verbosity, then the
// build's parallel compilations and the patterns of test output.
const QStringList commonEnd{"ZELTASTUDIO_VERBOSE", "BUILD_JOBS", "TEST_FAILURE_PATTERNS", "TEST_PASS_PATTERNS"};

// The preferences' source encoding while alive.
struct Encoding {
    QString previous = QAStData::preferences()->encodingName();
    explicit Encoding(const QString& name) { QAStData::preferences()->setEncodingName(name); }
    ~Encoding() { QAStData::preferences()->setEncodingName(previous); }
};

// A project in memory (its file never written) whose nodes all own a
// "Debug" configuration and use it; the project targets the installed gcc-c.
struct Tree {
    QTemporaryDir dir;
    QAStProject project{QStringLiteral("proj"), QPixmap()};
    Tree()
    {
        project.setPath(dir.filePath(QStringLiteral("proj.rtp")));
        configure(&project, {{"targetPath", "${ZELTAHOME}/targets/gcc-c"}});
    }
    static void configure(QAStNode* node, const QVariantMap& settings = {})
    {
        QAStConfiguration* c = node->addConfiguration(QStringLiteral("Debug"));
        node->setCurrentConfigurationName(QStringLiteral("Debug"));
        for (auto it = settings.cbegin(); it != settings.cend(); ++it)
            c->setProperty(it.key(), it.value());
    }
    QAStNode* add(const char* tag, const QString& name, QAStNode* parent = nullptr,
                  const QVariantMap& settings = {})
    {
        QAStNode* node = QAStNode::createNode(QLatin1String(tag), name, parent ? parent : &project, nullptr);
        configure(node, settings);
        return node;
    }
};

// A map setting: no property kind of the descriptor holds one.
class MapProperty : public QAProperty {
public:
    MapProperty(const QString& var, const QVariantMap& map) : m_map(map) { setPerlVarName(var); }
    QString displayValue() const override { return {}; }
    bool isOverriden() const override { return true; }
    bool isResetable() const override { return false; }
    void reset() override {}
    void setValue(const QVariant& v) override { m_map = v.toMap(); }
    QVariant value() const override { return m_map; }
    QMetaType::Type type() const override { return QMetaType::QVariantMap; }
    QWidget* createEditor(QWidget*) override { return nullptr; }

private:
    QVariantMap m_map;
};

// Gives group nodes the feature "myfeature" with a setting of each form.
class SettingsPlugin : public QAINodePlugin, public QAINodeSettingsPlugin {
public:
    SettingsPlugin()
    {
        m_flag.setValue(true);
        m_count.setValue(42);
        m_list.setValue({QStringLiteral("a b"), QStringLiteral(R"(C:\x\)")});
        m_text.setValue(QStringLiteral("it's"));
        m_flagProperty.setPerlVarName(QStringLiteral("PLG_FLAG"));
        m_countProperty.setPerlVarName(QStringLiteral("PLG_COUNT"));
        m_listProperty.setPerlVarName(QStringLiteral("PLG_LIST"));
        m_textProperty.setPerlVarName(QStringLiteral("PLG_TEXT"));
    }
    QStringList features() const override { return {QStringLiteral("myfeature")}; }
    void* queryInterface(const char* id) override
    {
        return qstrcmp(id, interfaceId()) == 0 ? static_cast<QAINodeSettingsPlugin*>(this) : nullptr;
    }
    QStringList settingsNodeKinds(const QString&) const override { return {QStringLiteral("QAStNodeGroup")}; }
    QList<QAProperty*> nodeProperties(const QString& feature, QAStNode* node) override
    {
        asked.append(feature + u':' + node->name());
        return {&m_flagProperty, &m_countProperty, &m_listProperty, &m_textProperty, &m_unnamed, &m_map};
    }
    QStringList asked;

private:
    QAStBoolAttribute m_flag;
    QAStIntAttribute m_count;
    QAStStringListAttribute m_list;
    QAStStringAttribute m_text;
    QAStBoolAttribute m_other;
    QAPropertyAttrBool m_flagProperty{&m_flag};
    QAPropertyAttrInt m_countProperty{&m_count};
    QAPropertyAttrListBox m_listProperty{&m_list};
    QAPropertyAttrLineEdit m_textProperty{&m_text};
    QAPropertyAttrBool m_unnamed{&m_other}; // no Perl variable: not written
    MapProperty m_map{QStringLiteral("PLG_MAP"), {{"k1", "v1"}, {"k 2", "v'2"}}};
};

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

} // namespace

class TestEnvironmentScript : public QObject {
    Q_OBJECT
    std::unique_ptr<RecordingStudio> m_studio;
    bool m_perl = false;

private slots:
    void initTestCase()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
        m_perl = PerlScripts::perlPresent();
    }
    void cleanup()
    {
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());
        m_studio->reset();
    }

    // Every node of the example, sub-project included, gets a script that
    // perl compiles, without any warning.
    void exampleProject()
    {
        QTemporaryDir dir;
        TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), dir.path());
        QAStProject::setModeBatch(true);
        const auto batchOff = qScopeGuard([] { QAStProject::setModeBatch(false); });
        QAStProject project(QStringLiteral("x"), QPixmap());
        QVERIFY(project.open(dir.filePath(QStringLiteral("calculator.rtp"))));
        QList<QAStData*> items = project.childrenOfClass("QAStNode", true);
        items.prepend(&project);
        QVERIFY(!project.childrenOfClass("QAStSubProject", true).isEmpty());
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        QHash<QString, QString> scripts;
        for (QAStData* item : items) {
            const QByteArray script = scriptOf(item);
            scripts.insert(item->name(), QString::fromLatin1(script));
            if (m_perl)
                QVERIFY2(perlCompiles(script), qPrintable(item->name()));
        }
        const QStringList names = variableNames(scripts.value(QStringLiteral("Build")));
        const QStringList start{
            "OSNAME", "PATH_SEPARATOR", "ZELTAHOME", "BINDIR", "SCRIPTDIR", "WORKING_DIR", "CMSTOOL",
            "PROJECT_NAME", "PROJECT_PATH", "WORKSPACE_NAME", "WORKSPACE_PATH", "USERNAME",
            "ZELTA_TPM_ROOT", "STUDIO_PORT", "SOURCES", "CONFIGURATION", "EXECMODE", "STAGE", "NAME",
            "FILENAME", "TARGETDIR", "LP_TARGETDIR", "INIFILE", "LOGFILENAME"};
        const QStringList end{
            "ATQ_TQF_NAME", "ATQ_DUMP_DRIVER", "ATOMODE", "ATUMODE", "ATSMODE", "ATJMODE", "ATPMODE",
            "ATQMODE", "ATCMODE", "ATTMODE", "ATKMODE", "ATMMODE", "MISRA_MODE", "ATS_PROBE",
            "JAVA_STUB", "JAVA_DISPLAY", "MET_ONE_LEVEL", "MET_RESTRICT_DIR", "MISRA_CONF", "MIME_NAME"};
        QVERIFY(names.size() > start.size() + end.size());
        QCOMPARE(names.mid(0, start.size()), start);
        QCOMPARE(names.mid(names.size() - end.size() - commonEnd.size()), end + commonEnd);
        QCOMPARE(QSet<QString>(names.cbegin(), names.cend()).size(), names.size()); // each once

        // calc has its own configurations, libcalc inherits the project's.
        const QString targets = QDir(TestPaths::installTree()).filePath(QStringLiteral("targets/"));
        for (const auto& [node, package] : {std::pair{"calc", "gcc-cpp"}, {"libcalc", "gcc-c"}}) {
            const QString script = scripts.value(QLatin1String(node));
            for (const QString var : {"TARGETDIR", "LP_TARGETDIR"})
                QCOMPARE(scalarLine(script, var), u'$' + var + "='" + targets + package + "';");
        }
    }

    // The settings part as docs/formats/environment-script.md lists it, row
    // for row (that the descriptor knows each setting, under the Perl name
    // of one of its lines, tests/settings checks).
    void settingLinesAsDocumented()
    {
        using Form = QAStPerlGen::Form;
        using When = QAStPerlGen::When;
        const char* const forms[] = {"number", "string", "path", "path list", "string list"};
        QStringList table;
        for (const QAStPerlGen::SettingLine& line : QAStPerlGen::settingLines()) {
            const bool list = line.form == Form::PathList || line.form == Form::StringList;
            QString written;
            if (line.when == When::IfSet)
                written = QStringLiteral("when set");
            else if (line.when == When::IfOn)
                written = QStringLiteral("when `%1` is on").arg(line.switchKey);
            table.append(QStringList{line.section, line.key ? u'`' + QLatin1String(line.key) + u'`' : "—",
                                     QLatin1String(list ? "`@" : "`$") + QLatin1String(line.variable) + u'`',
                                     forms[int(line.form)], written}
                             .join(" | "));
        }
        QStringList documented;
        QString section;
        bool inPart = false;
        const QString doc = TestPaths::sourceDir() + QStringLiteral("/docs/formats/environment-script.md");
        for (const QString& row : QString::fromUtf8(TestFiles::readFile(doc)).split(u'\n')) {
            if (row.startsWith(QLatin1String("## ")))
                inPart = row == QLatin1String("## The settings part");
            else if (inPart && row.startsWith(QLatin1String("### ")))
                section = row.mid(4);
            else if (inPart && !section.isEmpty() && row.startsWith(QLatin1String("| ")) &&
                     !row.startsWith(QLatin1String("| key "))) {
                QStringList cells = row.split(u'|');
                for (QString& cell : cells)
                    cell = cell.trimmed();
                documented.append((QStringList{section} + cells.mid(1, cells.size() - 2)).join(" | "));
            }
        }
        QCOMPARE(documented, table);
    }

    // Random values through every form of setting, the environment lines,
    // a plug-in's map and the names, read back byte for byte from the
    // script in the default encoding, UTF-8.
    void randomValuesReadBack()
    {
        if (!m_perl)
            QSKIP("perl is not installed");
        Encoding unset{QString()};
        // Setting values are expanded as macros first: these hold none.
        QStringList values = PerlScripts::randomValues(7, 300);
        for (QString& value : values)
            value.remove(QStringLiteral("${x}")).replace(u'@', QStringLiteral("@ "));
        QVariantMap environment, map;
        for (int i = 0; i < 100; ++i) {
            environment.insert(QStringLiteral("ZT_R%1").arg(i, 3, 10, QLatin1Char('0')), values.at(200 + i));
            map.insert(values.at(i), values.at(299 - i));
        }
        Tree tree;
        tree.project.setName(values.at(5));
        QAStNode* group = tree.add("group", values.at(6), nullptr,
                                   {{"cflags", values.at(7)},
                                    {"computerName", values.at(8)},
                                    {"intdir", values.at(9)},
                                    {"ge_incdir", values.mid(0, 100)},
                                    {"tcflags", values.mid(100, 100)},
                                    {"envVariables", environment}});
        MapProperty mapProperty(QStringLiteral("RANDOM_MAP"), map);
        QList<QAProperty*> properties{&mapProperty};
        QByteArray script;
        QTextStream out(&script);
        group->createEnvironmentFile(out);
        QAStPerlGen::generatePerlVariables(out, &properties, nullptr);
        out << "1;\n";
        out.flush();
        QVERIFY(perlCompiles(script));
        QStringList mapped;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            mapped << it.key() << it.value().toString();
        const QList<std::pair<QString, QStringList>> expected{
            {"$MIME_NAME", {"UTF-8"}},
            {"$PROJECT_NAME", {values.at(5)}},
            {"$NAME", {values.at(6)}},
            {"$CFLAGS", {values.at(7)}},
            {"$HOSTNAME", {values.at(8)}},
            {"$INTDIR", {values.at(9)}},
            {"@INCLUDE_DIR_LIST", values.mid(0, 100)},
            {"@GENERATION_CONDITION", values.mid(100, 100)},
            {"map { $ENV{sprintf('ZT_R%03d', $_)} } 0..99", values.mid(200, 100)},
            {"map { %$_ } @RANDOM_MAP", mapped}};
        QStringList expressions;
        for (const auto& [expression, read] : expected)
            expressions << expression;
        QList<QStringList> read;
        QVERIFY(evaluate(script, expressions, &read));
        for (qsizetype i = 0; i < expected.size(); ++i)
            QCOMPARE(read.at(i), expected.at(i).second);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());
    }

    // The encoding preference as the settings store holds it: never set or
    // saved unset means UTF-8, a name set is kept, and a name Qt does not
    // know writes ISO-8859-1. $MIME_NAME names the preference.
    void scriptEncoding_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("mime");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("never set") << QVariant() << "UTF-8" << QByteArray("\xc3\xa9");
        QTest::newRow("saved unset") << QVariant(QString()) << "UTF-8" << QByteArray("\xc3\xa9");
        QTest::newRow("ISO-8859-1 set") << QVariant("ISO-8859-1") << "ISO-8859-1" << QByteArray("\xe9");
        QTest::newRow("unknown name") << QVariant("x-unknown") << "x-unknown" << QByteArray("\xe9");
    }
    void scriptEncoding()
    {
        QFETCH(QVariant, stored);
        QFETCH(QString, mime);
        QFETCH(QByteArray, bytes);
        QTemporaryDir dir;
        QSettings settings(dir.filePath(QStringLiteral("preferences.ini")), QSettings::IniFormat);
        if (stored.isValid())
            settings.setValue(QStringLiteral("encodingName"), stored);
        Encoding unset{QString()};
        QAStData::preferences()->load(settings);
        Tree tree;
        const QByteArray script = scriptOf(tree.add("group", QStringLiteral("g"), nullptr, {{"cflags", "é"}}));
        QVERIFY(script.contains("\n$MIME_NAME = '" + mime.toLatin1() + "';\n"));
        QVERIFY(script.contains("\n$CFLAGS='" + bytes + "';\n"));
    }

    // Under ISO-8859-1 a character beyond Latin-1 is written "?", and the
    // message console says so once for the script, naming the node and
    // the variables (a list written one item a line included); Latin-1
    // text keeps its one byte.
    void unencodableValues()
    {
        Encoding latin1(QStringLiteral("ISO-8859-1"));
        Tree tree;
        QAStNode* st = tree.add("system_testing", QStringLiteral("grüppe"), nullptr,
                                {{"computerName", "hôte Ω"},
                                 {"cflags", "-DX=é"},
                                 {"ge_incdir", QStringList{"inc", "日本"}},
                                 {"envVariables", QStringList{"ZT_UNI=Ωmega"}}});
        st->addOutputFile(QStringLiteral("RIO"), {QStringLiteral("a.rio"), QStringLiteral("Ω.rio")});
        const QByteArray script = scriptOf(st);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{"grüppe: ISO-8859-1 cannot encode every character of $HOSTNAME, "
                             "@INCLUDE_DIR_LIST, $ENV{'ZT_UNI'}, @RIO_LIST in the environment script; "
                             "those it lacks are written \"?\"\n"});
        m_studio->reset();
        if (!m_perl)
            return;
        QVERIFY(perlCompiles(script));
        QList<QStringList> v;
        QVERIFY(evaluate(script, {"$MIME_NAME", "$CFLAGS", "$HOSTNAME", "$NAME"}, &v,
                         QStringConverter::Latin1));
        QCOMPARE(v, (QList<QStringList>{{"ISO-8859-1"}, {"-DX=é"}, {"hôte ?"}, {"grüppe"}}));
    }

    // A target directory without a package: both directory lines say so,
    // and the rest of the script is still written.
    void missingTargetPackage()
    {
        Tree tree;
        QTemporaryDir empty;
        const QString script =
            textOf(tree.add("group", QStringLiteral("g"), nullptr, {{"targetPath", empty.path()}}));
        const QString text =
            QAStPerlGen::safePath(QAStPerlGen::targetPackageNotFoundText().arg(empty.path()));
        QVERIFY(text.contains(empty.path()));
        QCOMPARE(scalarLine(script, "TARGETDIR"), "$TARGETDIR='" + text + "';");
        QCOMPARE(scalarLine(script, "LP_TARGETDIR"), "$LP_TARGETDIR='" + text + "';");
        // No environment variables: the verbosity is the only entry of %ENV.
        QCOMPARE(script.count(QStringLiteral("\n$ENV{'")), 1);
        QCOMPARE(variableNames(script).last(commonEnd.size()), commonEnd);
        if (m_perl)
            QVERIFY(perlCompiles(script.toLatin1()));
    }

    // Without a node only the installation's lines; Windows has its own.
    void withoutNode()
    {
        QByteArray bytes;
        QTextStream out(&bytes);
        QTest::ignoreMessage(QtWarningMsg, " cannot generate environment no node");
        QVERIFY(!QAStPerlGen::generateEnv(out, nullptr));
        out.flush();
        QCOMPARE(variableNames(QString::fromLatin1(bytes)),
                 (QStringList{"OSNAME", "PATH_SEPARATOR", "ZELTAHOME", "BINDIR", "SCRIPTDIR", "WORKING_DIR",
                              "CMSTOOL"}));
        QCOMPARE(bytes.count('\n'), 7);
        QString text;
        QTextStream windows(&text);
        QAStPerlGen::writeHeader(windows, QAInstall::Windows);
        windows.flush();
        QCOMPARE(text, QStringLiteral("$OSNAME='win32';\n$PATH_SEPARATOR='\\\\';\n"));
    }

    // A node using a configuration name it does not own: the project lines
    // end the script; neither settings nor the kind's own lines follow.
    void withoutConfiguration_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::newRow("group") << "group";
        QTest::newRow("system testing") << "system_testing";
        QTest::newRow("library") << "library";
    }
    void withoutConfiguration()
    {
        QFETCH(QString, tag);
        Tree tree;
        QAStNode* node = tree.add(qPrintable(tag), QStringLiteral("n"));
        node->addOutputFile(QStringLiteral("RIO"), {QStringLiteral("a.rio")});
        node->setCurrentConfigurationName(QStringLiteral("Other"));
        QTest::ignoreMessage(QtWarningMsg, " cannot generate environment no configuration");
        const QStringList names = variableNames(textOf(node));
        for (const char* var : {"CONFIGURATION", "RIO_LIST", "VT_DEP_CONF", "LIBRARY_FILE", "FDCFILES"})
            QVERIFY2(!names.contains(QLatin1String(var)), var);
        QCOMPARE(names.constLast(), QStringLiteral("STUDIO_PORT"));
    }

    void systemTesting()
    {
        if (!m_perl)
            QSKIP("perl is not installed");
        Tree tree;
        auto* st = static_cast<QAStNodeSystemTesting*>(
            tree.add("system_testing", QStringLiteral("st"), nullptr,
                     {{"ge_host_workdir", "/st/work"}, {"intdir", "st int"}, {"outdir", R"(st\out\)"}}));
        QAStNode* script = tree.add("systemtesting_script", QStringLiteral("script"), st);
        auto* vt1 = static_cast<QAStNodeTestScript*>(
            tree.add("virtual_tester", QStringLiteral("VT1"), script,
                     {{"ge_host_workdir", "/vt/work"}, {"intdir", R"(vt\int)"}, {"outdir", "vt out"}}));
        auto* vt2 =
            static_cast<QAStNodeTestScript*>(tree.add("virtual_tester", QStringLiteral("VT2"), script));
        vt2->setInstance(QStringLiteral("second"));
        QCOMPARE(vt1->instance(), QStringLiteral("<all>"));

        // Activated, not activated, and for a tester the node does not hold.
        QAStNodeSystemTesting::Deployment onVt{true, "VT1", "", 5, 2, 7, "127.0.0.1", 10000, "vt_start"};
        QAStNodeSystemTesting::Deployment off = onVt;
        off.activated = false;
        st->setDeployments({onVt, off, {true, "Ghost", "inst'1", 0, 1, 0, "h", 1, ""}});
        st->setRendezvous({{QStringLiteral("start"), 2}, {QStringLiteral("end'x"), 3}});
        st->setRendezvousAutoGenerate(false);
        st->addOutputFile(QStringLiteral("RIO"), {QStringLiteral("a.rio"), QStringLiteral(R"(C:\r\b.rio)")});
        st->addOutputFile(QStringLiteral("TDC"), {QStringLiteral("t.tdc")});
        vt1->addOutputFile(QStringLiteral("RIO"), {QStringLiteral("vt.rio"), QStringLiteral("a.rio")});
        const QByteArray stScript = scriptOf(st);
        QVERIFY(perlCompiles(stScript));
        QList<QStringList> v;
        QVERIFY(evaluate(stScript, {"scalar(@VT_DEP_CONF)", "@{$VT_DEP_CONF[0]}", "@{$VT_DEP_CONF[1]}",
                                    "@RIO_LIST", "@TDC_LIST"}, &v));
        QCOMPARE(v.at(0), QStringList{"2"});
        QCOMPARE(v.at(1), (QStringList{"VT1", "/vt/work", R"(vt\int)", "vt out", "<all>", "127.0.0.1",
                                       "10000", "5", "2", "7", "vt_start"}));
        QCOMPARE(v.at(2), (QStringList{"Ghost", "/st/work", "st int", R"(st\out\)", "inst'1", "h", "1", "0",
                                       "1", "0", ""}));
        QCOMPARE(v.at(3), (QStringList{"a.rio", R"(C:\r\b.rio)", "vt.rio", ""}));
        QCOMPARE(v.at(4), (QStringList{"t.tdc", ""}));
        const QByteArray vtScript = scriptOf(vt1);
        QVERIFY(perlCompiles(vtScript));
        QVERIFY(vtScript.contains("\n## Virtual Tester Properties\n$VT_INSTANCE=0;\n"));
        QVERIFY(scriptOf(vt2).contains("\n## Virtual Tester Properties\n$VT_INSTANCE='second';\n"));
        v.clear();
        QVERIFY(evaluate(vtScript, {"$VT_RDV_AUTOGENERATE", "map { join(':', @$_) } @VT_RDV_CONF"}, &v));
        QCOMPARE(v.at(0), QStringList{"0"});
        QCOMPARE(v.at(1), (QStringList{"start:2", "end'x:3"}));
    }

    // Lines of a node computed from its settings and kind: the stages of
    // the execution flags, the library file of the generation format, the
    // analysis modes (a switch, a target supporting it and the language it
    // is made for; the test modes the test node around), the test name.
    void nodeLines_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("parentTag");
        QTest::addColumn<QVariantMap>("settings");
        QTest::addColumn<QStringList>("lines"); // <dir>: the project's directory
        const auto flags = [](const char* row, int flags, const char* mode, const char* stage) {
            QTest::newRow(row) << "group" << "" << QVariantMap{{"executionFlag", flags}}
                               << QStringList{u"$EXECMODE='%1';"_s.arg(mode), u"$STAGE='%1';"_s.arg(stage)};
        };
        flags("debug, every stage", 0x13F, "DEBUG", "cptler");
        flags("nothing", 0, "NORMAL", "");
        flags("debug alone", 0x100, "DEBUG", "");
        flags("execute, report", 0x30, "NORMAL", "er");
        flags("compile, link", 0x09, "NORMAL", "cl");
        const auto library = [](const char* row, const char* format, const char* file) {
            QTest::newRow(row) << "library" << "" << QVariantMap{{"generationFormat", format}}
                               << QStringList{u"$LIBRARY_FILE='%1';"_s.arg(file),
                                              u"$LIBRARY_FILE_ABS='<dir>/%1';"_s.arg(file)};
        };
        library("shared", "DLL", "out/mylib.so");
        library("shared, lower case", "dll", "out/mylib.so");
        library("static", "LIB", "out/mylib.a");
        library("executable", "EXE", "out/mylib.elf");
        const auto mode = [](const char* row, const char* parent, const QVariantMap& settings, const char* line) {
            QTest::newRow(row) << "user" << parent << settings << QStringList{QString::fromUtf8(line)};
        };
        mode("coverage, gcc-c", "", {{"codeCoverage", true}}, "$ATCMODE=1;");
        mode("coverage off", "", {{"codeCoverage", false}}, "$ATCMODE=0;");
        mode("coverage, target without it", "", {{"codeCoverage", true}, {"targetPath", "<no coverage>"}},
             "$ATCMODE=0;");
        mode("contract check, C", "", {{"contractCheck", true}, {"sourceLanguage", "C"}}, "$ATKMODE=0;");
        mode("contract check, C++", "", {{"contractCheck", true}, {"sourceLanguage", "CPP"}}, "$ATKMODE=1;");
        mode("in object testing", "object_testing", {}, "$ATOMODE=1;");
        mode("in unit testing", "unit_testing", {}, "$ATUMODE=1;");
        mode("in a group", "group", {}, "$ATOMODE=0;");
        QTest::newRow("environment list")
            << "group" << "" << QVariantMap{{"envVariables", QStringList{" ZT_B = a b ", "ZT_BARE"}}}
            << QStringList{"$ENV{'ZT_B'} = ' a b ';", "$ENV{'ZT_BARE'} = '';"};
        QTest::newRow("outside a test") << "group" << "" << QVariantMap()
                                        << QStringList{"$TEST_NAME='atlout';", "$ATL_OUT_FILE='out/atlout.spt';"};
        QTest::newRow("inside an application")
            << "user" << "application" << QVariantMap()
            << QStringList{"$TEST_NAME='calcapp';", "$ATL_OUT_FILE='out/calcapp.spt';"};
    }
    void nodeLines()
    {
        QFETCH(QString, tag);
        QFETCH(QString, parentTag);
        QFETCH(QVariantMap, settings);
        QFETCH(QStringList, lines);
        Tree tree;
        const std::pair<const char*, const char*> common[] = {
            {"intdir", "out"}, {"libraryDynamicExt", ".so"}, {"libraryStaticExt", ".a"}, {"binaryExt", ".elf"}};
        for (const auto& [key, value] : common)
            tree.project.currentConfiguration()->setProperty(QString::fromLatin1(key), QString::fromLatin1(value));
        if (settings.value(u"targetPath"_s) == QLatin1String("<no coverage>")) {
            const QString ini = tree.dir.filePath(u"nocov/nocov.ini"_s);
            const QString shipped = TestPaths::installTree() + u"/targets/gcc-c/gcc-c.ini"_s;
            TestFiles::writeFile(ini, TestFiles::readFile(shipped).replace("ATC_MODE = 1", "ATC_MODE = 0"));
            settings.insert(u"targetPath"_s, QFileInfo(ini).path());
        }
        QAStNode* parent = parentTag.isEmpty() ? nullptr : tree.add(qPrintable(parentTag), u"calcapp"_s);
        const QString script = textOf(tree.add(qPrintable(tag), u"mylib"_s, parent, settings));
        for (QString line : lines)
            QCOMPARE(scalarLine(script, line.section(u'=', 0, 0).mid(1)), line.replace(u"<dir>"_s, tree.dir.path()));
    }

    // A plug-in's settings follow the common part in the scripts of the
    // kinds it names, and only there.
    void pluginSettings()
    {
        SettingsPlugin plugin;
        QAStNodePluginCenter* center = QAStNodePluginCenter::nodePluginCenter();
        center->registerPlugin(&plugin);
        const auto unregister = qScopeGuard([&] { center->unregisterPlugin(&plugin); });
        Tree tree;
        const QString script = textOf(tree.add("group", QStringLiteral("g")));
        QCOMPARE(plugin.asked, QStringList{"myfeature:g"});
        const QString lines = QStringLiteral(
            "\n$PLG_FLAG=1;\n$PLG_COUNT=42;\n@PLG_LIST=('a b', 'C:\\\\x\\\\');\n$PLG_TEXT='it\\'s';\n"
            "@PLG_MAP=({'k 2', 'v\\'2'}, {'k1', 'v1'});\n\n1;\n");
        QVERIFY2(script.endsWith(lines), qPrintable(script.right(lines.size())));
        QCOMPARE(variableNames(script.chopped(lines.size())).last(commonEnd.size()), commonEnd);
        QVERIFY(!textOf(tree.add("application", QStringLiteral("app"))).contains(QStringLiteral("PLG_")));
        QCOMPARE(plugin.asked.size(), 1);
        if (m_perl) {
            QList<QStringList> v;
            QVERIFY(evaluate(script.toLatin1(), {"@PLG_LIST", "map { join('=', %$_) } @PLG_MAP"}, &v));
            QCOMPARE(v.at(0), (QStringList{"a b", R"(C:\x\)"}));
            QCOMPARE(v.at(1), (QStringList{"k 2=v'2", "k1=v1"}));
        }
    }

    // --- values in every generated script

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
        quint32 seed = 1;
        for (const char* form : {"path", "text", "list", "strings"}) {
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

QTEST_GUILESS_MAIN(TestEnvironmentScript)
#include "tst_environment_script.moc"
