// Pictures for two eyes where arithmetic by hand says they are, and the four views.

#include <cmath>

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "scene/sceneedits.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

constexpr int kSide = 256;

using Point = std::array<double, 3>;

Point minus(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double along(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// The pixel at which an eye at (x, 0, 2) that looks at (0, 0, `focus`) sees a point; the picture is 60
/// degrees high.
std::array<double, 2> seenAt(const Point& point, double x, double focus)
{
    const Point eye = {x, 0, 2};
    const Point sight = {-x, 0, focus - 2};
    const double length = std::hypot(sight[0], sight[2]);
    const Point forward = {sight[0] / length, 0, sight[2] / length};
    // Forward times up.
    const Point side = {-forward[2], 0, forward[0]};
    const Point to = minus(point, eye);
    const double reach = along(to, forward) * std::tan(std::acos(-1.0) / 6);
    return {(along(to, side) / reach + 1) / 2 * kSide - 0.5, (1 - to[1] / reach) / 2 * kSide - 0.5};
}

/// The middle of all pixels that a colour covers.
std::array<double, 2> middleOf(const QImage& picture, int (*colour)(QRgb))
{
    double sum = 0;
    std::array<double, 2> middle = {};
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int value = colour(picture.pixel(x, y));
            sum += value;
            middle[0] += x * value;
            middle[1] += y * value;
        }
    }
    return sum > 0 ? std::array{middle[0] / sum, middle[1] / sum} : std::array{-1.0, -1.0};
}

/// One colour of a picture, pixel by pixel.
std::vector<int> partOf(const QImage& picture, int (*colour)(QRgb))
{
    std::vector<int> part;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            part.push_back(colour(picture.pixel(x, y)));
    }
    return part;
}

bool isDark(const std::vector<int>& part)
{
    return std::all_of(part.begin(), part.end(), [](int value) { return value == 0; });
}

class Anaglyphs : public ::testing::Test
{
protected:
    void show(const PlainStack& stack)
    {
        rig.show({stack});
        rig.setTables({rampTable(256, {1, 1, 1}, 1)});
        setRenderMode(rig.scene.view, RenderMode::Anaglyph);
    }
    QImage draw(int pair)
    {
        rig.scene.view.filterColors = pair;
        return rig.draw();
    }

    RenderRig rig{{kSide, kSide}};
};

/// A cube of 16 voxels spans -1 to 1; slices along z lie between 0.996 and -0.996.
Point placeOf(int x, int y, int z) { return {(x + 0.5) / 8 - 1, 1 - (y + 0.5) / 8, 0.996 - z * 1.992 / 15}; }

TEST_F(Anaglyphs, ShowEachEyeWhatItSees)
{
    for (const std::array<int, 3>& at : {std::array{4, 6, 2}, std::array{8, 8, 13}, std::array{11, 3, 7}}) {
        PlainStack stack = PlainStack::blank(16, 16, 16);
        stack.at(at[0], at[1], at[2]) = 255;
        show(stack);
        for (const double focalLength : {1.0, 2.0, 3.0}) {
            rig.scene.view.camera.eyesep = 0.3;
            rig.scene.view.camera.focalLength = focalLength;
            const QImage picture = draw(0);
            const Point place = placeOf(at[0], at[1], at[2]);
            const auto left = seenAt(place, -0.15, 2 - focalLength);
            const auto right = seenAt(place, 0.15, 2 - focalLength);
            EXPECT_NEAR(middleOf(picture, qRed)[0], left[0], 1) << at[2] << " " << focalLength;
            EXPECT_NEAR(middleOf(picture, qRed)[1], left[1], 1) << at[2] << " " << focalLength;
            EXPECT_NEAR(middleOf(picture, qBlue)[0], right[0], 1) << at[2] << " " << focalLength;
            EXPECT_NEAR(middleOf(picture, qBlue)[1], right[1], 1) << at[2] << " " << focalLength;
        }
    }
}

