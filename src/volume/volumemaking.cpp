#include "volume/volumemaking.h"

#include <algorithm>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

bool completeVolume(VoxelArray& array, const VolumeLayout& layout, const Progress& progress)
{
    const ImageFile& first = *array.images().front();
    array.stack() = first.attributes();
    array.setChannelCount(layout.channels);
    array.setTimePoints(layout.timePoints);
    array.sliceFirst = first.firstLayer();
    array.sliceLast = first.lastLayer();
    array.sliceStep = first.layerStep();
    const auto count = static_cast<int>(array.images().size());
    for (int i = 0; i < count; ++i) {
        const Progress ofImage = {[&progress, i, count](const QString& message, int done, int total) {
                                      progress(message, (i * 100 + done) / count, total);
                                  },
                                  progress.cancel};
        if (progress.cancelled() || !array.encode(layout.target, layout.finalZ, ofImage))
            return false;
    }
    array.resetCurves();
    array.scale = scaleOfVoxels(array.stack().dimX, array.stack().dimY, array.stack().dimZ, array.sliceStep);
    array.baseScale = array.scale;
    // The volume is complete before another context draws it.
    gl().Finish();
    return !progress.cancelled();
}

AxisScale scaleOfVoxels(double dimX, double dimY, double dimZ, int step)
{
    // Written so that a voxel size that is no number counts as unknown.
    if (!(dimX > 0) || !(dimY > 0) || !(dimZ > 0))
        return {};
    const double largest = std::max({dimX, dimY, dimZ});
    logDebug("dimZ %f DIM %f step %d", dimZ, largest, step);
    return {dimX / largest, dimY / largest, dimZ / largest * std::max(1, step)};
}

} // namespace tirn
