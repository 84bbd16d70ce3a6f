// Pictures along the axes against an independent software compositor.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

constexpr int kSize = 128;

struct GoldenCase
{
    int channels;
    int bits;
    Target target;
    Blending blending;
};

std::string caseName(const ::testing::TestParamInfo<GoldenCase>& info)
{
    const GoldenCase& c = info.param;
    return std::to_string(c.channels) + "Channels" + std::to_string(c.bits) + "Bits" +
           (c.target == Target::Slices2D ? "2D" : "3D") +
           (c.blending == Blending::Alpha ? "Alpha" : "Maximum");
}

std::vector<ColourTable> tables(const GoldenCase& c)
{
    std::vector<ColourTable> all = {rampTable(256, {1.0, 0.6, 0.2}, 0.45)};
    if (c.channels > 1)
        all.push_back(rampTable(256, {0.2, 0.5, 1.0}, 0.4));
    return all;
}

/// Scales that let the stack more than fill the frame: at its rim the data fade into the padding, where the
/// driver's rounding of faint colours adds up.
std::array<double, 3> fillingScale(const PlainStack& stack)
{
    const double longest = std::max({stack.x, stack.y, stack.z});
    double padded = 1;
    while (padded < longest)
        padded *= 2;
    constexpr double overhang = 1.1;
    return {overhang * padded / stack.x, overhang * padded / stack.y, overhang * padded / stack.z};
}

/// The slice of an axis that holds the largest value of a column most often: in a maximum it shows most.
int sliceSeenMost(const PlainStack& stack, int axis)
{
    std::vector<int> wins(static_cast<std::size_t>(stack.size(axis)), 0);
    const int across = (axis + 1) % 3;
    const int along = (axis + 2) % 3;
    std::array<int, 3> at = {};
    for (at[static_cast<std::size_t>(across)] = 0; at[static_cast<std::size_t>(across)] < stack.size(across);
         ++at[static_cast<std::size_t>(across)]) {
        for (at[static_cast<std::size_t>(along)] = 0; at[static_cast<std::size_t>(along)] < stack.size(along);
             ++at[static_cast<std::size_t>(along)]) {
            int best = 0;
            int bestValue = -1;
            for (int slice = 0; slice < stack.size(axis); ++slice) {
                at[static_cast<std::size_t>(axis)] = slice;
                const int value = stack.at(at[0], at[1], at[2]);
                if (value > bestValue) {
                    best = slice;
                    bestValue = value;
                }
            }
            ++wins[static_cast<std::size_t>(best)];
        }
    }
    return static_cast<int>(std::max_element(wins.begin(), wins.end()) - wins.begin());
}

class AxisViews : public ::testing::TestWithParam<GoldenCase>
{
protected:
    PlainStack stack() const
    {
        // Sizes that split the 3D target's coordinates evenly; 2D takes any.
        return GetParam().target == Target::Slices2D
                   ? denseStack(27, 30, 21, GetParam().channels, GetParam().bits)
                   : denseStack(32, 32, 16, GetParam().channels, GetParam().bits);
    }
    CompositorView viewOf(const std::array<int, 3>& rotation, const PlainStack& shown) const
    {
        CompositorView view;
        view.rotation = rotation;
        view.scale = fillingScale(shown);
        view.blending = GetParam().blending;
        view.target = GetParam().target;
        view.size = kSize;
        return view;
    }
    Picture drawn(const PlainStack& shown, const CompositorView& view) const
    {
        RenderRig rig({kSize, kSize});
        VolumeSpec spec;
        spec.target = view.target == Target::Slices2D ? GL_TEXTURE_2D : GL_TEXTURE_3D;
        spec.blockLimit = view.blockLimit;
        spec.finalZ = view.finalZ;
        VoxelArray& array = rig.show({shown}, spec);
        array.scale = {view.scale[0], view.scale[1], view.scale[2]};
        rig.setTables(tables(GetParam()));
        rig.scene.view.blendMode = view.blending == Blending::Alpha ? GL_FUNC_ADD : GL_MAX;
        rig.scene.view.rotX = view.rotation[0];
        rig.scene.view.rotY = view.rotation[1];
        rig.scene.view.rotZ = view.rotation[2];
        return pictureOf(rig.draw());
    }
};

