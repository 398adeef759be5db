#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/spatial/zuBVTree.h>

#include <memory>
#include <utility>
#include <vector>

namespace zu {

class zuBVTreeCache;
class zuTriangles;

// Contact between subtrees of a scene: the objects of a group are tested pair by pair,
// world bounds first (descending both hierarchies), then the bounding-volume trees of two
// meshes against each other, then their triangles. Triangles that touch are in contact.
// Only triangle meshes collide; lines and points do not. Subtrees are not tested against
// themselves, and an object is not tested against one that contains it or that it
// contains. World transformations and bounds must be up to date (UpdateGS).
//
// Every pair of leaves in contact is reported with the pairs of their triangles that meet
// (ALL_CONTACTS, the default), or only the first pair of triangles found (FIRST_CONTACT:
// the answer to "does anything touch?", the fastest). A contact names the leaf of the
// object added first as its first leaf.
//
// Hidden objects (ignored or culled always) are skipped unless SetSkipHidden(false). Leaves
// whose blocks are not in memory are read back through zuRendererInterface::LoadCPUData
// (they stay in memory) unless SetReadBack(false), which skips them.
//
// The group holds a reference to each of its objects. One thread at a time.
class zuCollisionGroup {
public:
    enum Report {
        ALL_CONTACTS,
        FIRST_CONTACT
    };

    struct Contact {
        zuTriangles* leaf0 = nullptr;
        zuTriangles* leaf1 = nullptr;
        // (triangle of leaf0, triangle of leaf1), each pair once.
        std::vector<std::pair<int, int>> triangles;
    };

    explicit zuCollisionGroup(std::shared_ptr<zuBVTreeCache> cache = nullptr);
    ~zuCollisionGroup();

    // Adds a subtree; false (nothing added) for null or an object already in the group.
    bool AddObject(zuSpatial* object);
    bool RemoveObject(zuSpatial* object);
    void RemoveAllObjects();
    int GetObjectQuantity() const { return static_cast<int>(mObjects.size()); }
    zuSpatial* GetObject(int i) const
    {
        return i >= 0 && i < GetObjectQuantity() ? mObjects[static_cast<size_t>(i)].get() : nullptr;
    }

    void SetReport(Report report) { mReport = report; }
    Report GetReport() const { return mReport; }
    void SetTreeKind(zuBVTree::Kind kind) { mTreeKind = kind; }
    zuBVTree::Kind GetTreeKind() const { return mTreeKind; }
    void SetSkipHidden(bool skip) { mSkipHidden = skip; }
    void SetReadBack(bool readBack) { mReadBack = readBack; }
    zuBVTreeCache& GetCache() const { return *mCache; }

    // Tests every pair of objects of the group; true when any are in contact.
    bool Test();
    // Tests one object (moved since the last update, say; in the group or not) against every
    // other object of the group; true when it touches any. Its leaves are leaf0.
    bool TestObject(zuSpatial* moving);
    // The contacts of the last test.
    const std::vector<Contact>& GetContacts() const { return mContacts; }

private:
    bool isWalked(const zuSpatial* object) const;
    // The pair walk over two subtrees; false once FIRST_CONTACT has its contact.
    bool testPair(zuSpatial* a, zuSpatial* b);
    void testMeshes(zuTriangles* a, zuTriangles* b);
    bool isResident(zuTriangles* mesh);

    std::shared_ptr<zuBVTreeCache> mCache;
    std::vector<zuPointer<zuSpatial>> mObjects;
    Report mReport = ALL_CONTACTS;
    zuBVTree::Kind mTreeKind = zuBVTree::BOX;
    bool mSkipHidden = true;
    bool mReadBack = true;
    std::vector<Contact> mContacts;
    std::vector<std::pair<zuSpatial*, zuSpatial*>> mPairs;
    std::vector<std::pair<int, int>> mTrianglePairs;
};

} // namespace zu
