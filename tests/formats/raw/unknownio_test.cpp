#include "formats/raw/unknownio.h"

#include <limits>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "image/imagefile.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::sample;
using test::samples;

class UnknownIo : public ::testing::Test
{
protected:
    QString numbered(int count)
    {
        QByteArray bytes;
        for (int i = 0; i < count; ++i)
            bytes.append(static_cast<char>(i));
        return test::saveBytes(m_folder.filePath(QStringLiteral("a.raw")), bytes);
    }
    QTemporaryDir m_folder;
};

TEST_F(UnknownIo, TheGeometryIsWhatTheCallerSays)
{
    const ImageFile stack({numbered(10)}, 2, 4, 3, 2, 2, 16);
    EXPECT_TRUE(stack.hasReader());
    EXPECT_EQ(stack.attributes().fileX, 4);
    EXPECT_EQ(stack.attributes().fileY, 3);
    EXPECT_EQ(stack.attributes().fileZ, 2);
    EXPECT_EQ(stack.attributes().x, 0);
    EXPECT_EQ(stack.attributes().channels, 2);
    EXPECT_EQ(stack.attributes().bitDepth, 16);
    EXPECT_EQ(stack.attributes().type, ImageType::Unknown);
}

TEST_F(UnknownIo, BytesAreTakenFromTheHeaderOffsetOn)
{
    ImageFile stack({numbered(130)}, 100, 3, 2, 2, 2, 8);
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(sample(stack, 0, 0, 0, 0), 100);
    EXPECT_EQ(sample(stack, 0, 0, 0, 1), 101);
    EXPECT_EQ(sample(stack, 2, 1, 1, 1), 123);
}

TEST_F(UnknownIo, WordsAreLittleEndian)
{
    ImageFile stack({numbered(20)}, 1, 3, 1, 2, 1, 16);
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(sample(stack, 0, 0, 0), 0x0201);
    EXPECT_EQ(sample(stack, 2, 0, 1), 0x0C0B);
}

