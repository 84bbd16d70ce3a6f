#include <algorithm>
#include <cstring>
#include <optional>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "image/imagefile.h"
#include "image/steploop.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

constexpr std::int64_t kGrainBytes = std::int64_t{1} << 20;
constexpr std::int64_t kProjectionPiece = std::int64_t{16} << 10;

/// A box in a stack, in voxels.
struct Box
{
    int x = 0;
    int y = 0;
    int z = 0;
};

/// The sizes in bytes by which the rows of a stack of voxels are found.
struct Layout
{
    Box size;
    std::int64_t voxelBytes;

    std::int64_t row(std::int64_t y, std::int64_t z) const { return (z * size.y + y) * size.x * voxelBytes; }
    std::int64_t rowBytes() const { return size.x * voxelBytes; }
};

std::int64_t voxelBytes(const ImageAttributes& attributes)
{
    return std::int64_t{attributes.channels} * attributes.bytesPerSample();
}

Layout layoutOf(const ImageAttributes& attributes)
{
    return {{attributes.x, attributes.y, attributes.z}, voxelBytes(attributes)};
}

std::optional<std::int64_t> bytesOf(const Box& size, std::int64_t voxelBytes)
{
    return checkedProduct({size.x, size.y, size.z, voxelBytes});
}

/// The rows of all layers, on all cores. False when cancelled.
template <class Body>
bool forEachRow(const Layout& layout, const Progress& progress, Body body)
{
    const StepLoop loop = {layout.size.z, layout.size.y, layout.rowBytes()};
    const auto rows = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t row = begin; row < end; ++row)
            body(row % layout.size.y, row / layout.size.y);
    };
    return runSteps(loop, QString(), progress, rows) == loop.steps;
}

void copyBytes(std::uint8_t* to, const std::uint8_t* from, std::int64_t bytes)
{
    if (bytes > 0)
        std::memcpy(to, from, static_cast<std::size_t>(bytes));
}

template <class Sample>
TIRN_INLINE void takeLarger(Sample* __restrict to, const Sample* from, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = std::max(to[i], from[i]);
}

TIRN_TARGET_CLONES void takeLargerBytes(std::uint8_t* to, const std::uint8_t* from, std::int64_t count)
{
    takeLarger(to, from, count);
}

TIRN_TARGET_CLONES void takeLargerWords(std::uint16_t* to, const std::uint16_t* from, std::int64_t count)
{
    takeLarger(to, from, count);
}

/// `bytes` bytes of samples of either width.
void takeLargerSamples(std::uint8_t* to, const std::uint8_t* from, std::int64_t bytes, bool words)
{
    if (words)
        takeLargerWords(reinterpret_cast<std::uint16_t*>(to), reinterpret_cast<const std::uint16_t*>(from),
                        bytes / 2);
    else
        takeLargerBytes(to, from, bytes);
}

bool insideAxis(int lowest, int highest, int size)
{
    return lowest <= highest && lowest >= 0 && highest < size;
}

} // namespace

bool ImageFile::crop(int minX, int maxX, int minY, int maxY, int minZ, int maxZ, const Progress& progress)
{
    logDebug("enter ImageFile::crop()");
    ImageAttributes& a = m_attributes;
    if (!isLoaded() || !insideAxis(minX, maxX, a.x) || !insideAxis(minY, maxY, a.y) ||
        !insideAxis(minZ, maxZ, a.z)) {
        logDebug("bad cropping dimensions");
        logDebug("exit ImageFile::crop()");
        return false;
    }
    const Box size = {maxX - minX + 1, maxY - minY + 1, maxZ - minZ + 1};
    logDebug("minX: %d maxX: %d", minX, maxX);
    logDebug("minY: %d maxY: %d", minY, maxY);
    logDebug("minZ: %d maxZ: %d", minZ, maxZ);
    logDebug("newX: %d", size.x);
    logDebug("newY: %d", size.y);
    logDebug("newZ: %d", size.z);
    const Layout from = layoutOf(a);
    const Layout to = {size, voxelBytes(a)};
    VoxelBuffer result = allocateVoxels(bytesOf(size, to.voxelBytes), "Could not allocate memory for crop");
    auto* cropped = reinterpret_cast<std::uint8_t*>(result.data());
    const bool done = forEachRow(to, progress, [&](std::int64_t y, std::int64_t z) {
        copyBytes(cropped + to.row(y, z), stackData() + from.row(y + minY, z + minZ) + minX * from.voxelBytes,
                  to.rowBytes());
    });
    if (!done)
        return false;
    setStackData(std::move(result));
    a.x = size.x;
    a.y = size.y;
    a.z = size.z;
    logDebug("exit ImageFile::crop()");
    return true;
}

