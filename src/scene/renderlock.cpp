#include "scene/renderlock.h"

namespace tirn {

void RenderLock::lock()
{
    std::unique_lock guard(m_mutex);
    const std::uint64_t ticket = m_nextTicket++;
    m_changed.wait(guard, [&] { return m_serving == ticket; });
}

void RenderLock::unlock()
{
    {
        const std::scoped_lock guard(m_mutex);
        ++m_serving;
    }
    m_changed.notify_all();
}

int RenderLock::waiting() const
{
    const std::scoped_lock guard(m_mutex);
    return m_nextTicket > m_serving ? static_cast<int>(m_nextTicket - m_serving) - 1 : 0;
}

void RenderLock::yieldToWaiters()
{
    if (waiting() == 0)
        return;
    unlock();
    lock();
}

} // namespace tirn
