// The controller list of named objects and the no-op name and controllers of unnamed ones.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

TEST(zuNamedObjectTest, AControllerPointsAtTheObjectItControlsOnlyWhileAttached)
{
    zuPointer<zuTestController> kept = new zuTestController;
    zuPointer<zuTestController> other = new zuTestController;
    {
        zuPointer<zuTestNode> node = new zuTestNode("n");
        EXPECT_FALSE(node->AttachController(nullptr));
        EXPECT_TRUE(node->AttachController(kept));
        EXPECT_FALSE(node->AttachController(kept));
        EXPECT_EQ(node->GetControllerQuantity(), 1);
        EXPECT_EQ(kept->GetObject(), node);
        EXPECT_EQ(kept->GetReferences(), 2);
        EXPECT_EQ(node->GetController(-1), nullptr);
        EXPECT_EQ(node->GetController(1), nullptr);

        node->DetachController(kept);
        EXPECT_EQ(kept->GetObject(), nullptr);
        EXPECT_EQ(kept->GetReferences(), 1);
        EXPECT_EQ(node->GetControllerQuantity(), 0);
        node->DetachController(kept);  // not attached: nothing happens

        // Replacing a slot or shrinking the list releases the controller it held.
        node->SetControllerQuantity(2);
        node->SetController(0, kept);
        node->SetController(2, other);  // past the end: ignored
        EXPECT_EQ(node->GetControllerQuantity(), 2);
        EXPECT_EQ(other->GetObject(), nullptr);
        node->SetController(0, other);
        EXPECT_EQ(kept->GetObject(), nullptr);
        EXPECT_EQ(other->GetObject(), node);
        node->SetController(1, kept);
        EXPECT_EQ(kept->GetObject(), node);
        node->SetControllerQuantity(1);
        EXPECT_EQ(kept->GetObject(), nullptr);
        EXPECT_EQ(other->GetObject(), node);
        node->SetController(0, nullptr);
        EXPECT_EQ(other->GetObject(), nullptr);
        EXPECT_EQ(other->GetReferences(), 1);
        node->SetController(0, kept);
        EXPECT_EQ(kept->GetObject(), node);
    }
    // The object is gone: its controllers no longer point at it.
    EXPECT_EQ(kept->GetObject(), nullptr);
    EXPECT_EQ(kept->GetReferences(), 1);

    // A controller carries no controllers of its own.
    EXPECT_FALSE(kept->AttachController(other));
    kept->SetControllerQuantity(3);
    kept->SetController(0, other);
    EXPECT_EQ(kept->GetControllerQuantity(), 0);
    EXPECT_EQ(kept->GetController(0), nullptr);
    EXPECT_EQ(other->GetObject(), nullptr);
    EXPECT_EQ(other->GetReferences(), 1);
}

TEST(zuNamedObjectTest, UnnamedObjectsIgnoreNamesAndControllers)
{
    zuShortRecord record;
    zuPointer<zuTestController> controller = new zuTestController;
    record.SetName("ignored");
    EXPECT_EQ(record.GetName(), "");
    EXPECT_EQ(&record.GetName(), &zuEmptyName());
    EXPECT_FALSE(record.AttachController(controller));
    record.SetControllerQuantity(3);
    record.SetController(0, controller);
    EXPECT_EQ(record.GetControllerQuantity(), 0);
    EXPECT_EQ(record.GetController(0), nullptr);
    EXPECT_EQ(controller->GetObject(), nullptr);
    EXPECT_EQ(controller->GetReferences(), 1);
    EXPECT_EQ(record.GetObjectByName(""), &record);
}

} // namespace
} // namespace zu::test
