#include "support/tifffile.h"

#include <algorithm>

#include "support/picfile.h"

namespace tirn::test {

namespace {

class Builder
{
public:
    explicit Builder(const TiffFile& file) : m_file(file) {}

    QByteArray build()
    {
        put(m_file.bigEndian ? 0x4D4D : 0x4949, 2);
        put(static_cast<std::uint32_t>(m_file.magic), 2);
        std::size_t link = 4;
        put(m_file.lastOffset, 4);
        for (const TiffPage& page : m_file.pages) {
            const auto directory = appendPage(page);
            offsets.push_back(directory);
            patch(link, directory, 4);
            link = static_cast<std::size_t>(m_bytes.size()) - 4;
        }
        return m_bytes;
    }

    std::vector<std::uint32_t> offsets;

private:
    void put(std::uint32_t value, int size) { m_bytes.append(number(value, size)); }
    void patch(std::size_t at, std::uint32_t value, int size)
    {
        m_bytes.replace(static_cast<int>(at), size, number(value, size));
    }
    QByteArray number(std::uint32_t value, int size) const
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i) {
            const int shift = 8 * (m_file.bigEndian ? size - 1 - i : i);
            bytes.append(static_cast<char>(value >> shift & 0xFF));
        }
        return bytes;
    }

    /// The voxels strip by strip; gives the strips' offsets and byte counts.
    void appendVoxels(const TiffPage& page, TiffField& offsetField, TiffField& countField)
    {
        const int rows = page.rowsPerStrip > 0 ? page.rowsPerStrip : page.y;
        const int planes = page.planar ? page.channels : 1;
        for (int row = 0; row < planes * page.y; ++row) {
            if (row % page.y % rows == 0) {
                offsetField.values.push_back(static_cast<std::uint32_t>(m_bytes.size()));
                countField.values.push_back(0);
            }
            for (int x = 0; x < page.x; ++x) {
                for (int c = 0; c < page.channels / planes; ++c)
                    appendSample(page, x, row % page.y, row / page.y + c);
            }
            countField.values.back() = static_cast<std::uint32_t>(m_bytes.size()) - offsetField.values.back();
        }
    }
    void appendSample(const TiffPage& page, int x, int y, int channel)
    {
        const int value = page.value ? page.value(x, y, channel) : x + 10 * y + 50 * channel;
        put(static_cast<std::uint32_t>(value), page.bits > 8 ? 2 : 1);
    }

    std::uint32_t appendPage(const TiffPage& page)
    {
        TiffField offsetField{273, 4, {}, {}};
        TiffField countField{279, 4, {}, {}};
        appendVoxels(page, offsetField, countField);
        const auto n = [](int value) { return static_cast<std::uint32_t>(value); };
        std::vector<TiffField> fields = {
            {256, 4, {n(page.x)}, {}},
            {257, 4, {n(page.y)}, {}},
            {258, 3, std::vector<std::uint32_t>(static_cast<std::size_t>(page.channels), n(page.bits)), {}},
            {259, 3, {1}, {}},
            {262, 3, {1}, {}},
            offsetField,
            {277, 3, {n(page.channels)}, {}},
            {278, 4, {n(page.rowsPerStrip > 0 ? page.rowsPerStrip : page.y)}, {}},
            countField,
            {284, 3, {page.planar ? 2U : 1U}, {}},
        };
        for (const TiffField& field : page.fields) {
            std::erase_if(fields, [&](const TiffField& old) { return old.tag == field.tag; });
            fields.push_back(field);
        }
        std::erase_if(fields, [&](const TiffField& field) {
            return std::count(page.without.begin(), page.without.end(), field.tag) > 0;
        });
        std::stable_sort(fields.begin(), fields.end(),
                         [](const TiffField& a, const TiffField& b) { return a.tag < b.tag; });
        return appendDirectory(fields);
    }

    std::uint32_t appendDirectory(const std::vector<TiffField>& fields)
    {
        QByteArray directory = number(static_cast<std::uint32_t>(fields.size()), 2);
        for (const TiffField& field : fields) {
            QByteArray values = field.raw;
            for (const std::uint32_t value : field.values)
                values += number(value, field.type == 3 ? 2 : field.type < 3 ? 1 : 4);
            const auto held = field.values.size() / (field.type == 5 ? 2 : 1);
            directory += number(static_cast<std::uint32_t>(field.tag), 2);
            directory += number(static_cast<std::uint32_t>(field.type), 2);
            directory += number(static_cast<std::uint32_t>(field.count < 0 ? held : field.count), 4);
            if (values.size() > 4) {
                directory += number(static_cast<std::uint32_t>(m_bytes.size()), 4);
                m_bytes += values;
            } else {
                directory += values.leftJustified(4, '\0');
            }
        }
        const auto offset = static_cast<std::uint32_t>(m_bytes.size());
        m_bytes += directory;
        put(m_file.lastOffset, 4);
        return offset;
    }

    const TiffFile& m_file;
    QByteArray m_bytes;
};

} // namespace

QByteArray TiffFile::bytes() const { return Builder(*this).build(); }

QString TiffFile::save(const QString& name, int length) const
{
    const QByteArray all = bytes();
    return saveBytes(name, length < 0 ? all : all.left(length));
}

std::vector<std::uint32_t> TiffFile::directoryOffsets() const
{
    Builder builder(*this);
    builder.build();
    return builder.offsets;
}

TiffPage plainPage(int x, int y, int value, int bits)
{
    TiffPage page;
    page.x = x;
    page.y = y;
    page.bits = bits;
    page.value = [value](int, int, int) { return value; };
    return page;
}

} // namespace tirn::test
