#include "session/recentlists.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tirn {
namespace {

RecentStack stackOf(const QString& name, int channels = 1, int timePoints = 1)
{
    RecentStack stack;
    stack.files = {{name}};
    stack.channels = channels;
    stack.timePoints = timePoints;
    return stack;
}

class RecentStore : public ::testing::Test
{
protected:
    QTemporaryDir directory;
    QSettings store{directory.filePath("store.ini"), QSettings::IniFormat};

    QSettings reopened() { return {directory.filePath("store.ini"), QSettings::IniFormat}; }
};

TEST(RecentLists, AStackIsCalledByTheFirstNamesOfItsElements)
{
    RecentStack stack;
    stack.files = {{"a0.pic", "a1.pic"}, {"b0.pic", "b1.pic"}};
    EXPECT_EQ(stack.text(), QString("a0.pic b0.pic"));
}

TEST(RecentLists, TheNewestIsOnTopAndAnEqualOneGoes)
{
    RecentLists lists;
    lists.addStack(stackOf("a"));
    lists.addStack(stackOf("b"));
    lists.addStack(stackOf("a", 3));
    ASSERT_EQ(lists.stacks().size(), 2U);
    EXPECT_EQ(lists.stacks()[0], stackOf("a", 3));
    EXPECT_EQ(lists.stacks()[1], stackOf("b"));
    lists.addPalette("x.map");
    lists.addPalette("y.map");
    lists.addPalette("x.map");
    EXPECT_EQ(lists.palettes(), QStringList({"x.map", "y.map"}));
}

TEST(RecentLists, TheEleventhPushesOutTheOldest)
{
    RecentLists lists;
    for (int i = 0; i < 11; ++i) {
        lists.addStack(stackOf(QString("stack%1").arg(i)));
        lists.addPalette(QString("palette%1").arg(i));
    }
    ASSERT_EQ(lists.stacks().size(), 10U);
    EXPECT_EQ(lists.stacks().front().text(), QString("stack10"));
    EXPECT_EQ(lists.stacks().back().text(), QString("stack1"));
    EXPECT_EQ(lists.palettes().size(), 10);
    EXPECT_EQ(lists.palettes().last(), QString("palette1"));
}

TEST_F(RecentStore, HoldsTheKeysOfTheLayout)
{
    RecentLists lists;
    lists.addStack({{{"t0c0", "t0c1"}, {"t1c0", "t1c1"}}, 2, 2});
    lists.addStack(stackOf("new"));
    lists.addPalette("/p/red.map");
    lists.write(store);
    EXPECT_EQ(store.value("RecentPalettes/0").toString(), QString("/p/red.map"));
    EXPECT_EQ(store.value("RecentStacks/0name0").toStringList(), QStringList({"new"}));
    EXPECT_EQ(store.value("RecentStacks/1name0").toStringList(), QStringList({"t0c0", "t0c1"}));
    EXPECT_EQ(store.value("RecentStacks/1name1").toStringList(), QStringList({"t1c0", "t1c1"}));
    EXPECT_EQ(store.value("RecentStacks/1channels").toInt(), 2);
    EXPECT_EQ(store.value("RecentStacks/1timepoints").toInt(), 2);
    EXPECT_FALSE(store.contains("RecentStacks/1name2"));
}

TEST_F(RecentStore, GivesBackWhatWasWritten)
{
    RecentLists lists;
    for (int i = 0; i < 12; ++i) {
        lists.addStack({{{QString("a%1").arg(i), "with, comma"}, {"b"}}, i, 2});
        lists.addPalette(QString("/a b/%1;.map").arg(i));
    }
    lists.write(store);
    store.sync();
    QSettings again = reopened();
    const RecentLists read = RecentLists::read(again);
    EXPECT_EQ(read.stacks(), lists.stacks());
    EXPECT_EQ(read.palettes(), lists.palettes());
}

TEST_F(RecentStore, TwoProgramsDoNotLoseEachOthersEntries)
{
    RecentLists before;
    before.addStack(stackOf("old"));
    before.addPalette("old.map");
    before.write(store);
    RecentLists one = RecentLists::read(store);
    RecentLists other = RecentLists::read(store);
    one.addStack(stackOf("a"));
    one.addPalette("a.map");
    other.addStack(stackOf("b"));
    one.write(store);
    QSettings second = reopened();
    other.write(second);
    EXPECT_EQ(RecentLists::read(second).stacks(),
              (std::vector<RecentStack>{stackOf("b"), stackOf("a"), stackOf("old")}));
    EXPECT_EQ(RecentLists::read(second).palettes(), (QStringList{"a.map", "old.map"}));
    EXPECT_EQ(other.stacks().size(), 3U) << "the menu shows them, too";
    // Nothing new comes twice.
    one.write(store);
    EXPECT_EQ(one.stacks(), other.stacks());
}

TEST_F(RecentStore, ElementsOfAnOlderLongerStackAreRemoved)
{
    RecentLists longer;
    longer.addStack({{{"a"}, {"b"}, {"c"}}, 1, 3});
    longer.write(store);
    RecentLists shorter;
    shorter.addStack(stackOf("d"));
    shorter.write(store);
    EXPECT_EQ(RecentLists::read(store).stacks(),
              (std::vector<RecentStack>{stackOf("d"), longer.stacks().front()}));
    EXPECT_FALSE(store.contains("RecentStacks/0name1"));
    EXPECT_FALSE(store.contains("RecentStacks/0name2"));
}

TEST_F(RecentStore, KeepsAHundredElementsAndSaysHowManyAreMissing)
{
    RecentStack stack = stackOf({}, 1, 150);
    stack.files.clear();
    for (int i = 0; i < 150; ++i)
        stack.files.push_back({QString("t%1").arg(i)});
    RecentLists lists;
    lists.addStack(stack);
    lists.write(store);
    EXPECT_TRUE(store.contains("RecentStacks/0name99"));
    EXPECT_FALSE(store.contains("RecentStacks/0name100"));
    RecentLists read = RecentLists::read(store);
    ASSERT_EQ(read.stacks().size(), 1U);
    EXPECT_EQ(read.stacks()[0].files.size(), 100U);
    EXPECT_EQ(read.stacks()[0].timePoints, 150);
    EXPECT_EQ(read.stacks()[0].missing, 50);
    // And so it stays over another restart.
    read.write(store);
    EXPECT_EQ(RecentLists::read(store).stacks()[0].missing, 50);
}

TEST_F(RecentStore, ForeignValuesArePassedOver)
{
    store.setValue("RecentPalettes/0", QVariant());
    store.setValue("RecentPalettes/3", "good.map");
    store.setValue("RecentPalettes/12", "beyond.map");
    store.setValue("RecentStacks/0name0", "17");
    store.setValue("RecentStacks/0channels", "several");
    store.setValue("RecentStacks/0timepoints", -4);
    store.setValue("RecentStacks/2channels", 3);
    store.setValue("RecentStacks/3name1", "no first element");
    store.setValue("RecentStacks/what", QByteArray("\0\1", 2));
    const RecentLists read = RecentLists::read(store);
    EXPECT_EQ(read.palettes(), QStringList({"good.map"}));
    ASSERT_EQ(read.stacks().size(), 1U);
    EXPECT_EQ(read.stacks()[0].channels, 0);
    EXPECT_EQ(read.stacks()[0].timePoints, 0);
}

TEST_F(RecentStore, AnEmptyOneGivesEmptyLists)
{
    EXPECT_TRUE(RecentLists::read(store).stacks().empty());
    EXPECT_TRUE(RecentLists::read(store).palettes().isEmpty());
}

TEST_F(RecentStore, ARawStackComesBackWithItsLayout)
{
    RecentLists lists;
    RecentStack raw = stackOf("a.raw", 3);
    raw.raw = RawLayout{5000000000, 10, 4, 5, 16, true};
    lists.addStack(stackOf("b.pic"));
    lists.addStack(raw);
    lists.write(store);
    store.sync();
    QSettings again = reopened();
    ASSERT_EQ(RecentLists::read(again).stacks().size(), 2U);
    EXPECT_EQ(RecentLists::read(again).stacks()[0], raw);
    EXPECT_EQ(RecentLists::read(again).stacks()[1], stackOf("b.pic"));
    // A stack with a header in its place has none of it.
    RecentLists others;
    others.addStack(stackOf("c.pic"));
    others.write(store);
    EXPECT_EQ(RecentLists::read(store).stacks()[0], stackOf("c.pic"));
}

TEST_F(RecentStore, ALayoutThatCannotBeIsNone)
{
    RecentLists lists;
    lists.addStack(stackOf("a.raw"));
    lists.write(store);
    for (const QStringList& numbers :
         {QStringList{"0", "10", "4", "5", "16"}, QStringList{"-1", "10", "4", "5", "16", "0"},
          QStringList{"0", "0", "4", "5", "16", "0"}, QStringList{"0", "10", "4", "70000", "16", "0"},
          QStringList{"0", "10", "4", "5", "12", "0"}, QStringList{"0", "10", "x", "5", "16", "0"}}) {
        store.setValue("RecentStacks/0raw", numbers);
        EXPECT_FALSE(RecentLists::read(store).stacks()[0].raw) << numbers.join(' ').toStdString();
    }
}

} // namespace
} // namespace tirn
