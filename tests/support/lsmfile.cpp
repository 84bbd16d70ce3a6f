#include "support/lsmfile.h"

#include <cstring>

#include "support/picfile.h"
#include "support/tifffile.h"

namespace tirn::test {

namespace {

void put(QByteArray& record, int at, std::uint64_t value, int size)
{
    for (int i = 0; i < size; ++i)
        record[at + i] = static_cast<char>(value >> (8 * i) & 0xff);
}

void putDouble(QByteArray& record, int at, double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    put(record, at, bits, 8);
}

QByteArray infoRecord(const LsmFile& lsm, std::uint32_t typesOffset)
{
    QByteArray record(224, '\0');
    put(record, 0, 0x0400494C, 4);
    put(record, 4, 224, 4);
    const int numbers[] = {lsm.x,        lsm.y, lsm.claimedLayers < 0 ? lsm.z : lsm.claimedLayers,
                           lsm.channels, 1,     lsm.dataType};
    for (int i = 0; i < 6; ++i)
        put(record, 8 + 4 * i, static_cast<std::uint32_t>(numbers[i]), 4);
    for (int i = 0; i < 3; ++i)
        putDouble(record, 40 + 8 * i, lsm.voxel[i]);
    put(record, 120, typesOffset, 4);
    return record;
}

TiffPage layerPage(const LsmFile& lsm, int z)
{
    TiffPage page;
    page.x = lsm.x;
    // The channels one below the other, each a strip.
    page.y = lsm.y * lsm.channels;
    page.rowsPerStrip = lsm.y;
    page.bits = lsm.bits;
    page.value = [&lsm, z](int x, int row, int) {
        const int y = row % lsm.y;
        const int c = row / lsm.y;
        return lsm.value ? lsm.value(x, y, z, c) : x + 10 * y + 40 * c + 100 * z;
    };
    const auto channels = static_cast<std::uint32_t>(lsm.channels);
    page.fields = {{254, 4, {0}, {}},
                   {257, 4, {static_cast<std::uint32_t>(lsm.y)}, {}},
                   {258, 3, std::vector(channels, static_cast<std::uint32_t>(lsm.bits)), {}},
                   {277, 3, {channels}, {}},
                   {284, 3, {2}, {}}};
    return page;
}

TiffFile layout(const LsmFile& lsm, std::uint32_t typesOffset)
{
    TiffFile file;
    file.lastOffset = lsm.lastOffset;
    for (int z = 0; z < (lsm.pages < 0 ? lsm.z : lsm.pages); ++z) {
        file.pages.push_back(layerPage(lsm, z));
        if (z == 0)
            file.pages[0].fields.push_back({34412, 1, {}, infoRecord(lsm, typesOffset), 224});
        if (lsm.thumbnails) {
            TiffPage thumbnail = plainPage(2, 2, 255);
            thumbnail.fields = {{254, 4, {1}, {}}};
            file.pages.push_back(thumbnail);
        }
    }
    return file;
}

} // namespace

QByteArray LsmFile::bytes() const
{
    const auto size = static_cast<std::uint32_t>(layout(*this, 0).bytes().size());
    QByteArray types(static_cast<int>(4 * channelTypes.size()), '\0');
    for (std::size_t i = 0; i < channelTypes.size(); ++i)
        put(types, static_cast<int>(4 * i), static_cast<std::uint32_t>(channelTypes[i]), 4);
    return layout(*this, size).bytes() + types;
}

QString LsmFile::save(const QString& name, int length) const
{
    const QByteArray all = bytes();
    return saveBytes(name, length < 0 ? all : all.left(length));
}

} // namespace tirn::test
