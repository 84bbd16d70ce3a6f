#include "palettes/palettestrokes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "base/log.h"

namespace tirn {

std::array<const std::vector<double>*, 4> viewArrays(const Palette& palette, PaletteView view)
{
    if (view == PaletteView::Rgb)
        return {&palette.red(), &palette.green(), &palette.blue(), &palette.alpha()};
    return {&palette.hue(), &palette.saturation(), &palette.value(), &palette.alpha()};
}

std::array<double, 4> entryOf(const Palette& palette, PaletteView view, int index)
{
    std::array<double, 4> entry = {};
    const auto arrays = viewArrays(palette, view);
    for (std::size_t k = 0; k < entry.size() && index >= 0 && index < palette.size(); ++k)
        entry[k] = (*arrays[k])[static_cast<std::size_t>(index)];
    return entry;
}

std::array<bool, 4> viewFlags(const PaletteEditFlags& flags, PaletteView view)
{
    if (view == PaletteView::Rgb)
        return {flags.red, flags.green, flags.blue, flags.alpha};
    return {flags.hue, flags.saturation, flags.value, flags.hsvAlpha};
}

void setViewFlags(PaletteEditFlags& flags, PaletteView view, const std::array<bool, 4>& values)
{
    const auto put = [&](bool& first, bool& second, bool& third, bool& alpha) {
        first = values[0];
        second = values[1];
        third = values[2];
        alpha = values[3];
    };
    if (view == PaletteView::Rgb)
        put(flags.red, flags.green, flags.blue, flags.alpha);
    else
        put(flags.hue, flags.saturation, flags.value, flags.hsvAlpha);
}

void setEntry(Palette& palette, PaletteView view, int index, const std::array<double, 4>& values)
{
    if (view == PaletteView::Rgb)
        palette.setRgb(index, values[0], values[1], values[2], values[3]);
    else
        palette.setHsv(index, values[0], values[1], values[2], values[3]);
}

void shiftCurves(Palette& palette, PaletteView view, int places)
{
    const int distance = std::abs(places);
    if (view == PaletteView::Rgb)
        places < 0 ? palette.shiftLeftRgb(distance) : palette.shiftRightRgb(distance);
    else
        places < 0 ? palette.shiftLeftHsv(distance) : palette.shiftRightHsv(distance);
}

void offsetCurves(Palette& palette, PaletteView view, double amount)
{
    if (view == PaletteView::Rgb)
        palette.offsetUpRgb(amount);
    else
        palette.offsetUpHsv(amount);
}

void stepEntry(Palette& palette, PaletteView view, int index, bool up)
{
    if (view == PaletteView::Rgb)
        up ? palette.incrementRgb(index) : palette.decrementRgb(index);
    else
        up ? palette.incrementHsv(index) : palette.decrementHsv(index);
}

void applyFormula(Palette& palette, PaletteView view, const PaletteCurve& curve, bool ramp)
{
    const bool rgb = view == PaletteView::Rgb;
    if (ramp)
        rgb ? palette.rampRgb(curve.offset) : palette.rampHsv(curve.offset);
    else if (rgb)
        palette.applyCurveRgb(curve.scale, curve.power, curve.offset);
    else
        palette.applyCurveHsv(curve.scale, curve.power, curve.offset);
}

std::optional<CurvePoint> dragTarget(CurvePoint from, CurvePoint to, int size)
{
    to.y = std::clamp(to.y, 0, 255);
    if (to.x >= size) {
        if (from.x >= size)
            return std::nullopt;
        return CurvePoint{size - 1, from.y};
    }
    if (to.x < 0) {
        if (from.x <= 0)
            return std::nullopt;
        return CurvePoint{0, from.y};
    }
    return to;
}

void drawLine(Palette& palette, PaletteView view, CurvePoint from, CurvePoint to)
{
    for (int x = std::min(from.x, to.x); x <= std::max(from.x, to.x); ++x) {
        const double rise = std::int64_t{x - from.x} * (to.y - from.y);
        const double y = from.x == to.x ? to.y : std::floor(from.y + rise / (to.x - from.x));
        if (y < 0)
            logWarning("Palette value was less than 0.  This shouldn't happen");
        if (y > 255)
            logWarning("Palette value was greater than 255.  This shouldn't happen");
        setEntry(palette, view, x, {y, y, y, y});
    }
}

} // namespace tirn
