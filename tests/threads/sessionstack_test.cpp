// A stack as a session remembers it.

#include <QDir>

#include "threads/sessionstack.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

class SessionStack : public LoadRig
{
protected:
    QDomElement parse(const QString& content)
    {
        EXPECT_TRUE(m_document.setContent("<stack>" + content + "</stack>"));
        return m_document.documentElement();
    }
    bool read(const QString& content, const MissingFileQuestion& question = {})
    {
        return readSessionStack(parse(content), description, nullptr, question);
    }

private:
    QDomDocument m_document;
};

const char* const kSlices = "<slices first='0' last='3' step='1' subsample='0'/>";

QString fileElement(const QString& name) { return "<file>" + name + "</file>"; }

TEST_F(SessionStack, AWholeElementFillsTheDescription)
{
    const QString first = pic("a.pic");
    const QString second = pic("b.pic");
    ASSERT_TRUE(
        read("<slices first='1' last='6' step='2' subsample='3'/><encoding type='32879' conserve='1'/>"
             "<resliced slices='9'/><cutplanes xmin='1' xmax='2' ymin='3' ymax='4' zmin='5' zmax='6'/>"
             "<timepoint label='10:00:00'>" +
             fileElement(first) + fileElement(second) + "</timepoint><timepoint label='10:00:05'>" +
             fileElement(second) +
             "</timepoint><channel palette='4' state='1'><ZCurve saved='0'>1\n1.5\n2\n</ZCurve></channel>"
             "<channel/>"));
    EXPECT_TRUE(description.partial);
    EXPECT_EQ(description.first, 1);
    EXPECT_EQ(description.last, 6);
    EXPECT_EQ(description.step, 2);
    EXPECT_EQ(description.subsample, 3);
    EXPECT_TRUE(description.reslice);
    EXPECT_EQ(description.resliceZ, 9);
    EXPECT_EQ(description.crop, (CropLimits{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(description.labels, QStringList({"10:00:00", "10:00:05"}));
    EXPECT_EQ(description.filesToLoad, (std::vector<QStringList>{{first, second}, {second}}));
    EXPECT_EQ(description.timePoints, 2);
    EXPECT_EQ(description.channels, 2);
    EXPECT_EQ(description.paletteIndexes, (std::vector<int>{4, 0}));
    EXPECT_EQ(description.channelStates, (std::vector<int>{1, 0}));
    ASSERT_EQ(description.zCurves.size(), 1U);
    EXPECT_EQ(*description.zCurves[0].curve(), (std::vector<double>{1, 1.5, 2}));
    EXPECT_EQ(description.textureTarget, static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_TRUE(description.conserveMemory);
    EXPECT_TRUE(log.contains("file " + first));
}

TEST_F(SessionStack, WhatIsMissingHasItsDefault)
{
    ASSERT_TRUE(read("<timepoint>" + fileElement(pic("a.pic")) + "</timepoint><channel/>"));
    EXPECT_EQ(description.first, 0);
    EXPECT_EQ(description.last, 0);
    EXPECT_EQ(description.step, 0);
    EXPECT_EQ(description.subsample, 0);
    EXPECT_FALSE(description.reslice);
    EXPECT_EQ(description.crop, CropLimits());
    EXPECT_TRUE(description.labels.isEmpty());
    EXPECT_TRUE(description.zCurves.empty());
    EXPECT_EQ(description.textureTarget, static_cast<GLenum>(GL_TEXTURE_2D));
    EXPECT_FALSE(description.conserveMemory);
}

TEST_F(SessionStack, SlicesThatAreNotStatedFollowFromTheRange)
{
    const QString rest = "<timepoint>" + fileElement(pic("a.pic")) + "</timepoint><channel/>";
    ASSERT_TRUE(read("<slices first='2' last='9' step='3'/><resliced/>" + rest));
    EXPECT_TRUE(description.reslice);
    EXPECT_EQ(description.resliceZ, 2);
    ASSERT_TRUE(read("<slices first='2' last='9' step='3'/><resliced slices='0'/>" + rest));
    EXPECT_FALSE(description.reslice);
    ASSERT_TRUE(read("<resliced/>" + rest));
    EXPECT_FALSE(description.reslice);
}

TEST_F(SessionStack, WithoutChannelsOrTimePointsThereIsNothing)
{
    EXPECT_FALSE(read("<timepoint>" + fileElement(pic("a.pic")) + "</timepoint>"));
    EXPECT_FALSE(read("<channel/>"));
    EXPECT_EQ(log.warnings(), QStringList({"session stack missing channels or points!",
                                           "session stack missing channels or points!"}));
    EXPECT_TRUE(description.filesToLoad.empty());
}

TEST_F(SessionStack, AStackWithoutChannelsLoadsNothingQuietly)
{
    description.session = parse("<timepoint>" + fileElement(pic("a.pic")) + "</timepoint>");
    EXPECT_FALSE(load());
    EXPECT_EQ(log.warnings(), QStringList("session stack missing channels or points!"));
    EXPECT_TRUE(reports.steps().isEmpty());
}

TEST_F(SessionStack, NamesAreRelativeToTheCurrentDirectory)
{
    pic("a.pic");
    const QString before = QDir::currentPath();
    QDir::setCurrent(path(""));
    EXPECT_TRUE(read("<timepoint>" + fileElement("a.pic") + "<file/></timepoint><channel/>"));
    QDir::setCurrent(before);
    ASSERT_EQ(description.filesToLoad.size(), 1U);
    ASSERT_EQ(description.filesToLoad[0].size(), 1);
    EXPECT_TRUE(QFileInfo(description.filesToLoad[0][0]).isAbsolute());
    EXPECT_TRUE(QFileInfo::exists(description.filesToLoad[0][0]));
}

TEST_F(SessionStack, AMissingFileWithoutAnotherOneEndsTheLoad)
{
    const QString content = "<timepoint>" + fileElement(pic("a.pic")) + "</timepoint><timepoint>" +
                            fileElement(path("gone.pic")) + "</timepoint><channel/>";
    QStringList asked;
    EXPECT_FALSE(read(content, [&](QDomText& text) {
        asked.append(text.data());
        return false;
    }));
    EXPECT_EQ(asked, QStringList(path("gone.pic")));
    EXPECT_TRUE(description.filesToLoad.empty());
    EXPECT_FALSE(read(content));
}

TEST_F(SessionStack, AReplacedFileStillGoesIntoTheListByItsOldName)
{
    const QString other = pic("other.pic");
    const QString content = "<timepoint>" + fileElement(path("gone.pic")) + "</timepoint><channel/>";
    EXPECT_TRUE(read(content, [&](QDomText& text) {
        text.setData(other);
        return true;
    }));
    EXPECT_EQ(description.filesToLoad, (std::vector<QStringList>{{path("gone.pic")}}));
}

TEST_F(SessionStack, ASavedStackComesBack)
{
    describePics(2);
    description.setRange(0, 2, 1, 0, GL_TEXTURE_3D, false, 0, false);
    auto saved = load();
    ASSERT_TRUE(saved);
    VoxelArray& array = *saved->array;
    array.scale = {0.5, 1, 2};
    array.preserveScaleRatio = true;
    array.cut = {1, 4, 1, 3, 0, 1};
    array.timeLabels() = QStringList{"one", "two"};
    array.channels()[0].display = {ChannelState::Hidden, 0, 1};
    array.channels()[0].zCurve[1] = 1.25;
    QDomDocument document;
    const QDomElement element = array.saveSession(document, path("s.tir"));

    const QString before = QDir::currentPath();
    QDir::setCurrent(path(""));
    description = LoadDescription();
    description.session = element;
    surroundings.paletteCount = 2;
    const auto loaded = load();
    QDir::setCurrent(before);
    ASSERT_TRUE(loaded);
    const VoxelArray& back = *loaded->array;
    EXPECT_EQ(back.depth(), 3);
    EXPECT_EQ(back.timePointCount(), 2);
    EXPECT_EQ(back.textureTarget(), static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_EQ(back.scale, array.scale);
    EXPECT_TRUE(back.preserveScaleRatio);
    EXPECT_EQ(back.cut, array.cut);
    EXPECT_EQ(back.timeLabels(), array.timeLabels());
    EXPECT_EQ(back.channels()[0].display.state, ChannelState::Hidden);
    EXPECT_EQ(back.channels()[0].display.palette, 1);
    EXPECT_EQ(back.channels()[0].zCurve[1], 1.25);
    EXPECT_TRUE(loaded->palettes.empty());
}

} // namespace
} // namespace tirn::test
