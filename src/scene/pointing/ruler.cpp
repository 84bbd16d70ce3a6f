#include "scene/pointing/ruler.h"

namespace tirn {

Ruler withEnd(Ruler ruler, StackId stack, const VoxelPlace& end)
{
    if (ruler.stack != stack || ruler.ends.size() > 1)
        ruler = {stack, {}};
    ruler.ends.push_back(end);
    return ruler;
}

} // namespace tirn
