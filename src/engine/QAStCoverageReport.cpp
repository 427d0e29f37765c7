#include "QAStCoverageReport.h"

#include "QAFileBytes.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QIODevice>
#include <QMap>
#include <QSysInfo>
#include <QtAlgorithms>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>

namespace {

constexpr int code(char a, char b)
{
    return (int(static_cast<unsigned char>(a)) << 8) | int(static_cast<unsigned char>(b));
}

// A cursor over the fields of one record line, [p, end).
struct Fields {
    const char* p;
    const char* end;

    bool blank()
    {
        if (p == end || (*p != ' ' && *p != '\t'))
            return false;
        while (p != end && (*p == ' ' || *p == '\t'))
            ++p;
        return true;
    }

    // A decimal number of at most 18 digits.
    bool number(qint64* value)
    {
        if (!blank() || p == end || *p < '0' || *p > '9')
            return false;
        qint64 v = 0;
        int digits = 0;
        while (p != end && *p >= '0' && *p <= '9') {
            if (++digits > 18)
                return false;
            v = v * 10 + (*p++ - '0');
        }
        if (p != end && *p != ' ' && *p != '\t')
            return false;
        *value = v;
        return true;
    }

    bool lineNumber(int* value)
    {
        qint64 v = 0;
        if (!number(&v) || v > INT_MAX)
            return false;
        *value = int(v);
        return true;
    }

    // A number, or "-" for none (-1).
    bool countOrDash(qint64* value)
    {
        const char* q = p;
        while (q != end && (*q == ' ' || *q == '\t'))
            ++q;
        if (q != p && q != end && *q == '-' && (q + 1 == end || q[1] == ' ' || q[1] == '\t')) {
            p = q + 1;
            *value = -1;
            return true;
        }
        return number(value);
    }

    // A word of anything but blanks (an address).
    bool word()
    {
        if (!blank() || p == end)
            return false;
        while (p != end && *p != ' ' && *p != '\t')
            ++p;
        return true;
    }

    // A double-quoted text; a backslash escapes the next byte, "\t", "\r",
    // "\n" and "\xHH" as the drivers and the runtime write them.
    bool text(QByteArray* value)
    {
        if (!blank() || p == end || *p != '"')
            return false;
        const char* start = ++p;
        bool escaped = false;
        while (p != end && *p != '"') {
            if (*p == '\\') {
                escaped = true;
                if (++p == end)
                    return false;
            }
            ++p;
        }
        if (p == end)
            return false;
        const char* stop = p++;
        if (!escaped) {
            *value = QByteArray(start, stop - start);
            return true;
        }
        QByteArray out;
        out.reserve(stop - start);
        for (const char* q = start; q < stop; ++q) {
            if (*q != '\\') {
                out.append(*q);
                continue;
            }
            const char c = *++q;
            if (c == 't')
                out.append('\t');
            else if (c == 'r')
                out.append('\r');
            else if (c == 'n')
                out.append('\n');
            else if (c == 'x' && stop - q > 2 && std::isxdigit(static_cast<unsigned char>(q[1])) &&
                     std::isxdigit(static_cast<unsigned char>(q[2]))) {
                out.append(char(QByteArray(q + 1, 2).toInt(nullptr, 16)));
                q += 2;
            } else
                out.append(c);
        }
        *value = out;
        return true;
    }
};

QString displayed(const QByteArray& line)
{
    QByteArray shown = line.left(60);
    for (char& c : shown)
        if (static_cast<unsigned char>(c) < 0x20)
            c = ' ';
    return QString::fromUtf8(shown) + (line.size() > 60 ? QStringLiteral("...") : QString());
}

} // namespace

// --- counts

void QAStCoverageReport::Counts::add(const Counts& o)
{
    lines += o.lines;
    linesHit += o.linesHit;
    branches += o.branches;
    branchesHit += o.branchesHit;
    functions += o.functions;
    functionsHit += o.functionsHit;
}

bool QAStCoverageReport::Counts::operator==(const Counts& o) const
{
    return lines == o.lines && linesHit == o.linesHit && branches == o.branches && branchesHit == o.branchesHit &&
           functions == o.functions && functionsHit == o.functionsHit;
}

qint64 QAStCoverageReport::File::lineCount(int number) const
{
    const auto it = std::lower_bound(lines.begin(), lines.end(), number,
                                     [](const Line& l, int n) { return l.number < n; });
    return it != lines.end() && it->number == number ? it->count : -1;
}

