#pragma once

#include <atomic>
#include <functional>
#include <optional>

#include <QThread>

#include "gl/glcontext.h"
#include "threads/loaddescription.h"
#include "threads/loadsurroundings.h"
#include "threads/namedstackload.h"

namespace tirn {

/// Reads and encodes stacks away from the interface thread.
///
/// One load at a time. The thread takes its input when a load starts; the hidden context belongs to it while
/// it runs; results go out through the report only, a finished stack as the last of all. It takes no lock of
/// the render thread: textures are complete before anyone learns of them. Cancelling ends the load with the
/// file at hand, and may be done at any time. All else is called on the interface thread.
class FileThread : public QThread
{
public:
    /// Made on the interface thread; shares names with `share`.
    FileThread(QOpenGLContext& share, LoadReport report);
    ~FileThread() override;

    /// The next load, for the forms to fill in.
    LoadDescription& description() { return m_description; }
    /// Starts it and begins a new description. False, with nothing changed, when a load is under way.
    bool startLoad(LoadSurroundings surroundings);
    /// Loads a stack that was named at the start of the program; false when a load is under way.
    bool load(LoadRequest request);
    void stopLoading() { m_cancelled = true; }
    void stopAndWait();
    bool isLoading() const { return m_loading; }

protected:
    void run() override;

private:
    using Job = std::function<std::optional<LoadedStack>()>;

    bool startJob(Job job);

    HiddenContext m_context;
    LoadReport m_report;
    LoadDescription m_description;
    Job m_job;
    std::atomic<bool> m_cancelled = false;
    std::atomic<bool> m_loading = false;
};

} // namespace tirn
