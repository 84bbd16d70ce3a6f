#include "session/settings.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tirn {
namespace {

constexpr TextureSides kCard = {16384, 2048};

class SettingsStore : public ::testing::Test
{
protected:
    QTemporaryDir directory;
    QSettings store{directory.filePath("store.ini"), QSettings::IniFormat};
};

TEST_F(SettingsStore, AnEmptyOneGivesTheDefaults)
{
    const Settings settings = readSettings(store, kCard);
    EXPECT_EQ(settings.texLimit2D, 1024);
    EXPECT_EQ(settings.texLimit3D, 512);
    EXPECT_EQ(settings.flashRate, 300);
    EXPECT_EQ(settings.paletteGeneration, 1);
    EXPECT_EQ(settings.defaultEncode, 0);
    EXPECT_EQ(settings.blending, 0);
    EXPECT_TRUE(settings.usePBuffers);
    EXPECT_EQ(settings.drawing, 0);
}

TEST_F(SettingsStore, TextsBecomeNumbers)
{
    store.setValue("Paths/DefaultPaletteGeneration", "Grayscale");
    store.setValue("Paths/DefaultBlending", "Max Intensity");
    store.setValue("Paths/DefaultEncode", "3D Texmaps");
    store.setValue("Paths/Default4DEncode", "whatever");
    store.setValue("Paths/UsePBuffers", "No");
    store.setValue("Paths/FlashRate", 120);
    store.setValue("Paths/Drawing", "Graphics card");
    const Settings settings = readSettings(store, kCard);
    EXPECT_EQ(settings.paletteGeneration, 0);
    EXPECT_EQ(settings.blending, 1);
    EXPECT_EQ(settings.defaultEncode, 1);
    EXPECT_EQ(settings.defaultTimeSeriesEncode, 1);
    EXPECT_FALSE(settings.usePBuffers);
    EXPECT_EQ(settings.flashRate, 120);
    EXPECT_EQ(settings.drawing, 1);
}

TEST_F(SettingsStore, ForeignValuesFallBack)
{
    store.setValue("Paths/DefaultBlending", "Sparkle");
    store.setValue("Paths/Drawing", "Pencil");
    store.setValue("Paths/2DTexDimLimit", "many");
    store.setValue("Paths/3DTexDimLimit", -4);
    const Settings settings = readSettings(store, kCard);
    EXPECT_EQ(settings.blending, -1);
    EXPECT_EQ(settings.drawing, 0);
    EXPECT_EQ(settings.texLimit2D, 1024);
    EXPECT_EQ(settings.texLimit3D, 512);
}

TEST_F(SettingsStore, NumbersFromElsewhereBecomeOnesThatCanBeChosen)
{
    struct Row
    {
        const char* key;
        QVariant stored;
        int Settings::*field;
        int expected;
    };
    const Row rows[] = {{"2DTexDimLimit", 32768, &Settings::texLimit2D, 16384},
                        {"2DTexDimLimit", 1000, &Settings::texLimit2D, 512},
                        {"2DTexDimLimit", 1, &Settings::texLimit2D, 64},
                        {"2DTexDimLimit", kNoTextureBlocking, &Settings::texLimit2D, 16384},
                        {"3DTexDimLimit", 0, &Settings::texLimit3D, 512},
                        {"3DTexDimLimit", 4096, &Settings::texLimit3D, 2048},
                        {"3DTexDimLimit", 99999, &Settings::texLimit3D, 2048},
                        {"3DTexDimLimit", 200000, &Settings::texLimit3D, kNoTextureBlocking},
                        {"FlashRate", 2000000000, &Settings::flashRate, 60000},
                        {"FlashRate", 0, &Settings::flashRate, 300}};
    for (const Row& row : rows) {
        store.setValue(QString("Paths/") + row.key, row.stored);
        EXPECT_EQ(readSettings(store, kCard).*row.field, row.expected)
            << row.key << ' ' << row.stored.toString().toStdString();
    }
}

TEST_F(SettingsStore, TheDefaultsFitASmallCard)
{
    const Settings settings = readSettings(store, {512, 256});
    EXPECT_EQ(settings.texLimit2D, 512);
    EXPECT_EQ(settings.texLimit3D, 256);
}

TEST_F(SettingsStore, PreferencesAreWrittenUnderTheirKeys)
{
    Settings settings;
    settings.favoritePalettesPath = "/palettes";
    settings.watermarkText = "Lab 5";
    settings.paletteGeneration = 0;
    settings.blending = 1;
    settings.defaultEncode = 1;
    settings.flashRate = 250;
    settings.usePBuffers = false;
    settings.drawing = 2;
    settings.texLimit2D = 256;
    settings.texLimit3D = kNoTextureBlocking;
    settings.fitOnOpen = false;
    writePreferences(settings, store);
    const std::vector<std::pair<const char*, QVariant>> expected = {{"FavoritePalettesPath", "/palettes"},
                                                                    {"WatermarkText", "Lab 5"},
                                                                    {"DefaultPaletteGeneration", "Grayscale"},
                                                                    {"DefaultBlending", "Max Intensity"},
                                                                    {"DefaultEncode", "3D Texmaps"},
                                                                    {"Default4DEncode", "2D Texmaps"},
                                                                    {"FlashRate", 250},
                                                                    {"UsePBuffers", "No"},
                                                                    {"Drawing", "Processor"},
                                                                    {"2DTexDimLimit", 256},
                                                                    {"3DTexDimLimit", 100000},
                                                                    {"FitOnOpen", false},
                                                                    {"StretchOnOpen", true},
                                                                    {"MoveAlongScreen", false}};
    for (const auto& [key, value] : expected)
        EXPECT_EQ(store.value(QString("Paths/") + key), value) << key;
    EXPECT_EQ(store.allKeys().size(), 14);
    EXPECT_EQ(readSettings(store, kCard), settings);
}

TEST_F(SettingsStore, ChoicesOfFormsAreWrittenApartFromThePreferences)
{
    EXPECT_EQ(readSettings(store, kCard).rotationMode, 1);
    Settings settings;
    settings.rotationMode = 0;
    writeChoices(settings, store);
    EXPECT_EQ(store.value("View/RotationMode"), "Quaternion");
    EXPECT_EQ(store.allKeys().size(), 1);
    EXPECT_EQ(readSettings(store, kCard).rotationMode, 0);
}

TEST_F(SettingsStore, AnEmptyFolderOfFavouritesHasNoKey)
{
    store.setValue("Paths/FavoritePalettesPath", "/palettes");
    store.setValue("Paths/StackPath", "/stacks");
    writePreferences({}, store);
    EXPECT_FALSE(store.contains("Paths/FavoritePalettesPath"));
    // What the preferences do not hold stays.
    EXPECT_EQ(store.value("Paths/StackPath"), "/stacks");
}

TEST_F(SettingsStore, FavouritesComeBackAsRedGreenAndBlue)
{
    Settings settings;
    settings.paletteGeneration = 2;
    writePreferences(settings, store);
    EXPECT_EQ(store.value("Paths/DefaultPaletteGeneration"), "Favorites");
    EXPECT_EQ(readSettings(store, kCard).paletteGeneration, 1);
}

} // namespace
} // namespace tirn
