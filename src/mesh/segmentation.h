#pragma once

#include <cstdint>
#include <memory>
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
    /// A file with room for the records that its head states is binary; otherwise one whose first line begins
    /// with "solid" is ASCII.
    bool load(const QString& fileName);

    /// The name behind "solid"; empty for a binary file.
    QString name;
    std::vector<Triangle> facets;
    Material material;
    MeshBounds bounds;
    /// Whether the surface is drawn.
    bool visible = true;
    /// Tells surfaces apart, and each from what it was before its facets changed.
    std::uint64_t revision = nextRevision();

    /// For whoever changes the facets.
    void facetsChanged() { revision = nextRevision(); }
    static std::uint64_t nextRevision();
};

/// The surface that is drawn: the newest, unless it is hidden; null for none.
const Segmentation* drawnSurface(const std::vector<std::unique_ptr<Segmentation>>& surfaces);

/// The box around facets. A coordinate that is not a number does not count.
MeshBounds boundsOf(const std::vector<Triangle>& facets);

} // namespace tirn
