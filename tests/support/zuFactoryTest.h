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

} // namespace zu::test
