#include "QAStChromeTrace.h"

#include "QAStTraceReport.h"

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QSaveFile>

#include <charconv>

namespace {

constexpr qsizetype BlockSize = 1024 * 1024;

// text as a JSON string, quotes included; bytes that are no UTF-8 become
// U+FFFD first.
QByteArray jsonString(const QByteArray& bytes)
{
    const QByteArray text = QString::fromUtf8(bytes).toUtf8();
    QByteArray json;
    json.reserve(text.size() + 2);
    json += '"';
    for (const char c : text) {
        const uchar u = uchar(c);
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (u < 0x20) {
            static const char hex[] = "0123456789abcdef";
            json += "\\u00";
            json += hex[u >> 4];
            json += hex[u & 15];
        } else {
            json += c;
        }
    }
    json += '"';
    return json;
}

// A buffer of events written to the device a block at a time.
class Output {
public:
    explicit Output(QIODevice* device) : m_device(device) { m_buffer.reserve(BlockSize + 4096); }

    void append(const char* text, qsizetype size) { m_buffer.append(text, size); }
    void append(const QByteArray& text) { m_buffer.append(text); }
    void append(const char* text) { m_buffer.append(text); }
    void number(qint64 value)
    {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        m_buffer.append(digits, qsizetype(end - digits));
    }
    bool flushIfFull() { return m_buffer.size() < BlockSize || flush(); }
    bool flush()
    {
        m_ok = m_ok && m_device->write(m_buffer) == m_buffer.size();
        m_buffer.clear();
        return m_ok;
    }

private:
    QIODevice* m_device;
    QByteArray m_buffer;
    bool m_ok = true;
};

}

bool QAStChromeTrace::write(QIODevice* device, const QAStTraceReport& trace)
{
    Output out(device);
    out.append("{\"displayTimeUnit\":\"ms\",\"traceEvents\":[");
    bool first = true;
    const auto separate = [&] {
        out.append(first ? "\n" : ",\n");
        first = false;
    };
    for (const QAStTraceReport::Program& program : trace.programs()) {
        separate();
        out.append("{\"name\":\"process_name\",\"ph\":\"M\",\"pid\":");
        out.number(program.pid);
        out.append(",\"tid\":0,\"args\":{\"name\":");
        out.append(jsonString(program.path.toUtf8()));
        out.append("}}");
    }
    const QList<QAStTraceReport::Thread>& threads = trace.threads();
    // The names and threads written once each.
    QList<QByteArray> names;
    names.reserve(trace.functionNames().size());
    for (const QByteArray& name : trace.functionNames())
        names.append(jsonString(name));
    QList<QByteArray> ids;
    for (const QAStTraceReport::Thread& thread : threads) {
        ids.append(",\"pid\":" + QByteArray::number(thread.pid) + ",\"tid\":" +
                   QByteArray::number(thread.tid != 0 ? thread.tid : thread.pid));
    }
    for (const QAStTraceReport::Call& call : trace.calls()) {
        separate();
        out.append("{\"name\":");
        out.append(names.at(call.function));
        out.append(",\"cat\":\"call\",\"ph\":\"X\",\"ts\":");
        out.number(call.start);
        out.append(",\"dur\":");
        out.number(trace.durationOf(call));
        out.append(ids.at(call.thread));
        out.append(call.complete ? "}" : ",\"args\":{\"incomplete\":true}}");
        if (!out.flushIfFull())
            return false;
    }
    out.append("\n]}\n");
    return out.flush();
}

bool QAStChromeTrace::writeFile(const QString& path, const QAStTraceReport& trace, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !write(&file, trace) || !file.commit()) {
        if (error)
            *error = QStringLiteral("%1: cannot write: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}
