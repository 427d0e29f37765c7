#pragma once

// Ways to make a save fail that work for root as well as for a normal user
// (tests run as root on CI, where permission bits alone stop nothing).
//
//  - FileSizeLimit: RLIMIT_FSIZE with SIGXFSZ ignored. A write that would
//    take a file past the limit fails with EFBIG ("File too large"), as a
//    full disk fails one with ENOSPC: the file ends short.
//  - PermissionsEnforced: drops CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH and
//    CAP_FOWNER from this thread's effective capabilities, so that root too
//    is refused a read-only directory. A normal user has none to drop.
//
// Both apply to the whole process (the limit) or the calling thread (the
// capabilities) while the object lives, and undo themselves after.

#include <QDir>
#include <QFile>
#include <QString>

#include <cerrno>
#include <csignal>
#include <cstring>

#include <memory>
#include <utility>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace FailingStorage {

// The system's text for an errno value, as Qt's errorString() gives it.
inline QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        m_set = ::getrlimit(RLIMIT_FSIZE, &m_old) == 0;
        if (m_set) {
            rlimit limit = m_old;
            limit.rlim_cur = bytes;
            m_set = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
        }
    }
    ~FileSizeLimit()
    {
        if (m_set)
            ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    bool active() const { return m_set; }

private:
    rlimit m_old{};
    bool m_set = false;
    void (*m_handler)(int) = SIG_DFL;
};

class PermissionsEnforced {
public:
    PermissionsEnforced()
    {
        m_header.version = _LINUX_CAPABILITY_VERSION_3;
        m_header.pid = 0;
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct dropped[2];
        std::memcpy(dropped, m_saved, sizeof dropped);
        for (int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            dropped[cap / 32].effective &= ~(1u << (cap % 32));
        m_dropped = ::syscall(SYS_capset, &m_header, dropped) == 0;
    }
    ~PermissionsEnforced()
    {
        if (m_dropped)
            ::syscall(SYS_capset, &m_header, m_saved);
    }
    PermissionsEnforced(const PermissionsEnforced&) = delete;
    PermissionsEnforced& operator=(const PermissionsEnforced&) = delete;

    // Whether permission bits now bind this thread: always for a normal
    // user, for root once the capabilities are dropped.
    bool active() const { return m_dropped || ::geteuid() != 0; }

private:
    __user_cap_header_struct m_header{};
    __user_cap_data_struct m_saved[2]{};
    bool m_dropped = false;
};

// One of the ways above named as a test's data row gives it, applied to
// dir while the object lives: "limit:<bytes>", "read-only" (dir made
// read-only, the permission bits enforced) or "removed" (dir removed).
class Failure {
public:
    Failure(const QString& mechanism, const QString& dir)
        : m_dir(dir)
    {
        if (mechanism.startsWith(QLatin1String("limit:"))) {
            m_limit = std::make_unique<FileSizeLimit>(mechanism.mid(6).toULongLong());
            m_ready = m_limit->active();
        } else if (mechanism == QLatin1String("read-only")) {
            m_ready = m_readOnly = QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
            m_enforced = std::make_unique<PermissionsEnforced>();
        } else if (mechanism == QLatin1String("removed")) {
            m_ready = QDir(dir).removeRecursively();
        }
    }
    ~Failure() { end(); }
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;

    // Whether the failure is in place.
    bool ready() const { return m_ready; }
    // Whether permission bits bind nothing here (root that cannot drop its
    // capabilities): the case is to be skipped.
    bool powerless() const { return m_enforced && !m_enforced->active(); }
    // The limit lifted, the capabilities and the directory's rights back.
    void end()
    {
        m_limit.reset();
        m_enforced.reset();
        if (std::exchange(m_readOnly, false))
            QFile::setPermissions(m_dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

private:
    QString m_dir;
    std::unique_ptr<FileSizeLimit> m_limit;
    std::unique_ptr<PermissionsEnforced> m_enforced;
    bool m_readOnly = false;
    bool m_ready = false;
};

}