QString QAStCoverageReport::percent(qint64 hit, qint64 total)
{
    if (total <= 0)
        return QStringLiteral("-");
    return QString::number(100.0 * double(hit) / double(total), 'f', 1);
}

// --- reading

// The state of one reading: the run, the file the records are about, the
// places of files and runtime functions by name.
class QAStCoverageReport::Reader {
public:
    Reader(QAStCoverageReport& report, const QString& name) : r(report), m_name(name) {}

    static constexpr qint64 QuickMargin = 32;

    // Reads the record at begin; returns the place after its newline, or
    // null when [begin, end) holds no whole line. The lines and branches
    // of the current file, most of a file, are read straight; any other
    // line is found whole first.
    const char* next(const char* begin, const char* end)
    {
        if (m_lines && end - begin >= QuickMargin && begin[0] == 'T' && begin[2] == ' ') {
            const char* after = begin[1] == 'A'   ? quickLine(begin + 3)
                                : begin[1] == 'B' ? quickBranch(begin + 3)
                                                  : nullptr;
            if (after) {
                ++m_number;
                return after;
            }
        }
        const char* nl = static_cast<const char*>(std::memchr(begin, '\n', size_t(end - begin)));
        if (!nl)
            return nullptr;
        ++m_number;
        line(begin, nl);
        return nl + 1;
    }

    void line(const char* begin, const char* end)
    {
        if (end != begin && end[-1] == '\r')
            --end;
        if (end - begin < 2 || (end - begin > 2 && begin[2] != ' ' && begin[2] != '\t'))
            return skip(begin, end, "no record");
        const int recordCode = code(begin[0], begin[1]);
        Fields f{begin + 2, end};
        if (recordCode == code('N', 'T'))
            return run(f, begin, end);
        if (m_foreign)
            return skipForeign();
        bool ok = false;
        qint64 reached = 0;
        switch (recordCode) {
        case code('T', 'A'):
            ok = lineRecord(f);
            break;
        case code('T', 'B'):
            ok = branchRecord(f);
            break;
        case code('T', 'P'):
            ok = functionRecord(f);
            break;
        case code('D', 'C'):
            ok = fileRecord(f);
            break;
        case code('F', 'T'):
            ok = enteredRecord(f);
            break;
        case code('C', 'O'):
            ok = callsRecord(f);
            break;
        case code('T', 'E'):
            ok = f.number(&reached);
            m_runtimeEnded = ok;
            break;
        case code('E', 'I'):
            ok = endRecord(f);
            break;
        case code('D', 'T'):
            ok = true;
            break;
        default:
            return skip(begin, end, "unknown record");
        }
        if (!ok)
            skip(begin, end, m_noFile ? "a record before the file it is about (DC)" : "malformed record");
        m_noFile = false;
    }

    void finish(const char* partial, qint64 size)
    {
        if (size > 0) {
            ++m_number;
            fault(QStringLiteral("the last line has no end of line, the file was cut short: \"%1\"")
                      .arg(displayed(QByteArray(partial, int(qMin<qint64>(size, 80))))));
            ++r.m_skipped;
        }
        finishCurrent();
        r.m_hasLineCoverage = !r.m_files.empty() || m_gcovEnded;
        r.m_complete = r.m_hasLineCoverage ? m_gcovEnded : m_runtimeEnded;
        r.finish();
        if (m_gcovEnded) {
            if (qint64(r.m_files.size()) != m_expectedFiles || !(r.m_totals == m_expected)) {
                m_number = m_endLine;
                fault(QStringLiteral("the totals of the end record differ from the records read: "
                                     "some are missing"));
                r.m_complete = false;
            }
        }
    }

private:
    void fault(const QString& what)
    {
        if (r.m_faults.size() < MaxFaults)
            r.m_faults.append(QStringLiteral("%1:%2: %3").arg(m_name).arg(m_number).arg(what));
    }

    void skip(const char* begin, const char* end, const char* why)
    {
        ++r.m_skipped;
        if (r.m_faults.size() < MaxFaults)
            fault(QStringLiteral("%1 skipped: \"%2\"")
                      .arg(QLatin1String(why), displayed(QByteArray(begin, int(qMin<qint64>(end - begin, 80))))));
    }

    void skipForeign() { ++r.m_skipped; }

