#include "palettes/palettekinds.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "palettes/palettefile.h"

namespace tirn {
namespace {

const PaletteKind& kindNamed(const QString& name)
{
    for (const PaletteKind& kind : paletteKinds()) {
        if (name == kind.name)
            return kind;
    }
    throw std::runtime_error(name.toStdString());
}

std::array<int, 3> colorAt(const QString& kind, int index)
{
    const auto values = makePalette(kindNamed(kind), 8)->fileValues(index);
    return {values[0], values[1], values[2]};
}

using Rgb = std::array<int, 3>;

TEST(PaletteKinds, EveryOneHasANameOfItsOwnAndAnEvenOpacity)
{
    std::set<QString> names;
    for (const PaletteKind& kind : paletteKinds()) {
        EXPECT_TRUE(names.insert(kind.name).second) << kind.name;
        for (const int depth : {8, 12}) {
            const auto palette = makePalette(kind, depth);
            ASSERT_EQ(palette->size(), 1 << depth) << kind.name;
            EXPECT_EQ(palette->name(), kind.name);
            EXPECT_TRUE(palette->modified()) << "it stands in no file";
            EXPECT_EQ(palette->alpha().front(), 0);
            EXPECT_EQ(palette->alpha().back(), 255);
            EXPECT_EQ(palette->alpha()[palette->alpha().size() / 2], 128);
            for (int i = 0; i < palette->size(); ++i) {
                const auto values = palette->fileValues(i);
                EXPECT_EQ(palette->red()[static_cast<std::size_t>(i)], values[0]) << "whole and in range";
            }
        }
    }
}

TEST(PaletteKinds, KindsOfAGroupStandTogether)
{
    std::set<QString> seen;
    QString group = "none";
    for (const PaletteKind& kind : paletteKinds()) {
        if (group == kind.group)
            continue;
        group = kind.group;
        EXPECT_TRUE(seen.insert(group).second) << kind.group;
    }
}

TEST(PaletteKinds, FluorophoresHaveTheColoursThatPicturesUse)
{
    EXPECT_EQ(colorAt("DAPI", 255), (Rgb{0, 0, 255}));
    EXPECT_EQ(colorAt("CFP", 255), (Rgb{0, 255, 255}));
    EXPECT_EQ(colorAt("GFP", 255), (Rgb{0, 255, 0}));
    EXPECT_EQ(colorAt("YFP", 255), (Rgb{255, 255, 0}));
    EXPECT_EQ(colorAt("RFP (DsRed)", 255), (Rgb{255, 0, 0}));
    EXPECT_EQ(colorAt("Cy5", 255), (Rgb{255, 0, 255}));
    EXPECT_EQ(colorAt("GFP", 100), (Rgb{0, 100, 0}));
    EXPECT_EQ(colorAt("Grey", 100), (Rgb{100, 100, 100}));
    EXPECT_EQ(colorAt("Magenta", 51), (Rgb{51, 0, 51}));
}

TEST(PaletteKinds, ALongerWavelengthNeverHasAnEarlierColour)
{
    const std::vector<MapColor> order = {{0, 0, 1},   {0, 1, 1}, {0, 1, 0}, {1, 1, 0},
                                         {1, 0.5, 0}, {1, 0, 0}, {1, 0, 1}};
    std::size_t place = 0;
    for (int nanometres = 380; nanometres <= 900; ++nanometres) {
        while (place < order.size() && order[place] != emissionColor(nanometres))
            ++place;
        ASSERT_LT(place, order.size()) << nanometres;
    }
    EXPECT_EQ(place, order.size() - 1);
}

TEST(PaletteKinds, MapsBeginAndEndAsTheirNamesSay)
{
    EXPECT_EQ(colorAt("Fire", 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(colorAt("Ice", 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(colorAt("Ice", 255), (Rgb{255, 255, 255}));
    EXPECT_EQ(colorAt("Spectrum", 0), (Rgb{0, 0, 255}));
    EXPECT_EQ(colorAt("Spectrum", 255), (Rgb{255, 0, 0}));
    EXPECT_EQ(colorAt("Spectrum", 127)[1], 255);
}

TEST(PaletteKinds, MapsAreThePublishedOnes)
{
    const auto near = [](const Rgb& seen, const Rgb& published) {
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_NEAR(seen[k], published[k], 5) << k;
    };
    // Entries of the tables that the polynomials follow.
    near(colorAt("Viridis", 0), {68, 1, 84});
    near(colorAt("Viridis", 128), {33, 145, 140});
    near(colorAt("Viridis", 255), {253, 231, 37});
    near(colorAt("Inferno", 0), {0, 0, 4});
    near(colorAt("Inferno", 128), {188, 55, 84});
    near(colorAt("Inferno", 255), {252, 255, 164});
    // The grey value of this helix is the part of the way itself, in the weights of its author.
    for (const int i : {0, 60, 128, 200, 255}) {
        const MapColor color = kindNamed("Cubehelix").color(i / 255.0);
        EXPECT_NEAR(0.30 * color[0] + 0.59 * color[1] + 0.11 * color[2], i / 255.0, 0.005);
    }
}

/// CIE lightness of an sRGB colour.
double lightness(const Rgb& color)
{
    const auto linear = [](int value) {
        const double c = value / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    const double y = 0.2126 * linear(color[0]) + 0.7152 * linear(color[1]) + 0.0722 * linear(color[2]);
    return y > 216.0 / 24389 ? 116 * std::cbrt(y) - 16 : y * 24389 / 27;
}

/// How far the lightness of a map is from an even rise, at most.
double unevenness(const char* name)
{
    const double first = lightness(colorAt(name, 0));
    const double last = lightness(colorAt(name, 255));
    double worst = 0;
    for (int i = 0; i <= 255; i += 5)
        worst = std::max(worst, std::abs(lightness(colorAt(name, i)) - first - (last - first) * i / 255));
    return worst;
}

TEST(PaletteKinds, EvenMapsRiseEvenlyInLightness)
{
    EXPECT_LT(unevenness("Blue to Yellow"), 1);
    EXPECT_LT(unevenness("Viridis"), 4);
    // Its authors measured lightness in another space, where it is as even.
    EXPECT_LT(unevenness("Inferno"), 7);
    EXPECT_GT(unevenness("Spectrum"), 25) << "the measure tells them from others";
}

TEST(PaletteKinds, TheyAreWrittenAndReadLikeAnyOther)
{
    QTemporaryDir directory;
    const auto palette = makePalette(kindNamed("Viridis"), 12);
    PaletteFile file(directory.filePath("v.map"));
    ASSERT_TRUE(file.write(*palette));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.makePalette()->values(), palette->values());
}

} // namespace
} // namespace tirn
