#pragma once

#include <memory>
#include <vector>

#include "formats/imageio.h"

namespace tirn {

/// The reader of a stack that was merged from single-channel stacks: it holds one reader a channel, so that
/// reading again merges again.
class MergedIO : public ImageIO
{
public:
    /// The files of each channel, probed anew. Throws std::bad_alloc when one of them has no reader or is not
    /// of the given type.
    MergedIO(ImageFile& owner, ImageType type, const std::vector<QStringList>& channelFiles);
    ~MergedIO() override;

    /// Those of the first channel's files, with as many channels as there are readers.
    ImageAttributes readAttributes() override;
    bool readLayers(int first, int last, int step) override;

private:
    std::vector<std::unique_ptr<ImageFile>> m_channels;
};

} // namespace tirn
