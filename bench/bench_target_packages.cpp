#include "Harness.h"

#include "QAStTargetPackage.h"
#include "QAStTargetPackageList.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

constexpr int PackageCount = 200;

// The ini of one package, as the shipped ones are written.
QByteArray ini(int i)
{
    const QByteArray n = QByteArray::number(i);
    const bool cpp = i % 2;
    return "# Target deployment package " + n + "\n"
           "NAME = \"Cross compiler " + n + (cpp ? " C++" : " C") + "\"\n"
           "LANGUAGE = " + (cpp ? "CPP" : "C") + "\n"
           "OBJEXT = .o\nLIBEXT = .a\nDLLEXT = .so\n"
           "SRCEXT = " + (cpp ? ".cpp" : ".c") + "\n"
           "EXEEXT = \"\"\n"
           "DEFAULT_CPPFLAGS = \"-DTARGET_" + n + "\"\n"
           "DEFAULT_CFLAGS = \"-g -O0 -mcpu=core" + n + "\"\n"
           "DEFAULT_LDFLAGS = \"-g -Wl,--gc-sections\"\n"
           "DEFAULT_LIBS = \"-lm -lrt\"\n"
           "DEFAULT_DEFINES = \"-DNDEBUG\"\n"
           "DEFAULT_INCLUDE_PATHS = (\n"
           "    \"/opt/cross" + n + "/include\",\n"
           "    \"/opt/cross" + n + "/sysroot/usr/include\",\n"
           "    \"$ZELTAHOME/targets/cross" + n + "/lib\",\n"
           ")\n"
           "DEFAULT_LIBRARY_PATHS = ( \"/opt/cross" + n + "/lib\", \"/opt/cross" + n + "/sysroot/usr/lib\" )\n"
           "DEFAULT_BOOTCLASSPATH = ( )\n"
           "DEFAULT_OPTIMISATION = \"-O2\"\n"
           "J2ME_RESTRICTION = false\n"
           "ATC_MODE = 1\nATT_MODE = 1\nATP_MODE = " + QByteArray::number(i % 3 != 0) + "\nATQ_MODE = 1\n"
           "CC = cross" + n + "-gcc\nCXX = cross" + n + "-g++\nLD = cross" + n + "-g++\nAR = cross" + n + "-ar\n";
}

void writePackages(const QString& root)
{
    for (int i = 0; i < PackageCount; ++i) {
        const QString name = QStringLiteral("cross%1-%2").arg(i, 3, 10, QLatin1Char('0')).arg(i % 2 ? QLatin1String("cpp") : QLatin1String("c"));
        QDir(root).mkdir(name);
        QFile file(root + QLatin1Char('/') + name + QLatin1Char('/') + name + QLatin1String(".ini"));
        file.open(QIODevice::WriteOnly);
        file.write(ini(i));
    }
}

// The same directory walk as the scan, reading each ini's bytes and no more.
qint64 readIniBytes(const QString& root)
{
    qint64 total = 0;
    const QFileInfoList entries = QDir(root).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        if (!entry.isDir())
            continue;
        const QFileInfoList inis =
            QDir(entry.filePath()).entryInfoList({QStringLiteral("*.ini")}, QDir::Files, QDir::Name);
        for (const QFileInfo& ini : inis) {
            QFile file(ini.filePath());
            file.open(QIODevice::ReadOnly);
            total += file.readAll().size();
        }
    }
    return total;
}

}

SDK110_BENCHMARK(targetPackagesScan, "target packages: scan 200 packages against listing and reading them (goal 3x)")
{
    auto dir = std::make_shared<QTemporaryDir>();
    writePackages(dir->path());
    const QString root = dir->path();

    Bench::Measure m;
    m.subject = QStringLiteral("QAStTargetPackageList::scan of %1 package directories").arg(PackageCount);
    m.baseline = QStringLiteral("same directory listing + QFile::readAll of every ini");
    m.runSubject = [dir, root] {
        QAStTargetPackageList list;
        list.scan({root});
        Bench::keep(list.packages().constData());
    };
    m.runBaseline = [dir, root] {
        const qint64 bytes = readIniBytes(root);
        Bench::keep(&bytes);
    };
    m.target = 3;
    return m;
}
