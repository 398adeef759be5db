// The behaviour of the render states apart from their records: defaults, the name
// vocabulary, comparison, cloning and registration.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCullState.h>
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

TEST_F(GlobalStates, DefaultAlphaStateSavesItsDefaultsAndReturnsWithoutItsConstantColour)
{
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->ConstantColor = Wm4::ColorRGBA(1.0f, 0.5f, 0.25f, 1.0f);
    std::vector<char> saved = saveToBytes({alpha}, zuStreamVersion(6, 32));

    // The object part (no name, no controllers), then false, 4, 5, false, 7, 0.0.
    zuBytes expected;
    expected.str("Top Level").str("zuCore.zuAlphaState").i32(4 + 19 + 4 + 8 + 4 + 4 + 18);
    expected.u64(reinterpret_cast<uintptr_t>(alpha.get())).str("").i32(0);
    expected.u8(0).i32(4).i32(5).u8(0).i32(7).f32(0.0f);
    EXPECT_EQ(saved, expected.bytes());

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_TRUE(stream.GetObjectAt(0)->IsExactly(zuAlphaState::TYPE));
    const auto* loaded = static_cast<const zuAlphaState*>(stream.GetObjectAt(0));
    EXPECT_EQ(loaded->ConstantColor, Wm4::ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f));
    EXPECT_FALSE(loaded->Equals(alpha));  // the colour is compared
    alpha->ConstantColor = Wm4::ColorRGBA();
    EXPECT_TRUE(loaded->Equals(alpha));
}

TEST_F(GlobalStates, AlphaStatesDifferingOnlyInTheDestinationFactorAreEqual)
{
    zuAlphaState a;
    zuAlphaState b;
    a.DstBlend = zuAlphaState::DBF_ONE_MINUS_SRC_ALPHA;
    b.DstBlend = zuAlphaState::DBF_ONE;
    EXPECT_TRUE(a.Equals(&b));
    EXPECT_TRUE(b.Equals(&a));
}

TEST_F(GlobalStates, DefaultZBufferStateTestsLessOrEqualAndWritesDepth)
{
    zuZBufferState zbuffer;
    EXPECT_TRUE(zbuffer.Enabled);
    EXPECT_TRUE(zbuffer.Writable);
    EXPECT_STREQ(zuZBufferState::ms_aacCompareMode[zbuffer.Compare], "CF_LEQUAL");
    EXPECT_STREQ(zuZBufferState::GetCompareModeName(zbuffer.Compare), "CF_LEQUAL");
    EXPECT_TRUE(zbuffer.Label.empty());
}

TEST_F(GlobalStates, DefaultsOfTheOtherStates)
{
    zuAlphaState alpha;
    EXPECT_STREQ(zuAlphaState::GetSrcBlendName(alpha.SrcBlend), "SBF_SRC_ALPHA");
    EXPECT_STREQ(zuAlphaState::GetDstBlendName(alpha.DstBlend), "DBF_ONE_MINUS_SRC_ALPHA");
    EXPECT_STREQ(zuAlphaState::GetTestModeName(alpha.Test), "TF_ALWAYS");
    zuCullState cull;
    EXPECT_TRUE(cull.Enabled);
    EXPECT_STREQ(zuCullState::GetFrontModeName(cull.FrontFace), "FT_CCW");
    EXPECT_STREQ(zuCullState::GetCullModeName(cull.CullFace), "CT_BACK");
    zuStencilState stencil;
    EXPECT_STREQ(zuStencilState::GetCompareName(stencil.Compare), "CF_NEVER");
    EXPECT_EQ(stencil.Mask, 0xFFFFFFFFu);
    EXPECT_EQ(stencil.WriteMask, 0xFFFFFFFFu);
    EXPECT_STREQ(zuStencilState::GetOperationName(stencil.OnZPass), "OT_KEEP");
}

