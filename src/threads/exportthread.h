#pragma once

#include "threads/exportjob.h"
#include "threads/jobthread.h"

namespace tirn {

/// Writes a stack away from the interface thread.
class ExportThread : public JobThread
{
public:
    using JobThread::JobThread;

    /// False when a job is under way.
    bool save(ExportJob job)
    {
        return startJob(
            [job = std::move(job)](const Progress& progress) { return runExportJob(job, progress); });
    }
};

} // namespace tirn
