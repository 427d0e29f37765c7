#include "QAStFile.h"

#include "QALogging.h"
#include "QAStDataFactory.h"
#include "QAStDriverBatch.h"
#include "QAStProjectPref.h"
#include "QAStTagFileReader.h"
#include "QAStTagTable.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QMetaMethod>
#include <QPointer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <initializer_list>
#include <memory>
#include <vector>

namespace {
const QAStDataFactory::Registration<QAStFile> fileRow("file");


// --- the file-type table, in its intended order

struct TypeRow {
    const char* label;
    int type;
    std::initializer_list<const char*> patterns;
};

#define TEST_SCRIPT_PATTERNS "*.otd", "*.otc", "*.dcl", "*.stb", "*.ptu", "*.pts"

// Matching ignores case, so "x.C" stops at row 16 (C); "*.tsf" always
// gives 19; rows 22 and 24 are never reached. All kept as they are.
const TypeRow typeRows[] = {
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Test Reports"), 4, {"*.xrd"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "C and Ada Test Scripts"), 5, {"*.ptu"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "System Testing Scripts"), 6, {"*.pts"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "System Testing Supervision Scripts"), 7, {"*.spv"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "C++ Test Scripts"), 8, {"*.otd", "*.otc", "*.dcl", "*.stb"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All Test Scripts"), 3, {TEST_SCRIPT_PATTERNS}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Runtime Tracing Results"), 19, {"*.tsf", "*.tdf"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Code Coverage Results"), 20, {"*.fdc", "*.tio"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Memory Profiling Results"), 21, {"*.tsf", "*.txf", "*.tpf"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Performance Profiling Results"), 22, {"*.tsf", "*.tqf"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Graphic Files"), 23, {"*.rtx"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Runtime Analysis Results"), 24, {"*.spt"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Project"), 0, {"*.rtp"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Microsoft Visual Studio Project"), 1, {"*.dsp"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Workspace"), 2, {"*.rtw"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All C Files"), 10, {"*.c"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All C++ Files"), 12, {"*.cpp", "*.cxx", "*.cc", "*.CC", "*.C", "*.c"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All Java Files"), 15, {"*.java"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Matlab Files"), 16, {"*.mat", "*.mdl"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All Ada Files"), 14, {"*.ada", "*.adb", "*.ads"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Header Files"), 9, {"*.h", "*.hh", "*.hpp", "*.hxx", "*.H"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "All Test Scripts"), 3, {TEST_SCRIPT_PATTERNS}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Makefile"), 17, {"Makefile*", "makefile*", "*.mak", "*.mk"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "System Testing Supervision Scripts"), 18, {"*.spv"}},
    {QT_TRANSLATE_NOOP(QATR_PROJECT, "Data Files"), 25, {"*.csv"}},
};

#undef TEST_SCRIPT_PATTERNS

// One anchored, case-insensitive expression matching any of the wildcard
// patterns; an invalid expression (matching nothing) when there are none.
QRegularExpression compileWildcards(const QStringList& patterns)
{
    QStringList alternatives;
    for (const QString& p : patterns)
        alternatives.append(QRegularExpression::wildcardToRegularExpression(
            p, QRegularExpression::UnanchoredWildcardConversion));
    if (alternatives.isEmpty())
        return QRegularExpression(QStringLiteral("(?!)"));
    return QRegularExpression(QStringLiteral("\\A(?:") + alternatives.join(QLatin1Char('|')) +
                                  QStringLiteral(")\\z"),
                              QRegularExpression::CaseInsensitiveOption);
}

QStringList rowPatterns(const TypeRow& row)
{
    QStringList patterns;
    for (const char* p : row.patterns)
        patterns.append(QLatin1String(p));
    return patterns;
}

struct CompiledRow {
    int type;
    QRegularExpression expression;
};

// The table's expressions, compiled on first use.
const std::vector<CompiledRow>& compiledRows()
{
    static const std::vector<CompiledRow> rows = [] {
        std::vector<CompiledRow> compiled;
        for (const TypeRow& row : typeRows)
            compiled.push_back({row.type, compileWildcards(rowPatterns(row))});
        return compiled;
    }();
    return rows;
}

// The patterns of the user's file types, split at ";".
QStringList userPatterns(const QString& patterns)
{
    QStringList found;
    for (const QString& p : patterns.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString trimmed = p.trimmed();
        if (!trimmed.isEmpty())
            found.append(trimmed);
    }
    return found;
}

