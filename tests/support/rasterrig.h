#pragma once

#include <memory>
#include <vector>

#include "raster/compositing.h"
#include "support/slowraster.h"

namespace tirn::test {

/// A stack cut across an axis, with its tables, as layers are made from.
class RasterRig
{
public:
    /// `frame` says where the slices lie.
    RasterRig(PlainStack stack, std::vector<ColourTable> tables, int axis, RasterFrame frame);
    RasterRig(const RasterRig&) = delete;
    RasterRig& operator=(const RasterRig&) = delete;

    RasterFrame frame;

    /// The layer, on all of the picture: 0 to 65535.
    std::vector<std::array<std::uint16_t, 4>> drawn() const;
    std::vector<std::array<double, 4>> drawnSlowly() const;

private:
    PlainStack m_stack;
    std::vector<ColourTable> m_tables;
    int m_axis;
    std::vector<std::unique_ptr<SliceSet>> m_slices;
    std::vector<std::unique_ptr<ColourLookup>> m_lookups;
};

/// How far the layer is from what is meant, in steps of 255 over all parts of the pixels that are not empty
/// there.
struct RasterDifference
{
    double mean = 0;
    double largest = 0;
    /// The share of pixels that something is drawn to, and of those that rounding decides, which do not
    /// count.
    double covered = 0;
    double undecided = 0;
};
RasterDifference differenceOf(const RasterRig& rig);

/// The channel of a plain stack, as slices are cut from it; `bytes` holds its voxels.
VoxelSource sourceOf(const PlainStack& stack, const std::vector<std::uint8_t>& bytes, int channel);

} // namespace tirn::test
