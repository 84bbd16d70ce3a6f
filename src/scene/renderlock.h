#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tirn {

/// The lock that a render thread holds for the whole of a run. Whoever asks first gets it first, so that a
/// holder who gives it up for others gets it back after them.
class RenderLock
{
public:
    void lock();
    void unlock();
    /// For the holder, between frames: lets those who wait have the lock first.
    void yieldToWaiters();
    /// How many wait for the lock now.
    int waiting() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_nextTicket = 0;
    std::uint64_t m_serving = 0;
};

} // namespace tirn
