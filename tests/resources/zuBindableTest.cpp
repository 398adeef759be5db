// The renderer's binding of an object.

#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>

#include <gtest/gtest.h>

#include <vector>

namespace zu {
namespace {

// A renderer that answers each release with onRelease when `answers` is set.
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

TEST(ResourceBindable, ReleaseCallsTheRendererOnceAndStaleReleasesAreIgnored)
{
    zuResourceIdentifier first, second;
    Renderer::released.clear();
    {
        zuBindable object;
        object.onLoad(Renderer::release, &first);
        // A copy is a new object, not bound.
        EXPECT_EQ(nullptr, zuBindable(object).getIdentifier());
        object.onRelease(&second);
        EXPECT_EQ(&first, object.getIdentifier());
        object.release();
        object.release();
        EXPECT_EQ(std::vector<zuBindable*>{&object}, Renderer::released);
        EXPECT_EQ(nullptr, object.getIdentifier());

        // Forgotten even when the renderer does not answer; destruction releases a binding left.
        Renderer::answers = false;
        object.onLoad(Renderer::release, &second);
        object.release();
        EXPECT_EQ(nullptr, object.getIdentifier());
        object.onLoad(Renderer::release, &first);
    }
    EXPECT_EQ(3u, Renderer::released.size());
    Renderer::answers = true;
}

} // namespace
} // namespace zu
