#include "ui/stacks/managertexts.h"

#include <algorithm>

namespace tirn {

namespace {

constexpr int kShownCharacters = 30;

} // namespace

QString fileNameText(const VoxelArray& array) { return array.name().left(kShownCharacters); }

QString fileTypeText(const VoxelArray& array)
{
    return imageTypeRowName(array.stack().type) + array.stack().depthText();
}

QString stackSizeText(const VoxelArray& array)
{
    const int factor = std::max(1, array.subsample);
    const int layers = array.images().empty() ? array.depth() : array.images().front()->attributes().fileZ;
    QString text = QString::asprintf("x: %d y: %d \nz: %d-%d of %d", array.width() * factor,
                                     array.height() * factor, array.sliceFirst, array.sliceLast, layers);
    if (array.sliceStep > 1)
        text += QString::asprintf(" step %d", array.sliceStep);
    if (factor > 1)
        text += QString::asprintf(" subsampled %dx", factor);
    return text;
}

QString voxelSizeText(const ImageAttributes& stack)
{
    if (!(stack.dimX > 0) || !(stack.dimY > 0))
        return {};
    QString text =
        QString::asprintf("x: %.4f", stack.dimX) + "µm y: " + QString::asprintf("%.4f", stack.dimY) + "µm";
    if (stack.dimZ > 0)
        text += " z: " + QString::asprintf("%.4f", stack.dimZ) + "µm";
    return text;
}

QString detailsText(const VoxelArray& array)
{
    return "time points: " + QString::number(array.timePointCount()) +
           " channels: " + QString::number(array.channelCount());
}

} // namespace tirn
