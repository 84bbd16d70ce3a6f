#include <algorithm>
#include <atomic>

#include <gtest/gtest.h>

#include "support/stacks.h"

namespace tirn {
namespace {

/// A conversion of a stack of some depth. It returns what the operation does: false, or a null stack, when
/// cancelled; operations that say nothing return false.
struct Conversion
{
    const char* name;
    int bits;
    bool (*run)(ImageFile& stack, const Progress& progress);
};

std::ostream& operator<<(std::ostream& out, const Conversion& conversion) { return out << conversion.name; }

bool silent() { return false; }

const Conversion kConversions[] = {
    {"crop", 8,
     [](ImageFile& s, const Progress& p) {
         const ImageAttributes& a = s.attributes();
         return s.crop(1, a.x - 1, 1, a.y - 1, 0, a.z - 1, p);
     }},
    {"pad", 8,
     [](ImageFile& s, const Progress& p) {
         const ImageAttributes& a = s.attributes();
         return s.pad(a.x + 2, a.y + 2, a.z + 2, p);
     }},
    {"padBack", 8, [](ImageFile& s, const Progress& p) { return s.padBack(s.attributes().z + 2, p); }},
    {"maxIntensityProject", 8, [](ImageFile& s, const Progress& p) { return s.maxIntensityProject(p); }},
    {"extractChannel", 8, [](ImageFile& s, const Progress& p) { return s.extractChannel(1, p) != nullptr; }},
    {"ratio", 8, [](ImageFile& s, const Progress& p) { return s.ratio(0, 1, p) != nullptr; }},
    {"ratio of words", 16, [](ImageFile& s, const Progress& p) { return s.ratio(0, 1, p) != nullptr; }},
    {"subSample", 8, [](ImageFile& s, const Progress& p) { return s.subSample(2, p), silent(); }},
    {"subSampleMax", 16,
     [](ImageFile& s, const Progress& p) { return s.subSampleMax(2, 3, 1, p), silent(); }},
    {"subSampleMean", 8,
     [](ImageFile& s, const Progress& p) { return s.subSampleMean(2, 2, 1, p), silent(); }},
    {"clampLower", 12, [](ImageFile& s, const Progress& p) { return s.clampLower(p), silent(); }},
    {"clampUpper", 16, [](ImageFile& s, const Progress& p) { return s.clampUpper(p), silent(); }},
    {"convertToDepth", 8, [](ImageFile& s, const Progress& p) { return s.convertToDepth(12, p), silent(); }},
    {"stackToShort", 8, [](ImageFile& s, const Progress& p) { return s.stackToShort(p), silent(); }},
    {"stackToByteSmartLower", 16,
     [](ImageFile& s, const Progress& p) { return s.stackToByteSmartLower(p), silent(); }},
    {"stackToByteSmartMult", 16,
     [](ImageFile& s, const Progress& p) { return s.stackToByteSmartMult(p), silent(); }},
    {"stackToByteRange", 16,
     [](ImageFile& s, const Progress& p) { return s.stackToByteRange(1, 300, p), silent(); }},
};

class ConversionProgress : public ::testing::TestWithParam<Conversion>
{};

INSTANTIATE_TEST_SUITE_P(All, ConversionProgress, ::testing::ValuesIn(kConversions));

TEST_P(ConversionProgress, RisesFromNothingToTheTotal)
{
    const auto stack = test::randomStack({40, 30, 20, 2, GetParam().bits}, 3);
    std::vector<int> steps;
    std::vector<int> totals;
    Progress progress;
    progress.report = [&](const QString&, int done, int total) {
        steps.push_back(done);
        totals.push_back(total);
    };
    GetParam().run(*stack, progress);
    ASSERT_GE(steps.size(), 2U);
    EXPECT_EQ(steps.front(), 0);
    EXPECT_EQ(totals.front(), 100);
    EXPECT_EQ(steps.back(), 100);
    EXPECT_EQ(std::adjacent_find(steps.begin(), steps.end(), std::greater_equal<>()), steps.end());
    EXPECT_EQ(std::count(totals.begin(), totals.end(), -1), static_cast<int>(totals.size()) - 1);
}

TEST_P(ConversionProgress, ACancelledRunLeavesTheStackAsItWas)
{
    const auto stack = test::constantStack({1024, 1024, 12, 2, GetParam().bits}, 200);
    stack->generateStatistics();
    const ImageAttributes before = stack->attributes();
    const std::int64_t bytes = stack->sampleCount() * before.bytesPerSample();
    const std::vector<std::uint8_t> voxels(stack->stackData(), stack->stackData() + bytes);
    std::atomic<bool> cancel = false;
    int reports = 0;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) {
        ++reports;
        cancel = done > 0;
        EXPECT_LE(done, 100);
    };
    EXPECT_FALSE(GetParam().run(*stack, progress));
    EXPECT_GT(reports, 1);
    EXPECT_TRUE(stack->attributes() == before);
    EXPECT_EQ(stack->attributes().maxValue, before.maxValue);
    ASSERT_EQ(stack->sampleCount() * stack->attributes().bytesPerSample(), bytes);
    EXPECT_TRUE(std::equal(voxels.begin(), voxels.end(), stack->stackData()));
}

} // namespace
} // namespace tirn
