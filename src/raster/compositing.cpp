#include "raster/compositing.h"

#include <algorithm>
#include <cmath>

#include "base/parallel.h"
#include "raster/tilekernels.h"

namespace tirn {

namespace {

constexpr int kMacroSide = 64;
/// A tile through which less than this shines is full: what lies behind would change no colour by a quarter.
constexpr float kFull = 1.0F / 1024;
/// Positions stay this far inside of what 32 bits hold.
constexpr double kMostFractions = 1 << 29;
/// By how much positions are rounded, in texels, with a margin.
constexpr double kSlack = 1.0 / 1024;
/// A place may be rounded to the next one.
constexpr int kPlaceSlack = 1;
/// The least W that positions are worked out with.
constexpr double kLeastW = 1e-6;

std::int32_t fractions(double texels)
{
    return static_cast<std::int32_t>(
        std::lround(std::clamp(texels * kFractions, -kMostFractions, kMostFractions)));
}

/// What a square of pixels covers of a slice, in texels.
struct Footprint
{
    double u0 = 0;
    double u1 = 0;
    double v0 = 0;
    double v1 = 0;
    /// False where the plane of the slice passes the viewer: then it covers anything.
    bool isBounded = true;
};

/// The place of a picture's point on a slice, times W.
struct Place
{
    double u;
    double v;
    double w;
};

Place placeOf(const std::array<double, 9>& m, double x, double y)
{
    return {m[0] * x + m[1] * y + m[2], m[3] * x + m[4] * y + m[5], m[6] * x + m[7] * y + m[8]};
}

/// Of the pixel centres in columns x to x + side - 1 and rows y to y + side - 1.
Footprint footprintOf(const RasterFrame& frame, const RasterSlice& slice, int x, int y, int side)
{
    Footprint print;
    for (int corner = 0; corner < 4; ++corner) {
        const int column = x + (corner % 2) * (side - 1);
        const int row = y + (corner / 2) * (side - 1);
        Place at = placeOf(slice.toTexel, column + 0.5, row + 0.5);
        if (frame.isProjective) {
            if (at.w < kLeastW) {
                print.isBounded = false;
                return print;
            }
            at.u /= at.w;
            at.v /= at.w;
        }
        const bool isFirst = corner == 0;
        print.u0 = isFirst ? at.u : std::min(print.u0, at.u);
        print.u1 = isFirst ? at.u : std::max(print.u1, at.u);
        print.v0 = isFirst ? at.v : std::min(print.v0, at.v);
        print.v1 = isFirst ? at.v : std::max(print.v1, at.v);
    }
    return print;
}

bool meets(const Footprint& print, const TexelArea& area)
{
    return !print.isBounded || (print.u1 + kSlack >= area.u0 && print.u0 - kSlack < area.u1 &&
                                print.v1 + kSlack >= area.v0 && print.v0 - kSlack < area.v1);
}

bool isWithin(const Footprint& print, double u0, double u1, double v0, double v1)
{
    return print.isBounded && print.u0 - kSlack >= u0 && print.u1 + kSlack < u1 && print.v0 - kSlack >= v0 &&
           print.v1 + kSlack < v1;
}

/// A channel with what is the same for all of a frame.
struct ChannelPlan
{
    const RasterChannel* channel;
    TileSample sample;
    /// Of all multipliers of the depth curve.
    float leastCurve = 1;
    float mostCurve = 1;
};

ChannelPlan planOf(const RasterFrame& frame, const RasterChannel& channel)
{
    ChannelPlan plan{&channel, {}};
    TileSample& sample = plan.sample;
    sample.stride = channel.slices->stride();
    sample.bytesPerSample = channel.slices->bytesPerSample();
    sample.packed = channel.colours->packed();
    sample.entries = channel.colours->entries();
    sample.curve = channel.curve;
    sample.curveFactor = static_cast<float>(channel.curveFactor);
    sample.unit = static_cast<float>(channel.unit);
    sample.stretch = static_cast<float>(channel.stretch);
    sample.curveU = static_cast<float>(frame.curveU);
    sample.curveV = static_cast<float>(frame.curveV);
    sample.isPlain =
        sample.bytesPerSample == 1 && sample.entries == 256 && channel.curve.empty() && channel.stretch == 1;
    if (!channel.curve.empty()) {
        const auto [least, most] = std::minmax_element(channel.curve.begin(), channel.curve.end());
        plan.leastCurve = *least * sample.curveFactor;
        plan.mostCurve = *most * sample.curveFactor;
    }
    return plan;
}

/// Whether a channel draws nothing where its samples lie in a range.
bool isClear(const ChannelPlan& plan, const ValueRange& range)
{
    const TileSample& sample = plan.sample;
    const ColourLookup& colours = *plan.channel->colours;
    if (sample.isPlain)
        return colours.isClear(bytePlace(range.least * 128) - kPlaceSlack,
                               bytePlace(range.most * 128) + kPlaceSlack);
    const auto place = [&](int value, float factor) {
        const float scaled = static_cast<float>(value) * sample.unit * factor * sample.stretch;
        return static_cast<int>(widePlace(std::min(scaled, 1.0F), sample.entries));
    };
    // A place is cut off here, and rounded there.
    return colours.isClear(place(range.least, plan.leastCurve) - kPlaceSlack,
                           place(range.most, plan.mostCurve) + 1 + kPlaceSlack);
}

/// The offsets of a tile's pixels, which all slices of a frame without perspective share.
struct TileOffsets
{
    alignas(64) std::array<std::int32_t, kTilePixels> u = {};
    alignas(64) std::array<std::int32_t, kTilePixels> v = {};
};

/// The tiles of a frame.
class TileDrawing
{
public:
    TileDrawing(const RasterFrame& frame, RasterLayer& layer);
    void drawMacroTile(int x, int y) const;

private:
    bool drawsIn(const RasterSlice& slice, const ChannelPlan& plan, const Footprint& print) const;
    bool drawsIn(const RasterSlice& slice, const Footprint& print) const;
    void drawTile(const std::vector<const RasterSlice*>& slices, int x, int y) const;
    TilePlace placeOn(const RasterSlice& slice, const Footprint& print, int x, int y) const;
    TileSample sampleOf(const RasterSlice& slice, const ChannelPlan& plan) const;
    void store(const TileColours& colours, int x, int y) const;

