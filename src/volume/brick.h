#pragma once

#include <array>

#include "gl/glnames.h"

namespace tirn {

/// One texture block of a volume, by its corner in drawing units. Nothing fills its names today.
struct Brick
{
    Brick(int bx, int by, int bz, int xBlocks, int yBlocks, int zBlocks);
    ~Brick();
    Brick(const Brick&) = delete;
    Brick& operator=(const Brick&) = delete;

    std::array<float, 3> corner;
    TextureNames textures;
    ListNames lists;
};

} // namespace tirn
