#pragma once

#include <atomic>

#include <QThread>

#include "threads/exportjob.h"
#include "threads/jobreport.h"

namespace tirn {

/// Writes a stack away from the interface thread.
///
/// One job at a time. The job is given before the start; until the last report nobody else works on its
/// images. Results go out through the report only.
class ExportThread : public QThread
{
public:
    explicit ExportThread(JobReport report) : m_report(std::move(report)) {}
    ~ExportThread() override;

    /// False when a job is under way.
    bool save(ExportJob job);
    bool isBusy() const { return m_busy; }
    void cancel() { m_cancelled = true; }
    void stopAndWait();

protected:
    void run() override;

private:
    JobReport m_report;
    ExportJob m_job;
    std::atomic<bool> m_cancelled = false;
    /// From the start of a job to its last report.
    std::atomic<bool> m_busy = false;
};

} // namespace tirn
