#pragma once

#include <csignal>
#include <cstdint>

#include <sys/resource.h>

namespace tirn::test {

/// While it lives, no file of this process grows past `bytes`: writing stops in the middle, as on a full
/// disk.
class SmallDisk
{
public:
    explicit SmallDisk(std::int64_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit small = {static_cast<rlim_t>(bytes), m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    rlimit m_limit = {};
    void (*m_handler)(int);
};

} // namespace tirn::test
