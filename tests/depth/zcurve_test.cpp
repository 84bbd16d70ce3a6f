#include <cstdlib>

#include <gtest/gtest.h>

#include "depth/zcurve.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

/// Remembers the texels of each texture. Names count from 1.
struct RecordingTextures : CurveTextures
{
    CurveUpload upload(unsigned texture, std::span<const float> values) override
    {
        uploads.push_back(texture);
        texels.assign(values.begin(), values.end());
        all.push_back(texels);
        return {texture != 0 ? texture : ++made, error};
    }
    void release(unsigned texture) override { released.push_back(texture); }

    std::vector<unsigned> uploads;
    std::vector<unsigned> released;
    std::vector<float> texels;
    std::vector<std::vector<float>> all;
    unsigned made = 0;
    unsigned error = 0;
};

using Texels = std::vector<float>;

TEST(CurveTexels, APowerOfTwoHasNoPadding)
{
    EXPECT_EQ(curveTexels(std::vector<double>{0, 1, 2, 4}), (Texels{0, 0.25F, 0.5F, 1}));
}

TEST(CurveTexels, FiveSlicesStartAtTheFirstTexel)
{
    EXPECT_EQ(curveTexels(std::vector<double>{0.4, 0.8, 1.2, 1.6, 2}),
              (Texels{0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.5F, 0.5F, 0.5F}));
}

TEST(CurveTexels, SixSlicesRepeatTheSliceOfThePaddingInFront)
{
    // The padding is one texel and holds slice 1, not slice 0.
    EXPECT_EQ(curveTexels(std::vector<double>{0, 1, 2, 3, 4, 2}),
              (Texels{0.25F, 0, 0.25F, 0.5F, 0.75F, 1, 0.5F, 0.5F}));
}

TEST(CurveTexels, ThreeSlicesBeginOneSliceLate)
{
    // (4 - 3) / 2 - (4 - 3) % 2 is -1.
    EXPECT_EQ(curveTexels(std::vector<double>{0, 1, 2}), (Texels{0.25F, 0.5F, 0.5F, 0.5F}));
}

TEST(CurveTexels, NinetySlicesLieInTheMiddle)
{
    std::vector<double> curve(90);
    for (std::size_t i = 0; i < curve.size(); ++i)
        curve[i] = static_cast<double>(i) / 100;
    const Texels texels = curveTexels(curve);
    ASSERT_EQ(texels.size(), 128U);
    const std::size_t pad = 19; // (128 - 90) / 2
    EXPECT_EQ(texels[0], static_cast<float>(0.19 / 4));
    EXPECT_EQ(texels[pad - 1], static_cast<float>(0.19 / 4));
    EXPECT_EQ(texels[pad], 0);
    EXPECT_EQ(texels[pad + 89], static_cast<float>(0.89 / 4));
    EXPECT_EQ(texels[pad + 90], static_cast<float>(0.89 / 4));
    EXPECT_EQ(texels[127], static_cast<float>(0.89 / 4));
}

TEST(CurveTexels, AMultiplierAboveFourIsCutAndNegativeOnesStay)
{
    EXPECT_EQ(curveTexels(std::vector<double>{5, -2}), (Texels{1, -0.5F}));
    EXPECT_EQ(curveTexels(std::vector<double>{5}), Texels{1});
    EXPECT_EQ(curveTexels(std::vector<double>{4}), Texels{1});
    EXPECT_TRUE(curveTexels({}).empty());
}

// The formulas divide by the number of slices less one.
TEST(CurveTexels, TheCurveOfOneSliceLeavesItAsItIs)
{
    ZCurve curve(1);
    curve.powerCurve({1, 1, 0, 4});
    EXPECT_EQ(curveTexels(*curve.curve()), Texels{0.25F});
    curve.linearCurve(0, 4);
    EXPECT_EQ(curveTexels(*curve.curve()), Texels{0.25F});
    curve.linearCurve(-1, 4);
    EXPECT_EQ(curveTexels(*curve.curve()), Texels{1});
}

TEST(ZCurve, HasATextureForEachBlockAlongZ)
{
    RecordingTextures textures;
    {
        ZCurve curve(6, &textures);
        curve.setBlocks(2);
        EXPECT_TRUE(textures.uploads.empty());
        *curve.curve() = {0, 1, 2, 3, 4, 2};
        curve.generateTexture();
        EXPECT_EQ(textures.all, (std::vector<Texels>{{0.25F, 0, 0.25F, 0.5F}, {0.75F, 1, 0.5F, 0.5F}}));
        EXPECT_EQ(curve.textureName(0), 1U);
        EXPECT_EQ(curve.textureName(1), 2U);
        EXPECT_EQ(curve.textureName(2), 0U);
        curve.setBlocks(1);
        EXPECT_EQ(textures.all.back().size(), 8U);
        EXPECT_EQ(curve.textureName(1), 0U);
        EXPECT_EQ(textures.released, (std::vector<unsigned>{1, 2}));
    }
    EXPECT_EQ(textures.released, (std::vector<unsigned>{1, 2, 3}));
}

