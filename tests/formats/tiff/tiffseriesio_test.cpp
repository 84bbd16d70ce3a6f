#include <QDir>

#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/tiff/tiffseriesio.h"
#include "image/imagefile.h"
#include "support/foreigntiff.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;
using test::TiffFile;
using test::TiffPage;

class TiffSeriesIoTest : public testing::Test
{
protected:
    QString path(const QString& name = "a.tif") const { return m_directory.filePath(name); }

    /// One file a layer; layer z holds x + 10 y + 40 c + 100 z in as many bits as there are.
    QStringList saveLayers(int layers, TiffPage page, bool bigEndian = false)
    {
        QStringList names;
        for (int z = 0; z < layers; ++z) {
            page.value = [z](int x, int y, int c) { return x + 10 * y + 40 * c + 100 * z; };
            TiffFile file{{page}};
            file.bigEndian = bigEndian;
            names.append(file.save(path(QString("layer%1.tif").arg(z))));
        }
        return names;
    }

    QTemporaryDir m_directory;
};

TiffPage pageOf(int channels, int bits, int rowsPerStrip = 0)
{
    TiffPage page;
    page.channels = channels;
    page.bits = bits;
    page.rowsPerStrip = rowsPerStrip;
    return page;
}

std::vector<int> layerSamples(const std::vector<int>& layers, int channels, int bits)
{
    std::vector<int> values;
    for (const int z : layers) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                for (int c = 0; c < channels; ++c)
                    values.push_back((x + 10 * y + 40 * c + 100 * z) & ((1 << bits) - 1));
            }
        }
    }
    return values;
}

TEST_F(TiffSeriesIoTest, ASinglePageIsASeriesOfOneLayer)
{
    ImageFile file(saveLayers(1, pageOf(1, 8)));
    EXPECT_EQ(file.attributes().type, ImageType::TiffSeries);
    EXPECT_EQ(file.attributes().fileZ, 1);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), layerSamples({0}, 1, 8));
}

TEST_F(TiffSeriesIoTest, EveryDepthByteOrderAndStripHeightReads)
{
    for (const int bits : {8, 16}) {
        for (const int channels : {1, 2, 3, 4}) {
            for (const int rows : {0, 1, 2}) {
                for (const bool bigEndian : {false, true}) {
                    ImageFile file(saveLayers(5, pageOf(channels, bits, rows), bigEndian));
                    const ImageAttributes& a = file.attributes();
                    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
                              std::vector({4, 3, 5, channels, bits}));
                    ASSERT_TRUE(file.read());
                    EXPECT_EQ(samples(file), layerSamples({0, 1, 2, 3, 4}, channels, bits));
                }
            }
        }
    }
}

TEST_F(TiffSeriesIoTest, PlanesBecomeChannels)
{
    for (const int rows : {0, 2}) {
        TiffPage page = pageOf(3, 16, rows);
        page.planar = true;
        ImageFile file(saveLayers(3, page, true));
        ASSERT_TRUE(file.read());
        EXPECT_EQ(samples(file), layerSamples({0, 1, 2}, 3, 16));
    }
}

TEST_F(TiffSeriesIoTest, PlanesThatShareAStripAreRefused)
{
    TiffPage page = pageOf(2, 8);
    page.planar = true;
    page.fields = {{273, 4, {8}, {}}};
    ImageFile file(saveLayers(1, page));
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"The strips of the image do not fit its channels"});
}

TEST_F(TiffSeriesIoTest, NineToFifteenBitsInBigEndianWordsRead)
{
    for (const std::uint32_t bits : {9U, 12U, 15U}) {
        TiffPage page = pageOf(1, 16);
        page.fields = {{258, 3, {bits}, {}}};
        ImageFile file(saveLayers(2, page, true));
        ASSERT_TRUE(file.read());
        EXPECT_EQ(samples(file), layerSamples({0, 1}, 1, 16)) << bits;
    }
}

TEST_F(TiffSeriesIoTest, ARangeWithAStepStopsAfterCountLayersAndScalesZ)
{
    ImageFile file(saveLayers(8, pageOf(1, 16)));
    file.attributes().dimZ = 0.25;
    file.attributes().maxValue = 77;
    ASSERT_TRUE(file.read(1, 7, 3));
    EXPECT_EQ(samples(file), layerSamples({1, 4}, 1, 16));
    EXPECT_EQ(file.attributes().dimZ, 0.75);
}

