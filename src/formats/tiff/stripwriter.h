#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <QStringList>

#include "formats/files/bytewriter.h"
#include "formats/tiff/ifdentry.h"
#include "formats/tiff/tifftags.h"
#include "image/imageattributes.h"
#include "image/layercount.h"

namespace tirn {

/// The layers and the file that a writer is asked for.
struct WriteRequest
{
    QString name;
    int first = 0;
    int last = 0;
    int step = 1;
    bool overwrite = false;
};
/// Why a writer of one file gives up before it starts: layers outside of the stack, or a file that is there
/// and may not be replaced. Empty when it may go on.
QStringList writeRefusal(const WriteRequest& request, const ImageAttributes& attributes,
                         const std::uint8_t* data);

/// The sizes of a stack that is written in strips of one row.
struct StripShape
{
    std::int64_t rowBytes = 0;
    std::int64_t layerBytes = 0;
    /// False where a size is below 1, a row or a side does not fit into 16 bits, or a product overflows.
    bool valid = false;

    /// True when `layers` layers behind `start` end within what 32-bit offsets reach.
    bool fits(std::int64_t start, int layers) const;
    /// Where each row of a layer lies that begins at `start`.
    std::vector<std::uint32_t> rowOffsets(std::int64_t start) const;
};
StripShape stripShape(const ImageAttributes& attributes, std::optional<std::int64_t> rowBytes);

/// Lays out a directory: its entries in their order, and the tables for what does not fit into them.
class DirectoryLayout
{
public:
    /// `tables` is the offset of the first table.
    explicit DirectoryLayout(std::int64_t tables) : m_end(static_cast<std::uint32_t>(tables)) {}

    /// A SHORT in the entry's own field.
    void addNumber(tiff::Tag tag, std::uint32_t value);
    /// Values with a table of their own. It stays empty where they fit into the field.
    void addTable(tiff::Tag tag, tiff::FieldType type, std::vector<std::uint32_t> values);
    /// An entry whose table of `bytes` bytes the caller fills; returns the offset of that.
    std::uint32_t addRoom(tiff::Tag tag, tiff::FieldType type, std::uint32_t count, std::uint32_t bytes);
    /// An entry as it is.
    void add(const IFDEntry& entry) { m_entries.push_back(entry); }

    /// Writes the count of entries and the entries with their tables at the writer's position, which moves
    /// behind the last entry.
    void write(ByteWriter& head) const;
    /// Where the next table would go.
    std::uint32_t end() const { return m_end; }

private:
    std::vector<IFDEntry> m_entries;
    std::uint32_t m_end;
};

/// Pixels per centimetre of a voxel size in microns, as denominator and numerator of the size in centimetres.
std::vector<std::uint32_t> pixelsPerCentimetre(double microns);

/// Which layers of a buffer are written.
struct WrittenLayers
{
    int first = 0;
    int step = 1;
    int count = 0;
};

/// Writes `head`, and right behind it the layers, `layerBytes` each, to a new file in place of `name`. Layers
/// without gaps go in one block. Returns the texts of failures. The second says in the log what it writes.
QStringList writeHeadAndLayers(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                               std::int64_t layerBytes, const WrittenLayers& layers);
QStringList writeStripFile(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                           std::int64_t layerBytes, const WrittenLayers& layers);

} // namespace tirn
