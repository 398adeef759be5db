// One table over every class the library registers: what each class owes the object model
// whatever its fields (the save and load of every class at every gate, in every state, is
// saveEveryStateTest.cpp). Classes added later are covered as soon as they register.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

TEST(Registry, EveryClassComparesAndClonesWithinItsOwnClassOnly)
{
    zuTestFactories factories;
    zuPointer<zuTestNode> stranger = new zuTestNode("stranger", 5);
    int classes = 0;
    for (const std::string& name : zuRttiInterface::GetFactoryNames()) {
        const zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(name);
        if (!create || name.rfind("zuTest.", 0) == 0)
            continue;
        SCOPED_TRACE(name);
        ++classes;
        zuPointer<zuRttiInterface> a = create(), b = create();
        // The factory is registered under the class's persisted type name.
        ASSERT_EQ(a->GetType().GetName(), name);
        EXPECT_TRUE(a->GetReferences() == 1 && a->Equals(b) && b->Equals(a));
        EXPECT_FALSE(a->Equals(nullptr) || a->Equals(stranger) || stranger->Equals(a));

        zuRttiInterface* target = nullptr;
        ASSERT_TRUE(a->Clone(target));
        zuPointer<zuRttiInterface> copy = target;
        EXPECT_TRUE(copy->IsExactly(a->GetType()) && copy->Equals(a));
        target = b.get();
        EXPECT_TRUE(a->Clone(target) && target == b.get());
        target = stranger.get();
        EXPECT_FALSE(a->Clone(target));
        EXPECT_EQ(target, stranger.get());
    }
    EXPECT_TRUE(stranger->GetName() == "stranger" && stranger->GetValue() == 5);
    EXPECT_GE(classes, 30);
}

} // namespace
} // namespace zu::test
