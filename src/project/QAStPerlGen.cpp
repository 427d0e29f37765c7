#include "QAStPerlGen.h"

#include "QAFileUtil.h"
#include "QAINodeSettingsPlugin.h"
#include "QALogging.h"
#include "QAPerlValues.h"
#include "QAPropertyGroup.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathItem.h"
#include "QAStAnalyseMacro.h"
#include "QAStConfiguration.h"
#include "QAStNode.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeLink.h"
#include "QAStNodePluginCenter.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeTest.h"
#include "QAStNodeTestScript.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QAStTargetPackage.h"
#include "QAStTargetPackageList.h"
#include "QATr.h"
#include "StudioInterface.h"

#include <QDir>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringConverter>
#include <QTextStream>
#include <QVariant>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace {

const QChar quote = QLatin1Char('\'');
const QString defaultValue = QStringLiteral("<default>");

// The value as the node's macros make it; as it is without a node.
QString expanded(const QString& value, QAStNode* node)
{
    return node ? QAStAnalyseMacro::analyse(value, node, QStringLiteral("Prompt Dialog")) : value;
}

using Escape = QString (*)(const QString&, QAStNode*);

// The script is built in a string and handed to the stream at once: the
// stream's cost per call would otherwise dominate.
template <typename Var>
void appendQuoted(QString& out, const Var& var, const QString& escaped)
{
    out += QLatin1Char('$');
    out += var;
    out += QLatin1String("='");
    out += escaped;
    out += QLatin1String("';\n");
}

template <typename Var>
void appendNumber(QString& out, const Var& var, qlonglong value)
{
    out += QLatin1Char('$');
    out += var;
    out += QLatin1Char('=');
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    out += QLatin1String(digits, end.ptr);
    out += QLatin1String(";\n");
}

template <typename Var>
void appendList(QString& out, const Var& var, const QStringList& items, QAStNode* node,
                Escape escape)
{
    out += QLatin1Char('@');
    out += var;
    out += QLatin1String("=(");
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (i > 0)
            out += QLatin1String(", ");
        out += quote;
        out += escape(items.at(i), node);
        out += quote;
    }
    out += QLatin1String(");\n");
}

template <typename Var>
void appendPath(QString& out, const Var& var, const QString& value, QAStNode* node = nullptr)
{
    appendQuoted(out, var, QAStPerlGen::safePath(value, node));
}

template <typename Var>
void appendString(QString& out, const Var& var, const QString& value, QAStNode* node = nullptr)
{
    appendQuoted(out, var, QAStPerlGen::safeStr(value, node));
}

template <typename Var>
void appendPathList(QString& out, const Var& var, const QStringList& items, QAStNode* node = nullptr)
{
    appendList(out, var, items, node, &QAStPerlGen::safePath);
}

template <typename Var>
void appendStringList(QString& out, const Var& var, const QStringList& items, QAStNode* node = nullptr)
{
    appendList(out, var, items, node, &QAStPerlGen::safeStr);
}

void appendHeader(QString& out, QAInstall::Platform platform)
{
    out += QLatin1String("$OSNAME='");
    out += QAInstall::osName(platform);
    out += QLatin1String("';\n");
    out += platform == QAInstall::Windows ? QLatin1String("$PATH_SEPARATOR='\\\\';\n")
                                          : QLatin1String("$PATH_SEPARATOR='/';\n");
}

// The settings descriptor's leaves by key, rebuilt when the descriptor is
// replaced, for the initial values of settings no configuration sets.
const QAProperty* describedSetting(const QString& key)
{
    static const QAPropertyMapGroup* indexed = nullptr;
    static QHash<QString, const QAProperty*> index;
    const QAPropertyMapGroup* descriptor = QAStConfiguration::propertyDescriptor();
    if (descriptor != indexed) {
        index.clear();
        indexed = descriptor;
        QList<const QAPropertyGroup*> groups;
        if (descriptor)
            groups.append(descriptor);
        while (!groups.isEmpty()) {
            const QAPropertyGroup* group = groups.takeFirst();
            for (const QAProperty* child : group->children()) {
                if (child->isGroup())
                    groups.append(static_cast<const QAPropertyGroup*>(child));
                else if (!child->tag().isEmpty() && !index.contains(child->tag()))
                    index.insert(child->tag(), child);
            }
        }
    }
    return index.value(key);
}

// A value as a number: Booleans 0/1, texts read as integers (0 when they
// are not), anything else 0.
qlonglong toNumber(const QVariant& value)
{
    if (!value.isValid())
        return 0;
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1 : 0;
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    if (ok)
        return number;
    const QString text = value.toString().trimmed();
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return 1;
    return qlonglong(text.toDouble());
}

QStringList toList(const QVariant& value)
{
    if (!value.isValid())
        return {};
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        return text.isEmpty() ? QStringList() : QStringList{text};
    }
    return value.toStringList();
}

// Whether the settings descriptor describes key as a path or a list of
// paths.
bool isPathSetting(const QString& key)
{
    const QAProperty* described = describedSetting(key);
    return dynamic_cast<const QAPropertyPathItem*>(described)
           || dynamic_cast<const QAPropertyPathBox*>(described);
}

// The directory of the project whose configuration, in c's chain, holds
// key: relative paths of the value are taken against it. Empty when no
// configuration of the chain holds it, or the holder has no project.
QString holderDirectory(const QAStConfiguration* c, const QString& key)
{
    QSet<const QAPropertyStore*> seen;
    for (const QAPropertyStore* store = c; store && !seen.contains(store);
         store = store->inheritOf()) {
        seen.insert(store);
        if (!store->hasProperty(key))
            continue;
        const auto* holder = qobject_cast<const QAStConfiguration*>(store);
        const QAStNode* node = holder ? holder->node() : nullptr;
        const QAStProject* project = node ? node->project() : nullptr;
        return project ? project->directory() : QString();
    }
    return QString();
}

// Where a path setting of c, written for node, must be made absolute: the
// holder's project directory when it is not node's own (a sub-project
// inherits its including project's settings, whose relative paths mean
// that project's directory); empty when the value stays as it is.
QString rebaseDirectory(const QAStConfiguration* c, const QString& key, const QAStNode* node)
{
    if (!c || !isPathSetting(key))
        return QString();
    const QString holder = holderDirectory(c, key);
    const QAStProject* project = node ? node->project() : nullptr;
    const QString own = project ? project->directory() : QString();
    return holder.isEmpty() || holder == own ? QString() : holder;
}

// path, its macros expanded for node, made absolute against dir when it is
// relative.
QString rebased(const QString& path, const QString& dir, QAStNode* node)
{
    const QString value = expanded(path, node);
    if (value.isEmpty() || !QDir::isRelativePath(value))
        return value;
    return QAFileUtil::cleanDirPath(QDir(dir).filePath(value));
}

// The values a chain of stores gives, the nearest store's winning. Nodes
// share the chain above them with their siblings, and a run writes the
// scripts of siblings one after the other: the merged values of the last
// few chains are kept, each with the revisions it was made from.
const QHash<QString, QVariant>& inheritedValues(const QList<const QAPropertyStore*>& chain)
{
    struct Merged {
        QList<QPair<const QAPropertyStore*, quint64>> stamps;
        QHash<QString, QVariant> values;
    };
    static Merged cache[32];
    static int next = 0;
    QList<QPair<const QAPropertyStore*, quint64>> stamps;
    stamps.reserve(chain.size());
    for (const QAPropertyStore* store : chain)
        stamps.append({store, store->revision()});
    for (const Merged& merged : cache) {
        if (merged.stamps == stamps)
            return merged.values;
    }
    Merged& merged = cache[next];
    next = (next + 1) % int(std::size(cache));
    merged.stamps = stamps;
    merged.values.clear();
    for (auto store = chain.crbegin(); store != chain.crend(); ++store) {
        const QHash<QString, QVariant>& own = (*store)->localProperties();
        for (auto it = own.cbegin(); it != own.cend(); ++it)
            merged.values.insert(it.key(), it.value());
    }
    return merged.values;
}

