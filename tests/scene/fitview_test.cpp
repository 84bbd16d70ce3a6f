#include "scene/fitview.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "scene/sceneedits.h"

namespace tirn {
namespace {

StackGeometry box(int x, int y, int z) { return StackGeometry::of(x, y, z, 1024); }

ViewState turnedBy(double x, double y, double z, RenderMode mode = RenderMode::Normal)
{
    ViewState view;
    view.rotX = x;
    view.rotY = y;
    view.rotZ = z;
    view.renderMode = mode;
    view.ortho = projectionOf(mode);
    return view;
}

/// Where an axis of the volume points to, as it is seen.
Vector3 seen(const ViewState& view, const Vector3& axis)
{
    const Matrix4f m = rotationMatrix(view.rotX, view.rotY, view.rotZ);
    const auto row = [&](std::size_t i) { return m[i] * axis.x + m[4 + i] * axis.y + m[8 + i] * axis.z; };
    return {row(0), row(1), row(2)};
}

TEST(FittedZoom, FillsNineTenthsOfTheWindow)
{
    // The longest side goes from -1 to 1.
    EXPECT_NEAR(fittedZoom({}, {}, box(64, 32, 16)), 0.9, 1e-6);
    EXPECT_NEAR(fittedZoom({}, {0.05, 0.05, 1}, box(64, 32, 16)), 20 * 0.9, 1e-5);
    EXPECT_NEAR(fittedZoom({}, {0.5, 2, 1}, box(64, 32, 16)), 0.9, 1e-6) << "y is as long as x is";
}

TEST(FittedZoom, MeasuresTheBoxAsItIsTurned)
{
    const double half = std::sqrt(0.5) * (1 + 0.25);
    EXPECT_NEAR(fittedZoom(turnedBy(0, 45, 0), {}, box(64, 32, 16)), 0.9 / half, 1e-6);
    // On its side it is as wide as it is deep, and as high as it was.
    EXPECT_NEAR(fittedZoom(turnedBy(0, 90, 0), {}, box(64, 32, 16)), 0.9 / 0.5, 1e-6);
}

TEST(FittedZoom, HoldsAllFourViews)
{
    const ViewState view = turnedBy(0, 90, 0, RenderMode::FourViews);
    // The quarter is one unit to each side; the flat views show the longest side, too.
    EXPECT_NEAR(fittedZoom(view, {}, box(64, 32, 16)), 0.9, 1e-6);
}

TEST(FittedZoom, KeepsAVolumeInPerspectiveWithinTheWindow)
{
    for (const double angle : {0.0, 30.0, 77.0}) {
        const ViewState view = turnedBy(angle, 2 * angle, 0, RenderMode::Anaglyph);
        const StackGeometry geometry = box(64, 32, 16);
        const double zoom = fittedZoom(view, {}, geometry);
        double largest = 0;
        for (int corner = 0; corner < 8; ++corner) {
            const Vector3 at = seen(view, {(corner & 1 ? 1.0 : -1.0), (corner & 2 ? 0.5 : -0.5),
                                           (corner & 4 ? 0.25 : -0.25)}) *
                               zoom;
            // The eye stands at z = 2 and sees 30 degrees to each side.
            const double room = (2 - at.z) * std::tan(std::numbers::pi / 6);
            ASSERT_GT(room, 0);
            largest = std::max({largest, std::abs(at.x) / room, std::abs(at.y) / room});
        }
        EXPECT_NEAR(largest, 0.9, 1e-6) << angle;
    }
}

TEST(FittedZoom, HasBounds)
{
    EXPECT_EQ(fittedZoom({}, {1e-6, 1e-6, 1e-6}, box(2, 2, 2)), kMostZoom);
    EXPECT_EQ(fittedZoom({}, {1e6, 1e6, 1e6}, box(2, 2, 2)), kLeastZoom);
}

TEST(FitView, PutsTheVolumeInTheMiddle)
{
    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    Scene scene;
    scene.view.transX = 3;
    scene.view.zoom = 7;
    fitView(scene);
    EXPECT_EQ(scene.view.transX, 0);
    EXPECT_EQ(scene.view.zoom, 7) << "without a volume there is nothing to measure";
    scene.arrays.push_back(test::makeVolume({test::denseStack(8, 8, 8)}, {}));
    scene.currentIndex = 0;
    fitView(scene);
    EXPECT_NEAR(scene.view.zoom, 0.9, 1e-6);
}

TEST(ResetView, IsThatOfTheStart)
{
    Scene scene;
    scene.arrays.push_back(std::make_unique<VoxelArray>(8, 8, 8, VolumeOptions()));
    scene.currentIndex = 0;
    scene.current()->baseScale = {1, 1, 3};
    scene.current()->scale = {5, 5, 5};
    scene.view = turnedBy(10, 20, 30);
    scene.view.transY = 1;
    scene.view.zoom = 4;
    scene.view.spinX = 9;
    resetView(scene);
    EXPECT_EQ(scene.view, ViewState());
    EXPECT_EQ(scene.current()->scale, (AxisScale{1, 1, 3}));
}

TEST(ViewSides, TurnTheirFaceToTheViewer)
{
    const std::pair<ViewSide, Vector3> sides[] = {
        {ViewSide::Front, {0, 0, 1}}, {ViewSide::Back, {0, 0, -1}}, {ViewSide::Left, {-1, 0, 0}},
        {ViewSide::Right, {1, 0, 0}}, {ViewSide::Top, {0, 1, 0}},   {ViewSide::Bottom, {0, -1, 0}}};
    for (const auto& [side, outward] : sides) {
        ViewState view = turnedBy(12, 34, 56);
        view.spinX = 3;
        lookAt(view, side);
        EXPECT_EQ(seen(view, outward), (Vector3{0, 0, 1})) << static_cast<int>(side);
        EXPECT_FALSE(view.isSpinning());
    }
}

TEST(TranslateOnScreen, GoesWhereTheMouseGoes)
{
    ViewState view = turnedBy(40, 110, 250);
    translateOnScreen(view, 0.5, -0.25, 0.125);
    const Vector3 moved = seen(view, {view.transX, view.transY, view.transZ});
    EXPECT_NEAR(moved.x, 0.5, 1e-6);
    EXPECT_NEAR(moved.y, -0.25, 1e-6);
    EXPECT_NEAR(moved.z, 0.125, 1e-6);
}

TEST(Zoom, MultipliesWhatIsDrawnAndNotWhatIsStated)
{
    Scene scene;
    scene.arrays.push_back(std::make_unique<VoxelArray>(8, 8, 8, VolumeOptions()));
    scene.currentIndex = 0;
    scene.current()->scale = {1, 2, 3};
    scene.view.zoom = 2;
    const FrameState frame = takeFrameState(scene);
    EXPECT_EQ(frame.scale, (AxisScale{2, 4, 6}));
    EXPECT_EQ(frame.ownScale, (AxisScale{1, 2, 3}));
}

} // namespace
} // namespace tirn
