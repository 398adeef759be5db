#pragma once

// Helpers shared by the scene-graph and culling tests: a stream over a caller's buffer,
// the bytes of the persisted transformation, transformations built from angles, and the
// change marks of a spatial object.

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include "support/zuTestObjects.h"

#include <Wm4/Wm4Matrix3.h>

#include <pthread.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <sstream>
#include <vector>

namespace zu::test {

using Vec = Wm4::Vector3<float>;

// Reads or writes the primitives of a stream directly on a buffer, at a chosen version.
class zuRawStream : public zuBaseStream {
public:
    explicit zuRawStream(zuStreamVersion version) { SetVersion(version); }
    void openWrite(std::vector<char>& buffer) { setWindow(buffer.data(), 0, buffer.size()); }
    void openRead(std::vector<char>& buffer)
    {
        setWindow(buffer.data(), 0, buffer.size());
        setDataEnd(buffer.size());
    }
};

// The identity a stream writes for an object: the address of its persistable part, which
// some classes (the buffers) do not have at their start.
inline uint64_t id(const zuRttiInterface* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// The 63 bytes of a float transformation: matrix (row-major), translation, scale, then
// the identity, rotation-scale and uniform-scale flags.
inline zuBytes& transformBytes(zuBytes& bytes, const Wm4::Matrix3<float>& matrix, const Vec& translate,
                               const Vec& scale, bool identity, bool rs, bool uniform)
{
    for (int i = 0; i < 9; ++i)
        bytes.f32(static_cast<const float*>(matrix)[i]);
    for (int i = 0; i < 3; ++i)
        bytes.f32(translate[i]);
    for (int i = 0; i < 3; ++i)
        bytes.f32(scale[i]);
    return bytes.u8(identity).u8(rs).u8(uniform);
}

inline zuBytes& identityBytes(zuBytes& bytes)
{
    return transformBytes(bytes, Wm4::Matrix3<float>::IDENTITY, Vec(0, 0, 0), Vec(1, 1, 1), true, true, true);
}

// The rotation of `degrees` about a unit axis, in double and then rounded.
inline Wm4::Matrix3<float> rotation(const Wm4::Vector3<double>& axis, double degrees)
{
    const Wm4::Matrix3<double> m(axis, degrees * Wm4::Math<double>::DEG_TO_RAD);
    Wm4::Matrix3<float> result;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result(i, j) = static_cast<float>(m(i, j));
    return result;
}

// A rotation-scale transformation.
inline zuGenericTransformation<float> rsTransform(const Wm4::Matrix3<float>& rotate, const Vec& scale,
                                                  const Vec& translate)
{
    zuGenericTransformation<float> t;
    t.SetRotate(rotate);
    t.SetScale(scale);
    t.SetTranslate(translate);
    return t;
}

// Both change masks of an object: the dirty mask `dirty`, the update mask `update`.
inline ::testing::AssertionResult hasMasks(const zuSpatial* object, uint32_t dirty, uint32_t update)
{
    if (object->GetDirtyMask() == dirty && object->GetUpdateMask() == update)
        return ::testing::AssertionSuccess();
    std::ostringstream masks;
    masks << std::hex << "masks (dirty, update) are (0x" << object->GetDirtyMask() << ", 0x" << object->GetUpdateMask()
          << "), not (0x" << dirty << ", 0x" << update << ")";
    return ::testing::AssertionFailure() << masks.str();
}

// The same mark in both masks, of one object or of each of several.
inline ::testing::AssertionResult marked(const zuSpatial* object, uint32_t mask)
{
    return hasMasks(object, mask, mask);
}

inline ::testing::AssertionResult marked(std::initializer_list<const zuSpatial*> objects, uint32_t mask)
{
    int i = 0;
    for (const zuSpatial* object : objects) {
        if (::testing::AssertionResult result = hasMasks(object, mask, mask); !result)
            return result << " (object " << i << " of the list)";
        ++i;
    }
    return ::testing::AssertionSuccess();
}

// Runs `work` on a thread with a stack of `stackBytes`: a walk that recurses per level
// overflows it.
inline void runOnStack(size_t stackBytes, std::function<void()> work)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackBytes);
    pthread_t thread;
    const auto body = [](void* task) -> void* { return (*static_cast<std::function<void()>*>(task))(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &attributes, body, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// A valid bound with this centre and these extents, within `tolerance`, whose radius
// agrees with them.
inline void expectBox(const zuBoundingVolume& bv, const Vec& center, const Vec& extents, float tolerance = 0.0f)
{
    ASSERT_TRUE(bv.isValid());
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(bv.GetCenter()[i], center[i], tolerance) << "centre " << i;
        EXPECT_NEAR(bv.GetExtents()[i], extents[i], tolerance) << "extent " << i;
    }
    EXPECT_NEAR(bv.GetRadius(), extents.Length(), tolerance + 1e-6f);
}

// Attaches the children to the node in this order.
inline void attachAll(zuNode* node, std::initializer_list<zuSpatial*> children)
{
    for (zuSpatial* child : children)
        node->attachChild(child);
}

// The child slots of a node, empty ones included.
using Slots = std::vector<zuSpatial*>;
inline Slots childrenOf(const zuNode* node)
{
    Slots children;
    for (int i = 0; i < node->getNbChildren(); ++i)
        children.push_back(node->getChild(i));
    return children;
}

} // namespace zu::test