TEST_F(TiffSeriesIoTest, SamplesPerPixelAbsentIsOneChannel)
{
    TiffPage page = pageOf(1, 8);
    page.without = {277};
    EXPECT_EQ(ImageFile(saveLayers(2, page)).attributes().channels, 1);
}

TEST_F(TiffSeriesIoTest, TwoDepthsAreTakenFromTheFieldOrFromWhereItPoints)
{
    const QStringList names = saveLayers(1, pageOf(2, 16));
    EXPECT_EQ(ImageFile(names).attributes().bitDepth, 16) << "other programs put both into the field";
    QByteArray bytes = test::fileContent(names[0]);
    const auto field = bytes.indexOf(QByteArray("\x10\0\x10\0", 4));
    ASSERT_GT(field, 0);
    const auto length = bytes.size();
    QByteArray pointer;
    for (int shift = 0; shift < 32; shift += 8)
        pointer.append(static_cast<char>(length >> shift & 0xff));
    bytes.replace(field, 4, pointer);
    test::saveBytes(names[0], bytes + QByteArray("\x10\0\x10\0", 4));
    EXPECT_EQ(ImageFile(names).attributes().bitDepth, 16) << "this program's writer puts an offset there";
}

TEST_F(TiffSeriesIoTest, FilesThatDifferEndInSilence)
{
    for (const int tag : {256, 257, 277}) {
        QStringList names = saveLayers(3, pageOf(1, 8));
        TiffPage page = pageOf(1, 8);
        page.fields = {{tag, 3, {2}, {}}};
        names[1] = TiffFile{{page}}.save(names[1]);
        const ImageFile file(names);
        EXPECT_EQ(file.attributes().type, ImageType::Unknown) << tag;
        EXPECT_TRUE(file.errorList().isEmpty());
    }
}

TEST_F(TiffSeriesIoTest, HeadersThatFailAreNamed)
{
    QStringList names = saveLayers(3, pageOf(1, 8));
    names[1] = path("missing.tif");
    ImageFile missing(names);
    EXPECT_EQ(missing.errorList(), QStringList{"Could not open " + path("missing.tif") + " read only"});
    names[1] = test::saveBytes(path("text.tif"), "no TIFF at all");
    EXPECT_EQ(ImageFile(names).errorList(), QStringList{"Failed to parse header"});
    const LogCapture capture;
    names[1] = test::saveBytes(path("magic.tif"), QByteArray("II+\0\x08\0\0\0", 8));
    EXPECT_EQ(ImageFile(names).errorList(), QStringList{"Failed to parse header"});
    EXPECT_TRUE(capture.contains("You do not know the answer to the great question.  Goodbye"));
    names[1] = test::saveBytes(path("empty.tif"), QByteArray());
    EXPECT_EQ(ImageFile(names).errorList(), QStringList{"Failed to parse header"});
}

TEST_F(TiffSeriesIoTest, ACompressedFileIsRefused)
{
    TiffPage page = pageOf(1, 8);
    page.fields = {{259, 3, {32773}, {}}};
    const ImageFile file(saveLayers(1, page));
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_EQ(file.errorList(), QStringList{"PACKBITS compression is not supported"});
}

TEST_F(TiffSeriesIoTest, AMissingDepthIsRefused)
{
    TiffPage page = pageOf(1, 8);
    page.without = {258};
    const ImageFile file(saveLayers(1, page));
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_EQ(file.errorList(), QStringList{"BitsPerSample is missing"});
}

TEST_F(TiffSeriesIoTest, OfAFileWithSeveralPagesTheFirstIsRead)
{
    QStringList names = saveLayers(2, pageOf(1, 8));
    TiffFile two{{test::plainPage(4, 3, 7), test::plainPage(4, 3, 9)}};
    names[1] = two.save(names[1]);
    ImageFile file(names);
    const LogCapture capture;
    ASSERT_TRUE(file.read());
    EXPECT_EQ(test::sample(file, 0, 0, 1), 7);
    EXPECT_TRUE(capture.contains("This file has more than 1 IFD, watch out"));
}

