// A surface lies where the voxels lie that it was made of, and depth curves are applied while drawing.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "render/picturemaker.h"
#include "support/picturecompare.h"
#include "volume/meshfit.h"

namespace tirn::test {
namespace {

constexpr int kSide = 256;

/// The middle of all pixels that a colour covers.
QPointF middleOf(const QImage& picture, int (*colour)(QRgb))
{
    double sum = 0;
    QPointF middle;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int value = colour(picture.pixel(x, y));
            sum += value;
            middle += QPointF(x, y) * value;
        }
    }
    return sum > 0 ? middle / sum : QPointF(-1, -1);
}

class MeshPlaces : public ::testing::TestWithParam<std::array<int, 3>>
{};

/// One bright voxel, and a small surface around its place in voxels, seen from a slanted direction.
TEST_P(MeshPlaces, AreThoseOfTheirVoxels)
{
    const std::array<int, 3> at = GetParam();
    PlainStack stack = PlainStack::blank(16, 24, 12);
    stack.at(at[0], at[1], at[2]) = 255;
    RenderRig rig({16, 16});
    VoxelArray& array = rig.show({stack});
    rig.setTables({rampTable(256, {0, 1, 0}, 1)});
    rig.scene.view.rotX = 25;
    rig.scene.view.rotY = 35;
    PictureMaker maker(rig.thread());
    const QPointF voxel = middleOf(maker.draw({{kSide, kSide}}), qGreen);
    ASSERT_GT(voxel.x(), 0);
    auto mesh = std::make_unique<Segmentation>();
    const Vector3f middle = {static_cast<float>(at[0]), static_cast<float>(at[1]), static_cast<float>(at[2])};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Triangle small{{middle, middle, middle}, {0, 0, 1}};
        small.vertices[0][axis] -= 0.5F;
        small.vertices[1][axis] += 0.5F;
        small.vertices[2][(axis + 1) % 3] += 0.5F;
        mesh->facets.push_back(small);
        small.vertices[2][(axis + 1) % 3] -= 1;
        mesh->facets.push_back(small);
    }
    fitMesh(*mesh, MeshFit::Voxels, array.geometry());
    mesh->material.emission = {1, 0, 0, 1};
    rig.scene.segmentations.push_back(std::move(mesh));
    array.channels()[0].display.state = ChannelState::Hidden;
    const QPointF surface = middleOf(maker.draw({{kSide, kSide}}), qRed);
    // A voxel is 2 / 32 wide, 8 pixels.
    EXPECT_NEAR(surface.x(), voxel.x(), 2.5);
    EXPECT_NEAR(surface.y(), voxel.y(), 2.5);
}

INSTANTIATE_TEST_SUITE_P(Voxels, MeshPlaces,
                         ::testing::Values(std::array{2, 3, 2}, std::array{13, 3, 6}, std::array{5, 20, 9},
                                           std::array{12, 12, 3}));

// The slices of a 3D texture are multiplied by the curve: the same picture as of a stack that was multiplied
// before.

/// A stack whose voxels leave room for a curve that multiplies by up to `room`.
PlainStack darkStack(int z, int room)
{
    PlainStack stack = denseStack(32, 32, z);
    for (std::uint16_t& voxel : stack.voxels)
        voxel = static_cast<std::uint16_t>(voxel / room);
    return stack;
}

PlainStack multipliedBy(const std::vector<double>& curve, PlainStack stack)
{
    for (int z = 0; z < stack.z; ++z) {
        for (int y = 0; y < stack.y; ++y) {
            for (int x = 0; x < stack.x; ++x)
                stack.at(x, y, z) = static_cast<std::uint16_t>(
                    std::lround(stack.at(x, y, z) * curve[static_cast<std::size_t>(z)]));
        }
    }
    return stack;
}

CompositorView curveView(const PlainStack& stack, const std::array<int, 3>& rotation, int blockLimit)
{
    CompositorView view;
    view.rotation = rotation;
    view.scale = {1.1, 1.1, 35.2 / stack.z};
    view.target = Target::Volume3D;
    view.blockLimit = blockLimit;
    view.size = 128;
    return view;
}

