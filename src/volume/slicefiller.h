#pragma once

#include <cstddef>
#include <cstdint>

#include "volume/stackgeometry.h"

namespace tirn {

/// One channel of a stack in memory: samples interleaved by `channels`, x fastest, then y, then z; bytes or
/// words.
struct SampleView
{
    const void* samples = nullptr;
    int bytesPerSample = 1;
    int channels = 1;
    int channel = 0;
};

/// The three passes of the 2D target, in the order in which they are encoded.
enum class SlicePass {
    Y, ///< planes of x and z, y upward
    X, ///< planes of z and y, x downward
    Z, ///< planes of x and y, z upward
};

/// How many planes a pass has, how many block textures each plane, and the size of each.
struct PassLayout
{
    int planes = 0;
    int blocksPerPlane = 0;
    int width = 0;
    int height = 0;

    std::size_t texels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::size_t texelsPerPlane() const { return texels() * static_cast<std::size_t>(blocksPerPlane); }
};
PassLayout passLayout(const StackGeometry& geometry, SlicePass pass);

/// Fills the textures of planes first to first + count - 1 of a pass into `texels`: plane after plane, the
/// blocks of a plane in the order of their quads, zero outside the data. Works on all cores. `texels` holds
/// count * texelsPerPlane() elements of the view's sample size.
void fillPlanes(const StackGeometry& geometry, SlicePass pass, const SampleView& view, int first, int count,
                void* texels);

/// How many planes of a pass are best filled in one go.
int planesPerBatch(const StackGeometry& geometry, SlicePass pass, int bytesPerSample);

/// Fills layer `layer` of the 3D block (bx, by, bz): a plane of x and y, y from the top of the block
/// downward.
void fillBlockLayer(const StackGeometry& geometry, const SampleView& view, int bx, int by, int bz, int layer,
                    void* texels);

} // namespace tirn
