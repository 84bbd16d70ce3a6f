#include <cmath>

#include <gtest/gtest.h>

#include "volume/meshfit.h"

namespace tirn {
namespace {

Segmentation meshOf(const Vector3f& a, const Vector3f& b, const Vector3f& c)
{
    Segmentation mesh;
    mesh.facets = {{{a, b, c}, {1, 2, 3}}};
    mesh.bounds = boundsOf(mesh.facets);
    return mesh;
}

void expectVertex(const Vector3f& vertex, const std::array<double, 3>& expected)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(vertex[axis], expected[axis], 1e-6) << axis;
}

TEST(MeshFit, NoneLeavesDrawingUnits)
{
    Segmentation mesh = meshOf({1, 2, 3}, {4, 5, 6}, {7, 8, 9});
    fitMesh(mesh, MeshFit::None, StackGeometry::of(8, 4, 2, 1024));
    expectVertex(mesh.facets[0].vertices[0], {1, 2, 3});
    EXPECT_EQ(mesh.facets[0].normal, (Vector3f{1, 2, 3}));
}

/// 8 x 4 x 2 voxels: the volume's box is 2 x 1 x 0.5. The mesh is 20 x 20 x 10: y fits last, with 1 / 20.
TEST(MeshFit, AVolumeIsFilledInItsMiddle)
{
    Segmentation mesh = meshOf({100, 0, 0}, {120, 20, 10}, {110, 0, 0});
    fitMesh(mesh, MeshFit::Volume, StackGeometry::of(8, 4, 2, 1024));
    expectVertex(mesh.facets[0].vertices[0], {-0.5, -0.5, -0.25});
    expectVertex(mesh.facets[0].vertices[1], {0.5, 0.5, 0.25});
    EXPECT_FLOAT_EQ(mesh.bounds.max[0], 0.5F);
    // A flat or empty surface has no size to fit.
    Segmentation point = meshOf({5, 5, 5}, {5, 5, 5}, {5, 5, 5});
    fitMesh(point, MeshFit::Volume, StackGeometry::of(8, 4, 2, 1024));
    expectVertex(point.facets[0].vertices[0], {0, 0, 0});
}

/// In 8 x 4 x 2 a voxel is 0.25 wide; x runs up from -1, y and z run down from 0.5 and 0.25.
TEST(MeshFit, VoxelsCountFromTheMiddleOfTheFirst)
{
    Segmentation mesh = meshOf({0, 0, 0}, {7, 3, 1}, {3.5F, 1.5F, 0.5F});
    fitMesh(mesh, MeshFit::Voxels, StackGeometry::of(8, 4, 2, 1024));
    expectVertex(mesh.facets[0].vertices[0], {-0.875, 0.375, 0.125});
    expectVertex(mesh.facets[0].vertices[1], {0.875, -0.375, -0.125});
    expectVertex(mesh.facets[0].vertices[2], {0, 0, 0});
    EXPECT_EQ(mesh.facets[0].normal, (Vector3f{1, -2, -3}));
}

/// 5 voxels in 8 have one empty voxel before them: the first is the second of eight.
TEST(MeshFit, PaddingCounts)
{
    Segmentation mesh = meshOf({0, 0, 0}, {1, 1, 1}, {4, 4, 4});
    fitMesh(mesh, MeshFit::Voxels, StackGeometry::of(5, 5, 5, 1024));
    expectVertex(mesh.facets[0].vertices[0], {-0.625, 0.625, 0.625});
    expectVertex(mesh.facets[0].vertices[2], {0.375, -0.375, -0.375});
}

TEST(MeshFit, MicronsCountFromTheOuterCorner)
{
    Segmentation mesh = meshOf({0, 0, 0}, {4, 4, 8}, {0.25F, 0.5F, 2});
    fitMesh(mesh, MeshFit::Microns, StackGeometry::of(8, 4, 2, 1024), {0.5, 1, 4});
    expectVertex(mesh.facets[0].vertices[0], {-1, 0.5, 0.25});
    expectVertex(mesh.facets[0].vertices[1], {1, -0.5, -0.25});
    // The middle of the first voxel.
    expectVertex(mesh.facets[0].vertices[2], {-0.875, 0.375, 0.125});
}

TEST(DrawnVoxelSize, HasTheStepBetweenLayersAndNeedsAllSides)
{
    ImageAttributes stack;
    stack.dimX = 0.5;
    stack.dimY = 0.25;
    stack.dimZ = 1.5;
    EXPECT_EQ(drawnVoxelSize(stack, 1), (std::array{0.5, 0.25, 1.5}));
    EXPECT_EQ(drawnVoxelSize(stack, 3), (std::array{0.5, 0.25, 4.5}));
    stack.dimY = 0;
    EXPECT_EQ(drawnVoxelSize(stack, 1), std::nullopt);
    stack.dimY = std::nan("");
    EXPECT_EQ(drawnVoxelSize(stack, 1), std::nullopt);
}

} // namespace
} // namespace tirn
