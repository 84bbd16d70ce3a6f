#include "image/imagefile.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::makeStack;
using test::PicFile;
using test::sample;
using test::samples;

int coded(int x, int y, int z, int c) { return x + 10 * y + 40 * z + 120 * c; }

TEST(ImageFile, StartsEmpty)
{
    ImageFile stack;
    EXPECT_FALSE(stack.isLoaded());
    EXPECT_FALSE(stack.hasReader());
    EXPECT_EQ(stack.firstLayer(), -1);
    EXPECT_EQ(stack.lastLayer(), -1);
    EXPECT_EQ(stack.layerStep(), -1);
    EXPECT_EQ(stack.fileName(), QStringLiteral("none"));
    EXPECT_EQ(stack.fileNames(), QStringList{QStringLiteral("none")});
    EXPECT_FALSE(stack.read());
}

TEST(ImageFile, AStackInMemoryHasTheSameFileSize)
{
    const ImageFile stack(4, 3, 2, 2, 12);
    EXPECT_TRUE(stack.isLoaded());
    EXPECT_EQ(stack.attributes().x, 4);
    EXPECT_EQ(stack.attributes().fileX, 4);
    EXPECT_EQ(stack.attributes().fileY, 3);
    EXPECT_EQ(stack.attributes().fileZ, 2);
    EXPECT_EQ(stack.sampleCount(), 48);
}

TEST(ImageFile, AStackWithoutRoomIsRefusedWithItsText)
{
    const test::NoVoxelMemory none;
    try {
        const ImageFile stack(4, 3, 2, 1, 8);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), "Failed to allocate memory for the stack");
    }
}

TEST(ImageFile, ASizeThatCannotBeCountedIsRefused)
{
    EXPECT_THROW(ImageFile(2000000000, 2000000000, 2000000000, 4, 16), std::bad_alloc);
    EXPECT_THROW(ImageFile(-1, 3, 2, 1, 8), std::bad_alloc);
}

TEST(ImageFile, TheIndexRunsOverChannelsFirstThenXThenYThenZ)
{
    const ImageFile stack(4, 3, 2, 2, 8);
    EXPECT_EQ(stack.index(0, 0, 0, 1), 1);
    EXPECT_EQ(stack.index(1, 0, 0, 0), 2);
    EXPECT_EQ(stack.index(0, 1, 0, 0), 8);
    EXPECT_EQ(stack.index(3, 2, 1, 1), 47);
}

TEST(ImageFile, TheClampedAccessorsStayInside)
{
    const auto bytes = makeStack({4, 3, 2, 2, 8}, coded);
    EXPECT_EQ(*bytes->voxel8(-5, 10000, 0, 0), coded(0, 2, 0, 0));
    EXPECT_EQ(*bytes->voxel8(99, -1, 99, 1), coded(3, 0, 1, 1));
    const auto words =
        makeStack({4, 3, 2, 2, 16}, [](int x, int y, int z, int c) { return 300 * coded(x, y, z, c); });
    EXPECT_EQ(*words->voxel16(-5, 10000, 0, 0), 300 * coded(0, 2, 0, 0));
    EXPECT_EQ(words->voxelValue(3, 1, 99, 1), static_cast<std::uint16_t>(300 * coded(3, 1, 1, 1)));
    EXPECT_EQ(bytes->voxelValue(3, 1, 1, 1), coded(3, 1, 1, 1) & 0xFF);
    EXPECT_EQ(bytes->voxel(2, 1, 1), coded(2, 1, 1, 0));
    EXPECT_EQ(bytes->voxelValue(0, 0, 0, 2), 0);
}

TEST(ImageFile, TheCheckedAccessorsReportAndTakeTheFirstVoxel)
{
    const auto stack = makeStack({4, 3, 2, 1, 8}, coded);
    LogCapture log;
    EXPECT_EQ(*stack->checkedVoxel8(4, 1, 1, 0), coded(0, 1, 1, 0));
    EXPECT_EQ(*stack->checkedVoxel8(1, -1, 1, 0), coded(1, 0, 1, 0));
    EXPECT_EQ(*stack->checkedVoxel8(1, 1, 2, 0), coded(1, 1, 0, 0));
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("X out of bounds X 4 Xmax 3"),
                                        QStringLiteral("Y out of bounds Y -1 Ymax 2"),
                                        QStringLiteral("Z out of bounds Z 2 Zmax 1")}));
    log.clear();
    EXPECT_EQ(stack->checkedVoxel8(0, 0, 0, 1), stack->stackData() + 1);
    EXPECT_TRUE(log.contains(QStringLiteral("Channel out of bounds")));
    const auto words = makeStack({4, 3, 2, 1, 16}, coded);
    EXPECT_EQ(*words->checkedVoxel16(3, 3, 1, 0), coded(3, 0, 1, 0));
}

