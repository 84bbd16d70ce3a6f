#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "raster/sliceset.h"
#include "volume/voxelarray.h"

namespace tirn {

/// The planes that the processor draws, made of a channel, a time point and an axis when they are first asked
/// for, and anew when the voxels of their image are others. Those that were not used for longest are let go
/// when together they take more than a limit, or when memory runs out.
class SliceStore
{
public:
    using Slices = std::shared_ptr<const SliceSet>;

    /// A quarter of the machine's memory.
    SliceStore();
    explicit SliceStore(std::size_t limit) : m_limit(limit) {}

    /// Null while the voxels cannot be read, or where there is no room.
    Slices slices(const VoxelArray& array, int channel, int timePoint, int axis);
    /// Lets all planes of other volumes go.
    void keepOnly(const std::vector<StackId>& stacks);
    void clear() { m_entries.clear(); }

    std::size_t memoryUsed() const;
    /// How many sets were made so far.
    int made() const { return m_made; }

private:
    struct Key
    {
        StackId stack = StackId::None;
        int image = 0;
        int channel = 0;
        int axis = 0;

        bool operator==(const Key&) const = default;
    };
    struct Entry
    {
        Key key;
        std::int64_t revision = 0;
        std::int64_t lastUse = 0;
        Slices slices;
    };

    Slices make(const VoxelArray& array, const ChannelImage& from, int axis);
    void letGoBeyondLimit();

    std::size_t m_limit;
    std::vector<Entry> m_entries;
    std::int64_t m_uses = 0;
    int m_made = 0;
};

} // namespace tirn
