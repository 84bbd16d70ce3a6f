#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "image/filters/pointfilters.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::sample;
using test::samples;
using test::StackShape;

class FlipOf : public ::testing::TestWithParam<StackShape>
{};

TEST_P(FlipOf, EachAxisMirrorsTheVoxels)
{
    const StackShape shape = GetParam();
    for (const char axis : {'X', 'Y', 'Z'}) {
        const auto before = test::randomStack(shape, 7);
        const auto stack = test::randomStack(shape, 7);
        stack->flip(axis);
        for (int z = 0; z < shape.z; ++z) {
            for (int y = 0; y < shape.y; ++y) {
                for (int x = 0; x < shape.x; ++x) {
                    for (int c = 0; c < shape.channels; ++c)
                        ASSERT_EQ(sample(*stack, x, y, z, c),
                                  sample(*before, axis == 'X' ? shape.x - 1 - x : x,
                                         axis == 'Y' ? shape.y - 1 - y : y, axis == 'Z' ? shape.z - 1 - z : z,
                                         c));
                }
            }
        }
        stack->flip(axis);
        EXPECT_EQ(samples(*stack), samples(*before));
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, FlipOf,
                         ::testing::Values(StackShape{1, 1, 1, 1, 8}, StackShape{33, 5, 4, 1, 8},
                                           StackShape{32, 4, 5, 2, 8}, StackShape{67, 3, 3, 3, 8},
                                           StackShape{5, 6, 7, 4, 8}, StackShape{5, 6, 7, 5, 8},
                                           StackShape{2, 2, 2, 3, 8}, StackShape{11, 3, 2, 7, 8},
                                           StackShape{70, 3, 2, 1, 16}, StackShape{9, 3, 2, 2, 12},
                                           StackShape{9, 8, 3, 3, 16}, StackShape{9, 3, 2, 4, 16},
                                           StackShape{20000, 3, 2, 1, 8}));

TEST_P(FlipOf, TwiceGivesBackTheStack)
{
    const auto stack = test::randomStack(GetParam(), 7);
    const std::vector<int> before = samples(*stack);
    for (const char axis : {'X', 'Y', 'Z'}) {
        stack->flip(axis);
        stack->flip(axis);
        EXPECT_EQ(samples(*stack), before) << axis;
    }
}

TEST(Flip, AnOddSizeLeavesTheMiddleAlone)
{
    const auto stack = test::stackFrom({5, 1, 1, 1, 8}, {1, 2, 3, 4, 5});
    stack->flip('X');
    EXPECT_EQ(samples(*stack), (std::vector<int>{5, 4, 3, 2, 1}));
}

TEST(Flip, TakesEitherCaseAndIgnoresOtherLetters)
{
    const auto upper = test::randomStack({5, 4, 3, 1, 8}, 7);
    const auto lower = test::randomStack({5, 4, 3, 1, 8}, 7);
    const std::vector<int> before = samples(*upper);
    upper->flip('Q');
    EXPECT_EQ(samples(*upper), before);
    upper->flip('X');
    lower->flip('x');
    EXPECT_EQ(samples(*upper), samples(*lower));
    EXPECT_NE(samples(*upper), before);
}

TEST(Flip, ReportsTheAxisAndThenEachNewPercentage)
{
    const std::pair<char, const char*> axes[] = {
        {'x', "Flipping along X axis"}, {'Y', "Flipping along Y axis"}, {'Z', "Flipping along Z axis"}};
    for (const auto& [axis, text] : axes) {
        const auto stack = test::randomStack({4, 4, 8, 1, 8}, 7);
        QStringList messages;
        std::vector<int> done;
        std::vector<int> totals;
        Progress progress;
        progress.report = [&](const QString& message, int step, int total) {
            messages.append(message);
            done.push_back(step);
            totals.push_back(total);
        };
        stack->flip(axis, progress);
        ASSERT_FALSE(messages.isEmpty());
        EXPECT_EQ(messages.takeFirst(), QLatin1String(text));
        EXPECT_EQ(messages.count(QString()), messages.size());
        EXPECT_EQ(totals.front(), 100);
        EXPECT_EQ(totals.back(), -1);
        if (axis == 'Z')
            EXPECT_EQ(done, (std::vector<int>{0, 25, 50, 75, 100}));
        else
            EXPECT_EQ(done, (std::vector<int>{0, 12, 25, 37, 50, 62, 75, 87, 100}));
    }
}

TEST(Flip, ACancelledFlipLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({1024, 1024, 40, 1, 8}, 7);
    const std::vector<int> before = samples(*stack);
    for (const char axis : {'X', 'Y', 'Z'}) {
        std::atomic<bool> cancel = false;
        int reports = 0;
        Progress progress;
        progress.cancel = &cancel;
        progress.report = [&](const QString&, int, int) { cancel = ++reports > 1; };
        stack->flip(axis, progress);
        EXPECT_GT(reports, 1);
        EXPECT_TRUE(samples(*stack) == before) << axis;
    }
}

TEST(Flip, AnUnreadStackIsReadFirst)
{
    const QTemporaryDir folder;
    ImageFile stack(QStringList{test::PicFile{}.save(folder.filePath(QStringLiteral("a.pic")))});
    stack.flip('X');
    EXPECT_EQ(sample(stack, 0, 0, 0), 3);
    ImageFile nothing;
    nothing.flip('X');
    EXPECT_FALSE(nothing.isLoaded());
}

TEST(Invert, TwiceGivesBackTheStack)
{
    for (const int bits : {8, 12, 16}) {
        const auto stack = test::randomStack({33, 5, 4, 2, bits}, 9);
        const std::vector<int> before = samples(*stack);
        invert(*stack);
        for (std::size_t i = 0; i < before.size(); ++i)
            ASSERT_EQ(samples(*stack)[i], (1 << bits) - 1 - before[i]);
        invert(*stack);
        EXPECT_EQ(samples(*stack), before);
    }
}

TEST(Invert, ACancelledRunLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({1024, 1024, 40, 1, 8}, 7);
    const std::vector<int> before = samples(*stack);
    std::atomic<bool> cancel = false;
    int reports = 0;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int, int) { cancel = ++reports > 1; };
    invert(*stack, progress);
    EXPECT_GT(reports, 1);
    EXPECT_TRUE(samples(*stack) == before);
}

TEST(Invert, AnUnreadStackIsReadFirst)
{
    const QTemporaryDir folder;
    ImageFile stack(QStringList{test::PicFile{}.save(folder.filePath(QStringLiteral("a.pic")))});
    invert(stack);
    EXPECT_EQ(sample(stack, 3, 2, 1), 255 - 123);
}

} // namespace
} // namespace tirn
