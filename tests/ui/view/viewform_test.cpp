// The view form, driven in the whole program with real keys and clicks.

#include "ui/view/viewformtest.h"

#include <cmath>

#include <QCheckBox>
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>

#include "ui/widgets/colourbutton.h"
#include "uisupport/modalanswers.h"
#include "uisupport/typednumber.h"

namespace tirn {
namespace {

using View = test::ViewFormTest;

/// Every signal of the form, counted.
class Signals
{
public:
    explicit Signals(ViewForm& form)
    {
        spy(form, &ViewForm::changeWindowDimensions);
        spy(form, &ViewForm::toggleWindowAspectRatio);
        spy(form, &ViewForm::toggleScaleAspectRatio);
        spy(form, &ViewForm::changeVoxelScale);
        spy(form, &ViewForm::changeVoxelTranslation);
        spy(form, &ViewForm::changeVoxelRotation);
        spy(form, &ViewForm::showBoundingBox);
        spy(form, &ViewForm::showScaleBar);
    }
    int count() const
    {
        int sum = 0;
        for (const auto& each : m_spies)
            sum += each->size();
        return sum;
    }

private:
    template <class Signal>
    void spy(ViewForm& form, Signal signal)
    {
        m_spies.push_back(std::make_unique<QSignalSpy>(&form, signal));
    }

    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

TEST_F(View, HasItsTextsAndRanges)
{
    EXPECT_EQ(form().windowTitle(), "View");
    QStringList groups;
    for (const QGroupBox* group : form().findChildren<QGroupBox*>())
        groups.append(group->title());
    EXPECT_EQ(groups, QStringList({"Window", "Scale", "Rotation", "Translation"}));
    EXPECT_EQ(find<QCheckBox>("chkPreserveWindow").text(), "Preserve Aspect Ratio");
    EXPECT_EQ(find<QCheckBox>("chkPreserveWindow").toolTip(),
              "Preserve the relationship between width and height.");
    EXPECT_EQ(find<QSpinBox>("spnWidth").toolTip(), "The width of the rendering window.");
    EXPECT_EQ(find<QSpinBox>("spnHeight").toolTip(), "The height of the rendering window.");
    EXPECT_EQ(find<QCheckBox>("chkPreserveScale").text(), "Preserve Aspect Ratio");
    EXPECT_EQ(find<QCheckBox>("chkPreserveScale").toolTip(),
              "Preserve the relationship between the X, Y, and Z scalars.");
    struct Row
    {
        const char* name;
        const char* tips[3];
        double low, high, step;
    };
    const Row rows[] = {
        {"Scale",
         {"Scaling factor along the X axis of a volume.", "Scaling factor along the Y axis of a volume.",
          "Scaling factor along the Z axis of a volume."},
         0.01,
         100,
         0.01},
        {"Rotation",
         {"Rotation around the X axis.", "Rotation around the Y axis.", "Rotation around the Z axis."},
         0,
         360,
         1},
        // The tip of X is repeated on Z.
        {"Translation",
         {"Offset along the X axis.", "Offset along the Y axis.", "Offset along the X axis."},
         -100,
         100,
         0.01}};
    for (const Row& row : rows) {
        for (int axis = 0; axis < 3; ++axis) {
            const FloatSpinBox& each = box((row.name + std::string(1, "XYZ"[axis])).c_str());
            EXPECT_EQ(each.toolTip(), row.tips[axis]);
            EXPECT_EQ(each.doubleMinValue(), row.low) << row.name;
            EXPECT_EQ(each.doubleMaxValue(), row.high) << row.name;
            EXPECT_NEAR(each.doubleLineStep() * each.singleStep(), row.step, 1e-12) << row.name;
        }
    }
    const auto items = [&](const char* name) {
        QStringList texts;
        for (int i = 0; i < find<QComboBox>(name).count(); ++i)
            texts.append(find<QComboBox>(name).itemText(i));
        return texts;
    };
    EXPECT_EQ(items("cboRotationMode"), QStringList({"Quaternion", "Axis"}));
    EXPECT_EQ(items("cboPlane"), QStringList({"XY", "YZ", "XZ"}));
    EXPECT_EQ(find<QPushButton>("btnBoundingBox").text(), "Bounding Box");
    EXPECT_EQ(find<QPushButton>("btnBackgroundColor").text(), "Background Color");
    EXPECT_EQ(find<QPushButton>("btnScaleBar").text(), "Scale Bar");
}

TEST_F(View, ShowsWhatIsThereWhenItComesUp)
{
    load({picFile("a.pic")});
    changeView([](ViewState& state) {
        state.rotX = 12.5;
        state.transZ = -0.25;
        state.showBoundingBox = true;
        state.backgroundColor = Qt::darkGreen;
    });
    EXPECT_EQ(box("RotationX").doubleValue(), 12.5);
    EXPECT_EQ(box("TranslationZ").doubleValue(), -0.25);
    EXPECT_EQ(box("ScaleX").doubleValue(), 1);
    EXPECT_TRUE(find<QCheckBox>("chkBoundingBox").isChecked());
    EXPECT_FALSE(find<QCheckBox>("chkScaleBar").isChecked());
    EXPECT_EQ(find<ColourButton>("btnBackgroundColor").colour(), QColor(Qt::darkGreen));
    EXPECT_EQ(find<QSpinBox>("spnWidth").value(), widget().width());
    EXPECT_EQ(find<QSpinBox>("spnHeight").value(), widget().height());
}

TEST_F(View, ScaleNeedsAStack)
{
    EXPECT_FALSE(box("ScaleX").isEnabled());
    load({picFile("a.pic")});
    EXPECT_TRUE(box("ScaleX").isEnabled());
    app().closeAll();
    EXPECT_FALSE(box("ScaleX").isEnabled());
}

TEST_F(View, ANumberThatIsTypedCountsWithEnter)
{
    load({picFile("a.pic")});
    enter(box("ScaleZ"), test::typedNumber("2.5"));
    EXPECT_EQ(scale(), (AxisScale{1, 1, 2.5}));
    enter(box("RotationY"), test::typedNumber("33.5"));
    expectAngles(0, 33.5, 0);
    enter(box("TranslationX"), test::typedNumber("-1.25"));
    EXPECT_EQ(view().transX, -1.25);
    write(box("TranslationX"), "7");
    EXPECT_EQ(view().transX, -1.25) << "not before it is complete";
    QTest::keyClick(&box("TranslationX"), Qt::Key_Tab);
    EXPECT_EQ(view().transX, 7);
    EXPECT_TRUE(form().isShown()) << "Enter presses no button";
}

TEST_F(View, NumbersOutOfRangeChangeNothing)
{
    load({picFile("a.pic")});
    const char* cases[][2] = {{"ScaleX", "0"},         {"ScaleX", "-1"},          {"ScaleX", "1000"},
                              {"ScaleX", "0.001"},     {"RotationX", "400"},      {"RotationX", "-5"},
                              {"TranslationX", "101"}, {"TranslationX", "-1000"}, {"TranslationX", "nan"}};
    for (const auto& [name, text] : cases) {
        enter(box(name), text);
        QApplication::clipboard()->setText(text);
        box(name).selectAll();
        QTest::keyClick(&box(name), Qt::Key_V, Qt::ControlModifier);
        QTest::keyClick(&box(name), Qt::Key_Return);
        const double value = box(name).doubleValue();
        EXPECT_GE(value, box(name).doubleMinValue()) << name << " " << text;
        EXPECT_LE(value, box(name).doubleMaxValue()) << name << " " << text;
        EXPECT_TRUE(std::isfinite(scale().x) && scale().x >= 0.01 && scale().x <= 100) << text;
        EXPECT_TRUE(view().rotX >= 0 && view().rotX < 360) << text;
        EXPECT_LE(std::abs(view().transX), 100) << text;
    }
    for (const char* text : {"0", "-5", "127", "999999", "abc", ""}) {
        enter(find<QSpinBox>("spnWidth"), text);
        const int width = find<QSpinBox>("spnWidth").value();
        EXPECT_TRUE(QTest::qWaitFor([&] { return widget().width() == width; })) << text;
        EXPECT_GE(width, 128) << text;
        EXPECT_LE(width, 16384) << text;
    }
}

TEST_F(View, FollowsADragAndSendsNothingBack)
{
    load({picFile("a.pic")});
    const Signals sent(form());
    const int before = steps();
    drag({100, 100}, {150, 120}, Qt::LeftButton);
    EXPECT_NEAR(box("RotationY").doubleValue(), 50.0 / widget().width() * 180, 1e-9);
    EXPECT_NEAR(box("RotationX").doubleValue(), 20.0 / widget().height() * 180, 1e-9);
    drag({100, 100}, {150, 100}, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_NEAR(box("ScaleX").doubleValue(), 1 + 50.0 / widget().width(), 1e-9);
    drag({100, 100}, {150, 100}, Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_NEAR(box("TranslationX").doubleValue(), 50.0 / widget().width(), 1e-9);
    EXPECT_EQ(sent.count(), 0);
    EXPECT_EQ(steps(), before);
}

TEST_F(View, FollowsASpinningVolumeAndSendsNothingBack)
{
    load({picFile("a.pic")});
    const Signals sent(form());
    app().model().edit(Change::Pose, [](Scene& scene) { scene.view.spinX = 5; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return box("RotationY").doubleValue() > 0; }));
    const double seen = box("RotationY").doubleValue();
    EXPECT_TRUE(QTest::qWaitFor([&] { return box("RotationY").doubleValue() != seen; }));
    widget().stopAndWait();
    settle();
    EXPECT_EQ(box("RotationY").doubleValue(), view().rotY) << "the last angle arrives, too";
    EXPECT_EQ(sent.count(), 0);
}

TEST_F(View, WhatIsBeingTypedStaysWhileTheVolumeSpins)
{
    load({picFile("a.pic")});
    form();
    app().model().edit(Change::Pose, [](Scene& scene) { scene.view.spinX = 5; });
    write(box("RotationX"), "45");
    const double seen = box("RotationY").doubleValue();
    EXPECT_TRUE(QTest::qWaitFor([&] { return box("RotationY").doubleValue() != seen; }));
    EXPECT_EQ(box("RotationX").cleanText(), "45");
    QTest::keyClick(&box("RotationX"), Qt::Key_Return);
    EXPECT_EQ(view().rotX, 45);
    widget().stopAndWait();
}

TEST_F(View, EachResetIsItsOwn)
{
    load({picFile("a.pic")});
    // As a calibrated stack has it.
    app().model().edit(Change::Scale, [](Scene& scene) {
        scene.current()->baseScale = {0.5, 0.5, 1};
        scene.current()->scale = {3, 4, 5};
    });
    changeView([](ViewState& state) {
        state.rotX = 1;
        state.rotY = 2;
        state.rotZ = 3;
        state.transX = 4;
        state.transY = 5;
        state.transZ = 6;
    });
    form();
    click("btnResetRotation");
    expectAngles(0, 0, 0);
    EXPECT_EQ(view().transY, 5);
    EXPECT_EQ(scale(), (AxisScale{3, 4, 5}));
    click("btnResetScale");
    EXPECT_EQ(scale(), (AxisScale{0.5, 0.5, 1})) << "what loading gave";
    EXPECT_EQ(view().transY, 5);
    click("btnResetTranslation");
    EXPECT_EQ(view().transX, 0);
    EXPECT_EQ(view().transY, 0);
    EXPECT_EQ(view().transZ, 0);
    undo();
    EXPECT_EQ(view().transY, 5);
    undo();
    EXPECT_EQ(scale(), (AxisScale{3, 4, 5}));
    undo();
    expectAngles(1, 2, 3);
}

TEST_F(View, KeepsTheRatioOfTheScaleThatLoadingGave)
{
    load({picFile("a.pic")});
    app().model().edit(Change::Scale, [](Scene& scene) {
        scene.current()->baseScale = scene.current()->scale = {1, 1, 2};
    });
    form();
    QTest::mouseClick(&find<QCheckBox>("chkPreserveScale"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_TRUE(app().scene().current()->preserveScaleRatio);
    enter(box("ScaleX"), "3");
    EXPECT_EQ(scale(), (AxisScale{3, 3, 6}));
    EXPECT_EQ(box("ScaleZ").doubleValue(), 6);
}

TEST_F(View, AHeldArrowIsTakenBackAsOneStep)
{
    load({picFile("a.pic")});
    const int before = steps();
    auto& field = box("RotationX");
    field.setFocus();
    for (int i = 0; i < 5; ++i)
        QTest::keyPress(&field, Qt::Key_Up);
    QTest::keyRelease(&field, Qt::Key_Up);
    EXPECT_EQ(view().rotX, 5);
    EXPECT_EQ(steps(), before + 1);
    QTest::keyClick(&field, Qt::Key_Up);
    EXPECT_EQ(steps(), before + 2);
    undo();
    EXPECT_EQ(view().rotX, 5);
    undo();
    EXPECT_EQ(view().rotX, 0);
    EXPECT_EQ(field.doubleValue(), 0);
}

TEST_F(View, AnglesGoRoundInBothDirections)
{
    load({picFile("a.pic")});
    auto& field = box("RotationZ");
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_Down);
    EXPECT_EQ(view().rotZ, 359);
    EXPECT_EQ(field.doubleValue(), 359);
    QTest::keyClick(&field, Qt::Key_Up);
    EXPECT_EQ(view().rotZ, 0);
    enter(field, "360");
    EXPECT_EQ(view().rotZ, 0);
    EXPECT_EQ(field.doubleValue(), 0);
}

TEST_F(View, AxisModeSetsTheAnglesAndQuaternionModeTurnsAboutTheScreen)
{
    load({picFile("a.pic")});
    form();
    choose("cboRotationMode", 1);
    enter(box("RotationX"), "90");
    enter(box("RotationY"), "90");
    expectAngles(90, 90, 0);
    click("btnResetRotation");
    choose("cboRotationMode", 0);
    enter(box("RotationX"), "90");
    expectAngles(90, 0, 0);
    // Ry(90) * Rx(90): the volume's x axis goes to -z, its y axis to x, its z axis to -y.
    enter(box("RotationY"), "90");
    const ViewState shown = view();
    const Matrix4f m = rotationMatrix(shown.rotX, shown.rotY, shown.rotZ);
    const std::array<float, 16> expected = {0, 0, -1, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(m[i], expected[i], 1e-6F) << i;
    EXPECT_EQ(box("RotationZ").doubleValue(), shown.rotZ);
    EXPECT_EQ(box("RotationY").doubleValue(), shown.rotY);
}

TEST_F(View, TheRotationModeIsRemembered)
{
    EXPECT_EQ(find<QComboBox>("cboRotationMode").currentText(), "Axis");
    choose("cboRotationMode", 0);
    EXPECT_TRUE(app().mainForm().close());
    restart();
    auto* again = static_cast<ViewForm*>(app().forms().create(FormId::View, true));
    EXPECT_EQ(again->findChild<QComboBox*>("cboRotationMode")->currentText(), "Quaternion");
}

TEST_F(View, APlaneIsTurnedToTheViewer)
{
    load({picFile("a.pic")});
    auto& plane = find<QComboBox>("cboPlane");
    EXPECT_EQ(plane.currentText(), "XY");
    choose("cboPlane", 1);
    expectAngles(0, 270, 0);
    choose("cboPlane", 2);
    expectAngles(90, 0, 0);
    choose("cboPlane", 0);
    expectAngles(0, 0, 0);
    drag({100, 100}, {150, 120}, Qt::LeftButton);
    EXPECT_EQ(plane.currentIndex(), -1) << "none of them faces the viewer";
}

TEST_F(View, TabGoesThroughTheFormAsItStands)
{
    load({picFile("a.pic")});
    find<QCheckBox>("chkPreserveWindow").setFocus();
    QStringList names;
    for (int i = 0; i < 22; ++i) {
        names.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(
        names.join(' ').toStdString(),
        "chkPreserveWindow spnWidth spnHeight chkPreserveScale fspnScaleX fspnScaleY fspnScaleZ "
        "btnResetScale fspnRotationX fspnRotationY fspnRotationZ btnResetRotation cboRotationMode "
        "cboPlane fspnTranslationX fspnTranslationY fspnTranslationZ btnResetTranslation chkBoundingBox "
        "btnBoundingBox chkScaleBar btnScaleBar");
}

TEST_F(View, TheWindowTakesTheSizeThatIsTyped)
{
    form();
    const Signals sent(form());
    enter(find<QSpinBox>("spnWidth"), "600");
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().width() == 600; }));
    EXPECT_EQ(sent.count(), 1);
    EXPECT_EQ(find<QSpinBox>("spnHeight").value(), widget().height());
}

TEST_F(View, AKeptRatioGivesTheOtherSide)
{
    form();
    widget().changeWindowDimensions(600, 400);
    EXPECT_TRUE(QTest::qWaitFor([&] { return find<QSpinBox>("spnHeight").value() == 400; }));
    QTest::mouseClick(&find<QCheckBox>("chkPreserveWindow"), Qt::LeftButton, {}, QPoint(8, 8));
    enter(find<QSpinBox>("spnWidth"), "301");
    // 301 * 400 / 600 = 200.67, rounded half up.
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().size() == QSize(301, 201); }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return find<QSpinBox>("spnHeight").value() == 201; }));
}