// The tables are the vocabulary tools print: every string, in enumerator order.
TEST_F(GlobalStates, NameTablesHoldTheListedNamesInOrder)
{
    const std::vector<std::string> compare = {"CF_NEVER",   "CF_LESS",     "CF_EQUAL",  "CF_LEQUAL",
                                              "CF_GREATER", "CF_NOTEQUAL", "CF_GEQUAL", "CF_ALWAYS"};
    struct Table {
        const char* name;
        std::vector<std::string> actual;
        std::function<const char*(int)> lookUp;
        std::vector<std::string> expected;
    };
    auto strings = [](const auto& table) { return std::vector<std::string>(std::begin(table), std::end(table)); };
    const Table tables[] = {
        {"ms_aacSrcBlend", strings(zuAlphaState::ms_aacSrcBlend), zuAlphaState::GetSrcBlendName,
         {"SBF_ZERO", "SBF_ONE", "SBF_DST_COLOR", "SBF_ONE_MINUS_DST_COLOR", "SBF_SRC_ALPHA",
          "SBF_ONE_MINUS_SRC_ALPHA", "SBF_DST_ALPHA", "SBF_ONE_MINUS_DST_ALPHA", "SBF_SRC_ALPHA_SATURATE",
          "SBF_CONSTANT_COLOR", "SBF_ONE_MINUS_CONSTANT_COLOR", "SBF_CONSTANT_ALPHA",
          "SBF_ONE_MINUS_CONSTANT_ALPHA"}},
        {"ms_aacDstBlend", strings(zuAlphaState::ms_aacDstBlend), zuAlphaState::GetDstBlendName,
         {"DBF_ZERO", "DBF_ONE", "DBF_SRC_COLOR", "DBF_ONE_MINUS_SRC_COLOR", "DBF_SRC_ALPHA",
          "DBF_ONE_MINUS_SRC_ALPHA", "DBF_DST_ALPHA", "DBF_ONE_MINUS_DST_ALPHA", "DBF_CONSTANT_COLOR",
          "DBF_ONE_MINUS_CONSTANT_COLOR", "DBF_CONSTANT_ALPHA", "DBF_ONE_MINUS_CONSTANT_ALPHA"}},
        {"ms_aacTestMode", strings(zuAlphaState::ms_aacTestMode), zuAlphaState::GetTestModeName,
         {"TF_NEVER", "TF_LESS", "TF_EQUAL", "TF_LEQUAL", "TF_GREATER", "TF_NOTEQUAL", "TF_GEQUAL", "TF_ALWAYS"}},
        {"ms_aacFrontMode", strings(zuCullState::ms_aacFrontMode), zuCullState::GetFrontModeName,
         {"FT_CCW", "FT_CW"}},
        {"ms_aacCullMode", strings(zuCullState::ms_aacCullMode), zuCullState::GetCullModeName,
         {"CT_FRONT", "CT_BACK"}},
        {"ms_aacCompare", strings(zuStencilState::ms_aacCompare), zuStencilState::GetCompareName, compare},
        {"ms_aacOperation", strings(zuStencilState::ms_aacOperation), zuStencilState::GetOperationName,
         {"OT_KEEP", "OT_ZERO", "OT_REPLACE", "OT_INCREMENT", "OT_DECREMENT", "OT_INVERT"}},
        {"ms_aacCompareMode", strings(zuZBufferState::ms_aacCompareMode), zuZBufferState::GetCompareModeName,
         compare},
    };
    for (const Table& table : tables) {
        SCOPED_TRACE(table.name);
        EXPECT_EQ(table.actual, table.expected);
        const int size = static_cast<int>(table.expected.size());
        for (int i = 0; i < size; ++i)
            EXPECT_EQ(table.lookUp(i), table.expected[static_cast<size_t>(i)]);
        for (int outside : {-1, size, size + 1000, -2147483647 - 1})
            EXPECT_STREQ(table.lookUp(outside), "UNKNOWN");
    }
    // The enumerator values are the table positions.
    EXPECT_EQ(zuAlphaState::SBF_ONE_MINUS_CONSTANT_ALPHA, 12);
    EXPECT_EQ(zuAlphaState::DBF_ONE_MINUS_CONSTANT_ALPHA, 11);
    EXPECT_EQ(zuStencilState::OT_INVERT, 5);
    EXPECT_EQ(zuZBufferState::CF_ALWAYS, 7);
}