    void run(Fields& f, const char* begin, const char* end)
    {
        QByteArray program;
        qint64 pid = 0;
        if (!f.text(&program) || !f.number(&pid)) {
            if (m_foreign)
                return skipForeign();
            return skip(begin, end, "malformed record");
        }
        if (!m_runSeen) {
            m_runSeen = true;
            r.m_program = program;
            r.m_pid = pid;
            return;
        }
        const bool own = program == r.m_program && pid == r.m_pid;
        if (own == !m_foreign)
            return;
        m_foreign = !own;
        if (m_foreign) {
            ++r.m_skipped;
            fault(QStringLiteral("the records of another run (%1, process %2) are skipped")
                      .arg(QString::fromUtf8(program)).arg(pid));
        }
    }

    File* current()
    {
        if (m_file < 0) {
            m_noFile = true;
            return nullptr;
        }
        return &r.m_files[size_t(m_file)];
    }

    bool fileRecord(Fields& f)
    {
        QByteArray path;
        if (!f.text(&path) || path.isEmpty())
            return false;
        finishCurrent();
        const auto known = m_filesByPath.constFind(path);
        if (known != m_filesByPath.constEnd()) {
            m_file = known.value();
        } else {
            m_file = int(r.m_files.size());
            m_filesByPath.insert(path, m_file);
            // Files of a run are much alike: room for as many records as
            // the last one had spares most regrowing.
            const size_t lines = r.m_files.empty() ? 0 : r.m_files.back().lines.size();
            const size_t branches = r.m_files.empty() ? 0 : r.m_files.back().branches.size();
            const size_t functions = r.m_files.empty() ? 0 : r.m_files.back().functions.size();
            r.m_files.emplace_back();
            r.m_files.back().path = QDir::cleanPath(QString::fromUtf8(path));
            r.m_files.back().lines.reserve(lines);
            r.m_files.back().branches.reserve(branches);
            r.m_files.back().functions.reserve(functions);
        }
        m_lines = &r.m_files[size_t(m_file)].lines;
        m_branches = &r.m_files[size_t(m_file)].branches;
        m_functions = &r.m_files[size_t(m_file)].functions;
        // A file named again is put in order and counted anew at its end.
        m_tally = Tally();
        m_tally.ordered = m_lines->empty() && m_branches->empty();
        m_tally.functionsCounted = m_tally.ordered && m_functions->empty();
        return true;
    }

    void finishCurrent()
    {
        if (m_file >= 0)
            r.finishFile(r.m_files[size_t(m_file)], m_tally.ordered ? &m_tally : nullptr);
    }

    // Each line and branch goes to the current file, counted on its way
    // while they come in order.
    // Each line and branch goes to the current file, counted on its way,
    // with the function it lies in, while they come in order after the
    // functions of the file, which do not overlap.
    void addLine(int number, qint64 count)
    {
        Tally& t = m_tally;
        t.ordered = t.ordered && number > t.lastLine;
        t.lastLine = number;
        t.counts.linesHit += count > 0;
        if (t.functionsCounted) {
            Function* f = inFunction(&t.lineFunction, number);
            if (f) {
                ++f->counts.lines;
                f->counts.linesHit += count > 0;
            }
        }
        // Field by field: a whole record built apart and copied in would
        // wait for its two halves at every line.
        Line& line = m_lines->emplace_back();
        line.number = number;
        line.count = count;
    }

    void addBranch(int line, int branch, qint64 taken)
    {
        Tally& t = m_tally;
        t.ordered = t.ordered && (line > t.lastBranchLine || (line == t.lastBranchLine && branch > t.lastBranch));
        t.lastBranchLine = line;
        t.lastBranch = branch;
        t.counts.branchesHit += taken > 0;
        if (t.functionsCounted) {
            Function* f = inFunction(&t.branchFunction, line);
            if (f) {
                ++f->counts.branches;
                f->counts.branchesHit += taken > 0;
            }
        }
        Branch& added = m_branches->emplace_back();
        added.line = line;
        added.branch = branch;
        added.taken = taken;
    }

    // The function of the current file that holds line, its index in
    // *cursor moved on past the functions that end before it.
    Function* inFunction(size_t* cursor, int line)
    {
        std::vector<Function>& functions = *m_functions;
        while (*cursor < functions.size() && functions[*cursor].endLine < line)
            ++*cursor;
        return *cursor < functions.size() && functions[*cursor].startLine <= line ? &functions[*cursor] : nullptr;
    }

