#include "threads/loadfinish.h"

#include <algorithm>

#include "base/log.h"
#include "volume/draworder.h"
#include "volume/volumemaking.h"

namespace tirn {

namespace {

/// An old session has the size of x for all axes: where it is the file's own, it says nothing of the others.
bool isSizeOfXAlone(const std::array<double, 3>& size, const ImageAttributes& stack)
{
    return size[0] == size[1] && size[0] == size[2] && size[0] == stack.dimX;
}

/// True when the session has a scale, which then stands.
bool takeSessionSizes(VoxelArray& array, const SessionSizes& sizes, bool isOld)
{
    array.preserveScaleRatio = sizes.preserveScaleRatio;
    ImageAttributes& stack = array.stack();
    if (!isOld || !isSizeOfXAlone(sizes.voxelSize, stack)) {
        double* const own[] = {&stack.dimX, &stack.dimY, &stack.dimZ};
        for (std::size_t axis = 0; axis < sizes.voxelSize.size(); ++axis) {
            if (sizes.voxelSize[axis] > 0)
                *own[axis] = sizes.voxelSize[axis];
        }
    }
    const AxisScale stated = {sizes.scale[0], sizes.scale[1], sizes.scale[2]};
    if (!(stated.x > 0) || !(stated.y > 0) || !(stated.z > 0))
        return false;
    array.scale = clampedScale(stated);
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
    cut = boundedCut(cut, array);
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
    for (std::size_t c = 0; c < curves.size(); ++c) {
        const std::vector<double>& all = *curves[c].curve();
        array.channels()[c].zCurve =
            ZCurve(std::make_shared<std::vector<double>>(all.begin(), all.begin() + array.depth()));
    }
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
    if (!description.sessionSizes ||
        !takeSessionSizes(array, *description.sessionSizes, description.isOldSession))
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
        const auto thereOrFirst = [&surroundings](int index) {
            return index >= 0 && index < surroundings.paletteCount ? index : 0;
        };
        const bool hasSecond = hasOneEachChannel(description.secondPaletteIndexes, array);
        for (std::size_t c = 0; c < channels.size(); ++c) {
            choosePalette(channels[c].display, thereOrFirst(description.paletteIndexes[c]));
            if (hasSecond)
                chooseSecondPalette(channels[c].display, thereOrFirst(description.secondPaletteIndexes[c]));
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
    const auto labels = std::min(description.labels.size(), array.timeLabels().size());
    for (int t = 0; t < labels; ++t)
        array.timeLabels()[t] = description.labels[t];
    std::vector<Channel>& channels = array.channels();
    if (hasOneEachChannel(description.channelStates, array)) {
        for (std::size_t c = 0; c < channels.size(); ++c)
            channels[c].display.state = stateOf(description.channelStates[c]);
    }
    takeCrop(array, description.crop);
    takeCurves(array, description.zCurves);
}

} // namespace tirn
