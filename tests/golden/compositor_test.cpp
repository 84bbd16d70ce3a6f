#include <gtest/gtest.h>

#include "support/compositor.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

using Rows = std::vector<std::vector<int>>;

/// Grey, as bright as the sample, and opaque everywhere: the nearest slice hides the rest.
ColourTable opaqueTable()
{
    ColourTable table;
    for (int i = 0; i < 256; ++i)
        table.insert(table.end(), {std::uint8_t(i), std::uint8_t(i), std::uint8_t(i), 255});
    return table;
}

/// The same entry all over.
ColourTable flatTable(int red, int green, int blue, int alpha)
{
    ColourTable table;
    for (int i = 0; i < 256; ++i)
        table.insert(table.end(),
                     {std::uint8_t(red), std::uint8_t(green), std::uint8_t(blue), std::uint8_t(alpha)});
    return table;
}

/// Two opaque entries of red 0 and 200, in which a sample v shows as (2 v - 0.5) * 200.
ColourTable twoEntries() { return {0, 0, 0, 255, 200, 0, 0, 255}; }

/// The red of every pixel, -1 where nothing was drawn.
Rows reds(const Picture& picture)
{
    Rows rows(static_cast<std::size_t>(picture.size));
    for (std::size_t pixel = 0; pixel < picture.covered.size(); ++pixel)
        rows[pixel / static_cast<std::size_t>(picture.size)].push_back(
            picture.covered[pixel] ? picture.rgb[3 * pixel] : -1);
    return rows;
}

std::vector<int> middleRow(const Picture& picture)
{
    return reds(picture)[static_cast<std::size_t>(picture.size / 2)];
}

PlainStack line(int axis, const std::vector<int>& values, int across = 1, int bits = 8)
{
    std::array<int, 3> size = {across, across, across};
    size[static_cast<unsigned>(axis)] = static_cast<int>(values.size());
    PlainStack stack = PlainStack::blank(size[0], size[1], size[2], 1, bits);
    for (int z = 0; z < size[2]; ++z)
        for (int y = 0; y < size[1]; ++y)
            for (int x = 0; x < size[0]; ++x) {
                const std::array<int, 3> at = {x, y, z};
                stack.at(x, y, z) = static_cast<std::uint16_t>(
                    values[static_cast<unsigned>(at[static_cast<unsigned>(axis)])]);
            }
    return stack;
}

/// One voxel that fills the picture, seen through a table.
std::array<int, 3> seenVoxel(int value, const ColourTable& table, Blending blending, int bits = 8,
                             std::uint8_t background = 0)
{
    CompositorView view{.blending = blending, .background = {background, background, background}, .size = 2};
    return compose(line(0, {value}, 1, bits), {table}, view).pixel(1, 1);
}

int seenRed(int value, const ColourTable& table, int bits)
{
    return seenVoxel(value, table, Blending::Alpha, bits)[0];
}

TEST(Compositor, TheTableIsLookedUpBetweenEntryCentres)
{
    EXPECT_EQ(seenRed(51, twoEntries(), 8), 0);    // 0.2: before the first centre
    EXPECT_EQ(seenRed(102, twoEntries(), 8), 60);  // 0.4
    EXPECT_EQ(seenRed(153, twoEntries(), 8), 140); // 0.6
    EXPECT_EQ(seenRed(204, twoEntries(), 8), 200); // 0.8: past the last centre
}

TEST(Compositor, TwelveBitsAreSpreadOverTheTableAndSixteenAreNot)
{
    EXPECT_EQ(seenRed(2048, twoEntries(), 12), 100);
    EXPECT_EQ(seenRed(4095, twoEntries(), 12), 200);
    EXPECT_EQ(seenRed(65535, twoEntries(), 12), 200);
    EXPECT_EQ(seenRed(4095, twoEntries(), 16), 0);
    EXPECT_EQ(seenRed(32768, twoEntries(), 16), 100);
}

TEST(Compositor, AlphaMixesWithTheBackgroundAndMaximumDoesNot)
{
    // Entry 100 / 255 * 256 - 0.5 = 99.892 of a ramp: colour and alpha are both 0.39173.
    const ColourTable ramp = rampTable(256, {1, 1, 1}, 1);
    EXPECT_EQ(seenVoxel(100, ramp, Blending::Alpha)[0], 39);
    EXPECT_EQ(seenVoxel(100, ramp, Blending::Alpha, 8, 200)[0], 161);
    EXPECT_EQ(seenVoxel(100, ramp, Blending::Maximum)[0], 100);
    EXPECT_EQ(seenVoxel(100, ramp, Blending::Maximum, 8, 200)[0], 200);
    EXPECT_EQ(seenVoxel(9, flatTable(200, 0, 0, 1), Blending::Maximum)[0], 200);
}