    // The quick reading of lines and branches takes the 16 bytes after the
    // code at once: where the bytes that are no digits lie tells where each
    // number ends, without a branch per digit and without waiting for one
    // number to find the next. It reads at most 21 bytes of a record, so it
    // is used while QuickMargin bytes are left, and no byte is checked
    // against the end. Whatever does not fit (a number of more than 8 digits, a record
    // longer than 16 bytes, blanks or fields more than these) goes the
    // general way.

    // One bit per byte of the 16 at p that is no digit.
    static unsigned nonDigits(const char* p)
    {
        quint64 words[2];
        std::memcpy(words, p, 16);
        unsigned mask = 0;
        for (int k = 0; k < 2; ++k) {
            const quint64 w = words[k];
            const quint64 x = w & 0x7F7F7F7F7F7F7F7Full;
            // High bit of each byte: from '0' on, and from past '9' on; no
            // carry crosses a byte.
            const quint64 digit = (x + 0x5050505050505050ull) & ~(x + 0x4646464646464646ull) & ~w &
                                  0x8080808080808080ull;
            const quint64 other = ~digit & 0x8080808080808080ull;
            mask |= unsigned(((other >> 7) * 0x0102040810204080ull) >> 56) << (8 * k);
        }
        return mask;
    }

    // The value of the n digits at q, 1 <= n <= 8.
    static qint64 value(const char* q, int n)
    {
        if (n <= 4) {
            quint32 y;
            std::memcpy(&y, q, 4);
            y = (y - 0x30303030u) << (8 * (4 - n));
            y = ((y & 0x0F0F0F0Fu) * 2561) >> 8;
            y = ((y & 0x00FF00FFu) * 6553601) >> 16;
            return qint64(y);
        }
        quint64 x;
        std::memcpy(&x, q, 8);
        x = (x - 0x3030303030303030ull) << (8 * (8 - n));
        x = ((x & 0x0F0F0F0F0F0F0F0Full) * 2561) >> 8;
        x = ((x & 0x00FF00FF00FF00FFull) * 6553601) >> 16;
        x = ((x & 0x0000FFFF0000FFFFull) * 42949672960001ull) >> 32;
        return qint64(x);
    }

    // The place after the newline at p ("\n" or "\r\n"), or null.
    static const char* newline(const char* p)
    {
        if (*p == '\r')
            ++p;
        return *p == '\n' ? p + 1 : nullptr;
    }

    static int lowest(unsigned mask) { return qCountTrailingZeroBits(mask); }

    // "<line> <count>\n" after "TA ", in the run's own records.
    const char* quickLine(const char* p)
    {
        if constexpr (QSysInfo::ByteOrder != QSysInfo::LittleEndian)
            return nullptr;
        unsigned mask = nonDigits(p);
        const int blank = lowest(mask);
        mask &= mask - 1;
        const int stop = mask ? lowest(mask) : 16;
        if (m_foreign || blank == 0 || blank > 8 || p[blank] != ' ' || stop == blank + 1 || stop > blank + 9 ||
            stop == 16)
            return nullptr;
        const char* after = newline(p + stop);
        if (!after)
            return nullptr;
        addLine(int(value(p, blank)), value(p + blank + 1, stop - blank - 1));
        return after;
    }

    // "<line> <branch> <taken>|-\n" after "TB ".
    const char* quickBranch(const char* p)
    {
        if constexpr (QSysInfo::ByteOrder != QSysInfo::LittleEndian)
            return nullptr;
        unsigned mask = nonDigits(p);
        const int first = lowest(mask);
        mask &= mask - 1;
        const int second = mask ? lowest(mask) : 16;
        mask &= mask - 1;
        const int third = mask ? lowest(mask) : 16;
        if (m_foreign || first == 0 || first > 8 || p[first] != ' ' || second == first + 1 || second > first + 9 ||
            second > 14 || p[second] != ' ')
            return nullptr;
        qint64 taken = -1;
        const char* after = nullptr;
        if (third == second + 1) {
            if (p[third] != '-')
                return nullptr;
            after = newline(p + third + 1);
        } else if (third <= second + 9 && third < 16) {
            taken = value(p + second + 1, third - second - 1);
            after = newline(p + third);
        }
        if (!after)
            return nullptr;
        addBranch(int(value(p, first)), int(value(p + first + 1, second - first - 1)), taken);
        return after;
    }

    bool lineRecord(Fields& f)
    {
        int number = 0;
        qint64 count = 0;
        if (!f.lineNumber(&number) || !f.number(&count))
            return false;
        File* file = current();
        if (!file)
            return false;
        addLine(number, count);
        return true;
    }

