#include "QAStFile.h"

#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStDataFactory.h"
#include "QAStProjectPref.h"
#include "QAStTagFileReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QRegularExpression>
#include <QTextStream>

#include <initializer_list>
#include <vector>

namespace {
const QAStDataFactory::Registration<QAStFile> fileRow("file");

Q_LOGGING_CATEGORY(lcTagging, "sdk110.tagging", QtWarningMsg)

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
    {QT_TRANSLATE_NOOP("QAStFile", "Test Reports"), 4, {"*.xrd"}},
    {QT_TRANSLATE_NOOP("QAStFile", "C and Ada Test Scripts"), 5, {"*.ptu"}},
    {QT_TRANSLATE_NOOP("QAStFile", "System Testing Scripts"), 6, {"*.pts"}},
    {QT_TRANSLATE_NOOP("QAStFile", "System Testing Supervision Scripts"), 7, {"*.spv"}},
    {QT_TRANSLATE_NOOP("QAStFile", "C++ Test Scripts"), 8, {"*.otd", "*.otc", "*.dcl", "*.stb"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All Test Scripts"), 3, {TEST_SCRIPT_PATTERNS}},
    {QT_TRANSLATE_NOOP("QAStFile", "Runtime Tracing Results"), 19, {"*.tsf", "*.tdf"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Code Coverage Results"), 20, {"*.fdc", "*.tio"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Memory Profiling Results"), 21, {"*.tsf", "*.txf", "*.tpf"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Performance Profiling Results"), 22, {"*.tsf", "*.tqf"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Graphic Files"), 23, {"*.rtx"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Runtime Analysis Results"), 24, {"*.spt"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Project"), 0, {"*.rtp"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Microsoft Visual Studio Project"), 1, {"*.dsp"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Workspace"), 2, {"*.rtw"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All C Files"), 10, {"*.c"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All C++ Files"), 12, {"*.cpp", "*.cxx", "*.cc", "*.CC", "*.C", "*.c"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All Java Files"), 15, {"*.java"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Matlab Files"), 16, {"*.mat", "*.mdl"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All Ada Files"), 14, {"*.ada", "*.adb", "*.ads"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Header Files"), 9, {"*.h", "*.hh", "*.hpp", "*.hxx", "*.H"}},
    {QT_TRANSLATE_NOOP("QAStFile", "All Test Scripts"), 3, {TEST_SCRIPT_PATTERNS}},
    {QT_TRANSLATE_NOOP("QAStFile", "Makefile"), 17, {"Makefile*", "makefile*", "*.mak", "*.mk"}},
    {QT_TRANSLATE_NOOP("QAStFile", "System Testing Supervision Scripts"), 18, {"*.spv"}},
    {QT_TRANSLATE_NOOP("QAStFile", "Data Files"), 25, {"*.csv"}},
};

#undef TEST_SCRIPT_PATTERNS

QString tr(const char* text)
{
    return QCoreApplication::translate("QAStFile", text);
}

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
    return filterText(tr(label), rowPatterns(*firstRowOf(first)) + rowPatterns(*firstRowOf(second)));
}

// --- the tagging process, one at a time

QPointer<QAStFile>& processedFile()
{
    static QPointer<QAStFile> file;
    return file;
}

// --- kinds

enum class TagClass { None, Package, Class, Struct, Function, Method };

TagClass classify(const QString& kind, const QString& parentKind)
{
    static const QHash<QString, TagClass> kinds = {
        {QStringLiteral("namespace"), TagClass::Package},
        {QStringLiteral("package"), TagClass::Package},
        {QStringLiteral("packspec"), TagClass::Package},
        {QStringLiteral("separate"), TagClass::Package},
        {QStringLiteral("class"), TagClass::Class},
        {QStringLiteral("interface"), TagClass::Class},
        {QStringLiteral("struct"), TagClass::Struct},
        {QStringLiteral("function"), TagClass::Function},
        {QStringLiteral("prototype"), TagClass::Function},
        {QStringLiteral("subprogram"), TagClass::Function},
        {QStringLiteral("subprogspec"), TagClass::Function},
        {QStringLiteral("method"), TagClass::Method},
    };
    const TagClass c = kinds.value(kind, TagClass::None);
    if (c == TagClass::Function
        && (parentKind == QLatin1String("class") || parentKind == QLatin1String("interface")))
        return TagClass::Method;
    return c;
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
        return combinedFilter(QT_TRANSLATE_NOOP("QAStFile", "All C and Header Files"), CFiles,
                              HeaderFiles);
    case CppAndHeaderFiles:
        return combinedFilter(QT_TRANSLATE_NOOP("QAStFile", "All C++ and Header Files"), CppFiles,
                              HeaderFiles);
    case UnknownFile:
        return filterText(tr("All Files"), {QStringLiteral("*")});
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
    return row ? filterText(tr(row->label), rowPatterns(*row)) : QString();
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
    if (!isSourceFile() || isFileInformationProcessing())
        return false;
    const QString dir = taggingDirectory();
    QDir().mkpath(dir);
    QFile::remove(tagFilePath());
    processedFile() = this;
    m_taggingStopped = false;
    m_taggingSucceeded = false;
    emit taggingStarted();
    emit taggingNotifier()->taggingStarted(this);
    connect(this, &QAStData::perlScriptTerminated, this, &QAStFile::taggingInformationTerminated,
            Qt::UniqueConnection);
    executePerlScript(QLatin1String(taggingScript), dir, nullptr, asynchronous, OutputConsole,
                      nullptr, {tagFilePath(), filePath()});
    return true;
}

bool QAStFile::isFileInformationProcessing()
{
    return !processedFile().isNull();
}

void QAStFile::stopFileInformationProcess()
{
    if (QAStFile* file = processedFile()) {
        file->m_taggingStopped = true;
        file->stop();
    }
}

QAStFile* QAStFile::fileInformationProcessed()
{
    return processedFile();
}

QAStFileTaggingNotifier* QAStFile::taggingNotifier()
{
    static QAStFileTaggingNotifier notifier;
    return &notifier;
}

QString QAStFile::taggingDirectory() const
{
    const QString base = directory();
    if (base.isEmpty())
        return QDir::tempPath() + QStringLiteral("/korvil-tagging-") + userName();
    return base + QStringLiteral("/.korvil");
}

QString QAStFile::tagFilePath() const
{
    return taggingDirectory() + QStringLiteral("/tags");
}

void QAStFile::taggingInformationTerminated()
{
    if (processedFile() != this)
        return;
    disconnect(this, &QAStData::perlScriptTerminated, this,
               &QAStFile::taggingInformationTerminated);
    processedFile() = nullptr;
    bool succeeded = false;
    if (!m_taggingStopped) {
        const bool read = readTagFile(tagFilePath());
        succeeded = read && perlScriptSucceeded();
    }
    m_taggingSucceeded = succeeded;
    emit taggingTerminated();
    emit taggingNotifier()->taggingTerminated(this);
}

bool QAStFile::readTagFile(const QString& path)
{
    QAStTagFileReader reader(this);
    return reader.read(path);
}

QAStATag* QAStFile::createTag(const QMap<QString, QVariant>& record, QAStFile* file,
                              QAStATag* parent)
{
    return createTag(QAStTagRecord::fromMap(record), file, parent);
}

QAStATag* QAStFile::createTag(const QAStTagRecord& record, QAStFile* file, QAStATag* parent)
{
    const TagClass kind = classify(record.kind, record.parentKind);
    if (kind == TagClass::None) {
        qCInfo(lcTagging, "[info] TAGGING: %s is a kind of token not yet implemented",
               qUtf8Printable(record.kind));
        return nullptr;
    }
    QAStData* under = parent ? static_cast<QAStData*>(parent) : file;
    if (!under)
        return nullptr;
    const QString& path = file ? file->storedFilePath() : record.file;
    const auto completeName = [&record, file] {
        if (record.completeName.isEmpty())
            return record.name;
        const QString separator = file ? file->scopeSeparator() : QStringLiteral("::");
        return record.completeName + separator + record.name;
    };
    QAStATag* tag = nullptr;
    switch (kind) {
    case TagClass::Package: {
        auto* package = new QAStAPackageTag(record.name, path, record.line, under, under->last());
        package->setCompleteName(completeName());
        tag = package;
        break;
    }
    case TagClass::Class: {
        auto* c = new QAStAClassTag(record.name, path, record.line, under, under->last());
        c->setInherits(record.inherits);
        tag = c;
        break;
    }
    case TagClass::Struct:
        tag = new QAStAStructTag(record.name, path, record.line, under, under->last());
        break;
    case TagClass::Function:
        tag = new QAStAFunctionTag(record.name, path, record.line, under, under->last());
        break;
    case TagClass::Method: {
        auto* method = new QAStAMethodTag(record.name, path, record.line, under, under->last());
        method->setCompleteName(completeName());
        tag = method;
        break;
    }
    case TagClass::None:
        break;
    }
    tag->setQualifier(record.qualifier);
    tag->setSignature(record.signature);
    return tag;
}
