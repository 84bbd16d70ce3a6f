#pragma once

#include <QString>

class QSettings;

namespace tirn {

/// The persistent preferences as they are read at start.
struct Settings
{
    QString stackPath;
    QString palettePath;
    QString favoritePalettesPath;
    QString watermarkText;
    /// 0 grey, 1 red, green and blue.
    int paletteGeneration = 1;
    /// 0 alpha, 1 maximum intensity; any other text leaves it unset, -1.
    int blending = 0;
    /// 0 for 2D texture maps, 1 for 3D ones.
    int defaultEncode = 0;
    int defaultTimeSeriesEncode = 0;
    /// Milliseconds between changes of flashing channels.
    int flashRate = 300;
    bool usePBuffers = true;
    /// Longest side of a texture piece.
    int texLimit2D = 1024;
    int texLimit3D = 512;

    bool operator==(const Settings&) const = default;
};

/// Reads a store; absent keys give the defaults above.
Settings readSettings(QSettings& store);

} // namespace tirn
