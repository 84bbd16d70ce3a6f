#pragma once

#include <vector>

#include <QString>

#include "mesh/material.h"
#include "mesh/triangle.h"

namespace tirn {

/// The corners of the box around a surface; both are 0 for a surface without facets.
struct MeshBounds
{
    Vector3f min = {};
    Vector3f max = {};

    bool operator==(const MeshBounds&) const = default;
};

/// A surface drawn inside the volume, in its drawing units.
struct Segmentation
{
    /// Reads a stereolithography file (STL, ASCII or binary) in place of what is there. False, with the
    /// reason in the log and everything as it was, when the file does not hold one.
    ///
    /// A file whose first line begins with "solid" is ASCII, whatever follows. Numbers there have no
    /// exponent, and a line "endsolid" has no name behind it.
    bool load(const QString& fileName);

    /// The name behind "solid"; empty for a binary file.
    QString name;
    std::vector<Triangle> facets;
    Material material;
    MeshBounds bounds;

    /// The display list that draws it, 0 while there is none.
    unsigned displayList = 0;
};

/// The box around facets. A coordinate that is not a number does not count.
MeshBounds boundsOf(const std::vector<Triangle>& facets);

} // namespace tirn