TEST_P(AxisViews, AllSixOrientationsLookAsPredicted)
{
    const PlainStack shown = stack();
    for (const auto& rotation : axisRotations()) {
        const CompositorView view = viewOf(rotation, shown);
        const PictureDifference difference =
            compare(compose(shown, tables(GetParam()), view), drawn(shown, view));
        EXPECT_TRUE(matches(difference))
            << "orientation " << orientationOf(view) << " mean " << difference.mean << " percentile "
            << difference.percentile999 << " covered " << difference.covered;
        EXPECT_GT(difference.covered, static_cast<std::size_t>(kSize * kSize * 9 / 10));
    }
}

TEST_P(AxisViews, AWrongPictureFailsTheComparison)
{
    const PlainStack shown = stack();
    for (const auto& rotation : axisRotations()) {
        const CompositorView view = viewOf(rotation, shown);
        const Picture seen = drawn(shown, view);
        const auto matchesInstead = [&](const PlainStack& other, const CompositorView& otherView) {
            return matches(compare(compose(other, tables(GetParam()), otherView), seen));
        };
        for (int axis = 0; axis < 3; ++axis) {
            // The order of slices leaves no trace in a maximum.
            if (axis == slicingAxisOf(view) && view.blending == Blending::Maximum)
                continue;
            EXPECT_FALSE(matchesInstead(mirrored(shown, axis), view)) << "mirrored axis " << axis;
        }
        if (view.blending == Blending::Alpha) {
            CompositorView reversed = view;
            reversed.wrongOrder = true;
            EXPECT_FALSE(matchesInstead(shown, reversed)) << "reversed order";
        }
        if (GetParam().channels > 1) {
            EXPECT_FALSE(matchesInstead(withSwappedChannels(shown, 0, 1), view)) << "swapped channels";
        }
        const int axis = slicingAxisOf(view);
        const int slice =
            view.blending == Blending::Alpha ? nearVoxelOf(view, shown) : sliceSeenMost(shown, axis);
        EXPECT_FALSE(matchesInstead(withShiftedSlice(shown, axis, slice, 3), view)) << "shifted slice";
        const Picture black{kSize, std::vector<std::uint8_t>(seen.rgb.size(), 0), seen.covered};
        EXPECT_FALSE(matches(compare(compose(shown, tables(GetParam()), view), black))) << "black window";
    }
}

INSTANTIATE_TEST_SUITE_P(Golden, AxisViews,
                         ::testing::Values(GoldenCase{1, 8, Target::Slices2D, Blending::Alpha},
                                           GoldenCase{1, 8, Target::Slices2D, Blending::Maximum},
                                           GoldenCase{2, 8, Target::Slices2D, Blending::Alpha},
                                           GoldenCase{2, 8, Target::Slices2D, Blending::Maximum},
                                           GoldenCase{1, 16, Target::Slices2D, Blending::Alpha},
                                           GoldenCase{2, 16, Target::Slices2D, Blending::Maximum},
                                           GoldenCase{2, 16, Target::Slices2D, Blending::Alpha},
                                           GoldenCase{1, 16, Target::Slices2D, Blending::Maximum},
                                           GoldenCase{1, 12, Target::Slices2D, Blending::Alpha},
                                           GoldenCase{1, 8, Target::Volume3D, Blending::Alpha},
                                           GoldenCase{1, 8, Target::Volume3D, Blending::Maximum},
                                           GoldenCase{2, 8, Target::Volume3D, Blending::Alpha},
                                           GoldenCase{2, 8, Target::Volume3D, Blending::Maximum},
                                           GoldenCase{1, 16, Target::Volume3D, Blending::Alpha},
                                           GoldenCase{2, 16, Target::Volume3D, Blending::Alpha},
                                           GoldenCase{1, 16, Target::Volume3D, Blending::Maximum},
                                           GoldenCase{2, 16, Target::Volume3D, Blending::Maximum}),
                         caseName);

} // namespace
} // namespace tirn::test
