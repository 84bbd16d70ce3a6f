#include "image/filters/filtertable.h"

#include <algorithm>

#include "image/filters/extremafilters.h"
#include "image/filters/kernelfilter.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "image/filters/speckfilter.h"

namespace tirn {

namespace {

using Place = FilterParameter::Place;
using Parameters = FilterJobParameters;

constexpr FilterParameter windowOf(int usual) { return {Place::Size, "Filter size", "", usual, 3, 127, 2}; }

constexpr FilterParameter kWindow[] = {windowOf(3), {Place::ThreeD, "3D", "3d"}};
constexpr FilterParameter kBackground[] = {windowOf(31),
                                           {Place::Extra, "Subtract Percentage", "percent", 100, 0, 100}};
constexpr FilterParameter kSpecks[] = {windowOf(3), {Place::Extra, "Threshold", "threshold", 0, 0, 65535}};

constexpr Filter kFilters[] = {
    {FilterOperation::Mean, "Mean", "filterMeanAction", "mean", "Mean filter", "Mean filtering...", kWindow,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return meanFilter(stack, p.size, p.chosenChannel(), p.threeD, progress);
     }},
    {FilterOperation::Median, "Median", "filterMedianAction", "median", "Median filter",
     "Median filtering...", kWindow,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return medianFilter(stack, p.size, p.chosenChannel(), p.threeD, progress);
     },
     false, kWidestMedianCube},
    {FilterOperation::Minimum, "Min", "filterMinAction", "min", "Minimum filter", "Min filtering...", kWindow,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return minFilter(stack, p.size, p.chosenChannel(), p.threeD, progress);
     }},
    {FilterOperation::Maximum, "Max", "filterMaxAction", "max", "Maximum filter", "Max filtering...", kWindow,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return maxFilter(stack, p.size, p.chosenChannel(), p.threeD, progress);
     }},
    {FilterOperation::Custom,
     "Custom...",
     "filterCustomAction",
     nullptr,
     "Custom filter",
     "Custom filtering...",
     {},
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return kernelFilter(stack, p.kernel, p.chosenChannel(), progress);
     },
     true},
    {FilterOperation::BackgroundSubtract, "Background Subtract", "backgroundAction", "background",
     "background subtract", "Subtracting background...", kBackground,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return backgroundSubtract(stack, p.size, p.chosenChannel(), p.extra, progress);
     }},
    {FilterOperation::Specks, nullptr, nullptr, "zfilter", "z filter", "Clearing specks...", kSpecks,
     [](ImageFile& stack, const Parameters& p, const Progress& progress) {
         return zFilter(stack, p.size, p.chosenChannel(), p.extra, progress);
     }},
};

} // namespace

void FilterParameter::store(int value, FilterJobParameters& parameters) const
{
    switch (place) {
    case Place::Size:
        parameters.size = value;
        break;
    case Place::ThreeD:
        parameters.threeD = value != 0;
        break;
    case Place::Extra:
        parameters.extra = value;
        break;
    }
}

std::span<const Filter> filters() { return kFilters; }

const Filter* findFilter(FilterOperation operation)
{
    const auto* found =
        std::find_if(std::begin(kFilters), std::end(kFilters),
                     [operation](const Filter& filter) { return filter.operation == operation; });
    return found != std::end(kFilters) ? found : nullptr;
}

QString filterLogText(const Filter& filter, const FilterJobParameters& p)
{
    const QString name = QLatin1String(filter.logName);
    const bool hasExtra = std::any_of(filter.parameters.begin(), filter.parameters.end(),
                                      [](const FilterParameter& each) { return each.place == Place::Extra; });
    if (filter.takesKernel)
        return name + QString::asprintf(" %dx%d", p.kernel.width, p.kernel.height);
    if (hasExtra)
        return name + QString::asprintf(" %d %d %d", p.size, p.chosenChannel(), p.extra);
    return name + QString::asprintf(" %dx%d", p.size, p.size);
}

} // namespace tirn
