#pragma once

#include <memory>
#include <span>
#include <vector>

#include <QString>

#include "palettes/palette.h"

namespace tirn {

using PaletteList = std::vector<std::unique_ptr<Palette>>;

/// What is generated for channels without a palette; the numbers are those of the preference's items.
enum class PaletteGeneration { Grayscale = 0, RedGreenBlue = 1, Favorites = 2 };

/// What so many palettes lack until each channel has one, of 8 bits: with `RedGreenBlue` and more than one
/// channel ramps of these colours as far as needed (blue for the third channel on), then grey ones.
PaletteList missingPalettes(int existing, int channels, PaletteGeneration generation,
                            PaletteTables* tables = nullptr);
/// Appends them to a list.
void appendMissingPalettes(PaletteList& palettes, int channels, PaletteGeneration generation,
                           PaletteTables* tables = nullptr);

/// Loads each "*.map" of a directory, from the last name to the first, and appends it. Unreadable ones are
/// skipped; an empty name loads nothing.
void appendFavoritePalettes(PaletteList& palettes, const QString& directory, PaletteTables* tables = nullptr);

/// The first channel whose palette index is `palette`, -1 when none uses it.
int channelOfPalette(std::span<const int> channelPalettes, int palette);

/// The last index that the editor shows of a stack: that of the bits which the data use, or of the stored
/// ones.
int lastStackIndex(int bitDepth, int realBitDepth, bool dimDataset);

/// A value of a stack's scale on the scale of a palette, and back. Equal depths, or a stack depth not above 0
/// (no stack), leave it alone; any other result is floored.
double toPaletteIndex(double value, int paletteDepth, int stackDepth);
double fromPaletteIndex(double value, int paletteDepth, int stackDepth);

} // namespace tirn
