#include <cstring>

#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/vendor/imsubs.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;

/// A DeltaVision file, put together byte by byte.
struct DvFile
{
    std::uint32_t x = 4;
    std::uint32_t y = 3;
    std::uint32_t sections = 20;
    std::uint32_t mode = 1;
    std::uint16_t times = 1;
    std::uint16_t waves = 2;
    std::uint32_t extended = 128;
    std::uint16_t identification = 0xC0A0;
    float pixel[3] = {0.1F, 0.2F, 0.5F};
    bool bigEndian = true;

    QByteArray bytes() const
    {
        QByteArray all(1024, '\0');
        put(all, 0, x, 4);
        put(all, 4, y, 4);
        put(all, 8, sections, 4);
        put(all, 12, mode, 4);
        for (int i = 0; i < 3; ++i) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &pixel[i], 4);
            put(all, 40 + 4 * i, bits, 4);
        }
        put(all, 92, extended, 4);
        put(all, 96, identification, 2);
        put(all, 180, times, 2);
        put(all, 196, waves, 2);
        all += QByteArray(static_cast<int>(extended), '\x55');
        for (std::uint32_t image = 0; image < sections; ++image) {
            for (std::uint32_t i = 0; i < x * y; ++i) {
                QByteArray value(mode == 1 ? 2 : 1, '\0');
                put(value, 0, 100 * image + i, static_cast<int>(value.size()));
                all += value;
            }
        }
        return all;
    }

private:
    void put(QByteArray& bytes, int at, std::uint32_t value, int size) const
    {
        for (int i = 0; i < size; ++i)
            bytes[at + (bigEndian ? size - 1 - i : i)] = static_cast<char>(value >> (8 * i) & 0xff);
    }
};

class ImSubsTest : public testing::Test
{
protected:
    QString save(const QByteArray& bytes) const { return test::saveBytes(path(), bytes); }
    QString path() const { return m_directory.filePath("a.r3d"); }

    QTemporaryDir m_directory;
};

/// Samples of `layers` layers from the first on: image 2 z + c holds 100 images + i.
std::vector<int> sectionSamples(int layers, int mask = 0xffff)
{
    std::vector<int> values;
    for (int z = 0; z < layers; ++z) {
        for (int i = 0; i < 12; ++i) {
            for (int c = 0; c < 2; ++c)
                values.push_back((100 * (2 * z + c) + i) & mask);
        }
    }
    return values;
}

TEST_F(ImSubsTest, TheWavelengthsOfASectionFollowOneAnother)
{
    ImageFile file({save(DvFile().bytes())});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::DeltaVision);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
              std::vector({4, 3, 10, 2, 16}));
    EXPECT_FLOAT_EQ(static_cast<float>(a.dimX), 0.1F);
    EXPECT_FLOAT_EQ(static_cast<float>(a.dimY), 0.2F);
    EXPECT_EQ(a.dimZ, 0.5);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), sectionSamples(10));
}

TEST_F(ImSubsTest, BytesRead)
{
    DvFile dv;
    dv.mode = 0;
    ImageFile file({save(dv.bytes())});
    EXPECT_EQ(file.attributes().bitDepth, 8);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), sectionSamples(10, 0xff));
}

TEST_F(ImSubsTest, ReadingStartsAtTheFirstImageWhateverIsAsked)
{
    ImageFile file({save(DvFile().bytes())});
    ASSERT_TRUE(file.read(4, 9, 2));
    EXPECT_EQ(samples(file), sectionSamples(3));
    EXPECT_EQ(file.attributes().dimZ, 1.0);
}

TEST_F(ImSubsTest, TimePointsDivideTheSections)
{
    DvFile dv;
    dv.times = 5;
    EXPECT_EQ(ImageFile({save(dv.bytes())}).attributes().fileZ, 2);
}

TEST_F(ImSubsTest, ALittleEndianFileIsNotOne)
{
    DvFile dv;
    dv.bigEndian = false;
    EXPECT_FALSE(IMSubs::isDeltaVision(save(dv.bytes())));
}

