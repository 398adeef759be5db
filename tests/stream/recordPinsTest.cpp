// The exact bytes every persisted class writes, at the current version and at its gates, in
// the compact form of support/zuRecordPins.h; each pin also loads back equal and fails at
// every cut inside a record. Run with ZU_PRINT_PINS=1 to print what the library writes now.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuRecordPins.h"
#include "support/zuSampleObjects.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/animation/zuKeyframeController.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/scenegraph/zuBillboardNode.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLightNode.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace zu::test {
namespace {

using Objects = std::vector<zuPointer<zuRttiInterface>>;
using V3 = Wm4::Vector3<float>;

template <class T, class Change>
Objects one(Change change)
{
    zuPointer<T> object = new T;
    change(*object);
    return {object.get()};
}

template <class T>
zuTSharedArray<T>* array(std::initializer_list<T> values)
{
    T* data = new T[values.size()];
    std::copy(values.begin(), values.end(), data);
    return new zuTSharedArray<T>(static_cast<int>(values.size()), data);
}

// A light, camera or node frame that is not the default: D = +y, U = +x, R = D x U = -z.
const V3 LOCATION(1, 2, 3), D(0, 1, 0), U(1, 0, 0), R(0, 0, -1);

constexpr auto ALONG_NEGATIVE_Z = zuCameraNode::FACING_ALONG_NEGATIVE_Z, ALONG_X = zuCameraNode::FACING_ALONG_X;

template <class Framed>
Framed* framed()
{
    Framed* object = new Framed;
    object->SetFrame(LOCATION, D, U, R);
    return object;
}

// A node "root" (a quarter turn, scaled and moved, culled never, with a world transform and
// bound and semantic metadata) holding a test leaf "bolt".
Objects nodeAndLeaf()
{
    zuPointer<zuNode> root = new zuNode;
    root->SetName("root");
    root->SetLocalTransform(rsTransform(Wm4::Matrix3<float>(0, -1, 0, 1, 0, 0, 0, 0, 1), V3(2, 2, 2), V3(1, 2, 3)));
    zuGenericTransformation<float> moved;
    moved.SetTranslate(V3(5, 6, 7));
    root->SetWorldTransform(moved);
    root->SetCullingMode(zuSpatial::CULL_NEVER);
    root->SetWorldBound(zuBoundingVolume(V3(1, 2, 3), V3(3, 4, 12)));
    zuPointer<zuSemanticMetadata> semantic = new zuSemanticMetadata;
    semantic->setValue("PartNumber", "A-1234");
    root->setMetadata(semantic);
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf(V3(0, 0, 0), V3(0.5f, 0.5f, 2));
    leaf->SetName("bolt");
    root->attachChild(leaf);
    return {root.get()};
}

// A mesh "quad" at (1, 2, 3): two triangles with normals, updated, a geometry flag set
// (flags are kept from 6.6 on).
Objects quad(bool flag)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh(makeVertices({{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, true),
                                              makeIndices({0, 1, 2, 0, 2, 3}));
    mesh->SetName("quad");
    mesh->SetLocalTransform(rsTransform(Wm4::Matrix3<float>::IDENTITY, V3(1, 1, 1), V3(1, 2, 3)));
    mesh->UpdateGS();
    mesh->UpdateModelNormals();
    mesh->SetGeometryFlag(1, flag);
    return {mesh.get()};
}

// Position 3, colour unit 0 with 4 channels, texture-coordinate unit 1 with 2, and UserUShort
// unit 0 with 2 (user families are written from 5.2 on): two vertices.
Objects vertexBuffer(bool user)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetColorChannels(0, 4);
    layout.SetTCoordChannels(1, 2);
    if (user)
        layout.SetUserUShortChannels(0, 2);
    zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(layout, 2);
    for (int k = 0; k < buffer->GetDataSize(); ++k)
        buffer->GetData()[k] = static_cast<char>(k * 3 + 1);
    return {buffer.get()};
}

const std::vector<zuRecordPin>& pins()
{
    using A = zuAlphaState;
    using S = zuStencilState;
    static const std::vector<zuRecordPin> table = {
        // A graph: records in depth-first order, each object once (a has two parents); the
        // size field only from 6.0 on.
        {"graph", {6, 32}, [] { return Objects{zuSmallGraph().root.get()}; },
         "'Top Level' 'zuTest.zuTestNode' #77 <0> 'root' #1 <1> #7 #2 <2> <3> |"
         "'zuTest.zuTestController' #95 <1> 'ctl' #0 #0 #0 #0 #0 #0 #0 #0 #0 ~1.875 01 <0> |"
         "'zuTest.zuTestNode' #50 <2> 'a' #0 #1 #0 | 'zuTest.zuTestNode' #58 <3> 'b' #0 #2 #1 <2> |"},
        {"graph at 5.20", {5, 20}, [] { return Objects{zuSmallGraph().root.get()}; },
         "'Top Level' 'zuTest.zuTestNode' <0> 'root' #1 <1> #7 #2 <2> <3> |"
         "'zuTest.zuTestController' <1> 'ctl' #0 #0 #0 #0 #0 #0 #0 #0 #0 ~1.875 01 <0> |"
         "'zuTest.zuTestNode' <2> 'a' #0 #1 #0 | 'zuTest.zuTestNode' <3> 'b' #0 #2 #1 <2> |"},
        // Render states: the object part (no name, no controllers), then the fields.
        {"alpha", {6, 32}, [] { return one<A>([](A& a) {
                 a.BlendEnabled = true; a.SrcBlend = A::SBF_ONE_MINUS_CONSTANT_ALPHA; a.DstBlend = A::DBF_ZERO;
                 a.TestEnabled = true; a.Test = A::TF_GREATER; a.Reference = 0.5f;
             }); },
         "'Top Level' 'zuCore.zuAlphaState' #61 <0> #0 #0 01 #12 #0 01 #4 ~0.5 |"},
        {"cull", {6, 32}, [] { return one<zuCullState>([](auto&) {}); },
         "'Top Level' 'zuCore.zuCullState' #51 <0> #0 #0 01 #0 #1 |"},
        {"material", {6, 32}, [] { return one<zuMaterialState>([](zuMaterialState& m) {
                 m.Ambient = Wm4::ColorRGB(0.1f, 0.2f, 0.3f); m.Diffuse = Wm4::ColorRGB(0.4f, 0.5f, 0.6f);
                 m.Specular = Wm4::ColorRGB(0.7f, 0.8f, 0.9f); m.Emissive = Wm4::ColorRGB(1.0f, 0.5f, 0.25f);
                 m.Shininess = 64.0f; m.Opacity = 0.375f;
             }); },
         "'Top Level' 'zuCore.zuMaterialState' #102 <0> #0 #0 ~0.1 ~0.2 ~0.3 ~0.4 ~0.5 ~0.6 ~0.7 ~0.8 ~0.9 ~1 ~0.5 "
         "~0.25 ~64 ~0.375 |"},
        {"polygon offset", {6, 32}, [] { return one<zuPolygonOffsetState>([](auto&) {}); },
         "'Top Level' 'zuCore.zuPolygonOffsetState' #62 <0> 00 00 00 #0 #0 #0 #0 |"},
        {"stencil", {6, 32}, [] { return one<S>([](S& s) {
                 s.Enabled = true; s.Compare = S::CF_ALWAYS; s.Reference = 0x80; s.Mask = 0x0F;
                 s.WriteMask = 0xF0000001u; s.OnFail = S::OT_INVERT; s.OnZFail = S::OT_DECREMENT;
                 s.OnZPass = S::OT_REPLACE;
             }); },
         "'Top Level' 'zuCore.zuStencilState' #74 <0> #0 #0 01 07 ~-0 00 00 #3840 #256 f0 #5 #4 #2 |"},
        {"wireframe", {6, 32}, [] { return one<zuWireframeState>([](auto&) {}); },
         "'Top Level' 'zuCore.zuWireframeState' #48 <0> 00 #0 #0 |"},
        {"z-buffer", {6, 32}, [] { return one<zuZBufferState>([](auto&) {}); },
         "'Top Level' 'zuCore.zuZBufferState' #51 <0> #0 #0 01 01 #3 |"},
        {"light", {6, 32}, [] { return Objects{spotLight()}; },
         "'Top Level' 'zuCore.zuLight' #155 <0> 'sun' #0 #3 ~4 ~5 ~6 #0 #0 ~-1 #0 ~1 #0 ~1 #0 #0 ~0.125 ~0.25 ~0.375 "
         "~0.5 ~0.625 ~0.75 ~0.875 ~1 ~0.0625 ~2.5 ~1.5 ~0.25 ~0.03125 01 ~0.5 ~8 00 |"},
        {"camera", {6, 32}, [] { return Objects{sampleCamera(false).get()}; },
         "'Top Level' 'zuCore.zuCamera' #115 <0> 'cam' #0 ~1 ~2 ~3 #0 ~1 #0 #0 #0 ~1 ~1 #0 #0 ~0.5 ~250 ~-0.25 ~0.375 "
         "~-0.5 ~0.625 00 |"},
        // A texture and its image; a texture that only names its image; a texture state with
        // an empty slot and one texture in two slots.
        {"texture", {6, 32}, [] {
             const char rgb[6] = {1, 2, 3, 4, 5, 6};
             zuPointer<zuImage> image = new zuImage(zuImage::RGB8, 2, 1, rgb);
             image->SetName("px.png");
             zuPointer<zuTexture> texture = new zuTexture(image);
             texture->SetName("bump");
             texture->SetChannel(zuTexture::CH_BUMP);
             texture->SetUnit(1);
             texture->SetWrap(zuTexture::WM_CLAMP_EDGE, zuTexture::WM_MIRRORED_REPEAT);
             texture->SetFilter(zuTexture::FM_LINEAR_MIPMAP_NEAREST, zuTexture::FM_NEAREST);
             return Objects{texture.get()}; },
         "'Top Level' 'zuCore.zuTexture' #86 <0> 'bump' #0 <1> 'px.png' #0 #3 #3 #0 #1 #1 |"
         "'zuCore.zuImage' #66 <1> 'px.png' #0 #0 #2 #1 #6 01 02 03 04 05 06 |"},
        {"named texture", {6, 32}, [] { return one<zuTexture>([](zuTexture& t) {
                 t.SetImageName("later.png");
             }); },
         "'Top Level' 'zuCore.zuTexture' #85 <0> #0 #0 #0 #0 'later.png' #2 #2 #5 #1 #0 #0 |"},
        {"texture state", {6, 32}, [] {
             zuPointer<zuTextureState> state = new zuTextureState;
             zuPointer<zuTexture> texture = new zuTexture;
             state->AttachTexture(texture);
             state->SetTexture(1, nullptr);
             state->SetTexture(2, texture);
             return Objects{state.get()}; },
         "'Top Level' 'zuCore.zuTextureState' #73 <0> #0 #0 #3 <1> #0 #0 <1> |"
         "'zuCore.zuTexture' #76 <1> #0 #0 #0 #0 #0 #2 #2 #5 #1 #0 #0 |"},
        {"image", {6, 32}, [] {
             char rgba[24];
             for (int i = 0; i < 24; ++i)
                 rgba[i] = static_cast<char>((5 * 37 + i * 11) & 0xFF);
             zuPointer<zuImage> image = new zuImage(zuImage::RGBA8, 2, 3, rgba);
             image->SetName("brick.png");
             return Objects{image.get()}; },
         "'Top Level' 'zuCore.zuImage' #87 <0> 'brick.png' #0 #1 #2 #3 18 00 ~-1480 cf da e5 f0 fb 06 11 1c 27 32 3d "
         "48 53 5e 69 74 7f 8a 95 a0 ab b6 |"},
        // Shared arrays: the quantity, then each element's components in order (a plane is
        // its normal, then its constant; matrices row by row).
        {"arrays", {6, 32}, [] {
             Wm4::Matrix4<double> matrix;
             for (int i = 0; i < 16; ++i)
                 matrix[i / 4][i % 4] = i + 0.5;
             return Objects{array<float>({1.5f, -2.0f, 0.1f}),
                            array<int>({1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}),
                            array<double>({0.1, -1e300}), array<V3>({V3(1, 2, 3), V3(-4, 5.5f, 0)}),
                            array<Wm4::Matrix4<double>>({matrix}),
                            array<Wm4::Plane3<float>>({Wm4::Plane3<float>(V3(0, 0.6f, 0.8f), -2.5f)}),
                            array<Wm4::Plane3<double>>({Wm4::Plane3<double>(Wm4::Vector3<double>(1, 0, 0), 1e-12)}),
                            array<Wm4::ColorRGBA>({Wm4::ColorRGBA(0.1f, 0.2f, 0.3f, 1.0f)}),
                            array<Wm4::Quaternion<float>>({Wm4::Quaternion<float>(0.5f, -0.5f, 0.25f, 1e-30f)}),
                            new zuMatrix3dArray}; },
         "'Top Level' 'zuCore.zuFloatArray' #59 <0> #0 #0 #3 ~1.5 ~-2 ~0.1 |"
         "'Top Level' 'zuCore.zuIntArray' #61 <1> #0 #0 04 00 00 #256 #-256 #-1 7f ~-0 |"
         "'Top Level' 'zuCore.zuDoubleArray' #64 <2> #0 #0 #2 =0.1 =-1e+300 |"
         "'Top Level' 'zuCore.zuVector3fArray' #74 <3> #0 #0 #2 ~1 ~2 ~3 ~-4 ~5.5 #0 |"
         "'Top Level' 'zuCore.zuMatrix4dArray' #178 <4> #0 #0 #1 #0 ~1.75 #0 ~1.9375 #0 ~2.0625 #0 ~2.1875 #0 "
         "~2.28125 #0 ~2.34375 #0 ~2.40625 #0 ~2.46875 =8.5 =9.5 =10.5 =11.5 =12.5 =13.5 =14.5 =15.5 |"
         "'Top Level' 'zuCore.zuPlane3fArray' #65 <5> #0 #0 #1 #0 ~0.6 ~0.8 ~-2.5 |"
         "'Top Level' 'zuCore.zuPlane3dArray' #81 <6> #0 #0 #1 #0 ~1.875 #0 #0 #0 #0 =1e-12 |"
         "'Top Level' 'zuCore.zuColorRGBAArray' #67 <7> #0 #0 #1 ~0.1 ~0.2 ~0.3 ~1 |"
         "'Top Level' 'zuCore.zuQuaternionfArray' #69 <8> #0 #0 #1 ~0.5 ~-0.5 ~0.25 60 42 a2 0d |"
         "'Top Level' 'zuCore.zuMatrix3dArray' #50 <9> #0 #0 #0 |"},
        {"array before 6.0", {5, 20}, [] { return Objects{array<int>({7})}; },
         "'Top Level' 'zuCore.zuIntArray' <0> #0 #0 #1 #7 |"},
        // Controllers: the object part, the time mapping (repeat type, min, max, phase and
        // frequency as doubles, active), the controlled object; keyframes then reference
        // their six arrays, which follow once each.
        {"controller", {6, 32}, [] {
             zuPointer<zuTestNode> node = new zuTestNode("n");
             zuPointer<zuTestController> controller = new zuTestController;
             controller->SetName("spin");
             controller->repeatType = zuController::RT_CYCLE;
             controller->minTime = 0.5, controller->maxTime = 4.25;
             controller->phase = -1.5, controller->frequency = 2.0;
             controller->active = false;
             node->AttachController(controller);
             return Objects{node.get()}; },
         "'Top Level' 'zuTest.zuTestNode' #58 <0> 'n' #1 <1> #0 #0 |"
         "'zuTest.zuTestController' #96 <1> 'spin' #0 #2 #0 ~1.75 =4.25 #0 ~-1.9375 #0 ~2 00 <0> |"},
        {"keyframes", {6, 32}, [] {
             zuPointer<zuFloatArray> times = array<float>({0.0f, 1.5f});
             zuPointer<zuVector3fArray> moves = array<V3>({V3(1, 2, 3), V3(4, 5, 6)});
             zuPointer<zuKeyframeController> controller = new zuKeyframeController;
             controller->SetName("walk");
             controller->repeatType = zuController::RT_WRAP;
             controller->maxTime = 1.5;
             controller->translationTimes = controller->rotationTimes = controller->scaleTimes = times;
             controller->translationKeys = controller->scaleKeys = moves;
             using Q = Wm4::Quaternion<float>;
             controller->rotationKeys = array<Q>({Q(1, 0, 0, 0), Q(0, 1, 0, 0)});
             return Objects{controller.get()}; },
         "'Top Level' 'zuCore.zuKeyframeController' #148 <0> 'walk' #0 #1 #0 #0 #0 ~1.9375 #0 #0 #0 ~1.875 01 #0 #0 "
         "<1> <2> <1> <3> <1> <2> |"
         "'zuCore.zuFloatArray' #55 <1> #0 #0 #2 #0 ~1.5 |"
         "'zuCore.zuVector3fArray' #74 <2> #0 #0 #2 ~1 ~2 ~3 ~4 ~5 ~6 |"
         "'zuCore.zuQuaternionfArray' #85 <3> #0 #0 #2 ~1 #0 #0 #0 #0 ~1 #0 #0 |"},
        // Settings: J3 and J4 are written last from 5.20 on only; K never.
        {"settings", {6, 32}, [] { return Objects{filledSettings()}; },
         "'Top Level' 'zuCore.zuCoreSettings' #208 <0> #0 #0 #2 'alpha' 01 ~3 ~1 ~2 00 #0 ~1e+10 ~-0.5 ~0.25 #3 'x' "
         "#0 'yz' #-7 #-16 ~0.5 #42 ~-3 #9 01 #1 #1 ~-0 #3 '2nd' 'first' 00 01 01 00 #11 #12 #15 #16 #1920 #1080 #64 "
         "#48 #13 #14 |"},
        {"settings at 5.20", {5, 20}, [] { return Objects{filledSettings()}; },
         "'Top Level' 'zuCore.zuCoreSettings' <0> #0 #0 #2 'alpha' 01 ~3 ~1 ~2 00 #0 ~1e+10 ~-0.5 ~0.25 #3 'x' #0 "
         "'yz' #-7 #-16 ~0.5 #42 ~-3 #9 01 #1 #1 ~-0 #3 '2nd' 'first' 00 01 01 00 #11 #12 #15 #16 #1920 #1080 #64 #48 "
         "#13 #14 |"},
        {"settings at 5.10", {5, 10}, [] {
             zuCoreSettings* settings = filledSettings();
             settings->J3 = settings->J4 = 0;
             return Objects{settings}; },
         "'Top Level' 'zuCore.zuCoreSettings' <0> #0 #0 #2 'alpha' 01 ~3 ~1 ~2 00 #0 ~1e+10 ~-0.5 ~0.25 #3 'x' #0 "
         "'yz' #-7 #-16 ~0.5 #42 ~-3 #9 01 #1 #1 ~-0 #3 '2nd' 'first' 00 01 01 00 #11 #12 #15 #16 #1920 #1080 #64 #48 "
         "|"},
        {"default settings", {6, 32}, [] { return Objects{new zuCoreSettings}; },
         "'Top Level' 'zuCore.zuCoreSettings' #126 <0> #0 #0 #0 #0 #100 #0 ~0.001 #1 ~1 #0 #0 #256 01 #0 #0 #5 #30 "
         "#800 #600 #320 #240 #0 #0 |"},
        // Spatial objects: name, controllers, local and world transformations, culling mode;
        // from 6.6 the world bound and the metadata; before it the bound and the states by
        // reference, ten metadata slots from 5.1 to 5.12, a dropped float up to 5.0.
        {"node and leaf", {6, 32}, nodeAndLeaf,
         "'Top Level' 'zuCore.zuNode' #223 <0> 'root' #0 #0 ~-1 #0 ~1 #0 #0 #0 #0 ~1 ~1 ~2 ~3 ~2 ~2 ~2 00 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 ~5 ~6 ~7 ~1 ~1 ~1 00 01 01 #2 ~13 ~3 ~4 ~12 ~1 ~2 ~3 #1 <1> #1 <2> |"
         "'zuCore.zuSemanticMetadata' #77 <1> #0 #0 #1 'PartNumber' 'A-1234' |"
         "'zuTest.zuTestLeaf' #235 <2> 'bolt' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 #0 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 00 00 #0 #0 #0 ~-364 07 40 ~0.5 ~0.5 ~2 #0 #0 #0 "
         "|"},
        {"node and leaf at 6.0", {6, 0}, nodeAndLeaf,
         "'Top Level' 'zuCore.zuNode' #209 <0> 'root' #0 #0 ~-1 #0 ~1 #0 #0 #0 #0 ~1 ~1 ~2 ~3 ~2 ~2 ~2 00 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 ~5 ~6 ~7 ~1 ~1 ~1 00 01 01 02 00 #0 <1> #0 #1 <2> #1 <3> |"
         "'zuCore.zuLegacySphereBV' #63 <1> #0 #0 ~1 ~2 ~3 ~13 |"
         "'zuCore.zuSemanticMetadata' #77 <2> #0 #0 #1 'PartNumber' 'A-1234' |"
         "'zuTest.zuTestLeaf' #254 <3> 'bolt' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 #0 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 #1 #0 #0 #0 #0 #0 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~0.5 ~0.5 "
         "~2 |", false},
        {"node and leaf at 5.5", {5, 5}, nodeAndLeaf,
         "'Top Level' 'zuCore.zuNode' <0> 'root' #0 #0 ~-1 #0 ~1 #0 #0 #0 #0 ~1 ~1 ~2 ~3 ~2 ~2 ~2 00 01 01 ~1 #0 #0 "
         "#0 ~1 #0 #0 #0 ~1 ~5 ~6 ~7 ~1 ~1 ~1 00 01 01 02 00 #0 <1> #0 #0 <2> #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 "
         "#0 #0 #0 #0 #0 #1 <3> |"
         "'zuCore.zuLegacySphereBV' <1> #0 #0 ~1 ~2 ~3 ~13 |"
         "'zuCore.zuSemanticMetadata' <2> #0 #0 #1 'PartNumber' 'A-1234' |"
         "'zuTest.zuTestLeaf' <3> 'bolt' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 #0 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 #1 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 "
         "#0 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~0.5 ~0.5 ~2 |", false},
        {"leaf at 5.0", {5, 0}, [] { return Objects{new zuTestLeaf(V3(1, 2, 3), V3(1, 1, 1))}; },
         "'Top Level' 'zuTest.zuTestLeaf' <0> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 #0 "
         "~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 #1 #0 #0 #0 #0 #0 #0 ~1 ~2 ~3 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 ~1 |"},
        // Special nodes after the node part: a level's slots, the light or camera (with the
        // camera node's convention from 5.14), the external reference's path.
        {"level of detail", {6, 32}, [] {
             zuPointer<zuLODNode> lod = new zuLODNode;
             lod->SetName("lod");
             zuPointer<zuDummy> dummy = new zuDummy;
             dummy->SetName("hook");
             lod->attachLODChild(1, dummy);
             return Objects{lod.get()}; },
         "'Top Level' 'zuCore.zuLODNode' #225 <0> 'lod' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 #2 #0 #0 <1> |"
         "'zuCore.zuDummy' #204 <1> 'hook' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 #0 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 |"},
        {"level of detail at 6.0", {6, 0}, [] { return Objects{new zuLODNode}; },
         "'Top Level' 'zuCore.zuLODNode' #196 <0> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 #257 #0 #0 #0 #0 #0 #0 #0 |"},
        {"light node", {6, 32}, [] { return Objects{new zuLightNode(framed<zuLight>())}; },
         "'Top Level' 'zuCore.zuLightNode' #216 <0> #0 #0 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 #0 <1> |"
         "'zuCore.zuLight' #152 <1> #0 #0 #0 ~1 ~2 ~3 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 #0 #0 #0 ~1 ~1 ~1 ~1 ~1 ~1 ~1 ~1 #0 "
         "#0 ~589232 40 ~1 01 |"},
        {"camera node", {6, 32}, [] { return Objects{new zuCameraNode(framed<zuCamera>(), ALONG_NEGATIVE_Z)}; },
         "'Top Level' 'zuCore.zuCameraNode' #221 <0> #0 #0 #0 ~1 ~-0 #0 #0 ~-1 ~-1 #0 ~-0 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 "
         "~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 #0 <1> #1 |"
         "'zuCore.zuCamera' #112 <1> #0 #0 ~1 ~2 ~3 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~1000 ~-1 ~1 ~-1 ~1 01 |"},
        {"camera node at 5.14", {5, 14}, [] { return Objects{new zuCameraNode(framed<zuCamera>(), ALONG_NEGATIVE_Z)}; },
         "'Top Level' 'zuCore.zuCameraNode' <0> #0 #0 #0 ~1 ~-0 #0 #0 ~-1 ~-1 #0 ~-0 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 #257 #0 #0 #0 #0 #0 #0 <1> #1 |"
         "'zuCore.zuCamera' <1> #0 #0 ~1 ~2 ~3 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~1000 ~-1 ~1 ~-1 ~1 01 |"},
        {"camera node at 5.13", {5, 13}, [] { return Objects{new zuCameraNode(framed<zuCamera>(), ALONG_X)}; },
         "'Top Level' 'zuCore.zuCameraNode' <0> #0 #0 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 #0 #0 "
         "#0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 #257 #0 #0 #0 #0 #0 #0 <1> |"
         "'zuCore.zuCamera' <1> #0 #0 ~1 ~2 ~3 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~1000 ~-1 ~1 ~-1 ~1 01 |"},
        {"billboard", {6, 32}, [] { return Objects{new zuBillboardNode(framed<zuCamera>())}; },
         "'Top Level' 'zuCore.zuBillboardNode' #220 <0> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 "
         "~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 #0 <1> |"
         "'zuCore.zuCamera' #112 <1> #0 #0 ~1 ~2 ~3 #0 ~1 #0 ~1 #0 #0 #0 #0 ~-1 ~1 ~1000 ~-1 ~1 ~-1 ~1 01 |"},
        {"external reference", {6, 32}, [] { return Objects{new zuXRefNode("parts/bolt.mvk")}; },
         "'Top Level' 'zuCore.zuXRefNode' #225 <0> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 #0 'parts/bolt.mvk' |"},
        // Geometry leaves: the spatial part, the model bound, the two state references and
        // two flags (before 6.6 a bound reference), the buffers, then each leaf's own fields.
        {"mesh", {6, 32}, [] { return quad(true); },
         "'Top Level' 'zuCore.zuTriMesh' #268 <0> 'quad' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 00 ~-0.03125 1b 8f 3f ~1 ~0.5 #0 ~2 ~2.5 ~3 00 ~-0.03125 "
         "1b 8f 3f ~1 ~0.5 #0 ~1 ~0.5 00 #0 #0 #0 #0 #0 01 <1> <2> |"
         "'zuCore.zuVertexBuffer' #217 <1> #0 #0 #24 #4 #96 #0 #0 #0 #0 #0 ~1 ~2 #0 #0 #0 #0 ~1 ~2 ~1 #0 #0 #0 ~1 #0 "
         "~1 #0 #0 #0 ~1 #3 #0 #3 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 |"
         "'zuCore.zuIndexBuffer' #62 <2> #0 #0 #6 #1 #1 ~-4.28689e+37 02 01 |"},
        {"mesh at 6.20", {6, 20}, [] { return quad(true); },
         "'Top Level' 'zuCore.zuTriMesh' #334 <0> 'quad' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 00 #0 ~2 ~2.5 ~3 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~0.5 00 "
         "#0 #0 ~1 ~0.5 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~0.5 00 #0 #0 #0 #0 #0 01 <1> <2> |"
         "'zuCore.zuVertexBuffer' #217 <1> #0 #0 #24 #4 #96 #0 #0 #0 #0 #0 ~1 ~2 #0 #0 #0 #0 ~1 ~2 ~1 #0 #0 #0 ~1 #0 "
         "~1 #0 #0 #0 ~1 #3 #0 #3 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 |"
         "'zuCore.zuIndexBuffer' #80 <2> #0 #0 #6 #1 #0 #1 #2 #0 #2 #3 #0 |"},
        {"mesh at 6.6", {6, 6}, [] { return quad(true); },
         "'Top Level' 'zuCore.zuTriMesh' #334 <0> 'quad' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 "
         "#0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 00 #0 ~2 ~2.5 ~3 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~0.5 00 "
         "#0 #0 ~1 ~0.5 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~0.5 00 #0 #0 #0 #0 #0 01 <1> <2> |"
         "'zuCore.zuVertexBuffer' #217 <1> #0 #0 #24 #4 #96 #0 #0 #0 #0 #0 ~1 ~2 #0 #0 #0 #0 ~1 ~2 ~1 #0 #0 #0 ~1 #0 "
         "~1 #0 #0 #0 ~1 #3 #0 #3 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 |"
         "'zuCore.zuIndexBuffer' #80 <2> #0 #0 #6 #1 #0 #1 #2 #0 #2 #3 #0 |"},
        {"mesh at 5.25", {5, 25}, [] { return quad(false); },
         "'Top Level' 'zuCore.zuTriMesh' <0> 'quad' #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 01 01 ~1 #0 #0 "
         "#0 ~1 #0 #0 #0 ~1 ~1 ~2 ~3 ~1 ~1 ~1 00 #257 #0 <1> #0 #0 <2> <3> <4> |"
         "'zuCore.zuLegacySphereBV' <1> #0 #0 ~2 ~2.5 ~3 bd 1b 8f 3f |"
         "'zuCore.zuLegacySphereBV' <2> #0 #0 ~1 ~0.5 00 ~-0.03125 1b 8f 3f |"
         "'zuCore.zuVertexBuffer' <3> #0 #0 #24 #4 #96 #0 #0 #0 #0 #0 ~1 ~2 #0 #0 #0 #0 ~1 ~2 ~1 #0 #0 #0 ~1 #0 ~1 #0 "
         "#0 #0 ~1 #3 #0 #3 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 |"
         "'zuCore.zuIndexBuffer' <4> #0 #0 #6 #1 #0 #1 #2 #0 #2 #3 #0 |", false},
        {"leaves", {6, 32}, [] {
             zuPointer<zuGeometry> geometry = new zuGeometry;
             geometry->setFlags(0x12345678);
             zuPointer<zuGenericGeometry> generic = new zuGenericGeometry;
             generic->setFlags(0x4);
             generic->setUserShader("#define SECTION\n", "Sect");
             zuPointer<zuLine> line = new zuLine;
             line->SetLineType(zuLine::STRIP);
             zuPointer<zuPoint> point = new zuPoint;
             point->SetPointSize(2.5f);
             return Objects{new zuTriangles, geometry.get(), generic.get(), line.get(), point.get()}; },
         "'Top Level' 'zuCore.zuTriangles' #266 <0> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 ~-1 ~-1 ~-1 ~-1 00 00 #0 #0 "
         "#0 #0 #0 #0 #0 #0 #0 #0 #0 |"
         "'Top Level' 'zuCore.zuGeometry' #269 <1> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 "
         "#0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 ~-1 ~-1 ~-1 ~-1 00 00 #0 #0 "
         "#0 #0 #0 #0 #0 #0 #0 #0 #0 78 56 34 12 |"
         "'Top Level' 'zuCore.zuGenericGeometry' #304 <2> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 "
         "~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 ~-1 ~-1 ~-1 ~-1 00 00 "
         "#0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #0 #4 #16 23 64 65 66 69 6e 65 20 53 45 43 54 49 4f 4e 0a 'Sect' |"
         "'Top Level' 'zuCore.zuLine' #265 <3> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 "
         "#0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 ~-1 ~-1 ~-1 ~-1 00 00 #0 #0 #0 "
         "#0 #0 #0 #0 #0 #0 #0 #0 #1 |"
         "'Top Level' 'zuCore.zuPoint' #266 <4> #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 ~1 #0 #0 "
         "#0 ~1 #0 #0 #0 ~1 #0 #0 #0 ~1 ~1 ~1 01 01 01 #0 ~-1 ~-1 ~-1 ~-1 #0 #0 #0 #0 ~-1 ~-1 ~-1 ~-1 00 00 #0 #0 #0 "
         "#0 #0 #0 #0 #0 #0 #0 #0 ~2.5 |"},
        // Vertex buffers: vertex size, quantity, data size (in floats up to 5.1), the block,
        // the channel counts; the six user families from 5.2 on.
        {"vertices", {6, 32}, [] { return vertexBuffer(true); },
         "'Top Level' 'zuCore.zuVertexBuffer' #217 <0> #0 #0 #40 #2 #80 01 04 07 0a 0d 10 13 16 19 1c 1f 22 25 28 2b "
         "2e 31 34 37 3a 3d ~812084 4c 4f 52 55 58 5b 5e 61 64 67 6a 6d ~7.99779e+34 7c 7f 82 85 88 8b 8e 91 94 97 9a "
         "9d a0 a3 a6 a9 ac af b2 b5 b8 bb be c1 c4 c7 ca cd d0 d3 d6 d9 dc df e2 e5 e8 eb ee #3 #0 #0 #1 #4 #0 #0 #0 "
         "#2 #0 #2 #0 #0 #0 #0 #0 #1 #2 #0 #0 |"},
        {"vertices at 5.2", {5, 2}, [] { return vertexBuffer(true); },
         "'Top Level' 'zuCore.zuVertexBuffer' <0> #0 #0 #40 #2 #80 01 04 07 0a 0d 10 13 16 19 1c 1f 22 25 28 2b 2e 31 "
         "34 37 3a 3d ~812084 4c 4f 52 55 58 5b 5e 61 64 67 6a 6d ~7.99779e+34 7c 7f 82 85 88 8b 8e 91 94 97 9a 9d a0 "
         "a3 a6 a9 ac af b2 b5 b8 bb be c1 c4 c7 ca cd d0 d3 d6 d9 dc df e2 e5 e8 eb ee #3 #0 #0 #1 #4 #0 #0 #0 #2 #0 "
         "#2 #0 #0 #0 #0 #0 #1 #2 #0 #0 |"},
        {"vertices at 5.1", {5, 1}, [] { return vertexBuffer(false); },
         "'Top Level' 'zuCore.zuVertexBuffer' <0> #0 #0 #9 #2 #18 01 04 07 0a 0d 10 13 16 19 1c 1f 22 25 28 2b 2e 31 "
         "34 37 3a 3d ~812084 4c 4f 52 55 58 5b 5e 61 64 67 6a 6d ~7.99779e+34 7c 7f 82 85 88 8b 8e 91 94 97 9a 9d a0 "
         "a3 a6 a9 ac af b2 b5 b8 bb be c1 c4 c7 ca cd d0 d3 d6 #3 #0 #0 #1 #4 #0 #0 #0 #2 #0 #2 #0 #0 |"},
        {"vertices at 4.3", {4, 3}, [] {
             zuAttributes old;
             old.SetPositionChannels(3);
             old.SetNormalChannels(3);
             old.SetColorChannels(0, 3);
             old.SetTCoordChannels(0, 2);
             zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(old, 1);
             for (int k = 0; k < buffer->GetDataSize(); ++k)
                 buffer->GetData()[k] = static_cast<char>(200 - k);
             return Objects{buffer.get()}; },
         "'Top Level' 'zuCore.zuVertexBuffer' <0> #0 #0 0b 00 00 #256 #2816 ~-25572 c5 c4 c3 c2 c1 c0 bf be bd bc bb "
         "ba b9 b8 b7 b6 b5 b4 b3 b2 b1 b0 af ae ad ac ab aa a9 a8 a7 a6 a5 a4 a3 a2 a1 a0 9f 9e 9d #3 #3 #1 #3 #1 #2 "
         "|"},
    };
    return table;
}

TEST(RecordPins, EveryClassWritesItsRecordsExactly)
{
    zuTestFactories factories;
    const bool print = std::getenv("ZU_PRINT_PINS") != nullptr;
    for (const zuRecordPin& pin : pins()) {
        if (print) {
            std::printf("%s\n%s\n", pin.what, pinOf(pin.make(), pin.version).c_str());
            continue;
        }
        EXPECT_TRUE(checkPin(pin)) << pin.what;
    }
}

} // namespace
} // namespace zu::test
