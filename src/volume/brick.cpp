#include "volume/brick.h"

#include "base/log.h"
#include "base/stopwatch.h"

namespace tirn {

Brick::Brick(int bx, int by, int bz, int xBlocks, int yBlocks, int zBlocks)
    : corner{static_cast<float>(bx * 1.0 / xBlocks - 1), static_cast<float>(by * 1.0 / yBlocks - 1),
             static_cast<float>(bz * 1.0 / zBlocks - 1)}
{}

Brick::~Brick()
{
    logDebug("Deleting Brick");
    Stopwatch timer;
    textures.clear();
    logDebug("deleted textures in %fms", timer.restart());
    lists.clear();
    logDebug("deleted quads in %fms", timer.restart());
}

} // namespace tirn
