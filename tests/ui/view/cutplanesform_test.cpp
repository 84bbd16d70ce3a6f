// The cut planes form, driven in the whole program.

#include "ui/view/cutplanesform.h"

#include <QClipboard>
#include <QGroupBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QStyleOptionSlider>
#include <QTest>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

class CutPlanes : public test::AppTest
{
protected:
    CutPlanesForm& form()
    {
        return *static_cast<CutPlanesForm*>(app().forms().create(FormId::CutPlanes, true));
    }
    template <class Widget>
    Widget& child(const char* name)
    {
        auto* found = form().findChild<Widget*>(name);
        if (found == nullptr)
            throw std::runtime_error(name);
        return *found;
    }
    QSlider& slider(const char* name) { return child<QSlider>(name); }
    QSpinBox& box(const char* name) { return child<QSpinBox>(name); }
    QString text(const char* name) { return box(name).text(); }
    CutBox cut() { return app().scene().current()->cut; }
    QAction& undo() { return *app().mainForm().action("editUndoAction"); }
    bool isOutlined() { return view().drawCutBox; }

    /// Layers first to last, every step-th, of a file of 16 x 12 voxels and 21 layers.
    void loadPart(int first, int last, int step, int factor = 1, int reslice = -1)
    {
        LoadDescription load;
        load.filesToLoad = {{picFile("part.pic", 16, 12, 21)}};
        load.setRange(first, last, step, factor, reslice > 0 ? GL_TEXTURE_3D : GL_TEXTURE_2D, reslice > 0,
                      reslice, false);
        ASSERT_TRUE(app().loads().startLoad(load));
        app().loads().fileThread().wait();
        settle();
    }
    /// A cube as large as the window.
    void loadCube()
    {
        load({picFile("a.pic", 16, 16, 16)});
        changeView([](ViewState& view) { view.zoom = 1; });
    }
    static QPoint handleOf(QSlider& slider)
    {
        QStyleOptionSlider option;
        option.initFrom(&slider);
        option.orientation = slider.orientation();
        option.minimum = slider.minimum();
        option.maximum = slider.maximum();
        option.sliderPosition = option.sliderValue = slider.value();
        return slider.style()
            ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
            .center();
    }
    static void moveMouse(QSlider& slider, QPoint at)
    {
        QMouseEvent move(QEvent::MouseMove, at, slider.mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&slider, &move);
    }
    void typeInto(QSpinBox& box, const QString& text)
    {
        box.setFocus();
        box.selectAll();
        QTest::keyClicks(&box, text);
        QTest::keyClick(&box, Qt::Key_Return);
    }
};

TEST_F(CutPlanes, WithoutAStackStandsDisabledWithItsFirstTexts)
{
    EXPECT_FALSE(form().isEnabled());
    EXPECT_EQ(form().windowTitle(), "Cut Planes");
    for (const char* name : {"spnXMin", "spnXMax", "spnYMin", "spnYMax", "spnZMin", "spnZMax"})
        EXPECT_EQ(text(name), "000") << name;
    for (const char* name : {"spnXInterval", "spnYInterval", "spnZInterval"}) {
        EXPECT_EQ(box(name).minimum(), 1);
        EXPECT_EQ(box(name).maximum(), 99);
        EXPECT_EQ(box(name).singleStep(), 1);
        EXPECT_EQ(box(name).value(), 1);
    }
    QStringList texts;
    for (const QGroupBox* group : form().findChildren<QGroupBox*>())
        texts.append(group->title());
    EXPECT_EQ(texts, QStringList({"X Axis", "Y Axis", "Z Axis"}));
    texts.clear();
    for (const QLabel* label : form().findChildren<QLabel*>())
        texts.append(label->text());
    EXPECT_EQ(texts.filter("in slices"), QStringList({"Min slices", "Min slices"}));
    EXPECT_EQ(texts.filter("Min Slices"), QStringList("Min Slices"));
}

