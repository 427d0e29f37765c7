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

#include <QString>

#include <cerrno>
#include <csignal>
#include <cstring>

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

}
