#include "QAILogMonitor.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboString.h"
#include "QAPropertyInt.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyMapLoader.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathItem.h"
#include "QAPropertyYesNo.h"
#include "QARes.h"
#include "QAStPropertyFilters.h"
#include "TestPaths.h"

#include <QtTest>

#include <memory>

using namespace QAStPropertyFilters;

namespace {

class RecordingLog : public QAILogMonitor {
public:
    void log(const QString& message) override { messages.append(message); }
    QStringList messages;
};

// Fails the test if the reader reports to it: the loader must route
// errors to its own handler while it reads.
class ForbiddenHandler : public QAResErrorHandler {
public:
    void error(const QString& file, int line, const QString& message) override
    {
        errors.append(QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(message));
    }
    QStringList errors;
};

using Tree = std::unique_ptr<QAPropertyMapGroup>;

QString fixture(const QString& name)
{
    return TestPaths::data(QStringLiteral("descriptor/") + name);
}

QString realDescriptor()
{
    return TestPaths::installTree() + QStringLiteral("/korvilprojectsettings.properties");
}

Tree load(const QString& file, RecordingLog* log)
{
    QAPropertyMapLoader loader;
    return Tree(loader.load(file, table(), masks(), log));
}

// Every property below the group, depth first.
QList<QAProperty*> allProperties(const QAPropertyGroup* group)
{
    QList<QAProperty*> all;
    for (QAProperty* child : group->children()) {
        all.append(child);
        if (child->isGroup())
            all += allProperties(static_cast<const QAPropertyGroup*>(child));
    }
    return all;
}

QAProperty* findTag(const QAPropertyGroup* root, const QString& tag)
{
    for (QAProperty* p : allProperties(root)) {
        if (!p->isGroup() && p->tag() == tag)
            return p;
    }
    return nullptr;
}

QStringList leafTags(const QAPropertyGroup* root)
{
    QStringList tags;
    for (const QAProperty* p : allProperties(root)) {
        if (!p->isGroup())
            tags.append(p->tag());
    }
    return tags;
}

// Group names and leaf tags a property sheet shows for the context, in order.
QStringList shown(const QAPropertyGroup* group, unsigned int context)
{
    QStringList names;
    for (QAProperty* child : visibleChildren(group, context)) {
        if (child->isGroup()) {
            names.append(child->name());
            names += shown(static_cast<QAPropertyGroup*>(child), context);
        } else {
            names.append(child->tag());
        }
    }
    return names;
}

// A loader that knows one more type, built through the hooks.
class PercentLoader : public QAPropertyMapLoader {
protected:
    QAProperty* createProperty(const QString& type, const QString& tag, QARes* entry) override
    {
        if (type == QLatin1String("Percent"))
            return new QAPropertyMapInt(tag, QString(), 0, 100);
        return QAPropertyMapLoader::createProperty(type, tag, entry);
    }
    bool init(QAPropertyMapInt* property, const QString& tag, QARes* entry) override
    {
        property->setSuffix(QStringLiteral("%"));
        return QAPropertyMapLoader::init(property, tag, entry);
    }
};

}

class TestDescriptor : public QObject {
    Q_OBJECT

private slots:
    void fileFaultsLoadNothing_data();
    void fileFaultsLoadNothing();
    void syntaxErrorsAreCountedAndTheRestLoads();
    void faultyEntriesAreReportedAndSkipped();
    void everyKindWithItsOwnFields();
    void groupsNestByPath();
    void hooksAddTypes();
    void visibility_data();
    void visibility();
    void hiddenGroupsHideWhatTheyHold();

    void realDescriptorLoadsCleanly();
    void realDescriptorKeys_data();
    void realDescriptorKeys();
    void realDescriptorAnalysisSwitches();
    void realDescriptorTagsAreUnique();
    void realDescriptorRestrictions();
};

void TestDescriptor::fileFaultsLoadNothing_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("message");
    const QString missing = fixture(QStringLiteral("missing.properties"));
    const QString other = fixture(QStringLiteral("notdescriptor.properties"));
    const QString alone = fixture(QStringLiteral("nogroup.properties"));
    QTest::newRow("missing") << missing << missing + QStringLiteral(": not found");
    QTest::newRow("directory") << fixture(QString()) << fixture(QString()) + QStringLiteral(": not found");
    QTest::newRow("not a descriptor") << other << other + QStringLiteral(" is not property definition file");
    QTest::newRow("no group") << alone << alone + QStringLiteral(": no group defined in the file");
}

