#pragma once

#include "QAILogMonitor.h"
#include "QARes.h"

#include <QList>
#include <QtGlobal>
#include <QStringList>

#include <utility>

using namespace Qt::StringLiterals;

// Records every fault the resource reader reports while installed, and
// puts the previous handler back when it goes.
class RecordingResErrors : public QAResErrorHandler {
public:
    struct Error {
        QString file;
        int line;
        QString message;
    };

    RecordingResErrors() : m_previous(QARes::setErrorHandler(this)) {}
    ~RecordingResErrors() override { QARes::setErrorHandler(m_previous); }

    void error(const QString& file, int line, const QString& message) override
    {
        errors.append({file, line, message});
    }
    QList<int> lines() const
    {
        QList<int> result;
        for (const Error& e : errors)
            result.append(e.line);
        return result;
    }
    // Each fault as "file:line: message".
    QStringList texts() const
    {
        QStringList result;
        for (const Error& e : errors)
            result.append(u"%1:%2: %3"_s.arg(e.file).arg(e.line).arg(e.message));
        return result;
    }

    QList<Error> errors;

private:
    QAResErrorHandler* m_previous;
};

// Records what is logged to it.
class RecordingLog : public QAILogMonitor {
public:
    void log(const QString& message) override { messages.append(message); }
    QStringList messages;
};

// Counts the child processes that end while it lives, by the line
// "Terminated process pid ..." QAProcess logs for each; other messages go
// to the handler before it.
class EndedRuns {
public:
    EndedRuns()
    {
        s_count = 0;
        s_former = qInstallMessageHandler(&EndedRuns::handle);
    }
    ~EndedRuns() { stop(); }
    // Puts the former handler back; the count stays.
    void stop()
    {
        if (s_former)
            qInstallMessageHandler(std::exchange(s_former, nullptr));
    }
    int count() const { return s_count; }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (text.startsWith(QLatin1String("Terminated process pid")))
            ++s_count;
        else
            s_former(type, context, text);
    }
    static inline int s_count = 0;
    static inline QtMessageHandler s_former = nullptr;
};
