#include "QASTSplitSurvey.h"

#include "QAFileSurvey.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QtAlgorithms>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

// ---------------------------------------------------------------- outputs

QASTSplitOutputs::QASTSplitOutputs(int count) : m_buffers(size_t(count)), m_losses(size_t(count))
{
    for (int i = 0; i < count; ++i)
        m_paths.append(QString());
}

QASTSplitOutputs::~QASTSplitOutputs()
{
    flush();
}

void QASTSplitOutputs::setPath(int index, const QString& path)
{
    if (index == m_open) {
        m_file.close();
        m_open = -1;
    }
    m_paths[index] = path;
}

void QASTSplitOutputs::appendOverflow(Buffer& buffer, int index, const char* lines,
                                    qsizetype size)
{
    if (buffer.size + size > BufferSize) {
        write(index, buffer.data.get(), buffer.size);
        buffer.size = 0;
        if (size >= BufferSize) {
            write(index, lines, size);
            return;
        }
    }
    if (!buffer.data)
        buffer.data.reset(new char[BufferSize]);
    std::memcpy(buffer.data.get() + buffer.size, lines, size_t(size));
    buffer.size += size;
}

void QASTSplitOutputs::flush()
{
    for (size_t index = 0; index < m_buffers.size(); ++index) {
        Buffer& buffer = m_buffers[index];
        write(int(index), buffer.data.get(), buffer.size);
        buffer.size = 0;
    }
    m_file.close();
    m_open = -1;
}

void QASTSplitOutputs::write(int index, const char* data, qsizetype size)
{
    if (size == 0)
        return;
    if (index != m_open) {
        m_file.close();
        m_open = -1;
        m_file.setFileName(m_paths.at(index));
        if (!m_file.open(QIODevice::Append | QIODevice::Unbuffered)) {
            lose(index, data, size, m_file.errorString());
            return;
        }
        m_open = index;
    }
    const qint64 written = m_file.write(data, size);
    if (written != size) {
        const qsizetype kept = qMax<qint64>(written, 0);
        lose(index, data + kept, size - kept, m_file.errorString());
        m_file.close();
        m_open = -1;
    }
}

void QASTSplitOutputs::lose(int index, const char* data, qsizetype size, const QString& reason)
{
    Loss& loss = m_losses[size_t(index)];
    loss.lines += std::count(data, data + size, '\n');
    loss.reason = reason;
}

// ---------------------------------------------------------------- routing

namespace {

const char* const defaultNames[QASTSplitSurvey::OutputCount] = {
    "atlout.rio", "mendralt.tpf", "tallivexlt.tqf", "zeltacov.tio",
    "tracer.tdf", "atlendtest.txt", "atlout.rej"};

// The record codes of indexes 1 to 4.
const char* const recordCodes[] = {
    "",
    "PU PT PS PY PE PB PF PO PX",
    "QU QT QD QS QF",
    "NT DT CO FT DC TP TA TB TE EI",
    "SF CS CI LK ST NO NI DI ME MR MC SY SA AC LS LE TM TS TU OT US IN MS TX SO SI HS TI ID DB "
    "ED BA EA GL"};

// Set in a route for the pairs whose records may be stamped.
constexpr unsigned char MayStamp = 0x80;

bool isUpper(unsigned char c)
{
    return c >= 'A' && c <= 'Z';
}

// The routing rules, applied to the first two bytes of a line.
unsigned char routeOfPair(unsigned char first, unsigned char second)
{
    if (isUpper(first)) {
        if (!isUpper(second))
            return QASTSplitSurvey::Results;
        for (unsigned char index = 1; index < 5; ++index)
            for (const char* c = recordCodes[index]; *c; c += c[2] ? 3 : 2)
                if (c[0] == first && c[1] == second)
                    return index;
        return QASTSplitSurvey::Results;
    }
    if (first == 't' && second <= 'd')
        return QASTSplitSurvey::EndOfTest;
    return QASTSplitSurvey::Results;
}

// The route of every pair of bytes, built once for the whole process: the
// output index, with MayStamp for PT, QD and DT.
using RouteTable = std::array<unsigned char, 65536>;

RouteTable buildRouteTable()
{
    RouteTable table {};
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second)
            table[size_t(first << 8 | second)] = routeOfPair(first, second);
    for (const char* pair : {"PT", "QD", "DT"})
        table[size_t(pair[0] << 8 | pair[1])] |= MayStamp;
    return table;
}

const RouteTable& routeTable()
{
    static const RouteTable table = buildRouteTable();
    return table;
}

unsigned char routeOf(const RouteTable& table, const char* line, qsizetype length)
{
    const unsigned first = length > 0 ? static_cast<unsigned char>(line[0]) : 0;
    const unsigned second = length > 1 ? static_cast<unsigned char>(line[1]) : 0;
    return table[first << 8 | second];
}

#if defined(__SSE2__) && defined(__GNUC__)
// Clears the upper halves of the vector registers. Code run before (the C
// library, other libraries) may leave them in use; every SSE instruction
// then waits on them, which makes the split several times slower.
__attribute__((target("avx"))) void clearUpperHalves()
{
    _mm256_zeroupper();
}

