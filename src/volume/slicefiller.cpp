#include "volume/slicefiller.h"

#include <algorithm>
#include <cstring>

#include "base/parallel.h"

namespace tirn {

namespace {

/// The part of a block that lies inside the data: texels begin to end - 1, the first of which shows sample
/// `first`.
struct Inside
{
    int begin = 0;
    int end = 0;
    int first = 0;

    Inside(int size, int pad, int blockSize, int block)
    {
        const int low = std::max(block * blockSize, pad);
        const int high = std::max(low, std::min((block + 1) * blockSize, pad + size));
        begin = low - block * blockSize;
        end = high - block * blockSize;
        first = low - pad;
        if (begin > blockSize || begin >= end)
            begin = end = 0;
    }
    bool contains(int texel) const { return texel >= begin && texel < end; }
    int sample(int texel) const { return first + texel - begin; }
    int length() const { return end - begin; }
};

template <typename T>
class Filler
{
public:
    Filler(const StackGeometry& geometry, const SampleView& view)
        : m_geometry(geometry), m_samples(static_cast<const T*>(view.samples) + view.channel),
          m_channels(view.channels)
    {}

    /// Rows z upward, x upward within a row.
    void fillYPlane(int y, int block, T* out) const
    {
        const int bz = m_geometry.zBlocks - 1 - block / m_geometry.xBlocks;
        const Inside xs(m_geometry.x, m_geometry.padX(), m_geometry.blockX(), block % m_geometry.xBlocks);
        const Inside zs(m_geometry.z, m_geometry.padZ(), m_geometry.blockZ(), bz);
        for (int row = 0; row < m_geometry.blockZ(); ++row)
            fillRow(xs, zs.contains(row) ? sample(xs.first, y, zs.sample(row)) : nullptr,
                    out + static_cast<std::ptrdiff_t>(row) * m_geometry.blockX());
    }

    /// Rows y downward, x upward within a row.
    void fillZPlane(int z, int block, T* out) const
    {
        const int by = m_geometry.yBlocks - 1 - block / m_geometry.xBlocks;
        fillXYPlane(z, block % m_geometry.xBlocks, by, out);
    }

    void fillXYPlane(int z, int bx, int by, T* out) const
    {
        const Inside xs(m_geometry.x, m_geometry.padX(), m_geometry.blockX(), bx);
        const Inside ys(m_geometry.y, m_geometry.padY(), m_geometry.blockY(), by);
        for (int row = 0; row < m_geometry.blockY(); ++row) {
            const int texel = m_geometry.blockY() - 1 - row;
            fillRow(xs, ys.contains(texel) ? sample(xs.first, ys.sample(texel), z) : nullptr,
                    out + static_cast<std::ptrdiff_t>(row) * m_geometry.blockX());
        }
    }

    /// Block `block` of `count` planes, plane k showing x = X - 1 - (first + k): rows y downward, z upward
    /// within a row. Neighbouring planes are filled together, since their samples share cache lines.
    void fillXPlanes(int first, int count, int block, T* out, std::size_t planeStride) const
    {
        const int by = m_geometry.yBlocks - 1 - block / m_geometry.zBlocks;
        const int bz = m_geometry.zBlocks - 1 - block % m_geometry.zBlocks;
        const Inside ys(m_geometry.y, m_geometry.padY(), m_geometry.blockY(), by);
        const Inside zs(m_geometry.z, m_geometry.padZ(), m_geometry.blockZ(), bz);
        const int width = m_geometry.blockZ();
        for (int row = 0; row < m_geometry.blockY(); ++row) {
            const int texel = m_geometry.blockY() - 1 - row;
            const std::size_t rowStart = static_cast<std::size_t>(row) * static_cast<std::size_t>(width);
            const bool inside = ys.contains(texel) && zs.length() > 0;
            for (int k = 0; k < count; ++k) {
                T* line = out + static_cast<std::size_t>(k) * planeStride + rowStart;
                if (inside) {
                    std::fill(line, line + zs.begin, T{0});
                    std::fill(line + zs.end, line + width, T{0});
                } else {
                    std::fill(line, line + width, T{0});
                }
            }
            if (inside)
                transposeRow(first, count, ys.sample(texel), zs, out + rowStart, planeStride);
        }
    }

private:
    static constexpr int kTile = 64;

    const T* sample(int x, int y, int z) const
    {
        const std::int64_t index = (static_cast<std::int64_t>(z) * m_geometry.y + y) * m_geometry.x + x;
        return m_samples + index * m_channels;
    }

    void fillRow(const Inside& xs, const T* source, T* out) const
    {
        if (source == nullptr || xs.length() == 0) {
            std::fill(out, out + m_geometry.blockX(), T{0});
            return;
        }
        std::fill(out, out + xs.begin, T{0});
        copyRun(source, xs.length(), out + xs.begin);
        std::fill(out + xs.end, out + m_geometry.blockX(), T{0});
    }

    template <int Channels>
    static void gather(const T* source, int count, T* out)
    {
        for (int i = 0; i < count; ++i)
            out[i] = source[i * Channels];
    }

    void copyRun(const T* source, int count, T* out) const
    {
        switch (m_channels) {
        case 1:
            std::memcpy(out, source, static_cast<std::size_t>(count) * sizeof(T));
            return;
        case 2:
            gather<2>(source, count, out);
            return;
        case 3:
            gather<3>(source, count, out);
            return;
        case 4:
            gather<4>(source, count, out);
            return;
        default:
            for (int i = 0; i < count; ++i)
                out[i] = source[static_cast<std::ptrdiff_t>(i) * m_channels];
        }
    }