TEST_F(ImSubsTest, ModesOfMoreThanTwoBytesPassTheProbeOnly)
{
    for (const std::uint32_t mode : {2U, 3U, 4U}) {
        DvFile dv;
        dv.mode = mode;
        const LogCapture capture;
        EXPECT_TRUE(IMSubs::isDeltaVision(save(dv.bytes())));
        const ImageFile file({path()});
        EXPECT_EQ(file.attributes().type, ImageType::Unknown);
        EXPECT_EQ(file.attributes().bitDepth, mode == 4 ? 64 : 32);
        EXPECT_EQ(capture.contains("4-byte floating-point (IEEE)"), mode == 2);
        EXPECT_EQ(capture.contains("4-byte complexValue as 2 2-byte signed integers"), mode == 3);
        EXPECT_EQ(capture.contains("//8-byte complex value as 2 4-byte floating-point values"), mode == 4);
    }
    DvFile dv;
    dv.mode = 5;
    EXPECT_FALSE(IMSubs::isDeltaVision(save(dv.bytes())));
}

TEST_F(ImSubsTest, SizesOfZeroAreRefused)
{
    for (const int field : {0, 1, 2, 3, 4}) {
        DvFile dv;
        std::uint32_t* const longs[] = {&dv.x, &dv.y, &dv.sections};
        std::uint16_t* const shorts[] = {&dv.times, &dv.waves};
        (field < 3 ? *longs[field] = 0 : *shorts[field - 3] = 0);
        EXPECT_FALSE(IMSubs::isDeltaVision(save(dv.bytes()))) << field;
        ImageFile owner;
        const IMSubs reader(owner, {path()});
        EXPECT_EQ(owner.attributes().type, ImageType::Unknown);
    }
}

TEST_F(ImSubsTest, AnotherIdentificationIsPrintedAndPasses)
{
    DvFile dv;
    dv.identification = 7;
    const LogCapture capture;
    EXPECT_EQ(ImageFile({save(dv.bytes())}).attributes().type, ImageType::DeltaVision);
    EXPECT_TRUE(capture.contains("ID: 7"));
}

TEST_F(ImSubsTest, IllogicalArgumentsAreRefused)
{
    ImageFile file({save(DvFile().bytes())});
    IMSubs reader(file, {path()});
    for (const auto& [first, last, step] :
         {std::tuple{0, 3, 0}, std::tuple{-1, 3, 1}, std::tuple{0, -1, 1}, std::tuple{2, 1, 1}}) {
        file.errorList().clear();
        EXPECT_FALSE(reader.readLayers(first, last, step));
        EXPECT_EQ(file.errorList(), QStringList{"Illogical arguments to readLayers"});
    }
}

TEST_F(ImSubsTest, AFileThatEndsEarlyLeavesZerosAndAText)
{
    const QByteArray bytes = DvFile().bytes();
    ImageFile file({save(bytes.left(bytes.size() - 30))});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"file ends early: 9 of 10 layers"});
    std::vector<int> expected = sectionSamples(10);
    // 15 samples are missing: the last 12 of channel 1, the last 3 of channel 0.
    for (std::size_t i = 0; i < 12; ++i)
        expected[expected.size() - 1 - 2 * i] = 0;
    for (std::size_t i = 0; i < 3; ++i)
        expected[expected.size() - 2 - 2 * i] = 0;
    EXPECT_EQ(samples(file), expected);
}

TEST_F(ImSubsTest, SizesThatNoFileHoldsAreRefused)
{
    for (const std::uint32_t size : {60000U, 0x7fffffffU, 0xffffffffU}) {
        QByteArray bytes = DvFile().bytes();
        for (int i = 0; i < 8; ++i)
            bytes[i] = static_cast<char>(size >> (8 * (3 - i % 4)) & 0xff);
        ImageFile file({save(bytes)});
        EXPECT_FALSE(file.read());
        EXPECT_FALSE(file.errorList().isEmpty());
    }
    DvFile far;
    QByteArray bytes = far.bytes();
    bytes.replace(92, 4, "\xff\xff\xff\xff");
    ImageFile file({save(bytes)});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"file ends early: 0 of 10 layers"});
}

TEST_F(ImSubsTest, AFileCutAnywhereDoesNoHarm)
{
    const QByteArray bytes = DvFile().bytes();
    for (int cut = 0; cut < bytes.size(); cut += 3) {
        ImageFile owner;
        IMSubs reader(owner, {save(bytes.left(cut))});
        EXPECT_EQ(owner.attributes().type == ImageType::DeltaVision, cut >= 1024);
        if (owner.attributes().type == ImageType::DeltaVision)
            reader.readAll();
    }
}

} // namespace
} // namespace tirn
