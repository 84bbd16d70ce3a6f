#pragma once

#include <vector>

#include "formats/tiff/tiffifdio.h"

namespace tirn {

/// Olympus OIF: a text file, and beside it a directory with a TIFF file for each channel and layer.
class OlympusIO : public TiffIFDIO
{
public:
    /// The name of the text file; the TIFF files take its place.
    OlympusIO(ImageFile& owner, const QStringList& names);

    static bool isOlympus(const QString& name);

    ImageAttributes readAttributes() override;
    /// Layer `last` itself is not read: its place is zero. Multiplies the owner's dimZ by `step`, again at
    /// each read.
    bool readLayers(int first, int last, int step) override;

private:
    struct Plane;
    bool listPlanes(int first, int step, int layers, std::int64_t planeBytes, std::vector<Plane>& planes);
    bool readPlanes(std::vector<Plane>& planes, int layers, int count, std::int64_t bytes);
    bool readPlane(Plane& plane, std::byte* buffer) const;

    QString m_textName;
};

} // namespace tirn
