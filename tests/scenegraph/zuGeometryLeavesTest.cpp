// The leaves: triangles over their buffers, area-weighted vertex normals against values
// computed by hand, inversion, lines, points, and the geometry's transparency class and
// description, with and without states.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"

#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuMaterialState.h>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace zu::test {
namespace {

using GeometryLeaves = zuFactoryTest;

void expectVector(const Vec& actual, const Vec& expected, const char* what, int i)
{
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(actual[c], expected[c], 1e-6f) << what << " " << i << " component " << c;
}

std::vector<std::tuple<int, int, int>> trianglesOf(const zuTriangles& mesh)
{
    std::vector<std::tuple<int, int, int>> triangles;
    for (int t = 0; t < mesh.GetTriangleQuantity(); ++t) {
        int a = -1, b = -1, c = -1;
        EXPECT_TRUE(mesh.GetTriangle(t, a, b, c));
        triangles.emplace_back(a, b, c);
    }
    return triangles;
}

// ---------------------------------------------------------------------------------------
// Triangles

TEST_F(GeometryLeaves, TrianglesAreIndexTriplesOrVertexTriples)
{
    zuPointer<zuTriangles> triangles = new zuTriangles(makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, false),
                                                       makeIndices({0, 1, 2, 2, 1, 3, 0}, zuIndexBuffer::INDEX_16));
    // The trailing index makes no triangle.
    EXPECT_EQ(triangles->GetTriangleQuantity(), 2);
    EXPECT_EQ(trianglesOf(*triangles), (std::vector<std::tuple<int, int, int>>{{0, 1, 2}, {2, 1, 3}}));
    int a = 7, b = 8, c = 9;
    EXPECT_FALSE(triangles->GetTriangle(2, a, b, c));
    EXPECT_FALSE(triangles->GetTriangle(-1, a, b, c));
    EXPECT_EQ(std::make_tuple(a, b, c), std::make_tuple(7, 8, 9));

    // Indices left in their file: the count is known, the triangles are not.
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(triangles->GetIndices(), true));
    EXPECT_TRUE(triangles->GetTriangleQuantity() == 2 && !triangles->GetTriangle(0, a, b, c));

    // Without indices, the vertices in threes.
    triangles->SetIndices(nullptr);
    triangles->SetVertices(makeVertices(std::vector<Vec>(7, Vec(0, 0, 0)), false));
    EXPECT_EQ(trianglesOf(*triangles), (std::vector<std::tuple<int, int, int>>{{0, 1, 2}, {3, 4, 5}}));
    triangles->SetVertices(nullptr);
    EXPECT_EQ(triangles->GetTriangleQuantity(), 0);
}

// ---------------------------------------------------------------------------------------
// Normals and inversion

TEST_F(GeometryLeaves, NormalsOfAKnownMeshAreWeightedByArea)
{
    // Triangle (0, 1, 2) lies in z = 0 with area 2: (p1 - p0) x (p2 - p0) = (0, 0, 4).
    // Triangle (0, 3, 1) lies in y = 0 with area 1: (p3 - p0) x (p1 - p0) = (0, 2, 0).
    // Vertices 0 and 1 share both: (0, 2, 4) / sqrt(20); vertex 2 gets (0, 0, 1), vertex 3
    // (0, 1, 0). Unweighted normals would give (0, 1, 1) / sqrt(2) for vertices 0 and 1.
    // Vertex 4 belongs to no triangle; the degenerate triangle (2, 2, 3) adds nothing, the
    // one with index 9 (no such vertex) is skipped.
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 1}, {5, 5, 5}}, true);
    for (int i = 0; i < 5; ++i)
        vertices->Normal3(i) = Vec(9, 9, 9);
    zuPointer<zuTriMesh> mesh = new zuTriMesh(vertices, makeIndices({0, 1, 2, 0, 3, 1, 2, 2, 3, 0, 9, 1}));
    mesh->UpdateModelNormals();
    const float r = 1.0f / std::sqrt(20.0f);
    const Vec expected[5] = {{0, 2 * r, 4 * r}, {0, 2 * r, 4 * r}, {0, 0, 1}, {0, 1, 0}, {0, 0, 0}};
    for (int i = 0; i < 5; ++i)
        expectVector(vertices->Normal3(i), expected[i], "normal", i);
}

