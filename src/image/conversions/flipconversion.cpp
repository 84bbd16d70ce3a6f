#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

#include "image/imagefile.h"
#include "image/steploop.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

/// Bytes that change places at a time when rows or layers do.
constexpr std::int64_t kSwapBytes = std::int64_t{16} << 10;

template <class Item>
TIRN_INLINE void reverseItems(const std::uint8_t* from, std::int64_t count, std::uint8_t* __restrict to)
{
    for (std::int64_t i = 0; i < count; ++i) {
        Item item;
        std::memcpy(&item, from + (count - 1 - i) * static_cast<std::int64_t>(sizeof(Item)), sizeof(Item));
        std::memcpy(to + i * static_cast<std::int64_t>(sizeof(Item)), &item, sizeof(Item));
    }
}

constexpr int kShuffled = 16;
typedef std::uint8_t ShuffledBytes __attribute__((vector_size(kShuffled)));

/// The bytes in another order; compilers name it differently, or not at all.
TIRN_INLINE ShuffledBytes shuffled(ShuffledBytes bytes, ShuffledBytes order)
{
#if defined(__GNUC__) && !defined(__clang__)
    return __builtin_shuffle(bytes, order);
#else
    ShuffledBytes result = {};
    for (int i = 0; i < kShuffled; ++i)
        result[i] = bytes[order[i] % kShuffled];
    return result;
#endif
}

/// Voxels of up to 8 bytes, as many as fit a vector at a time.
TIRN_INLINE void reverseByShuffling(const std::uint8_t* from, std::int64_t count, int voxelBytes,
                                    std::uint8_t* to)
{
    const int voxels = kShuffled / voxelBytes;
    // What is loaded ends with the voxels that are wanted.
    const int unused = kShuffled - voxels * voxelBytes;
    ShuffledBytes order = {};
    for (int i = 0; i < voxels * voxelBytes; ++i)
        order[i] =
            static_cast<std::uint8_t>(unused + (voxels - 1 - i / voxelBytes) * voxelBytes + i % voxelBytes);
    std::int64_t left = count;
    for (; left * voxelBytes >= kShuffled; left -= voxels) {
        ShuffledBytes bytes;
        std::memcpy(&bytes, from + left * voxelBytes - kShuffled, sizeof bytes);
        bytes = shuffled(bytes, order);
        std::memcpy(to + (count - left) * voxelBytes, &bytes, sizeof bytes);
    }
    for (; left > 0; --left)
        std::memcpy(to + (count - left) * voxelBytes, from + (left - 1) * voxelBytes,
                    static_cast<std::size_t>(voxelBytes));
}

/// `to` becomes the row of `count` voxels backwards.
TIRN_TARGET_CLONES void reverseRow(const std::uint8_t* from, std::int64_t count, int voxelBytes,
                                   std::uint8_t* to)
{
    switch (voxelBytes) {
    case 1:
        return reverseItems<std::uint8_t>(from, count, to);
    case 2:
        return reverseItems<std::uint16_t>(from, count, to);
    case 4:
        return reverseItems<std::uint32_t>(from, count, to);
    case 3:
    case 5:
    case 6:
    case 7:
        return reverseByShuffling(from, count, voxelBytes, to);
    case 8:
        return reverseItems<std::uint64_t>(from, count, to);
    default:
        for (std::int64_t i = 0; i < count; ++i)
            std::memcpy(to + i * voxelBytes, from + (count - 1 - i) * voxelBytes,
                        static_cast<std::size_t>(voxelBytes));
    }
}

void exchange(std::uint8_t* left, std::uint8_t* right, std::int64_t bytes)
{
    std::uint8_t buffer[kSwapBytes];
    for (std::int64_t done = 0; done < bytes; done += kSwapBytes) {
        const auto part = static_cast<std::size_t>(std::min(kSwapBytes, bytes - done));
        std::memcpy(buffer, left + done, part);
        std::memcpy(left + done, right + done, part);
        std::memcpy(right + done, buffer, part);
    }
}

/// The sizes in bytes that a flip walks by.
struct Strides
{
    int voxel;
    std::int64_t row;
    std::int64_t layer;
};

void flipRows(std::uint8_t* stack, const Strides& strides, std::int64_t begin, std::int64_t end)
{
    std::vector<std::uint8_t> copy(static_cast<std::size_t>(strides.row));
    for (std::int64_t row = begin; row < end; ++row) {
        std::uint8_t* at = stack + row * strides.row;
        // The stack is read forwards, as processors expect it to go on.
        std::memcpy(copy.data(), at, copy.size());
        reverseRow(copy.data(), strides.row / strides.voxel, strides.voxel, at);
    }
}

} // namespace

void ImageFile::flip(char axis, const Progress& progress)
{
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(axis)));
    if (upper != 'X' && upper != 'Y' && upper != 'Z')
        return;
    if (!ensureLoaded())
        return;
    const ImageAttributes& a = m_attributes;
    if (sampleCount() == 0)
        return;
    const int voxel = a.channels * a.bytesPerSample();
    const Strides strides = {voxel, std::int64_t{voxel} * a.x, std::int64_t{voxel} * a.x * a.y};
    std::uint8_t* stack = stackData();
    StepLoop loop;
    std::function<void(std::int64_t, std::int64_t)> body;
    if (upper == 'X') {
        loop = {a.z, a.y, strides.row};
        body = [&](std::int64_t begin, std::int64_t end) { flipRows(stack, strides, begin, end); };
    } else if (upper == 'Y') {
        loop = {a.z, a.y / 2, 2 * strides.row};
        body = [&](std::int64_t begin, std::int64_t end) {
            for (std::int64_t pair = begin; pair < end; ++pair) {
                std::uint8_t* layer = stack + pair / (a.y / 2) * strides.layer;
                const std::int64_t row = pair % (a.y / 2);
                exchange(layer + row * strides.row, layer + (a.y - 1 - row) * strides.row, strides.row);
            }
        };
    } else {
        loop = {a.z / 2, a.y, 2 * strides.row};
        body = [&](std::int64_t begin, std::int64_t end) {
            for (std::int64_t row = begin; row < end; ++row) {
                const std::int64_t layer = row / a.y;
                std::uint8_t* left = stack + row * strides.row;
                exchange(left, left + (a.z - 1 - 2 * layer) * strides.layer, strides.row);
            }
        };
    }
    const QString message = QStringLiteral("Flipping along %1 axis").arg(QLatin1Char(upper));
    const std::int64_t done = runSteps(loop, message, progress, body);
    // A second exchange restores what a cancelled flip has done.
    if (done < loop.steps)
        body(0, done * loop.itemsPerStep);
    else if (upper == 'Z')
        forgetStatistics();
}

} // namespace tirn