TEST_F(GlobalStates, StateTypeNumbersAndTypeRecords)
{
    EXPECT_EQ(zuGlobalState::ALPHA, 0);
    EXPECT_EQ(zuGlobalState::CULL, 1);
    EXPECT_EQ(zuGlobalState::MATERIAL, 2);
    EXPECT_EQ(zuGlobalState::POLYGONOFFSET, 3);
    EXPECT_EQ(zuGlobalState::STENCIL, 4);
    EXPECT_EQ(zuGlobalState::WIREFRAME, 5);
    EXPECT_EQ(zuGlobalState::ZBUFFER, 6);
    EXPECT_EQ(zuGlobalState::TEXTURE, 7);
    EXPECT_STREQ(zuGlobalState::TYPE.GetName(), "zuCore.zuGlobalState");
    EXPECT_EQ(zuGlobalState::TYPE.GetBaseType(), &zuObject::TYPE);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuCore.zuGlobalState"), nullptr);

    const std::pair<const char*, int> registered[] = {
        {"zuCore.zuAlphaState", 0},   {"zuCore.zuCullState", 1},      {"zuCore.zuPolygonOffsetState", 3},
        {"zuCore.zuStencilState", 4}, {"zuCore.zuWireframeState", 5}, {"zuCore.zuZBufferState", 6},
    };
    for (const auto& [name, stateType] : registered) {
        SCOPED_TRACE(name);
        EXPECT_NE(zuRttiInterface::GetFactory(name), nullptr);
        const zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(name);
        ASSERT_NE(create, nullptr);
        zuPointer<zuObject> object = static_cast<zuObject*>(create());
        EXPECT_STREQ(object->GetType().GetName(), name);
        ASSERT_TRUE(object->IsDerived(zuGlobalState::TYPE));
        EXPECT_EQ(static_cast<zuGlobalState*>(object.get())->GetStateType(), stateType);
        // States carry no name and no controllers.
        object->SetName("named");
        EXPECT_EQ(object->GetName(), "");
        zuPointer<zuTestController> controller = new zuTestController;
        EXPECT_FALSE(object->AttachController(controller));
        EXPECT_EQ(object->GetControllerQuantity(), 0);
    }
}

// One change of one field away from the default, for every field of every state.
struct Mutation {
    std::string label;
    std::function<zuGlobalState*()> make;
};

template <class State>
Mutation mutation(const std::string& label, std::function<void(State&)> change)
{
    return {label, [change] {
                auto* state = new State;
                change(*state);
                return state;
            }};
}

std::vector<Mutation> mutations()
{
    using A = zuAlphaState;
    using C = zuCullState;
    using P = zuPolygonOffsetState;
    using S = zuStencilState;
    using W = zuWireframeState;
    using Z = zuZBufferState;
    return {
        mutation<A>("alpha blend", [](A& s) { s.BlendEnabled = true; }),
        mutation<A>("alpha source", [](A& s) { s.SrcBlend = A::SBF_ONE; }),
        mutation<A>("alpha test enabled", [](A& s) { s.TestEnabled = true; }),
        mutation<A>("alpha test", [](A& s) { s.Test = A::TF_NEVER; }),
        mutation<A>("alpha reference", [](A& s) { s.Reference = 1e-30f; }),
        mutation<A>("alpha colour", [](A& s) { s.ConstantColor = Wm4::ColorRGBA(0, 0, 0, 1); }),
        mutation<C>("cull enabled", [](C& s) { s.Enabled = false; }),
        mutation<C>("cull front", [](C& s) { s.FrontFace = C::FT_CW; }),
        mutation<C>("cull face", [](C& s) { s.CullFace = C::CT_FRONT; }),
        mutation<P>("offset fill", [](P& s) { s.FillEnabled = true; }),
        mutation<P>("offset line", [](P& s) { s.LineEnabled = true; }),
        mutation<P>("offset point", [](P& s) { s.PointEnabled = true; }),
        mutation<P>("offset scale", [](P& s) { s.Scale = -1.0f; }),
        mutation<P>("offset bias", [](P& s) { s.Bias = 2.0f; }),
        mutation<S>("stencil enabled", [](S& s) { s.Enabled = true; }),
        mutation<S>("stencil compare", [](S& s) { s.Compare = S::CF_LESS; }),
        mutation<S>("stencil reference", [](S& s) { s.Reference = 1; }),
        mutation<S>("stencil mask", [](S& s) { s.Mask = 0x7FFFFFFF; }),
        mutation<S>("stencil write mask", [](S& s) { s.WriteMask = 0; }),
        mutation<S>("stencil on fail", [](S& s) { s.OnFail = S::OT_ZERO; }),
        mutation<S>("stencil on z fail", [](S& s) { s.OnZFail = S::OT_INCREMENT; }),
        mutation<S>("stencil on z pass", [](S& s) { s.OnZPass = S::OT_INVERT; }),
        mutation<W>("wireframe", [](W& s) { s.Enabled = true; }),
        mutation<Z>("z enabled", [](Z& s) { s.Enabled = false; }),
        mutation<Z>("z writable", [](Z& s) { s.Writable = false; }),
        mutation<Z>("z compare", [](Z& s) { s.Compare = Z::CF_GREATER; }),
    };
}

