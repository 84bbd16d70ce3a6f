#include <cmath>

#include <gtest/gtest.h>

#include "movies/frameload.h"
#include "movies/keyframesession.h"

namespace tirn {
namespace {

ShownFrame shown()
{
    ShownFrame frame;
    frame.rotation = {1, 2, 3};
    frame.translation = {4, 5, 6};
    frame.stack = ShownStack{{7, 8, 9},
                             {30, 31, 32},
                             {10, 11, 12},
                             {20, 21, 22},
                             3,
                             {{ChannelState::Shown, 1, 2}, {ChannelState::Hidden, 3, 4}}};
    return frame;
}

TEST(LoadKeyFrame, SetsAllThatIsShown)
{
    ShownFrame target;
    target.stack = ShownStack{};
    target.stack->channels.resize(2);
    target.stack->slices = {30, 31, 32};
    loadKeyFrame(keyFrameOf(shown()), target);
    EXPECT_EQ(target, shown());
}

TEST(LoadKeyFrame, EachFieldGoesToItsOwnPlace)
{
    const KeyFrame frame = keyFrameOf(shown());
    EXPECT_EQ((std::vector<double>{frame.xrot, frame.yrot, frame.zrot, frame.xtrans, frame.ytrans,
                                   frame.ztrans, frame.xscale, frame.yscale, frame.zscale}),
              (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ((std::vector<double>{frame.xmin, frame.ymin, frame.zmin, frame.xmax, frame.ymax, frame.zmax}),
              (std::vector<double>{10, 11, 12, 20, 21, 22}));
    EXPECT_EQ(frame.timepoint, 3);
    EXPECT_EQ(frame.channels, shown().stack->channels);
    EXPECT_TRUE(frame.palettes.empty());
}

TEST(LoadKeyFrame, ANegativeSideStaysAndFractionsAreCutOff)
{
    KeyFrame frame = keyFrameOf(shown());
    frame.xmin = -1;
    frame.ymin = 2.9;
    frame.zmin = -0.0;
    frame.xmax = -0.5;
    frame.ymax = 1e300;
    frame.zmax = static_cast<double>(NAN);
    ShownFrame target = shown();
    loadKeyFrame(frame, target);
    EXPECT_EQ(target.stack->cutMin, (std::array<int, 3>{10, 2, 0}));
    EXPECT_EQ(target.stack->cutMax, (std::array<int, 3>{20, 30, 22}));
}

TEST(LoadKeyFrame, ACrossedCutBoxIsSortedAndAnAbsurdOneKeptWithinTheStack)
{
    KeyFrame frame = keyFrameOf(shown());
    frame.xmin = 25;
    frame.xmax = 3;
    frame.ymin = 2e9;
    frame.ymax = 1e300;
    frame.zmin = 20;
    frame.zmax = -1;
    ShownFrame target = shown();
    target.stack->cutMax[2] = 5;
    loadKeyFrame(frame, target);
    EXPECT_EQ(target.stack->cutMin, (std::array<int, 3>{3, 30, 5}));
    EXPECT_EQ(target.stack->cutMax, (std::array<int, 3>{25, 30, 20}));
    // A box that was absurd before is none afterwards, whatever the frame leaves alone.
    target.stack->cutMin = {-7, 900, 4};
    target.stack->cutMax = {1000, -3, 4};
    frame.xmin = frame.xmax = frame.ymin = frame.ymax = frame.zmin = frame.zmax = -1;
    loadKeyFrame(frame, target);
    EXPECT_EQ(target.stack->cutMin, (std::array<int, 3>{0, 0, 4}));
    EXPECT_EQ(target.stack->cutMax, (std::array<int, 3>{29, 30, 4}));
}

TEST(LoadKeyFrame, SetsChannelsAsFarAsBothAreThere)
{
    KeyFrame frame = keyFrameOf(shown());
    frame.channels = {{ChannelState::FlashOff, 8, 9}};
    ShownFrame target = shown();
    loadKeyFrame(frame, target);
    EXPECT_EQ(target.stack->channels,
              (std::vector<ChannelDisplay>{{ChannelState::FlashOff, 8, 9}, {ChannelState::Hidden, 3, 4}}));
    frame.channels.assign(5, {});
    loadKeyFrame(frame, target);
    EXPECT_EQ(target.stack->channels, std::vector<ChannelDisplay>(2));
}

TEST(LoadKeyFrame, WithoutAStackOnlyTheViewChanges)
{
    ShownFrame target;
    loadKeyFrame(keyFrameOf(shown()), target);
    EXPECT_EQ(target.rotation, shown().rotation);
    EXPECT_EQ(target.translation, shown().translation);
    EXPECT_FALSE(target.stack);
    EXPECT_EQ(keyFrameOf(target).xscale, 1);
}

KeyFrame fromXml(const QString& text)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(text));
    return readKeyFrame(document.documentElement());
}

TEST(KeyFrameXml, WithoutAttributesItIsTheOriginWithScaleOne)
{
    EXPECT_EQ(fromXml("<keyframe/>"), KeyFrame());
    // Loading it cuts the volume down to its first voxel.
    ShownFrame target = shown();
    loadKeyFrame(fromXml("<keyframe/>"), target);
    EXPECT_EQ(target.stack->cutMin, (std::array<int, 3>{0, 0, 0}));
    EXPECT_EQ(target.stack->cutMax, (std::array<int, 3>{0, 0, 0}));
    EXPECT_EQ(target.stack->timePoint, 0);
}

TEST(KeyFrameXml, HoldsTheNumbersOfTheView)
{
    KeyFrame frame = keyFrameOf(shown());
    frame.array = 4;
    frame.xrot = 12.5;
    frame.palettes = {{{1}, {2}, {3}, {4}}};
    QDomDocument document;
    const QDomElement element = saveKeyFrame(frame, document);
    EXPECT_EQ(element.tagName(), "keyframe");
    EXPECT_EQ(element.attributes().count(), 16);
    EXPECT_TRUE(element.firstChild().isNull());
    const QStringList names = {"xrot",   "yrot", "zrot", "xtrans", "ytrans", "ztrans", "xscale", "yscale",
                               "zscale", "xmin", "ymin", "zmin",   "xmax",   "ymax",   "zmax",   "timepoint"};
    QStringList values;
    for (const QString& name : names)
        values << element.attribute(name, "missing");
    EXPECT_EQ(values, (QStringList{"12.5", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "20",
                                   "21", "22", "3"}));
    frame.array = 0;
    frame.palettes.clear();
    frame.channels.clear();
    EXPECT_EQ(readKeyFrame(element), frame);
}

TEST(KeyFrameXml, AFractionInTheCutBoxBecomesZero)
{
    const KeyFrame frame = fromXml("<keyframe xmin=\"1.5\" xmax=\"7\" ymin=\"-1\" zmax=\"x\" xrot=\"1.5\" "
                                   "xscale=\"y\" timepoint=\"2.5\"/>");
    EXPECT_EQ(frame.xmin, 0);
    EXPECT_EQ(frame.xmax, 7);
    EXPECT_EQ(frame.ymin, -1);
    EXPECT_EQ(frame.zmax, 0);
    EXPECT_EQ(frame.xrot, 1.5);
    EXPECT_EQ(frame.xscale, 0);
    EXPECT_EQ(frame.timepoint, 0);
}

TEST(KeyFrameXml, FindsTheFramesAmongOtherElements)
{
    QDomDocument document;
    ASSERT_TRUE(document.setContent(QString("<action><keyframe xrot=\"1\"/>text<other/><keyframe "
                                            "xrot=\"2\"/><x><keyframe xrot=\"3\"/></x></action>")));
    const std::vector<KeyFrame> frames = readKeyFrames(document.documentElement());
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[1].xrot, 2);
    EXPECT_TRUE(readKeyFrames(QDomElement()).empty());
}

} // namespace
} // namespace tirn
