#pragma once

#include "formats/tiff/tiffifdio.h"

namespace tirn {

/// One TIFF file a layer. Reads either byte order, writes little-endian.
class TiffSeriesIO : public TiffIFDIO
{
public:
    TiffSeriesIO(ImageFile& owner, const QStringList& names);

    /// True for any TIFF; those with several directories are for others to claim first.
    static bool isTiffSeries(const QString& name);

    ImageAttributes readAttributes() override;
    /// Layer i is file i. Multiplies the owner's dimZ by `step`, again at each read.
    bool readLayers(int first, int last, int step) override;
    bool readAll() override;

    /// Strips of up to 64 KB. One name for several layers is a pattern, to which "_zNNNN.tif" is added. Only
    /// an existing first file and a row above 64 KB are reported: other failures are logged and count as
    /// success.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);
    /// The name with the ending of the format, or one for each of several layers.
    static QStringList writtenFiles(const QString& name, int layers);

private:
    bool readHeaders(ImageAttributes& record);
    bool describe(ImageAttributes& record);
    int firstDepth(const IFD& page);
};

/// Reads the first directory of an open TIFF file, in its own byte order, and a second one where there is
/// one; false when it is no TIFF. `order` takes the byte order.
bool readTiffDirectories(QFile& file, std::vector<IFD>& pages, ByteOrder& order);

} // namespace tirn
