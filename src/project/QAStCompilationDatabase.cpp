#include "QAStCompilationDatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QRegularExpression>
#include <QSet>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

QString boxText(const QString& file, const QString& reason)
{
    return file + QStringLiteral("\n\n") + reason;
}

QString cleanAgainst(const QString& directory, const QString& path)
{
    return QDir::cleanPath(QDir(directory).absoluteFilePath(path));
}

// --- compiler options

// Options whose value is the next word, taken apart from what they mean
// ("-o" is read on its own).
bool takesValue(const QString& option)
{
    static const QSet<QString> options = {
        QStringLiteral("-MF"),       QStringLiteral("-MT"),         QStringLiteral("-MQ"),
        QStringLiteral("-x"),        QStringLiteral("-arch"),       QStringLiteral("-target"),
        QStringLiteral("-isysroot"), QStringLiteral("-Xclang"),     QStringLiteral("-Xlinker"),
        QStringLiteral("-Xassembler"), QStringLiteral("-Xpreprocessor"), QStringLiteral("-aux-info"),
        QStringLiteral("--serialize-diagnostics")};
    return options.contains(option);
}

// Options that only say how this one compilation runs or where its
// by-products go: left out without a word.
bool isMechanics(const QString& option)
{
    static const QSet<QString> options = {
        QStringLiteral("-c"), QStringLiteral("-MD"), QStringLiteral("-MMD"), QStringLiteral("-MP"),
        QStringLiteral("-M"), QStringLiteral("-MM"), QStringLiteral("-MG"),  QStringLiteral("-pipe"),
        QStringLiteral("--"), QStringLiteral("-MF"), QStringLiteral("-MT"),  QStringLiteral("-MQ")};
    return options.contains(option);
}

struct Options {
    QStringList includeDirectories;
    QStringList preprocessorOptions;
    QString object;
    QStringList leftOut;
};

// The options of one compiler command (its words after the compiler),
// paths taken against directory.
Options readOptions(const QStringList& words, const QString& directory, const QString& file)
{
    static const char* const includeOptions[] = {"-isystem", "-iquote", "-idirafter", "-I"};
    Options options;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words.at(i);
        const auto value = [&]() { return i + 1 < words.size() ? words.at(++i) : QString(); };
        bool done = false;
        for (const char* include : includeOptions) {
            const QLatin1String option(include);
            if (!word.startsWith(option))
                continue;
            const QString dir = word.size() == option.size() ? value() : word.mid(option.size());
            if (!dir.isEmpty())
                options.includeDirectories.append(cleanAgainst(directory, dir));
            done = true;
            break;
        }
        if (done)
            continue;
        if (word == QLatin1String("-D") || word == QLatin1String("-U")) {
            const QString macro = value();
            if (!macro.isEmpty())
                options.preprocessorOptions.append(word + macro);
        } else if ((word.startsWith(QLatin1String("-D")) || word.startsWith(QLatin1String("-U"))) ||
                   word.startsWith(QLatin1String("-std="))) {
            options.preprocessorOptions.append(word);
        } else if (word == QLatin1String("-include") || word == QLatin1String("-imacros")) {
            const QString forced = value();
            if (!forced.isEmpty())
                options.preprocessorOptions << word << cleanAgainst(directory, forced);
        } else if (word == QLatin1String("-o")) {
            options.object = cleanAgainst(directory, value());
        } else if (takesValue(word)) {
            const QString skipped = value();
            if (!isMechanics(word))
                options.leftOut.append(word + u' ' + skipped);
        } else if (isMechanics(word)) {
            continue;
        } else if (word.startsWith(u'-')) {
            options.leftOut.append(word);
        } else if (cleanAgainst(directory, word) != file) {
            options.leftOut.append(word);
        }
    }
    return options;
}

// --- link steps

bool isLibraryFile(const QString& path)
{
    static const QRegularExpression library(QStringLiteral("\\.(a|lib|dylib|dll|so(\\.\\d+)*)$"));
    return library.match(path).hasMatch();
}

bool isSharedLibraryName(const QString& name)
{
    static const QRegularExpression shared(QStringLiteral("\\.(dylib|dll|so(\\.\\d+)*)$"));
    return shared.match(name).hasMatch();
}

// What the words of a link tell about the libraries it uses, paths taken
// against directory. Objects and everything else are passed over.
struct LinkWords {
    QStringList libraries; // library files (absolute), "-l" words and "-pthread", in order
    QStringList directories; // "-L", absolute
};

