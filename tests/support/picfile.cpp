#include "support/picfile.h"

#include <QFile>

namespace tirn::test {

namespace {

void put(QByteArray& bytes, int offset, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes[offset + i] = static_cast<char>(value >> (8 * i) & 0xFF);
}

} // namespace

QByteArray PicFile::bytes() const
{
    QByteArray all(76, '\0');
    put(all, 0, static_cast<std::uint64_t>(x), 2);
    put(all, 2, static_cast<std::uint64_t>(y), 2);
    put(all, 4, static_cast<std::uint64_t>(z), 2);
    put(all, 10, notesField, 4);
    put(all, 14, bits == 8 ? 1 : 0, 2);
    all[54] = '9';
    all[55] = '0';
    put(all, 64, lens, 2);
    put(all, 66, magnification, 4);
    for (int layer = 0; layer < z; ++layer) {
        for (int row = 0; row < y; ++row) {
            for (int column = 0; column < x; ++column) {
                const int v = value ? value(column, row, layer) : column + 10 * row + 100 * layer;
                all.append(static_cast<char>(v & 0xFF));
                if (bits != 8)
                    all.append(static_cast<char>(v >> 8 & 0xFF));
            }
        }
    }
    for (const PicNote& note : notes) {
        QByteArray record(96, '\0');
        put(record, 0, 0xFFFF, 2);
        put(record, 2, note.next, 4);
        put(record, 8, 1, 2);
        put(record, 10, note.type, 2);
        for (std::size_t i = 0; i < note.text.size() && i < 80; ++i)
            record[static_cast<int>(16 + i)] = note.text[i];
        all.append(record);
    }
    return all;
}

QString PicFile::save(const QString& name, int length) const
{
    return saveBytes(name, length < 0 ? bytes() : bytes().left(length));
}

QByteArray fileContent(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString saveBytes(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return name;
}

QString testData(const QString& name) { return QStringLiteral(TIRN_TEST_DATA "/") + name; }

} // namespace tirn::test