// The user's types as one expression, compiled again only when the
// preferences' map changes.
const QRegularExpression& userTypesExpression()
{
    static QMap<QString, QString> compiledFrom;
    static QRegularExpression expression = compileWildcards({});
    const QMap<QString, QString> types = QAStData::preferences()->fileTypes();
    if (types != compiledFrom) {
        QStringList patterns;
        for (const QString& list : types)
            patterns.append(userPatterns(list));
        expression = compileWildcards(patterns);
        compiledFrom = types;
    }
    return expression;
}

const TypeRow* firstRowOf(int type)
{
    for (const TypeRow& row : typeRows) {
        if (row.type == type)
            return &row;
    }
    return nullptr;
}

QString filterText(const QString& label, const QStringList& patterns)
{
    return label + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
}

QString combinedFilter(const char* label, int first, int second)
{
    return filterText(QATr::project(label), rowPatterns(*firstRowOf(first)) + rowPatterns(*firstRowOf(second)));
}

// --- the tagging run, one at a time

// One run of the tagging driver over a batch of files, in a directory of
// its own: the list of the files ("sources") and the tag file ("tags"),
// where the records of each file end with the line "!_KORVIL_END\t<n>\t//".
struct TaggingRun {
    QTemporaryDir directory{QDir::tempPath() + QStringLiteral("/korvil-tagging-XXXXXX")};
    QPointer<QAStDriverBatch> driver;
    // The tag file, and what was read of it and not yet taken.
    QFile tags;
    QByteArray unread;
    QList<QPointer<QAStFile>> files;
    // The file the driver is at.
    int current = 0;
    bool stopped = false;
    // The last file was reported (it ends with the run).
    bool lastReported = false;
    bool lastSucceeded = false;

    QAStFile* currentFile() const { return current < files.size() ? files.at(current) : nullptr; }
    QString tagFilePath() const { return directory.filePath(QStringLiteral("tags")); }

    // The records of the file at index, up to its end line, which the
    // driver wrote before reporting it; false when they are not there.
    bool takeRecords(int index, QByteArray& records)
    {
        if (!tags.isOpen()) {
            tags.setFileName(tagFilePath());
            if (!tags.open(QIODevice::ReadOnly))
                return false;
        }
        unread += tags.readAll();
        const QByteArray end = "!_KORVIL_END\t" + QByteArray::number(index + 1) + '\t';
        qsizetype at = unread.startsWith(end) ? 0 : unread.indexOf('\n' + end);
        if (at < 0)
            return false;
        if (at > 0)
            ++at;
        const qsizetype next = unread.indexOf('\n', at);
        records = unread.left(at);
        unread.remove(0, next < 0 ? unread.size() : next + 1);
        return true;
    }
};

std::unique_ptr<TaggingRun>& taggingRun()
{
    static std::unique_ptr<TaggingRun> run;
    return run;
}

// The list the driver reads: one path a line.
bool writeSourceList(const TaggingRun& run)
{
    QFile list(run.directory.filePath(QStringLiteral("sources")));
    if (!list.open(QIODevice::WriteOnly))
        return false;
    for (const QPointer<QAStFile>& file : run.files)
        list.write(QFile::encodeName(file->filePath()) + '\n');
    return list.flush();
}

}

QAStFile::QAStFile(const QString& path, QAStData* parent, QAStData* after)
    : QAStTestedTag(QFileInfo(path).fileName(), QPixmap(), path, -1, parent, after)
{
}

QAStFile::QAStFile(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStTestedTag(parent, after)
{
    init(e, version);
}

void QAStFile::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<file>\n";
    QAStTestedTag::write(s, indent + 1);
    QAXML::indent(s, indent);
    s << "</file>\n";
}

bool QAStFile::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "file")) {
        setValid(false);
        return false;
    }
    return QAStTestedTag::init(e.firstChildElement(QStringLiteral("tested_tag")), version);
}

// --- file types

QAStFile::FileType QAStFile::fileType(const QString& fileName)
{
    const qsizetype cut = std::max(fileName.lastIndexOf(QLatin1Char('/')),
                                   fileName.lastIndexOf(QLatin1Char('\\')));
    const QString name = cut < 0 ? fileName : fileName.mid(cut + 1);
    for (const CompiledRow& row : compiledRows()) {
        if (row.expression.match(name).hasMatch())
            return FileType(row.type);
    }
    if (userTypesExpression().match(name).hasMatch())
        return UserFile;
    return UnknownFile;
}

