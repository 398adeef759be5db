// Persistence of the geometry leaves: the exact records around the 6.28, 6.6 and 5.25
// gates, the size of every class, round trips with buffers at every gate, and references
// of the wrong kind in a file.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace zu::test {
namespace {

const zuStreamVersion V6_32(6, 32);
const zuStreamVersion V6_28(6, 28);
const zuStreamVersion V6_20(6, 20);
const zuStreamVersion V6_6(6, 6);
const zuStreamVersion V6_0(6, 0);
const zuStreamVersion V5_25(5, 25);
const zuStreamVersion V5_24(5, 24);

class GeometryStream : public ::testing::Test {
protected:
    zuTestFactories factories;
};

void appendRecord(zuBytes& out, const std::string& type, uint64_t identity, const zuBytes& body,
                  zuStreamVersion version)
{
    out.str(type);
    if (version >= zuStreamVersion(6, 0))
        out.i32(static_cast<int32_t>(4 + type.size() + 4 + 8 + body.size()));
    out.u64(identity).raw(body.bytes().data(), body.size());
}

// A bound in the form of the version: from 6.28 the current one, before it the legacy box.
zuBytes& boundBytes(zuBytes& out, const zuBoundingVolume& bv, zuStreamVersion version)
{
    if (version >= zuStreamVersion(6, 28)) {
        out.f32(bv.GetRadius());
        for (float v : {bv.GetExtents()[0], bv.GetExtents()[1], bv.GetExtents()[2], bv.GetCenter()[0],
                        bv.GetCenter()[1], bv.GetCenter()[2]})
            out.f32(v);
        return out;
    }
    out.u8(0).f32(bv.GetCenter()[0]).f32(bv.GetCenter()[1]).f32(bv.GetCenter()[2]);
    out.f32(1).f32(0).f32(0).f32(0).f32(1).f32(0).f32(0).f32(0).f32(1);
    return out.f32(bv.GetExtents()[0]).f32(bv.GetExtents()[1]).f32(bv.GetExtents()[2]);
}

// The spatial part of a leaf with no controllers, no metadata and no global states, whose
// local and world transformations are the same translation (after 5.12).
void spatialBytes(zuBytes& out, const std::string& name, const Vec& translate, const zuBoundingVolume& worldBound,
                  zuStreamVersion version)
{
    out.str(name).i32(0);
    for (int i = 0; i < 2; ++i)
        transformBytes(out, Wm4::Matrix3<float>::IDENTITY, translate, Vec(1, 1, 1), false, true, true);
    out.i32(0);
    if (version >= zuStreamVersion(6, 6))
        boundBytes(out, worldBound, version);
    else
        out.u8(0).u8(0).u64(0).i32(0);
    out.i32(0);
}

// A record's bytes as saved: the top-level marker, then the record of `size` bytes.
std::vector<char> firstRecord(const std::vector<char>& saved, int size)
{
    const size_t marker = 4 + 9;
    if (saved.size() < marker + static_cast<size_t>(size))
        return {};
    return std::vector<char>(saved.begin() + marker, saved.begin() + static_cast<std::ptrdiff_t>(marker) + size);
}

// The identity a stream writes for an object: the address of its persistable part, which
// the buffers (bindable and loadable first) do not have at their start.
uint64_t ref(const zuRttiInterface* object)
{
    return id(object);
}

// Where two byte strings first differ (their common length when one is a prefix).
size_t firstDifference(const std::vector<char>& a, const std::vector<char>& b)
{
    size_t i = 0;
    while (i < a.size() && i < b.size() && a[i] == b[i])
        ++i;
    return i;
}

int diskUsed(const zuRttiInterface* object, zuStreamVersion version)
{
    zuBaseStream sizer;
    sizer.SetVersion(version);
    return object->GetDiskUsed(sizer);
}

// A mesh at (1, 2, 3) with a quad of two triangles, updated.
zuPointer<zuTriMesh> makeQuad()
{
    zuPointer<zuTriMesh> mesh =
        new zuTriMesh(makeVertices({{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, true), makeIndices({0, 1, 2, 0, 2, 3}));
    mesh->SetName("quad");
    zuGenericTransformation<float> local;
    local.SetTranslate(Vec(1, 2, 3));
    mesh->SetLocalTransform(local);
    mesh->UpdateGS();
    mesh->UpdateModelNormals();
    return mesh;
}

// ---------------------------------------------------------------------------------------
// Exact records

TEST_F(GeometryStream, MeshRecordAt632HoldsTheBoundStatesFlagsAndBuffers)
{
    zuPointer<zuTriMesh> mesh = makeQuad();
    mesh->SetGeometryFlag(1, true);
    zuBytes body;
    spatialBytes(body, "quad", Vec(1, 2, 3), mesh->GetWorldBound(), V6_32);
    boundBytes(body, zuBoundingVolume(Vec(1, 0.5f, 0), Vec(1, 0.5f, 0)), V6_32);
    body.u64(0).u64(0).u8(0).u8(1);
    body.u64(ref(mesh->GetVertices())).u64(ref(mesh->GetIndices()));
    zuBytes expected;
    appendRecord(expected, "zuCore.zuTriMesh", ref(mesh), body, V6_32);

    // Header 32, name 8, controllers 4, transformations 126, culling mode 4, world bound
    // 28, metadata 4; model bound 28, two state references, two flags, two buffers.
    ASSERT_EQ(diskUsed(mesh, V6_32), 32 + 8 + 4 + 126 + 4 + 28 + 4 + 28 + 16 + 2 + 16);
    const std::vector<char> saved = saveToBytes({mesh}, V6_32);
    EXPECT_EQ(firstRecord(saved, diskUsed(mesh, V6_32)), expected.bytes())
        << "first difference at " << firstDifference(firstRecord(saved, diskUsed(mesh, V6_32)), expected.bytes());
}

TEST_F(GeometryStream, MeshRecordBefore628HoldsBothBoundsAsLegacyBoxes)
{
    zuPointer<zuTriMesh> mesh = makeQuad();
    for (zuStreamVersion version : {V6_20, V6_6}) {
        zuBytes body;
        spatialBytes(body, "quad", Vec(1, 2, 3), mesh->GetWorldBound(), version);
        boundBytes(body, mesh->GetModelBound(), version);
        body.u64(0).u64(0).u8(0).u8(0);
        body.u64(ref(mesh->GetVertices())).u64(ref(mesh->GetIndices()));
        zuBytes expected;
        appendRecord(expected, "zuCore.zuTriMesh", ref(mesh), body, version);
        ASSERT_EQ(diskUsed(mesh, version), 32 + 8 + 4 + 126 + 4 + 61 + 4 + 61 + 16 + 2 + 16);
        const std::vector<char> saved = saveToBytes({mesh}, version);
        EXPECT_EQ(firstRecord(saved, diskUsed(mesh, version)), expected.bytes()) << version.GetMinor();
    }
}

TEST_F(GeometryStream, RecordsBefore66ReferToTheModelBoundAndBefore525AreTheSame)
{
    // Without vertices and never updated, neither bound is valid, so no legacy volume is
    // made and every reference is null or a buffer.
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    mesh->SetName("quad");
    zuGenericTransformation<float> local;
    local.SetTranslate(Vec(1, 2, 3));
    mesh->SetLocalTransform(local);
    mesh->SetWorldTransform(local);
    mesh->SetIndices(makeIndices({0, 1, 2}));
    mesh->SetGeometryFlag(0, true);
    std::vector<char> bodies[2];
    int i = 0;
    for (zuStreamVersion version : {V5_25, V5_24}) {
        zuBytes body;
        spatialBytes(body, "quad", Vec(1, 2, 3), zuBoundingVolume(), version);
        body.u64(0);
        body.u64(0).u64(ref(mesh->GetIndices()));
        zuBytes expected;
        appendRecord(expected, "zuCore.zuTriMesh", ref(mesh), body, version);
        // Header 28 (no size field), the spatial part with two flags, a bound reference and
        // a state count, then the model bound's reference and the buffers.
        ASSERT_EQ(diskUsed(mesh, version), 28 + 8 + 4 + 126 + 4 + 14 + 4 + 8 + 16);
        const std::vector<char> saved = saveToBytes({mesh}, version);
        EXPECT_EQ(firstRecord(saved, diskUsed(mesh, version)), expected.bytes()) << version.GetMinor();
        bodies[i++] = firstRecord(saved, diskUsed(mesh, version));
    }
    EXPECT_EQ(bodies[0], bodies[1]);
    // From 6.0 the record carries its size.
    EXPECT_EQ(diskUsed(mesh, V6_0), diskUsed(mesh, V5_25) + 4);
}

TEST_F(GeometryStream, EachLeafAppendsItsFieldsAfterTheBuffers)
{
    zuPointer<zuTriangles> triangles = new zuTriangles;
    zuPointer<zuGeometry> geometry = new zuGeometry;
    geometry->setFlags(0x12345678);
    zuPointer<zuGenericGeometry> generic = new zuGenericGeometry;
    generic->setFlags(0x4);
    generic->setUserShader("#define SECTION\n", "Sect");
    zuPointer<zuLine> line = new zuLine;
    line->SetLineType(zuLine::STRIP);
    zuPointer<zuPoint> point = new zuPoint;
    point->SetPointSize(2.5f);

    // An unnamed leaf: the spatial part is 170 bytes at 6.32, the geometry part 62.
    const int common = 170 + 62;
    struct Case {
        const zuRttiInterface* leaf;
        zuBytes tail;
    };
    std::vector<Case> cases(5);
    cases[0] = {triangles, zuBytes()};
    cases[1] = {geometry, zuBytes().i32(0x12345678)};
    cases[2] = {generic, zuBytes().i32(4).str("#define SECTION\n").str("Sect")};
    cases[3] = {line, zuBytes().i32(1)};
    cases[4] = {point, zuBytes().f32(2.5f)};
    for (const Case& c : cases) {
        const std::string type = c.leaf->GetType().GetName();
        const int size = diskUsed(c.leaf, V6_32);
        EXPECT_EQ(size, static_cast<int>(4 + type.size() + 4 + 8) + common + static_cast<int>(c.tail.size())) << type;
        const std::vector<char> record = firstRecord(saveToBytes({const_cast<zuRttiInterface*>(c.leaf)}, V6_32), size);
        ASSERT_EQ(record.size(), static_cast<size_t>(size)) << type;
        // The buffer references end the base part; the leaf's own fields follow.
        const std::vector<char> tail(record.end() - static_cast<std::ptrdiff_t>(c.tail.size()), record.end());
        EXPECT_EQ(tail, c.tail.bytes()) << type;
        const std::vector<char> buffers(record.end() - static_cast<std::ptrdiff_t>(c.tail.size() + 16),
                                        record.end() - static_cast<std::ptrdiff_t>(c.tail.size()));
        EXPECT_EQ(buffers, std::vector<char>(16, 0)) << type;
    }
}

// ---------------------------------------------------------------------------------------
// Round trips

struct Loaded {
    zuBaseStream stream;
    bool ok = false;
    Loaded(std::vector<char> bytes, zuStreamVersion version)
    {
        stream.SetVersion(version);
        ok = stream.Load(bytes.data(), bytes.size());
    }
    template <class T> T* top(int i) const
    {
        zuRttiInterface* object = stream.GetObjectAt(i);
        return object && object->IsDerived(T::TYPE) ? static_cast<T*>(object) : nullptr;
    }
};

TEST_F(GeometryStream, EveryLeafRoundTripsWithItsBuffersAtEveryGate)
{
    std::vector<zuPointer<zuBaseGeometry>> leaves;
    leaves.emplace_back(new zuTriangles);
    leaves.emplace_back(new zuTriMesh);
    leaves.emplace_back(new zuGeometry);
    zuPointer<zuGenericGeometry> generic = new zuGenericGeometry;
    generic->setUserShader("#define HIGHLIGHT\n", "High");
    generic->setFlags(0xF);
    leaves.emplace_back(generic.get());
    leaves.emplace_back(new zuLine);
    static_cast<zuLine*>(leaves.back().get())->SetLineType(zuLine::STRIP);
    leaves.emplace_back(new zuPoint);
    static_cast<zuPoint*>(leaves.back().get())->SetPointSize(3);
    zuPointer<zuNode> root = new zuNode;
    root->SetName("root");
    for (size_t i = 0; i < leaves.size(); ++i) {
        zuBaseGeometry* leaf = leaves[i];
        leaf->SetName("leaf " + std::to_string(i));
        leaf->SetVertices(makeVertices({{0, 0, 0}, {1, 2, 3}, {-1, 4, 2}}, true));
        leaf->SetIndices(makeIndices({0, 1, 2}, i % 2 ? zuIndexBuffer::INDEX_16 : zuIndexBuffer::INDEX_32));
        leaf->UpdateModelBound();
        leaf->SetLocalTransform(rsTransform(rotation({0, 0, 1}, 30.0 * static_cast<double>(i)), Vec(2, 2, 2),
                                            Vec(static_cast<float>(i), 0, 0)));
        root->attachChild(leaf);
    }
    root->UpdateGS();

    for (zuStreamVersion version : {V6_32, V6_28, V6_20, V6_6, V6_0, V5_25, V5_24}) {
        SCOPED_TRACE(version.GetMinor());
        const bool flagsKept = version >= V6_6;
        for (const auto& leaf : leaves)
            leaf->SetGeometryFlag(0, flagsKept);
        Loaded loaded(saveToBytes({root}, version), version);
        ASSERT_TRUE(loaded.ok);
        const zuNode* copy = loaded.top<zuNode>(0);
        ASSERT_NE(copy, nullptr);
        ASSERT_EQ(copy->getNbChildren(), static_cast<int>(leaves.size()));
        for (size_t i = 0; i < leaves.size(); ++i) {
            const zuBaseGeometry* original = leaves[i];
            const zuSpatial* child = copy->getChild(static_cast<int>(i));
            ASSERT_TRUE(child && child->IsExactly(original->GetType())) << i;
            const auto* leaf = static_cast<const zuBaseGeometry*>(child);
            EXPECT_TRUE(leaf->Equals(original)) << i;
            EXPECT_EQ(leaf->GetWorldMatrix(), original->GetWorldMatrix()) << i;
            EXPECT_EQ(leaf->GetGeometryFlag(0), flagsKept) << i;
            ASSERT_NE(leaf->GetVertices(), nullptr);
            ASSERT_NE(leaf->GetIndices(), nullptr);
            EXPECT_TRUE(leaf->GetVertices()->Equals(original->GetVertices())) << i;
            EXPECT_TRUE(leaf->GetIndices()->Equals(original->GetIndices())) << i;
            const zuBoundingVolume& bound = leaf->GetModelBound();
            if (version >= V6_6) {
                EXPECT_EQ(bound, original->GetModelBound()) << i;
                EXPECT_TRUE(leaf->isBoundFromBox());
            } else {
                // Old streams hold a sphere round the box; it comes back as the cube about it.
                const float r = original->GetModelBound().GetRadius();
                EXPECT_EQ(bound.GetCenter(), original->GetModelBound().GetCenter()) << i;
                EXPECT_EQ(bound.GetExtents(), Vec(r, r, r)) << i;
                EXPECT_FALSE(leaf->isBoundFromBox());
            }
        }
        EXPECT_EQ(static_cast<const zuGenericGeometry*>(copy->getChild(3))->getShaderKey(), "High");
    }
}

TEST_F(GeometryStream, ReferencesOfTheWrongKindLeaveTheirSlotsEmpty)
{
    zuPointer<zuTriMesh> mesh = makeQuad();
    std::vector<char> saved = saveToBytes({mesh}, V6_32);
    const int size = diskUsed(mesh, V6_32);
    // The buffer references end the record; the state references come 34 bytes before.
    const size_t buffers = 13 + static_cast<size_t>(size) - 16;
    const size_t material = buffers - 18;
    uint64_t vertices = 0;
    uint64_t indices = 0;
    std::memcpy(&vertices, &saved[buffers], 8);
    std::memcpy(&indices, &saved[buffers + 8], 8);
    ASSERT_EQ(vertices, ref(mesh->GetVertices()));
    std::memcpy(&saved[buffers], &indices, 8);
    std::memcpy(&saved[buffers + 8], &vertices, 8);
    std::memcpy(&saved[material], &vertices, 8);
    std::memcpy(&saved[material + 8], &indices, 8);

    Loaded loaded(saved, V6_32);
    ASSERT_TRUE(loaded.ok);
    const zuTriMesh* copy = loaded.top<zuTriMesh>(0);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetVertices(), nullptr);
    EXPECT_EQ(copy->GetIndices(), nullptr);
    EXPECT_EQ(copy->GetMaterialState(), nullptr);
    EXPECT_EQ(copy->GetTextureState(), nullptr);
    EXPECT_EQ(copy->getGlobalStateQuantity(), 0);
}

} // namespace
} // namespace zu::test
