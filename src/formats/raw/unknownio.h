#pragma once

#include "formats/imageio.h"

namespace tirn {

/// Headerless voxels in one file; the caller says what they are.
class UnknownIO : public ImageIO
{
public:
    /// Sets the owner's file sizes, channels and depth; its type stays unknown. `swapBytes` turns the bytes
    /// of each 16-bit word round.
    UnknownIO(ImageFile& owner, const QStringList& names, std::int64_t headerOffset, int x, int y, int z,
              int channels, int bitDepth, bool swapBytes = false);

    ImageAttributes readAttributes() override;
    /// True when the first file exists.
    bool isMyType() override;
    /// Reads as many layers as first, last and step give, from the first one of the file on.
    bool readLayers(int first, int last, int step) override;

    /// Writes x * y * z * bitDepth / 8 bytes of the first name's file, whatever the channels are.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);

private:
    std::int64_t m_headerOffset;
    bool m_swapBytes;
};

} // namespace tirn
