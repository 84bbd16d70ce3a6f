#include "scene/pointing/viewprojection.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace tirn {
namespace {

constexpr QSize kSquare = {200, 200};

void expectAt(const ViewProjection& projection, const Vector3& point, double x, double y)
{
    const QPointF at = projection.project(point).at;
    EXPECT_NEAR(at.x(), x, 1e-4);
    EXPECT_NEAR(at.y(), y, 1e-4);
}

TEST(ViewProjection, TheSquareReachesFromMinusOneToOne)
{
    const ViewProjection projection(ViewState(), AxisScale(), kSquare);
    expectAt(projection, {0, 0, 0}, 100, 100);
    expectAt(projection, {1, 1, 0.5}, 200, 0);
    expectAt(projection, {-0.5, -1, 0}, 50, 200);
    EXPECT_LT(projection.project({0, 0, 1}).depth, projection.project({0, 0, 0}).depth);
    EXPECT_NEAR(projection.pixelsPerUnit({0, 0, 0}), 100, 1e-9);
}

TEST(ViewProjection, TheSquareStandsInTheMiddleOfTheWindow)
{
    expectAt(ViewProjection({}, {}, {300, 200}), {-1, 1, 0}, 50, 0);
    expectAt(ViewProjection({}, {}, {200, 300}), {1, -1, 0}, 200, 250);
    // An odd margin is larger above, where pixels are counted from.
    expectAt(ViewProjection({}, {}, {100, 201}), {-1, 1, 0}, 0, 51);
}

TEST(ViewProjection, ScalesThenMovesThenTurns)
{
    ViewState view;
    view.rotZ = 90;
    view.transX = 0.1;
    // x = 0.25 * 2 + 0.1 points up now.
    expectAt(ViewProjection(view, {2, 1, 1}, kSquare), {0.25, 0, 0}, 100, 40);
    view.rotZ = 0;
    view.transX = 0;
    view.yRotation = 90;
    // The additional rotation comes before the scale: z becomes x, and is as long as the scale of x.
    expectAt(ViewProjection(view, {2, 1, 1}, kSquare), {0, 0, 0.25}, 150, 100);
}

TEST(ViewProjection, FollowsTheBoundsOfTheProjection)
{
    ViewState view;
    view.ortho = {-2, 2, -2, 2, -2, 2};
    expectAt(ViewProjection(view, {}, kSquare), {1, 0, 0}, 150, 100);
}

TEST(ViewProjection, OfBothEyesIsSeenFromBetweenThem)
{
    ViewState view;
    view.renderMode = RenderMode::Anaglyph;
    const ViewProjection projection(view, {}, kSquare);
    expectAt(projection, {0, 0, 0}, 100, 100);
    // From a distance of 2 half the picture is 2 * tan 30 high.
    expectAt(projection, {0, 2 * std::tan(std::acos(-1.0) / 6), 0}, 100, 0);
    EXPECT_GT(projection.project({0.2, 0, 1}).at.x(), projection.project({0.2, 0, 0}).at.x());
    EXPECT_LT(projection.project({0, 0, 1}).depth, projection.project({0, 0, 0}).depth);
}

TEST(ViewProjection, GoesThereAndBackFromAnyPose)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(0, 360);
    std::uniform_real_distribution<double> place(-0.5, 0.5);
    const RenderMode modes[] = {RenderMode::Normal, RenderMode::Anaglyph, RenderMode::FullscreenStereo,
                                RenderMode::FourViews};
    for (int i = 0; i < 200; ++i) {
        ViewState view;
        view.renderMode = modes[i % 4];
        view.ortho = projectionOf(view.renderMode);
        view.rotX = angle(random);
        view.rotY = angle(random);
        view.rotZ = angle(random);
        view.yRotation = i % 3 == 0 ? angle(random) : 0;
        view.transX = place(random);
        view.transZ = place(random);
        const ViewProjection projection(view, {0.7, 1.4, 1.1 + place(random)}, {320, 240});
        const Vector3 point = {place(random), place(random), place(random)};
        const auto [from, direction] = projection.sightLine(projection.project(point).at);
        const Vector3 forward = normalize(direction);
        const Vector3 away = cross(point - from, forward);
        EXPECT_LT(std::sqrt(dot(away, away)), 1e-6);
        EXPECT_GT(dot(point - from, forward), 0) << "the line begins before the volume";
    }
}

TEST(ViewProjection, OfFourViewsIsThatOfTheQuarter)
{
    ViewState view;
    view.renderMode = RenderMode::FourViews;
    view.ortho = projectionOf(RenderMode::FourViews);
    view.rotY = 90;
    const auto at = [&](double x, double y) {
        return projectionAt(view, {1, 1, 1}, kSquare, {x, y}).value();
    };
    // The middle of each quarter is the middle of the volume.
    expectAt(at(10, 190), {0, 0, 0}, 50, 150);
    expectAt(at(10, 10), {0, 0, 0}, 50, 50);
    expectAt(at(190, 10), {0, 0, 0}, 150, 50);
    expectAt(at(190, 190), {0, 0, 0}, 150, 150);
    EXPECT_EQ(at(10, 190).orientation(), Orientation::XYForward);
    EXPECT_EQ(at(10, 10).orientation(), Orientation::XZForward);
    EXPECT_EQ(at(190, 10).orientation(), Orientation::YZReverse);
    EXPECT_EQ(at(190, 190).orientation(), Orientation::YZReverse);
    // Flat views are not turned with the volume, which is smaller.
    expectAt(at(10, 190), {0.5, 0, 0}, 75, 150);
    expectAt(at(190, 190), {0, 0, 0.5}, 150 + 25 * 0.707, 150);
}

TEST(ViewProjection, ThereIsNoneOutsideOfThePictureOrWithoutAVolume)
{
    const QSize wide(300, 100);
    EXPECT_FALSE(projectionAt({}, {}, wide, {99, 50}));
    EXPECT_TRUE(projectionAt({}, {}, wide, {101, 50}));
    EXPECT_FALSE(projectionAt({}, {}, wide, {201, 50}));
    EXPECT_FALSE(projectionAt({}, {}, wide, {150, 101}));
    ViewState view;
    view.renderMode = RenderMode::Stereo;
    EXPECT_FALSE(projectionAt(view, {}, wide, {150, 50}));
}

} // namespace
} // namespace tirn
