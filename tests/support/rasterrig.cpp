#include "support/rasterrig.h"

#include <algorithm>
#include <cmath>

namespace tirn::test {

VoxelSource sourceOf(const PlainStack& stack, const std::vector<std::uint8_t>& bytes, int channel)
{
    return {bytes.data(), stack.bits > 8 ? 2 : 1, stack.channels, channel, {stack.x, stack.y, stack.z}};
}

RasterRig::RasterRig(PlainStack stack, std::vector<ColourTable> tables, int axis, RasterFrame where)
    : frame(std::move(where)), m_stack(std::move(stack)), m_tables(std::move(tables)), m_axis(axis)
{
    const std::vector<std::uint8_t> bytes = m_stack.bytes();
    for (int c = 0; c < m_stack.channels; ++c) {
        m_slices.push_back(std::make_unique<SliceSet>(sourceOf(m_stack, bytes, c), axis));
        m_lookups.push_back(std::make_unique<ColourLookup>(m_tables[static_cast<std::size_t>(c)]));
        RasterChannel channel;
        channel.slices = m_slices.back().get();
        channel.colours = m_lookups.back().get();
        channel.unit = m_stack.bits > 8 ? 1.0 / 65535 : 1.0 / 255;
        channel.stretch = m_stack.bits > 8 && m_stack.bits <= 12 ? 16 : 1;
        frame.channels.push_back(channel);
    }
}

std::vector<std::array<std::uint16_t, 4>> RasterRig::drawn() const
{
    const RasterLayer layer = composite(frame);
    std::vector<std::array<std::uint16_t, 4>> picture(static_cast<std::size_t>(frame.width * frame.height));
    for (int y = 0; y < layer.height; ++y) {
        for (int x = 0; x < layer.width; ++x) {
            const std::uint16_t* from =
                layer.rgba.data() + std::ptrdiff_t{4} * (std::ptrdiff_t{y} * layer.width + x);
            std::copy_n(from, 4,
                        picture[static_cast<std::size_t>((layer.y + y) * frame.width + layer.x + x)].begin());
        }
    }
    return picture;
}

std::vector<std::array<double, 4>> RasterRig::drawnSlowly() const
{
    return drawSlowly({m_stack, m_tables, frame, m_axis});
}

RasterDifference differenceOf(const RasterRig& rig)
{
    const auto meant = rig.drawnSlowly();
    const auto seen = rig.drawn();
    const std::vector<bool> undecided = undecidedPixels(rig.frame);
    RasterDifference difference;
    double sum = 0;
    std::size_t covered = 0;
    for (std::size_t i = 0; i < meant.size(); ++i) {
        if (undecided[i])
            continue;
        covered += meant[i][3] > 0 ? 1 : 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const double off = std::abs(seen[i][k] / 257.0 - meant[i][k]);
            sum += off;
            difference.largest = std::max(difference.largest, off);
        }
    }
    difference.mean = covered == 0 ? sum : sum / (4.0 * static_cast<double>(covered));
    difference.undecided = static_cast<double>(std::count(undecided.begin(), undecided.end(), true)) /
                           static_cast<double>(meant.size());
    difference.covered = static_cast<double>(covered) / static_cast<double>(meant.size());
    return difference;
}

} // namespace tirn::test
