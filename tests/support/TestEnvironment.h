#pragma once

#include <QByteArray>
#include <QStandardPaths>
#include <QStringList>
#include <QtTest>

#include <initializer_list>

// Sets (or, with a null value, unsets) an environment variable for the
// scope of the object.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_old(qgetenv(name))
    {
        set(value);
    }
    ~EnvironmentVariable() { set(m_wasSet ? m_old : QByteArray()); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void set(const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, value);
    }

    const char* m_name;
    bool m_wasSet;
    QByteArray m_old;
};

namespace TestTools {

// The tools not found on the PATH, joined by " or "; empty when all are.
inline QString missing(std::initializer_list<const char*> tools)
{
    QStringList names;
    for (const char* tool : tools) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            names << QLatin1String(tool);
    }
    return names.join(QLatin1String(" or "));
}

}

// Skips the test function when a program it runs is not installed.
#define SKIP_WITHOUT(...)                                                               \
    do {                                                                                \
        const QString missingTools = TestTools::missing({__VA_ARGS__});                \
        if (!missingTools.isEmpty())                                                    \
            QSKIP(qPrintable(missingTools + QLatin1String(" is not installed")));       \
    } while (false)