    const RasterFrame& m_frame;
    RasterLayer& m_layer;
    TileKernel m_kernel;
    std::vector<ChannelPlan> m_plans;
    TileOffsets m_offsets;
    /// The clamp in parts of a texel.
    std::array<std::int32_t, 4> m_clamp = {};
};

TileDrawing::TileDrawing(const RasterFrame& frame, RasterLayer& layer)
    : m_frame(frame), m_layer(layer), m_kernel(tileKernel())
{
    // Nearest first: the last channel of a slice is drawn over the others.
    for (auto channel = frame.channels.rbegin(); channel != frame.channels.rend(); ++channel)
        m_plans.push_back(planOf(frame, *channel));
    if (!frame.isProjective && !frame.slices.empty()) {
        const std::array<double, 9>& m = frame.slices.front().toTexel;
        for (int p = 0; p < kTilePixels; ++p) {
            const int column = p % kTileSide;
            const int row = p / kTileSide;
            m_offsets.u[static_cast<std::size_t>(p)] = fractions(m[0] * column + m[1] * row);
            m_offsets.v[static_cast<std::size_t>(p)] = fractions(m[3] * column + m[4] * row);
        }
    }
    if (!m_plans.empty()) {
        const SliceSet& slices = *m_plans.front().channel->slices;
        // The last part before a zero beyond the plane, so that nothing beyond that is read.
        const auto high = [](int clamp, int size) {
            return clamp < size ? clamp * kFractions : size * kFractions - 1;
        };
        m_clamp = {frame.clamp.u0 * kFractions, high(frame.clamp.u1, slices.width()),
                   frame.clamp.v0 * kFractions, high(frame.clamp.v1, slices.height())};
    }
}

bool TileDrawing::drawsIn(const RasterSlice& slice, const ChannelPlan& plan, const Footprint& print) const
{
    const SliceSet& set = *plan.channel->slices;
    const auto rangeIn = [&](int plane) -> ValueRange {
        if (plane < 0)
            return {0, 0};
        if (!print.isBounded)
            return joined(set.range(plane), {0, 0});
        const auto texel = [](double at, int least, int most) {
            return static_cast<int>(std::floor(std::clamp<double>(at, least, most)));
        };
        const TexelClamp& clamp = m_frame.clamp;
        return set.range(plane, {texel(print.u0 - kSlack, clamp.u0, clamp.u1),
                                 texel(print.v0 - kSlack, clamp.v0, clamp.v1),
                                 texel(print.u1 + 1 + kSlack, clamp.u0, clamp.u1),
                                 texel(print.v1 + 1 + kSlack, clamp.v0, clamp.v1)});
    };
    ValueRange range = rangeIn(slice.plane);
    if (slice.share != 0)
        range = joined(range, rangeIn(slice.nextPlane));
    return !isClear(plan, range);
}

bool TileDrawing::drawsIn(const RasterSlice& slice, const Footprint& print) const
{
    return meets(print, slice.area) && std::any_of(m_plans.begin(), m_plans.end(), [&](const auto& plan) {
               return drawsIn(slice, plan, print);
           });
}

void TileDrawing::drawMacroTile(int x, int y) const
{
    std::vector<const RasterSlice*> slices;
    for (auto slice = m_frame.slices.rbegin(); slice != m_frame.slices.rend(); ++slice) {
        if (drawsIn(*slice, footprintOf(m_frame, *slice, x, y, kMacroSide)))
            slices.push_back(&*slice);
    }
    if (slices.empty())
        return;
    for (int row = y; row < std::min(y + kMacroSide, m_layer.y + m_layer.height); row += kTileSide) {
        for (int column = x; column < std::min(x + kMacroSide, m_layer.x + m_layer.width);
             column += kTileSide)
            drawTile(slices, column, row);
    }
}

TilePlace TileDrawing::placeOn(const RasterSlice& slice, const Footprint& print, int x, int y) const
{
    TilePlace place;
    const Place first = placeOf(slice.toTexel, x + 0.5, y + 0.5);
    place.isProjective = m_frame.isProjective;
    if (m_frame.isProjective) {
        std::copy(slice.toTexel.begin(), slice.toTexel.end(), place.toTexel.begin());
        place.toTexel[2] = static_cast<float>(first.u);
        place.toTexel[5] = static_cast<float>(first.v);
        place.toTexel[8] = static_cast<float>(first.w);
        place.mostW = static_cast<float>(m_frame.mostW);
    } else {
        place.offsetsU = m_offsets.u.data();
        place.offsetsV = m_offsets.v.data();
        place.u = fractions(first.u);
        place.v = fractions(first.v);
    }
    const TexelArea& area = slice.area;
    const TexelClamp& clamp = m_frame.clamp;
    place.isEdge = !isWithin(print, area.u0, area.u1, area.v0, area.v1) ||
                   !isWithin(print, clamp.u0, clamp.u1, clamp.v0, clamp.v1);
    place.areaU0 = fractions(area.u0);
    place.areaU1 = fractions(area.u1);
    place.areaV0 = fractions(area.v0);
    place.areaV1 = fractions(area.v1);
    place.clampU0 = m_clamp[0];
    place.clampU1 = m_clamp[1];
    place.clampV0 = m_clamp[2];
    place.clampV1 = m_clamp[3];
    return place;
}

TileSample TileDrawing::sampleOf(const RasterSlice& slice, const ChannelPlan& plan) const
{
    TileSample sample = plan.sample;
    const SliceSet& set = *plan.channel->slices;
    sample.texels = slice.plane >= 0 ? set.plane(slice.plane) : nullptr;
    sample.nextTexels = slice.nextPlane >= 0 ? set.plane(slice.nextPlane) : nullptr;
    sample.share = static_cast<float>(slice.share);
    sample.shareParts = std::min(fractions(slice.share), kFractions - 1);
    sample.curveBase = static_cast<float>(slice.curveBase);
    return sample;
}

void TileDrawing::drawTile(const std::vector<const RasterSlice*>& slices, int x, int y) const
{
    TileColours colours;
    colours.red.fill(0);
    colours.green.fill(0);
    colours.blue.fill(0);
    colours.through.fill(m_frame.blend == RasterBlend::Alpha ? 1.0F : 0.0F);
    std::vector<TileSample> samples;
    bool isDrawn = false;
    for (const RasterSlice* slice : slices) {
        const Footprint print = footprintOf(m_frame, *slice, x, y, kTileSide);
        if (!meets(print, slice->area))
            continue;
        samples.clear();
        for (const ChannelPlan& plan : m_plans) {
            if (drawsIn(*slice, plan, print))
                samples.push_back(sampleOf(*slice, plan));
        }
        if (samples.empty())
            continue;
        isDrawn = true;
        if (m_kernel(placeOn(*slice, print, x, y), samples, m_frame.blend, colours) < kFull)
            break;
    }
    if (isDrawn)
        store(colours, x, y);
}

std::uint16_t word(float value, float full)
{
    constexpr float most = 65535;
    return static_cast<std::uint16_t>(std::min(value * (most / full) + 0.5F, most));
}

void TileDrawing::store(const TileColours& colours, int x, int y) const
{
    const bool isAlpha = m_frame.blend == RasterBlend::Alpha;
    const int firstColumn = std::max(0, m_layer.x - x);
    const int columns = std::min(kTileSide, m_layer.x + m_layer.width - x);
    const int rows = std::min(kTileSide, m_layer.y + m_layer.height - y);
    for (int row = std::max(0, m_layer.y - y); row < rows; ++row) {
        std::uint16_t* to = m_layer.rgba.data() + 4 * (static_cast<std::size_t>(y - m_layer.y + row) *
                                                           static_cast<std::size_t>(m_layer.width) +
                                                       static_cast<std::size_t>(x - m_layer.x + firstColumn));
        for (int column = firstColumn; column < columns; ++column, to += 4) {
            const auto p = static_cast<std::size_t>(row * kTileSide + column);
            to[0] = word(colours.red[p], kFullColour);
            to[1] = word(colours.green[p], kFullColour);
            to[2] = word(colours.blue[p], kFullColour);
            to[3] = isAlpha ? word(1 - colours.through[p], 1) : word(colours.through[p], kFullColour);
        }
    }
}

int downToTile(int pixel) { return pixel - ((pixel % kTileSide) + kTileSide) % kTileSide; }

std::array<double, 9> inverseOf(const std::array<double, 9>& m)
{
    const auto minor = [&](int a, int b, int c, int d) {
        return m[static_cast<std::size_t>(a)] * m[static_cast<std::size_t>(b)] -
               m[static_cast<std::size_t>(c)] * m[static_cast<std::size_t>(d)];
    };
    const std::array<double, 9> cofactors = {minor(4, 8, 5, 7), minor(2, 7, 1, 8), minor(1, 5, 2, 4),
                                             minor(5, 6, 3, 8), minor(0, 8, 2, 6), minor(2, 3, 0, 5),
                                             minor(3, 7, 4, 6), minor(1, 6, 0, 7), minor(0, 4, 1, 3)};
    const double determinant = m[0] * cofactors[0] + m[1] * cofactors[3] + m[2] * cofactors[6];
    std::array<double, 9> inverse = {};
    for (std::size_t i = 0; i < 9; ++i)
        inverse[i] = cofactors[i] / determinant;
    return inverse;
}

} // namespace

PixelRect coveredPart(const RasterFrame& frame)
{
    double x0 = frame.x + frame.width;
    double x1 = frame.x;
    double y0 = frame.y + frame.height;
    double y1 = frame.y;
    for (const RasterSlice& slice : frame.slices) {
        const std::array<double, 9> toPixel = inverseOf(slice.toTexel);
        for (int corner = 0; corner < 4; ++corner) {
            const Place at = placeOf(toPixel, corner % 2 == 0 ? slice.area.u0 : slice.area.u1,
                                     corner / 2 == 0 ? slice.area.v0 : slice.area.v1);
            // Behind the viewer, or too near to tell.
            if (!(at.w > kLeastW))
                return {frame.x, frame.y, frame.width, frame.height};
            x0 = std::min(x0, at.u / at.w);
            x1 = std::max(x1, at.u / at.w);
            y0 = std::min(y0, at.v / at.w);
            y1 = std::max(y1, at.v / at.w);
        }
    }
    const auto low = [](double at, int from, int size) {
        return static_cast<int>(std::floor(std::clamp<double>(at, from, from + size)));
    };
    const auto high = [](double at, int from, int size) {
        return static_cast<int>(std::ceil(std::clamp<double>(at, from, from + size)));
    };
    PixelRect part{low(x0, frame.x, frame.width), low(y0, frame.y, frame.height), 0, 0};
    part.width = std::max(0, high(x1, frame.x, frame.width) - part.x);
    part.height = std::max(0, high(y1, frame.y, frame.height) - part.y);
    return part;
}

RasterLayer composite(const RasterFrame& frame)
{
    if (frame.channels.empty() || frame.slices.empty())
        return {};
    const PixelRect part = coveredPart(frame);
    RasterLayer layer{part.x, part.y, part.width, part.height, {}};
    if (layer.isEmpty())
        return layer;
    layer.rgba.resize(std::size_t{4} * static_cast<std::size_t>(part.width) *
                      static_cast<std::size_t>(part.height));
    const TileDrawing drawing(frame, layer);
    // Tiles lie where they lie in the whole picture: so its parts are rounded alike.
    const int left = downToTile(part.x);
    const int bottom = downToTile(part.y);
    const int across = (part.x + part.width - left + kMacroSide - 1) / kMacroSide;
    const int along = (part.y + part.height - bottom + kMacroSide - 1) / kMacroSide;
    parallelFor(0, std::int64_t{across} * along, 1, [&](std::int64_t begin, std::int64_t end) {
        for (auto tile = static_cast<int>(begin); tile < end; ++tile)
            drawing.drawMacroTile(left + tile % across * kMacroSide, bottom + tile / across * kMacroSide);
    });
    return layer;
}

} // namespace tirn
