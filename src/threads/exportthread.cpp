#include "threads/exportthread.h"

namespace tirn {

ExportThread::~ExportThread() { stopAndWait(); }

bool ExportThread::save(ExportJob job)
{
    if (m_busy)
        return false;
    // A job that made its last report may take a moment to end.
    wait();
    m_job = std::move(job);
    m_busy = true;
    m_cancelled = false;
    start();
    return true;
}

void ExportThread::stopAndWait()
{
    cancel();
    wait();
}

void ExportThread::run()
{
    const JobResult result = runExportJob(m_job, {m_report.progress, &m_cancelled});
    // The images are not held any longer than they are needed.
    m_job = {};
    m_busy = false;
    m_report.finished(result);
}

} // namespace tirn