TEST_F(TiffSeriesIoTest, AFileThatEndsEarlyLeavesZerosAndAText)
{
    const QStringList names = saveLayers(3, pageOf(1, 16));
    TiffPage page = pageOf(1, 16);
    page.fields = {{273, 4, {1000000}, {}}};
    TiffFile{{page}}.save(names[1]);
    ImageFile file(names);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"file ends early: 2 of 3 layers"});
    EXPECT_EQ(test::sample(file, 3, 2, 0), 23);
    EXPECT_EQ(test::sample(file, 3, 2, 1), 0);
    EXPECT_EQ(test::sample(file, 3, 2, 2), 223);
}

TEST_F(TiffSeriesIoTest, SizesThatNoFileHoldsAreRefused)
{
    for (const std::uint32_t size : {0U, 60000U, 0x7fffffffU, 0xffffffffU}) {
        TiffPage page = pageOf(1, 16);
        page.fields = {{256, 4, {size}, {}}, {257, 4, {size}, {}}};
        ImageFile file(saveLayers(2, page));
        EXPECT_FALSE(file.read()) << size;
        EXPECT_FALSE(file.errorList().isEmpty());
    }
}

TEST_F(TiffSeriesIoTest, TiledFilesAreRefusedAtRead)
{
    TiffPage page = pageOf(1, 8);
    page.fields = {{322, 3, {16}, {}}, {324, 4, {8}, {}}};
    page.without = {273};
    ImageFile file(saveLayers(1, page));
    EXPECT_EQ(file.attributes().type, ImageType::TiffSeries);
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"Tiled images are not supported"});
}

TEST_F(TiffSeriesIoTest, AFileCutAnywhereDoesNoHarm)
{
    const QByteArray bytes = TiffFile{{pageOf(2, 16, 2)}}.bytes();
    for (int cut = 0; cut < bytes.size(); ++cut) {
        ImageFile owner;
        TiffSeriesIO reader(owner, {test::saveBytes(path(), bytes.left(cut))});
        if (owner.attributes().type == ImageType::TiffSeries)
            reader.readAll();
    }
}

TEST_F(TiffSeriesIoTest, AWrittenSeriesReadsBack)
{
    for (const int channels : {1, 2, 3, 4}) {
        for (const int bits : {8, 16}) {
            const auto stack = test::randomStack({13, 7, 3, channels, bits}, 5);
            ASSERT_TRUE(stack->write({path("s.tif")}, ImageType::TiffSeries));
            QStringList names;
            for (int z = 0; z < 3; ++z)
                names.append(path(QString("s_z%1.tif").arg(z, 4, 10, QChar('0'))));
            ImageFile file(names);
            EXPECT_EQ(file.attributes().type, ImageType::TiffSeries);
            EXPECT_EQ(file.attributes().channels, channels);
            ASSERT_TRUE(file.read());
            EXPECT_EQ(samples(file), samples(*stack));
            EXPECT_EQ(file.attributes().dimX, -1.0);
        }
    }
}

/// Other programs find this in a file: width, height, pages, channels, bits and the samples.
void expectReadElsewhere(const QString& name, const std::vector<int>& shape, const std::vector<int>& expected)
{
    const test::ForeignTiff foreign = test::readWithTifffile(name);
    EXPECT_EQ(std::vector({foreign.x, foreign.y, foreign.pages, foreign.channels, foreign.bits}), shape);
    EXPECT_EQ(foreign.samples, expected);
    QString output;
    const QString copy = name + ".copy.tif";
    EXPECT_TRUE(test::copyWithLibtiff(name, copy, &output)) << output.toStdString();
    EXPECT_EQ(test::readWithTifffile(copy).samples, expected);
    // 0.4 microns are 1/25000 centimetre.
    EXPECT_TRUE(test::tiffInfo(name).contains("Resolution: 25000, 25000 pixels/cm"));
}

