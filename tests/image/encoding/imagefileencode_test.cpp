#include <gtest/gtest.h>

#include "image/encoding/texturesink.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

#include <QTemporaryDir>

namespace tirn {
namespace {

using test::LogCapture;
using test::makeStack;
using test::sample;

constexpr int kTexture2D = 3553;
constexpr int kTexture3D = 32879;
constexpr int kRectangle = 34037;
constexpr int kLuminance8 = 32832;
constexpr int kLuminance16 = 32834;
constexpr int kHilo16 = 34552;

struct Texture
{
    char kind;
    int format;
    int width;
    int height;
    int depth;
    std::vector<int> texels;

    int at(int column, int row, int layer = 0) const
    {
        return texels[static_cast<std::size_t>((layer * height + row) * width + column)];
    }
};

/// Keeps what it is given.
class RecordingSink : public TextureSink
{
public:
    explicit RecordingSink(int components = 1, bool words = false) : m_components(components), m_words(words)
    {}

    unsigned makeTexture2D(int format, int width, int height, const void* texels) override
    {
        return keep('2', format, width, height, 1, texels);
    }
    unsigned makeTextureRectangle(int format, int width, int height, const void* texels) override
    {
        return keep('r', format, width, height, 1, texels);
    }
    unsigned makeTexture3D(int format, int width, int height, int depth, const void* texels) override
    {
        return keep('3', format, width, height, depth, texels);
    }

    std::vector<Texture> made;

private:
    unsigned keep(char kind, int format, int width, int height, int depth, const void* texels)
    {
        Texture texture{kind, format, width * m_components, height, depth, {}};
        const std::size_t count = static_cast<std::size_t>(texture.width) * static_cast<std::size_t>(height) *
                                  static_cast<std::size_t>(depth);
        for (std::size_t i = 0; i < count; ++i)
            texture.texels.push_back(m_words ? static_cast<const std::uint16_t*>(texels)[i]
                                             : static_cast<const std::uint8_t*>(texels)[i]);
        made.push_back(texture);
        return static_cast<unsigned>(100 + made.size());
    }