void readLinkWords(const QStringList& words, const QString& directory, LinkWords& link)
{
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words.at(i);
        if (word == QLatin1String("-o") || word == QLatin1String("-Xlinker")) {
            ++i;
        } else if (word == QLatin1String("-L") && i + 1 < words.size()) {
            link.directories.append(cleanAgainst(directory, words.at(++i)));
        } else if (word.startsWith(QLatin1String("-L"))) {
            link.directories.append(cleanAgainst(directory, word.mid(2)));
        } else if (word == QLatin1String("-l") && i + 1 < words.size()) {
            link.libraries.append(QStringLiteral("-l") + words.at(++i));
        } else if ((word.startsWith(QLatin1String("-l")) && word.size() > 2) ||
                   word == QLatin1String("-pthread")) {
            link.libraries.append(word);
        } else if (!word.startsWith(u'-') && isLibraryFile(word)) {
            link.libraries.append(cleanAgainst(directory, word));
        }
    }
}

// A CMake link script: each line a command run in the target's build
// directory. The first one makes the target.
struct LinkStep {
    bool found = false;
    QAStCompilationDatabase::TargetKind kind = QAStCompilationDatabase::Application;
    QString output;
    LinkWords words;
};

QString programName(const QString& program)
{
    return QFileInfo(program).fileName();
}

LinkStep readLinkScript(const QString& script, const QString& directory)
{
    LinkStep step;
    QFile file(script);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return step;
    QStringList words;
    QTextStream in(&file);
    while (!in.atEnd() && words.isEmpty()) {
        if (!QAStCompilationDatabase::splitCommand(in.readLine(), &words))
            return step;
    }
    if (words.size() < 2)
        return step;
    static const QRegularExpression archiver(QStringLiteral("^(.*[-_])?ar(\\.exe)?$"));
    step.found = true;
    if (archiver.match(programName(words.first())).hasMatch()) {
        step.kind = QAStCompilationDatabase::StaticLibrary;
        if (words.size() > 2)
            step.output = cleanAgainst(directory, words.at(2));
        return step;
    }
    const bool shared =
        words.contains(QStringLiteral("-shared")) || words.contains(QStringLiteral("-dynamiclib"));
    step.kind = shared ? QAStCompilationDatabase::SharedLibrary : QAStCompilationDatabase::Application;
    const qsizetype o = words.indexOf(QStringLiteral("-o"));
    if (o >= 0 && o + 1 < words.size())
        step.output = cleanAgainst(directory, words.at(o + 1));
    readLinkWords(words.mid(1), directory, step.words);
    return step;
}

// --- build.ninja

// One "build" statement of a Ninja file: its outputs, rule, inputs and
// variables, paths as written (relative to the file's directory).
struct NinjaBuild {
    QStringList outputs;
    QString rule;
    QStringList inputs; // explicit and implicit
    QHash<QString, QString> variables;
};

// The pieces of a "build" line: paths unescaped ("$ ", "$:", "$$"), and
// the separators ":", "|", "||", "|@" as pieces of their own.
QStringList ninjaPieces(const QString& line)
{
    QStringList pieces;
    QString piece;
    bool open = false;
    const auto close = [&]() {
        if (open)
            pieces.append(piece);
        piece.clear();
        open = false;
    };
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == u'$' && i + 1 < line.size()) {
            piece += line.at(++i);
            open = true;
        } else if (c == u' ') {
            close();
        } else if (c == u':') {
            close();
            pieces.append(QStringLiteral(":"));
        } else {
            piece += c;
            open = true;
        }
    }
    close();
    return pieces;
}

QString ninjaValue(const QString& text)
{
    QString value;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'$' && i + 1 < text.size() &&
            (text.at(i + 1) == u'$' || text.at(i + 1) == u' ' || text.at(i + 1) == u':'))
            value += text.at(++i);
        else
            value += c;
    }
    return value;
}

// Whether a line ends with an escaping "$" (an odd run of them): the
// next line continues it.
bool continues(const QString& line)
{
    qsizetype dollars = 0;
    while (dollars < line.size() && line.at(line.size() - 1 - dollars) == u'$')
        ++dollars;
    return dollars % 2 == 1;
}

