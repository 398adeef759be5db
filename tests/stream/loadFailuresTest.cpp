// What loading does when a class misbehaves or a type is unknown: skipped records, stopped
// loads and failed post-links.

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

using LoadFailures = zuLeakCheckedTest;

// root (controller c) with children x and b; b's child is x, x's child is a. x is a
// zuTestOtherNode, whose type the loading side does not know. Records: root, c, x, a, b.
struct GraphWithAStranger {
    zuPointer<zuTestNode> root = new zuTestNode("root", 7);
    zuPointer<zuTestController> c = new zuTestController;
    zuPointer<zuTestNode> x = new zuTestOtherNode("x", 5);
    zuPointer<zuTestNode> a = new zuTestNode("a", 1);
    zuPointer<zuTestNode> b = new zuTestNode("b", 2);
    GraphWithAStranger()
    {
        root->AttachController(c);
        root->AttachChild(x);
        root->AttachChild(b);
        b->AttachChild(x);
        x->AttachChild(a);
    }
};

std::vector<char> withHeader(const char* header, const std::vector<char>& records)
{
    std::vector<char> bytes(header, header + std::strlen(header) + 1);
    bytes.insert(bytes.end(), records.begin(), records.end());
    return bytes;
}

// Loads `bytes` with a zuBaseStream or, when blockSize > 0, a zuFileStream over memory.
class Loader {
public:
    Loader(int blockSize, zuStreamVersion version) : mFile(blockSize > 0 ? blockSize : 8)
    {
        mBase.SetVersion(version);
        mStream = blockSize > 0 ? static_cast<zuBaseStream*>(&mFile) : &mBase;
        mIsFile = blockSize > 0;
    }
    bool load(const std::vector<char>& records, const char* header)
    {
        if (!mIsFile) {
            mBytes = records;
            return mBase.Load(mBytes.data(), mBytes.size());
        }
        zuMemoryIoDevice device(withHeader(header, records));
        return mFile.Load(device, "memory");
    }
    zuBaseStream& stream() { return *mStream; }

private:
    zuBaseStream mBase;
    zuFileStream mFile;
    zuBaseStream* mStream;
    bool mIsFile;
    std::vector<char> mBytes;
};

TEST_F(LoadFailures, FromVersion6AnUnknownTypeIsSkippedAndReferencesToItLinkAsNull)
{
    std::vector<char> records;
    {
        GraphWithAStranger g;
        records = saveToBytes({g.root}, zuStreamVersion(6, 32));
    }
    for (int blockSize : {0, 8, 16}) {
        Loader loader(blockSize, zuStreamVersion(6, 32));
        zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
        const bool loaded = loader.load(records, "MVK 6.32");
        EXPECT_EQ(capturedOut.take(), "Skipping object type zuTest.zuTestOtherNode\n");
        ASSERT_TRUE(loaded) << "block " << blockSize;
        ASSERT_EQ(loader.stream().GetObjectCount(), 1);
        auto* root = static_cast<zuTestNode*>(loader.stream().GetObjectAt(0));
        ASSERT_EQ(root->GetChildQuantity(), 2);
        EXPECT_EQ(root->GetChild(0), nullptr);
        ASSERT_NE(root->GetChild(1), nullptr);
        EXPECT_EQ(root->GetChild(1)->GetName(), "b");
        ASSERT_EQ(root->GetChild(1)->GetChildQuantity(), 1);
        EXPECT_EQ(root->GetChild(1)->GetChild(0), nullptr);
        ASSERT_NE(root->GetController(0), nullptr);
        // a, the record after the skipped one, was built; referenced only by the skipped
        // object, it is released when the load ends.
        EXPECT_EQ(zuTestNode::msLiving, 2);
    }
}

TEST_F(LoadFailures, BeforeVersion6AnUnknownTypeStopsTheLoadWhichStillSucceeds)
{
    std::vector<char> records;
    {
        GraphWithAStranger g;
        records = saveToBytes({g.root}, zuStreamVersion(5, 20));
    }
    const std::string advice = "Make sure you have called RegisterFactory() to the each class in the init library function.\n";
    const struct {
        int blockSize;
        std::string message;
    } cases[] = {
        {0, "zuBaseStream error : cannot find the factory function. \n" + advice},
        {8, "zuBaseStream error : cannot find the factory function(zuTest.zuTestOtherNode).\n" + advice},
        {1024, "zuBaseStream error : cannot find the factory function(zuTest.zuTestOtherNode).\n" + advice},
    };
    for (const auto& c : cases) {
        Loader loader(c.blockSize, zuStreamVersion(5, 20));
        zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
        zuOutputCapture capturedErr(zuOutputCapture::STDERR);
        const bool loaded = loader.load(records, "MVK 5.20");
        EXPECT_TRUE(capturedErr.take() == c.message && capturedOut.take() == "");
        EXPECT_TRUE(loaded) << "block " << c.blockSize;
        EXPECT_FALSE(loader.stream().isStreamError());
        EXPECT_EQ(loader.stream().GetVersion(), zuStreamVersion(5, 20));
        // Only the records before the unknown one were read, and they were linked.
        ASSERT_EQ(loader.stream().GetObjectCount(), 1);
        auto* root = static_cast<zuTestNode*>(loader.stream().GetObjectAt(0));
        EXPECT_TRUE(root->GetName() == "root" && root->GetValue() == 7);
        ASSERT_EQ(root->GetChildQuantity(), 2);
        EXPECT_TRUE(root->GetChild(0) == nullptr && root->GetChild(1) == nullptr);
        ASSERT_EQ(root->GetControllerQuantity(), 1);
        ASSERT_NE(root->GetController(0), nullptr);
        EXPECT_TRUE(root->GetController(0)->GetObject() == root && zuTestNode::msLiving == 1);
        EXPECT_EQ(zuTestNode::msPostLinkCalls, 1);
        zuTestNode::msPostLinkCalls = 0;
    }
}

TEST_F(LoadFailures, AFailedPostLinkIsReportedAndTheLoadGoesOn)
{
    std::vector<char> records;
    {
        zuSmallGraph g;
        records = saveToBytes({g.root}, zuStreamVersion(6, 32));
    }
    zuTestNode::msPostLinkResult = false;
    for (int blockSize : {0, 16}) {
        zuTestNode::msPostLinkCalls = 0;
        Loader loader(blockSize, zuStreamVersion(6, 32));
        zuOutputCapture capturedErr(zuOutputCapture::STDERR);
        const bool loaded = loader.load(records, "MVK 6.32");
        const std::string line = "zuBaseStream error : cannot post link object\n";
        EXPECT_TRUE(capturedErr.take() == line + line + line && loaded && zuTestNode::msPostLinkCalls == 3);
        ASSERT_EQ(loader.stream().GetObjectCount(), 1);
        EXPECT_TRUE(isSmallGraph(loader.stream().GetObjectAt(0)));
    }
}

TEST_F(LoadFailures, AnEmptyNameIsNotSetOnLoad)
{
    zuPointer<zuTestNode> root = new zuTestNode;
    root->AttachChild(new zuTestNode("named"));
    std::vector<char> records = saveToBytes({root}, zuStreamVersion(6, 32));
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(records.data(), records.size()));
    auto* loaded = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    EXPECT_TRUE(loaded->GetName() == "" && loaded->GetSetNameCalls() == 0 && loaded->GetChild(0)->GetName() == "named");
    EXPECT_EQ(loaded->GetChild(0)->GetSetNameCalls(), 1);
}

} // namespace
} // namespace zu::test
