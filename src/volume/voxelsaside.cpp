#include "volume/voxelsaside.h"

#include <QDir>
#include <QFileInfo>

namespace tirn {

namespace {

/// A place for large files that is not memory in disguise, as the usual one for short-lived files often is.
QString largeFilesDirectory()
{
    const QString lasting = QStringLiteral("/var/tmp");
    return QFileInfo(lasting).isDir() ? lasting : QDir::tempPath();
}

} // namespace

VoxelsAside::VoxelsAside() : VoxelsAside(largeFilesDirectory()) {}

VoxelsAside::VoxelsAside(const QString& directory) : m_file(directory + QStringLiteral("/tirn-XXXXXX")) {}

void VoxelsAside::put(VoxelBuffer voxels)
{
    if (!m_entries.empty() && m_entries.back().offset < 0)
        moveToFile(m_entries.back());
    const qint64 size = voxels.size();
    m_entries.push_back({std::move(voxels), -1, size});
}

void VoxelsAside::moveToFile(Entry& entry)
{
    if (!m_file.isOpen() && !m_file.open())
        return;
    if (!m_file.seek(m_end) ||
        m_file.write(reinterpret_cast<const char*>(entry.voxels.data()), entry.size) != entry.size ||
        !m_file.flush())
        return;
    entry.offset = m_end;
    m_end += entry.size;
    entry.voxels.reset();
}

void VoxelsAside::moveAllToFile()
{
    if (!m_entries.empty() && m_entries.back().offset < 0)
        moveToFile(m_entries.back());
}

VoxelBuffer VoxelsAside::take()
{
    if (m_entries.empty())
        return {};
    Entry& entry = m_entries.back();
    VoxelBuffer voxels = std::move(entry.voxels);
    if (entry.offset >= 0) {
        voxels = VoxelBuffer(entry.size);
        if (!m_file.seek(entry.offset) ||
            m_file.read(reinterpret_cast<char*>(voxels.data()), entry.size) != entry.size)
            voxels.reset();
        m_end = entry.offset;
    }
    m_entries.pop_back();
    return voxels;
}

} // namespace tirn
