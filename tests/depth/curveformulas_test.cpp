#include <cmath>

#include <gtest/gtest.h>

#include "depth/zcurve.h"
#include "support/slowdepth.h"

namespace tirn {
namespace {

using Values = std::vector<double>;

Values power(int slices, const CurveParameters& parameters)
{
    Values curve(static_cast<std::size_t>(slices), 1.0);
    powerCurve(curve, parameters);
    return curve;
}

Values linear(int slices, double offset, int maximum)
{
    Values curve(static_cast<std::size_t>(slices), 1.0);
    linearCurve(curve, offset, maximum);
    return curve;
}

TEST(CurveFormulas, TheDefaultsAreThoseOfTheForm)
{
    EXPECT_EQ(CurveParameters(), (CurveParameters{1.0, 1.0, 0.0, 4}));
}

TEST(CurveFormulas, ThePowerCurveRisesFromOneAndIsCut)
{
    // 1 + 4 * i / 4, cut to 4.
    EXPECT_EQ(power(5, {1, 1, 0, 4}), (Values{1, 2, 3, 4, 4}));
    // 1 + 2 * 0.5 * (i / 4)^2.
    EXPECT_EQ(power(5, {0.5, 2, 0, 2}), (Values{1, 1.0625, 1.25, 1.5625, 2}));
}

TEST(CurveFormulas, SlicesInFrontOfTheOffsetGetOneFromThePowerCurveOnly)
{
    EXPECT_EQ(power(5, {1, 1, 2, 4}), (Values{1, 1, 1, 2, 3}));
    // (i - 2) / (4 / 4) + 1: there is no lower bound.
    EXPECT_EQ(linear(5, 2, 4), (Values{-1, 0, 1, 2, 3}));
    EXPECT_EQ(linear(5, -2, 4), (Values{3, 4, 4, 4, 4}));
}

TEST(CurveFormulas, AgreeWithTheSlowReference)
{
    for (const int slices : {2, 3, 7, 100}) {
        for (const double p : {0.1, 0.333333, 1.0, 2.5}) {
            for (const double offset : {-3.5, 0.0, 1.25}) {
                EXPECT_EQ(power(slices, {0.75, p, offset, 3}),
                          test::slowPowerCurve(slices, 0.75, p, offset, 3));
                EXPECT_EQ(linear(slices, offset, 5), test::slowLinearCurve(slices, offset, 5));
            }
        }
    }
}

TEST(CurveFormulas, OneSliceSurvivesTheDivisionByZero)
{
    EXPECT_TRUE(std::isnan(power(1, {1, 1, 0, 4})[0]));
    EXPECT_EQ(power(1, {1, 1, -1, 4})[0], 4) << "infinity is cut";
    EXPECT_EQ(power(1, {1, 1, 1, 4})[0], 1);
    EXPECT_TRUE(std::isnan(linear(1, 0, 4)[0]));
    EXPECT_EQ(linear(1, -1, 4)[0], 4);
    EXPECT_EQ(linear(1, 1, 4)[0], -INFINITY);
    EXPECT_TRUE(power(0, {}).empty());
    EXPECT_TRUE(linear(0, 0, 4).empty());
}

TEST(CurveFormulas, ACurveFillsTheArrayThatItShares)
{
    ZCurve curve(3);
    const ZCurve::Array array = curve.curve();
    curve.powerCurve({1, 1, 0, 2});
    EXPECT_EQ(*array, (Values{1, 2, 2}));
    curve.linearCurve(1, 2);
    EXPECT_EQ(*array, (Values{0, 1, 2}));
}

} // namespace
} // namespace tirn
