#include <climits>

#include <gtest/gtest.h>

#include "pictures/picturesize.h"

namespace tirn {
namespace {

TEST(PictureSize, PixelsStandAsTheyAreAndLengthsByTheResolution)
{
    EXPECT_EQ(pixelsOf(512, SizeUnit::Pixels, 300), 512);
    EXPECT_EQ(pixelsOf(512.9, SizeUnit::Pixels, 300), 512);
    EXPECT_EQ(pixelsOf(2.5, SizeUnit::Length, 300), 750);
    EXPECT_EQ(pixelsOf(1.7, SizeUnit::Length, 100), 170);
    EXPECT_EQ(pixelsOf(0.01, SizeUnit::Length, 72), 0);
}

TEST(PictureSize, PrintedPicturesAreAlways2048)
{
    EXPECT_EQ(pixelsOf(100, SizeUnit::Pixels, 300, true), 2048);
    EXPECT_EQ(pixelsOf(1, SizeUnit::Length, 600, true), 2048);
}

TEST(PictureSize, AWindowsSizeGoesBackIntoTheUnitOfTheBox)
{
    EXPECT_EQ(sideOf(640, SizeUnit::Pixels, 300), 640);
    EXPECT_DOUBLE_EQ(sideOf(640, SizeUnit::Length, 300), 640 / 300.0);
}

TEST(PictureSize, AChangedUnitKeepsThePicture)
{
    EXPECT_EQ(convertedSide(600, SizeUnit::Pixels, SizeUnit::Length, 300), (SideBox{0.01, 0.01, 2}));
    EXPECT_EQ(convertedSide(2, SizeUnit::Length, SizeUnit::Pixels, 300), (SideBox{1, 1, 600}));
    EXPECT_EQ(convertedSide(2.0017, SizeUnit::Length, SizeUnit::Pixels, 300).value, 601);
    EXPECT_EQ(convertedSide(2.0016, SizeUnit::Length, SizeUnit::Pixels, 300).value, 600);
    EXPECT_EQ(convertedSide(77, SizeUnit::Pixels, SizeUnit::Pixels, 300).value, 77);
}

TEST(PictureSize, DotsAnInchAreRoundedDownFromCentimetres)
{
    EXPECT_EQ(dotsPerInch(300, ResolutionUnit::Inches), 300);
    EXPECT_EQ(dotsPerInch(300, ResolutionUnit::Centimetres), 118);
    EXPECT_EQ(dotsPerInch(2, ResolutionUnit::Centimetres), 0);
    EXPECT_EQ(lengthUnitName(ResolutionUnit::Centimetres), "cm");
    EXPECT_EQ(lengthUnitName(ResolutionUnit::Inches), "inches");
}

TEST(PictureSize, MemoryHoldsSensiblePicturesOnly)
{
    EXPECT_TRUE(fitsMemory({4096, 4096}));
    EXPECT_FALSE(fitsMemory({1000000, 1000000}));
    EXPECT_FALSE(fitsMemory({INT_MAX, INT_MAX}));
}

TEST(PictureSize, OverlaysGrowWithTheLongerSide)
{
    EXPECT_EQ(overlayScale({512, 300}), 1);
    EXPECT_EQ(overlayScale({640, 480}), 1.25);
    EXPECT_EQ(overlayScale({100, 256}), 0.5);
    EXPECT_EQ(snapshotOverlayScale({100, 256}), 1);
    EXPECT_EQ(snapshotOverlayScale({1023, 10}), 1);
    EXPECT_EQ(snapshotOverlayScale({10, 1024}), 2);
}

} // namespace
} // namespace tirn
