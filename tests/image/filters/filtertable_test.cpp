#include "image/filters/filtertable.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "image/filters/extremafilters.h"
#include "image/filters/kernelfilter.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "image/filters/speckfilter.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using Place = FilterParameter::Place;

FilterJobParameters usualOf(const Filter& filter)
{
    FilterJobParameters parameters;
    parameters.operation = filter.operation;
    for (const FilterParameter& each : filter.parameters)
        each.store(each.usual, parameters);
    parameters.kernel = {1, 2, {1.0, 3.0}};
    return parameters;
}

TEST(FilterTable, EveryRowCanBeTold)
{
    std::set<FilterOperation> operations;
    std::set<std::string> names;
    std::size_t expected = 0;
    for (const Filter& filter : filters()) {
        operations.insert(filter.operation);
        EXPECT_EQ(findFilter(filter.operation), &filter);
        EXPECT_EQ(filter.menuText == nullptr, filter.action == nullptr);
        EXPECT_TRUE(filter.action != nullptr || filter.word != nullptr) << "nobody could ask for it";
        for (const char* name : {filter.action, filter.word, filter.logName, filter.progressText}) {
            if (name == nullptr)
                continue;
            ++expected;
            names.insert(name);
        }
    }
    EXPECT_EQ(operations.size(), filters().size());
    EXPECT_EQ(names.size(), expected);
}

TEST(FilterTable, EveryParameterBeginsInItsRangeAndHasItsOwnPlace)
{
    for (const Filter& filter : filters()) {
        std::set<Place> places;
        for (const FilterParameter& each : filter.parameters) {
            EXPECT_GE(each.usual, each.minimum) << filter.logName << ": " << each.label;
            EXPECT_LE(each.usual, each.maximum) << filter.logName << ": " << each.label;
            EXPECT_EQ(each.word[0] == 0, each.place == Place::Size) << filter.logName << ": " << each.label;
            places.insert(each.place);
        }
        EXPECT_EQ(places.size(), filter.parameters.size()) << filter.logName;
        EXPECT_EQ(filter.parameters.empty(), filter.takesKernel) << filter.logName;
    }
}

TEST(FilterTable, FlipsAndTheInversionAreNone)
{
    for (const FilterOperation operation :
         {FilterOperation::FlipX, FilterOperation::FlipY, FilterOperation::FlipZ, FilterOperation::Invert})
        EXPECT_EQ(findFilter(operation), nullptr);
}

TEST(FilterTable, ARowRunsItsFilterWithWhatWasChosen)
{
    using Run = std::function<bool(ImageFile&)>;
    const std::pair<FilterOperation, Run> rows[] = {
        {FilterOperation::Mean, [](ImageFile& s) { return meanFilter(s, 5, 1, true); }},
        {FilterOperation::Median, [](ImageFile& s) { return medianFilter(s, 5, 1, true); }},
        {FilterOperation::Minimum, [](ImageFile& s) { return minFilter(s, 5, 1, true); }},
        {FilterOperation::Maximum, [](ImageFile& s) { return maxFilter(s, 5, 1, true); }},
        {FilterOperation::BackgroundSubtract, [](ImageFile& s) { return backgroundSubtract(s, 5, 1, 40); }},
        {FilterOperation::Specks, [](ImageFile& s) { return zFilter(s, 5, 1, 40); }},
        {FilterOperation::Custom,
         [](ImageFile& s) {
             return kernelFilter(s, {1, 2, {1.0, 3.0}}, 1);
         }},
    };
    EXPECT_EQ(std::size(rows), filters().size());
    for (const auto& [operation, run] : rows) {
        const Filter* filter = findFilter(operation);
        ASSERT_NE(filter, nullptr);
        FilterJobParameters parameters = usualOf(*filter);
        parameters.channelAll = false;
        parameters.channel = 1;
        parameters.size = 5;
        parameters.threeD = true;
        parameters.extra = 40;
        const auto stack = test::randomStack({7, 6, 5, 2, 8}, 3);
        const auto expected = test::randomStack({7, 6, 5, 2, 8}, 3);
        EXPECT_TRUE(filter->apply(*stack, parameters, {}));
        EXPECT_TRUE(run(*expected));
        EXPECT_EQ(test::samples(*stack), test::samples(*expected)) << filter->logName;
    }
}

TEST(FilterTable, TheLogTellsTheWindowAndWhatElseWasChosen)
{
    const auto text = [](FilterOperation operation) {
        const Filter& filter = *findFilter(operation);
        return filterLogText(filter, usualOf(filter));
    };
    EXPECT_EQ(text(FilterOperation::Mean), "Mean filter 3x3");
    EXPECT_EQ(text(FilterOperation::BackgroundSubtract), "background subtract 31 -1 100");
    EXPECT_EQ(text(FilterOperation::Custom), "Custom filter 1x2");
    EXPECT_EQ(text(FilterOperation::Specks), "z filter 3 -1 0");
}

} // namespace
} // namespace tirn
