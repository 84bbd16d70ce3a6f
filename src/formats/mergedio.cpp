#include "formats/mergedio.h"

#include "base/checkedsize.h"
#include "image/allocationerror.h"
#include "image/imagefile.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

QStringList joined(const std::vector<QStringList>& lists)
{
    QStringList names;
    for (const QStringList& list : lists)
        names.append(list);
    return names;
}

} // namespace

MergedIO::MergedIO(ImageFile& owner, ImageType type, const std::vector<QStringList>& channelFiles)
    : ImageIO(owner, joined(channelFiles))
{
    for (const QStringList& names : channelFiles) {
        m_channels.push_back(std::make_unique<ImageFile>(names));
        const ImageFile& channel = *m_channels.back();
        if (!channel.hasReader() || channel.attributes().type != type)
            throw AllocationError("Could not allocate ImageIO object");
    }
    attributes() = MergedIO::readAttributes();
}

MergedIO::~MergedIO() = default;

ImageAttributes MergedIO::readAttributes()
{
    ImageAttributes record = m_channels.front()->attributes();
    record.channels = static_cast<int>(m_channels.size());
    return record;
}

bool MergedIO::readLayers(int first, int last, int step)
{
    releaseStack();
    for (const auto& channel : m_channels) {
        if (!channel->read(first, last, step)) {
            for (const QString& text : channel->errorList())
                fail(text);
            channel->errorList().clear();
            return false;
        }
    }
    ImageAttributes& stack = attributes();
    const ImageAttributes& part = m_channels.front()->attributes();
    std::vector<const std::byte*> buffers;
    for (const auto& channel : m_channels) {
        if (!(channel->attributes() == part))
            return fail(QStringLiteral("Files not compatible."));
        buffers.push_back(reinterpret_cast<const std::byte*>(channel->stackData()));
    }
    VoxelBuffer voxels =
        allocateVoxels(checkedProduct({part.x, part.y, part.z, stack.channels, part.bytesPerSample()}),
                       "Could not allocate memory for merged stack");
    mergeChannels(buffers, voxels.data(), part);
    setStack(std::move(voxels), part.x, part.y, part.z);
    stack.dimX = part.dimX;
    stack.dimY = part.dimY;
    stack.dimZ = part.dimZ;
    setLayerRange(first, last, step);
    for (const auto& channel : m_channels)
        channel->freeStack();
    return true;
}

} // namespace tirn
