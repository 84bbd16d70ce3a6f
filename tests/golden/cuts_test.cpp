// Pictures of cut volumes against an independent software compositor.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

constexpr int kSize = 128;
/// The rim, where the data fade into the padding, lies outside of the picture. No cut runs through the middle
/// of a pixel, where it could go either way.
constexpr double kOverhang = 1.07;

using Cut = std::array<std::array<int, 2>, 3>;

struct CutCase
{
    const char* name;
    Target target;
    int blockLimit = 1024;
    int finalZ = -1;
    /// A resliced stack counts more slices than it has layers.
    int depth() const { return finalZ > 0 ? finalZ : stack().z; }
    PlainStack stack() const
    {
        // Sizes that split the 3D target's coordinates evenly; 2D takes any.
        return target == Target::Slices2D ? denseStack(27, 30, 21, 2) : denseStack(32, 32, 16, 2);
    }
    Cut whole() const
    {
        const PlainStack of = stack();
        return {{{0, of.x - 1}, {0, of.y - 1}, {0, depth() - 1}}};
    }
};

class CutPictures : public ::testing::TestWithParam<CutCase>
{
protected:
    CutPictures()
    {
        double padded = 1;
        while (padded < std::max({stack.x, stack.y, stack.z}))
            padded *= 2;
        padded *= kOverhang;
        view.scale = {padded / stack.x, padded / stack.y, padded / stack.z};
        view.target = GetParam().target;
        view.blockLimit = GetParam().blockLimit;
        view.finalZ = GetParam().finalZ;
        view.size = kSize;
        array.scale = {view.scale[0], view.scale[1], view.scale[2]};
        rig.setTables(tables);
    }
    Picture drawn(const Cut& cut)
    {
        array.cut = {cut[0][0], cut[0][1], cut[1][0], cut[1][1], cut[2][0], cut[2][1]};
        rig.scene.view.rotX = view.rotation[0];
        rig.scene.view.rotY = view.rotation[1];
        rig.scene.view.rotZ = view.rotation[2];
        return pictureOf(rig.draw());
    }
    ::testing::AssertionResult isSeenAs(const Cut& cut, const Picture& seen)
    {
        view.cut = cut;
        const PictureDifference difference = compare(compose(stack, tables, asDrawn(view)), seen);
        const bool isSame = matches(difference) && difference.worstOutside <= 8;
        return (isSame ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
               << "mean " << difference.mean << " percentile " << difference.percentile999 << " outside "
               << difference.worstOutside << " orientation " << orientationOf(view);
    }
    /// A picture of what `cut` leaves, which is right, and would be with no other cut beside it.
    void expectCut(const Cut& cut)
    {
        const Picture seen = drawn(cut);
        EXPECT_TRUE(isSeenAs(cut, seen));
        for (std::size_t axis = 0; axis < 3; ++axis) {
            for (const std::size_t end : {0U, 1U}) {
                // What is added behind a thick volume is hidden.
                if (cut[axis][end] == GetParam().whole()[axis][end] || isFar(axis, end))
                    continue;
                Cut wrong = cut;
                wrong[axis][end] += end == 0 ? -slicesOff(axis) : slicesOff(axis);
                EXPECT_FALSE(isSeenAs(wrong, seen)) << "axis " << axis << " end " << end;
            }
        }
    }
    /// So many slices too many are seen.
    int slicesOff(std::size_t axis) const { return axis == 2 && GetParam().finalZ > 0 ? 2 : 1; }
    bool isFar(std::size_t axis, std::size_t end) const
    {
        const bool lastIsNear = nearVoxelOf(view, stack) > 1;
        return static_cast<int>(axis) == slicingAxisOf(view) && (end == 1) != lastIsNear;
    }

    PlainStack stack = GetParam().stack();
    std::vector<ColourTable> tables = {rampTable(256, {1.0, 0.6, 0.2}, 0.45),
                                       rampTable(256, {0.2, 0.5, 1.0}, 0.4)};
    CompositorView view;
    RenderRig rig{{kSize, kSize}};
    VoxelArray& array = rig.show(
        {stack}, {GetParam().target == Target::Slices2D ? GLenum{GL_TEXTURE_2D} : GLenum{GL_TEXTURE_3D},
                  GetParam().blockLimit, GetParam().finalZ});
};

TEST_P(CutPictures, OneAxisIsCutInEachOrientation)
{
    for (const auto& rotation : axisRotations()) {
        view.rotation = rotation;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            Cut cut = GetParam().whole();
            const int last = cut[axis][1];
            // Bounds that are no mirror image of each other.
            cut[axis] = {last / 5, last * 3 / 5};
            expectCut(cut);
        }
    }
}

TEST_P(CutPictures, AllAxesAreCutInEachOrientation)
{
    const int depth = GetParam().depth();
    const Cut cut = {{{4, 17}, {6, 25}, {depth / 7, depth * 3 / 5}}};
    for (const auto& rotation : axisRotations()) {
        view.rotation = rotation;
        expectCut(cut);
        EXPECT_FALSE(isSeenAs(GetParam().whole(), drawn(cut)));
    }
}

TEST_P(CutPictures, OneSliceIsLeftOnEachAxis)
{
    for (const auto& rotation : axisRotations()) {
        view.rotation = rotation;
        const auto axis = static_cast<std::size_t>(slicingAxisOf(view));
        Cut cut = GetParam().whole();
        cut[axis] = {cut[axis][1] / 3, cut[axis][1] / 3};
        EXPECT_TRUE(isSeenAs(cut, drawn(cut)));
    }
}

INSTANTIATE_TEST_SUITE_P(Golden, CutPictures,
                         ::testing::Values(CutCase{"Slices", Target::Slices2D},
                                           CutCase{"SlicesInBlocks", Target::Slices2D, 8},
                                           CutCase{"Volume", Target::Volume3D},
                                           CutCase{"VolumeInBlocks", Target::Volume3D, 16},
                                           CutCase{"ReslicedVolume", Target::Volume3D, 1024, 31}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace tirn::test
