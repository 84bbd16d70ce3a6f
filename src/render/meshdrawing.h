#pragma once

#include "gl/glnames.h"
#include "mesh/segmentation.h"

namespace tirn {

/// Sends a material to the card, for both sides of a surface.
void applyMaterial(const Material& material);

/// A display list with all facets of a surface. A facet whose normal is not a number is logged and has the
/// normal of the one before.
ListNames makeMeshList(const Segmentation& mesh);

/// The list of the surface that was drawn last, made when it is drawn first and when its facets changed.
class MeshList
{
public:
    /// The list of a surface, 0 where the driver gave none.
    GLuint of(const Segmentation& mesh);
    void clear();

private:
    std::uint64_t m_revision = 0;
    ListNames m_list;
};

} // namespace tirn
