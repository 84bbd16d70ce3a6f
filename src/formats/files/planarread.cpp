#include "formats/files/planarread.h"

#include <atomic>

#include "base/parallel.h"
#include "base/voxelbuffer.h"
#include "image/interleave.h"

namespace tirn {

bool readPlanarLayers(int layers, int channels, std::int64_t channelBytes, int sampleBytes,
                      std::byte* destination, const std::function<bool(int, int, std::byte*)>& readChannel)
{
    std::atomic<bool> failed = false;
    parallelFor(0, layers, 1, [&](std::int64_t begin, std::int64_t end) {
        VoxelBuffer planes(channels > 1 ? channelBytes * channels : 0);
        for (std::int64_t layer = begin; layer < end && !failed; ++layer) {
            std::byte* to = destination + layer * channels * channelBytes;
            if (channels == 1) {
                failed = failed || !readChannel(static_cast<int>(layer), 0, to);
                continue;
            }
            std::vector<const std::byte*> parts;
            for (int c = 0; c < channels; ++c) {
                std::byte* plane = planes.data() + c * channelBytes;
                failed = failed || !readChannel(static_cast<int>(layer), c, plane);
                parts.push_back(plane);
            }
            interleave(parts, channelBytes / sampleBytes, sampleBytes, to);
        }
    });
    return !failed;
}

} // namespace tirn
