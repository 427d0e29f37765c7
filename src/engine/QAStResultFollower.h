#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QAFileSurvey;
class QAStRecordReader;

// Follows one result file while a test runs, for a view that shows what
// it holds: the file's lines as they come, and a new start when the file
// is emptied or replaced by a new run. Built on the file survey
// (QAFileSurvey): the file is never held open, only whole lines go out.
//
//   reset()            forget what was read: the file shrank, disappeared
//                      or was replaced; also first of all when following
//                      starts
//   linesAdded(lines)  whole lines the file gained, in order
//   changed()          after a tick that reset or added lines: the time
//                      for a view to redraw
//
// A reader of records (QAStRecordReader) is kept up to date with
// follow(file, reader): cleared on reset(), fed on linesAdded().
class SDK110_EXPORT QAStResultFollower : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultDelay = 500;

    explicit QAStResultFollower(QObject* parent = nullptr);
    ~QAStResultFollower() override;

    // Follows file every delay ms: reset(), then what it holds now at
    // once, then what it gains. An empty name stops following.
    void follow(const QString& file, int delay = DefaultDelay);
    // The same, with reader cleared and fed on the way (it must outlive
    // the following, or stop() be called first).
    void follow(const QString& file, QAStRecordReader* reader, int delay = DefaultDelay);
    void stop();
    // Reads what the file gained now, without waiting for the next tick.
    void poll();
    QString fileName() const { return m_file; }
    bool isFollowing() const { return bool(m_survey); }

signals:
    void reset();
    void linesAdded(const QByteArray& lines);
    void changed();

private:
    void startAgain();

    std::unique_ptr<QAFileSurvey> m_survey;
    QString m_file;
    QAStRecordReader* m_reader = nullptr;
    bool m_changed = false;
};
