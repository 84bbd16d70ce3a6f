#include "scene/viewstate.h"

#include <cmath>

#include <gtest/gtest.h>

#include "render/glthread.h"

namespace tirn {
namespace {

using Matrix3 = std::array<std::array<double, 3>, 3>;

Matrix3 product(const Matrix3& a, const Matrix3& b)
{
    Matrix3 result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            for (std::size_t k = 0; k < 3; ++k)
                result[row][column] += a[row][k] * b[k][column];
    return result;
}

/// The rotation as the GL would multiply it up: about x, then about y, then about z.
Matrix3 turned(double xDegrees, double yDegrees, double zDegrees)
{
    const auto c = [](double degrees) { return std::cos(degrees * std::acos(-1.0) / 180); };
    const auto s = [](double degrees) { return std::sin(degrees * std::acos(-1.0) / 180); };
    const Matrix3 x = {{{1, 0, 0}, {0, c(xDegrees), -s(xDegrees)}, {0, s(xDegrees), c(xDegrees)}}};
    const Matrix3 y = {{{c(yDegrees), 0, s(yDegrees)}, {0, 1, 0}, {-s(yDegrees), 0, c(yDegrees)}}};
    const Matrix3 z = {{{c(zDegrees), -s(zDegrees), 0}, {s(zDegrees), c(zDegrees), 0}, {0, 0, 1}}};
    return product(x, product(y, z));
}

TEST(RotationMatrix, IsTheProductOfThreeTurns)
{
    for (const auto& [x, y, z] :
         {std::array{0.0, 0.0, 0.0}, std::array{30.0, 0.0, 0.0}, std::array{0.0, 70.0, 0.0},
          std::array{0.0, 0.0, 250.0}, std::array{12.5, 200.25, 359.0}, std::array{90.0, 270.0, 180.0},
          std::array{-90.0, 450.0, 720.0}}) {
        const Matrix4f seen = rotationMatrix(x, y, z);
        const Matrix3 expected = turned(x, y, z);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                EXPECT_NEAR(seen[4 * column + row], expected[row][column], 1e-6) << x << ' ' << y << ' ' << z;
            EXPECT_EQ(seen[4 * row + 3], 0.0F);
            EXPECT_EQ(seen[12 + row], 0.0F);
        }
        EXPECT_EQ(seen[15], 1.0F);
    }
}

TEST(RotationMatrix, IsExactAtQuarterTurns)
{
    EXPECT_EQ(rotationMatrix(90, 0, 0), (Matrix4f{1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(rotationMatrix(0, 180, 0), (Matrix4f{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
}

TEST(WrapDegrees, GivesZeroUpTo360)
{
    EXPECT_EQ(wrapDegrees(0), 0);
    EXPECT_EQ(wrapDegrees(359.5), 359.5);
    EXPECT_EQ(wrapDegrees(360), 0);
    EXPECT_EQ(wrapDegrees(725), 5);
    EXPECT_EQ(wrapDegrees(-1), 359);
    EXPECT_EQ(wrapDegrees(-725), 355);
    EXPECT_LT(wrapDegrees(-1e-20), 360);
    EXPECT_EQ(wrapDegrees(std::nan("")), 0);
    EXPECT_GE(wrapDegrees(-1e300), 0);
    EXPECT_LT(wrapDegrees(1e300), 360);
}

TEST(Spin, DividesAllThreeRatesByTheWidth)
{
    ViewState view;
    view.rotX = 10;
    view.rotY = 20;
    view.rotZ = 350;
    view.spinX = 4;
    view.spinY = 8;
    view.spinZ = -40;
    spin(view, 360);
    EXPECT_DOUBLE_EQ(view.rotX, 6);
    EXPECT_DOUBLE_EQ(view.rotY, 18);
    EXPECT_DOUBLE_EQ(view.rotZ, 10);
}

TEST(Spin, OfNothingChangesNothing)
{
    ViewState view;
    view.rotX = 400;
    spin(view, 100);
    EXPECT_EQ(view.rotX, 400);
    view.spinX = 3;
    spin(view, 0);
    EXPECT_EQ(view.rotY, 0);
}

TEST(ViewState, BeginsAsTold)
{
    const ViewState view;
    EXPECT_EQ(view.blendMode, static_cast<GLenum>(GL_FUNC_ADD));
    EXPECT_EQ(view.filterColors, 2);
    EXPECT_EQ(view.renderMode, RenderMode::Normal);
    EXPECT_EQ(view.scaleBarLocation, ScaleBarLocation::BottomLeft);
    EXPECT_EQ(view.scaleBarSize, 0.3);
    EXPECT_EQ(view.boxColor, QColor(Qt::blue));
    EXPECT_EQ(view.backgroundColor, QColor(Qt::black));
    EXPECT_EQ(view.scaleBarColor, QColor(Qt::red));
    EXPECT_EQ(view.cutBoxColor, QColor(Qt::white));
    EXPECT_EQ(view.ortho, (OrthoBounds{-1, 1, -1, 1, -2, 2}));
}

TEST(WidenedBounds, LeaveAnUnscaledVolumeItsStoredRange)
{
    EXPECT_EQ(widenedBounds({}, {1, 1, 1}), (OrthoBounds{-1, 1, -1, 1, -2, 2}));
}

/// How far the corners of the volume come towards the viewer and away from him, at worst.
double farthestCorner(const ViewState& view, const AxisScale& scale)
{
    double farthest = 0;
    for (int degrees = 0; degrees < 360; degrees += 5) {
        for (int corner = 0; corner < 8; ++corner) {
            const double sideX = corner & 1 ? 1 : -1;
            const double sideY = corner & 2 ? 1 : -1;
            const double sideZ = corner & 4 ? 1 : -1;
            const Matrix3 inner = turned(0, view.yRotation, 0);
            const double x = (inner[0][0] * sideX + inner[0][2] * sideZ) * scale.x + view.transX;
            const double y = sideY * scale.y + view.transY;
            const double z = (inner[2][0] * sideX + inner[2][2] * sideZ) * scale.z + view.transZ;
            const Matrix3 outer = turned(degrees, 3 * degrees, 7 * degrees);
            farthest = std::max(farthest, std::abs(outer[2][0] * x + outer[2][1] * y + outer[2][2] * z));
        }
    }
    return farthest;
}

TEST(WidenedBounds, HoldTheScaledAndMovedVolumeFromEverySide)
{
    ViewState view;
    for (const double yRotation : {0.0, 45.0, 60.0}) {
        for (const AxisScale& scale : {AxisScale{3, 3, 3}, AxisScale{10, 0.1, 0.1}, AxisScale{-4, 1, 2}}) {
            view.yRotation = yRotation;
            view.transX = 0.7;
            view.transZ = -1.2;
            const OrthoBounds bounds = widenedBounds(view, scale);
            EXPECT_LE(farthestCorner(view, scale), bounds.zFar) << yRotation << ' ' << scale.x;
            EXPECT_EQ(bounds.zNear, -bounds.zFar);
            EXPECT_EQ(bounds.left, -1);
        }
    }
    EXPECT_EQ(view.ortho, OrthoBounds{});
}

TEST(SquareViewport, IsCentredInTheLongerSide)
{
    const auto expectViewport = [](QSize size, int x, int y, int side) {
        const SquareViewport seen = squareViewport(size);
        EXPECT_EQ(seen.x, x);
        EXPECT_EQ(seen.y, y);
        EXPECT_EQ(seen.side, side);
    };
    expectViewport({640, 480}, 80, 0, 480);
    expectViewport({480, 640}, 0, 80, 480);
    expectViewport({301, 200}, 50, 0, 200);
    expectViewport({200, 200}, 0, 0, 200);
    expectViewport({0, 0}, 0, 0, 1);
}

TEST(FrameRate, IsTheReciprocalOfTheTime)
{
    EXPECT_EQ(frameRateText(0.5), "2.0   fps");
    EXPECT_EQ(frameRateText(0.0125), "80.0  fps");
    EXPECT_EQ(frameRateText(0.00001), "100000.0fps");
    EXPECT_EQ(frameRateText(0), "Ludicrous speed GO!");
}

} // namespace
} // namespace tirn
