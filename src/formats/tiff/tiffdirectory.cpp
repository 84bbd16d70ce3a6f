#include "formats/tiff/tiffdirectory.h"

#include <algorithm>
#include <unordered_set>

#include "base/log.h"
#include "formats/files/fileprobe.h"
#include "formats/tiff/tifftags.h"

namespace tirn {

TiffHeader readTiffHeader(WindowedFile& file)
{
    TiffHeader header;
    ByteReader reader(file.at(0, tiff::kHeaderBytes));
    switch (reader.u16()) {
    case tiff::kLittleEndianMark:
        header.order = ByteOrder::Little;
        break;
    case tiff::kBigEndianMark:
        header.order = ByteOrder::Big;
        break;
    default:
        return header;
    }
    reader.setOrder(*header.order);
    header.magic = reader.u16();
    header.firstOffset = reader.u32();
    return header;
}

std::optional<TiffHeader> probeTiff(QFile& file)
{
    if (!openForProbe(file))
        return std::nullopt;
    WindowedFile window(file);
    const TiffHeader header = readTiffHeader(window);
    if (!header.order || header.magic != tiff::kMagic || !header.offsetInRange(window.size()))
        return std::nullopt;
    return header;
}

std::uint32_t DirectoryReader::number(std::int64_t offset, int bytes)
{
    ByteReader reader(m_file.at(offset, bytes), m_order);
    return bytes == 2 ? reader.u16() : reader.u32();
}

std::optional<DirectoryReader::Directory> DirectoryReader::read(std::int64_t offset)
{
    const std::int64_t claimed = number(offset, 2);
    ByteReader reader(m_file.at(offset + 2, claimed * tiff::kEntryBytes), m_order);
    const auto count = static_cast<std::int64_t>(reader.remaining()) / tiff::kEntryBytes;
    m_entryBytes -= count * tiff::kEntryBytes;
    if (m_entryBytes < 0)
        return std::nullopt;

    std::vector<IFDEntry> entries;
    entries.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i)
        entries.push_back(readEntryHead(reader));

    Directory directory;
    directory.end = offset + 2 + claimed * tiff::kEntryBytes;
    directory.nextOffset = number(directory.end, 4);
    directory.end += 4;
    for (IFDEntry& entry : entries) {
        if (!isInline(entry))
            fetchValues(entry);
    }
    directory.ifd = IFD(std::move(entries));
    return directory;
}

void DirectoryReader::fetchValues(IFDEntry& entry)
{
    if (entry.fieldType < tiff::Byte || entry.fieldType > tiff::Rational)
        return;
    const std::int64_t wanted = std::int64_t{entry.count} * fieldTypeSize(entry.fieldType);
    ByteReader reader(m_file.at(entry.valueOffset, std::min(wanted, m_valueBytes)), m_order);
    m_valueBytes -= static_cast<std::int64_t>(reader.size());
    takeValues(entry, decodeValues(reader, entry.fieldType, entry.count));
}

WalkEnd walkDirectories(WindowedFile& file, ByteOrder order, std::uint32_t firstOffset,
                        const std::function<bool(IFD&&)>& visit, std::uint32_t lowestOffset)
{
    DirectoryReader reader(file, order);
    std::unordered_set<std::uint32_t> visited;
    std::uint32_t offset = firstOffset;
    while (offset >= lowestOffset && offset <= file.size()) {
        if (visited.size() == kMostDirectories) {
            logDebug("more than %d directories", kMostDirectories);
            return WalkEnd::TooMany;
        }
        std::optional<DirectoryReader::Directory> directory;
        if (visited.insert(offset).second)
            directory = reader.read(offset);
        if (!directory) {
            logDebug("old offset = new offset looping");
            return WalkEnd::Loop;
        }
        offset = directory->nextOffset;
        if (!visit(std::move(directory->ifd)))
            return WalkEnd::Stopped;
    }
    return WalkEnd::Last;
}

} // namespace tirn