// The settings part of the script, in order: runs of setting lines that
// SettingsWriter::lines writes, and the lines computed between them
// (without a key). docs/formats/environment-script.md lists the same rows.
constexpr auto Number = QAStPerlGen::Form::Number;
constexpr auto String = QAStPerlGen::Form::String;
constexpr auto Path = QAStPerlGen::Form::Path;
constexpr auto PathList = QAStPerlGen::Form::PathList;
constexpr auto StringList = QAStPerlGen::Form::StringList;
constexpr auto IfSet = QAStPerlGen::When::IfSet;
constexpr auto IfOn = QAStPerlGen::When::IfOn;
constexpr const char* computed = nullptr;

const QAStPerlGen::SettingLine settingTable[] = {
    {"Settings", "iniFileName", "INIFILE", Path},
    {"Settings", computed, "LOGFILENAME", Path},
    {"Settings", "computerName", "HOSTNAME", String},
    {"Settings", "computerAddress", "ADDRESS", String},
    {"Settings", "computerPort", "PORT", Number},
    {"Settings", "uploaderPort", "UPLOADER_PORT", Number},
    {"Settings", "ge_host_workdir", "HOST_WORKING_DIR", Path},
    {"Settings", "intdir", "INTDIR", Path},
    {"Settings", "outdir", "OUTDIR", Path},
    {"Settings", "csvSeparator", "CSV_SEPARATOR", String},
    {"Settings", "csvDecimalSeparator", "CSV_DECIMAL_SEPARATOR", String},
    {"Settings", "csvThousandSeparator", "CSV_THOUSAND_SEPARATOR", String},
    {"Settings", "sourceDirectories", "SOURCES_DIR_LIST", PathList},
    {"Settings", "structDefinition", "STRUCT_AS_CLASS", Number},
    {"Settings", "ge_incdir", "INCLUDE_DIR_LIST", PathList},
    {"Settings", "ge_alk_file_name", "USER_ALK_FILE", Path, IfSet},
    {"Settings", "sourceExt", "SRCEXT", String},
    {"Settings", "objectExt", "OBJEXT", String},
    {"Settings", "binaryExt", "EXEEXT", String},
    {"Settings", "cppFlags", "CPPFLAGS", String},
    {"Settings", "cflags", "CFLAGS", String},
    {"Settings", "tcflags", "GENERATION_CONDITION", StringList},
    {"Settings", "debug", "DEBUG", Number},
    {"Settings", "sourceLanguage", "TDP_LANGUAGE", String},
    {"Settings", "ge_libdir", "LIBRARY_DIR_LIST", PathList},
    {"Settings", computed, "OBJECTS", PathList},
    {"Settings", computed, "XOB", PathList},
    {"Settings", computed, "ADDITIONAL_LIBRARIES", PathList},
    {"Settings", "javaBuildJarFile", "JAVA_BUILDJARFILE", Number},
    {"Settings", computed, "JAVA_JARFILENAME", Path},
    {"Settings", "javaManifest", "JAVA_MANIFEST", Path},
    {"Settings", "javaJarOtherDir", "JAVA_JAR_OTHER_DIR", PathList},
    {"Settings", computed, "FDCFILES", PathList},
    {"Settings", computed, "OTSFILES", PathList},

    {"Test program", computed, "TESTPROGRAM", Path},
    {"Test program", computed, "TESTPROGRAM_ABS", Path},
    {"Test program", "arguments", "ARGUMENTS", String},
    {"Test program", "virtualMachineArguments", "VIRTUAL_MACHINE_ARGUMENTS", String},
    {"Test program", "binaryExt", "BINARYEXT", String},
    {"Test program", "ldflags", "LDFLAGS", String},
    {"Test program", "additionnalObjects", "LIBRARIES", String},

    {"Runtime", "multiThreaded", "ATL_MULTI_THREADS", Number},
    {"Runtime", "bufferSize", "ATL_BUFFER_SIZE", Number},
    {"Runtime", "maxThreads", "ATL_THREADS_MAX", Number},
    {"Runtime", "mainProc", "ATL_MAIN_PROCEDURE", String},
    {"Runtime", "clockKind", "ATL_CLOCK_KIND", Number},
    {"Runtime", "atc_rungcatexit", "ATC_RUN_GC_AT_EXIT", Number},
    {"Runtime", computed, "ATL_OUT_FILE", Path},
    {"Runtime", computed, "TEST_NAME", Path},

    {"Java", "javaBootClasspath", "JAVA_BOOTCLASSPATH", PathList},
    {"Java", "javaClasspath", "JAVA_CLASSPATH", PathList},
    {"Java", "javaMainClass", "JAVA_MAIN_CLASS", String},
    {"Java", computed, "TDFFILE", Path},
    {"Java", computed, "SRCFILE", Path},

    {"Object testing", computed, "OTIFILE", Path},
    {"Object testing", "nuerror", "ATO_PREPRO_MAX_ERRORS", Number},
    {"Object testing", "nodline", "ATO_PREPRO_NODLINE", Number},
    {"Object testing", computed, "XRDFILE", Path},
    {"Object testing", "atobreakonerror", "ATO_STOP_ON_ERROR", Number},
    {"Object testing", "atonopassdump", "ATO_DUMP_SUCCESS", Number},
    {"Object testing", "atomaxinstances", "ATO_MAX_INSTANCES", Number},
    {"Object testing", computed, "ATO_PRINT_BUFFER_SIZE", Number},

    {"Class assertions", "atkbreakonerror", "ATK_STOP_ON_ERROR", Number},
    {"Class assertions", "atknopassdump", "ATK_DUMP_SUCCESS", Number},
    {"Class assertions", "atkreflexivestate", "ATK_REPORT_REFLEXIVE_STATES", Number},
    {"Class assertions", "atkconstmethods", "ATK_INSTR_CONST", Number},
    {"Class assertions", "atkreentrant", "ATK_MT_SUPPORT", Number},
    {"Class assertions", "atkstrictcheck", "ATK_CONST_ASSERTIONS", Number},

    {"Unit testing", "zeltaClassName", "ATU_ZELTA_CLASSNAME", String},
    {"Unit testing", computed, "ATU_INTERMEDIATE_FILE", Path},
    {"Unit testing", "simulation", "ATU_SIMULATION", Number},
    {"Unit testing", "preproerrorlevel", "CONTONWARN", Number},
    {"Unit testing", "breakontest", "ATU_BREAK_ON_TEST_FAILED", Number},
    {"Unit testing", "moreoptions", "ATU_IS_OPTION", Number},
    {"Unit testing", "preparationOptions", "ATU_OPTIONS", String},
    {"Unit testing", "filter", "ATU_FILTER", Number},
    {"Unit testing", "strategy", "ATU_STRATEGY", Number},
    {"Unit testing", "reportOutlay", "ATU_REPORT_OUTLAY", Number},
    {"Unit testing", "moreRoptions", "ATU_IS_REPORT_OPTION", Number},
    {"Unit testing", "reportoptions", "ATU_REPORT_OPTIONS", String},
    {"Unit testing", "comparaison", "ATU_COMPARE", Number},

    {"System testing", "st_interface_files", "ATS_INTERFACE_FILES", PathList},
    {"System testing", "st_allocation", "ATS_ALLOCATION", String},
    {"System testing", "st_notShared", "ATS_NOTSHARED", Number},
    {"System testing", "st_thread", "ATS_THREAD", Number},
    {"System testing", "st_thread_function", "ATS_THREAD_FUNCTION", String, IfOn, "st_thread"},
    {"System testing", "st_trace", "ATS_TRACE", String},
    {"System testing", "st_trace_circular", "ATS_TRACE_CIRCULAR", Number},
    {"System testing", "st_bufsize", "ATS_BUFSIZE", Number},
    {"System testing", "st_values", "ATS_VAL_DISP", String},
    {"System testing", "st_repform", "ATS_RA", String},
    {"System testing", "st_time", "ATS_TIME_STAMP", Number},
    {"System testing", "st_dynfol", "ATS_DYN_FOLLOW", Number},
    {"System testing", "st_item_buf", "ATS_RT_BUFFER", Number},
    {"System testing", "st_item_buf_size", "ATS_BUFFER_SIZE", Number},
    {"System testing", "st_dtrack", "ATS_DYNFLW", Number},
    {"System testing", "st_dtrack_buf_size", "ATS_TAGTBUF_SIZE", Number},
    {"System testing", "st_custom", "ATS_PROBE_CUSTOM", Number},
    {"System testing", "st_custom_type", "ATS_PROBE_CUSTOM_TYPE", Number},
    {"System testing", "st_addOptions", "ATS_ADD_OPTIONS", String},
    {"System testing", "st_replay_cmdline_args", "ATS_REPLAY_CMDLINE_ARGS", String},
    {"System testing", "st_interrecv_timeout", "ATS_INTERRECV_TIMEOUT", Number},

    {"Instrumentation", "fdc_name_opt", "ATG_FDC_NAME_OPT", Number},
    {"Instrumentation", "fdc_value", "ATG_FDC_VALUE", Path},
    {"Instrumentation", "tsf_name_opt", "ATG_TSF_NAME_OPT", Number},
    {"Instrumentation", "tsf_value", "ATG_TSF_VALUE", Path},
    {"Instrumentation", "tsf_selective_file", "ATG_SELECTIVE_FILES", PathList},
    {"Instrumentation", "tsf_selective_class", "ATG_SELECTIVE_CLASS", PathList},
    {"Instrumentation", "exclude_dir", "ATG_EXCLUDED_DIRS", PathList},
    {"Instrumentation", "dump_incoming_list", "ATG_DUMP_INCOMING_LIST", PathList},
    {"Instrumentation", "dump_returning_list", "ATG_DUMP_RETURNING_LIST", PathList},
    {"Instrumentation", "dump_calling_list", "ATG_DUMP_CALLING_LIST", PathList},
    {"Instrumentation", "no_header_instr", "ATG_HEADER_INSTR", Number},
    {"Instrumentation", "instantiate_template", "ATG_INSTANTIATE_TEMPLATE", Number},
    {"Instrumentation", "misc_options", "ATG_MISC_OPTIONS", String},

    {"Code coverage", "atc_instr_functions", "ATC_INSTR_FUNCTIONS", Number},
    {"Code coverage", "atc_instr_calls", "ATC_INSTR_CALLS", Number},
    {"Code coverage", "atc_instr_blocks", "ATC_INSTR_BLOCKS", Number},
    {"Code coverage", "atc_instr_conditions", "ATC_INSTR_CONDITIONS", Number},
    {"Code coverage", computed, "ATC_TIO_NAME", Path},
    {"Code coverage", "atc_selective_no_ternary", "ATC_SELECTIVE_TERNARY", Number},
    {"Code coverage", "atc_selective_no_inline", "ATC_SELECTIVE_INLINE", Number},
    {"Code coverage", "atc_selective_no_included", "ATC_SELECTIVE_INCLUDED", Number},
    {"Code coverage", "atc_selective_functions_list", "ATC_SELECTIVE_FUNCTIONS_LIST", StringList},
    {"Code coverage", "atc_selective_spec", "ATC_SELECTIVE_SPEC", Number},
    {"Code coverage", "atc_information", "ATC_INFORMATION", Number},
    {"Code coverage", "atc_instr_ctrl_prefixe", "ATC_INSTR_CTRL_PREFIX", String},
    {"Code coverage", "atc_instr_ctrl_suffixe", "ATC_INSTR_CTRL_SUFFIX", Number},
    {"Code coverage", "atc_no_metrics", "ATC_METRICS", Number},
    {"Code coverage", "atc_user_comment", "ATC_USER_COMMENT", String},
    {"Code coverage", "atc_dump_driver", "ATC_DUMP_DRIVER", Number},

    {"Runtime tracing", computed, "ATT_TDF_NAME", Path},
    {"Runtime tracing", "att_calling_sequenced", "ATT_CALLING_SEQUENCED", Number},
    {"Runtime tracing", "att_aggregate_traces", "ATT_AGGREGATE_TRACES", Number},
    {"Runtime tracing", "att_template_notes", "ATT_TEMPLATE_NOTES", Number},
    {"Runtime tracing", "att_split", "ATT_SPLIT", Number},
    {"Runtime tracing", "att_split_size", "ATT_SPLIT_SIZE", Number},
    {"Runtime tracing", computed, "ATT_SPLIT_PREFIX", String},
    {"Runtime tracing", "att_loop", "ATT_LOOP", Number},
    {"Runtime tracing", "att_loop_options", "ATT_LOOP_FLAGS", String},
    {"Runtime tracing", "att_record_max_stack", "ATT_RECORD_MAX_STACK", Number},
    {"Runtime tracing", "att_on_fly", "ATT_ON_THE_FLY", Number},
    {"Runtime tracing", "att_item_buffer", "ATT_ITEM_BUFFER", Number},
    {"Runtime tracing", "att_item_buffer_size", "ATT_ITEM_BUFFER_SIZE", Number},
    {"Runtime tracing", "att_partial_dump", "ATT_PARTIAL_DUMP", Number},
    {"Runtime tracing", "att_signal_action", "ATT_SIGNAL_ACTION", Number},
    {"Runtime tracing", "att_time_stamp", "ATT_TIMESTAMP", Number},
    {"Runtime tracing", "att_heap_size", "ATT_HEAP_SIZE", Number},
    {"Runtime tracing", "att_thread_info", "ATT_THREAD_INFO", Number},

    {"Memory profiling", computed, "ATP_TPF_NAME", Path},
    {"Memory profiling", "atp_instr_ctrl", "ATP_INSTR_CTRL_LIST", StringList},
    {"Memory profiling", "atp_errors_fiu", "ATP_REPORTS_FIU", Number},
    {"Memory profiling", "atp_errors_miu", "ATP_REPORTS_MIU", Number},
    {"Memory profiling", "atp_errors_sig", "ATP_REPORTS_SIG", Number},
    {"Memory profiling", "atp_fmwl", "ATP_REPORTS_FFM_FMWL", Number},
    {"Memory profiling", "atp_fmwl_queue_len", "ATP_MAX_FREEQ_LENGTH", Number, IfOn, "atp_fmwl"},
    {"Memory profiling", "atp_fmwl_queue_size", "ATP_MAX_FREEQ_SIZE", Number, IfOn, "atp_fmwl"},
    {"Memory profiling", "atp_abwl", "ATP_REPORTS_ABWL", Number},
    {"Memory profiling", "atp_abwl_zone_size", "ATP_RED_ZONE_SIZE", Number},
    {"Memory profiling", "atp_call_stack", "ATP_CALL_STACK_SIZE", Number},

    {"Java profiling", "javaObjectHashSize", "JAVA_OBJECT_HASH_SIZE", Number},
    {"Java profiling", "javaClassHashSize", "JAVA_CLASS_HASH_SIZE", Number},
    {"Java profiling", "javaTrigger", "JAVA_TRIGGER", String},
    {"Java profiling", "javaHitKey", "JAVA_HIT_KEY", Number},
    {"Java profiling", "javaNextGC", "JAVA_NEXT_GC", Number},
    {"Java profiling", "javaStudioIPAdress", "JAVA_STUDIO_IP_ADRESS", String},
    {"Java profiling", "javaStudioPortNb", "JAVA_STUDIO_PORT_NB", String},
    {"Java profiling", "javaTpfFileName", "JAVA_TPF_FILENAME", Path},
    {"Java profiling", "javaTsfFileName", "JAVA_TSF_FILENAME", Path},
    {"Java profiling", "javaPackageAnalyze", "JAVA_PACKAGE_ANALYZE", StringList},
    {"Java profiling", "javaAnalyze", "JAVA_ANALYZE", StringList},
    {"Java profiling", "javaAnalyzeAlloc", "JAVA_ANALYZE_ALLOC", StringList},
    {"Java profiling", "javaFilterOption", "JAVA_FILTER_OPTION", String},

    {"Performance profiling", computed, "ATQ_TQF_NAME", Path},
    {"Performance profiling", "atq_dump_driver", "ATQ_DUMP_DRIVER", Number},

    {"Metrics", "javaStub", "JAVA_STUB", Number},
    {"Metrics", "javaDisplay", "JAVA_DISPLAY", Number},
    {"Metrics", "metOneLevel", "MET_ONE_LEVEL", Number},
    {"Metrics", "metRestrictDir", "MET_RESTRICT_DIR", PathList},
    {"Metrics", computed, "MISRA_CONF", Path},

    {"Build and test output", "buildJobs", "BUILD_JOBS", Number},
    {"Build and test output", "testFailurePatterns", "TEST_FAILURE_PATTERNS", StringList},
    {"Build and test output", "testPassPatterns", "TEST_PASS_PATTERNS", StringList},
};

