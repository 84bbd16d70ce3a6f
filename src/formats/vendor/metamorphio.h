#pragma once

#include "formats/tiff/tiffifdio.h"

namespace tirn {

/// MetaMorph STK: a little-endian TIFF with one directory, whose planes follow one another behind the strips
/// of the first, their number and voxel size in private tags.
class MetaMorphIO : public TiffIFDIO
{
public:
    /// Only the first name counts.
    MetaMorphIO(ImageFile& owner, const QStringList& names);

    /// True for a name ending in ".stk" (in lower case) whose first directory has the planes' tag.
    static bool isMetaMorph(const QString& name);

    ImageAttributes readAttributes() override;
    bool isMyType() override;
    /// Strips that cannot be read leave a text and zeros, and the result stays true. Multiplies the owner's
    /// dimZ by `step`, again at each read.
    bool readLayers(int first, int last, int step) override;

    /// One strip a row. With a step of 1 all layers of the stack are written, whatever first and last say.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);

private:
    bool readDirectory(ImageAttributes& record);
    bool describe(ImageAttributes& record);
    bool readPlaneDistance(WindowedFile& window, ImageAttributes& record);
    bool readCalibration(WindowedFile& window, ImageAttributes& record);
    bool rangeInvalid(int first, int last) const;
    bool readPlanes(int first, int step, int count, std::int64_t bytes);

    IFD m_directory;
};

} // namespace tirn
