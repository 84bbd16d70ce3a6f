#include <gtest/gtest.h>

#include "movies/moviename.h"
#include "support/qtprint.h"

namespace tirn {
namespace {

TEST(MovieName, AKnownExtensionIsReplaced)
{
    EXPECT_EQ(movieName("", MovieFormat::Png), "tirn0000.png");
    EXPECT_EQ(movieName("a.avi", MovieFormat::Tiff), "a.tif");
    EXPECT_EQ(movieName("a.mov", MovieFormat::Avi), "a.avi");
    EXPECT_EQ(movieName("a.raw", MovieFormat::Raw), "a.raw");
    EXPECT_EQ(movieName("a.png.tif", MovieFormat::Quicktime), "a.png.mov");
    EXPECT_EQ(movieName("a.jpg", MovieFormat::Png), "a.jpg.png");
    EXPECT_EQ(movieName("a.AVI", MovieFormat::Png), "a.AVI.png");
    EXPECT_EQ(movieName(".avi", MovieFormat::Png), ".png");
}

TEST(MovieName, AnEmptyNameStaysEmptyWhileItIsChosen)
{
    EXPECT_EQ(renamedForFormat("", MovieFormat::Png), "");
    EXPECT_EQ(renamedForFormat("a.tif", MovieFormat::Png), "a.png");
}

} // namespace
} // namespace tirn
