#include <gtest/gtest.h>

#include "pictures/picturenames.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

TEST(PictureNames, FormatsHaveTheirExtensionAndFilter)
{
    test::LogCapture log;
    EXPECT_EQ(pictureExtension(PictureFormat::Png), ".png");
    EXPECT_EQ(pictureExtension(PictureFormat::Raw), ".raw");
    EXPECT_EQ(pictureExtension(PictureFormat::Tiff), ".tif");
    EXPECT_EQ(pictureExtension(PictureFormat::Printer), "");
    EXPECT_EQ(pictureFileFilter(PictureFormat::Png), "PNG (*.png);; All Files (*)");
    EXPECT_EQ(pictureFileFilter(PictureFormat::Raw), "Raw (*.raw);; All Files (*)");
    EXPECT_EQ(pictureFileFilter(PictureFormat::Tiff), "Tiff (*.tif);; All Files (*)");
    EXPECT_TRUE(log.warnings().isEmpty());
    EXPECT_EQ(pictureFileFilter(PictureFormat::Printer), "");
    EXPECT_EQ(log.warnings(), QStringList{"Impossible format selected for SnapShot"});
}

TEST(PictureNames, AKnownExtensionGivesWayToThatOfTheFormat)
{
    for (const char* name : {"cell.png", "cell.raw", "cell.tif", "cell.jpg", "cell"})
        EXPECT_EQ(fixedPictureName(name, ".png"), "cell.png") << name;
    EXPECT_EQ(fixedPictureName("cell.TIF", ".tif"), "cell.tif");
    EXPECT_EQ(fixedPictureName("cell.bmp", ".tif"), "cell.bmp.tif");
    // Only one goes.
    EXPECT_EQ(fixedPictureName("cell.png.tif", ".raw"), "cell.png.raw");
    EXPECT_EQ(fixedPictureName("cell.tif", ""), "cell");
}

TEST(PictureNames, FourDigitsBeforeTheExtensionCountUp)
{
    EXPECT_EQ(nextPictureName("tirn0000.tif", ".tif"), "tirn0001.tif");
    EXPECT_EQ(nextPictureName("a/b/tirn0099.png", ".png"), "a/b/tirn0100.png");
    EXPECT_EQ(nextPictureName("TIRN0007.PNG", ".png"), "TIRN0008.png");
}

TEST(PictureNames, ANameWithoutFourDigitsGetsZeros)
{
    EXPECT_EQ(nextPictureName("picture.tif", ".tif"), "picture0000.tif");
    EXPECT_EQ(nextPictureName("picture123.tif", ".tif"), "picture1230000.tif");
    // Digits elsewhere do not count.
    EXPECT_EQ(nextPictureName("2024picture.tif", ".tif"), "2024picture0000.tif");
}

TEST(PictureNames, OfFiveDigitsTheFirstBelongsToTheName)
{
    EXPECT_EQ(nextPictureName("run10009.tif", ".tif"), "run10010.tif");
    // Past 9999 the number grows a digit, and the next one starts at 0 again with the 1 in the name.
    EXPECT_EQ(nextPictureName("run9999.tif", ".tif"), "run10000.tif");
    EXPECT_EQ(nextPictureName("run19999.tif", ".tif"), "run110000.tif");
}

TEST(PictureNames, TheLastFourCharactersPassForTheExtension)
{
    // As for a printer, whose names have none.
    EXPECT_EQ(nextPictureName("picture", ""), "pic0000");
    EXPECT_EQ(nextPictureName("picture0003", ""), "picture0004");
    EXPECT_EQ(nextPictureName("abc", ".tif"), "0000.tif");
}

TEST(PictureNames, TheDotOfTheExtensionStandsForAnyCharacter)
{
    EXPECT_EQ(nextPictureName("tirn0041_tif", ".tif"), "tirn0042.tif");
}

TEST(PictureNames, FramesAreNumberedBeforeTheEnding)
{
    EXPECT_EQ(numberedPictureName("turn.png", 7), "turn0007.png");
    EXPECT_EQ(numberedPictureName("a.b/turn", 12), "a.b/turn0012");
    EXPECT_EQ(numberedPictureName("turn.tif", 12345), "turn12345.tif");
}

} // namespace
} // namespace tirn
