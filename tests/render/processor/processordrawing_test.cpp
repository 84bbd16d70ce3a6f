// Frames drawn by the processor beside the same frames drawn by the card.

#include "render/processor/processordrawing.h"

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "render/nvidiathread.h"
#include "render/picturemaker.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

constexpr int kSide = 128;

std::vector<ColourTable> tables(int channels)
{
    std::vector<ColourTable> all;
    for (int c = 0; c < channels; ++c)
        all.push_back(rampTable(256, {1.0 - 0.2 * c, 0.3 + 0.1 * c, 0.2 * c}, 0.4));
    return all;
}

/// A rig whose frames are drawn by the one or the other.
class TwoWays
{
public:
    explicit TwoWays(const PlainStack& stack, const VolumeSpec& spec = {})
    {
        array = &rig.show({stack}, spec);
        array->scale = {1.2, 1.2, 1.2};
        rig.setTables(tables(stack.channels));
    }
    QImage drawn(Drawing drawing)
    {
        rig.scene.settings.drawing = drawing;
        return rig.draw();
    }
    bool isOnProcessor() const { return static_cast<const NvidiaThread&>(m_thread).processor().isDrawing(); }
    /// The processor draws, and what it draws looks like what the card draws: with few slices the card rounds
    /// little.
    void expectAlike(const char* what)
    {
        const QImage card = drawn(Drawing::Card);
        EXPECT_FALSE(isOnProcessor()) << what;
        const QImage processor = drawn(Drawing::Processor);
        EXPECT_TRUE(isOnProcessor()) << what;
        const PictureDifference difference = compare(pictureOf(card), pictureOf(processor));
        EXPECT_LT(difference.mean, 0.6) << what;
        // Single pixels of the silhouette may be a slice more or less.
        EXPECT_LT(difference.percentile999, 8) << what;
        QImage empty(card.size(), card.format());
        empty.fill(rig.scene.view.backgroundColor);
        EXPECT_GT(largestDifference(card, empty), 100) << what;
    }

    RenderRig rig = RenderRig({kSide, kSide});
    VoxelArray* array = nullptr;

private:
    GLThread& m_thread = rig.thread();
};

struct WayCase
{
    const char* name;
    int channels;
    int bits;
    GLenum target;
    GLenum blend;
};

class Ways : public ::testing::TestWithParam<WayCase>
{};