TEST(Compositor, AlphaZeroLeavesThePixel)
{
    const CompositorView view{.blending = Blending::Maximum, .background = {7, 8, 9}, .size = 2};
    const Picture picture = compose(line(0, {50}), {flatTable(255, 255, 255, 0)}, view);
    EXPECT_EQ(picture.pixel(0, 0), (std::array{7, 8, 9}));
    EXPECT_EQ(reds(picture), (Rows{{-1, -1}, {-1, -1}}));
}

/// The face that shows of a stack of two voxels a side, each voxel written as the digits z, y + 1, x + 1.
Rows face(const std::array<int, 3>& rotation, Target target)
{
    PlainStack stack = PlainStack::blank(2, 2, 2);
    for (int z = 0; z < 2; ++z)
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x)
                stack.at(x, y, z) = static_cast<std::uint16_t>(100 * z + 10 * (y + 1) + x + 1);
    return reds(compose(stack, {opaqueTable()}, {.rotation = rotation, .target = target, .size = 2}));
}

class CompositorTargets : public ::testing::TestWithParam<Target>
{};
INSTANTIATE_TEST_SUITE_P(Both, CompositorTargets, ::testing::Values(Target::Slices2D, Target::Volume3D),
                         [](const auto& each) {
                             return each.param == Target::Slices2D ? "Slices2D" : "Volume3D";
                         });

TEST_P(CompositorTargets, EachOrientationShowsItsFace)
{
    const std::array<std::array<int, 3>, 6> turns = axisRotations();
    EXPECT_EQ(face(turns[0], GetParam()), (Rows{{11, 12}, {21, 22}}));
    EXPECT_EQ(face(turns[1], GetParam()), (Rows{{112, 111}, {122, 121}}));
    EXPECT_EQ(face(turns[2], GetParam()), (Rows{{12, 112}, {22, 122}}));
    EXPECT_EQ(face(turns[3], GetParam()), (Rows{{111, 11}, {121, 21}}));
    EXPECT_EQ(face(turns[4], GetParam()), (Rows{{111, 112}, {11, 12}}));
    EXPECT_EQ(face(turns[5], GetParam()), (Rows{{21, 22}, {121, 122}}));
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(orientationOf({.rotation = turns[static_cast<unsigned>(i)]}), i);
}

TEST_P(CompositorTargets, TheTurnAboutYComesBeforeTheTurnAboutX)
{
    EXPECT_EQ(face({90, 90, 0}, GetParam()), (Rows{{112, 12}, {111, 11}}));
    EXPECT_EQ(face({0, 0, 90}, GetParam()), (Rows{{12, 22}, {11, 21}}));
}

TEST(Compositor, OddSizesLeaveTheGreaterPartOfThePaddingBehindTheVoxels)
{
    const CompositorView view{.scale = {1, 4, 4}, .size = 4};
    EXPECT_EQ(middleRow(compose(line(0, {100, 150, 200}), {opaqueTable()}, view)),
              (std::vector{100, 150, 200, 0}));
    const CompositorView wide{.scale = {1, 8, 8}, .size = 8};
    EXPECT_EQ(middleRow(compose(line(0, {10, 20, 30, 40, 50}), {opaqueTable()}, wide)),
              (std::vector{0, 10, 20, 30, 40, 50, 0, 0}));
    const CompositorView tall{.scale = {4, 1, 4}, .size = 4};
    EXPECT_EQ(reds(compose(line(1, {100, 150, 200}), {opaqueTable()}, tall)),
              (Rows{{100, 100, 100, 100}, {150, 150, 150, 150}, {200, 200, 200, 200}, {0, 0, 0, 0}}));
    const CompositorView deep{.rotation = {90, 0, 0}, .scale = {4, 4, 1}, .size = 4};
    EXPECT_EQ(reds(compose(line(2, {100, 150, 200}), {opaqueTable()}, deep)),
              (Rows{{0, 0, 0, 0}, {200, 200, 200, 200}, {150, 150, 150, 150}, {100, 100, 100, 100}}));
}

TEST(Compositor, ShortAxesFillTheirShareOfThePicture)
{
    const Picture picture = compose(line(0, {10, 20}), {opaqueTable()}, {.size = 4});
    // Samples 10, 12.5, 17.5, 20, which the table moves by 1 / 255 of their value less 0.5.
    EXPECT_EQ(reds(picture), (Rows{{-1, -1, -1, -1}, {10, 12, 17, 20}, {10, 12, 17, 20}, {-1, -1, -1, -1}}));
}

