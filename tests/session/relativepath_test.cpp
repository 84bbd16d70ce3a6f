#include <QDir>

#include <gtest/gtest.h>

#include "session/relativepath.h"

namespace tirn {
namespace {

TEST(RelativePath, AFileBesideTheSessionIsItsBareName)
{
    EXPECT_EQ(relativePath("/data/a.pic", "/data"), "a.pic");
    EXPECT_EQ(relativePath("/data/a.pic", "/data/"), "a.pic");
}

TEST(RelativePath, AFileBelowKeepsItsFolders)
{
    EXPECT_EQ(relativePath("/data/x/y/a.pic", "/data"), "x/y/a.pic");
    EXPECT_EQ(relativePath("/data/a.pic", "/"), "data/a.pic");
}

TEST(RelativePath, EachFolderAboveIsTwoDots)
{
    EXPECT_EQ(relativePath("/data/a.pic", "/data/x/y"), "../../a.pic");
    EXPECT_EQ(relativePath("/a.pic", "/data"), "../a.pic");
    EXPECT_EQ(relativePath("/data/x/a.pic", "/data/xy/z"), "../../x/a.pic");
}

TEST(RelativePath, RelativeNamesAreThoseOfTheCurrentDirectory)
{
    EXPECT_EQ(relativePath("x/a.pic", "."), "x/a.pic");
    EXPECT_EQ(relativePath(QDir::currentPath() + "/x/../a.pic", "x"), "../a.pic");
}

TEST(RelativePath, AnotherRootIsWrittenAbsolute)
{
    EXPECT_EQ(relativeDirectory("D:/data", "C:/data"), "D:/data/");
    EXPECT_EQ(relativeDirectory("D:/", "C:/data"), "D:/");
    EXPECT_EQ(relativeDirectory("//server/share", "C:/data"), "//server/share/");
    EXPECT_EQ(relativeDirectory("C:/data/x", "C:/data/y"), "../x/");
}

} // namespace
} // namespace tirn