void TestDescriptor::fileFaultsLoadNothing()
{
    QFETCH(QString, file);
    QFETCH(QString, message);
    RecordingLog log;
    QVERIFY(!load(file, &log));
    QCOMPARE(log.messages, QStringList{message});
}

void TestDescriptor::syntaxErrorsAreCountedAndTheRestLoads()
{
    ForbiddenHandler outside;
    QAResErrorHandler* previous = QARes::setErrorHandler(&outside);
    const QString file = fixture(QStringLiteral("syntax.properties"));
    RecordingLog log;
    const Tree root = load(file, &log);
    QCOMPARE(QARes::errorHandler(), &outside);
    QARes::setErrorHandler(previous);

    QVERIFY(outside.errors.isEmpty());
    QCOMPARE(log.messages.size(), 2);
    QVERIFY2(log.messages.at(0).startsWith(file + QStringLiteral(":7: ")), qPrintable(log.messages.at(0)));
    QCOMPARE(log.messages.at(1), QStringLiteral("1 Error(s) in property file ") + file);
    QVERIFY(root);
    QCOMPARE(leafTags(root.get()), (QStringList{"before", "after"}));
}

void TestDescriptor::faultyEntriesAreReportedAndSkipped()
{
    RecordingLog log;
    const Tree root = load(fixture(QStringLiteral("faults.properties")), &log);
    const QString notExpected = QStringLiteral("Property at line %1: the value of the field '%2' is not expected");
    const QStringList expected = {
        "Property at line 4: the field path is required in property definition",
        "Property at line 5: the field type is required in property definition",
        "Property at line 6: the field path is required in property definition",
        "Property at line 6: the field type is required in property definition",
        "Property at line 7: unable to find the group 'Missing'",
        "Property at line 8: unable to find the group 'Cmmon'",
        "Property at line 9: unable to find the path '/'",
        "Property at line 10: the type 'Slider' is not expected",
        "Property at line 11: the field tag is required in property definition",
        "The value for filter 'COBOL' does not exist in the loader",
        notExpected.arg(13).arg("value"),
        notExpected.arg(14).arg("min"),
        notExpected.arg(15).arg("content"),
        notExpected.arg(16).arg("mode"),
        notExpected.arg(17).arg("button"),
        notExpected.arg(18).arg("readonly"),
        "The value for filter 'PASCAL' does not exist in the loader",
        "Property at line 20: unable to find the group 'Broken'",
    };
    QCOMPARE(log.messages, expected);
    QVERIFY(root);
    QCOMPARE(root->count(), 1);
    QCOMPARE(leafTags(root.get()), QStringList{"kept"});
}

