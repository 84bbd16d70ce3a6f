#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "image/imagefile.h"

namespace tirn {

/// Reads one stack on a thread of its own while the owner does something else. The thread begins with the
/// first job and ends with this object, which waits for a job under way.
class ReadAhead
{
public:
    using Job = std::function<std::shared_ptr<ImageFile>()>;

    ReadAhead() = default;
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Starts to read stack `index`; a result that nobody took is given up.
    void start(int index, Job job);
    /// The stack that was asked for last and not taken yet, -1 for none.
    int index() const { return m_index; }
    /// Waits for it. Throws what the job threw.
    std::shared_ptr<ImageFile> take();

private:
    void serve();

    int m_index = -1;
    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Job m_job;
    bool m_busy = false;
    bool m_stopping = false;
    std::shared_ptr<ImageFile> m_result;
    std::exception_ptr m_error;
};

} // namespace tirn
