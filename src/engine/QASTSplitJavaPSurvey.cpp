#include "QASTSplitJavaPSurvey.h"

#include "QAFileSurvey.h"

#include <QFile>

#include <cstring>

namespace {

enum JavaOutput { MemoryProfile, Trace };

bool isClassNameByte(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'
        || c == '$';
}

// "com/acme/Shop": names between single slashes, at least two names.
bool isClassName(const char* p, const char* end)
{
    bool slash = false;
    bool afterName = false;
    for (; p < end; ++p) {
        if (*p == '/') {
            if (!afterName)
                return false;
            slash = true;
            afterName = false;
        } else if (isClassNameByte(*p)) {
            afterName = true;
        } else {
            return false;
        }
    }
    return slash && afterName;
}

// "com/acme/Shop.java": separators, and an extension in the last name.
bool isSourcePath(const char* p, const char* end)
{
    const char* lastName = nullptr;
    for (const char* c = p; c < end; ++c)
        if (*c == '/' || *c == '\\')
            lastName = c + 1;
    return lastName && std::memchr(lastName, '.', size_t(end - lastName));
}

void appendField(QByteArray& out, const char* p, const char* end, QAInstall::Platform platform)
{
    const bool className = isClassName(p, end);
    if (!className && !isSourcePath(p, end)) {
        out.append(p, end - p);
        return;
    }
    const char separator = className ? '.' : char(QAInstall::separator(platform).toLatin1());
    for (; p < end; ++p)
        out.append(*p == '/' || *p == '\\' ? separator : *p);
}

}

QASTSplitJavaPSurvey::QASTSplitJavaPSurvey(const QStringList& files, const QString& tpf,
                                           const QString& tdf, QObject* parent, const char* name)
    : QObject(parent)
{
    if (name)
        setObjectName(QString::fromUtf8(name));
    m_outputs.setPath(MemoryProfile, tpf);
    m_outputs.setPath(Trace, tdf);
    for (const QString& file : files) {
        auto* survey = new QAFileSurvey(file, 0, true, this, "qastsplitjava-survey");
        connect(survey, &QAFileSurvey::newLines, this, &QASTSplitJavaPSurvey::takeLines);
        m_surveys.append(survey);
    }
}

QASTSplitJavaPSurvey::~QASTSplitJavaPSurvey() = default;

QStringList QASTSplitJavaPSurvey::inputFiles() const
{
    QStringList files;
    for (const QAFileSurvey* survey : m_surveys)
        files.append(survey->fileName());
    return files;
}

QByteArray QASTSplitJavaPSurvey::convertLine(const QByteArray& line, QAInstall::Platform platform)
{
    QByteArray out;
    out.reserve(line.size());
    const char* p = line.constData();
    const char* const end = p + line.size();
    while (p < end) {
        const char* open = static_cast<const char*>(std::memchr(p, '"', size_t(end - p)));
        const char* close = open ? static_cast<const char*>(
                                std::memchr(open + 1, '"', size_t(end - open - 1)))
                                 : nullptr;
        if (!close) {
            out.append(p, end - p);
            break;
        }
        out.append(p, open + 1 - p);
        appendField(out, open + 1, close, platform);
        out.append('"');
        p = close + 1;
    }
    return out;
}

void QASTSplitJavaPSurvey::tickReceived()
{
    for (QAFileSurvey* survey : m_surveys)
        survey->survey();
    m_outputs.flush();
}

void QASTSplitJavaPSurvey::restart()
{
    m_outputs.flush();
    if (!m_withOthers) {
        QFile::resize(memoryProfileFile(), 0);
        QFile::resize(traceFile(), 0);
    }
    for (QAFileSurvey* survey : m_surveys)
        survey->reset(true);
}

void QASTSplitJavaPSurvey::stop()
{
    for (QAFileSurvey* survey : m_surveys)
        survey->finish();
    m_outputs.flush();
}

void QASTSplitJavaPSurvey::takeLines(const QByteArray& lines)
{
    const char* p = lines.constData();
    const char* const end = p + lines.size();
    while (p < end) {
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', size_t(end - p)));
        const char* next = newline ? newline + 1 : end;
        const int output = QASTSplitSurvey::recordIndex(p, next - p) == QASTSplitSurvey::Trace
            ? Trace
            : MemoryProfile;
        m_converted = convertLine(QByteArray::fromRawData(p, next - p));
        m_outputs.append(output, m_converted.constData(), m_converted.size());
        p = next;
    }
}