void TestDescriptor::everyKindWithItsOwnFields()
{
    RecordingLog log;
    const Tree root = load(fixture(QStringLiteral("kinds.properties")), &log);
    QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
    QVERIFY(root);
    QCOMPARE(root->name(), QStringLiteral("Common"));
    const auto* group = dynamic_cast<QAPropertyMapGroup*>(root->children().value(0));
    QVERIFY(group);
    QCOMPARE(group->name(), QStringLiteral("All kinds"));
    QCOMPARE(group->whatThis(), QStringLiteral("Every kind once."));
    QCOMPARE(leafTags(root.get()),
             (QStringList{"count", "level", "flag", "answer", "options", "format", "rules", "names", "dirs"}));

    auto* count = dynamic_cast<QAPropertyMapInt*>(group->property("count"));
    QVERIFY(count);
    QCOMPARE(count->name(), QStringLiteral("Count"));
    QCOMPARE(count->whatThis(), QStringLiteral("How many."));
    QCOMPARE(count->perlVarName(), QStringLiteral("COUNT"));
    QVERIFY(count->readOnly());
    QCOMPARE(count->initValue(), QVariant(12));
    QCOMPARE(count->minimum(), -5);
    QCOMPARE(count->maximum(), 500);
    QCOMPARE(count->step(), 5);
    QCOMPARE(count->suffix(), QStringLiteral(" items"));

    auto* level = dynamic_cast<QAPropertyMapComboInt*>(group->property("level"));
    QVERIFY(level);
    QVERIFY(!level->readOnly());
    QCOMPARE(level->itemTexts(), (QStringList{"Low", "Medium", "High"}));
    QCOMPARE(level->itemValues(), (QList<int>{0, 1, 2}));
    QCOMPARE(level->initValue(), QVariant(2));

    QCOMPARE(group->property("flag")->type(), QMetaType::Bool);
    QCOMPARE(group->property("flag")->initValue(), QVariant(true));
    QVERIFY(dynamic_cast<QAPropertyYesNo*>(group->property("answer")));
    QCOMPARE(group->property("answer")->initValue(), QVariant(false));
    QCOMPARE(group->property("options")->initValue(), QVariant(QStringLiteral("-g -O2")));
    QCOMPARE(group->property("options")->perlVarName(), QStringLiteral("OPTIONS"));

    auto* format = dynamic_cast<QAPropertyMapComboString*>(group->property("format"));
    QVERIFY(format);
    QCOMPARE(format->itemTexts(), (QStringList{"Executable", "Shared library"}));
    QCOMPARE(format->itemValues(), (QStringList{"EXE", "DLL"}));
    QCOMPARE(format->initValue(), QVariant(QStringLiteral("DLL")));

    auto* rules = dynamic_cast<QAPropertyMapPathItem*>(group->property("rules"));
    QVERIFY(rules);
    QCOMPARE(rules->mode(), QAPropertyFileChooser::AnyFile);
    QCOMPARE(rules->filters(), (QStringList{"Rule files (*.xml)", "All files (*)"}));
    QCOMPARE(rules->initValue(), QVariant(QStringLiteral("<default>")));

    QCOMPARE(group->property("names")->initValue(), QVariant(QStringList{"one", "two"}));

    auto* dirs = dynamic_cast<QAPropertyMapPathBox*>(group->property("dirs"));
    QVERIFY(dirs);
    QCOMPARE(dirs->mode(), QAPropertyFileChooser::Directory);
    QCOMPARE(dirs->buttons(), QAPropertyPathBox::SingleWithoutMoves);
    QCOMPARE(dirs->filters(), QStringList{"*.h"});
    QCOMPARE(dirs->initValue(), QVariant(QStringList{"/usr/include", "include"}));
}

void TestDescriptor::groupsNestByPath()
{
    RecordingLog log;
    const Tree root = load(fixture(QStringLiteral("nested.properties")), &log);
    QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
    QCOMPARE(root->count(), 2);
    QCOMPARE(root->nbGroup(), 1);
    QCOMPARE(root->children().at(1)->tag(), QStringLiteral("topLevel"));
    auto* build = static_cast<QAPropertyGroup*>(root->children().at(0));
    QCOMPARE(build->name(), QStringLiteral("Build"));
    QCOMPARE(build->nbGroup(), 2);
    auto* compiler = static_cast<QAPropertyGroup*>(build->children().at(0));
    QCOMPARE(compiler->name(), QStringLiteral("Compiler"));
    QCOMPARE(compiler->count(), 2);
    QVERIFY(compiler->property(QStringLiteral("cflags")));
    auto* warnings = static_cast<QAPropertyGroup*>(compiler->children().at(0));
    QVERIFY(warnings->property(QStringLiteral("strict")));
    QVERIFY(static_cast<QAPropertyGroup*>(build->children().at(1))->property(QStringLiteral("ldflags")));
    // Map groups all the way down, so one call binds the tree.
    QVERIFY(dynamic_cast<QAPropertyMapGroup*>(warnings));
}

void TestDescriptor::hooksAddTypes()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("percent.properties"));
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write("properties = {\n"
              "  property = { path = \"Common\" type = Group name = \"G\" }\n"
              "  property = { path = \"Common/G\" type = Percent tag = ratio value = 40 }\n"
              "}\n");
    out.close();
    RecordingLog log;
    PercentLoader loader;
    const Tree root(loader.load(file, table(), masks(), &log));
    QVERIFY(log.messages.isEmpty());
    auto* ratio = dynamic_cast<QAPropertyMapInt*>(findTag(root.get(), QStringLiteral("ratio")));
    QVERIFY(ratio);
    QCOMPARE(ratio->maximum(), 100);
    QCOMPARE(ratio->suffix(), QStringLiteral("%"));
    QCOMPARE(ratio->initValue(), QVariant(40));
}