    bool branchRecord(Fields& f)
    {
        int line = 0, branch = 0;
        qint64 taken = 0;
        if (!f.lineNumber(&line) || !f.lineNumber(&branch) || !f.countOrDash(&taken))
            return false;
        File* file = current();
        if (!file)
            return false;
        addBranch(line, branch, taken);
        return true;
    }

    bool functionRecord(Fields& f)
    {
        Function function;
        qint64 calls = 0;
        if (!f.text(&function.name) || !f.lineNumber(&function.startLine) || !f.lineNumber(&function.endLine) ||
            !f.number(&calls))
            return false;
        File* file = current();
        if (!file)
            return false;
        function.calls = calls;
        Tally& t = m_tally;
        t.functionsCounted = t.functionsCounted && t.lastLine == INT_MIN && t.lastBranchLine == INT_MIN &&
                             function.startLine <= function.endLine &&
                             (file->functions.empty() || function.startLine > file->functions.back().endLine);
        file->functions.push_back(std::move(function));
        return true;
    }

    bool enteredRecord(Fields& f)
    {
        QByteArray name;
        if (!f.text(&name) || !f.word())
            return false;
        runtimeFunction(name);
        return true;
    }

    bool callsRecord(Fields& f)
    {
        QByteArray name;
        qint64 calls = 0;
        if (!f.text(&name) || !f.number(&calls))
            return false;
        runtimeFunction(name)->calls = calls;
        return true;
    }

    RuntimeFunction* runtimeFunction(const QByteArray& name)
    {
        const auto known = m_runtimeByName.constFind(name);
        if (known != m_runtimeByName.constEnd())
            return &r.m_runtime[size_t(known.value())];
        m_runtimeByName.insert(name, int(r.m_runtime.size()));
        r.m_runtime.push_back({name, 0});
        return &r.m_runtime.back();
    }

    bool endRecord(Fields& f)
    {
        Counts& e = m_expected;
        if (!f.number(&m_expectedFiles) || !f.number(&e.lines) || !f.number(&e.linesHit) || !f.number(&e.branches) ||
            !f.number(&e.branchesHit) || !f.number(&e.functions) || !f.number(&e.functionsHit))
            return false;
        m_gcovEnded = true;
        m_endLine = m_number;
        return true;
    }

    QAStCoverageReport& r;
    QString m_name;
    qint64 m_number = 0;
    bool m_runSeen = false;
    bool m_foreign = false;
    bool m_noFile = false;
    int m_file = -1;
    std::vector<Line>* m_lines = nullptr;
    std::vector<Branch>* m_branches = nullptr;
    std::vector<Function>* m_functions = nullptr;
    Tally m_tally;
    QHash<QByteArray, int> m_filesByPath;
    QHash<QByteArray, int> m_runtimeByName;
    bool m_runtimeEnded = false;
    bool m_gcovEnded = false;
    qint64 m_expectedFiles = 0;
    qint64 m_endLine = 0;
    Counts m_expected;
};

void QAStCoverageReport::clear()
{
    *this = QAStCoverageReport();
}

bool QAStCoverageReport::read(const QString& path)
{
    clear();
    // Mapped from the first byte: no copy of the records.
    const QAFileBytes bytes(path, 1);
    if (!bytes.isValid()) {
        m_error = bytes.errorString();
        return false;
    }
    read(bytes.data(), bytes.size(), path);
    return true;
}

void QAStCoverageReport::read(const char* begin, qsizetype size, const QString& name)
{
    Reader reader(*this, name);
    const char* end = begin + size;
    for (const char* after; (after = reader.next(begin, end));)
        begin = after;
    reader.finish(begin, end - begin);
}

void QAStCoverageReport::readData(const QByteArray& data, const QString& name)
{
    clear();
    read(data.constData(), data.size(), name);
}

