#include "volume/slicestore.h"

#include <algorithm>
#include <new>

#ifdef __linux__
#include <unistd.h>
#endif

#include "base/log.h"

namespace tirn {

namespace {

std::size_t quarterOfMemory()
{
#ifdef __linux__
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long size = sysconf(_SC_PAGESIZE);
    if (pages > 0 && size > 0)
        return static_cast<std::size_t>(pages) / 4 * static_cast<std::size_t>(size);
#endif
    return std::size_t{1} << 30;
}

} // namespace

SliceStore::SliceStore() : SliceStore(quarterOfMemory()) {}

SliceStore::Slices SliceStore::slices(const VoxelArray& array, int channel, int timePoint, int axis)
{
    const ChannelImage from = array.imageOf(channel, timePoint);
    if (from.image == nullptr)
        return nullptr;
    const Key key{array.id(), from.number, from.channel, axis};
    // Before the voxels are read: what changes afterwards has another one.
    const std::int64_t revision = array.imageRevision(from.number);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const Entry& entry) { return entry.key == key; });
    if (found != m_entries.end()) {
        if (found->revision == revision) {
            found->lastUse = ++m_uses;
            return found->slices;
        }
        m_entries.erase(found);
    }
    Slices made = make(array, from, axis);
    if (made != nullptr) {
        m_entries.push_back({key, revision, ++m_uses, made});
        letGoBeyondLimit();
    }
    return made;
}

SliceStore::Slices SliceStore::make(const VoxelArray& array, const ChannelImage& from, int axis)
{
    Slices slices;
    const auto read = [&](const ImageFile& image) {
        const ImageAttributes& size = image.attributes();
        if (size.x != array.width() || size.y != array.height() || size.z != array.depth() ||
            size.bitDepth != array.bitsPerSample())
            return;
        slices = std::make_shared<const SliceSet>(VoxelSource{image.stackData(),
                                                              size.bitDepth > 8 ? 2 : 1,
                                                              size.channels,
                                                              from.channel,
                                                              {size.x, size.y, size.z}},
                                                  axis);
    };
    for (const bool isLast : {false, true}) {
        try {
            if (array.readVoxels(from.number, read) && slices != nullptr)
                ++m_made;
            return slices;
        } catch (const std::bad_alloc&) {
            if (isLast)
                logWarning("There is not enough memory to draw a volume on the processor.");
            m_entries.clear();
        }
    }
    return nullptr;
}

void SliceStore::keepOnly(const std::vector<StackId>& stacks)
{
    std::erase_if(m_entries, [&](const Entry& entry) {
        return std::count(stacks.begin(), stacks.end(), entry.key.stack) == 0;
    });
}

std::size_t SliceStore::memoryUsed() const
{
    std::size_t sum = 0;
    for (const Entry& entry : m_entries)
        sum += entry.slices->memoryUsed();
    return sum;
}

void SliceStore::letGoBeyondLimit()
{
    std::size_t used = memoryUsed();
    std::sort(m_entries.begin(), m_entries.end(),
              [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
    while (used > m_limit && m_entries.size() > 1) {
        used -= m_entries.front().slices->memoryUsed();
        m_entries.erase(m_entries.begin());
    }
}

} // namespace tirn
