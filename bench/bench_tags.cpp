#include "Harness.h"

#include "QAStFile.h"
#include "QAStObjectManager.h"
#include "QAStProject.h"
#include "QAStTagFileReader.h"
#include "QATagFilter.h"
#include "QATagFilterExpr.h"
#include "QATagFilterExprGroup.h"
#include "QATagFiltersMgr.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr int Records = 1000000;

// The tag file of /usr/include: the tagging driver run once per process.
struct IncludeTags {
    QList<QByteArray> header;
    QList<QByteArray> records;
};

const IncludeTags& includeTags()
{
    static const IncludeTags tags = [] {
        IncludeTags made;
        QTemporaryDir dir;
        const QString once = dir.filePath(QStringLiteral("include.tags"));
        const QString driver = QStringLiteral(SDK110_INSTALL_TREE "/scripts/") +
            QLatin1String(QAStFile::taggingScript);
        QProcess run;
        run.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        run.start(QStringLiteral("perl"), {driver, once, QStringLiteral("/usr/include")});
        if (!run.waitForFinished(-1) || run.exitCode() != 0) {
            std::fprintf(stderr, "the tagging driver failed on /usr/include\n");
            return made;
        }
        QFile in(once);
        in.open(QIODevice::ReadOnly);
        for (const QByteArray& line : in.readAll().split('\n')) {
            if (line.startsWith("!_"))
                made.header.append(line);
            else if (!line.isEmpty())
                made.records.append(line);
        }
        return made;
    }();
    return tags;
}

// Writes the header and count records of /usr/include from first on,
// repeated as needed; the bytes written.
qint64 writeTagFile(const QString& path, int first, int count)
{
    const IncludeTags& tags = includeTags();
    QFile out(path);
    out.open(QIODevice::WriteOnly);
    for (const QByteArray& line : tags.header)
        out.write(line + '\n');
    for (int i = first; !tags.records.isEmpty() && i < first + count; ++i)
        out.write(tags.records.at(i % tags.records.size()) + '\n');
    return out.size();
}

// The benchmark's tag file: the records of /usr/include repeated until
// there are a million of them.
struct GeneratedTags {
    QTemporaryDir dir;
    QString path;
    qint64 bytes = 0;
    int sourceRecords = 0;
};

std::shared_ptr<GeneratedTags> generateTags()
{
    auto tags = std::make_shared<GeneratedTags>();
    tags->sourceRecords = int(includeTags().records.size());
    tags->path = tags->dir.filePath(QStringLiteral("million.tags"));
    tags->bytes = writeTagFile(tags->path, 0, Records);
    return tags;
}

// The file item the tags go below: a header, as most of /usr/include is.
std::unique_ptr<QAStFile> readIntoItems(const QString& path, int* made = nullptr)
{
    auto file = std::make_unique<QAStFile>(QStringLiteral("/usr/include/all.h"));
    QAStTagFileReader reader(file.get());
    reader.read(path);
    if (made)
        *made = reader.tagCount();
    return file;
}

// The baseline: the same bytes read and split into lines, nothing more.
qsizetype splitIntoLines(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray text = file.readAll();
    qsizetype lines = 0;
    for (const char* p = text.constData(), *end = p + text.size(); p < end; ++lines) {
        const void* newline = std::memchr(p, '\n', size_t(end - p));
        p = newline ? static_cast<const char*>(newline) + 1 : end;
    }
    return lines;
}

// The reading alone, and the reading with a walk of every tag (which
// makes them items), each in a fresh process for its peak memory.
const Bench::StepRegistrar readStep("tags-read", [](const QStringList& arguments) {
    Bench::keep(readIntoItems(arguments.value(0)).get());
});
const Bench::StepRegistrar walkStep("tags-walk", [](const QStringList& arguments) {
    const std::unique_ptr<QAStFile> file = readIntoItems(arguments.value(0));
    static qsizetype walked;
    walked = file->descendants().size();
    Bench::keep(&walked);
});

void printFigures(const GeneratedTags& tags)
{
    int made = 0;
    readIntoItems(tags.path, &made);
    const long kept = Bench::peakOfStepKiB(QStringLiteral("tags-read"), {tags.path});
    const long walked = Bench::peakOfStepKiB(QStringLiteral("tags-walk"), {tags.path});
    const auto perTag = [made](long kib) { return made > 0 ? double(kib) * 1024 / made : 0.0; };
    std::printf("  %d records (%d from /usr/include, repeated), %lld MB; %d tags made\n"
                "  peak memory of a fresh process: read %.0f bytes a tag (goal: 300 or"
                " fewer); read and walked (every tag an item) %.0f bytes a tag\n",
                Records, tags.sourceRecords, static_cast<long long>(tags.bytes >> 20), made,
                perTag(kept), perTag(walked));
    std::fflush(stdout);
}

}

SDK110_BENCHMARK(tagsRead, "tags: read 1,000,000 tag records against splitting the bytes into lines (goal 4x, 300 bytes a tag)")
{
    const std::shared_ptr<GeneratedTags> tags = generateTags();
    printFigures(*tags);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStTagFileReader::read into the tags of a file (kept as rows until walked), then their deletion");
    m.baseline = QStringLiteral("the same bytes read and split into lines");
    m.runSubject = [tags] { Bench::keep(readIntoItems(tags->path).get()); };
    m.runBaseline = [tags] {
        static qsizetype lines;
        lines = splitIntoLines(tags->path);
        Bench::keep(&lines);
    };
    m.target = 4.0;
    m.repetitions = 5;
    return m;
}

