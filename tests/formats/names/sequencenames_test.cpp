#include "formats/names/sequencenames.h"

#include <QSet>

#include <gtest/gtest.h>

namespace tirn {
namespace {

using Lists = std::vector<QStringList>;
constexpr int kNone = SequenceFields::kNone;

TEST(DigitGroups, AreTheRunsOfDigitsFromTheLeft)
{
    EXPECT_EQ(digitGroups("t012_z3.tif"), (std::vector<DigitGroup>{{1, 3}, {6, 1}}));
    EXPECT_EQ(digitGroups("7"), (std::vector<DigitGroup>{{0, 1}}));
    EXPECT_EQ(digitGroups("12a34"), (std::vector<DigitGroup>{{0, 2}, {3, 2}}));
    EXPECT_EQ(digitGroups("stack.tif"), std::vector<DigitGroup>());
    EXPECT_EQ(digitGroups(""), std::vector<DigitGroup>());
}

TEST(DigitGroups, AreFoundByAnyOfTheirCharacters)
{
    const auto groups = digitGroups("t012_z3.tif");
    EXPECT_EQ(groupAt(groups, 0), -1);
    EXPECT_EQ(groupAt(groups, 1), 0);
    EXPECT_EQ(groupAt(groups, 3), 0);
    EXPECT_EQ(groupAt(groups, 4), -1);
    EXPECT_EQ(groupAt(groups, 6), 1);
    EXPECT_EQ(groupAt(groups, 7), -1);
    EXPECT_EQ(groupAt(groups, 100), -1);
    EXPECT_EQ(groupAt({}, 0), -1);
}

TEST(DigitGroups, BecomeAWildcardForEachCharacter)
{
    const QString name = "t012_z3_c4.tif";
    const auto groups = digitGroups(name);
    EXPECT_EQ(wildcarded(name, groups[0]), "t???_z3_c4.tif");
    EXPECT_EQ(sequencePattern(name, groups, {0, 1, kNone}), "t???_z?_c4.tif");
    EXPECT_EQ(sequencePattern(name, groups, {kNone, kNone, 2}), "t012_z3_c?.tif");
    EXPECT_EQ(sequencePattern(name, groups, {}), name);
}

SequenceStacks sorted(const QStringList& names, const SequenceFields& fields)
{
    return groupSequence(names, digitGroups(names.first()), fields);
}

TEST(GroupSequence, StandsInTimeMajorAndChannelMinorOrder)
{
    QStringList names;
    for (const char* time : {"t1", "t2"}) {
        for (const char* slice : {"_z1", "_z2"}) {
            for (const char* channel : {"_c1", "_c2", "_c3"})
                names.append(QString(time) + slice + channel + ".tif");
        }
    }
    const SequenceStacks stacks = sorted(names, {0, 1, 2});
    EXPECT_EQ(stacks.channels, 3);
    EXPECT_EQ(stacks.timePoints(), 2);
    EXPECT_EQ(stacks.unevenTimePoint, -1);
    EXPECT_EQ(stacks.lists, (Lists{{"t1_z1_c1.tif", "t1_z2_c1.tif"},
                                   {"t1_z1_c2.tif", "t1_z2_c2.tif"},
                                   {"t1_z1_c3.tif", "t1_z2_c3.tif"},
                                   {"t2_z1_c1.tif", "t2_z2_c1.tif"},
                                   {"t2_z1_c2.tif", "t2_z2_c2.tif"},
                                   {"t2_z1_c3.tif", "t2_z2_c3.tif"}}));
}

TEST(GroupSequence, WithoutTimeAllNamesAreOneTimePoint)
{
    const SequenceStacks slices = sorted({"z1.tif", "z2.tif", "zx.tif"}, {kNone, 0, kNone});
    EXPECT_EQ(slices.lists, (Lists{{"z1.tif", "z2.tif", "zx.tif"}}));
    EXPECT_EQ(slices.timePoints(), 1);
    const SequenceStacks channels = sorted({"z1c1.tif", "z1c2.tif", "z2c1.tif"}, {kNone, 0, 1});
    EXPECT_EQ(channels.channels, 2);
    EXPECT_EQ(channels.lists, (Lists{{"z1c1.tif", "z2c1.tif"}, {"z1c2.tif"}}));
}

TEST(GroupSequence, OnlyTimeGivesEachNameATimePointOfItsOwn)
{
    const SequenceStacks stacks = sorted({"t1.tif", "t2.tif", "t3.tif"}, {0, kNone, kNone});
    EXPECT_EQ(stacks.lists, (Lists{{"t1.tif"}, {"t2.tif"}, {"t3.tif"}}));
    EXPECT_EQ(stacks.timePoints(), 3);
}

TEST(GroupSequence, NamesWithoutDigitsWhereSlicesAreNumberedAreNoPart)
{
    const SequenceStacks stacks = sorted({"t1z1.tif", "t1zz.tif", "t2z1.tif"}, {0, 1, kNone});
    EXPECT_EQ(stacks.lists, (Lists{{"t1z1.tif"}, {"t2z1.tif"}}));
}

TEST(GroupSequence, AnyWhiteSpaceIsTheSameAndSignsMeanThemselves)
{
    EXPECT_EQ(sorted({"a (1) t1 z1.tif", "a (1)\tt1 z2.tif"}, {1, 2, kNone}).lists,
              (Lists{{"a (1) t1 z1.tif", "a (1)\tt1 z2.tif"}}));
    EXPECT_EQ(sorted({"a t1 z1.tif", "a_t1 z2.tif"}, {0, 1, kNone}).lists,
              (Lists{{"a t1 z1.tif"}, {"a_t1 z2.tif"}}));
}

TEST(GroupSequence, TellsOfATimePointThatLacksAChannel)
{
    const SequenceStacks stacks = sorted({"t1c1", "t1c2", "t2c1", "t3c1", "t3c2"}, {0, kNone, 1});
    EXPECT_EQ(stacks.channels, 2);
    EXPECT_EQ(stacks.unevenTimePoint, 1);
    EXPECT_EQ(stacks.unevenChannels, 1);
}

TEST(GroupSequence, FieldsThatTheNameDoesNotHaveAreNotChosen)
{
    EXPECT_EQ(sorted({"t1.tif", "t2.tif"}, {5, 6, 7}).lists, (Lists{{"t1.tif"}, {"t2.tif"}}));
    EXPECT_EQ(groupSequence({}, {}, {0, 1, 2}).lists, Lists());
    EXPECT_EQ(groupSequence({"ab"}, {{1, 4}}, {kNone, 0, 0}).lists, Lists());
}

TEST(GroupSequence, ManyNamesAreSortedAsFewAre)
{
    QStringList names;
    for (int i = 0; i < 500; ++i)
        names.append(QString("t%1_z%2.tif").arg(i / 5, 3, 10, QLatin1Char('0')).arg(i % 5));
    const SequenceStacks stacks = sorted(names, {0, 1, kNone});
    ASSERT_EQ(stacks.timePoints(), 100);
    EXPECT_EQ(stacks.lists[99].last(), "t099_z4.tif");
    for (const QStringList& list : stacks.lists)
        EXPECT_EQ(list.size(), 5);
}

} // namespace
} // namespace tirn
