#include "QAFileUtil.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QTextStream>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

fs::path toPath(const QString& path)
{
    return fs::path(path.toStdU16String());
}

QString reasonOf(const std::error_code& error)
{
    return QString::fromStdString(error.message());
}

// A new file beside path, named after it and the purpose, opened for
// writing without a buffer.
bool createBeside(const QString& path, const char* purpose, QFile& file)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        file.setFileName(QStringLiteral("%1.%2-%3-%4")
                             .arg(path, QLatin1String(purpose))
                             .arg(QCoreApplication::applicationPid())
                             .arg(attempt));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return true;
        if (!file.exists())
            return false;
    }
    return false;
}

// Every byte, written until the system takes them all or says why not (a
// short write is retried, so that a full disk tells its reason), then
// flushed to the disk.
bool writeWhole(QFile& file, const QByteArray& bytes, QString* reason)
{
    for (qint64 done = 0; done < bytes.size();) {
        const qint64 count = file.write(bytes.constData() + done, bytes.size() - done);
        if (count <= 0) {
            *reason = file.errorString();
            return false;
        }
        done += count;
    }
#ifdef Q_OS_UNIX
    // A file system that cannot sync (EINVAL) has nothing more to write.
    if (::fsync(file.handle()) != 0 && errno != EINVAL) {
        *reason = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
#endif
    return true;
}

// A device in front of a file that writes every byte it is given as
// writeWhole does, so that a short write is retried and a failure keeps
// the system's reason (a file's own write reports a short write as done).
class WholeWrites : public QIODevice {
public:
    explicit WholeWrites(QFile& file) : m_file(file) { open(QIODevice::WriteOnly); }
    QString reason;

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override
    {
        for (qint64 done = 0; done < size;) {
            const qint64 count = reason.isEmpty() ? m_file.write(data + done, size - done) : -1;
            if (count <= 0) {
                if (reason.isEmpty())
                    reason = m_file.errorString();
                return -1;
            }
            done += count;
        }
        return size;
    }

private:
    QFile& m_file;
};

// The text the writer streams, in UTF-8 through the stream's buffer,
// every byte written; then flushed to the disk. The stream is flushed
// here, so that a failure of its last buffer is seen too.
bool streamWhole(QFile& file, const std::function<void(QTextStream&)>& write, QString* reason)
{
    WholeWrites device(file);
    {
        QTextStream stream(&device);
        write(stream);
        stream.flush();
        if (stream.status() != QTextStream::Ok && device.reason.isEmpty())
            device.reason = file.errorString();
    }
    if (!device.reason.isEmpty()) {
        *reason = device.reason;
        return false;
    }
    return writeWhole(file, QByteArray(), reason);
}

// One file on its way: the new content in temporary, the former file kept
// in former until every file is in place.
struct Staged {
    QString target;
    QString temporary;
    QString former;
    bool existed = false;
    bool placed = false;
    // The former file could not be put back: it stays under its second
    // name rather than being lost.
    bool keepFormer = false;
};

class Replacement {
public:
    ~Replacement() { removeLeftovers(); }

    bool stage(const QAFileUtil::FileContent& content)
    {
        Staged staged;
        staged.target = content.path;
        staged.existed = QFileInfo::exists(content.path);
        QFile file;
        if (!createBeside(content.path, "saving", file))
            return fail(content.path, file.errorString());
        staged.temporary = file.fileName();
        m_files.push_back(staged);
        if (staged.existed)
            file.setPermissions(QFile::permissions(content.path));
        QString why;
        if (content.write ? !streamWhole(file, content.write, &why)
                          : !writeWhole(file, content.bytes, &why))
            return fail(content.path, why);
        file.close();
        return true;
    }

    // Keeps each former file under a second name (a hard link, else a
    // copy), then moves each new file into place.
    bool commit()
    {
        for (Staged& staged : m_files) {
            if (staged.existed && !keepFormer(staged))
                return false;
        }
        for (Staged& staged : m_files) {
            std::error_code error;
            fs::rename(toPath(staged.temporary), toPath(staged.target), error);
            if (error) {
                fail(staged.target, reasonOf(error));
                putFormerBack();
                return false;
            }
            staged.placed = true;
            staged.temporary.clear();
        }
        return true;
    }

    QString failedPath;
    QString reason;

private:
    bool fail(const QString& path, const QString& why)
    {
        failedPath = path;
        reason = why;
        return false;
    }

    bool keepFormer(Staged& staged)
    {
        QFile name;
        if (!createBeside(staged.target, "former", name))
            return fail(staged.target, name.errorString());
        name.close();
        staged.former = name.fileName();
        std::error_code error;
        fs::remove(toPath(staged.former), error);
        fs::create_hard_link(toPath(staged.target), toPath(staged.former), error);
        if (error) {
            error.clear();
            fs::copy_file(toPath(staged.target), toPath(staged.former),
                          fs::copy_options::overwrite_existing, error);
        }
        if (error) {
            fs::remove(toPath(staged.former), error);
            staged.former.clear();
            return fail(staged.target, reasonOf(error));
        }
        return true;
    }

    void putFormerBack()
    {
        for (Staged& staged : m_files) {
            if (!staged.placed)
                continue;
            std::error_code error;
            if (staged.existed) {
                fs::rename(toPath(staged.former), toPath(staged.target), error);
                staged.keepFormer = bool(error);
                if (!error)
                    staged.former.clear();
            } else {
                fs::remove(toPath(staged.target), error);
            }
        }
    }

    void removeLeftovers()
    {
        for (const Staged& staged : m_files) {
            std::error_code error;
            if (!staged.temporary.isEmpty())
                fs::remove(toPath(staged.temporary), error);
            if (!staged.former.isEmpty() && !staged.keepFormer)
                fs::remove(toPath(staged.former), error);
        }
    }

    std::vector<Staged> m_files;
};

}

bool QAFileUtil::replaceFiles(const QList<FileContent>& files, QString* failedPath,
                              QString* reason)
{
    Replacement replacement;
    bool done = true;
    for (const FileContent& content : files) {
        done = replacement.stage(content);
        if (!done)
            break;
    }
    done = done && replacement.commit();
    if (!done) {
        if (failedPath)
            *failedPath = replacement.failedPath;
        if (reason)
            *reason = replacement.reason;
    }
    return done;
}