const std::vector<ColourTable> kCurveTables = {rampTable(256, {1, 0.6, 0.2}, 0.45)};

Picture drawnWithCurve(const PlainStack& stack, const std::vector<double>& curve, const CompositorView& view)
{
    RenderRig rig({128, 128});
    VolumeSpec spec;
    spec.target = GL_TEXTURE_3D;
    spec.blockLimit = view.blockLimit;
    GlCurveTextures textures(nullptr);
    spec.curves = &textures;
    rig.makeCurrent();
    VoxelArray& array = rig.show({stack}, spec);
    array.scale = {view.scale[0], view.scale[1], view.scale[2]};
    rig.setTables(kCurveTables);
    rig.scene.view.rotX = view.rotation[0];
    rig.scene.view.rotY = view.rotation[1];
    ZCurve& shown = array.channels()[0].zCurve;
    *shown.curve() = curve;
    shown.generateTexture();
    rig.scene.view.zCorrection = true;
    const Picture seen = pictureOf(rig.draw());
    rig.makeCurrent();
    rig.scene.arrays.clear();
    return seen;
}

constexpr std::array<int, 3> kCurveRotations[] = {{0, 0, 0}, {90, 0, 0}, {0, 90, 0}};

TEST(DepthCurves, AreDrawnLikeAStackThatWasMultiplied)
{
    const PlainStack stack = darkStack(16, 2);
    std::vector<double> curve;
    // Steps that 8 bits of a texture which holds a quarter hit well.
    for (int z = 0; z < 16; ++z)
        curve.push_back((32 + 4 * z) / 63.75);
    for (const std::array<int, 3>& rotation : kCurveRotations) {
        const CompositorView view = curveView(stack, rotation, 1024);
        const Picture seen = drawnWithCurve(stack, curve, view);
        const PictureDifference difference =
            compare(compose(multipliedBy(curve, stack), kCurveTables, asDrawn(view)), seen);
        EXPECT_TRUE(matches(difference)) << rotation[0] << " " << rotation[1] << ": " << difference.mean
                                         << " " << difference.percentile999;
        EXPECT_FALSE(matches(compare(compose(stack, kCurveTables, asDrawn(view)), seen)))
            << "the curve shows";
    }
}

TEST(DepthCurves, RunOnThroughAllBlocksAlongZ)
{
    const PlainStack stack = darkStack(16, 2);
    std::vector<double> curve;
    for (int z = 0; z < 16; ++z)
        curve.push_back((64 + 4 * z) / 63.75);
    for (const int limit : {8, 4}) {
        std::vector<double> begunAnew;
        for (int z = 0; z < 16; ++z)
            begunAnew.push_back(curve[static_cast<std::size_t>(z % limit * 16 / limit)]);
        for (const std::array<int, 3>& rotation : kCurveRotations) {
            const CompositorView view = curveView(stack, rotation, limit);
            const Picture seen = drawnWithCurve(stack, curve, view);
            const PictureDifference difference =
                compare(compose(multipliedBy(curve, stack), kCurveTables, asDrawn(view)), seen);
            EXPECT_TRUE(matches(difference)) << limit << ": " << rotation[0] << " " << rotation[1] << ": "
                                             << difference.mean << " " << difference.percentile999;
            EXPECT_FALSE(
                matches(compare(compose(multipliedBy(begunAnew, stack), kCurveTables, asDrawn(view)), seen)));
        }
    }
}

TEST(DepthCurves, MultiplyByFourAtMost)
{
    const PlainStack stack = darkStack(16, 5);
    const CompositorView view = curveView(stack, {0, 0, 0}, 1024);
    const Picture seen = drawnWithCurve(stack, std::vector<double>(16, 5.0), view);
    const auto times = [&](double factor) {
        return compose(multipliedBy(std::vector<double>(16, factor), stack), kCurveTables, asDrawn(view));
    };
    EXPECT_TRUE(matches(compare(times(4), seen)));
    EXPECT_FALSE(matches(compare(times(5), seen)));
}

} // namespace
} // namespace tirn::test
