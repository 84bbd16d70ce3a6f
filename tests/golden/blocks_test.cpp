// Pictures of volumes in several blocks, of other depths and time points, resliced and with hidden channels,
// against an independent software compositor.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

constexpr int kSize = 160;

/// What a picture is made from.
struct Shown
{
    std::vector<PlainStack> timePoints;
    std::vector<ColourTable> tables;
    CompositorView view;
    int timePoint = 0;
};

std::vector<ColourTable> tablesFor(int channels)
{
    std::vector<ColourTable> all = {rampTable(256, {1.0, 0.6, 0.2}, 0.45),
                                    rampTable(256, {0.2, 0.5, 1.0}, 0.4),
                                    rampTable(256, {0.3, 1.0, 0.4}, 0.3)};
    all.resize(static_cast<std::size_t>(channels));
    return all;
}

/// Scales that let the stack fill the frame.
std::array<double, 3> fillingScale(const PlainStack& stack)
{
    double padded = 1;
    while (padded < std::max({stack.x, stack.y, stack.z}))
        padded *= 2;
    return {padded / stack.x, padded / stack.y, padded / stack.z};
}

Shown shownOf(const PlainStack& stack, Target target, int limit)
{
    Shown shown;
    shown.timePoints = {stack};
    shown.tables = tablesFor(stack.channels);
    shown.view.scale = fillingScale(stack);
    shown.view.target = target;
    shown.view.blockLimit = limit;
    shown.view.size = kSize;
    return shown;
}

Picture drawn(const Shown& shown)
{
    const CompositorView& view = shown.view;
    RenderRig rig({kSize, kSize});
    VolumeSpec spec;
    spec.target = view.target == Target::Slices2D ? GL_TEXTURE_2D : GL_TEXTURE_3D;
    spec.blockLimit = view.blockLimit;
    spec.finalZ = view.finalZ;
    VoxelArray& array = rig.show(shown.timePoints, spec);
    array.scale = {view.scale[0], view.scale[1], view.scale[2]};
    array.setTimePoint(shown.timePoint);
    rig.setTables(shown.tables);
    for (std::size_t c = 0; c < view.hidden.size(); ++c)
        array.channels()[c].display.state = view.hidden[c] ? ChannelState::Hidden : ChannelState::Shown;
    rig.scene.view.blendMode = view.blending == Blending::Alpha ? GL_FUNC_ADD : GL_MAX;
    rig.scene.view.rotX = view.rotation[0];
    rig.scene.view.rotY = view.rotation[1];
    rig.scene.view.rotZ = view.rotation[2];
    return pictureOf(rig.draw());
}

Picture predicted(const Shown& shown)
{
    return compose(shown.timePoints[static_cast<std::size_t>(shown.timePoint)], shown.tables,
                   asDrawn(shown.view));
}

void expectMatch(const Picture& prediction, const Picture& seen, const CompositorView& view, int leastCovered)
{
    const PictureDifference difference = compare(prediction, seen);
    EXPECT_TRUE(matches(difference)) << "orientation " << orientationOf(view) << " mean " << difference.mean
                                     << " percentile " << difference.percentile999;
    EXPECT_LE(difference.worstOutside, 8) << "orientation " << orientationOf(view);
    EXPECT_GE(difference.covered, static_cast<std::size_t>(leastCovered))
        << "orientation " << orientationOf(view);
}

/// All six orientations look as predicted, and not as the same stack mirrored along each axis.
void expectAllViews(Shown shown, int leastCovered = kSize * kSize * 9 / 10)
{
    for (const auto& rotation : axisRotations()) {
        shown.view.rotation = rotation;
        const Picture seen = drawn(shown);
        expectMatch(predicted(shown), seen, shown.view, leastCovered);
        for (int axis = 0; axis < 3; ++axis) {
            // The order of slices leaves no trace in a maximum.
            if (shown.view.blending == Blending::Maximum && axis == slicingAxisOf(shown.view))
                continue;
            const PlainStack& stack = shown.timePoints[static_cast<std::size_t>(shown.timePoint)];
            const Picture wrong = compose(mirrored(stack, axis), shown.tables, asDrawn(shown.view));
            EXPECT_FALSE(matches(compare(wrong, seen))) << "mirrored axis " << axis;
        }
    }
}

TEST(BlockPictures, SlicesOfUnevenSizesInManyBlocks)
{
    expectAllViews(shownOf(denseStack(27, 30, 21, 2), Target::Slices2D, 8));
}

TEST(BlockPictures, SlicesOfDifferentBlockNumbersOnEachAxis)
{
    Shown shown = shownOf(denseStack(13, 26, 21), Target::Slices2D, 8);
    // Stretched, the short side would fade out over many pixels, where every slice's rounding adds up.
    shown.view.scale[0] = 1;
    expectAllViews(shown, kSize * kSize * 2 / 5);
}

TEST(BlockPictures, SlicesInBlocksAsAMaximum)
{
    Shown shown = shownOf(denseStack(27, 30, 21), Target::Slices2D, 8);
    shown.view.blending = Blending::Maximum;
    expectAllViews(shown);
}

