#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "base/bytereader.h"
#include "formats/files/windowedfile.h"
#include "formats/tiff/ifd.h"

namespace tirn {

/// The eight bytes at the start of a TIFF file.
struct TiffHeader
{
    /// Nothing when the mark is neither "II" nor "MM".
    std::optional<ByteOrder> order;
    std::uint16_t magic = 0;
    std::uint32_t firstOffset = 0;

    bool isLittleEndian() const { return order == ByteOrder::Little; }
    /// True when the first directory lies behind the header and not past the end of the file.
    bool offsetInRange(std::int64_t fileSize) const { return firstOffset >= 8 && firstOffset <= fileSize; }
};

TiffHeader readTiffHeader(WindowedFile& file);

/// The tests that a probe makes of a TIFF file: it opens, and its header points at a directory within it.
/// Leaves the file open; nothing when a test fails.
std::optional<TiffHeader> probeTiff(QFile& file);

/// Reads directories one by one. What one file may make us hold is bounded by its own length: entries and
/// values beyond that, which only directories that overlap can ask for, are left out.
class DirectoryReader
{
public:
    DirectoryReader(WindowedFile& file, ByteOrder order)
        : m_file(file), m_order(order), m_entryBytes(file.size()), m_valueBytes(file.size() + kSlackBytes)
    {}

    struct Directory
    {
        IFD ifd;
        std::uint32_t nextOffset = 0;
        /// Where the file goes on behind this directory.
        std::int64_t end = 0;
    };
    /// Nothing when the directories claim more entries than the file has room for. What the file does not
    /// hold reads as zeros.
    std::optional<Directory> read(std::int64_t offset);

    std::uint32_t number(std::int64_t offset, int bytes);

private:
    static constexpr std::int64_t kSlackBytes = 65536;
    void fetchValues(IFDEntry& entry);

    WindowedFile& m_file;
    ByteOrder m_order;
    std::int64_t m_entryBytes;
    std::int64_t m_valueBytes;
};

/// The directories of one file that are walked: more than the layers of any stack that can be drawn.
constexpr int kMostDirectories = 1 << 17;

/// How a walk along the chain of directories ended.
enum class WalkEnd {
    Last,    ///< a next offset of 0, or one that cannot be sought
    Loop,    ///< a next offset that was walked already
    TooMany, ///< directories
    Stopped, ///< by the visitor
};

/// Hands each directory to `visit`, which returns false to stop. `lowestOffset` is the least next offset that
/// counts as one.
WalkEnd walkDirectories(WindowedFile& file, ByteOrder order, std::uint32_t firstOffset,
                        const std::function<bool(IFD&&)>& visit, std::uint32_t lowestOffset = 1);

} // namespace tirn