// settingTable's rows as the writer walks them: each key as a string, and
// where the run of setting lines beginning at each row ends (the next
// computed line or the section's end).
struct SettingTableIndex {
    QStringList keys;
    QList<size_t> runEnds;
};

const SettingTableIndex& settingTableIndex()
{
    static const SettingTableIndex index = [] {
        SettingTableIndex built;
        const size_t size = std::size(settingTable);
        built.runEnds.resize(qsizetype(size));
        for (size_t i = size; i-- > 0;) {
            const QAStPerlGen::SettingLine& line = settingTable[i];
            const bool runGoesOn = i + 1 < size && settingTable[i + 1].key &&
                                   qstrcmp(settingTable[i + 1].section, line.section) == 0;
            built.runEnds[qsizetype(i)] = !line.key ? i : runGoesOn ? built.runEnds[qsizetype(i + 1)] : i + 1;
        }
        for (const QAStPerlGen::SettingLine& line : settingTable)
            built.keys.append(QLatin1String(line.key));
        return built;
    }();
    return index;
}

// Reads the settings of one configuration and writes the lines of
// settingTable in order, values expanded in the node's context: each run
// of setting lines with lines(), each computed line with the writer of its
// value. A line written out of the table's order is said on the Qt warning
// channel.
class SettingsWriter {
public:
    SettingsWriter(QString& out, QAStConfiguration* c, QAStNode* node)
        : m_out(out), m_own(c), m_config(c), m_node(node)
    {
        QList<const QAPropertyStore*> above;
        for (const QAPropertyStore* store = c->inheritOf(); store && store != c && !above.contains(store);
             store = store->inheritOf())
            above.append(store);
        m_inherited = &inheritedValues(above);
        const QHash<QString, QVariant>& own = c->localProperties();
        m_ownHashed = own.size() > 8;
        if (!m_ownHashed) {
            for (auto it = own.cbegin(); it != own.cend(); ++it)
                m_ownValues.append({it.key(), it.value()});
        }
    }

