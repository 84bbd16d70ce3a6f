#pragma once

class QWidget;

namespace tirn {

class Palette;
struct Settings;

/// Writes a palette over its file; one without a file, or whose file is gone, asks for a name. Returns
/// whether it stands in a file now.
bool savePalette(Palette& palette, Settings& settings, QWidget* parent);

/// Asks for a name and writes the palette, which then has this name.
bool savePaletteAs(Palette& palette, Settings& settings, QWidget* parent);

} // namespace tirn
