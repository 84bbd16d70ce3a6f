// Layers against a reference that works straight from the definitions, in double precision.

#include <gtest/gtest.h>

#include "support/rasterrig.h"

namespace tirn::test {
namespace {

/// Clear up to a value and opaque 32 entries later.
ColourTable surfaceTable(int from)
{
    ColourTable table;
    for (int i = 0; i < 256; ++i) {
        const int opacity = std::clamp((i - from) * 8, 0, 255);
        for (const int part : {i, i * 3 / 4, 255 - i, opacity})
            table.push_back(static_cast<std::uint8_t>(part));
    }
    return table;
}

/// Bright, and nowhere more opaque than 3 of 255.
ColourTable fogTable()
{
    ColourTable table;
    for (int i = 0; i < 256; ++i) {
        for (const int part : {255, 128 + i / 2, i, 1 + i / 128})
            table.push_back(static_cast<std::uint8_t>(part));
    }
    return table;
}

std::vector<ColourTable> rampTables(int channels)
{
    const std::array<std::array<double, 3>, 5> colours = {
        {{1, 0.6, 0.2}, {0.2, 0.5, 1}, {0.3, 1, 0.3}, {1, 0, 1}, {0.7, 0.7, 0.7}}};
    std::vector<ColourTable> tables;
    for (int c = 0; c < channels; ++c)
        tables.push_back(rampTable(256, colours[static_cast<std::size_t>(c)], 0.3 + 0.1 * c));
    return tables;
}

std::array<int, 3> sizeAcross(int axis, int planes, int width = 24, int height = 20)
{
    std::array<int, 3> size = {width, height, width};
    size[1] = height;
    size[static_cast<std::size_t>(axis)] = planes;
    return size;
}

PlainStack stackAcross(int axis, int planes, int channels = 1, int bits = 8)
{
    const std::array<int, 3> size = sizeAcross(axis, planes);
    return denseStack(size[0], size[1], size[2], channels, bits);
}

void expectExact(const RasterRig& rig, double covered = 0.3)
{
    const RasterDifference difference = differenceOf(rig);
    EXPECT_LT(difference.mean, 0.5);
    EXPECT_LE(difference.largest, 2);
    EXPECT_GE(difference.covered, covered);
    EXPECT_LT(difference.undecided, 0.02);
}

struct SliceCount
{
    int planes;
    RasterBlend blend;
    const char* name;
    ColourTable table;

