// The picture as others see it, in the window and in pictures of any size.

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "pictures/colorvision.h"
#include "render/picturemaker.h"

namespace tirn::test {
namespace {

class VisionPictures : public ::testing::Test
{
protected:
    VisionPictures()
    {
        rig.show({denseStack(16, 16, 8, 2)});
        rig.setTables({rampTable(256, {1, 0.1, 0.2}, 0.5), rampTable(256, {0.1, 0.9, 0.3}, 0.5)});
    }
    void see(ColorVision vision) { rig.scene.view.colorVision = vision; }

    /// How far the worst pixel of a picture is from that of another, seen by others.
    static int worst(const QImage& normal, const QImage& seen, ColorVision vision)
    {
        QImage expected = normal.convertToFormat(QImage::Format_RGBA8888);
        const QImage found = seen.convertToFormat(QImage::Format_RGBA8888);
        seeAs(vision, {expected.bits(), static_cast<std::size_t>(expected.sizeInBytes())}, false);
        int difference = 0;
        for (qsizetype i = 0; i < expected.sizeInBytes(); ++i)
            difference = std::max(difference, std::abs(expected.constBits()[i] - found.constBits()[i]));
        return difference;
    }

    RenderRig rig{{96, 80}};
};

TEST_F(VisionPictures, AreTheWindowsPictureSeenByOthers)
{
    const QImage normal = rig.draw();
    for (const ColorVision vision : {ColorVision::Protan, ColorVision::Deutan, ColorVision::Tritan}) {
        see(vision);
        const QImage seen = rig.draw();
        EXPECT_NE(seen, normal);
        EXPECT_LE(worst(normal, seen, vision), 1) << static_cast<int>(vision);
    }
    see(ColorVision::Normal);
    EXPECT_EQ(rig.draw(), normal) << "nothing stays behind";
}

TEST_F(VisionPictures, WorkInEveryWayOfDrawing)
{
    for (const RenderMode mode : {RenderMode::Normal, RenderMode::Anaglyph, RenderMode::FourViews}) {
        rig.scene.view.renderMode = mode;
        rig.scene.view.showScaleBar = true;
        see(ColorVision::Normal);
        const QImage normal = rig.draw();
        see(ColorVision::Deutan);
        EXPECT_LE(worst(normal, rig.draw(), ColorVision::Deutan), 1) << static_cast<int>(mode);
        see(ColorVision::Normal);
        EXPECT_EQ(rig.draw(), normal);
    }
}

TEST_F(VisionPictures, SnapshotsAreSeenTheSameInOnePieceInTilesAndTransparent)
{
    for (const int tile : {0, 64}) {
        for (const bool transparent : {false, true}) {
            rig.makeCurrent();
            PictureMaker maker(rig.thread(), {tile, 0});
            see(ColorVision::Normal);
            const QImage normal = maker.draw({.size = {150, 150}, .transparent = transparent});
            see(ColorVision::Protan);
            const QImage seen = maker.draw({.size = {150, 150}, .transparent = transparent});
            EXPECT_NE(seen, normal);
            // Colours of little opacity come back only roughly.
            if (!transparent) {
                EXPECT_LE(worst(normal, seen, ColorVision::Protan), 1) << tile;
            }
            for (int y = 0; y < normal.height(); y += 7) {
                for (int x = 0; x < normal.width(); x += 7)
                    ASSERT_NEAR(qAlpha(seen.pixel(x, y)), qAlpha(normal.pixel(x, y)), 0) << tile;
            }
        }
    }
}

} // namespace
} // namespace tirn::test
