#include "formats/tiff/ifdentry.h"

#include <algorithm>

#include "base/log.h"
#include "formats/tiff/tifftags.h"

namespace tirn {

int fieldTypeSize(std::uint16_t fieldType)
{
    switch (fieldType) {
    case tiff::Byte:
    case tiff::Ascii:
        return 1;
    case tiff::Short:
        return 2;
    case tiff::Rational:
        return 8;
    default:
        if (fieldType < 1 || fieldType > 12)
            logDebug("Invaild type");
        return 4;
    }
}

bool isInline(const IFDEntry& entry)
{
    return std::uint64_t{entry.count} * static_cast<unsigned>(fieldTypeSize(entry.fieldType)) <= 4;
}

std::vector<std::uint32_t> decodeValues(ByteReader& reader, std::uint16_t fieldType, std::uint32_t count)
{
    std::vector<std::uint32_t> values;
    if (fieldType < tiff::Byte || fieldType > tiff::Rational)
        return values;
    const auto size = static_cast<unsigned>(fieldTypeSize(fieldType));
    const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(count, reader.remaining() / size));
    values.reserve(fieldType == tiff::Rational ? 2 * held : held);
    for (std::size_t i = 0; i < held; ++i) {
        if (size == 1) {
            values.push_back(reader.u8());
        } else if (size == 2) {
            values.push_back(reader.u16());
        } else {
            values.push_back(reader.u32());
            if (size == 8)
                values.push_back(reader.u32());
        }
    }
    return values;
}

IFDEntry readEntryHead(ByteReader& reader)
{
    IFDEntry entry;
    entry.tag = reader.u16();
    entry.fieldType = reader.u16();
    entry.count = reader.u32();
    const auto field = reader.bytes(4);
    entry.valueOffset = ByteReader(field, reader.order()).u32();
    if (isInline(entry)) {
        ByteReader values(field, reader.order());
        takeValues(entry, decodeValues(values, entry.fieldType, entry.count));
    }
    return entry;
}

void takeValues(IFDEntry& entry, std::vector<std::uint32_t> values)
{
    entry.values = std::move(values);
    if (entry.count == 1 && entry.fieldType <= tiff::Long && !entry.values.empty())
        entry.valueOffset = entry.values.front();
}

namespace {

void writeValues(ByteWriter& writer, const IFDEntry& entry)
{
    for (const std::uint32_t value : entry.values) {
        switch (entry.fieldType) {
        case tiff::Byte:
        case tiff::Ascii:
            writer.u8(static_cast<std::uint8_t>(value));
            break;
        case tiff::Short:
            writer.u16(static_cast<std::uint16_t>(value));
            break;
        default:
            writer.u32(value);
        }
    }
}

} // namespace

void writeEntry(ByteWriter& writer, const IFDEntry& entry)
{
    writer.u16(entry.tag);
    writer.u16(entry.fieldType);
    writer.u32(entry.count);
    const std::size_t field = writer.position();
    if (entry.values.empty()) {
        writer.u32(entry.valueOffset);
        return;
    }
    if (isInline(entry)) {
        // Left-justified: what the values do not fill is zero.
        writer.u32(0);
        writer.seek(field);
    } else {
        writer.u32(entry.valueOffset);
        writer.seek(entry.valueOffset);
    }
    writeValues(writer, entry);
    writer.seek(field + 4);
}

QString entryText(const IFDEntry& entry)
{
    QString text = QString::asprintf("entry.tag         %u\nentry.fieldType   %u\nentry.count       %u\n"
                                     "entry.valueOffset %u\n",
                                     entry.tag, entry.fieldType, entry.count, entry.valueOffset);
    for (std::size_t i = 0; i < entry.values.size(); ++i)
        text += QString::asprintf("entry.valueAtOffset[%d] %u\n", static_cast<int>(i), entry.values[i]);
    return text;
}

QString asciiText(const IFDEntry& entry)
{
    QByteArray text;
    for (const std::uint32_t value : entry.values) {
        if (value == 0)
            break;
        text.append(static_cast<char>(value));
    }
    return QString::fromUtf8(text);
}

} // namespace tirn