TEST_F(Anaglyphs, OfAllPairsShowThePicturesOfTheEyesInTheirColours)
{
    show(denseStack(16, 16, 16));
    rig.scene.view.rotX = 20;
    rig.scene.view.rotY = 30;
    const QImage first = draw(0);
    const std::vector<int> left = partOf(first, qRed);
    const std::vector<int> right = partOf(first, qBlue);
    ASSERT_NE(left, right);
    EXPECT_TRUE(isDark(partOf(first, qGreen)));
    struct Expected
    {
        const char* red;
        const char* green;
        const char* blue;
    };
    // Which eye each colour belongs to.
    const Expected pairs[] = {{"left", "", "right"}, {"left", "right", "right"}, {"left", "right", ""},
                              {"right", "", "left"}, {"right", "left", "left"},  {"right", "left", ""}};
    for (int pair = 0; pair < 6; ++pair) {
        const QImage picture = draw(pair);
        const auto isOf = [&](int (*colour)(QRgb), const std::string& eye) {
            const std::vector<int> part = partOf(picture, colour);
            return eye.empty() ? isDark(part) : part == (eye == "left" ? left : right);
        };
        EXPECT_TRUE(isOf(qRed, pairs[pair].red)) << pair;
        EXPECT_TRUE(isOf(qGreen, pairs[pair].green)) << pair;
        EXPECT_TRUE(isOf(qBlue, pairs[pair].blue)) << pair;
    }
}

TEST_F(Anaglyphs, WithoutEyeSeparationAreTwoIdenticalViews)
{
    show(denseStack(16, 16, 16));
    rig.scene.view.rotY = 40;
    rig.scene.view.camera.eyesep = 0;
    const QImage picture = draw(0);
    EXPECT_FALSE(isDark(partOf(picture, qRed)));
    EXPECT_EQ(partOf(picture, qRed), partOf(picture, qBlue));
}

TEST_F(Anaglyphs, LeaveAllColoursAndTheirOwnProjectionToTheModeThatFollows)
{
    show(denseStack(16, 16, 16));
    setRenderMode(rig.scene.view, RenderMode::Normal);
    const QImage before = rig.draw();
    for (const RenderMode mode : {RenderMode::Anaglyph, RenderMode::FourViews, RenderMode::Anaglyph}) {
        setRenderMode(rig.scene.view, mode);
        EXPECT_NE(rig.draw(), before);
    }
    setRenderMode(rig.scene.view, RenderMode::Normal);
    EXPECT_EQ(rig.draw(), before);
}

/// Each quarter is the picture of a view along an axis; the turned view is smaller.
TEST(FourViews, HaveTheirPlacesAndTheirSides)
{
    RenderRig rig({kSide, kSide});
    const PlainStack stack = denseStack(16, 16, 16);
    rig.show({stack});
    const std::vector<ColourTable> tables = {rampTable(256, {1, 0.6, 0.2}, 0.45)};
    rig.setTables(tables);
    setRenderMode(rig.scene.view, RenderMode::FourViews);
    const QImage picture = rig.draw();
    struct Quarter
    {
        int column;
        int row;
        std::array<int, 3> rotation;
        double scale;
        bool frontToBack;
    };
    const int half = kSide / 2;
    // The list of the YZ view is that of the other side, so that its near slices come first.
    const Quarter quarters[] = {{0, 1, {0, 0, 0}, 1, false},
                                {0, 0, {90, 0, 0}, 1, false},
                                {1, 0, {0, 270, 0}, 1, true},
                                {1, 1, {0, 0, 0}, 0.707, false}};
    for (const Quarter& quarter : quarters) {
        CompositorView view;
        view.rotation = quarter.rotation;
        view.scale = {quarter.scale, quarter.scale, quarter.scale};
        view.size = half;
        view.wrongOrder = quarter.frontToBack;
        const Picture seen = pictureOf(picture.copy(quarter.column * half, quarter.row * half, half, half));
        const PictureDifference difference = compare(compose(stack, tables, view), seen);
        EXPECT_TRUE(matches(difference)) << quarter.column << " " << quarter.row << ": " << difference.mean
                                         << " " << difference.percentile999;
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_FALSE(matches(compare(compose(mirrored(stack, axis), tables, view), seen))) << axis;
    }
}

} // namespace
} // namespace tirn::test