TEST_F(CutPlanes, ShowsTheBoundsOfTheCurrentStack)
{
    load({picFile("a.pic", 16, 12, 8)});
    app().model().edit(Change::Cut, [](Scene& scene) { scene.current()->cut = {1, 14, 2, 9, 3, 6}; });
    EXPECT_TRUE(form().isEnabled());
    EXPECT_EQ(text("spnXMin"), "0001");
    EXPECT_EQ(text("spnXMax"), "0014");
    EXPECT_EQ(slider("sldYMin").value(), 2);
    EXPECT_EQ(slider("sldYMax").value(), 9);
    EXPECT_EQ(slider("sldZMin").value(), 3);
    EXPECT_EQ(text("spnZMax"), "0006");
    EXPECT_EQ(slider("sldXMin").minimum(), 0);
    EXPECT_EQ(slider("sldXMin").maximum(), 15);
    EXPECT_EQ(slider("sldXMax").maximum(), 15);
    EXPECT_EQ(box("spnXInterval").maximum(), 15);
    EXPECT_EQ(box("spnZInterval").maximum(), 7);
    // Another stack is not cut, and has other sizes.
    load({picFile("b.pic", 20, 12, 8)});
    EXPECT_EQ(text("spnXMin"), "0000");
    EXPECT_EQ(text("spnXMax"), "0019");
    app().setCurrentArray(0);
    EXPECT_EQ(text("spnXMax"), "0014");
    app().closeAll();
    EXPECT_FALSE(form().isEnabled());
}

TEST_F(CutPlanes, ASliderCutsWhileItsButtonIsDown)
{
    load({picFile("a.pic", 16, 12, 8)});
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    QSignalSpy frames(&app().model(), &SceneModel::frameNeeded);
    QSlider& low = slider("sldXMin");
    const QPoint from = handleOf(low);
    QTest::mousePress(&low, Qt::LeftButton, {}, from);
    EXPECT_TRUE(isOutlined());
    const int before = frames.size();
    int cuts = 0;
    for (int x = from.x(); x < low.width() / 2; x += 4) {
        const int last = cut().xMin;
        moveMouse(low, {x, from.y()});
        cuts += cut().xMin != last;
        EXPECT_EQ(cut().xMin, low.value());
        EXPECT_EQ(text("spnXMin"), QString::asprintf("%.4d", low.value()));
    }
    EXPECT_GT(cuts, 3);
    EXPECT_GE(frames.size(), before + cuts);
    EXPECT_EQ(changed.size(), 0);
    QTest::mouseRelease(&low, Qt::LeftButton, {}, {low.width() / 2, from.y()});
    EXPECT_EQ(changed.size(), 1);
    EXPECT_FALSE(isOutlined());
    // All of the drag is one step.
    undo().trigger();
    EXPECT_EQ(cut().xMin, 0);
    EXPECT_EQ(low.value(), 0);
    EXPECT_FALSE(undo().isEnabled());
}

TEST_F(CutPlanes, APressThatMovesNothingTellsNothing)
{
    load({picFile("a.pic")});
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    QTest::mouseClick(&slider("sldXMin"), Qt::LeftButton, {}, handleOf(slider("sldXMin")));
    EXPECT_EQ(changed.size(), 0);
    EXPECT_FALSE(isOutlined());
    EXPECT_FALSE(undo().isEnabled());
}

TEST_F(CutPlanes, KeysMoveASliderAndTellAtOnce)
{
    load({picFile("a.pic", 16, 12, 8)});
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    QTest::keyClick(&slider("sldYMax"), Qt::Key_Left);
    QTest::keyClick(&slider("sldYMax"), Qt::Key_Left);
    EXPECT_EQ(cut().yMax, 9);
    EXPECT_EQ(changed.size(), 2);
    QTest::keyClick(&slider("sldYMax"), Qt::Key_Home);
    EXPECT_EQ(cut(), (CutBox{0, 15, 0, 0, 0, 7}));
    QTest::keyClick(&slider("sldYMin"), Qt::Key_End);
    EXPECT_EQ(cut(), (CutBox{0, 15, 11, 11, 0, 7}));
}

