#include "threads/filethread.h"

#include "base/log.h"
#include "threads/stackloading.h"

namespace tirn {

FileThread::FileThread(QOpenGLContext& share, LoadReport report)
    : m_context(&share), m_report(std::move(report))
{}

FileThread::~FileThread() { stopAndWait(); }

bool FileThread::startLoad(LoadSurroundings surroundings)
{
    if (m_loading)
        return false;
    const int defaultEncode = surroundings.defaultEncode;
    const auto loading = std::make_shared<StackLoading>(std::move(m_description), std::move(surroundings),
                                                        m_report, m_cancelled);
    logDebug("defaultEncode %d", defaultEncode);
    m_description = LoadDescription(defaultEncode);
    return startJob([loading] { return loading->run(); });
}

bool FileThread::load(LoadRequest request)
{
    if (m_loading || request.names.isEmpty())
        return false;
    return startJob(
        [this, request = std::move(request)] { return loadStack(request, m_report, m_cancelled); });
}

bool FileThread::startJob(Job job)
{
    // A thread that has done its work may still be on its way out.
    wait();
    m_job = std::move(job);
    m_cancelled = false;
    m_loading = true;
    m_context.context().moveToThread(this);
    start();
    return true;
}

void FileThread::stopAndWait()
{
    stopLoading();
    wait();
}

void FileThread::run()
{
    std::optional<LoadedStack> loaded;
    if (m_context.makeCurrent())
        loaded = m_job();
    else
        m_report.progress("Could not allocate a GL context", 0, 0, true);
    // What an unfinished load has made goes with it, while the context is there.
    m_job = nullptr;
    m_context.doneCurrent();
    m_context.context().moveToThread(thread());
    m_loading = false;
    if (loaded)
        m_report.loaded(std::move(*loaded));
}

} // namespace tirn
