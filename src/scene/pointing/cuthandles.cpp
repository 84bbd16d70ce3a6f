#include "scene/pointing/cuthandles.h"

#include <cmath>

namespace tirn {

namespace {

/// A slice that is seen shorter than this part of its thickness is dragged up and down instead.
constexpr double kLeastSlope = 0.2;

int drawnSlices(const StackGeometry& g, int axis)
{
    return axis == 0 ? g.x : axis == 1 ? g.y : g.finalDepth();
}

double& component(Vector3& v, int axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

/// From one slice to the next along an axis; positions fall along y and z.
Vector3 sliceStep(const StackGeometry& g, int axis)
{
    const double unit = 2.0 / g.maxPow();
    Vector3 step;
    component(step, axis) = axis == 0 ? unit : axis == 1 ? -unit : -unit * g.z / g.finalDepth();
    return step;
}

Vector3 faceCentre(const StackGeometry& g, const CutBox& cut, const CutFace& face)
{
    const auto edges = cutBoxEdges(g, cut);
    Vector3 centre;
    for (int axis = 0; axis < 3; ++axis) {
        const auto& [low, high] = edges[static_cast<std::size_t>(axis)];
        component(centre, axis) = (low + high) / 2;
        if (axis == face.axis)
            component(centre, axis) = (axis == 0) == face.isHigh ? high : low;
    }
    return centre;
}

} // namespace

CutHandleList cutHandles(const ViewProjection& projection, const StackGeometry& geometry, const CutBox& cut)
{
    CutHandleList handles;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        CutHandle& handle = handles[i];
        handle.face = {static_cast<int>(i / 2), i % 2 == 1};
        handle.centre = faceCentre(geometry, cut, handle.face);
        const Vector3 outward = sliceStep(geometry, handle.face.axis) * (handle.face.isHigh ? 1 : -1);
        handle.seen = projection.project(handle.centre);
        handle.isInFront = projection.project(handle.centre + outward).depth < handle.seen.depth;
    }
    return handles;
}

std::optional<CutFace> handleAt(const CutHandleList& handles, QPointF place, double reach)
{
    const CutHandle* caught = nullptr;
    for (const CutHandle& each : handles) {
        const QPointF away = each.seen.at - place;
        const bool isHit = std::max(std::abs(away.x()), std::abs(away.y())) <= reach;
        if (isHit && (caught == nullptr || each.seen.depth < caught->seen.depth))
            caught = &each;
    }
    return caught != nullptr ? std::optional(caught->face) : std::nullopt;
}

CutDrag beginCutDrag(const ViewProjection& projection, const StackGeometry& geometry, const CutBox& cut,
                     const CutFace& face)
{
    const Vector3 centre = faceCentre(geometry, cut, face);
    const Vector3 step = sliceStep(geometry, face.axis);
    const Vector3 seen = projection.seenDirection(step);
    const double thickness = std::hypot(seen.x, seen.y, seen.z) * projection.pixelsPerUnit(centre);
    QPointF pixels = projection.project(centre + step).at - projection.project(centre).at;
    if (std::hypot(pixels.x(), pixels.y()) < kLeastSlope * thickness)
        pixels = {0, seen.z > 0 ? -thickness : thickness};
    return {face, cut, pixels};
}

CutBox draggedCut(const CutDrag& drag, QPointF moved, const StackGeometry& geometry, int leastSlices)
{
    const double length = QPointF::dotProduct(drag.pixelsPerSlice, drag.pixelsPerSlice);
    const int count = drawnSlices(geometry, drag.face.axis);
    const double slices = length > 0 ? QPointF::dotProduct(moved, drag.pixelsPerSlice) / length : 0;
    const int by = static_cast<int>(std::lround(std::clamp<double>(slices, -count, count)));
    const SliceRange before = cutRange(drag.before, drag.face.axis);
    const SliceRange limits = {0, count - 1};
    CutBox cut = drag.before;
    setCutRange(cut, drag.face.axis,
                drag.face.isHigh ? withHigh(before, before.high + by, leastSlices, limits)
                                 : withLow(before, before.low + by, leastSlices, limits));
    return cut;
}

} // namespace tirn