void TestDescriptor::visibility_data()
{
    QTest::addColumn<unsigned int>("context");
    QTest::addColumn<QStringList>("visible");
    QTest::newRow("C application in the studio")
        << context(LanguageC, Application, Studio)
        << QStringList{"Everywhere", "plain", "notJava", "common"};
    QTest::newRow("C++ object testing")
        << context(LanguageCpp, ObjectTesting, Studio)
        << QStringList{"Everywhere", "plain", "cppOnly", "cppOrAda", "notJava", "cppObjectTesting", "common"};
    QTest::newRow("C++ unit testing under the RTA host")
        << context(LanguageCpp, UnitTesting, EclipseRta)
        << QStringList{"Everywhere", "plain", "cppOnly", "cppOrAda", "notJava", "unitOrProject", "rtaOnly", "common"};
    QTest::newRow("Ada library")
        << context(LanguageAda, Library, Studio)
        << QStringList{"Everywhere", "plain", "cppOrAda", "notJava", "common"};
    QTest::newRow("Java application")
        << context(LanguageJava, Application, Studio)
        << QStringList{"Everywhere", "plain", "common", "adaJavaNotLibrary", "Java only children", "javaLeaf"};
    QTest::newRow("C system testing")
        << context(LanguageC, SystemTesting, Studio)
        << QStringList{"Everywhere", "plain", "notJava", "common", "System testing", "stLeaf"};
    QTest::newRow("Java virtual tester under TPTP")
        << context(LanguageJava, VirtualTester, EclipseTptp)
        << QStringList{"Everywhere", "plain", "common", "adaJavaNotLibrary", "System testing", "stLeaf",
                       "stJava", "Java only children", "javaLeaf"};
    QTest::newRow("C project, host unknown")
        << (unsigned(LanguageC) | unsigned(Project))
        << QStringList{"Everywhere", "plain", "notJava", "unitOrProject", "common"};
}

void TestDescriptor::visibility()
{
    QFETCH(unsigned int, context);
    QFETCH(QStringList, visible);
    RecordingLog log;
    const Tree root = load(fixture(QStringLiteral("visibility.properties")), &log);
    QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
    QCOMPARE(shown(root.get(), context), visible);
    for (const QAProperty* p : allProperties(root.get())) {
        const QString id = p->isGroup() ? p->name() : p->tag();
        QCOMPARE(isApplicable(p, context), visible.contains(id));
    }
}

void TestDescriptor::hiddenGroupsHideWhatTheyHold()
{
    RecordingLog log;
    const Tree root = load(fixture(QStringLiteral("visibility.properties")), &log);
    const QAProperty* hiddenLeaf = findTag(root.get(), QStringLiteral("hiddenLeaf"));
    const auto* hidden = hiddenLeaf->parentGroup();
    const unsigned int anywhere = context(LanguageCpp, Project, Studio);
    // The leaf has no restriction of its own; its group's hides it.
    QCOMPARE(hiddenLeaf->applyMask() | hiddenLeaf->unapplyMask(), 0u);
    QVERIFY(!isApplicable(hiddenLeaf, anywhere));
    QVERIFY(visibleChildren(hidden, anywhere).isEmpty());
    // "Common" in apply restricts nothing; in unapply it hides everywhere.
    QCOMPARE(findTag(root.get(), QStringLiteral("common"))->applyMask(), 0u);
    QCOMPARE(hidden->unapplyMask(), unsigned(LanguageMask | KindMask | 0x07000000u));
    QVERIFY(isApplicable(root.get(), anywhere));
}

void TestDescriptor::realDescriptorLoadsCleanly()
{
    RecordingLog log;
    const Tree root = load(realDescriptor(), &log);
    QVERIFY2(log.messages.isEmpty(), qPrintable(log.messages.join('\n')));
    QVERIFY(root);
    QVERIFY(root->nbGroup() >= 10);
}