QList<NinjaBuild> readNinjaFile(const QString& path)
{
    QList<NinjaBuild> builds;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return builds;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    NinjaBuild* current = nullptr;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QString text = lines.at(i);
        while (continues(text) && i + 1 < lines.size()) {
            text.chop(1);
            const QString next = lines.at(++i);
            qsizetype blanks = 0;
            while (blanks < next.size() && next.at(blanks) == u' ')
                ++blanks;
            text += next.mid(blanks);
        }
        if (text.trimmed().isEmpty() || text.trimmed().startsWith(u'#'))
            continue;
        if (text.at(0) == u' ' || text.at(0) == u'\t') {
            const qsizetype equal = text.indexOf(u'=');
            if (current && equal > 0)
                current->variables.insert(text.left(equal).trimmed(),
                                          ninjaValue(text.mid(equal + 1).trimmed()));
            continue;
        }
        current = nullptr;
        if (!text.startsWith(QLatin1String("build ")))
            continue;
        const QStringList pieces = ninjaPieces(text.mid(6));
        const qsizetype colon = pieces.indexOf(QStringLiteral(":"));
        if (colon < 0 || colon + 1 >= pieces.size())
            continue;
        NinjaBuild build;
        for (qsizetype k = 0; k < colon && pieces.at(k) != QLatin1String("|"); ++k)
            build.outputs.append(pieces.at(k));
        build.rule = pieces.at(colon + 1);
        for (qsizetype k = colon + 2; k < pieces.size(); ++k) {
            const QString& piece = pieces.at(k);
            if (piece == QLatin1String("||") || piece == QLatin1String("|@"))
                break;
            if (piece != QLatin1String("|"))
                build.inputs.append(piece);
        }
        builds.append(build);
        current = &builds.last();
    }
    return builds;
}

LinkStep linkStepOfNinja(const NinjaBuild& build, const QString& directory)
{
    LinkStep step;
    step.found = true;
    const QString rule = build.rule.toUpper();
    const QString output = build.outputs.value(0);
    step.output = output.isEmpty() ? QString() : cleanAgainst(directory, output);
    if (rule.contains(QLatin1String("STATIC")))
        step.kind = QAStCompilationDatabase::StaticLibrary;
    else if (rule.contains(QLatin1String("SHARED")) || rule.contains(QLatin1String("MODULE")) ||
             isSharedLibraryName(QFileInfo(output).fileName()))
        step.kind = QAStCompilationDatabase::SharedLibrary;
    else
        step.kind = QAStCompilationDatabase::Application;
    if (step.kind == QAStCompilationDatabase::StaticLibrary)
        return step;
    QStringList words = build.inputs;
    for (const char* variable : {"LINK_LIBRARIES", "LINK_ARGS", "LINK_PATH"}) {
        QStringList split;
        if (QAStCompilationDatabase::splitCommand(build.variables.value(QLatin1String(variable)),
                                                  &split))
            words += split;
    }
    readLinkWords(words, directory, step.words);
    return step;
}

// --- targets

// The target an object belongs to, by the directories it lies in.
struct TargetKey {
    QAStCompilationDatabase::Writer writer = QAStCompilationDatabase::OtherWriter;
    QString name;
    QString directory; // CMake: the target's build directory
    QString output; // Meson: the target's output, absolute
};

TargetKey targetOfObject(const QString& object)
{
    static const QRegularExpression cmake(QStringLiteral("^(.*)/CMakeFiles/([^/]+)\\.dir/"));
    TargetKey key;
    if (object.isEmpty())
        return key;
    const QRegularExpressionMatch match = cmake.match(object);
    if (match.hasMatch()) {
        key.writer = QAStCompilationDatabase::CMake;
        key.name = match.captured(2);
        key.directory = match.captured(1);
        return key;
    }
    const QFileInfo info(object);
    const QString dir = info.path();
    if (dir.endsWith(QLatin1String(".p")) && dir.size() > 2) {
        key.writer = QAStCompilationDatabase::Meson;
        key.output = dir.chopped(2);
        key.name = QFileInfo(key.output).fileName();
    }
    return key;
}

// "libcalc.a" and "libcalc.so.1.2" give "calc"; "app" stays.
QString mesonTargetName(const QString& output)
{
    static const QRegularExpression extension(
        QStringLiteral("(\\.(a|lib|dylib|dll|exe|so(\\.\\d+)*))$"));
    QString name = output;
    name.remove(extension);
    if (name != output && name.startsWith(QLatin1String("lib")) && name.size() > 3)
        name.remove(0, 3);
    return name;
}

QString commonDirectory(const QStringList& files)
{
    QString common;
    for (const QString& file : files) {
        const QString dir = QFileInfo(file).path();
        if (common.isNull()) {
            common = dir;
            continue;
        }
        while (!(dir == common || dir.startsWith(common.endsWith(u'/') ? common : common + u'/'))) {
            const QString up = QFileInfo(common).path();
            if (up == common)
                break;
            common = up;
        }
    }
    return common;
}

} // namespace

