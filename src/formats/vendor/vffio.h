#pragma once

#include "formats/imageio.h"

namespace tirn {

/// VFF: a text header of "key=value;" lines, and the voxels as the last bytes of the file, words big-endian
/// and signed.
class VffIO : public ImageIO
{
public:
    VffIO(ImageFile& owner, const QStringList& names);

    static bool isVff(const QString& name);

    ImageAttributes readAttributes() override;
    /// The layers keep their places in the file: the buffer is that of all layers, zero where none was read.
    /// Words are moved up so that the least becomes 0. Multiplies the owner's dimZ by `step`, again at each
    /// read.
    bool readLayers(int first, int last, int step) override;

private:
    bool readPlaces(int first, int last, int step, std::int64_t sliceBytes);
};

} // namespace tirn
