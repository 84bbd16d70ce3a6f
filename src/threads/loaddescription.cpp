#include "threads/loaddescription.h"

namespace tirn {

LoadDescription::LoadDescription(int defaultEncode) : m_defaultEncode(defaultEncode) { useDefaultTarget(); }

void LoadDescription::useDefaultTarget()
{
    if (m_defaultEncode == 0)
        textureTarget = GL_TEXTURE_2D;
    else if (m_defaultEncode == 1)
        textureTarget = GL_TEXTURE_3D;
}

void LoadDescription::setWholeStack(bool isPartial)
{
    partial = isPartial;
    if (partial)
        return;
    first = 0;
    last = 0;
    step = 1;
    subsample = 0;
    reslice = false;
    conserveMemory = false;
    useDefaultTarget();
}

void LoadDescription::setRange(int firstLayer, int lastLayer, int layerStep, int subsampling, GLenum target,
                               bool forceReslice, int resliceSlices, bool conserve)
{
    partial = true;
    first = firstLayer;
    last = lastLayer;
    step = layerStep;
    subsample = subsampling;
    textureTarget = target;
    reslice = forceReslice;
    resliceZ = resliceSlices;
    conserveMemory = conserve;
}

void LoadDescription::setRaw(std::int64_t headerOffset, int x, int y, int z, int channelCount, int bitDepth)
{
    raw = true;
    rawLayout = {headerOffset, x, y, z, bitDepth, rawLayout.swapBytes};
    channels = channelCount;
}

void LoadDescription::setVoxelDimensions(double x, double y, double z)
{
    const bool known = x >= 0 && y >= 0 && z >= 0;
    dimX = known ? x : -1;
    dimY = known ? y : -1;
    dimZ = known ? z : -1;
}

void LoadDescription::setCrop(const CropLimits& limits)
{
    const bool known = limits.xMin >= 0 && limits.xMax >= 0 && limits.yMin >= 0 && limits.yMax >= 0 &&
                       limits.zMin >= 0 && limits.zMax >= 0;
    crop = known ? limits : CropLimits();
}

} // namespace tirn
