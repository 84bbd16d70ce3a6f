#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include <QByteArray>
#include <QString>

namespace tirn::test {

/// An entry of a directory: its values, each as wide as the type says; a RATIONAL's in pairs.
struct TiffField
{
    int tag = 0;
    int type = 3;
    std::vector<std::uint32_t> values;
    /// Bytes put in place of the values, for types that have no whole numbers.
    QByteArray raw;
    /// The number of values that the entry states; that of `values` by default.
    std::int64_t count = -1;
};

/// A page: the fields that every baseline image has, made from its size, and others.
struct TiffPage
{
    int x = 4;
    int y = 3;
    int channels = 1;
    int bits = 8;
    int rowsPerStrip = 0;
    /// Each channel in strips of its own, one channel behind the other.
    bool planar = false;
    /// The value at a sample; by default x + 10 y + 50 c.
    std::function<int(int x, int y, int c)> value = nullptr;
    /// Further fields; one with the tag of a baseline field takes its place.
    std::vector<TiffField> fields = {};
    /// Tags to leave out.
    std::vector<int> without = {};
};

/// A TIFF file, put together byte by byte from the public description of the format: for each page its
/// voxels, the values that do not fit into the directory, and the directory.
struct TiffFile
{
    std::vector<TiffPage> pages;
    bool bigEndian = false;
    int magic = 42;
    /// Where the last directory points to; 0 ends the chain.
    std::uint32_t lastOffset = 0;

    QByteArray bytes() const;
    /// Writes the first `length` bytes, all by default, and returns the name.
    QString save(const QString& name, int length = -1) const;
    /// The offset of each directory.
    std::vector<std::uint32_t> directoryOffsets() const;
};

/// A page whose samples are all the same.
TiffPage plainPage(int x, int y, int value, int bits = 8);

} // namespace tirn::test
