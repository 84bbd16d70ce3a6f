#include "support/stlfile.h"

#include <cstring>

#include <QStringList>
#include <QtEndian>

namespace tirn::test {

namespace {

void append(QByteArray& bytes, std::uint32_t value)
{
    const std::uint32_t little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&little), 4);
}

} // namespace

QByteArray binaryStl(const std::vector<StlNumbers>& facets, std::uint32_t count, const QByteArray& header)
{
    QByteArray bytes = header.leftJustified(80, '\0', true);
    append(bytes, count);
    for (const StlNumbers& facet : facets) {
        for (const float number : facet) {
            std::uint32_t bits;
            std::memcpy(&bits, &number, 4);
            append(bytes, bits);
        }
        bytes.append("\x12\x34", 2);
    }
    return bytes;
}

QByteArray asciiStl(const QStringList& lines)
{
    return (QStringList{"solid name"} + lines + QStringList{"endsolid", ""}).join('\n').toUtf8();
}

QStringList facetText(const QString& vertex1, const QString& vertex2, const QString& vertex3)
{
    return {"facet normal 0 0 1",
            "  outer loop",
            "    vertex " + vertex1,
            "    vertex " + vertex2,
            "    vertex " + vertex3,
            "  endloop",
            "endfacet"};
}

} // namespace tirn::test