TEST(Compositor, SamplesAreMixedBetweenTexelCentresAndHeldAtTheEdge)
{
    const CompositorView view{.scale = {1, 2, 2}, .size = 8};
    EXPECT_EQ(middleRow(compose(line(0, {0, 200}), {opaqueTable()}, view)),
              (std::vector{0, 0, 25, 75, 125, 175, 200, 200}));
}

TEST(Compositor, NothingIsMixedAcrossABlock)
{
    CompositorView view{.scale = {1, 4, 4}, .blockLimit = 4, .size = 8};
    const PlainStack step = line(0, {0, 0, 200, 200});
    EXPECT_EQ(middleRow(compose(step, {opaqueTable()}, view)),
              (std::vector{0, 0, 0, 50, 150, 200, 200, 200}));
    view.blockLimit = 2;
    EXPECT_EQ(middleRow(compose(step, {opaqueTable()}, view)), (std::vector{0, 0, 0, 0, 200, 200, 200, 200}));
}

TEST(Compositor, EverySliceIsRoundedToEightBits)
{
    // Each of the three slices adds 100 / 255 = 0.39, which is lost before the next one comes.
    const CompositorView view{.scale = {4, 4, 1}, .size = 1};
    EXPECT_EQ(compose(line(2, {9, 9, 9}), {flatTable(100, 0, 0, 1)}, view).pixel(0, 0)[0], 0);
    EXPECT_EQ(compose(line(2, {9, 9, 9}), {flatTable(0, 255, 0, 128)}, view).pixel(0, 0)[1], 224);
}

TEST(Compositor, LaterChannelsLieOverEarlierOnes)
{
    const PlainStack stack = PlainStack::blank(1, 1, 1, 2);
    const std::vector<ColourTable> tables = {flatTable(255, 0, 0, 128), flatTable(0, 255, 0, 128)};
    EXPECT_EQ(compose(stack, tables, {.size = 1}).pixel(0, 0), (std::array{64, 128, 0}));
    EXPECT_EQ(compose(stack, tables, {.hidden = {true, false}, .size = 1}).pixel(0, 0),
              (std::array{0, 128, 0}));
}

TEST(Compositor, AllChannelsOfASliceAreDrawnBeforeTheNextSlice)
{
    ColourTable red = flatTable(255, 0, 0, 255);
    ColourTable green = flatTable(0, 255, 0, 255);
    red[3] = green[3] = 0;
    PlainStack stack = PlainStack::blank(1, 1, 2, 2);
    stack.at(0, 0, 1, 1) = 255;
    stack.at(0, 0, 0, 0) = 255;
    CompositorView view{.scale = {2, 2, 1}, .size = 1};
    EXPECT_EQ(compose(stack, {red, green}, view).pixel(0, 0), (std::array{255, 0, 0}));
    view.wrongOrder = true;
    EXPECT_EQ(compose(stack, {red, green}, view).pixel(0, 0), (std::array{0, 255, 0}));
}

/// The brightest sample that the slices across `axis` of a 3D target meet.
int brightest(int axis, const std::vector<int>& values, int finalZ = -1)
{
    const std::array<unsigned, 3> orientation = {2, 4, 0};
    const CompositorView view{.rotation = axisRotations()[orientation[static_cast<unsigned>(axis)]],
                              .scale = {9, 9, 9},
                              .blending = Blending::Maximum,
                              .target = Target::Volume3D,
                              .finalZ = finalZ,
                              .size = 1};
    return compose(line(axis, values, 2), {opaqueTable()}, view).pixel(0, 0)[0];
}

TEST(Compositor, SlicesOfAVolumeRunFromEdgeToEdgeOfTheirTexture)
{
    // Four slices lie at texels -0.5, 0.833, 2.167 and 3.5.
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(brightest(axis, {90, 0, 0, 0}), 90);
        EXPECT_EQ(brightest(axis, {0, 90, 0, 0}), 75);
        EXPECT_EQ(brightest(axis, {0, 0, 90, 0}), 75);
        EXPECT_EQ(brightest(axis, {0, 0, 0, 90}), 90);
    }
}

