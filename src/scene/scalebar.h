#pragma once

#include <QString>

#include "scene/viewstate.h"

namespace tirn {

/// The sizes that a bar may be given, in projection units; the window is 2 wide.
inline constexpr double kLeastBarSize = 0.05;
inline constexpr double kMostBarSize = 1.7;

/// Length and label of a scale bar, in microns; an unknown voxel size or a scale of 0 gives "unknown".
/// `maxPow` is the longest padded side, which spans the picture.
struct ScaleBarLabel
{
    double length = 0;
    QString text;
    bool known = false;
};
ScaleBarLabel scaleBarLabel(double barSize, int maxPow, double voxelSizeX, double scaleX);

/// The largest of 1, 2 and 5 times a power of ten that is not above `most`, which is above 0.
double roundLength(double most);
/// A length with the unit that suits it: nanometres, microns or millimetres.
QString lengthText(double microns);

/// The bar of a view as it is drawn: its length on the screen in projection units, and what stands over it.
struct ScaleBar
{
    double size = 0;
    ScaleBarLabel label;
};
ScaleBar scaleBarOf(const ViewState& view, int maxPow, double voxelSizeX, double scaleX);

} // namespace tirn
