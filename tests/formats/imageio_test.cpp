#include "formats/imageio.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "formats/imageformats.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::PicFile;

ImageAttributes attributesOf(int x, int y, int z, int channels, int bitDepth)
{
    ImageAttributes a;
    a.x = x;
    a.y = y;
    a.z = z;
    a.channels = channels;
    a.bitDepth = bitDepth;
    return a;
}

std::vector<std::byte> bytes(std::initializer_list<int> values)
{
    std::vector<std::byte> result;
    for (const int value : values)
        result.push_back(static_cast<std::byte>(value));
    return result;
}

/// What mergeChannels makes of two channels; one byte too many shows how far it went.
std::vector<std::byte> merged(const std::vector<std::byte>& first, const std::vector<std::byte>& second,
                              const ImageAttributes& attributes)
{
    std::vector<std::byte> result(first.size() + second.size() + 1, std::byte{99});
    const std::byte* channels[] = {first.data(), second.data()};
    ImageIO::mergeChannels(channels, result.data(), attributes);
    return result;
}

TEST(MergeChannels, AlternatesBytesAtDepthEight)
{
    LogCapture log;
    EXPECT_EQ(merged(bytes({1, 2, 3, 4}), bytes({5, 6, 7, 8}), attributesOf(2, 2, 1, 2, 8)),
              bytes({1, 5, 2, 6, 3, 7, 4, 8, 99}));
    EXPECT_TRUE(log.contains(QStringLiteral("Merging channels 8 bit")));
    EXPECT_TRUE(log.contains(QStringLiteral("Done Merging")));
    EXPECT_EQ(log.lines().filter(QStringLiteral("merging channels elapsed ")).size(), 1);
}

TEST(MergeChannels, AlternatesWordsAtAnyOtherDepthUpToSixteen)
{
    for (const int depth : {9, 12, 16}) {
        LogCapture log;
        EXPECT_EQ(merged(bytes({1, 2, 3, 4}), bytes({5, 6, 7, 8}), attributesOf(2, 1, 1, 2, depth)),
                  bytes({1, 2, 5, 6, 3, 4, 7, 8, 99}));
        EXPECT_TRUE(log.contains(QStringLiteral("Merging channels 16 bit ch")));
    }
}

TEST(MergeChannels, DoesNothingAboveSixteenBits)
{
    EXPECT_EQ(merged(bytes({1}), bytes({5}), attributesOf(1, 1, 1, 2, 17)), bytes({99, 99, 99}));
}

std::vector<std::byte> secondChannel(const std::vector<std::byte>& source, const ImageAttributes& attributes)
{
    std::vector<std::byte> first(source.size() / 2, std::byte{99});
    std::vector<std::byte> second = first;
    std::byte* channels[] = {first.data(), second.data()};
    ImageIO::separateChannels(source.data(), channels, attributes);
    return second;
}

TEST(SeparateChannels, TakesBytesAndWordsApart)
{
    LogCapture log;
    EXPECT_EQ(secondChannel(bytes({1, 5, 2, 6}), attributesOf(2, 1, 1, 2, 8)), bytes({5, 6}));
    EXPECT_EQ(secondChannel(bytes({1, 2, 5, 6, 3, 4, 7, 8}), attributesOf(2, 1, 1, 2, 16)),
              bytes({5, 6, 7, 8}));
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("Separate channels 8 bit"), QStringLiteral("Done Separating 8 bit"),
                           QStringLiteral("Separate channels 16 bit")}));
}

TEST(SeparateChannels, LeavesTheBuffersOfTwelveBitsAlone)
{
    EXPECT_EQ(secondChannel(bytes({1, 2, 5, 6}), attributesOf(1, 1, 1, 2, 12)), bytes({99, 99}));
}

TEST(SwapEndian, ReversesPairsAndSaysSo)
{
    std::vector<std::byte> words = bytes({1, 2, 3, 4});
    LogCapture log;
    ImageIO::swapEndian(words.data(), 2, 2);
    EXPECT_EQ(words, bytes({2, 1, 4, 3}));
    EXPECT_TRUE(log.lines().first().startsWith(QStringLiteral("enter swapEndian (len = 2")));
    EXPECT_TRUE(log.lines().last().startsWith(QStringLiteral("exit swapEndian (len = 2")));
}

