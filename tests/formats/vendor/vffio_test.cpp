#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/vendor/vffio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;

const QByteArray kHeader = "ncaa\nrank=3;\ntype=raster;\nformat=slice;\nbits=8;\nbands=1;\nsize=4 3 5;\n"
                           "spacing=1.0 1.0 2.0;\nelementsize=0.5;\ntitle=a mouse;\n\f\n";

QByteArray with(const QByteArray& before, const QByteArray& after)
{
    return QByteArray(kHeader).replace(before, after);
}

/// x + 10 y + 50 z in bytes, or in big-endian words less 1000.
QByteArray voxels(int bits)
{
    QByteArray bytes;
    for (int z = 0; z < 5; ++z) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                const int value = x + 10 * y + 50 * z - (bits == 16 ? 1000 : 0);
                if (bits == 16)
                    bytes.append(static_cast<char>(value >> 8 & 0xff));
                bytes.append(static_cast<char>(value & 0xff));
            }
        }
    }
    return bytes;
}

std::vector<int> counting(const std::vector<int>& layers)
{
    std::vector<int> values;
    for (const int z : layers) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x)
                values.push_back(z < 0 ? 0 : x + 10 * y + 50 * z);
        }
    }
    return values;
}

class VffIoTest : public testing::Test
{
protected:
    QString save(const QByteArray& bytes) const { return test::saveBytes(path(), bytes); }
    QString path() const { return m_directory.filePath("a.vff"); }
    bool accepted(const QByteArray& header) const { return VffIO::isVff(save(header + voxels(8))); }

    QTemporaryDir m_directory;
};

TEST_F(VffIoTest, TheHeaderSaysWhatIsInTheFile)
{
    ImageFile file({save(kHeader + voxels(8))});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::Vff);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}), std::vector({4, 3, 5, 1, 8}));
    EXPECT_EQ(a.dimX, 0.5);
    EXPECT_EQ(a.dimY, 0.5);
    EXPECT_EQ(a.dimZ, 1.0);
    EXPECT_EQ(a.notes, (QStringList{"ncaa", "rank=3;", "bands=1;", "title=a mouse;"}));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), counting({0, 1, 2, 3, 4}));
}

TEST_F(VffIoTest, WordsAreMovedUpToStartAtZero)
{
    ImageFile file({save(with("bits=8", "bits=16") + voxels(16))});
    const LogCapture capture;
    ASSERT_TRUE(file.read());
    EXPECT_TRUE(capture.contains("minimum is 1000"));
    EXPECT_EQ(samples(file), counting({0, 1, 2, 3, 4}));
}

TEST_F(VffIoTest, WordsWithoutNegativeValuesStay)
{
    QByteArray bytes(4 * 3 * 5 * 2, '\0');
    bytes[1] = 7;
    bytes[3] = 9;
    ImageFile file({save(with("bits=8", "bits=16") + bytes)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(test::sample(file, 0, 0, 0), 7);
    EXPECT_EQ(test::sample(file, 1, 0, 0), 9);
}

TEST_F(VffIoTest, TheDataAreTheLastBytesOfTheFile)
{
    QByteArray longHeader = kHeader;
    longHeader += QByteArray(5000, '\x7f');
    ImageFile file({save(longHeader + voxels(8))});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), counting({0, 1, 2, 3, 4}));
}

TEST_F(VffIoTest, LayersKeepTheirPlacesWithZerosBetween)
{
    ImageFile file({save(kHeader + voxels(8))});
    VffIO reader(file, {path()});
    ASSERT_TRUE(reader.readLayers(1, 3, 2));
    EXPECT_EQ(file.attributes().z, 1) << "(last - first) / step";
    EXPECT_EQ(file.attributes().dimZ, 2.0);
    EXPECT_EQ(std::vector({file.firstLayer(), file.lastLayer(), file.layerStep()}), std::vector({1, 3, 2}));
    file.attributes().z = 5;
    EXPECT_EQ(samples(file), counting({-1, 1, -1, 3, -1}));
}

TEST_F(VffIoTest, AStepBelowOneCountsAsOne)
{
    ImageFile file({save(kHeader + voxels(8))});
    VffIO reader(file, {path()});
    ASSERT_TRUE(reader.readLayers(0, 4, -3));
    EXPECT_EQ(file.layerStep(), 1);
}

