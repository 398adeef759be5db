#pragma once

// Persistable classes that exist only to exercise the object model and the stream.

#include <zuSceneGraph/animation/zuController.h>
#include <zuSceneGraph/objects/zuNamedObject.h>
#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <string>
#include <vector>

namespace zu::test {

// A named node with an int payload and owned children.
class zuTestNode : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestNode>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory); }
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

// A concrete controller that records the times it was updated with.
class zuTestController : public zuController {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestController>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory); }
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

// Saves the given top-level objects with a zuBaseStream at `version`.
std::vector<char> saveToBytes(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version);

} // namespace zu::test
