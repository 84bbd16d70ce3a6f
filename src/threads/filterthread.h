#pragma once

#include <atomic>

#include <QThread>

#include "gl/glcontext.h"
#include "image/filters/filtertable.h"
#include "render/renderlock.h"
#include "threads/jobreport.h"
#include "volume/volumeedit.h"

namespace tirn {

struct FilterJob
{
    VoxelArray* array = nullptr;
    FilterJobParameters parameters;
};

/// What is shown while an operation runs.
QString progressText(FilterOperation operation);

/// Runs a job in the current context. `lock` is held only while textures, and what is read while drawing, are
/// changed.
JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress);

/// Filters the current stack away from the interface thread, and replaces its textures.
///
/// One job at a time. The job is given before the start; until the last report its volume must stay, and
/// nobody else works on its images. The hidden context belongs to the thread while it runs, so that a render
/// thread may go on drawing; results go out through the report only. A cancelled job, and one that fails,
/// leaves the volume as it was.
class FilterThread : public QThread
{
public:
    /// Made on the interface thread; shares names with `share`.
    FilterThread(QOpenGLContext& share, RenderLock& lock, JobReport report);
    ~FilterThread() override;

    /// False when a job is under way, or when there is nothing to work on.
    bool filter(FilterJob job);
    bool isBusy() const { return m_busy; }
    void cancel() { m_cancelled = true; }
    void stopAndWait();

protected:
    void run() override;

private:
    HiddenContext m_context;
    RenderLock& m_lock;
    JobReport m_report;
    FilterJob m_job;
    std::atomic<bool> m_cancelled = false;
    /// From the start of a job to its last report.
    std::atomic<bool> m_busy = false;
};

} // namespace tirn
