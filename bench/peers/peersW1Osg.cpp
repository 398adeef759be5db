// The peer's side of W1: the same scene in OpenSceneGraph, built, updated, culled, saved and
// loaded as an application of that library does it.
//
// - Scene: an osg::Group root; every placed child is an osg::MatrixTransform holding its
//   local matrix (the same floats as ours: rotation about z and, at the leaves, the scale,
//   then the translation); each leaf transform holds its own osg::Geometry, a cube of 24
//   vertices with a normal array bound per vertex and 36 indices in a DrawElementsUInt.
// - Update: what our UpdateGS does, in that library's terms: a visitor that accumulates the
//   world matrix of every transform (kept in a vector, one per transform, as ours keeps one
//   per object) and marks its bound dirty, then the bound of the root, which recomputes every
//   transform's bound. The geometry keeps its cached box, as our leaves keep their model
//   bound.
// - Cull: a visitor with one osg::CullingSet per level, made from the W1 frustum (the unit
//   frustum through the view and projection matrices of the W1 camera) and, below each
//   transform, taken into the transform's own coordinates through its accumulated matrix, as
//   that library's cull visitor does. Plane masks go down the tree: a plane that a node's
//   sphere lies wholly inside of is not tested again below it. Transforms are tested by their
//   bounding sphere, geometries by their box.
// - Save and load: .osgb through osgDB, with the plugins loaded before the clock starts.
// - Picking: k-d trees on every geometry (osg::KdTreeBuilder), then per pick a
//   LineSegmentIntersector through an IntersectionVisitor, as its applications pick.

#include "peersW1.h"

#include "../benchMeasure.h"

#include <osg/CullingSet>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/KdTree>
#include <osg/MatrixTransform>
#include <osg/NodeVisitor>
#include <osg/Version>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

namespace peers {

namespace {

using bench::medianOf;
using bench::Stopwatch;

osg::ref_ptr<osg::Geometry> makeCube()
{
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array(zusg::W1Layout::CUBE_VERTICES);
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array(zusg::W1Layout::CUBE_VERTICES);
    for (int i = 0; i < zusg::W1Layout::CUBE_VERTICES; ++i)
        zusg::W1Layout::cubeVertex(i, (*vertices)[i].ptr(), (*normals)[i].ptr());
    osg::ref_ptr<osg::DrawElementsUInt> triangles =
        new osg::DrawElementsUInt(osg::PrimitiveSet::TRIANGLES, zusg::W1Layout::CUBE_INDICES);
    for (int j = 0; j < zusg::W1Layout::CUBE_INDICES; ++j)
        (*triangles)[j] = zusg::W1Layout::cubeIndex(j);
    osg::ref_ptr<osg::Geometry> cube = new osg::Geometry;
    cube->setVertexArray(vertices);
    cube->setNormalArray(normals, osg::Array::BIND_PER_VERTEX);
    cube->addPrimitiveSet(triangles);
    return cube;
}

// Row vectors, as that library's matrices take them: x' = x M.
osg::Matrixd localMatrix(const zusg::W1Placement& placement)
{
    const float c = std::cos(placement.angle);
    const float s = std::sin(placement.angle);
    const double k = placement.scale;
    const float* t = placement.translation;
    return osg::Matrixd(c * k, s * k, 0, 0, -s * k, c * k, 0, 0, 0, 0, k, 0, t[0], t[1], t[2], 1);
}

osg::ref_ptr<osg::Group> build(const zusg::W1Layout& layout)
{
    osg::ref_ptr<osg::Group> root = new osg::Group;
    std::vector<osg::Group*> parents(static_cast<size_t>(layout.depth()) + 1, nullptr);
    parents[0] = root.get();
    layout.forEachChild([&parents](const zusg::W1Placement& placement) {
        osg::ref_ptr<osg::MatrixTransform> child = new osg::MatrixTransform(localMatrix(placement));
        if (placement.leaf)
            child->addChild(makeCube());
        else
            parents[static_cast<size_t>(placement.level)] = child.get();
        parents[static_cast<size_t>(placement.level) - 1]->addChild(child);
    });
    return root;
}

// World matrices down, bounds up.
class UpdatePass : public osg::NodeVisitor {
public:
    explicit UpdatePass(int depth) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), mStack(static_cast<size_t>(depth) + 2) {}

    void run(osg::Group& root)
    {
        mWorlds.clear();
        mLevel = 0;
        mStack[0].makeIdentity();
        root.dirtyBound();
        root.accept(*this);
        root.getBound();
    }

