#pragma once

#include "QAStRecordReader.h"
#include "sdk110_export.h"

#include <QSet>
#include <QList>
#include <QString>

// The performance profile of a run, read from its .tqf file (QU QD QF QT,
// docs/formats/reports.md): per function its calls, the time spent in it
// with and without its callees, and its longest call, in microseconds.
// functions() is sorted by own time, the largest first (then by name).
//
// A function reported twice (two runs appended, or a program that ran
// itself) sums its calls and times and keeps the longest call. Unknown
// records and records with fields missing are skipped and counted.
class SDK110_EXPORT QAStProfileReport : public QAStRecordReader {
public:
    struct Function {
        QString name;
        qint64 calls = 0;
        qint64 total = 0;
        qint64 self = 0;
        qint64 longest = 0;
    };

    void clear() override;

    QString program() const { return m_program; }
    qint64 pid() const { return m_pid; }
    QString date() const { return m_date; }
    // The run's length (QT); -1 when the run did not end.
    qint64 runTime() const { return m_runTime; }
    // Sorted by own time.
    const QList<Function>& functions() const;
    qint64 totalSelf() const;

protected:
    void readRecord(const QAStRecordFields& record) override;

private:
    QString m_program;
    qint64 m_pid = 0;
    QString m_date;
    qint64 m_runTime = -1;
    mutable QList<Function> m_functions;
    mutable bool m_sorted = true;
    // The names reported, for the rare function reported twice.
    QSet<QString> m_names;
};
