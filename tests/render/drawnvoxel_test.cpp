// What is under the mouse, against what is drawn there.

#include <random>

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "scene/pointing/pointing.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::PlainStack;
using test::RenderRig;

constexpr QSize kSize = {220, 160};

/// The brightest pixel's middle; nothing in a dark picture, in which the voxel's neighbours show as much of
/// it.
std::optional<QPointF> brightestPixel(const QImage& picture)
{
    int most = 100;
    std::optional<QPointF> brightest;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGreen(picture.pixel(x, y)) > most) {
                most = qGreen(picture.pixel(x, y));
                brightest = QPointF(x + 0.5, y + 0.5);
            }
        }
    }
    return brightest;
}

struct DrawnCase
{
    const char* name;
    GLenum target = GL_TEXTURE_2D;
    RenderMode mode = RenderMode::Normal;
    int blockLimit = 1024;
    int finalZ = -1;
};

class DrawnVoxel : public ::testing::TestWithParam<DrawnCase>
{
protected:
    test::LogCapture log;
    RenderRig rig{kSize};
    std::mt19937 random{11};

    double between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    void turnAtRandom()
    {
        ViewState& view = rig.scene.view;
        view.rotX = between(0, 360);
        view.rotY = between(0, 360);
        view.rotZ = between(0, 360);
        // One of four views is not to reach into the next.
        const double largest = view.renderMode == RenderMode::FourViews ? 0.7 : 1.4;
        const double farthest = view.renderMode == RenderMode::FourViews ? 0 : 0.2;
        view.transX = between(-farthest, farthest);
        view.transY = between(-farthest, farthest);
        view.transZ = between(-farthest, farthest);
        view.yRotation = between(0, 1) < 0.3 ? between(0, 360) : 0;
        const auto scale = [&] { return between(largest / 2, largest); };
        rig.scene.current()->scale = {scale(), scale(), scale()};
    }
};

TEST_P(DrawnVoxel, IsPickedWhereItIsSeen)
{
    rig.scene.view.renderMode = GetParam().mode;
    rig.scene.view.ortho = projectionOf(GetParam().mode);
    int seen = 0;
    for (int i = 0; i < 8; ++i) {
        PlainStack stack = PlainStack::blank(16, 16, 16);
        const VoxelPlace voxel = {static_cast<int>(between(0, 16)), static_cast<int>(between(0, 16)),
                                  static_cast<int>(between(0, 16))};
        stack.at(voxel.x, voxel.y, voxel.z) = 255;
        rig.show({stack}, {GetParam().target, GetParam().blockLimit, GetParam().finalZ});
        rig.setTables({test::rampTable(256, {1, 1, 1}, 1)});
        for (int pose = 0; pose < 10; ++pose) {
            turnAtRandom();
            const std::optional<QPointF> pixel = brightestPixel(rig.draw());
            // It may lie outside of the window, or between two slices.
            if (!pixel)
                continue;
            ++seen;
            const auto picked = pointAt(rig.scene, *pixel, kSize);
            ASSERT_TRUE(picked) << "voxel " << i << " pose " << pose;
            EXPECT_EQ(picked->voxel, voxel) << "voxel " << i << " pose " << pose;
        }
    }
    EXPECT_GT(seen, 25);
}

INSTANTIATE_TEST_SUITE_P(All, DrawnVoxel,
                         ::testing::Values(DrawnCase{"Slices"}, DrawnCase{"Volume", GL_TEXTURE_3D},
                                           DrawnCase{"SlicesInBlocks", GL_TEXTURE_2D, RenderMode::Normal, 8},
                                           DrawnCase{"VolumeInBlocks", GL_TEXTURE_3D, RenderMode::Normal, 8},
                                           DrawnCase{"Resliced", GL_TEXTURE_3D, RenderMode::Normal, 1024, 31},
                                           DrawnCase{"FourViews", GL_TEXTURE_2D, RenderMode::FourViews}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace tirn