TEST(ImageIo, TheBaseKnowsNoFormat)
{
    ImageFile stack;
    ImageIO io(stack, {QStringLiteral("/some/where/a.b"), QStringLiteral("/c")});
    EXPECT_FALSE(io.isMyType());
    EXPECT_FALSE(io.readLayers(0, 0, 1));
    EXPECT_FALSE(io.readAll());
    EXPECT_EQ(io.readAttributes().type, ImageType::Unknown);
    EXPECT_EQ(io.filterNames({QStringLiteral("x")}), QStringList{QStringLiteral("x")});
    EXPECT_EQ(io.fileNames(), (QStringList{QStringLiteral("a.b"), QStringLiteral("c")}));
    EXPECT_EQ(io.filePaths(), (QStringList{QStringLiteral("/some/where/a.b"), QStringLiteral("/c")}));
    EXPECT_EQ(io.fileCount(), 2);
    EXPECT_TRUE(stack.errorList().isEmpty());
}

TEST(ImageIo, AFileExistsOrNot)
{
    const QTemporaryDir folder;
    const QString name = test::saveBytes(folder.filePath(QStringLiteral("a")), "x");
    EXPECT_TRUE(ImageIO::exists(name));
    EXPECT_FALSE(ImageIO::exists(name + QStringLiteral("b")));
    EXPECT_FALSE(ImageIO::exists(QString()));
}

void expectUnclaimed(const QStringList& names)
{
    LogCapture log;
    ImageFile stack(names);
    EXPECT_EQ(stack.errorList(), QStringList{QStringLiteral("Could not allocate ImageIO object")});
    EXPECT_FALSE(stack.hasReader());
    EXPECT_FALSE(stack.read());
    EXPECT_EQ(stack.attributes().type, ImageType::Unknown);
    EXPECT_TRUE(log.contains(QStringLiteral("AHH I don't know what this is ") + names.value(0)));
}

TEST(Detection, WhatNoFormatClaimsHasNoReader)
{
    const QTemporaryDir folder;
    expectUnclaimed({test::saveBytes(folder.filePath(QStringLiteral("a.txt")), "just some text")});
    expectUnclaimed({test::saveBytes(folder.filePath(QStringLiteral("empty.pic")), "")});
    expectUnclaimed({folder.filePath(QStringLiteral("missing.pic"))});
    expectUnclaimed({folder.path()});
    expectUnclaimed({});
}

TEST(Detection, ABioRadFileIsToldByItsSignature)
{
    const QTemporaryDir folder;
    LogCapture log;
    const QString name = PicFile{}.save(folder.filePath(QStringLiteral("whatever.tif")));
    EXPECT_EQ(ImageIO::probeType(name), ImageType::BioRad);
    const ImageFile stack(QStringList{name});
    EXPECT_TRUE(stack.hasReader());
    EXPECT_EQ(stack.attributes().type, ImageType::BioRad);
    EXPECT_TRUE(log.contains(QStringLiteral("I think it is a Biorad")));
}

TEST(Detection, ABioRadFileCutByOneByteIsUnknown)
{
    const QTemporaryDir folder;
    for (const int bits : {8, 16}) {
        const PicFile pic{.bits = bits};
        const int size = pic.bytes().size();
        EXPECT_EQ(ImageIO::probeType(pic.save(folder.filePath(QStringLiteral("a.pic")), size)),
                  ImageType::BioRad);
        EXPECT_EQ(ImageIO::probeType(pic.save(folder.filePath(QStringLiteral("a.pic")), size - 1)),
                  ImageType::Unknown);
        expectUnclaimed({folder.filePath(QStringLiteral("a.pic"))});
    }
}

TEST(Detection, EveryRowWithAReaderHasAGuessAndAProbe)
{
    for (const ImageFormat& format : imageFormats()) {
        EXPECT_EQ(format.create != nullptr, format.probe != nullptr);
        EXPECT_EQ(format.create != nullptr, format.guessText != nullptr);
        EXPECT_EQ(imageFormat(format.type).type, format.type);
    }
    EXPECT_EQ(imageFormat(static_cast<ImageType>(12)).type, ImageType::Unknown);
}

} // namespace
} // namespace tirn
