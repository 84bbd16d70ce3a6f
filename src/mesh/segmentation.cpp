#include "mesh/segmentation.h"

#include <atomic>
#include <cmath>
#include <limits>

#include "base/log.h"
#include "mesh/stlreader.h"

namespace tirn {

namespace {

/// The whole part of a coordinate for a log line.
int whole(float value) { return std::fabs(value) < 2e9F ? static_cast<int>(value) : 0; }

void logSummary(const Segmentation& mesh)
{
    const MeshBounds& b = mesh.bounds;
    logDebug("xmin: %f xmax: %f ymin: %f ymax: %f zmin: %f zmax: %f", b.min[0], b.max[0], b.min[1], b.max[1],
             b.min[2], b.max[2]);
    logDebug("name %s facets %d\n xmin %d ymin %d zmin %d\n xmax %d ymax %d zmax %d",
             mesh.name.toUtf8().constData(), static_cast<int>(mesh.facets.size()), whole(b.min[0]),
             whole(b.min[1]), whole(b.min[2]), whole(b.max[0]), whole(b.max[1]), whole(b.max[2]));
}

} // namespace

bool Segmentation::load(const QString& fileName)
{
    StlContent content;
    const QString reason = readStl(fileName, content);
    if (!reason.isEmpty()) {
        logWarning("%s", reason.toUtf8().constData());
        return false;
    }
    name = content.name;
    facets = std::move(content.facets);
    bounds = boundsOf(facets);
    facetsChanged();
    logSummary(*this);
    return true;
}

std::uint64_t Segmentation::nextRevision()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

const Segmentation* drawnSurface(const std::vector<std::unique_ptr<Segmentation>>& surfaces)
{
    if (surfaces.empty() || !surfaces.back()->visible || surfaces.back()->facets.empty())
        return nullptr;
    return surfaces.back().get();
}

MeshBounds boundsOf(const std::vector<Triangle>& facets)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    MeshBounds bounds = {{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
    for (const Triangle& facet : facets) {
        for (const Vector3f& vertex : facet.vertices) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                // Each comparison is false for what is not a number.
                bounds.min[axis] = vertex[axis] < bounds.min[axis] ? vertex[axis] : bounds.min[axis];
                bounds.max[axis] = vertex[axis] > bounds.max[axis] ? vertex[axis] : bounds.max[axis];
            }
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (bounds.min[axis] > bounds.max[axis])
            bounds.min[axis] = bounds.max[axis] = 0;
    }
    return bounds;
}

} // namespace tirn
