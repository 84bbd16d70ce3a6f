#pragma once

#include "formats/imageio.h"

namespace tirn {

/// The text that describes a Leica experiment. Its attributes are read and nothing else: the stack has sizes
/// and no voxels.
class LeicaIO : public ImageIO
{
public:
    LeicaIO(ImageFile& owner, const QStringList& names);

    /// True for a first line that names the maker, and for the mark of the binary form.
    static bool isLeica(const QString& name);

    ImageAttributes readAttributes() override;
    /// True, with nothing read.
    bool readLayers(int first, int last, int step) override;
};

} // namespace tirn