    // As QAStPerlGen::settingValue: the node's own value, else the one it
    // inherits, else the descriptor's.
    QVariant value(const QString& key) const
    {
        // A node's own configuration holds a few values at most: compared
        // in turn rather than hashed.
        for (const auto& [ownKey, ownValue] : m_ownValues) {
            if (ownKey == key)
                return ownValue;
        }
        if (m_ownHashed) {
            QVariant own = m_own->localProperty(key);
            if (own.isValid())
                return own;
        }
        const auto inherited = m_inherited->constFind(key);
        if (inherited != m_inherited->cend())
            return *inherited;
        const QAProperty* described = describedSetting(key);
        return described ? described->initValue() : QVariant();
    }

    QString text(const QString& key) const { return value(key).toString(); }
    qlonglong number(const QString& key) const { return toNumber(value(key)); }
    bool isOn(const QString& key) const { return number(key) != 0; }
    QStringList list(const QString& key) const { return toList(value(key)); }

    // The table's setting lines of section from the current row to the
    // next computed line or the section's end.
    void lines(const char* section)
    {
        if (!expect(section, m_next < std::size(settingTable) &&
                                 qstrcmp(settingTable[m_next].section, section) == 0))
            return;
        const SettingTableIndex& index = settingTableIndex();
        for (const size_t end = index.runEnds.at(qsizetype(m_next)); m_next < end; ++m_next) {
            const QAStPerlGen::SettingLine& line = settingTable[m_next];
            const QString& key = index.keys.at(qsizetype(m_next));
            if (isWritten(line, key))
                write(line, key);
        }
    }
    // Whether every line of the table was written.
    void finish() const { expect("the end of the table", m_next == std::size(settingTable)); }

    // A path setting to build a value of: as it is, or absolute with its
    // macros expanded when a path line writes it so. Either way the writer may
    // expand it, as it holds no macro once expanded.
    QString pathText(const QString& key) const
    {
        const QString dir = rebaseDirectory(m_config, key, m_node);
        return dir.isEmpty() ? text(key) : rebased(text(key), dir, m_node);
    }

    // The computed lines, each the table's current row: values expanded
    // for the node, or plain.
    void pathValue(const char* var, const QString& v) { appendPath(m_out, computedLine(var), v, m_node); }
    void strValue(const char* var, const QString& v) { appendString(m_out, computedLine(var), v, m_node); }
    void plainPath(const char* var, const QString& v) { appendPath(m_out, computedLine(var), v); }
    void plainPaths(const char* var, const QStringList& v) { appendPathList(m_out, computedLine(var), v); }
    void numberValue(const char* var, qlonglong v) { appendNumber(m_out, computedLine(var), v); }

