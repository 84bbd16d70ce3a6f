#include "session/settings.h"

#include <algorithm>
#include <bit>

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

/// Answers to yes or no that stand as such in a store.
struct Switch
{
    const char* key;
    bool Settings::*value;
};

constexpr Switch kSwitches[] = {{"FitOnOpen", &Settings::fitOnOpen},
                                {"StretchOnOpen", &Settings::stretchOnOpen},
                                {"MoveAlongScreen", &Settings::moveAlongScreen}};

} // namespace

int usableTextureLimit(int limit, int largest)
{
    const int most = std::max(kLeastTextureLimit, largest);
    return static_cast<int>(
        std::bit_floor(static_cast<unsigned>(std::clamp(limit, kLeastTextureLimit, most))));
}

QStringList choiceTexts(SettingsChoice choice)
{
    switch (choice) {
    case SettingsChoice::PaletteGeneration:
        return {"Grayscale", "Red/Green/Blue", "Favorites"};
    case SettingsChoice::Blending:
        return {"Alpha", "Max Intensity"};
    case SettingsChoice::Encode:
        return {"2D Texmaps", "3D Texmaps"};
    case SettingsChoice::UsePBuffers:
        return {"Yes", "No"};
    case SettingsChoice::Drawing:
        return {"Automatic", "Graphics card", "Processor"};
    }
    return {};
}

void writePreferences(const Settings& settings, QSettings& store)
{
    const auto text = [](SettingsChoice choice, int item) { return choiceTexts(choice).value(item); };
    store.beginGroup("Paths");
    if (settings.favoritePalettesPath.isEmpty())
        store.remove("FavoritePalettesPath");
    else
        store.setValue("FavoritePalettesPath", settings.favoritePalettesPath);
    store.setValue("WatermarkText", settings.watermarkText);
    store.setValue("DefaultPaletteGeneration",
                   text(SettingsChoice::PaletteGeneration, settings.paletteGeneration));
    store.setValue("DefaultBlending", text(SettingsChoice::Blending, settings.blending));
    store.setValue("DefaultEncode", text(SettingsChoice::Encode, settings.defaultEncode));
    store.setValue("Default4DEncode", text(SettingsChoice::Encode, settings.defaultTimeSeriesEncode));
    store.setValue("FlashRate", settings.flashRate);
    store.setValue("UsePBuffers", text(SettingsChoice::UsePBuffers, settings.usePBuffers ? 0 : 1));
    store.setValue("Drawing", text(SettingsChoice::Drawing, settings.drawing));
    store.setValue("2DTexDimLimit", settings.texLimit2D);
    store.setValue("3DTexDimLimit", settings.texLimit3D);
    for (const Switch& each : kSwitches)
        store.setValue(each.key, settings.*each.value);
    store.endGroup();
}

void writeChoices(const Settings& settings, QSettings& store)
{
    store.setValue("View/RotationMode", settings.rotationMode == 0 ? "Quaternion" : "Axis");
}

Settings readSettings(QSettings& store, const TextureSides& card)
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
    settings.flashRate = std::min(kLongestFlash, positive(store.value("FlashRate"), settings.flashRate));
    // Read and written in two spellings, which only some stores tell apart.
    const QVariant buffers =
        store.contains("UsePBuffers") ? store.value("UsePBuffers") : store.value("usePBuffers", "Yes");
    settings.usePBuffers = buffers.toString() == "Yes";
    settings.drawing = static_cast<int>(std::max<qsizetype>(
        0, choiceTexts(SettingsChoice::Drawing).indexOf(store.value("Drawing").toString())));
    const int limit2D = positive(store.value("2DTexDimLimit"), settings.texLimit2D);
    const int limit3D = positive(store.value("3DTexDimLimit"), settings.texLimit3D);
    settings.texLimit2D = usableTextureLimit(limit2D, card.in2D);
    settings.texLimit3D =
        limit3D >= kNoTextureBlocking ? kNoTextureBlocking : usableTextureLimit(limit3D, card.in3D);
    for (const Switch& each : kSwitches)
        settings.*each.value = store.value(each.key, settings.*each.value).toBool();
    store.endGroup();
    settings.rotationMode = choice(store.value("View/RotationMode", "Axis").toString(), "Quaternion");
    return settings;
}

} // namespace tirn
