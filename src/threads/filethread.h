#pragma once

#include "threads/jobthread.h"
#include "threads/loaddescription.h"
#include "threads/loadreport.h"
#include "threads/loadsurroundings.h"

namespace tirn {

/// Reads and encodes stacks away from the interface thread.
///
/// One load at a time. It takes no lock of the render thread: textures are complete before anyone learns of
/// them. A finished stack is the last report of all. Cancelling ends the load with the file at hand.
class FileThread
{
public:
    /// Made on the interface thread; shares names with `share`.
    FileThread(QOpenGLContext& share, LoadReport report);

    /// False, with nothing changed, when a load is under way.
    bool startLoad(LoadDescription description, LoadSurroundings surroundings);
    void stopLoading() { m_thread.cancel(); }
    void stopAndWait() { m_thread.stopAndWait(); }
    /// Waits for the end of a load, not of its last report.
    void wait() { m_thread.wait(); }
    bool isLoading() const { return m_thread.isBusy(); }

private:
    void loadEnded(const JobResult& result);

    LoadReport m_report;
    /// What the load at hand has made.
    std::optional<LoadedStack> m_loaded;
    /// Last, so that it ends before what it reports through.
    JobThread m_thread;
};

} // namespace tirn
