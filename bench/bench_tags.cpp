#include "Harness.h"

#include "QAStFile.h"
#include "QAStTagFileReader.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

#include <malloc.h>

namespace {

constexpr int Records = 1000000;

// The benchmark's tag file: the tagging driver run once over /usr/include,
// its records repeated until there are a million of them.
struct GeneratedTags {
    QTemporaryDir dir;
    QString path;
    qint64 bytes = 0;
    int sourceRecords = 0;
};

std::shared_ptr<GeneratedTags> generateTags()
{
    auto tags = std::make_shared<GeneratedTags>();
    const QString once = tags->dir.filePath(QStringLiteral("include.tags"));
    const QString driver = QStringLiteral(SDK110_INSTALL_TREE "/scripts/") +
        QLatin1String(QAStFile::taggingScript);
    QProcess run;
    run.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    run.start(QStringLiteral("perl"), {driver, once, QStringLiteral("/usr/include")});
    if (!run.waitForFinished(-1) || run.exitCode() != 0) {
        std::fprintf(stderr, "the tagging driver failed on /usr/include\n");
        return tags;
    }
    QFile in(once);
    in.open(QIODevice::ReadOnly);
    QList<QByteArray> header, records;
    for (const QByteArray& line : in.readAll().split('\n')) {
        if (line.startsWith("!_"))
            header.append(line);
        else if (!line.isEmpty())
            records.append(line);
    }
    tags->sourceRecords = int(records.size());
    tags->path = tags->dir.filePath(QStringLiteral("million.tags"));
    QFile out(tags->path);
    out.open(QIODevice::WriteOnly);
    for (const QByteArray& line : header)
        out.write(line + '\n');
    for (int i = 0; !records.isEmpty() && i < Records; ++i)
        out.write(records.at(i % records.size()) + '\n');
    tags->bytes = out.size();
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

// The baseline: the same lines read and split into their fields.
qsizetype splitIntoFields(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray text = file.readAll();
    qsizetype fields = 0;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf('\n', start);
        if (end < 0)
            end = text.size();
        const QStringList parts =
            QString::fromUtf8(text.constData() + start, end - start).split(QLatin1Char('\t'));
        fields += parts.size();
        start = end + 1;
    }
    return fields;
}

size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void printFigures(const GeneratedTags& tags)
{
    ::malloc_trim(0);
    const size_t before = heapInUse();
    int made = 0;
    std::unique_ptr<QAStFile> file = readIntoItems(tags.path, &made);
    const size_t after = heapInUse();
    std::printf("  %d records (%d from /usr/include, repeated), %lld MB; %d tags made,"
                " %.0f bytes of memory per tag\n",
                Records, tags.sourceRecords, static_cast<long long>(tags.bytes >> 20), made,
                made > 0 ? double(after - before) / made : 0.0);
    std::fflush(stdout);
}

}

SDK110_BENCHMARK(tagsRead, "tags: read 1,000,000 tag records into tag items")
{
    const std::shared_ptr<GeneratedTags> tags = generateTags();
    printFigures(*tags);

    Bench::Measure m;
    m.subject = QStringLiteral("QAStTagFileReader::read into tags below a file, then their deletion");
    m.baseline = QStringLiteral("the same lines read, decoded and split into their fields");
    m.runSubject = [tags] { Bench::keep(readIntoItems(tags->path).get()); };
    m.runBaseline = [tags] {
        static qsizetype fields;
        fields = splitIntoFields(tags->path);
        Bench::keep(&fields);
    };
    m.target = 4.0;
    m.repetitions = 5;
    return m;
}
