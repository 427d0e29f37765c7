// The commands that analyse source files: tags (the tagging driver, shown
// in one of the tag browser's layouts) and metrics (the metrics driver,
// shown as a table).
#include "CommandLineStudio.h"
#include "Commands.h"
#include "QAStATag.h"
#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStMetricManager.h"
#include "QAStProject.h"
#include "QAStTagLayout.h"
#include "QMetElement.h"
#include "QMetQuery.h"

#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

namespace Commands {
namespace {

const QCommandLineOption layoutOption(
    {QStringLiteral("l"), QStringLiteral("layout")},
    QStringLiteral("The layout of the tree: file (each file with its tags), type (classes, functions, "
                   "packages) or alpha (by file, ordered by name). Default: file."),
    QStringLiteral("LAYOUT"), QStringLiteral("file"));
const QCommandLineOption stroudOption(QStringLiteral("stroud"),
                                      QStringLiteral("The Stroud number testing times are computed with "
                                                     "(default 18)."),
                                      QStringLiteral("NUMBER"));

// --- choosing the files

bool isTaggable(const QAStFile* file)
{
    return file->isSourceFile();
}

bool isMeasurable(const QAStFile* file)
{
    const int language = QAStFile::languageType(file->filePath());
    return language == QAStFile::LanguageC || language == QAStFile::LanguageCpp ||
           QAStFile::fileType(file->name()) == QAStFile::HeaderFiles;
}

// Relative to the project's directory (the current one for files given
// without a project) when the file lies below it.
QString shownPath(const QAStProject* project, const QString& path)
{
    const QString base = project && !project->path().isEmpty() ? project->directory() : QDir::currentPath();
    const QString relative = QDir(base).relativeFilePath(path);
    return relative.startsWith(QLatin1String("..")) ? QDir::cleanPath(path) : relative;
}

// The files below directory (hidden ones and those of hidden directories
// left out, symbolic links to directories not followed) that accept
// keeps, grouped by file type in the order of the file-type table, each
// group by path relative to directory in code-point order.
QStringList filesBelow(const QString& directory, bool (*accept)(const QAStFile*))
{
    const QList<QAStFile::FileType> order = QAStFile::fileTypesInTableOrder();
    struct Found {
        qsizetype rank;
        QString relative;
    };
    QList<Found> found;
    const QDir top(directory);
    QStringList pending{directory};
    while (!pending.isEmpty()) {
        const QDir dir(pending.takeLast());
        for (const QFileInfo& info : dir.entryInfoList(QDir::Files)) {
            const QAStFile probe(info.absoluteFilePath());
            if (accept(&probe))
                found.append({order.indexOf(QAStFile::fileType(info.fileName())),
                              top.relativeFilePath(info.absoluteFilePath())});
        }
        for (const QFileInfo& sub : dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks))
            pending.append(sub.absoluteFilePath());
    }
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
        return a.rank != b.rank ? a.rank < b.rank : a.relative < b.relative;
    });
    QStringList paths;
    for (const Found& f : found)
        paths.append(top.filePath(f.relative));
    return paths;
}

} // namespace

