#include <zuSceneGraph/spatial/zuBVTree.h>

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zu {

using Vector3 = Wm4::Vector3<float>;
using Ray = zuTriangleQueries::Ray;

struct zuBVTree::BoxNode {
    float low[3];
    uint32_t first;  // inner node: the first child; leaf: the first triangle number
    float high[3];
    uint32_t count;  // triangles of a leaf; 0 for an inner node
};

struct zuBVTree::SphereNode {
    float center[3];
    float radius;
    uint32_t first;
    uint32_t count;
};

namespace {

constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr int BINS = 12;
// The cost of visiting a node against that of testing a triangle, for the heuristic.
constexpr float TRAVERSAL_COST = 2.0f;
// Deepest tree: MEDIAN_DEPTH levels of heuristic splits, then halving of at most 2^32
// triangles; the walks' stacks hold one entry per level (two per level for a pair walk).
constexpr int MAX_TREE_DEPTH = zuBVTree::MEDIAN_DEPTH + 34;
// Bounds of the tree tests grow by this much to absorb the rounding of the placement.
constexpr float BOUND_SLACK = 1.0001f;

struct Box {
    float low[3] = {INFINITE, INFINITE, INFINITE};
    float high[3] = {-INFINITE, -INFINITE, -INFINITE};

    void grow(const Vector3& p)
    {
        for (int a = 0; a < 3; ++a) {
            low[a] = std::min(low[a], p[a]);
            high[a] = std::max(high[a], p[a]);
        }
    }
    void grow(const Box& b)
    {
        for (int a = 0; a < 3; ++a) {
            low[a] = std::min(low[a], b.low[a]);
            high[a] = std::max(high[a], b.high[a]);
        }
    }
    // Half the surface area; 0 for an empty box.
    float area() const
    {
        const float dx = high[0] - low[0], dy = high[1] - low[1], dz = high[2] - low[2];
        return dx < 0.0f ? 0.0f : dx * dy + dy * dz + dz * dx;
    }
};

struct Primitive {
    Box bound;
    float centre[3];
};

struct BuildNode {
    Box bound;
    uint32_t begin = 0, end = 0;  // the run of triangle numbers below the node
    uint32_t first = 0, count = 0;
};

struct Task {
    uint32_t node, begin, end;
    int depth;
};

bool finite(const Vector3& p)
{
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

// The split of numbers[begin, end) that the binned heuristic prefers: the axis and the
// first bin of the right side; false when it prefers a leaf (or finds no split).
bool findSplit(const std::vector<Primitive>& primitives, const uint32_t* numbers, uint32_t begin, uint32_t end,
               const Box& centres, float nodeArea, int& bestAxis, int& bestBin)
{
    const uint32_t count = end - begin;
    float bestCost = INFINITE;
    for (int axis = 0; axis < 3; ++axis) {
        const float extent = centres.high[axis] - centres.low[axis];
        if (!(extent > 0.0f))
            continue;
        const float scale = BINS / extent;
        Box bins[BINS];
        uint32_t counts[BINS] = {};
        for (uint32_t k = begin; k < end; ++k) {
            const Primitive& p = primitives[numbers[k]];
            const int bin = std::min(BINS - 1, static_cast<int>((p.centre[axis] - centres.low[axis]) * scale));
            bins[bin].grow(p.bound);
            ++counts[bin];
        }
        float rightArea[BINS];
        uint32_t rightCount[BINS];
        Box right;
        uint32_t n = 0;
        for (int b = BINS - 1; b > 0; --b) {
            right.grow(bins[b]);
            n += counts[b];
            rightArea[b] = right.area();
            rightCount[b] = n;
        }
        Box left;
        n = 0;
        for (int b = 1; b < BINS; ++b) {
            left.grow(bins[b - 1]);
            n += counts[b - 1];
            if (n == 0 || n == count)
                continue;
            const float cost = left.area() * n + rightArea[b] * rightCount[b];
            if (cost < bestCost) {
                bestCost = cost;
                bestAxis = axis;
                bestBin = b;
            }
        }
    }
    if (bestCost == INFINITE)
        return false;
    // Costs relative to the node's area: a leaf costs its triangles.
    const float splitCost = nodeArea > 0.0f ? TRAVERSAL_COST + bestCost / nodeArea : TRAVERSAL_COST + count / 2.0f;
    return count > static_cast<uint32_t>(zuBVTree::MAX_LEAF_TRIANGLES) || splitCost < static_cast<float>(count);
}

} // namespace

// The walks, one per node kind: `enter` tests a node's bound against a ray, `meet` two
// nodes under a placement, `size` ranks nodes for the pair walk.
template <class Node> struct zuBVTreeWalk;

template <> struct zuBVTreeWalk<zuBVTree::BoxNode> {
    using Node = zuBVTree::BoxNode;
    static bool enter(const Node& n, const Ray& ray, float tmin, float tmax, float& entry)
    {
        return zuTriangleQueries::intersectBox(ray, n.low, n.high, tmin, tmax, entry);
    }
    static void centre(const Node& n, Vector3& c, Vector3& e)
    {
        for (int a = 0; a < 3; ++a) {
            c[a] = 0.5f * (n.low[a] + n.high[a]);
            e[a] = 0.5f * (n.high[a] - n.low[a]);
        }
    }
    // Each box mapped into the other's space as the box round it: both must meet.
    static bool meet(const Node& a, const Node& b, const zuBVTree::Placement& p)
    {
        Vector3 ca, ea, cb, eb;
        centre(a, ca, ea);
        centre(b, cb, eb);
        const Vector3 c = p.Apply(cb), e = p.linearAbs * eb;
        for (int i = 0; i < 3; ++i)
            if (std::fabs(c[i] - ca[i]) > (ea[i] + e[i]) * BOUND_SLACK)
                return false;
        if (!p.hasInverse)
            return true;
        const Vector3 c2 = p.inverse * ca + p.inverseTranslation, e2 = p.inverseAbs * ea;
        for (int i = 0; i < 3; ++i)
            if (std::fabs(c2[i] - cb[i]) > (eb[i] + e2[i]) * BOUND_SLACK)
                return false;
        return true;
    }
    static float size(const Node& n)
    {
        const float dx = n.high[0] - n.low[0], dy = n.high[1] - n.low[1], dz = n.high[2] - n.low[2];
        return std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    static void fill(Node& n, const BuildNode& b, const std::vector<Primitive>&, const uint32_t*)
    {
        for (int a = 0; a < 3; ++a) {
            n.low[a] = b.bound.low[a];
            n.high[a] = b.bound.high[a];
        }
    }
};

template <> struct zuBVTreeWalk<zuBVTree::SphereNode> {
    using Node = zuBVTree::SphereNode;
    static bool enter(const Node& n, const Ray& ray, float tmin, float tmax, float& entry)
    {
        const Vector3 oc(n.center[0] - ray.origin[0], n.center[1] - ray.origin[1], n.center[2] - ray.origin[2]);
        const float a = ray.direction.Dot(ray.direction);
        const float b = oc.Dot(ray.direction);
        const float r = n.radius * BOUND_SLACK;
        const float discriminant = b * b - a * (oc.Dot(oc) - r * r);
        if (discriminant < 0.0f || a <= 0.0f)
            return false;
        const float root = std::sqrt(discriminant);
        entry = std::max((b - root) / a, tmin);
        return entry <= std::min((b + root) / a, tmax);
    }
    static bool meet(const Node& a, const Node& b, const zuBVTree::Placement& p)
    {
        const Vector3 c = p.Apply(Vector3(b.center[0], b.center[1], b.center[2]));
        const Vector3 gap(c[0] - a.center[0], c[1] - a.center[1], c[2] - a.center[2]);
        const float reach = (a.radius + p.stretch * b.radius) * BOUND_SLACK;
        return gap.Dot(gap) <= reach * reach;
    }
    static float size(const Node& n) { return 2.0f * n.radius; }
    // The centre of the node's box, and the farthest corner of its triangles from it.
    static void fill(Node& n, const BuildNode& b, const zuMeshTriangles& triangles, const uint32_t* numbers)
    {
        for (int a = 0; a < 3; ++a)
            n.center[a] = 0.5f * (b.bound.low[a] + b.bound.high[a]);
        const Vector3 c(n.center[0], n.center[1], n.center[2]);
        float radius = 0.0f;
        Vector3 p[3];
        for (uint32_t k = b.begin; k < b.end; ++k)
            if (triangles.GetTriangle(static_cast<int>(numbers[k]), p[0], p[1], p[2]))
                for (const Vector3& corner : p)
                    radius = std::max(radius, (corner - c).Length());
        n.radius = radius;
    }
};

namespace {

template <class Node> void fillNodes(Node* out, const std::vector<BuildNode>& built, const std::vector<Primitive>& primitives,
                                     const zuMeshTriangles& triangles, const uint32_t* numbers)
{
    for (size_t i = 0; i < built.size(); ++i) {
        if constexpr (std::is_same_v<Node, zuBVTree::SphereNode>)
            zuBVTreeWalk<Node>::fill(out[i], built[i], triangles, numbers);
        else
            zuBVTreeWalk<Node>::fill(out[i], built[i], primitives, numbers);
        out[i].first = built[i].first;
        out[i].count = built[i].count;
    }
}

} // namespace

zuBVTree::zuBVTree(Kind kind, uint32_t nodes, uint32_t triangles, int depth)
    : mNodeQuantity(nodes), mTriangleQuantity(triangles), mDepth(depth), mKind(kind)
{
}

zuBVTree::~zuBVTree() = default;

size_t zuBVTree::nodeBytes() const
{
    return mNodeQuantity * (mKind == BOX ? sizeof(BoxNode) : sizeof(SphereNode));
}

static_assert(sizeof(zuBVTree) % alignof(float) == 0 && alignof(zuBVTree) >= alignof(uint32_t),
              "the nodes follow the header");

size_t zuBVTree::GetMemoryUsed() const
{
    return sizeof(*this) + nodeBytes() + 4 * static_cast<size_t>(mTriangleQuantity);
}

void zuBVTree::GetBound(Vector3& low, Vector3& high) const
{
    if (mKind == BOX) {
        const BoxNode& root = nodes<BoxNode>()[0];
        low = Vector3(root.low[0], root.low[1], root.low[2]);
        high = Vector3(root.high[0], root.high[1], root.high[2]);
    } else {
        const SphereNode& root = nodes<SphereNode>()[0];
        const Vector3 c(root.center[0], root.center[1], root.center[2]), r(root.radius, root.radius, root.radius);
        low = c - r;
        high = c + r;
    }
}

std::unique_ptr<zuBVTree> zuBVTree::Build(const zuMeshTriangles& triangles, Kind kind)
{
    const int quantity = triangles.GetTriangleQuantity();
    std::vector<Primitive> primitives(static_cast<size_t>(std::max(quantity, 0)));
    std::vector<uint32_t> numbers;
    numbers.reserve(primitives.size());
    for (int i = 0; i < quantity; ++i) {
        Vector3 p[3];
        // Absent triangles and those with a corner that is not finite can never be hit.
        if (!triangles.GetTriangle(i, p[0], p[1], p[2]) || !finite(p[0]) || !finite(p[1]) || !finite(p[2]))
            continue;
        Primitive& primitive = primitives[static_cast<size_t>(i)];
        for (const Vector3& corner : p)
            primitive.bound.grow(corner);
        for (int a = 0; a < 3; ++a)
            primitive.centre[a] = 0.5f * (primitive.bound.low[a] + primitive.bound.high[a]);
        numbers.push_back(static_cast<uint32_t>(i));
    }
    if (numbers.empty())
        return nullptr;

    std::vector<BuildNode> built(1);
    built.reserve(2 * numbers.size());
    std::vector<Task> tasks{{0, 0, static_cast<uint32_t>(numbers.size()), 1}};
    int depth = 1;
    while (!tasks.empty()) {
        const Task task = tasks.back();
        tasks.pop_back();
        depth = std::max(depth, task.depth);
        Box bound, centres;
        for (uint32_t k = task.begin; k < task.end; ++k) {
            const Primitive& p = primitives[numbers[k]];
            bound.grow(p.bound);
            centres.grow(Vector3(p.centre[0], p.centre[1], p.centre[2]));
        }
        built[task.node].bound = bound;
        built[task.node].begin = task.begin;
        built[task.node].end = task.end;
        const uint32_t count = task.end - task.begin;
        uint32_t* first = numbers.data() + task.begin;
        uint32_t* last = numbers.data() + task.end;
        uint32_t* middle = first;
        int axis = 0, bin = 0;
        if (count > 1 && task.depth < MEDIAN_DEPTH
            && findSplit(primitives, numbers.data(), task.begin, task.end, centres, bound.area(), axis, bin)) {
            const float low = centres.low[axis];
            const float scale = BINS / (centres.high[axis] - low);
            middle = std::partition(first, last, [&](uint32_t n) {
                return std::min(BINS - 1, static_cast<int>((primitives[n].centre[axis] - low) * scale)) < bin;
            });
        } else if (count > static_cast<uint32_t>(MAX_LEAF_TRIANGLES)) {
            // Deep, or no bin split exists (all centres in one bin): halve along the
            // widest spread of the centres.
            axis = 0;
            for (int a = 1; a < 3; ++a)
                if (centres.high[a] - centres.low[a] > centres.high[axis] - centres.low[axis])
                    axis = a;
            middle = first + count / 2;
            std::nth_element(first, middle, last, [&](uint32_t a, uint32_t b) {
                return primitives[a].centre[axis] < primitives[b].centre[axis];
            });
        }
        if (middle == first || middle == last) {
            built[task.node].first = task.begin;
            built[task.node].count = count;
            continue;
        }
        const uint32_t children = static_cast<uint32_t>(built.size());
        built[task.node].first = children;
        built[task.node].count = 0;
        built.resize(built.size() + 2);
        const uint32_t split = static_cast<uint32_t>(middle - numbers.data());
        tasks.push_back({children + 1, split, task.end, task.depth + 1});
        tasks.push_back({children, task.begin, split, task.depth + 1});
    }

    const size_t nodeSize = kind == BOX ? sizeof(BoxNode) : sizeof(SphereNode);
    std::unique_ptr<zuBVTree> tree(new (built.size() * nodeSize + 4 * numbers.size())
                                       zuBVTree(kind, static_cast<uint32_t>(built.size()), static_cast<uint32_t>(numbers.size()), depth));
    if (kind == BOX)
        fillNodes(tree->nodes<BoxNode>(), built, primitives, triangles, numbers.data());
    else
        fillNodes(tree->nodes<SphereNode>(), built, primitives, triangles, numbers.data());
    std::copy(numbers.begin(), numbers.end(), tree->triangleNumbers());
    return tree;
}

namespace {

// The ray walk: front to back, the nearer child first, the farther one kept with its entry
// so that it is dropped once a hit lies before it. With `all`, nothing is pruned.
template <class Node, bool all>
bool walkRay(const Node* nodes, const uint32_t* numbers, const zuMeshTriangles& triangles, const Ray& ray, float tmin,
             float tmax, zuBVTree::TriangleHit* nearest, std::vector<zuBVTree::TriangleHit>* hits)
{
    using Walk = zuBVTreeWalk<Node>;
    float entry;
    if (!Walk::enter(nodes[0], ray, tmin, tmax, entry))
        return false;
    struct Item {
        uint32_t node;
        float entry;
    } stack[MAX_TREE_DEPTH + 1];
    int top = 0;
    uint32_t current = 0;
    float best = tmax;
    bool found = false;
    for (;;) {
        const Node& node = nodes[current];
        if (node.count) {
            for (uint32_t k = node.first; k < node.first + node.count; ++k) {
                Vector3 p0, p1, p2;
                zuTriangleQueries::Hit hit;
                if (!triangles.GetTriangle(static_cast<int>(numbers[k]), p0, p1, p2)
                    || !zuTriangleQueries::intersect(ray, p0, p1, p2, tmin, best, hit))
                    continue;
                found = true;
                if constexpr (all) {
                    hits->push_back({static_cast<int>(numbers[k]), hit});
                } else {
                    best = hit.t;
                    *nearest = {static_cast<int>(numbers[k]), hit};
                }
            }
        } else {
            float entry0 = 0.0f, entry1 = 0.0f;
            const bool hit0 = Walk::enter(nodes[node.first], ray, tmin, best, entry0);
            const bool hit1 = Walk::enter(nodes[node.first + 1], ray, tmin, best, entry1);
            if (hit0 && hit1) {
                const bool firstNearer = entry0 <= entry1;
                stack[top++] = {node.first + (firstNearer ? 1u : 0u), firstNearer ? entry1 : entry0};
                current = node.first + (firstNearer ? 0u : 1u);
                continue;
            }
            if (hit0 || hit1) {
                current = node.first + (hit0 ? 0u : 1u);
                continue;
            }
        }
        bool next = false;
        while (top > 0 && !next) {
            const Item& item = stack[--top];
            if (item.entry <= best) {
                current = item.node;
                next = true;
            }
        }
        if (!next)
            return found;
    }
}

template <class Node>
bool walkPairs(const Node* nodes, const uint32_t* numbers, const zuMeshTriangles& triangles, const Node* otherNodes,
               const uint32_t* otherNumbers, const zuMeshTriangles& otherTriangles, const zuBVTree::Placement& placement,
               bool firstOnly, std::vector<std::pair<int, int>>& pairs)
{
    using Walk = zuBVTreeWalk<Node>;
    // Each step replaces a pair by at most two whose depths add up to one more.
    struct Pair {
        uint32_t a, b;
    } stack[2 * MAX_TREE_DEPTH + 2];
    int top = 0;
    stack[top++] = {0, 0};
    bool found = false;
    while (top > 0) {
        const Pair pair = stack[--top];
        const Node& a = nodes[pair.a];
        const Node& b = otherNodes[pair.b];
        if (!Walk::meet(a, b, placement))
            continue;
        if (a.count && b.count) {
            Vector3 placed[zuBVTree::MAX_LEAF_TRIANGLES][3];
            int present[zuBVTree::MAX_LEAF_TRIANGLES];
            for (uint32_t j = 0; j < b.count; ++j) {
                present[j] = -1;
                const int t = static_cast<int>(otherNumbers[b.first + j]);
                if (!otherTriangles.GetTriangle(t, placed[j][0], placed[j][1], placed[j][2]))
                    continue;
                for (Vector3& corner : placed[j])
                    corner = placement.Apply(corner);
                present[j] = t;
            }
            for (uint32_t i = 0; i < a.count; ++i) {
                Vector3 mine[3];
                const int t = static_cast<int>(numbers[a.first + i]);
                if (!triangles.GetTriangle(t, mine[0], mine[1], mine[2]))
                    continue;
                for (uint32_t j = 0; j < b.count; ++j) {
                    if (present[j] < 0 || !zuTriangleQueries::overlap(mine, placed[j]))
                        continue;
                    pairs.emplace_back(t, present[j]);
                    found = true;
                    if (firstOnly)
                        return true;
                }
            }
            continue;
        }
        const bool descendA = b.count || (!a.count && Walk::size(a) >= Walk::size(b) * placement.stretch);
        if (descendA) {
            stack[top++] = {a.first + 1, pair.b};
            stack[top++] = {a.first, pair.b};
        } else {
            stack[top++] = {pair.a, b.first + 1};
            stack[top++] = {pair.a, b.first};
        }
    }
    return found;
}

Wm4::Matrix3<double> linearOf(const zuGenericTransformation<float>& xf)
{
    Wm4::Matrix3<double> m;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            m(r, c) = xf.GetMatrix()(r, c) * (xf.IsRSMatrix() ? xf.GetScale()[c] : 1.0f);
    return m;
}

Wm4::Matrix3<float> toFloat(const Wm4::Matrix3<double>& m, bool absolute)
{
    Wm4::Matrix3<float> out;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            out(r, c) = static_cast<float>(absolute ? std::fabs(m(r, c)) : m(r, c));
    return out;
}

Vector3 toFloat(const Wm4::Matrix3<double>& m, const Wm4::Vector3<double>& v)
{
    const Wm4::Vector3<double> r = m * v;
    return Vector3(static_cast<float>(r[0]), static_cast<float>(r[1]), static_cast<float>(r[2]));
}

} // namespace

bool zuBVTree::IntersectNearest(const zuMeshTriangles& triangles, const Ray& ray, float tmin, float tmax,
                                TriangleHit& nearest) const
{
    if (mKind == BOX)
        return walkRay<BoxNode, false>(nodes<BoxNode>(), triangleNumbers(), triangles, ray, tmin, tmax, &nearest, nullptr);
    return walkRay<SphereNode, false>(nodes<SphereNode>(), triangleNumbers(), triangles, ray, tmin, tmax, &nearest,
                                      nullptr);
}

void zuBVTree::IntersectAll(const zuMeshTriangles& triangles, const Ray& ray, float tmin, float tmax,
                            std::vector<TriangleHit>& hits) const
{
    if (mKind == BOX)
        walkRay<BoxNode, true>(nodes<BoxNode>(), triangleNumbers(), triangles, ray, tmin, tmax, nullptr, &hits);
    else
        walkRay<SphereNode, true>(nodes<SphereNode>(), triangleNumbers(), triangles, ray, tmin, tmax, nullptr, &hits);
}

bool zuBVTree::Overlap(const zuMeshTriangles& triangles, const zuBVTree& other, const zuMeshTriangles& otherTriangles,
                       const Placement& placement, bool firstOnly, std::vector<std::pair<int, int>>& pairs) const
{
    if (other.mKind != mKind)
        return false;
    if (mKind == BOX)
        return walkPairs(nodes<BoxNode>(), triangleNumbers(), triangles, other.nodes<BoxNode>(), other.triangleNumbers(),
                         otherTriangles, placement, firstOnly, pairs);
    return walkPairs(nodes<SphereNode>(), triangleNumbers(), triangles, other.nodes<SphereNode>(),
                     other.triangleNumbers(), otherTriangles, placement, firstOnly, pairs);
}

bool zuBVTree::Placement::Set(const zuGenericTransformation<float>& thisWorld,
                              const zuGenericTransformation<float>& otherWorld)
{
    const Wm4::Matrix3<double> a = linearOf(thisWorld), b = linearOf(otherWorld);
    const double detA = a.Determinant(), detB = b.Determinant();
    if (!(std::fabs(detA) > 0.0) || !std::isfinite(detA))
        return false;
    const Vector3& ta = thisWorld.GetTranslate();
    const Vector3& tb = otherWorld.GetTranslate();
    const Wm4::Vector3<double> shift(double(tb[0]) - ta[0], double(tb[1]) - ta[1], double(tb[2]) - ta[2]);
    const Wm4::Matrix3<double> aInverse = a.Inverse();
    const Wm4::Matrix3<double> l = aInverse * b;
    linear = toFloat(l, false);
    linearAbs = toFloat(l, true);
    translation = toFloat(aInverse, shift);
    hasInverse = std::fabs(detB) > 0.0 && std::isfinite(detB);
    if (hasInverse) {
        const Wm4::Matrix3<double> bInverse = b.Inverse();
        const Wm4::Matrix3<double> li = bInverse * a;
        inverse = toFloat(li, false);
        inverseAbs = toFloat(li, true);
        inverseTranslation = toFloat(bInverse, -shift);
    }
    // The stretch of a rotation-scale pair is exact; otherwise the Frobenius norm bounds it.
    if (thisWorld.IsRSMatrix() && otherWorld.IsRSMatrix()) {
        const Vector3& sa = thisWorld.GetScale();
        const Vector3& sb = otherWorld.GetScale();
        const float smallest = std::min(std::fabs(sa[0]), std::min(std::fabs(sa[1]), std::fabs(sa[2])));
        const float largest = std::max(std::fabs(sb[0]), std::max(std::fabs(sb[1]), std::fabs(sb[2])));
        stretch = smallest > 0.0f ? largest / smallest : std::numeric_limits<float>::max();
    } else {
        double sum = 0.0;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                sum += l(r, c) * l(r, c);
        stretch = static_cast<float>(std::sqrt(sum));
    }
    return true;
}

} // namespace zu