TEST(BlockPictures, WordsInBlocks)
{
    expectAllViews(shownOf(denseStack(27, 30, 21, 2, 12), Target::Slices2D, 8));
    expectAllViews(shownOf(denseStack(27, 30, 21, 1, 16), Target::Slices2D, 16));
}

TEST(BlockPictures, AVolumeOfEvenBlocks)
{
    expectAllViews(shownOf(denseStack(32, 32, 32, 2), Target::Volume3D, 16));
}

TEST(BlockPictures, AVolumeOfManyBlocksOfWords)
{
    expectAllViews(shownOf(denseStack(32, 32, 32, 1, 12), Target::Volume3D, 8));
}

TEST(BlockPictures, AVolumeWithOneBlockAcrossZ)
{
    expectAllViews(shownOf(denseStack(32, 32, 16), Target::Volume3D, 16));
}

// Different numbers of blocks on the axes: planes at constant y take their bricks by odd factors.
TEST(BlockPictures, AVolumeOfUnevenBlockNumbersTakesItsBricksAsTheFactorsSay)
{
    Shown shown = shownOf(denseStack(32, 16, 16), Target::Volume3D, 8);
    for (const auto& rotation : axisRotations()) {
        shown.view.rotation = rotation;
        expectMatch(predicted(shown), drawn(shown), shown.view, kSize * kSize / 2);
    }
}

// The padding lies unevenly, so that planes at constant x are one voxel off and shares of the picture stay
// empty.
TEST(BlockPictures, AVolumeOfOddSizesIsOffAsStated)
{
    Shown shown = shownOf(denseStack(27, 29, 21, 2), Target::Volume3D, 1024);
    for (const auto& rotation : axisRotations()) {
        shown.view.rotation = rotation;
        expectMatch(predicted(shown), drawn(shown), shown.view, kSize * kSize / 2);
    }
}

TEST(OtherPictures, TwelveBitsFillTheRangeOfThePalette)
{
    expectAllViews(shownOf(denseStack(27, 30, 21, 2, 12), Target::Slices2D, 1024));
    expectAllViews(shownOf(denseStack(32, 32, 16, 1, 12), Target::Volume3D, 1024));
}

TEST(OtherPictures, EachTimePointShowsItsOwnStack)
{
    for (const Target target : {Target::Slices2D, Target::Volume3D}) {
        const PlainStack first = denseStack(16, 16, 16, 2);
        Shown shown = shownOf(first, target, 8);
        shown.timePoints = {first, mirrored(first, 0), withSwappedChannels(first, 0, 1)};
        for (int t = 0; t < 3; ++t) {
            shown.timePoint = t;
            const Picture seen = drawn(shown);
            for (int other = 0; other < 3; ++other) {
                const PlainStack& stack = shown.timePoints[static_cast<std::size_t>(other)];
                EXPECT_EQ(matches(compare(compose(stack, shown.tables, asDrawn(shown.view)), seen)),
                          other == t)
                    << "time point " << t << " as " << other;
            }
        }
    }
}

TEST(OtherPictures, AReslicedVolumeSamplesBetweenItsPlanes)
{
    Shown shown = shownOf(denseStack(32, 32, 16), Target::Volume3D, 1024);
    shown.view.finalZ = 29;
    expectAllViews(shown);
    Shown odd = shownOf(denseStack(32, 32, 16, 2, 16), Target::Volume3D, 1024);
    odd.view.finalZ = 64;
    expectAllViews(odd);
}

TEST(OtherPictures, HiddenChannelsLeaveNoTrace)
{
    for (const std::vector<bool>& hidden :
         {std::vector<bool>{true, false, false}, std::vector<bool>{false, true, false},
          std::vector<bool>{true, false, true}}) {
        Shown shown = shownOf(denseStack(27, 30, 21, 3), Target::Slices2D, 1024);
        shown.view.hidden = hidden;
        const Picture seen = drawn(shown);
        expectMatch(predicted(shown), seen, shown.view, kSize * kSize * 9 / 10);
        shown.view.hidden = {};
        EXPECT_FALSE(matches(compare(predicted(shown), seen)));
    }
}

TEST(OtherPictures, NothingIsDrawnWithAllChannelsHidden)
{
    Shown shown = shownOf(denseStack(8, 8, 8, 2), Target::Slices2D, 1024);
    shown.view.hidden = {true, true};
    const Picture seen = drawn(shown);
    EXPECT_EQ(*std::max_element(seen.rgb.begin(), seen.rgb.end()), 0);
}

// Few slices: where they fade out each rounds its tiny share of the colour, and many would add that up.
TEST(OtherPictures, ABackgroundShinesThrough)
{
    Shown shown = shownOf(denseStack(27, 30, 6), Target::Slices2D, 1024);
    shown.view.scale = {0.5, 0.5, 0.5};
    shown.view.background = {40, 80, 120};
    RenderRig rig({kSize, kSize});
    rig.show(shown.timePoints).scale = {0.5, 0.5, 0.5};
    rig.setTables(shown.tables);
    rig.scene.view.backgroundColor = QColor(40, 80, 120);
    const Picture seen = pictureOf(rig.draw());
    expectMatch(predicted(shown), seen, shown.view, 1000);
    EXPECT_EQ(seen.pixel(2, 2), (std::array<int, 3>{40, 80, 120}));
}

} // namespace
} // namespace tirn::test
