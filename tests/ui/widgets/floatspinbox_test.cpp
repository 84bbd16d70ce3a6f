#include "ui/widgets/floatspinbox.h"

#include <limits>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

class FloatSpinBoxTest : public test::AppTest
{
protected:
    FloatSpinBoxTest() { box.setLocale(QLocale::c()); }

    void typeNumber(const QString& text)
    {
        box.selectAll();
        QTest::keyClicks(&box, text);
        QTest::keyClick(&box, Qt::Key_Return);
    }
    QString shown() const { return box.findChild<QLineEdit*>()->text(); }

    FloatSpinBox box;
};

TEST_F(FloatSpinBoxTest, AnArrowAddsOneLineStep)
{
    box.setDoubleRange(0, 2);
    box.setDoubleLineStep(0.1);
    QTest::keyClick(&box, Qt::Key_Up);
    QTest::keyClick(&box, Qt::Key_Up);
    QTest::keyClick(&box, Qt::Key_Up);
    EXPECT_EQ(box.value(), 3);
    EXPECT_EQ(box.doubleValue(), 0.3);
    EXPECT_EQ(shown(), "0.3");
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(box.doubleValue(), 0.2);
}

TEST_F(FloatSpinBoxTest, ArrowsMayTakeSeveralSteps)
{
    box.setDoubleLineStep(0.001);
    box.setSingleStep(250);
    QTest::keyClick(&box, Qt::Key_Up);
    EXPECT_EQ(box.doubleValue(), 0.25);
    EXPECT_EQ(shown(), "0.250");
}

TEST_F(FloatSpinBoxTest, ANumberThatWasSetStaysExactlyThat)
{
    box.setDoubleLineStep(0.0001);
    box.setDoubleValue(0.0645161290322581);
    EXPECT_EQ(box.doubleValue(), 0.0645161290322581);
    EXPECT_EQ(box.value(), 645);
    EXPECT_EQ(shown(), "0.0645");
    // Passing through it with the keyboard is no edit.
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_Tab);
    EXPECT_EQ(box.doubleValue(), 0.0645161290322581);
}

TEST_F(FloatSpinBoxTest, TypingTheSameTextIsAnEdit)
{
    box.setDoubleLineStep(0.0001);
    box.setDoubleValue(0.0645161290322581);
    typeNumber("0.0645");
    EXPECT_EQ(box.doubleValue(), 0.0645);
}

TEST_F(FloatSpinBoxTest, WithoutTrackingATextCountsWhenItIsComplete)
{
    box.setDoubleLineStep(0.01);
    box.setKeyboardTracking(false);
    box.setDoubleValue(0.333);
    QSignalSpy changed(&box, &FloatSpinBox::doubleValueChanged);
    EXPECT_FALSE(box.isBeingTyped());
    box.selectAll();
    QTest::keyClicks(&box, "0.33");
    EXPECT_TRUE(box.isBeingTyped());
    EXPECT_EQ(box.doubleValue(), 0.333);
    EXPECT_EQ(changed.count(), 0);
    // The text that already stood there is a number of its own.
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_FALSE(box.isBeingTyped());
    EXPECT_EQ(box.doubleValue(), 0.33);
    EXPECT_EQ(changed.count(), 1);
    box.selectAll();
    QTest::keyClicks(&box, "5.25");
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(box.doubleValue(), 5.25);
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(FloatSpinBoxTest, AnArrowLeavesTheNumberThatWasSet)
{
    box.setDoubleLineStep(0.1);
    box.setDoubleValue(0.333);
    QTest::keyClick(&box, Qt::Key_Up);
    EXPECT_EQ(box.doubleValue(), 0.4);
    QTest::keyClick(&box, Qt::Key_Up);
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(box.doubleValue(), 0.4);
}

TEST_F(FloatSpinBoxTest, AnIntegerSetFromOutsideCounts)
{
    box.setDoubleLineStep(0.1);
    box.setDoubleValue(0.333);
    const QSignalBlocker blocker(&box);
    box.setValue(7);
    EXPECT_EQ(box.doubleValue(), 0.7);
}

TEST_F(FloatSpinBoxTest, TellsOfEachChangeOnce)
{
    box.setDoubleLineStep(0.1);
    QSignalSpy changed(&box, &FloatSpinBox::doubleValueChanged);
    box.setDoubleValue(0.5);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.last().first().toDouble(), 0.5);
    box.setDoubleValue(0.5);
    EXPECT_EQ(changed.count(), 1);
    // The integer stays, the number does not.
    box.setDoubleValue(0.51);
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed.last().first().toDouble(), 0.51);
    box.setDoubleValue(0.9);
    ASSERT_EQ(changed.count(), 3);
    EXPECT_EQ(changed.last().first().toDouble(), 0.9);
}

