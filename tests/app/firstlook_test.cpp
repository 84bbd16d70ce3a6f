#include <QImage>
#include <QLabel>
#include <QStatusBar>

#include "scene/fitview.h"
#include "support/picfile.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

/// How a stack shows itself when it opens.
class FirstLook : public test::AppTest
{
protected:
    /// Dense, 64 x 32 voxels of a tenth of a micron, 24 layers 2 microns apart.
    QString calibrated(int bits = 8, int value = 200)
    {
        test::PicFile file;
        file.x = 64;
        file.y = 32;
        file.z = 24;
        file.bits = bits;
        file.value = [value](int, int, int) { return value; };
        file.notesField = 1;
        file.notes = {{"AXIS_2 001 0.0 0.1 microns", 1},
                      {"AXIS_3 001 0.0 0.1 microns", 1},
                      {"AXIS_4 001 0.0 2.0 microns", 0}};
        return file.save(path("calibrated.pic"));
    }
    void setPreference(const char* key, bool on)
    {
        QSettings store(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
        store.setValue(QString("Paths/") + key, on);
        store.sync();
        restart();
    }
    /// The part of the window that is not background.
    QRect drawn()
    {
        settle();
        const QImage picture = widget().renderThread().grabNextFrame();
        QRect all;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (qGray(picture.pixel(x, y)) > 8)
                    all |= QRect(x, y, 1, 1);
            }
        }
        return all;
    }
    QString note() { return app().mainForm().statusBar()->currentMessage(); }
};

TEST_F(FirstLook, FillsTheWindow)
{
    load({calibrated()});
    EXPECT_LT(app().scene().current()->scale.x, 0.1);
    const int side = std::min(widget().width(), widget().height());
    EXPECT_NEAR(drawn().width(), 0.9 * side, 0.02 * side);
    EXPECT_NEAR(drawn().height(), 0.45 * side, 0.02 * side);
}

TEST_F(FirstLook, IsTheStatedOneWhereFittingIsOff)
{
    setPreference("FitOnOpen", false);
    load({calibrated()});
    EXPECT_EQ(view().zoom, 1);
    EXPECT_LT(drawn().width(), 0.1 * widget().width());
}

TEST_F(FirstLook, ShowsDataOfFewBitsBright)
{
    const QString name = calibrated(16, 3000);
    load({name});
    EXPECT_TRUE(view().autoBitDepth);
    EXPECT_TRUE(app().mainForm().action("stretchToUsedBitsAction")->isChecked());
    EXPECT_TRUE(note() == "Stretched: 12 of 16 bits used (Edit menu)") << note().toStdString();
    EXPECT_FALSE(drawn().isEmpty());
    app().mainForm().action("stretchToUsedBitsAction")->trigger();
    EXPECT_FALSE(view().autoBitDepth);
}

TEST_F(FirstLook, LeavesBitsAsTheyAreWhereStretchingIsOff)
{
    setPreference("StretchOnOpen", false);
    load({calibrated(16, 3000)});
    EXPECT_FALSE(view().autoBitDepth);
    EXPECT_TRUE(note().isEmpty());
}

TEST_F(FirstLook, LeavesDataThatUseTheirBitsAsTheyAre)
{
    load({calibrated(16, 40000)});
    EXPECT_FALSE(view().autoBitDepth);
    load({calibrated(8, 3)});
    EXPECT_FALSE(view().autoBitDepth) << "bytes have no more bits to look for";
}

TEST_F(FirstLook, OfTheFirstStackIsFreshAndThatOfFurtherOnesKeepsThePose)
{
    changeView([](ViewState& view) { view.rotY = 90; });
    load({calibrated()});
    EXPECT_EQ(view().rotY, 0);
    changeView([](ViewState& view) { view.rotY = 90; });
    load({picFile("b.pic")});
    EXPECT_EQ(view().rotY, 90);
    EXPECT_NEAR(view().zoom,
                fittedZoom(view(), app().scene().current()->scale, app().scene().current()->geometry()),
                1e-9);
}

TEST_F(FirstLook, ComesBackWithKeys)
{
    load({calibrated()});
    const ViewState first = view();
    drag({100, 100}, {180, 130}, Qt::LeftButton);
    drag({100, 100}, {140, 100}, Qt::LeftButton, Qt::ShiftModifier);
    widget().scale(0.5, 0);
    app().mainForm().action("resetViewAction")->trigger();
    EXPECT_EQ(view().rotY, 0);
    EXPECT_EQ(view().transX, 0);
    EXPECT_EQ(view().zoom, first.zoom);
    EXPECT_EQ(app().scene().current()->scale, app().scene().current()->baseScale);
    app().mainForm().action("viewRightAction")->trigger();
    EXPECT_EQ(view().rotY, 270);
    app().mainForm().action("fitViewAction")->trigger();
    const int side = std::min(widget().width(), widget().height());
    // The few layers end half a texel further out.
    EXPECT_NEAR(std::max(drawn().width(), drawn().height()), 0.9 * side, 0.04 * side);
}

TEST_F(FirstLook, NamesTheStackAndItsFacts)
{
    EXPECT_EQ(app().mainForm().windowTitle(), "Tirn");
    load({calibrated()});
    EXPECT_EQ(app().mainForm().windowTitle(), "calibrated.pic - Tirn");
    EXPECT_EQ(app().mainForm().findChild<QLabel*>("facts")->text(),
              QString::fromUtf8("64 × 32 × 24, 1 channel, 1 time point, 8 bits, 0.1 × 0.1 × 2 µm"));
    app().closeAll();
    EXPECT_EQ(app().mainForm().windowTitle(), "Tirn");
    EXPECT_EQ(app().mainForm().findChild<QLabel*>("facts")->text(), "");
}

} // namespace
} // namespace tirn