TEST(Compositor, OddXPlanesOfAVolumeAreOneVoxelOff)
{
    // Slices at texels 3.5, 2.167 and 0.833 of voxels at 0, 1, 2; along y and z at -0.5, 0.833 and 2.167.
    EXPECT_EQ(brightest(0, {90, 0, 0}), 15);
    EXPECT_EQ(brightest(0, {0, 0, 90}), 75);
    for (int axis = 1; axis < 3; ++axis) {
        EXPECT_EQ(brightest(axis, {90, 0, 0}), 90);
        EXPECT_EQ(brightest(axis, {0, 0, 90}), 75);
    }
}

TEST(Compositor, ThePaddingOfAVolumeIsLeftOutAlongZ)
{
    // Five slices at ((i + 1) / 7) * 8 - 0.5 = 0.643, 1.786, 2.929, 4.071, 5.214 of voxels at texels 1 to 5.
    EXPECT_EQ(brightest(2, {70, 0, 0, 0, 0}), 45);
    EXPECT_EQ(brightest(2, {0, 70, 0, 0, 0}), 55);
    EXPECT_EQ(brightest(2, {0, 0, 70, 0, 0}), 65);
    EXPECT_EQ(brightest(2, {0, 0, 0, 70, 0}), 65);
    EXPECT_EQ(brightest(2, {0, 0, 0, 0, 70}), 55);
}

TEST(Compositor, AReslicedVolumeHasSlicesBetweenThePlanes)
{
    ColourTable onlyMiddle = flatTable(255, 255, 255, 0);
    for (std::size_t entry = 40; entry <= 60; ++entry)
        onlyMiddle[4 * entry + 3] = 255;
    CompositorView view{.target = Target::Volume3D, .size = 1};
    EXPECT_EQ(reds(compose(line(2, {0, 100}, 2), {onlyMiddle}, view)), (Rows{{-1}}));
    view.finalZ = 3;
    EXPECT_EQ(reds(compose(line(2, {0, 100}, 2), {onlyMiddle}, view)), (Rows{{255}}));
}

TEST(Compositor, BlocksOfAVolumeThatIsSplitEvenlyShowWhatSlicesShow)
{
    const PlainStack stack = denseStack(4, 4, 4, 2);
    const std::vector<ColourTable> tables = {rampTable(256, {1, 0.5, 0}, 0.5),
                                             rampTable(256, {0, 0.5, 1}, 0.5)};
    for (const std::array<int, 3>& rotation : axisRotations()) {
        CompositorView view{.rotation = rotation, .blockLimit = 2, .size = 16};
        const Picture slices = compose(stack, tables, view);
        view.target = Target::Volume3D;
        EXPECT_EQ(compose(stack, tables, view).rgb, slices.rgb);
    }
}

TEST(Compositor, ASliceWhoseBlockDoesNotExistIsNotDrawn)
{
    // Five slices over four blocks of two: the fifth would fall before the first block. Four layers that each
    // hide 128 of 255 of what lies below give 128, 192, 224, 240.
    const CompositorView view{.rotation = axisRotations()[2],
                              .scale = {9, 9, 9},
                              .target = Target::Volume3D,
                              .blockLimit = 2,
                              .size = 1};
    EXPECT_EQ(compose(line(0, {9, 9, 9, 9, 9}, 2), {flatTable(255, 0, 0, 128)}, view).pixel(0, 0)[0], 240);
}

TEST(Compositor, OneVoxelOnAnAxisTakesSlices)
{
    const PlainStack flat = denseStack(4, 4, 1);
    CompositorView view{.size = 16};
    const Picture slices = compose(flat, {opaqueTable()}, view);
    view.target = Target::Volume3D;
    EXPECT_EQ(compose(flat, {opaqueTable()}, view).rgb, slices.rgb);
}

/// A view of a dense stack in two channels, whose picture must show what is wrong with it.
struct DenseCase
{
    PlainStack stack;
    CompositorView view;
    std::vector<ColourTable> tables = {rampTable(256, {1, 0.6, 0.1}, 0.35),
                                       rampTable(256, {0.1, 0.5, 1}, 0.35)};
    Picture right = compose(stack, tables, view);

    bool accepts(const PlainStack& shown) const
    {
        return matches(compare(right, compose(shown, tables, view)));
    }
    PlainStack withNearSliceShifted() const
    {
        return withShiftedSlice(stack, slicingAxisOf(view), nearVoxelOf(view, stack), 2);
    }
};

std::vector<DenseCase> denseCases(Blending blending)
{
    std::vector<DenseCase> cases;
    for (const auto& [bits, target] :
         {std::pair{8, Target::Slices2D}, {12, Target::Volume3D}, {16, Target::Slices2D}})
        for (const std::array<int, 3>& rotation : axisRotations())
            cases.push_back({denseStack(16, 14, 12, 2, bits),
                             {.rotation = rotation, .blending = blending, .target = target, .size = 64}});
    return cases;
}