void resetVectorState()
{
    static const bool avx = __builtin_cpu_supports("avx");
    if (avx)
        clearUpperHalves();
}
#else
void resetVectorState() {}
#endif

// Calls found(p) for every "\n" of [p, end), in order.
template <typename Found>
void forEachNewline(const char* p, const char* end, Found&& found)
{
#if defined(__SSE2__)
    const __m128i newline = _mm_set1_epi8('\n');
    for (; end - p >= 16; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        for (unsigned mask = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, newline))); mask;
             mask &= mask - 1)
            found(p + qCountTrailingZeroBits(mask));
    }
#endif
    while (const char* at = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)))) {
        found(at);
        p = at + 1;
    }
}

bool startsWith(const char* line, qsizetype length, const char* prefix)
{
    const qsizetype n = qsizetype(std::strlen(prefix));
    return length >= n && std::memcmp(line, prefix, size_t(n)) == 0;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Fields of [p, end): runs of non-blank bytes, or double-quoted strings
// in which a backslash escapes the next byte.
int fieldCount(const char* p, const char* end)
{
    int count = 0;
    for (;;) {
        while (p < end && isBlank(*p))
            ++p;
        if (p >= end)
            return count;
        ++count;
        if (*p == '"') {
            for (++p; p < end && *p != '"'; ++p)
                if (*p == '\\' && p + 1 < end)
                    ++p;
            ++p;
        } else {
            while (p < end && !isBlank(*p))
                ++p;
        }
    }
}

// The local time as ctime() writes it, without its "\n"; formatted once a
// second.
const QByteArray& currentTime()
{
    static const char* const days[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    static const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    thread_local std::time_t formattedSecond = -1;
    thread_local QByteArray formatted;
    const std::time_t second = std::time(nullptr);
    if (second != formattedSecond) {
        const QDateTime now = QDateTime::fromSecsSinceEpoch(qint64(second));
        const QDate date = now.date();
        const QTime time = now.time();
        char text[64];
        std::snprintf(text, sizeof text, "%s %s%3d %02d:%02d:%02d %d",
                      days[date.dayOfWeek() - 1], months[date.month() - 1], date.day(),
                      time.hour(), time.minute(), time.second(), date.year());
        formatted = text;
        formattedSecond = second;
    }
    return formatted;
}

// The line without its "\n" and a "\r" before it.
qsizetype contentLength(const char* line, qsizetype length)
{
    if (length > 0 && line[length - 1] == '\n')
        --length;
    if (length > 0 && line[length - 1] == '\r')
        --length;
    return length;
}

// Writes into stamped the record with the time, when the line is one the
// studio stamps; false otherwise.
bool stampRecord(int index, const char* line, qsizetype length, QByteArray& stamped)
{
    if (index == QASTSplitSurvey::MemoryProfile && startsWith(line, length, "PT ")) {
        stamped.clear();
        const qsizetype content = contentLength(line, length);
        if (fieldCount(line + 3, line + content) >= 3)
            stamped.append(line, content).append(" \"", 2);
        else
            stamped.append("PT \"\" \"", 7);
    } else if (index == QASTSplitSurvey::PerformanceProfile && startsWith(line, length, "QD ")) {
        stamped.clear();
        stamped.append("QD \"", 4);
    } else if (index == QASTSplitSurvey::Coverage && startsWith(line, length, "DT \"0\"")) {
        stamped.clear();
        stamped.append("DT \"", 4);
    } else {
        return false;
    }
    stamped.append(currentTime()).append("\"\n", 2);
    return true;
}

}

// ---------------------------------------------------------------- survey

QASTSplitSurvey::QASTSplitSurvey(const QString& input, const QString& tio, const QString& tdf,
                                 const QString& tpf, const QString& tqf, int delay,
                                 QObject* parent, const char* name)
    : QObject(parent),
      m_input(input),
      m_survey(new QAFileSurvey(input, delay, false, this, "qastsplit-survey"))
{
    if (name)
        setObjectName(QString::fromUtf8(name));
    const QDir dir = QFileInfo(input).absoluteDir();
    for (int index = 0; index < OutputCount; ++index)
        m_outputs.setPath(index, dir.filePath(defaultOutputName(index)));
    const QString explicitNames[] = {tio, tdf, tpf, tqf};
    const int explicitIndexes[] = {Coverage, Trace, MemoryProfile, PerformanceProfile};
    for (int i = 0; i < 4; ++i)
        if (!explicitNames[i].isEmpty())
            m_outputs.setPath(explicitIndexes[i], explicitNames[i]);

    connect(m_survey, &QAFileSurvey::newLines, this, &QASTSplitSurvey::splitLines);
    connect(m_survey, &QAFileSurvey::surveyDone, this, &QASTSplitSurvey::closeOutputFile);
    connect(m_survey, &QAFileSurvey::fileAppear, this, &QASTSplitSurvey::appeared);
    connect(m_survey, &QAFileSurvey::fileDisappear, this, &QASTSplitSurvey::disappeared);
    connect(m_survey, &QAFileSurvey::fileShrink, this, &QASTSplitSurvey::shrinked);
    connect(m_survey, &QAFileSurvey::fileModified, this, &QASTSplitSurvey::modified);
}

QASTSplitSurvey::~QASTSplitSurvey() = default;

void QASTSplitSurvey::setOutputFile(int index, const QString& path)
{
    if (index < 0 || index >= OutputCount)
        return;
    m_outputs.flush();
    m_outputs.setPath(index, path);
}

QString QASTSplitSurvey::defaultOutputName(int index)
{
    if (index < 0 || index >= OutputCount)
        return QString();
    return QString::fromLatin1(defaultNames[index]);
}

int QASTSplitSurvey::recordIndex(const char* line, qsizetype length)
{
    return routeOf(routeTable(), line, length) & ~MayStamp;
}

void QASTSplitSurvey::splitOneLine(const char* line)
{
    if (line)
        splitLine(line, qsizetype(std::strlen(line)));
}

void QASTSplitSurvey::appendLine(const char* line, int index)
{
    if (line)
        gather(line, qsizetype(std::strlen(line)), index);
}

void QASTSplitSurvey::closeOutputFile()
{
    m_outputs.flush();
}

void QASTSplitSurvey::splitExistingLines()
{
    m_survey->reset(true);
    m_survey->survey();
}

void QASTSplitSurvey::splitLines(const QByteArray& lines)
{
    // Consecutive lines for one file are gathered as one run.
    resetVectorState();
    const RouteTable& table = routeTable();
    const char* const end = lines.constData() + lines.size();
    const char* run = lines.constData();
    const char* line = run;
    int runIndex = Results;
    const auto take = [&](const char* next) {
        const unsigned char route = routeOf(table, line, next - line);
        const int index = route & ~MayStamp;
        if (index != runIndex) {
            m_outputs.append(runIndex, run, line - run);
            run = line;
            runIndex = index;
        }
        if ((route & MayStamp) && stampRecord(index, line, next - line, m_stamped)) {
            m_outputs.append(runIndex, run, line - run);
            m_outputs.append(index, m_stamped.constData(), m_stamped.size());
            run = next;
        }
        line = next;
    };
    forEachNewline(line, end, [&](const char* newline) { take(newline + 1); });
    if (line < end)
        take(end);
    m_outputs.append(runIndex, run, end - run);
}

void QASTSplitSurvey::splitLine(const char* line, qsizetype length)
{
    const int index = recordIndex(line, length);
    if (stampRecord(index, line, length, m_stamped))
        gather(m_stamped.constData(), m_stamped.size(), index);
    else
        gather(line, length, index);
}

void QASTSplitSurvey::gather(const char* line, qsizetype length, int index)
{
    if (index < Results || index > EndOfTest) {
        index = Rejected;
        reportRejected();
    }
    m_outputs.append(index, line, length);
    if (length == 0 || line[length - 1] != '\n')
        m_outputs.append(index, "\n", 1);
}

void QASTSplitSurvey::reportRejected()
{
    if (m_rejectedReported)
        return;
    m_rejectedReported = true;
    QAHost::displayMessage(
        m_console,
        QATr::engine("Some lines have not been recognized during the split (file %1 contains the "
                   "rejected lines)")
            .arg(m_outputs.path(Rejected)));
}

bool QASTSplitSurvey::splitFile(const QString& input, const QString& outputDir, QString* error)
{
    QFile probe(input);
    if (!probe.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QATr::engine("Cannot read %1: %2").arg(input, probe.errorString());
        return false;
    }
    probe.close();
    if (!QDir().mkpath(outputDir)) {
        if (error)
            *error = QATr::engine("Cannot make the directory %1").arg(outputDir);
        return false;
    }
    QASTSplitSurvey split(input);
    const QDir dir(outputDir);
    for (int index = 0; index < OutputCount; ++index) {
        const QString path = dir.filePath(defaultOutputName(index));
        if (QFileInfo(path) == QFileInfo(input)) {
            if (error)
                *error = QATr::engine("Cannot split %1 into itself").arg(input);
            return false;
        }
        split.m_outputs.setPath(index, path);
    }
    for (int index = 0; index < OutputCount; ++index)
        QFile::remove(split.m_outputs.path(index));
    split.m_survey->reset(true);
    split.m_survey->finish();
    split.closeOutputFile();
    const QStringList losses = split.losses();
    if (!losses.isEmpty() && error)
        *error = losses.join(QLatin1Char('\n'));
    return losses.isEmpty();
}

QStringList QASTSplitSurvey::losses() const
{
    QStringList texts;
    for (int index = 0; index < OutputCount; ++index) {
        if (const qint64 lines = lostLines(index)) {
            texts << QCoreApplication::translate("QASTSplitSurvey",
                                                 "%n line(s) could not be written to %1: %2",
                                                 nullptr, int(lines))
                         .arg(outputFile(index), lostReason(index));
        }
    }
    return texts;
}