    void apply(osg::MatrixTransform& transform) override
    {
        const osg::Matrixd& parent = mStack[mLevel];
        osg::Matrixd& world = mStack[++mLevel];
        world.mult(transform.getMatrix(), parent);
        mWorlds.push_back(world);
        transform.dirtyBound();
        traverse(transform);
        --mLevel;
    }

    void apply(osg::Geometry&) override {}

private:
    std::vector<osg::Matrixd> mStack;
    std::vector<osg::Matrixd> mWorlds;
    size_t mLevel = 0;
};

class CullPass : public osg::NodeVisitor {
public:
    CullPass(const zusg::W1Layout& layout)
        : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN),
          mSets(static_cast<size_t>(layout.depth()) + 2),
          mWorlds(static_cast<size_t>(layout.depth()) + 2)
    {
        // The W1 camera: at the origin looking down +x, up +z; 90 degrees both ways.
        const double near = zusg::W1Layout::NEAR;
        const osg::Matrixd view = osg::Matrixd::lookAt(osg::Vec3d(0, 0, 0), osg::Vec3d(1, 0, 0), osg::Vec3d(0, 0, 1));
        const osg::Matrixd projection = osg::Matrixd::frustum(-near, near, -near, near, near, layout.farDistance());
        osg::Polytope frustum;
        frustum.setToUnitFrustum(true, true);
        frustum.transformProvidingInverse(view * projection);
        mWorld.getFrustum() = frustum;
        // Only the frustum: no small-feature or occluder culling, which W1 has no use for.
        mWorld.setCullingMask(osg::CullingSet::VIEW_FRUSTUM_CULLING);
    }

    const std::vector<osg::Geometry*>& run(osg::Group& root)
    {
        mVisible.clear();
        mLevel = 0;
        mSets[0].set(mWorld);
        mWorlds[0].makeIdentity();
        osg::CullingSet& set = mSets[0];
        if (!set.isCulled(root.getBound())) {
            set.pushCurrentMask();
            traverse(root);
            set.popCurrentMask();
        }
        return mVisible;
    }

    void apply(osg::MatrixTransform& transform) override
    {
        osg::CullingSet& parentSet = mSets[mLevel];
        if (!mWorldBoxes && parentSet.isCulled(transform.getBound()))
            return;
        parentSet.pushCurrentMask();
        const osg::Polytope::ClippingMask mask = parentSet.getFrustum().getCurrentMask();
        osg::Matrixd& world = mWorlds[++mLevel];
        world.mult(transform.getMatrix(), mWorlds[mLevel - 1]);
        osg::CullingSet& set = mSets[mLevel];
        set.set(mWorld);
        set.getFrustum().getCurrentMask() = mask;
        set.getFrustum().transformProvidingInverse(world);
        traverse(transform);
        --mLevel;
        parentSet.popCurrentMask();
    }

    void apply(osg::Geometry& geometry) override
    {
        if (mWorldBoxes ? !isWorldBoxCulled(geometry) : !mSets[mLevel].isCulled(geometry.getBoundingBox()))
            mVisible.push_back(&geometry);
    }

    // Tests every leaf as our culler does: by the box around its box along the world axes,
    // against the frustum in world coordinates (our hierarchy of such boxes rejects only
    // leaves that fail this test). Not timed: it shows that both scenes are the same when the
    // two cullers see different counts.
    void testWorldBoxes(bool on) { mWorldBoxes = on; }

private:
    bool isWorldBoxCulled(const osg::Geometry& geometry)
    {
        const osg::BoundingBox& local = geometry.getBoundingBox();
        osg::BoundingBox world;
        for (unsigned int corner = 0; corner < 8; ++corner)
            world.expandBy(local.corner(corner) * mWorlds[mLevel]);
        return mWorld.isCulled(world);
    }

public:

private:
    osg::CullingSet mWorld;  // the frustum in world coordinates
    std::vector<osg::CullingSet> mSets;
    std::vector<osg::Matrixd> mWorlds;
    std::vector<osg::Geometry*> mVisible;
    size_t mLevel = 0;
    bool mWorldBoxes = false;
};

class LeafCount : public osg::NodeVisitor {
public:
    LeafCount() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}
    void apply(osg::Geometry&) override { ++leaves; }
    long leaves = 0;
};

// The reader and writer of .osgb and the serializers of the core classes, loaded before any
// clock starts.
bool loadPlugins()
{
    osgDB::Registry* registry = osgDB::Registry::instance();
    registry->loadLibrary(registry->createLibraryNameForExtension("serializers_osg"));
    return registry->getReaderWriterForExtension("osgb") != nullptr;
}

} // namespace