bool ImageFile::pad(int newX, int newY, int newZ, const Progress& progress)
{
    logDebug("enter ImageFile::pad()");
    ImageAttributes& a = m_attributes;
    if (!isLoaded() || newX < a.x || newY < a.y || newZ < a.z) {
        logDebug("exit ImageFile::pad(error)");
        return false;
    }
    const Box left = {(newX - a.x) / 2, (newY - a.y) / 2, (newZ - a.z) / 2};
    const Layout from = layoutOf(a);
    const Layout to = {{newX, newY, newZ}, voxelBytes(a)};
    VoxelBuffer result = allocateVoxels(bytesOf(to.size, to.voxelBytes), "Could not allocate memory for pad");
    auto* padded = reinterpret_cast<std::uint8_t*>(result.data());
    const bool done = forEachRow(to, progress, [&](std::int64_t y, std::int64_t z) {
        std::uint8_t* row = padded + to.row(y, z);
        const std::int64_t oldY = y - left.y;
        const std::int64_t oldZ = z - left.z;
        if (oldY < 0 || oldY >= from.size.y || oldZ < 0 || oldZ >= from.size.z) {
            std::fill_n(row, to.rowBytes(), std::uint8_t{0});
            return;
        }
        const std::int64_t start = left.x * to.voxelBytes;
        std::fill_n(row, start, std::uint8_t{0});
        copyBytes(row + start, stackData() + from.row(oldY, oldZ), from.rowBytes());
        std::fill(row + start + from.rowBytes(), row + to.rowBytes(), std::uint8_t{0});
    });
    if (!done)
        return false;
    setStackData(std::move(result));
    a.x = newX;
    a.y = newY;
    a.z = newZ;
    logDebug("exit ImageFile::pad()");
    return true;
}

bool ImageFile::padBack(int newZ, const Progress& progress)
{
    logDebug("enter ImageFile::padBack()");
    ImageAttributes& a = m_attributes;
    if (!isLoaded() || newZ < a.z) {
        logDebug("exit ImageFile::padBack(error)");
        return false;
    }
    const Layout from = layoutOf(a);
    const Layout to = {{a.x, a.y, newZ}, voxelBytes(a)};
    VoxelBuffer result =
        allocateVoxels(bytesOf(to.size, to.voxelBytes), "Could not allocate memory for padback");
    auto* padded = reinterpret_cast<std::uint8_t*>(result.data());
    const bool done = forEachRow(to, progress, [&](std::int64_t y, std::int64_t z) {
        if (z < from.size.z)
            copyBytes(padded + to.row(y, z), stackData() + from.row(y, z), to.rowBytes());
        else
            std::fill_n(padded + to.row(y, z), to.rowBytes(), std::uint8_t{0});
    });
    if (!done)
        return false;
    setStackData(std::move(result));
    a.z = newZ;
    logDebug("exit ImageFile::padBack()");
    return true;
}

bool ImageFile::maxIntensityProject(const Progress& progress)
{
    if (!ensureLoaded() || m_attributes.z < 1)
        return false;
    const Layout from = layoutOf(m_attributes);
    const std::int64_t layer = from.rowBytes() * from.size.y;
    VoxelBuffer result = allocateVoxels(layer, "Could not allocate memory for maxIntensityProject");
    auto* projected = reinterpret_cast<std::uint8_t*>(result.data());
    // Pieces that stay in the cache while all layers pass over them.
    const StepLoop loop = {(layer + kProjectionPiece - 1) / kProjectionPiece, 1,
                           kProjectionPiece * from.size.z};
    const auto pieces = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t piece = begin; piece < end; ++piece) {
            const std::int64_t start = piece * kProjectionPiece;
            const std::int64_t bytes = std::min(kProjectionPiece, layer - start);
            copyBytes(projected + start, stackData() + start, bytes);
            for (std::int64_t z = 1; z < from.size.z; ++z)
                takeLargerSamples(projected + start, stackData() + z * layer + start, bytes,
                                  m_attributes.hasWords());
        }
    };
    if (runSteps(loop, QString(), progress, pieces) < loop.steps)
        return false;
    setStackData(std::move(result));
    m_attributes.z = 1;
    generateStatistics();
    return true;
}

bool ImageFile::maxMerge(const ImageFile& other)
{
    const ImageAttributes& a = m_attributes;
    const ImageAttributes& b = other.m_attributes;
    if (a.x != b.x || a.y != b.y || a.z != b.z || a.x < 0 || a.y < 0 || a.z < 0 || a.bitDepth != b.bitDepth ||
        !isLoaded() || !other.isLoaded())
        return false;
    // Stacks of unlike channels are compared as far as both go.
    const std::int64_t bytes = std::min(sampleCount(), other.sampleCount()) * a.bytesPerSample();
    parallelFor(0, bytes / a.bytesPerSample(), kGrainBytes, [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t start = begin * a.bytesPerSample();
        takeLargerSamples(stackData() + start, other.stackData() + start, (end - begin) * a.bytesPerSample(),
                          a.hasWords());
    });
    forgetValues();
    return true;
}

} // namespace tirn