TEST_F(GeometryLeaves, NormalsNeedANormalChannelAndResidentBuffers)
{
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, false);
    const std::vector<char> before(vertices->GetData(), vertices->GetData() + vertices->GetDataSize());
    zuPointer<zuTriMesh> mesh = new zuTriMesh(vertices, nullptr);
    mesh->UpdateModelNormals();
    EXPECT_EQ(std::vector<char>(vertices->GetData(), vertices->GetData() + vertices->GetDataSize()), before);

    // Indices that are not in memory: the normals stay as they are.
    zuPointer<zuVertexBuffer> withNormals = makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, true);
    zuPointer<zuIndexBuffer> indices = makeIndices({0, 1, 2});
    mesh = new zuTriMesh(withNormals, indices);
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(indices, true));
    mesh->UpdateModelNormals();
    expectVector(withNormals->Normal3(0), Vec(0, 0, 0), "normal", 0);
}

TEST_F(GeometryLeaves, InvertingSwapsTheLastTwoCornersAndNegatesTheNormals)
{
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, true);
    for (int i = 0; i < 4; ++i)
        vertices->Normal3(i) = Vec(0.5f, 0, static_cast<float>(i));
    zuPointer<zuTriMesh> mesh = new zuTriMesh(vertices, makeIndices({0, 1, 2, 2, 1, 3}));
    // Inverting alone: the normals are negated, not recomputed.
    mesh->UpdateMS(true, true, 0);
    EXPECT_EQ(trianglesOf(*mesh), (std::vector<std::tuple<int, int, int>>{{0, 2, 1}, {2, 3, 1}}));
    for (int i = 0; i < 4; ++i)
        expectVector(vertices->Normal3(i), Vec(-0.5f, 0, -static_cast<float>(i)), "normal", i);
    // Recomputed normals of the inverted mesh point down.
    mesh->UpdateModelNormals();
    expectVector(vertices->Normal3(3), Vec(0, 0, -1), "normal", 3);

    // Without indices the vertices themselves change places, normals and all.
    zuPointer<zuVertexBuffer> soup = makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {7, 7, 7}}, true);
    soup->Normal3(1) = Vec(0, 0, 1);
    soup->Normal3(2) = Vec(0, 1, 0);
    zuPointer<zuTriMesh> unindexed = new zuTriMesh(soup, nullptr);
    unindexed->UpdateModelInvert(0);
    expectVector(soup->Position3(1), Vec(0, 1, 0), "position", 1);
    expectVector(soup->Position3(2), Vec(1, 0, 0), "position", 2);
    expectVector(soup->Normal3(1), Vec(0, -1, 0), "normal", 1);
    expectVector(soup->Normal3(2), Vec(0, 0, -1), "normal", 2);
    // The vertex after the last whole triangle keeps its place.
    expectVector(soup->Position3(3), Vec(7, 7, 7), "position", 3);
}

// ---------------------------------------------------------------------------------------
// Lines and points

TEST_F(GeometryLeaves, LinesAreSegmentsOrAStrip)
{
    zuPointer<zuLine> line = new zuLine(makeVertices(std::vector<Vec>(6, Vec(0, 0, 0)), false),
                                        makeIndices({5, 4, 3, 2, 1}));
    EXPECT_TRUE(line->GetLineType() == zuLine::SEGMENTS && line->GetSegmentQuantity() == 2);
    int a = -1, b = -1;
    ASSERT_TRUE(line->GetSegment(1, a, b));
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(3, 2));
    EXPECT_FALSE(line->GetSegment(2, a, b));

    line->SetLineType(zuLine::STRIP);
    EXPECT_EQ(line->GetSegmentQuantity(), 4);
    ASSERT_TRUE(line->GetSegment(3, a, b));
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(2, 1));
    EXPECT_FALSE(line->GetSegment(4, a, b));

    // Without indices, the vertices; a strip of one vertex has no segment.
    line->SetIndices(nullptr);
    EXPECT_EQ(line->GetSegmentQuantity(), 5);
    ASSERT_TRUE(line->GetSegment(4, a, b));
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(4, 5));
    line->SetVertices(makeVertices({{0, 0, 0}}, false));
    EXPECT_EQ(line->GetSegmentQuantity(), 0);
}

