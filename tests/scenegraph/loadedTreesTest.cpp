// Trees as a load builds them: the marks of attaching the children one by one, and a million
// nested nodes loaded in linear time on a 1 MiB stack, leaving a tree every walk can take.

#include "scenegraph/zuSpatialRecords.h"
#include "support/zuFactoryTest.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace zu::test {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t DEPTH = 100000;  // sanitized objects are several times larger
#elif defined(__has_feature)
constexpr uint64_t DEPTH = __has_feature(address_sanitizer) ? 100000 : 1000000;
#else
constexpr uint64_t DEPTH = 1000000;
#endif

using LoadedTrees = zuFactoryTest;

TEST_F(LoadedTrees, AMillionNestedNodesLoadOnA1MiBStackAndEveryWalkTakesWhatIsKept)
{
    // Before the tree pass, cutting this chain at the depth limit overflowed the stack, and
    // linking it took time quadratic in its depth (16,384 nodes: 2.9 s).
    zuBytes record;
    appendRecord(record, "zuCore.zuNode", 0, nodeBody(SpatialPart(), {0}, V6_32), V6_32);
    const size_t size = record.size();
    std::vector<char> chain(13 + DEPTH * size);
    std::memcpy(chain.data(), "\x09\0\0\0Top Level", 13);
    for (uint64_t k = 0; k < DEPTH; ++k) {
        char* at = chain.data() + 13 + k * size;
        const uint64_t self = 16 * k + 16, child = k + 1 < DEPTH ? self + 16 : 0;
        std::memcpy(at, record.bytes().data(), size);
        std::memcpy(at + 4 + 13 + 4, &self, 8);
        std::memcpy(at + size - 8, &child, 8);
    }
    runOnStack(1 << 20, [&] {
        zuBaseStream stream;
        stream.SetVersion(V6_32);
        ASSERT_TRUE(stream.Load(chain.data(), chain.size()));
        auto* root = static_cast<zuNode*>(stream.GetObjectAt(0));
        // The top of the chain, down to the depth limit; the rest was cut off and freed.
        EXPECT_EQ(chainDepth(root), zuNode::MAX_LOADED_DEPTH + 1);
        EXPECT_TRUE(hasMasks(root, zuSpatial::UPDATE_WORLD_DATA, zuSpatial::UPDATE_WORLD_DATA));
        root->UpdateGS();
        root->UpdateGS_Flags();
        zuPointer<zuCamera> camera = new zuCamera;
        zuCuller culler;
        culler.SetCamera(camera);
        culler.ComputeVisibleSet(root, nullptr, false);
        EXPECT_EQ(root->GetObjectByName("absent"), nullptr);
        EXPECT_EQ(root->removeNullChildren(true, false), 1);
        EXPECT_FALSE(root->UpdateSubtreeControllers(0.0));
        root->setDirtyDown(true);
        root->Clean_Flags();
        // The kept nodes' records, the last without the slot it lost.
        EXPECT_EQ(saveToBytes({root}, V6_32).size(), 13 + (zuNode::MAX_LOADED_DEPTH + 1) * size - 8);
    });
}

TEST_F(LoadedTrees, ALoadedTreeCarriesTheMarksOfAttachingItsChildrenOneByOne)
{
    std::mt19937 random(7);
    const std::function<zuSpatial*()> kinds[] = {[] { return new zuNode; }, [] { return new zuCameraNode; },
                                                 [] { return new zuLODNode; }, [] { return new zuDummy; },
                                                 [] { return new zuTriMesh; }};
    for (int round = 0; round < 20; ++round) {
        // Slots made at once, then filled parents first with setChild, as loads once linked.
        zuPointer<zuNode> root = new zuNode;
        std::vector<zuNode*> open{root};
        for (size_t next = 0; next < open.size() && open.size() < 60; ++next) {
            open[next]->setNbChildren(static_cast<int>(random() % 5));
            for (int i = 0; i < open[next]->getNbChildren(); ++i) {
                zuSpatial* child = random() % 6 ? kinds[random() % 5]() : nullptr;
                open[next]->setChild(i, child);
                if (child && child->IsDerived(zuNode::TYPE))
                    open.push_back(static_cast<zuNode*>(child));
            }
        }
        Loaded loaded(saveToBytes({root.get()}, V6_32), V6_32);
        std::vector<std::pair<const zuSpatial*, const zuSpatial*>> pairs{{root, loaded.top<zuSpatial>(0)}};
        while (!pairs.empty()) {
            const auto [built, copy] = pairs.back();
            pairs.pop_back();
            ASSERT_TRUE(copy && &built->GetType() == &copy->GetType());
            EXPECT_TRUE(hasMasks(copy, built->GetDirtyMask(), built->GetUpdateMask())) << round;
            if (built->IsDerived(zuNode::TYPE))
                for (int i = 0; i < static_cast<const zuNode*>(built)->getNbChildren(); ++i)
                    if (const zuSpatial* child = static_cast<const zuNode*>(built)->getChild(i))
                        pairs.emplace_back(child, static_cast<const zuNode*>(copy)->getChild(i));
        }
    }
}

} // namespace
} // namespace zu::test
