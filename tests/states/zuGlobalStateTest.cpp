// The render states and the material state: their exact records, round trips, damaged
// records, the name vocabulary, comparison and cloning.

#include "states/zuStateRecords.h"

#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace zu::test {
namespace {

class GlobalStates : public ::testing::Test {
protected:
    zuTestFactories factories;
};

using Fields = std::function<void(zuBytes&)>;

// A whole 6.32 stream of one top-level state: the marker, the record start and the
// `fieldBytes` bytes that `fields` appends.
std::vector<char> recordOf(const zuRttiInterface* state, int fieldBytes, const Fields& fields)
{
    zuBytes bytes;
    recordStart(bytes.str("Top Level"), state->GetType().GetName(), id(state), "", fieldBytes);
    const size_t start = bytes.size();
    fields(bytes);
    EXPECT_EQ(bytes.size() - start, static_cast<size_t>(fieldBytes)) << state->GetType().GetName();
    return bytes.bytes();
}

void u32(zuBytes& bytes, uint32_t value)
{
    bytes.raw(&value, 4);
}

template <class State>
std::function<zuGlobalState*()> maker(std::function<void(State&)> change = nullptr)
{
    return [change] {
        auto* state = new State;
        if (change)
            change(*state);
        return state;
    };
}

struct RecordCase {
    const char* label;
    std::function<zuGlobalState*()> make;
    int stateType;
    int fieldBytes;
    Fields fields;
};

std::vector<RecordCase> recordCases()
{
    using A = zuAlphaState;
    using S = zuStencilState;
    using M = zuMaterialState;
    const auto floats = [](std::vector<float> values) {
        return [values](zuBytes& b) {
            for (float value : values)
                b.f32(value);
        };
    };
    return {
        {"default alpha", maker<A>(), 0, 18, [](zuBytes& b) { b.u8(0).i32(4).i32(5).u8(0).i32(7).f32(0.0f); }},
        {"custom alpha", maker<A>([](A& a) {
             a.BlendEnabled = true;
             a.SrcBlend = A::SBF_ONE_MINUS_CONSTANT_ALPHA;
             a.DstBlend = A::DBF_ZERO;
             a.TestEnabled = true;
             a.Test = A::TF_GREATER;
             a.Reference = 0.5f;
             a.ConstantColor = Wm4::ColorRGBA(0.1f, 0.2f, 0.3f, 0.4f);
         }),
         0, 18, [](zuBytes& b) { b.u8(1).i32(12).i32(0).u8(1).i32(4).f32(0.5f); }},
        {"default cull", maker<zuCullState>(), 1, 9, [](zuBytes& b) { b.u8(1).i32(0).i32(1); }},
        {"default material", maker<M>(), 2, 56, floats({0.2f, 0.2f, 0.2f, 0.8f, 0.8f, 0.8f, 0, 0, 0, 0, 0, 0, 1, 1})},
        {"custom material", maker<M>([](M& m) {
             m.Ambient = Wm4::ColorRGB(0.1f, 0.2f, 0.3f);
             m.Diffuse = Wm4::ColorRGB(0.4f, 0.5f, 0.6f);
             m.Specular = Wm4::ColorRGB(0.7f, 0.8f, 0.9f);
             m.Emissive = Wm4::ColorRGB(1.0f, 0.5f, 0.25f);
             m.Shininess = 64.0f;
             m.Opacity = 0.375f;
         }),
         2, 56, floats({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f, 1.0f, 0.5f, 0.25f, 64.0f, 0.375f})},
        {"default polygon offset", maker<zuPolygonOffsetState>(), 3, 11,
         [](zuBytes& b) { b.u8(0).u8(0).u8(0).f32(0.0f).f32(0.0f); }},
        {"default stencil", maker<S>(), 4, 29,
         [](zuBytes& b) {
             b.u8(0).i32(0).i32(0);
             u32(b, 0xFFFFFFFFu);
             u32(b, 0xFFFFFFFFu);
             b.i32(0).i32(0).i32(0);
         }},
        {"custom stencil", maker<S>([](S& s) {
             s.Enabled = true;
             s.Compare = S::CF_ALWAYS;
             s.Reference = 0x80;
             s.Mask = 0x0F;
             s.WriteMask = 0xF0000001u;
             s.OnFail = S::OT_INVERT;
             s.OnZFail = S::OT_DECREMENT;
             s.OnZPass = S::OT_REPLACE;
         }),
         4, 29,
         [](zuBytes& b) {
             b.u8(1).i32(7);
             u32(b, 0x80);
             u32(b, 0x0F);
             u32(b, 0xF0000001u);
             b.i32(5).i32(4).i32(2);
         }},
        {"default wireframe", maker<zuWireframeState>(), 5, 1, [](zuBytes& b) { b.u8(0); }},
        {"default z-buffer", maker<zuZBufferState>(), 6, 6, [](zuBytes& b) { b.u8(1).u8(1).i32(3); }},
    };
}

// Each state writes exactly its fields after the object part; the bytes load back into an
// equal state that saves the same fields again. States carry no name and no controllers.
TEST_F(GlobalStates, RecordsAt632RoundTripAndCarryTheStateType)
{
    for (const RecordCase& c : recordCases()) {
        SCOPED_TRACE(c.label);
        zuPointer<zuGlobalState> state = c.make();
        EXPECT_EQ(state->GetStateType(), c.stateType);
        const std::vector<char> expected = recordOf(state, c.fieldBytes, c.fields);
        EXPECT_EQ(saveToBytes({state}, V6_32), expected);

        const std::vector<zuPointer<zuObject>> loaded = loadRecords(expected);
        ASSERT_EQ(loaded.size(), 1u);
        ASSERT_TRUE(loaded[0]->IsExactly(state->GetType()));
        if (state->IsExactly(zuAlphaState::TYPE)) {
            // The constant colour is compared but not saved: it loads as zeros.
            auto* alpha = static_cast<zuAlphaState*>(state.get());
            EXPECT_EQ(static_cast<zuAlphaState*>(loaded[0].get())->ConstantColor, Wm4::ColorRGBA(0, 0, 0, 0));
            EXPECT_EQ(loaded[0]->Equals(state), alpha->ConstantColor == Wm4::ColorRGBA(0, 0, 0, 0));
            alpha->ConstantColor = Wm4::ColorRGBA();
        }
        EXPECT_TRUE(loaded[0]->Equals(state));
        EXPECT_EQ(saveToBytes({loaded[0]}, V6_32), recordOf(loaded[0], c.fieldBytes, c.fields));

        loaded[0]->SetName("named");
        EXPECT_EQ(loaded[0]->GetName(), "");
        zuPointer<zuTestController> controller = new zuTestController;
        EXPECT_FALSE(loaded[0]->AttachController(controller));
        EXPECT_EQ(loaded[0]->GetControllerQuantity(), 0);
    }
    EXPECT_STREQ(zuGlobalState::TYPE.GetName(), "zuCore.zuGlobalState");
    EXPECT_EQ(zuGlobalState::TYPE.GetBaseType(), &zuObject::TYPE);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuCore.zuGlobalState"), nullptr);  // abstract
}

TEST_F(GlobalStates, TruncatedOrPaddedRecordsFailTheLoadAndHandOutNothing)
{
    for (const RecordCase& c : recordCases()) {
        SCOPED_TRACE(c.label);
        zuPointer<zuGlobalState> state = c.make();
        // Cut inside the fields: the reads run past the end of the data.
        std::vector<char> cut = recordOf(state, c.fieldBytes, c.fields);
        cut.pop_back();
        EXPECT_TRUE(loadRecords(cut).empty());
        // One byte more than the fields: the size field no longer matches what was read.
        EXPECT_TRUE(loadRecords(recordOf(state, c.fieldBytes + 1, [&c](zuBytes& b) {
            c.fields(b);
            b.u8(0);
        })).empty());
    }
}

TEST_F(GlobalStates, OutOfRangeEnumerationsAreKeptAsReadAndNameAsUnknown)
{
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    // Source 99, destination -1, test 8 (one past TF_ALWAYS).
    const Fields fields = [](zuBytes& b) { b.u8(1).i32(99).i32(-1).u8(0).i32(8).f32(1.0f); };
    std::vector<zuPointer<zuObject>> loaded = loadRecords(recordOf(alpha, 18, fields));
    ASSERT_EQ(loaded.size(), 1u);
    ASSERT_TRUE(loaded[0]->IsExactly(zuAlphaState::TYPE));
    const auto* a = static_cast<zuAlphaState*>(loaded[0].get());
    EXPECT_EQ(static_cast<int>(a->SrcBlend), 99);
    EXPECT_EQ(static_cast<int>(a->DstBlend), -1);
    EXPECT_EQ(static_cast<int>(a->Test), 8);
    EXPECT_STREQ(zuAlphaState::GetSrcBlendName(a->SrcBlend), "UNKNOWN");
    EXPECT_STREQ(zuAlphaState::GetDstBlendName(a->DstBlend), "UNKNOWN");
    EXPECT_STREQ(zuAlphaState::GetTestModeName(a->Test), "UNKNOWN");
    EXPECT_EQ(saveToBytes({loaded[0]}, V6_32), recordOf(loaded[0], 18, fields));

    zuPointer<zuZBufferState> zbuffer = new zuZBufferState;
    loaded = loadRecords(recordOf(zbuffer, 6, [](zuBytes& b) { b.u8(1).u8(0).i32(-2147483647 - 1); }));
    ASSERT_EQ(loaded.size(), 1u);
    ASSERT_TRUE(loaded[0]->IsExactly(zuZBufferState::TYPE));
    const auto* z = static_cast<zuZBufferState*>(loaded[0].get());
    EXPECT_FALSE(z->Writable);
    EXPECT_STREQ(zuZBufferState::GetCompareModeName(z->Compare), "UNKNOWN");
}

// Values outside an enumeration name as "UNKNOWN", never as a neighbour's name.
TEST_F(GlobalStates, NamesOutsideTheTablesAreUnknown)
{
    const std::pair<const char* (*)(int), int> lookUps[] = {
        {zuAlphaState::GetSrcBlendName, zuAlphaState::SBF_QUANTITY}, {zuAlphaState::GetDstBlendName, zuAlphaState::DBF_QUANTITY},
        {zuAlphaState::GetTestModeName, zuAlphaState::TF_QUANTITY},   {zuCullState::GetFrontModeName, zuCullState::FT_QUANTITY},
        {zuCullState::GetCullModeName, zuCullState::CT_QUANTITY},     {zuStencilState::GetCompareName, zuStencilState::CF_QUANTITY},
        {zuStencilState::GetOperationName, zuStencilState::OT_QUANTITY},
        {zuZBufferState::GetCompareModeName, zuZBufferState::CF_QUANTITY}, {zuLight::GetLightTypeName, zuLight::LT_QUANTITY},
    };
    for (const auto& [lookUp, size] : lookUps) {
        EXPECT_STRNE(lookUp(size - 1), "UNKNOWN");
        for (int outside : {-1, size, -2147483647 - 1})
            EXPECT_STREQ(lookUp(outside), "UNKNOWN") << lookUp(0) << " " << outside;
    }
}

// One change of one field away from the default, for every field of every state.
std::vector<std::pair<std::string, std::function<zuGlobalState*()>>> mutations()
{
    using A = zuAlphaState;
    using C = zuCullState;
    using M = zuMaterialState;
    using P = zuPolygonOffsetState;
    using S = zuStencilState;
    using W = zuWireframeState;
    using Z = zuZBufferState;
    return {
        {"alpha blend", maker<A>([](A& s) { s.BlendEnabled = true; })},
        {"alpha source", maker<A>([](A& s) { s.SrcBlend = A::SBF_ONE; })},
        {"alpha test enabled", maker<A>([](A& s) { s.TestEnabled = true; })},
        {"alpha test", maker<A>([](A& s) { s.Test = A::TF_NEVER; })},
        {"alpha reference", maker<A>([](A& s) { s.Reference = 1e-30f; })},
        {"alpha colour", maker<A>([](A& s) { s.ConstantColor = Wm4::ColorRGBA(0, 0, 0, 1); })},
        {"cull enabled", maker<C>([](C& s) { s.Enabled = false; })},
        {"cull front", maker<C>([](C& s) { s.FrontFace = C::FT_CW; })},
        {"cull face", maker<C>([](C& s) { s.CullFace = C::CT_FRONT; })},
        {"material specular", maker<M>([](M& s) { s.Specular[2] = 2e-6f; })},
        {"material opacity", maker<M>([](M& s) { s.Opacity = 0.5f; })},
        {"offset fill", maker<P>([](P& s) { s.FillEnabled = true; })},
        {"offset line", maker<P>([](P& s) { s.LineEnabled = true; })},
        {"offset point", maker<P>([](P& s) { s.PointEnabled = true; })},
        {"offset scale", maker<P>([](P& s) { s.Scale = -1.0f; })},
        {"offset bias", maker<P>([](P& s) { s.Bias = 2.0f; })},
        {"stencil enabled", maker<S>([](S& s) { s.Enabled = true; })},
        {"stencil compare", maker<S>([](S& s) { s.Compare = S::CF_LESS; })},
        {"stencil reference", maker<S>([](S& s) { s.Reference = 1; })},
        {"stencil mask", maker<S>([](S& s) { s.Mask = 0x7FFFFFFF; })},
        {"stencil write mask", maker<S>([](S& s) { s.WriteMask = 0; })},
        {"stencil on fail", maker<S>([](S& s) { s.OnFail = S::OT_ZERO; })},
        {"stencil on z fail", maker<S>([](S& s) { s.OnZFail = S::OT_INCREMENT; })},
        {"stencil on z pass", maker<S>([](S& s) { s.OnZPass = S::OT_INVERT; })},
        {"wireframe", maker<W>([](W& s) { s.Enabled = true; })},
        {"z enabled", maker<Z>([](Z& s) { s.Enabled = false; })},
        {"z writable", maker<Z>([](Z& s) { s.Writable = false; })},
        {"z compare", maker<Z>([](Z& s) { s.Compare = Z::CF_GREATER; })},
    };
}

// Equals sees every field; Clone copies every field into a new or an existing state.
TEST_F(GlobalStates, EqualsComparesEveryFieldAndCloneCopiesThem)
{
    for (const auto& [label, make] : mutations()) {
        SCOPED_TRACE(label);
        zuPointer<zuGlobalState> changed = make();
        zuPointer<zuGlobalState> plain = static_cast<zuGlobalState*>(
            zuRttiInterface::GetCreateFunction(changed->GetType().GetName())());
        EXPECT_FALSE(plain->Equals(changed) || changed->Equals(plain));
        zuRttiInterface* created = nullptr;
        ASSERT_TRUE(changed->Clone(created));
        zuPointer<zuObject> holder = static_cast<zuObject*>(created);
        EXPECT_TRUE(created->Equals(changed));
        zuRttiInterface* target = plain.get();
        ASSERT_TRUE(changed->Clone(target));
        EXPECT_TRUE(plain->Equals(changed));
    }
}

TEST_F(GlobalStates, EqualsLeavesOutTheDestinationFactorTheZLabelAndMaterialDifferencesBelowAMillionth)
{
    zuAlphaState a;
    zuAlphaState b;
    a.DstBlend = zuAlphaState::DBF_ONE_MINUS_SRC_ALPHA;
    b.DstBlend = zuAlphaState::DBF_ONE;
    EXPECT_TRUE(a.Equals(&b));
    EXPECT_TRUE(b.Equals(&a));
    zuMaterialState m;
    zuMaterialState n;
    n.Specular[2] = 5e-7f;
    EXPECT_TRUE(m.Equals(&n));

    // Clone copies what Equals leaves out.
    a.DstBlend = zuAlphaState::DBF_CONSTANT_ALPHA;
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(a.Clone(target));
    zuPointer<zuAlphaState> copy = static_cast<zuAlphaState*>(target);
    EXPECT_EQ(copy->DstBlend, zuAlphaState::DBF_CONSTANT_ALPHA);
    zuZBufferState zbuffer;
    zbuffer.Label = "overlay pass";
    target = nullptr;
    ASSERT_TRUE(zbuffer.Clone(target));
    zuPointer<zuZBufferState> zcopy = static_cast<zuZBufferState*>(target);
    EXPECT_EQ(zcopy->Label, "overlay pass");
    // The label is a note, not render state.
    zcopy->Label = "other";
    EXPECT_TRUE(zcopy->Equals(&zbuffer));
}

} // namespace
} // namespace zu::test