// Every setting the environment script reads, the variable it goes to
// (none where the script derives its lines from the value) and the line
// form: S a string, N a number or switch, L a list.
void TestDescriptor::realDescriptorKeys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QChar>("form");
    const struct {
        const char* key;
        const char* variable;
        char form;
    } rows[] = {
        {"executionFlag", "", 'N'}, {"targetPath", "", 'S'}, {"targetPathAsRelative", "", 'N'},
        {"iniFileName", "INIFILE", 'S'}, {"computerName", "HOSTNAME", 'S'},
        {"computerAddress", "ADDRESS", 'S'}, {"computerPort", "PORT", 'N'},
        {"uploaderPort", "UPLOADER_PORT", 'N'}, {"ge_host_workdir", "HOST_WORKING_DIR", 'S'},
        {"intdir", "INTDIR", 'S'}, {"outdir", "OUTDIR", 'S'}, {"csvSeparator", "CSV_SEPARATOR", 'S'},
        {"csvDecimalSeparator", "CSV_DECIMAL_SEPARATOR", 'S'},
        {"csvThousandSeparator", "CSV_THOUSAND_SEPARATOR", 'S'},
        {"sourceDirectories", "SOURCES_DIR_LIST", 'L'}, {"structDefinition", "STRUCT_AS_CLASS", 'N'},
        {"ge_incdir", "INCLUDE_DIR_LIST", 'L'}, {"ge_alk_file_name", "USER_ALK_FILE", 'S'},
        {"sourceExt", "SRCEXT", 'S'}, {"objectExt", "OBJEXT", 'S'}, {"binaryExt", "EXEEXT", 'S'},
        {"cppFlags", "CPPFLAGS", 'S'}, {"cflags", "CFLAGS", 'S'}, {"tcflags", "GENERATION_CONDITION", 'L'},
        {"debug", "DEBUG", 'N'}, {"sourceLanguage", "TDP_LANGUAGE", 'S'},
        {"ge_libdir", "LIBRARY_DIR_LIST", 'L'}, {"javaBuildJarFile", "JAVA_BUILDJARFILE", 'N'},
        {"javaManifest", "JAVA_MANIFEST", 'S'}, {"javaJarOtherDir", "JAVA_JAR_OTHER_DIR", 'L'},
        {"envVariables", "", 'L'},
        {"testProgram", "TESTPROGRAM", 'S'}, {"arguments", "ARGUMENTS", 'S'},
        {"virtualMachineArguments", "VIRTUAL_MACHINE_ARGUMENTS", 'S'}, {"ldflags", "LDFLAGS", 'S'},
        {"additionnalObjects", "LIBRARIES", 'S'},
        {"multiThreaded", "ATL_MULTI_THREADS", 'N'}, {"bufferSize", "ATL_BUFFER_SIZE", 'N'},
        {"maxThreads", "ATL_THREADS_MAX", 'N'}, {"mainProc", "ATL_MAIN_PROCEDURE", 'S'},
        {"clockKind", "ATL_CLOCK_KIND", 'N'}, {"atc_rungcatexit", "ATC_RUN_GC_AT_EXIT", 'N'},
        {"javaBootClasspath", "JAVA_BOOTCLASSPATH", 'L'}, {"javaClasspath", "JAVA_CLASSPATH", 'L'},
        {"javaMainClass", "JAVA_MAIN_CLASS", 'S'}, {"sourceFile", "SRCFILE", 'S'},
        {"otiFile", "OTIFILE", 'S'}, {"nuerror", "ATO_PREPRO_MAX_ERRORS", 'N'},
        {"nodline", "ATO_PREPRO_NODLINE", 'N'}, {"xrdFile", "XRDFILE", 'S'},
        {"atobreakonerror", "ATO_STOP_ON_ERROR", 'N'}, {"atonopassdump", "ATO_DUMP_SUCCESS", 'N'},
        {"atomaxinstances", "ATO_MAX_INSTANCES", 'N'}, {"printbuffer", "", 'N'},
        {"printbuffersize", "ATO_PRINT_BUFFER_SIZE", 'N'},
        {"atkbreakonerror", "ATK_STOP_ON_ERROR", 'N'}, {"atknopassdump", "ATK_DUMP_SUCCESS", 'N'},
        {"atkreflexivestate", "ATK_REPORT_REFLEXIVE_STATES", 'N'},
        {"atkconstmethods", "ATK_INSTR_CONST", 'N'}, {"atkreentrant", "ATK_MT_SUPPORT", 'N'},
        {"atkstrictcheck", "ATK_CONST_ASSERTIONS", 'N'},
        {"zeltaClassName", "ATU_ZELTA_CLASSNAME", 'S'}, {"intermediateFile", "ATU_INTERMEDIATE_FILE", 'S'},
        {"simulation", "ATU_SIMULATION", 'N'}, {"preproerrorlevel", "CONTONWARN", 'N'},
        {"breakontest", "ATU_BREAK_ON_TEST_FAILED", 'N'}, {"moreoptions", "ATU_IS_OPTION", 'N'},
        {"preparationOptions", "ATU_OPTIONS", 'S'}, {"filter", "ATU_FILTER", 'N'},
        {"strategy", "ATU_STRATEGY", 'N'}, {"reportOutlay", "ATU_REPORT_OUTLAY", 'N'},
        {"moreRoptions", "ATU_IS_REPORT_OPTION", 'N'}, {"reportoptions", "ATU_REPORT_OPTIONS", 'S'},
        {"comparaison", "ATU_COMPARE", 'N'},
        {"st_interface_files", "ATS_INTERFACE_FILES", 'L'}, {"st_allocation", "ATS_ALLOCATION", 'S'},
        {"st_notShared", "ATS_NOTSHARED", 'N'}, {"st_thread", "ATS_THREAD", 'N'},
        {"st_thread_function", "ATS_THREAD_FUNCTION", 'S'}, {"st_trace", "ATS_TRACE", 'S'},
        {"st_trace_circular", "ATS_TRACE_CIRCULAR", 'N'}, {"st_bufsize", "ATS_BUFSIZE", 'N'},
        {"st_values", "ATS_VAL_DISP", 'S'}, {"st_repform", "ATS_RA", 'S'},
        {"st_time", "ATS_TIME_STAMP", 'N'}, {"st_dynfol", "ATS_DYN_FOLLOW", 'N'},
        {"st_item_buf", "ATS_RT_BUFFER", 'N'}, {"st_item_buf_size", "ATS_BUFFER_SIZE", 'N'},
        {"st_dtrack", "ATS_DYNFLW", 'N'}, {"st_dtrack_buf_size", "ATS_TAGTBUF_SIZE", 'N'},
        {"st_custom", "ATS_PROBE_CUSTOM", 'N'}, {"st_custom_type", "ATS_PROBE_CUSTOM_TYPE", 'N'},
        {"st_addOptions", "ATS_ADD_OPTIONS", 'S'}, {"st_replay_cmdline_args", "ATS_REPLAY_CMDLINE_ARGS", 'S'},
        {"st_interrecv_timeout", "ATS_INTERRECV_TIMEOUT", 'N'},
        {"fdc_name_opt", "ATG_FDC_NAME_OPT", 'N'}, {"fdc_value", "ATG_FDC_VALUE", 'S'},
        {"tsf_name_opt", "ATG_TSF_NAME_OPT", 'N'}, {"tsf_value", "ATG_TSF_VALUE", 'S'},
        {"tsf_selective_file", "ATG_SELECTIVE_FILES", 'L'}, {"tsf_selective_class", "ATG_SELECTIVE_CLASS", 'L'},
        {"exclude_dir", "ATG_EXCLUDED_DIRS", 'L'}, {"dump_incoming_list", "ATG_DUMP_INCOMING_LIST", 'L'},
        {"dump_returning_list", "ATG_DUMP_RETURNING_LIST", 'L'},
        {"dump_calling_list", "ATG_DUMP_CALLING_LIST", 'L'}, {"no_header_instr", "ATG_HEADER_INSTR", 'N'},
        {"instantiate_template", "ATG_INSTANTIATE_TEMPLATE", 'N'}, {"misc_options", "ATG_MISC_OPTIONS", 'S'},
        {"atc_instr_functions", "ATC_INSTR_FUNCTIONS", 'N'}, {"atc_instr_calls", "ATC_INSTR_CALLS", 'N'},
        {"atc_instr_blocks", "ATC_INSTR_BLOCKS", 'N'}, {"atc_instr_conditions", "ATC_INSTR_CONDITIONS", 'N'},
        {"atc_selective_no_ternary", "ATC_SELECTIVE_TERNARY", 'N'},
        {"atc_selective_no_inline", "ATC_SELECTIVE_INLINE", 'N'},
        {"atc_selective_no_included", "ATC_SELECTIVE_INCLUDED", 'N'},
        {"atc_selective_functions_list", "ATC_SELECTIVE_FUNCTIONS_LIST", 'L'},
        {"atc_selective_spec", "ATC_SELECTIVE_SPEC", 'N'}, {"atc_information", "ATC_INFORMATION", 'N'},
        {"atc_instr_ctrl_prefixe", "ATC_INSTR_CTRL_PREFIX", 'S'},
        {"atc_instr_ctrl_suffixe", "ATC_INSTR_CTRL_SUFFIX", 'N'}, {"atc_no_metrics", "ATC_METRICS", 'N'},
        {"atc_user_comment", "ATC_USER_COMMENT", 'S'}, {"atc_dump_driver", "ATC_DUMP_DRIVER", 'N'},
        {"atc_onthefly", "", 'N'},
        {"att_calling_sequenced", "ATT_CALLING_SEQUENCED", 'N'},
        {"att_aggregate_traces", "ATT_AGGREGATE_TRACES", 'N'},
        {"att_template_notes", "ATT_TEMPLATE_NOTES", 'N'}, {"att_split", "ATT_SPLIT", 'N'},
        {"att_split_size", "ATT_SPLIT_SIZE", 'N'}, {"att_split_prefixe", "ATT_SPLIT_PREFIX", 'S'},
        {"att_loop", "ATT_LOOP", 'N'}, {"att_loop_options", "ATT_LOOP_FLAGS", 'S'},
        {"att_record_max_stack", "ATT_RECORD_MAX_STACK", 'N'}, {"att_on_fly", "ATT_ON_THE_FLY", 'N'},
        {"att_item_buffer", "ATT_ITEM_BUFFER", 'N'}, {"att_item_buffer_size", "ATT_ITEM_BUFFER_SIZE", 'N'},
        {"att_partial_dump", "ATT_PARTIAL_DUMP", 'N'}, {"att_signal_action", "ATT_SIGNAL_ACTION", 'N'},
        {"att_time_stamp", "ATT_TIMESTAMP", 'N'}, {"att_heap_size", "ATT_HEAP_SIZE", 'N'},
        {"att_thread_info", "ATT_THREAD_INFO", 'N'},
        {"atp_instr_ctrl", "ATP_INSTR_CTRL_LIST", 'L'}, {"atp_errors_fiu", "ATP_REPORTS_FIU", 'N'},
        {"atp_errors_miu", "ATP_REPORTS_MIU", 'N'}, {"atp_errors_sig", "ATP_REPORTS_SIG", 'N'},
        {"atp_fmwl", "ATP_REPORTS_FFM_FMWL", 'N'}, {"atp_fmwl_queue_len", "ATP_MAX_FREEQ_LENGTH", 'N'},
        {"atp_fmwl_queue_size", "ATP_MAX_FREEQ_SIZE", 'N'}, {"atp_abwl", "ATP_REPORTS_ABWL", 'N'},
        {"atp_abwl_zone_size", "ATP_RED_ZONE_SIZE", 'N'}, {"atp_call_stack", "ATP_CALL_STACK_SIZE", 'N'},
        {"javaObjectHashSize", "JAVA_OBJECT_HASH_SIZE", 'N'}, {"javaClassHashSize", "JAVA_CLASS_HASH_SIZE", 'N'},
        {"javaTrigger", "JAVA_TRIGGER", 'S'}, {"javaHitKey", "JAVA_HIT_KEY", 'N'},
        {"javaNextGC", "JAVA_NEXT_GC", 'N'}, {"javaStudioIPAdress", "JAVA_STUDIO_IP_ADRESS", 'S'},
        {"javaStudioPortNb", "JAVA_STUDIO_PORT_NB", 'S'}, {"javaTpfFileName", "JAVA_TPF_FILENAME", 'S'},
        {"javaTsfFileName", "JAVA_TSF_FILENAME", 'S'}, {"javaPackageAnalyze", "JAVA_PACKAGE_ANALYZE", 'L'},
        {"javaAnalyze", "JAVA_ANALYZE", 'L'}, {"javaAnalyzeAlloc", "JAVA_ANALYZE_ALLOC", 'L'},
        {"javaFilterOption", "JAVA_FILTER_OPTION", 'S'},
        {"atq_dump_driver", "ATQ_DUMP_DRIVER", 'N'},
        {"javaStub", "JAVA_STUB", 'N'}, {"javaDisplay", "JAVA_DISPLAY", 'N'},
        {"metOneLevel", "MET_ONE_LEVEL", 'N'}, {"metRestrictDir", "MET_RESTRICT_DIR", 'L'},
        {"misraconf", "MISRA_CONF", 'S'},
        {"generationFormat", "", 'S'}, {"libraryDynamicExt", "", 'S'}, {"libraryStaticExt", "", 'S'},
    };
    for (const auto& row : rows)
        QTest::newRow(row.key) << QString::fromLatin1(row.key) << QString::fromLatin1(row.variable)
                               << QChar::fromLatin1(row.form);
}

