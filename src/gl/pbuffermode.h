#pragma once

#include <vector>

#include <QByteArray>

namespace tirn {

/// Attribute names and values of off-screen pixel formats, as the public registry of WGL extensions numbers
/// them.
namespace wgl {
constexpr int kSupportOpenGl = 0x2010;
constexpr int kDoubleBuffer = 0x2011;
constexpr int kPixelType = 0x2013;
constexpr int kRedBits = 0x2015;
constexpr int kGreenBits = 0x2017;
constexpr int kBlueBits = 0x2019;
constexpr int kAlphaBits = 0x201B;
constexpr int kDepthBits = 0x2022;
constexpr int kStencilBits = 0x2023;
constexpr int kAuxBuffers = 0x2024;
constexpr int kTypeRgba = 0x202B;
constexpr int kDrawToPbuffer = 0x202D;
constexpr int kSampleBuffers = 0x2041;
constexpr int kSamples = 0x2042;
constexpr int kBindToTextureRgb = 0x2070;
constexpr int kBindToTextureRgba = 0x2071;
constexpr int kTextureFormat = 0x2072;
constexpr int kTextureTarget = 0x2073;
constexpr int kMipmapTexture = 0x2074;
constexpr int kTextureRgb = 0x2075;
constexpr int kTextureRgba = 0x2076;
constexpr int kTextureCubeMap = 0x2078;
constexpr int kTexture2D = 0x207A;
constexpr int kTextureRectangle = 0x20A2;
constexpr int kBindToTextureDepth = 0x20A3;
constexpr int kDepthTextureFormat = 0x20A5;
constexpr int kTextureDepthComponent = 0x20A6;
constexpr int kFloatComponents = 0x20B0;
constexpr int kBindToTextureFloatR = 0x20B1;
constexpr int kTextureFloatR = 0x20B5;
constexpr int kTypeRgbaFloat = 0x21A0;
} // namespace wgl

/// What a mode string asks of an off-screen buffer.
struct PBufferMode
{
    /// Pairs of attribute and value, of the pixel format and of the buffer; both end with 0, 0.
    std::vector<int> pfAttribs;
    std::vector<int> pbAttribs;
    bool isTexture = false;
    /// One of the texture targets above, 0 without a texture.
    int textureTarget = 0;
    /// 0 for a mode that was not parsed.
    int components = 0;
    int bitsPerComponent = 0;
    int samples = 0;
};

/// Reads a mode such as "rgba depth=24 double": words parted by blanks, with an optional number behind "=".
/// Null and empty modes are not read. Mistakes are logged, and the rest is read on.
PBufferMode parsePBufferMode(const QByteArray& mode);

} // namespace tirn