TEST_F(CutPlanes, ANumberIsTypedAndTakenWithEnter)
{
    load({picFile("a.pic", 16, 12, 8)});
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    typeInto(box("spnXMin"), "5");
    EXPECT_EQ(cut().xMin, 5);
    EXPECT_EQ(slider("sldXMin").value(), 5);
    EXPECT_EQ(text("spnXMin"), "0005");
    EXPECT_EQ(changed.size(), 1);
    EXPECT_TRUE(form().isShown());
    // Nothing is taken before that.
    box("spnZMax").setFocus();
    box("spnZMax").selectAll();
    QTest::keyClicks(&box("spnZMax"), "3");
    EXPECT_EQ(cut().zMax, 7);
    QTest::keyClick(&box("spnZMax"), Qt::Key_Return);
    EXPECT_EQ(cut().zMax, 3);
}

TEST_F(CutPlanes, ANumberOutOfRangeBecomesTheNearestOne)
{
    load({picFile("a.pic", 16, 12, 8)});
    typeInto(box("spnZMax"), "3");
    typeInto(box("spnZMax"), "99999");
    EXPECT_EQ(cut().zMax, 7);
    EXPECT_EQ(text("spnZMax"), "0007");
    typeInto(box("spnZMax"), "-4");
    EXPECT_EQ(cut().zMax, 0);
    typeInto(box("spnZMin"), "99999999999999999999");
    EXPECT_EQ(cut().zMin, 7);
    QApplication::clipboard()->setText("17 apples");
    box("spnXMin").setFocus();
    box("spnXMin").selectAll();
    QTest::keyClick(&box("spnXMin"), Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&box("spnXMin"), Qt::Key_Return);
    EXPECT_EQ(cut().xMin, 0);
    EXPECT_EQ(text("spnXMin"), "0000");
}

TEST_F(CutPlanes, TheSlidersStayMinSlicesApart)
{
    load({picFile("a.pic", 16, 12, 8)});
    typeInto(box("spnXInterval"), "4");
    EXPECT_EQ(slider("sldXMax").minimum(), 3);
    EXPECT_EQ(slider("sldXMin").maximum(), 12);
    EXPECT_EQ(cut(), (CutBox{0, 15, 0, 11, 0, 7}));
    typeInto(box("spnXMin"), "13");
    EXPECT_EQ(cut().xMin, 12) << "four slices are left";
    typeInto(box("spnXMax"), "6");
    EXPECT_EQ(cut().xMin, 3);
    EXPECT_EQ(cut().xMax, 6);
    typeInto(box("spnXInterval"), "6");
    EXPECT_EQ(cut().xMin, 1);
    EXPECT_EQ(cut().xMax, 6);
    typeInto(box("spnXInterval"), "99");
    EXPECT_EQ(box("spnXInterval").value(), 15);
    EXPECT_EQ(cut().xMin, 0);
    EXPECT_EQ(cut().xMax, 14);
    typeInto(box("spnXInterval"), "1");
    EXPECT_EQ(slider("sldXMin").maximum(), 15);
}

TEST_F(CutPlanes, ResetShowsTheWholeStackAndIsTakenBack)
{
    load({picFile("a.pic", 16, 12, 8)});
    typeInto(box("spnXMin"), "5");
    typeInto(box("spnZMax"), "4");
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    QTest::mouseClick(&child<QPushButton>("btnReset"), Qt::LeftButton);
    EXPECT_EQ(cut(), (CutBox{0, 15, 0, 11, 0, 7}));
    EXPECT_EQ(slider("sldXMin").value(), 0);
    EXPECT_EQ(text("spnZMax"), "0007");
    EXPECT_EQ(changed.size(), 1);
    undo().trigger();
    EXPECT_EQ(cut(), (CutBox{5, 15, 0, 11, 0, 4}));
    EXPECT_EQ(text("spnXMin"), "0005");
}