class QAStCompilationDatabase::Private {
public:
    QString file;
    Writer writer = OtherWriter;
    QString sourceDirectory;
    QList<Target> targets;
    QStringList leftOut;

    bool readEntry(const QJsonValue& value, int number, QString* error);
    void findLinks();
    void orderTargets();

    // Targets by their key, in the order first met.
    QList<TargetKey> keys;
    QList<Target> found;
    QString buildDirectory;
};

QAStCompilationDatabase::QAStCompilationDatabase() : d(std::make_unique<Private>()) { }

QAStCompilationDatabase::~QAStCompilationDatabase() = default;

QString QAStCompilationDatabase::file() const
{
    return d->file;
}

QAStCompilationDatabase::Writer QAStCompilationDatabase::writer() const
{
    return d->writer;
}

QString QAStCompilationDatabase::sourceDirectory() const
{
    return d->sourceDirectory;
}

const QList<QAStCompilationDatabase::Target>& QAStCompilationDatabase::targets() const
{
    return d->targets;
}

QStringList QAStCompilationDatabase::leftOutOptions() const
{
    return d->leftOut;
}

bool QAStCompilationDatabase::read(const QString& path, QString* error)
{
    d = std::make_unique<Private>();
    d->file = QFileInfo(path).absoluteFilePath();
    d->buildDirectory = QFileInfo(d->file).absolutePath();
    const auto fail = [&](const QString& reason) {
        if (error)
            *error = boxText(d->file, reason);
        d = std::make_unique<Private>();
        return false;
    };
    QFile file(d->file);
    if (!file.open(QIODevice::ReadOnly))
        return fail(tr("Unable to read the compilation database: %1").arg(file.errorString()));
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(tr("Unable to read the compilation database: %1 at offset %2")
                        .arg(parseError.errorString())
                        .arg(parseError.offset));
    if (!document.isArray())
        return fail(tr("This is no compilation database: it holds no list of entries."));
    const QJsonArray entries = document.array();
    if (entries.isEmpty())
        return fail(tr("The compilation database has no entry."));
    QString reason;
    for (int i = 0; i < entries.size(); ++i) {
        if (!d->readEntry(entries.at(i), i + 1, &reason))
            return fail(reason);
    }
    d->findLinks();
    d->orderTargets();
    d->sourceDirectory = buildSystemSourceDirectory(d->buildDirectory);
    if (d->sourceDirectory.isEmpty()) {
        QStringList files;
        for (const Target& target : std::as_const(d->targets)) {
            for (const Source& source : target.sources)
                files.append(source.file);
        }
        d->sourceDirectory = commonDirectory(files);
    }
    // One target of no build system is named after the sources' tree.
    for (Target& target : d->targets) {
        if (target.name.isEmpty())
            target.name = QFileInfo(d->sourceDirectory).fileName();
        if (target.name.isEmpty())
            target.name = QStringLiteral("application");
    }
    return true;
}

