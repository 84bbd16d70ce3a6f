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

/// Runs a job in the current context. `lock` is held only while textures, and what is read while drawing, are
/// changed.
JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress);

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

private:
    RenderLock& m_lock;
};

} // namespace tirn