TEST(ImageFile, ThePaddedSizesArePowersOfTwo)
{
    EXPECT_EQ(ImageFile::nextPow2(256), 256);
    EXPECT_EQ(ImageFile::nextPow2(257), 512);
    EXPECT_EQ(ImageFile::nextPow2(0), 1);
    EXPECT_EQ(ImageFile::nextPow2(1), 1);
    const ImageFile stack(5, 4, 1, 1, 8);
    EXPECT_EQ(stack.powX(), 8);
    EXPECT_EQ(stack.powY(), 4);
    EXPECT_EQ(stack.powZ(), 1);
}

class ImageFileRead : public ::testing::Test
{
protected:
    QString pic(const char* name, int layers = 10)
    {
        return PicFile{.x = 4, .y = 3, .z = layers}.save(m_folder.filePath(QLatin1String(name)));
    }
    QTemporaryDir m_folder;
};

TEST_F(ImageFileRead, ALayerPastTheEndIsRefusedAndTheStackStays)
{
    ImageFile stack(QStringList{pic("a.pic")});
    ASSERT_TRUE(stack.read(0, 1, 1));
    const std::vector<int> before = samples(stack);
    LogCapture log;
    EXPECT_FALSE(stack.read(0, 10, 1));
    EXPECT_TRUE(log.contains(QStringLiteral("last layer 10 must be less than 10")));
    EXPECT_EQ(samples(stack), before);
    EXPECT_EQ(stack.attributes().z, 2);
}

TEST_F(ImageFileRead, ANegativeFirstLayerIsRefused)
{
    ImageFile stack(QStringList{pic("a.pic")});
    LogCapture log;
    EXPECT_FALSE(stack.read(-1, 3, 1));
    EXPECT_TRUE(log.contains(QStringLiteral("first layer cannot be < 0")));
}

TEST_F(ImageFileRead, AStepKeepsTheLastLayerAskedFor)
{
    ImageFile stack(QStringList{pic("a.pic")});
    ASSERT_TRUE(stack.read(0, 9, 3));
    EXPECT_EQ(stack.attributes().z, 3);
    EXPECT_EQ(stack.firstLayer(), 0);
    EXPECT_EQ(stack.lastLayer(), 9);
    EXPECT_EQ(stack.layerStep(), 3);
    EXPECT_EQ(sample(stack, 1, 2, 2), (1 + 20 + 600) & 0xFF);
}

TEST_F(ImageFileRead, ReadingAgainTakesTheSameLayers)
{
    ImageFile stack(QStringList{pic("a.pic")});
    ASSERT_TRUE(stack.read(2, 7, 2));
    const std::vector<int> before = samples(stack);
    stack.freeStack();
    EXPECT_FALSE(stack.isLoaded());
    EXPECT_EQ(stack.attributes().x, -1);
    EXPECT_EQ(stack.attributes().fileX, 4);
    EXPECT_EQ(stack.statsList().size(), 1U);
    ASSERT_TRUE(stack.reRead());
    EXPECT_EQ(samples(stack), before);
    EXPECT_EQ(stack.attributes().z, 3);
}

TEST_F(ImageFileRead, TheLogTellsTheStages)
{
    ImageFile stack(QStringList{pic("a.pic")});
    LogCapture log;
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(log.lines().first(), QStringLiteral("enter ImageFile::read"));
    EXPECT_EQ(log.lines().last(), QStringLiteral("exit ImageFile::read success"));
    EXPECT_EQ(log.lines().filter(QStringLiteral("File I/O took ")).size(), 1);
    EXPECT_EQ(log.lines().filter(QStringLiteral("generate statistics ")).size(), 1);
    log.clear();
    stack.freeStack();
    EXPECT_TRUE(log.contains(QStringLiteral("original copy of stack deleted")));
}

TEST_F(ImageFileRead, ThreeNamesShowTheFirstAndTheLast)
{
    ImageFile stack(QStringList{pic("a.pic"), pic("b.pic"), pic("c.pic")});
    EXPECT_EQ(stack.fileName(), QStringLiteral("a.pic ... c.pic"));
    EXPECT_EQ(stack.fileNames(),
              (QStringList{QStringLiteral("a.pic"), QStringLiteral("b.pic"), QStringLiteral("c.pic")}));
    EXPECT_EQ(stack.filePaths().first(), m_folder.filePath(QStringLiteral("a.pic")));
    EXPECT_EQ(ImageFile(QStringList{pic("a.pic")}).fileName(), QStringLiteral("a.pic"));
    EXPECT_EQ(ImageFile(QStringList(), 0, 1, 1, 1, 1, 8).fileName(), QStringLiteral("Untitled"));
}

