#include "render/meshdrawing.h"

#include <algorithm>
#include <cmath>

#include "base/log.h"
#include "gl/glstate.h"

namespace tirn {

namespace {

bool isFinite(const Vector3f& vector)
{
    return std::all_of(vector.begin(), vector.end(), [](float value) { return std::isfinite(value); });
}

} // namespace

void applyMaterial(const Material& material)
{
    gl().Materialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, material.ambientAndDiffuse.data());
    gl().Materialfv(GL_FRONT_AND_BACK, GL_EMISSION, material.emission.data());
    gl().Materialfv(GL_FRONT_AND_BACK, GL_SPECULAR, material.specular.data());
    gl().Materialf(GL_FRONT_AND_BACK, GL_SHININESS, material.shininess);
}

ListNames makeMeshList(const Segmentation& mesh)
{
    ListNames list(1);
    if (list.empty())
        return list;
    const ListScope recording(list.first());
    const PrimitiveScope triangles(GL_TRIANGLES);
    for (const Triangle& facet : mesh.facets) {
        if (isFinite(facet.normal))
            gl().Normal3f(facet.normal[0], facet.normal[1], facet.normal[2]);
        else
            logDebug("Error making triangle");
        for (const Vector3f& vertex : facet.vertices)
            gl().Vertex3f(vertex[0], vertex[1], vertex[2]);
    }
    return list;
}

GLuint MeshList::of(const Segmentation& mesh)
{
    if (m_list.empty() || m_revision != mesh.revision) {
        m_list = makeMeshList(mesh);
        m_revision = mesh.revision;
    }
    return m_list.empty() ? 0 : m_list.first();
}

void MeshList::clear()
{
    m_list.clear();
    m_revision = 0;
}

} // namespace tirn