bool QAStCompilationDatabase::Private::readEntry(const QJsonValue& value, int number, QString* error)
{
    const auto fail = [&](const QString& reason) {
        *error = tr("Entry %1 of the compilation database: %2").arg(number).arg(reason);
        return false;
    };
    if (!value.isObject())
        return fail(tr("it is no object."));
    const QJsonObject entry = value.toObject();
    const QString directoryText = entry.value(QLatin1String("directory")).toString();
    const QString fileText = entry.value(QLatin1String("file")).toString();
    if (directoryText.isEmpty())
        return fail(tr("it has no \"directory\"."));
    if (fileText.isEmpty())
        return fail(tr("it has no \"file\"."));
    QStringList words;
    if (entry.contains(QLatin1String("arguments"))) {
        const QJsonValue arguments = entry.value(QLatin1String("arguments"));
        if (!arguments.isArray())
            return fail(tr("its \"arguments\" are no list of texts."));
        for (const QJsonValue& word : arguments.toArray()) {
            if (!word.isString())
                return fail(tr("its \"arguments\" are no list of texts."));
            words.append(word.toString());
        }
    } else if (entry.contains(QLatin1String("command"))) {
        QString reason;
        if (!splitCommand(entry.value(QLatin1String("command")).toString(), &words, &reason))
            return fail(tr("its \"command\" cannot be read: %1").arg(reason));
    } else {
        return fail(tr("it has neither \"arguments\" nor \"command\"."));
    }
    if (words.isEmpty())
        return fail(tr("its command is empty."));

    // A compiler launcher stands before the compiler.
    static const QSet<QString> launchers = {QStringLiteral("ccache"), QStringLiteral("sccache"),
                                            QStringLiteral("distcc"), QStringLiteral("icecc")};
    if (words.size() > 1 && launchers.contains(programName(words.first())))
        words.removeFirst();

    const QString directory = cleanAgainst(buildDirectory, directoryText);
    Source source;
    source.file = cleanAgainst(directory, fileText);
    const Options options = readOptions(words.mid(1), directory, source.file);
    source.includeDirectories = options.includeDirectories;
    source.preprocessorOptions = options.preprocessorOptions;
    const QString output = entry.value(QLatin1String("output")).toString();
    source.object = output.isEmpty() ? options.object : cleanAgainst(directory, output);
    for (const QString& option : options.leftOut) {
        if (!leftOut.contains(option))
            leftOut.append(option);
    }

    TargetKey key = targetOfObject(source.object);
    if (key.writer != OtherWriter && writer == OtherWriter)
        writer = key.writer;
    qsizetype index = -1;
    for (qsizetype i = 0; i < keys.size() && index < 0; ++i) {
        const TargetKey& k = keys.at(i);
        if (k.writer == key.writer && k.name == key.name && k.directory == key.directory &&
            k.output == key.output)
            index = i;
    }
    if (index < 0) {
        keys.append(key);
        Target target;
        target.name = key.writer == Meson ? mesonTargetName(key.name) : key.name;
        found.append(target);
        index = found.size() - 1;
    }
    Target& target = found[index];
    const bool known = std::any_of(target.sources.cbegin(), target.sources.cend(),
                                   [&](const Source& s) { return s.file == source.file; });
    if (!known)
        target.sources.append(source);
    return true;
}

void QAStCompilationDatabase::Private::findLinks()
{
    // build.ninja, read when a target needs it: its statements and, for
    // each input, the first statement taking it that makes no object.
    QList<NinjaBuild> ninja;
    QHash<QString, qsizetype> statementTaking;
    bool ninjaRead = false;
    const auto readNinja = [&]() {
        ninja = readNinjaFile(buildDirectory + QStringLiteral("/build.ninja"));
        for (qsizetype i = 0; i < ninja.size(); ++i) {
            const NinjaBuild& build = ninja.at(i);
            if (build.outputs.isEmpty() || build.outputs.constFirst().endsWith(QLatin1String(".o")) ||
                build.outputs.constFirst().endsWith(QLatin1String(".obj")))
                continue;
            for (const QString& input : build.inputs) {
                const QString absolute = cleanAgainst(buildDirectory, input);
                if (!statementTaking.contains(absolute))
                    statementTaking.insert(absolute, i);
            }
        }
    };
    QList<LinkStep> steps;
    for (qsizetype i = 0; i < found.size(); ++i) {
        const TargetKey& key = keys.at(i);
        Target& target = found[i];
        LinkStep step;
        if (key.writer == CMake)
            step = readLinkScript(key.directory + QStringLiteral("/CMakeFiles/") + key.name +
                                      QStringLiteral(".dir/link.txt"),
                                  key.directory);
        if (!step.found && key.writer != OtherWriter) {
            if (!std::exchange(ninjaRead, true))
                readNinja();
            for (const Source& source : std::as_const(target.sources)) {
                const auto statement = statementTaking.constFind(source.object);
                if (statement != statementTaking.cend()) {
                    step = linkStepOfNinja(ninja.at(*statement), buildDirectory);
                    break;
                }
            }
        }
        if (!step.found && key.writer == Meson) {
            const QString name = QFileInfo(key.output).fileName();
            step.output = key.output;
            step.kind = isSharedLibraryName(name) ? SharedLibrary
                        : name.endsWith(QLatin1String(".a")) || name.endsWith(QLatin1String(".lib"))
                            ? StaticLibrary
                            : Application;
        }
        target.kind = step.kind;
        target.output = step.output;
        target.linkKnown = step.found;
        target.libraryDirectories = step.words.directories;
        steps.append(step);
    }
    // A library file of a link is a target's when its output is that file.
    QHash<QString, QString> targetOfOutput;
    for (const Target& target : std::as_const(found)) {
        if (!target.output.isEmpty() && target.kind != Application)
            targetOfOutput.insert(target.output, target.name);
    }
    for (qsizetype i = 0; i < found.size(); ++i) {
        Target& target = found[i];
        QStringList libraries;
        for (const QString& library : std::as_const(steps.at(i).words.libraries)) {
            const QString linked = targetOfOutput.value(library);
            if (!linked.isEmpty()) {
                if (linked != target.name && !target.links.contains(linked))
                    target.links.append(linked);
            } else if (!libraries.contains(library)) {
                libraries.append(library);
            }
        }
        target.libraries = libraries;
    }
}

