#include "scene/eyeroom.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// A cube of 16 voxels: its box is 2 units wide, from -1 to 1.
const StackGeometry kCube = StackGeometry::of(16, 16, 16, 1024);

ViewState anaglyph()
{
    ViewState view;
    view.renderMode = RenderMode::Anaglyph;
    view.camera.eyesep = 0;
    return view;
}

TEST(EyeRoom, IsWithoutLimitInFlatViews)
{
    ViewState view;
    EXPECT_TRUE(std::isinf(growthBeforeEyes(view, {1, 1, 1}, kCube)));
    view.renderMode = RenderMode::FourViews;
    EXPECT_TRUE(std::isinf(growthBeforeEyes(view, {1, 1, 1}, kCube)));
}

// The eye stands at 2, sees from 0.1 before it on, and the box ends at 1.
TEST(EyeRoom, EndsWhereTheFrontMeetsTheNearestThatAnEyeSees)
{
    EXPECT_NEAR(growthBeforeEyes(anaglyph(), {1, 1, 1}, kCube), 1.9, 1e-9);
    EXPECT_NEAR(growthBeforeEyes(anaglyph(), {1, 1, 0.5}, kCube), 3.8, 1e-9);
    for (const RenderMode mode : {RenderMode::FullscreenStereo, RenderMode::Stereo}) {
        ViewState view = anaglyph();
        view.renderMode = mode;
        EXPECT_NEAR(growthBeforeEyes(view, {1, 1, 1}, kCube), 1.9, 1e-9);
    }
}

TEST(EyeRoom, FollowsTheRotation)
{
    ViewState view = anaglyph();
    view.rotY = 90;
    // x runs along the line of sight now.
    EXPECT_NEAR(growthBeforeEyes(view, {0.5, 1, 1}, kCube), 3.8, 1e-9);
    view.rotY = 45;
    // An edge comes first: both faces are 2 / sqrt(2) away.
    EXPECT_NEAR(growthBeforeEyes(view, {1, 1, 1}, kCube), std::sqrt(2.0) - 0.1, 1e-9);
}

TEST(EyeRoom, FollowsTheTranslation)
{
    ViewState view = anaglyph();
    view.transZ = 0.5;
    EXPECT_NEAR(growthBeforeEyes(view, {1, 1, 1}, kCube), 1.4, 1e-9);
    view.transZ = 0;
    view.transX = 3;
    // It stands beside the eye: growing in z does no harm until its side comes.
    EXPECT_NEAR(growthBeforeEyes(view, {1, 1, 1}, kCube), 2.9, 1e-9);
}

TEST(EyeRoom, IsThatOfTheNearerEye)
{
    ViewState view = anaglyph();
    view.camera.eyesep = 2;
    view.transX = 3;
    // The right eye stands at x = 1, 2 from the middle of the volume; so does its z.
    EXPECT_NEAR(growthBeforeEyes(view, {1, 1, 1}, kCube), 1.9, 1e-9);
}

TEST(EyeRoom, IsOneOrLessWhereTheEyeIsInside)
{
    EXPECT_LT(growthBeforeEyes(anaglyph(), {3, 3, 3}, kCube), 1);
}

} // namespace
} // namespace tirn
