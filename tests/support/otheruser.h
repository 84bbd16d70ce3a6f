#pragma once

#include <unistd.h>

namespace tirn::test {

/// While it lives, a process of the superuser is an ordinary user's, who may not read what is forbidden.
class OtherUser
{
public:
    OtherUser()
    {
        if (m_isSuperuser && setresuid(kNobody, kNobody, 0) != 0)
            m_isSuperuser = false;
    }
    ~OtherUser()
    {
        if (m_isSuperuser && setresuid(0, 0, 0) != 0)
            _exit(1);
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    bool m_isSuperuser = geteuid() == 0;
};

} // namespace tirn::test
