#pragma once

// Shared set-up of the fuzz targets: one application object (offscreen,
// since items may hold pixmaps), batch mode so that no question waits for
// an answer, the library's messages dropped (they are what bad input is
// meant to produce), the default installation as $ZELTAHOME, and a scratch
// directory where a target writes its input when the reader takes a file.

#include "QAStConfiguration.h"
#include "QAStProject.h"

#include <QGuiApplication>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace Fuzz {

inline void dropMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg) {
        fprintf(stderr, "fatal: %s\n", qPrintable(text));
        abort();
    }
}

class Environment {
public:
    Environment()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("ZELTAHOME", SDK110_INSTALL_TREE);
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_scratch.filePath(QStringLiteral("config"))));
        qInstallMessageHandler(dropMessage);
        m_app = new QGuiApplication(m_argc, m_argv);
        QAStProject::setModeBatch(true);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    // Loads the settings descriptor that configurations read through.
    void loadDescriptor() { QAStConfiguration::initialize(nullptr, nullptr); }

    QString path(const QString& name) const { return m_scratch.filePath(name); }

    // Writes the input to name in the scratch directory; returns its path.
    QString writeInput(const QString& name, const uint8_t* data, size_t size) const
    {
        const QString file = path(name);
        QFile out(file);
        if (out.open(QIODevice::WriteOnly | QIODevice::Truncate))
            out.write(reinterpret_cast<const char*>(data), qint64(size));
        return file;
    }

    // Empties the scratch directory but the preferences.
    void clear() const
    {
        QDir dir(m_scratch.path());
        for (const QString& entry : dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            if (entry == QLatin1String("config"))
                continue;
            QFileInfo info(dir.filePath(entry));
            if (info.isDir() && !info.isSymLink())
                QDir(info.filePath()).removeRecursively();
            else
                dir.remove(entry);
        }
    }

private:
    int m_argc = 1;
    char m_arg0[8] = "fuzzer";
    char* m_argv[2] = {m_arg0, nullptr};
    QTemporaryDir m_scratch;
    QGuiApplication* m_app = nullptr; // lives as long as the process
};

// The process-wide environment, made on first use.
inline Environment& environment()
{
    static Environment* env = new Environment;
    return *env;
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

}
