// The level-of-detail builder: meshes of a subtree replaced in collection order, the
// functor's levels, the hand-over of every second controller, and the cases it leaves
// alone.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLODBuilder.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zu::test {
namespace {

using LODBuilder = zuFactoryTest;

zuPointer<zuTriMesh> namedMesh(const std::string& name)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh(makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, false), makeIndices({0, 1, 2}));
    mesh->SetName(name);
    return mesh;
}

std::vector<std::string> controllerNames(const zuObject* object)
{
    std::vector<std::string> names;
    for (int i = 0; i < object->GetControllerQuantity(); ++i)
        names.push_back(object->GetController(i)->GetName());
    return names;
}

// Attaches the mesh as the near level and a coarser mesh on the same vertices as the far
// one, and records the calls.
struct TwoLevels {
    std::vector<std::pair<zuLODNode*, std::string>> calls;
    std::vector<zuPointer<zuTriMesh>> coarse;
    zuLODBuilder::SimplifyFunctor functor()
    {
        return [this](zuLODNode* lod, zuTriMesh* mesh) {
            calls.emplace_back(lod, mesh->GetName());
            EXPECT_EQ(lod->getNbChildren(), 0);
            EXPECT_EQ(mesh->GetParent(), nullptr);
            coarse.emplace_back(new zuTriMesh(mesh->GetVertices(), nullptr));
            lod->attachLODChild(0, mesh);
            lod->attachLODChild(1, coarse.back());
        };
    }
};

TEST_F(LODBuilder, EveryMeshOfASubtreeTakesALevelOfDetailNodeInItsSlot)
{
    // root: [group, c]; group: [a, x, b, edge]; x: [d].
    zuPointer<zuNode> root = new zuNode, group = new zuNode, x = new zuNode;
    zuPointer<zuTriMesh> a = namedMesh("a"), b = namedMesh("b"), c = namedMesh("c");
    zuPointer<zuGeometry> d = new zuGeometry;
    d->SetName("d");
    zuPointer<zuLine> edge = new zuLine;
    attachAll(root, {group, c});
    attachAll(group, {a, x, b, edge});
    x->attachChild(d);

    TwoLevels levels;
    zuLODBuilder::BuildLOD(root.get(), levels.functor());
    ASSERT_EQ(levels.calls.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(levels.calls[i].second, std::string(1, "adbc"[i]));

    const std::pair<zuNode*, int> slots[] = {{group, 0}, {x, 0}, {group, 2}, {root, 1}};
    const zuSpatial* meshes[] = {a, d, b, c};
    for (int i = 0; i < 4; ++i) {
        zuSpatial* slot = slots[i].first->getChild(slots[i].second);
        ASSERT_TRUE(slot && slot->IsDerived(zuLODNode::TYPE)) << i;
        EXPECT_EQ(slot, levels.calls[static_cast<size_t>(i)].first) << i;
        EXPECT_EQ(slot->GetParent(), slots[i].first) << i;
        const auto* lod = static_cast<const zuLODNode*>(slot);
        EXPECT_EQ(lod->getChild(0), meshes[i]) << i;
        EXPECT_EQ(meshes[i]->GetParent(), lod) << i;
        EXPECT_EQ(lod->getChild(1), levels.coarse[static_cast<size_t>(i)].get()) << i;
    }
    // Not a triangle mesh: left alone.
    EXPECT_TRUE(group->getChild(3) == edge.get() && group->getChild(1) == x.get());

    // A mesh whose parent is a level-of-detail node already is not replaced again, nor one
    // without a parent.
    zuLODBuilder::BuildLOD(a.get(), levels.functor());
    zuLODBuilder::BuildLOD(root.get(), levels.functor());
    zuPointer<zuTriMesh> alone = namedMesh("alone");
    zuLODBuilder::BuildLOD(alone.get(), levels.functor());
    zuLODBuilder::BuildLOD(static_cast<zuTriMesh*>(nullptr), levels.functor());
    zuLODBuilder::BuildLOD(static_cast<zuNode*>(nullptr), levels.functor());
    EXPECT_TRUE(levels.calls.size() == 4u && !alone->GetParent());
}

TEST_F(LODBuilder, EverySecondControllerMovesToTheNode)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTriMesh> mesh = namedMesh("mesh");
    root->attachChild(mesh);
    std::vector<zuPointer<zuTestController>> controllers;
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        controllers.push_back(new zuTestController);
        controllers.back()->SetName(name);
        mesh->AttachController(controllers.back());
    }

    TwoLevels levels;
    zuLODBuilder::BuildLOD(mesh.get(), levels.functor());
    ASSERT_EQ(levels.calls.size(), 1u);
    const zuLODNode* lod = levels.calls[0].first;
    // Detaching shifts the later controllers down while the index advances.
    EXPECT_EQ(controllerNames(lod), (std::vector<std::string>{"a", "c", "e"}));
    EXPECT_EQ(controllerNames(mesh), (std::vector<std::string>{"b", "d"}));
    EXPECT_TRUE(controllers[0]->GetObject() == lod && controllers[1]->GetObject() == mesh.get()
                && controllers[4]->GetObject() == lod);

    // A controller only the mesh held survives the move.
    zuPointer<zuTriMesh> other = namedMesh("other");
    root->attachChild(other);
    other->AttachController(new zuTestController);
    zuLODBuilder::BuildLOD(other.get(), levels.functor());
    ASSERT_EQ(levels.calls.size(), 2u);
    ASSERT_EQ(levels.calls[1].first->GetControllerQuantity(), 1);
    EXPECT_EQ(levels.calls[1].first->GetController(0)->GetObject(), levels.calls[1].first);
}

} // namespace
} // namespace zu::test