const char* osgVersion()
{
    return osgGetVersion();
}

W1SceneRun osgScene(const zusg::W1Layout& layout, const std::string& path)
{
    W1SceneRun run;
    if (!loadPlugins())
        return run;
    run.rssBeforeKB = bench::statusKB("VmRSS:");
    Stopwatch watch;
    const osg::ref_ptr<osg::Group> root = build(layout);
    run.buildSeconds = watch.seconds();
    run.peakAfterBuildKB = bench::statusKB("VmHWM:");

    UpdatePass update(layout.depth());
    update.run(*root);
    run.updateSeconds = medianOf(PASSES, [&update, &root] { update.run(*root); });

    CullPass cull(layout);
    cull.run(*root);
    run.cullSeconds = medianOf(PASSES, [&update, &root] { update.run(*root); }, [&cull, &root] { cull.run(*root); });
    run.visible = static_cast<long>(cull.run(*root).size());
    cull.testWorldBoxes(true);
    run.visibleByWorldBoxes = static_cast<long>(cull.run(*root).size());

    watch = Stopwatch();
    if (!osgDB::writeNodeFile(*root, path))
        return run;
    run.saveSeconds = watch.seconds();
    std::error_code error;
    run.fileBytes = static_cast<long long>(std::filesystem::file_size(path, error));
    LeafCount count;
    root->accept(count);
    run.leaves = count.leaves;
    run.ok = !error;
    return run;
}

W1LoadRun osgLoad(const zusg::W1Layout& layout, const std::string& path)
{
    W1LoadRun run;
    if (!loadPlugins())
        return run;
    run.rssBeforeKB = bench::statusKB("VmRSS:");
    const Stopwatch watch;
    const osg::ref_ptr<osg::Node> loaded = osgDB::readRefNodeFile(path);
    run.loadSeconds = watch.seconds();
    run.peakKB = bench::statusKB("VmHWM:");
    osg::Group* root = loaded ? loaded->asGroup() : nullptr;
    if (!root)
        return run;
    UpdatePass(layout.depth()).run(*root);
    run.visible = static_cast<long>(CullPass(layout).run(*root).size());
    LeafCount count;
    root->accept(count);
    run.leaves = count.leaves;
    run.ok = true;
    return run;
}

} // namespace peers

namespace peers {

W1PickRun osgPick(const zusg::W1Layout& layout, const std::string& pixelsPath)
{
    W1PickRun run;
    std::vector<float> pixels(2 * PICK_RAYS);
    std::ifstream in(pixelsPath, std::ios::binary);
    in.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size() * sizeof(float)));
    if (!in.good())
        return run;
    const osg::ref_ptr<osg::Group> root = build(layout);
    UpdatePass(layout.depth()).run(*root);

    const long before = bench::statusKB("VmRSS:");
    Stopwatch watch;
    osg::ref_ptr<osg::KdTreeBuilder> builder = new osg::KdTreeBuilder;
    root->accept(*builder);
    run.treeSeconds = watch.seconds();
    run.treeKB = bench::statusKB("VmRSS:") - before;

    // As an application picks with that library: a segment intersector per pick, sent
    // through the scene by an intersection visitor, which uses the k-d trees.
    double fastest = 0.0;
    for (int mode = 0; mode < 2; ++mode) {
        const auto pass = [&] {
            run.hits = 0;
            for (size_t i = 0; i + 1 < pixels.size(); i += 2) {
                float start[3], end[3];
                pixelSegment(layout, pixels[i], pixels[i + 1], start, end);
                osg::ref_ptr<osgUtil::LineSegmentIntersector> intersector = new osgUtil::LineSegmentIntersector(
                    osg::Vec3d(start[0], start[1], start[2]), osg::Vec3d(end[0], end[1], end[2]));
                if (mode == 1)
                    intersector->setIntersectionLimit(osgUtil::Intersector::LIMIT_NEAREST);
                osgUtil::IntersectionVisitor visitor(intersector.get());
                root->accept(visitor);
                run.hits += intersector->containsIntersections() ? 1 : 0;
            }
        };
        pass();
        const double seconds = pickPasses(pass) / PICK_RAYS;
        if (mode == 0 || seconds < fastest) {
            fastest = seconds;
            run.peerMode = mode;
        }
    }
    run.pickSeconds = fastest;
    run.ok = true;
    return run;
}

} // namespace peers
