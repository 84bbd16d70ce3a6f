#include "base/parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#ifdef __linux__
#include <sched.h>
#endif

namespace tirn {

namespace {

thread_local bool insideParallelLoop = false;

/// One call of parallelFor: the parts left to hand out and the count of those still being worked on.
class Loop
{
public:
    Loop(std::int64_t begin, std::int64_t end, std::int64_t grain,
         const std::function<void(std::int64_t, std::int64_t)>& body)
        : m_next(begin), m_end(end), m_grain(grain), m_body(body)
    {}

    /// Takes parts until none are left.
    void work()
    {
        insideParallelLoop = true;
        for (;;) {
            const std::int64_t begin = m_next.fetch_add(m_grain, std::memory_order_relaxed);
            if (begin >= m_end)
                break;
            try {
                m_body(begin, std::min(begin + m_grain, m_end));
            } catch (...) {
                const std::scoped_lock lock(m_errorMutex);
                if (!m_error)
                    m_error = std::current_exception();
                m_next.store(m_end, std::memory_order_relaxed);
            }
        }
        insideParallelLoop = false;
    }

    void rethrow() const
    {
        if (m_error)
            std::rethrow_exception(m_error);
    }

private:
    std::atomic<std::int64_t> m_next;
    const std::int64_t m_end;
    const std::int64_t m_grain;
    const std::function<void(std::int64_t, std::int64_t)>& m_body;
    std::mutex m_errorMutex;
    std::exception_ptr m_error;
};

/// Threads that sleep until a loop is offered. One loop at a time uses them; a second caller works alone.
class Pool
{
public:
    Pool()
    {
        const int workers = parallelThreads() - 1;
        for (int i = 0; i < workers; ++i)
            m_workers.emplace_back([this] { serve(); });
    }

    ~Pool()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_stopping = true;
        }
        m_wake.notify_all();
        for (std::thread& worker : m_workers)
            worker.join();
    }

    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    void run(Loop& loop)
    {
        {
            const std::scoped_lock lock(m_mutex);
            if (m_loop != nullptr) {
                // Someone else has the pool: this loop is done by its caller alone, below.
            } else {
                m_loop = &loop;
                ++m_generation;
            }
        }
        m_wake.notify_all();
        loop.work();
        std::unique_lock lock(m_mutex);
        if (m_loop != &loop)
            return;
        m_loop = nullptr;
        m_idle.wait(lock, [this] { return m_busy == 0; });
    }

private:
    void serve()
    {
        std::uint64_t seen = 0;
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_wake.wait(lock, [&] { return m_stopping || (m_loop != nullptr && m_generation != seen); });
            if (m_stopping)
                return;
            seen = m_generation;
            Loop* loop = m_loop;
            ++m_busy;
            lock.unlock();
            loop->work();
            lock.lock();
            if (--m_busy == 0)
                m_idle.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::vector<std::thread> m_workers;
    Loop* m_loop = nullptr;
    std::uint64_t m_generation = 0;
    int m_busy = 0;
    bool m_stopping = false;
};

} // namespace

int parallelThreads()
{
    static const int threads = [] {
#ifdef __linux__
        cpu_set_t allowed;
        if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
            return std::max(1, CPU_COUNT(&allowed));
#endif
        return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    }();
    return threads;
}

void parallelFor(std::int64_t begin, std::int64_t end, std::int64_t grain,
                 const std::function<void(std::int64_t, std::int64_t)>& body)
{
    if (begin >= end)
        return;
    grain = std::max<std::int64_t>(1, grain);
    if (insideParallelLoop || end - begin <= grain || parallelThreads() == 1) {
        body(begin, end);
        return;
    }
    static Pool pool;
    Loop loop(begin, end, grain, body);
    pool.run(loop);
    loop.rethrow();
}

} // namespace tirn
