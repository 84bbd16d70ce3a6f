// A stack as a session remembers it.

#include <QDir>

#include "session/sessionstack.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/qtprint.h"

namespace tirn::test {
namespace {

class StackOfASession : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    /// A file that is there.
    QString file(const QString& name) const { return saveBytes(path(name), "x"); }
    std::optional<SessionStack> read(const QString& content, const MissingFileQuestion& question = {})
    {
        EXPECT_TRUE(m_document.setContent("<stack>" + content + "</stack>"));
        return readSessionStack(m_document.documentElement(), question);
    }

    LogCapture log;

private:
    QTemporaryDir m_directory;
    QDomDocument m_document;
};

QString fileElement(const QString& name) { return "<file>" + name + "</file>"; }

TEST_F(StackOfASession, AWholeElementIsRead)
{
    const QString first = file("a.pic");
    const QString second = file("b.pic");
    const auto stack =
        read("<slices first='1' last='6' step='2' subsample='3'/><encoding type='32879' conserve='1'/>"
             "<resliced slices='9'/><cutplanes xmin='1' xmax='2' ymin='3' ymax='4' zmin='5' zmax='6'/>"
             "<scale x='0.5' y='1' z='2.25' preserve='1'/><dimensions x='0.1' y='0.2' z='0.7'/>"
             "<timepoint label='10:00:00'>" +
             fileElement(first) + fileElement(second) + "</timepoint><timepoint>" + fileElement(second) +
             "</timepoint><channel palette='4' second='2' state='1'><ZCurve saved='0'>1\n1.5\n2\n</ZCurve>"
             "</channel><channel/>");
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->first, 1);
    EXPECT_EQ(stack->last, 6);
    EXPECT_EQ(stack->step, 2);
    EXPECT_EQ(stack->subsample, 3);
    EXPECT_EQ(stack->encoding, kSessionMaps3D);
    EXPECT_TRUE(stack->conserveMemory);
    EXPECT_EQ(stack->reslicedTo, 9);
    EXPECT_EQ(stack->cut, (CropLimits{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(stack->sizes.scale, (std::array{0.5, 1.0, 2.25}));
    EXPECT_TRUE(stack->sizes.preserveScaleRatio);
    EXPECT_EQ(stack->sizes.voxelSize, (std::array{0.1, 0.2, 0.7}));
    ASSERT_EQ(stack->timePoints.size(), 2U);
    EXPECT_EQ(stack->timePoints[0].label, "10:00:00");
    EXPECT_EQ(stack->timePoints[0].files, QStringList({first, second}));
    EXPECT_TRUE(stack->timePoints[1].label.isNull());
    EXPECT_EQ(stack->timePoints[1].files, QStringList(second));
    ASSERT_EQ(stack->channels.size(), 2U);
    EXPECT_EQ(stack->channels[0].palette, 4);
    EXPECT_EQ(stack->channels[0].secondPalette, 2);
    EXPECT_EQ(stack->channels[0].state, 1);
    ASSERT_TRUE(stack->channels[0].curve);
    EXPECT_EQ(*stack->channels[0].curve->curve(), (std::vector<double>{1, 1.5, 2}));
    EXPECT_FALSE(stack->channels[1].curve);
    EXPECT_FALSE(stack->raw);
    EXPECT_TRUE(stack->isOld);
    EXPECT_TRUE(log.contains("file " + first));
}

TEST_F(StackOfASession, WhatIsMissingHasItsDefault)
{
    const auto stack = read("<timepoint>" + fileElement(file("a.pic")) + "</timepoint><channel/>");
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->first, 0);
    EXPECT_EQ(stack->last, 0);
    EXPECT_EQ(stack->step, 0);
    EXPECT_EQ(stack->subsample, 0);
    EXPECT_FALSE(stack->reslicedTo);
    EXPECT_EQ(stack->cut, CropLimits());
    EXPECT_EQ(stack->encoding, kSessionMaps2D);
    EXPECT_FALSE(stack->conserveMemory);
    EXPECT_EQ(stack->sizes.scale, (std::array{-1.0, -1.0, -1.0}));
    EXPECT_FALSE(stack->sizes.preserveScaleRatio);
    EXPECT_EQ(stack->sizes.voxelSize, (std::array{-1.0, -1.0, -1.0}));
    EXPECT_EQ(stack->channels[0].palette, 0);
    EXPECT_EQ(stack->channels[0].secondPalette, 0);
    EXPECT_EQ(stack->channels[0].state, 0);
}

TEST_F(StackOfASession, SlicesThatAreNotStatedFollowFromTheRange)
{
    const QString rest = "<timepoint>" + fileElement(file("a.pic")) + "</timepoint><channel/>";
    EXPECT_EQ(read("<slices first='2' last='9' step='3'/><resliced/>" + rest)->reslicedTo, 2);
    EXPECT_FALSE(read("<slices first='2' last='9' step='3'/><resliced slices='0'/>" + rest)->reslicedTo);
    EXPECT_FALSE(read("<resliced/>" + rest)->reslicedTo);
}

TEST_F(StackOfASession, WithoutChannelsOrTimePointsThereIsNothing)
{
    EXPECT_FALSE(read("<timepoint>" + fileElement(file("a.pic")) + "</timepoint>"));
    EXPECT_FALSE(read("<channel/>"));
    EXPECT_EQ(log.warnings(), QStringList({"session stack missing channels or points!",
                                           "session stack missing channels or points!"}));
}

TEST_F(StackOfASession, NamesAreRelativeToTheCurrentDirectory)
{
    file("a.pic");
    const QString before = QDir::currentPath();
    QDir::setCurrent(path(""));
    const auto stack = read("<timepoint>" + fileElement("a.pic") + "<file/></timepoint><channel/>");
    QDir::setCurrent(before);
    ASSERT_TRUE(stack);
    ASSERT_EQ(stack->timePoints[0].files.size(), 1);
    EXPECT_TRUE(QFileInfo(stack->timePoints[0].files[0]).isAbsolute());
    EXPECT_TRUE(QFileInfo::exists(stack->timePoints[0].files[0]));
}

TEST_F(StackOfASession, AMissingFileWithoutAnotherOneEndsTheReading)
{
    const QString content = "<timepoint>" + fileElement(file("a.pic")) + "</timepoint><timepoint>" +
                            fileElement(path("gone.pic")) + "</timepoint><channel/>";
    QStringList asked;
    EXPECT_FALSE(read(content, [&](QDomText& text) {
        asked.append(text.data());
        return false;
    }));
    EXPECT_EQ(asked, QStringList(path("gone.pic")));
    EXPECT_FALSE(read(content));
}

TEST_F(StackOfASession, AReplacedFileStillGoesIntoTheListByItsOldName)
{
    const QString other = file("other.pic");
    const auto stack =
        read("<timepoint>" + fileElement(path("gone.pic")) + "</timepoint><channel/>", [&](QDomText& text) {
            text.setData(other);
            return true;
        });
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->timePoints[0].files, QStringList(path("gone.pic")));
}

TEST_F(StackOfASession, ALayoutThatNoFileCanHaveIsNone)
{
    for (const char* layout :
         {"", "0 1 1 1 8", "-1 1 1 1 8 0", "0 0 1 1 8 0", "0 1 1 70000 8 0", "0 1 1 1 12 0", "a b"})
        EXPECT_FALSE(read("<raw layout='" + QString(layout) + "'/><timepoint/><channel/>")->raw) << layout;
    EXPECT_EQ(read("<raw layout='4 3 2 1 8 0'/><timepoint/><channel/>")->raw,
              (RawLayout{4, 3, 2, 1, 8, false}));
}

TEST_F(StackOfASession, WhatWasWrittenIsReadAgain)
{
    SessionStack stack;
    stack.first = 1;
    stack.last = 2;
    stack.step = 1;
    stack.cut = {0, 1, 2, 3, 4, 5};
    stack.sizes = {{0.25, 1, 3}, true, {0.1, 0.2, 0.3}};
    stack.raw = RawLayout{16, 3, 2, 5, 16, true};
    stack.timePoints = {{"one", {file("a.pic"), file("b.pic")}}, {"two", {file("c.pic"), file("d.pic")}}};
    ZCurve curve(2);
    curve[1] = 1.5;
    stack.channels = {{3, 1, 6, curve}, {0, 2, 0, std::nullopt}};
    QDomDocument document;
    const QDomElement element = writeSessionStack(document, stack, path(""));
    EXPECT_EQ(element.firstChildElement("timepoint").firstChildElement("file").text(), "a.pic");

    const QString before = QDir::currentPath();
    QDir::setCurrent(path(""));
    const auto back = readSessionStack(element, {});
    QDir::setCurrent(before);
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->isOld);
    EXPECT_EQ(back->last, 2);
    EXPECT_EQ(back->raw, stack.raw);
    EXPECT_EQ(back->cut, stack.cut);
    EXPECT_EQ(back->sizes.scale, stack.sizes.scale);
    EXPECT_EQ(back->sizes.voxelSize, stack.sizes.voxelSize);
    ASSERT_EQ(back->timePoints.size(), 2U);
    EXPECT_EQ(back->timePoints[1].label, "two");
    EXPECT_EQ(back->timePoints[1].files, stack.timePoints[1].files);
    ASSERT_EQ(back->channels.size(), 2U);
    EXPECT_EQ(back->channels[0].palette, 3);
    EXPECT_EQ(back->channels[0].secondPalette, 1);
    EXPECT_EQ(back->channels[0].state, 6);
    EXPECT_EQ((*back->channels[0].curve)[1], 1.5);
    EXPECT_EQ(back->channels[1].secondPalette, 2);
}

} // namespace
} // namespace tirn::test
