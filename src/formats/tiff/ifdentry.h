#pragma once

#include <cstdint>
#include <vector>

#include <QString>

#include "base/bytereader.h"
#include "formats/files/bytewriter.h"

namespace tirn {

/// One entry of an image file directory.
struct IFDEntry
{
    std::uint16_t tag = 0;
    std::uint16_t fieldType = 0;
    std::uint32_t count = 0;
    /// The value field as a number in the file's order; the value itself where `count` is 1.
    std::uint32_t valueOffset = 0;
    /// The decoded values, as many as the file holds; numerators and denominators in turn for a RATIONAL.
    std::vector<std::uint32_t> values;

    bool operator==(const IFDEntry&) const = default;
};

/// Bytes of one value: 1, 1, 2, 4 and 8 for BYTE to RATIONAL and 4 for all other types, whatever their real
/// size, since they are never decoded. A type that TIFF does not know is logged.
int fieldTypeSize(std::uint16_t fieldType);

/// True when the values stand in the entry's own field.
bool isInline(const IFDEntry& entry);

/// Decodes up to `count` values of a type; none of a type that is not BYTE to RATIONAL.
std::vector<std::uint32_t> decodeValues(ByteReader& reader, std::uint16_t fieldType, std::uint32_t count);

/// Reads the twelve bytes of an entry; values that stand elsewhere are left for `takeValues`.
IFDEntry readEntryHead(ByteReader& reader);
/// Gives an entry its values, and a single one of types 1 to 4 to `valueOffset` as well.
void takeValues(IFDEntry& entry, std::vector<std::uint32_t> values);

/// Writes an entry at the writer's position, which moves behind it. Values that fit go into the field, others
/// to `valueOffset`; an entry without values keeps its `valueOffset`.
void writeEntry(ByteWriter& writer, const IFDEntry& entry);

/// All fields, a line each.
QString entryText(const IFDEntry& entry);
/// What a tag is called and what its value says.
QString tagText(const IFDEntry& entry);
/// The values taken as characters, up to the first zero.
QString asciiText(const IFDEntry& entry);

} // namespace tirn
