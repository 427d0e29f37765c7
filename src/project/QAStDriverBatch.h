#pragma once

#include "QAStData.h"

// Runs a driver script that handles a batch of files in one run (the
// tagging and metrics drivers), and tells of each file as the driver
// reports it. The driver prints, on its standard output, one line per
// file once the file's output is complete:
//
//   <script>: file <n> done: <path>
//   <script>: file <n> failed: <path>
//
// n counting the batch's files from 1. These lines are taken off the
// output; every other line goes to the run's console as usual.
class SDK110_EXPORT QAStDriverBatch : public QAStData {
    Q_OBJECT
public:
    // The driver's script name, as it starts its lines ("Tagging.pl").
    explicit QAStDriverBatch(const QString& script);

    QString script() const { return m_script; }

    // Whether line is the report of one file; its index (from 0) and
    // outcome then.
    bool parseReport(const QString& line, int* index, bool* succeeded) const;

signals:
    // The driver reported the file of the batch at index (from 0).
    void fileReported(int index, bool succeeded);

public slots:
    void charReceived(const QString& text) override;

private:
    QString m_script;
    QString m_prefix;
};
