#pragma once

#include "QAHost.h"
#include "sdk110_export.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstring>
#include <memory>
#include <vector>

class QAFileSurvey;

// The output files of a split: the lines of one tick gathered per file in
// bounded buffers, then appended to each file in order.
//
// append() takes whole lines. A buffer that would grow past BufferSize is
// appended to its file at once; flush() appends every buffer and closes the
// file. One file is open at a time: it stays open while consecutive
// appends go to it and is closed when another file is written or at
// flush(), so no file is left open between ticks. Files are opened for
// appending; every write holds whole lines only, so lines of two writers
// appending to one file never cut each other. A file that cannot be opened
// or written loses the lines of that write; the next write tries again.
// The lines lost are counted per file with the system's last reason, for
// a host that must not report success when nothing was written.
class SDK110_EXPORT QASTSplitOutputs {
public:
    static constexpr qsizetype BufferSize = 64 * 1024;

    explicit QASTSplitOutputs(int count);
    // Flushes.
    ~QASTSplitOutputs();
    QASTSplitOutputs(const QASTSplitOutputs&) = delete;
    QASTSplitOutputs& operator=(const QASTSplitOutputs&) = delete;

    int count() const { return int(m_paths.size()); }
    void setPath(int index, const QString& path);
    QString path(int index) const { return m_paths.at(index); }

    // Whole lines, each ended by "\n", for the file of index.
    void append(int index, const char* lines, qsizetype size)
    {
        Buffer& buffer = m_buffers[size_t(index)];
        if (buffer.data && buffer.size + size <= BufferSize) {
            std::memcpy(buffer.data.get() + buffer.size, lines, size_t(size));
            buffer.size += size;
        } else {
            appendOverflow(buffer, index, lines, size);
        }
    }
    void flush();

    // The lines of index lost so far, and the system's reason for the last
    // loss.
    qint64 lostLines(int index) const { return m_losses.at(size_t(index)).lines; }
    QString lostReason(int index) const { return m_losses.at(size_t(index)).reason; }

private:
    struct Loss {
        qint64 lines = 0;
        QString reason;
    };
    void lose(int index, const char* data, qsizetype size, const QString& reason);

    // The lines gathered for one file; its storage is made at first use.
    struct Buffer {
        std::unique_ptr<char[]> data;
        qsizetype size = 0;
    };

    // append() when the buffer is not made yet or would overflow.
    void appendOverflow(Buffer& buffer, int index, const char* lines, qsizetype size);
    void write(int index, const char* data, qsizetype size);

    QStringList m_paths;
    std::vector<Buffer> m_buffers;
    std::vector<Loss> m_losses;
    QFile m_file;     // the open file, if any
    int m_open = -1;  // its index
};

// Sorts the runtime's combined result stream into the result files that the
// viewers read, while the test runs (docs/formats/runtime-output.md).
//
// Its survey (survey(), a QAFileSurvey named "qastsplit-survey") follows the
// input file; every whole line it reads is routed by its record code to one
// of seven output files:
//
//   0 Results             "atlout.rio"      every line routed nowhere else
//   1 MemoryProfile       "mendralt.tpf"    PU PT PS PY PE PB PF PO PX
//   2 PerformanceProfile  "tallivexlt.tqf"  QU QT QD QS QF
//   3 Coverage            "zeltacov.tio"    NT DT CO FT DC TP TA TB TE EI
//   4 Trace               "tracer.tdf"      SF CS CI LK ST NO NI DI ME MR MC SY
//                                           SA AC LS LE TM TS TU OT US IN MS TX
//                                           SO SI HS TI ID DB ED BA EA GL
//   5 EndOfTest           "atlendtest.txt"  lines "t" + a byte up to "d"
//   6 Rejected            "atlout.rej"      lines appended with another index
//
// The defaults lie in the input file's directory; the constructor's tio,
// tdf, tpf and tqf replace those of indexes 3, 4, 1 and 2 when not empty.
//
// Lines of a tick are gathered per output file (QASTSplitOutputs) and
// appended when the survey's tick ends (surveyDone() calls
// closeOutputFile()), or earlier when a buffer fills: at every surveyDone()
// each line read so far is complete, in arrival order, in its file, and no
// output file is open. A "PT ", "QD " or "DT \"0\"" record is stamped with
// the current time on its way (splitOneLine).
//
// On the fly: splitExistingLines() for what the input already holds, then
// survey()->start(); at the end of the run survey()->finish() splits the
// last lines. Without an event loop, splitFile() splits a whole file.
class SDK110_EXPORT QASTSplitSurvey : public QObject {
    Q_OBJECT
public:
    enum Output {
        Results,
        MemoryProfile,
        PerformanceProfile,
        Coverage,
        Trace,
        EndOfTest,
        Rejected
    };
    Q_ENUM(Output)
    static constexpr int OutputCount = 7;