    // The setting, or what "<default>" stands for.
    QString textOr(const QString& key, const QString& whenDefault) const
    {
        const QString v = text(key);
        return v == defaultValue ? whenDefault : v;
    }

private:
    using Form = QAStPerlGen::Form;
    using When = QAStPerlGen::When;

    bool isWritten(const QAStPerlGen::SettingLine& line, const QString& key) const
    {
        switch (line.when) {
        case When::IfSet:
            return !text(key).isEmpty();
        case When::IfOn:
            return isOn(QLatin1String(line.switchKey));
        case When::Always:
            break;
        }
        return true;
    }

    // A relative path inherited from another project is written absolute.
    void write(const QAStPerlGen::SettingLine& line, const QString& key)
    {
        const QLatin1String var(line.variable);
        switch (line.form) {
        case Form::Number:
            appendNumber(m_out, var, number(key));
            return;
        case Form::String:
            appendString(m_out, var, text(key), m_node);
            return;
        case Form::StringList:
            appendStringList(m_out, var, list(key), m_node);
            return;
        case Form::Path:
        case Form::PathList:
            break;
        }
        const QString dir = rebaseDirectory(m_config, key, m_node);
        if (line.form == Form::Path) {
            if (dir.isEmpty())
                appendPath(m_out, var, text(key), m_node);
            else
                appendPath(m_out, var, rebased(text(key), dir, m_node));
            return;
        }
        if (dir.isEmpty()) {
            appendPathList(m_out, var, list(key), m_node);
            return;
        }
        QStringList items = list(key);
        for (QString& item : items)
            item = rebased(item, dir, m_node);
        appendPathList(m_out, var, items);
    }

    // var, whose computed row the table's current row must be; steps over it.
    QLatin1String computedLine(const char* var)
    {
        if (expect(var, m_next < std::size(settingTable) && !settingTable[m_next].key &&
                            qstrcmp(settingTable[m_next].variable, var) == 0))
            ++m_next;
        return QLatin1String(var);
    }

    bool expect(const char* what, bool inOrder) const
    {
        if (!inOrder) {
            const char* next = m_next < std::size(settingTable) ? settingTable[m_next].variable : "nothing";
            qCWarning(lcProject, "environment script: %s written where the settings table has %s", what, next);
        }
        return inOrder;
    }

    QString& m_out;
    size_t m_next = 0;
    const QAPropertyStore* m_own;
    const QAStConfiguration* m_config;
    QList<QPair<QString, QVariant>> m_ownValues;
    bool m_ownHashed = false;
    QAStNode* m_node;
    const QHash<QString, QVariant>* m_inherited;
};

// item itself when it is of the class, else its nearest ancestor of it.
const QAStData* selfOrParentOfClass(const QAStData* item, const char* className)
{
    return item && item->inherits(className) ? item : item->parentOfClass(className);
}

void collectOutputFiles(const QAStData* item, const QString& type, bool recursive,
                        QStringList& files, QSet<const QAStData*>& seen)
{
    if (seen.contains(item))
        return;
    seen.insert(item);
    if (const auto* node = qobject_cast<const QAStNode*>(item)) {
        for (const QString& path : node->outputFiles(type)) {
            if (!files.contains(path))
                files.append(path);
        }
    }
    if (const auto* link = qobject_cast<const QAStNodeLink*>(item)) {
        if (const QAStNode* linked = link->linkedNode())
            collectOutputFiles(linked, type, false, files, seen);
    }
    if (!recursive)
        return;
    for (const QAStData* child = item->child(); child; child = child->next())
        collectOutputFiles(child, type, true, files, seen);
}

const char* const noNode = " cannot generate environment no node";
const char* const noConfiguration = " cannot generate environment no configuration";
const char* const packageNotFound = QT_TRANSLATE_NOOP(
    QATR_PROJECT,
    "Error: Unable to generate the Target Deployment Port path because the target package "
    "named [%1] cannot be found in the installation");

const char* const unencodable = QT_TRANSLATE_NOOP(
    QATR_PROJECT,
    "%1: %3 cannot encode every character of %2 in the environment script; those it lacks "
    "are written \"?\"\n");

// The encoding the script is written in: the preferences', ISO-8859-1 for
// a name Qt does not know.
QStringConverter::Encoding scriptEncoding()
{
    const QString name = QAStData::preferences()->encodingName();
    return QStringConverter::encodingForName(name.toLatin1().constData())
        .value_or(QStringConverter::Latin1);
}

bool encodes(const QString& text, QStringConverter::Encoding encoding)
{
    QStringEncoder encoder(encoding);
    // The encoder counts what it cannot write only as it converts.
    const QByteArray converted = encoder.encode(text);
    return !encoder.hasError();
}

// The variables whose lines hold a character the encoding cannot write,
// each once, in script order. A line that begins no statement (an item of
// a list written one a line) belongs to the statement begun last.
QStringList unencodableVariables(const QString& script, QStringConverter::Encoding encoding)
{
    QStringList variables;
    if (encodes(script, encoding))
        return variables;
    static const QRegularExpression statement(QStringLiteral(R"(^([$@]\w+(?:\{.*?\})?)\s*=)"));
    QString current;
    for (const QString& line : script.split(u'\n')) {
        const QRegularExpressionMatch begun = statement.match(line);
        if (begun.hasMatch())
            current = begun.captured(1);
        if (!encodes(line, encoding) && !variables.contains(current))
            variables.append(current);
    }
    return variables;
}

// --- the common part, step by step

void writeInstallation(QString& out)
{
    const QAInstall::Platform platform = QAInstall::nativePlatform();
    const QChar separator = QAInstall::separator(platform);
    appendPath(out, QLatin1String("ZELTAHOME"),
                           QAFileUtil::shortPath(QAStData::installDir(), platform));
    appendPath(out, QLatin1String("BINDIR"),
                           QAFileUtil::shortPath(QAStData::binaryDir(), platform));
    appendPath(out, QLatin1String("SCRIPTDIR"),
                           QAFileUtil::shortPath(QAStData::scriptsDir() + separator, platform));
    appendPath(out, QLatin1String("WORKING_DIR"),
                           QDir::toNativeSeparators(QDir::currentPath()));
    const StudioInterface* host = QAStData::studioIFace();
    appendString(out, QLatin1String("CMSTOOL"),
                             host ? host->configurationManagementTool() : QString());
}

void writeProject(QString& out, const QAStData* item)
{
    const QAStProject* project = item->project();
    const QAStProject* workspace = item->rootProject();
    const QString projectDir = project ? project->directory() : QString();
    appendString(out, QLatin1String("PROJECT_NAME"), project ? project->name() : QString());
    appendPath(out, QLatin1String("PROJECT_PATH"), projectDir);
    appendString(out, QLatin1String("WORKSPACE_NAME"), workspace ? workspace->name() : QString());
    appendPath(out, QLatin1String("WORKSPACE_PATH"), workspace ? workspace->directory() : QString());
    appendString(out, QLatin1String("USERNAME"), QAStData::userName());
    appendPath(out, QLatin1String("ZELTA_TPM_ROOT"),
                           QAStPerlGen::joinPath(projectDir, QStringLiteral("tpm")));
    appendNumber(out, QLatin1String("STUDIO_PORT"), QAStData::port());
}

void writeSources(QString& out, const QAStNode* node)
{
    if (qobject_cast<const QAStNodeTest*>(node) || qobject_cast<const QAStNodeSource*>(node))
        return;
    QStringList keys;
    for (const QAStData* child = node->child(); child; child = child->next()) {
        if (const auto* source = qobject_cast<const QAStNodeSource*>(child))
            keys.append(source->fileKey());
    }
    appendPathList(out, QLatin1String("SOURCES"), keys);
}

