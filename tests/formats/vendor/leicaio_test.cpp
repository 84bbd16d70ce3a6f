#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/vendor/leicaio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

const QByteArray kText =
    "***** LEICA MICROSYSTEMS Heidelberg *****\n"
    "[EXPERIMENT INFORMATION]\nImage Width:  9\n"
    "Dimension Description #0\nChannels 9\n"
    "[HARDWARE PARAMETER]\n[SCANNER INFORMATION]\n"
    "Channels\t2\nVoxel-Width [um] 0.12\n Voxel-Height [\xc2\xb5m]\t0.13\nVoxel-Depth [um] 1\n"
    "[TIME INFORMATION]\nChannels 7\n[LUT DESCRIPTION]\n[SERIES INFORMATION]\n"
    "Image Width: 8\n[IMAGES INFORMATION]\n"
    "Image Width:  512\nIamge Length:  256\nNumber of Images:  10\nNumber of Images: 12\n"
    "Bits per Sample:  8\n";

class LeicaIoTest : public testing::Test
{
protected:
    QString save(const QByteArray& bytes) const
    {
        return test::saveBytes(m_directory.filePath("a.txt"), bytes);
    }
    ImageAttributes read(const QByteArray& bytes) const { return ImageFile({save(bytes)}).attributes(); }

    QTemporaryDir m_directory;
};

TEST_F(LeicaIoTest, TheTextSaysWhatTheStackIs)
{
    const ImageAttributes a = read(kText);
    EXPECT_EQ(a.type, ImageType::Leica);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
              std::vector({512, 256, 12, 2, 8}))
        << "each from its own section, the last match wins";
    EXPECT_EQ(a.dimX, 0.12);
    EXPECT_EQ(a.dimY, 0.13);
    EXPECT_EQ(a.dimZ, 1);
}

TEST_F(LeicaIoTest, TheUnitIsNotLookedAt)
{
    EXPECT_EQ(read(QByteArray(kText).replace("[um] 0.12", "[nm] 120")).dimX, 120);
    EXPECT_EQ(read(QByteArray(kText).replace("\xc2\xb5", "\xb5")).dimY, 0.13) << "a micron sign in Latin 1";
    EXPECT_EQ(read(QByteArray(kText).replace("0.12", "0.12 (at zoom 2)")).dimX, 0.12);
}

TEST_F(LeicaIoTest, TheLengthMayBeMisspelt)
{
    for (const char* spelling : {"Image Length", "Iamge Length", "Immge Length"})
        EXPECT_EQ(read(QByteArray(kText).replace("Iamge Length", spelling)).fileY, 256) << spelling;
    EXPECT_EQ(read(QByteArray(kText).replace("Iamge Length", "Inage Length")).fileY, -1);
}

TEST_F(LeicaIoTest, TheFirstLineNamesTheMaker)
{
    EXPECT_TRUE(LeicaIO::isLeica(save("leica microsystems")));
    EXPECT_TRUE(LeicaIO::isLeica(save(kText)));
    EXPECT_FALSE(LeicaIO::isLeica(save("\n" + kText)));
    EXPECT_FALSE(LeicaIO::isLeica(save("")));
    EXPECT_EQ(read("ordinary notes\nImage Width: 512\n").type, ImageType::Unknown);
}

TEST_F(LeicaIoTest, ABinaryMarkIsEnough)
{
    const QByteArray mark("\x49\x49\x49\x49\xF0\x33\x60\x01\x00\x00\x00\x20", 12);
    EXPECT_TRUE(LeicaIO::isLeica(save(mark)));
    const ImageAttributes a = read(mark);
    EXPECT_EQ(a.type, ImageType::Leica);
    EXPECT_EQ(a.fileX, -1);
    EXPECT_FALSE(LeicaIO::isLeica(save(mark.left(11))));
}

TEST_F(LeicaIoTest, MissingHeadingsLeaveTheirFieldsUnknown)
{
    const ImageAttributes a = read(QByteArray(kText).replace("[HARDWARE PARAMETER]", "[HARDWARE PARAMTER]"));
    EXPECT_EQ(a.type, ImageType::Leica);
    EXPECT_EQ(a.fileX, -1);
    EXPECT_EQ(a.channels, 0);
}

TEST_F(LeicaIoTest, ATextCutAnywhereKeepsWhatItSaid)
{
    const int maker = static_cast<int>(kText.indexOf("MICROSYSTEMS")) + 12;
    const int width = static_cast<int>(kText.indexOf("512")) + 3;
    for (int cut = 0; cut <= kText.size(); ++cut) {
        const ImageAttributes a = read(kText.left(cut));
        EXPECT_EQ(a.type == ImageType::Leica, cut >= maker) << cut;
        EXPECT_EQ(a.fileX == 512, cut >= width) << cut;
    }
}

TEST_F(LeicaIoTest, ReadingSucceedsWithoutVoxels)
{
    ImageFile file({save(kText)});
    const test::LogCapture capture;
    EXPECT_TRUE(file.read());
    EXPECT_FALSE(file.isLoaded());
    EXPECT_TRUE(capture.contains("Must load a stack first"));
}

} // namespace
} // namespace tirn