TEST_P(Ways, LookAlikeInAllOrientationsAndSlants)
{
    const WayCase& c = GetParam();
    VolumeSpec spec;
    spec.target = c.target;
    TwoWays ways(denseStack(32, 16, 16, c.channels, c.bits), spec);
    ways.rig.scene.view.blendMode = c.blend;
    for (const auto& rotation : axisRotations()) {
        for (const int slant : {0, 20, 38}) {
            ways.rig.scene.view.rotX = rotation[0] + slant;
            ways.rig.scene.view.rotY = rotation[1] + slant / 2;
            ways.rig.scene.view.rotZ = rotation[2];
            ways.expectAlike((std::to_string(rotation[0]) + " " + std::to_string(rotation[1]) + " slant " +
                              std::to_string(slant))
                                 .c_str());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, Ways,
                         ::testing::Values(WayCase{"Bytes", 1, 8, GL_TEXTURE_2D, GL_FUNC_ADD},
                                           WayCase{"Channels", 3, 8, GL_TEXTURE_2D, GL_FUNC_ADD},
                                           WayCase{"Maximum", 2, 8, GL_TEXTURE_2D, GL_MAX},
                                           WayCase{"TwelveBits", 2, 12, GL_TEXTURE_2D, GL_FUNC_ADD},
                                           WayCase{"SixteenBits", 1, 16, GL_TEXTURE_2D, GL_MAX},
                                           WayCase{"Volume", 2, 8, GL_TEXTURE_3D, GL_FUNC_ADD},
                                           WayCase{"DeepVolume", 1, 12, GL_TEXTURE_3D, GL_FUNC_ADD}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(ProcessorDrawing, CutBoxesLookAlike)
{
    TwoWays ways(denseStack(32, 16, 16));
    ways.array->cut = {3, 20, 4, 11, 2, 9};
    for (const auto& rotation : axisRotations()) {
        ways.rig.scene.view.rotX = rotation[0] + 20;
        ways.rig.scene.view.rotY = rotation[1] + 15;
        ways.expectAlike("cut");
    }
}

TEST(ProcessorDrawing, AllModesLookAlike)
{
    TwoWays ways(denseStack(32, 16, 16, 2));
    ways.rig.scene.view.rotX = 20;
    ways.rig.scene.view.rotY = 30;
    for (const RenderMode mode :
         {RenderMode::Normal, RenderMode::Anaglyph, RenderMode::FullscreenStereo, RenderMode::FourViews}) {
        ways.rig.scene.view.renderMode = mode;
        ways.rig.scene.view.ortho = projectionOf(mode);
        // There is no second buffer to see.
        if (mode != RenderMode::FullscreenStereo)
            ways.expectAlike("mode");
    }
}

TEST(ProcessorDrawing, LeavesLinesThatSlicesHideInStereoToTheCard)
{
    TwoWays ways(denseStack(32, 16, 16));
    ViewState& view = ways.rig.scene.view;
    view.renderMode = RenderMode::Anaglyph;
    ways.drawn(Drawing::Processor);
    EXPECT_TRUE(ways.isOnProcessor());
    for (bool ViewState::*lines : {&ViewState::showBoundingBox, &ViewState::drawCutBox}) {
        view.*lines = true;
        ways.drawn(Drawing::Processor);
        EXPECT_FALSE(ways.isOnProcessor());
        view.*lines = false;
    }
}

TEST(ProcessorDrawing, WhatStandsOverAndUnderTheVolumeStays)
{
    TwoWays ways(denseStack(32, 16, 16));
    ViewState& view = ways.rig.scene.view;
    view.rotX = 20;
    view.rotY = 30;
    view.showBoundingBox = true;
    view.drawCutBox = true;
    view.showScaleBar = true;
    view.drawOrientation = true;
    view.backgroundColor = QColor(30, 60, 90);
    ways.expectAlike("overlays");
}

TEST(ProcessorDrawing, AWindowThatIsNotSquareLooksAlike)
{
    for (const QSize size : {QSize(200, 90), QSize(70, 150)}) {
        RenderRig rig(size);
        rig.show({denseStack(32, 16, 16)});
        rig.setTables(tables(1));
        rig.scene.view.rotX = 10;
        rig.scene.view.rotY = 25;
        rig.scene.view.transX = 0.3;
        const QImage card = rig.draw();
        rig.scene.settings.drawing = Drawing::Processor;
        const QImage processor = rig.draw();
        // Nothing is drawn beside the square, and in it the same.
        const int side = std::min(size.width(), size.height());
        QRect inside(0, 0, side, side);
        inside.moveCenter(QRect(QPoint(0, 0), size).center());
        const PictureDifference difference =
            compare(pictureOf(card.copy(inside)), pictureOf(processor.copy(inside)));
        EXPECT_LT(difference.mean, 0.6);
        EXPECT_LT(difference.percentile999, 8);
        EXPECT_EQ(qGray(processor.pixel(size.width() - 1, size.height() - 1)), 0);
        EXPECT_EQ(qGray(processor.pixel(0, 0)), 0);
    }
}

TEST(ProcessorDrawing, PicturesOfAnySizeAndTheirTilesAreOne)
{
    RenderRig rig({16, 16});
    rig.show({denseStack(32, 16, 16)});
    rig.setTables(tables(1));
    rig.scene.view.rotX = 25;
    rig.scene.view.rotY = 15;
    rig.scene.settings.drawing = Drawing::Processor;
    const PictureRequest request{{300, 300}};
    const QImage whole = PictureMaker(rig.thread()).draw(request);
    EXPECT_EQ(largestDifference(whole, PictureMaker(rig.thread(), {100, 0}).draw(request)), 0);
    // Where the driver takes no larger viewport each tile has a matrix of its own, which rounds otherwise.
    const QImage tiled = PictureMaker(rig.thread(), {100, 120}).draw(request);
    const PictureDifference difference = compare(pictureOf(whole), pictureOf(tiled));
    EXPECT_LT(difference.mean, 0.01);
    EXPECT_LE(difference.percentile999, 1);
}

TEST(ProcessorDrawing, TransparentPicturesKeepTheirOpacity)
{
    RenderRig rig({16, 16});
    rig.show({denseStack(32, 16, 16)});
    rig.setTables(tables(1));
    rig.scene.view.rotX = 25;
    PictureRequest request{{128, 128}};
    request.transparent = true;
    PictureMaker maker(rig.thread());
    const QImage card = maker.draw(request);
    rig.scene.settings.drawing = Drawing::Processor;
    const QImage processor = maker.draw(request);
    double sum = 0;
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x)
            sum += std::abs(qAlpha(card.pixel(x, y)) - qAlpha(processor.pixel(x, y)));
    }
    EXPECT_LT(sum / (128 * 128), 1);
    EXPECT_EQ(qAlpha(processor.pixel(0, 0)), 0);
    EXPECT_GT(qAlpha(processor.pixel(64, 64)), 200);
}

TEST(ProcessorDrawing, TheCardDrawsWhereAProgramWasTypedOrVoxelsAreNotAtHand)
{
    TwoWays ways(denseStack(16, 16, 16));
    ways.drawn(Drawing::Processor);
    EXPECT_TRUE(ways.isOnProcessor());
    ways.rig.scene.view.programText = "!!ARBfp1.0\nMOV result.color,fragment.color;\nEND\n";
    ways.drawn(Drawing::Processor);
    EXPECT_FALSE(ways.isOnProcessor());
    ways.rig.scene.view.programText.clear();
    ways.rig.scene.view.rotY = 90;
    {
        const VoxelWork work(*ways.array, {0});
        const QImage meanwhile = ways.drawn(Drawing::Processor);
        EXPECT_FALSE(ways.isOnProcessor());
        EXPECT_EQ(meanwhile, ways.drawn(Drawing::Card));
    }
    ways.drawn(Drawing::Processor);
    EXPECT_TRUE(ways.isOnProcessor());
}

TEST(ProcessorDrawing, IsChosenByItselfWhereTheDriverIsSoftware)
{
    EXPECT_TRUE(isSoftwareRenderer("llvmpipe (LLVM 15.0.6, 256 bits)"));
    EXPECT_TRUE(isSoftwareRenderer("softpipe"));
    EXPECT_FALSE(isSoftwareRenderer("NVIDIA H100 PCIe/PCIe/SSE2"));
    EXPECT_FALSE(isSoftwareRenderer(nullptr));
    TwoWays ways(denseStack(16, 16, 16));
    ways.drawn(Drawing::Automatic);
    const auto* renderer = reinterpret_cast<const char*>(gl().GetString(GL_RENDERER));
    EXPECT_EQ(ways.isOnProcessor(), isSoftwareRenderer(renderer));
}

TEST(ProcessorDrawing, AChangedPaletteIsSeenInTheNextFrame)
{
    TwoWays ways(denseStack(16, 16, 16));
    const QImage before = ways.drawn(Drawing::Processor);
    ways.rig.setTables({rampTable(256, {0, 0, 1}, 0.6)});
    EXPECT_NE(ways.drawn(Drawing::Processor), before);
    ways.expectAlike("other palette");
}

} // namespace
} // namespace tirn::test
