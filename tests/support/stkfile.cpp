#include "support/stkfile.h"

#include "support/picfile.h"

namespace tirn::test {

namespace {

QByteArray littleLong(std::uint32_t value)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>(value >> shift & 0xff));
    return bytes;
}

TiffFile layout(const StkFile& stk, std::uint32_t rationals)
{
    TiffPage page;
    page.x = stk.x;
    // All planes as one tall image, whose first rows the directory describes.
    page.y = stk.y * stk.z;
    page.channels = stk.channels;
    page.bits = stk.bits;
    page.value = [&stk](int x, int row, int c) {
        const int y = row % stk.y;
        const int z = row / stk.y;
        return stk.value ? stk.value(x, y, z, c) : x + 10 * y + 50 * c + 100 * z;
    };
    TiffField offsets{273, 4, {}, {}};
    TiffField counts{279, 4, {}, {}};
    const int rowBytes = stk.x * stk.channels * (stk.bits > 8 ? 2 : 1);
    for (int y = 0; y < stk.y; y += stk.rowsPerStrip) {
        offsets.values.push_back(static_cast<std::uint32_t>(8 + y * rowBytes));
        counts.values.push_back(static_cast<std::uint32_t>(std::min(stk.rowsPerStrip, stk.y - y) * rowBytes));
    }
    TiffField planes{33629, 5, {}, {}, stk.z};
    for (int z = 0; z < stk.z; ++z) {
        planes.raw += littleLong(stk.distance[0]) + littleLong(stk.distance[1]);
        planes.raw += QByteArray(16, '\0');
    }
    page.fields = {{257, 3, {static_cast<std::uint32_t>(stk.y)}, {}}, offsets, counts, planes};
    if (stk.calibration[1] != 0) {
        TiffField pairs{33628, 4, {}, {}, 4};
        // An id that readers skip, the two sizes, and the unit.
        pairs.raw = littleLong(0) + littleLong(1) + littleLong(4) + littleLong(rationals) + littleLong(5) +
                    littleLong(rationals + 8) + littleLong(6) + littleLong(rationals + 16);
        page.fields.push_back(pairs);
    }
    page.fields.insert(page.fields.end(), stk.fields.begin(), stk.fields.end());
    TiffFile file{{page}};
    file.bigEndian = stk.bigEndian;
    return file;
}

} // namespace

QByteArray StkFile::bytes() const
{
    const auto size = static_cast<std::uint32_t>(layout(*this, 0).bytes().size());
    const QByteArray rational = littleLong(calibration[0]) + littleLong(calibration[1]);
    return layout(*this, size).bytes() + rational + rational + littleLong(2) + "um";
}

QString StkFile::save(const QString& name, int length) const
{
    const QByteArray all = bytes();
    return saveBytes(name, length < 0 ? all : all.left(length));
}

} // namespace tirn::test