    int m_components;
    bool m_words;
};

int coded(int x, int y, int z, int c) { return 1 + x + 5 * y + 30 * z + 100 * c; }

TEST(ImageFileEncode, PlanesComeAcrossYThenAcrossXBackwardsThenAcrossZ)
{
    const auto stack = makeStack({5, 6, 3, 2, 8}, coded);
    RecordingSink sink;
    const std::vector<unsigned> names = stack->encode(kTexture2D, kLuminance8, sink);
    ASSERT_EQ(sink.made.size(), 2U * (6 + 5 + 3));
    EXPECT_EQ(names.size(), sink.made.size());
    EXPECT_EQ(names.front(), 101U);
    // Padded to 8 x 8 x 4: one column left, one row above, no layer in front.
    const Texture& acrossY = sink.made[2];
    EXPECT_EQ(acrossY.kind, '2');
    EXPECT_EQ(acrossY.width, 8);
    EXPECT_EQ(acrossY.height, 4);
    EXPECT_EQ(acrossY.at(1, 0), coded(0, 2, 0, 0));
    EXPECT_EQ(acrossY.at(5, 2), coded(4, 2, 2, 0));
    EXPECT_EQ(acrossY.at(0, 0), 0);
    EXPECT_EQ(acrossY.at(6, 1), 0);
    EXPECT_EQ(acrossY.at(3, 3), 0);
    const Texture& acrossX = sink.made[6];
    EXPECT_EQ(acrossX.width, 4);
    EXPECT_EQ(acrossX.height, 8);
    EXPECT_EQ(acrossX.at(0, 6), coded(4, 0, 0, 0));
    EXPECT_EQ(acrossX.at(2, 1), coded(4, 5, 2, 0));
    EXPECT_EQ(acrossX.at(0, 7), 0);
    EXPECT_EQ(acrossX.at(0, 0), 0);
    EXPECT_EQ(acrossX.at(3, 4), 0);
    const Texture& acrossZ = sink.made[11 + 1];
    EXPECT_EQ(acrossZ.width, 8);
    EXPECT_EQ(acrossZ.height, 8);
    EXPECT_EQ(acrossZ.at(1, 6), coded(0, 0, 1, 0));
    EXPECT_EQ(acrossZ.at(5, 1), coded(4, 5, 1, 0));
    EXPECT_EQ(acrossZ.at(0, 3), 0);
    // The second channel follows with the same order.
    EXPECT_EQ(sink.made[14].at(1, 0), coded(0, 0, 0, 1));
}

TEST(ImageFileEncode, AVolumeHasItsRowsFromTheBottomUp)
{
    const auto stack = makeStack({5, 6, 3, 2, 8}, coded);
    RecordingSink sink;
    LogCapture log;
    stack->encode(kTexture3D, kLuminance8, sink);
    ASSERT_EQ(sink.made.size(), 2U);
    const Texture& volume = sink.made[1];
    EXPECT_EQ(volume.kind, '3');
    EXPECT_EQ(volume.width, 8);
    EXPECT_EQ(volume.height, 8);
    EXPECT_EQ(volume.depth, 4);
    EXPECT_EQ(volume.at(1, 6, 0), coded(0, 0, 0, 1));
    EXPECT_EQ(volume.at(5, 1, 2), coded(4, 5, 2, 1));
    EXPECT_EQ(volume.at(0, 3, 1), 0);
    EXPECT_EQ(volume.at(3, 7, 1), 0);
    EXPECT_EQ(volume.at(3, 3, 3), 0);
    EXPECT_TRUE(log.contains(QStringLiteral("Done encoding 8bit 3D")));
}

TEST(ImageFileEncode, TheRectangularEncoderDoesNotPad)
{
    const auto stack = makeStack({5, 6, 3, 1, 8}, coded);
    RecordingSink sink;
    LogCapture log;
    stack->encode(kRectangle, 32997, sink);
    ASSERT_EQ(sink.made.size(), 14U);
    const Texture& acrossZ = sink.made[11];
    EXPECT_EQ(acrossZ.kind, 'r');
    EXPECT_EQ(acrossZ.format, kLuminance8);
    EXPECT_EQ(acrossZ.width, 5);
    EXPECT_EQ(acrossZ.height, 6);
    EXPECT_EQ(acrossZ.at(0, 5), coded(0, 0, 0, 0));
    EXPECT_EQ(sink.made[6].at(2, 0), coded(4, 5, 2, 0));
    EXPECT_TRUE(log.contains(QStringLiteral("Done encoding 8bit 2D rectangular")));
}

TEST(ImageFileEncode, WordsTakeRowZeroForTheRowBehindTheLast)
{
    const auto stack =
        makeStack({5, 6, 3, 1, 16}, [](int x, int y, int z, int c) { return 300 * coded(x, y, z, c); });
    RecordingSink sink(1, true);
    LogCapture log;
    stack->encode(kTexture2D, kLuminance16, sink);
    // Across z: the padded row 7 (texture row 0) is behind the stack's rows 1 to 6.
    const Texture& acrossZ = sink.made[11];
    EXPECT_EQ(acrossZ.at(1, 0), 300 * coded(0, 0, 0, 0));
    EXPECT_EQ(acrossZ.at(1, 6), 300 * coded(0, 0, 0, 0));
    EXPECT_EQ(acrossZ.at(1, 1), 300 * coded(0, 5, 0, 0));
    EXPECT_EQ(acrossZ.at(1, 7), 0);
    EXPECT_EQ(acrossZ.at(0, 0), 0);
    // Across x the first row is outside as well.
    const Texture& acrossX = sink.made[6];
    EXPECT_EQ(acrossX.at(0, 0), 300 * coded(4, 0, 0, 0));
    EXPECT_EQ(acrossX.at(0, 6), 0);
    EXPECT_EQ(acrossX.at(0, 5), 300 * coded(4, 1, 0, 0));
    EXPECT_TRUE(log.contains(QStringLiteral("Y out of bounds Y 6 Ymax 5")));
    EXPECT_TRUE(log.contains(QStringLiteral("made it though zx")));
    EXPECT_TRUE(log.contains(QStringLiteral("made it though yz")));
    EXPECT_TRUE(log.contains(QStringLiteral("made it though xy")));
}

TEST(ImageFileEncode, WordsWithoutPaddingLoseTheirFirstRowAcrossX)
{
    const auto stack = makeStack({4, 4, 4, 1, 16}, coded);
    RecordingSink sink(1, true);
    stack->encode(kTexture2D, kLuminance16, sink);
    EXPECT_EQ(sink.made[4].at(0, 3), 0);
    EXPECT_EQ(sink.made[4].at(0, 2), coded(3, 1, 0, 0));
    EXPECT_EQ(sink.made[8].at(0, 3), coded(0, 0, 0, 0));
}

TEST(ImageFileEncode, TheTwoComponentFormatPairsEachSampleWithZero)
{
    const auto stack = makeStack({2, 2, 2, 1, 16}, coded);
    RecordingSink sink(2, true);
    stack->encode(kTexture3D, kHilo16, sink);
    ASSERT_EQ(sink.made.size(), 1U);
    EXPECT_EQ(sink.made[0].texels[0], coded(0, 1, 0, 0));
    EXPECT_EQ(sink.made[0].texels[1], 0);
    EXPECT_EQ(sink.made[0].texels[2], coded(1, 1, 0, 0));
}

TEST(ImageFileEncode, EncodingIsDoneOnceUntilAskedAgain)
{
    const auto stack = makeStack({2, 2, 2, 1, 8}, coded);
    RecordingSink sink;
    const auto first = stack->encode(kTexture3D, kLuminance8, sink);
    EXPECT_EQ(stack->encode(kTexture3D, kLuminance8, sink), first);
    EXPECT_EQ(sink.made.size(), 1U);
    EXPECT_EQ(stack->reEncode(kTexture3D, kLuminance8, sink), std::vector<unsigned>{102});
    EXPECT_EQ(stack->textureList(), std::vector<unsigned>{102});
}

TEST(ImageFileEncode, AnUnreadFileIsReadFirst)
{
    const QTemporaryDir folder;
    ImageFile stack(QStringList{test::PicFile{}.save(folder.filePath(QStringLiteral("a.pic")))});
    RecordingSink sink;
    LogCapture log;
    EXPECT_EQ(stack.encode(kTexture3D, kLuminance8, sink).size(), 1U);
    EXPECT_TRUE(log.contains(QStringLiteral("You forgot to read the file, so I'm reading it now!")));
}

TEST(ImageFileEncode, WhatCannotBeEncodedGivesNoTextures)
{
    RecordingSink sink;
    LogCapture log;
    ImageFile empty;
    EXPECT_TRUE(empty.encode(kTexture2D, kLuminance8, sink).empty());
    EXPECT_TRUE(log.contains(QStringLiteral("Error: BioradFile dimensions not valid or stack not read.")));
    const auto shallow = makeStack({2, 2, 2, 1, 4}, coded);
    EXPECT_TRUE(shallow->encode(kTexture2D, kLuminance8, sink).empty());
    EXPECT_TRUE(log.contains(QStringLiteral("Error: ImageFile does not know how to encode 4 bits.")));
    EXPECT_TRUE(sink.made.empty());
}

} // namespace
} // namespace tirn