TEST_F(FloatSpinBoxTest, TypedNumbersGoToTheNextStep)
{
    box.setDoubleLineStep(0.25);
    typeNumber("1.6");
    EXPECT_EQ(box.doubleValue(), 1.5);
    EXPECT_EQ(shown(), "1.50");
    typeNumber("1.65");
    EXPECT_EQ(box.doubleValue(), 1.75);
}

TEST_F(FloatSpinBoxTest, WhatIsNoNumberCannotBeTyped)
{
    box.setDoubleRange(-5, 5);
    box.setDoubleLineStep(0.01);
    box.setDoubleValue(2);
    typeNumber("-1.x2,5");
    EXPECT_EQ(box.doubleValue(), -1.25);
    // A number out of range leaves the last one.
    typeNumber("7");
    EXPECT_EQ(box.doubleValue(), -1.25);
    // More decimals than the step has.
    typeNumber("0.129");
    EXPECT_EQ(box.doubleValue(), 0.12);
}

TEST_F(FloatSpinBoxTest, BothLimitsAreReachedWhereTheyAreNoMultiples)
{
    box.setDoubleRange(0.25, 0.95);
    box.setDoubleLineStep(0.1);
    box.setDoubleValue(-3);
    EXPECT_EQ(box.doubleValue(), 0.25);
    box.setDoubleValue(3);
    EXPECT_EQ(box.doubleValue(), 0.95);
    for (int i = 0; i < 20; ++i)
        QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(box.doubleValue(), 0.25);
}

TEST_F(FloatSpinBoxTest, ANarrowerRangeMovesTheNumber)
{
    box.setDoubleRange(0, 10);
    box.setDoubleLineStep(0.5);
    box.setDoubleValue(8);
    QSignalSpy changed(&box, &FloatSpinBox::doubleValueChanged);
    box.setDoubleMaxValue(6);
    EXPECT_EQ(box.doubleValue(), 6);
    EXPECT_EQ(changed.count(), 1);
    box.setDoubleMinValue(6.5);
    EXPECT_EQ(box.doubleMinValue(), 6.5);
    EXPECT_EQ(box.doubleMaxValue(), 6.5);
    EXPECT_EQ(box.doubleValue(), 6.5);
    box.setDoubleMaxValue(1);
    EXPECT_EQ(box.doubleMinValue(), 1);
    EXPECT_EQ(box.doubleValue(), 1);
}

TEST_F(FloatSpinBoxTest, AnotherLineStepKeepsTheNumber)
{
    box.setDoubleRange(0, 10);
    box.setDoubleLineStep(0.1);
    box.setDoubleValue(2.3);
    box.setDoubleLineStep(1);
    EXPECT_EQ(box.doubleValue(), 2.3);
    EXPECT_EQ(box.value(), 2);
    EXPECT_EQ(box.doubleMaxValue(), 10);
}

TEST_F(FloatSpinBoxTest, WhatIsNotFiniteIsLeftOut)
{
    box.setDoubleValue(4);
    box.setDoubleValue(std::numeric_limits<double>::quiet_NaN());
    box.setDoubleValue(std::numeric_limits<double>::infinity());
    box.setDoubleLineStep(0);
    box.setDoubleLineStep(-1);
    EXPECT_EQ(box.doubleValue(), 4);
    EXPECT_EQ(box.doubleLineStep(), 1);
}

TEST_F(FloatSpinBoxTest, LimitsBeyondTheIntegersAreNoOverflow)
{
    box.setDoubleLineStep(0.0001);
    box.setDoubleRange(-1e300, 1e300);
    box.setDoubleValue(1e200);
    EXPECT_EQ(box.doubleValue(), 1e200);
    box.stepBy(1);
    EXPECT_GE(box.maximum(), box.value());
}

TEST_F(FloatSpinBoxTest, NumbersAreThoseOfTheLocale)
{
    box.setLocale(QLocale(QLocale::German));
    box.setDoubleRange(0, 5000);
    box.setDoubleLineStep(0.01);
    box.setDoubleValue(1234.5);
    EXPECT_EQ(shown(), "1234,50");
    typeNumber("0,75");
    EXPECT_EQ(box.doubleValue(), 0.75);
}

TEST_F(FloatSpinBoxTest, WorksWithAUnitAndWithAWordForTheLowestNumber)
{
    box.setDoubleLineStep(0.1);
    box.setSuffix(" um");
    box.setSpecialValueText("unknown");
    EXPECT_EQ(shown(), "unknown");
    box.setDoubleValue(0.5);
    EXPECT_EQ(shown(), "0.5 um");
    box.setDoubleValue(0.52);
    EXPECT_EQ(shown(), "0.5 um");
    typeNumber("1.5");
    EXPECT_EQ(box.doubleValue(), 1.5);
    typeNumber("0");
    EXPECT_EQ(shown(), "unknown");
}

} // namespace
} // namespace tirn
