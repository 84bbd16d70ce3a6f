// A stack that a session brings back, through a real load.

#include <QDir>

#include "support/lsmfile.h"
#include "support/stacks.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

/// The voxels of each channel at each time point.
std::vector<std::vector<int>> voxelsOf(const VoxelArray& array)
{
    std::vector<std::vector<int>> all;
    for (int t = 0; t < array.timePointCount(); ++t) {
        for (int c = 0; c < array.channelCount(); ++c) {
            const ChannelImage at = array.imageOf(c, t);
            all.push_back(at.image != nullptr ? channelSamples(*at.image, at.channel) : std::vector<int>());
        }
    }
    return all;
}

class SessionLoad : public LoadRig
{
protected:
    /// A file whose voxels are value + z.
    QString plainPic(const QString& name, int value) const
    {
        PicFile file;
        file.x = 6;
        file.y = 5;
        file.z = 4;
        file.value = [value](int, int, int z) { return value + z; };
        return file.save(path(name));
    }
    std::optional<LoadedStack> loadElement(const QDomElement& element)
    {
        const QString before = QDir::currentPath();
        QDir::setCurrent(path(""));
        description = LoadDescription();
        description.session = element;
        auto loaded = load();
        QDir::setCurrent(before);
        return loaded;
    }
    std::optional<LoadedStack> loadText(const QString& content)
    {
        EXPECT_TRUE(m_document.setContent("<stack>" + content + "</stack>"));
        return loadElement(m_document.documentElement());
    }
    /// Saves what is loaded and loads it again.
    std::optional<LoadedStack> again(const VoxelArray& array)
    {
        return loadElement(array.saveSession(m_document, path("s.tir")));
    }
    /// Loads what is described, saves it, and expects to find the same voxels again.
    void expectTheSameAgain(int channels, int timePoints)
    {
        const auto saved = load();
        ASSERT_TRUE(saved);
        ASSERT_EQ(saved->array->channelCount(), channels);
        ASSERT_EQ(saved->array->timePointCount(), timePoints);
        const QDomElement element = saved->array->saveSession(m_document, path("s.tir"));
        EXPECT_EQ(element.elementsByTagName("timepoint").size(), timePoints);
        const auto back = loadElement(element);
        ASSERT_TRUE(back) << qPrintable(lastStep());
        EXPECT_EQ(back->array->channelCount(), channels);
        EXPECT_EQ(back->array->timePointCount(), timePoints);
        EXPECT_EQ(voxelsOf(*back->array), voxelsOf(*saved->array));
        EXPECT_EQ(back->array->sliceFirst, saved->array->sliceFirst);
        EXPECT_EQ(back->array->sliceLast, saved->array->sliceLast);
        EXPECT_EQ(back->array->sliceStep, saved->array->sliceStep);
        EXPECT_EQ(back->array->subsample, saved->array->subsample);
    }

private:
    QDomDocument m_document;
};

TEST_F(SessionLoad, AStackWithoutChannelsLoadsNothingQuietly)
{
    EXPECT_FALSE(loadText("<timepoint><file>" + pic("a.pic") + "</file></timepoint>"));
    EXPECT_EQ(log.warnings(), QStringList("session stack missing channels or points!"));
    EXPECT_TRUE(reports.steps().isEmpty());
}

TEST_F(SessionLoad, TwoPicsThatWereNamedComeBackAsTwoChannels)
{
    description.filesToLoad = {{plainPic("a.pic", 10), plainPic("b.pic", 50)}};
    description.named.emplace();
    expectTheSameAgain(2, 1);
}

TEST_F(SessionLoad, ATimeSeriesOfPicPairsComesBack)
{
    description.filesToLoad = {{plainPic("a.pic", 10), plainPic("b.pic", 50)},
                               {plainPic("c.pic", 90), plainPic("d.pic", 130)},
                               {plainPic("e.pic", 170), plainPic("f.pic", 210)}};
    description.fileType = ImageType::BioRad;
    description.channels = 2;
    description.timePoints = 3;
    expectTheSameAgain(2, 3);
}

