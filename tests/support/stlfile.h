#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <QByteArray>
#include <QString>

namespace tirn::test {

/// The twelve numbers of a facet as a binary STL file lists them: the normal, then three vertices.
using StlNumbers = std::array<float, 12>;

/// A binary STL file, put together byte by byte.
QByteArray binaryStl(const std::vector<StlNumbers>& facets, std::uint32_t count,
                     const QByteArray& header = "made for a test");
inline QByteArray binaryStl(const std::vector<StlNumbers>& facets)
{
    return binaryStl(facets, static_cast<std::uint32_t>(facets.size()));
}

/// An ASCII STL file of these lines between "solid name" and "endsolid".
QByteArray asciiStl(const QStringList& lines);
/// The seven lines of a facet whose normal is 0 0 1.
QStringList facetText(const QString& vertex1 = "0 0 0", const QString& vertex2 = "1 0 0",
                      const QString& vertex3 = "0 1 0");

} // namespace tirn::test
