#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "formats/files/segmentread.h"

namespace tirn {

/// Reads layers whose channels lie apart and interleaves each into its place of `destination`, several layers
/// at a time. `readChannel(layer, channel, buffer)` gets one channel of a layer, `channelBytes` bytes; it
/// runs on several threads at once. False when any call was.
bool readPlanarLayers(int layers, int channels, std::int64_t channelBytes, int sampleBytes,
                      std::byte* destination, const std::function<bool(int, int, std::byte*)>& readChannel);

} // namespace tirn
