// Pins the 63 bytes of a streamed transformation and reads them back.

#include <zuSceneGraph/scenegraph/zuGenericTransformation.h>

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

using Transform = zuGenericTransformation<float>;

// A record that holds nothing but one transformation.
class zuTestTransformHolder : public zuUnnamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestTransformHolder>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory, CreateDefault<zuTestTransformHolder>); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override
    {
        return zuUnnamedObject::GetDiskUsed(stream) + Transform::STREAM_SIZE;
    }
    void Save(zuBaseStream& stream) const override
    {
        zuUnnamedObject::Save(stream);
        stream.Write(mTransform);
    }
    void Load(zuBaseStream& stream, zuLink* link) override
    {
        zuUnnamedObject::Load(stream, link);
        stream.Read(mTransform);
    }

    Transform mTransform;
};

const zuRtti zuTestTransformHolder::TYPE("zuTest.zuTestTransformHolder", &zuObject::TYPE);

class GenericTransformationStream : public ::testing::Test {
protected:
    GenericTransformationStream() { zuTestTransformHolder::RegisterFactory(); }
    ~GenericTransformationStream() override { zuTestTransformHolder::UnRegisterFactory(); }

    // The record of a holder of `t`, saved at 6.32.
    std::vector<char> save(const Transform& t, zuPointer<zuTestTransformHolder>& holder)
    {
        holder = new zuTestTransformHolder;
        holder->mTransform = t;
        return saveToBytes({holder}, zuStreamVersion(6, 32));
    }

    Transform load(std::vector<char> bytes)
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        EXPECT_TRUE(stream.Load(bytes.data(), bytes.size()));
        EXPECT_EQ(stream.GetObjectCount(), 1);
        if (stream.GetObjectCount() != 1)
            return Transform();
        return static_cast<zuTestTransformHolder*>(stream.GetObjectAt(0))->mTransform;
    }

    zuTestFactories factories;
};

TEST_F(GenericTransformationStream, WritesMatrixByRowsThenTranslationScaleAndThreeFlagBytes)
{
    Transform t;
    t.SetRotate(Wm4::Matrix3f(1, 2, 3, 4, 5, 6, 7, 8, 9));
    t.SetTranslate(Wm4::Vector3f(10, 11, 12));
    t.SetScale(Wm4::Vector3f(13, 14, -15.5f));
    zuPointer<zuTestTransformHolder> holder;
    const std::vector<char> saved = save(t, holder);

    const std::string type = "zuTest.zuTestTransformHolder";
    zuBytes value;
    for (int i = 1; i <= 9; ++i)
        value.f32(static_cast<float>(i));
    value.f32(10).f32(11).f32(12).f32(13).f32(14).f32(-15.5f);
    value.u8(0).u8(1).u8(0);
    ASSERT_EQ(value.size(), 63u);
    EXPECT_EQ(Transform::STREAM_SIZE, 63);

    zuBytes expected;
    expected.str("Top Level");
    expected.str(type).i32(static_cast<int32_t>(4 + type.size() + 4 + 8 + 4 + 4 + 63)).u64(reinterpret_cast<uintptr_t>(holder.get()));
    expected.str("").i32(0).raw(value.bytes().data(), value.size());
    EXPECT_EQ(saved, expected.bytes());

    const Transform loaded = load(saved);
    EXPECT_TRUE(loaded == t);
}

TEST_F(GenericTransformationStream, FlagBytesAreZeroOrOneAndAnyNonZeroReadsTrue)
{
    zuPointer<zuTestTransformHolder> holder;
    std::vector<char> saved = save(Transform(), holder);
    ASSERT_GE(saved.size(), 3u);
    EXPECT_EQ(std::vector<char>(saved.end() - 3, saved.end()), std::vector<char>({1, 1, 1}));
    EXPECT_TRUE(load(saved) == Transform());

    Transform general;
    general.SetMatrix(Wm4::Matrix3f::IDENTITY);
    general.SetScale(Wm4::Vector3f(2, 2, 2));
    saved = save(general, holder);
    EXPECT_EQ(std::vector<char>(saved.end() - 3, saved.end()), std::vector<char>({0, 0, 1}));
    EXPECT_TRUE(load(saved) == general);

    // Bytes another writer may have left: 2 and 0x80 are true as well.
    saved[saved.size() - 3] = 0;
    saved[saved.size() - 2] = 2;
    saved[saved.size() - 1] = static_cast<char>(0x80);
    const Transform loaded = load(saved);
    EXPECT_FALSE(loaded.IsIdentity());
    EXPECT_TRUE(loaded.IsRSMatrix());
    EXPECT_TRUE(loaded.IsUniformScale());
}

TEST_F(GenericTransformationStream, ATruncatedValueFailsTheLoad)
{
    zuPointer<zuTestTransformHolder> holder;
    std::vector<char> saved = save(Transform(), holder);
    saved.resize(saved.size() - 5);
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(stream.Load(saved.data(), saved.size()));
    const std::string message = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(stream.GetObjectCount(), 0);
    EXPECT_NE(message.find("\"zuTest.zuTestTransformHolder\""), std::string::npos) << message;
}

} // namespace
} // namespace zu::test
