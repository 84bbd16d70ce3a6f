#include "volume/slicefiller.h"

#include <random>

#include <gtest/gtest.h>

#include "support/slicereference.h"

namespace tirn {
namespace {

using test::PlainStack;
using test::ReferenceTexture;

struct FillCase
{
    int x, y, z, channels, bits, limit;
};

PlainStack randomStack(const FillCase& c)
{
    PlainStack stack = PlainStack::blank(c.x, c.y, c.z, c.channels, c.bits);
    std::mt19937 generator(static_cast<unsigned>(c.x * 31 + c.y * 7 + c.z));
    for (std::uint16_t& voxel : stack.voxels)
        voxel = static_cast<std::uint16_t>(1 + generator() % ((1U << c.bits) - 1));
    return stack;
}

/// A buffer that shows what was never written and what was written behind its end.
class GuardedBuffer
{
public:
    GuardedBuffer(std::size_t texels, int bits) : m_bytes(texels * bytesATexel(bits) + kGuard, kPoison) {}

    static std::size_t bytesATexel(int bits) { return bits > 8 ? 2 : 1; }
    void* data() { return m_bytes.data(); }
    std::vector<std::uint8_t> content() const { return {m_bytes.begin(), m_bytes.end() - kGuard}; }
    bool isGuardWhole() const
    {
        return std::all_of(m_bytes.end() - kGuard, m_bytes.end(),
                           [](std::uint8_t byte) { return byte == kPoison; });
    }

private:
    static constexpr std::ptrdiff_t kGuard = 256;
    static constexpr std::uint8_t kPoison = 0xAB;
    std::vector<std::uint8_t> m_bytes;
};

std::vector<std::uint8_t> joined(const std::vector<ReferenceTexture>& textures, int bits)
{
    std::vector<std::uint8_t> all;
    for (const ReferenceTexture& texture : textures) {
        const std::vector<std::uint8_t> bytes = texture.bytes(bits);
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
}

class SliceFiller : public ::testing::TestWithParam<FillCase>
{
protected:
    PlainStack stack = randomStack(GetParam());
    std::vector<std::uint8_t> samples = stack.bytes();
    StackGeometry geometry = StackGeometry::of(stack.x, stack.y, stack.z, GetParam().limit);

    SampleView view(int channel) const
    {
        return {samples.data(), stack.bits > 8 ? 2 : 1, stack.channels, channel};
    }
    std::vector<ReferenceTexture> expected(SlicePass pass, int channel) const
    {
        const int limit = GetParam().limit;
        return pass == SlicePass::Y   ? slicesAcrossY(stack, channel, limit)
               : pass == SlicePass::X ? slicesAcrossX(stack, channel, limit)
                                      : slicesAcrossZ(stack, channel, limit);
    }
};

constexpr SlicePass kPasses[] = {SlicePass::Y, SlicePass::X, SlicePass::Z};

TEST_P(SliceFiller, AllPlanesOfEachPassAreAsTheSlowLoopMakesThem)
{
    for (const SlicePass pass : kPasses) {
        const PassLayout layout = passLayout(geometry, pass);
        for (int channel = 0; channel < stack.channels; ++channel) {
            const auto textures = expected(pass, channel);
            ASSERT_EQ(textures.size(), static_cast<std::size_t>(layout.planes * layout.blocksPerPlane));
            ASSERT_EQ(textures.front().width, layout.width);
            ASSERT_EQ(textures.front().height, layout.height);
            GuardedBuffer buffer(layout.texelsPerPlane() * static_cast<std::size_t>(layout.planes),
                                 stack.bits);
            fillPlanes(geometry, pass, view(channel), 0, layout.planes, buffer.data());
            EXPECT_EQ(buffer.content(), joined(textures, stack.bits));
            EXPECT_TRUE(buffer.isGuardWhole());
        }
    }
}

TEST_P(SliceFiller, ARunOfPlanesIsTheSameAsThePartOfTheWhole)
{
    for (const SlicePass pass : kPasses) {
        const PassLayout layout = passLayout(geometry, pass);
        const int first = layout.planes / 3;
        const int count = layout.planes - first - (layout.planes > 2 ? 1 : 0);
        const auto all = expected(pass, 0);
        const std::vector<ReferenceTexture> part(all.begin() + first * layout.blocksPerPlane,
                                                 all.begin() + (first + count) * layout.blocksPerPlane);
        GuardedBuffer buffer(layout.texelsPerPlane() * static_cast<std::size_t>(count), stack.bits);
        fillPlanes(geometry, pass, view(0), first, count, buffer.data());
        EXPECT_EQ(buffer.content(), joined(part, stack.bits));
        EXPECT_TRUE(buffer.isGuardWhole());
    }
}

TEST_P(SliceFiller, LayersOfBlocksAreAsTheSlowLoopMakesThem)
{
    const auto layerTexels =
        static_cast<std::size_t>(geometry.blockX()) * static_cast<std::size_t>(geometry.blockY());
    for (int channel = 0; channel < stack.channels; ++channel) {
        const auto blocks = referenceBlocks(stack, channel, GetParam().limit);
        ASSERT_EQ(blocks.size(), static_cast<std::size_t>(geometry.blocks()));
        for (int block = 0; block < geometry.blocks(); ++block) {
            std::vector<std::uint8_t> seen;
            for (int layer = 0; layer < geometry.blockZ(); ++layer) {
                GuardedBuffer buffer(layerTexels, stack.bits);
                fillBlockLayer(geometry, view(channel), block % geometry.xBlocks,
                               block / geometry.xBlocks % geometry.yBlocks,
                               block / (geometry.xBlocks * geometry.yBlocks), layer, buffer.data());
                EXPECT_TRUE(buffer.isGuardWhole());
                const std::vector<std::uint8_t> bytes = buffer.content();
                seen.insert(seen.end(), bytes.begin(), bytes.end());
            }
            EXPECT_EQ(seen, blocks[static_cast<std::size_t>(block)].bytes(stack.bits)) << "block " << block;
        }
    }
}

TEST_P(SliceFiller, ABatchHoldsAtLeastOnePlaneAndNoMoreThanThereAre)
{
    for (const SlicePass pass : kPasses) {
        const int batch = planesPerBatch(geometry, pass, stack.bits > 8 ? 2 : 1);
        EXPECT_GE(batch, 1);
        EXPECT_LE(batch, passLayout(geometry, pass).planes);
    }
}

TEST(SlicesOfAWideStack, AreSplitInTheMiddleOfTheirPadding)
{
    const StackGeometry geometry = StackGeometry::of(1500, 1, 1, 1024);
    EXPECT_EQ(geometry.powX, 2048);
    EXPECT_EQ(geometry.xBlocks, 2);
    EXPECT_EQ(geometry.padX(), 274);
    std::vector<std::uint16_t> samples(1500);
    for (std::size_t x = 0; x < samples.size(); ++x)
        samples[x] = static_cast<std::uint16_t>(x + 1);
    std::vector<std::uint16_t> texels(2048, 0xFFFF);
    fillPlanes(geometry, SlicePass::Z, {samples.data(), 2, 1, 0}, 0, 1, texels.data());
    // 750 samples at the end of the first block, 750 at the beginning of the second.
    for (std::size_t x = 0; x < texels.size(); ++x)
        ASSERT_EQ(texels[x], x >= 274 && x < 274 + 1500 ? x - 273 : 0) << x;
    EXPECT_EQ(texels[1023], 750);
    EXPECT_EQ(texels[1024], 751);
    EXPECT_EQ(texels[1024 + 749], 1500);
}

INSTANTIATE_TEST_SUITE_P(Shapes, SliceFiller,
                         ::testing::Values(FillCase{1, 1, 1, 1, 8, 1024}, FillCase{1, 9, 6, 2, 16, 1024},
                                           FillCase{7, 5, 3, 1, 8, 1024}, FillCase{7, 5, 3, 3, 8, 1024},
                                           FillCase{7, 5, 3, 4, 12, 2}, FillCase{16, 8, 4, 2, 8, 4},
                                           FillCase{33, 17, 65, 1, 8, 16}, FillCase{33, 17, 65, 2, 16, 8},
                                           FillCase{100, 3, 70, 1, 16, 1024}, FillCase{67, 2, 130, 5, 8, 64},
                                           FillCase{9, 70, 1, 1, 8, 4}, FillCase{5, 6, 7, 1, 8, 1}));

} // namespace
} // namespace tirn