TEST_F(VffIoTest, TheProbeWantsSizesBitsAndGoodNumbers)
{
    EXPECT_TRUE(accepted(kHeader));
    EXPECT_FALSE(accepted(with("size=4 3 5;\n", "")));
    EXPECT_FALSE(accepted(with("size=4 3 5;", "rawsize=4 3 5;")));
    EXPECT_FALSE(accepted(with("size=4 3 5;", "size=4 3 0;")));
    EXPECT_FALSE(accepted(with("size=4 3 5;", "size=-4 3 5;")));
    EXPECT_FALSE(accepted(with("size=4 3 5;", "size=4 3;")));
    EXPECT_FALSE(accepted(with("bits=8;\n", "")));
    EXPECT_FALSE(accepted(with("bits=8;", "bits=x;")));
    EXPECT_FALSE(accepted(with("rank=3;", "rank=three;")));
    EXPECT_FALSE(accepted(with("bands=1;", "bands=;")));
    EXPECT_FALSE(accepted(with("raster", "vector")));
    EXPECT_FALSE(accepted(with("slice", "volume")));
    EXPECT_FALSE(accepted(with("elementsize=0.5", "elementsize=half")));
    EXPECT_FALSE(accepted(with("spacing=1.0 1.0 2.0;", "spacing=1.0 1.0 2.0"))) << "four parts";
    EXPECT_FALSE(accepted(with("spacing=1.0 1.0 2.0;", "spacing=1.0 1.0 0;")));
    EXPECT_FALSE(accepted(with("spacing=1.0 1.0 2.0;", "spacing=1.0 -1.0 1;")));
    EXPECT_TRUE(accepted(with("spacing=1.0 1.0 2.0;\n", "")));
    EXPECT_TRUE(accepted(with("\f", "\fsize=0 0 0;"))) << "behind the form feed there is no header";
}

TEST_F(VffIoTest, FurtherKeysAreNumbersAndNotes)
{
    for (const char* key :
         {"center_of_rotation", "central_slice", "rfan_y", "rfan_z", "angle_increment", "water", "boneHU"}) {
        const QByteArray line = QByteArray(key) + "=1.5;";
        EXPECT_TRUE(accepted(with("title=a mouse;", line))) << key;
        EXPECT_FALSE(accepted(with("title=a mouse;", QByteArray(key) + "=much;"))) << key;
        const ImageFile file({save(with("title=a mouse;", line) + voxels(8))});
        EXPECT_EQ(file.attributes().notes.last(), QString(line));
    }
    const ImageFile file({save(with("title=a mouse;", "reverse_order=NO;") + voxels(8))});
    EXPECT_EQ(file.attributes().notes.last(), "bands=1;") << "the order is passed by";
}

TEST_F(VffIoTest, WithoutSpacingAndElementSizeTheVoxelIsOne)
{
    QByteArray header = with("spacing=1.0 1.0 2.0;\n", "").replace("elementsize=0.5;\n", "");
    EXPECT_EQ(ImageFile({save(header + voxels(8))}).attributes().dimX, 1.0) << "-1 times -1";
    EXPECT_EQ(ImageFile({save(with("elementsize=0.5;\n", "") + voxels(8))}).attributes().dimZ, -2.0);
}

TEST_F(VffIoTest, StrangeTypesAndFormatsAreLoggedByTheReader)
{
    const LogCapture capture;
    ImageFile owner;
    const VffIO reader(owner, {save(with("raster", "vector").replace("slice", "volume") + voxels(8))});
    EXPECT_TRUE(capture.contains("strange type: vector"));
    EXPECT_TRUE(capture.contains("strange format: volume"));
    EXPECT_EQ(owner.attributes().type, ImageType::Vff);
}

TEST_F(VffIoTest, DatesAreParsed)
{
    const ImageFile file({save(with("title=a mouse;", "date=Thu May 6 07:08:09 2004;") + voxels(8))});
    EXPECT_EQ(file.attributes().timestamp, QDateTime(QDate(2004, 5, 6), QTime(7, 8, 9)));
}

TEST_F(VffIoTest, OtherDepthsAreRefusedAtRead)
{
    for (const int bits : {12, 32, 1}) {
        ImageFile file({save(with("bits=8", "bits=" + QByteArray::number(bits)) + voxels(16) + voxels(16))});
        EXPECT_EQ(file.attributes().type, ImageType::Vff);
        EXPECT_FALSE(file.read());
        EXPECT_EQ(file.errorList(), QStringList{QString("%1 bits per sample not supported").arg(bits)});
    }
}

TEST_F(VffIoTest, AFileShorterThanItsStackIsRefused)
{
    ImageFile file({save(with("size=4 3 5", "size=40 30 50") + voxels(8))});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"Invalid offset in file"});
    ImageFile huge({save(with("size=4 3 5", "size=2000000000 2000000000 2000000000") + voxels(8))});
    EXPECT_FALSE(huge.read());
    ImageFile gone({save(kHeader + voxels(8))});
    QFile::remove(path());
    EXPECT_FALSE(gone.read());
    EXPECT_EQ(gone.errorList(), QStringList{"Could not open vff file"});
}

TEST_F(VffIoTest, AFileCutAnywhereDoesNoHarm)
{
    const QByteArray bytes = kHeader + voxels(8);
    for (int cut = 0; cut < bytes.size(); ++cut) {
        ImageFile owner;
        VffIO reader(owner, {save(bytes.left(cut))});
        if (owner.attributes().type == ImageType::Vff)
            reader.readAll();
    }
}

} // namespace
} // namespace tirn
