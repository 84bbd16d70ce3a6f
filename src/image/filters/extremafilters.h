#pragma once

#include "image/imagefile.h"

namespace tirn {

// All filters of this room: `channel` -1 means all. They return false, and leave the stack as it was, when
// there is no stack or the work was cancelled; without room they throw AllocationError. `size` is that of a
// window, h = size / 2; `is3D` extends it along z.

/// The largest and the smallest sample of a window that reaches from h voxels below to h - 1 above on each
/// axis and is cut at the edges; without voxels in the window 0, or the largest that a sample holds.
bool maxFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});
bool minFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});

} // namespace tirn
