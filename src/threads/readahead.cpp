#include "threads/readahead.h"

#include <utility>

namespace tirn {

ReadAhead::~ReadAhead()
{
    if (!m_thread.joinable())
        return;
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void ReadAhead::start(int index, Job job)
{
    if (!m_thread.joinable())
        m_thread = std::thread([this] { serve(); });
    m_index = index;
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_busy; });
        m_result.reset();
        m_error = nullptr;
        m_job = std::move(job);
        m_busy = true;
    }
    m_changed.notify_all();
}

std::shared_ptr<ImageFile> ReadAhead::take()
{
    m_index = -1;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_busy; });
    if (m_error)
        std::rethrow_exception(std::exchange(m_error, nullptr));
    return std::move(m_result);
}

void ReadAhead::serve()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_busy || m_stopping; });
        if (!m_busy)
            return;
        const Job job = std::exchange(m_job, nullptr);
        lock.unlock();
        std::shared_ptr<ImageFile> result;
        std::exception_ptr error;
        try {
            result = job();
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        m_result = std::move(result);
        m_error = std::move(error);
        m_busy = false;
        m_changed.notify_all();
    }
}

} // namespace tirn