void QAStCompilationDatabase::Private::orderTargets()
{
    // Depth first by links, so that a target follows what it links; a
    // cycle (libraries linking each other) is cut where it closes.
    QList<Target> ordered;
    QSet<QString> placed;
    QSet<QString> visiting;
    std::function<void(const Target&)> place = [&](const Target& target) {
        if (placed.contains(target.name) || visiting.contains(target.name))
            return;
        visiting.insert(target.name);
        for (const QString& linked : target.links) {
            const auto it = std::find_if(found.cbegin(), found.cend(),
                                         [&](const Target& t) { return t.name == linked; });
            if (it != found.cend())
                place(*it);
        }
        visiting.remove(target.name);
        placed.insert(target.name);
        ordered.append(target);
    };
    for (const Target& target : std::as_const(found))
        place(target);
    // Libraries link only libraries, so putting them first keeps the order.
    std::stable_partition(ordered.begin(), ordered.end(),
                          [](const Target& t) { return t.kind != Application; });
    targets = ordered;
    found.clear();
    keys.clear();
}

QString QAStCompilationDatabase::buildSystemSourceDirectory(const QString& buildDirectory)
{
    QFile cache(buildDirectory + QStringLiteral("/CMakeCache.txt"));
    if (cache.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&cache);
        const QLatin1String key("CMAKE_HOME_DIRECTORY:INTERNAL=");
        while (!in.atEnd()) {
            const QString line = in.readLine();
            if (line.startsWith(key))
                return QDir::cleanPath(line.mid(key.size()));
        }
    }
    QFile info(buildDirectory + QStringLiteral("/meson-info/meson-info.json"));
    if (info.open(QIODevice::ReadOnly)) {
        const QJsonObject directories = QJsonDocument::fromJson(info.readAll())
                                            .object()
                                            .value(QLatin1String("directories"))
                                            .toObject();
        const QString source = directories.value(QLatin1String("source")).toString();
        if (!source.isEmpty())
            return QDir::cleanPath(source);
    }
    return QString();
}

bool QAStCompilationDatabase::splitCommand(const QString& command, QStringList* words, QString* error)
{
    words->clear();
    QString word;
    bool inWord = false;
    enum { Plain, Single, Double } quote = Plain;
    for (qsizetype i = 0; i < command.size(); ++i) {
        const QChar c = command.at(i);
        switch (quote) {
        case Single:
            if (c == u'\'')
                quote = Plain;
            else
                word += c;
            break;
        case Double:
            if (c == u'"') {
                quote = Plain;
            } else if (c == u'\\' && i + 1 < command.size() &&
                       QStringLiteral("$`\"\\\n").contains(command.at(i + 1))) {
                if (command.at(++i) != u'\n')
                    word += command.at(i);
            } else {
                word += c;
            }
            break;
        case Plain:
            if (c == u' ' || c == u'\t' || c == u'\n') {
                if (inWord)
                    words->append(word);
                word.clear();
                inWord = false;
                break;
            }
            inWord = true;
            if (c == u'\'') {
                quote = Single;
            } else if (c == u'"') {
                quote = Double;
            } else if (c == u'\\' && i + 1 < command.size()) {
                if (command.at(++i) != u'\n')
                    word += command.at(i);
            } else {
                word += c;
            }
            break;
        }
    }
    if (quote != Plain) {
        if (error)
            *error = quote == Single ? tr("a single quote is not closed")
                                     : tr("a double quote is not closed");
        words->clear();
        return false;
    }
    if (inWord)
        words->append(word);
    return true;
}

QString QAStCompilationDatabase::joinCommand(const QStringList& words)
{
    static const QRegularExpression plain(QStringLiteral("^[\\w@%+=:,./-]+$"));
    QStringList quoted;
    for (const QString& word : words) {
        if (plain.match(word).hasMatch())
            quoted.append(word);
        else
            quoted.append(u'\'' + QString(word).replace(u'\'', QLatin1String("'\\''")) + u'\'');
    }
    return quoted.join(u' ');
}
