#include <zuSceneGraph/spatial/zuPicker.h>

#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <algorithm>
#include <cmath>

namespace zu {

using Vector3 = Wm4::Vector3<float>;

namespace {

bool finite(const Vector3& v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

// What the visit of an object reads first: its type (the start of the object) and its
// flags, the last field of zuSpatial, beside which a node keeps its children.
void prefetchVisit(const zuSpatial& object)
{
    const char* start = reinterpret_cast<const char*>(&object);
    __builtin_prefetch(start);
    __builtin_prefetch(start + sizeof(zuSpatial) - 1);
}

void prefetchBound(const zuSpatial& object)
{
    const char* bound = reinterpret_cast<const char*>(&object.GetWorldBound());
    __builtin_prefetch(bound);
    __builtin_prefetch(bound + sizeof(zuBoundingVolume) - 1);
}

} // namespace

zuPicker::zuPicker(std::shared_ptr<zuBVTreeCache> cache)
    : mCache(cache ? std::move(cache) : std::make_shared<zuBVTreeCache>())
{
}

zuPicker::~zuPicker() = default;

void zuPicker::SetTolerance(float tolerance)
{
    mTolerance = std::isfinite(tolerance) && tolerance > 0.0f ? tolerance : 0.0f;
}

bool zuPicker::PickRay(zuSpatial* root, const Vector3& origin, const Vector3& direction, float tmin, float tmax)
{
    Vector3 unit = direction;
    const float length = unit.Length();
    if (!(length > 0.0f) || !std::isfinite(length)) {
        unit = Vector3(0.0f, 0.0f, 0.0f);
    } else {
        unit /= length;
    }
    return pick(root, origin, unit, tmin, tmax);
}

bool zuPicker::PickSegment(zuSpatial* root, const Vector3& from, const Vector3& to)
{
    const Vector3 span = to - from;
    return PickRay(root, from, span, 0.0f, span.Length());
}

bool zuPicker::PickPixel(zuSpatial* root, const zuCamera& camera, float x, float y, int width, int height)
{
    Vector3 origin, direction;
    float tmin = 0.0f, tmax = 0.0f;
    if (!GetPixelRay(camera, x, y, width, height, origin, direction, tmin, tmax)) {
        mRecords.clear();
        return false;
    }
    return pick(root, origin, direction, tmin, tmax);
}

bool zuPicker::GetPixelRay(const zuCamera& camera, float x, float y, int width, int height, Vector3& origin,
                           Vector3& direction, float& tmin, float& tmax)
{
    if (width <= 0 || height <= 0)
        return false;
    // The point of the view rectangle at the near plane, in camera units.
    const float r = camera.GetRMin() + (x / width) * (camera.GetRMax() - camera.GetRMin());
    const float u = camera.GetUMax() - (y / height) * (camera.GetUMax() - camera.GetUMin());
    const float near = camera.GetDMin(), far = camera.GetDMax();
    if (camera.IsPerspective()) {
        origin = camera.GetLocation();
        direction = camera.GetDVector() * near + camera.GetUVector() * u + camera.GetRVector() * r;
        const float length = direction.Length();
        if (!(length > 0.0f) || !(near > 0.0f))
            return false;
        direction /= length;
        // Distances along the ray grow with its slant; the far plane is as far in depth.
        tmin = length;
        tmax = length * far / near;
    } else {
        origin = camera.GetLocation() + camera.GetUVector() * u + camera.GetRVector() * r;
        direction = camera.GetDVector();
        tmin = near;
        tmax = far;
    }
    return finite(origin) && finite(direction);
}

bool zuPicker::isWalked(const zuSpatial* object) const
{
    return object && (!mSkipHidden || (!object->isIgnored() && object->GetCullingMode() != zuSpatial::CULL_ALWAYS));
}

// Inline: it runs for every child of every node the walk enters.
inline bool zuPicker::meetsBound(const zuSpatial& object, float& entry) const
{
    const zuBoundingVolume& bound = object.GetWorldBound();
    // An invalid bound has a negative radius; a negative extent with a radius (a damaged
    // file) gives near > far below and is rejected all the same.
    if (!(bound.GetRadius() >= 0.0f))
        return false;
    float t0 = mTmin, t1 = mTmax;
    for (int a = 0; a < 3; ++a) {
        // The face the ray meets first, chosen by the direction's sign: no swap. A zero
        // component gives an infinite reciprocal; 0 · infinity (the origin on a face) is
        // not a number, which the comparisons skip.
        const float reach = bound.GetExtents()[a] + mTolerance;
        const float low = bound.GetCenter()[a] - reach, high = bound.GetCenter()[a] + reach;
        const bool backward = mRay.inverse[a] < 0.0f;
        const float near = ((backward ? high : low) - mRay.origin[a]) * mRay.inverse[a];
        const float far = ((backward ? low : high) - mRay.origin[a]) * mRay.inverse[a] * zuTriangleQueries::SLAB_ROUNDING;
        t0 = near > t0 ? near : t0;
        t1 = far < t1 ? far : t1;
    }
    entry = t0;
    return t0 <= t1;
}

bool zuPicker::pick(zuSpatial* root, const Vector3& origin, const Vector3& direction, float tmin, float tmax)
{
    mCandidates.clear();
    mSkipped = 0;
    mReadBack = 0;
    mRay = zuTriangleQueries::Ray(origin, direction);
    mTmin = tmin;
    mTmax = tmax;
    float entry = 0.0f;
    if (!finite(origin) || direction.SquaredLength() == 0.0f || !(tmin <= tmax) || !root || !meetsBound(*root, entry)) {
        mRecords.clear();
        return false;
    }
    mStack.clear();
    mStack.push_back({root, entry});
    while (!mStack.empty()) {
        const StackItem item = mStack.back();
        mStack.pop_back();
        // In NEAREST mode mTmax is the nearest hit so far: bounds entered beyond it are out.
        if (item.entry > mTmax)
            continue;
        zuSpatial* object = item.object;
        if (!isWalked(object))
            continue;
        // Classified by the run-time type records: cheaper than a dynamic cast per object.
        const zuRtti& type = object->GetType();
        if (type.IsDerived(zuNode::TYPE)) {
            zuNode* node = static_cast<zuNode*>(object);
            const zuSpatial* level =
                type.IsDerived(zuLODNode::TYPE) ? static_cast<zuLODNode*>(node)->getCurrentLOD() : nullptr;
            // The walk waits on memory, not on arithmetic: the children's bounds, and what
            // their visits read first, are asked for all at once, so that their cache misses
            // overlap instead of following one another.
            mChildren.clear();
            for (int i = 0; i < node->getNbChildren(); ++i) {
                zuSpatial* child = node->getChild(i);
                if (child && (!level || child == level)) {
                    prefetchBound(*child);
                    prefetchVisit(*child);
                    mChildren.push_back({child, 0.0f});
                }
            }
            size_t kept = 0;
            for (const StackItem& child : mChildren) {
                if (!meetsBound(*child.object, entry))
                    continue;
                mChildren[kept++] = {child.object, entry};
                // A node met: its slot array is read when it is popped; reading its first
                // slot now brings the array in meanwhile.
                if (child.object->GetType().IsDerived(zuNode::TYPE))
                    __builtin_prefetch(static_cast<zuNode*>(child.object)->getChild(0));
            }
            mChildren.resize(kept);
            // The nearest child ends on top of the stack.
            std::sort(mChildren.begin(), mChildren.end(),
                      [](const StackItem& a, const StackItem& b) { return a.entry > b.entry; });
            mStack.insert(mStack.end(), mChildren.begin(), mChildren.end());
        } else if (type.IsDerived(zuTriangles::TYPE)) {
            pickMesh(static_cast<zuTriangles*>(object));
        } else if (mTolerance > 0.0f && type.IsDerived(zuLine::TYPE)) {
            pickLine(static_cast<zuLine*>(object));
        } else if (mTolerance > 0.0f && type.IsDerived(zuPoint::TYPE)) {
            pickPoints(static_cast<zuPoint*>(object));
        }
    }
    makeRecords(root);
    return !mRecords.empty();
}

bool zuPicker::residentView(zuBaseGeometry* leaf, zuMeshTriangles& view)
{
    view = zuMeshTriangles(leaf);
    if (view.isResident())
        return true;
    if (mLazyBuffers == READ_BACK) {
        if (zuVertexBuffer* vertices = leaf->GetVertices())
            zuRendererInterface::LoadCPUData(vertices);
        if (zuIndexBuffer* indices = leaf->GetIndices())
            zuRendererInterface::LoadCPUData(indices);
        view = zuMeshTriangles(leaf);
        if (view.isResident()) {
            ++mReadBack;
            return true;
        }
    }
    ++mSkipped;
    return false;
}

void zuPicker::pickMesh(zuTriangles* mesh)
{
    zuMeshTriangles view;
    if (!residentView(mesh, view))
        return;
    const zuBVTree* tree = mCache->GetTree(mesh, mTreeKind);
    if (!tree)
        return;
    // The ray in model space keeps its parameter: distances along it stay world distances.
    const zuGenericTransformation<float>& world = mesh->GetWorldTransform();
    const zuTriangleQueries::Ray local(world.ApplyInverse(mRay.origin), world.InvertVector(mRay.direction));
    if (!finite(local.origin) || !finite(local.direction))
        return;
    mHits.clear();
    if (mMode == NEAREST) {
        zuBVTree::TriangleHit nearest;
        if (tree->IntersectNearest(view, local, mTmin, mTmax, nearest))
            mHits.push_back(nearest);
    } else {
        tree->IntersectAll(view, local, mTmin, mTmax, mHits);
    }
    for (const zuBVTree::TriangleHit& hit : mHits) {
        Vector3 p0, p1, p2;
        view.GetTriangle(hit.triangle, p0, p1, p2);
        const Vector3 normal = world.ApplyNormal((p1 - p0).Cross(p2 - p0));
        addCandidate({mesh, hit.triangle, hit.hit.t, hit.hit.b0, hit.hit.b1, hit.hit.b2,
                      mRay.origin + mRay.direction * hit.hit.t, normal});
    }
}

void zuPicker::pickLine(zuLine* line)
{
    zuMeshTriangles view;
    if (!residentView(line, view))
        return;
    const zuGenericTransformation<float>& world = line->GetWorldTransform();
    const float tolerance2 = mTolerance * mTolerance;
    for (int i = 0; i < line->GetSegmentQuantity(); ++i) {
        int v0, v1;
        if (!line->GetSegment(i, v0, v1) || static_cast<uint32_t>(v0) >= view.GetVertexQuantity()
            || static_cast<uint32_t>(v1) >= view.GetVertexQuantity())
            continue;
        const Vector3 p0 = world.ApplyForward(view.GetPosition(static_cast<uint32_t>(v0)));
        const Vector3 p1 = world.ApplyForward(view.GetPosition(static_cast<uint32_t>(v1)));
        float t, s;
        if (zuTriangleQueries::closestRaySegment(mRay.origin, mRay.direction, mTmin, mTmax, p0, p1, t, s) > tolerance2)
            continue;
        addCandidate({line, i, t, 1.0f - s, s, 0.0f, p0 + (p1 - p0) * s, Vector3(0.0f, 0.0f, 0.0f)});
    }
}

void zuPicker::pickPoints(zuPoint* points)
{
    zuMeshTriangles view;
    if (!residentView(points, view))
        return;
    const zuGenericTransformation<float>& world = points->GetWorldTransform();
    const float tolerance2 = mTolerance * mTolerance;
    for (int i = 0; i < points->GetPointQuantity(); ++i) {
        const int v = points->GetPoint(i);
        if (v < 0 || static_cast<uint32_t>(v) >= view.GetVertexQuantity())
            continue;
        const Vector3 p = world.ApplyForward(view.GetPosition(static_cast<uint32_t>(v)));
        const float t = std::clamp((p - mRay.origin).Dot(mRay.direction), mTmin, mTmax);
        const Vector3 gap = mRay.origin + mRay.direction * t - p;
        if (gap.Dot(gap) <= tolerance2)
            addCandidate({points, i, t, 1.0f, 0.0f, 0.0f, p, Vector3(0.0f, 0.0f, 0.0f)});
    }
}

void zuPicker::addCandidate(const Candidate& candidate)
{
    if (mMode == ALL) {
        mCandidates.push_back(candidate);
    } else if (mCandidates.empty() || candidate.distance < mCandidates[0].distance) {
        mCandidates.assign(1, candidate);
        mTmax = candidate.distance;
    }
}

void zuPicker::makeRecords(zuSpatial* root)
{
    if (mCandidates.size() > 1)
        std::stable_sort(mCandidates.begin(), mCandidates.end(),
                         [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; });
    // Records are overwritten in place, so that their paths keep their memory.
    mRecords.resize(mCandidates.size());
    for (size_t i = 0; i < mCandidates.size(); ++i) {
        const Candidate& c = mCandidates[i];
        zuPickRecord& record = mRecords[i];
        record.leaf = c.leaf;
        record.triangle = c.triangle;
        record.barycentric = Vector3(c.b0, c.b1, c.b2);
        record.point = c.point;
        record.normal = c.normal;
        record.distance = c.distance;
        record.path.clear();
        for (zuSpatial* object = c.leaf; object; object = object->GetParent()) {
            record.path.push_back(object);
            if (object == root)
                break;
        }
        std::reverse(record.path.begin(), record.path.end());
    }
}

} // namespace zu
