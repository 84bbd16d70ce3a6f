#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include <QStringList>
#include <QThread>

#include "gl/glcontext.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What a load is to make.
struct LoadRequest
{
    /// Each name is a channel when the first file has one; otherwise the first name is the stack.
    QStringList names;
    VolumeOptions options;
    /// The palette of channel 0 and the number of palettes: channel c gets (first + c) modulo count.
    int firstPalette = 0;
    int paletteCount = 0;
    std::vector<int> paletteIds;
};

/// What a load reports, on the thread that loads.
struct LoadReport
{
    /// Message (empty: keep), value, total (-1: continue from the last base), done.
    std::function<void(const QString&, int, int, bool)> progress;
    std::function<void(std::unique_ptr<VoxelArray>, const std::vector<QStringList>&)> loaded;
};

/// Reads and encodes the stack of a request in the current context. Reports progress, and at the end either
/// the finished volume or a text of what went wrong.
void loadStack(const LoadRequest& request, const LoadReport& report, const std::atomic<bool>& cancelled);

/// Reads and encodes stacks away from the interface thread.
///
/// One load at a time. The request is set before the start; the hidden context belongs to the thread while it
/// runs; results go out through the report only. Cancelling ends the load with the file at hand.
class FileThread : public QThread
{
public:
    /// Made on the interface thread; shares names with `share`.
    FileThread(QOpenGLContext& share, LoadReport report);
    ~FileThread() override;

    /// False when a load is under way.
    bool load(LoadRequest request);
    void stopLoading() { m_cancelled = true; }
    void stopAndWait();

protected:
    void run() override;

private:
    HiddenContext m_context;
    LoadReport m_report;
    LoadRequest m_request;
    std::atomic<bool> m_cancelled = false;
};

} // namespace tirn
