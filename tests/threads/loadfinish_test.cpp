// What a loaded volume gets beside its voxels: sizes, palettes, what a session remembers.

#include <limits>

#include "support/recordingtables.h"
#include "threads/loadfinish.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

class LoadFinish : public ::testing::Test
{
protected:
    void setSession(const QString& content)
    {
        const QString rest = "<timepoint/><channel/>";
        ASSERT_TRUE(m_document.setContent("<stack>" + content + rest + "</stack>"));
        const auto stack = readSessionStack(m_document.documentElement(), {});
        ASSERT_TRUE(stack);
        description = LoadDescription();
        description.setSession(*stack);
    }
    AxisScale scaleFor(double x, double y, double z)
    {
        array.stack().dimX = x;
        array.stack().dimY = y;
        array.stack().dimZ = z;
        applyDimensions(array, description);
        return array.scale;
    }
    /// Letters of the palettes that are appended for so many channels.
    QString appended(int channels, int existing, PaletteGeneration generation)
    {
        array.setChannelCount(channels);
        surroundings.paletteCount = existing;
        surroundings.paletteGeneration = generation;
        QString letters;
        for (const auto& palette : assignPalettes(array, description, surroundings)) {
            const int red = palette->fileValues(255)[0];
            const int green = palette->fileValues(255)[1];
            const int blue = palette->fileValues(255)[2];
            letters += red > 0 && green > 0 ? 'w' : red > 0 ? 'r' : green > 0 ? 'g' : blue > 0 ? 'b' : '?';
        }
        return letters;
    }
    std::vector<int> palettes() const
    {
        std::vector<int> all;
        for (const Channel& channel : array.channels())
            all.push_back(channel.display.palette);
        return all;
    }

    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;
    VoxelArray array{10, 8, 6, VolumeOptions()};
    LoadDescription description;
    LoadSurroundings surroundings;

private:
    QDomDocument m_document;
};

TEST_F(LoadFinish, TheScaleIsThatOfTheVoxelsWithTheLargestSideOne)
{
    EXPECT_EQ(scaleFor(0.5, 1, 2), (AxisScale{0.25, 0.5, 1}));
    EXPECT_EQ(array.baseScale, array.scale);
    EXPECT_TRUE(log.contains("dimZ 2.000000 DIM 2.000000 step 1"));
}

TEST_F(LoadFinish, TheStepStretchesZ)
{
    description.step = 3;
    EXPECT_EQ(scaleFor(1, 1, 1), (AxisScale{1, 1, 3}));
}

TEST_F(LoadFinish, WithoutAWholeVoxelSizeTheScaleIsOne)
{
    EXPECT_EQ(scaleFor(0.5, 1, 0), AxisScale());
    EXPECT_EQ(scaleFor(-1, -1, -1), AxisScale());
    EXPECT_EQ(scaleFor(0.5, 1, std::numeric_limits<double>::quiet_NaN()), AxisScale());
}

TEST_F(LoadFinish, SizesOfTheFormReplaceThoseOfTheFileWhereAllAreAboveZero)
{
    description.setVoxelDimensions(1, 2, 4);
    EXPECT_EQ(scaleFor(9, 9, 9), (AxisScale{0.25, 0.5, 1}));
    EXPECT_EQ(array.stack().dimY, 2);
    description.setVoxelDimensions(1, 0, 4);
    EXPECT_EQ(scaleFor(9, 9, 9), (AxisScale{1, 1, 1}));
    EXPECT_EQ(array.stack().dimX, 9);
}

TEST_F(LoadFinish, ASessionsScaleStands)
{
    setSession("<scale x='0.5' y='2' z='3' preserve='1'/><dimensions x='1' y='1' z='5'/>");
    EXPECT_EQ(scaleFor(9, 9, 9), (AxisScale{0.5, 2, 3}));
    EXPECT_EQ(array.baseScale, (AxisScale{0.5, 2, 3}));
    EXPECT_TRUE(array.preserveScaleRatio);
}

TEST_F(LoadFinish, ASessionsVoxelSizesAreThoseOfTheirAxes)
{
    setSession("<dimensions x='4' y='7' z='0'/>");
    EXPECT_EQ(scaleFor(1, 14, 14), (AxisScale{4.0 / 14, 0.5, 1}));
    EXPECT_EQ(array.stack().dimX, 4);
    EXPECT_EQ(array.stack().dimY, 7);
    EXPECT_EQ(array.stack().dimZ, 14);
    EXPECT_FALSE(array.preserveScaleRatio);
}

TEST_F(LoadFinish, AnOldSessionThatHasTheSizeOfXForAllAxesLeavesTheOthersToTheFile)
{
    setSession("<dimensions x='2' y='2' z='2'/>");
    EXPECT_EQ(scaleFor(2, 1, 4), (AxisScale{0.5, 0.25, 1}));
    description.isOldSession = false;
    EXPECT_EQ(scaleFor(2, 1, 4), (AxisScale{1, 1, 1}));
}

TEST_F(LoadFinish, AScaleThatMayNotBeChosenIsBounded)
{
    setSession("<scale x='1e-9' y='1e9' z='1'/>");
    EXPECT_EQ(scaleFor(1, 1, 1), (AxisScale{kLeastScale, kMostScale, 1}));
}

TEST_F(LoadFinish, AScaleWithoutAllAxesGivesWayToTheVoxels)
{
    setSession("<scale x='2' z='3'/>");
    EXPECT_EQ(scaleFor(1, 2, 2), (AxisScale{0.5, 1, 1}));
    EXPECT_EQ(scaleFor(-1, -1, -1), AxisScale());
}

