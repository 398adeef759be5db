#pragma once

// Persistable classes that exist only to exercise the object model and the stream.

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/objects/zuNamedObject.h>
#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/stream/zuBaseStream.h>
#include <zuSceneGraph/stream/zuDataStreamLoader.h>
#include <zuSceneGraph/stream/zuRttiCustomInformation.h>

#include <zuSystem/zuLog.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zu::test {

// A named node with an int payload and owned children.
class zuTestNode : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestNode>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory, CreateDefault<zuTestNode>); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuTestNode() { ++msLiving; }
    explicit zuTestNode(const std::string& name, int value = 0) : zuTestNode()
    {
        SetName(name);
        mValue = value;
    }
    ~zuTestNode() override { --msLiving; }

    void SetName(const std::string& name) override
    {
        ++mSetNameCalls;
        zuNamedObject::SetName(name);
    }
    void AttachChild(zuTestNode* child) { mChildren.emplace_back(child); }
    zuTestNode* GetChild(int i) const { return mChildren[static_cast<size_t>(i)]; }
    int GetChildQuantity() const { return static_cast<int>(mChildren.size()); }
    int GetValue() const { return mValue; }
    int GetSetNameCalls() const { return mSetNameCalls; }

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    void Link(zuBaseStream& stream, zuLink* link) override;
    bool PostLink() override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    static int msLiving;        // objects alive now, to catch leaks and double frees
    static int msPostLinkCalls;
    static bool msPostLinkResult;

private:
    int mValue = 0;
    int mSetNameCalls = 0;
    std::vector<zuPointer<zuTestNode>> mChildren;
};

// A node of its own persisted type, which tests leave unregistered to play a type the
// loading program does not know.
class zuTestOtherNode : public zuTestNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestOtherNode>(stream); }
    using zuTestNode::zuTestNode;
    const zuRtti& GetType() const override { return TYPE; }
};

// A concrete controller that records the times it was updated with.
class zuTestController : public zuController {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestController>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory, CreateDefault<zuTestController>); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    const zuRtti& GetType() const override { return TYPE; }
    bool Update(double appTime) override
    {
        mTimes.push_back(appTime);
        return mChanges;
    }

    std::vector<double> mTimes;
    bool mChanges = true;
};

// Reports one byte less than it writes.
class zuShortRecord : public zuUnnamedObject {
public:
    static const zuRtti TYPE;
    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override { return zuUnnamedObject::GetDiskUsed(stream) + 4 - 1; }
    void Save(zuBaseStream& stream) const override
    {
        zuUnnamedObject::Save(stream);
        stream.Write(42);
    }
};

// Registers the test classes for the life of a test.
class zuTestFactories {
public:
    zuTestFactories();
    ~zuTestFactories();
};

// Little-endian bytes built by hand, to pin what the stream writes.
class zuBytes {
public:
    zuBytes& i32(int32_t value) { return raw(&value, 4); }
    zuBytes& u64(uint64_t value) { return raw(&value, 8); }
    zuBytes& f32(float value) { return raw(&value, 4); }
    zuBytes& u8(uint8_t value) { return raw(&value, 1); }
    zuBytes& str(const std::string& text)
    {
        i32(static_cast<int32_t>(text.size()));
        return raw(text.data(), text.size());
    }
    zuBytes& raw(const void* data, size_t size)
    {
        const char* bytes = static_cast<const char*>(data);
        mBytes.insert(mBytes.end(), bytes, bytes + size);
        return *this;
    }
    const std::vector<char>& bytes() const { return mBytes; }
    size_t size() const { return mBytes.size(); }

private:
    std::vector<char> mBytes;
};

// A persistable class outside the zuObject branch, for the "foreign type" cases.
class zuTestPlain : public zuRttiInterface {
public:
    static const zuRtti TYPE;
    const zuRtti& GetType() const override { return TYPE; }
};

// A stream loader that counts the stream's calls; waitForEnd answers mWaitResult.
class zuTestStreamLoader : public zuDataStreamLoader {
public:
    bool onObjectLoad() override
    {
        ++mObjectLoads;
        return true;
    }
    bool waitForEnd(zuProgressNotifierInterface* progress) override
    {
        ++mWaits;
        mWaitProgress = progress;
        return mWaitResult;
    }
    void cancel() override { ++mCancels; }
    void reset() override { ++mResets; }

    int mObjectLoads = 0;
    int mWaits = 0;
    int mCancels = 0;
    int mResets = 0;
    bool mWaitResult = true;
    zuProgressNotifierInterface* mWaitProgress = nullptr;
};

// A progress notifier that records the groups and steps it is given, and asks to cancel
// once mCancelAfterSteps steps were made (never when negative).
class zuTestProgress : public zuProgressNotifierInterface {
public:
    void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) override
    {
        mGroups.push_back({label, stepCount});
        mWeights.push_back(weight);
        ++mOpenGroups;
    }
    void closeGroup() override { --mOpenGroups; }
    void step(int64_t count = 1) override
    {
        mSteps.push_back(count);
        mStepTotal += count;
        if (mCancelAfterSteps >= 0 && static_cast<int64_t>(mSteps.size()) >= mCancelAfterSteps)
            mCancel = true;
    }
    bool isCancelRequested() const override { return mCancel; }
    void requestCancel() override { mCancel = true; }

    std::vector<std::pair<std::string, int64_t>> mGroups;
    std::vector<double> mWeights;
    std::vector<int64_t> mSteps;
    int64_t mStepTotal = 0;
    int mOpenGroups = 0;
    int64_t mCancelAfterSteps = -1;
    bool mCancel = false;
};

// Custom information that counts the instances alive.
class zuTestInformation : public zuRttiCustomInformation {
public:
    zuTestInformation() { ++msLiving; }
    ~zuTestInformation() override { --msLiving; }
    static int msLiving;
};

// Captures the zuLog messages (category, text) written during its life.
class zuLogCapture {
public:
    zuLogCapture();
    ~zuLogCapture();
    zuLogCapture(const zuLogCapture&) = delete;
    zuLogCapture& operator=(const zuLogCapture&) = delete;

    std::vector<std::pair<std::string, std::string>> mMessages;

private:
    zuLog::Sink mPrevious;
};

// Saves the given top-level objects with a zuBaseStream at `version`.
std::vector<char> saveToBytes(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version);

// Saves the given top-level objects with a zuFileStream of `blockSize` into memory: the
// header, then the records.
std::vector<char> saveToFileBytes(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version,
                                  int blockSize);

// root "root" (value 7, controller c "ctl") with children a (value 1) and b (value 2,
// child a): four records, root, c, a, b, with a shared by two parents.
struct zuSmallGraph {
    zuPointer<zuTestNode> root = new zuTestNode("root", 7);
    zuPointer<zuTestNode> a = new zuTestNode("a", 1);
    zuPointer<zuTestNode> b = new zuTestNode("b", 2);
    zuPointer<zuTestController> c = new zuTestController;
    zuSmallGraph()
    {
        c->SetName("ctl");
        root->AttachController(c);
        root->AttachChild(a);
        root->AttachChild(b);
        b->AttachChild(a);
    }
};

// Checks that `root` has the shape of a loaded zuSmallGraph.
::testing::AssertionResult isSmallGraph(const zuRttiInterface* root);

} // namespace zu::test
