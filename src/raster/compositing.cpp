#include "raster/compositing.h"

#include <algorithm>
#include <cmath>

#include "base/parallel.h"
#include "raster/clearranges.h"
#include "raster/tilekernels.h"

namespace tirn {

namespace {

constexpr int kMacroSide = 32;
/// A tile through which less than this shines is full: what lies behind would change no colour by a quarter.
constexpr float kFull = 1.0F / 1024;
/// By how much positions with perspective, and those of many tiles at once, may be off.
constexpr std::int32_t kSlack = kFractions / 1024;
/// The least W that positions are worked out with.
constexpr double kLeastW = 1e-6;

/// What a square of pixels covers of a slice.
struct Footprint
{
    std::int32_t u0 = 0;
    std::int32_t u1 = 0;
    std::int32_t v0 = 0;
    std::int32_t v1 = 0;
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

/// Of the pixel centres in columns x to x + side - 1 and rows y to y + side - 1, seen with perspective.
Footprint projectiveFootprint(const RasterSlice& slice, int x, int y, int side)
{
    Footprint print;
    for (int corner = 0; corner < 4; ++corner) {
        const int column = x + (corner % 2) * (side - 1);
        const int row = y + (corner / 2) * (side - 1);
        const Place at = placeOf(slice.toTexel, column + 0.5, row + 0.5);
        if (at.w < kLeastW)
            return {0, 0, 0, 0, false};
        const std::int32_t u = partsOf(at.u / at.w);
        const std::int32_t v = partsOf(at.v / at.w);
        const bool isFirst = corner == 0;
        print.u0 = isFirst ? u : std::min(print.u0, u);
        print.u1 = isFirst ? u : std::max(print.u1, u);
        print.v0 = isFirst ? v : std::min(print.v0, v);
        print.v1 = isFirst ? v : std::max(print.v1, v);
    }
    return {print.u0 - kSlack, print.u1 + kSlack, print.v0 - kSlack, print.v1 + kSlack, true};
}

/// How far a square of pixels reaches from its first one.
struct Reach
{
    std::int32_t leastU = 0;
    std::int32_t mostU = 0;
    std::int32_t leastV = 0;
    std::int32_t mostV = 0;
};

Reach reachOf(const std::array<double, 9>& m, int side)
{
    const auto ends = [side](double across, double along, std::int32_t& least, std::int32_t& most) {
        least = partsOf((std::min(across, 0.0) + std::min(along, 0.0)) * (side - 1)) - kSlack;
        most = partsOf((std::max(across, 0.0) + std::max(along, 0.0)) * (side - 1)) + kSlack;
    };
    Reach reach;
    ends(m[0], m[1], reach.leastU, reach.mostU);
    ends(m[3], m[4], reach.leastV, reach.mostV);
    return reach;
}

bool meets(const Footprint& print, const TileSlice& slice)
{
    return !print.isBounded || (print.u1 >= slice.areaU0 && print.u0 < slice.areaU1 &&
                                print.v1 >= slice.areaV0 && print.v0 < slice.areaV1);
}

/// A channel with what is the same for all of a frame.
struct ChannelPlan
{
    const SliceSet* slices;
    TileChannel channel;
    ComponentTables tables;
    ClearRanges clear;
};

struct SlicePlan
{
    const RasterSlice* slice;
    TileSlice tile;
};

SlicePlan planOf(const RasterSlice& slice)
{
    SlicePlan plan{&slice, {}};
    plan.tile.areaU0 = partsOf(slice.area.u0);
    plan.tile.areaU1 = partsOf(slice.area.u1);
    plan.tile.areaV0 = partsOf(slice.area.v0);
    plan.tile.areaV1 = partsOf(slice.area.v1);
    plan.tile.share = static_cast<float>(slice.share);
    plan.tile.shareParts = std::min(partsOf(slice.share), kFractions - 1);
    plan.tile.curveBase = static_cast<float>(slice.curveBase);
    return plan;
}

void fillPlan(const RasterFrame& frame, const RasterChannel& from, ChannelPlan& plan)
{
    plan.slices = from.slices;
    TileChannel& channel = plan.channel;
    channel.stride = from.slices->stride();
    channel.bytesPerSample = from.slices->bytesPerSample();
    channel.packed = from.colours->packed();
    channel.entries = from.colours->entries();
    channel.curve = from.curve;
    channel.curveFactor = static_cast<float>(from.curveFactor);
    channel.curveU = static_cast<float>(frame.curveU);
    channel.curveV = static_cast<float>(frame.curveV);
    channel.unit = static_cast<float>(from.unit);
    channel.stretch = static_cast<float>(from.stretch);
    channel.isPlain = channel.bytesPerSample == 1 && channel.entries == 256 && channel.curve.empty() &&
                      channel.stretch == 1;
    if (channel.isPlain) {
        for (std::size_t k = 0; k < 4; ++k) {
            for (std::size_t i = 0; i < 256; ++i) {
                plan.tables.from[k][i] = static_cast<std::uint8_t>(channel.packed[i] >> (8 * k));
                plan.tables.to[k][i] = static_cast<std::uint8_t>(channel.packed[i + 1] >> (8 * k));
            }
        }
        channel.tables = &plan.tables;
    }
    plan.clear = ClearRanges(channel, *from.colours);
}

/// The tiles of a frame.
class TileDrawing
{
public:
    TileDrawing(const RasterFrame& frame, RasterLayer& layer);
    void drawMacroTile(int x, int y) const;

private:
    /// A slice that may show something in the tiles at hand, and by which channels: `count` of them from
    /// `first` on in `channels`.
    struct Candidate
    {
        const SlicePlan* plan;
        std::size_t first;
        std::size_t count;
    };
    /// Room that the tiles of a thread share.
    struct Scratch
    {
        std::vector<Candidate> candidates;
        std::vector<const ChannelPlan*> channels;
        std::vector<TileSample> samples;
        TileColours colours;
    };
    Footprint footprint(const RasterSlice& slice, int x, int y, int side) const;
    bool drawsIn(const RasterSlice& slice, const ChannelPlan& plan, const Footprint& print) const;
    bool drawTile(Scratch& scratch, int x, int y) const;
    TilePlace placeOn(const SlicePlan& plan, const Footprint& print, int x, int y) const;
    void store(const TileColours& colours, int x, int y) const;

