#pragma once

#include "QAInstall.h"
#include "QASTSplitSurvey.h"
#include "sdk110_export.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QAFileSurvey;

// The split of the Java profiler's result files: the profiler of a Java
// run writes its own files (one per virtual machine), whose lines go into
// the memory-profile and trace files that the viewers read
// (docs/formats/runtime-output.md).
//
// The survey has no timer of its own: tickReceived() (connected to any
// periodic signal, such as the timer of the test run) reads what every
// input gained, input after input, each with a QAFileSurvey. The lines of
// one tick are buffered per output (QASTSplitOutputs) and appended when the
// tick ends, whole lines in the order of each input; no output is left
// open between ticks. A line whose record code is a trace code (index 4 of
// QASTSplitSurvey::recordIndex) goes to the trace file, every other line
// to the memory-profile file.
//
// Paths are converted for the studio (convertLine): in every double-quoted
// field, a class name in the virtual machine's form ("com/acme/Shop$Cart")
// is written as the studio names classes ("com.acme.Shop$Cart"), and a
// source path ("com/acme/Shop.java") with the platform's separator.
//
// Alone (the default), the survey owns both outputs: restart() empties
// them. Working with other instrumentation (work_with_other_instr(true)),
// the outputs are shared with the split of the native runtime
// (QASTSplitSurvey) and only appended to: both append whole lines, so
// their lines never cut each other.
class SDK110_EXPORT QASTSplitJavaPSurvey : public QObject {
    Q_OBJECT
public:
    // files: the profiler's result files; tpf and tdf: the memory-profile
    // and trace files written.
    QASTSplitJavaPSurvey(const QStringList& files, const QString& tpf, const QString& tdf,
                         QObject* parent = nullptr, const char* name = nullptr);
    // Appends what is buffered.
    ~QASTSplitJavaPSurvey() override;

    QStringList inputFiles() const;
    QString memoryProfileFile() const { return m_outputs.path(0); }
    QString traceFile() const { return m_outputs.path(1); }
    bool worksWithOtherInstrumentation() const { return m_withOthers; }

    // The line with the paths of its double-quoted fields converted (a
    // field runs from a double quote to the next one):
    //  - a class name: only letters, digits, "_" and "$" between single
    //    "/" (at least one, none first or last): every "/" becomes ".";
    //  - a source path: a field holding "/" or "\" whose last name has an
    //    extension ("com/acme/Shop.java", "C:\src\Shop.java"): written with
    //    the separator of the platform ("/" on POSIX, "\" on Windows).
    // A type descriptor ("(Ljava/lang/String;)V") is neither.
    // Everything else is kept as it is.
    static QByteArray convertLine(const QByteArray& line,
                                  QAInstall::Platform platform = QAInstall::nativePlatform());

public slots:
    // Reads what every input gained and appends its lines to the outputs.
    void tickReceived();
    // A new run: every input is read again from its first byte; alone, the
    // two outputs are emptied first.
    void restart();
    // The end of the run: reads what remains of every input, its last line
    // without "\n" included (given one), and appends it.
    void stop();
    void work_with_other_instr(bool withOthers) { m_withOthers = withOthers; }

private:
    void takeLines(const QByteArray& lines);

    QList<QAFileSurvey*> m_surveys; // owned, as children
    QASTSplitOutputs m_outputs{2};
    bool m_withOthers = false;
    QByteArray m_converted;
};