int QAStFile::languageType(const QString& path)
{
    switch (fileType(path)) {
    case CFiles:
        return LanguageC;
    case CppFiles:
        return LanguageCpp;
    case AdaFiles:
        return LanguageAda;
    case JavaFiles:
        return LanguageJava;
    default:
        return NoLanguage;
    }
}

int QAStFile::language() const
{
    // The language depends on the file name only, whatever the directory.
    if (storedFilePath() != m_languagePath) {
        m_languagePath = storedFilePath();
        m_language = languageType(m_languagePath);
    }
    return m_language;
}

QString QAStFile::fileTypeFilter(int type)
{
    switch (type) {
    case CAndHeaderFiles:
        return combinedFilter(QT_TRANSLATE_NOOP(QATR_PROJECT, "All C and Header Files"), CFiles,
                              HeaderFiles);
    case CppAndHeaderFiles:
        return combinedFilter(QT_TRANSLATE_NOOP(QATR_PROJECT, "All C++ and Header Files"), CppFiles,
                              HeaderFiles);
    case UnknownFile:
        return filterText(QATr::project("All Files"), {QStringLiteral("*")});
    case UserFile: {
        QStringList filters;
        const QMap<QString, QString> types = preferences()->fileTypes();
        for (auto it = types.cbegin(); it != types.cend(); ++it)
            filters.append(filterText(it.key(), userPatterns(it.value())));
        return filters.join(QStringLiteral(";;"));
    }
    default:
        break;
    }
    const TypeRow* row = firstRowOf(type);
    return row ? filterText(QATr::project(row->label), rowPatterns(*row)) : QString();
}

QString QAStFile::fileTypeFilter(const QList<int>& types)
{
    QStringList filters;
    for (int type : types) {
        const QString filter = fileTypeFilter(type);
        if (!filter.isEmpty())
            filters.append(filter);
    }
    return filters.join(QStringLiteral(";;"));
}

QList<QAStFile::FileType> QAStFile::fileTypesInTableOrder()
{
    QList<FileType> types;
    for (const TypeRow& row : typeRows) {
        if (!types.contains(FileType(row.type)))
            types.append(FileType(row.type));
    }
    return types;
}

bool QAStFile::isSourceFile() const
{
    switch (fileType(filePath())) {
    case HeaderFiles:
    case CFiles:
    case CppFiles:
    case AdaFiles:
    case JavaFiles:
        return true;
    default:
        return false;
    }
}

// --- tagging

bool QAStFile::taggingInformation(bool asynchronous)
{
    return isSourceFile() && taggingInformation(QList<QAStFile*>{this}, asynchronous);
}

bool QAStFile::taggingInformation(const QList<QAStFile*>& files, bool asynchronous)
{
    if (isFileInformationProcessing())
        return false;
    auto run = std::make_unique<TaggingRun>();
    for (QAStFile* file : files) {
        if (file && file->isSourceFile() && !run->files.contains(file))
            run->files.append(file);
    }
    if (run->files.isEmpty())
        return false;
    if (!run->directory.isValid() || !writeSourceList(*run)) {
        displayMessage(OutputConsole, QATr::project("Can't create the tagging directory %1.\n")
                                          .arg(run->directory.path()));
        return false;
    }
    auto* driver = new QAStDriverBatch(QLatin1String(taggingScript));
    run->driver = driver;
    connect(driver, &QAStDriverBatch::fileReported, driver,
            [driver](int index, bool succeeded) { taggingFileReported(driver, index, succeeded); });
    connect(driver, &QAStData::perlScriptTerminated, driver, [driver] { taggingRunEnded(driver); });
    const QString directory = run->directory.path();
    QAStFile* first = run->files.constFirst();
    taggingRun() = std::move(run);
    first->startTagging();
    if (taggingRun()->stopped)
        taggingRunEnded(driver);
    else
        driver->executePerlScript(QLatin1String(taggingScript), directory, nullptr, asynchronous,
                                  OutputConsole, nullptr, {QStringLiteral("--batch"), directory});
    return true;
}

void QAStFile::startTagging()
{
    m_taggingSucceeded = false;
    m_taggingInterrupted = false;
    emit taggingStarted();
    emit taggingNotifier()->taggingStarted(this);
}