// Puts a file's records in order, one per line, branch and function
// (counts of repeated ones summed), then counts them. Called as soon as the
// records of a file end, while they are still in the cache.
void QAStCoverageReport::finishFile(File& file, const Tally* tally)
{
    auto& lines = file.lines;
    Counts& c = file.counts;
    c = Counts();
    if (tally) {
        c.linesHit = tally->counts.linesHit;
        c.branchesHit = tally->counts.branchesHit;
    } else {
        std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.number < b.number; });
        auto out = lines.begin();
        for (auto it = lines.begin(); it != lines.end(); ++it) {
            if (out != lines.begin() && (out - 1)->number == it->number)
                (out - 1)->count += it->count;
            else
                *out++ = *it;
        }
        lines.erase(out, lines.end());
        c.linesHit = 0;
        for (const Line& l : lines)
            c.linesHit += l.count > 0;
    }
    c.lines = qint64(lines.size());

    auto& branches = file.branches;
    const auto before = [](const Branch& a, const Branch& b) {
        return a.line < b.line || (a.line == b.line && a.branch < b.branch);
    };
    if (!tally) {
        std::stable_sort(branches.begin(), branches.end(), before);
        auto out = branches.begin();
        for (auto it = branches.begin(); it != branches.end(); ++it) {
            if (out != branches.begin() && (out - 1)->line == it->line && (out - 1)->branch == it->branch)
                (out - 1)->taken = qMax<qint64>((out - 1)->taken, 0) + qMax<qint64>(it->taken, 0);
            else
                *out++ = *it;
        }
        branches.erase(out, branches.end());
        c.branchesHit = 0;
        for (const Branch& b : branches)
            c.branchesHit += b.taken > 0;
    }
    c.branches = qint64(branches.size());

    auto& functions = file.functions;
    const auto first = [](const Function& a, const Function& b) {
        return a.startLine < b.startLine || (a.startLine == b.startLine && a.name < b.name);
    };
    if (!std::is_sorted(functions.begin(), functions.end(), first))
        std::stable_sort(functions.begin(), functions.end(), first);
    const auto same = [](const Function& a, const Function& b) {
        return a.startLine == b.startLine && a.name == b.name;
    };
    if (std::adjacent_find(functions.begin(), functions.end(), same) != functions.end()) {
        std::vector<Function> merged;
        for (Function& f : functions) {
            if (!merged.empty() && same(merged.back(), f))
                merged.back().calls += f.calls;
            else
                merged.push_back(std::move(f));
        }
        functions = std::move(merged);
    }
    c.functions = qint64(functions.size());
    for (Function& f : functions) {
        c.functionsHit += f.calls > 0;
        f.counts.functions = 1;
        f.counts.functionsHit = f.calls > 0;
    }
    if (tally && tally->functionsCounted)
        return;
    // The lines and branches of each function, from where the last one
    // ended when they do not overlap.
    auto l = lines.begin();
    auto b = branches.begin();
    for (Function& f : functions) {
        Counts& fc = f.counts;
        fc.lines = fc.linesHit = fc.branches = fc.branchesHit = 0;
        if (l == lines.end() || l->number > f.startLine || (l != lines.begin() && (l - 1)->number >= f.startLine))
            l = std::lower_bound(lines.begin(), lines.end(), f.startLine,
                                 [](const Line& a, int n) { return a.number < n; });
        while (l != lines.end() && l->number < f.startLine)
            ++l;
        for (; l != lines.end() && l->number <= f.endLine; ++l) {
            ++fc.lines;
            fc.linesHit += l->count > 0;
        }
        if (b == branches.end() || b->line > f.startLine || (b != branches.begin() && (b - 1)->line >= f.startLine))
            b = std::lower_bound(branches.begin(), branches.end(), f.startLine,
                                 [](const Branch& a, int n) { return a.line < n; });
        while (b != branches.end() && b->line < f.startLine)
            ++b;
        for (; b != branches.end() && b->line <= f.endLine; ++b) {
            ++fc.branches;
            fc.branchesHit += b->taken > 0;
        }
    }
}

void QAStCoverageReport::finish()
{
    m_totals = Counts();
    for (const File& file : m_files)
        m_totals.add(file.counts);
    if (m_files.empty()) {
        m_totals.functions = qint64(m_runtime.size());
        m_totals.functionsHit = qint64(m_runtime.size());
    }
}

const QAStCoverageReport::File* QAStCoverageReport::file(const QString& path) const
{
    const QString cleaned = QDir::cleanPath(path);
    for (const File& f : m_files)
        if (f.path == cleaned)
            return &f;
    // The records name files with their links resolved.
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty() || canonical == cleaned)
        return nullptr;
    for (const File& f : m_files)
        if (f.path == canonical)
            return &f;
    return nullptr;
}

// --- lcov

