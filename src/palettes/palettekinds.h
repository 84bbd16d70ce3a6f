#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "palettes/palette.h"

namespace tirn {

/// Red, green and blue, 0 to 1 each.
using MapColor = std::array<double, 3>;

/// A palette that can be made anew: its colours over the whole of its index axis, and where a menu has it.
struct PaletteKind
{
    const char* group;
    const char* name;
    /// What it is made from, or what it is for.
    QString note;
    /// For a part of the axis, 0 to 1. What leaves the range of colours is cut.
    std::function<MapColor(double part)> color;
};

/// All of them in the order of the menu, those of one group together.
const std::vector<PaletteKind>& paletteKinds();

/// A palette of a kind, under its name, with an opacity that rises evenly from 0 to 255.
std::unique_ptr<Palette> makePalette(const PaletteKind& kind, int depth, PaletteTables* tables = nullptr);

/// The colour in which pictures usually show what emits at a wavelength in nanometres: what is beyond red
/// becomes magenta, which can be told from green by those who do not see red.
MapColor emissionColor(double nanometres);

} // namespace tirn
