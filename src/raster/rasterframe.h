#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/colourlookup.h"
#include "raster/sliceset.h"

namespace tirn {

/// What is drawn of a slice, in texels of its plane with whole numbers at texel centres: u0 <= u < u1 and
/// v0 <= v < v1.
struct TexelArea
{
    double u0 = 0;
    double u1 = 0;
    double v0 = 0;
    double v1 = 0;
};

/// Between which texels a plane has values: positions are brought into this range, so that its edge texels
/// reach on outward. -1 and the size stand for the zeros around it.
struct TexelClamp
{
    int u0 = 0;
    int u1 = 0;
    int v0 = 0;
    int v1 = 0;
};

/// One slice. It shows a plane, or what lies between two; -1 is a plane of zeros.
struct RasterSlice
{
    int plane = 0;
    int nextPlane = 0;
    /// The share of the next plane, 0 to 1.
    double share = 0;
    /// The place (x, y, 1) of a picture, pixel centres at halves, times this matrix (row by row) is
    /// (U, V, W): the texel is (U / W, V / W), and W is 1 / the distance from the viewer.
    std::array<double, 9> toTexel = {};
    TexelArea area;
    /// Where texel (0, 0) lies on the depth curves, in their texels.
    double curveBase = 0;
};

/// How the samples of one channel become colours.
struct RasterChannel
{
    const SliceSet* slices = nullptr;
    const ColourLookup* colours = nullptr;
    /// What a sample is multiplied by, to lie between 0 and 1.
    double unit = 1.0 / 255;
    /// What stretches it then, up to 1.
    double stretch = 1;
    /// Multipliers that are looked up by depth, before the stretch, and what they are multiplied by; empty
    /// for none.
    std::span<const float> curve;
    double curveFactor = 1;
};

enum class RasterBlend { Alpha, Maximum };

/// All that a layer is made from.
struct RasterFrame
{
    /// The part of the picture that is wanted, in pixels from its lower left.
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    RasterBlend blend = RasterBlend::Alpha;
    /// Far ones first. Their planes are cut across one axis.
    std::vector<RasterSlice> slices;
    /// In the order in which those of one slice are drawn.
    std::vector<RasterChannel> channels;
    TexelClamp clamp;
    /// W is not 1 everywhere; nothing is seen where it is above `mostW` or not above 0.
    bool isProjective = false;
    double mostW = 1;
    /// What a texel along u and along v moves on the depth curves.
    double curveU = 0;
    double curveV = 0;
};

/// A rectangle of a picture, rows from the bottom: four words R, G, B, A a pixel, 0 to 65535. Blending by
/// alpha multiplies colours by their opacity; a maximum does not.
struct RasterLayer
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> rgba;

    bool isEmpty() const { return width == 0 || height == 0; }
};

} // namespace tirn