FileSelection selectFiles(const QStringList& arguments, bool (*accept)(const QAStFile*),
                          const QString& acceptedWhat)
{
    FileSelection selection;
    QStringList paths = arguments;
    if (!paths.isEmpty() && isProjectFile(paths.first())) {
        selection.project = load(paths.takeFirst());
        if (!selection.project)
            return selection;
    } else {
        selection.project = std::make_unique<QAStProject>(QStringLiteral("files"), QPixmap());
    }
    selection.loaded = true;
    QAStProject* project = selection.project.get();
    if (paths.isEmpty()) {
        QList<QAStProject*> projects{project};
        for (QAStData* sub : project->childrenOfClass("QAStSubProject", true))
            projects.append(static_cast<QAStProject*>(sub));
        for (QAStProject* p : projects) {
            for (QAStFile* file : p->files()) {
                if (accept(file))
                    selection.files.append(file);
            }
        }
        return selection;
    }
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isDir()) {
            const QStringList below = filesBelow(info.absoluteFilePath(), accept);
            if (below.isEmpty()) {
                err(QStringLiteral("%1: no file in this directory is %2").arg(path, acceptedWhat));
                ++selection.faults;
            }
            for (const QString& file : below) {
                QAStFile* added = project->addFile(file);
                if (added && !selection.files.contains(added))
                    selection.files.append(added);
            }
            continue;
        }
        if (!info.isFile()) {
            err(QStringLiteral("%1: no such file").arg(path));
            ++selection.faults;
            continue;
        }
        QAStFile* file = project->addFile(info.absoluteFilePath());
        if (!file || !accept(file)) {
            err(QStringLiteral("%1: not %2, left out").arg(path, acceptedWhat));
            ++selection.faults;
            continue;
        }
        if (!selection.files.contains(file))
            selection.files.append(file);
    }
    return selection;
}

// --- tags

void tagsOptions(QCommandLineParser& parser)
{
    parser.addOption(layoutOption);
}

namespace {

// A tag's place: "file:line", or the line alone within its own file.
QString placeOf(const QAStATag* tag, const QAStFile* within)
{
    if (tag->line() <= 0)
        return QString();
    const QString file = tag->file() && tag->file() != within ? QFileInfo(tag->filePath()).fileName() + u':'
                                                               : QStringLiteral("line ");
    return file + QString::number(tag->line());
}

void printEntries(const QList<QAStTagLayout::Entry>& entries, int depth, const QAStFile* within,
                  const QAStProject* project)
{
    for (const QAStTagLayout::Entry& entry : entries) {
        QString line = QString(2 * depth, u' ');
        const auto* file = qobject_cast<const QAStFile*>(entry.tag);
        if (file) {
            line += shownPath(project, file->filePath());
        } else {
            line += entry.text;
            if (entry.tag) {
                const QString place = placeOf(entry.tag, within);
                if (!place.isEmpty())
                    line += QStringLiteral("  (") + place + u')';
            } else {
                line += QStringLiteral(" (%1)").arg(entry.children.size());
            }
        }
        out(line + u'\n');
        printEntries(entry.children, depth + 1, file ? file : within, project);
    }
}

} // namespace

int tags(QCommandLineParser& parser, CommandLineStudio& studio)
{
    // By index, the tag browser's modes; "alphabetical" is also taken.
    static const QStringList layouts = {QStringLiteral("file"), QStringLiteral("type"),
                                        QStringLiteral("alpha"), QStringLiteral("alphabetical")};
    const int mode = std::min(int(layouts.indexOf(parser.value(layoutOption).toLower())),
                              int(QAStTagLayout::SortAlpha));
    if (mode < 0) {
        err(QStringLiteral("tags: unknown layout \"%1\" (file, type or alpha)").arg(parser.value(layoutOption)));
        return Usage;
    }
    if (parser.positionalArguments().isEmpty()) {
        err(QStringLiteral("tags: give a project file or source files; see 'korvil tags --help'"));
        return Usage;
    }
    FileSelection selection =
        selectFiles(parser.positionalArguments(), isTaggable, QStringLiteral("a C, C++, Ada, Java or header file"));
    if (!selection.loaded)
        return Failure;

    QAStFileAnalyse analyse(selection.files, false);
    QEventLoop loop;
    QObject::connect(&analyse, &QAStFileAnalyse::finished, &loop, &QEventLoop::quit);
    // The run shows its progress through the host: a line on a terminal.
    if (!selection.files.isEmpty()) {
        analyse.start();
        if (analyse.isRunning())
            loop.exec();
    }
    studio.endLine();

    const QList<QAStFile*> analysed = analyse.analysedFiles();
    printEntries(QAStTagLayout::layout(analysed, mode), 0, nullptr, selection.project.get());
    const int failed = int(analyse.failedFiles().size()) + selection.faults;
    if (selection.files.isEmpty() && selection.faults == 0)
        err(QStringLiteral("tags: no source file to analyse"));
    return failed > 0 ? Failure : Success;
}

