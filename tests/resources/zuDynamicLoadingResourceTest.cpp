// Type and handler numbers, the request-builder table, load policies and stream info.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>
#include <zuSceneGraph/resources/zuResourceRequestClientInterface.h>

#include <gtest/gtest.h>

#include <memory>

namespace zu::test {
namespace {

// A resource of a chosen handler type with no block, for the table and the copy cases.
class TypedResource : public zuDynamicLoadingResource {
public:
    explicit TypedResource(unsigned int handlerType, unsigned long id = 77) : mHandlerType(handlerType), mID(id) {}
    unsigned long getResourceID() const override { return mID; }
    zuDynamicLoadingResourceHandler* createHandler() const override { return nullptr; }
    unsigned int getResourceType() const override { return 0; }
    unsigned int getResourceHandlerType() const override { return mHandlerType; }
    uint64_t getGPUSize() const override { return 0; }
    bool isGPUResident() const override { return false; }
    bool isGPUFreeable() const override { return false; }
    uint64_t getCPUSize() const override { return 0; }
    bool isCPUResident() const override { return false; }
    bool isCPUFreeable() const override { return false; }
    const char* getTypeName() const override { return "zuTest.TypedResource"; }

private:
    unsigned int mHandlerType;
    unsigned long mID;
};

class TypedHandler : public zuDynamicLoadingResourceHandler {
public:
    explicit TypedHandler(unsigned int type) : mType(type) {}
    zuDynamicLoadingResourceHandler* clone() const override { return new TypedHandler(*this); }
    unsigned int getResourceHandlerType() const override { return mType; }

private:
    unsigned int mType;
};

// A request that only tells which factory built it, and from what.
class TaggedRequest : public zuRequestInterfaceForDynamicResource {
public:
    TaggedRequest(const char* tag, unsigned long id, zuResourceRequestClientInterface* client)
        : zuRequestInterfaceForDynamicResource(id, client, SCHEDULING_NORMAL), mTag(tag)
    {
    }
    void execute(zuRC_WorkingThreadContext*) override {}
    void finalizeRequest(zuEngineInterface*) override {}
    void finalizeDynamicResourceRequest(zuDynamicLoadingResource*, bool, bool) override {}
    const char* mTag;
};

template <const char* tag>
zuRequestInterfaceForDynamicResource* fromHandler(unsigned long id, zuResourceRequestClientInterface* client,
                                                  const zuDynamicLoadingResourceHandler*)
{
    return new TaggedRequest(tag, id, client);
}

template <const char* tag>
zuRequestInterfaceForDynamicResource* fromResource(zuDynamicLoadingResource* resource,
                                                   zuResourceRequestClientInterface* client)
{
    return new TaggedRequest(tag, resource->getResourceID(), client);
}

constexpr char cpuLoad[] = "cpu load", cpuDelete[] = "cpu delete", cpuLoadR[] = "cpu load r", cpuDeleteR[] = "cpu delete r";
constexpr char gpuLoad[] = "gpu load", gpuDelete[] = "gpu delete", gpuLoadR[] = "gpu load r", gpuDeleteR[] = "gpu delete r";
constexpr char other[] = "other";

std::string tagOf(zuRequestInterfaceForDynamicResource* request)
{
    std::unique_ptr<zuRequestInterfaceForDynamicResource> owned(request);
    return owned ? static_cast<TaggedRequest*>(owned.get())->mTag : "null";
}

// Handler-type numbers far from those the library and the tests take.
constexpr unsigned int BUILDER_TYPE = 900001;
constexpr unsigned int GPU_ONLY_TYPE = 900002;

TEST(ResourceTypeNumbers, TypesAreSuccessiveBitsAndHandlersCountFromOne)
{
    // A process of its own (as each test runs under ctest) hands out 1, 2, 4 and 1, 2, 3;
    // where other tests took numbers first, the sequence goes on from there.
    const unsigned int typeBefore = zuDynamicLoadingResource::GetCurrentResourceIdentifier();
    const unsigned int handlerBefore = zuDynamicLoadingResource::GetCurrentHandlerIdentifier();
    const unsigned int t1 = zuDynamicLoadingResource::GetNextResourceIdentifier();
    const unsigned int t2 = zuDynamicLoadingResource::GetNextResourceIdentifier();
    const unsigned int t3 = zuDynamicLoadingResource::GetNextResourceIdentifier();
    const unsigned int h1 = zuDynamicLoadingResource::GetNextHandlerIdentifier();
    const unsigned int h2 = zuDynamicLoadingResource::GetNextHandlerIdentifier();
    const unsigned int h3 = zuDynamicLoadingResource::GetNextHandlerIdentifier();
    // Each number doubles the last, from 1; past the 32nd bit there are none left (0). A type
    // counter at 0 after handlers were taken has run out already (repeated runs in one
    // process).
    if (typeBefore != 0 || handlerBefore == 0) {
        uint64_t model = typeBefore;
        for (unsigned int number : {t1, t2, t3}) {
            model = model == 0 ? 1 : model * 2;
            EXPECT_EQ(model <= 0xFFFFFFFFull ? model : 0u, number);
        }
    }
    EXPECT_EQ(t3, zuDynamicLoadingResource::GetCurrentResourceIdentifier());
    EXPECT_EQ(handlerBefore + 1, h1);
    EXPECT_EQ(h1 + 1, h2);
    EXPECT_EQ(h2 + 1, h3);
    EXPECT_EQ(h3, zuDynamicLoadingResource::GetCurrentHandlerIdentifier());
}

TEST(ResourceRequestBuilders, CPUAndGPUSidesRegisterIndependentlyAndKeepTheFirst)
{
    using R = zuDynamicLoadingResource;
    ASSERT_TRUE(R::RegisterCPURequestBuilder(BUILDER_TYPE, fromHandler<cpuLoad>, fromHandler<cpuDelete>,
                                             fromResource<cpuLoadR>, fromResource<cpuDeleteR>));
    // A second CPU registration is refused and changes nothing.
    EXPECT_FALSE(R::RegisterCPURequestBuilder(BUILDER_TYPE, fromHandler<other>, fromHandler<other>,
                                              fromResource<other>, fromResource<other>));
    // The GPU side of the same type is still free.
    EXPECT_TRUE(R::RegisterGPURequestBuilder(BUILDER_TYPE, fromHandler<gpuLoad>, fromHandler<gpuDelete>,
                                             fromResource<gpuLoadR>, fromResource<gpuDeleteR>));
    EXPECT_FALSE(R::RegisterGPURequestBuilder(BUILDER_TYPE, fromHandler<other>, fromHandler<other>,
                                              fromResource<other>, fromResource<other>));

    TypedHandler handler(BUILDER_TYPE);
    TypedResource resource(BUILDER_TYPE, 5);
    const std::string tags[] = {tagOf(R::CreateCPULoadRequest(5, nullptr, &handler)),
                                tagOf(R::CreateCPUDeleteRequest(5, nullptr, &handler)),
                                tagOf(R::CreateGPULoadRequest(5, nullptr, &handler)),
                                tagOf(R::CreateGPUDeleteRequest(5, nullptr, &handler)),
                                tagOf(R::CreateCPULoadRequest(&resource, nullptr)),
                                tagOf(R::CreateCPUDeleteRequest(&resource, nullptr)),
                                tagOf(R::CreateGPULoadRequest(&resource, nullptr)),
                                tagOf(R::CreateGPUDeleteRequest(&resource, nullptr))};
    EXPECT_EQ(std::vector<std::string>(std::begin(tags), std::end(tags)),
              (std::vector<std::string>{cpuLoad, cpuDelete, gpuLoad, gpuDelete, cpuLoadR, cpuDeleteR, gpuLoadR, gpuDeleteR}));

    // The factories get the identifier and the client.
    struct Client : zuResourceRequestClientInterface {
        void onRequestFinished(zuRequestInterfaceForDynamicResource*, bool) override {}
    } client;
    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(R::CreateCPULoadRequest(&resource, &client));
    EXPECT_EQ(5u, request->getResourceID());
    EXPECT_EQ(&client, request->getClient());

    R::UnregisterRequestBuilder(BUILDER_TYPE);
    EXPECT_EQ(nullptr, R::GetRequestBuilder(BUILDER_TYPE));
    EXPECT_EQ("null", tagOf(R::CreateCPULoadRequest(5, nullptr, &handler)));
    EXPECT_EQ("null", tagOf(R::CreateGPUDeleteRequest(&resource, nullptr)));

    // A side that is not registered builds nothing; nor does a missing handler or resource.
    ASSERT_TRUE(R::RegisterGPURequestBuilder(GPU_ONLY_TYPE, fromHandler<gpuLoad>, fromHandler<gpuDelete>,
                                             fromResource<gpuLoadR>, fromResource<gpuDeleteR>));
    TypedHandler gpuHandler(GPU_ONLY_TYPE);
    TypedResource gpuResource(GPU_ONLY_TYPE);
    EXPECT_EQ("null", tagOf(R::CreateCPULoadRequest(1, nullptr, &gpuHandler)));
    EXPECT_EQ("null", tagOf(R::CreateCPUDeleteRequest(&gpuResource, nullptr)));
    EXPECT_EQ("null", tagOf(R::CreateCPULoadRequest(nullptr, nullptr)));
    R::UnregisterRequestBuilder(GPU_ONLY_TYPE);
}

TEST_F(ResourceLibrary, ResourceHasToLoadFollowsPathThenPolicy)
{
    zuPointer<zuTestBlockResource> resource = new zuTestBlockResource(8, 1);
    const zuRtti& type = zuTestBlockResource::TYPE;
    bool load = true;

    // No file: always loaded, whatever the policy.
    zuDynamicLoadingResource::SetLoadPolicy(type, false);
    EXPECT_TRUE(resource->hasToLoad());

    zuPositionedStream stream("/data/model.mvk", 100, zuStreamVersion(6, 32));
    resource->storeStreamInfo(&stream);
    EXPECT_FALSE(resource->hasToLoad());
    ASSERT_TRUE(zuDynamicLoadingResource::GetLoadPolicy(type, load));
    EXPECT_FALSE(load);

    zuDynamicLoadingResource::SetLoadPolicy(type, true);
    EXPECT_TRUE(resource->hasToLoad());

    // Policies of other types do not apply.
    zuDynamicLoadingResource::ClearLoadingPolicies();
    zuDynamicLoadingResource::SetLoadPolicy(zuObject::TYPE, false);
    EXPECT_FALSE(zuDynamicLoadingResource::GetLoadPolicy(type, load));
    EXPECT_TRUE(resource->hasToLoad());
}

TEST_F(ResourceLibrary, ResourceStreamInfoIsThePathAndAbsoluteOffsetOfTheBlock)
{
    // A plain stream has no path; the offset is where the block starts: the record ends with it.
    zuPointer<zuTestBlockResource> single = new zuTestBlockResource(16, 3);
    const std::vector<char> saved = saveToBytes({single}, zuStreamVersion(6, 32));
    ASSERT_FALSE(saved.empty());
    EXPECT_EQ("", single->getResourceFilePath());
    EXPECT_EQ(zuStreamVersion(6, 32), single->getStreamVersion());
    EXPECT_EQ(saved.size() - 16, single->getStreamOffset());
}

TEST(ResourceStreamInfo, ACopyRefersToTheSameBlockWithNoRequestUnderWay)
{
    TypedResource b(1);
    zuPositionedStream stream("a.mvk", 1ull << 40, zuStreamVersion(6, 32));
    b.storeStreamInfo(&stream);
    EXPECT_EQ(1ull << 40, b.getStreamOffset());
    // A copy refers to the same block but has no request under way.
    b.setResourceState(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY);
    TypedResource d(b);
    EXPECT_EQ("a.mvk", d.getResourceFilePath());
    EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_IDLE, d.getResourceState());
    b.setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);
}

} // namespace
} // namespace zu::test
