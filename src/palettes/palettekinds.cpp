#include "palettes/palettekinds.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tirn {

namespace {

using MapFunction = std::function<MapColor(double)>;

constexpr MapColor kBlue = {0, 0, 1};
constexpr MapColor kCyan = {0, 1, 1};
constexpr MapColor kGreen = {0, 1, 0};
constexpr MapColor kYellow = {1, 1, 0};
constexpr MapColor kOrange = {1, 0.5, 0};
constexpr MapColor kRed = {1, 0, 0};
constexpr MapColor kMagenta = {1, 0, 1};

MapFunction rampTo(const MapColor& full)
{
    return [full](double part) { return MapColor{full[0] * part, full[1] * part, full[2] * part}; };
}

/// Straight lines between colours at equal distances.
MapFunction between(std::vector<MapColor> stops)
{
    return [stops = std::move(stops)](double part) {
        const double place = part * static_cast<double>(stops.size() - 1);
        const std::size_t below = std::min(static_cast<std::size_t>(place), stops.size() - 2);
        const double beyond = place - static_cast<double>(below);
        MapColor color;
        for (std::size_t k = 0; k < color.size(); ++k)
            color[k] = stops[below][k] + beyond * (stops[below + 1][k] - stops[below][k]);
        return color;
    };
}

/// A polynomial of sixth degree for each component, its coefficients from the lowest power on.
using MapPolynomial = std::array<MapColor, 7>;

MapFunction polynomial(const MapPolynomial& coefficients)
{
    return [coefficients](double part) {
        MapColor color = {};
        for (auto factor = coefficients.rbegin(); factor != coefficients.rend(); ++factor) {
            for (std::size_t k = 0; k < color.size(); ++k)
                color[k] = color[k] * part + (*factor)[k];
        }
        return color;
    };
}

// The maps of S. van der Walt and N. Smith, which are CC0, in the polynomials that M. Zucker fitted to them
// and put under CC0, too ("viridis, magma, inferno, plasma with polynomials", 2019).
constexpr MapPolynomial kViridis = {{{0.2777273272234177, 0.005407344544966578, 0.3340998053353061},
                                     {0.1050930431085774, 1.404613529898575, 1.384590162594685},
                                     {-0.3308618287255563, 0.214847559468213, 0.09509516302823659},
                                     {-4.634230498983486, -5.799100973351585, -19.33244095627987},
                                     {6.228269936347081, 14.17993336680509, 56.69055260068105},
                                     {4.776384997670288, -13.74514537774601, -65.35303263337234},
                                     {-5.435455855934631, 4.645852612178535, 26.3124352495832}}};
constexpr MapPolynomial kInferno = {{{0.0002189403691192265, 0.001651004631001012, -0.01948089843709184},
                                     {0.1065134194856116, 0.5639564367884091, 3.932712388889277},
                                     {11.60249308247187, -3.972853965665698, -15.9423941062914},
                                     {-41.70399613139459, 17.43639888205313, 44.35414519872813},
                                     {77.162935699427, -33.40235894210092, -81.80730925738993},
                                     {-71.31942824499214, 32.62606426397723, 73.20951985803202},
                                     {25.13112622477341, -12.24266895238567, -23.07032500287172}}};

/// The formula of D. A. Green, "A colour scheme for the display of astronomical intensity images", Bulletin
/// of the Astronomical Society of India 39 (2011) 289, with its own numbers: start 0.5, -1.5 turns, hue 1.
MapColor cubeHelix(double part)
{
    const double angle = 2 * std::numbers::pi * (0.5 / 3 - 1.5 * part);
    const double amplitude = part * (1 - part) / 2;
    const double cosine = amplitude * std::cos(angle);
    const double sine = amplitude * std::sin(angle);
    return {part - 0.14861 * cosine + 1.78277 * sine, part - 0.29227 * cosine - 0.90649 * sine,
            part + 1.97294 * cosine};
}

/// CIE 1976 L*a*b* under D65 as sRGB (IEC 61966-2-1); components outside of 0..1 cannot be shown.
MapColor fromLab(double lightness, double a, double b)
{
    const double middle = (lightness + 16) / 116;
    const auto linear = [](double f) { return f > 6.0 / 29 ? f * f * f : 3 * 36.0 / 841 * (f - 4.0 / 29); };
    const double x = 0.95047 * linear(middle + a / 500);
    const double y = linear(middle);
    const double z = 1.08883 * linear(middle - b / 200);
    const auto encoded = [](double value) {
        return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
    };
    return {encoded(3.2404542 * x - 1.5371385 * y - 0.4985314 * z),
            encoded(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z),
            encoded(0.0556434 * x - 0.2040259 * y + 1.0572252 * z)};
}

/// From black over blue, grey and yellow to white: the lightness rises evenly, and the one colour axis that
/// it uses is the one that people who confuse red and green see as others do.
MapColor blueToYellow(double part)
{
    constexpr double strongest = 80;
    const auto isShown = [](const MapColor& color) {
        return std::all_of(color.begin(), color.end(), [](double c) { return c >= 0 && c <= 1; });
    };
    const double lightness = 100 * part;
    const double wanted = strongest * (2 * part - 1);
    MapColor color = fromLab(lightness, 0, 0);
    // As much of the colour as a screen can show at this lightness, found by halving.
    double low = 0;
    double high = 1;
    for (int i = 0; i < 20; ++i) {
        const double share = (low + high) / 2;
        const MapColor tried = fromLab(lightness, 0, share * wanted);
        (isShown(tried) ? low : high) = share;
        if (isShown(tried))
            color = tried;
    }
    return color;
}

/// Full colours along the hues from blue to red.
MapColor spectrum(double part)
{
    const QColor color = QColor::fromHsvF((1 - part) * 2 / 3, 1, 1);
    return {color.redF(), color.greenF(), color.blueF()};
}

/// What people label specimens with, and where it emits most.
struct Fluorophore
{
    const char* name;
    int nanometres;
};

constexpr Fluorophore kFluorophores[] = {
    {"BFP", 448},       {"DAPI", 461},        {"Hoechst", 461}, {"CFP", 475},       {"GFP", 509},
    {"Alexa 488", 519}, {"FITC", 519},        {"YFP", 527},     {"Cy3", 570},       {"TRITC", 576},
    {"tdTomato", 581},  {"RFP (DsRed)", 583}, {"mCherry", 610}, {"Texas Red", 615}, {"Alexa 594", 617},
    {"Alexa 647", 665}, {"Cy5", 670},         {"Cy7", 773},
};

std::vector<PaletteKind> allKinds()
{
    const char* colors = "Colours";
    const char* maps = "Maps";
    const char* even = "Even Maps";
    std::vector<PaletteKind> kinds = {
        {"", "Grey", "Black to white.", rampTo({1, 1, 1})},
        {colors, "Red", "", rampTo(kRed)},
        {colors, "Green", "", rampTo(kGreen)},
        {colors, "Blue", "", rampTo(kBlue)},
        {colors, "Cyan", "Goes with magenta for all eyes.", rampTo(kCyan)},
        {colors, "Magenta", "Goes with green or cyan for all eyes.", rampTo(kMagenta)},
        {colors, "Yellow", "", rampTo(kYellow)},
        {colors, "Orange", "", rampTo(kOrange)}};
    for (const Fluorophore& each : kFluorophores)
        kinds.push_back({"Fluorophores", each.name, QString("Emits most at %1 nm.").arg(each.nanometres),
                         rampTo(emissionColor(each.nanometres))});
    const std::vector<PaletteKind> others = {
        {maps, "Fire", "Black, violet, red, yellow, white.",
         between({{0, 0, 0}, {0.35, 0, 0.45}, {0.85, 0.15, 0.1}, {1, 0.65, 0}, {1, 1, 0.85}})},
        {maps, "Ice", "Black, blue, cyan, white.",
         between({{0, 0, 0}, {0, 0.12, 0.5}, {0, 0.5, 0.85}, {0.5, 0.85, 1}, {1, 1, 1}})},
        {maps, "Spectrum", "All hues from blue to red.", spectrum},
        {even, "Viridis", "By S. van der Walt and N. Smith, even in lightness.", polynomial(kViridis)},
        {even, "Inferno", "By N. Smith and S. van der Walt, even in lightness.", polynomial(kInferno)},
        {even, "Cubehelix", "By D. A. Green, even in brightness.", cubeHelix},
        {even, "Blue to Yellow", "Even in CIE lightness, and the same for those who confuse red and green.",
         blueToYellow}};
    kinds.insert(kinds.end(), others.begin(), others.end());
    return kinds;
}

} // namespace

MapColor emissionColor(double nanometres)
{
    struct Band
    {
        double below;
        MapColor color;
    };
    constexpr Band bands[] = {{470, kBlue},   {500, kCyan},   {525, kGreen},
                              {560, kYellow}, {580, kOrange}, {640, kRed}};
    for (const Band& band : bands) {
        if (nanometres < band.below)
            return band.color;
    }
    return kMagenta;
}

const std::vector<PaletteKind>& paletteKinds()
{
    static const std::vector<PaletteKind> kinds = allKinds();
    return kinds;
}

std::unique_ptr<Palette> makePalette(const PaletteKind& kind, int depth, PaletteTables* tables)
{
    const int size = 1 << depth;
    const auto whole = [](double part) {
        return static_cast<std::uint16_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
    };
    std::vector<PaletteEntry> entries;
    for (int i = 0; i < size; ++i) {
        const double part = static_cast<double>(i) / (size - 1);
        const MapColor color = kind.color(part);
        entries.push_back({whole(color[0]), whole(color[1]), whole(color[2]), whole(part)});
    }
    auto palette = std::make_unique<Palette>(entries, 4, kind.name, tables);
    palette->setModified(true);
    return palette;
}

} // namespace tirn
