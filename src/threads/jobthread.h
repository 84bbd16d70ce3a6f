#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "base/progress.h"
#include "base/workerthread.h"
#include "gl/glcontext.h"
#include "threads/jobreport.h"

namespace tirn {

/// Runs one job at a time away from the interface thread.
///
/// A job takes its input before it starts; until its last report nobody else works on it. A thread that was
/// made with a context lends it to its jobs, so that a render thread may go on drawing meanwhile. Results go
/// out through the report only, on this thread. All else is called on the thread that made it.
class JobThread : public WorkerThread
{
public:
    using Job = std::function<JobResult(const Progress&)>;

    /// Jobs do without a context.
    explicit JobThread(JobReport report) : m_report(std::move(report)) {}
    /// Made on the interface thread; shares names with `share`.
    JobThread(QOpenGLContext& share, JobReport report);
    ~JobThread() override;

    /// False, with nothing changed, when a job is under way. What a job throws counts as its failure.
    bool startJob(Job job);
    /// From the start of a job to its last report.
    bool isBusy() const { return m_busy; }
    /// Asks for the end of the job, at any time.
    void cancel() { m_cancelled = true; }
    const std::atomic<bool>& cancelled() const { return m_cancelled; }
    void stopAndWait();

protected:
    void work() override;

private:
    JobResult runJob();

    std::unique_ptr<HiddenContext> m_context;
    JobReport m_report;
    Job m_job;
    std::atomic<bool> m_cancelled = false;
    std::atomic<bool> m_busy = false;
};

} // namespace tirn