TEST_F(CutPlanes, ZNumbersAreThoseOfTheLayersThatWereRead)
{
    loadPart(2, 20, 3);
    EXPECT_EQ(text("spnZMin"), "0002");
    EXPECT_EQ(text("spnZMax"), "0020");
    EXPECT_EQ(slider("sldZMin").singleStep(), 3);
    EXPECT_EQ(box("spnZInterval").maximum(), 5);
    typeInto(box("spnZMin"), "8");
    EXPECT_EQ(cut().zMin, 2);
    QTest::keyClick(&slider("sldZMin"), Qt::Key_Right);
    EXPECT_EQ(text("spnZMin"), "0011");
    EXPECT_EQ(cut().zMin, 3);
    // A number between two layers is that of the one before, and stays.
    typeInto(box("spnZMin"), "13");
    EXPECT_EQ(cut().zMin, 3);
    EXPECT_EQ(text("spnZMin"), "0013");
    typeInto(box("spnZMax"), "11");
    EXPECT_EQ(cut(), (CutBox{0, 15, 0, 11, 3, 3}));
    EXPECT_EQ(text("spnZMin"), "0011");
}

TEST_F(CutPlanes, NumbersOfAReducedStackAreThoseOfTheFile)
{
    loadPart(0, 20, 1, 2);
    EXPECT_EQ(text("spnXMax"), "0015");
    EXPECT_EQ(text("spnZMax"), "0020");
    typeInto(box("spnXMin"), "6");
    EXPECT_EQ(cut().xMin, 3);
    typeInto(box("spnZMax"), "9");
    EXPECT_EQ(cut().zMax, 4);
}

TEST_F(CutPlanes, NumbersOfAReslicedStackAreThoseOfTheFile)
{
    loadPart(0, 20, 1, 1, 41);
    ASSERT_EQ(app().scene().current()->finalDepth(), 41);
    EXPECT_EQ(text("spnZMax"), "0020");
    typeInto(box("spnZMin"), "5");
    EXPECT_EQ(cut().zMin, 10);
    EXPECT_EQ(cut().zMax, 40);
}

TEST_F(CutPlanes, AnAxisWithoutRoomForACutIsDisabled)
{
    load({picFile("a.pic", 16, 2, 1)});
    EXPECT_TRUE(child<QGroupBox>("grpX").isEnabled());
    EXPECT_FALSE(child<QGroupBox>("grpY").isEnabled());
    EXPECT_FALSE(child<QGroupBox>("grpZ").isEnabled());
    load({picFile("b.pic", 3, 3, 3)});
    for (const char* name : {"grpX", "grpY", "grpZ"})
        EXPECT_TRUE(child<QGroupBox>(name).isEnabled()) << name;
}

TEST_F(CutPlanes, TheTabKeyGoesDownTheForm)
{
    load({picFile("a.pic")});
    const QWidget* first = &slider("sldXMin");
    QStringList stops;
    for (const QWidget* each = first->nextInFocusChain(); each != first; each = each->nextInFocusChain()) {
        if (form().isAncestorOf(each) && (each->focusPolicy() & Qt::TabFocus) != 0 &&
            each->focusProxy() == nullptr)
            stops.append(each->objectName());
    }
    EXPECT_EQ(stops, QStringList({"spnXMin", "sldXMax", "spnXMax", "spnXInterval", "sldYMin", "spnYMin",
                                  "sldYMax", "spnYMax", "spnYInterval", "sldZMin", "spnZMin", "sldZMax",
                                  "spnZMax", "spnZInterval", "btnReset"}));
}

TEST_F(CutPlanes, SlotsWithoutAStackDoNothing)
{
    form().checkXmin(3);
    form().checkZMax(-3);
    form().YIntervalChanged(4);
    QTest::mouseClick(&child<QPushButton>("btnReset"), Qt::LeftButton);
    EXPECT_FALSE(undo().isEnabled());
}

TEST_F(CutPlanes, ExportStaysEnabledForAWholeStack)
{
    load({picFile("a.pic", 16, 12, 8)});
    typeInto(box("spnXMin"), "5");
    QTest::mouseClick(&child<QPushButton>("btnReset"), Qt::LeftButton);
    EXPECT_TRUE(app().mainForm().action("fileSaveCoreAction")->isEnabled());
}

