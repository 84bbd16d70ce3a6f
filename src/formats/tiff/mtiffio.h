#pragma once

#include "formats/tiff/tiffifdio.h"

namespace tirn {

/// TIFF with many pages in one file, one page a layer. Reads either byte order, writes little-endian.
class MTiffIO : public TiffIFDIO
{
public:
    /// Only the first name counts.
    MTiffIO(ImageFile& owner, const QStringList& names);

    /// True for any TIFF with at least two directories.
    static bool isMTiff(const QString& name);

    ImageAttributes readAttributes() override;
    bool isMyType() override;
    /// Multiplies the owner's dimZ by `step`, again at each read.
    bool readLayers(int first, int last, int step) override;

    /// One strip a row, the tables of each page behind its directory, all voxels at the end. A byte stack
    /// with one channel, and any stack with two, states a depth of 0 and does not read back.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);

private:
    bool readPages(ImageAttributes& record);
    bool fits(const IFD& page);
    bool readPlanned(const SegmentPlan& plan, const std::vector<const IFD*>& layers);
};

} // namespace tirn
