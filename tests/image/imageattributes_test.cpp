#include "image/imageattributes.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

ImageAttributes sample()
{
    ImageAttributes a;
    a.x = 4;
    a.y = 3;
    a.z = 2;
    a.channels = 1;
    a.bitDepth = 16;
    a.type = ImageType::BioRad;
    return a;
}

TEST(ImageAttributes, DefaultsSayThatNothingIsKnown)
{
    const ImageAttributes a;
    EXPECT_EQ(a.x, 0);
    EXPECT_EQ(a.fileZ, -1);
    EXPECT_EQ(a.dimX, -1.0);
    EXPECT_EQ(a.channels, 0);
    EXPECT_EQ(a.timePoints, 1);
    EXPECT_EQ(a.bitDepth, 0);
    EXPECT_EQ(a.maxValue, -1);
    EXPECT_EQ(a.displayMaximum, -1);
    EXPECT_EQ(a.type, ImageType::Unknown);
    EXPECT_EQ(a.lens, -1);
    EXPECT_EQ(a.magFactor, 0.0F);
    EXPECT_FALSE(a.hasNotes);
    EXPECT_FALSE(a.timestamp.isValid());
}

TEST(ImageAttributes, TheTypesKeepTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(ImageType::BioRad), 0);
    EXPECT_EQ(static_cast<int>(ImageType::Dicom), 1);
    EXPECT_EQ(static_cast<int>(ImageType::DeltaVision), 2);
    EXPECT_EQ(static_cast<int>(ImageType::Leica), 3);
    EXPECT_EQ(static_cast<int>(ImageType::MetaMorph), 4);
    EXPECT_EQ(static_cast<int>(ImageType::MultiPageTiff), 5);
    EXPECT_EQ(static_cast<int>(ImageType::Olympus), 6);
    EXPECT_EQ(static_cast<int>(ImageType::PerkinElmer), 7);
    EXPECT_EQ(static_cast<int>(ImageType::TiffSeries), 8);
    EXPECT_EQ(static_cast<int>(ImageType::Vff), 9);
    EXPECT_EQ(static_cast<int>(ImageType::Zeiss), 10);
    EXPECT_EQ(static_cast<int>(ImageType::Unknown), 11);
}

TEST(ImageAttributes, AStackOfAnotherVoxelSizeIsEqual)
{
    ImageAttributes a = sample();
    ImageAttributes b = sample();
    b.dimZ = 0.5;
    b.notes.append(QStringLiteral("note"));
    EXPECT_TRUE(a == b);
    b.z = 3;
    EXPECT_FALSE(a == b);
    b = sample();
    b.type = ImageType::Zeiss;
    EXPECT_FALSE(a == b);
}

TEST(ImageAttributes, ACopyLeavesOutTimePointsAndTheListsOfTheReader)
{
    ImageAttributes a = sample();
    a.timePoints = 7;
    a.channelNames.append(QStringLiteral("red"));
    a.excitationWavelengths.append(488);
    a.emissionWavelengths.append(520);
    a.dimX = 0.25;
    a.notes.append(QStringLiteral("note"));
    a.displayMaximum = 9;
    const ImageAttributes copy(a);
    EXPECT_EQ(copy.timePoints, 1);
    EXPECT_TRUE(copy.channelNames.isEmpty());
    EXPECT_TRUE(copy.excitationWavelengths.isEmpty());
    EXPECT_TRUE(copy.emissionWavelengths.isEmpty());
    EXPECT_EQ(copy.dimX, 0.25);
    EXPECT_EQ(copy.notes, a.notes);
    EXPECT_EQ(copy.displayMaximum, 9);
}

TEST(ImageAttributes, TheRealDepthIsThatOfTheLargestValue)
{
    ImageAttributes a = sample();
    EXPECT_EQ(a.realBitDepth(), 16);
    EXPECT_EQ(a.depthText(), QStringLiteral("16bit"));
    a.maxValue = 4095;
    EXPECT_EQ(a.realBitDepth(), 12);
    a.maxValue = 0;
    EXPECT_EQ(a.realBitDepth(), 0);
    a.maxValue = 255;
    EXPECT_EQ(a.realBitDepth(), 8);
    EXPECT_EQ(a.depthText(), QStringLiteral("16bit really 8bit"));
}

TEST(ImageAttributes, EachTypeHasItsRowName)
{
    const char* names[] = {"Biorad ", "DICOM ",       "Deltavision ",  "Leica ", "Metamorph ",
                           "MTiff ",  "Olympus OMF ", "Perkin Elmer ", "Tiff ",  "not a clue ",
                           "Zeiss ",  "Unknown raw ", "not a clue "};
    for (int type = 0; type < 13; ++type)
        EXPECT_EQ(imageTypeRowName(static_cast<ImageType>(type)).toStdString(), names[type]) << type;
}

TEST(ImageAttributes, ThePrintsHaveTheirHeadings)
{
    const char* shortHeadings[] = {"Biorad:\n",    "Unknown:\n", "Deltavision: \n", "Unknown:\n",
                                   "Metamorph:\n", "MTIFF:\n",   "Unknown:\n",      "Perkinelmer:\n",
                                   "TIFF:\n",      "Unknown:\n", "Zeiss:\n",        "Unknown:\n"};
    const char* fullHeadings[] = {"Biorad:\n",    "Unknown:\n", "Unknown:\n", "Leica:\n",
                                  "Metamorph:\n", "MTIFF:\n",   "Unknown:\n", "Perkinelmer:\n",
                                  "TIFF:\n",      "Unknown:\n", "Zeiss:\n",   "Unknown:\n"};
    ImageAttributes a = sample();
    for (int type = 0; type < 12; ++type) {
        a.type = static_cast<ImageType>(type);
        EXPECT_EQ(a.shortText().toStdString(), std::string(shortHeadings[type]) + "x: 4\ny: 3\nz: 2\n");
        EXPECT_TRUE(a.fullText().startsWith(QLatin1String(fullHeadings[type]))) << type;
    }
}

TEST(ImageAttributes, TheFullPrintHasEveryFieldInItsLine)
{
    ImageAttributes a = sample();
    a.fileX = 8;
    a.fileY = 6;
    a.fileZ = 5;
    a.dimX = 0.25;
    a.dimY = 0.5;
    a.dimZ = 1.5;
    a.maxValue = 4095;
    a.notes = QStringList{QStringLiteral("one"), QStringLiteral("two")};
    EXPECT_EQ(a.fullText().toStdString(),
              "Biorad:\nx: 4 y: 3 z: 2\nfileX: 8 fileY: 6 fileZ: 5\n"
              "dimX: 0.25um dimY: 0.5um dimZ: 1.5um\n"
              "channels: 1 bitDepth: 16 maxValue: 4095 realBitDepth: 12\none\ntwo\n");
    a.timestamp = QDateTime(QDate(2004, 3, 9), QTime(14, 5, 6, 78));
    EXPECT_TRUE(a.fullText().contains(QStringLiteral("\ntimestamp: 03-09-2004 14:05:06.078\none\n")));
}

} // namespace
} // namespace tirn