namespace {

// A test name as lcov takes it: letters, digits and underscores.
QByteArray lcovTestName(const QString& name)
{
    QByteArray out = name.toUtf8();
    for (char& c : out)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_')
            c = '_';
    return out;
}

// A name on an lcov line: no line break may cut it.
QByteArray lcovName(QByteArray name)
{
    name.replace('\n', ' ').replace('\r', ' ');
    return name;
}

class LcovOut {
public:
    explicit LcovOut(QIODevice* device) : m_device(device) { m_buffer.reserve(1 << 16); }
    LcovOut& operator<<(const char* text)
    {
        m_buffer.append(text);
        return flushIfFull();
    }
    LcovOut& operator<<(const QByteArray& text)
    {
        m_buffer.append(text);
        return flushIfFull();
    }
    LcovOut& operator<<(qint64 n)
    {
        char digits[24];
        char* p = digits + sizeof digits;
        const bool negative = n < 0;
        quint64 v = negative ? quint64(-n) : quint64(n);
        do {
            *--p = char('0' + v % 10);
            v /= 10;
        } while (v);
        if (negative)
            *--p = '-';
        m_buffer.append(p, int(digits + sizeof digits - p));
        return *this;
    }
    LcovOut& operator<<(int n) { return *this << qint64(n); }
    LcovOut& operator<<(char c)
    {
        m_buffer.append(c);
        return *this;
    }
    bool flush()
    {
        if (!m_buffer.isEmpty() && m_device->write(m_buffer) != m_buffer.size())
            m_ok = false;
        m_buffer.clear();
        return m_ok;
    }

private:
    LcovOut& flushIfFull()
    {
        if (m_buffer.size() >= (1 << 16) - 512)
            flush();
        return *this;
    }
    QIODevice* m_device;
    QByteArray m_buffer;
    bool m_ok = true;
};

} // namespace

bool QAStCoverageReport::writeLcov(QIODevice* device, const QString& testName) const
{
    LcovOut out(device);
    const QByteArray test = lcovTestName(testName);
    if (m_files.empty() && !m_runtime.empty()) {
        out << "TN:" << test << "\nSF:" << lcovName(m_program) << '\n';
        for (const RuntimeFunction& f : m_runtime)
            out << "FN:0," << lcovName(f.name) << "\n";
        for (const RuntimeFunction& f : m_runtime)
            out << "FNDA:" << qMax<qint64>(f.calls, 1) << ',' << lcovName(f.name) << "\n";
        out << "FNF:" << qint64(m_runtime.size()) << "\nFNH:" << qint64(m_runtime.size()) << "\nend_of_record\n";
        return out.flush();
    }
    for (const File& file : m_files) {
        out << "TN:" << test << "\nSF:" << lcovName(file.path.toUtf8()) << '\n';
        for (const Function& f : file.functions)
            out << "FN:" << f.startLine << ',' << lcovName(f.name) << '\n';
        for (const Function& f : file.functions)
            out << "FNDA:" << f.calls << ',' << lcovName(f.name) << '\n';
        out << "FNF:" << file.counts.functions << "\nFNH:" << file.counts.functionsHit << '\n';
        for (const Branch& b : file.branches) {
            out << "BRDA:" << b.line << ",0," << b.branch << ',';
            if (b.taken < 0)
                out << "-\n";
            else
                out << b.taken << '\n';
        }
        out << "BRF:" << file.counts.branches << "\nBRH:" << file.counts.branchesHit << '\n';
        for (const Line& l : file.lines)
            out << "DA:" << l.number << ',' << l.count << '\n';
        out << "LF:" << file.counts.lines << "\nLH:" << file.counts.linesHit << "\nend_of_record\n";
    }
    return out.flush();
}

// --- Cobertura