void QAStFile::taggingFileReported(const QAStDriverBatch* driver, int index, bool succeeded)
{
    TaggingRun* run = taggingRun().get();
    if (!run || run->driver != driver || run->stopped || index != run->current)
        return;
    QAStFile* file = run->currentFile();
    QByteArray records;
    const bool read = succeeded && file && run->takeRecords(index, records);
    if (read)
        file->readTags(records, run->tagFilePath());
    if (index + 1 == run->files.size()) {
        run->lastReported = true;
        run->lastSucceeded = read;
        return;
    }
    ++run->current;
    if (file) {
        file->m_taggingSucceeded = read;
        file->taggingInformationTerminated();
    }
    // A receiver may have stopped the run meanwhile.
    run = taggingRun().get();
    if (run && !run->stopped) {
        if (QAStFile* next = run->currentFile())
            next->startTagging();
    }
}

void QAStFile::taggingRunEnded(const QAStDriverBatch* driver)
{
    if (!taggingRun() || taggingRun()->driver != driver)
        return;
    // No tagging runs from here on: a receiver may start the next one.
    const std::unique_ptr<TaggingRun> run = std::move(taggingRun());
    if (run->driver) {
        // A stopped driver may still be ending: it tells nothing more.
        QObject::disconnect(run->driver, nullptr, run->driver, nullptr);
        run->driver->deleteLater();
    }
    if (QAStFile* file = run->currentFile()) {
        file->m_taggingSucceeded = run->lastReported && run->lastSucceeded;
        file->m_taggingInterrupted = !run->lastReported && !run->stopped;
        file->taggingInformationTerminated();
    }
    emit taggingNotifier()->taggingRunTerminated();
}

bool QAStFile::isFileInformationProcessing()
{
    return taggingRun() != nullptr;
}

void QAStFile::stopFileInformationProcess()
{
    TaggingRun* run = taggingRun().get();
    if (!run || run->stopped)
        return;
    run->stopped = true;
    if (run->driver)
        run->driver->stop();
    // Ended at once, so that the next tagging may start.
    taggingRunEnded(run->driver);
}

QAStFile* QAStFile::fileInformationProcessed()
{
    const TaggingRun* run = taggingRun().get();
    return run ? run->currentFile() : nullptr;
}

QAStFileTaggingNotifier* QAStFile::taggingNotifier()
{
    static QAStFileTaggingNotifier notifier;
    return &notifier;
}

void QAStFile::taggingInformationTerminated()
{
    emit taggingTerminated();
    emit taggingNotifier()->taggingTerminated(this);
}

bool QAStFile::readTagFile(const QString& path)
{
    QAStTagFileReader reader(this);
    return reader.read(path);
}

void QAStFile::readTags(QByteArrayView text, const QString& name)
{
    deleteChildren();
    QAStTagFileReader reader(this);
    reader.readText(text, name);
}

QAStATag* QAStFile::createTag(const QMap<QString, QVariant>& record, QAStFile* file,
                              QAStATag* parent)
{
    return createTag(QAStTagRecord::fromMap(record), file, parent);
}

QAStATag* QAStFile::createTag(const QAStTagRecord& record, QAStFile* file, QAStATag* parent)
{
    const QAStTagTable::Class kind = QAStTagTable::classify(record.kind, record.parentKind);
    if (kind == QAStTagTable::NoClass) {
        qCInfo(lcTagging, "[info] TAGGING: %s is a kind of token not yet implemented",
               qUtf8Printable(record.kind));
        return nullptr;
    }
    QAStData* under = parent ? static_cast<QAStData*>(parent) : file;
    if (!under)
        return nullptr;
    const QString& path = file ? file->storedFilePath() : record.file;
    QString completeName = record.name;
    if (!record.completeName.isEmpty()) {
        const QString separator = file ? file->scopeSeparator() : QStringLiteral("::");
        completeName = record.completeName + separator + record.name;
    }
    return QAStTagTable::makeTag(kind, record.name, path, record.line, record.qualifier,
                                 record.signature, completeName, record.inherits, under);
}

void QAStFile::keepTags(std::unique_ptr<QAStTagTable> tags)
{
    const auto count = quint32(tags->size());
    setDeferredChildren(std::move(tags), count);
    // A listener to childAdded hears of the tags as they come, as always.
    if (isSignalConnected(QMetaMethod::fromSignal(&QAStData::childAdded)))
        makeDeferredChildren();
}