TEST_F(View, FollowsTheSizeOfTheWindow)
{
    form();
    const Signals sent(form());
    app().mainForm().resize(700, 650);
    EXPECT_TRUE(QTest::qWaitFor([&] { return find<QSpinBox>("spnWidth").value() == 700; }));
    EXPECT_EQ(find<QSpinBox>("spnHeight").value(), widget().height());
    EXPECT_EQ(sent.count(), 0);
}

TEST_F(View, BoxAndBarAreShownAndTakenBack)
{
    form();
    QSignalSpy boxShown(&form(), &ViewForm::showBoundingBox);
    QSignalSpy barShown(&form(), &ViewForm::showScaleBar);
    find<QCheckBox>("chkBoundingBox").click();
    find<QCheckBox>("chkScaleBar").click();
    EXPECT_TRUE(view().showBoundingBox);
    EXPECT_TRUE(view().showScaleBar);
    EXPECT_EQ(boxShown.size(), 1);
    EXPECT_EQ(barShown.size(), 1);
}

TEST_F(View, ColoursAreAskedForWithTheirTitles)
{
    form();
    test::ModalAnswers answers;
    const auto take = [](const QColor& from, const QColor& to) {
        return [=](QDialog& dialog) {
            auto& colours = static_cast<QColorDialog&>(dialog);
            EXPECT_EQ(colours.currentColor(), from);
            colours.setCurrentColor(to);
            colours.accept();
        };
    };
    answers.add(take(Qt::blue, Qt::yellow));
    click("btnBoundingBox");
    answers.add(take(Qt::black, Qt::gray));
    click("btnBackgroundColor");
    answers.add([](QDialog& dialog) { dialog.reject(); });
    click("btnBackgroundColor");
    EXPECT_EQ(answers.shown(), QStringList({"Bounding Box Color", "Background Color", "Background Color"}));
    EXPECT_EQ(view().boxColor, QColor(Qt::yellow));
    EXPECT_EQ(view().backgroundColor, QColor(Qt::gray));
    EXPECT_EQ(find<ColourButton>("btnBackgroundColor").colour(), QColor(Qt::gray));
}