TEST_F(SessionLoad, ATiffSeriesKeepsItsChannels)
{
    description.filesToLoad = {tiffs("t0c0", 3, 10), tiffs("t0c1", 3, 20), tiffs("t1c0", 3, 30),
                               tiffs("t1c1", 3, 40)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    description.timePoints = 2;
    expectTheSameAgain(2, 2);
}

TEST_F(SessionLoad, LayersThatWereNamedAsChannelsComeBackAsThem)
{
    description.filesToLoad = {{tiffs("a", 1, 10).first(), tiffs("b", 1, 60).first()}};
    description.named.emplace();
    expectTheSameAgain(2, 1);
}

TEST_F(SessionLoad, AFileWithChannelsOfItsOwnComesBack)
{
    LsmFile file;
    file.channels = 2;
    description.filesToLoad = {{file.save(path("a.lsm"))}};
    expectTheSameAgain(2, 1);
}

TEST_F(SessionLoad, HeaderlessFilesComeBack)
{
    QByteArray words;
    for (int i = 0; i < 2 * 6 * 5 * 4; ++i)
        words.append(static_cast<char>(i / 256)).append(static_cast<char>(i % 256));
    const auto raw = [&](const QString& name, char header) {
        return QStringList(saveBytes(path(name), QByteArray(7, header) + words));
    };
    description.filesToLoad = {raw("a.raw", 'a'), raw("b.raw", 'b')};
    description.setRaw(7, 6, 5, 4, 2, 16);
    description.rawLayout.swapBytes = true;
    description.timePoints = 2;
    expectTheSameAgain(2, 2);
}

TEST_F(SessionLoad, ARangeOfLayersComesBack)
{
    description.filesToLoad = {{pic("a.pic", 6, 5, 9)}};
    description.setRange(1, 7, 2, 0, GL_TEXTURE_2D, false, 0, false);
    expectTheSameAgain(1, 1);
}

TEST_F(SessionLoad, AReducedStackComesBackWithItsCurve)
{
    description.filesToLoad = {{pic("a.pic", 6, 4, 8)}};
    description.setRange(0, 7, 1, 2, GL_TEXTURE_2D, false, 0, false);
    const auto saved = load();
    ASSERT_TRUE(saved);
    saved->array->channels()[0].zCurve[3] = 1.5;
    const auto back = again(*saved->array);
    ASSERT_TRUE(back);
    EXPECT_EQ(voxelsOf(*back->array), voxelsOf(*saved->array));
    EXPECT_EQ(*back->array->channels()[0].zCurve.curve(), (std::vector<double>{1, 1, 1, 1.5}));
}

TEST_F(SessionLoad, AReslicedStackComesBackAsDeepWithItsCut)
{
    description.filesToLoad = {{pic("a.pic", 6, 4, 8)}};
    description.setRange(0, 7, 1, 0, GL_TEXTURE_3D, true, 20, false);
    const auto saved = load();
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->array->finalDepth(), 20);
    saved->array->cut = {1, 4, 1, 3, 9, 17};
    const auto back = again(*saved->array);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->array->finalDepth(), 20);
    EXPECT_EQ(back->array->cut, saved->array->cut);
}

TEST_F(SessionLoad, HowAStackIsShownComesBack)
{
    describePics(2);
    description.setRange(0, 2, 1, 0, GL_TEXTURE_3D, false, 0, true);
    const auto saved = load();
    ASSERT_TRUE(saved);
    VoxelArray& array = *saved->array;
    array.scale = {0.5, 1, 2};
    array.preserveScaleRatio = true;
    array.stack().dimX = 0.1;
    array.stack().dimY = 0.2;
    array.stack().dimZ = 0.7;
    array.cut = {1, 4, 1, 3, 0, 1};
    array.timeLabels() = QStringList{"one", "two"};
    array.channels()[0].display = {ChannelState::Hidden, 2, 1};
    array.channels()[0].zCurve[1] = 1.25;
    surroundings.paletteCount = 3;
    const auto loaded = again(array);
    ASSERT_TRUE(loaded);
    const VoxelArray& back = *loaded->array;
    EXPECT_EQ(back.depth(), 3);
    EXPECT_EQ(back.timePointCount(), 2);
    EXPECT_EQ(back.textureTarget(), static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_TRUE(back.conservesMemory());
    EXPECT_EQ(back.scale, array.scale);
    EXPECT_TRUE(back.preserveScaleRatio);
    EXPECT_EQ(back.stack().dimX, 0.1);
    EXPECT_EQ(back.stack().dimY, 0.2);
    EXPECT_EQ(back.stack().dimZ, 0.7);
    EXPECT_EQ(back.cut, array.cut);
    EXPECT_EQ(back.timeLabels(), array.timeLabels());
    EXPECT_EQ(back.channels()[0].display, array.channels()[0].display);
    EXPECT_EQ(back.channels()[0].zCurve[1], 1.25);
    EXPECT_TRUE(loaded->palettes.empty());
}

TEST_F(SessionLoad, PalettesThatSwapComeBackAsTheyWereChosen)
{
    describePics(1);
    const auto saved = load();
    ASSERT_TRUE(saved);
    ChannelDisplay& display = saved->array->channels()[0].display;
    display = {ChannelState::PaletteSwap, 2, 1};
    swapPalettes({&display, 1});
    ASSERT_EQ(display.palette, 2);
    surroundings.paletteCount = 3;
    const auto back = again(*saved->array);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->array->channels()[0].display, (ChannelDisplay{ChannelState::PaletteSwap, 2, 1}));
}

TEST_F(SessionLoad, AnOldSessionsTimePointForEachChannelIsATimePoint)
{
    const QString slices = "<slices first='0' last='3' step='1' subsample='1'/>";
    const auto loaded = loadText(slices + "<timepoint label='one'><file>" + plainPic("a.pic", 10) +
                                 "</file></timepoint><timepoint label='00:00:00'><file>" +
                                 plainPic("b.pic", 50) + "</file></timepoint><channel/><channel/>");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->channelCount(), 2);
    EXPECT_EQ(loaded->array->timePointCount(), 1);
    EXPECT_EQ(loaded->array->timeLabels(), QStringList("one"));
    EXPECT_EQ(voxelsOf(*loaded->array)[0][0], 10);
    EXPECT_EQ(voxelsOf(*loaded->array)[1][0], 50);
}

TEST_F(SessionLoad, OneChannelAtSeveralTimePointsStaysSoInAnOldSession)
{
    const QString slices = "<slices first='0' last='3' step='1' subsample='1'/>";
    const auto loaded = loadText(slices + "<timepoint><file>" + plainPic("a.pic", 10) +
                                 "</file></timepoint><timepoint><file>" + plainPic("b.pic", 50) +
                                 "</file></timepoint><channel/>");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->channelCount(), 1);
    EXPECT_EQ(loaded->array->timePointCount(), 2);
}

} // namespace
} // namespace tirn::test
