// The renderer's binding of an object.

#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>

#include <gtest/gtest.h>

#include <vector>

namespace zu {
namespace {

// A renderer that answers each release with onRelease, as renderers do.
struct Renderer {
    static std::vector<zuBindable*> released;
    static bool answers;
    static void release(zuBindable* object)
    {
        released.push_back(object);
        if (answers)
            object->onRelease(object->getIdentifier());
    }
};
std::vector<zuBindable*> Renderer::released;
bool Renderer::answers = true;

class ResourceBindable : public ::testing::Test {
protected:
    void SetUp() override
    {
        Renderer::released.clear();
        Renderer::answers = true;
    }
    zuResourceIdentifier first, second;
};

TEST_F(ResourceBindable, ReleaseCallsTheRendererOnce)
{
    zuBindable object;
    EXPECT_EQ(nullptr, object.getIdentifier());
    object.onLoad(Renderer::release, &first);
    EXPECT_EQ(&first, object.getIdentifier());
    object.release();
    EXPECT_EQ(std::vector<zuBindable*>{&object}, Renderer::released);
    EXPECT_EQ(nullptr, object.getIdentifier());
    object.release();
    EXPECT_EQ(1u, Renderer::released.size());
}

TEST_F(ResourceBindable, AStaleReleaseIsIgnored)
{
    zuBindable object;
    object.onLoad(Renderer::release, &second);
    object.onRelease(&first);
    EXPECT_EQ(&second, object.getIdentifier());
    object.onRelease(&second);
    EXPECT_EQ(nullptr, object.getIdentifier());
    EXPECT_TRUE(Renderer::released.empty());
}

TEST_F(ResourceBindable, ABindingIsForgottenEvenWhenTheRendererDoesNotAnswer)
{
    Renderer::answers = false;
    zuBindable object;
    object.onLoad(Renderer::release, &first);
    object.release();
    EXPECT_EQ(nullptr, object.getIdentifier());
}

TEST_F(ResourceBindable, DestructionReleasesAndCopiesAreUnbound)
{
    {
        zuBindable object;
        object.onLoad(Renderer::release, &first);
        zuBindable copy(object);
        EXPECT_EQ(nullptr, copy.getIdentifier());
    }
    EXPECT_EQ(1u, Renderer::released.size());
}

} // namespace
} // namespace zu
