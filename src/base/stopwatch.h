#pragma once

#include <chrono>

namespace tirn {

/// Elapsed wall-clock time in seconds since construction or the last restart.
class Stopwatch
{
public:
    double seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

    /// The elapsed seconds; counting begins anew.
    double restart()
    {
        const double elapsed = seconds();
        m_start = Clock::now();
        return elapsed;
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_start = Clock::now();
};

} // namespace tirn
