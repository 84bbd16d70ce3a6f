#pragma once

#include "image/imagefile.h"

namespace tirn {

/// The largest and the smallest sample of a window that reaches from h voxels below to h - 1 above on each
/// axis and is cut at the edges; without voxels in the window 0, or the largest that a sample holds.
bool maxFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});
bool minFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});

} // namespace tirn