TEST_F(CutPlanes, ASliderThatIsHeldWhenTheStackGoesIsLetGo)
{
    load({picFile("a.pic")});
    QSlider& low = slider("sldXMin");
    QTest::mousePress(&low, Qt::LeftButton, {}, handleOf(low));
    app().closeAll();
    app().forms().create(FormId::CutPlanes, false);
    EXPECT_FALSE(isOutlined());
}

TEST_F(CutPlanes, TheBoxHasHandlesWhileTheFormIsShown)
{
    load({picFile("a.pic", 16, 12, 8)});
    EXPECT_FALSE(view().cutHandles.shown);
    form();
    EXPECT_TRUE(view().cutHandles.shown);
    typeInto(box("spnYInterval"), "3");
    EXPECT_EQ(view().cutHandles.leastSlices, (std::array<int, 3>{1, 3, 1}));
    app().forms().create(FormId::CutPlanes, false);
    EXPECT_FALSE(view().cutHandles.shown);
}

TEST_F(CutPlanes, AHandleIsDraggedInThePictureAndTheSliderFollows)
{
    loadCube();
    QSignalSpy changed(&form(), &CutPlanesForm::renderAreaChanged);
    const QPoint handle(widget().width() - 2, widget().height() / 2);
    const QPoint to = handle - QPoint(widget().width() / 4, 0);
    press(handle, Qt::LeftButton);
    EXPECT_TRUE(isOutlined());
    moveTo(to, Qt::LeftButton);
    EXPECT_EQ(cut(), (CutBox{0, 11, 0, 15, 0, 15}));
    EXPECT_EQ(slider("sldXMax").value(), 11);
    EXPECT_EQ(text("spnXMax"), "0011");
    EXPECT_EQ(changed.size(), 0);
    release(to, Qt::LeftButton);
    EXPECT_EQ(changed.size(), 1);
    EXPECT_FALSE(isOutlined());
    EXPECT_EQ(view().rotY, 0) << "the volume stays where it is";
    undo().trigger();
    EXPECT_EQ(cut().xMax, 15);
    EXPECT_EQ(text("spnXMax"), "0015");
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(CutPlanes, WithoutTheFormTheSameDragTurnsTheVolume)
{
    loadCube();
    const QPoint at(widget().width() - 2, widget().height() / 2);
    drag(at, at - QPoint(widget().width() / 4, 0), Qt::LeftButton);
    EXPECT_EQ(cut().xMax, 15);
    EXPECT_NE(view().rotY, 0);
}

TEST_F(CutPlanes, TheMouseShowsThatItIsOverAHandle)
{
    loadCube();
    form();
    moveTo({widget().width() - 2, widget().height() / 2}, Qt::NoButton);
    EXPECT_EQ(widget().cursor().shape(), Qt::PointingHandCursor);
    moveTo({widget().width() - 40, widget().height() / 2}, Qt::NoButton);
    EXPECT_EQ(widget().cursor().shape(), Qt::ArrowCursor);
}

TEST_F(CutPlanes, TheSessionKeepsTheIntervals)
{
    load({picFile("a.pic", 16, 12, 8)});
    typeInto(box("spnXInterval"), "4");
    typeInto(box("spnZInterval"), "2");
    QDomDocument document;
    QDomElement element = document.createElement("dialog");
    form().saveSession(element);
    const QDomElement intervals = element.firstChildElement("minslices");
    EXPECT_EQ(intervals.attribute("x"), "4");
    EXPECT_EQ(intervals.attribute("y"), "1");
    EXPECT_EQ(intervals.attribute("z"), "2");
    QDomDocument other;
    other.setContent(QString("<dialog><minslices x='5' y='no number' z='99'/></dialog>"));
    form().loadSession(other.documentElement());
    EXPECT_EQ(box("spnXInterval").value(), 5);
    EXPECT_EQ(box("spnYInterval").value(), 1);
    EXPECT_EQ(box("spnZInterval").value(), 7);
    EXPECT_EQ(slider("sldXMax").minimum(), 4);
    EXPECT_EQ(cut(), (CutBox{0, 15, 0, 11, 0, 7}));
}

} // namespace
} // namespace tirn
