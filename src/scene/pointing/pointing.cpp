#include "scene/pointing/pointing.h"

#include <cmath>

#include <QStringList>

#include "scene/scene.h"
#include "volume/cutslices.h"

namespace tirn {

namespace {

const QString kMicrons = QStringLiteral(" \u00b5m");

std::array<int, 3> numbersOf(const VoxelPlace& voxel) { return {voxel.x, voxel.y, voxel.z}; }

/// From one voxel to the next, in microns; nothing unless all three are known.
std::optional<std::array<double, 3>> voxelSteps(const VoxelArray& array)
{
    const ImageAttributes& stack = array.stack();
    // Written so that what is no number counts as unknown.
    if (!(stack.dimX > 0) || !(stack.dimY > 0) || !(stack.dimZ > 0))
        return std::nullopt;
    return std::array{stack.dimX, stack.dimY, stack.dimZ * std::max(1, array.sliceStep)};
}

bool hasVoxels(const VoxelArray& array)
{
    for (int c = 0; c < array.channelCount(); ++c) {
        const ChannelImage from = array.imageOf(c, array.timePoint());
        if (from.image == nullptr || !from.image->isLoaded())
            return false;
    }
    return array.channelCount() > 0;
}

std::vector<double> curveOf(const Scene& scene, const Channel& channel)
{
    const bool isCorrected =
        scene.view.zCorrection && scene.current()->textureTarget() == GL_TEXTURE_3D && channel.zCurve.curve();
    return isCorrected ? *channel.zCurve.curve() : std::vector<double>();
}

std::vector<SeenChannel> seenChannels(const Scene& scene)
{
    const VoxelArray& array = *scene.current();
    const int stretch =
        stretchExponent(array.bitsPerSample(), array.significantBits(), scene.view.autoBitDepth);
    std::vector<SeenChannel> seen;
    for (int c = 0; c < array.channelCount(); ++c) {
        const Channel& channel = array.channels()[static_cast<std::size_t>(c)];
        const auto palette = static_cast<std::size_t>(std::max(0, channel.display.palette));
        if (isHidden(channel.display.state) || palette >= scene.palettes.size())
            continue;
        const ChannelImage from = array.imageOf(c, array.timePoint());
        seen.push_back({from.image, from.channel, scene.palettes[palette]->rgbaBytes(), stretch,
                        curveOf(scene, channel)});
    }
    return seen;
}

std::vector<int> valuesOf(const VoxelArray& array, const VoxelPlace& voxel)
{
    std::vector<int> values;
    for (int c = 0; c < array.channelCount(); ++c) {
        const ChannelImage from = array.imageOf(c, array.timePoint());
        values.push_back(from.image->voxelValue(voxel.x, voxel.y, voxel.z, from.channel));
    }
    return values;
}

QString lengthText(double length) { return QString::asprintf(length < 10 ? "%.2f" : "%.1f", length); }

} // namespace

std::optional<PointedVoxel> pointAt(const Scene& scene, QPointF pixel, QSize size)
{
    const VoxelArray* array = scene.current();
    if (array == nullptr || scene.batchMode || !array->isComplete())
        return std::nullopt;
    const auto projection = projectionAt(scene.view, scene.drawnScale(), size, pixel);
    if (!projection)
        return std::nullopt;
    SeenVolume volume{array->geometry(), array->textureTarget() == GL_TEXTURE_3D, projection->orientation(),
                      array->cut, scene.view.blendMode == GL_MAX};
    const bool isKnown = hasVoxels(*array);
    if (isKnown)
        volume.channels = seenChannels(scene);
    // Where no channel is shown, there is nothing to see.
    if (isKnown && volume.channels.empty())
        return std::nullopt;
    const auto [from, direction] = projection->sightLine(pixel);
    const auto voxel = seenVoxel(volume, {from.x, from.y, from.z}, {direction.x, direction.y, direction.z});
    if (!voxel)
        return std::nullopt;
    return PointedVoxel{*voxel, isKnown ? valuesOf(*array, *voxel) : std::vector<int>()};
}

QString pointedText(const VoxelArray& array, const PointedVoxel& pointed)
{
    const std::array<int, 3> numbers = numbersOf(pointed.voxel);
    const auto steps = voxelSteps(array);
    QStringList places;
    QStringList lengths;
    QStringList values;
    for (std::size_t i = 0; i < 3; ++i) {
        const FileAxis axis = fileAxisOf(array, static_cast<int>(i));
        const int number = axis.first + numbers[i] * axis.unit();
        places.append(QString("%1 %2").arg(QChar("xyz"[i])).arg(number));
        if (steps)
            lengths.append(lengthText(number * (*steps)[i] / axis.unit()));
    }
    for (const int value : pointed.values)
        values.append(QString::number(value));
    QString text = places.join(' ');
    if (!values.isEmpty())
        text += ": " + values.join(", ");
    if (steps)
        text += "  (" + lengths.join(", ") + kMicrons + ")";
    return text;
}

QString distanceText(const VoxelArray& array, const VoxelPlace& from, const VoxelPlace& to)
{
    const auto steps = voxelSteps(array);
    const auto known = steps.value_or(std::array<double, 3>{1, 1, 1});
    const double distance =
        std::hypot((to.x - from.x) * known[0], (to.y - from.y) * known[1], (to.z - from.z) * known[2]);
    return lengthText(distance) + (steps ? kMicrons : QString(" voxels"));
}

} // namespace tirn
