// The render states and the material state: what they refuse, values read from a file
// outside their enumerations, the name vocabulary, comparison and cloning.

#include "states/zuStateRecords.h"
#include "support/zuFactoryTest.h"
#include "support/zuRecordPins.h"

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
#include <string>
#include <vector>

namespace zu::test {
namespace {

using GlobalStates = zuFactoryTest;

template <class State>
std::function<zuGlobalState*()> maker(std::function<void(State&)> change)
{
    return [change] {
        auto* state = new State;
        change(*state);
        return state;
    };
}

// States take neither a name nor controllers; the alpha state's constant colour is compared
// but not saved.
TEST_F(GlobalStates, NoNameNoControllersAndAnUnsavedConstantColour)
{
    for (zuGlobalState* created : std::initializer_list<zuGlobalState*>{new zuAlphaState, new zuCullState, new zuMaterialState,
                                                                        new zuPolygonOffsetState, new zuStencilState,
                                                                        new zuWireframeState, new zuZBufferState}) {
        zuPointer<zuGlobalState> state = created;
        state->SetName("named");
        EXPECT_EQ(state->GetName(), "") << state->GetType().GetName();
        EXPECT_FALSE(state->AttachController(zuPointer<zuTestController>(new zuTestController)));
    }
    EXPECT_EQ(zuRttiInterface::GetFactory("zuCore.zuGlobalState"), nullptr);  // abstract

    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->ConstantColor = Wm4::ColorRGBA(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<zuPointer<zuRttiInterface>> loaded = loadPin(saveToBytes({alpha.get()}, V6_32));
    ASSERT_EQ(loaded.size(), 1u);
    EXPECT_EQ(static_cast<zuAlphaState*>(loaded[0].get())->ConstantColor, Wm4::ColorRGBA(0, 0, 0, 0));
    EXPECT_FALSE(loaded[0]->Equals(alpha));
}

TEST_F(GlobalStates, OutOfRangeEnumerationsAreKeptAsRead)
{
    // Source 99, destination -1, test 8 (one past TF_ALWAYS); a z-buffer comparison of INT_MIN.
    const std::vector<zuPointer<zuRttiInterface>> loaded
        = loadPin(pinBytes("'Top Level' 'zuCore.zuAlphaState' #61 <0> #0 #0 01 #99 #-1 00 #8 ~1 |"
                           "'Top Level' 'zuCore.zuZBufferState' #51 <1> #0 #0 01 00 00 00 00 80 |"));
    ASSERT_EQ(loaded.size(), 2u);
    const auto* a = static_cast<zuAlphaState*>(loaded[0].get());
    EXPECT_EQ(std::vector<int>({a->SrcBlend, a->DstBlend, a->Test}), std::vector<int>({99, -1, 8}));
    const auto* z = static_cast<zuZBufferState*>(loaded[1].get());
    EXPECT_FALSE(z->Writable);
    // Saved again, the values come back as they were.
    const std::vector<zuPointer<zuRttiInterface>> again = loadPin(saveToBytes({loaded[0].get(), loaded[1].get()}, V6_32));
    ASSERT_EQ(again.size(), 2u);
    EXPECT_TRUE(again[0]->Equals(loaded[0]) && again[1]->Equals(loaded[1]));
    EXPECT_EQ(static_cast<zuAlphaState*>(again[0].get())->DstBlend, -1);
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
    EXPECT_TRUE(a.Equals(&b) && b.Equals(&a));
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
