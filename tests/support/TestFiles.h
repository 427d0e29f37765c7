#pragma once

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QtTest>

// Whole-file reads and writes for fixtures made on the fly.
namespace TestFiles {

// The file's bytes; empty when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Writes the bytes, making the directories above the file first.
inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// Copies every file below from into to, keeping the layout; the copies
// are writable by their owner.
inline void copyTree(const QString& from, const QString& to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + QLatin1Char('/') + QDir(from).relativeFilePath(source);
        QDir().mkpath(QFileInfo(target).absolutePath());
        QVERIFY(QFile::copy(source, target));
        QFile(target).setPermissions(QFile(source).permissions() | QFileDevice::ReadOwner |
                                     QFileDevice::WriteOwner);
    }
}

}
