#include "session/settings.h"

#include <QSettings>

namespace tirn {

namespace {

/// 0 for `first`, 1 for any other text.
int choice(const QString& text, const char* first) { return text == QLatin1String(first) ? 0 : 1; }

int positive(const QVariant& value, int fallback)
{
    bool ok = false;
    const int number = value.toInt(&ok);
    return ok && number > 0 ? number : fallback;
}

} // namespace

Settings readSettings(QSettings& store)
{
    Settings settings;
    store.beginGroup("Paths");
    settings.stackPath = store.value("StackPath").toString();
    settings.palettePath = store.value("PalettePath").toString();
    settings.favoritePalettesPath = store.value("FavoritePalettesPath").toString();
    settings.watermarkText = store.value("WatermarkText").toString();
    settings.paletteGeneration =
        choice(store.value("DefaultPaletteGeneration", "Red/Green/Blue").toString(), "Grayscale");
    const QString blending = store.value("DefaultBlending", "Alpha").toString();
    settings.blending = blending == "Alpha" ? 0 : blending == "Max Intensity" ? 1 : -1;
    settings.defaultEncode = choice(store.value("DefaultEncode", "2D Texmaps").toString(), "2D Texmaps");
    settings.defaultTimeSeriesEncode =
        choice(store.value("Default4DEncode", "2D Texmaps").toString(), "2D Texmaps");
    settings.flashRate = positive(store.value("FlashRate"), settings.flashRate);
    // Read and written in two spellings, which only some stores tell apart.
    const QVariant buffers =
        store.contains("UsePBuffers") ? store.value("UsePBuffers") : store.value("usePBuffers", "Yes");
    settings.usePBuffers = buffers.toString() == "Yes";
    settings.texLimit2D = positive(store.value("2DTexDimLimit"), settings.texLimit2D);
    settings.texLimit3D = positive(store.value("3DTexDimLimit"), settings.texLimit3D);
    store.endGroup();
    return settings;
}

} // namespace tirn