void writeTdfChannel(QString& out, const QAStNode* node)
{
    const QAStData* system = nullptr;
    if (qobject_cast<const QAStNodeSystemTesting*>(node))
        system = node;
    else if (qobject_cast<const QAStNodeTestScript*>(node))
        system = node->parentOfClass("QAStNodeSystemTesting");
    if (const auto* st = qobject_cast<const QAStNodeSystemTesting*>(system))
        appendNumber(out, QLatin1String("TDF_CHANNEL"), st->connectedTDFChannel());
}

void writeExecutionFlags(QString& out, qlonglong flags)
{
    out += (flags & 0x100) ? QLatin1String("$EXECMODE='DEBUG';\n") : QLatin1String("$EXECMODE='NORMAL';\n");
    static const struct {
        int bit;
        char letter;
    } stages[] = {{0x01, 'c'}, {0x02, 'p'}, {0x04, 't'}, {0x08, 'l'}, {0x10, 'e'}, {0x20, 'r'}};
    out += QLatin1String("$STAGE='");
    for (const auto& stage : stages) {
        if (flags & stage.bit)
            out += QLatin1Char(stage.letter);
    }
    out += QLatin1String("';\n");
}

// Step 10: the package and its two directory lines. Returns the package.
const QAStTargetPackage* writeTargetPackage(QString& out, QAStConfiguration* c,
                                            const SettingsWriter& settings)
{
    QAStTargetPackageList* installed = QAStTargetPackageList::installTargetPackages();
    QString wanted;
    const QAStTargetPackage* package = nullptr;
    if (!settings.text(QStringLiteral("targetPath")).isEmpty()) {
        wanted = c->targetPackagePath();
        package = installed ? installed->packageAt(wanted) : nullptr;
    } else {
        wanted = c->name();
        package = installed ? installed->find(wanted) : nullptr;
    }
    const QAInstall::Platform platform = QAInstall::nativePlatform();
    const QString longPath = package ? QDir::toNativeSeparators(package->directory())
                                     : QAStPerlGen::targetPackageNotFoundText().arg(wanted);
    appendPath(out, QLatin1String("TARGETDIR"),
                           package ? QAFileUtil::shortPath(longPath, platform) : longPath);
    appendPath(out, QLatin1String("LP_TARGETDIR"), longPath);
    return package;
}

// The "LIB" output files of the node's child nodes (a link gives its
// linked node's), each kept relative to its own project's directory and
// given relative to the node's project: a library of a sub-project is
// found from the project above it.
QStringList childLibraries(const QAStNode* node)
{
    const QAStProject* project = node->project();
    const QString directory = project ? project->directory() : QString();
    QStringList libraries;
    for (const QAStData* child = node->child(); child; child = child->next()) {
        const QAStNode* owner = qobject_cast<const QAStNode*>(child);
        if (const auto* link = qobject_cast<const QAStNodeLink*>(child))
            owner = link->linkedNode();
        if (!owner)
            continue;
        const QAStProject* ownerProject = owner->project();
        for (const QString& library : owner->libraryOutputs()) {
            const QString absolute = QAStData::determineAbsolutePathFile(
                ownerProject ? ownerProject->directory() : directory, library);
            const QString path = directory.isEmpty()
                                     ? absolute
                                     : QAStData::determineRelativePathFile(directory, absolute);
            if (!libraries.contains(path))
                libraries.append(path);
        }
    }
    return libraries;
}

// A result file of the run: <outdir>/<test name><extension>.
QString resultFile(const SettingsWriter& settings, const QAStNode* node, const char* extension)
{
    return QAStPerlGen::joinPath(settings.pathText(QStringLiteral("outdir")),
                                 QAStPerlGen::testName(node) + QLatin1String(extension));
}

void writeSettings(QAStNode* node, SettingsWriter& s)
{
    const char* const section = "Settings";
    s.lines(section);
    s.pathValue("LOGFILENAME", resultFile(s, node, ".log"));
    s.lines(section);
    s.plainPaths("OBJECTS", node->outputFiles(QStringLiteral("OBJ")));
    s.plainPaths("XOB", node->outputFiles(QStringLiteral("XOB")));
    s.plainPaths("ADDITIONAL_LIBRARIES", childLibraries(node));
    s.lines(section);
    const QAStData* test = selfOrParentOfClass(node, "QAStNodeTest");
    s.pathValue("JAVA_JARFILENAME", test ? QAStPerlGen::joinPath(s.pathText(QStringLiteral("outdir")),
                                                                 test->name() + QLatin1String(".jar"))
                                         : QString());
    s.lines(section);
    s.plainPaths("FDCFILES", node->outputFiles(QStringLiteral("FDC")));
    s.plainPaths("OTSFILES", node->outputFiles(QStringLiteral("OTS")));
}

// "NAME=value" items of the list setting (or the entries of a map), in
// order; an item without "=" sets the variable to nothing.
void writeEnvironmentVariables(QString& out, QAStNode* node, const SettingsWriter& s)
{
    const QVariant value = s.value(QStringLiteral("envVariables"));
    QList<QPair<QString, QString>> entries;
    if (value.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            entries.append({it.key(), it.value().toString()});
    } else {
        for (const QString& item : toList(value)) {
            const qsizetype equals = item.indexOf(u'=');
            const QString name = (equals < 0 ? item : item.left(equals)).trimmed();
            if (!name.isEmpty())
                entries.append({name, equals < 0 ? QString() : item.mid(equals + 1)});
        }
    }
    for (const auto& [name, text] : entries) {
        out += QLatin1String("$ENV{'");
        out += QAStPerlGen::safeStr(name);
        out += QLatin1String("'} = '");
        out += QAStPerlGen::safeStr(text, node);
        out += QLatin1String("';\n");
    }
}

void writeTestProgram(QAStNode* node, SettingsWriter& s)
{
    const QAStProject* project = node->project();
    const QString projectDir = project ? project->directory() : QString();
    const QString defaultProgram =
        QAStPerlGen::joinPath(s.pathText(QStringLiteral("intdir")),
                              QAStPerlGen::testName(node) + s.text(QStringLiteral("binaryExt")));
    const QString program = QAStAnalyseMacro::analyse(
        s.textOr(QStringLiteral("testProgram"), defaultProgram), node, QStringLiteral("Prompt Dialog"));
    const QString absolute = program.isEmpty()
                                 ? QString()
                                 : QAFileUtil::cleanDirPath(
                                       QAStData::determineAbsolutePathFile(node->directory(), program));
    s.plainPath("TESTPROGRAM", program.isEmpty() ? QString()
                                                 : QAStData::determineRelativePathFile(projectDir, absolute));
    s.plainPath("TESTPROGRAM_ABS", QDir::toNativeSeparators(absolute));
    s.lines("Test program");
}

void writeRuntime(QAStNode* node, SettingsWriter& s)
{
    s.lines("Runtime");
    const QString name = QAStPerlGen::testName(node);
    s.pathValue("ATL_OUT_FILE", QAStPerlGen::joinPath(s.pathText(QStringLiteral("intdir")),
                                                      name + QLatin1String(".spt")));
    s.plainPath("TEST_NAME", name);
}

