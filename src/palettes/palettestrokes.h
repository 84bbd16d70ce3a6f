#pragma once

#include <array>
#include <optional>

#include "palettes/palette.h"

namespace tirn {

// What the editor does to a palette, in either of its views.

enum class PaletteView { Rgb, Hsv };

/// The arrays of a view, in the order of its curves: red, green, blue, alpha or hue, saturation, value,
/// alpha.
std::array<const std::vector<double>*, 4> viewArrays(const Palette& palette, PaletteView view);
std::array<double, 4> entryOf(const Palette& palette, PaletteView view, int index);

/// The edit flags of a view in the same order.
std::array<bool, 4> viewFlags(const PaletteEditFlags& flags, PaletteView view);
void setViewFlags(PaletteEditFlags& flags, PaletteView view, const std::array<bool, 4>& values);

/// These act on the flagged arrays only.
void setEntry(Palette& palette, PaletteView view, int index, const std::array<double, 4>& values);
/// To the right where `places` is above 0, to the left below.
void shiftCurves(Palette& palette, PaletteView view, int places);
void offsetCurves(Palette& palette, PaletteView view, double amount);
/// One up or one down at an index.
void stepEntry(Palette& palette, PaletteView view, int index, bool up);
/// The curve's formula, or a ramp of which only the offset counts.
void applyFormula(Palette& palette, PaletteView view, const PaletteCurve& curve, bool ramp);

/// A place in the plot: an index, and a value of 0 to 255.
struct CurvePoint
{
    int x = 0;
    int y = 0;

    bool operator==(const CurvePoint&) const = default;
};

/// Where a drag to `to` ends in a table of `size` entries: y is cut to 0..255; beyond the first or last index
/// the drag ends on it, at the height of the point before. Nothing when the point before was at that end.
std::optional<CurvePoint> dragTarget(CurvePoint from, CurvePoint to, int size);

/// Draws a straight line between two points into the flagged arrays, values floored.
void drawLine(Palette& palette, PaletteView view, CurvePoint from, CurvePoint to);

} // namespace tirn
