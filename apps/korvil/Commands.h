#pragma once

#include <QStringList>

#include <memory>

class CommandLineStudio;
class QAStFile;
class QAStNode;
class QAStNodeTest;
class QAStProject;
class QCommandLineOption;
class QCommandLineParser;

// The commands of the command-line tool. Exit status: 0 success, 1 a failed
// job (a project that does not load, a walk that fails, a file that cannot
// be read or written), 2 bad usage.
namespace Commands {

enum Status { Success = 0, Failure = 1, Usage = 2 };

// Runs the command named by arguments (the program's arguments, program
// name first) and returns the exit status.
int run(const QStringList& arguments, CommandLineStudio& studio);

// --- shared by the commands

// Text for standard output, as it is; a message on standard error, laid
// out by CommandLineStudio::messageText ("korvil: <text>", further lines
// indented).
void out(const QString& text);
void err(const QString& text);

// Loads a project file; null, with a message naming the file on standard
// error, when it is missing or does not load (with the marker lines looked
// for when it has none). The project's questions are answered by the
// tool's host and printed with the answer.
std::unique_ptr<QAStProject> load(const QString& path);

// The node named by name: a path of names from the project ("Build/calc"),
// or a name found anywhere (the first, depth first). The project itself
// when name is empty; null when none is so named.
QAStNode* findNode(QAStProject& project, const QString& name);

// Makes name the current configuration of every node; false, told on
// standard error, when the project has no configuration of that name.
bool useConfiguration(QAStProject& project, const QString& name);

// Whether path names a project file (by its first lines, else by the
// extension ".rtp" or ".rtt").
bool isProjectFile(const QString& path);

// The number of lines of a file (a last line without "\n" counts); -1 when
// it cannot be read.
qint64 lineCount(const QString& path);
// "1 line", "<n> lines", or "(none)" for a count of -1, right-aligned in
// width.
QString linesText(qint64 count, int width = 12);

// The files a tags or metrics command works on, from its arguments
// "[PROJECT] [FILE...]": the files given (added to the project's file tree
// when it does not hold them), else every file of the project and of its
// sub-projects that accept(file) keeps. Without a project the files live
// in a scratch project without a file. A file that is missing or not
// accepted is told on standard error, naming it, and left out; *faults
// counts them.
struct FileSelection {
    std::unique_ptr<QAStProject> project;
    QList<QAStFile*> files;
    int faults = 0;
    bool loaded = false; // false: the project did not load (told already)
};
FileSelection selectFiles(const QStringList& arguments, bool (*accept)(const QAStFile*),
                          const QString& acceptedWhat);

// The commands of their own sources, each with the options it adds.
void tagsOptions(QCommandLineParser& parser);
int tags(QCommandLineParser& parser, CommandLineStudio& studio);
void metricsOptions(QCommandLineParser& parser);
int metrics(QCommandLineParser& parser, CommandLineStudio& studio);
void splitOptions(QCommandLineParser& parser);
int split(QCommandLineParser& parser, CommandLineStudio& studio);
void newOptions(QCommandLineParser& parser);
int newProject(QCommandLineParser& parser, CommandLineStudio& studio);
void addOptions(QCommandLineParser& parser);
int add(QCommandLineParser& parser, CommandLineStudio& studio);
int addFiles(QCommandLineParser& parser, CommandLineStudio& studio);
void importOptions(QCommandLineParser& parser);
int import(QCommandLineParser& parser, CommandLineStudio& studio);
void settingOptions(QCommandLineParser& parser);
int set(QCommandLineParser& parser, CommandLineStudio& studio);
int get(QCommandLineParser& parser, CommandLineStudio& studio);
void reportOptions(QCommandLineParser& parser);
int report(QCommandLineParser& parser, CommandLineStudio& studio);
// The help text after report's options: its WHATs.
const char* reportDetails();
// execute's --junit FILE, and the writing of that file for the test nodes
// executed; false, told on standard error, when it cannot be written.
const QCommandLineOption& junitOption();
bool writeJUnit(const QList<QAStNodeTest*>& tests, const QString& file);
// The coverage of the test nodes' last runs, a WHAT of report; its options
// --lcov FILE and --cobertura FILE.
void coverageReportOptions(QCommandLineParser& parser);
int reportCoverage(const QList<QAStNodeTest*>& tests, const QCommandLineParser& parser);

}
