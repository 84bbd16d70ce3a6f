#pragma once

#include "scene/pointing/viewprojection.h"
#include "volume/cutslices.h"

namespace tirn {

/// A face of the cut box: the one that the lowest, or the highest, slice along an axis lies at.
struct CutFace
{
    int axis = 0;
    bool isHigh = false;

    bool operator==(const CutFace&) const = default;
};

/// What the mouse drags a face by.
struct CutHandle
{
    CutFace face;
    /// The middle of the face, in the space of the volume and in the picture.
    Vector3 centre;
    SeenPoint seen;
    /// The face is turned to the viewer.
    bool isInFront = false;
};
using CutHandleList = std::array<CutHandle, 6>;

/// Half the side of a handle, and how far from its middle it is caught, in pixels of a plain window.
inline constexpr double kHandleHalf = 4.5;
inline constexpr double kHandleReach = 8;

CutHandleList cutHandles(const ViewProjection& projection, const StackGeometry& geometry, const CutBox& cut);

/// The handle within `reach` pixels of a place; of several the one nearest to the viewer.
std::optional<CutFace> handleAt(const CutHandleList& handles, QPointF place, double reach);

/// A face that is being dragged.
struct CutDrag
{
    CutFace face;
    CutBox before;
    /// How many pixels a slice more is. Where the axis points at the viewer, it goes up the picture for what
    /// comes nearer.
    QPointF pixelsPerSlice;
};
CutDrag beginCutDrag(const ViewProjection& projection, const StackGeometry& geometry, const CutBox& cut,
                     const CutFace& face);

/// The cut box once the mouse has moved so many pixels since the drag began. The other bound is pushed along
/// where fewer than `leastSlices` would be left.
CutBox draggedCut(const CutDrag& drag, QPointF moved, const StackGeometry& geometry, int leastSlices);

} // namespace tirn