TEST_F(ImageFileRead, StatisticsOfAnUnreadStackAreMadeByReadingIt)
{
    ImageFile stack(QStringList{pic("a.pic", 2)});
    EXPECT_EQ(stack.stats(0).max, 3 + 20 + 100);
    EXPECT_TRUE(stack.isLoaded());
}

class ImageFileWrite : public ImageFileRead
{};

TEST_F(ImageFileWrite, AStackWithoutVoxelsIsNotWritten)
{
    ImageFile stack;
    LogCapture log;
    EXPECT_FALSE(stack.write({m_folder.filePath(QStringLiteral("a.pic"))}, ImageType::BioRad));
    EXPECT_TRUE(log.contains(QStringLiteral("Must allocate stack first")));
}

TEST_F(ImageFileWrite, TypesWithoutAWriterAreRefusedWithTheirText)
{
    const std::pair<ImageType, const char*> refusals[] = {
        {ImageType::Dicom, "DICOM not supported"},
        {ImageType::Olympus, "Olympus not supported"},
        {ImageType::PerkinElmer, "Perkinelmer not supported"}};
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 3);
    for (const auto& [type, text] : refusals) {
        EXPECT_FALSE(stack->write({m_folder.filePath(QStringLiteral("a"))}, type));
        EXPECT_EQ(stack->writeErrors(), QStringList{QLatin1String(text)});
    }
    EXPECT_TRUE(QDir(m_folder.path()).isEmpty());
}

TEST_F(ImageFileWrite, LeicaAndOthersFallThroughToTheRawWriter)
{
    for (const ImageType type :
         {ImageType::Leica, ImageType::DeltaVision, ImageType::Vff, ImageType::Unknown}) {
        const auto stack = makeStack({4, 3, 2, 1, 8}, coded);
        const QString name = m_folder.filePath(QStringLiteral("out"));
        EXPECT_TRUE(stack->write({name}, type));
        EXPECT_EQ(test::fileContent(name), QByteArray(reinterpret_cast<const char*>(stack->stackData()), 24));
    }
}

TEST_F(ImageFileWrite, WritingAsBytesConvertsTheStackForGood)
{
    const auto stack = makeStack({2, 1, 1, 1, 16}, [](int x, int, int, int) { return 100 + 510 * x; });
    EXPECT_TRUE(stack->write({m_folder.filePath(QStringLiteral("out"))}, ImageType::Unknown, 8));
    EXPECT_EQ(stack->attributes().bitDepth, 8);
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 255}));
}

TEST_F(ImageFileWrite, WritingAsWordsWidensTheStackForGood)
{
    const auto stack = makeStack({2, 1, 1, 1, 8}, coded);
    EXPECT_TRUE(stack->write({m_folder.filePath(QStringLiteral("out"))}, ImageType::Unknown, 16, true));
    EXPECT_EQ(stack->attributes().bitDepth, 16);
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 1}));
    EXPECT_EQ(test::fileContent(m_folder.filePath(QStringLiteral("out"))), QByteArray("\0\0\1\0", 4));
}

TEST_F(ImageFileWrite, TwelveBitsInWordsAreWrittenAsSixteen)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 12}, 4000);
    EXPECT_TRUE(stack->write({m_folder.filePath(QStringLiteral("out"))}, ImageType::Unknown));
    EXPECT_EQ(stack->attributes().bitDepth, 16);
    EXPECT_EQ(test::fileContent(m_folder.filePath(QStringLiteral("out"))).size(), 8);
}

TEST_F(ImageFileWrite, AnExistingFileIsKeptUnlessOverwritten)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 7);
    const QString name = test::saveBytes(m_folder.filePath(QStringLiteral("out")), "old");
    EXPECT_FALSE(stack->write({name}, ImageType::Unknown, false));
    EXPECT_EQ(stack->writeErrors(), QStringList{QStringLiteral("File exists")});
    EXPECT_EQ(test::fileContent(name), QByteArray("old"));
    EXPECT_TRUE(stack->write({name}, ImageType::Unknown, true));
    EXPECT_EQ(test::fileContent(name), QByteArray(4, '\7'));
}

} // namespace
} // namespace tirn
