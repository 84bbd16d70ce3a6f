#pragma once

#include <climits>
#include <mutex>

#include <QThread>

namespace tirn {

/// A thread whose work is seen, all of it, by whoever waited for its end. The toolkit's own wait for a thread
/// that has ended already takes no lock that a search for races could see.
class WorkerThread : public QThread
{
public:
    /// False when the time ran out before the thread ended.
    bool wait(unsigned long milliseconds = ULONG_MAX)
    {
        const bool ended = QThread::wait(milliseconds);
        const std::scoped_lock lock(m_end);
        return ended;
    }

protected:
    virtual void work() = 0;

private:
    void run() final
    {
        work();
        const std::scoped_lock lock(m_end);
    }

    std::mutex m_end;
};

} // namespace tirn