namespace {

QString rate(qint64 hit, qint64 total)
{
    return total > 0 ? QString::number(double(hit) / double(total), 'f', 4) : QStringLiteral("1");
}

// The <line> elements of the lines [from, to) with the branches of each.
void writeLines(QXmlStreamWriter& xml, const QAStCoverageReport::File& file, size_t from, size_t to)
{
    const auto& branches = file.branches;
    auto b = std::lower_bound(branches.begin(), branches.end(), from < to ? file.lines[from].number : 0,
                              [](const QAStCoverageReport::Branch& a, int n) { return a.line < n; });
    xml.writeStartElement(QStringLiteral("lines"));
    for (size_t i = from; i < to; ++i) {
        const QAStCoverageReport::Line& line = file.lines[i];
        while (b != branches.end() && b->line < line.number)
            ++b;
        qint64 total = 0, taken = 0;
        for (; b != branches.end() && b->line == line.number; ++b) {
            ++total;
            taken += b->taken > 0;
        }
        xml.writeStartElement(QStringLiteral("line"));
        xml.writeAttribute(QStringLiteral("number"), QString::number(line.number));
        xml.writeAttribute(QStringLiteral("hits"), QString::number(line.count));
        xml.writeAttribute(QStringLiteral("branch"), total > 0 ? QStringLiteral("true") : QStringLiteral("false"));
        if (total > 0)
            xml.writeAttribute(QStringLiteral("condition-coverage"),
                               QStringLiteral("%1% (%2/%3)").arg(100 * taken / total).arg(taken).arg(total));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

void writeRates(QXmlStreamWriter& xml, const QAStCoverageReport::Counts& c)
{
    xml.writeAttribute(QStringLiteral("line-rate"), rate(c.linesHit, c.lines));
    xml.writeAttribute(QStringLiteral("branch-rate"), rate(c.branchesHit, c.branches));
    xml.writeAttribute(QStringLiteral("complexity"), QStringLiteral("0"));
}

} // namespace

bool QAStCoverageReport::writeCobertura(QIODevice* device, const QString& sourceRoot) const
{
    const QDir root(sourceRoot);
    // Files by directory, relative to the root.
    QMap<QString, std::vector<size_t>> packages;
    for (size_t i = 0; i < m_files.size(); ++i) {
        const QString relative = root.relativeFilePath(m_files[i].path);
        const QString dir = QFileInfo(relative).path();
        packages[dir == QLatin1String(".") ? QString() : dir].push_back(i);
    }
    QXmlStreamWriter xml(device);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartDocument();
    xml.writeDTD(QStringLiteral("<!DOCTYPE coverage SYSTEM \"http://cobertura.sourceforge.net/xml/coverage-04.dtd\">"));
    xml.writeStartElement(QStringLiteral("coverage"));
    xml.writeAttribute(QStringLiteral("line-rate"), rate(m_totals.linesHit, m_totals.lines));
    xml.writeAttribute(QStringLiteral("branch-rate"), rate(m_totals.branchesHit, m_totals.branches));
    xml.writeAttribute(QStringLiteral("lines-covered"), QString::number(m_totals.linesHit));
    xml.writeAttribute(QStringLiteral("lines-valid"), QString::number(m_totals.lines));
    xml.writeAttribute(QStringLiteral("branches-covered"), QString::number(m_totals.branchesHit));
    xml.writeAttribute(QStringLiteral("branches-valid"), QString::number(m_totals.branches));
    xml.writeAttribute(QStringLiteral("complexity"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    xml.writeAttribute(QStringLiteral("timestamp"), QString::number(QDateTime::currentSecsSinceEpoch()));
    xml.writeStartElement(QStringLiteral("sources"));
    xml.writeTextElement(QStringLiteral("source"), QDir::cleanPath(root.absolutePath()));
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("packages"));
    for (auto package = packages.cbegin(); package != packages.cend(); ++package) {
        Counts counts;
        for (size_t i : package.value())
            counts.add(m_files[i].counts);
        xml.writeStartElement(QStringLiteral("package"));
        xml.writeAttribute(QStringLiteral("name"), QString(package.key()).replace(u'/', u'.'));
        writeRates(xml, counts);
        xml.writeStartElement(QStringLiteral("classes"));
        for (size_t i : package.value()) {
            const File& file = m_files[i];
            const QString relative = root.relativeFilePath(file.path);
            xml.writeStartElement(QStringLiteral("class"));
            xml.writeAttribute(QStringLiteral("name"), QFileInfo(relative).fileName());
            xml.writeAttribute(QStringLiteral("filename"), relative);
            writeRates(xml, file.counts);
            xml.writeStartElement(QStringLiteral("methods"));
            for (const Function& f : file.functions) {
                const auto first = std::lower_bound(file.lines.begin(), file.lines.end(), f.startLine,
                                                    [](const Line& a, int n) { return a.number < n; });
                auto last = first;
                while (last != file.lines.end() && last->number <= f.endLine)
                    ++last;
                xml.writeStartElement(QStringLiteral("method"));
                xml.writeAttribute(QStringLiteral("name"), QString::fromUtf8(f.name));
                xml.writeAttribute(QStringLiteral("signature"), QString());
                writeRates(xml, f.counts);
                writeLines(xml, file, size_t(first - file.lines.begin()), size_t(last - file.lines.begin()));
                xml.writeEndElement();
            }
            xml.writeEndElement();
            writeLines(xml, file, 0, file.lines.size());
            xml.writeEndElement();
        }
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    return !xml.hasError();
}