TEST_F(TiffSeriesIoTest, OtherProgramsReadWhatIsWritten)
{
    ASSERT_TRUE(test::haveForeignTiff()) << "tiffcp and Python's tifffile are not installed";
    for (const int channels : {1, 3, 4}) {
        for (const int bits : {8, 16}) {
            // Rows of 13 to 104 bytes: one strip; and of more than 32 KB: a strip a row.
            for (const int x : {13, bits == 8 ? 40001 / channels : 20001 / channels}) {
                auto stack = test::randomStack({x, 7, 2, channels, bits}, 5);
                stack->attributes().dimX = stack->attributes().dimY = 0.4;
                ASSERT_TRUE(stack->write({path()}, ImageType::TiffSeries));
                const std::vector<int> all = samples(*stack);
                for (const int layer : {0, 1}) {
                    const QString name = path(QString("a_z000%1.tif").arg(layer));
                    const std::vector<int> expected(all.begin() + layer * x * 7 * channels,
                                                    all.begin() + (layer + 1) * x * 7 * channels);
                    expectReadElsewhere(name, {x, 7, 1, channels, bits}, expected);
                }
            }
        }
    }
}

TEST_F(TiffSeriesIoTest, A5000By5000ImageHasStripsOf13Rows)
{
    const auto stack = test::constantStack({5000, 5000, 1, 1, 8}, 3);
    const LogCapture capture;
    ASSERT_TRUE(stack->write({path()}, ImageType::TiffSeries));
    EXPECT_TRUE(capture.contains("rowSize 5000"));
    EXPECT_TRUE(capture.contains(" rowsperstrip 13"));
    EXPECT_TRUE(capture.contains(" strips 385"));
    EXPECT_TRUE(capture.contains(" leftover 8"));
    // 11 entries: 8 + 2 + 132 + 4 + 16, two tables of 385 offsets, the image.
    EXPECT_EQ(test::fileContent(path()).size(), 162 + 2 * 385 * 4 + 25000000);
}

std::uint32_t numberAt(const QByteArray& bytes, int at, int size)
{
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

TEST_F(TiffSeriesIoTest, TheLayoutOfAWrittenFileIsFixed)
{
    const auto stack = test::makeStack({3, 2, 1, 2, 16}, [](int x, int y, int, int c) { return x + y + c; });
    ASSERT_TRUE(stack->write({path()}, ImageType::TiffSeries));
    const QByteArray bytes = test::fileContent(path());
    EXPECT_EQ(bytes.left(8), QByteArray("II*\0\x08\0\0\0", 8));
    EXPECT_EQ(numberAt(bytes, 8, 2), 12U);
    const std::vector<std::vector<std::uint32_t>> expected = {
        {256, 4, 1, 3},  {257, 4, 1, 2},   {258, 3, 2, 174}, {259, 3, 1, 1},
        {262, 3, 1, 2},  {273, 4, 1, 178}, {277, 3, 1, 2},   {278, 4, 1, 2},
        {279, 4, 1, 24}, {282, 5, 1, 158}, {283, 5, 1, 166}, {296, 3, 1, 2}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const int at = static_cast<int>(10 + 12 * i);
        EXPECT_EQ((std::vector{numberAt(bytes, at, 2), numberAt(bytes, at + 2, 2), numberAt(bytes, at + 4, 4),
                               numberAt(bytes, at + 8, 4)}),
                  expected[i]);
    }
    EXPECT_EQ(numberAt(bytes, 154, 4), 0U);
    EXPECT_EQ((std::vector{numberAt(bytes, 158, 4), numberAt(bytes, 162, 4)}),
              (std::vector<std::uint32_t>{300, 1}));
    EXPECT_EQ((std::vector{numberAt(bytes, 174, 2), numberAt(bytes, 176, 2)}),
              (std::vector<std::uint32_t>{16, 16}));
    EXPECT_EQ(bytes.size(), 178 + 24);
}

TEST_F(TiffSeriesIoTest, FailuresOfTheWriterCountAsSuccess)
{
    const auto stack = test::constantStack({3, 2, 4, 1, 8}, 5);
    const auto write = [&](const QStringList& names, int first, int last, int step, bool overwrite = true) {
        return TiffSeriesIO::write(names, stack->attributes(), stack->stackData(), first, last, step,
                                   overwrite);
    };
    const LogCapture capture;
    EXPECT_TRUE(write({}, 0, 3, 1).isEmpty());
    EXPECT_TRUE(capture.contains("No filenames provided"));
    EXPECT_TRUE(write({path()}, 3, 2, 1).isEmpty());
    EXPECT_TRUE(write({path()}, 0, 3, 0).isEmpty());
    EXPECT_EQ(capture.count("No files to write"), 2);
    EXPECT_TRUE(write({path("a"), path("b")}, 0, 3, 1).isEmpty());
    EXPECT_TRUE(capture.contains("We have 2 names, we need 4"));
    EXPECT_TRUE(write({path("no/a.tif")}, 0, 3, 1).isEmpty());
    EXPECT_TRUE(capture.contains("Couldn't open " + path("no/a_z0000.tif") + " for writing"));
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST_F(TiffSeriesIoTest, AnExistingFirstFileIsReported)
{
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    test::saveBytes(path("s_z0000.tif"), "old");
    EXPECT_EQ(TiffSeriesIO::write({path("s")}, stack->attributes(), stack->stackData(), 0, 1, 1, false),
              QStringList{"File " + path("s_z0000.tif") + " exists"});
    EXPECT_EQ(test::fileContent(path("s_z0000.tif")), "old");
}

TEST_F(TiffSeriesIoTest, AnEndingInCapitalsIsAnEnding)
{
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    ASSERT_TRUE(stack->write({path("S.TIF")}, ImageType::TiffSeries));
    const auto layer = test::constantStack({3, 2, 1, 1, 8}, 5);
    ASSERT_TRUE(layer->write({path("ONE.TIF")}, ImageType::TiffSeries));
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files),
              (QStringList{"ONE.TIF", "S_z0000.tif", "S_z0001.tif"}));
}