zuGlobalState* defaultOfSameClass(const zuGlobalState& state)
{
    return static_cast<zuGlobalState*>(zuRttiInterface::GetCreateFunction(state.GetType().GetName())());
}

TEST_F(GlobalStates, EqualsComparesEveryOtherField)
{
    for (const Mutation& m : mutations()) {
        SCOPED_TRACE(m.label);
        zuPointer<zuGlobalState> changed = m.make();
        zuPointer<zuGlobalState> plain = defaultOfSameClass(*changed);
        EXPECT_TRUE(plain->Equals(plain));
        EXPECT_FALSE(plain->Equals(changed));
        EXPECT_FALSE(changed->Equals(plain));
        EXPECT_FALSE(changed->Equals(nullptr));
    }
}

TEST_F(GlobalStates, StatesOfDifferentClassesNeverCompareEqual)
{
    zuPointer<zuWireframeState> wireframe = new zuWireframeState;
    zuPointer<zuCullState> cull = new zuCullState;
    zuPointer<zuTestNode> node = new zuTestNode;
    EXPECT_FALSE(wireframe->Equals(cull));
    EXPECT_FALSE(cull->Equals(wireframe));
    EXPECT_FALSE(wireframe->Equals(node));
}

TEST_F(GlobalStates, CloneCreatesOrOverwritesTheTargetWithEveryField)
{
    for (const Mutation& m : mutations()) {
        SCOPED_TRACE(m.label);
        zuPointer<zuGlobalState> changed = m.make();
        zuRttiInterface* created = nullptr;
        ASSERT_TRUE(changed->Clone(created));
        zuPointer<zuObject> holder = static_cast<zuObject*>(created);
        ASSERT_TRUE(created->IsExactly(changed->GetType()));
        EXPECT_TRUE(created->Equals(changed));

        zuPointer<zuGlobalState> existing = defaultOfSameClass(*changed);
        zuRttiInterface* target = existing.get();
        ASSERT_TRUE(changed->Clone(target));
        EXPECT_EQ(target, existing.get());
        EXPECT_TRUE(existing->Equals(changed));
    }
}

TEST_F(GlobalStates, CloneCopiesTheFieldsEqualsLeavesOut)
{
    zuAlphaState alpha;
    alpha.DstBlend = zuAlphaState::DBF_CONSTANT_ALPHA;
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(alpha.Clone(target));
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

TEST_F(GlobalStates, CloneIntoAnotherClassFailsAndLeavesTheTargetAlone)
{
    zuStencilState stencil;
    stencil.Enabled = true;
    zuPointer<zuWireframeState> wireframe = new zuWireframeState;
    zuRttiInterface* target = wireframe.get();
    EXPECT_FALSE(stencil.Clone(target));
    EXPECT_EQ(target, wireframe.get());
    EXPECT_FALSE(wireframe->Enabled);
}

} // namespace
} // namespace zu::test