TEST_F(UnknownIo, TheFirstLayerOfTheFileIsReadWhateverFirstSays)
{
    ImageFile stack({numbered(20)}, 0, 2, 2, 5, 1, 8);
    ASSERT_TRUE(stack.read(2, 3, 1));
    EXPECT_EQ(stack.attributes().z, 2);
    EXPECT_EQ(samples(stack), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    ASSERT_TRUE(stack.read(0, 4, 2));
    EXPECT_EQ(samples(stack), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(UnknownIo, TwelveBitsCountAsOneByteInTheFile)
{
    ImageFile stack({numbered(20)}, 0, 2, 2, 2, 1, 12);
    ASSERT_TRUE(stack.read());
    // Eight bytes fill the first half of the words; the rest is zero.
    EXPECT_EQ(samples(stack), (std::vector<int>{0x0100, 0x0302, 0x0504, 0x0706, 0, 0, 0, 0}));
}

void expectFailure(ImageFile& stack, const QString& text)
{
    EXPECT_FALSE(stack.read());
    EXPECT_EQ(stack.errorList(), QStringList{text});
    EXPECT_FALSE(stack.isLoaded());
}

TEST_F(UnknownIo, BadFilesAreRefusedWithTheirTexts)
{
    const QString missing = m_folder.filePath(QStringLiteral("missing"));
    ImageFile absent({missing}, 0, 2, 2, 2, 1, 8);
    expectFailure(absent, QLatin1String("Unable to open file: ") + missing);
    ImageFile folder({m_folder.path()}, 0, 2, 2, 2, 1, 8);
    expectFailure(folder, QLatin1String("Unable to open file: ") + m_folder.path());
    const QString name = numbered(8);
    ImageFile before({name}, -1, 2, 2, 2, 1, 8);
    expectFailure(before, QLatin1String("Unable to seek in file: ") + name);
    ImageFile tooLong({name}, 1, 2, 2, 2, 1, 8);
    expectFailure(tooLong, QLatin1String("Unable to read in file: ") + name);
    ImageFile behind({name}, std::numeric_limits<std::int64_t>::max(), 2, 2, 2, 1, 8);
    expectFailure(behind, QLatin1String("Unable to read in file: ") + name);
    ImageFile huge({name}, 0, 2000000000, 2000000000, 2000000000, 4, 16);
    expectFailure(huge, QLatin1String("Unable to read in file: ") + name);
    ImageFile negative({name}, 0, -2, 2, 2, 1, 8);
    expectFailure(negative, QLatin1String("Unable to read in file: ") + name);
}

TEST_F(UnknownIo, DepthsThatNoStackHasAreRefused)
{
    for (const int bits : {0, 4, 17, 32, -8}) {
        ImageFile stack({numbered(100)}, 0, 2, 2, 2, 1, bits);
        expectFailure(stack, QStringLiteral("%1 bits per sample not supported").arg(bits));
    }
}

TEST_F(UnknownIo, StepZeroIsRefused)
{
    ImageFile stack({numbered(8)}, 0, 2, 2, 2, 1, 8);
    EXPECT_FALSE(stack.read(0, 1, 0));
    EXPECT_EQ(stack.errorList(), QStringList{QStringLiteral("Illogical arguments to readLayers")});
}

TEST_F(UnknownIo, WithoutMemoryTheExceptionSaysForWhat)
{
    ImageFile stack({numbered(8)}, 0, 2, 2, 2, 1, 8);
    const test::NoVoxelMemory none;
    try {
        stack.read();
        FAIL() << "no exception";
    } catch (const std::bad_alloc& error) {
        EXPECT_STREQ(error.what(), "Could not allocate memory for Raw stack");
    }
}

TEST_F(UnknownIo, MyTypeIsAnyFileThatExists)
{
    ImageFile stack;
    EXPECT_TRUE(UnknownIO(stack, {numbered(1)}, 0, 1, 1, 1, 1, 8).isMyType());
    EXPECT_FALSE(UnknownIO(stack, {m_folder.filePath(QStringLiteral("no"))}, 0, 1, 1, 1, 1, 8).isMyType());
    EXPECT_FALSE(UnknownIO(stack, {}, 0, 1, 1, 1, 1, 8).isMyType());
}

class RawWriter : public UnknownIo
{
protected:
    QStringList write(const ImageFile& stack, bool overwrite = true) const
    {
        return UnknownIO::write({m_name}, stack.attributes(), stack.stackData(), 0, stack.attributes().z - 1,
                                1, overwrite);
    }
    QString m_name = m_folder.filePath(QStringLiteral("out.raw"));
};

TEST_F(RawWriter, WritesTheVoxelsAndNothingElse)
{
    const auto stack = test::makeStack({3, 1, 2, 1, 16}, [](int x, int, int z, int) { return 256 * x + z; });
    EXPECT_TRUE(write(*stack).isEmpty());
    EXPECT_EQ(test::fileContent(m_name), QByteArray("\0\0\0\1\0\2\1\0\1\1\1\2", 12));
}

TEST_F(RawWriter, HalfOfTwoChannelsIsWritten)
{
    const auto stack =
        test::makeStack({2, 2, 1, 2, 8}, [](int x, int y, int, int c) { return 4 * y + 2 * x + c; });
    EXPECT_TRUE(write(*stack).isEmpty());
    EXPECT_EQ(test::fileContent(m_name), QByteArray("\0\1\2\3", 4));
}

TEST_F(RawWriter, ABitCountThatFillsNoWholeByteRoundsDown)
{
    const auto stack = test::constantStack({3, 1, 1, 1, 12}, 0x101);
    EXPECT_TRUE(write(*stack).isEmpty());
    EXPECT_EQ(test::fileContent(m_name), QByteArray(4, '\1'));
}

TEST_F(RawWriter, AnExistingFileIsKeptUnlessOverwritten)
{
    const auto stack = test::constantStack({3, 1, 1, 1, 8}, 5);
    test::saveBytes(m_name, "longer than three");
    EXPECT_EQ(write(*stack, false), QStringList{QStringLiteral("File exists")});
    EXPECT_EQ(test::fileContent(m_name), QByteArray("longer than three"));
    EXPECT_TRUE(write(*stack).isEmpty());
    EXPECT_EQ(test::fileContent(m_name), QByteArray(3, '\5'));
}

TEST_F(RawWriter, WhatCannotBeOpenedOrWrittenIsNamed)
{
    const auto stack = test::constantStack({3, 1, 1, 1, 8}, 5);
    auto claiming = test::constantStack({3, 1, 1, 1, 8}, 5);
    claiming->attributes().bitDepth = 64;
    EXPECT_EQ(write(*claiming), QStringList{QLatin1String("Unable to write in file: ") + m_name})
        << "more bytes than the stack has";
    EXPECT_FALSE(QFileInfo::exists(m_name));
    m_name = m_folder.filePath(QStringLiteral("no/out"));
    EXPECT_EQ(write(*stack), QStringList{QLatin1String("Unable to open file: ") + m_name});
    if (QFileInfo::exists(QStringLiteral("/dev/full"))) {
        m_name = QStringLiteral("/dev/full");
        EXPECT_EQ(write(*stack), QStringList{QStringLiteral("Unable to write in file: /dev/full")});
    }
}

} // namespace
} // namespace tirn