// --- metrics

void metricsOptions(QCommandLineParser& parser)
{
    parser.addOption(stroudOption);
}

namespace {

// One row of the table: the element's text, its kind, its line and one
// value per column ("-" when it has none).
struct Row {
    QString text;
    QString kind;
    QString line;
    QStringList values;
};

struct Column {
    const char* header;
    const char* key;
};

const Column columns[] = {{"VG", "VG"},         {"Statements", "Statements"}, {"NestedLevel", "NestedLevel"},
                          {"Effort", "Effort"}, {"TestingTime", "TestingTime"}, {"Src1", "Src1"},
                          {"Src2", "Src2"}};

// A value with at most two decimals and no trailing zeros.
QString formatValue(float value)
{
    QString text = QString::number(double(value), 'f', 2);
    while (text.contains(u'.') && (text.endsWith(u'0') || text.endsWith(u'.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

Row elementRow(const QMetElement* element, const QString& text, int depth)
{
    Row row{QString(2 * depth, u' ') + text, element->type().toLower(), element->line(), {}};
    for (const Column& column : columns) {
        bool ok = false;
        const float value = element->metricValue(QLatin1String(column.key), &ok);
        row.values.append(ok ? formatValue(value) : QStringLiteral("-"));
    }
    return row;
}

// The sum, mean and maximum over an element's children; the sum's
// TestingTime is the element's "TestingTime_SUM".
QList<Row> aggregateRows(const QMetElement* element, int depth, const QString& over)
{
    QList<Row> rows;
    for (const char* suffix : {"_SUM", "_MEAN", "_MAX"}) {
        Row row{QString(2 * depth, u' ') + QLatin1String(suffix) + QStringLiteral(" over ") + over, QString(),
                QString(), {}};
        bool any = false;
        for (const Column& column : columns) {
            bool ok = false;
            const float value = element->metricValue(QLatin1String(column.key) + QLatin1String(suffix), &ok);
            any = any || ok;
            row.values.append(ok ? formatValue(value) : QStringLiteral("-"));
        }
        if (any)
            rows.append(row);
    }
    return rows;
}

QString unitWord(int count, const char* one, const char* many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}

void addUnitRows(QList<Row>& rows, const QMetElement* element, int depth)
{
    for (const QMetElement* child : element->children()) {
        rows.append(elementRow(child, child->qualifiedName(), depth));
        addUnitRows(rows, child, depth + 1);
    }
}

QList<Row> tableRows(const QMetElement* root, const QAStProject* project)
{
    QList<Row> rows;
    for (const QMetElement* file : root->children()) {
        const QString path = QDir(file->path()).filePath(file->fileName());
        rows.append(elementRow(file, shownPath(project, path), 0));
        addUnitRows(rows, file, 1);
        rows.append(aggregateRows(file, 1, unitWord(int(file->children().size()), "unit", "units")));
    }
    const int files = int(root->children().size());
    if (files > 0) {
        rows.append(Row{QStringLiteral("project"), QString(), QString(), {}});
        rows.append(aggregateRows(root, 1, unitWord(files, "file", "files")));
    }
    return rows;
}

void printTable(const QList<Row>& rows)
{
    QList<int> widths{7, 4, 4};
    for (const Column& column : columns)
        widths.append(int(qstrlen(column.header)));
    for (const Row& row : rows) {
        widths[0] = std::max(widths[0], int(row.text.size()));
        widths[1] = std::max(widths[1], int(row.kind.size()));
        widths[2] = std::max(widths[2], int(row.line.size()));
        for (int i = 0; i < row.values.size(); ++i)
            widths[3 + i] = std::max(widths[3 + i], int(row.values.at(i).size()));
    }
    const auto print = [&](const QString& element, const QString& kind, const QString& line, const QStringList& values) {
        QString text = element.leftJustified(widths[0]) + QStringLiteral("  ") + kind.leftJustified(widths[1]) +
                       QStringLiteral("  ") + line.rightJustified(widths[2]);
        for (int i = 0; i < values.size(); ++i)
            text += QStringLiteral("  ") + values.at(i).rightJustified(widths[3 + i]);
        while (text.endsWith(u' '))
            text.chop(1);
        out(text + u'\n');
    };
    QStringList headers;
    for (const Column& column : columns)
        headers.append(QLatin1String(column.header));
    print(QStringLiteral("element"), QStringLiteral("kind"), QStringLiteral("line"), headers);
    for (const Row& row : rows)
        print(row.text, row.kind, row.line, row.values);
}

} // namespace

int metrics(QCommandLineParser& parser, CommandLineStudio& studio)
{
    float stroud = QMetTree::DefaultStroudNumber;
    if (parser.isSet(stroudOption)) {
        bool ok = false;
        stroud = parser.value(stroudOption).toFloat(&ok);
        if (!ok || !(stroud > 0)) {
            err(QStringLiteral("metrics: the Stroud number must be a number above 0, not \"%1\"")
                    .arg(parser.value(stroudOption)));
            return Usage;
        }
    }
    if (parser.positionalArguments().isEmpty()) {
        err(QStringLiteral("metrics: give a project file or source files; see 'korvil metrics --help'"));
        return Usage;
    }
    FileSelection selection =
        selectFiles(parser.positionalArguments(), isMeasurable, QStringLiteral("a C, C++ or header file"));
    if (!selection.loaded)
        return Failure;

    // The metrics files go beside the project's other work files, or to a
    // directory of this run.
    QTemporaryDir scratch;
    const QString projectDir = selection.project->path().isEmpty() ? QString() : selection.project->directory();
    const QString directory = projectDir.isEmpty() ? scratch.path() : projectDir + QStringLiteral("/.korvil/metrics");
    QStringList sources;
    for (const QAStFile* file : selection.files)
        sources.append(file->filePath());

    QAStMetricManager manager(directory);
    manager.setFileList(sources);
    manager.setCancelEnabled(false);
    int failures = selection.faults;
    int done = 0;
    QEventLoop loop;
    QObject::connect(&manager, &QAStMetricManager::computeMetricTerminated, &loop, &QEventLoop::quit);
    // In batch mode the manager shows no progress: the tool shows it,
    // with the manager's texts.
    QObject::connect(&manager, &QAStMetricManager::computeFileStarted, &loop, [&](const QString& file) {
        studio.showProgress(done + 1, QAStMetricManager::tr("Compute Metric for File:%1").arg(file));
    });
    QObject::connect(&manager, &QAStMetricManager::computeFileTerminated, &loop,
                     [&](const QString& file, bool succeeded) {
                         ++done;
                         if (!succeeded) {
                             ++failures;
                             err(QStringLiteral("%1: the metrics could not be computed (see %2)")
                                     .arg(shownPath(selection.project.get(), file), manager.logFileName()));
                         }
                     });
    if (!sources.isEmpty()) {
        studio.startProgress(QAStMetricManager::tr("Computing Metric in progress"), QString(),
                             int(sources.size()));
        if (manager.start() && manager.inProgress())
            loop.exec();
        studio.finishProgress();
    } else if (selection.faults == 0) {
        err(QStringLiteral("metrics: no C, C++ or header file to measure"));
    }
    studio.endLine();

    QMetQuery query(manager.metricFiles());
    query.stroudChange(stroud);
    query.init();
    out(QStringLiteral("Metrics of %1 (Stroud number %2)\n\n")
            .arg(unitWord(int(query.root()->children().size()), "file", "files"), formatValue(stroud)));
    printTable(tableRows(query.root(), selection.project.get()));
    return failures > 0 ? Failure : Success;
}

}
