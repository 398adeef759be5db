// Contact between triangles, meshes and subtrees, and the camera that stops or slides at
// a distance from the scene.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuCollisionCameraUpdater.h>
#include <zuSceneGraph/spatial/zuCollisionGroup.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace zu::test {
namespace {

using V = Wm4::Vector3<float>;

TEST(zuTriangleQueries, TrianglesMeetWhenTheyCrossTouchOrOverlapInOnePlane)
{
    const V base[3] = {V(0, 0, 0), V(2, 0, 0), V(0, 2, 0)};
    const struct {
        const char* name;
        V other[3];
        bool meet;
    } cases[] = {
        {"crossing", {V(0.5f, 0.5f, -1), V(0.5f, 0.5f, 1), V(3, 3, 0)}, true},
        {"above", {V(0.5f, 0.5f, 0.1f), V(1, 0.5f, 1), V(0.5f, 1, 1)}, false},
        {"corner on the face", {V(0.5f, 0.5f, 0), V(1, 1, 1), V(0, 1, 1)}, true},
        {"edge against edge", {V(1, -1, 0), V(1, 1, 0), V(1, 0, 1)}, true},
        {"beside the hypotenuse", {V(1.1f, 1.1f, -1), V(1.1f, 1.1f, 1), V(3, 3, 0)}, false},
        {"coplanar overlapping", {V(1, 0.5f, 0), V(3, 0.5f, 0), V(1, 3, 0)}, true},
        {"coplanar apart", {V(1.5f, 1.5f, 0), V(3, 1.5f, 0), V(1.5f, 3, 0)}, false},
        {"no area, crossing", {V(0.5f, 0.5f, -1), V(0.5f, 0.5f, 0), V(0.5f, 0.5f, 1)}, true},
        {"no area, beside", {V(-0.5f, 0.5f, -1), V(-0.5f, 0.5f, 0), V(-0.5f, 0.5f, 1)}, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(zuTriangleQueries::overlap(base, c.other), c.meet) << c.name;
        EXPECT_EQ(zuTriangleQueries::overlap(c.other, base), c.meet) << c.name;
    }
}

// The unit cube under a node placed by `local`.
zuPointer<zuNode> placedCube(const zuGenericTransformation<float>& local)
{
    zuPointer<zuNode> node = new zuNode;
    node->attachChild(zusg::W1Assembly::makeCube());
    node->SetLocalTransform(local);
    node->UpdateGS();
    return node;
}

zuTriangles* cubeOf(zuNode* node)
{
    return static_cast<zuTriangles*>(node->getChild(0));
}

// Every triangle against every triangle, the second mesh placed as the trees place it.
std::set<std::pair<int, int>> bruteForce(zuTriangles* a, zuTriangles* b)
{
    zuBVTree::Placement placement;
    EXPECT_TRUE(placement.Set(a->GetWorldTransform(), b->GetWorldTransform()));
    const zuMeshTriangles ta(a), tb(b);
    std::set<std::pair<int, int>> pairs;
    for (int i = 0; i < ta.GetTriangleQuantity(); ++i)
        for (int j = 0; j < tb.GetTriangleQuantity(); ++j) {
            V p[3], q[3];
            ta.GetTriangle(i, p[0], p[1], p[2]);
            tb.GetTriangle(j, q[0], q[1], q[2]);
            for (V& corner : q)
                corner = placement.Apply(corner);
            if (zuTriangleQueries::overlap(p, q))
                pairs.emplace(i, j);
        }
    return pairs;
}

TEST(zuCollisionGroup, ReportsTheTrianglePairsThatMeetAsTestingEveryPairDoes)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    int touching = 0;
    for (zuBVTree::Kind kind : {zuBVTree::BOX, zuBVTree::SPHERE})
        for (int trial = 0; trial < 60; ++trial) {
            zuGenericTransformation<float> local;
            V axis(unit(random), unit(random), unit(random));
            axis.Normalize();
            local.SetRotate(Wm4::Matrix3<float>(axis, 3 * unit(random)));
            if (trial % 3 == 1)
                local.SetScale(V(1.5f, 0.5f, 1.0f));
            else if (trial % 3 == 2)
                local.SetMatrix(Wm4::Matrix3<float>(1.0f, 0.3f, 0.0f, 0.0f, 0.8f, 0.0f, 0.2f, 0.0f, 1.1f));
            local.SetTranslate(V(unit(random), unit(random), unit(random)));
            zuPointer<zuNode> a = placedCube(zuGenericTransformation<float>()), b = placedCube(local);
            zuCollisionGroup group;
            group.SetTreeKind(kind);
            group.AddObject(a);
            group.AddObject(b);
            const std::set<std::pair<int, int>> expected = bruteForce(cubeOf(a), cubeOf(b));
            ASSERT_EQ(group.Test(), !expected.empty()) << trial;
            touching += expected.empty() ? 0 : 1;
            if (expected.empty())
                continue;
            ASSERT_EQ(group.GetContacts().size(), 1u);
            const zuCollisionGroup::Contact& contact = group.GetContacts()[0];
            EXPECT_EQ(contact.leaf0, cubeOf(a));
            const std::set<std::pair<int, int>> found(contact.triangles.begin(), contact.triangles.end());
            EXPECT_EQ(found, expected);
            EXPECT_EQ(contact.triangles.size(), expected.size());  // each pair once
            group.SetReport(zuCollisionGroup::FIRST_CONTACT);
            ASSERT_TRUE(group.TestObject(b));
            ASSERT_EQ(group.GetContacts()[0].triangles.size(), 1u);
            EXPECT_EQ(group.GetContacts()[0].leaf0, cubeOf(b));
        }
    EXPECT_GT(touching, 40);
}

TEST(zuCollisionGroup, SubtreesMeetOthersButNotThemselvesOrWhatTheyHold)
{
    zuGenericTransformation<float> right, far;
    right.SetTranslate(V(0.9f, 0, 0));
    far.SetTranslate(V(5, 0, 0));
    zuPointer<zuNode> scene = new zuNode;
    zuPointer<zuNode> left = placedCube(zuGenericTransformation<float>()), touching = placedCube(right),
                      apart = placedCube(far);
    for (zuNode* part : {left.get(), touching.get(), apart.get()})
        scene->attachChild(part);
    scene->UpdateGS();
    zuCollisionGroup group;
    for (zuSpatial* object : std::initializer_list<zuSpatial*>{scene, left, touching, apart})
        EXPECT_TRUE(group.AddObject(object));
    EXPECT_FALSE(group.AddObject(left));
    // The scene holds the others: only left and touching meet.
    ASSERT_TRUE(group.Test());
    ASSERT_EQ(group.GetContacts().size(), 1u);
    EXPECT_EQ(group.GetContacts()[0].leaf0, cubeOf(left));
    EXPECT_EQ(group.GetContacts()[0].leaf1, cubeOf(touching));
    EXPECT_FALSE(group.TestObject(apart));
    // Moved onto the first, the far cube meets it, and only it.
    apart->SetLocalTransform(zuGenericTransformation<float>());
    apart->UpdateGS();
    ASSERT_TRUE(group.TestObject(apart));
    EXPECT_EQ(group.GetContacts().size(), 2u);
    // Hidden parts do not collide.
    touching->SetCullingMode(zuSpatial::CULL_ALWAYS);
    apart->forceIgnore(true, false, false);
    EXPECT_FALSE(group.Test());
}

TEST(zuCollisionCameraUpdater, StopsOrSlidesAtItsDistanceFromTheScene)
{
    // A wall in the plane x = 10, facing the camera.
    zuPointer<zuNode> scene = new zuNode;
    scene->attachChild(new zuTriMesh(
        makeVertices({V(10, -100, -100), V(10, 100, -100), V(10, 100, 100), V(10, -100, 100)}, false),
        makeIndices({0, 1, 2, 0, 2, 3})));
    scene->UpdateGS();
    const struct {
        zuCollisionCameraUpdater::Response response;
        V start, move, end;
        bool collided;
    } cases[] = {
        {zuCollisionCameraUpdater::STOP, V(0, 0, 0), V(20, 0, 0), V(9, 0, 0), true},
        {zuCollisionCameraUpdater::STOP, V(0, 0, 0), V(5, 0, 0), V(5, 0, 0), false},
        {zuCollisionCameraUpdater::STOP, V(0, 0, 0), V(20, 20, 0), V(9, 9, 0), true},
        {zuCollisionCameraUpdater::SLIDE, V(0, 0, 0), V(20, 20, 0), V(9, 20, 0), true},
        {zuCollisionCameraUpdater::SLIDE, V(0, 0, 0), V(20, 0, 0), V(9, 0, 0), true},
        {zuCollisionCameraUpdater::STOP, V(9.5f, 0, 0), V(2, 0, 0), V(9.5f, 0, 0), true},
        {zuCollisionCameraUpdater::SLIDE, V(9.5f, 0, 0), V(2, 3, 0), V(9.5f, 3, 0), true},
        {zuCollisionCameraUpdater::STOP, V(9.5f, 0, 0), V(-2, 0, 0), V(7.5f, 0, 0), false},
    };
    zuPointer<zuCamera> camera = new zuCamera;
    zuCollisionCameraUpdater updater(scene, camera, 1.0f);
    for (const auto& c : cases) {
        updater.SetResponse(c.response);
        camera->SetLocation(c.start);
        const V moved = updater.Move(c.move);
        EXPECT_LT((camera->GetLocation() - c.end).Length(), 1e-4f) << &c - cases;
        EXPECT_LT((moved - (c.end - c.start)).Length(), 1e-4f) << &c - cases;
        EXPECT_EQ(updater.HasCollided(), c.collided) << &c - cases;
    }
}

} // namespace
} // namespace zu::test