TEST(Compositor, EveryMistakeIsSeenInAnAlphaBlend)
{
    for (const DenseCase& dense : denseCases(Blending::Alpha)) {
        EXPECT_TRUE(dense.accepts(dense.stack));
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_FALSE(dense.accepts(mirrored(dense.stack, axis)));
        EXPECT_FALSE(dense.accepts(withSwappedChannels(dense.stack, 0, 1)));
        EXPECT_FALSE(dense.accepts(dense.withNearSliceShifted()));
        CompositorView backward = dense.view;
        backward.wrongOrder = true;
        EXPECT_FALSE(matches(compare(dense.right, compose(dense.stack, dense.tables, backward))));
    }
}

TEST(Compositor, EveryMistakeButOneOfDepthIsSeenInAMaximum)
{
    for (const DenseCase& dense : denseCases(Blending::Maximum)) {
        EXPECT_TRUE(dense.accepts(dense.stack));
        const int slicingAxis = slicingAxisOf(dense.view);
        for (const int axis : {(slicingAxis + 1) % 3, (slicingAxis + 2) % 3})
            EXPECT_FALSE(dense.accepts(mirrored(dense.stack, axis)));
        EXPECT_FALSE(dense.accepts(withSwappedChannels(dense.stack, 0, 1)));
        EXPECT_FALSE(dense.accepts(dense.withNearSliceShifted()));
    }
}

TEST(PlainStack, BytesLieAsTheProgramKeepsThem)
{
    PlainStack stack = PlainStack::blank(2, 1, 1, 2, 8);
    stack.at(1, 0, 0, 1) = 7;
    EXPECT_EQ(stack.bytes(), (std::vector<std::uint8_t>{0, 0, 0, 7}));
    stack.bits = 12;
    stack.at(0, 0, 0, 1) = 0x0A0B;
    EXPECT_EQ(stack.bytes(), (std::vector<std::uint8_t>{0, 0, 0x0B, 0x0A, 0, 0, 7, 0}));
}

TEST(PlainStack, MutationsChangeWhatTheyName)
{
    PlainStack stack = PlainStack::blank(3, 2, 1, 2);
    stack.at(0, 0, 0, 0) = 5;
    EXPECT_EQ(mirrored(stack, 0).at(2, 0, 0, 0), 5);
    EXPECT_EQ(mirrored(stack, 1).at(0, 1, 0, 0), 5);
    EXPECT_EQ(withSwappedChannels(stack, 0, 1).at(0, 0, 0, 1), 5);
    EXPECT_EQ(withShiftedSlice(stack, 2, 0, 2).at(2, 0, 0, 0), 5);
    EXPECT_EQ(withShiftedSlice(stack, 2, 1, 2), stack);
}

Picture flatPicture(int size, std::uint8_t value)
{
    const auto pixels = static_cast<std::size_t>(size * size);
    return {size, std::vector<std::uint8_t>(3 * pixels, value), std::vector<bool>(pixels, true)};
}

TEST(PictureCompare, MeasuresOverCoveredPixelsOnly)
{
    Picture predicted = flatPicture(100, 50);
    Picture seen = flatPicture(100, 51);
    for (std::size_t pixel = 0; pixel < 11; ++pixel)
        seen.rgb[3 * pixel] = 250;
    predicted.covered[9999] = false;
    seen.rgb[3 * 9999] = 90;
    const PictureDifference difference = compare(predicted, seen);
    EXPECT_EQ(difference.covered, 9999U);
    EXPECT_NEAR(difference.mean, 1 + 11 * 199 / 3.0 / 9999, 1e-9);
    EXPECT_EQ(difference.percentile999, 200);
    EXPECT_EQ(difference.worstOutside, 40);
    EXPECT_FALSE(matches(difference));
}

TEST(PictureCompare, OneInAThousandMayBeOff)
{
    Picture seen = flatPicture(100, 51);
    for (std::size_t pixel = 0; pixel < 10; ++pixel)
        seen.rgb[3 * pixel] = 250;
    EXPECT_EQ(compare(flatPicture(100, 50), seen).percentile999, 1);
    EXPECT_TRUE(matches(compare(flatPicture(100, 50), seen)));
}

TEST(PictureCompare, AnEmptyPredictionMatchesNothing)
{
    Picture predicted = flatPicture(4, 0);
    predicted.covered.assign(16, false);
    EXPECT_FALSE(matches(compare(predicted, flatPicture(4, 0))));
}

} // namespace
} // namespace tirn::test
