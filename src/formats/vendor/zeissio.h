#pragma once

#include <vector>

#include "formats/tiff/tiffifdio.h"
#include "formats/vendor/lsminfo.h"

namespace tirn {

/// Zeiss LSM: a little-endian TIFF with the image and a thumbnail of each layer in directories of their own,
/// the channels of a layer in strips of their own, and a binary record that says what the stack is.
class ZeissIO : public TiffIFDIO
{
public:
    /// All files are parsed, the last one's record counts, and the first one's voxels are read.
    ZeissIO(ImageFile& owner, const QStringList& names);

    /// True for a name ending in ".lsm" (in lower case) with a little-endian TIFF header.
    static bool isZeiss(const QString& name);

    ImageAttributes readAttributes() override;
    /// The owner's dimZ is not scaled by `step`.
    bool readLayers(int first, int last, int step) override;

    /// A test aid: each channel as raw bytes in "test%2d.raw" of the current directory.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);

private:
    bool parseFile(int index);
    bool describe(ImageAttributes& record) const;
    bool takeDataType(ImageAttributes& record) const;
    bool fillStrips(WindowedFile& window, std::vector<const IFD*>& images);
    bool planLayers(const std::vector<const IFD*>& images, int first, int step, int count,
                    std::vector<std::vector<SegmentPlan>>& layers);

    bool readPlanned(const std::vector<std::vector<SegmentPlan>>& layers, std::int64_t channelBytes);

    LsmInfo m_lsmInfo;
};

} // namespace tirn
