#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/bytereader.h"
#include "formats/files/segmentread.h"
#include "formats/files/windowedfile.h"
#include "formats/imageio.h"
#include "formats/tiff/ifd.h"

namespace tirn {

/// What the TIFF-based formats share: the directories of each file and page, and where a page's voxels lie.
/// All data count as uncompressed.
class TiffIFDIO : public ImageIO
{
public:
    /// For each file the directories of its pages.
    const std::vector<std::vector<IFD>>& directories() const { return m_stkIFD; }
    bool littleEndian() const { return m_littleEndian; }

    /// Why data of a compression cannot be read; empty for 1, no compression.
    static QString compressionRefusal(std::uint32_t value);
    /// True for 1, no compression; appends a text to the owner's `errorList` for anything else.
    bool compressionSupported(std::uint32_t value);
    /// Fetches the values of an entry that holds more than one. False where there is nothing to fetch.
    bool fillEntry(WindowedFile& file, IFDEntry& entry) const;

    /// Numbers in the byte order of the file at hand.
    std::uint16_t getShort(const std::byte* bytes) const;
    std::uint32_t getLong(const std::byte* bytes) const;
    /// Numerator over denominator in integer division; 0 for a denominator of 0.
    double getRational(const std::byte* bytes) const;

    /// Logs the files and their pages, with each entry when `level` is above 0.
    void printIFD(int level) const;

    /// A continued fraction: numerator and denominator within 16 bits.
    static std::pair<std::uint32_t, std::uint32_t> toRational(double value);

protected:
    TiffIFDIO(ImageFile& owner, const QStringList& names);

    ByteOrder order() const { return m_littleEndian ? ByteOrder::Little : ByteOrder::Big; }
    void setOrder(ByteOrder order) { m_littleEndian = order == ByteOrder::Little; }

    /// False, with a text, for a file of which not all directories are walked.
    bool failForDirectories();
    /// False, with a text, for sample depths that are not read: only 8 to 16 bits are.
    bool depthSupported();
    /// False, with a text, for a page without strips (a tiled one, for instance).
    bool hasStrips(const IFD& page);
    /// True for a page whose channels lie in planes of their own, one behind the other.
    static bool isPlanar(const IFD& page, int channels);
    /// hasStrips for a page of the owner's stack; false, with a text, where its planes share strips, too.
    bool hasLayerStrips(const IFD& page);
    /// Appends a page's strips to the plan, one after the other; those of a planar page begin a plane each. A
    /// strip without a byte count is as long as the one before, the first as long as a layer or a plane.
    static void appendStrips(const IFD& page, std::int64_t layerBytes, int channels, SegmentPlan& plan);
    /// Interleaves the channels of a layer that was read from a planar page; another one stays as it is.
    void interleavePlanes(const IFD& page, std::byte* layer, std::int64_t layerBytes) const;
    /// Reports a stack of which the files hold only `held` of `wanted` bytes. True when it may be read all
    /// the same, zeros standing for what is missing; false where the memory for it is not justified, and for
    /// depths of 9 to 15 bits, which are packed then.
    bool earlyEnd(std::int64_t held, std::int64_t wanted, int completeLayers, int layers);
    /// Sizes of a file as the attributes hold them: -1 for what a signed number cannot hold.
    static int toSize(std::uint32_t value);
    /// Takes tags 281 and 306 over where they are.
    static void takeMaximumAndTime(const IFD& page, ImageAttributes& record);

    std::vector<std::vector<IFD>> m_stkIFD;

private:
    bool m_littleEndian = true;
};

} // namespace tirn
