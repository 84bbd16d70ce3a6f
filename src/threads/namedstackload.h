#pragma once

#include <atomic>
#include <optional>
#include <vector>

#include <QStringList>

#include "threads/loadreport.h"

namespace tirn {

/// A stack that was named when the program was started.
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

/// Reads and encodes the stack of a request in the current context. Reports progress, and at the end gives
/// the finished volume or has reported a text of what went wrong.
std::optional<LoadedStack> loadStack(const LoadRequest& request, const LoadReport& report,
                                     const std::atomic<bool>& cancelled);

} // namespace tirn
