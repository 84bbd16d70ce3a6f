#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/preferences/preferencesform.h"
#include "ui/widgets/filechooser.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

class Preferences : public test::AppTest
{
protected:
    PreferencesForm& form()
    {
        app().forms().create(FormId::Preferences, true);
        settle();
        return *static_cast<PreferencesForm*>(app().forms().form(FormId::Preferences));
    }
    template <class Widget>
    Widget& find(const char* name)
    {
        Widget* widget = form().findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name);
        return *widget;
    }
    QComboBox& combo(const char* name) { return find<QComboBox>(name); }
    void pressOk() { QTest::keyClick(&form(), Qt::Key_Return); }
    static QVariant stored(const char* key)
    {
        return QSettings(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2")
            .value(QString("Paths/") + key);
    }
};

TEST_F(Preferences, OpenFromTheMenuWithWhatIsInUse)
{
    app().mainForm().action("editPreferencesAction")->trigger();
    settle();
    EXPECT_TRUE(form().isVisible());
    EXPECT_EQ(form().windowTitle(), "Preferences");
    EXPECT_EQ(form().settings(), app().preferences());
    EXPECT_EQ(combo("cboPaletteGeneration").currentText(), "Red/Green/Blue");
    EXPECT_EQ(combo("cboBlending").currentText(), "Alpha");
    EXPECT_EQ(combo("cbo2DLimit").currentText(), "1024");
    EXPECT_EQ(combo("cbo3DLimit").currentText(), "512");
    EXPECT_EQ(find<QSpinBox>("spnFlashRate").value(), 300);
}

TEST_F(Preferences, ListsHaveTheirItems)
{
    const auto items = [&](const char* name) {
        QStringList all;
        for (int i = 0; i < combo(name).count(); ++i)
            all.append(combo(name).itemText(i));
        return all;
    };
    EXPECT_EQ(items("cboPaletteGeneration"), (QStringList{"Grayscale", "Red/Green/Blue", "Favorites"}));
    EXPECT_EQ(items("cboBlending"), (QStringList{"Alpha", "Max Intensity"}));
    EXPECT_EQ(items("cboEncode"), (QStringList{"2D Texmaps", "3D Texmaps"}));
    EXPECT_EQ(items("cbo4DEncode"), (QStringList{"2D Texmaps", "3D Texmaps"}));
    EXPECT_EQ(items("cboUsePBuffers"), (QStringList{"Yes", "No"}));
    EXPECT_EQ(items("cboDrawing"), (QStringList{"Automatic", "Graphics card", "Processor"}));
    EXPECT_EQ(items("cbo2DLimit"), textureLimits(app().card().maxTexture2D));
    EXPECT_EQ(items("cbo3DLimit"),
              textureLimits(app().card().maxTexture3D) + QStringList{"Disable blocking"});
    EXPECT_EQ(find<QLabel>("lbl3DTexture").text(),
              "Max 3D Texture Dimension: " + QString::number(app().card().maxTexture3D));
}

TEST_F(Preferences, OkUsesAndStoresThem)
{
    form();
    find<QLineEdit>("txtWatermark").setText("Lab 5");
    find<FileChooser>("favoritesChooser").setFileName("/palettes");
    combo("cboPaletteGeneration").setCurrentIndex(2);
    combo("cbo2DLimit").setCurrentText("128");
    combo("cbo3DLimit").setCurrentText("Disable blocking");
    combo("cboUsePBuffers").setCurrentText("No");
    EXPECT_EQ(app().scene().settings.drawing, Drawing::Automatic);
    combo("cboDrawing").setCurrentText("Processor");
    find<QSpinBox>("spnFlashRate").setValue(120);
    pressOk();
    settle();
    EXPECT_FALSE(app().forms().form(FormId::Preferences)->isVisible());
    EXPECT_EQ(app().preferences().paletteGeneration, 2);
    EXPECT_EQ(app().scene().settings.texLimit2D, 128);
    EXPECT_EQ(app().scene().settings.texLimit3D, kNoTextureBlocking);
    EXPECT_EQ(app().scene().settings.flashRate, 120);
    EXPECT_EQ(app().scene().settings.drawing, Drawing::Processor);
    EXPECT_FALSE(app().pictures().canDrawOffScreen());
    EXPECT_EQ(app().scene().watermark, "Lab 5");
    EXPECT_EQ(stored("WatermarkText"), "Lab 5");
    EXPECT_EQ(stored("FavoritePalettesPath"), "/palettes");
    EXPECT_EQ(stored("DefaultPaletteGeneration"), "Favorites");
    // On the next show the last item stands again, and what a restart makes of the rest.
    EXPECT_EQ(combo("cbo3DLimit").currentText(), "Disable blocking");
    restart();
    EXPECT_EQ(combo("cboPaletteGeneration").currentText(), "Red/Green/Blue");
    EXPECT_EQ(combo("cbo3DLimit").currentText(), "Disable blocking");
    EXPECT_EQ(combo("cboDrawing").currentText(), "Processor");
    EXPECT_EQ(find<QLineEdit>("txtWatermark").text(), "Lab 5");
}

TEST_F(Preferences, LimitsAboveTheCardsShowAndKeepItsLargest)
{
    QSettings store(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
    store.setValue("Paths/2DTexDimLimit", 1 << 20);
    store.setValue("Paths/3DTexDimLimit", 65536);
    store.sync();
    restart();
    const auto largest = [](int side) { return textureLimits(side).last(); };
    EXPECT_EQ(combo("cbo2DLimit").currentText(), largest(app().card().maxTexture2D));
    EXPECT_EQ(combo("cbo3DLimit").currentText(), largest(app().card().maxTexture3D));
    EXPECT_EQ(app().scene().settings.texLimit3D, largest(app().card().maxTexture3D).toInt());
    pressOk();
    settle();
    EXPECT_EQ(stored("2DTexDimLimit").toString(), largest(app().card().maxTexture2D));
    EXPECT_EQ(stored("3DTexDimLimit").toString(), largest(app().card().maxTexture3D));
}

TEST_F(Preferences, CancelAndEscapeChangeNothing)
{
    const Settings before = app().preferences();
    form();
    combo("cboBlending").setCurrentIndex(1);
    QTest::keyClick(app().forms().form(FormId::Preferences), Qt::Key_Escape);
    settle();
    EXPECT_EQ(app().preferences(), before);
    EXPECT_FALSE(stored("DefaultBlending").isValid());
    // Shown again it has forgotten.
    EXPECT_EQ(combo("cboBlending").currentText(), "Alpha");
}

TEST_F(Preferences, ANewWayToBlendWaitsForTheNextStart)
{
    form();
    combo("cboBlending").setCurrentIndex(1);
    pressOk();
    settle();
    EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_FUNC_ADD));
    restart();
    settle();
    EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_MAX));
}

TEST(TextureLimits, ArePowersOfTwoUpToTheCards)
{
    EXPECT_EQ(textureLimits(512), (QStringList{"64", "128", "256", "512"}));
    EXPECT_EQ(textureLimits(300), (QStringList{"64", "128", "256"}));
    EXPECT_EQ(textureLimits(0), QStringList{"64"});
}

} // namespace
} // namespace tirn
