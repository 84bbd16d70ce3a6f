#pragma once

#include "formats/imageio.h"

namespace tirn {

/// DeltaVision: a header of 1024 bytes in the style of MRC, an extended header, and the sections, all
/// big-endian.
class IMSubs : public ImageIO
{
public:
    /// Only the first name counts.
    IMSubs(ImageFile& owner, const QStringList& names);

    /// True where the header's sizes and mode make sense in big-endian order.
    static bool isDeltaVision(const QString& name);

    ImageAttributes readAttributes() override;
    /// Reads as many layers as first, last and step give, from the first one of the file on, the wavelengths
    /// of a section one after the other. Multiplies the owner's dimZ by `step`, again at each read.
    bool readLayers(int first, int last, int step) override;

private:
    bool readSections(int count);

    std::int64_t m_dataOffset = 0;
};

} // namespace tirn