    const RasterFrame& m_frame;
    RasterLayer& m_layer;
    TileKernel m_kernel;
    TileFrame m_tile;
    Reach m_tileReach;
    Reach m_macroReach;
    /// Nearest first: the last channel of a slice is drawn over the others.
    std::vector<ChannelPlan> m_channels;
    std::vector<SlicePlan> m_slices;
};

TileDrawing::TileDrawing(const RasterFrame& frame, RasterLayer& layer)
    : m_frame(frame), m_layer(layer), m_kernel(tileKernel()), m_channels(frame.channels.size())
{
    for (std::size_t i = 0; i < m_channels.size(); ++i)
        fillPlan(frame, frame.channels[m_channels.size() - 1 - i], m_channels[i]);
    for (auto slice = frame.slices.rbegin(); slice != frame.slices.rend(); ++slice)
        m_slices.push_back(planOf(*slice));
    m_tile.blend = frame.blend;
    m_tile.isProjective = frame.isProjective;
    m_tile.mostW = static_cast<float>(frame.mostW);
    const std::array<double, 9>& m = frame.slices.front().toTexel;
    if (!frame.isProjective) {
        m_tile.u = tileOffsets(m[0], m[1]);
        m_tile.v = tileOffsets(m[3], m[4]);
        m_tileReach = {m_tile.u.leastPart, m_tile.u.mostPart, m_tile.v.leastPart, m_tile.v.mostPart};
        m_macroReach = reachOf(m, kMacroSide);
        m_tile.window = std::max(m_tile.u.window(), m_tile.v.window());
    }
    const SliceSet& slices = *m_channels.front().slices;
    // The last part before a zero beyond the plane, so that nothing beyond that is read.
    const auto high = [](int clamp, int size) {
        return clamp < size ? clamp * kFractions : size * kFractions - 1;
    };
    m_tile.clampU0 = frame.clamp.u0 * kFractions;
    m_tile.clampU1 = high(frame.clamp.u1, slices.width());
    m_tile.clampV0 = frame.clamp.v0 * kFractions;
    m_tile.clampV1 = high(frame.clamp.v1, slices.height());
}

Footprint TileDrawing::footprint(const RasterSlice& slice, int x, int y, int side) const
{
    if (m_frame.isProjective)
        return projectiveFootprint(slice, x, y, side);
    const Reach& reach = side == kTileSide ? m_tileReach : m_macroReach;
    const Place at = placeOf(slice.toTexel, x + 0.5, y + 0.5);
    const std::int32_t u = partsOf(at.u);
    const std::int32_t v = partsOf(at.v);
    return {u + reach.leastU, u + reach.mostU, v + reach.leastV, v + reach.mostV, true};
}

bool TileDrawing::drawsIn(const RasterSlice& slice, const ChannelPlan& plan, const Footprint& print) const
{
    const auto rangeIn = [&](int plane) -> ValueRange {
        if (plane < 0)
            return {0, 0};
        if (!print.isBounded)
            return joined(plan.slices->range(plane), {0, 0});
        const auto texel = [](std::int32_t at, int least, int most) {
            return std::clamp(at >> kFractionBits, least, most);
        };
        const TexelClamp& clamp = m_frame.clamp;
        return plan.slices->range(plane,
                                  {texel(print.u0, clamp.u0, clamp.u1), texel(print.v0, clamp.v0, clamp.v1),
                                   texel(print.u1 + kFractions, clamp.u0, clamp.u1),
                                   texel(print.v1 + kFractions, clamp.v0, clamp.v1)});
    };
    ValueRange range = rangeIn(slice.plane);
    if (slice.share != 0)
        range = joined(range, rangeIn(slice.nextPlane));
    return !plan.clear.contains(range);
}

void TileDrawing::drawMacroTile(int x, int y) const
{
    Scratch scratch;
    for (const SlicePlan& plan : m_slices) {
        const Footprint print = footprint(*plan.slice, x, y, kMacroSide);
        if (!meets(print, plan.tile))
            continue;
        const std::size_t first = scratch.channels.size();
        for (const ChannelPlan& channel : m_channels) {
            if (drawsIn(*plan.slice, channel, print))
                scratch.channels.push_back(&channel);
        }
        if (scratch.channels.size() > first)
            scratch.candidates.push_back({&plan, first, scratch.channels.size() - first});
    }
    if (scratch.candidates.empty())
        return;
    for (int row = y; row < std::min(y + kMacroSide, m_layer.y + m_layer.height); row += kTileSide) {
        for (int column = x; column < std::min(x + kMacroSide, m_layer.x + m_layer.width);
             column += kTileSide) {
            if (drawTile(scratch, column, row))
                store(scratch.colours, column, row);
        }
    }
}

TilePlace TileDrawing::placeOn(const SlicePlan& plan, const Footprint& print, int x, int y) const
{
    TilePlace place;
    const TileSlice& slice = plan.tile;
    place.isEdge = !print.isBounded || print.u0 < std::max(slice.areaU0, m_tile.clampU0) ||
                   print.u1 >= std::min(slice.areaU1, m_tile.clampU1) ||
                   print.v0 < std::max(slice.areaV0, m_tile.clampV0) ||
                   print.v1 >= std::min(slice.areaV1, m_tile.clampV1);
    if (!m_frame.isProjective) {
        place.u = print.u0 - m_tileReach.leastU;
        place.v = print.v0 - m_tileReach.leastV;
        return place;
    }
    const Place first = placeOf(plan.slice->toTexel, x + 0.5, y + 0.5);
    std::copy(plan.slice->toTexel.begin(), plan.slice->toTexel.end(), place.toTexel.begin());
    place.toTexel[2] = static_cast<float>(first.u);
    place.toTexel[5] = static_cast<float>(first.v);
    place.toTexel[8] = static_cast<float>(first.w);
    return place;
}

bool TileDrawing::drawTile(Scratch& scratch, int x, int y) const
{
    bool isDrawn = false;
    for (const auto& [plan, first, count] : scratch.candidates) {
        const RasterSlice& slice = *plan->slice;
        const Footprint print = footprint(slice, x, y, kTileSide);
        if (!meets(print, plan->tile))
            continue;
        scratch.samples.clear();
        for (std::size_t i = first; i < first + count; ++i) {
            const ChannelPlan& channel = *scratch.channels[i];
            if (drawsIn(slice, channel, print))
                scratch.samples.push_back(
                    {&channel.channel, slice.plane >= 0 ? channel.slices->plane(slice.plane) : nullptr,
                     slice.nextPlane >= 0 ? channel.slices->plane(slice.nextPlane) : nullptr});
        }
        if (scratch.samples.empty())
            continue;
        if (!isDrawn) {
            scratch.colours.red.fill(0);
            scratch.colours.green.fill(0);
            scratch.colours.blue.fill(0);
            scratch.colours.through.fill(m_frame.blend == RasterBlend::Alpha ? 1.0F : 0.0F);
            isDrawn = true;
        }
        if (m_kernel(m_tile, plan->tile, placeOn(*plan, print, x, y), scratch.samples, scratch.colours) <
            kFull)
            break;
    }
    return isDrawn;
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

RasterLayer composite(const RasterFrame& frame, RasterLayer room)
{
    if (frame.channels.empty() || frame.slices.empty())
        return {};
    const PixelRect part = coveredPart(frame);
    RasterLayer layer{part.x, part.y, part.width, part.height, std::move(room.rgba)};
    if (layer.isEmpty())
        return layer;
    layer.rgba.assign(
        std::size_t{4} * static_cast<std::size_t>(part.width) * static_cast<std::size_t>(part.height), 0);
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
