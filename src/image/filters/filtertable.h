#pragma once

#include <span>

#include "image/filters/filterkernel.h"
#include "image/filters/filterparts.h"

namespace tirn {

/// What a job does to a stack. Flips and the inversion are no filters: a volume remembers them.
enum class FilterOperation {
    FlipX = 0,
    FlipY = 1,
    FlipZ = 2,
    Invert = 3,
    Maximum = 4,
    Median = 5,
    Mean = 6,
    Minimum = 7,
    BackgroundSubtract = 8,
    Custom = 9,
    Specks = 10,
};

/// What is chosen for a job.
struct FilterJobParameters
{
    FilterOperation operation = FilterOperation::FlipX;
    /// Voxels along a side of the window.
    int size = 1;
    /// All channels, or only `channel`.
    bool channelAll = true;
    int channel = 0;
    /// The window reaches across layers.
    bool threeD = false;
    /// What a filter asks for besides: a percentage, a threshold.
    int extra = 0;
    FilterKernel kernel;

    /// -1 for all, as the filters take it.
    int chosenChannel() const { return channelAll ? -1 : channel; }
};

/// A number that a filter asks for, by its label in a dialog and by its word on the command line.
struct FilterParameter
{
    enum class Place { Size, ThreeD, Extra };

    Place place = Place::Size;
    const char* label = "";
    /// Empty for the size, which follows the filter's own word.
    const char* word = "";
    /// What is taken without a choice; 0 and 1 stand for no and yes.
    int usual = 0;
    int minimum = 0;
    int maximum = 1;
    int step = 1;

    void store(int value, FilterJobParameters& parameters) const;
};

/// All that the program knows of a filter.
struct Filter
{
    FilterOperation operation;
    /// The entry of the menu, and the name of its action; null for a filter that the menu leaves out.
    const char* menuText;
    const char* action;
    /// Its word on the command line; null for a filter that cannot be asked for there.
    const char* word;
    const char* logName;
    const char* progressText;
    std::span<const FilterParameter> parameters;
    bool (*apply)(ImageFile& stack, const FilterJobParameters& parameters, const Progress& progress);
    /// It asks for a table of weights, in a form of its own.
    bool takesKernel = false;
    /// The widest window across layers.
    int widestCube = kWidestWindow;
};

/// In the order of the menu.
std::span<const Filter> filters();
/// Null for what is no filter.
const Filter* findFilter(FilterOperation operation);
/// The line of the log that a run begins with.
QString filterLogText(const Filter& filter, const FilterJobParameters& parameters);

} // namespace tirn
