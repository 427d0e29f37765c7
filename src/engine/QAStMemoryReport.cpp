#include "QAStMemoryReport.h"

#include <algorithm>

namespace {

constexpr int PU = QAStRecordFields::codeOf('P', 'U');
constexpr int PT = QAStRecordFields::codeOf('P', 'T');
constexpr int PB = QAStRecordFields::codeOf('P', 'B');
constexpr int PF = QAStRecordFields::codeOf('P', 'F');
constexpr int PX = QAStRecordFields::codeOf('P', 'X');
constexpr int PO = QAStRecordFields::codeOf('P', 'O');
constexpr int PS = QAStRecordFields::codeOf('P', 'S');

enum Summary { Allocations, Frees, Bytes, Peak, BlocksLeft, BytesLeft };

}

void QAStMemoryReport::clear()
{
    QAStRecordReader::clear();
    m_program.clear();
    m_pid = 0;
    m_date.clear();
    m_ended = false;
    m_allocations = m_frees = m_bytes = m_liveBytes = m_peak = m_unknownFrees = 0;
    m_live.clear();
    std::fill(std::begin(m_summary), std::end(m_summary), 0);
    m_left.clear();
    m_names.clear();
}

qint64 QAStMemoryReport::allocations() const
{
    return m_ended ? m_summary[Allocations] : m_allocations;
}

qint64 QAStMemoryReport::frees() const
{
    return m_ended ? m_summary[Frees] : m_frees;
}

qint64 QAStMemoryReport::bytesAllocated() const
{
    return m_ended ? m_summary[Bytes] : m_bytes;
}

qint64 QAStMemoryReport::peakBytes() const
{
    return m_ended ? m_summary[Peak] : m_peak;
}

QList<QAStMemoryReport::Block> QAStMemoryReport::blocksLeft() const
{
    QList<Block> blocks = m_ended ? m_left : m_live.values();
    std::sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) { return a.address < b.address; });
    return blocks;
}

qint64 QAStMemoryReport::bytesLeft() const
{
    if (m_ended)
        return m_summary[BytesLeft];
    return m_liveBytes;
}

QList<QAStMemoryReport::Site> QAStMemoryReport::sites() const
{
    QHash<QString, Site> byFunction;
    for (const Block& b : blocksLeft()) {
        Site& site = byFunction[b.function];
        site.function = b.function;
        ++site.blocks;
        site.bytes += b.size;
    }
    QList<Site> sites = byFunction.values();
    std::sort(sites.begin(), sites.end(), [](const Site& a, const Site& b) {
        return a.bytes != b.bytes ? a.bytes > b.bytes : a.function < b.function;
    });
    return sites;
}

QString QAStMemoryReport::functionName(const QByteArray& name)
{
    auto known = m_names.constFind(name);
    if (known == m_names.constEnd())
        known = m_names.insert(name, QString::fromUtf8(name));
    return known.value();
}

void QAStMemoryReport::readRecord(const QAStRecordFields& r)
{
    Block block;
    switch (r.code()) {
    case PU:
        m_program = QString::fromUtf8(r.text(0));
        if (!r.number(1, &m_pid))
            m_pid = 0;
        return;
    case PT:
        // PT "<label>" "<time>": the split's stamp, last; a bare PT has none.
        m_date = r.count() > 0 ? QString::fromUtf8(r.text(r.count() - 1)) : QString();
        return;
    case PB:
        if (!r.number(0, &block.size) || !r.address(1, &block.address) || !r.isQuoted(2)) {
            skip("an allocation with fields missing");
            return;
        }
        block.function = functionName(r.text(2));
        ++m_allocations;
        m_bytes += block.size;
        if (const auto old = m_live.constFind(block.address); old != m_live.constEnd())
            m_liveBytes -= old->size; // its free was not seen
        m_liveBytes += block.size;
        m_peak = std::max(m_peak, m_liveBytes);
        m_live.insert(block.address, block);
        return;
    case PF:
        if (!r.address(0, &block.address) || !r.number(1, &block.size)) {
            skip("a free with fields missing");
            return;
        }
        ++m_frees;
        if (const auto old = m_live.constFind(block.address); old != m_live.constEnd()) {
            m_liveBytes -= old->size;
            m_live.erase(old);
        }
        return;
    case PX:
        if (!r.address(0, &block.address)) {
            skip("a free with fields missing");
            return;
        }
        ++m_frees;
        ++m_unknownFrees;
        return;
    case PO:
        if (!r.number(0, &block.size) || !r.address(1, &block.address) || !r.isQuoted(2)) {
            skip("a block left with fields missing");
            return;
        }
        block.function = functionName(r.text(2));
        m_left.append(block);
        return;
    case PS:
        for (int i = 0; i < 6; ++i) {
            if (!r.number(i, &m_summary[i])) {
                skip("a summary with fields missing");
                return;
            }
        }
        m_ended = true;
        return;
    default:
        skip("not a memory-profile record");
    }
}