TEST_F(GeometryLeaves, PointsAreTheIndicesOrTheVertices)
{
    zuPointer<zuPoint> points = new zuPoint(makeVertices({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, false), makeIndices({2, 0}));
    EXPECT_TRUE(points->GetPointQuantity() == 2 && points->GetPoint(0) == 2 && points->GetPoint(2) == -1);
    EXPECT_EQ(points->GetModelBound(), zuBoundingVolume(Vec(1, 1, 1), Vec(1, 1, 1)));
    points->SetIndices(nullptr);
    EXPECT_TRUE(points->GetPointQuantity() == 3 && points->GetPoint(2) == 2);
}

// ---------------------------------------------------------------------------------------
// Geometry

TEST_F(GeometryLeaves, TransparencyClassFollowsTranslucencyOpacityMapAndFlagBit4)
{
    zuPointer<zuGeometry> geometry = new zuGeometry;
    const uint32_t T = zuGeometry::DESCRIPTION_TRANSLUCENT;
    const uint32_t O = zuGeometry::DESCRIPTION_OPACITY_MAP;
    struct Case {
        uint32_t description;
        uint32_t flags;
        int expected;
    };
    const Case cases[] = {
        {0, 4, 0}, {0, 0, 0}, {O, 4, 3}, {O, 0, 3},
        {T, 0, 2}, {T | O, 0, 2}, {T | O, 4, 2}, {T, 4, 1},
        // Other bits play no part: bits 0-3 of the flags word besides 0x4, other
        // description flags.
        {T | 0x1, 0xB, 2}, {T | 0x8000, 0xF, 1},
    };
    for (const Case& c : cases) {
        geometry->setDescriptionFlags(c.description);
        geometry->setFlags(c.flags);
        EXPECT_EQ(geometry->getMeshTransparency(), c.expected)
            << "description " << std::hex << c.description << " flags " << c.flags;
    }
}

TEST_F(GeometryLeaves, DescriptionComesFromTheMaterialAndTheTextureRoles)
{
    // Without states only the application's flags stay.
    zuPointer<zuGeometry> geometry = new zuGeometry;
    geometry->setDescriptionFlags(zuGeometry::DESCRIPTION_DIFFUSE_MAP | zuGeometry::DESCRIPTION_TRANSLUCENT | 0x80000000u);
    geometry->updateObjectDescription();
    EXPECT_EQ(geometry->getDescriptionFlags(), 0x80000000u);
    EXPECT_TRUE(geometry->getShaderDefines().empty() && geometry->getShaderKey().empty());

    geometry->setDescriptionFlags(0);
    zuPointer<zuMaterialState> material = new zuMaterialState;
    material->Opacity = 0.5f;
    geometry->setGlobalState(material);
    EXPECT_EQ(geometry->getDescriptionFlags(), zuGeometry::DESCRIPTION_MATERIAL | zuGeometry::DESCRIPTION_TRANSLUCENT);
    EXPECT_EQ(geometry->getMeshTransparency(), 1);
    // Bump before diffuse in the state: the defines still come diffuse first, once each.
    geometry->setGlobalState(texturesWith({zuTexture::CH_BUMP, zuTexture::CH_DIFFUSE, zuTexture::CH_BUMP}));
    EXPECT_EQ(geometry->getShaderDefines(), "#define DIFFUSE_MAP\n#define BUMP_MAP\n");
    EXPECT_EQ(geometry->getShaderKey(), "DiffBump");
    EXPECT_TRUE(geometry->hasDescriptionFlag(zuGeometry::DESCRIPTION_DIFFUSE_MAP | zuGeometry::DESCRIPTION_BUMP_MAP));
    // An opaque material with an opacity map.
    material->Opacity = 1.0f;
    geometry->setGlobalState(texturesWith({zuTexture::CH_OPACITY}));
    EXPECT_EQ(geometry->getShaderKey(), "");
    EXPECT_EQ(geometry->getDescriptionFlags(), zuGeometry::DESCRIPTION_MATERIAL | zuGeometry::DESCRIPTION_OPACITY_MAP);
    EXPECT_EQ(geometry->getMeshTransparency(), 3);

    // The application's own shader part, not repeated when composed again.
    zuPointer<zuGenericGeometry> generic = new zuGenericGeometry;
    generic->setUserShader("#define SECTION_COLOR\n", "Sect");
    EXPECT_EQ(generic->getShaderDefines(), "#define SECTION_COLOR\n");
    generic->updateObjectDescription();
    EXPECT_EQ(generic->getShaderKey(), "Sect");
}

} // namespace
} // namespace zu::test
