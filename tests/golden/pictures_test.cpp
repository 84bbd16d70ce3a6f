// Pictures of other sizes than a window's against the software compositor, and the scale bar as a ruler would
// measure it.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "render/picturemaker.h"
#include "scene/scalebar.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

struct SizeCase
{
    const char* name;
    int side;
    /// The longest side of a tile, 0 for the driver's.
    int tile;
    /// The longest side of a viewport, 0 for the driver's.
    int viewport;
};

class PictureSizes : public ::testing::TestWithParam<SizeCase>
{};

TEST_P(PictureSizes, LookAsPredicted)
{
    const PlainStack stack = denseStack(16, 16, 8, 2);
    const std::vector<ColourTable> tables = {rampTable(256, {1, 0.6, 0.2}, 0.45),
                                             rampTable(256, {0.2, 0.5, 1}, 0.4)};
    CompositorView view;
    view.rotation = {90, 0, 270};
    view.scale = {1.1, 1.1, 2.2};
    view.size = GetParam().side;
    RenderRig rig({16, 16});
    rig.show({stack}).scale = {1.1, 1.1, 2.2};
    rig.setTables(tables);
    rig.scene.view.rotX = 90;
    rig.scene.view.rotZ = 270;
    PictureMaker maker(rig.thread(), {GetParam().tile, GetParam().viewport});
    const Picture seen = pictureOf(maker.draw({{view.size, view.size}}));
    const PictureDifference difference = compare(compose(stack, tables, view), seen);
    EXPECT_TRUE(matches(difference)) << difference.mean << " " << difference.percentile999;
    EXPECT_GT(difference.covered,
              static_cast<std::size_t>(view.size) * static_cast<std::size_t>(view.size) * 9 / 10);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PictureSizes,
                         ::testing::Values(SizeCase{"Small", 256, 0, 0}, SizeCase{"Large", 2048, 0, 0},
                                           SizeCase{"Tiled", 700, 300, 0},
                                           SizeCase{"TiledPastTheViewport", 700, 300, 300}),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// Two bright planes across an axis of a stack, and the view in which that axis runs along the picture.
struct RulerCase
{
    const char* name;
    int axis;
    std::array<int, 3> size;
    std::array<double, 3> voxel;
    /// The largest round length in microns that a bar of 0.4 units, 12.8 voxels, has room for.
    double roundLength;
};

class ScaleBars : public ::testing::TestWithParam<RulerCase>
{
protected:
    static constexpr int kSide = 1024;

    /// The middle of the bright rows or columns between two places of a line of the picture.
    static double brightest(const std::vector<int>& line, std::size_t from, std::size_t to)
    {
        double sum = 0;
        double weighted = 0;
        for (std::size_t i = from; i < to; ++i) {
            sum += line[i];
            weighted += static_cast<double>(i) * line[i];
        }
        return weighted / sum;
    }
    /// Green along the middle of the picture, across or down.
    static std::vector<int> middleLine(const QImage& picture, bool down)
    {
        std::vector<int> line;
        for (int i = 0; i < kSide; ++i)
            line.push_back(qGreen(down ? picture.pixel(kSide / 2, i) : picture.pixel(i, kSide / 2)));
        return line;
    }
    static bool isBar(const QImage& picture, int x, int y)
    {
        const QRgb pixel = picture.pixel(x, y);
        return qRed(pixel) > 200 && qGreen(pixel) < 40;
    }
    /// How far the middles of the bar's two ticks are apart, measured where they stand above its lowest row.
    static double barPixels(const QImage& picture)
    {
        int lowest = kSide - 1;
        const auto reaches = [&](int y) {
            int count = 0;
            for (int x = 0; x < kSide; ++x)
                count += isBar(picture, x, y);
            return count;
        };
        while (lowest > 0 && reaches(lowest) < kSide / 20)
            --lowest;
        const int row = lowest - 6;
        int left = 0;
        int right = kSide - 1;
        while (left < kSide && !isBar(picture, left, row))
            ++left;
        while (right > 0 && !isBar(picture, right, row))
            --right;
        int leftEnd = left;
        int rightBegin = right;
        while (isBar(picture, leftEnd + 1, row))
            ++leftEnd;
        while (isBar(picture, rightBegin - 1, row))
            --rightBegin;
        return (rightBegin + right - left - leftEnd) / 2.0;
    }
};

TEST_P(ScaleBars, AreAsLongAsTheySay)
{
    const RulerCase& ruler = GetParam();
    const auto axis = static_cast<std::size_t>(ruler.axis);
    PlainStack stack = PlainStack::blank(ruler.size[0], ruler.size[1], ruler.size[2]);
    const int low = ruler.size[axis] / 4;
    const int high = ruler.size[axis] * 3 / 4;
    for (int z = 0; z < stack.z; ++z) {
        for (int y = 0; y < stack.y; ++y) {
            for (int x = 0; x < stack.x; ++x) {
                const int at = std::array{x, y, z}[axis];
                stack.at(x, y, z) = at == low || at == high ? 255 : 0;
            }
        }
    }
    RenderRig rig({16, 16});
    VoxelArray& array = rig.show({stack});
    const double largest = *std::max_element(ruler.voxel.begin(), ruler.voxel.end());
    array.stack().dimX = ruler.voxel[0];
    array.stack().dimY = ruler.voxel[1];
    array.stack().dimZ = ruler.voxel[2];
    array.scale = {ruler.voxel[0] / largest, ruler.voxel[1] / largest, ruler.voxel[2] / largest};
    rig.setTables({rampTable(256, {0, 1, 0}, 1)});
    rig.scene.view.rotX = ruler.axis == 2 ? 90 : 0;
    rig.scene.view.showScaleBar = true;
    rig.scene.view.scaleBarSize = 0.4;
    const QImage picture = PictureMaker(rig.thread()).draw({{kSide, kSide}});
    const std::vector<int> line = middleLine(picture, ruler.axis != 0);
    const double pixels = brightest(line, kSide / 2, kSide) - brightest(line, 0, kSide / 2);
    const double microns = (high - low) * ruler.voxel[axis];
    const ScaleBarLabel label = scaleBarLabel(0.4, array.geometry().maxPow(), ruler.voxel[0], array.scale.x);
    ASSERT_TRUE(label.known);
    // To a pixel: that many pixels are as many microns as the label says.
    EXPECT_NEAR(label.length * pixels / microns, barPixels(picture), 1);
    rig.scene.view.roundScaleBar = true;
    const QImage round = PictureMaker(rig.thread()).draw({{kSide, kSide}});
    const double length = ruler.roundLength;
    EXPECT_NEAR(length * pixels / microns, barPixels(round), 1);
    EXPECT_EQ(scaleBarOf(rig.scene.view, array.geometry().maxPow(), ruler.voxel[0], array.scale.x).label.text,
              lengthText(length));
}

INSTANTIATE_TEST_SUITE_P(Axes, ScaleBars,
                         ::testing::Values(RulerCase{"XIsWidest", 0, {64, 32, 16}, {0.5, 0.5, 0.5}, 5},
                                           RulerCase{"YIsWidest", 1, {16, 64, 32}, {0.25, 0.25, 0.5}, 5},
                                           RulerCase{"ZIsWidest", 2, {16, 32, 64}, {0.1, 0.1, 0.1}, 1},
                                           RulerCase{"FlatVoxels", 1, {64, 64, 8}, {0.2, 0.4, 1.0}, 10}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace tirn::test
