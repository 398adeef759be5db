// Library start and end, and the library's version.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/LibInitCounter.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

zuRttiInterface* probeFactory(zuBaseStream&)
{
    return nullptr;
}

TEST(zuSceneGraphTest, OnlyTheFirstStartAndTheLastEndDoWork)
{
    ASSERT_EQ(LibInitCounter::count("scenegraph"), 0) << "the library must not be started";
    zuRttiInterface::DestroyFactoryMap();
    ASSERT_EQ(zuObject::libraryMutex(), nullptr);

    initializeZuSceneGraph();
    zuMutex* mutex = zuObject::libraryMutex();
    ASSERT_NE(mutex, nullptr);
    EXPECT_FALSE(zuRttiInterface::CreateFactoryMap());  // the start created the registry
    EXPECT_TRUE(zuRttiInterface::RegisterFactoryFunction("zuTest.Probe", probeFactory));

    // A nested start replaces neither the mutex nor the registry.
    initializeZuSceneGraph();
    EXPECT_TRUE(LibInitCounter::count("scenegraph") == 2 && zuObject::libraryMutex() == mutex);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), probeFactory);

    terminateZuSceneGraph();
    EXPECT_TRUE(zuObject::libraryMutex() == mutex && zuRttiInterface::GetFactory("zuTest.Probe") == probeFactory);

    terminateZuSceneGraph();
    EXPECT_TRUE(LibInitCounter::count("scenegraph") == 0 && zuObject::libraryMutex() == nullptr);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), nullptr);
    EXPECT_TRUE(zuRttiInterface::CreateFactoryMap());  // the registry was destroyed
    zuRttiInterface::DestroyFactoryMap();
}

} // namespace
} // namespace zu::test
