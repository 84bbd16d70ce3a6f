#include "gl/cardreport.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

GlCapabilities fullCard()
{
    GlCapabilities card;
    card.hasFragmentProgram = card.hasMultitexture = card.hasTexture3D = card.hasPBuffer = true;
    card.hasMaximumBlending = true;
    card.maxTexture2D = 8192;
    card.maxTexture3D = 2048;
    card.renderer = "some driver";
    return card;
}

TEST(CardReport, OfACardThatHasEverything)
{
    EXPECT_EQ(
        cardReport(fullCard()).toStdString(),
        "Your video card supports real time palette editing.\n"
        "Your video card supports pbuffers allowing arbitrary size images to be saved.\n"
        "Your video card supports 3D texture maps allowing stacks to consume less memory, but render at "
        "reduced speed.\n"
        "12 and 16bit images are supported on this video card.\n"
        "Real time depth based intensity correction is available.\n");
}

TEST(CardReport, OfACardThatHasNothing)
{
    EXPECT_EQ(cardReport({}).toStdString(),
              "Your video card does not support real time palette editing.\nTirn will not work for you\n"
              "Your video card does not support pbuffers, so what you see is what you get when saving.\n"
              "Do not overlap the main window while saving!\n"
              "Your video card does not support 3D texture maps.\n"
              "12 and 16bit images are not supported on this video card.  We recommend a GeForceFX or Radeon "
              "9700+.\n"
              "Features needed for real time depth based intensity correct are not available.\n");
}

TEST(CardReport, PalettesNeedPalettedTexturesOrProgramsWithMultitexture)
{
    const auto edits = [](const GlCapabilities& card) {
        return cardReport(card).startsWith("Your video card supports real time palette editing.\n");
    };
    GlCapabilities card;
    card.hasFragmentProgram = true;
    EXPECT_FALSE(edits(card));
    card.hasMultitexture = true;
    EXPECT_TRUE(edits(card));
    card = {};
    card.hasPalettedTexture = true;
    EXPECT_TRUE(edits(card));
}

TEST(CardReport, DepthCorrectionNeedsBoth3DTexturesAndPrograms)
{
    const QString line = "Real time depth based intensity correction is available.\n";
    GlCapabilities card = fullCard();
    card.hasTexture3D = false;
    EXPECT_FALSE(cardReport(card).contains(line));
    card = fullCard();
    card.hasFragmentProgram = false;
    EXPECT_FALSE(cardReport(card).contains(line));
}

TEST(RequirementsReport, SaysWhatIsThereAndWhatIsNot)
{
    const QString full = requirementsReport(fullCard());
    EXPECT_TRUE(full.contains("some driver"));
    EXPECT_TRUE(full.contains("8192 (2D) and 2048 (3D)"));
    EXPECT_EQ(full.count(": yes\n"), 5);
    EXPECT_EQ(requirementsReport({}).count(": no\n"), 5);
    GlCapabilities paletted;
    paletted.hasPalettedTexture = true;
    EXPECT_EQ(requirementsReport(paletted).count(": yes\n"), 0) << "without shared palettes";
    paletted.hasSharedPalette = true;
    EXPECT_EQ(requirementsReport(paletted).count(": yes\n"), 1);
}

} // namespace
} // namespace tirn