TEST(ZCurve, AssignmentKeepsTheBlocksOfTheVolume)
{
    RecordingTextures textures;
    ZCurve to(8, &textures);
    to.setBlocks(4);
    to = ZCurve(8, &textures);
    EXPECT_EQ(textures.uploads.size(), 4U);
    EXPECT_NE(to.textureName(3), 0U);
}

TEST(ZCurve, StartsPlainUnsavedAndWithoutATexture)
{
    const ZCurve none;
    EXPECT_EQ(none.size(), 0);
    const ZCurve curve(3);
    EXPECT_EQ(*curve.curve(), (std::vector<double>{1, 1, 1}));
    EXPECT_FALSE(curve.saved());
    EXPECT_EQ(curve.textureName(), 0U);
}

TEST(ZCurve, TheArrayIsShared)
{
    ZCurve curve(3);
    const ZCurve::Array array = curve.curve();
    (*array)[1] = 2.5;
    EXPECT_EQ(curve[1], 2.5);
    ZCurve copy(curve);
    copy[2] = 7;
    EXPECT_EQ(curve[2], 7);
    EXPECT_EQ(ZCurve(array)[2], 7);
}

TEST(ZCurve, SetDepthFillsAndMakesANewTexture)
{
    RecordingTextures textures;
    ZCurve curve(2, &textures);
    curve[0] = 3;
    curve.generateTexture();
    EXPECT_EQ(textures.texels, (Texels{0.75F, 0.25F}));
    curve.generateTexture();
    EXPECT_EQ(textures.uploads, (std::vector<unsigned>{0, 1}));
    curve.setDepth(4);
    EXPECT_EQ(*curve.curve(), std::vector<double>(4, 1.0));
    EXPECT_EQ(textures.released, std::vector<unsigned>{1});
    EXPECT_EQ(curve.textureName(), 2U);
}

TEST(ZCurve, ResetLeavesTheTextureAlone)
{
    RecordingTextures textures;
    ZCurve curve(2, &textures);
    curve[0] = 3;
    curve.reset();
    EXPECT_EQ(*curve.curve(), (std::vector<double>{1, 1}));
    EXPECT_TRUE(textures.uploads.empty());
}

TEST(ZCurve, ACopyHasATextureOfItsOwnAndReleasesNoOther)
{
    RecordingTextures textures;
    ZCurve curve(2, &textures);
    curve.generateTexture();
    {
        ZCurve copy(curve);
        EXPECT_EQ(copy.textureName(), 0U);
        EXPECT_EQ(copy.curve(), curve.curve());
    }
    EXPECT_TRUE(textures.released.empty());
    {
        ZCurve copy(curve);
        copy.generateTexture();
        EXPECT_EQ(copy.textureName(), 2U);
    }
    EXPECT_EQ(textures.released, std::vector<unsigned>{2});
    EXPECT_EQ(curve.textureName(), 1U);
}

TEST(ZCurve, TheTextureMovesWithTheCurve)
{
    static_assert(std::is_nothrow_move_constructible_v<ZCurve>,
                  "growing lists of curves keep their textures");
    RecordingTextures textures;
    {
        ZCurve curve(2, &textures);
        curve.generateTexture();
        const ZCurve moved(std::move(curve));
        EXPECT_EQ(moved.textureName(), 1U);
    }
    EXPECT_EQ(textures.released, std::vector<unsigned>{1});
}

TEST(ZCurve, AssignmentTakesTheArrayAndMakesATextureOfItsOwn)
{
    RecordingTextures textures;
    ZCurve from(4, &textures);
    from.generateTexture();
    ZCurve to(2, &textures);
    to.generateTexture();
    to = from;
    EXPECT_EQ(to.curve(), from.curve());
    EXPECT_EQ(from.textureName(), 1U);
    EXPECT_EQ(to.textureName(), 3U) << "another length needs another texture";
    EXPECT_EQ(textures.released, std::vector<unsigned>{2});
    to = from;
    EXPECT_EQ(textures.uploads.back(), 3U);
}

TEST(ZCurve, AGlErrorIsReported)
{
    RecordingTextures textures;
    textures.error = 1281;
    ZCurve curve(2, &textures);
    const test::LogCapture capture;
    curve.generateTexture();
    EXPECT_TRUE(capture.warnings().contains("GL error: 1281"));
}

TEST(ZCurve, AnEmptyCurveHasNoTexture)
{
    RecordingTextures textures;
    ZCurve curve(&textures);
    curve.generateTexture();
    curve.setDepth(0);
    EXPECT_TRUE(textures.uploads.empty());
}

TEST(ZCurve, TheAssertionIsLoggedOnceARun)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto assertionsOfARun = [] {
        const test::LogCapture capture;
        ZCurve none;
        none.generateTexture();
        if (!capture.lines().isEmpty())
            std::exit(9);
        ZCurve curve(2);
        curve.generateTexture();
        curve.setDepth(5);
        std::exit(capture.warnings() == QStringList{"ASSERT: \"curve.isNull()\" in zcurve (83)"} ? 0 : 1);
    };
    EXPECT_EXIT(assertionsOfARun(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace tirn
