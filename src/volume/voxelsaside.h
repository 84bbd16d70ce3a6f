#pragma once

#include <vector>

#include <QTemporaryFile>

#include "base/voxelbuffer.h"

namespace tirn {

/// Voxels put aside, to be had again in the opposite order. The last ones stay in memory; those before them
/// go to a file that has no name, or stay, too, where that cannot grow.
class VoxelsAside
{
public:
    VoxelsAside();
    /// The file lies in `directory`.
    explicit VoxelsAside(const QString& directory);

    void put(VoxelBuffer voxels);
    /// Throws std::bad_alloc without room. Null, too, when the file cannot be read.
    VoxelBuffer take();
    /// The last ones, too, as far as the file can grow.
    void moveAllToFile();
    bool isEmpty() const { return m_entries.empty(); }
    /// The bytes that the file holds.
    qint64 fileBytes() const { return m_end; }

private:
    struct Entry
    {
        VoxelBuffer voxels;
        qint64 offset = -1;
        qint64 size = 0;
    };
    void moveToFile(Entry& entry);

    QTemporaryFile m_file;
    qint64 m_end = 0;
    std::vector<Entry> m_entries;
};

} // namespace tirn