namespace {

constexpr int BrowserFiles = 100;
constexpr int BrowserTagsPerFile = 1000;

// A project of 100 files of 1,000 tags each, from /usr/include, shown by
// two browsers: one following tag filters, one showing everything.
struct BrowsedProject {
    QTemporaryDir dir;
    std::unique_ptr<QAStProject> project;
    QATagFiltersMgr filters;
};

QATagFilter* benchFilter(const QString& name, bool enabled,
                         const QList<QPair<quint32, QString>>& expressions, bool invert = false)
{
    auto* filter = new QATagFilter;
    filter->setFilterName(name);
    filter->setEnabled(enabled);
    auto* group = new QATagFilterExprGroup;
    group->setInvertFilter(invert);
    for (const auto& [type, text] : expressions)
        group->addExpr(new QATagFilterExpr(type, text, false));
    filter->addGroup(group);
    return filter;
}

int itemCount(const QTreeWidgetItem* item)
{
    int count = item->childCount();
    for (int i = 0; i < item->childCount(); ++i)
        count += itemCount(item->child(i));
    return count;
}

// few: functions of the string family and every structure, about 5 % of
// the tags; else also every tag outside a C source, that is all of them.
std::shared_ptr<BrowsedProject> browsedProject(bool few)
{
    auto browsed = std::make_shared<BrowsedProject>();
    browsed->project = std::make_unique<QAStProject>(QStringLiteral("browsed"), QPixmap());
    browsed->project->setPath(browsed->dir.filePath(QStringLiteral("browsed.rtp")));
    const QString chunk = browsed->dir.filePath(QStringLiteral("chunk.tags"));
    for (int f = 0; f < BrowserFiles; ++f) {
        writeTagFile(chunk, f * BrowserTagsPerFile, BrowserTagsPerFile);
        QAStFile* file = browsed->project->addFile(
            QStringLiteral("/usr/include/bench/part%1.h").arg(f, 3, 10, QLatin1Char('0')));
        QAStTagFileReader(file).read(chunk);
    }
    // Functions of the string family, every structure, a disabled filter.
    browsed->filters.addFilter(benchFilter(QStringLiteral("str functions"), true,
                                           {{QATagFilterExpr::Kind, QStringLiteral("function")},
                                            {QATagFilterExpr::Name, QStringLiteral("str*")}}));
    browsed->filters.addFilter(benchFilter(QStringLiteral("structures"), true,
                                           {{QATagFilterExpr::Kind, QStringLiteral("struct")}}));
    browsed->filters.addFilter(benchFilter(QStringLiteral("not C sources"), !few,
                                           {{QATagFilterExpr::File, QStringLiteral("*.c")}}, true));
    browsed->filters.addFilter(benchFilter(QStringLiteral("not used"), false,
                                           {{QATagFilterExpr::Name, QStringLiteral("*")}}));
    QAStObjectManager filtered(browsed->project.get());
    filtered.setTagFilters(&browsed->filters);
    QAStObjectManager plain(browsed->project.get());

    int tags = 0;
    for (QAStFile* file : browsed->project->files())
        tags += int(file->descendants().size());
    std::printf("  %d tags in %d files; items shown by file, by type, alphabetical:", tags,
                BrowserFiles);
    for (int mode = 0; mode < 3; ++mode) {
        filtered.sortModified(mode);
        plain.sortModified(mode);
        std::printf(" %d of %d%s", itemCount(filtered.invisibleRootItem()),
                    itemCount(plain.invisibleRootItem()), mode < 2 ? "," : "\n");
    }
    std::fflush(stdout);
    return browsed;
}

// A browser made for the run, with the tag filters or without, shown the
// project (its first layout), then its three layouts built one after the
// other. Each side makes its own, from the heap the last run left: two
// browsers kept from the start and rebuilt in turn made the one made first
// up to a third slower, whatever it showed.
void buildEveryLayout(BrowsedProject& browsed, bool filtered)
{
    QAStObjectManager browser(nullptr);
    if (filtered)
        browser.setTagFilters(&browsed.filters);
    browser.setProject(browsed.project.get());
    for (int mode = 0; mode < 3; ++mode)
        browser.sortModified(mode);
}

}

SDK110_BENCHMARK(tagsBrowserFiltered, "tags: browser of 100,000 tags following two tag filters against none (goal 1x)")
{
    const std::shared_ptr<BrowsedProject> browsed = browsedProject(true);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStObjectManager made with two enabled tag filters, its three layouts");
    m.baseline = QStringLiteral("the same made without filters: the three layouts of every tag");
    m.runSubject = [browsed] { buildEveryLayout(*browsed, true); };
    m.runBaseline = [browsed] { buildEveryLayout(*browsed, false); };
    m.target = 1.0;
    m.repetitions = 5;
    return m;
}

SDK110_BENCHMARK(tagsBrowserAllPass, "tags: browser of 100,000 tags, a tag filter every tag passes, against none (goal 1.25x)")
{
    const std::shared_ptr<BrowsedProject> browsed = browsedProject(false);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStObjectManager made with three enabled tag filters, one passing every tag, its three layouts");
    m.baseline = QStringLiteral("the same made without filters: the three layouts of every tag");
    m.runSubject = [browsed] { buildEveryLayout(*browsed, true); };
    m.runBaseline = [browsed] { buildEveryLayout(*browsed, false); };
    m.target = 1.25;
    m.repetitions = 5;
    return m;
}
