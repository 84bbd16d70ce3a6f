#include "session/settings.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tirn {
namespace {

class SettingsStore : public ::testing::Test
{
protected:
    QTemporaryDir directory;
    QSettings store{directory.filePath("store.ini"), QSettings::IniFormat};
};

TEST_F(SettingsStore, AnEmptyOneGivesTheDefaults)
{
    const Settings settings = readSettings(store);
    EXPECT_EQ(settings.texLimit2D, 1024);
    EXPECT_EQ(settings.texLimit3D, 512);
    EXPECT_EQ(settings.flashRate, 300);
    EXPECT_EQ(settings.paletteGeneration, 1);
    EXPECT_EQ(settings.defaultEncode, 0);
    EXPECT_EQ(settings.blending, 0);
    EXPECT_TRUE(settings.usePBuffers);
}

TEST_F(SettingsStore, TextsBecomeNumbers)
{
    store.setValue("Paths/DefaultPaletteGeneration", "Grayscale");
    store.setValue("Paths/DefaultBlending", "Max Intensity");
    store.setValue("Paths/DefaultEncode", "3D Texmaps");
    store.setValue("Paths/Default4DEncode", "whatever");
    store.setValue("Paths/UsePBuffers", "No");
    store.setValue("Paths/FlashRate", 120);
    const Settings settings = readSettings(store);
    EXPECT_EQ(settings.paletteGeneration, 0);
    EXPECT_EQ(settings.blending, 1);
    EXPECT_EQ(settings.defaultEncode, 1);
    EXPECT_EQ(settings.defaultTimeSeriesEncode, 1);
    EXPECT_FALSE(settings.usePBuffers);
    EXPECT_EQ(settings.flashRate, 120);
}

TEST_F(SettingsStore, ForeignValuesFallBack)
{
    store.setValue("Paths/DefaultBlending", "Sparkle");
    store.setValue("Paths/2DTexDimLimit", "many");
    store.setValue("Paths/3DTexDimLimit", -4);
    const Settings settings = readSettings(store);
    EXPECT_EQ(settings.blending, -1);
    EXPECT_EQ(settings.texLimit2D, 1024);
    EXPECT_EQ(settings.texLimit3D, 512);
}

} // namespace
} // namespace tirn
