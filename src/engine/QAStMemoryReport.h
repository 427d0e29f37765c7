#pragma once

#include "QAStRecordReader.h"
#include "sdk110_export.h"

#include <QHash>
#include <QList>
#include <QString>

// The memory profile of a run, read from its .tpf file (PU PT PB PF PX PO
// PS, docs/formats/reports.md): the blocks not freed at the end with the
// function that allocated them, the peak of bytes in use, and the counts.
//
// A run that ended gives its blocks left (PO) and its summary (PS), which
// are taken as they are. A run that did not end (killed, or still
// running) has neither: the blocks still allocated and the counts come
// from the allocations and frees read so far (PB PF PX). Unknown records
// and records with fields missing are skipped and counted.
class SDK110_EXPORT QAStMemoryReport : public QAStRecordReader {
public:
    struct Block {
        quint64 address = 0;
        qint64 size = 0;
        QString function; // the function that allocated it
    };
    // The blocks left by one function.
    struct Site {
        QString function;
        qint64 blocks = 0;
        qint64 bytes = 0;
    };

    void clear() override;

    QString program() const { return m_program; }
    qint64 pid() const { return m_pid; }
    QString date() const { return m_date; }
    // The summary came: the counts are the runtime's own.
    bool ended() const { return m_ended; }
    qint64 allocations() const;
    qint64 frees() const;
    qint64 bytesAllocated() const;
    qint64 peakBytes() const;
    // Frees of blocks never seen allocated (PX): given by a library, or
    // freed twice.
    qint64 unknownFrees() const { return m_unknownFrees; }
    // The blocks not freed, in the order of their address.
    QList<Block> blocksLeft() const;
    qint64 bytesLeft() const;
    // The blocks left grouped by function, the most bytes first.
    QList<Site> sites() const;

protected:
    void readRecord(const QAStRecordFields& record) override;

private:
    QString functionName(const QByteArray& name);

    QString m_program;
    qint64 m_pid = 0;
    QString m_date;
    bool m_ended = false;
    // Counted from the blocks seen.
    qint64 m_allocations = 0;
    qint64 m_frees = 0;
    qint64 m_bytes = 0;
    qint64 m_liveBytes = 0;
    qint64 m_peak = 0;
    qint64 m_unknownFrees = 0;
    QHash<quint64, Block> m_live;
    // The summary's.
    qint64 m_summary[6] = {};
    QList<Block> m_left;
    // Function names shared by the blocks.
    QHash<QByteArray, QString> m_names;
};
