#pragma once

// The fixture of tests that save or load objects: the test classes' factories are
// registered for the length of each test.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {

class zuFactoryTest : public ::testing::Test {
protected:
    zuTestFactories factories;
};

// The same, and no test node outlives the test.
class zuLeakCheckedTest : public zuFactoryTest {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, 0) << "a test node leaked or died twice"; }
};

} // namespace zu::test