TEST_F(LoadFinish, ThreeChannelsGetRedGreenAndBlueWhereThatIsThePreference)
{
    EXPECT_EQ(appended(3, 0, PaletteGeneration::RedGreenBlue), "rgb");
    EXPECT_EQ(palettes(), (std::vector<int>{0, 1, 2}));
}

TEST_F(LoadFinish, OtherwiseThreeChannelsGetGrey)
{
    EXPECT_EQ(appended(3, 0, PaletteGeneration::Grayscale), "www");
    EXPECT_EQ(palettes(), (std::vector<int>{0, 1, 2}));
}

TEST_F(LoadFinish, AFourthChannelIsGrey)
{
    EXPECT_EQ(appended(4, 0, PaletteGeneration::RedGreenBlue), "rgbw");
}

TEST_F(LoadFinish, OneChannelAloneIsGrey) { EXPECT_EQ(appended(1, 0, PaletteGeneration::RedGreenBlue), "w"); }

TEST_F(LoadFinish, PalettesThatAreThereCount)
{
    EXPECT_EQ(appended(3, 1, PaletteGeneration::RedGreenBlue), "rg");
    EXPECT_EQ(appended(2, 5, PaletteGeneration::RedGreenBlue), "");
    EXPECT_EQ(palettes(), (std::vector<int>{0, 1}));
}

TEST_F(LoadFinish, AppendedPalettesAreOnTheCard)
{
    RecordingTables tables;
    surroundings.paletteTables = &tables;
    EXPECT_EQ(appended(2, 0, PaletteGeneration::RedGreenBlue), "rg");
    EXPECT_EQ(tables.made, 2U);
}

TEST_F(LoadFinish, ASessionsPalettesAreTakenAndThoseThatAreGoneBecomeTheFirst)
{
    description.paletteIndexes = {2, 3, -1};
    EXPECT_EQ(appended(3, 3, PaletteGeneration::RedGreenBlue), "");
    EXPECT_EQ(palettes(), (std::vector<int>{2, 0, 0}));
    description.paletteIndexes = {2};
    EXPECT_EQ(appended(3, 2, PaletteGeneration::RedGreenBlue), "r");
    EXPECT_EQ(palettes(), (std::vector<int>{0, 1, 2}));
}

TEST_F(LoadFinish, LabelsReplaceThoseOfTheTimePoints)
{
    array.setTimePoints(2);
    applySessionExtras(array, description);
    EXPECT_EQ(array.timeLabels(), QStringList({"00:00:00", "00:00:00"}));
    description.labels = QStringList{"first", "second"};
    applySessionExtras(array, description);
    EXPECT_EQ(array.timeLabels(), description.labels);
}

TEST_F(LoadFinish, StatesNeedOneEntryAChannel)
{
    array.setChannelCount(2);
    description.channelStates = {3};
    applySessionExtras(array, description);
    EXPECT_EQ(array.channels()[0].display.state, ChannelState::Shown);
    description.channelStates = {3, 99};
    applySessionExtras(array, description);
    EXPECT_EQ(array.channels()[0].display.state, ChannelState::FlashOff);
    EXPECT_EQ(array.channels()[1].display.state, ChannelState::Shown);
}

TEST_F(LoadFinish, LimitsBeyondTheStackAreIgnoredOneByOne)
{
    struct Row
    {
        CropLimits limits;
        CutBox cut;
    };
    const Row rows[] = {
        {{1, 8, 2, 6, 3, 4}, {1, 8, 2, 6, 3, 4}},   {{10, 8, 2, 6, 3, 4}, {0, 8, 2, 6, 3, 4}},
        {{1, 10, 2, 6, 3, 4}, {1, 9, 2, 6, 3, 4}},  {{1, 8, 8, 6, 3, 4}, {1, 8, 0, 6, 3, 4}},
        {{1, 8, 2, 800, 3, 4}, {1, 8, 2, 7, 3, 4}}, {{1, 8, 2, 6, 6, 4}, {1, 8, 2, 6, 0, 4}},
        {{1, 8, 2, 6, 3, 6}, {1, 8, 2, 6, 3, 5}},   {{1, 8, 2, 6, 3, -1}, {0, 9, 0, 7, 0, 5}},
        {{-1, 8, 2, 6, 3, 4}, {0, 9, 0, 7, 0, 5}},  {{8, 1, 6, 2, 4, 3}, {1, 8, 2, 6, 3, 4}},
    };
    for (const Row& row : rows) {
        array.cut = {0, 9, 0, 7, 0, 5};
        description.crop = row.limits;
        applySessionExtras(array, description);
        EXPECT_EQ(array.cut, row.cut) << row.limits.xMin << ' ' << row.limits.yMax << ' ' << row.limits.zMax;
    }
}

TEST_F(LoadFinish, CurvesAreTakenWhereThereIsOneForEachChannel)
{
    array.setChannelCount(2);
    ZCurve curve(6);
    curve[2] = 1.5;
    description.zCurves = {curve};
    applySessionExtras(array, description);
    EXPECT_EQ(array.channels()[0].zCurve.size(), 6);
    EXPECT_EQ(array.channels()[0].zCurve[2], 1.0);
    description.zCurves = {ZCurve(6), curve};
    applySessionExtras(array, description);
    EXPECT_EQ(array.channels()[0].zCurve[2], 1.0);
    EXPECT_EQ(array.channels()[1].zCurve[2], 1.5);
}

TEST_F(LoadFinish, ACurveThatEndsBeforeTheStackIsNotTaken)
{
    ZCurve curve(5);
    curve[2] = 1.5;
    description.zCurves = {curve};
    applySessionExtras(array, description);
    EXPECT_EQ(array.channels()[0].zCurve.size(), 6);
    EXPECT_EQ(array.channels()[0].zCurve[2], 1.0);
}

} // namespace
} // namespace tirn::test
