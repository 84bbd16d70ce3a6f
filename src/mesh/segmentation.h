#pragma once

namespace tirn {

/// A surface drawn inside the volume.
struct Segmentation
{
    /// The display list that draws it, 0 while there is none.
    unsigned displayList = 0;
};

} // namespace tirn