void writeJava(QAStNode* node, SettingsWriter& s)
{
    s.lines("Java");
    s.pathValue("TDFFILE", resultFile(s, node, ".tdf"));
    s.pathValue("SRCFILE", s.textOr(QStringLiteral("sourceFile"),
                                    node->name() + s.text(QStringLiteral("sourceExt"))));
}

void writeObjectTesting(QAStNode* node, SettingsWriter& s)
{
    const char* const section = "Object testing";
    s.pathValue("OTIFILE", s.textOr(QStringLiteral("otiFile"), node->name() + QLatin1String(".oti")));
    s.lines(section);
    s.pathValue("XRDFILE",
                s.textOr(QStringLiteral("xrdFile"),
                         QAStPerlGen::joinPath(s.pathText(QStringLiteral("outdir")),
                                               node->name() + QLatin1String(".xrd"))));
    s.lines(section);
    s.numberValue("ATO_PRINT_BUFFER_SIZE", s.isOn(QStringLiteral("printbuffer"))
                                               ? s.number(QStringLiteral("printbuffersize"))
                                               : 0);
}

void writeUnitTesting(QAStNode* node, SettingsWriter& s)
{
    const char* const section = "Unit testing";
    s.lines(section);
    const QAStData* unit = selfOrParentOfClass(node, "QAStNodeUnitTesting");
    const QString owner = unit ? unit->name() : node->name();
    s.pathValue("ATU_INTERMEDIATE_FILE",
                s.textOr(QStringLiteral("intermediateFile"),
                         QAStPerlGen::joinPath(s.pathText(QStringLiteral("intdir")),
                                               owner + QLatin1String(".uti"))));
    s.lines(section);
}

void writeCodeCoverage(QAStNode* node, SettingsWriter& s)
{
    const char* const section = "Code coverage";
    s.lines(section);
    s.pathValue("ATC_TIO_NAME", resultFile(s, node, ".tio"));
    s.lines(section);
}

void writeRuntimeTracing(QAStNode* node, SettingsWriter& s)
{
    const char* const section = "Runtime tracing";
    s.pathValue("ATT_TDF_NAME", resultFile(s, node, ".tdf"));
    s.lines(section);
    s.strValue("ATT_SPLIT_PREFIX", s.textOr(QStringLiteral("att_split_prefixe"), QStringLiteral("att")));
    s.lines(section);
}

void writeProfiling(QAStNode* node, SettingsWriter& s)
{
    s.pathValue("ATP_TPF_NAME", resultFile(s, node, ".tpf"));
    s.lines("Memory profiling");
    s.lines("Java profiling");
    s.pathValue("ATQ_TQF_NAME", resultFile(s, node, ".tqf"));
    s.lines("Performance profiling");
}

// Step 27. Each runtime analysis needs its switch and a target that
// supports it (a package that cannot be found supports everything: its
// own error line tells the driver); the language-bound ones need their
// languages. docs/formats/environment-script.md gives the table.
void writeModes(QString& out, QAStNode* node, QAStConfiguration* c, const QAStTargetPackage* package,
                const SettingsWriter& s)
{
    const auto line = [&out](const char* var, qlonglong value) {
        appendNumber(out, QLatin1String(var), value);
    };
    const auto inside = [node](const char* className) {
        return qlonglong(selfOrParentOfClass(node, className) != nullptr);
    };
    line("ATOMODE", inside("QAStNodeObjectTesting"));
    line("ATUMODE", inside("QAStNodeUnitTesting"));
    line("ATSMODE", inside("QAStNodeSystemTesting"));
    line("ATJMODE", inside("QAStNodeJavaTesting"));

    const int language = c->languageType();
    const auto supports = [package](QAStTargetPackage::Feature feature) {
        return !package || package->featureMode(feature) != 0;
    };
    const auto mode = [&](const char* key, bool allowed) {
        return qlonglong(allowed && s.isOn(QLatin1String(key)));
    };
    const int native = QAStTargetPackage::LanguageC | QAStTargetPackage::LanguageCpp |
                       QAStTargetPackage::LanguageAda;
    line("ATPMODE", mode("memoryProfiling", supports(QAStTargetPackage::MemoryProfiling)));
    line("ATQMODE", mode("performanceProfiling", supports(QAStTargetPackage::PerformanceProfiling)));
    line("ATCMODE", mode("codeCoverage", supports(QAStTargetPackage::CodeCoverage)));
    line("ATTMODE", mode("runtimeTracing", supports(QAStTargetPackage::RuntimeTracing)));
    line("ATKMODE", mode("contractCheck", language == QAStTargetPackage::LanguageCpp));
    line("ATMMODE", mode("staticMetrics", (language & native) != 0));
    line("MISRA_MODE", mode("misraCheck", language == QAStTargetPackage::LanguageC));
    line("ATS_PROBE", mode("systemTestingProbes", (language & native) != 0));
}

void writeMetrics(QAStNode* node, SettingsWriter& s)
{
    s.lines("Metrics");
    QString conf = s.text(QStringLiteral("misraconf"));
    if (conf == defaultValue) {
        conf = QAInstall::installPath(QAStData::installDir(), QStringLiteral("Common/lib/confrule.xml"));
    } else if (!conf.isEmpty()) {
        conf = QAStAnalyseMacro::analyse(conf, node, QStringLiteral("Prompt Dialog"));
        const QAStProject* project = node->project();
        if (project && QDir::isRelativePath(conf))
            conf = QAStData::determineAbsolutePathFile(project->directory(), conf);
    }
    s.plainPath("MISRA_CONF", conf);
}

void writePreferences(QString& out)
{
    const QAStProjectPref* preferences = QAStData::preferences();
    out += QLatin1String("$MIME_NAME = '") + QAStPerlGen::safeStr(preferences->encodingName()) +
           QLatin1String("';\n");
    out += preferences->verbose() ? QLatin1String("$ENV{'ZELTASTUDIO_VERBOSE'} = '1';\n")
                                  : QLatin1String("$ENV{'ZELTASTUDIO_VERBOSE'} = '0';\n");
}

bool generateCommonPart(QString& out, QAStData* item)
{
    appendHeader(out, QAInstall::nativePlatform());
    writeInstallation(out);
    if (!item) {
        qCWarning(lcProject, "%s", noNode);
        return false;
    }
    writeProject(out, item);
    // Without a configuration the script ends after the project lines, so
    // the check comes before the sources and the channel that precede the
    // configuration's name.
    auto* node = qobject_cast<QAStNode*>(item);
    QAStConfiguration* c = node ? node->currentConfiguration() : nullptr;
    if (!c) {
        qCWarning(lcProject, "%s", noConfiguration);
        return false;
    }
    writeSources(out, node);
    writeTdfChannel(out, node);
    SettingsWriter s(out, c, node);
    appendString(out, QLatin1String("CONFIGURATION"), c->name());
    writeExecutionFlags(out, s.number(QStringLiteral("executionFlag")));
    appendString(out, QLatin1String("NAME"), node->name());
    const auto* file = qobject_cast<const QAStNodeFileRef*>(node);
    appendPath(out, QLatin1String("FILENAME"), file ? file->absoluteFilePath() : QString());
    const QAStTargetPackage* package = writeTargetPackage(out, c, s);
    writeSettings(node, s);
    writeEnvironmentVariables(out, node, s);
    writeTestProgram(node, s);
    writeRuntime(node, s);
    writeJava(node, s);
    writeObjectTesting(node, s);
    s.lines("Class assertions");
    writeUnitTesting(node, s);
    s.lines("System testing");
    s.lines("Instrumentation");
    writeCodeCoverage(node, s);
    writeRuntimeTracing(node, s);
    writeProfiling(node, s);
    writeModes(out, node, c, package, s);
    writeMetrics(node, s);
    writePreferences(out);
    s.lines("Build and test output");
    s.finish();
    return true;
}

} // namespace

