// Pictures of the running viewer, drawn outside of the window or grabbed from it.

#include <gtest/gtest.h>

#include "pictures/picturesize.h"
#include "support/picturecompare.h"
#include "uisupport/apptest.h"

namespace tirn::test {
namespace {

class WindowPictures : public AppTest
{
protected:
    WindowPictures() { load({picFile("a.pic"), picFile("b.pic")}); }
    QSize windowSize() { return widget().surface().size(); }
    QImage grabbed()
    {
        const QImage picture = widget().renderThread().grabNextFrame();
        widget().renderThread().wait();
        return picture;
    }
    QImage taken(QSize size, double scale = 1)
    {
        EXPECT_TRUE(app().pictures().capture({size, scale}));
        return std::exchange(app().pictures().image(), {});
    }
};

TEST_F(WindowPictures, AreTheWindowToTheLastBit)
{
    for (const double angle : {0.0, 35.0}) {
        changeView([&](ViewState& view) {
            view.rotX = angle;
            view.rotY = 2 * angle;
            view.showBoundingBox = true;
            view.showScaleBar = true;
        });
        settle();
        // A window's rows may run the other way in the driver, which then rounds the last bit the other way.
        EXPECT_LE(largestDifference(taken(windowSize()), grabbed()), 1);
    }
}

TEST_F(WindowPictures, HaveTheirOwnSizeAndLeaveTheWindowAlone)
{
    const QImage before = grabbed();
    EXPECT_EQ(taken({300, 1000}, 2).size(), QSize(300, 1000));
    EXPECT_EQ(log.count("doing Pbuffer"), 1);
    settle();
    EXPECT_EQ(grabbed(), before);
}

TEST_F(WindowPictures, StopASpin)
{
    changeView([](ViewState& view) { view.spinX = 5; });
    EXPECT_FALSE(taken({64, 64}).isNull());
    settle();
    EXPECT_FALSE(widget().renderThread().isRunning());
}

TEST_F(WindowPictures, AreGrabbedWhereNothingIsDrawnOffScreen)
{
    const QImage window = grabbed();
    GlTable table = gl();
    table.GenFramebuffers = nullptr;
    const GlTableScope withoutBuffers(table);
    EXPECT_EQ(taken({300, 1000}), window);
    EXPECT_TRUE(log.contains("Massively screwed"));
}

TEST_F(WindowPictures, NeedAStack)
{
    app().closeAll();
    EXPECT_FALSE(app().pictures().capture({{64, 64}}));
    EXPECT_TRUE(app().pictures().image().isNull());
}

TEST_F(WindowPictures, CompositesAreTakenAndTheViewIsAsBefore)
{
    changeView([](ViewState& view) { view.rotY = 30; });
    settle();
    const QImage before = grabbed();
    const SnapshotSource source = app().pictures().snapshotSource({60, 40});
    const QImage grid = channelGrid(source, {3, 1}, {0, 1, 2});
    EXPECT_EQ(grid.size(), QSize(180, 40));
    EXPECT_EQ(grid.copy(120, 0, 60, 40), taken({60, 40}));
    EXPECT_EQ(stereoPair(source, 10, true).size(), QSize(120, 40));
    EXPECT_FALSE(orthographicCross(source, {}).isNull());
    settle();
    EXPECT_EQ(view().rotY, 30);
    EXPECT_EQ(grabbed(), before);
}

TEST_F(WindowPictures, AWriterTakesThePictureAway)
{
    for (int format = 0; format < 3; ++format) {
        ASSERT_TRUE(app().pictures().capture({{32, 20}}));
        const QString name = path(QString("picture%1").arg(format));
        EXPECT_EQ(format == 0   ? app().pictures().savePng(name, 300)
                  : format == 1 ? app().pictures().saveRaw(name)
                                : app().pictures().saveTiff(name, 300),
                  "");
        EXPECT_TRUE(app().pictures().image().isNull());
        EXPECT_TRUE(QFileInfo::exists(name));
    }
    EXPECT_EQ(QImage(path("picture0")).size(), QSize(32, 20));
    EXPECT_EQ(app().pictures().savePng(path("again"), 300), "No picture to write");
}

} // namespace
} // namespace tirn::test