void TestDescriptor::realDescriptorKeys()
{
    QFETCH(QString, key);
    QFETCH(QString, variable);
    QFETCH(QChar, form);
    static RecordingLog log;
    static const Tree root = load(realDescriptor(), &log);
    QVERIFY(root);
    const QAProperty* property = findTag(root.get(), key);
    QVERIFY2(property, "the key is not described");
    QCOMPARE(property->perlVarName(), variable);
    QVERIFY(!property->name().isEmpty());
    QVERIFY(!property->whatThis().isEmpty());
    const QMetaType::Type type = property->type();
    if (form == QLatin1Char('S'))
        QCOMPARE(type, QMetaType::QString);
    else if (form == QLatin1Char('N'))
        QVERIFY(type == QMetaType::Int || type == QMetaType::Bool);
    else
        QCOMPARE(type, QMetaType::QStringList);
    if (property->hasInitValue())
        QCOMPARE(property->initValue().typeId(), int(type));
}

void TestDescriptor::realDescriptorAnalysisSwitches()
{
    RecordingLog log;
    const Tree root = load(realDescriptor(), &log);
    for (const char* key : {"memoryProfiling", "performanceProfiling", "codeCoverage", "runtimeTracing",
                            "contractCheck", "staticMetrics", "misraCheck", "systemTestingProbes"}) {
        const QAProperty* property = findTag(root.get(), QString::fromLatin1(key));
        QVERIFY2(property, key);
        QCOMPARE(property->type(), QMetaType::Bool);
        QVERIFY2(property->perlVarName().isEmpty(), key);
        QCOMPARE(property->initValue(), QVariant(false));
    }
    for (const char* unused : {"name", "encoding"})
        QVERIFY2(!findTag(root.get(), QString::fromLatin1(unused)), unused);
}

