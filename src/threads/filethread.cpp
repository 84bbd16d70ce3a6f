#include "threads/filethread.h"

#include <utility>

#include "base/log.h"
#include "threads/stackloading.h"

namespace tirn {

FileThread::FileThread(QOpenGLContext& share, LoadReport report)
    : m_report(std::move(report)),
      m_thread(share, {nullptr, [this](const JobResult& result) { loadEnded(result); }})
{}

bool FileThread::startLoad(LoadDescription description, LoadSurroundings surroundings)
{
    if (isLoading())
        return false;
    logDebug("defaultEncode %d", surroundings.defaultEncode);
    // An unfinished load holds textures, which go with it while the context is there.
    auto loading = std::make_shared<StackLoading>(std::move(description), std::move(surroundings), m_report,
                                                  m_thread.cancelled());
    return m_thread.startJob([this, loading = std::move(loading)](const Progress&) {
        m_loaded = loading->run();
        return JobResult{JobOutcome::Done, {}};
    });
}

void FileThread::loadEnded(const JobResult& result)
{
    if (result.outcome == JobOutcome::Failed)
        m_report.progress(result.error, 0, 0, true);
    if (std::optional<LoadedStack> loaded = std::exchange(m_loaded, std::nullopt))
        m_report.loaded(std::move(*loaded));
}

} // namespace tirn
