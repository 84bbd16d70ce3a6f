#include "raster/tilekernels.h"

#include <gtest/gtest.h>

#include "support/rasterrig.h"

namespace tirn::test {
namespace {

/// A frame that reaches every part of the kernels.
struct KernelCase
{
    const char* name;
    int bits = 8;
    int channels = 1;
    double zoom = 1;
    RasterBlend blend = RasterBlend::Alpha;
    bool perspective = false;
    bool hasCurve = false;
    double share = 0;
};

const std::vector<float>& curve()
{
    static const std::vector<float> multipliers = {0.5F, 0.8F, 1.3F, 0.9F};
    return multipliers;
}

std::unique_ptr<RasterRig> rigOf(const KernelCase& c)
{
    const PlainStack stack = denseStack(100, 90, 12, c.channels, c.bits);
    std::vector<ColourTable> tables;
    for (int i = 0; i < c.channels; ++i)
        tables.push_back(rampTable(256, {1 - 0.3 * i, 0.5, 0.3 * i}, 0.2));
    SlowView view{.degrees = {25, 20, 15}, .size = 200, .zoom = c.zoom, .perspective = c.perspective};
    auto rig = std::make_unique<RasterRig>(stack, tables, 2, slowFrame(stack, 2, view));
    rig->frame.blend = c.blend;
    for (RasterSlice& slice : rig->frame.slices) {
        slice.share = c.share;
        slice.nextPlane = c.share > 0 ? (slice.plane + 1) % 12 : slice.plane;
        slice.curveBase = 0.2 * slice.plane;
    }
    if (c.hasCurve)
        rig->frame.channels[0].curve = curve();
    return rig;
}

class Kernels : public ::testing::TestWithParam<std::tuple<KernelKind, KernelCase>>
{
protected:
    ~Kernels() override { useFastestKernel(); }
};

TEST_P(Kernels, GiveTheSameBits)
{
    const auto& [kind, tested] = GetParam();
    if (!hasKernel(kind))
        GTEST_SKIP() << "this processor does not run the kernel";
    const auto rig = rigOf(tested);
    forceKernel(KernelKind::Plain);
    const auto plain = rig->drawn();
    forceKernel(kind);
    EXPECT_EQ(rig->drawn(), plain);
    const std::array<std::uint16_t, 4> empty = {};
    EXPECT_GT(std::count_if(plain.begin(), plain.end(), [&](const auto& pixel) { return pixel != empty; }),
              std::ssize(plain) / 50);
}

constexpr KernelCase kCases[] = {
    {.name = "SmallWindow", .zoom = 2},
    {.name = "LargeWindow", .zoom = 0.7},
    {.name = "NoWindow", .zoom = 0.25},
    {.name = "Channels", .channels = 3},
    {.name = "Maximum", .channels = 2, .blend = RasterBlend::Maximum},
    {.name = "MaximumInLargeWindow", .zoom = 0.7, .blend = RasterBlend::Maximum},
    {.name = "Words", .bits = 12, .channels = 2},
    {.name = "Perspective", .channels = 2, .perspective = true},
    {.name = "Curve", .hasCurve = true},
    {.name = "BetweenPlanes", .share = 0.3},
    {.name = "WordsBetweenPlanes", .bits = 16, .share = 0.7},
};

INSTANTIATE_TEST_SUITE_P(Kinds, Kernels,
                         ::testing::Combine(::testing::Values(KernelKind::Avx2, KernelKind::Avx512),
                                            ::testing::ValuesIn(kCases)),
                         [](const auto& tested) {
                             return std::string(std::get<0>(tested.param) == KernelKind::Avx2 ? "Avx2"
                                                                                              : "Avx512") +
                                    std::get<1>(tested.param).name;
                         });

TEST(TileKernels, ThePlainOneRunsEverywhere)
{
    EXPECT_TRUE(hasKernel(KernelKind::Plain));
    forceKernel(KernelKind::Plain);
    const TileKernel plain = tileKernel();
    useFastestKernel();
    for (const KernelKind kind : {KernelKind::Avx2, KernelKind::Avx512})
        EXPECT_TRUE(!hasKernel(kind) || tileKernel() != plain);
}

TEST(TileKernels, PositionsAreRoundedToTheNearestPart)
{
    EXPECT_EQ(partsOf(0), 0);
    EXPECT_EQ(partsOf(1.5), 49152);
    EXPECT_EQ(partsOf(-2.25), -73728);
    EXPECT_EQ(partsOf(0.6 / kFractions), 1);
    EXPECT_EQ(partsOf(-0.6 / kFractions), -1);
    EXPECT_EQ(partsOf(1e30), 1 << 29);
    EXPECT_EQ(partsOf(-1e30), -(1 << 29));
}

} // namespace
} // namespace tirn::test
