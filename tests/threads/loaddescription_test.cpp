// What forms fill in before a load.

#include <gtest/gtest.h>

#include "support/qtprint.h"
#include "threads/loaddescription.h"

namespace tirn {
namespace {

constexpr GLenum k2D = GL_TEXTURE_2D;
constexpr GLenum k3D = GL_TEXTURE_3D;

TEST(LoadDescription, ThePreferenceDecidesAboutTheTarget)
{
    EXPECT_EQ(LoadDescription(0).textureTarget, k2D);
    EXPECT_EQ(LoadDescription(1).textureTarget, k3D);
    EXPECT_EQ(LoadDescription(7).textureTarget, k2D);
}

TEST(LoadDescription, TheWholeStackTakesBackTheRange)
{
    LoadDescription description(1);
    description.setRange(1, 5, 2, 3, k2D, true, 9, true);
    EXPECT_TRUE(description.partial);
    EXPECT_EQ(description.resliceZ, 9);
    description.setWholeStack(true);
    EXPECT_EQ(description.last, 5);
    description.setWholeStack(false);
    EXPECT_FALSE(description.partial);
    EXPECT_EQ(description.first, 0);
    EXPECT_EQ(description.last, 0);
    EXPECT_EQ(description.step, 1);
    EXPECT_EQ(description.subsample, 0);
    EXPECT_FALSE(description.reslice);
    EXPECT_FALSE(description.conserveMemory);
    EXPECT_EQ(description.textureTarget, k3D);
}

TEST(LoadDescription, RawDataKeepTheSwapThatWasSet)
{
    LoadDescription description;
    description.rawLayout.swapBytes = true;
    description.setRaw(12, 3, 4, 5, 2, 16);
    EXPECT_TRUE(description.raw);
    EXPECT_EQ(description.channels, 2);
    EXPECT_EQ(description.rawLayout, (RawLayout{12, 3, 4, 5, 16, true}));
}

TEST(LoadDescription, SizesAndLimitsAreTakenTogetherOrNotAtAll)
{
    LoadDescription description;
    description.setVoxelDimensions(0, 1, 2);
    EXPECT_EQ(description.dimZ, 2);
    description.setVoxelDimensions(0, -0.5, 2);
    EXPECT_EQ(description.dimX, -1);
    EXPECT_EQ(description.dimZ, -1);
    description.setCrop({0, 1, 2, 3, 4, 5});
    EXPECT_EQ(description.crop.zMax, 5);
    description.setCrop({0, 1, 2, 3, -2, 5});
    EXPECT_EQ(description.crop, CropLimits());
}

} // namespace
} // namespace tirn