TEST_F(TiffSeriesIoTest, VoxelSizesOfAllMagnitudesAreFractionsOfWholeNumbers)
{
    // Pixels per centimetre: 10000 divided by the size in microns.
    const std::pair<double, std::pair<std::uint32_t, std::uint32_t>> cases[] = {
        {0.2, {50000, 1}},     {0.1, {100000, 1}},     {0.16, {62500, 1}},           {0.13, {76923077, 1000}},
        {0.0625, {160000, 1}}, {0.001, {10000000, 1}}, {0.000002, {4294967295U, 1}}, {1e9, {1, 100000}},
        {10000, {1, 1}}};
    for (const auto& [microns, expected] : cases) {
        const auto stack = test::constantStack({3, 2, 1, 1, 8}, 5);
        stack->attributes().dimX = stack->attributes().dimY = microns;
        ASSERT_TRUE(stack->write({path()}, ImageType::TiffSeries));
        const QByteArray bytes = test::fileContent(path());
        // Behind 8 + 2 + 11 * 12 + 4 bytes.
        for (const int at : {146, 154})
            EXPECT_EQ(std::pair(numberAt(bytes, at, 4), numberAt(bytes, at + 4, 4)), expected) << microns;
    }
}

TEST_F(TiffSeriesIoTest, TheFirstNameGetsAnEnding)
{
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    ASSERT_TRUE(TiffSeriesIO::write({path("one"), path("two")}, stack->attributes(), stack->stackData(), 0, 1,
                                    1, true)
                    .isEmpty());
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), (QStringList{"one.tif", "two"}));
}

TEST_F(TiffSeriesIoTest, ARowOfMoreThan64KilobytesIsRefused)
{
    const auto wide = test::constantStack({65537, 1, 1, 1, 8}, 5);
    EXPECT_EQ(TiffSeriesIO::write({path()}, wide->attributes(), wide->stackData(), 0, 0, 1, true),
              QStringList{"A row of more than 64 KB does not fit a strip of a TIFF file"});
    ImageAttributes deep = wide->attributes();
    deep.x = 1;
    deep.bitDepth = 32;
    EXPECT_EQ(TiffSeriesIO::write({path()}, deep, wide->stackData(), 0, 0, 1, true),
              QStringList{"32 bits per sample not supported"});
    const auto fitting = test::constantStack({65536, 2, 1, 1, 8}, 5);
    EXPECT_TRUE(fitting->write({path()}, ImageType::TiffSeries));
}

} // namespace
} // namespace tirn
