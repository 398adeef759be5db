#include <zuSceneGraph/spatial/zuCollisionGroup.h>

#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>

#include <algorithm>
#include <cmath>

namespace zu {

namespace {

bool boundsMeet(const zuBoundingVolume& a, const zuBoundingVolume& b)
{
    if (!a.isValid() || !b.isValid())
        return false;
    for (int i = 0; i < 3; ++i)
        if (std::fabs(a.GetCenter()[i] - b.GetCenter()[i]) > a.GetExtents()[i] + b.GetExtents()[i])
            return false;
    return true;
}

// Whether `inner` is `outer` or lies below it.
bool contains(const zuSpatial* outer, const zuSpatial* inner)
{
    for (; inner; inner = inner->GetParent())
        if (inner == outer)
            return true;
    return false;
}

} // namespace

zuCollisionGroup::zuCollisionGroup(std::shared_ptr<zuBVTreeCache> cache)
    : mCache(cache ? std::move(cache) : std::make_shared<zuBVTreeCache>())
{
}

zuCollisionGroup::~zuCollisionGroup() = default;

bool zuCollisionGroup::AddObject(zuSpatial* object)
{
    if (!object || std::find(mObjects.begin(), mObjects.end(), object) != mObjects.end())
        return false;
    mObjects.emplace_back(object);
    return true;
}

bool zuCollisionGroup::RemoveObject(zuSpatial* object)
{
    const auto found = std::find(mObjects.begin(), mObjects.end(), object);
    if (found == mObjects.end())
        return false;
    mObjects.erase(found);
    return true;
}

void zuCollisionGroup::RemoveAllObjects()
{
    mObjects.clear();
}

bool zuCollisionGroup::Test()
{
    mContacts.clear();
    for (size_t i = 0; i < mObjects.size(); ++i)
        for (size_t j = i + 1; j < mObjects.size(); ++j) {
            if (contains(mObjects[i], mObjects[j]) || contains(mObjects[j], mObjects[i]))
                continue;
            if (!testPair(mObjects[i], mObjects[j]))
                return true;
        }
    return !mContacts.empty();
}

bool zuCollisionGroup::TestObject(zuSpatial* moving)
{
    mContacts.clear();
    for (const zuPointer<zuSpatial>& other : mObjects) {
        if (contains(other, moving) || contains(moving, other))
            continue;
        if (!testPair(moving, other))
            return true;
    }
    return !mContacts.empty();
}

bool zuCollisionGroup::isWalked(const zuSpatial* object) const
{
    return object && (!mSkipHidden || (!object->isIgnored() && object->GetCullingMode() != zuSpatial::CULL_ALWAYS));
}

bool zuCollisionGroup::testPair(zuSpatial* a, zuSpatial* b)
{
    mPairs.clear();
    mPairs.emplace_back(a, b);
    while (!mPairs.empty()) {
        const auto [x, y] = mPairs.back();
        mPairs.pop_back();
        if (!isWalked(x) || !isWalked(y) || !boundsMeet(x->GetWorldBound(), y->GetWorldBound()))
            continue;
        zuNode* nodeX = dynamic_cast<zuNode*>(x);
        zuNode* nodeY = dynamic_cast<zuNode*>(y);
        if (!nodeX && !nodeY) {
            zuTriangles* meshX = dynamic_cast<zuTriangles*>(x);
            zuTriangles* meshY = dynamic_cast<zuTriangles*>(y);
            if (meshX && meshY)
                testMeshes(meshX, meshY);
            if (mReport == FIRST_CONTACT && !mContacts.empty())
                return false;
            continue;
        }
        // Descend the larger bound (or the only node), keeping x on the first object's side.
        const bool descendX = nodeX && (!nodeY || x->GetWorldBound().GetRadius() >= y->GetWorldBound().GetRadius());
        zuNode* node = descendX ? nodeX : nodeY;
        for (int i = node->getNbChildren() - 1; i >= 0; --i) {
            if (zuSpatial* child = node->getChild(i))
                mPairs.emplace_back(descendX ? child : x, descendX ? y : child);
        }
    }
    return true;
}

bool zuCollisionGroup::isResident(zuTriangles* mesh)
{
    if (zuMeshTriangles(mesh).isResident())
        return true;
    if (!mReadBack)
        return false;
    if (zuVertexBuffer* vertices = mesh->GetVertices())
        zuRendererInterface::LoadCPUData(vertices);
    if (zuIndexBuffer* indices = mesh->GetIndices())
        zuRendererInterface::LoadCPUData(indices);
    return zuMeshTriangles(mesh).isResident();
}

void zuCollisionGroup::testMeshes(zuTriangles* a, zuTriangles* b)
{
    if (!isResident(a) || !isResident(b))
        return;
    zuBVTree::Placement placement;
    if (!placement.Set(a->GetWorldTransform(), b->GetWorldTransform()))
        return;
    const zuBVTree* treeA = mCache->GetTree(a, mTreeKind);
    const zuBVTree* treeB = mCache->GetTree(b, mTreeKind);
    mTrianglePairs.clear();
    if (!treeA || !treeB
        || !treeA->Overlap(zuMeshTriangles(a), *treeB, zuMeshTriangles(b), placement, mReport == FIRST_CONTACT,
                           mTrianglePairs))
        return;
    mContacts.push_back({a, b, mTrianglePairs});
}

} // namespace zu