    friend std::ostream& operator<<(std::ostream& stream, const SliceCount& count)
    {
        return stream << count.name << count.planes;
    }
};

class SliceCounts : public ::testing::TestWithParam<SliceCount>
{};

TEST_P(SliceCounts, TheLayerIsTheExactComposite)
{
    const PlainStack stack = stackAcross(2, GetParam().planes);
    RasterRig rig(stack, {GetParam().table}, 2, slowFrame(stack, 2, {.degrees = {25, 20, 10}}));
    rig.frame.blend = GetParam().blend;
    expectExact(rig);
}

std::vector<SliceCount> sliceCounts()
{
    std::vector<SliceCount> counts;
    for (const int planes : {64, 256, 1024}) {
        const ColourTable ramp = rampTable(256, {1, 0.6, 0.2}, 0.45);
        counts.push_back({planes, RasterBlend::Alpha, "Ramp", ramp});
        counts.push_back({planes, RasterBlend::Alpha, "Surface", surfaceTable(100)});
        counts.push_back({planes, RasterBlend::Alpha, "Fog", fogTable()});
        counts.push_back({planes, RasterBlend::Maximum, "MaximumOfRamp", ramp});
        counts.push_back({planes, RasterBlend::Maximum, "MaximumOfFog", fogTable()});
    }
    return counts;
}

INSTANTIATE_TEST_SUITE_P(Slices, SliceCounts, ::testing::ValuesIn(sliceCounts()), [](const auto& tested) {
    return tested.param.name + std::to_string(tested.param.planes);
});

TEST(Compositing, AllOrientationsAndSlantsAreExact)
{
    for (int axis = 0; axis < 3; ++axis) {
        const PlainStack stack = stackAcross(axis, 20, 2);
        const std::array<double, 3> facing = axis == 0   ? std::array<double, 3>{0, 90, 0}
                                             : axis == 1 ? std::array<double, 3>{90, 0, 0}
                                                         : std::array<double, 3>{0, 0, 0};
        for (const double turned : {0.0, 180.0}) {
            for (const double slant : {0.0, 15.0, 40.0}) {
                SlowView view;
                view.degrees = {facing[0] + slant, facing[1] + turned + slant / 2, 3 * slant};
                RasterRig rig(stack, rampTables(2), axis, slowFrame(stack, axis, view));
                expectExact(rig);
            }
        }
    }
}

TEST(Compositing, OneToFiveChannelsAreLaidInTheirOrder)
{
    for (int channels = 1; channels <= 5; ++channels) {
        for (const RasterBlend blend : {RasterBlend::Alpha, RasterBlend::Maximum}) {
            const PlainStack stack = stackAcross(2, 16, channels);
            RasterRig rig(stack, rampTables(channels), 2, slowFrame(stack, 2, {.degrees = {20, 30, 0}}));
            rig.frame.blend = blend;
            expectExact(rig);
        }
    }
}

TEST(Compositing, SwappedChannelsOrTurnedOrderAreNoticed)
{
    const PlainStack stack = stackAcross(2, 16, 2);
    RasterRig rig(stack, rampTables(2), 2, slowFrame(stack, 2, {.degrees = {20, 30, 0}}));
    const auto right = rig.drawn();
    std::swap(rig.frame.channels[0], rig.frame.channels[1]);
    EXPECT_NE(rig.drawn(), right);
    std::swap(rig.frame.channels[0], rig.frame.channels[1]);
    std::reverse(rig.frame.slices.begin(), rig.frame.slices.end());
    EXPECT_NE(rig.drawn(), right);
}

TEST(Compositing, DeepSamplesAreStretchedAndCutOff)
{
    for (const int bits : {12, 16}) {
        for (const int entries : {256, 4096}) {
            for (const double stretch : {1.0, 16.0, 64.0}) {
                const PlainStack stack = stackAcross(1, 20, 1, bits);
                RasterRig rig(stack, {rampTable(entries, {0.4, 1, 0.6}, 0.3)}, 1,
                              slowFrame(stack, 1, {.degrees = {70, 20, 10}}));
                rig.frame.channels[0].stretch = stretch;
                expectExact(rig);
            }
        }
    }
}

TEST(Compositing, BytesAreLookedUpInTablesOfAnySize)
{
    for (const int entries : {16, 512, 4096}) {
        const PlainStack stack = stackAcross(2, 20);
        RasterRig rig(stack, {rampTable(entries, {0.4, 1, 0.6}, 0.3)}, 2,
                      slowFrame(stack, 2, {.degrees = {20, 10, 0}}));
        expectExact(rig);
    }
}

TEST(Compositing, DepthCurvesMultiplyBeforeTheTable)
{
    const std::vector<float> curve = {0.2F, 0.5F, 1.5F, 2.5F, 0.9F, 4.0F, 1.0F, 0.0F};
    for (int axis = 0; axis < 3; ++axis) {
        for (const int bits : {8, 12}) {
            const PlainStack stack = stackAcross(axis, 20, 1, bits);
            RasterRig rig(stack, {rampTable(256, {1, 0.5, 0.2}, 0.2)}, axis,
                          slowFrame(stack, axis, {.degrees = {axis == 1 ? 70.0 : 20.0, 30, 0}}));
            rig.frame.channels[0].curve = curve;
            rig.frame.channels[0].curveFactor = 1.25;
            rig.frame.curveU = axis == 0 ? 0.3 : 0;
            rig.frame.curveV = axis == 1 ? 0.35 : 0;
            for (RasterSlice& slice : rig.frame.slices)
                slice.curveBase = axis == 2 ? slice.plane * 0.4 - 0.3 : -0.2;
            expectExact(rig);
        }
    }
}

TEST(Compositing, SlicesBetweenPlanesShowBoth)
{
    for (const int bits : {8, 16}) {
        const PlainStack stack = stackAcross(2, 20, 1, bits);
        RasterRig rig(stack, {rampTable(256, {1, 0.5, 0.2}, 0.3)}, 2,
                      slowFrame(stack, 2, {.degrees = {20, 30, 0}}));
        for (RasterSlice& slice : rig.frame.slices) {
            slice.nextPlane = slice.plane + 1 < 20 ? slice.plane + 1 : -1;
            slice.share = slice.plane % 5 / 5.0;
            slice.plane = slice.plane == 7 ? -1 : slice.plane;
        }
        expectExact(rig);
    }
}

TEST(Compositing, PaddingIsZeroAndNoPaddingRepeatsTheEdge)
{
    // The first table draws the zeros around the data, too.
    ColourTable table = rampTable(256, {1, 0.5, 0.2}, 0.3);
    table[2] = table[3] = 40;
    for (const bool isPadded : {true, false}) {
        const PlainStack stack = stackAcross(2, 12);
        RasterRig rig(stack, {table}, 2, slowFrame(stack, 2, {.degrees = {20, 30, 0}, .zoom = 0.7}));
        if (isPadded)
            rig.frame.clamp = {-1, 24, -1, 20};
        for (RasterSlice& slice : rig.frame.slices)
            slice.area = isPadded ? TexelArea{-4.5, 28.5, -6.5, 26.5} : TexelArea{-0.5, 23.5, -0.5, 19.5};
        expectExact(rig, 0.2);
    }
}

TEST(Compositing, OnlyTheAreaOfASliceIsDrawn)
{
    const PlainStack stack = stackAcross(2, 12);
    RasterRig rig(stack, {surfaceTable(20)}, 2, slowFrame(stack, 2, {.degrees = {20, 30, 0}}));
    for (RasterSlice& slice : rig.frame.slices)
        slice.area = {3.25, 17.5, 6.75, 12.125};
    expectExact(rig, 0.1);
    EXPECT_LT(coveredPart(rig.frame).width, 64);
    EXPECT_LT(coveredPart(rig.frame).height, 64);
}

TEST(Compositing, PerspectiveIsExact)
{
    for (const double eye : {-0.3, 0.0, 0.3}) {
        SlowView view{.degrees = {25, 20, 10}, .size = 96, .perspective = true, .eye = {eye, 0, 2}};
        for (const RasterBlend blend : {RasterBlend::Alpha, RasterBlend::Maximum}) {
            const PlainStack stack = stackAcross(2, 32, 2);
            RasterRig rig(stack, rampTables(2), 2, slowFrame(stack, 2, view));
            rig.frame.blend = blend;
            expectExact(rig, 0.2);
        }
    }
}

TEST(Compositing, SlicesThatPassTheViewerAreCutOff)
{
    SlowView view{.degrees = {60, 20, 0}, .size = 96, .perspective = true, .eye = {0, 0, 0.4}};
    const PlainStack stack = stackAcross(2, 16);
    RasterRig rig(stack, rampTables(1), 2, slowFrame(stack, 2, view));
    expectExact(rig, 0.5);
}

TEST(Compositing, NothingToDrawIsAnEmptyLayer)
{
    EXPECT_TRUE(composite({}).isEmpty());
    const PlainStack stack = stackAcross(2, 4);
    RasterRig rig(stack, rampTables(1), 2, slowFrame(stack, 2, {}));
    for (RasterSlice& slice : rig.frame.slices)
        slice.toTexel[2] += 1000;
    EXPECT_TRUE(composite(rig.frame).isEmpty());
}

TEST(Compositing, SmallStacksAreExact)
{
    for (const std::array<int, 3>& size : {std::array{1, 1, 1}, std::array{1, 7, 3}, std::array{5, 1, 2}}) {
        for (int axis = 0; axis < 3; ++axis) {
            for (const double zoom : {0.1, 0.6}) {
                const PlainStack stack = denseStack(size[0], size[1], size[2]);
                const std::array<double, 3> facing = {axis == 1 ? 90.0 : 10.0, axis == 0 ? 80.0 : 15.0, 5.0};
                RasterRig rig(stack, {rampTable(256, {1, 0.5, 0.2}, 0.3)}, axis,
                              slowFrame(stack, axis, {.degrees = facing, .zoom = zoom}));
                expectExact(rig, 0);
            }
        }
    }
}

TEST(Compositing, MagnifiedAndMinifiedSlicesAreExact)
{
    for (const double zoom : {0.08, 0.4, 6.0}) {
        const PlainStack stack = denseStack(90, 80, 12);
        RasterRig rig(stack, {rampTable(256, {1, 0.5, 0.2}, 0.3)}, 2,
                      slowFrame(stack, 2, {.degrees = {20, 30, 10}, .zoom = zoom}));
        expectExact(rig, 0.003);
    }
}

} // namespace
} // namespace tirn::test
