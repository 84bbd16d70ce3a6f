#pragma once

#include <QString>

namespace tirn {

/// What a stack is to be loaded with, as far as its size in memory depends on it.
struct MemoryQuestion
{
    /// Size of a layer in the file.
    int x = 0;
    int y = 0;
    int bitDepth = 8;
    int channels = 1;
    int timePoints = 1;
    int first = 0;
    int last = 0;
    int step = 1;
    int subsample = 1;
    /// 3D texture maps instead of 2D ones.
    bool uses3DTextures = false;
    /// The voxels are let go after encoding.
    bool conservesMemory = false;
};

/// Bytes of voxels and textures, a whole number.
double estimatedBytes(const MemoryQuestion& question);

/// "Memory required: " and the bytes as KB, MB or GB with two decimals.
QString memoryText(double bytes);
/// The same where nothing can be said.
QString unknownMemoryText();

} // namespace tirn