TEST_F(View, ColourVisionIsChosenAndFollowed)
{
    find<QComboBox>("cboColorVision").setCurrentIndex(2);
    EXPECT_EQ(view().colorVision, ColorVision::Deutan);
    app().model().undoStack().undo();
    EXPECT_EQ(find<QComboBox>("cboColorVision").currentText(), "Normal");
    changeView([](ViewState& state) { state.colorVision = ColorVision::Tritan; });
    EXPECT_EQ(find<QComboBox>("cboColorVision").currentText(), "Tritan");
}

TEST_F(View, ScaleChangedStoresTheScale)
{
    load({picFile("a.pic")});
    const Signals sent(form());
    form().scaleChanged(2, 3, 4);
    EXPECT_EQ(scale(), (AxisScale{2, 3, 4}));
    EXPECT_EQ(box("ScaleZ").doubleValue(), 4);
    EXPECT_EQ(sent.count(), 0);
}

TEST_F(View, TheSessionKeepsPoseLookAndWindow)
{
    load({picFile("a.pic")});
    form();
    changeView([](ViewState& state) {
        state.rotX = 10.25;
        state.transY = -2;
        state.backgroundColor = QColor(1, 2, 3);
        state.showScaleBar = true;
    });
    find<QCheckBox>("chkPreserveWindow").click();
    QDomDocument document;
    QDomElement element = document.createElement("dialog");
    form().saveSession(element);
    EXPECT_EQ(element.firstChildElement("window").attribute("width").toInt(), widget().width());
    EXPECT_EQ(element.firstChildElement("window").attribute("preserve"), "1");
    changeView([](ViewState& state) { state = {}; });
    find<QCheckBox>("chkPreserveWindow").click();
    element.firstChildElement("window").setAttribute("width", 560);
    form().loadSession(element);
    EXPECT_EQ(view().rotX, 10.25);
    EXPECT_EQ(view().transY, -2);
    EXPECT_EQ(view().backgroundColor, QColor(1, 2, 3));
    EXPECT_TRUE(view().showScaleBar);
    EXPECT_TRUE(find<QCheckBox>("chkPreserveWindow").isChecked());
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().width() == 560; }));
}

} // namespace
} // namespace tirn
