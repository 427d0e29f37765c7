#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QDir>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

#include <optional>

// One child process run by the library: a driver script under the
// interpreter, a build tool, an editor.
//
// start() takes the command as a list or splits a command line, runs it in
// a working directory and returns at once (asynchronous) or when the child
// has ended (synchronous). A synchronous start keeps the event loop turning
// while it waits, so output signals, timers and user input are delivered
// during the wait without the wait spinning the processor. The child's
// standard output and error come back as text, one signal per line or one
// per read (setLinePerLine); its end as exited().
//
// Ownership: the QAProcess owns its QProcess. Every process started and not
// yet ended is also in a process-wide list, listOfProcess(), which does not
// own them; killAll() stops all of them at once (the studio closes, the
// user stops every run). Destroying a QAProcess kills a child still running
// quietly (no exited(), no message) and takes it off the list.
//
// Everything runs on the thread of the event loop (the GUI thread). Signals
// arrive during a synchronous start() and receivers may turn the event
// loop themselves: callers must tolerate re-entry, and a receiver may
// delete the QAProcess from any of its signals.
class SDK110_EXPORT QAProcess : public QObject {
    Q_OBJECT
public:
    explicit QAProcess(QObject* parent = nullptr, const char* name = nullptr);
    ~QAProcess() override;

    // Starts args[0] with the other items as its arguments, in workingDir.
    // environment holds "NAME=value" items; null: this process's own.
    // The child's standard input is closed (it reads end of file).
    //
    // When the child cannot be started (no such program, not executable,
    // no such working directory, empty args, or this object was already
    // started), "<program>: unable to start the command\n" goes to the Qt
    // warning channel and false is returned; nothing enters the list and
    // exited() is never emitted.
    //
    // Otherwise the process enters listOfProcess() and true is returned:
    // at once when asynchronous (normalExit and exitStatus are left as they
    // are; exited() tells the end), else once the child has ended, with its
    // normalExit() and exitStatus() stored into the references. When the
    // QAProcess is destroyed during that wait, they are false and -1.
    bool start(const QStringList& args, const QDir& workingDir, bool& normalExit,
               int& exitStatus, QStringList* environment = nullptr, bool asynchronous = true);
    // The same with the command line split by commandLineToArgs. When the
    // last argument contains "&" it is dropped and the start is asynchronous
    // whatever the caller asked. The rule looks at the argument, not at how
    // it was written: "x&" and a quoted "a & b" in last place are dropped
    // as well.
    bool start(const QString& commandLine, const QDir& workingDir, bool& normalExit,
               int& exitStatus, QStringList* environment = nullptr, bool asynchronous = true);

    // Splits a command line into args (cleared first). The line is scanned
    // left to right; at each position the first form that matches gives the
    // next argument, and blanks between arguments are skipped:
    //  1. a word: letters, digits and _/\:.+~#{}[]|@$%,;?!-*&=<>)(
    //     (a path, an option, a lone "&");
    //  2. a string in double quotes, added without its quotes. A backslash
    //     before a quote or a backslash escapes it, so "say \"hi\"" is one
    //     argument; escapes are kept as written (say \"hi\"), nothing is
    //     unescaped. When no closing quote follows an escaped one, the first
    //     quote closes the string instead: "C:\dir\" gives C:\dir\ ;
    //  3. the same in single quotes;
    //  4. "&" (already a word: listed so that a lone "&" is always a token).
    // A string ends at its own closing quote: "a b" "c d" gives a b, c d.
    // Nothing else is special: no variables, globs or escapes outside
    // quotes. Side by side forms make separate arguments (-I"a b" gives -I,
    // a b); "" is an empty argument. A character where no form matches is
    // dropped and the scan goes on after it: a quote never closed, ^, `, a
    // non-ASCII letter outside quotes ("a b gives a, b).
    static void commandLineToArgs(const QString& line, QStringList& args);

    // Forwarded to the child; no-ops before a successful start.
    bool isRunning() const;
    void tryTerminate(); // asks the child to end (SIGTERM; WM_CLOSE on Windows)
    void kill();         // ends it at once; exited(false, ...) follows

    // Kills every process of the list and empties it; their exited()
    // signals follow from the event loop. Nothing happens on an empty list.
    static void killAll();
    // The processes started and not yet ended, oldest first (not owned).
    static QList<QAProcess*> listOfProcess();

    // Line per line: one stdoutReceived/stderrReceived per line, without
    // its "\n". Otherwise (the default) one signal per read of the child's
    // output, holding every complete line read, each ended by "\n".
    void setLinePerLine(bool linePerLine);
    bool isLinePerLine() const;
    // The encoding of the child's output; without one (the default, and
    // after resetTextCodec) each byte is a Latin-1 character. Lines are
    // split on the byte "\n", so the encoding must keep "\n" as that byte
    // (UTF-8 and the 8-bit encodings do); a "\r" before it is kept.
    void setTextCodec(QStringConverter::Encoding encoding);
    void resetTextCodec();

    // The end of the child, valid once isFinished(): normalExit() is false
    // when it crashed or was killed; exitStatus() is its exit code & 0xFF,
    // or for a child ended by a signal the signal's number (9 when killed).
    bool isFinished() const;
    bool normalExit() const;
    int exitStatus() const;
    // As the last start() decided (true for a command line ending in "&").
    bool isAsynchronous() const;
    // The child's process identifier, kept after its end; 0 before start.
    qint64 pid() const;

signals:
    // Output of the child: one line, or several lines each ended by "\n"
    // (see setLinePerLine). A last line without "\n" comes when the child
    // ends, before exited().
    void stdoutReceived(const QString& text);
    void stderrReceived(const QString& text);
    // The child has ended; it is already off listOfProcess().
    void exited(bool normalExit, int exitStatus);

private:
    enum Channel { Out, Err };

    // Bytes of one output stream not yet emitted, and its reader's state.
    struct Stream {
        QByteArray pending;                   // a partial last line
        std::optional<QStringDecoder> decoder; // none: Latin-1
        bool reading = false;                  // a frame is emitting its lines
    };

    void readChannel(Channel channel, bool atEnd);
    QString decode(Channel channel, const QByteArray& bytes);
    void processFinished(int exitCode, QProcess::ExitStatus status);
    void finish();

    QProcess* m_process = nullptr; // owned; created by a successful start
    qint64 m_pid = 0;
    Stream m_streams[2];
    int m_emitDepth = 0;       // frames emitting a signal of this object
    bool m_endPending = false; // the child ended while output was emitted
    bool m_ending = false;
    bool m_finished = false;
    bool m_normalExit = false;
    int m_exitStatus = 0;
    bool m_linePerLine = false;
    bool m_asynchronous = true;
};
