#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>

#include <memory>

class QFile;
class QTimer;

// Follows a file that another process writes line by line (the runtime's
// result stream) without locking it: the file is opened, read from where
// the last tick stopped and closed again at every tick of a repeating timer
// named "f-survey" (every delay() ms). docs/formats/runtime-output.md
// describes the whole survey; in short:
//
// Lines. Only whole lines go out, each with its "\n", in the order of the
// file, each exactly once: a trailing partial line is kept until its "\n"
// arrives. Every line goes out twice, through two signals: hasNewLine()
// (one per line, NUL-terminated: a NUL byte inside the line ends what its
// receivers see) and newLines() (one per block read, the exact bytes of
// one or more whole lines). A line longer than MaxLineLength bytes
// (without its "\n") goes out in pieces of MaxLineLength bytes, each given
// a "\n", so that the memory held for a partial line stays bounded.
//
// The end of a file. The partial line goes out, given a "\n", when its file
// ends: at finish() (the writer is done), and when the file shrinks,
// disappears or is replaced, since no writer will complete it there.
//
// A tick. Every call of survey() (the timer's or a direct one) ends with
// surveyDone(), whatever it found: at that moment every line read so far
// has gone out. Reading goes up to the size the file had when the tick
// began, in blocks of BlockSize bytes.
//
// Changes seen at a tick, in this order:
//  - the file cannot be opened while it was there at the previous tick:
//    fileDisappear(), then the disappear policy. A file missing from the
//    start is simply waited for: nothing is emitted until it appears.
//  - the file is another one than at the previous tick (replaced or removed
//    and created again between two ticks): handled as its disappearance
//    (fileDisappear() and the disappear policy) followed by its appearance.
//    Another file is told by its identity (device and inode number on
//    POSIX, and its birth time where the file system keeps one) or by its
//    modification time going back.
//  - the file is there and was not: fileAppear().
//  - its modification time changed: the single-shot modification timer is
//    (re)started; when it runs out (no change for modificationDelay() ms,
//    500 by default) fileModified() and modified(fileName) are emitted.
//  - it is smaller than what was read, or the last bytes read are no longer
//    what the file holds at their place (truncated and written again
//    between two ticks): fileShrink(), then the shrink policy.
//  - it is larger: fileGrow(), and the new bytes are read.
//
// Policies. Stop ends the survey after the signal (the timer stays stopped;
// start() resumes it from the file's first byte). FromStart, the default of
// both, goes on and reads the file from its first byte: a new run writes it
// from the start. FromEnd goes on from the end of the last complete line
// the file holds when the change is seen: what it holds then is skipped.
// A file that reappears after being absent at a tick held nothing at the
// restart, so both restart policies read it from its first byte.
//
// Limits. The file is taken as append-only. Bytes written after the last
// tick into a file that is then truncated, removed or replaced before the
// next tick are out of reach (the file no longer holds them): a writer that
// starts a new run waits for one tick, or the caller calls finish() at the
// end of each run. A file truncated and written again past the old end
// within one delay, with the same bytes before the old end, is not told
// from a file that grew.
//
// Everything runs on the thread of the event loop. Receivers may call
// stop(), start(), setDelay() and restart() from any signal (a restart
// during a tick takes effect when the tick ends and drops the lines not yet
// emitted), but must not delete the survey from a signal of the survey
// (use deleteLater()). A survey() or finish() called from one of its own
// signals does nothing.
class SDK110_EXPORT QAFileSurvey : public QObject {
    Q_OBJECT
public:
    // What the survey does once a shrink or a disappearance was signalled.
    enum Policy {
        Stop,      // stop the survey
        FromStart, // go on, reading the file from its first byte
        FromEnd    // go on after the last complete line the file holds
    };
    Q_ENUM(Policy)

    // Longest partial line kept, in bytes.
    static constexpr qsizetype MaxLineLength = 16 * 1024 * 1024;
    // Bytes read from the file at once.
    static constexpr qsizetype BlockSize = 128 * 1024;

    // file: the file to follow; delay: the tick interval in ms.
    // fromStart: the first tick reads the file from its first byte; false
    // skips the complete lines it holds now (an unfinished last line is
    // read whole once it is completed). The survey is not started.
    QAFileSurvey(const QString& file, int delay, bool fromStart = true, QObject* parent = nullptr,
                 const char* name = nullptr);
    ~QAFileSurvey() override;

    QString fileName() const;

    // Starts, or stops, the repeating timer. start() on an active survey
    // does nothing.
    void start();
    void stop();
    // Forgets the partial line (it is not emitted), takes a fresh look at
    // the file (as the constructor does with fromStart) and starts the
    // timer again. reset() does the same without starting the timer.
    void restart(bool fromStart);
    void reset(bool fromStart);
    bool isActive() const;

    void setDelay(int delay);
    int delay() const;
    void setModificationDelay(int delay);
    int modificationDelay() const;
    // The file's modification time at the last tick (invalid while absent).
    QDateTime modificationTime() const;
    // Bytes of the file read so far; the partial line is part of them.
    qint64 offset() const;

    void setShrinkPolicy(Policy policy);
    Policy shrinkPolicy() const;
    void setDisappearPolicy(Policy policy);
    Policy disappearPolicy() const;

public slots:
    // One tick: reads what the file gained since the last one, then emits
    // surveyDone().
    void survey();
    // The final pass when the writer is done: stops the timer, reads what
    // remains, emits the partial line given a "\n", then surveyDone(). A
    // later start() follows the file on from there.
    void finish();

signals:
    void fileAppear();
    void fileDisappear();
    void fileShrink();
    void fileGrow();
    // One line with its "\n", NUL-terminated; valid during the emission.
    void hasNewLine(const char* line);
    // Whole lines, each with its "\n", exact bytes (NUL bytes included);
    // the bytes are valid during the emission only: copy what is kept.
    void newLines(const QByteArray& lines);
    void fileModified();
    void modified(const QString& fileName);
    void surveyDone();

private:
    // What identifies the file behind the name: another value, another file.
    struct Identity {
        qint64 device = -1;
        qint64 inode = -1;
        QDateTime birth;
        bool operator==(const Identity& other) const;
    };
    // The file as one look saw it.
    struct Snapshot {
        bool present = false;
        qint64 size = 0;
        QDateTime modified;
        Identity identity;
    };

    static Snapshot snapshotOf(QFile& file);
    void readOnce();
    void endTick();
    // Applies what the file looks like now; false when the tick ends here.
    bool checkFile(QFile& file, const Snapshot& now);
    bool wasRewritten(QFile& file, const Snapshot& now) const;
    // The file ended (shrink, disappearance, replacement): emits the
    // partial line, stops the timer, emits the signal, applies the policy.
    // False when the policy stops the survey.
    bool fileEnded(void (QAFileSurvey::*signal)(), Policy policy, QFile* file,
                   const Snapshot& now);
    void resetTo(bool fromStart, QFile* file, const Snapshot& now);
    qint64 endOfLastLine(QFile& file, qint64 size) const;
    void readTail(QFile& file);
    void readNewBytes(QFile& file, qint64 size);
    void consume(char* data, qsizetype size);
    void appendToPartial(const char* data, qsizetype size);
    void deliver(char* lines, qsizetype size);
    void deliverPartial();
    void emitPartial();
    void keepTail(const char* data, qsizetype size);
    void modificationSettled();

    struct Private;
    std::unique_ptr<Private> d;
};
