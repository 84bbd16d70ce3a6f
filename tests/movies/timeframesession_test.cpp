#include <gtest/gtest.h>

#include "movies/timeframesession.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

Action actionOf(ActionType type, double x = 0, double y = 0, double z = 0)
{
    Action action;
    action.type = type;
    action.x = x;
    action.y = y;
    action.z = z;
    return action;
}

Action pass(int axis, PassType type)
{
    Action action = actionOf(ActionType::PassThrough, axis == 0, axis == 1, axis == 2);
    action.passType = type;
    return action;
}

Action timePoints(int perPoint, int start, int end)
{
    Action action = actionOf(ActionType::TimePoints);
    action.framesPerTimePoint = perPoint;
    action.start = start;
    action.end = end;
    return action;
}

TEST(TimeFrameXml, KeepsTheActions)
{
    TimeFrame timeFrame;
    timeFrame.seconds = 7;
    timeFrame.actions = {actionOf(ActionType::Rotation, 1.5, -2, 0.05), actionOf(ActionType::Scale, 1, 2, 3),
                         actionOf(ActionType::Translation, 0, 0.25, 0), pass(2, PassType::OutAndIn)};
    Action rocking = actionOf(ActionType::Rocking, 30, 15, 0);
    rocking.rotations = 4;
    Action custom = actionOf(ActionType::Custom);
    custom.keyFrames.resize(2);
    custom.keyFrames[1].yrot = 12.5;
    timeFrame.actions.push_back(rocking);
    timeFrame.actions.push_back(custom);
    QDomDocument document;
    const QDomElement element = saveTimeFrame(timeFrame, document);
    EXPECT_EQ(element.tagName(), "timeframe");
    EXPECT_EQ(element.attribute("seconds"), "7");
    EXPECT_EQ(readTimeFrame(element), timeFrame);
}

/// The attributes that an action is written with, sorted.
QStringList attributesOf(const Action& action)
{
    TimeFrame timeFrame;
    timeFrame.actions = {action};
    QDomDocument document;
    const QDomElement element = saveTimeFrame(timeFrame, document).firstChildElement("action");
    QStringList all;
    for (int i = 0; i < element.attributes().count(); ++i)
        all << element.attributes().item(i).nodeName() + '=' + element.attributes().item(i).nodeValue();
    all.sort();
    return all;
}

TEST(TimeFrameXml, WritesTheAttributesOfEachType)
{
    EXPECT_EQ(attributesOf(actionOf(ActionType::Rotation, 1, 2, 3.5)),
              (QStringList{"type=Rotation", "x=1", "y=2", "z=3.5"}));
    EXPECT_EQ(attributesOf(pass(1, PassType::SinglePlane)),
              (QStringList{"passtype=3", "type=Pass Through", "x=0", "y=1", "z=0"}));
    EXPECT_EQ(attributesOf(actionOf(ActionType::Rocking, 30)),
              (QStringList{"rotations=0", "type=Rocking", "x=30", "y=0", "z=0"}));
    EXPECT_EQ(attributesOf(timePoints(3, 1, -1)),
              (QStringList{"end=-1", "fptp=3", "start=1", "type=Timepoints"}));
    EXPECT_EQ(attributesOf(actionOf(ActionType::Custom)), (QStringList{"frames=0", "type=Custom"}));
    const test::LogCapture log;
    EXPECT_EQ(attributesOf(actionOf(static_cast<ActionType>(9))), QStringList{"type=Not a clue"});
    EXPECT_EQ(log.warnings(), QStringList{"trying to toElement unknown action"});
}

TEST(TimeFrameXml, APaletteLosesWhatFollows)
{
    // Both attributes hold the action.
    TimeFrame timeFrame;
    timeFrame.actions = {actionOf(ActionType::Palette)};
    timeFrame.actions[0].paletteActions = {5, 2};
    timeFrame.actions[0].paletteAfter = {1, 0};
    QDomDocument document;
    const QDomElement element = saveTimeFrame(timeFrame, document);
    EXPECT_EQ(element.firstChildElement().attribute("channels"), "2");
    EXPECT_EQ(element.firstChildElement().firstChildElement().attribute("num"), "0");
    const TimeFrame back = readTimeFrame(element);
    EXPECT_EQ(back.actions[0].paletteActions, (std::vector<int>{5, 2}));
    EXPECT_EQ(back.actions[0].paletteAfter, (std::vector<int>{5, 2}));
}

TEST(TimeFrameXml, TimePointsComeBackAsARotationByNothing)
{
    TimeFrame timeFrame;
    timeFrame.actions = {timePoints(3, 1, 8)};
    QDomDocument document;
    const TimeFrame back = readTimeFrame(saveTimeFrame(timeFrame, document));
    Action expected;
    expected.start = 1;
    expected.end = 8;
    EXPECT_EQ(back.actions, std::vector<Action>{expected});
}

std::vector<TimeFrame> fromXml(const QString& text)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(text));
    return readTimeFrames(document.documentElement());
}

TEST(TimeFrameXml, WhatIsMissingHasItsDefault)
{
    const auto frames = fromXml("<dialog><timeframe/><other/><timeframe seconds=\"3\"><action/>"
                                "<action type=\"Palette\"><palchannel/></action></timeframe></dialog>");
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0], TimeFrame());
    EXPECT_EQ(frames[1].actions[0], Action());
    EXPECT_EQ(frames[1].actions[1].paletteActions, std::vector<int>{0});
}

TEST(TimeFrameXml, NonsenseIsBroughtWithinBounds)
{
    const auto frames = fromXml(
        "<d><timeframe seconds=\"x\"/><timeframe seconds=\"-4\"/><timeframe seconds=\"2000000000\">"
        "<action type=\"bogus\" x=\"y\" passtype=\"9\" rotations=\"z\" end=\"1e9\"/></timeframe></d>");
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[0].seconds, 1);
    EXPECT_EQ(frames[1].seconds, 1);
    EXPECT_EQ(frames[2].seconds, 9999);
    Action expected;
    expected.end = 0;
    EXPECT_EQ(frames[2].actions[0], expected);
}

} // namespace
} // namespace tirn
