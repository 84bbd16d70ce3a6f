#pragma once

#include "image/filters/filtertable.h"
#include "scene/renderlock.h"
#include "threads/jobthread.h"
#include "volume/volumeedit.h"

namespace tirn {

struct FilterJob
{
    VoxelArray* array = nullptr;
    FilterJobParameters parameters;
};

/// What is shown while an operation runs.
QString progressText(FilterOperation operation);

/// What was done, for people: "median 5".
QString editName(const FilterJobParameters& parameters);

/// Runs a job in the current context. `lock` is held only while textures, and what is read while drawing, are
/// changed.
JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress,
                       std::unique_ptr<AppliedEdit>* applied = nullptr);

/// Filters the current stack away from the interface thread, and replaces its textures. Until the last report
/// the volume must stay. A cancelled job, and one that fails, leaves it as it was.
class FilterThread : public JobThread
{
public:
    FilterThread(QOpenGLContext& share, RenderLock& lock, JobReport report)
        : JobThread(share, std::move(report)), m_lock(lock)
    {}

    /// False when a job is under way, or when there is nothing to work on.
    bool filter(FilterJob job);
    /// What takes the last job back, once; null where that was not done.
    std::unique_ptr<AppliedEdit> takeApplied() { return std::move(m_applied); }
    /// Undoes a job; false when another one is under way.
    bool takeBack(std::shared_ptr<AppliedEdit> applied);

private:
    std::unique_ptr<AppliedEdit> m_applied;
    RenderLock& m_lock;
};

} // namespace tirn
