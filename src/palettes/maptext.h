#pragma once

#include <QRegularExpression>
#include <QString>

#include "palettes/palette.h"

namespace tirn {

/// The text form of a table that `.map` files and sessions share: "red green blue alpha" for each index.

/// Matches a line of it. The sign stands outside the captures: a negative number is read as its magnitude.
const QRegularExpression& mapPattern();
PaletteEntry mapEntry(const QRegularExpressionMatch& match);
/// A line for each index, each value floored and cut to 0..255.
QString mapText(const Palette& palette);

} // namespace tirn
