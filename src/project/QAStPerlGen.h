#pragma once

#include "QAInstall.h"
#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAProperty;
class QAStConfiguration;
class QAStData;
class QAStNode;
class QTextStream;

// Writer of the Perl environment script that the driver scripts load before
// they build, execute or clean a node: one Perl statement a line, assigning
// every variable the drivers read. docs/formats/environment-script.md lists
// the lines in order.
//
// Values go between single quotes ('...'), where Perl reads \\ as one
// backslash and \' as a quote. Three line forms exist: $VAR='text'; (S),
// $VAR=number; (N) and @VAR=('a', 'b'); (L).
class SDK110_EXPORT QAStPerlGen {
public:
    // The value as it stands between the single quotes of a Perl string
    // that reads it back exactly: every backslash doubled, every quote
    // escaped, and each run of control characters a double-quoted escape
    // joined to the quoted parts around it ('a'."\r\n".'b'), since perl's
    // source reader drops a carriage return before a line feed even inside
    // a string. With a node the value is first expanded by the macro
    // interpreter in the node's context. Empty gives empty.
    static QString safePath(const QString& value, QAStNode* node = nullptr);
    // Free text (options, conditions, environment values): escaped as a
    // path, so that it too reads back exactly.
    static QString safeStr(const QString& value, QAStNode* node = nullptr);

    // The whole script of item as the driver loads it: out's encoding set
    // to the preferences' (ISO-8859-1 for a name Qt does not know), then
    // item's generateEnv. When a value holds a character that encoding
    // cannot write, it is written "?" and the message console says so
    // once, naming item and the variables.
    static void createEnvironmentFile(QTextStream& out, QAStData* item);

    // The common part of item's script, the header to the verbosity line.
    // Without an item, or for an item without a configuration, a warning
    // goes to the Qt warning channel and the script ends early (returns
    // false). The plug-ins' lines are QAStData::generateEnv's.
    static bool generateEnv(QTextStream& out, QAStData* item);
    // One line per property that carries a Perl variable name: a Boolean
    // and an integer as N (0/1 for the Boolean), a string list as L and a
    // string as S (items and value as paths, expanded for node), a map as
    // @VAR=({'key', 'value'}, ...); (in key order). Null props writes
    // nothing.
    static void generatePerlVariables(QTextStream& out, QList<QAProperty*>* props, QAStNode* node);
    // The lines of the plug-in features that give node's kind settings
    // (QAStNodePluginCenter::featureList), feature by feature.
    static void generatePluginVariables(QTextStream& out, QAStNode* node);

    // The two header lines of a platform: $OSNAME ("linux" or "win32") and
    // $PATH_SEPARATOR ('/' or '\\', the Perl text of one backslash).
    static void writeHeader(QTextStream& out, QAInstall::Platform platform);

    // --- line writers for the kinds' own lines; node (may be null) expands
    // the value's macros.

    // $var='value'; with the value as a path (safePath).
    static void writePath(QTextStream& out, const QString& var, const QString& value,
                          QAStNode* node = nullptr);
    // $var='value'; with the value as free text (safeStr).
    static void writeString(QTextStream& out, const QString& var, const QString& value,
                            QAStNode* node = nullptr);
    // $var=number;
    static void writeNumber(QTextStream& out, const QString& var, qlonglong value);
    // @var=('a', 'b'); with the items as paths; @var=(); when empty.
    static void writePathList(QTextStream& out, const QString& var, const QStringList& items,
                              QAStNode* node = nullptr);
    // @var=('a', 'b'); with the items as free text (safeStr).
    static void writeStringList(QTextStream& out, const QString& var, const QStringList& items,
                                QAStNode* node = nullptr);

    // --- what the kinds' lines are made of

    // The output files of a type (QAStNode::outputFiles) of item and, with
    // recursive, of every node below it, depth first; a link contributes
    // its linked node's files. Each path once.
    static QStringList outputFilesOf(const QAStData* item, const QString& type, bool recursive);
    // files relative to the directory of item's project (as they are
    // without a project).
    static QStringList relativeToProject(const QAStData* item, const QStringList& files);
    // @FDCFILES and @TSFFILES: the node's files of those types and those of
    // every node below it.
    static void writeInstrumentationFiles(QTextStream& out, QAStNode* node);
    // The instrumentation files of an application-like node: the two lists
    // above, and @OTIFILES of its test scripts and links, relative to the
    // project.
    static void writeApplicationFiles(QTextStream& out, QAStNode* node);
    // The name a run's results are filed under: the name of the test node
    // that is or encloses item, "atlout" outside every test node.
    static QString testName(const QAStData* item);
    // dir and file joined by the platform's separator; file alone when dir
    // is empty.
    static QString joinPath(const QString& dir, const QString& file);
    // The effective value of a setting of configuration c: its own or
    // inherited value, else the settings descriptor's initial value;
    // invalid when neither exists.
    static QVariant settingValue(const QAStConfiguration* c, const QString& key);
    // A path setting of c as the drivers of c's node see it: its macros
    // expanded in the node's context, and, when it is relative and set by
    // the configuration of another project (a sub-project inherits its
    // including project's), made absolute against that project's
    // directory, so that a relative path means the directory of the file
    // that sets it.
    static QString settingPath(const QAStConfiguration* c, const QString& key);

    // The value written as both target directories when the target package
    // cannot be found; %1 the package name.
    static QString targetPackageNotFoundText();

    // --- the settings part of the common part (steps 11 to 32 of
    // docs/formats/environment-script.md, whose tables list these rows)

    // How a line writes its value: N, S (free text or a path) or L (of
    // paths or of free text). Paths are rebased as settingPath says.
    enum class Form { Number, String, Path, PathList, StringList };
    // When a line is written: always, only when its setting is not empty,
    // or only when the switch named beside it is on.
    enum class When { Always, IfSet, IfOn };
    // A line of the settings part. A row without a key is a line computed
    // from other values, written by the code between the table's runs; it
    // stands in the table so that the table gives every line in order.
    struct SettingLine {
        const char* section;
        const char* key;      // the settings descriptor's key; null when computed
        const char* variable; // without "$" or "@"
        Form form;
        When when = When::Always;
        const char* switchKey = nullptr; // for IfOn
    };
    // The rows in the order they are written.
    static QList<SettingLine> settingLines();
};
