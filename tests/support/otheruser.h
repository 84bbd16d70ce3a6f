#pragma once

#include <stdexcept>

#include <unistd.h>

namespace tirn::test {

/// While it lives, this process is one of a user without any rights, where it was the administrator's, whom
/// no permission stops. Elsewhere it changes nothing.
class OtherUser
{
public:
    OtherUser()
    {
        if (m_isRoot && (setresgid(kNobody, kNobody, 0) != 0 || setresuid(kNobody, kNobody, 0) != 0))
            throw std::runtime_error("cannot become another user");
    }
    ~OtherUser()
    {
        if (m_isRoot && (setresuid(0, 0, 0) != 0 || setresgid(0, 0, 0) != 0))
            std::terminate();
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    static constexpr unsigned kNobody = 65534;

    bool m_isRoot = getuid() == 0;
};

} // namespace tirn::test
