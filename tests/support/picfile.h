#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <QByteArray>
#include <QString>

namespace tirn::test {

/// One 96-byte note of a Bio-Rad file.
struct PicNote
{
    std::string text;
    std::uint32_t next = 0;
    std::uint16_t type = 20;
};

/// A Bio-Rad PIC file, put together byte by byte from the public description of the format.
struct PicFile
{
    int x = 4;
    int y = 3;
    int z = 2;
    int bits = 8;
    std::uint32_t notesField = 0;
    std::uint8_t lens = 0;
    std::uint32_t magnification = 0;
    std::vector<PicNote> notes = {};
    /// The value at a voxel; by default x + 10 y + 100 z in the width that there is.
    std::function<int(int x, int y, int z)> value = {};

    QByteArray bytes() const;
    /// Writes the first `length` bytes, all by default, and returns the name.
    QString save(const QString& name, int length = -1) const;
};

QByteArray fileContent(const QString& name);
QString saveBytes(const QString& name, const QByteArray& bytes);
/// A real file kept with the tests.
QString testData(const QString& name);

} // namespace tirn::test