    /// Turns runs along x, one a layer, into runs along z, one a plane, through a tile that stays in the
    /// first cache.
    void transposeRow(int first, int count, int y, const Inside& zs, T* out, std::size_t planeStride) const
    {
        T tile[kTile][kTile];
        const int lowestX = m_geometry.x - first - count;
        for (int begin = zs.begin; begin < zs.end; begin += kTile) {
            const int layers = std::min(kTile, zs.end - begin);
            for (int dz = 0; dz < layers; ++dz)
                copyRun(sample(lowestX, y, zs.sample(begin + dz)), count, tile[dz]);
            for (int k = 0; k < count; ++k) {
                T* line = out + static_cast<std::size_t>(k) * planeStride + begin;
                for (int dz = 0; dz < layers; ++dz)
                    line[dz] = tile[dz][count - 1 - k];
            }
        }
    }

    const StackGeometry& m_geometry;
    const T* m_samples;
    int m_channels;
};

template <typename T>
void fillPlanesOf(const StackGeometry& geometry, SlicePass pass, const SampleView& view, int first, int count,
                  T* texels)
{
    const Filler<T> filler(geometry, view);
    const PassLayout layout = passLayout(geometry, pass);
    if (pass == SlicePass::X) {
        // A run of planes as wide as a cache line for each thread's turn.
        const int run = std::max(1, 64 / static_cast<int>(sizeof(T)));
        parallelFor(0, count, run, [&](std::int64_t begin, std::int64_t end) {
            for (auto at = static_cast<int>(begin); at < end; at += run) {
                const int planes = std::min(run, static_cast<int>(end) - at);
                for (int block = 0; block < layout.blocksPerPlane; ++block) {
                    filler.fillXPlanes(first + at, planes, block,
                                       texels + static_cast<std::size_t>(at) * layout.texelsPerPlane() +
                                           static_cast<std::size_t>(block) * layout.texels(),
                                       layout.texelsPerPlane());
                }
            }
        });
        return;
    }
    parallelFor(0, count, 1, [&](std::int64_t begin, std::int64_t end) {
        for (auto plane = static_cast<int>(begin); plane < end; ++plane) {
            for (int block = 0; block < layout.blocksPerPlane; ++block) {
                T* out = texels + static_cast<std::size_t>(plane) * layout.texelsPerPlane() +
                         static_cast<std::size_t>(block) * layout.texels();
                if (pass == SlicePass::Y)
                    filler.fillYPlane(first + plane, block, out);
                else
                    filler.fillZPlane(first + plane, block, out);
            }
        }
    });
}

} // namespace

PassLayout passLayout(const StackGeometry& g, SlicePass pass)
{
    switch (pass) {
    case SlicePass::Y:
        return {g.y, g.xBlocks * g.zBlocks, g.blockX(), g.blockZ()};
    case SlicePass::X:
        return {g.x, g.yBlocks * g.zBlocks, g.blockZ(), g.blockY()};
    case SlicePass::Z:
        return {g.z, g.xBlocks * g.yBlocks, g.blockX(), g.blockY()};
    }
    return {};
}

int planesPerBatch(const StackGeometry& geometry, SlicePass pass, int bytesPerSample)
{
    constexpr std::size_t batchBytes = std::size_t{16} << 20;
    constexpr std::size_t mostBytes = std::size_t{64} << 20;
    const PassLayout layout = passLayout(geometry, pass);
    const std::size_t planeBytes = layout.texelsPerPlane() * static_cast<std::size_t>(bytesPerSample);
    const auto planesIn = [planeBytes](std::size_t bytes) {
        return static_cast<int>(std::clamp<std::size_t>(bytes / planeBytes, 1, 1 << 16));
    };
    // Whole cache lines of x for each of the threads, as far as memory allows.
    const int wanted = pass == SlicePass::X ? 64 / bytesPerSample * parallelThreads() : parallelThreads();
    const int planes = std::max(planesIn(batchBytes), std::min(wanted, planesIn(mostBytes)));
    return std::clamp(planes, 1, std::max(1, layout.planes));
}

void fillPlanes(const StackGeometry& geometry, SlicePass pass, const SampleView& view, int first, int count,
                void* texels)
{
    if (view.bytesPerSample == 1)
        fillPlanesOf(geometry, pass, view, first, count, static_cast<std::uint8_t*>(texels));
    else
        fillPlanesOf(geometry, pass, view, first, count, static_cast<std::uint16_t*>(texels));
}

namespace {

template <typename T>
void fillLayerOf(const StackGeometry& geometry, const SampleView& view, int bx, int by, int bz, int layer,
                 T* texels)
{
    const Inside zs(geometry.z, geometry.padZ(), geometry.blockZ(), bz);
    if (zs.contains(layer)) {
        Filler<T>(geometry, view).fillXYPlane(zs.sample(layer), bx, by, texels);
        return;
    }
    std::fill(texels, texels + static_cast<std::ptrdiff_t>(geometry.blockX()) * geometry.blockY(), T{0});
}

} // namespace

void fillBlockLayer(const StackGeometry& geometry, const SampleView& view, int bx, int by, int bz, int layer,
                    void* texels)
{
    if (view.bytesPerSample == 1)
        fillLayerOf(geometry, view, bx, by, bz, layer, static_cast<std::uint8_t*>(texels));
    else
        fillLayerOf(geometry, view, bx, by, bz, layer, static_cast<std::uint16_t*>(texels));
}

} // namespace tirn