void TestDescriptor::realDescriptorTagsAreUnique()
{
    RecordingLog log;
    const Tree root = load(realDescriptor(), &log);
    QStringList tags = leafTags(root.get());
    const qsizetype all = tags.size();
    tags.removeDuplicates();
    QCOMPARE(tags.size(), all);
    for (const QAProperty* p : allProperties(root.get())) {
        QVERIFY2(!p->perlVarName().startsWith(QLatin1Char('$')) && !p->perlVarName().startsWith(QLatin1Char('@')),
                 qPrintable(p->tag()));
    }
}

void TestDescriptor::realDescriptorRestrictions()
{
    RecordingLog log;
    const Tree root = load(realDescriptor(), &log);
    const auto shows = [&](const char* key, unsigned int where) {
        return isApplicable(findTag(root.get(), QString::fromLatin1(key)), where);
    };
    const unsigned int cApplication = context(LanguageC, Application, Studio);
    QVERIFY(shows("cflags", cApplication));
    QVERIFY(!shows("javaClasspath", cApplication));
    QVERIFY(shows("javaClasspath", context(LanguageJava, Application, Studio)));
    QVERIFY(!shows("javaStub", context(LanguageJava, Application, Studio)));
    QVERIFY(shows("javaStub", context(LanguageJava, JavaTesting, Studio)));
    QVERIFY(!shows("st_trace", context(LanguageC, UnitTesting, Studio)));
    for (Kind kind : {SystemTesting, SystemTestScript, VirtualTester, Project, Group})
        QVERIFY(shows("st_trace", context(LanguageC, kind, Studio)));
    QVERIFY(shows("zeltaClassName", context(LanguageC, UnitTestScript, Studio)));
    QVERIFY(!shows("zeltaClassName", context(LanguageJava, UnitTesting, Studio)));
    QVERIFY(shows("otiFile", context(LanguageCpp, ObjectTesting, Studio)));
    QVERIFY(!shows("otiFile", context(LanguageC, ObjectTesting, Studio)));
    QVERIFY(!shows("atkstrictcheck", cApplication));
    QVERIFY(shows("misraconf", context(LanguageCpp, Application, Studio)));
    QVERIFY(!shows("misraconf", context(LanguageAda, Application, Studio)));
    QVERIFY(!shows("att_on_fly", context(LanguageC, Application, EclipseRta)));
    // Settings inherit down the tree, so each one shows at the project of
    // some language, where it is set for the whole tree.
    for (const QAProperty* p : allProperties(root.get())) {
        bool atTheTop = false;
        for (Language language : {LanguageC, LanguageCpp, LanguageAda, LanguageJava})
            atTheTop = atTheTop || isApplicable(p, context(language, Project, Studio));
        QVERIFY2(atTheTop, qPrintable(p->isGroup() ? p->name() : p->tag()));
    }
}

QTEST_GUILESS_MAIN(TestDescriptor)
#include "tst_descriptor.moc"
