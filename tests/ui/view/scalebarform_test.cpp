// The properties of the scale bar, in the whole program.

#include "ui/view/scalebarform.h"

#include <QColorDialog>
#include <QGroupBox>
#include <QLabel>

#include "ui/view/viewformtest.h"
#include "uisupport/modalanswers.h"
#include "uisupport/typednumber.h"

namespace tirn {
namespace {

class ScaleBarProperties : public test::ViewFormTest
{
protected:
    ScaleBarForm& bar()
    {
        if (form().findChild<ScaleBarForm*>() == nullptr)
            click("btnScaleBar");
        auto& shown = *form().findChild<ScaleBarForm*>();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&shown));
        shown.activateWindow();
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown.isActiveWindow(); }));
        return shown;
    }
    /// Enter would be the answer to the whole form.
    void typeSize(const QString& text)
    {
        auto& field = part<FloatSpinBox>("fspnSize");
        write(field, text);
        QTest::keyClick(&field, Qt::Key_Tab);
    }
    template <class Widget>
    Widget& part(const char* name)
    {
        auto* widget = bar().findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name);
        return *widget;
    }
    void pressButton(const QString& text)
    {
        for (QAbstractButton* each : bar().findChildren<QAbstractButton*>()) {
            if (each->text() == text) {
                each->click();
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                return;
            }
        }
        FAIL() << text.toStdString();
    }
};

TEST_F(ScaleBarProperties, HasItsTexts)
{
    EXPECT_EQ(bar().windowTitle(), "Scale Bar Properties");
    EXPECT_EQ(bar().objectName(), "Scale Bar");
    EXPECT_EQ(bar().findChild<QGroupBox*>()->title(), "Location");
    EXPECT_EQ(part<QAbstractButton>("rdUL").text(), "Upper Left");
    EXPECT_EQ(part<QAbstractButton>("rdUR").text(), "Upper Right");
    EXPECT_EQ(part<QAbstractButton>("rdLL").text(), "Lower Left");
    EXPECT_EQ(part<QAbstractButton>("rdLR").text(), "Lower Right");
    EXPECT_EQ(part<QAbstractButton>("btnOk").text(), "&Ok");
    EXPECT_EQ(part<QAbstractButton>("btnOk").shortcut(), QKeySequence("Alt+O"));
    EXPECT_EQ(part<QAbstractButton>("btnColor").text(), "Color");
    EXPECT_EQ(part<FloatSpinBox>("fspnSize").doubleMinValue(), 0.05);
    EXPECT_EQ(part<FloatSpinBox>("fspnSize").doubleMaxValue(), 1.7);
    EXPECT_EQ(bar().getSize(), 0.3);
    EXPECT_EQ(bar().getColor(), QColor(Qt::red));
    EXPECT_TRUE(part<QAbstractButton>("rdLL").isChecked());
    pressButton("Cancel");
}

TEST_F(ScaleBarProperties, AreShownWhileTheyAreChosenAndTakenBackAsOne)
{
    load({picFile("a.pic")});
    EXPECT_FALSE(view().showScaleBar);
    bar();
    EXPECT_TRUE(view().showScaleBar);
    part<QAbstractButton>("rdUR").click();
    EXPECT_EQ(view().scaleBarLocation, ScaleBarLocation::TopRight);
    typeSize(test::typedNumber("0.85"));
    EXPECT_EQ(view().scaleBarSize, 0.85);
    EXPECT_EQ(bar().getSize(), 0.85);
    const int before = steps();
    pressButton("&Ok");
    EXPECT_EQ(view().scaleBarLocation, ScaleBarLocation::TopRight);
    EXPECT_EQ(view().scaleBarSize, 0.85);
    EXPECT_EQ(steps(), before + 1);
    undo();
    EXPECT_EQ(view().scaleBarLocation, ScaleBarLocation::BottomLeft);
    EXPECT_EQ(view().scaleBarSize, 0.3);
    EXPECT_FALSE(view().showScaleBar);
}

TEST_F(ScaleBarProperties, CancelAndClosingRestoreWhatWasThere)
{
    load({picFile("a.pic")});
    const ViewState before = view();
    for (const bool closes : {false, true}) {
        part<QAbstractButton>("rdUL").click();
        part<QAbstractButton>("chkRound").click();
        typeSize(test::typedNumber("1.7"));
        // What is changed elsewhere meanwhile stays.
        changeView([closes](ViewState& state) { state.showBoundingBox = closes; });
        if (closes)
            EXPECT_TRUE(bar().close());
        else
            pressButton("Cancel");
        ViewState expected = before;
        expected.showBoundingBox = closes;
        EXPECT_TRUE(view() == expected) << closes;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(ScaleBarProperties, EnterInAFieldIsOk)
{
    enter(part<FloatSpinBox>("fspnSize"), test::typedNumber("0.5"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(form().findChild<ScaleBarForm*>(), nullptr);
    EXPECT_EQ(view().scaleBarSize, 0.5);
    EXPECT_TRUE(view().showScaleBar);
}

TEST_F(ScaleBarProperties, TheColourDialogHasTheTitleOfTheBackground)
{
    bar();
    settle();
    test::ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        static_cast<QColorDialog&>(dialog).setCurrentColor(Qt::cyan);
        dialog.accept();
    });
    bar().changeColor();
    EXPECT_EQ(answers.shown(), QStringList("Background Color"));
    EXPECT_EQ(view().scaleBarColor, QColor(Qt::cyan));
    EXPECT_EQ(bar().getColor(), QColor(Qt::cyan));
    pressButton("Cancel");
    EXPECT_EQ(view().scaleBarColor, QColor(Qt::red));
}

TEST_F(ScaleBarProperties, SizesOutOfRangeChangeNothing)
{
    for (const char* text : {"0.04", "1.71", "9", "-1", ""}) {
        typeSize(text);
        EXPECT_GE(view().scaleBarSize, 0.05) << text;
        EXPECT_LE(view().scaleBarSize, 1.7) << text;
    }
    pressButton("Cancel");
}

TEST_F(ScaleBarProperties, ShowTheLengthThatStandsInThePicture)
{
    load({picFile("a.pic")});
    changeView([](ViewState& state) { state.zoom = 1; });
    app().model().edit(Change::Voxels, [](Scene& scene) { scene.current()->stack().dimX = 0.5; });
    // 16 * 0.15 * 0.5 = 1.2 microns, of which a round bar shows 1.
    EXPECT_EQ(part<QLabel>("lblLength").text(), QStringLiteral("1 \u00b5m"));
    part<QAbstractButton>("chkRound").click();
    EXPECT_EQ(part<QLabel>("lblLength").text(), QStringLiteral("1.2 \u00b5m"));
    pressButton("Cancel");
}

} // namespace
} // namespace tirn