    // input: the runtime's result file; delay: the survey's tick in ms. The
    // survey is not started and skips the complete lines the input holds
    // now (splitExistingLines() splits them).
    QASTSplitSurvey(const QString& input, const QString& tio = QString(),
                    const QString& tdf = QString(), const QString& tpf = QString(),
                    const QString& tqf = QString(), int delay = 1000, QObject* parent = nullptr,
                    const char* name = nullptr);
    // Appends what is gathered.
    ~QASTSplitSurvey() override;

    QString inputFile() const { return m_input; }
    QString outputFile(int index) const { return m_outputs.path(index); }
    // Names the output of index (0..6; ignored outside) instead of its
    // default. Lines already gathered for the old name are appended to it
    // first.
    void setOutputFile(int index, const QString& path);
    // "atlout.rio" ... "atlout.rej" by index; empty outside 0..6.
    static QString defaultOutputName(int index);
    // The survey of the input (owned).
    QAFileSurvey* survey() const { return m_survey; }
    // The console that receives the rejected-lines message (the message
    // console by default).
    void setConsole(int console) { m_console = console; }

    // The output index of a line by its first two bytes (bytes are
    // unsigned: 0-255); length may hold the "\n" or not.
    //  1. an upper-case first byte: with an upper-case second byte, the
    //     table's index of the pair, 0 for a pair outside the table; with
    //     anything else second, 0;
    //  2. "t" followed by a byte whose code is at most that of "d" (a "\n"
    //     or nothing included): 5;
    //  3. anything else: 0.
    static int recordIndex(const char* line, qsizetype length);

    // Gathers line (one line, with or without its "\n") for the output of
    // index. An index outside 0..5 sends it to the rejected-lines file; the
    // first time, the console receives "Some lines have not been recognized
    // during the split (file %1 contains the rejected lines)".
    void appendLine(const char* line, int index);

    // Splits every whole line the input holds, from its first byte, now;
    // the survey goes on after them. Meant for before survey()->start():
    // called again it splits everything again.
    void splitExistingLines();

    // The lines of the output of index that could not be written (its
    // file could not be opened or written), and the system's reason.
    qint64 lostLines(int index) const { return m_outputs.lostLines(index); }
    QString lostReason(int index) const { return m_outputs.lostReason(index); }
    // What was lost, one text per output that lost lines ("3 lines could
    // not be written to FILE: REASON"); empty when nothing was lost.
    QStringList losses() const;

    // Splits the whole input at once, without an event loop, into the seven
    // default names in outputDir (made when missing). The seven files are
    // removed first, so the result is the split of this input alone; a
    // file that receives no line is not created. A last line without "\n"
    // is split with one. False, with the reason in error, when the input
    // cannot be read, outputDir cannot be made, the input is one of the
    // seven files, or lines could not be written (losses(), one a line).
    static bool splitFile(const QString& input, const QString& outputDir,
                          QString* error = nullptr);

public slots:
    // Routes one line (recordIndex), stamps a "PT ", "QD " or "DT \"0\""
    // record with the current time, and gathers it for its output:
    //  "PT ..." with fewer than three fields  -> PT "" "<time>"
    //  "PT ..." with three fields or more     -> the line + " \"<time>\""
    //  "QD ..."                               -> QD "<time>"
    //  "DT \"0\"..."                          -> DT "<time>"
    // <time> is the local time as ctime() writes it, without its "\n"
    // ("Wed Jun 30 21:49:08 1993"). A field is a run of bytes between
    // blanks, or a double-quoted string (a backslash escapes the next
    // byte) that may hold blanks. A line given without "\n" gets one.
    void splitOneLine(const char* line);
    // Appends every gathered line to its file and closes the open file.
    void closeOutputFile();

signals:
    void appeared();    // the survey's fileAppear()
    void disappeared(); // fileDisappear()
    void shrinked();    // fileShrink()
    void modified();    // fileModified()

private:
    void splitLines(const QByteArray& lines);
    void splitLine(const char* line, qsizetype length);
    void gather(const char* line, qsizetype length, int index);
    void reportRejected();

    QString m_input;
    QAFileSurvey* m_survey; // owned
    QASTSplitOutputs m_outputs{OutputCount};
    bool m_rejectedReported = false;
    int m_console = QAHost::MessageConsole;
    QByteArray m_stamped; // a record being stamped
};
