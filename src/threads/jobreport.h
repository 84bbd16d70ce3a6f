#pragma once

#include <functional>

#include "base/jobresult.h"

namespace tirn {

/// What a job reports, on the thread that it runs on.
struct JobReport
{
    /// Message (empty: keep), steps done and their total.
    std::function<void(const QString&, int, int)> progress;
    /// The last report of each job.
    std::function<void(const JobResult&)> finished;
};

} // namespace tirn
