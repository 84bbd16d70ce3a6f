#include "threads/loadfinish.h"

#include <algorithm>

#include "base/log.h"
#include "volume/volumemaking.h"

namespace tirn {

namespace {

double axisOf(const QDomElement& element, const char* axis)
{
    return element.attribute(axis, "-1").toDouble();
}

/// True when the session has a scale, which then stands.
bool takeSessionScale(VoxelArray& array, const QDomElement& session)
{
    const QDomElement scale = session.firstChildElement("scale");
    const AxisScale stated = {axisOf(scale, "x"), axisOf(scale, "y"), axisOf(scale, "z")};
    array.preserveScaleRatio = scale.attribute("preserve", "0").toInt() != 0;
    const QDomElement dimensions = session.firstChildElement("dimensions");
    for (const char* axis : {"x", "y", "z"}) {
        // All three land in the X dimension, so that the last one given counts: sessions have always been
        // read this way.
        if (const double size = axisOf(dimensions, axis); size > 0)
            array.stack().dimX = size;
    }
    if (!(stated.x > 0) || !(stated.y > 0) || !(stated.z > 0))
        return false;
    array.scale = stated;
    return true;
}

template <class Entry>
bool hasOneEachChannel(const std::vector<Entry>& entries, const VoxelArray& array)
{
    return !entries.empty() && entries.size() == array.channels().size();
}

ChannelState stateOf(int number)
{
    const bool known = number >= 0 && number <= static_cast<int>(ChannelState::PaletteSwap);
    return known ? static_cast<ChannelState>(number) : ChannelState::Shown;
}

void takeCrop(VoxelArray& array, const CropLimits& crop)
{
    struct Row
    {
        int limit;
        int size;
        int& target;
    };
    CutBox& cut = array.cut;
    const Row rows[] = {{crop.xMin, array.width(), cut.xMin},      {crop.xMax, array.width(), cut.xMax},
                        {crop.yMin, array.height(), cut.yMin},     {crop.yMax, array.height(), cut.yMax},
                        {crop.zMin, array.finalDepth(), cut.zMin}, {crop.zMax, array.finalDepth(), cut.zMax}};
    if (std::any_of(std::begin(rows), std::end(rows), [](const Row& row) { return row.limit < 0; }))
        return;
    for (const Row& row : rows) {
        if (row.limit < row.size)
            row.target = row.limit;
    }
}

void takeCurves(VoxelArray& array, const std::vector<ZCurve>& curves)
{
    // A curve that ends before the stack does has nothing to say about the rest.
    const bool fits = hasOneEachChannel(curves, array) &&
                      std::all_of(curves.begin(), curves.end(),
                                  [&](const ZCurve& curve) { return curve.size() >= array.depth(); });
    if (!fits) {
        array.resetCurves();
        return;
    }
    for (std::size_t c = 0; c < curves.size(); ++c)
        array.channels()[c].zCurve = curves[c];
}

int namedPalette(const NamedLoad& named, int channel, int palettes)
{
    const auto index = static_cast<std::size_t>(channel);
    if (index < named.paletteIds.size() && named.paletteIds[index] >= 0 && named.paletteIds[index] < palettes)
        return named.paletteIds[index];
    return (named.firstPalette + channel) % std::max(1, palettes);
}

} // namespace

void applyDimensions(VoxelArray& array, const LoadDescription& description)
{
    ImageAttributes& stack = array.stack();
    if (description.dimX > 0 && description.dimY > 0 && description.dimZ > 0) {
        stack.dimX = description.dimX;
        stack.dimY = description.dimY;
        stack.dimZ = description.dimZ;
    }
    const bool isSession = description.session.tagName() == "stack";
    if (!isSession || !takeSessionScale(array, description.session))
        array.scale = scaleOfVoxels(stack.dimX, stack.dimY, stack.dimZ, description.step);
    array.baseScale = array.scale;
}

PaletteList assignPalettes(VoxelArray& array, const LoadDescription& description,
                           const LoadSurroundings& surroundings)
{
    std::vector<Channel>& channels = array.channels();
    if (description.named) {
        for (std::size_t c = 0; c < channels.size(); ++c)
            channels[c].display.palette =
                namedPalette(*description.named, static_cast<int>(c), surroundings.paletteCount);
        return {};
    }
    if (hasOneEachChannel(description.paletteIndexes, array)) {
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const int index = description.paletteIndexes[c];
            const bool there = index >= 0 && index < surroundings.paletteCount;
            channels[c].display.palette = there ? index : 0;
        }
        return {};
    }
    PaletteList appended = missingPalettes(surroundings.paletteCount, array.channelCount(),
                                           surroundings.paletteGeneration, surroundings.paletteTables);
    const std::size_t count = static_cast<std::size_t>(surroundings.paletteCount) + appended.size();
    for (std::size_t c = 0; c < channels.size(); ++c)
        channels[c].display.palette = c < count ? static_cast<int>(c) : 0;
    return appended;
}

void applySessionExtras(VoxelArray& array, const LoadDescription& description)
{
    if (!description.labels.isEmpty())
        array.timeLabels() = description.labels;
    std::vector<Channel>& channels = array.channels();
    if (hasOneEachChannel(description.channelStates, array)) {
        for (std::size_t c = 0; c < channels.size(); ++c)
            channels[c].display.state = stateOf(description.channelStates[c]);
    }
    takeCrop(array, description.crop);
    takeCurves(array, description.zCurves);
}

} // namespace tirn
