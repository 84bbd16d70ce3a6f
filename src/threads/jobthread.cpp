#include "threads/jobthread.h"

#include <exception>
#include <new>
#include <utility>

namespace tirn {

JobThread::JobThread(QOpenGLContext& share, JobReport report)
    : m_context(std::make_unique<HiddenContext>(&share)), m_report(std::move(report))
{}

JobThread::~JobThread() { stopAndWait(); }

bool JobThread::startJob(Job job)
{
    if (m_busy)
        return false;
    // A thread that made its last report may still be on its way out.
    wait();
    m_job = std::move(job);
    m_cancelled = false;
    m_busy = true;
    if (m_context != nullptr)
        m_context->context().moveToThread(this);
    start();
    return true;
}

void JobThread::stopAndWait()
{
    cancel();
    wait();
}

JobResult JobThread::runJob()
{
    if (m_context != nullptr && !m_context->makeCurrent())
        return failedJob(QStringLiteral("Could not allocate a GL context"));
    try {
        return m_job({m_report.progress, &m_cancelled});
    } catch (const std::bad_alloc&) {
        return failedJob(QStringLiteral("Could not allocate memory"));
    } catch (const std::exception& error) {
        return failedJob(QString::fromUtf8(error.what()));
    }
}

void JobThread::work()
{
    const JobResult result = runJob();
    // What a job holds goes with it, while the context is there.
    m_job = nullptr;
    if (m_context != nullptr) {
        m_context->doneCurrent();
        m_context->context().moveToThread(thread());
    }
    m_busy = false;
    if (m_report.finished)
        m_report.finished(result);
}

} // namespace tirn