QString QAStPerlGen::safePath(const QString& value, QAStNode* node)
{
    if (value.isEmpty())
        return value;
    return QAPerlValues::quoted(expanded(value, node));
}

QString QAStPerlGen::safeStr(const QString& value, QAStNode* node)
{
    return safePath(value, node);
}

namespace {

// One line built by append and handed to the stream at once.
template <typename Append, typename... Args>
void streamLine(QTextStream& out, Append append, const Args&... args)
{
    QString line;
    append(line, args...);
    out << line;
}

} // namespace

void QAStPerlGen::writeHeader(QTextStream& out, QAInstall::Platform platform)
{
    streamLine(out, appendHeader, platform);
}

void QAStPerlGen::writePath(QTextStream& out, const QString& var, const QString& value,
                            QAStNode* node)
{
    streamLine(out, appendPath<QString>, var, value, node);
}

void QAStPerlGen::writeString(QTextStream& out, const QString& var, const QString& value,
                              QAStNode* node)
{
    streamLine(out, appendString<QString>, var, value, node);
}

void QAStPerlGen::writeNumber(QTextStream& out, const QString& var, qlonglong value)
{
    streamLine(out, appendNumber<QString>, var, value);
}

void QAStPerlGen::writePathList(QTextStream& out, const QString& var, const QStringList& items,
                                QAStNode* node)
{
    streamLine(out, appendPathList<QString>, var, items, node);
}

void QAStPerlGen::writeStringList(QTextStream& out, const QString& var, const QStringList& items,
                                  QAStNode* node)
{
    streamLine(out, appendStringList<QString>, var, items, node);
}

QStringList QAStPerlGen::outputFilesOf(const QAStData* item, const QString& type, bool recursive)
{
    QStringList files;
    QSet<const QAStData*> seen;
    if (item)
        collectOutputFiles(item, type, recursive, files, seen);
    return files;
}

QStringList QAStPerlGen::relativeToProject(const QAStData* item, const QStringList& files)
{
    const QAStProject* project = item ? item->project() : nullptr;
    return project ? QAStData::determineRelativePathFiles(project->directory(), files) : files;
}

void QAStPerlGen::writeInstrumentationFiles(QTextStream& out, QAStNode* node)
{
    writePathList(out, QStringLiteral("FDCFILES"), outputFilesOf(node, QStringLiteral("FDC"), true));
    writePathList(out, QStringLiteral("TSFFILES"), outputFilesOf(node, QStringLiteral("TSF"), true));
}

void QAStPerlGen::writeApplicationFiles(QTextStream& out, QAStNode* node)
{
    writeInstrumentationFiles(out, node);
    QStringList oti;
    const QString type = QStringLiteral("OTI");
    for (const QAStData* item : node->childrenOfClass("QAStNode", true)) {
        if (!qobject_cast<const QAStNodeTestScript*>(item) && !qobject_cast<const QAStNodeLink*>(item))
            continue;
        for (const QString& file : outputFilesOf(item, type, false)) {
            if (!oti.contains(file))
                oti.append(file);
        }
    }
    writePathList(out, QStringLiteral("OTIFILES"), relativeToProject(node, oti));
}

QString QAStPerlGen::testName(const QAStData* item)
{
    const QAStData* test = item ? selfOrParentOfClass(item, "QAStNodeTest") : nullptr;
    return test ? test->name() : QStringLiteral("atlout");
}

QString QAStPerlGen::joinPath(const QString& dir, const QString& file)
{
    if (dir.isEmpty())
        return file;
    const QChar separator = QAInstall::separator();
    if (dir.endsWith(separator) || dir.endsWith(u'/'))
        return dir + file;
    return dir + separator + file;
}

QString QAStPerlGen::settingPath(const QAStConfiguration* c, const QString& key)
{
    QAStNode* node = c ? c->node() : nullptr;
    const QString value = settingValue(c, key).toString();
    const QString dir = rebaseDirectory(c, key, node);
    return dir.isEmpty() ? expanded(value, node) : rebased(value, dir, node);
}

QVariant QAStPerlGen::settingValue(const QAStConfiguration* c, const QString& key)
{
    const QVariant value = c ? c->property(key) : QVariant();
    if (value.isValid())
        return value;
    const QAProperty* described = describedSetting(key);
    return described ? described->initValue() : QVariant();
}

QString QAStPerlGen::targetPackageNotFoundText()
{
    return QATr::project(packageNotFound);
}

QList<QAStPerlGen::SettingLine> QAStPerlGen::settingLines()
{
    return QList<SettingLine>(std::begin(settingTable), std::end(settingTable));
}

void QAStPerlGen::createEnvironmentFile(QTextStream& out, QAStData* item)
{
    QString script;
    QTextStream text(&script);
    item->generateEnv(text);
    text.flush();
    const QStringConverter::Encoding encoding = scriptEncoding();
    const QStringList lost = unencodableVariables(script, encoding);
    if (!lost.isEmpty()) {
        const QString encodingName = QLatin1String(QStringConverter::nameForEncoding(encoding));
        QAStData::displayMessage(QAStData::MessageConsole,
                                 QATr::project(unencodable).arg(item->name(), lost.join(QLatin1String(", ")),
                                                     encodingName));
    }
    out.setEncoding(encoding);
    out << script;
}

bool QAStPerlGen::generateEnv(QTextStream& stream, QAStData* item)
{
    QString out;
    out.reserve(8192);
    const bool complete = generateCommonPart(out, item);
    stream << out;
    return complete;
}

void QAStPerlGen::generatePerlVariables(QTextStream& out, QList<QAProperty*>* props,
                                        QAStNode* node)
{
    if (!props)
        return;
    for (const QAProperty* property : *props) {
        if (!property || property->perlVarName().isEmpty())
            continue;
        const QString& var = property->perlVarName();
        const QVariant value = property->value();
        switch (property->type()) {
        case QMetaType::Bool:
            writeNumber(out, var, value.toBool() ? 1 : 0);
            break;
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            writeNumber(out, var, toNumber(value));
            break;
        case QMetaType::QStringList:
            writePathList(out, var, value.toStringList(), node);
            break;
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            out << '@' << var << "=(";
            bool first = true;
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                out << (first ? "" : ", ") << "{'" << safeStr(it.key()) << "', '"
                    << safeStr(it.value().toString(), node) << "'}";
                first = false;
            }
            out << ");\n";
            break;
        }
        default:
            writePath(out, var, value.toString(), node);
            break;
        }
    }
}

void QAStPerlGen::generatePluginVariables(QTextStream& out, QAStNode* node)
{
    if (!node)
        return;
    QAStNodePluginCenter* center = QAStNodePluginCenter::nodePluginCenter();
    for (const QString& feature : center->featureList(node->kindId())) {
        void* found = nullptr;
        if (!center->queryComponentInterface(feature, QAINodeSettingsPlugin::interfaceId(), &found))
            continue;
        QList<QAProperty*> properties =
            static_cast<QAINodeSettingsPlugin*>(found)->nodeProperties(feature, node);
        generatePerlVariables(out, &properties, node);
    }
}
